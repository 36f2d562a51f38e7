// Vector kernels of the singular value decomposition.
#include "linalg/svd_impl.h"

#include <cmath>

namespace oscilla {
namespace detail {

void vaddkxv(double *y, const double *x, double k, const double *z, int n)
{
    for (int i = 0; i < n; i++) y[i] = x[i] + k * z[i];
}

void vaddkxvsk(double *y, const double *x, double k, const double *z, int n, int sk)
{
    for (int i = 0; i < n; i++) y[i * sk] = x[i * sk] + k * z[i * sk];
}

double dotprod(const double *x, const double *y, int n)
{
    double s = 0.0;
    for (int i = 0; i < n; i++) s += x[i] * y[i];
    return s;
}

void vdivk(double *x, double k, int n)
{
    for (int i = 0; i < n; i++) x[i] /= k;
}

void vdivksk(double *x, double k, int n, int sk)
{
    for (int i = 0; i < n; i++) x[i * sk] /= k;
}

void kxv(double *x, double k, int n)
{
    for (int i = 0; i < n; i++) x[i] *= k;
}

void kxvsk(double *x, double k, int n, int sk)
{
    for (int i = 0; i < n; i++) x[i * sk] *= k;
}

double sumvabs(const double *x, int n)
{
    double s = 0.0;
    for (int i = 0; i < n; i++) s += std::fabs(x[i]);
    return s;
}

double sumvabssk(const double *x, int n, int sk)
{
    double s = 0.0;
    for (int i = 0; i < n; i++) s += std::fabs(x[i * sk]);
    return s;
}

double sumvsqr(const double *x, int n)
{
    double s = 0.0;
    for (int i = 0; i < n; i++) s += x[i] * x[i];
    return s;
}

double sumvsqrsk(const double *x, int n, int sk)
{
    double s = 0.0;
    for (int i = 0; i < n; i++) s += x[i * sk] * x[i * sk];
    return s;
}

void zerov(double *x, int n)
{
    for (int i = 0; i < n; i++) x[i] = 0.0;
}

void zerovsk(double *x, int n, int sk)
{
    for (int i = 0; i < n; i++) x[i * sk] = 0.0;
}

void negvsk(double *x, int n, int sk)
{
    for (int i = 0; i < n; i++) x[i * sk] = -x[i * sk];
}

void copyv(double *dst, const double *src, int n)
{
    for (int i = 0; i < n; i++) dst[i] = src[i];
}

void copym(double *dst, const double *src, int rows, int cols, int lddst, int ldsrc)
{
    for (int i = 0; i < rows; i++)
        for (int j = 0; j < cols; j++) dst[i * lddst + j] = src[i * ldsrc + j];
}

} // namespace detail
} // namespace oscilla
