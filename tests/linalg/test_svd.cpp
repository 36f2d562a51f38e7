// Singular value decomposition: LAPACK-style reconstruction and orthogonality ratios,
// known spectra, least-squares solutions with exact answers, thresholds and callbacks.
#include "oscilla/linalg/svd.h"
#include "oscilla/series/complex.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdio>
#include <random>
#include <vector>

using namespace oscilla;

namespace {

const double eps = DBL_EPSILON;
using Mat = std::vector<double>; // row-major

struct Rng {
    std::mt19937 g;
    explicit Rng(unsigned s) : g(s) {}
    double operator()() { return std::uniform_real_distribution<double>(-1.0, 1.0)(g); }
};

Mat random_matrix(int m, int n, Rng &r)
{
    Mat a((size_t)m * n);
    for (double &x : a) x = r();
    return a;
}

// Random orthogonal n by n as a product of three Householder reflections.
Mat random_orthogonal(int n, Rng &r)
{
    Mat q((size_t)n * n, 0.0);
    for (int i = 0; i < n; i++) q[(size_t)i * n + i] = 1.0;
    for (int rep = 0; rep < 3; rep++) {
        std::vector<double> w(n);
        long double ww = 0;
        for (double &x : w) { x = r(); ww += (long double)x * x; }
        for (int i = 0; i < n; i++) { // q = q (I - 2 w w^T / ww)
            long double d = 0;
            for (int k = 0; k < n; k++) d += (long double)q[(size_t)i * n + k] * w[k];
            for (int k = 0; k < n; k++) q[(size_t)i * n + k] -= (double)(2 * d * w[k] / ww);
        }
    }
    return q;
}

// A = Q1[:, :p] diag(sigma) Q2[:, :p]^T with p = sigma.size().
Mat with_spectrum(int m, int n, const std::vector<double> &sigma, const Mat &q1, const Mat &q2)
{
    Mat a((size_t)m * n);
    for (int i = 0; i < m; i++)
        for (int j = 0; j < n; j++) {
            long double s = 0;
            for (size_t k = 0; k < sigma.size(); k++)
                s += (long double)q1[(size_t)i * m + k] * sigma[k] * q2[(size_t)j * n + k];
            a[(size_t)i * n + j] = (double)s;
        }
    return a;
}

// A built with a known spectrum from two random orthogonal factors.
struct Spectral {
    Mat q1, q2, a;
    Spectral(int m, int n, const std::vector<double> &sigma, Rng &r)
        : q1(random_orthogonal(m, r)), q2(random_orthogonal(n, r)), a(with_spectrum(m, n, sigma, q1, q2)) {}
};

// A x for row-major A of m rows.
std::vector<double> times(const Mat &a, int m, const std::vector<double> &x)
{
    std::vector<double> y(m, 0.0);
    for (int i = 0; i < m; i++)
        for (size_t j = 0; j < x.size(); j++) y[i] += a[i * x.size() + j] * x[j];
    return y;
}

double norm1(const Mat &a, int m, int n)
{
    double best = 0;
    for (int j = 0; j < n; j++) {
        double s = 0;
        for (int i = 0; i < m; i++) s += std::fabs(a[(size_t)i * n + j]);
        best = std::max(best, s);
    }
    return best;
}

struct Decomp {
    Mat u, v;
    std::vector<double> s;
    int ierr = -1;
};

const double GUARD = -777.25;

// Runs the decomposition with guard cells in front of and behind every output array.
Decomp decompose(const Mat &a, int m, int n)
{
    CSVDSol sol;
    std::vector<double> u((size_t)m * n + 2, GUARD), v((size_t)n * n + 2, GUARD), s(n + 2, GUARD);
    Decomp d;
    sol.svd(const_cast<double *>(a.data()), u.data() + 1, v.data() + 1, s.data() + 1, n, n, n, m,
            n, 1, 1, &d.ierr);
    for (const auto *g : {&u, &v, &s}) EXPECT_TRUE(g->front() == GUARD && g->back() == GUARD);
    d.u.assign(u.begin() + 1, u.end() - 1);
    d.v.assign(v.begin() + 1, v.end() - 1);
    d.s.assign(s.begin() + 1, s.end() - 1);
    return d;
}

// ||A - U S V^T||_1 / (max(m,n) ||A||_1 eps)
double reconstruction_ratio(const Mat &a, const Decomp &d, int m, int n)
{
    Mat r((size_t)m * n);
    for (int i = 0; i < m; i++)
        for (int j = 0; j < n; j++) {
            long double s = 0;
            for (int k = 0; k < n; k++)
                s += (long double)d.u[(size_t)i * n + k] * d.s[k] * d.v[(size_t)j * n + k];
            r[(size_t)i * n + j] = (double)(a[(size_t)i * n + j] - s);
        }
    double an = norm1(a, m, n);
    return norm1(r, m, n) / (std::max(m, n) * (an > 0 ? an : 1.0) * eps);
}

// ||Q^T Q - I||_1 / (rows eps) over the columns flagged in use.
double orthogonality_ratio(const Mat &q, int rows, int cols, const std::vector<bool> &use)
{
    double worst = 0;
    for (int j = 0; j < cols; j++) {
        if (!use[j]) continue;
        double colsum = 0;
        for (int k = 0; k < cols; k++) {
            if (!use[k]) continue;
            long double s = 0;
            for (int i = 0; i < rows; i++)
                s += (long double)q[(size_t)i * cols + j] * q[(size_t)i * cols + k];
            colsum += std::fabs((double)s - (j == k ? 1.0 : 0.0));
        }
        worst = std::max(worst, colsum);
    }
    return worst / (rows * eps);
}

// Owns a row-pointer copy of a row-major matrix.
struct Rows {
    double **p;
    Rows(const Mat &a, int m, int n) : p(lmatr(m, n))
    {
        for (int i = 0; i < m; i++)
            for (int j = 0; j < n; j++) p[i][j] = a[(size_t)i * n + j];
    }
    ~Rows() { lmatrfree(p); }
};

// x = Q2[:, :k] diag(1/sigma) Q1[:, :k]^T b, the solution keeping the k largest values.
std::vector<double> truncated_solution(const std::vector<double> &sigma, int k, const Spectral &sp, int m,
                                       int n, const std::vector<double> &b)
{
    std::vector<double> x(n, 0.0);
    for (int t = 0; t < k; t++) {
        long double c = 0;
        for (int i = 0; i < m; i++) c += (long double)sp.q1[(size_t)i * m + t] * b[i];
        for (int j = 0; j < n; j++) x[j] += (double)(c / sigma[t] * sp.q2[(size_t)j * n + t]);
    }
    return x;
}

double rel_err(const double *x, const std::vector<double> &ref)
{
    double e = 0, nr = 0;
    for (size_t i = 0; i < ref.size(); i++) {
        e = std::max(e, std::fabs(x[i] - ref[i]));
        nr = std::max(nr, std::fabs(ref[i]));
    }
    return e / nr;
}

std::vector<double> unit(int n, int k)
{
    std::vector<double> e(n, 0.0);
    e[k] = 1.0;
    return e;
}

std::vector<int> g_events; // -1 start, -2 end, percentages otherwise
void on_start() { g_events.push_back(-1); }
void on_progress(int p) { g_events.push_back(p); }
void on_end() { g_events.push_back(-2); }

} // namespace

TEST(Svd, ReconstructionAndOrthogonality)
{
    Rng r(11);
    struct Case { int m, n; const char *kind; };
    const Case cases[] = {{10, 10, "random"}, {40, 15, "random"}, {15, 40, "random"},
                          {1, 7, "random"},   {7, 1, "random"},   {30, 30, "graded"},
                          {25, 12, "graded"}, {30, 20, "rank5"},  {20, 30, "rank5"},
                          {12, 12, "rank1"}};
    double worst[3] = {0, 0, 0}; // reconstruction, U and V orthogonality
    for (const Case &c : cases) {
        Mat a = random_matrix(c.m, c.n, r);
        std::string kind = c.kind;
        if (kind == "graded") // rows scaled over twelve decades
            for (int i = 0; i < c.m; i++)
                for (int j = 0; j < c.n; j++) a[(size_t)i * c.n + j] *= std::pow(10.0, -12.0 * i / (c.m - 1));
        if (kind.rfind("rank", 0) == 0) {
            int k = std::atoi(kind.c_str() + 4);
            Mat x = random_matrix(c.m, k, r), y = random_matrix(k, c.n, r);
            for (int i = 0; i < c.m; i++)
                for (int j = 0; j < c.n; j++) {
                    double s = 0;
                    for (int t = 0; t < k; t++) s += x[(size_t)i * k + t] * y[(size_t)t * c.n + j];
                    a[(size_t)i * c.n + j] = s;
                }
        }
        Decomp d = decompose(a, c.m, c.n);
        ASSERT_EQ(d.ierr, 0) << c.m << "x" << c.n << " " << c.kind;
        double smax = *std::max_element(d.s.begin(), d.s.end());
        std::vector<bool> allv(c.n, true), useu(c.n);
        for (int j = 0; j < c.n; j++) {
            EXPECT_GE(d.s[j], 0.0);
            // Left vectors of (numerically) zero singular values carry no information.
            useu[j] = d.s[j] > smax * 1e-10;
        }
        const double ratio[3] = {reconstruction_ratio(a, d, c.m, c.n), orthogonality_ratio(d.u, c.m, c.n, useu),
                                 orthogonality_ratio(d.v, c.n, c.n, allv)};
        for (int t = 0; t < 3; t++) {
            EXPECT_LT(ratio[t], 30.0) << c.m << "x" << c.n << " " << c.kind << " ratio " << t;
            worst[t] = std::max(worst[t], ratio[t]);
        }
    }
    std::printf("[ svd ratios ] reconstruction %.3f  U orthogonality %.3f  V orthogonality %.3f\n",
                worst[0], worst[1], worst[2]);
}

TEST(Svd, KnownSpectrumZeroAndNonFinite)
{
    Rng r(5);
    const int m = 18, n = 9;
    std::vector<double> sigma = {1e3, 400, 50, 7, 1, 0.3, 1e-2, 1e-5, 1e-9};
    Decomp d = decompose(Spectral(m, n, sigma, r).a, m, n);
    ASSERT_EQ(d.ierr, 0);
    std::sort(d.s.rbegin(), d.s.rend());
    double worst = 0;
    for (int i = 0; i < n; i++) worst = std::max(worst, std::fabs(d.s[i] - sigma[i]) / (n * sigma[0] * eps));
    EXPECT_LT(worst, 10.0);
    std::printf("[ svd ratios ] singular values |s - sigma| / (n sigma_max eps) %.3f\n", worst);

    d = decompose(Mat(12, 0.0), 4, 3);
    EXPECT_EQ(d.ierr, 0);
    EXPECT_EQ(d.s, std::vector<double>(3, 0.0));
    // A NaN never passes the negligibility tests: the last value fails after 30 sweeps.
    Mat a = random_matrix(4, 3, r);
    a[4] = std::nan("");
    EXPECT_EQ(decompose(a, 4, 3).ierr, 3);
}

TEST(CSVD, ThresholdModes)
{
    Rng r(21);
    const int m = 9, n = 5;
    // The quarter-point cut of this spectrum is 0.1, which drops only 0.01.
    std::vector<double> sigma = {100, 10, 1, 0.2, 0.01};
    Spectral sp(m, n, sigma, r);
    Rows A(sp.a, m, n);
    std::vector<double> b(m);
    for (double &x : b) x = r();
    CSVD svd(A.p, m, n, b.data(), -1.0, nullptr, nullptr, nullptr);
    ASSERT_NE(svd.Solve(), nullptr);
    EXPECT_NEAR(svd.GetCond(), 1e-4, 1e-4 * 1e-9);
    for (int i = 0; i < n; i++) EXPECT_NEAR(svd.GetSingVal()[i], sigma[i], 1e3 * sigma[0] * eps);

    struct Mode { double thresh; int kept; };
    const Mode modes[] = {{-1, 1}, {-3, 3}, {-3.9, 3}, {-5, 5}, {-12, 5}, {0.05, 2},
                          {0.005, 3}, {0.0, 4},  {1e-6, 5}};
    for (const Mode &md : modes) {
        double *x = svd.Update(md.thresh);
        ASSERT_NE(x, nullptr);
        // Error amplification of the kept part is bounded by sigma_1 / sigma_kept.
        double bound = 100 * n * eps * sigma[0] / sigma[md.kept - 1];
        EXPECT_LT(rel_err(x, truncated_solution(sigma, md.kept, sp, m, n, b)), bound) << "thresh " << md.thresh;
        EXPECT_EQ(svd.thresh, md.thresh);
    }
}

TEST(CSVD, ExactLeastSquaresAndNullRhs)
{
    Rng r(8);
    const int m = 30, n = 6;
    Mat a = random_matrix(m, n, r);
    for (int i = 0; i < m; i++) a[(size_t)i * n + n - 1] = 1.0; // last column of ones
    std::vector<double> xt = {3, -1, 0.5, 2, -4, 1}, b = times(a, m, xt);
    Rows A(a, m, n);
    CSVD svd(A.p, m, n, b.data(), 1e-12, nullptr, nullptr, nullptr);
    double *x = svd.Solve();
    ASSERT_NE(x, nullptr);
    double cond = svd.GetCond(), ratio = rel_err(x, xt) * cond / (n * eps);
    EXPECT_LT(ratio, 30.0);
    std::printf("[ svd ratios ] CSVD least squares ||x - x*|| cond / (n eps) %.3f\n", ratio);

    // Null b: a column of ones, solved exactly by e_n.
    CSVD ones(A.p, m, n, nullptr, 1e-12, nullptr, nullptr, nullptr);
    x = ones.Solve();
    ASSERT_NE(x, nullptr);
    EXPECT_LT(rel_err(x, unit(n, n - 1)), 100 * eps / cond);

    // Solving again reads the changed contents of A and b.
    for (int i = 0; i < m; i++) b[i] = A.p[i][0] *= 2.0;
    x = svd.Solve();
    ASSERT_NE(x, nullptr);
    EXPECT_LT(rel_err(x, unit(n, 0)), 100 * eps / svd.GetCond());
}

TEST(CSVD, UnderdeterminedGivesMinimumNorm)
{
    Rng r(13);
    const int m = 4, n = 7;
    std::vector<double> sigma = {5, 2, 1, 0.5}, b = {1, -2, 0.5, 3};
    Spectral sp(m, n, sigma, r);
    Rows A(sp.a, m, n);
    CSVD svd(A.p, m, n, b.data(), 1e-10, nullptr, nullptr, nullptr);
    double *x = svd.Solve();
    ASSERT_NE(x, nullptr);
    EXPECT_LT(rel_err(x, truncated_solution(sigma, m, sp, m, n, b)), 100 * n * eps * 10);
    for (int i = m; i < n; i++) EXPECT_LT(svd.GetSingVal()[i], 10 * n * eps * sigma[0]);
}

TEST(CSVD, ZeroAndEqualSpectra)
{
    const int m = 6, n = 4;
    Rows Z(Mat((size_t)m * n, 0.0), m, n);
    std::vector<double> b(m, 1.0);
    for (double t : {0.0, 1e-3, -2.0}) {
        CSVD svd(Z.p, m, n, b.data(), t, nullptr, nullptr, nullptr);
        double *x = svd.Solve();
        ASSERT_NE(x, nullptr);
        EXPECT_EQ(svd.GetCond(), 1e-100);
        EXPECT_EQ(std::vector<double>(x, x + n), std::vector<double>(n, 0.0));
    }
    // 3 times a signed permutation: all values exactly equal, the quarter-point cut
    // equals them and drops none.
    Mat a = {0, 3, 0, 0, 0, 0, 0, -3, 3, 0, 0, 0, 0, 0, 3, 0};
    Rows A(a, n, n);
    CSVD svd(A.p, n, n, b.data(), 0.0, nullptr, nullptr, nullptr);
    ASSERT_NE(svd.Solve(), nullptr);
    std::vector<double> ax = times(a, n, std::vector<double>(svd.GetSoln(), svd.GetSoln() + n));
    EXPECT_LT(rel_err(ax.data(), std::vector<double>(n, 1.0)), 50 * eps);
}

TEST(CSVD, EigenGivesSortedRightVectors)
{
    Rng r(17);
    const int m = 12, n = 5;
    std::vector<double> sigma = {9, 4, 2.5, 1, 0.125};
    Spectral sp(m, n, sigma, r);
    Rows A(sp.a, m, n);
    CSVD svd(A.p, m, n, nullptr, 0.0, nullptr, nullptr, nullptr);
    double **vec = nullptr;
    double *val = nullptr;
    svd.Eigen(&vec, &val);
    ASSERT_TRUE(vec && val);
    for (int i = 0; i < n; i++) {
        EXPECT_NEAR(val[i], sigma[i], 100 * eps * sigma[0]);
        // Row i is +-(column i of Q2).
        double dot = 0;
        for (int j = 0; j < n; j++) dot += vec[i][j] * sp.q2[(size_t)j * n + i];
        EXPECT_NEAR(std::fabs(dot), 1.0, 1e3 * eps);
    }
    svd.Eigen(&vec, &val); // a second call replaces the first results
    EXPECT_NEAR(val[0], sigma[0], 100 * eps * sigma[0]);
}

TEST(CSVD, ProgressAndFailure)
{
    Rng r(4);
    const int m = 250, n = 200; // exactly 50000 elements
    Mat a = random_matrix(m, n, r);
    Rows A(a, m, n);
    g_events.clear();
    CSVD svd(A.p, m, n, nullptr, 1e-10, on_start, on_progress, on_end);
    EXPECT_EQ(svd.report, 1);
    ASSERT_NE(svd.Solve(), nullptr);
    const int mn = std::min(m, n), T = 2 * n + mn;
    std::vector<int> expect = {-1};
    for (int i = 1; i <= n; i++) expect.push_back(i * 100 / T);
    for (int i = mn; i >= 1; i--) expect.push_back((n + 1 + mn - i) * 100 / T);
    for (int k = n; k >= 1; k--) expect.push_back((T + 1 - k) * 100 / T);
    expect.push_back(-2);
    EXPECT_EQ(g_events, expect);
    EXPECT_EQ(g_events[g_events.size() - 2], 100);

    // One row fewer stays below the limit: no callbacks at all.
    g_events.clear();
    CSVD quiet(A.p, m - 1, n, nullptr, 1e-10, on_start, on_progress, on_end);
    EXPECT_EQ(quiet.report, 0);
    ASSERT_NE(quiet.Solve(), nullptr);
    EXPECT_TRUE(g_events.empty());

    // A failed decomposition reports null, still ends, and Eigen gives nulls.
    A.p[0][7] = std::nan("");
    g_events.clear();
    CSVD bad(A.p, m, n, nullptr, 1e-10, on_start, nullptr, on_end);
    EXPECT_EQ(bad.Solve(), nullptr);
    EXPECT_EQ(g_events, (std::vector<int>{-1, -2}));
    double **vec = reinterpret_cast<double **>(&bad);
    double *val = &bad.cond;
    bad.Eigen(&vec, &val);
    EXPECT_EQ(vec, nullptr);
    EXPECT_EQ(val, nullptr);
}

TEST(CSVDSol, ProcInvAndPseudoInverse)
{
    // Integer system with an exact integer solution.
    const int n = 6;
    Rng r(31);
    Mat a((size_t)n * n);
    for (double &x : a) x = std::round(9 * r());
    for (int i = 0; i < n; i++) a[(size_t)i * n + i] += 20;
    const std::vector<double> xt = {1, -2, 3, 0, 5, -7};
    std::vector<double> b = times(a, n, xt);
    Rows A(a, n, n);
    CSVDSol sol;
    EXPECT_EQ(sol.thresh, 5e-12);
    ASSERT_EQ(sol.proc(A.p, b.data(), n), 1);
    const double ratio = rel_err(b.data(), xt) * sol.getcond() / (n * eps);
    EXPECT_LT(ratio, 30.0);
    std::printf("[ svd ratios ] CSVDSol::proc ||x - x*|| cond / (n eps) %.3f\n", ratio);
    for (int i = 0; i < n; i++) // A stays
        EXPECT_EQ(std::vector<double>(A.p[i], A.p[i] + n), std::vector<double>(a.begin() + i * n, a.begin() + (i + 1) * n));
    for (int i = 1; i < n; i++) EXPECT_GE(sol.singval()[i - 1], sol.singval()[i]);

    // inv: A * inv(A) = I, and b solved as well.
    b = times(a, n, xt);
    ASSERT_EQ(sol.inv(A.p, b.data(), n), 1);
    EXPECT_LT(rel_err(b.data(), xt) * sol.getcond() / (n * eps), 30.0);
    double worst = 0;
    for (int i = 0; i < n; i++)
        for (int k = 0; k < n; k++) {
            long double s = 0;
            for (int j = 0; j < n; j++) s += (long double)a[(size_t)i * n + j] * A.p[j][k];
            worst = std::max(worst, std::fabs((double)s - (i == k ? 1.0 : 0.0)));
        }
    EXPECT_LT(worst * sol.getcond() / (n * eps), 30.0);
    std::printf("[ svd ratios ] CSVDSol ||A inv(A) - I|| cond / (n eps) %.3f\n", worst * sol.getcond() / (n * eps));

    // Rank one: the pseudo-inverse of [[1,2],[2,4]] is its transpose over 25.
    Mat s = {1, 2, 2, 4};
    Rows S(s, 2, 2);
    CSVDSol sol2;
    ASSERT_EQ(sol2.inv(S.p, nullptr, 2), 1);
    EXPECT_LT(sol2.getcond(), 1e-15);
    for (int i = 0; i < 2; i++)
        for (int j = 0; j < 2; j++) EXPECT_NEAR(S.p[i][j], s[(size_t)j * 2 + i] / 25.0, 10 * eps);
}

TEST(CSVDSol, FailureAndProcSingVal)
{
    Rows A(Mat{1, 2, std::nan(""), 4}, 2, 2);
    std::vector<double> b = {1, 1};
    CSVDSol sol;
    sol.cond = 0.5;
    EXPECT_EQ(sol.proc(A.p, b.data(), 2), 0);
    EXPECT_EQ(sol.getcond(), 0.5); // a failed decomposition leaves cond as it was
    EXPECT_EQ(b[0], 1.0);

    double s[4] = {2, 8, 1, 4};
    sol.ProcSingVal(s, -2, 4);
    EXPECT_EQ(std::vector<double>(s, s + 4), (std::vector<double>{0, 8, 0, 4}));
    EXPECT_EQ(sol.getcond(), 1.0 / 8.0);
    EXPECT_EQ(std::vector<double>(sol.singval(), sol.singval() + 4), (std::vector<double>{8, 4, 2, 1}));
}

TEST(CSVD, DescendingSortsCarryCompanions)
{
    CSVD svd(nullptr, 0, 0, nullptr, 0, nullptr, nullptr, nullptr);
    EXPECT_EQ(svd.Solve(), nullptr);
    const double orig[9] = {3, 1, 4, 1, 5, 9, 2, 6, 5};
    double v[9];
    int idx[9];
    for (int i = 0; i < 9; i++) v[i] = orig[idx[i] = i];
    svd.SortDscwIdx(0, 8, v, idx);
    for (int i = 0; i < 9; i++) EXPECT_EQ(orig[idx[i]], v[i]);
    for (int i = 1; i < 9; i++) EXPECT_GE(v[i - 1], v[i]);
    double w[4] = {1, 4, 2, 3};
    double r0[1], r1[1], r2[1], r3[1];
    double *rows[4] = {r0, r1, r2, r3};
    svd.SortDscwMatr(0, 3, w, rows);
    EXPECT_EQ(std::vector<double *>(rows, rows + 4), (std::vector<double *>{r1, r3, r2, r0}));
}
