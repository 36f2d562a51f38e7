// Dense square linear systems on row-pointer matrices (n pointers to n doubles,
// indexed from 0): Gaussian elimination, LU, and LINPACK-style general and
// symmetric indefinite solvers. All work in place.
//
// Results: 1 success, 0 singular, -1 a work array could not be had.
//
// The ge... and i... families treat a[k] as column k of the factored matrix,
// so the matrix they factor is the transpose of a[i][j]:
//   - gefaproc and gecoproc solve transpose(A) x = b;
//   - gefainv and gecoinv replace a by the true inverse of A;
//   - the i... family reads and writes only the triangle with i >= j in a[i][j].
#ifndef OSCILLA_LINALG_SOLVERS_H
#define OSCILLA_LINALG_SOLVERS_H

namespace oscilla {

// The last determinant (luproc) or reciprocal condition estimate (gecoproc,
// gecoinv, icoproc, icoinv). Written only; process-wide.
extern double lastFigure;

// A x = b by elimination with partial pivoting; x replaces b, a is destroyed.
int gauss(double **a, double *b, int n);
// Gauss-Jordan with full pivoting: a becomes the inverse, b the solution.
int gaussj(double **a, double *b, int n);

// Crout LU with implicit scaled pivoting. indx gets the n row exchanges,
// *d is +1 or -1 by the parity of the exchanges.
int ludcmp(double **a, int n, int *indx, int *d);
// Solves with the factors of ludcmp; x replaces b.
void lubksb(double **a, double *b, int n, int *indx);
// ludcmp, the determinant into lastFigure, lubksb.
int luproc(double **a, double *b, int n);
// ludcmp; lubksb on b if b is not null; then column j of a is overwritten, for
// j = 0, 1, ..., by the solution for the unit vector e_j computed from the
// factors as they stand at that moment. Only for n = 1 is that the inverse.
int luinv(double **a, double *b, int n);

int gefaproc(double **a, double *b, int n);
int gecoproc(double **a, double *b, int n);
int gefainv(double **a, double *b, int n);
int gecoinv(double **a, double *b, int n);

int ifaproc(double **a, double *b, int n);
// Works on a copy: a is left as it was.
int icoproc(double **a, double *b, int n);
// Works in place; *rcond receives the estimate if rcond is not null.
int icoproc(double **a, double *b, int n, double *rcond);
int ifainv(double **a, double *b, int n);
int icoinv(double **a, double *b, int n);

} // namespace oscilla

#endif
