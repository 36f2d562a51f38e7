// LINPACK DGEFA, DGECO, DGESL and DGEDI on row-pointer storage, and the general
// solver drivers. Element (i, j) of LINPACK, counted from 1, is a[j-1][i-1]:
// every vector operation runs along a row pointer, which is why the drivers
// solve the transposed system of a[i][j].
#include "oscilla/linalg/solvers.h"
#include "linalg/linpack.h"

#include <cmath>
#include <cstdlib>

namespace oscilla {
namespace detail {

namespace {

// LINPACK element (i, j), one-based
inline double &el(double **a, int i, int j) { return a[j - 1][i - 1]; }
// address of LINPACK element (i, j): the start of a column segment
inline double *at(double **a, int i, int j) { return &a[j - 1][i - 1]; }

} // namespace

int gefa(double **a, int n, int *ipvt)
{
    // Gaussian elimination with partial pivoting (DGEFA)
    for (int k = 1; k <= n - 1; k++) {
        int kp1 = k + 1;
        int l = viamax(n - k + 1, at(a, k, k)) + k;
        ipvt[k - 1] = l;
        if (el(a, l, k) == 0.0)
            return 0;
        if (l != k) {
            double t = el(a, l, k);
            el(a, l, k) = el(a, k, k);
            el(a, k, k) = t;
        }
        double t = -1.0 / el(a, k, k);
        vscal(n - k, t, at(a, k + 1, k));
        for (int j = kp1; j <= n; j++) {
            t = el(a, l, j);
            if (l != k) {
                el(a, l, j) = el(a, k, j);
                el(a, k, j) = t;
            }
            vaxpy(n - k, t, at(a, k + 1, k), at(a, k + 1, j));
        }
    }
    if (n >= 1) {
        ipvt[n - 1] = n;
        if (el(a, n, n) == 0.0)
            return 0;
    }
    return 1;
}

int geco(double **a, int n, int *ipvt, double *rcond, double *z)
{
    // 1-norm of A: largest column sum
    double anorm = 0.0;
    for (int j = 1; j <= n; j++) {
        double s = vasum(n, at(a, 1, j));
        if (s > anorm)
            anorm = s;
    }
    if (!gefa(a, n, ipvt)) {
        *rcond = 0.0;
        return 0;
    }

    // rcond = 1/(norm(A) * estimate of norm(inverse(A))), the estimate from
    // A y = z with z chosen by trans(A) z = e, e of +-1 growing z (DGECO).
    // Solve trans(U) w = e
    double ek = 1.0;
    for (int j = 1; j <= n; j++)
        z[j - 1] = 0.0;
    for (int k = 1; k <= n; k++) {
        if (z[k - 1] != 0.0)
            ek = std::copysign(ek, -z[k - 1]);
        if (std::fabs(ek - z[k - 1]) > std::fabs(el(a, k, k))) {
            double s = std::fabs(el(a, k, k)) / std::fabs(ek - z[k - 1]);
            vscal(n, s, z);
            ek = s * ek;
        }
        double wk = ek - z[k - 1];
        double wkm = -ek - z[k - 1];
        double s = std::fabs(wk);
        double sm = std::fabs(wkm);
        if (el(a, k, k) != 0.0) {
            wk /= el(a, k, k);
            wkm /= el(a, k, k);
        } else {
            wk = 1.0;
            wkm = 1.0;
        }
        int kp1 = k + 1;
        if (kp1 <= n) {
            for (int j = kp1; j <= n; j++) {
                sm += std::fabs(z[j - 1] + wkm * el(a, k, j));
                z[j - 1] += wk * el(a, k, j);
                s += std::fabs(z[j - 1]);
            }
            if (s < sm) {
                double t = wkm - wk;
                wk = wkm;
                for (int j = kp1; j <= n; j++)
                    z[j - 1] += t * el(a, k, j);
            }
        }
        z[k - 1] = wk;
    }
    double s = 1.0 / vasum(n, z);
    vscal(n, s, z);

    // Solve trans(L) y = w
    for (int kb = 1; kb <= n; kb++) {
        int k = n + 1 - kb;
        if (k < n)
            z[k - 1] += vdot(n - k, at(a, k + 1, k), &z[k]);
        if (std::fabs(z[k - 1]) > 1.0) {
            s = 1.0 / std::fabs(z[k - 1]);
            vscal(n, s, z);
        }
        int l = ipvt[k - 1];
        double t = z[l - 1];
        z[l - 1] = z[k - 1];
        z[k - 1] = t;
    }
    s = 1.0 / vasum(n, z);
    vscal(n, s, z);
    double ynorm = 1.0;

    // Solve L v = y
    for (int k = 1; k <= n; k++) {
        int l = ipvt[k - 1];
        double t = z[l - 1];
        z[l - 1] = z[k - 1];
        z[k - 1] = t;
        if (k < n)
            vaxpy(n - k, t, at(a, k + 1, k), &z[k]);
        if (std::fabs(z[k - 1]) > 1.0) {
            s = 1.0 / std::fabs(z[k - 1]);
            vscal(n, s, z);
            ynorm *= s;
        }
    }
    s = 1.0 / vasum(n, z);
    vscal(n, s, z);
    ynorm *= s;

    // Solve U z = v
    for (int kb = 1; kb <= n; kb++) {
        int k = n + 1 - kb;
        if (std::fabs(z[k - 1]) > std::fabs(el(a, k, k))) {
            s = std::fabs(el(a, k, k)) / std::fabs(z[k - 1]);
            vscal(n, s, z);
            ynorm *= s;
        }
        if (el(a, k, k) != 0.0)
            z[k - 1] /= el(a, k, k);
        else
            z[k - 1] = 1.0;
        double t = -z[k - 1];
        vaxpy(k - 1, t, at(a, 1, k), z);
    }
    s = 1.0 / vasum(n, z);
    vscal(n, s, z);
    ynorm *= s;

    *rcond = anorm != 0.0 ? ynorm / anorm : 0.0;
    return 1;
}

void gesl(double **a, int n, const int *ipvt, double *b)
{
    // Solve L y = b
    for (int k = 1; k <= n - 1; k++) {
        int l = ipvt[k - 1];
        double t = b[l - 1];
        if (l != k) {
            b[l - 1] = b[k - 1];
            b[k - 1] = t;
        }
        vaxpy(n - k, t, at(a, k + 1, k), &b[k]);
    }
    // Solve U x = y
    for (int kb = 1; kb <= n; kb++) {
        int k = n + 1 - kb;
        b[k - 1] /= el(a, k, k);
        double t = -b[k - 1];
        vaxpy(k - 1, t, at(a, 1, k), b);
    }
}

void gedi(double **a, int n, const int *ipvt, double *work, double *det, int wantDet, int wantInverse)
{
    if (wantDet) {
        const double ten = 10.0;
        det[0] = 1.0;
        det[1] = 0.0;
        for (int i = 1; i <= n; i++) {
            if (ipvt[i - 1] != i)
                det[0] = -det[0];
            det[0] *= el(a, i, i);
            if (det[0] == 0.0)
                break;
            while (std::fabs(det[0]) < 1.0) {
                det[0] *= ten;
                det[1] -= 1.0;
            }
            while (std::fabs(det[0]) >= ten) {
                det[0] /= ten;
                det[1] += 1.0;
            }
        }
    }
    if (!wantInverse)
        return;

    // inverse(U)
    for (int k = 1; k <= n; k++) {
        el(a, k, k) = 1.0 / el(a, k, k);
        double t = -el(a, k, k);
        vscal(k - 1, t, at(a, 1, k));
        for (int j = k + 1; j <= n; j++) {
            t = el(a, k, j);
            el(a, k, j) = 0.0;
            vaxpy(k, t, at(a, 1, k), at(a, 1, j));
        }
    }
    // inverse(U) * inverse(L)
    for (int kb = 1; kb <= n - 1; kb++) {
        int k = n - kb;
        int kp1 = k + 1;
        for (int i = kp1; i <= n; i++) {
            work[i - 1] = el(a, i, k);
            el(a, i, k) = 0.0;
        }
        for (int j = kp1; j <= n; j++) {
            double t = work[j - 1];
            vaxpy(n, t, at(a, 1, j), at(a, 1, k));
        }
        int l = ipvt[k - 1];
        if (l != k)
            vswap(n, at(a, 1, k), at(a, 1, l));
    }
}

} // namespace detail

namespace {

// Shared body of the four general drivers: factor (with or without the
// condition estimate), solve if b is given, invert if asked.
int ge_driver(double **a, double *b, int n, bool withCond, bool invert)
{
    if (n < 1)
        return 0;
    int *ipvt = static_cast<int *>(std::malloc(static_cast<size_t>(n) * sizeof(int)));
    double *z = static_cast<double *>(std::malloc(static_cast<size_t>(n) * sizeof(double)));
    if (!ipvt || !z) {
        std::free(ipvt);
        std::free(z);
        return -1;
    }
    int ok;
    if (withCond) {
        double rcond = 0.0;
        ok = detail::geco(a, n, ipvt, &rcond, z);
        lastFigure = rcond;
    } else {
        ok = detail::gefa(a, n, ipvt);
    }
    if (ok) {
        if (b)
            detail::gesl(a, n, ipvt, b);
        if (invert) {
            double det[2];
            detail::gedi(a, n, ipvt, z, det, 0, 1);
        }
    }
    std::free(z);
    std::free(ipvt);
    return ok;
}

} // namespace

int gefaproc(double **a, double *b, int n) { return ge_driver(a, b, n, false, false); }
int gecoproc(double **a, double *b, int n) { return ge_driver(a, b, n, true, false); }
int gefainv(double **a, double *b, int n) { return ge_driver(a, b, n, false, true); }
int gecoinv(double **a, double *b, int n) { return ge_driver(a, b, n, true, true); }

} // namespace oscilla
