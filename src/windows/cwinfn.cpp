// Stand-in until the window table is written: no window is built, gains stay 1.
#include "oscilla/windows/cwinfn.h"

#include <cstdlib>

namespace oscilla {

CWinFn::CWinFn() : w(nullptr), n(0) {}
CWinFn::CWinFn(double *data, int first, int window, int nn, double shape, double *gains) : w(nullptr), n(0)
{
    WindowData(data, first, window, nn, shape, gains);
}
CWinFn::~CWinFn() { std::free(w); }

int CWinFn::WindowData(double *, int, int, int, double, double *gains)
{
    if (gains) {
        gains[0] = 1.0;
        gains[1] = 1.0;
    }
    return 0;
}

} // namespace oscilla
