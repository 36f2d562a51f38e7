// CSVD: least-squares solution of a general m by n system through the singular
// value decomposition, re-thresholded without decomposing again.
#include "oscilla/linalg/svd.h"

#include "linalg/svd_impl.h"
#include "oscilla/series/complex.h"

#include <cstdlib>
#include <vector>

namespace oscilla {

CSVD::CSVD(double **A_, int m_, int n_, double *b_, double thresh_, void (*onStart_)(void),
           void (*onProgress_)(int), void (*onEnd_)(void))
    : A(A_), b(b_), thresh(thresh_), eigvecs(nullptr), eigvals(nullptr), cond(0.0), work(nullptr),
      V(nullptr), sing(nullptr), sorted(nullptr), rhs(nullptr), soln(nullptr), m(m_), n(n_),
      report(0), onProgress(onProgress_), onStart(onStart_), onEnd(onEnd_)
{
    if (m <= 0 || n <= 0) return;
    const int mx = m > n ? m : n;
    report = (double)m * (double)n >= 50000.0 ? 1 : 0;
    work = (double *)std::calloc((size_t)(n + 1) * (size_t)(mx + 1) + 1, sizeof(double));
    V = (double *)std::calloc((size_t)(n + 1) * (size_t)(n + 1) + 1, sizeof(double));
    sing = (double *)std::calloc((size_t)n + 2, sizeof(double));
    sorted = (double *)std::calloc((size_t)n, sizeof(double));
    rhs = (double *)std::calloc((size_t)m, sizeof(double));
    soln = (double *)std::calloc((size_t)n, sizeof(double));
}

CSVD::~CSVD()
{
    std::free(work);
    std::free(V);
    std::free(sing);
    std::free(sorted);
    std::free(rhs);
    std::free(soln);
    std::free(eigvals);
    if (eigvecs) lmatrfree(eigvecs);
}

// Copies A and b into the work buffers and decomposes; 1 on success.
static int csvd_decompose(CSVD &o)
{
    for (int i = 0; i < o.m; i++) {
        detail::copyv(o.work + 1 + (size_t)i * o.n, o.A[i], o.n);
        o.rhs[i] = o.b ? o.b[i] : 1.0;
    }
    int ierr = 0;
    o.svd(o.work + 1, o.work + 1, o.V + 1, o.sing + 1, o.n, o.n, o.n, o.m, o.n, 1, 1, &ierr);
    return ierr == 0;
}

static bool csvd_buffers(const CSVD &o)
{
    return o.work && o.V && o.sing && o.sorted && o.rhs && o.soln && o.A && o.m > 0 && o.n > 0;
}

double *CSVD::Solve()
{
    if (!csvd_buffers(*this)) return nullptr;
    if (!csvd_decompose(*this)) return nullptr;
    return Update(thresh);
}

double *CSVD::Update(double t)
{
    thresh = t;
    if (!csvd_buffers(*this)) return nullptr;
    std::vector<double> s(sing + 1, sing + 1 + n);
    std::vector<int> index(n);
    cond = detail::svd_threshold(s.data(), sorted, index.data(), n, t);
    detail::svd_backsub(work + 1, s.data(), V + 1, m, n, rhs, soln);
    return soln;
}

void CSVD::Eigen(double ***vectors, double **values)
{
    *vectors = nullptr;
    *values = nullptr;
    if (!csvd_buffers(*this)) return;
    if (!csvd_decompose(*this)) return;
    double **vec = lmatr(n, n);
    double *val = (double *)std::calloc((size_t)n, sizeof(double));
    if (!vec || !val) {
        if (vec) lmatrfree(vec);
        std::free(val);
        return;
    }
    if (eigvecs) lmatrfree(eigvecs);
    std::free(eigvals);
    eigvecs = vec;
    eigvals = val;
    // Row i of the result is the right singular vector i: column i of V.
    for (int i = 0; i < n; i++) {
        for (int j = 0; j < n; j++) eigvecs[i][j] = V[1 + (size_t)j * n + i];
        eigvals[i] = sing[1 + i];
    }
    SortDscwMatr(0, n - 1, eigvals, eigvecs);
    *vectors = eigvecs;
    *values = eigvals;
}

double CSVD::GetCond() { return cond; }
double *CSVD::GetSingVal() { return sorted; }
double *CSVD::GetSoln() { return soln; }

void CSVD::svd(double *a, double *u, double *v, double *s, int lda, int ldu, int ldv, int m_,
               int n_, int wantu, int wantv, int *ierr)
{
    detail::SvdProgress pg = {report, onStart, onProgress, onEnd};
    detail::golub_reinsch(a, u, v, s, lda, ldu, ldv, m_, n_, wantu, wantv, ierr, &pg);
}

void CSVD::svbksb(double *u, double *s, double *v, int m_, int n_, double *b_, double *x)
{
    detail::svd_backsub(u, s, v, m_, n_, b_, x);
}

void CSVD::SortDscwIdx(int lo, int hi, double *values, int *index)
{
    detail::sort_desc_idx(lo, hi, values, index);
}

void CSVD::SortDscwMatr(int lo, int hi, double *values, double **rows)
{
    detail::sort_desc_rows(lo, hi, values, rows);
}

void CSVD::vaddkxv(double *y, const double *x, double k, const double *z, int n_) { detail::vaddkxv(y, x, k, z, n_); }
void CSVD::vaddkxvsk(double *y, const double *x, double k, const double *z, int n_, int sk) { detail::vaddkxvsk(y, x, k, z, n_, sk); }
double CSVD::dotprod(const double *x, const double *y, int n_) { return detail::dotprod(x, y, n_); }
void CSVD::vdivk(double *x, double k, int n_) { detail::vdivk(x, k, n_); }
void CSVD::vdivksk(double *x, double k, int n_, int sk) { detail::vdivksk(x, k, n_, sk); }
void CSVD::kxv(double *x, double k, int n_) { detail::kxv(x, k, n_); }
void CSVD::kxvsk(double *x, double k, int n_, int sk) { detail::kxvsk(x, k, n_, sk); }
double CSVD::sumvabs(const double *x, int n_) { return detail::sumvabs(x, n_); }
double CSVD::sumvabssk(const double *x, int n_, int sk) { return detail::sumvabssk(x, n_, sk); }
double CSVD::sumvsqr(const double *x, int n_) { return detail::sumvsqr(x, n_); }
double CSVD::sumvsqrsk(const double *x, int n_, int sk) { return detail::sumvsqrsk(x, n_, sk); }
void CSVD::zerov(double *x, int n_) { detail::zerov(x, n_); }
void CSVD::zerovsk(double *x, int n_, int sk) { detail::zerovsk(x, n_, sk); }
void CSVD::negvsk(double *x, int n_, int sk) { detail::negvsk(x, n_, sk); }
void CSVD::copyv(double *dst, const double *src, int n_) { detail::copyv(dst, src, n_); }
void CSVD::copym(double *dst, const double *src, int rows, int cols, int lddst, int ldsrc) { detail::copym(dst, src, rows, cols, lddst, ldsrc); }

} // namespace oscilla
