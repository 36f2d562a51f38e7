// QR least squares: certified and constructed problems with exact answers,
// rank decisions, the scaled norm, the job digits of dqrsl, powi.
#include "oscilla/linalg/qr.h"
#include "la_util.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <numeric>

using namespace oscilla;
using namespace latest;

namespace {

// Column-order copy of a row-major matrix.
std::vector<double> colmajor(const Mat &a)
{
    const int m = static_cast<int>(a.size()), n = static_cast<int>(a[0].size());
    std::vector<double> c(static_cast<size_t>(m) * n);
    for (int i = 0; i < m; i++)
        for (int j = 0; j < n; j++)
            c[static_cast<size_t>(j) * m + i] = a[i][j];
    return c;
}

double norm2(const std::vector<double> &v)
{
    long double s = 0.0L;
    for (double x : v)
        s += static_cast<long double>(x) * x;
    return static_cast<double>(std::sqrt(s));
}

double distance(std::vector<double> u, const std::vector<double> &v)
{
    for (size_t i = 0; i < u.size(); i++)
        u[i] -= v[i];
    return norm2(u);
}

struct Solved {
    std::vector<double> x, resid;
    int rc;
};

Solved solve(const Mat &a, const std::vector<double> &b, int wantResid)
{
    CQR qr;
    std::vector<double> ca = colmajor(a);
    GVec gb(b), gx(std::vector<double>(a[0].size(), 99.0)), gr(std::vector<double>(a.size(), 99.0));
    const int rc = qr.qrsolve(ca.data(), static_cast<int>(a.size()), static_cast<int>(a[0].size()), gb.data(),
                              gx.data(), gr.data(), wantResid);
    EXPECT_TRUE(gb.guards_intact() && gx.guards_intact() && gr.guards_intact());
    return {gx.values(), gr.values(), rc};
}

} // namespace

TEST(QR, NistWampler1CertifiedCoefficients)
{
    // NIST StRD Wampler1: y = 1 + x + x^2 + x^3 + x^4 + x^5 at x = 0..20,
    // certified coefficients all exactly 1 and residual exactly 0. The data
    // follow from the definition, so they are generated here exactly.
    Mat a(21, std::vector<double>(6));
    for (int i = 0; i < 21; i++)
        for (int j = 0; j < 6; j++)
            a[i][j] = j ? a[i][j - 1] * i : 1.0;
    Solved s = solve(a, matvec(a, std::vector<double>(6, 1.0)), 1);
    ASSERT_EQ(s.rc, 1);
    double worst = 0.0;
    for (double c : s.x)
        worst = std::fmax(worst, std::fabs(c - 1.0));
    std::printf("  Wampler1: worst |b - 1| = %.3g (LRE %.1f digits), max |resid| = %.3g\n", worst,
                worst > 0 ? -std::log10(worst) : 16.0, norm1(s.resid));
    EXPECT_LT(worst, 1e-7); // the matrix has condition near 5e13
    for (double r : s.resid)
        EXPECT_LT(std::fabs(r), 1e-6);
}

TEST(QR, ConstructedProblemsWithExactSolutionAndResidual)
{
    // b = A x + r with A^T r = 0 exactly in integers: the least-squares
    // solution is x and the residual r, both exact. m runs over every
    // remainder of the unrolled BLAS loops.
    Rng rng(17);
    double worstX = 0.0, worstR = 0.0, worstQ = 0.0;
    for (int n : {1, 2, 3, 5, 8}) {
        for (int m = n; m <= n + 13; m++) {
            std::vector<double> r(m), x(n);
            for (double &v : r)
                v = rng.integer(-3, 3);
            if (m == n)
                std::fill(r.begin(), r.end(), 0.0);
            for (double &v : x)
                v = rng.integer(-9, 9);
            const double rr = std::inner_product(r.begin(), r.end(), r.begin(), 0.0);
            Mat a(m, std::vector<double>(n));
            for (int j = 0; j < n; j++) {
                std::vector<double> c(m);
                for (double &v : c)
                    v = rng.integer(-20, 20);
                double rc = std::inner_product(r.begin(), r.end(), c.begin(), 0.0);
                for (int i = 0; i < m; i++)
                    a[i][j] = (rr > 0 ? rr : 1.0) * c[i] - rc * r[i];
            }
            std::vector<double> b = matvec(a, x);
            for (int i = 0; i < m; i++)
                b[i] += r[i];
            Solved s = solve(a, b, 1);
            ASSERT_EQ(s.rc, 1);
            worstX = std::fmax(worstX, distance(s.x, x) / (norm2(x) * m * kEps));
            worstR = std::fmax(worstR, distance(s.resid, r) / (norm2(b) * m * kEps));
            // without the residual: x the same, resid = Q^T b, whose norm is
            // that of b and whose tail beyond n carries the residual norm
            Solved q = solve(a, b, 0);
            EXPECT_EQ(q.x, s.x);
            std::vector<double> tail(q.resid.begin() + n, q.resid.end());
            worstQ = std::fmax(worstQ, std::fabs(norm2(q.resid) - norm2(b)) / (norm2(b) * m * kEps));
            worstQ = std::fmax(worstQ, std::fabs(norm2(tail) - norm2(r)) / (norm2(b) * m * kEps));
        }
    }
    std::printf("  ||x - x*||/(m ||x*|| eps) = %.3g, ||r - r*||/(m ||b|| eps) = %.3g, Q^T b norms %.3g\n",
                worstX, worstR, worstQ);
    EXPECT_LT(worstX, 30.0);
    EXPECT_LT(worstR, 30.0);
    EXPECT_LT(worstQ, 30.0);
}

TEST(QR, RankDecisions)
{
    Rng rng(4);
    const int m = 12;
    Mat base = random_matrix(m, 3, rng);
    // columns 0 1 2 1 (one repeat) and 0 1 2 1 1 (two repeats)
    for (int repeats : {1, 2}) {
        const int n = 3 + repeats;
        Mat a(m, std::vector<double>(n));
        for (int i = 0; i < m; i++)
            for (int j = 0; j < n; j++)
                a[i][j] = base[i][j < 3 ? j : 1];
        std::vector<double> b = matvec(base, {1.0, 2.0, -1.0});

        std::vector<double> ca = colmajor(a), qraux(n), work(n);
        std::vector<int> jpvt(n);
        int lda = m, mm = m, nn = n, kr = -1;
        CQR().dqrank(ca.data(), &lda, &mm, &nn, 1e-15, &kr, jpvt.data(), qraux.data(), work.data());
        EXPECT_EQ(kr, n - repeats);

        Solved s = solve(a, b, 1);
        int zeros = 0;
        double sum = 0.0;
        for (int j : {1, 3, 4}) {
            if (j >= n)
                continue;
            zeros += s.x[j] == 0.0;
            sum += s.x[j];
        }
        EXPECT_EQ(zeros, repeats); // the dropped copies get exactly 0
        EXPECT_NEAR(sum, 2.0, 1e-13);
        EXPECT_NEAR(s.x[0], 1.0, 1e-13);
        EXPECT_NEAR(s.x[2], -1.0, 1e-13);
    }

    // all-zero matrix: rank 0, x zero, success
    Solved z = solve(Mat(4, std::vector<double>(3, 0.0)), {1.0, 2.0, 3.0, 4.0}, 1);
    EXPECT_EQ(z.rc, 1);
    EXPECT_EQ(z.x, std::vector<double>(3, 0.0));

    // fewer rows than columns: rank at most m, and the basic solution fits
    Mat w = random_matrix(3, 6, rng);
    std::vector<double> bw = {1.0, -2.0, 0.5};
    Solved u = solve(w, bw, 1);
    EXPECT_EQ(std::count(u.x.begin(), u.x.end(), 0.0), 3);
    EXPECT_LT(solve_ratio(w, u.x, bw), 30.0);

    // Columns c and c + 1e-13 d: relative gap 1e-13. At unit scale tol is
    // 1e-15 and both columns stay; scaled by 1e-3 the tolerance is divided by
    // the matrix scale, becomes 1e-12 and the second column is dropped.
    Mat c = random_matrix(10, 2, rng);
    for (auto &row : c)
        row[1] = row[0] + 1e-13 * rng.uniform();
    const std::vector<double> ones(10, 1.0);
    Solved s1 = solve(c, ones, 0);
    EXPECT_NE(s1.x[0] * s1.x[1], 0.0);
    for (auto &row : c)
        for (double &v : row)
            v *= 1e-3;
    Solved s2 = solve(c, ones, 0);
    EXPECT_EQ(s2.x[0] * s2.x[1], 0.0);
}

TEST(QR, ScaledNormAvoidsOverflowAndUnderflow)
{
    // R(1,1) of a single column is minus its signed norm: dnrm2 through all of
    // its phases.
    const std::vector<std::vector<double>> cols = {
        {1e200, -3e200, 2e199},           {1e-200, 4e-201, -2e-200, 0.0}, {0.0, 0.0, 3e-170, 1.0, 2e160},
        {0.0, 1e-20, 1e-300, 5.0, 7e-11}, {3.0, 4.0},                     {1e-11, 2e19, 1.0, -4e19}};
    for (const auto &c : cols) {
        std::vector<double> x = c, qraux(1), work(1);
        int jpvt = 0, m = static_cast<int>(c.size());
        CQR().dqrdc(x.data(), m, &m, 1, qraux.data(), &jpvt, work.data(), 0);
        const double ref = norm2(c); // long double holds the squares
        EXPECT_NEAR(std::fabs(x[0]), ref, 4 * m * kEps * ref) << c[0];
        // the sign is opposite to that of the leading element, minus for a zero one
        EXPECT_EQ(x[0] < 0.0, c[0] >= 0.0);
    }
}

TEST(QR, SolveJobDigits)
{
    Rng rng(2);
    const int m = 9, n = 4;
    Mat a = random_matrix(m, n, rng);
    std::vector<double> ca = colmajor(a), qraux(n), work(n), y(m);
    for (double &v : y)
        v = rng.uniform();
    std::vector<int> jpvt(n, 0);
    CQR qr;
    int k = n, info = -1, mm = m;
    qr.dqrdc(ca.data(), m, &mm, n, qraux.data(), jpvt.data(), work.data(), 1);
    std::vector<double> qy(m), qty(m), b(n), rsd(m), xb(m), back(m);
    qr.dqrsl(ca.data(), m, &mm, &k, qraux.data(), y.data(), qy.data(), qty.data(), b.data(), rsd.data(), xb.data(),
             11111, &info);
    EXPECT_EQ(info, 0);
    qr.dqrsl(ca.data(), m, &mm, &k, qraux.data(), qy.data(), nullptr, back.data(), nullptr, nullptr, nullptr, 1000,
             &info);
    Mat ap(m, std::vector<double>(n)); // A with its columns in pivot order
    for (int i = 0; i < m; i++)
        for (int j = 0; j < n; j++)
            ap[i][j] = a[i][jpvt[j] - 1];
    std::vector<double> axb = matvec(ap, b);
    for (int i = 0; i < m; i++) {
        EXPECT_NEAR(back[i], y[i], 16 * kEps);      // Q^T Q y = y
        EXPECT_NEAR(xb[i] + rsd[i], y[i], 16 * kEps); // projection plus residual
        EXPECT_NEAR(axb[i], xb[i], 64 * kEps);        // b solves the projected system
    }
    EXPECT_NEAR(norm2(qy), norm2(y), 16 * kEps);
}

TEST(QR, Powi)
{
    const struct {
        double x;
        int n;
        double want;
    } cases[] = {{2.0, 10, 1024.0}, {2.0, -3, 0.125}, {-3.0, 3, -27.0},    {1.5, 7, 17.0859375}, {7.0, 0, 1.0},
                 {0.0, 0, 0.0},     {0.0, -2, 0.0},   {-1.0, INT_MIN, 1.0}, {2.0, INT_MIN, 0.0}};
    for (const auto &c : cases)
        EXPECT_EQ(CQR().powi(c.x, c.n), c.want) << c.x << "^" << c.n;
}
