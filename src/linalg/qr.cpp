// QR factorisation with column pivoting (LINPACK DQRDC), application of the
// factors (LINPACK DQRSL), and the rank and least-squares drivers.
#include "oscilla/linalg/qr.h"

#include <cmath>
#include <cstdlib>

namespace oscilla {

namespace {

inline int imin(int a, int b) { return a < b ? a : b; }

} // namespace

// LINPACK DQRDC. x is n by p, column order with leading dimension ldx. On
// return the upper triangle holds R, the part below it and qraux hold the
// Householder vectors, and jpvt the original column of each factored column.
// With job non-zero, columns with jpvt > 0 are initial (moved to the front),
// jpvt < 0 final (moved to the back), jpvt = 0 free; free columns are pivoted
// by largest remaining norm.
void CQR::dqrdc(double *x, int ldx, int *n, int p, double *qraux, int *jpvt, double *work, int job)
{
    const int nn = *n;
    auto X = [x, ldx](int i, int j) -> double & { return x[(j - 1) * ldx + (i - 1)]; };
    int pl = 1;
    int pu = 0;
    if (job != 0) {
        // rearrange the columns according to jpvt
        for (int j = 1; j <= p; j++) {
            bool swapj = jpvt[j - 1] > 0;
            bool negj = jpvt[j - 1] < 0;
            jpvt[j - 1] = negj ? -j : j;
            if (swapj) {
                if (j != pl)
                    dswap(nn, &X(1, pl), 1, &X(1, j), 1);
                jpvt[j - 1] = jpvt[pl - 1];
                jpvt[pl - 1] = j;
                pl++;
            }
        }
        pu = p;
        for (int jj = 1; jj <= p; jj++) {
            int j = p - jj + 1;
            if (jpvt[j - 1] < 0) {
                jpvt[j - 1] = -jpvt[j - 1];
                if (j != pu) {
                    dswap(nn, &X(1, pu), 1, &X(1, j), 1);
                    int jp = jpvt[pu - 1];
                    jpvt[pu - 1] = jpvt[j - 1];
                    jpvt[j - 1] = jp;
                }
                pu--;
            }
        }
    }
    // norms of the free columns
    for (int j = pl; j <= pu; j++) {
        qraux[j - 1] = dnrm2(nn, &X(1, j), 1);
        work[j - 1] = qraux[j - 1];
    }
    // Householder reduction
    const int lup = imin(nn, p);
    for (int l = 1; l <= lup; l++) {
        if (l == nn)
            break;
        // bring the free column of largest reduced norm into the pivot position
        if (l >= pl && l < pu) {
            double maxnrm = 0.0;
            int maxj = l;
            for (int j = l; j <= pu; j++) {
                if (qraux[j - 1] > maxnrm) {
                    maxnrm = qraux[j - 1];
                    maxj = j;
                }
            }
            if (maxj != l) {
                dswap(nn, &X(1, l), 1, &X(1, maxj), 1);
                qraux[maxj - 1] = qraux[l - 1];
                work[maxj - 1] = work[l - 1];
                int jp = jpvt[maxj - 1];
                jpvt[maxj - 1] = jpvt[l - 1];
                jpvt[l - 1] = jp;
            }
        }
        qraux[l - 1] = 0.0;
        // the Householder transformation for column l
        double nrmxl = dnrm2(nn - l + 1, &X(l, l), 1);
        if (nrmxl == 0.0)
            continue;
        if (X(l, l) != 0.0)
            nrmxl = std::copysign(std::fabs(nrmxl), X(l, l));
        dscal(nn - l + 1, 1.0 / nrmxl, &X(l, l), 1);
        X(l, l) = 1.0 + X(l, l);
        // apply it to the remaining columns, updating their norms
        for (int j = l + 1; j <= p; j++) {
            double t = -ddot(nn - l + 1, &X(l, l), 1, &X(l, j), 1) / X(l, l);
            daxpy(nn - l + 1, t, &X(l, l), 1, &X(l, j), 1);
            if (j < pl || j > pu || qraux[j - 1] == 0.0)
                continue;
            double tt = 1.0 - (std::fabs(X(l, j)) / qraux[j - 1]) * (std::fabs(X(l, j)) / qraux[j - 1]);
            tt = std::fmax(tt, 0.0);
            t = tt;
            tt = 1.0 + 0.05 * tt * (qraux[j - 1] / work[j - 1]) * (qraux[j - 1] / work[j - 1]);
            if (tt != 1.0) {
                qraux[j - 1] *= std::sqrt(t);
            } else {
                // the downdated norm has lost its accuracy: recompute it
                qraux[j - 1] = dnrm2(nn - l, &X(l + 1, j), 1);
                work[j - 1] = qraux[j - 1];
            }
        }
        // keep the transformation
        qraux[l - 1] = X(l, l);
        X(l, l) = -nrmxl;
    }
}

// LINPACK DQRSL. The decimal digits of job, from the top: ten-thousands
// compute Q y, any lower digit Q^T y, hundreds b, tens the residual, units
// X b. qy, qty, b, rsd and xb may alias one another as the LINPACK routine
// allows (the drivers pass one array for all but b).
void CQR::dqrsl(double *x, int ldx, int *n, int *k, double *qraux, double *y, double *qy, double *qty,
                double *b, double *rsd, double *xb, int job, int *info)
{
    const int nn = *n, kk = *k;
    auto X = [x, ldx](int i, int j) -> double & { return x[(j - 1) * ldx + (i - 1)]; };
    *info = 0;
    const bool cqy = job / 10000 != 0;
    const bool cqty = job % 10000 != 0;
    const bool cb = (job % 1000) / 100 != 0;
    const bool cr = (job % 100) / 10 != 0;
    const bool cxb = job % 10 != 0;
    const int ju = imin(kk, nn - 1);

    if (ju == 0) {
        // one row
        if (cqy)
            qy[0] = y[0];
        if (cqty)
            qty[0] = y[0];
        if (cxb)
            xb[0] = y[0];
        if (cb) {
            if (X(1, 1) == 0.0)
                *info = 1;
            else
                b[0] = y[0] / X(1, 1);
        }
        if (cr)
            rsd[0] = 0.0;
        return;
    }

    if (cqy)
        dcopy(nn, y, 1, qy, 1);
    if (cqty)
        dcopy(nn, y, 1, qty, 1);
    if (cqy) {
        for (int jj = 1; jj <= ju; jj++) {
            int j = ju - jj + 1;
            if (qraux[j - 1] == 0.0)
                continue;
            double temp = X(j, j);
            X(j, j) = qraux[j - 1];
            double t = -ddot(nn - j + 1, &X(j, j), 1, &qy[j - 1], 1) / X(j, j);
            daxpy(nn - j + 1, t, &X(j, j), 1, &qy[j - 1], 1);
            X(j, j) = temp;
        }
    }
    if (cqty) {
        for (int j = 1; j <= ju; j++) {
            if (qraux[j - 1] == 0.0)
                continue;
            double temp = X(j, j);
            X(j, j) = qraux[j - 1];
            double t = -ddot(nn - j + 1, &X(j, j), 1, &qty[j - 1], 1) / X(j, j);
            daxpy(nn - j + 1, t, &X(j, j), 1, &qty[j - 1], 1);
            X(j, j) = temp;
        }
    }

    if (cb)
        dcopy(kk, qty, 1, b, 1);
    const int kp1 = kk + 1;
    if (cxb)
        dcopy(kk, qty, 1, xb, 1);
    if (cr && kk < nn)
        dcopy(nn - kk, &qty[kp1 - 1], 1, &rsd[kp1 - 1], 1);
    if (cxb)
        for (int i = kp1; i <= nn; i++)
            xb[i - 1] = 0.0;
    if (cr)
        for (int i = 1; i <= kk; i++)
            rsd[i - 1] = 0.0;

    if (cb) {
        // back substitution with R
        for (int jj = 1; jj <= kk; jj++) {
            int j = kk - jj + 1;
            if (X(j, j) == 0.0) {
                *info = j;
                return;
            }
            b[j - 1] /= X(j, j);
            if (j != 1)
                daxpy(j - 1, -b[j - 1], &X(1, j), 1, b, 1);
        }
    }
    if (cr || cxb) {
        for (int jj = 1; jj <= ju; jj++) {
            int j = ju - jj + 1;
            if (qraux[j - 1] == 0.0)
                continue;
            double temp = X(j, j);
            X(j, j) = qraux[j - 1];
            if (cr) {
                double t = -ddot(nn - j + 1, &X(j, j), 1, &rsd[j - 1], 1) / X(j, j);
                daxpy(nn - j + 1, t, &X(j, j), 1, &rsd[j - 1], 1);
            }
            if (cxb) {
                double t = -ddot(nn - j + 1, &X(j, j), 1, &xb[j - 1], 1) / X(j, j);
                daxpy(nn - j + 1, t, &X(j, j), 1, &xb[j - 1], 1);
            }
            X(j, j) = temp;
        }
    }
}

void CQR::dqrank(double *a, int *lda, int *m, int *n, double tol, int *kr, int *jpvt, double *qraux,
                 double *work)
{
    for (int j = 0; j < *n; j++)
        jpvt[j] = 0;
    dqrdc(a, *lda, m, *n, qraux, jpvt, work, 1);
    *kr = 0;
    const int k = imin(*m, *n);
    const double r11 = std::fabs(a[0]);
    for (int j = 1; j <= k; j++) {
        // Written as "not above" so that a NaN product (zero matrix, infinite
        // tol) also stops the count.
        if (!(std::fabs(a[(j - 1) * *lda + (j - 1)]) > r11 * tol))
            return;
        *kr = j;
    }
}

void CQR::dqrlss(double *a, int *lda, int *m, int n, int *kr, double *b, double *x, double *rsd, int *jpvt,
                 double *qraux, int wantResid)
{
    const int job = wantResid ? 110 : 100;
    int info = 0;
    if (*kr != 0)
        dqrsl(a, *lda, m, kr, qraux, b, rsd, rsd, x, rsd, rsd, job, &info);
    for (int j = 0; j < n; j++)
        jpvt[j] = -jpvt[j];
    for (int j = *kr; j < n; j++)
        x[j] = 0.0;
    // x is in pivoted order: x[j] belongs to column jpvt[j]. Walk each cycle
    // of the permutation, marking visited entries positive again.
    for (int j = 1; j <= n; j++) {
        if (jpvt[j - 1] > 0)
            continue;
        int k = -jpvt[j - 1];
        jpvt[j - 1] = k;
        while (k != j) {
            double t = x[j - 1];
            x[j - 1] = x[k - 1];
            x[k - 1] = t;
            jpvt[k - 1] = -jpvt[k - 1];
            k = jpvt[k - 1];
        }
    }
}

int CQR::qrsolve(double *a, int m, int n, double *b, double *x, double *resid, int wantResid)
{
    if (m < 1 || n < 1)
        return 0;
    int *jpvt = static_cast<int *>(std::malloc(static_cast<size_t>(n) * sizeof(int)));
    double *qraux = static_cast<double *>(std::malloc(static_cast<size_t>(n) * sizeof(double)));
    double *work = static_cast<double *>(std::malloc(static_cast<size_t>(n) * sizeof(double)));
    if (!jpvt || !qraux || !work) {
        std::free(jpvt);
        std::free(qraux);
        std::free(work);
        return 0;
    }
    double amax = 0.0;
    for (long i = 0; i < static_cast<long>(m) * n; i++)
        amax = std::fmax(amax, std::fabs(a[i]));
    // The tolerance is divided by the scale of A, not multiplied: a matrix of
    // large elements gets a stricter rank test, one of small elements a looser.
    const double tol = 1e-15 / amax;
    int lda = m, kr = 0;
    dqrank(a, &lda, &m, &n, tol, &kr, jpvt, qraux, work);
    dqrlss(a, &lda, &m, n, &kr, b, x, resid, jpvt, qraux, wantResid);
    std::free(work);
    std::free(qraux);
    std::free(jpvt);
    return 1;
}

double CQR::powi(double x, int k)
{
    if (x == 0.0)
        return 0.0;
    // unsigned magnitude: -INT_MIN does not fit an int
    unsigned int e = k < 0 ? 0u - static_cast<unsigned int>(k) : static_cast<unsigned int>(k);
    if (k < 0)
        x = 1.0 / x;
    double r = 1.0;
    while (e) {
        if (e & 1u)
            r *= x;
        x *= x;
        e >>= 1;
    }
    return r;
}

} // namespace oscilla
