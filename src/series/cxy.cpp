#include "oscilla/series/cxy.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace oscilla {

static_assert(sizeof(XY) == 32, "XY elements are 32 bytes");
static_assert(offsetof(XY, x) == 0 && offsetof(XY, y) == 8 && offsetof(XY, w) == 16 &&
                  offsetof(XY, flag) == 24 && offsetof(XY, reps) == 25,
              "XY field offsets are part of the host contract");
static_assert(sizeof(XYZ) == 40, "XYZ elements are 40 bytes");
static_assert(offsetof(XYZ, z) == 16 && offsetof(XYZ, w) == 24 && offsetof(XYZ, flag) == 32,
              "XYZ field offsets are part of the host contract");

namespace {

inline int count_of(const XY *xy) { return static_cast<int>(xy[0].x); }
inline bool masked_inactive(signed char f) { return (f & XY_INACTIVE) == XY_INACTIVE; }

} // namespace

CXY::CXY(XY *xy) : pxy(xy), xyp(nullptr), incl(nullptr), first(0), last(0), cnt(0), owned(0), inclcnt(0)
{
    if (pxy) {
        cnt = count_of(pxy);
        GetActiveRange(pxy, first, last);
    }
}

CXY::CXY(int n, double *x, double *y)
    : pxy(nullptr), xyp(nullptr), incl(nullptr), first(0), last(0), cnt(0), owned(1), inclcnt(0)
{
    if (n < 0)
        return;
    pxy = static_cast<XY *>(std::calloc(static_cast<size_t>(n) + 1, sizeof(XY)));
    if (!pxy)
        return;
    pxy[0].x = n;
    for (int i = 0; i < n; i++) {
        pxy[i + 1].x = x[i];
        pxy[i + 1].y = y[i];
    }
    cnt = n;
    GetActiveRange(pxy, first, last);
}

CXY::~CXY()
{
    std::free(xyp);
    std::free(incl);
    if (owned)
        std::free(pxy);
}

XY *CXY::CopyXY(XY *dst, XY *src)
{
    int n = count_of(src);
    if (dst) {
        int nd = count_of(dst);
        if (nd < n)
            n = nd;
    } else {
        dst = static_cast<XY *>(std::malloc((static_cast<size_t>(n > 0 ? n : 0) + 1) * sizeof(XY)));
        if (!dst)
            return nullptr;
    }
    // The header goes along, so a shorter destination ends up carrying the
    // source's count: callers rely on this to learn the original length.
    std::memcpy(dst, src, (static_cast<size_t>(n > 0 ? n : 0) + 1) * sizeof(XY));
    return dst;
}

XY *CXY::DupXY(XY *src) { return CopyXY(nullptr, src); }

XY *CXY::Dup()
{
    std::free(xyp);
    xyp = DupXY(pxy);
    return xyp;
}

XY *CXY::Claim()
{
    XY *r = xyp;
    xyp = nullptr;
    return r;
}

void CXY::GetActiveRange(XY *xy, int &f, int &l)
{
    // The count comes from xy, the flags always from pxy: the two are not
    // reconciled, so a caller passing another record gets its own flags tested.
    XY *src = xy ? xy : pxy;
    if (!src || !pxy) {
        f = l = 0;
        return;
    }
    int n = count_of(src);
    // Past the end of pxy there are no flags to test: such points count as active.
    int np = count_of(pxy);
    f = 1;
    while (f < n && f <= np && masked_inactive(pxy[f].flag))
        f++;
    l = n;
    while (l > 1 && l <= np && masked_inactive(pxy[l].flag))
        l--;
    if (l <= f) {
        f = 1;
        l = n;
    }
}

int CXY::ClearInactive(XY *xy)
{
    if (!xy)
        xy = pxy;
    if (!xy)
        return 0;
    int n = count_of(xy);
    int j = 1;
    for (int i = 1; i <= n; i++) {
        if (masked_inactive(xy[i].flag)) {
            xy[i].x = xy[i].y = xy[i].w = 0.0;
            xy[i].flag = 0;
        } else {
            if (i != j) {
                xy[j].x = xy[i].x;
                xy[j].y = xy[i].y;
                xy[j].w = xy[i].w;
                xy[j].flag = xy[i].flag;
            }
            j++;
        }
    }
    xy[0].x = j - 1;
    return j - 1;
}

XY *CXY::Active(int inplace, int keepends)
{
    if (!pxy)
        return nullptr;
    if (inplace) {
        int n = ClearInactive(pxy);
        void *p = std::realloc(pxy, (static_cast<size_t>(n) + 1) * sizeof(XY));
        if (p)
            pxy = static_cast<XY *>(p);
        return pxy;
    }
    std::free(xyp);
    xyp = DupXY(pxy);
    if (!xyp)
        return nullptr;
    int n = ClearInactive(xyp);
    int size = n;
    if (n < 2 && keepends && cnt >= 1) {
        // Keep the series' ends as points 1 and 2 whatever their flags; the
        // header keeps the count that ClearInactive left.
        XY *p = static_cast<XY *>(std::realloc(xyp, 3 * sizeof(XY)));
        if (!p)
            return xyp;
        xyp = p;
        xyp[1] = pxy[1];
        xyp[2] = pxy[cnt];
        size = 2;
    }
    void *p = std::realloc(xyp, (static_cast<size_t>(size) + 1) * sizeof(XY));
    if (p)
        xyp = static_cast<XY *>(p);
    return xyp;
}

XY *CXY::ActiveBounds(int)
{
    std::free(xyp);
    xyp = nullptr;
    if (!pxy || last < first)
        return nullptr;
    int n = last - first + 1;
    xyp = static_cast<XY *>(std::calloc(static_cast<size_t>(n) + 1, sizeof(XY)));
    if (!xyp)
        return nullptr;
    xyp[0] = pxy[0];
    std::memcpy(xyp + 1, pxy + first, static_cast<size_t>(n) * sizeof(XY));
    xyp[0].x = n;
    // The pass that would turn inactive points into bit-1 marks never runs:
    // its bound cannot be met, so inner inactive points keep their flags.
    return xyp;
}

} // namespace oscilla
