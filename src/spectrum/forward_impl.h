// Construction, input measures and the forward pass of the spectrum engine.
#ifndef OSCILLA_SRC_SPECTRUM_FORWARD_IMPL_H
#define OSCILLA_SRC_SPECTRUM_FORWARD_IMPL_H

#include "fft/kernels.h"
#include "oscilla/series/complex.h"
#include "oscilla/spectrum/cfft.h"
#include "oscilla/windows/cwinfn.h"

#include <climits>
#include <cstdlib>
#include <cstring>
#include <new>

namespace oscilla {

namespace detail {

// A malloc'ed work array: a failed allocation is a null pointer, never an exception.
struct WorkArray {
    double *p;
    explicit WorkArray(int n) : p(static_cast<double *>(std::malloc((n > 0 ? static_cast<size_t>(n) : 1) * sizeof(double)))) {}
    ~WorkArray() { std::free(p); }
    WorkArray(const WorkArray &) = delete;
    WorkArray &operator=(const WorkArray &) = delete;
};

inline void free_record_array(XY **&arr)
{
    if (!arr)
        return;
    for (XY **p = arr; *p; p++)
        std::free(*p);
    std::free(arr);
    arr = nullptr;
}

} // namespace detail

template <class S>
BasicFFT<S>::BasicFFT(Record *xy, int primefac_, int remlintrend_, int minpad_, int window_, double alpha_,
                      int seglen_, double overlap_, int gainmode_)
{
    failed = 0;
    StoreParameters(primefac_, remlintrend_, minpad_, window_, alpha_, seglen_, overlap_, gainmode_);
    pxy = xy;
    Init();
    if (!xy)
        return;
    Measure(xy);
    Forward();
}

template <class S>
void BasicFFT<S>::StoreParameters(int primefac_, int remlintrend_, int minpad_, int window_, double alpha_,
                                  int seglen_, double overlap_, int gainmode_)
{
    primefac = primefac_;
    remlintrend = remlintrend_;
    minpad = minpad_;
    window = window_;
    alpha = alpha_;
    seglen = seglen_;
    overlap = overlap_;
    gainmode = gainmode_;
}

// The input measures taken once per series: count, area, spacing, mean, variance.
template <class S>
void BasicFFT<S>::Measure(Record *xy)
{
    cnt = S::Count(xy);
    area = RawArea(xy);
    xspc = XSpacing(xy);
    AveVar(xy, mean, variance);
}

template <class S>
void BasicFFT<S>::Init()
{
    failed = 0;
    xyp = nullptr;
    for (auto &p : xyf)
        p = nullptr;
    xyff[0] = xyff[1] = nullptr;
    xyfs = nullptr;
    xyzs = xyzpk = nullptr;
    cnt = len = 0;
    area = 0.0;
    pad = 0;
    fft = ifft = response = nullptr;
    segs = nullptr;
    summary = freqmatr = nullptr;
    fftcnt = 0;
    noise[0] = noise[1] = 0.0;
    xspc = fspc = 0.0;
    ipass = 0;
    for (auto &p : cfft)
        p = nullptr;
    kstate = nullptr;
    abort = 0;
    maxdbseg = maxdb = 0.0;
    mean = variance = 0.0;
    split = new (std::nothrow) CFFT4();
    if (!split)
        failed = 1;
}

template <class S>
BasicFFT<S>::~BasicFFT()
{
    std::free(xyp);
    FreeXYf();
    FreeXYff();
    FreeXYfs();
    FreeCfft();
    std::free(xyzs);
    std::free(xyzpk);
    std::free(fft);
    std::free(ifft);
    std::free(response);
    FreeFft();
    if (summary)
        lmatrfree(summary);
    if (freqmatr)
        lmatrfree(freqmatr);
    delete split;
    detail::kernel_state_free(kstate);
}

template <class S>
void BasicFFT<S>::Reset(Record *xy, int primefac_, int remlintrend_, int minpad_, int window_, double alpha_,
                        int seglen_, double overlap_, int gainmode_)
{
    StoreParameters(primefac_, remlintrend_, minpad_, window_, alpha_, seglen_, overlap_, gainmode_);
    noise[0] = noise[1] = 0.0;
    if (xy) {
        pxy = xy;
        Measure(xy);
    }
    Forward();
}

template <class S>
void BasicFFT<S>::FreeFft()
{
    if (segs) {
        for (int i = 0; i < fftcnt; i++)
            std::free(segs[i]);
        std::free(segs);
    }
    segs = nullptr;
    fftcnt = 0;
}

template <class S>
void BasicFFT<S>::FreeXYf()
{
    for (auto &p : xyf) {
        std::free(p);
        p = nullptr;
    }
}

template <class S>
void BasicFFT<S>::FreeXYff()
{
    detail::free_record_array(xyff[0]);
    detail::free_record_array(xyff[1]);
}

template <class S>
void BasicFFT<S>::FreeXYfs()
{
    detail::free_record_array(xyfs);
}

template <class S>
void BasicFFT<S>::FreeCfft()
{
    for (auto &p : cfft) {
        std::free(p);
        p = nullptr;
    }
}

// Trapezoid area: each y weighs half the distance between its neighbours,
// the end points half their single gap.
template <class S>
double BasicFFT<S>::RawArea(Record *xy)
{
    const int N = S::Count(xy);
    if (N < 2)
        return 0.0;
    double sum = S::Y(xy, 1) * (S::X(xy, 2) - S::X(xy, 1)) / 2.0;
    for (int i = 2; i < N; i++)
        sum += S::Y(xy, i) * (S::X(xy, i + 1) - S::X(xy, i - 1)) / 2.0;
    sum += S::Y(xy, N) * (S::X(xy, N) - S::X(xy, N - 1)) / 2.0;
    return sum;
}

// Mean spacing (x[N] - x[1]) / (N - 1). The scan for uniformity (1 percent
// tolerance) marks the record's header, unless it already says uniform.
template <class S>
double BasicFFT<S>::XSpacing(Record *xy)
{
    const int N = S::Count(xy);
    if (N < 2) {
        xspc = 0.0;
        return xspc;
    }
    if (!(xy[0].flag & XY_HDR_UNIFORM)) {
        const double d = S::X(xy, 2) - S::X(xy, 1);
        const double lo = 0.99 * d, hi = 1.01 * d;
        bool uniform = true;
        for (int i = 3; i <= N && uniform; i++) {
            const double g = S::X(xy, i) - S::X(xy, i - 1);
            if (g < lo || g > hi)
                uniform = false;
        }
        if (uniform)
            xy[0].flag = static_cast<signed char>((xy[0].flag | XY_HDR_UNIFORM) & ~XY_HDR_NONUNIFORM);
        else
            xy[0].flag = static_cast<signed char>((xy[0].flag | XY_HDR_NONUNIFORM) & ~XY_HDR_UNIFORM);
    }
    xspc = (S::X(xy, N) - S::X(xy, 1)) / (N - 1);
    return xspc;
}

// Two passes: the mean, then the corrected sum of squared deviations.
template <class S>
void BasicFFT<S>::AveVar(Record *xy, double &m, double &var)
{
    const int N = S::Count(xy);
    m = var = 0.0;
    if (N < 1)
        return;
    double sum = 0.0;
    for (int i = 1; i <= N; i++)
        sum += S::Y(xy, i);
    m = sum / N;
    double sd = 0.0, sd2 = 0.0;
    for (int i = 1; i <= N; i++) {
        const double d = S::Y(xy, i) - m;
        sd += d;
        sd2 += d * d;
    }
    var = (sd2 - sd * sd / N) / (N - 1);
}

// Segment step: seglen (100 - overlap) / 100 rounded, and at least 1.
template <class S>
int BasicFFT<S>::SegmentStep() const
{
    const double v = seglen * (100.0 - overlap) / 100.0 + 0.5;
    if (!(v >= 1.0))
        return 1;
    if (v >= static_cast<double>(INT_MAX))
        return INT_MAX;
    return static_cast<int>(v);
}

// Whole segments only: a tail shorter than seglen is dropped, never padded.
template <class S>
int BasicFFT<S>::CountSegments(int step) const
{
    int count = 0;
    long long s = 1, e = 1;
    while (e < cnt) {
        e = s + seglen - 1;
        if (e > cnt)
            break;
        count++;
        s += step;
    }
    return count;
}

template <class S>
void BasicFFT<S>::Forward()
{
    std::free(fft);
    fft = nullptr;
    FreeFft();
    if (!pxy)
        return;
    const int N = cnt;

    // The chord through the first and last sample, by sample index (not x),
    // over the whole series also when segmenting.
    const bool chord = remlintrend && N >= 2;
    const double c = chord ? 1.0 / (N - 1) : 0.0;
    const double y1 = N >= 1 ? S::Y(pxy, 1) : 0.0, yN = N >= 1 ? S::Y(pxy, N) : 0.0;
    auto detrended = [&](int i) {
        const double v = S::Y(pxy, i);
        return chord ? v - c * ((N - i) * y1 + (i - 1) * yN) : v;
    };
    auto apply_window = [&](double *b, int L, int n) {
        if (window < 1 || n < 1) {
            b[L + 3] = 1.0;
            b[L + 4] = 1.0;
            return;
        }
        double gains[2] = {1.0, 1.0};
        CWinFn wf(b, 1, window, n, alpha, gains);
        b[L + 3] = gains[0];
        b[L + 4] = gains[1] * gains[1];
    };

    if (seglen <= 0) {
        const int T = N + minpad;
        if (primefac == KERNEL_PRIME_FACTOR && ((T % 2 && T > PFA_MAX) || (T % 2 == 0 && T > 2 * PFA_MAX)))
            SetPrimeFac(KERNEL_CHIRP_Z);
        const int L = FindFFTlen(T);
        len = L;
        if (L < 1)
            return; // nothing to transform: fft stays null and output calls report it
        fft = static_cast<double *>(std::malloc((static_cast<size_t>(L) + 6) * sizeof(double)));
        if (!fft) {
            failed = 1;
            return;
        }
        pad = L - N;
        fft[0] = L;
        // A length below N (negative padding, or a request past the table's
        // reach) keeps only the first L samples.
        const int n = N < L ? N : L;
        for (int i = 1; i <= n; i++)
            fft[i] = detrended(i);
        for (int i = n + 1; i <= L; i++)
            fft[i] = 0.0;
        apply_window(fft, L, n);
        fft[L + 5] = 1.0;
        realft(fft, L, 1, 1);
        ipass = 1;
        return;
    }

    const int savedpf = primefac;
    if (seglen > N)
        seglen = N;
    const int L = seglen + minpad;
    len = L;
    const int step = SegmentStep();
    const int count = L >= 1 ? CountSegments(step) : 0;
    pad = minpad;
    ipass = 0;
    if (count < 1)
        return; // nothing to transform: fft stays null and output calls report it
    primefac = KERNEL_AUTO;
    segs = static_cast<double **>(std::calloc(static_cast<size_t>(count), sizeof(double *)));
    if (!segs) {
        failed = 1;
        primefac = savedpf;
        return;
    }
    fftcnt = count;
    for (int k = 0; k < count; k++) {
        segs[k] = static_cast<double *>(std::malloc((static_cast<size_t>(L) + 6) * sizeof(double)));
        if (!segs[k]) {
            // A missing segment block is not a failure of the object: fft
            // stays null, which the next output call reports.
            FreeFft();
            primefac = savedpf;
            return;
        }
    }
    const int n = seglen < L ? seglen : L;
    const double scale = static_cast<double>(N) / seglen;
    long long s = 1;
    for (int k = 0; k < count; k++, s += step) {
        double *b = segs[k];
        for (int i = 1; i <= n; i++)
            b[i] = detrended(static_cast<int>(s) + i - 1);
        for (int i = n + 1; i <= L; i++)
            b[i] = 0.0;
        apply_window(b, L, n);
        b[L + 5] = scale * scale;
        realft(b, L, 1, 1);
        b[0] = L;
        ipass++;
    }
    primefac = savedpf;
    fft = static_cast<double *>(std::malloc((static_cast<size_t>(L) + 6) * sizeof(double)));
    if (!fft) {
        failed = 1;
        return;
    }
    std::memcpy(fft, segs[0], (static_cast<size_t>(L) + 6) * sizeof(double));
}

} // namespace oscilla

#endif
