// Spectrum output: the transformed blocks turned into XY records in every
// format code.
#ifndef OSCILLA_SRC_SPECTRUM_OUTPUT_IMPL_H
#define OSCILLA_SRC_SPECTRUM_OUTPUT_IMPL_H

#include "oscilla/series/cxy.h"
#include "oscilla/spectrum/cfft.h"
#include "oscilla/spectrum/formats.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace oscilla {

namespace detail {

constexpr double DB_FLOOR = -1e200; // start value of the decibel maxima
constexpr double TWO_PI = 6.283185307179586;

// Bin factor: 2 for every bin but bin 0 and, for even L, the last one; those
// get 1, or sqrt(2) in the density family, so that density records sum to the
// data's sum of squares, mean square or integral.
inline double bin_factor(int k, int L, int M, int density)
{
    if (k == 0 || (k == M - 1 && L % 2 == 0))
        return density ? SQRT2 : 1.0;
    return 2.0;
}

// The noise estimate of the engine's own input: an XY record is measured in place.
template <class S, class Engine>
double NoiseOfSource(Engine &e)
{
    return e.GaussNoise(e.pxy);
}

inline unsigned char reps_of(int count) { return static_cast<unsigned char>(count > 255 ? 255 : count); }

} // namespace detail

// Mean and inverse variance of n values from their sums: the same rule as
// the series container's, where every averaged record's weights come from.
template <class S>
void BasicFFT<S>::std(int n, double sum, double sum2, double &m, double &ivar)
{
    CXY::IVar(n, sum, sum2, m, ivar);
}

template <class S>
double BasicFFT<S>::BinValue(const SpectrumFormat *f, double re, double im, double s, int segnorm, int full)
{
    if (!f)
        return 0.0;
    BinTerms t;
    t.re = re;
    t.im = im;
    t.s = s;
    t.P = (re * re + im * im) * s;
    if (full)
        t.P *= (static_cast<double>(cnt) * cnt) / (static_cast<double>(seglen) * seglen);
    // N by default: the segment scale in the block, (N/S)^2, already turns N into S.
    t.D = (segnorm && !full) ? seglen : cnt;
    t.A = std::sqrt(t.P) / t.D;
    t.L = len;
    t.dx = xspc;
    t.variance = variance;
    return f->value(t);
}

template <class S>
double BasicFFT<S>::FFTParm(double re, double im, double s, int format, int segnorm, int full)
{
    return BinValue(FindSpectrumFormat(format), re, im, s, segnorm, full);
}

// The trailer gain chosen by gainmode (1 power gain, 2 coherent gain squared,
// 3 segment scale), or 1.0 for no correction.
template <class S>
double BasicFFT<S>::GainScale(const double *b) const
{
    const int L = static_cast<int>(b[0]);
    return (gainmode >= 1 && gainmode <= 3) ? b[L + gainmode + 2] : 1.0;
}

// Scale of a segment block in an averaged record: the gain times the segment scale.
template <class S>
double BasicFFT<S>::SegmentScale(const double *b) const
{
    const int L = static_cast<int>(b[0]);
    return GainScale(b) * b[L + 5];
}

// df: (S-1) / (L (x[S] - x[1])) with segments, (N-1) / (L (x[N] - x[1]))
// without. The span of the first S points stands for the spacing even when
// x is not uniform.
template <class S>
double BasicFFT<S>::FreqStep(bool segmented)
{
    int n = segmented ? seglen : cnt;
    if (n > cnt)
        n = cnt; // seglen changed by a setter since the pass
    if (!pxy || n < 1 || len == 0)
        return 0.0;
    return (n - 1.0) / (len * (S::X(pxy, n) - S::X(pxy, 1)));
}

// Octave and third-octave band records come with the band analysis; until
// then no band record is built and the long record stays.
template <class S>
XY *BasicFFT<S>::Bands(XY *, int)
{
    return nullptr;
}

template <class S>
XY *BasicFFT<S>::GetXYpFFT(int format, int slot, int mode)
{
    if (format == 7)
        maxdb = maxdbseg = detail::DB_FLOOR;
    const bool own = slot >= 0 && slot <= 4;
    if (own) {
        std::free(xyf[slot]);
        xyf[slot] = nullptr;
    }
    const int L = len, M = L / 2 + 1, N = cnt, K = fftcnt;
    const bool segmented = segs && K > 0;
    XY *p = (fft && L >= 1) ? static_cast<XY *>(std::calloc(static_cast<size_t>(M) + 3, sizeof(XY))) : nullptr;
    if (own)
        xyf[slot] = p;
    if (!p) {
        failed = 1;
        return nullptr;
    }
    const SpectrumFormat *f = FindSpectrumFormat(format);
    const int density = f ? f->density : 0;
    const double df = FreqStep(segmented);

    p[0].x = M;
    p[0].y = N;
    p[0].flag = 32;
    p[M + 1].x = L;
    p[M + 1].y = xspc;
    p[M + 1].w = df;
    p[M + 1].flag = static_cast<signed char>(format);
    if (segmented)
        p[M + 2].x = seglen;
    p[M + 2].y = variance;

    if (!segmented) {
        const double *b = fft;
        const double s = GainScale(b);
        for (int k = 0; k < M; k++) {
            const double fk = detail::bin_factor(k, L, M, density);
            const double re = fk * b[2 * k + 1], im = -fk * b[2 * k + 2];
            if (format == 14) {
                p[k + 1].y = re * std::sqrt(s);
                p[k + 1].w = im * std::sqrt(s);
                continue;
            }
            const double v = BinValue(f, re, im, s, 0, 0);
            p[k + 1].y = v;
            if (format == 7 && v > maxdb)
                maxdb = maxdbseg = v;
        }
    } else if (mode == 0) {
        // Averaging follows the format: decibels are averaged as decibels,
        // phases as phases.
        for (int k = 0; k < M; k++) {
            const double fk = detail::bin_factor(k, L, M, density);
            double sum = 0.0, sum2 = 0.0;
            for (int j = 0; j < K; j++) {
                const double *b = segs[j];
                const double v = BinValue(f, fk * b[2 * k + 1], -fk * b[2 * k + 2], SegmentScale(b), 0, 0);
                sum += v;
                sum2 += v * v;
                if (format == 7 && v > maxdbseg)
                    maxdbseg = v;
            }
            double mean_v, ivar;
            std(K, sum, sum2, mean_v, ivar);
            p[k + 1].y = mean_v;
            p[k + 1].w = ivar;
            p[k + 1].reps = detail::reps_of(K);
            if (format == 7 && mean_v > maxdb)
                maxdb = mean_v;
        }
        p[0].w = 1.0;
        p[0].reps = XY_HDR_INVVAR;
    } else {
        // A raw weighted sum of squared magnitudes: no format, no bin factor.
        for (int k = 0; k < M; k++) {
            double sum = 0.0;
            for (int j = 0; j < K; j++) {
                const double *b = segs[j];
                double c = 1.0;
                if (mode & 1)
                    c *= GainScale(b);
                if (mode & 2)
                    c *= static_cast<double>(N) / (static_cast<double>(seglen) * K);
                sum += (b[2 * k + 1] * b[2 * k + 1] + b[2 * k + 2] * b[2 * k + 2]) * c;
            }
            p[k + 1].y = sum;
        }
    }
    if (mode == 0 && format == 7)
        for (int k = 1; k <= M; k++)
            p[k].y -= maxdb;
    for (int k = 1; k <= M; k++)
        p[k].x = (k - 1) * df;
    fspc = df;

    if (format == 50)
        UnwrapPhase(p);
    if (format >= 40 && format <= 43) {
        XY *band = Bands(p, format);
        if (band) {
            std::free(p);
            p = band;
            if (own)
                xyf[slot] = p;
        }
    }
    return p;
}

template <class S>
XY **BasicFFT<S>::GetXYppFFT(int format, int segnorm, int slot, int full)
{
    // Per-segment records need a segment pass; slots are 0 and 1.
    if (slot < 0 || slot > 1 || !segs || fftcnt < 1 || !pxy)
        return nullptr;
    const int L = len, M = L / 2 + 1, N = cnt, K = fftcnt;
    detail::WorkArray times(K);
    if (!times.p) {
        failed = 1;
        return nullptr;
    }
    // Walked with the current seglen and overlap: after a setter changed them
    // without a new pass, a walk that leaves the series gives no record.
    if (!SliceTimes(times.p, K))
        return nullptr;
    if (format == 7)
        maxdbseg = detail::DB_FLOOR;
    detail::free_record_array(xyff[slot]);
    XY **arr = static_cast<XY **>(std::calloc(static_cast<size_t>(K) + 1, sizeof(XY *)));
    if (!arr) {
        failed = 1;
        return nullptr;
    }
    for (int j = 0; j < K; j++) {
        arr[j] = static_cast<XY *>(std::calloc(static_cast<size_t>(M) + 3, sizeof(XY)));
        if (!arr[j]) {
            detail::free_record_array(arr);
            failed = 1;
            return nullptr;
        }
    }
    xyff[slot] = arr;
    const SpectrumFormat *f = FindSpectrumFormat(format);
    const int density = f ? f->density : 0;
    const double df = FreqStep(false);
    for (int j = 0; j < K; j++) {
        const double *b = segs[j];
        XY *p = arr[j];
        const double s = segnorm ? GainScale(b) : SegmentScale(b);
        for (int k = 0; k < M; k++) {
            const double fk = detail::bin_factor(k, L, M, density);
            const double v = BinValue(f, fk * b[2 * k + 1], -fk * b[2 * k + 2], s, segnorm, full);
            p[k + 1].y = v;
            p[k + 1].x = k * df;
            if (format == 7 && v > maxdbseg)
                maxdbseg = v;
        }
        p[0].x = M;
        p[0].y = j + 1;
        p[0].flag = 32;
        p[M + 1].x = L;
        p[M + 1].y = xspc;
        p[M + 1].w = N;
        p[M + 2].x = times.p[j];
        p[M + 2].y = variance;
    }
    for (int j = 0; j < K; j++) {
        if (format == 7)
            for (int k = 1; k <= M; k++)
                arr[j][k].y -= maxdbseg; // one reference for the whole grid
        if (format == 50)
            UnwrapPhase(arr[j]);
        if (format >= 40 && format <= 43) {
            XY *band = Bands(arr[j], format);
            if (band) {
                std::free(arr[j]);
                arr[j] = band;
            }
        }
    }
    return arr;
}

template <class S>
XY *BasicFFT<S>::FullXYpFFT(int format, int slot)
{
    XY *p = GetXYpFFT(format, -1, 0);
    if (!p)
        return nullptr;
    const int L = len, M = L / 2 + 1;
    // Both sides share the one-sided values: halve the inner bins.
    if (S::HalvesFullSpectrum(format))
        for (int k = 2; k <= L / 2 + (L % 2); k++)
            p[k].y *= 0.5;
    XY *q = static_cast<XY *>(std::calloc(static_cast<size_t>(L) + 3, sizeof(XY)));
    if (!q) {
        failed = 1;
        std::free(p);
        return nullptr;
    }
    if (slot >= 0 && slot <= 4) {
        std::free(xyf[slot]);
        xyf[slot] = q;
    }
    q[0] = p[0];
    q[0].x = L;
    q[L + 1] = p[M + 1];
    for (int i = 1; i <= M - 1; i++) {
        q[i] = p[M + 1 - i];
        q[i].x = -q[i].x;
        if (format == 13)
            q[i].y = -q[i].y;
    }
    // For even L the last point, at plus the Nyquist frequency, lands in
    // element L + 1 over the metadata: kept in the block but not counted.
    for (int i = 1; i <= M; i++)
        q[M - 1 + i] = p[i];
    std::free(p);
    return q;
}

template <class S>
void BasicFFT<S>::GetSingleXYpFFT(int bin, int format, XY *point, int segnorm)
{
    const int L = len, M = L / 2 + 1, K = fftcnt;
    if (!point || !fft || bin < 1 || bin > M)
        return;
    const bool segmented = segs && K > 0;
    const SpectrumFormat *f = FindSpectrumFormat(format);
    const int k = bin - 1;
    const double fk = detail::bin_factor(k, L, M, f ? f->density : 0);
    if (segmented) {
        double sum = 0.0, sum2 = 0.0;
        for (int j = 0; j < K; j++) {
            const double *b = segs[j];
            const double s = segnorm ? GainScale(b) : SegmentScale(b);
            const double v = BinValue(f, fk * b[2 * k + 1], -fk * b[2 * k + 2], s, 0, 0);
            sum += v;
            sum2 += v * v;
        }
        double mean_v, ivar;
        std(K, sum, sum2, mean_v, ivar);
        point->y = mean_v;
        point->w = ivar > 0.0 ? std::sqrt(1.0 / ivar) : 0.0; // a standard deviation here
        point->reps = detail::reps_of(K);
    } else {
        point->y = BinValue(f, fk * fft[2 * k + 1], -fk * fft[2 * k + 2], GainScale(fft), 0, 0);
        point->w = 0.0;
        point->reps = 1;
    }
    if (format == 7)
        point->y -= maxdb;
    point->x = k * FreqStep(segmented);
}

// One correction of 2 pi at most per step, when the jump exceeds pi strictly.
template <class S>
void BasicFFT<S>::UnwrapPhase(XY *xy)
{
    if (!xy)
        return;
    const int N = static_cast<int>(xy[0].x);
    double c = 0.0;
    for (int k = 2; k <= N; k++) {
        const double d = xy[k].y - (xy[k - 1].y - c);
        if (std::fabs(d) > detail::PI)
            c += d >= 0.0 ? -detail::TWO_PI : detail::TWO_PI;
        xy[k].y += c;
    }
}

template <class S>
void BasicFFT<S>::CopyFrequency(XY *xy)
{
    if (!xy)
        return;
    const int M = len / 2 + 1;
    const double df = FreqStep(segs && fftcnt > 0);
    xy[0].flag = 32;
    for (int k = 1; k <= M; k++)
        xy[k].x = (k - 1) * df;
}

// The summed density spectrum, compensated for zero padding so that it
// matches RawPower (Parseval).
template <class S>
double BasicFFT<S>::Power(int mode)
{
    static const int formats[4] = {11, 10, 9, 15};
    if (mode < 0 || mode > 3)
        return 0.0;
    XY *p = GetXYpFFT(formats[mode], -1, 0);
    if (!p)
        return 0.0;
    const int M = static_cast<int>(p[0].x);
    double sum = 0.0;
    for (int k = 1; k <= M; k++)
        sum += p[k].y;
    std::free(p);
    // A negative seglen ran as one block, like 0.
    const int segment = seglen > 0 ? seglen : 0;
    if (segment != 0 && segment != len)
        sum *= static_cast<double>(segment) / len;
    if (segment == 0 && cnt != len)
        sum *= static_cast<double>(cnt) / len;
    return sum;
}

template <class S>
double BasicFFT<S>::RawPower(int mode)
{
    if (!pxy)
        return 0.0;
    double q = 0.0;
    for (int i = 1; i <= cnt; i++)
        q += S::Y(pxy, i) * S::Y(pxy, i);
    if (mode == 0)
        return q;
    if (mode == 1)
        return q / cnt;
    return q * xspc;
}

template <class S>
double BasicFFT<S>::MaxPower(double *block)
{
    if (!block)
        return 0.0;
    double m = 0.0;
    const int L = static_cast<int>(block[0]);
    for (int k = 0; k <= L / 2; k++) {
        const double v = block[2 * k + 1] * block[2 * k + 1] + block[2 * k + 2] * block[2 * k + 2];
        if (v > m)
            m = v;
    }
    return m;
}

template <class S>
double BasicFFT<S>::UniNoise(XY *xy)
{
    if (!xy)
        return 0.0;
    CXY c(xy);
    return c.UniNoise(xy);
}

template <class S>
double BasicFFT<S>::GaussNoise(XY *xy)
{
    if (!xy)
        return 0.0;
    CXY c(xy);
    return c.GaussNoise(xy);
}

// Noise of the input (0, computed once and cached) or of the last inverse
// record (1, computed afresh at every call).
template <class S>
double BasicFFT<S>::GetNoise(int which)
{
    if (which == 0) {
        if (noise[0] == 0.0)
            noise[0] = detail::NoiseOfSource<S>(*this);
        return noise[0];
    }
    if (which == 1) {
        noise[1] = GaussNoise(xyp);
        return noise[1];
    }
    return 0.0;
}

template <class S>
char *BasicFFT<S>::GetStrNoise(char *dst, int which)
{
    if (!dst)
        return dst;
    dst[0] = '\0';
    if (which == 0 || which == -1)
        GetNoise(0);
    if (which == 1 || which == -1)
        GetNoise(1);
    if (which == -1) {
        if (noise[1] != 0.0)
            std::sprintf(dst, "(%.2lf%c)", noise[1] / noise[0] * 100.0, 37);
    } else if (which == 0 || which == 1) {
        std::sprintf(dst, "%6.3lf", noise[which]);
    }
    return dst;
}

} // namespace oscilla

#endif
