// Unit-stride vector helpers of the LINPACK-style solvers.
#include "linalg/linpack.h"

#include <cmath>

namespace oscilla {
namespace detail {

void vaxpy(int n, double a, const double *x, double *y)
{
    if (n < 1 || a == 0.0)
        return;
    for (int i = 0; i < n; i++)
        y[i] += a * x[i];
}

double vasum(int n, const double *x)
{
    double s = 0.0;
    for (int i = 0; i < n; i++)
        s += std::fabs(x[i]);
    return s;
}

void vscal(int n, double a, double *x)
{
    for (int i = 0; i < n; i++)
        x[i] *= a;
}

double vdot(int n, const double *x, const double *y)
{
    double s = 0.0;
    for (int i = 0; i < n; i++)
        s += x[i] * y[i];
    return s;
}

int viamax(int n, const double *x)
{
    if (n < 1)
        return -1;
    int imax = 0;
    double dmax = std::fabs(x[0]);
    for (int i = 1; i < n; i++) {
        // strictly greater: the first of equal magnitudes wins
        if (std::fabs(x[i]) > dmax) {
            imax = i;
            dmax = std::fabs(x[i]);
        }
    }
    return imax;
}

void vswap(int n, double *x, double *y)
{
    for (int i = 0; i < n; i++) {
        double t = x[i];
        x[i] = y[i];
        y[i] = t;
    }
}

void vcopy(int n, const double *x, double *y)
{
    for (int i = 0; i < n; i++)
        y[i] = x[i];
}

} // namespace detail
} // namespace oscilla
