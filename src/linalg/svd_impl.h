// Internal kernels shared by CSVD and CSVDSol: the Golub-Reinsch decomposition,
// back substitution, the descending quicksorts, thresholding and vector kernels.
#ifndef OSCILLA_SRC_LINALG_SVD_IMPL_H
#define OSCILLA_SRC_LINALG_SVD_IMPL_H

namespace oscilla {
namespace detail {

// Notifications of a running decomposition; report = 0 keeps them all quiet.
struct SvdProgress {
    int report;
    void (*onStart)(void);
    void (*onProgress)(int);
    void (*onEnd)(void);
};

// Golub-Reinsch SVD of the m by n row-major matrix a (leading dimension lda):
// a = u * diag(s) * v^T, u m by n (ldu), v n by n (ldv), s unsorted.
// a may equal u. *ierr = 0 on success, else the one-based index of the singular
// value that did not converge in 30 iterations.
void golub_reinsch(const double *a, double *u, double *v, double *s, int lda, int ldu, int ldv,
                   int m, int n, int wantu, int wantv, int *ierr, const SvdProgress *pg);

// x = v * diag(1/s) * u^T * b with zero s[j] left out; u is m by n, v n by n, both stride n.
void svd_backsub(const double *u, const double *s, const double *v, int m, int n,
                 const double *b, double *x);

// Descending quicksorts carrying a permutation or row pointers.
void sort_desc_idx(int lo, int hi, double *values, int *index);
void sort_desc_rows(int lo, int hi, double *values, double **rows);

// Sorts s into sorted (descending, with index), zeroes the dropped entries of s by the
// threshold rule and returns the condition figure.
double svd_threshold(double *s, double *sorted, int *index, int n, double thresh);

void vaddkxv(double *y, const double *x, double k, const double *z, int n);
void vaddkxvsk(double *y, const double *x, double k, const double *z, int n, int sk);
double dotprod(const double *x, const double *y, int n);
void vdivk(double *x, double k, int n);
void vdivksk(double *x, double k, int n, int sk);
void kxv(double *x, double k, int n);
void kxvsk(double *x, double k, int n, int sk);
double sumvabs(const double *x, int n);
double sumvabssk(const double *x, int n, int sk);
double sumvsqr(const double *x, int n);
double sumvsqrsk(const double *x, int n, int sk);
void zerov(double *x, int n);
void zerovsk(double *x, int n, int sk);
void negvsk(double *x, int n, int sk);
void copyv(double *dst, const double *src, int n);
void copym(double *dst, const double *src, int rows, int cols, int lddst, int ldsrc);

} // namespace detail
} // namespace oscilla

#endif
