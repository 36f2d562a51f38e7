// The two plain-text dumps of a record.
#include "oscilla/series/cxy.h"

#include "series/xy_access.h"

#include <cstdio>

namespace oscilla {

using detail::xy_count;
using detail::xy_masked_inactive;

int CXY::ASCIIFile(XY *xy, const char *path)
{
    if (!xy)
        xy = pxy;
    if (!xy || !path)
        return 0;
    std::FILE *f = std::fopen(path, "w");
    if (!f)
        return 0;
    const int n = xy_count(xy);
    // A header w of exactly 1.0 says the w column means something; only then is it written.
    const bool withw = xy[0].w == 1.0;
    for (int i = 1; i <= n; i++) {
        std::fprintf(f, "%-23.15lg %-23.15lg %c", xy[i].x, xy[i].y, xy_masked_inactive(xy[i].flag) ? '*' : ' ');
        if (withw)
            std::fprintf(f, " W%-23.15lg", xy[i].w);
        std::fputs("\n", f);
    }
    std::fclose(f);
    return n;
}

int CXY::ToFile(XY *xy, const char *path)
{
    if (!xy || !path)
        return 0;
    std::FILE *f = std::fopen(path, "w");
    if (!f)
        return 0;
    const int n = xy_count(xy);
    for (int i = 1; i <= n; i++)
        std::fprintf(f, "%22.14lg %22.14lg\n", xy[i].x, xy[i].y);
    std::fclose(f);
    return 1;
}

} // namespace oscilla
