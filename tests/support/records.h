// Test records: XY series built from a function of the point index.
#ifndef OSCILLA_TESTS_SUPPORT_RECORDS_H
#define OSCILLA_TESTS_SUPPORT_RECORDS_H

#include "oscilla/series/xy.h"

#include <cmath>
#include <cstdlib>
#include <functional>

namespace records {

// A calloc'ed series of n points, x = x0 + (i - 1) dx and y = fn(i), freed on scope exit.
struct Series {
    oscilla::XY *p;
    explicit Series(int n, const std::function<double(int)> &fn = [](int i) { return std::sin(0.37 * i); },
                    double dx = 1.0, double x0 = 0.0)
        : p(static_cast<oscilla::XY *>(std::calloc(static_cast<size_t>(n) + 1, sizeof(oscilla::XY))))
    {
        p[0].x = n;
        for (int i = 1; i <= n; i++) {
            p[i].x = x0 + (i - 1) * dx;
            p[i].y = fn(i);
        }
    }
    ~Series() { std::free(p); }
    Series(const Series &) = delete;
    Series &operator=(const Series &) = delete;
};

} // namespace records

#endif
