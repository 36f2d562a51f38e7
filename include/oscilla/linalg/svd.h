// Singular value decomposition (Golub-Reinsch) and the least-squares solvers built on it:
// CSVD, the object form for general m by n systems with re-thresholding, and
// CSVDSol, the light form for square systems.
#ifndef OSCILLA_LINALG_SVD_H
#define OSCILLA_LINALG_SVD_H

namespace oscilla {

class CSVD {
public:
    double **A;         // coefficient matrix, m by n, rows and columns from 0; not owned
    double *b;          // right-hand side of m values, null for all ones; not owned
    double thresh;      // the last threshold
    double **eigvecs;   // lmatr n by n from Eigen, owned
    double *eigvals;    // n values from Eigen, owned
    double cond;        // smallest over largest singular value
    double *work;       // copy of A, then U: data from index 1, row stride n
    double *V;          // right singular vectors: data from index 1, row stride n
    double *sing;       // singular values from index 1, in decomposition order
    double *sorted;     // singular values, descending
    double *rhs;        // working right-hand side, m values
    double *soln;       // solution, n values
    int m, n;
    int report;         // 1 when m*n >= 50000: callbacks run only then
    void (*onProgress)(int);
    void (*onStart)(void);
    void (*onEnd)(void);

    CSVD(double **A, int m, int n, double *b, double thresh, void (*onStart)(void),
         void (*onProgress)(int), void (*onEnd)(void));
    ~CSVD();

    double *Solve();
    double *Update(double thresh);
    void Eigen(double ***vectors, double **values);
    double GetCond();
    double *GetSingVal();
    double *GetSoln();

    void svd(double *a, double *u, double *v, double *s, int lda, int ldu, int ldv, int m, int n,
             int wantu, int wantv, int *ierr);
    void svbksb(double *u, double *s, double *v, int m, int n, double *b, double *x);
    void SortDscwIdx(int lo, int hi, double *values, int *index);
    void SortDscwMatr(int lo, int hi, double *values, double **rows);

    // Vector kernels of the decomposition over n elements; the sk forms step by sk.
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
};

class CSVDSol {
public:
    double cond;        // smallest over largest singular value of the last call
    double thresh;      // relative cut, 5e-12 after construction
    double *singvals;   // sorted singular values of the last call, owned
    int nsing;          // capacity of singvals

    CSVDSol();
    ~CSVDSol();

    int proc(double **A, double *b, int n);
    int inv(double **A, double *b, int n);
    void ProcSingVal(double *s, double thresh, int n);
    void setthresh(double t);
    double getcond();
    double *singval();

    void svd(double *a, double *u, double *v, double *s, int lda, int ldu, int ldv, int m, int n,
             int wantu, int wantv, int *ierr);
    void svbksb(double *u, double *s, double *v, int m, int n, double *b, double *x);
    void SortDscwIdx(int lo, int hi, double *values, int *index);

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

private:
    int solve(double **A, double *b, int n, int invert);
};

} // namespace oscilla

#endif
