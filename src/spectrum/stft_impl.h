// Short-time Fourier transform: the segment blocks as a time-frequency grid.
#ifndef OSCILLA_SRC_SPECTRUM_STFT_IMPL_H
#define OSCILLA_SRC_SPECTRUM_STFT_IMPL_H

#include "oscilla/estimate/cscan.h"
#include "oscilla/series/cxy.h"
#include "oscilla/spectrum/cfft.h"

#include <cfloat>
#include <cmath>
#include <cstdlib>

namespace oscilla {

namespace detail {

constexpr int STFT_MAX_POINTS = 16384; // a grid small enough to draw
constexpr int STFT_MAX_SLICES = 4096;  // slices kept when fewer than 4 bins per slice would remain

} // namespace detail

// Times of the first `count` slices: the mean x of each segment's first and
// last point, walking the segments as the forward pass does.
template <class S>
bool BasicFFT<S>::SliceTimes(double *times, int count)
{
    if (!pxy || seglen < 1)
        return false;
    const int step = SegmentStep();
    long long s = 1;
    for (int j = 0; j < count; j++, s += step) {
        const long long e = s + seglen - 1;
        if (e > cnt)
            return false;
        times[j] = (S::X(pxy, static_cast<int>(s)) + S::X(pxy, static_cast<int>(e))) / 2.0;
    }
    return true;
}

// Per-segment values carry the divisor S; the grid shows them per N, which
// scales amplitudes and densities by r = N/S and adds 10 log10(r) to decibels.
template <class S>
void BasicFFT<S>::STFTRescale(double &z, int format, double r)
{
    if (format == 4 || (format >= 8 && format <= 11))
        z *= r;
    else if (format == 6 || format == 7)
        z = std::log(std::exp(0.23025850929940456 * z) * r) * 4.342944819032518;
}

// Bins are merged no further than 4 per slice: then the later slices are
// dropped instead, 4096 at most being kept.
template <class S>
void BasicFFT<S>::FewBinsPerSlice(int bins, int &group, int &per, int &slices)
{
    if (per >= 4)
        return;
    group = bins / 4 > 0 ? bins / 4 : 1;
    per = 4;
    slices = slices < detail::STFT_MAX_SLICES ? slices : detail::STFT_MAX_SLICES;
}

template <class S>
double BasicFFT<S>::STFTDataPower(int format, double t0, double t1)
{
    if (!pxy)
        return 0.0;
    double q = 0.0;
    for (int i = 1; i <= cnt; i++) {
        const double x = S::X(pxy, i);
        if (x >= t0 && x <= t1)
            q += S::Y(pxy, i) * S::Y(pxy, i);
    }
    switch (format) {
    case 9:
        return q * xspc;
    case 10:
        return q / cnt;
    case 11:
        return q;
    default:
        return q * xspc * len / cnt;
    }
}

template <class S>
XYZ *BasicFFT<S>::STFT(int format)
{
    XY **pp = GetXYppFFT(format, 1, 0, 0);
    if (!pp || ipass < 1)
        return nullptr;
    int slices = ipass;
    detail::WorkArray table(slices);
    if (!table.p || !SliceTimes(table.p, slices)) {
        failed = 1;
        return nullptr;
    }
    const double *times = table.p;
    const int bins = static_cast<int>(pp[0][0].x);
    const int limit = detail::STFT_MAX_POINTS / slices;
    int group = 1, per = bins;
    if (bins > limit) {
        group = limit > 0 ? static_cast<int>(std::ceil(static_cast<double>(bins) / limit)) : bins;
        per = bins / group;
        FewBinsPerSlice(bins, group, per, slices);
    }
    std::free(xyzs);
    const size_t points = static_cast<size_t>(slices) * per;
    xyzs = static_cast<XYZ *>(std::calloc(points + 2, sizeof(XYZ)));
    if (!xyzs) {
        failed = 1;
        return nullptr;
    }
    const double r = static_cast<double>(cnt) / seglen;
    double top = -1e300;
    size_t n = 0;
    for (int j = 0; j < slices; j++) {
        const XY *p = pp[j];
        for (int b = 1, g = 0; g < per && b <= bins - group + 1; b += group, g++) {
            XYZ &q = xyzs[++n];
            q.x = times[j];
            if (group == 1) {
                q.y = p[b].x;
                q.z = p[b].y;
            } else {
                // The largest value of a group: a narrow peak survives the merge.
                double sx = 0.0, zmax = p[b].y;
                for (int i = b; i < b + group; i++) {
                    sx += p[i].x;
                    if (p[i].y > zmax)
                        zmax = p[i].y;
                }
                q.y = sx / group;
                q.z = zmax;
            }
            STFTRescale(q.z, format, r);
            if (q.z > top)
                top = q.z;
        }
    }
    if (format == 7)
        for (size_t i = 1; i <= n; i++)
            xyzs[i].z -= top;
    xyzs[0].x = static_cast<double>(n);
    xyzs[0].y = slices;
    xyzs[0].w = per;
    xyzs[n + 1].x = STFTDataPower(format, times[0], times[slices - 1]);
    xyzs[n + 1].y = times[0];
    xyzs[n + 1].w = times[slices - 1];
    return xyzs;
}

template <class S>
XY **BasicFFT<S>::STFTGrid(int format, int group, double range)
{
    XY **pp = GetXYppFFT(format, 1, 0, 0);
    if (!pp || ipass < 1) {
        failed = 1;
        return nullptr;
    }
    int slices = ipass;
    detail::WorkArray table(slices);
    if (!table.p || !SliceTimes(table.p, slices)) {
        failed = 1;
        return nullptr;
    }
    const double *times = table.p;
    const int bins = static_cast<int>(pp[0][0].x);
    int per = bins;
    if (group < 2) {
        group = 1;
    } else {
        per = bins / group;
        FewBinsPerSlice(bins, group, per, slices);
    }
    detail::free_record_array(xyfs);
    xyfs = static_cast<XY **>(std::calloc(static_cast<size_t>(slices) + 1, sizeof(XY *)));
    if (!xyfs) {
        failed = 1;
        return nullptr;
    }
    for (int j = 0; j < slices; j++) {
        // A whole copy of the slice's record when bins are not grouped.
        const int size = group == 1 ? bins : per;
        XY *q = static_cast<XY *>(std::calloc(static_cast<size_t>(size) + 3, sizeof(XY)));
        if (!q) {
            detail::free_record_array(xyfs);
            failed = 1;
            return nullptr;
        }
        xyfs[j] = q;
        const XY *p = pp[j];
        if (group == 1) {
            for (int i = 0; i <= bins + 2; i++)
                q[i] = p[i];
            continue;
        }
        // A mean per group here, not the largest value as in the grid.
        int g = 0;
        for (int b = 1; g < per && b <= bins - group + 1; b += group, g++) {
            double sx = 0.0, sy = 0.0;
            for (int i = b; i < b + group; i++) {
                sx += p[i].x;
                sy += p[i].y;
            }
            q[g + 1].x = sx / group;
            q[g + 1].y = sy / group;
        }
        q[0].x = g;
        q[g + 1] = p[bins + 1];
        q[g + 2] = p[bins + 2];
    }
    if (format == 6 || format == 7) {
        double top = -DBL_MAX;
        for (int j = 0; j < slices; j++)
            for (int i = 1; i <= static_cast<int>(xyfs[j][0].x); i++)
                if (xyfs[j][i].y > top)
                    top = xyfs[j][i].y;
        if (format == 7) {
            for (int j = 0; j < slices; j++)
                for (int i = 1; i <= static_cast<int>(xyfs[j][0].x); i++)
                    xyfs[j][i].y -= top;
            top = 0.0;
        }
        const double a = std::fabs(range);
        if (a >= 1.0 && a <= 120.0) {
            const double floor = top - a;
            for (int j = 0; j < slices; j++)
                for (int i = 1; i <= static_cast<int>(xyfs[j][0].x); i++)
                    if (xyfs[j][i].y < floor)
                        xyfs[j][i].y = floor;
        }
    }
    xyfs[0][per + 2].y = slices;
    xyfs[0][per + 2].w = STFTDataPower(format, times[0], times[slices - 1]);
    return xyfs;
}

// The strongest maxima of every slice, strongest first, from the per-segment
// records as the last STFT or GetXYppFFT left them (format must be theirs).
template <class S>
XYZ *BasicFFT<S>::STFTPeaks(int format, int maxpeaks)
{
    XY **pp = xyff[0];
    const int slices = ipass;
    if (!pp || slices < 1)
        return nullptr;
    if (maxpeaks < 0)
        maxpeaks = 0;
    for (int j = 0; j < slices; j++)
        if (!pp[j])
            return nullptr; // fewer records than slices: not built by a segment pass
    detail::WorkArray table(slices);
    if (!table.p || !SliceTimes(table.p, slices)) {
        failed = 1;
        return nullptr;
    }
    const double *times = table.p;
    std::free(xyzpk);
    xyzpk = static_cast<XYZ *>(std::calloc(static_cast<size_t>(slices) * maxpeaks + 1, sizeof(XYZ)));
    if (!xyzpk) {
        failed = 1;
        return nullptr;
    }
    const double r = static_cast<double>(cnt) / seglen;
    size_t n = 0;
    for (int j = 0; j < slices; j++) {
        if (maxpeaks == 0)
            break;
        CScan scan;
        XY *peaks = scan.GetLmtdMaxima(pp[j], 1, 0, maxpeaks);
        if (!peaks)
            continue;
        const int count = static_cast<int>(peaks[0].x);
        if (count > 1)
            CXY::SortDecY(peaks);
        for (int i = 1; i <= count && i <= maxpeaks; i++) {
            XYZ &q = xyzpk[++n];
            q.x = times[j];
            q.y = peaks[i].x;
            q.z = peaks[i].y;
            STFTRescale(q.z, format, r);
        }
        std::free(peaks);
    }
    xyzpk[0].x = static_cast<double>(n);
    if (format == 7) {
        double top = -1e300;
        for (size_t i = 1; i <= n; i++)
            top = xyzpk[i].z > top ? xyzpk[i].z : top;
        for (size_t i = 1; i <= n; i++)
            xyzpk[i].z -= top;
    }
    return xyzpk;
}

} // namespace oscilla

#endif
