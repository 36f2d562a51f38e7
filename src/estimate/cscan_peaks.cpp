// CScan: the peak lists that the analysis objects read from a scan.
#include "oscilla/estimate/cscan.h"

#include "oscilla/series/cxy.h"
#include "series/xy_access.h"

#include <cmath>
#include <cstdlib>

namespace oscilla {

using detail::xy_count;

const PeakRefineMode PEAK_REFINE_MODES[] = {
    {0, PEAK_SAMPLE, PEAK_W_INDEX, "sample"},
    {1, PEAK_POLYNOMIAL, PEAK_W_WIDTH, "polynomial"},
    {2, PEAK_SPLINE, PEAK_W_WIDTH, "spline"},
    {3, PEAK_SPLINE, PEAK_W_INDEX, "spline-index"},
};
const int PEAK_REFINE_MODE_COUNT = static_cast<int>(sizeof(PEAK_REFINE_MODES) / sizeof(PEAK_REFINE_MODES[0]));

const PeakRefineMode &FindPeakRefineMode(int refine)
{
    if (refine < 0)
        return PEAK_REFINE_MODES[1];
    for (int r = PEAK_REFINE_MODE_COUNT - 1; r > 0; r--)
        if (refine >= PEAK_REFINE_MODES[r].code)
            return PEAK_REFINE_MODES[r];
    return PEAK_REFINE_MODES[0];
}

namespace {

// Tolerance of every refinement the peak lists make.
constexpr double PEAK_TOL = 1e-5;

XY *new_record(int capacity)
{
    XY *r = static_cast<XY *>(std::calloc(static_cast<size_t>(capacity > 0 ? capacity : 0) + 1, sizeof(XY)));
    return r;
}

// Keeps the maxCount highest peaks when more than that were compared: header y
// then holds the compared number, and the survivors go back in x order. The
// count never rises above the points the record really has.
void cut_to_count(XY *rec, int compared, int maxCount)
{
    if (maxCount <= 0 || compared <= maxCount)
        return;
    const int have = xy_count(rec);
    CXY::SortDecY(rec);
    rec[0].x = maxCount < have ? maxCount : have;
    rec[0].y = compared;
    CXY::SortIncX(rec);
}

// x distance from the previous to the next extremum, or twice the distance to
// the one neighbour at the ends of the list; 0 for a list of one.
double list_width(const double *lx, int c, int i)
{
    if (c < 2)
        return 0.0;
    if (i == 0)
        return 2.0 * (lx[1] - lx[0]);
    if (i == c - 1)
        return 2.0 * (lx[c - 1] - lx[c - 2]);
    return lx[i + 1] - lx[i - 1];
}

// |minWidth| mean sample spacings, shortened by a hundredth of one spacing.
double width_limit(const XY *xy, int n, int minWidth)
{
    return (std::abs(minWidth) - 0.01) * (xy[n].x - xy[1].x) / (n - 1);
}

} // namespace

XY *CScan::ExtremumList(XY *xy, int mode, bool minimum)
{
    const int c = minimum ? Minima(xy) : Maxima(xy);
    if (c <= 0)
        return nullptr;
    const bool spline = mode == 2;
    if (mode != 0 && spline)
        SplineCoef(xy);
    XY *r = new_record(c);
    if (!r)
        return nullptr;
    r[0].x = c;
    for (int i = 0; i < c; i++) {
        if (mode == 0) {
            r[i + 1].x = listX[i];
            r[i + 1].y = listY[i];
        } else {
            // A refinement that doesn't converge leaves the zeros in place.
            RefineCtr(xy, listIdx[i], r[i + 1].y, r[i + 1].x, minimum ? 1 : 0, PEAK_TOL, spline);
        }
    }
    return r;
}

XY *CScan::GetMaxima(XY *xy, int mode) { return ExtremumList(xy, mode, false); }
XY *CScan::GetMimina(XY *xy, int mode) { return ExtremumList(xy, mode, true); }

// The common start of the limited peak lists: the extrema scan, the width
// limit, the refinement row (with the spline built when it refines) and a
// record for at most c peaks. Null without extrema or memory.
XY *CScan::StartPeakList(XY *xy, int minWidth, int refine, int &c, double &D, const PeakRefineMode *&mode)
{
    c = Extrema(xy);
    if (c <= 0)
        return nullptr;
    D = width_limit(xy, xy_count(xy), minWidth);
    mode = &FindPeakRefineMode(refine);
    if (mode->method == PEAK_SPLINE)
        SplineCoef(xy);
    return new_record(c);
}

XY *CScan::GetLmtdMaxima(XY *xy, int minWidth, int refine, int maxCount)
{
    int c;
    double D;
    const PeakRefineMode *m;
    XY *r = StartPeakList(xy, minWidth, refine, c, D, m);
    if (!r)
        return nullptr;
    const PeakRefineMode &mode = *m;
    int kept = 0;
    for (int i = 0; i < c; i++) {
        if (listSgn[i] != 1)
            continue;
        const double width = list_width(listX, c, i);
        if (c > 1 && minWidth >= 0 && width < D)
            continue;
        const int p = listIdx[i];
        XY &o = r[++kept];
        o.x = xy[p].x;
        o.y = xy[p].y;
        if (mode.method == PEAK_SAMPLE) {
            o.w = p;
            continue;
        }
        RefineCtr(xy, p, o.y, o.x, 0, PEAK_TOL, mode.method == PEAK_SPLINE);
        o.w = mode.wcolumn == PEAK_W_INDEX ? static_cast<double>(p) : width;
    }
    if (kept == 0) {
        std::free(r);
        return nullptr;
    }
    r[0].x = kept;
    cut_to_count(r, kept, maxCount);
    return r;
}

XY *CScan::GetLmtdMaximaYThreshold(XY *xy, double threshold, int minWidth, int refine, int maxCount)
{
    XY *all = GetLmtdMaxima(xy, minWidth, refine, 0);
    if (!all)
        return nullptr;
    const int m = xy_count(all);
    XY *r = new_record(m);
    if (!r) {
        std::free(all);
        return nullptr;
    }
    int kept = 0;
    for (int i = 1; i <= m; i++)
        if (all[i].y >= threshold)
            r[++kept] = all[i];
    std::free(all);
    // Peaks that all stay below the threshold give an empty record, not null.
    r[0].x = kept;
    cut_to_count(r, kept, maxCount);
    return r;
}

XY *CScan::ReferencePeaks(XY *xy, bool useThreshold, double threshold, int minWidth, int refine, int maxCount,
                          double minSeparation)
{
    int c;
    double D;
    const PeakRefineMode *m;
    XY *r = StartPeakList(xy, minWidth, refine, c, D, m);
    if (!r)
        return nullptr;
    const PeakRefineMode &mode = *m;
    const int n = xy_count(xy);
    int kept = 0;
    for (int i = 0; i < c; i++) {
        if (listSgn[i] != 1)
            continue;
        // A lone extremum has no width; only a negative minWidth admits it here.
        if (c == 1 ? minWidth >= 0 : (minWidth >= 0 && list_width(listX, c, i) < D))
            continue;
        const int p = listIdx[i];
        if (useThreshold && !(xy[p].y >= threshold))
            continue;
        XY &o = r[++kept];
        o.y = xy[p].w;
        o.x = xy[p].x;
        o.w = xy[p].y;
        if (mode.method == PEAK_SAMPLE)
            continue;
        RefineCtr(xy, p, o.w, o.x, 0, PEAK_TOL, mode.method == PEAK_SPLINE);
        // The reference follows the refined peak into the neighbouring bin
        // when that one carries more.
        if (p > 1 && o.x < xy[p].x && xy[p - 1].w > xy[p].w)
            o.y = xy[p - 1].w;
        else if (p < n && o.x > xy[p].x && xy[p + 1].w > xy[p].w)
            o.y = xy[p + 1].w;
    }
    if (kept == 0) {
        std::free(r);
        return nullptr;
    }
    r[0].x = kept;
    int compared = kept;
    if (minSeparation > 0.0) {
        XY *thin = CXY::RemoveAdjacent(r, minSeparation);
        std::free(r);
        if (!thin)
            return nullptr;
        r = thin;
        // Only the threshold form counts what the thinning left.
        if (useThreshold)
            compared = xy_count(r);
    }
    cut_to_count(r, compared, maxCount);
    return r;
}

XY *CScan::GetLmtdMaximaReference(XY *xy, int minWidth, int refine, int maxCount, double minSeparation)
{
    return ReferencePeaks(xy, false, 0.0, minWidth, refine, maxCount, minSeparation);
}

XY *CScan::GetLmtdMaximaReference(XY *xy, double threshold, int minWidth, int refine, int maxCount,
                                  double minSeparation)
{
    return ReferencePeaks(xy, true, threshold, minWidth, refine, maxCount, minSeparation);
}

XY *CScan::GetExtrema(XY *xy, int minPoints, int maxPoints, int addEnds)
{
    const int c = Extrema(xy);
    if (!xy || !listX)
        return nullptr;
    const int n = xy_count(xy);
    if (n < 1)
        return nullptr;
    const int total = addEnds ? c + 2 : c;
    const int target = minPoints < n ? minPoints : n;
    auto put = [xy](XY &o, int p) {
        o.x = xy[p].x;
        o.y = xy[p].y;
        o.w = p;
    };

    if (target != 0 && total < target) {
        XY *r = new_record(target);
        if (!r)
            return nullptr;
        int cnt = 0;
        if (addEnds)
            put(r[++cnt], 1);
        for (int i = 0; i < c; i++)
            put(r[++cnt], listIdx[i]);
        if (addEnds)
            put(r[++cnt], n);
        r[0].x = cnt;
        CXY::SortIncX(r);
        while (cnt < target) {
            const int k = CXY::LargestXDelta(r);
            if (k < 1)
                break;
            // The midpoint is read from the series by the list index k, and the
            // bisection runs over the list: kept as the outline has always been built.
            const double m = (xy[k].x + xy[k + 1].x) / 2;
            const int j = CXY::BisecX(r, m);
            if (j == static_cast<int>(r[k + 1].w))
                break;
            if (j < 1 || j > n)
                break;
            put(r[++cnt], j);
            r[0].x = cnt;
            CXY::SortIncX(r);
        }
        if (cnt == 0) {
            std::free(r);
            return nullptr;
        }
        return r;
    }

    if (maxPoints > 0 && total > maxPoints) {
        // Room for the last series point at slot c + 2, past the count.
        XY *r = new_record(c + 2);
        if (!r)
            return nullptr;
        for (int i = 0; i < c; i++) {
            // Weight: the larger step in y to a list neighbour.
            double wgt = 0.0;
            if (i > 0)
                wgt = std::fabs(listY[i] - listY[i - 1]);
            if (i < c - 1 && std::fabs(listY[i] - listY[i + 1]) > wgt)
                wgt = std::fabs(listY[i] - listY[i + 1]);
            r[i + 1].x = listX[i];
            r[i + 1].y = wgt;
            r[i + 1].w = listIdx[i];
        }
        r[0].x = c;
        CXY::SortDecY(r);
        int keep = addEnds ? maxPoints - 2 : maxPoints;
        if (keep < 0)
            keep = 0;
        r[0].x = keep;
        CXY::SortIncX(r);
        if (addEnds) {
            // The first kept extremum gives way to point 1; point n goes to slot
            // c + 2, behind the count, and the others keep their weights as y.
            put(r[1], 1);
            put(r[c + 2], n);
        } else {
            for (int i = 1; i <= keep; i++)
                r[i].y = xy[static_cast<int>(r[i].w)].y;
        }
        if (keep == 0) {
            std::free(r);
            return nullptr;
        }
        return r;
    }

    if (total == 0)
        return nullptr;
    XY *r = new_record(total);
    if (!r)
        return nullptr;
    int cnt = 0;
    if (addEnds)
        put(r[++cnt], 1);
    for (int i = 0; i < c; i++)
        put(r[++cnt], listIdx[i]);
    if (addEnds)
        put(r[++cnt], n);
    r[0].x = cnt;
    return r;
}

} // namespace oscilla
