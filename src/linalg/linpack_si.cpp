// LINPACK DSIFA, DSICO, DSISL and DSIDI (symmetric indefinite, Bunch-Kaufman
// diagonal pivoting) on row-pointer storage, and their drivers. LINPACK's
// element (i, j), counted from 1, is a[j-1][i-1]; the routines use i <= j only,
// which is the triangle with row index >= column index in a[r][c].
#include "oscilla/linalg/solvers.h"
#include "oscilla/series/complex.h"
#include "linalg/linpack.h"

#include <cmath>
#include <cstdlib>

namespace oscilla {
namespace detail {

namespace {

inline double &el(double **a, int i, int j) { return a[j - 1][i - 1]; }
inline double *at(double **a, int i, int j) { return &a[j - 1][i - 1]; }

inline void swapd(double &x, double &y)
{
    double t = x;
    x = y;
    y = t;
}

} // namespace

int ifa(double **a, int n, int *kpvt)
{
    // Bunch-Kaufman growth constant
    const double alpha = (1.0 + std::sqrt(17.0)) / 8.0;
    int info = 0;
    int k = n;
    while (k > 0) {
        if (k == 1) {
            kpvt[0] = 1;
            if (el(a, 1, 1) == 0.0)
                info = 1;
            break;
        }
        // determine the pivot block: 1 by 1 or 2 by 2, with or without swap
        int km1 = k - 1;
        double absakk = std::fabs(el(a, k, k));
        int imax = viamax(k - 1, at(a, 1, k)) + 1;
        double colmax = std::fabs(el(a, imax, k));
        int kstep;
        bool swap;
        if (absakk >= alpha * colmax) {
            kstep = 1;
            swap = false;
        } else {
            double rowmax = 0.0;
            for (int j = imax + 1; j <= k; j++)
                rowmax = std::fmax(rowmax, std::fabs(el(a, imax, j)));
            if (imax != 1) {
                int jmax = viamax(imax - 1, at(a, 1, imax)) + 1;
                rowmax = std::fmax(rowmax, std::fabs(el(a, jmax, imax)));
            }
            if (std::fabs(el(a, imax, imax)) >= alpha * rowmax) {
                kstep = 1;
                swap = true;
            } else if (absakk >= alpha * colmax * (colmax / rowmax)) {
                kstep = 1;
                swap = false;
            } else {
                kstep = 2;
                swap = imax != km1;
            }
        }

        if (std::fmax(absakk, colmax) == 0.0) {
            // column k is zero: singular, go on with the next
            kpvt[k - 1] = k;
            info = k;
        } else if (kstep == 1) {
            if (swap) {
                vswap(imax, at(a, 1, imax), at(a, 1, k));
                for (int jj = imax; jj <= k; jj++) {
                    int j = k + imax - jj;
                    swapd(el(a, j, k), el(a, imax, j));
                }
            }
            for (int jj = 1; jj <= km1; jj++) {
                int j = k - jj;
                double mulk = -el(a, j, k) / el(a, k, k);
                vaxpy(j, mulk, at(a, 1, k), at(a, 1, j));
                el(a, j, k) = mulk;
            }
            kpvt[k - 1] = swap ? imax : k;
        } else {
            if (swap) {
                vswap(imax, at(a, 1, imax), at(a, 1, k - 1));
                for (int jj = imax; jj <= km1; jj++) {
                    int j = km1 + imax - jj;
                    swapd(el(a, j, k - 1), el(a, imax, j));
                }
                swapd(el(a, k - 1, k), el(a, imax, k));
            }
            int km2 = k - 2;
            if (km2 != 0) {
                double ak = el(a, k, k) / el(a, k - 1, k);
                double akm1 = el(a, k - 1, k - 1) / el(a, k - 1, k);
                double denom = 1.0 - ak * akm1;
                for (int jj = 1; jj <= km2; jj++) {
                    int j = km1 - jj;
                    double bk = el(a, j, k) / el(a, k - 1, k);
                    double bkm1 = el(a, j, k - 1) / el(a, k - 1, k);
                    double mulk = (akm1 * bk - bkm1) / denom;
                    double mulkm1 = (ak * bkm1 - bk) / denom;
                    vaxpy(j, mulk, at(a, 1, k), at(a, 1, j));
                    vaxpy(j, mulkm1, at(a, 1, k - 1), at(a, 1, j));
                    el(a, j, k) = mulk;
                    el(a, j, k - 1) = mulkm1;
                }
            }
            kpvt[k - 1] = swap ? -imax : 1 - k;
            kpvt[k - 2] = kpvt[k - 1];
        }
        k -= kstep;
    }
    return info == 0 ? 1 : 0;
}

namespace {

// Solve of a 2 by 2 pivot block [a(k-1,k-1) a(k-1,k); a(k-1,k) a(k,k)] for
// (z(k-1), z(k)), in LINPACK's scaled form.
inline void block2(double **a, int k, double *z)
{
    double ak = el(a, k, k) / el(a, k - 1, k);
    double akm1 = el(a, k - 1, k - 1) / el(a, k - 1, k);
    double bk = z[k - 1] / el(a, k - 1, k);
    double bkm1 = z[k - 2] / el(a, k - 1, k);
    double denom = ak * akm1 - 1.0;
    z[k - 1] = (akm1 * bk - bkm1) / denom;
    z[k - 2] = (ak * bkm1 - bk) / denom;
}

// Solve trans(U) y = w, the forward half of DSICO and DSISL.
void forward_ut(double **a, int n, const int *kpvt, double *z)
{
    int k = 1;
    while (k <= n) {
        int ks = kpvt[k - 1] < 0 ? 2 : 1;
        if (k != 1) {
            z[k - 1] += vdot(k - 1, at(a, 1, k), z);
            if (ks == 2)
                z[k] += vdot(k - 1, at(a, 1, k + 1), z);
            int kp = std::abs(kpvt[k - 1]);
            if (kp != k)
                swapd(z[k - 1], z[kp - 1]);
        }
        k += ks;
    }
}

inline void normalise(int n, double *z, double *ynorm)
{
    double s = 1.0 / vasum(n, z);
    vscal(n, s, z);
    if (ynorm)
        *ynorm *= s;
}

} // namespace

int ico(double **a, int n, int *kpvt, double *rcond, double *z)
{
    // 1-norm of A from the stored triangle
    for (int j = 1; j <= n; j++) {
        z[j - 1] = vasum(j, at(a, 1, j));
        for (int i = 1; i <= j - 1; i++)
            z[i - 1] += std::fabs(el(a, i, j));
    }
    double anorm = 0.0;
    for (int j = 1; j <= n; j++)
        anorm = std::fmax(anorm, z[j - 1]);

    if (!ifa(a, n, kpvt)) {
        *rcond = 0.0;
        return 0;
    }

    // Solve U D w = e, e of +-1 chosen to make w grow
    double ek = 1.0;
    for (int j = 1; j <= n; j++)
        z[j - 1] = 0.0;
    int k = n;
    while (k != 0) {
        int ks = kpvt[k - 1] < 0 ? 2 : 1;
        int kp = std::abs(kpvt[k - 1]);
        int kps = k + 1 - ks;
        if (kp != kps)
            swapd(z[kps - 1], z[kp - 1]);
        if (z[k - 1] != 0.0)
            ek = std::copysign(ek, z[k - 1]);
        z[k - 1] += ek;
        vaxpy(k - ks, z[k - 1], at(a, 1, k), z);
        if (ks != 1) {
            if (z[k - 2] != 0.0)
                ek = std::copysign(ek, z[k - 2]);
            z[k - 2] += ek;
            vaxpy(k - ks, z[k - 2], at(a, 1, k - 1), z);
            block2(a, k, z);
        } else {
            if (std::fabs(z[k - 1]) > std::fabs(el(a, k, k))) {
                double s = std::fabs(el(a, k, k)) / std::fabs(z[k - 1]);
                vscal(n, s, z);
                ek *= s;
            }
            if (el(a, k, k) != 0.0)
                z[k - 1] /= el(a, k, k);
            else
                z[k - 1] = 1.0;
        }
        k -= ks;
    }
    normalise(n, z, nullptr);

    // Solve trans(U) y = w
    forward_ut(a, n, kpvt, z);
    normalise(n, z, nullptr);
    double ynorm = 1.0;

    // Solve U D v = y
    k = n;
    while (k != 0) {
        int ks = kpvt[k - 1] < 0 ? 2 : 1;
        if (k != ks) {
            int kp = std::abs(kpvt[k - 1]);
            int kps = k + 1 - ks;
            if (kp != kps)
                swapd(z[kps - 1], z[kp - 1]);
            vaxpy(k - ks, z[k - 1], at(a, 1, k), z);
            if (ks == 2)
                vaxpy(k - ks, z[k - 2], at(a, 1, k - 1), z);
        }
        if (ks == 2) {
            block2(a, k, z);
        } else {
            if (std::fabs(z[k - 1]) > std::fabs(el(a, k, k))) {
                double s = std::fabs(el(a, k, k)) / std::fabs(z[k - 1]);
                vscal(n, s, z);
                ynorm *= s;
            }
            if (el(a, k, k) != 0.0)
                z[k - 1] /= el(a, k, k);
            else
                z[k - 1] = 1.0;
        }
        k -= ks;
    }
    normalise(n, z, &ynorm);

    // Solve trans(U) z = v
    forward_ut(a, n, kpvt, z);
    normalise(n, z, &ynorm);

    *rcond = anorm != 0.0 ? ynorm / anorm : 0.0;
    return 1;
}

void isl(double **a, int n, const int *kpvt, double *b)
{
    // Backward: solve U D x = b, applying the transformations and the pivot
    // blocks from the last column up
    int k = n;
    while (k != 0) {
        if (kpvt[k - 1] >= 0) {
            if (k != 1) {
                int kp = kpvt[k - 1];
                if (kp != k)
                    swapd(b[k - 1], b[kp - 1]);
                vaxpy(k - 1, b[k - 1], at(a, 1, k), b);
            }
            b[k - 1] /= el(a, k, k);
            k -= 1;
        } else {
            if (k != 2) {
                int kp = std::abs(kpvt[k - 1]);
                if (kp != k - 1)
                    swapd(b[k - 2], b[kp - 1]);
                vaxpy(k - 2, b[k - 1], at(a, 1, k), b);
                vaxpy(k - 2, b[k - 2], at(a, 1, k - 1), b);
            }
            block2(a, k, b);
            k -= 2;
        }
    }
    // Forward: solve trans(U) x = y
    forward_ut(a, n, kpvt, b);
}

void idi(double **a, int n, const int *kpvt, double *work, double *det, int wantDet, int wantInverse)
{
    if (wantDet) {
        const double ten = 10.0;
        det[0] = 1.0;
        det[1] = 0.0;
        double t = 0.0;
        for (int k = 1; k <= n; k++) {
            double d = el(a, k, k);
            if (kpvt[k - 1] <= 0) {
                // 2 by 2 block: the determinant of the block on its first
                // column, then 1 times it on the second; t flags the state
                if (t == 0.0) {
                    t = std::fabs(el(a, k, k + 1));
                    d = (d / t) * el(a, k + 1, k + 1) - t;
                } else {
                    d = t;
                    t = 0.0;
                }
            }
            det[0] *= d;
            if (det[0] != 0.0) {
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
    }
    if (!wantInverse)
        return;

    int k = 1;
    while (k <= n) {
        int km1 = k - 1;
        int kstep;
        if (kpvt[k - 1] >= 0) {
            el(a, k, k) = 1.0 / el(a, k, k);
            if (km1 >= 1) {
                vcopy(km1, at(a, 1, k), work);
                for (int j = 1; j <= km1; j++) {
                    el(a, j, k) = vdot(j, at(a, 1, j), work);
                    vaxpy(j - 1, work[j - 1], at(a, 1, j), at(a, 1, k));
                }
                el(a, k, k) += vdot(km1, work, at(a, 1, k));
            }
            kstep = 1;
        } else {
            double t = std::fabs(el(a, k, k + 1));
            double ak = el(a, k, k) / t;
            double akp1 = el(a, k + 1, k + 1) / t;
            double akkp1 = el(a, k, k + 1) / t;
            double d = t * (ak * akp1 - 1.0);
            el(a, k, k) = akp1 / d;
            el(a, k + 1, k + 1) = ak / d;
            el(a, k, k + 1) = -akkp1 / d;
            if (km1 >= 1) {
                vcopy(km1, at(a, 1, k + 1), work);
                for (int j = 1; j <= km1; j++) {
                    el(a, j, k + 1) = vdot(j, at(a, 1, j), work);
                    vaxpy(j - 1, work[j - 1], at(a, 1, j), at(a, 1, k + 1));
                }
                el(a, k + 1, k + 1) += vdot(km1, work, at(a, 1, k + 1));
                el(a, k, k + 1) += vdot(km1, at(a, 1, k), at(a, 1, k + 1));
                vcopy(km1, at(a, 1, k), work);
                for (int j = 1; j <= km1; j++) {
                    el(a, j, k) = vdot(j, at(a, 1, j), work);
                    vaxpy(j - 1, work[j - 1], at(a, 1, j), at(a, 1, k));
                }
                el(a, k, k) += vdot(km1, work, at(a, 1, k));
            }
            kstep = 2;
        }
        // undo the symmetric interchange of this step
        int ks = std::abs(kpvt[k - 1]);
        if (ks != k) {
            vswap(ks, at(a, 1, ks), at(a, 1, k));
            for (int jb = ks; jb <= k; jb++) {
                int j = k + ks - jb;
                swapd(el(a, j, k), el(a, ks, j));
            }
            if (kstep != 1)
                swapd(el(a, ks, k + 1), el(a, k, k + 1));
        }
        k += kstep;
    }
}

} // namespace detail

namespace {

// Shared body of the symmetric drivers.
int si_driver(double **a, double *b, int n, bool withCond, bool invert, double *rcondOut)
{
    if (n < 1)
        return 0;
    int *kpvt = static_cast<int *>(std::malloc(static_cast<size_t>(n) * sizeof(int)));
    double *z = static_cast<double *>(std::malloc(static_cast<size_t>(n) * sizeof(double)));
    if (!kpvt || !z) {
        std::free(kpvt);
        std::free(z);
        return -1;
    }
    int ok;
    if (withCond) {
        double rcond = 0.0;
        ok = detail::ico(a, n, kpvt, &rcond, z);
        lastFigure = rcond;
        if (rcondOut)
            *rcondOut = rcond;
    } else {
        ok = detail::ifa(a, n, kpvt);
    }
    if (ok) {
        if (b)
            detail::isl(a, n, kpvt, b);
        if (invert) {
            double det[2];
            detail::idi(a, n, kpvt, z, det, 0, 1);
        }
    }
    std::free(z);
    std::free(kpvt);
    return ok;
}

} // namespace

int ifaproc(double **a, double *b, int n) { return si_driver(a, b, n, false, false, nullptr); }

int icoproc(double **a, double *b, int n)
{
    if (n < 1)
        return 0;
    double **c = lmatr(n, n);
    if (!c)
        return -1;
    for (int i = 0; i < n; i++)
        for (int j = 0; j < n; j++)
            c[i][j] = a[i][j];
    int r = si_driver(c, b, n, true, false, nullptr);
    lmatrfree(c);
    return r;
}

int icoproc(double **a, double *b, int n, double *rcond) { return si_driver(a, b, n, true, false, rcond); }
int ifainv(double **a, double *b, int n) { return si_driver(a, b, n, false, true, nullptr); }
int icoinv(double **a, double *b, int n) { return si_driver(a, b, n, true, true, nullptr); }

} // namespace oscilla
