// Linear least squares by QR factorisation with column pivoting and a rank
// decision (LINPACK DQRDC / DQRSL with rank and solution drivers).
//
// Matrices are flat arrays in column order: element (i, j), both from 0, is
// a[j*lda + i]. Pivot arrays hold one-based column numbers.
#ifndef OSCILLA_LINALG_QR_H
#define OSCILLA_LINALG_QR_H

namespace oscilla {

class CQR {
public:
    CQR() {}
    ~CQR() {}

    // min ||A x - b|| for A of m rows and n columns (lda = m); a is destroyed.
    // resid gets the m residuals if wantResid is non-zero, else Q^T b.
    // 1 on success, 0 if a work array could not be had.
    int qrsolve(double *a, int m, int n, double *b, double *x, double *resid, int wantResid);

    // Factorises with pivoting and sets *kr to the number of leading diagonal
    // elements of R above tol times |R(1,1)|.
    void dqrank(double *a, int *lda, int *m, int *n, double tol, int *kr, int *jpvt, double *qraux,
                double *work);
    // Solves with the first kr columns of the factors and returns x in the
    // order of the columns of A; entries of dropped columns are 0.
    void dqrlss(double *a, int *lda, int *m, int n, int *kr, double *b, double *x, double *rsd, int *jpvt,
                double *qraux, int wantResid);
    // LINPACK DQRDC: x is n rows by p columns; job non-zero pivots by jpvt.
    void dqrdc(double *x, int ldx, int *n, int p, double *qraux, int *jpvt, double *work, int job);
    // LINPACK DQRSL; job digits from the top: Q y, Q^T y, b, residual, X b.
    void dqrsl(double *x, int ldx, int *n, int *k, double *qraux, double *y, double *qy, double *qty,
               double *b, double *rsd, double *xb, int job, int *info);

    // x^k by repeated squaring; 0 for x = 0, and k < 0 inverts x first.
    double powi(double x, int k);

private:
    double ddot(int n, const double *dx, int incx, const double *dy, int incy);
    void daxpy(int n, double da, const double *dx, int incx, double *dy, int incy);
    void dcopy(int n, const double *dx, int incx, double *dy, int incy);
    void dscal(int n, double da, double *dx, int incx);
    void dswap(int n, double *dx, int incx, double *dy, int incy);
    double dnrm2(int n, const double *dx, int incx);
};

} // namespace oscilla

#endif
