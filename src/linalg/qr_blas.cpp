// BLAS level-one routines used by the QR factorisation: dot product, y += a x,
// copy, scale, swap and the scaled Euclidean norm. Unit strides take the
// unrolled loops of the reference BLAS; other strides walk one element at a
// time, starting from the far end for a negative stride.
#include "oscilla/linalg/qr.h"

#include <cmath>

namespace oscilla {

namespace {

inline int start(int n, int inc) { return inc < 0 ? (-n + 1) * inc : 0; }

} // namespace

double CQR::ddot(int n, const double *dx, int incx, const double *dy, int incy)
{
    double dtemp = 0.0;
    if (n <= 0)
        return 0.0;
    if (incx == 1 && incy == 1) {
        int m = n % 5;
        for (int i = 0; i < m; i++)
            dtemp += dx[i] * dy[i];
        if (n < 5)
            return dtemp;
        for (int i = m; i < n; i += 5)
            dtemp += dx[i] * dy[i] + dx[i + 1] * dy[i + 1] + dx[i + 2] * dy[i + 2] + dx[i + 3] * dy[i + 3] +
                     dx[i + 4] * dy[i + 4];
        return dtemp;
    }
    int ix = start(n, incx), iy = start(n, incy);
    for (int i = 0; i < n; i++) {
        dtemp += dx[ix] * dy[iy];
        ix += incx;
        iy += incy;
    }
    return dtemp;
}

void CQR::daxpy(int n, double da, const double *dx, int incx, double *dy, int incy)
{
    if (n <= 0 || da == 0.0)
        return;
    if (incx == 1 && incy == 1) {
        int m = n % 4;
        for (int i = 0; i < m; i++)
            dy[i] += da * dx[i];
        if (n < 4)
            return;
        for (int i = m; i < n; i += 4) {
            dy[i] += da * dx[i];
            dy[i + 1] += da * dx[i + 1];
            dy[i + 2] += da * dx[i + 2];
            dy[i + 3] += da * dx[i + 3];
        }
        return;
    }
    int ix = start(n, incx), iy = start(n, incy);
    for (int i = 0; i < n; i++) {
        dy[iy] += da * dx[ix];
        ix += incx;
        iy += incy;
    }
}

void CQR::dcopy(int n, const double *dx, int incx, double *dy, int incy)
{
    if (n <= 0)
        return;
    if (incx == 1 && incy == 1) {
        int m = n % 7;
        for (int i = 0; i < m; i++)
            dy[i] = dx[i];
        if (n < 7)
            return;
        for (int i = m; i < n; i += 7) {
            dy[i] = dx[i];
            dy[i + 1] = dx[i + 1];
            dy[i + 2] = dx[i + 2];
            dy[i + 3] = dx[i + 3];
            dy[i + 4] = dx[i + 4];
            dy[i + 5] = dx[i + 5];
            dy[i + 6] = dx[i + 6];
        }
        return;
    }
    int ix = start(n, incx), iy = start(n, incy);
    for (int i = 0; i < n; i++) {
        dy[iy] = dx[ix];
        ix += incx;
        iy += incy;
    }
}

void CQR::dscal(int n, double da, double *dx, int incx)
{
    if (n <= 0 || incx <= 0)
        return;
    if (incx == 1) {
        int m = n % 5;
        for (int i = 0; i < m; i++)
            dx[i] *= da;
        if (n < 5)
            return;
        for (int i = m; i < n; i += 5) {
            dx[i] *= da;
            dx[i + 1] *= da;
            dx[i + 2] *= da;
            dx[i + 3] *= da;
            dx[i + 4] *= da;
        }
        return;
    }
    for (int i = 0; i < n * incx; i += incx)
        dx[i] *= da;
}

void CQR::dswap(int n, double *dx, int incx, double *dy, int incy)
{
    if (n <= 0)
        return;
    if (incx == 1 && incy == 1) {
        int m = n % 3;
        for (int i = 0; i < m; i++) {
            double t = dx[i];
            dx[i] = dy[i];
            dy[i] = t;
        }
        if (n < 3)
            return;
        for (int i = m; i < n; i += 3) {
            double t = dx[i];
            dx[i] = dy[i];
            dy[i] = t;
            t = dx[i + 1];
            dx[i + 1] = dy[i + 1];
            dy[i + 1] = t;
            t = dx[i + 2];
            dx[i + 2] = dy[i + 2];
            dy[i + 2] = t;
        }
        return;
    }
    int ix = start(n, incx), iy = start(n, incy);
    for (int i = 0; i < n; i++) {
        double t = dx[ix];
        dx[ix] = dy[iy];
        dy[iy] = t;
        ix += incx;
        iy += incy;
    }
}

// Euclidean norm of the original BLAS (C. L. Lawson, 1978): one pass in four
// phases. Phase 1 skips leading zeros; phase 2 sums small elements scaled by
// the largest so far, against underflow; phase 3 sums mid-range elements
// unscaled; phase 4 sums scaled by the largest, against overflow. cutlo and
// cuthi bound the range in which squares neither underflow nor overflow.
double CQR::dnrm2(int n, const double *dx, int incx)
{
    const double cutlo = 8.232e-11, cuthi = 1.304e+19;
    if (n <= 0 || incx <= 0)
        return 0.0;
    enum Phase { Start, Zeros, Small, Large } next = Start;
    double sum = 0.0, xmax = 0.0;
    const int nn = n * incx;
    int i = 0;
    while (i < nn) {
        double ax = std::fabs(dx[i]);
        bool midRange = false;
        switch (next) {
        case Start:
            if (ax > cutlo) {
                midRange = true;
                break;
            }
            next = Zeros;
            xmax = 0.0;
            // fall through: the same element starts phase 1
            [[fallthrough]];
        case Zeros:
            if (dx[i] == 0.0)
                break;
            if (ax > cutlo) {
                midRange = true;
                break;
            }
            next = Small;
            xmax = ax;
            sum += (dx[i] / xmax) * (dx[i] / xmax);
            break;
        case Small:
            if (ax > cutlo) {
                // leaving phase 2: undo the scaling and go on unscaled
                sum = (sum * xmax) * xmax;
                midRange = true;
                break;
            }
            [[fallthrough]];
        case Large:
            if (ax <= xmax) {
                sum += (dx[i] / xmax) * (dx[i] / xmax);
            } else {
                sum = 1.0 + sum * (xmax / dx[i]) * (xmax / dx[i]);
                xmax = ax;
            }
            break;
        }
        if (midRange) {
            // phase 3: no scaling while elements stay below cuthi / n
            const double hitest = cuthi / static_cast<double>(n);
            int j = i;
            for (; j < nn; j += incx) {
                if (std::fabs(dx[j]) >= hitest)
                    break;
                sum += dx[j] * dx[j];
            }
            if (j >= nn)
                return std::sqrt(sum);
            // prepare for phase 4 with element j
            i = j;
            next = Large;
            sum = (sum / dx[i]) / dx[i];
            xmax = std::fabs(dx[i]);
            sum += (dx[i] / xmax) * (dx[i] / xmax);
        }
        i += incx;
    }
    return xmax * std::sqrt(sum);
}

} // namespace oscilla
