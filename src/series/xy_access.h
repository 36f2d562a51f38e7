// Small inline helpers shared by the CXY operation sources (not installed).
#ifndef OSCILLA_SRC_SERIES_XY_ACCESS_H
#define OSCILLA_SRC_SERIES_XY_ACCESS_H

#include "oscilla/series/xy.h"

#include <cstddef>

namespace oscilla {
namespace detail {

// Header counts are doubles read by truncation; a negative count, or a missing
// record, means no points.
inline int xy_count(const XY *xy)
{
    if (!xy)
        return 0;
    int n = static_cast<int>(xy[0].x);
    return n > 0 ? n : 0;
}

// The mask test: any flag carrying all of the bits 2, 8 and 32.
inline bool xy_masked_inactive(signed char f) { return (f & XY_INACTIVE) == XY_INACTIVE; }

// The exact test used by the statistics and the bisections: 43 counts as active here.
inline bool xy_exact_inactive(signed char f) { return f == XY_INACTIVE; }

inline size_t xy_bytes(int npoints) { return (static_cast<size_t>(npoints > 0 ? npoints : 0) + 1) * sizeof(XY); }

} // namespace detail
} // namespace oscilla

#endif
