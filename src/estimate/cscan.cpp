// CScan: the one-pass scans for extrema and zero crossings, the area and
// first-moment sums.
#include "oscilla/estimate/cscan.h"

#include "series/xy_access.h"

#include <cmath>
#include <cstdlib>

namespace oscilla {

using detail::xy_count;

CScan::CScan()
    : listX(nullptr), listY(nullptr), listIdx(nullptr), listSgn(nullptr), count(0), minX(0.0), maxX(0.0),
      minY(0.0), maxY(0.0), minIdx(0), maxIdx(0), splineCount(0), splineSeries(nullptr), splineY2(nullptr)
{
}

CScan::~CScan()
{
    std::free(listX);
    std::free(listY);
    std::free(listIdx);
    std::free(listSgn);
    std::free(splineY2);
}

int CScan::Allocate(int n)
{
    std::free(listX);
    std::free(listY);
    std::free(listIdx);
    std::free(listSgn);
    // A capacity of at least one keeps calloc(0) from passing for a failure.
    const size_t cap = static_cast<size_t>(n > 0 ? n : 1);
    listX = static_cast<double *>(std::calloc(cap, sizeof(double)));
    listY = static_cast<double *>(std::calloc(cap, sizeof(double)));
    listIdx = static_cast<int *>(std::calloc(cap, sizeof(int)));
    listSgn = static_cast<int *>(std::calloc(cap, sizeof(int)));
    if (listX && listY && listIdx && listSgn)
        return 1;
    std::free(listX);
    std::free(listY);
    std::free(listIdx);
    std::free(listSgn);
    listX = listY = nullptr;
    listIdx = listSgn = nullptr;
    return 0;
}

// One pass over the series. A point is an extremum where the direction turns;
// a tie counts as "not rising", so a flat top is reported at its first sample
// and a flat bottom at its last. Both the lowest minimum and the highest
// maximum are tracked whatever kind is listed; the first of equal values stays.
int CScan::ScanExtrema(XY *xy, ScanKind kind, bool absolute)
{
    count = 0;
    minY = 1e300;
    maxY = -1e300;
    if (!xy)
        return 0;
    const int n = xy_count(xy);
    if (!Allocate(n))
        return 0;
    if (n < 3)
        return 0;
    auto val = [xy, absolute](int i) { return absolute ? std::fabs(xy[i].y) : xy[i].y; };
    bool rising = val(2) > val(1);
    for (int i = 3; i <= n; i++) {
        const bool now = val(i) > val(i - 1);
        if (now == rising)
            continue;
        const int p = i - 1;
        const double yp = val(p);
        if (rising) {
            if (yp > maxY) {
                maxY = yp;
                maxX = xy[p].x;
                maxIdx = p;
            }
        } else if (yp < minY) {
            minY = yp;
            minX = xy[p].x;
            minIdx = p;
        }
        if (kind == SCAN_BOTH || (kind == SCAN_MAXIMA) == rising) {
            listX[count] = xy[p].x;
            listY[count] = yp;
            listIdx[count] = p;
            listSgn[count] = rising ? 1 : 0;
            count++;
        }
        rising = now;
    }
    return count;
}

int CScan::Extrema(XY *xy) { return ScanExtrema(xy, SCAN_BOTH, false); }
int CScan::Maxima(XY *xy) { return ScanExtrema(xy, SCAN_MAXIMA, false); }
int CScan::Minima(XY *xy) { return ScanExtrema(xy, SCAN_MINIMA, false); }
int CScan::MaximaAbs(XY *xy) { return ScanExtrema(xy, SCAN_MAXIMA, true); }

// Clips y of points 1..n-1 at zero in place (negatives for maxima, positives
// for minima), scans, and puts the saved values back. Point n is neither
// clipped nor saved, so a last point of the wrong sign takes part as it is.
int CScan::ClippedScan(XY *xy, bool maxima)
{
    if (!xy) {
        count = 0;
        return 0;
    }
    const int n = xy_count(xy);
    double *saved = static_cast<double *>(std::malloc(static_cast<size_t>(n > 1 ? n : 1) * sizeof(double)));
    if (!saved)
        return -1;
    for (int i = 1; i < n; i++) {
        saved[i - 1] = xy[i].y;
        if (maxima ? xy[i].y < 0.0 : xy[i].y > 0.0)
            xy[i].y = 0.0;
    }
    const int found = maxima ? Maxima(xy) : Minima(xy);
    for (int i = 1; i < n; i++)
        xy[i].y = saved[i - 1];
    std::free(saved);
    return found;
}

int CScan::MaximaGTZero(XY *xy) { return ClippedScan(xy, true); }
int CScan::MinimaLTZero(XY *xy) { return ClippedScan(xy, false); }

// A sign change between points i-1 and i records point i-1 as it stands (no
// interpolation). Exactly zero counts as not positive. The entries go to the
// lists, but count and the min/max fields keep what the last extrema scan left.
int CScan::ScanZero(XY *xy, int keepFalls, int keepRises)
{
    if (!xy)
        return 0;
    const int n = xy_count(xy);
    if (!Allocate(n) || n < 1)
        return 0;
    int found = 0;
    bool s = xy[1].y > 0.0;
    for (int i = 2; i <= n; i++) {
        const bool t = xy[i].y > 0.0;
        if (t == s)
            continue;
        if (s ? keepFalls : keepRises) {
            listX[found] = xy[i - 1].x;
            listY[found] = xy[i - 1].y;
            listIdx[found] = i - 1;
            listSgn[found] = s ? 1 : 0;
            found++;
        }
        s = t;
    }
    return found;
}

int CScan::Zero(XY *xy) { return ScanZero(xy, 1, 1); }
int CScan::ZeroIncr(XY *xy) { return ScanZero(xy, 0, 1); }
int CScan::ZeroDecr(XY *xy) { return ScanZero(xy, 1, 0); }

namespace {

// Half the distance between a point's neighbours; the end points take half
// their one gap. A series of one point has no width.
inline double half_span(const XY *xy, int n, int i)
{
    if (n < 2)
        return 0.0;
    if (i == 1)
        return (xy[2].x - xy[1].x) / 2;
    if (i == n)
        return (xy[n].x - xy[n - 1].x) / 2;
    return (xy[i + 1].x - xy[i - 1].x) / 2;
}

} // namespace

double CScan::Area(XY *xy)
{
    if (!xy)
        return 0.0;
    const int n = xy_count(xy);
    double s = 0.0;
    for (int i = 1; i <= n; i++)
        s += xy[i].y * half_span(xy, n, i);
    return s;
}

double CScan::AreaAbs(XY *xy)
{
    if (!xy)
        return 0.0;
    const int n = xy_count(xy);
    double s = 0.0;
    for (int i = 1; i <= n; i++)
        s += std::fabs(xy[i].y) * half_span(xy, n, i);
    return s;
}

// The widths are those of the whole series, also at the ends of the range.
void CScan::Moments(XY *xy, int from, int to, double &area, double &centroid)
{
    area = 0.0;
    centroid = 0.0;
    if (!xy)
        return;
    const int n = xy_count(xy);
    const int lo = from > 1 ? from : 1;
    const int hi = to < n ? to : n;
    for (int i = lo; i <= hi; i++) {
        const double a = xy[i].y * half_span(xy, n, i);
        area += a;
        centroid += a * xy[i].x;
    }
    if (area != 0.0)
        centroid /= area;
}

XY *CScan::MovingMoment(XY *xy, int useCentroid, int halfWidth)
{
    if (!xy)
        return nullptr;
    const int n = xy_count(xy);
    XY *r = static_cast<XY *>(std::calloc(static_cast<size_t>(n) + 1, sizeof(XY)));
    if (!r)
        return nullptr;
    r[0].x = n;
    for (int i = 1; i <= n; i++) {
        // The window is clipped to the series here so that a huge half width
        // can't overflow the index arithmetic.
        const long long lo = static_cast<long long>(i) - halfWidth;
        const long long hi = static_cast<long long>(i) + halfWidth;
        double area, centroid;
        Moments(xy, static_cast<int>(lo < 0 ? 0 : (lo > n + 1 ? n + 1 : lo)),
                static_cast<int>(hi < 0 ? 0 : (hi > n + 1 ? n + 1 : hi)), area, centroid);
        r[i].x = xy[i].x;
        r[i].y = useCentroid ? centroid : area;
        r[i].w = xy[i].y;
    }
    return r;
}

} // namespace oscilla
