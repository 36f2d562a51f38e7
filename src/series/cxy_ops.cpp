// CXY operations that order, search and select the points of a record.
#include "oscilla/series/cxy.h"

#include "series/xy_access.h"

#include <cstdlib>
#include <cstring>

namespace oscilla {

using detail::xy_bytes;
using detail::xy_count;
using detail::xy_exact_inactive;

namespace {

template <bool Ascending>
inline bool before(double a, double b)
{
    return Ascending ? a < b : a > b;
}

// Partition exchange (Hoare's quicksort) with the middle point as pivot. Whole
// 32-byte points swap through one temporary, so a point's flag, weight and
// replicate count travel with its key. The order of equal keys is not kept.
// The range is clamped to the record so that a careless caller can't run off it.
template <double XY::*Key, bool Ascending>
void partition_exchange(int lo, int hi, XY *xy)
{
    const int n = xy_count(xy);
    if (lo < 1)
        lo = 1;
    if (hi > n)
        hi = n;
    if (lo >= hi)
        return;
    int i = lo, j = hi;
    const double pivot = xy[(lo + hi) / 2].*Key;
    do {
        while (before<Ascending>(xy[i].*Key, pivot) && i < hi)
            i++;
        while (before<Ascending>(pivot, xy[j].*Key) && j > lo)
            j--;
        if (i <= j) {
            const XY t = xy[i];
            xy[i] = xy[j];
            xy[j] = t;
            i++;
            j--;
        }
    } while (i <= j);
    if (lo < j)
        partition_exchange<Key, Ascending>(lo, j, xy);
    if (i < hi)
        partition_exchange<Key, Ascending>(i, hi, xy);
}

// Bisection over the span from the first to the last point not flagged exactly
// 42. Inner inactive points are not skipped. The direction comes from the two
// ends of the span, so descending records work too.
template <double XY::*Key>
int bisection(XY *xy, double v)
{
    const int n = xy_count(xy);
    if (n < 1)
        return 0;
    int first = 1;
    while (first <= n && xy_exact_inactive(xy[first].flag))
        first++;
    int last = n;
    while (last >= 1 && xy_exact_inactive(xy[last].flag))
        last--;
    if (first > n) {
        // Nothing but inactive points: search the whole record rather than
        // walk off its end.
        first = 1;
        last = n;
    }
    const bool up = xy[first].*Key < xy[last].*Key;
    int lo = first - 1, hi = last + 1;
    while (hi - lo >= 2) {
        const int mid = (hi + lo) / 2;
        if ((xy[mid].*Key < v) == up)
            lo = mid;
        else
            hi = mid;
    }
    return lo;
}

using Worker = void (*)(int, int, XY *);

// Keeps the maxn points that come first in the worker's order, then puts them
// back in ascending x. The block keeps its size; only the count shrinks.
XY *limit_by(XY *xy, int maxn, int copy, Worker sorter)
{
    if (!xy)
        return nullptr;
    XY *r = copy ? CXY::DupXY(xy) : xy;
    if (!r)
        return nullptr;
    const int n = xy_count(r);
    if (maxn >= n)
        return r;
    if (maxn < 0)
        maxn = 0;
    sorter(1, n, r);
    r[0].x = maxn;
    CXY::xaqsr(1, maxn, r);
    return r;
}

inline bool same_single(double a, double b) { return static_cast<float>(a) == static_cast<float>(b); }

} // namespace

void CXY::xaqsr(int lo, int hi, XY *xy) { partition_exchange<&XY::x, true>(lo, hi, xy); }
void CXY::xdqsr(int lo, int hi, XY *xy) { partition_exchange<&XY::x, false>(lo, hi, xy); }
void CXY::yaqsr(int lo, int hi, XY *xy) { partition_exchange<&XY::y, true>(lo, hi, xy); }
void CXY::ydqsr(int lo, int hi, XY *xy) { partition_exchange<&XY::y, false>(lo, hi, xy); }
void CXY::waqsr(int lo, int hi, XY *xy) { partition_exchange<&XY::w, true>(lo, hi, xy); }
void CXY::wdqsr(int lo, int hi, XY *xy) { partition_exchange<&XY::w, false>(lo, hi, xy); }

void CXY::SortIncX(XY *xy) { xaqsr(1, xy_count(xy), xy); }
void CXY::SortDecX(XY *xy) { xdqsr(1, xy_count(xy), xy); }
void CXY::SortIncY(XY *xy) { yaqsr(1, xy_count(xy), xy); }
void CXY::SortDecY(XY *xy) { ydqsr(1, xy_count(xy), xy); }
void CXY::SortIncW(XY *xy) { waqsr(1, xy_count(xy), xy); }
void CXY::SortDecW(XY *xy) { wdqsr(1, xy_count(xy), xy); }

int CXY::BisecX(XY *xy, double v) { return bisection<&XY::x>(xy, v); }
int CXY::BisecY(XY *xy, double v) { return bisection<&XY::y>(xy, v); }

int CXY::LargestXDelta(XY *xy)
{
    const int n = xy_count(xy);
    int best = 0;
    double gap = 0.0;
    for (int i = 1; i < n; i++) {
        const double d = xy[i + 1].x - xy[i].x;
        if (d > gap) {
            gap = d;
            best = i;
        }
    }
    return best;
}

void CXY::ReverseXY(XY *xy)
{
    const int n = xy_count(xy);
    for (int i = 1; i <= n; i++) {
        const double t = xy[i].x;
        xy[i].x = xy[i].y;
        xy[i].y = t;
    }
}

void CXY::ReverseYW(XY *xy)
{
    const int n = xy_count(xy);
    for (int i = 1; i <= n; i++) {
        const double t = xy[i].y;
        xy[i].y = xy[i].w;
        xy[i].w = t;
    }
}

XY *CXY::Segment(XY *xy, double lo, double hi)
{
    if (!xy)
        return nullptr;
    const int n = xy_count(xy);
    if (n < 1 || (lo <= xy[1].x && hi >= xy[n].x))
        return DupXY(xy);
    int k = 0;
    for (int i = 1; i <= n; i++)
        if (lo <= xy[i].x && xy[i].x <= hi)
            k++;
    XY *r = static_cast<XY *>(std::calloc(static_cast<size_t>(k) + 1, sizeof(XY)));
    if (!r)
        return nullptr;
    int j = 0;
    for (int i = 1; i <= n; i++)
        if (lo <= xy[i].x && xy[i].x <= hi)
            r[++j] = xy[i];
    r[0].x = k;
    return r;
}

XY *CXY::Segment(int index, int len)
{
    if (!pxy || index < 0 || len < 0)
        return nullptr;
    const int n = xy_count(pxy);
    const long long start = static_cast<long long>(index) * len + 1;
    // A chunk that would end exactly on point N is refused as well: callers
    // count on the last chunk of a series being left out.
    if (n < len || start + len > n)
        return nullptr;
    if (!xyp || static_cast<int>(xyp[0].x) != len) {
        XY *p = static_cast<XY *>(std::realloc(xyp, xy_bytes(len)));
        if (!p)
            return nullptr;
        xyp = p;
    }
    xyp[0] = pxy[0];
    xyp[0].x = len;
    std::memcpy(xyp + 1, pxy + start, static_cast<size_t>(len) * sizeof(XY));
    return xyp;
}

XY *CXY::LimitByDecY(XY *xy, int maxn, int copy) { return limit_by(xy, maxn, copy, &CXY::ydqsr); }
XY *CXY::LimitByIncY(XY *xy, int maxn, int copy) { return limit_by(xy, maxn, copy, &CXY::yaqsr); }
XY *CXY::LimitByDecW(XY *xy, int maxn, int copy) { return limit_by(xy, maxn, copy, &CXY::wdqsr); }
XY *CXY::LimitByIncW(XY *xy, int maxn, int copy) { return limit_by(xy, maxn, copy, &CXY::waqsr); }

XY *CXY::RemoveAdjacent(XY *xy, double dist)
{
    if (!xy)
        return nullptr;
    const int n = xy_count(xy);
    XY *r = static_cast<XY *>(std::calloc(static_cast<size_t>(n) + 1, sizeof(XY)));
    if (!r)
        return nullptr;
    r[0].x = n;
    if (n < 1)
        return r;
    int k = 1;
    r[1] = xy[1];
    for (int i = 2; i <= n; i++) {
        // The distance is measured from the point kept last, which moves when a
        // higher neighbour replaces it.
        if (xy[i].x - r[k].x <= dist) {
            if (r[k].y < xy[i].y)
                r[k] = xy[i];
        } else {
            r[++k] = xy[i];
        }
    }
    r[0].x = k;
    XY *p = static_cast<XY *>(std::realloc(r, xy_bytes(k)));
    return p ? p : r;
}

XY *CXY::AvgReplicates(XY *xy, int clear, int keepfour)
{
    if (!xy)
        return nullptr;
    const int nsrc = xy_count(xy);
    XY *res = DupXY(xy);
    XY *work = DupXY(xy);
    if (!res || !work) {
        std::free(res);
        std::free(work);
        return nullptr;
    }
    if (clear) {
        CXY packer;
        packer.ClearInactive(work);
    }
    const int n = xy_count(work);
    int j = 1, run = 0, groups = 0;
    for (int i = 1; i <= n; i++) {
        // Replicates are recognised by exact equality of x in double precision.
        if (i != n && work[i + 1].x == work[i].x) {
            run++;
            continue;
        }
        res[j].x = work[i].x;
        res[j].y = work[i].y;
        res[j].w = work[i].w;
        res[j].flag = XY_NEWPOINT;
        if (run > 0) {
            for (int k = i - run; k < i; k++) {
                res[j].y += work[k].y;
                res[j].w += work[k].w;
            }
            res[j].y /= run + 1;
            run = 0;
            groups++;
        }
        j++;
    }
    std::free(work);
    int count = j - 1;
    if (keepfour && count < 4 && nsrc >= 1) {
        // Too few points survive for a curve: fall back on the first two and
        // the last two points of the input as they stand, made active.
        if (nsrc < 4) {
            XY *p = static_cast<XY *>(std::realloc(res, xy_bytes(4)));
            if (!p) {
                std::free(res);
                return nullptr;
            }
            res = p;
        }
        const int idx[4] = {1, nsrc >= 2 ? 2 : 1, nsrc >= 2 ? nsrc - 1 : 1, nsrc};
        for (int k = 0; k < 4; k++) {
            res[k + 1] = xy[idx[k]];
            res[k + 1].flag = 0;
        }
        count = 4;
    }
    res[0].x = count;
    if (groups > 0)
        res[0].w = 1.0;
    XY *p = static_cast<XY *>(std::realloc(res, xy_bytes(count)));
    return p ? p : res;
}

XY *CXY::ActiveDiscrete()
{
    std::free(xyp);
    xyp = pxy ? AvgReplicates(pxy, 1, 0) : nullptr;
    return xyp;
}

XY *CXY::AvgReplSD(XY *xy, int clear, int &nrepl, int &nremoved, int &nsingle)
{
    nrepl = nsingle = nremoved = 0;
    if (!xy)
        xy = pxy;
    if (!xy)
        return nullptr;
    XY *packed = nullptr;
    XY *wk = xy;
    if (clear && IsInactive(xy)) {
        packed = DupXY(xy);
        if (!packed)
            return nullptr;
        ClearInactive(packed);
        wk = packed;
    }
    nremoved = xy_count(xy) - xy_count(wk);
    if (!IsReplicate(wk))
        return packed;

    XY *res = DupXY(wk);
    if (!res) {
        std::free(packed);
        return nullptr;
    }
    const int n = xy_count(wk);
    int j = 1, run = 0;
    for (int i = 1; i <= n; i++) {
        // Here replicates are x values equal in single precision, as in IsReplicate.
        if (i != n && same_single(wk[i + 1].x, wk[i].x)) {
            run++;
            continue;
        }
        res[j] = wk[i];
        if (run == 0) {
            res[j].w = 1.0;
            res[j].flag = XY_NEWPOINT;
            res[j].reps = 1;
            nsingle++;
        } else {
            const int m = run + 1;
            double sum = 0.0, sumsq = 0.0;
            double ymin = wk[i].y, ymax = wk[i].y;
            for (int k = i - run; k <= i; k++) {
                const double y = wk[k].y;
                sum += y;
                sumsq += y * y;
                if (y < ymin)
                    ymin = y;
                if (y > ymax)
                    ymax = y;
            }
            const double var = (m * sumsq - sum * sum) / ((m - 1.0) * m);
            // Identical replicates carry no variance: they are weighted as a
            // single reading and counted as one.
            if (!(var > 0.0) || same_single(ymin, ymax)) {
                res[j].w = 1.0;
                nsingle++;
            } else {
                res[j].w = 1.0 / var;
            }
            res[j].y = sum / m;
            res[j].flag = XY_NEWPOINT;
            res[j].reps = static_cast<unsigned char>(m > 255 ? 255 : m);
            nrepl++;
            run = 0;
        }
        j++;
    }
    res[0].reps = XY_HDR_INVVAR;
    res[0].w = 1.0;
    res[0].x = j - 1;
    std::free(packed);
    return res;
}

XY *CXY::SumExtRef(XY **list)
{
    if (!list || !list[0])
        return nullptr;
    int nrec = 0;
    int n = xy_count(list[0]);
    for (; list[nrec]; nrec++) {
        // The records should share their x; a shorter one limits the result
        // rather than being read past its end.
        const int c = xy_count(list[nrec]);
        if (c < n)
            n = c;
    }
    XY *r = static_cast<XY *>(std::calloc(static_cast<size_t>(n) + 1, sizeof(XY)));
    if (!r)
        return nullptr;
    r[0].x = n;
    r[0].y = 0.0;
    if (nrec < 2) {
        for (int i = 1; i <= n; i++) {
            r[i].x = list[0][i].x;
            r[i].y = list[0][i].y;
        }
        return r;
    }
    for (int i = 1; i <= n; i++) {
        double sum = 0.0, sum2 = 0.0;
        for (int k = 0; k < nrec; k++) {
            const double y = list[k][i].y;
            sum += y;
            sum2 += y * y;
        }
        r[i].x = list[0][i].x;
        IVar(nrec, sum, sum2, r[i].y, r[i].w);
        r[i].reps = static_cast<unsigned char>(nrec > 255 ? 255 : nrec);
    }
    r[0].w = 1.0;
    r[0].reps = XY_HDR_INVVAR;
    return r;
}

XY *CXY::FnData(double (*fn)(double), double lo, double hi, int n)
{
    // The math layer reports a failed evaluation with this value.
    static const double kFailed = -12345.6789;
    if (n < 0)
        n = 0;
    XY *r = static_cast<XY *>(std::calloc(static_cast<size_t>(n) + 1, sizeof(XY)));
    if (!r)
        return nullptr;
    r[0].x = n;
    const double d = n > 1 ? (hi - lo) / (n - 1) : 0.0;
    for (int i = 1; i <= n; i++) {
        double x = (i - 1) * d + lo;
        if (i == 1)
            x = lo;
        else if (i == n)
            x = hi;
        const double y = fn(x);
        r[i].x = x;
        r[i].y = y == kFailed ? 0.0 : y;
    }
    return r;
}

XY *CXY::ScaleY(XY *xy, double f)
{
    const int n = xy_count(xy);
    for (int i = 1; i <= n; i++)
        xy[i].y *= f;
    return xy;
}

} // namespace oscilla
