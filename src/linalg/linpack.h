// LINPACK factor, condition, solve and inverse routines on row-pointer
// matrices, with the unit-stride vector helpers under them.
//
// Storage: LINPACK's element (i, j), both counted from 1, is a[j-1][i-1]. A row
// pointer is thus a LINPACK column, and the vector helpers run along it. Pivot
// arrays hold LINPACK's one-based indices; in kpvt a negative entry marks a
// 2 by 2 block.
#ifndef OSCILLA_SRC_LINALG_LINPACK_H
#define OSCILLA_SRC_LINALG_LINPACK_H

namespace oscilla {
namespace detail {

// y += a x
void vaxpy(int n, double a, const double *x, double *y);
// sum of |x[i]|
double vasum(int n, const double *x);
// x *= a
void vscal(int n, double a, double *x);
double vdot(int n, const double *x, const double *y);
// zero-based index of the first element of largest magnitude; -1 if n < 1
int viamax(int n, const double *x);
void vswap(int n, double *x, double *y);
void vcopy(int n, const double *x, double *y);

// DGEFA: 1 if all pivots are non-zero, 0 at the first zero pivot.
int gefa(double **a, int n, int *ipvt);
// DGECO: 0 if gefa found a zero pivot (then *rcond = 0), otherwise 1.
int geco(double **a, int n, int *ipvt, double *rcond, double *z);
// DGESL with job 0.
void gesl(double **a, int n, const int *ipvt, double *b);
// DGEDI. det[0] * 10^det[1] is the determinant when wantDet is set.
void gedi(double **a, int n, const int *ipvt, double *work, double *det, int wantDet, int wantInverse);

// DSIFA (Bunch-Kaufman): 1 if non-singular, 0 if a pivot is zero.
int ifa(double **a, int n, int *kpvt);
// DSICO: 0 if ifa failed (then *rcond = 0), otherwise 1.
int ico(double **a, int n, int *kpvt, double *rcond, double *z);
// DSISL.
void isl(double **a, int n, const int *kpvt, double *b);
// DSIDI without the inertia.
void idi(double **a, int n, const int *kpvt, double *work, double *det, int wantDet, int wantInverse);

} // namespace detail
} // namespace oscilla

#endif
