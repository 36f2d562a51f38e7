// CXY operations on the activity flags of a record.
#include "oscilla/series/cxy.h"

#include "series/xy_access.h"

#include <cstdlib>

namespace oscilla {

using detail::xy_count;
using detail::xy_masked_inactive;

int CXY::IsInactive(XY *xy)
{
    const int n = xy_count(xy);
    for (int i = 1; i <= n; i++)
        if (xy_masked_inactive(xy[i].flag))
            return 1;
    return 0;
}

int CXY::IsReplicate(XY *xy)
{
    const int n = xy_count(xy);
    for (int i = 1; i < n; i++)
        if (static_cast<float>(xy[i].x) == static_cast<float>(xy[i + 1].x))
            return 1;
    return 0;
}

int CXY::AssureActive(XY *xy, int need)
{
    // Unlike the other members, a null record here means the last result.
    if (!xy)
        xy = xyp;
    if (!xy)
        return 0;
    const int n = xy_count(xy);
    int found = 0;
    for (int i = 1; i <= n && found < need; i++)
        if (!xy_masked_inactive(xy[i].flag))
            found++;
    if (found >= need)
        return 1;
    const int missing = need - found;
    const int fromend = missing / 2;
    int fromfront = missing - fromend;
    // Subtracting 42 clears exactly the three inactivity bits and keeps the rest.
    for (int i = 1; i <= n && fromfront > 0; i++) {
        if (xy_masked_inactive(xy[i].flag)) {
            xy[i].flag = static_cast<signed char>(xy[i].flag - XY_INACTIVE);
            fromfront--;
        }
    }
    int back = fromend;
    for (int i = n; i >= 1 && back > 0; i--) {
        if (xy_masked_inactive(xy[i].flag)) {
            xy[i].flag = static_cast<signed char>(xy[i].flag - XY_INACTIVE);
            back--;
        }
    }
    return 0;
}

void CXY::SaveIncl(XY *xy)
{
    if (!xy)
        xy = pxy;
    std::free(incl);
    incl = nullptr;
    inclcnt = 0;
    if (!xy)
        return;
    const int n = xy_count(xy);
    incl = static_cast<unsigned char *>(std::malloc(static_cast<size_t>(n) + 1));
    if (!incl)
        return;
    // The header's flag is kept too, so the spacing bits come back on restore.
    for (int i = 0; i <= n; i++)
        incl[i] = static_cast<unsigned char>(xy[i].flag);
    inclcnt = n;
}

void CXY::RestoreIncl(XY *xy)
{
    if (!xy)
        xy = pxy;
    if (!xy || !incl)
        return;
    int n = xy_count(xy);
    if (inclcnt < n)
        n = inclcnt;
    for (int i = 0; i <= n; i++)
        xy[i].flag = static_cast<signed char>(incl[i]);
}

void CXY::CopyIncl(XY *dst, XY *src)
{
    if (!dst)
        dst = pxy;
    if (!dst || !src)
        return;
    int n = xy_count(dst);
    const int ns = xy_count(src);
    if (ns < n)
        n = ns;
    for (int i = 1; i <= n; i++) {
        int f = src[i].flag;
        // Bit 1 marks an exclusion handed over from another record: it becomes
        // a plain inactive mark here.
        if (f & XY_EXCLUDED)
            f = (f & ~XY_EXCLUDED) | XY_INACTIVE;
        dst[i].flag = static_cast<signed char>(f);
    }
}

} // namespace oscilla
