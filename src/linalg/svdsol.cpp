// CSVDSol: solution and pseudo-inverse of a square system through the singular
// value decomposition, in one call.
#include "oscilla/linalg/svd.h"

#include "linalg/svd_impl.h"

#include <cstdlib>
#include <vector>

namespace oscilla {

CSVDSol::CSVDSol() : cond(0.0), thresh(5e-12), singvals(nullptr), nsing(0) {}

CSVDSol::~CSVDSol() { std::free(singvals); }

void CSVDSol::setthresh(double t) { thresh = t; }
double CSVDSol::getcond() { return cond; }
double *CSVDSol::singval() { return singvals; }

void CSVDSol::ProcSingVal(double *s, double t, int n)
{
    if (n <= 0) return;
    // Grown rather than overrun when a later call brings a larger n.
    if (!singvals || n > nsing) {
        double *p = (double *)std::realloc(singvals, (size_t)n * sizeof(double));
        if (p) {
            singvals = p;
            nsing = n;
        }
    }
    std::vector<int> index(n);
    if (singvals && n <= nsing) {
        cond = detail::svd_threshold(s, singvals, index.data(), n, t);
    } else {
        std::vector<double> tmp(n);
        cond = detail::svd_threshold(s, tmp.data(), index.data(), n, t);
    }
}

int CSVDSol::solve(double **A, double *b, int n, int invert)
{
    if (n <= 0 || !A) return 0;
    const size_t nn = (size_t)n * (size_t)n;
    // One block: copy of A, V, then right-hand side, solution and singular values.
    double *blk = (double *)std::malloc((2 * nn + 3 * (size_t)n) * sizeof(double));
    if (!blk) return -1;
    double *a = blk, *v = blk + nn, *r = v + nn, *x = r + n, *s = x + n;
    for (int i = 0; i < n; i++) detail::copyv(a + (size_t)i * n, A[i], n);
    int ierr = 0;
    svd(a, a, v, s, n, n, n, n, n, 1, 1, &ierr);
    if (ierr != 0) {
        std::free(blk);
        return 0;
    }
    ProcSingVal(s, thresh, n);
    if (b) {
        detail::copyv(r, b, n);
        detail::svd_backsub(a, s, v, n, n, r, x);
        detail::copyv(b, x, n);
    }
    if (invert) {
        for (int k = 0; k < n; k++) {
            detail::zerov(r, n);
            r[k] = 1.0;
            detail::svd_backsub(a, s, v, n, n, r, x);
            for (int i = 0; i < n; i++) A[i][k] = x[i];
        }
    }
    std::free(blk);
    return 1;
}

int CSVDSol::proc(double **A, double *b, int n) { return b ? solve(A, b, n, 0) : 0; }

int CSVDSol::inv(double **A, double *b, int n) { return solve(A, b, n, 1); }

void CSVDSol::svd(double *a, double *u, double *v, double *s, int lda, int ldu, int ldv, int m,
                  int n, int wantu, int wantv, int *ierr)
{
    detail::golub_reinsch(a, u, v, s, lda, ldu, ldv, m, n, wantu, wantv, ierr, nullptr);
}

void CSVDSol::svbksb(double *u, double *s, double *v, int m, int n, double *b, double *x)
{
    detail::svd_backsub(u, s, v, m, n, b, x);
}

void CSVDSol::SortDscwIdx(int lo, int hi, double *values, int *index)
{
    detail::sort_desc_idx(lo, hi, values, index);
}

void CSVDSol::vaddkxv(double *y, const double *x, double k, const double *z, int n) { detail::vaddkxv(y, x, k, z, n); }
void CSVDSol::vaddkxvsk(double *y, const double *x, double k, const double *z, int n, int sk) { detail::vaddkxvsk(y, x, k, z, n, sk); }
double CSVDSol::dotprod(const double *x, const double *y, int n) { return detail::dotprod(x, y, n); }
void CSVDSol::vdivk(double *x, double k, int n) { detail::vdivk(x, k, n); }
void CSVDSol::vdivksk(double *x, double k, int n, int sk) { detail::vdivksk(x, k, n, sk); }
void CSVDSol::kxv(double *x, double k, int n) { detail::kxv(x, k, n); }
void CSVDSol::kxvsk(double *x, double k, int n, int sk) { detail::kxvsk(x, k, n, sk); }
double CSVDSol::sumvabs(const double *x, int n) { return detail::sumvabs(x, n); }
double CSVDSol::sumvabssk(const double *x, int n, int sk) { return detail::sumvabssk(x, n, sk); }
double CSVDSol::sumvsqr(const double *x, int n) { return detail::sumvsqr(x, n); }
double CSVDSol::sumvsqrsk(const double *x, int n, int sk) { return detail::sumvsqrsk(x, n, sk); }
void CSVDSol::zerov(double *x, int n) { detail::zerov(x, n); }
void CSVDSol::zerovsk(double *x, int n, int sk) { detail::zerovsk(x, n, sk); }
void CSVDSol::negvsk(double *x, int n, int sk) { detail::negvsk(x, n, sk); }
void CSVDSol::copyv(double *dst, const double *src, int n) { detail::copyv(dst, src, n); }
void CSVDSol::copym(double *dst, const double *src, int rows, int cols, int lddst, int ldsrc) { detail::copym(dst, src, rows, cols, lddst, ldsrc); }

} // namespace oscilla
