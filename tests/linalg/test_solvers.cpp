// Direct solvers: residual and inverse ratios over every route, the
// orientation of the LINPACK families, and the edge cases of each routine.
#include "oscilla/linalg/solvers.h"
#include "linalg/linpack.h"
#include "la_util.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <numeric>

using namespace oscilla;
using namespace latest;

namespace {

using SolveFn = int (*)(double **, double *, int);

// What a route solves and what it leaves in a.
enum Kind { Plain, Transposed, Symmetric };
struct Route {
    const char *name;
    SolveFn fn;
    Kind kind;
    bool inverts; // a holds the inverse afterwards (lower triangle for Symmetric)
};

const Route kRoutes[] = {
    {"gauss", gauss, Plain, false},
    {"gaussj", gaussj, Plain, true},
    {"luproc", luproc, Plain, false},
    {"luinv", luinv, Plain, false},
    {"gefaproc", gefaproc, Transposed, false},
    {"gecoproc", gecoproc, Transposed, false},
    {"gefainv", gefainv, Transposed, true},
    {"gecoinv", gecoinv, Transposed, true},
    {"ifaproc", ifaproc, Symmetric, false},
    {"icoproc", static_cast<SolveFn>(icoproc), Symmetric, false},
    {"ifainv", ifainv, Symmetric, true},
    {"icoinv", icoinv, Symmetric, true},
};

const int kSizes[] = {1, 2, 3, 4, 5, 7, 10, 16, 33};

// Test matrices of a route: general ones are random and graded (rows scaled
// over eight decades, columns over four); symmetric ones are random, with a tiny
// diagonal and with a zero diagonal, which force 2 by 2 pivots and exchanges.
std::vector<Mat> matrices_for(Kind kind, int n, Rng &rng)
{
    std::vector<Mat> out;
    if (kind == Symmetric) {
        out.push_back(random_symmetric(n, rng));
        out.push_back(random_symmetric(n, rng, 1e-3));
        if (n > 1)
            out.push_back(random_symmetric(n, rng, 0.0));
        return out;
    }
    out.push_back(random_matrix(n, n, rng));
    Mat g = random_matrix(n, n, rng);
    for (int i = 0; i < n; i++)
        for (int j = 0; j < n; j++)
            g[i][j] *= std::pow(10.0, 8.0 * i / n) * std::pow(10.0, -4.0 * j / n);
    out.push_back(g);
    return out;
}

// Symmetric routes must not read or write above the diagonal: fill it with NaN.
Mat poison_upper(Mat a)
{
    for (size_t i = 0; i < a.size(); i++)
        for (size_t j = i + 1; j < a.size(); j++)
            a[i][j] = std::nan("");
    return a;
}

// 1 / (||A||_1 ||inverse(A)||_1), the inverse by Gauss-Jordan
double true_rcond(const Mat &a)
{
    Guarded gi(a);
    std::vector<double> b(a.size(), 1.0);
    EXPECT_EQ(gaussj(gi.p(), b.data(), static_cast<int>(a.size())), 1);
    return 1.0 / (norm1(a) * norm1(gi.values()));
}

} // namespace

TEST(SolverRoutes, ResidualAndInverseRatios)
{
    Rng rng(11);
    for (const Route &r : kRoutes) {
        double worstSolve = 0.0, worstInv = 0.0;
        int swap1 = 0, block = 0, swap2 = 0;
        for (int n : kSizes) {
            for (const Mat &a : matrices_for(r.kind, n, rng)) {
                std::vector<double> b(n);
                for (double &v : b)
                    v = rng.uniform();
                Guarded ga(r.kind == Symmetric ? poison_upper(a) : a);
                GVec gb(b);
                ASSERT_EQ(r.fn(ga.p(), gb.data(), n), 1) << r.name << " n=" << n;
                ASSERT_TRUE(ga.guards_intact() && gb.guards_intact()) << r.name;
                const Mat &sys = r.kind == Transposed ? transpose(a) : a;
                worstSolve = std::max(worstSolve, solve_ratio(sys, gb.values(), b));
                Mat inv = ga.values();
                for (int i = 0; r.kind == Symmetric && i < n; i++)
                    for (int j = i + 1; j < n; j++) {
                        ASSERT_TRUE(std::isnan(inv[i][j])) << r.name << " wrote above the diagonal";
                        inv[i][j] = inv[j][i];
                    }
                if (r.inverts)
                    worstInv = std::max(worstInv, inverse_ratio(a, inv));
                if (r.kind != Symmetric)
                    continue;
                // count 1 by 1 exchanges and 2 by 2 blocks with and without one
                // (both entries of a block hold minus its first index unless exchanged)
                Guarded gf(a);
                std::vector<int> kpvt(n);
                detail::ifa(gf.p(), n, kpvt.data());
                for (int k = 1; k <= n; k++) {
                    const int p = kpvt[k - 1];
                    swap1 += p > 0 && p != k;
                    block += p < 0 && (-p == k || -p == k - 1);
                    swap2 += p < 0 && -p != k && -p != k - 1;
                }
            }
        }
        // the ratios prove the symmetric pivoting only if every kind of pivot ran
        if (r.kind == Symmetric)
            std::printf("  %-9s pivots: %d exchanges, %d blocks, %d exchanged blocks\n", r.name, swap1, block, swap2);
        EXPECT_TRUE(r.kind != Symmetric || (swap1 > 10 && block > 10 && swap2 > 10)) << r.name;
        std::printf("  %-9s worst ||Ax-b||/(||A|| ||x|| eps) = %.3g, ||AX-I||/(n ||A|| ||X|| eps) = %.3g\n", r.name,
                    worstSolve, worstInv);
        EXPECT_LT(worstSolve, 30.0) << r.name;
        EXPECT_LT(worstInv, 30.0) << r.name;
    }
}

TEST(SolverRoutes, SingularMatricesReportZero)
{
    Rng rng(5);
    for (const Route &r : kRoutes) {
        for (int n : {1, 2, 5}) {
            // a zero row (and, for the symmetric routes, the matching column)
            Mat a = r.kind == Symmetric ? random_symmetric(n, rng) : random_matrix(n, n, rng);
            for (int j = 0; j < n; j++) {
                a[n / 2][j] = 0.0;
                if (r.kind == Symmetric)
                    a[j][n / 2] = 0.0;
            }
            Guarded ga(a);
            std::vector<double> b(n, 1.0);
            EXPECT_EQ(r.fn(ga.p(), b.data(), n), 0) << r.name << " n=" << n;
            EXPECT_TRUE(ga.guards_intact());
        }
    }
}

TEST(Linpack, ConditionEstimatesBoundTheTrueValue)
{
    // LINPACK's estimate of norm(inverse) is a lower bound, so the estimated
    // rcond is at or above the true one; in practice within a small factor.
    Rng rng(3);
    for (int n : {2, 4, 8, 16}) {
        auto bounds = [n](double est, double truth) {
            EXPECT_GE(est, truth * (1 - 1e-12)) << n;
            EXPECT_LE(est, 20 * truth) << n;
        };
        const Mat a = random_matrix(n, n, rng);
        std::vector<double> b(n, 1.0);
        // the ge family factors transpose(A): 1-norms of the transposes
        double truth = true_rcond(transpose(a));
        Guarded ga(a);
        ASSERT_EQ(gecoproc(ga.p(), b.data(), n), 1);
        bounds(lastFigure, truth);

        const Mat s = random_symmetric(n, rng, 1e-2);
        Guarded gs(s);
        truth = true_rcond(s);
        double rc = -1.0;
        ASSERT_EQ(icoproc(gs.p(), b.data(), n), 1); // the copy form leaves the matrix
        EXPECT_EQ(gs.values(), s);
        ASSERT_EQ(icoproc(gs.p(), b.data(), n, &rc), 1); // the in-place form does not
        EXPECT_TRUE(n == 2 || gs.values() != s); // a lone 2 by 2 block needs no elimination
        EXPECT_EQ(rc, lastFigure);
        bounds(rc, truth);
    }
    Guarded z(Mat{{1.0, 2.0}, {2.0, 4.0}});
    double b[2] = {1.0, 1.0};
    EXPECT_EQ(gecoproc(z.p(), b, 2), 0);
    EXPECT_EQ(lastFigure, 0.0);
}

TEST(Lu, LuprocDeterminantAgainstPermutationExpansion)
{
    Rng rng(21);
    for (int n = 1; n <= 6; n++) {
        const Mat a = random_matrix(n, n, rng);
        std::vector<int> p(n);
        std::iota(p.begin(), p.end(), 0);
        long double ref = 0.0L; // Leibniz formula
        do {
            long double t = 1.0L;
            int inv = 0;
            for (int i = 0; i < n; i++) {
                t *= a[i][p[i]];
                for (int j = i + 1; j < n; j++)
                    inv += p[i] > p[j];
            }
            ref += inv % 2 ? -t : t;
        } while (std::next_permutation(p.begin(), p.end()));
        Guarded g(a);
        std::vector<double> b(n, 1.0);
        ASSERT_EQ(luproc(g.p(), b.data(), n), 1);
        EXPECT_NEAR(lastFigure, static_cast<double>(ref), 50.0 * n * kEps * std::pow(norm1(a), n)) << n;
    }
}

TEST(Lu, LuinvOverwritesColumnByColumn)
{
    // Worked by hand: factors of [[1,2],[3,4]] after the row exchange are
    // [[3,4],[1/3,2/3]]. Column 0 comes from intact factors: (-2, 1.5). With it
    // written into column 0, e_1 solves to (-5, -2.25) instead of (1, -0.5).
    Guarded a(Mat{{1.0, 2.0}, {3.0, 4.0}});
    GVec b({5.0, 11.0});
    ASSERT_EQ(luinv(a.p(), b.data(), 2), 1);
    const double want[2][2] = {{-2.0, -5.0}, {1.5, -2.25}};
    for (int i = 0; i < 2; i++) {
        EXPECT_NEAR(b[i], i + 1.0, 8 * kEps);
        for (int j = 0; j < 2; j++)
            EXPECT_NEAR(a.at(i, j), want[i][j], (j ? 32 : 8) * kEps);
    }
    EXPECT_TRUE(a.guards_intact() && b.guards_intact());
    double one[1] = {-8.0}, *a1[1] = {one}; // order 1: the true inverse
    ASSERT_EQ(luinv(a1, nullptr, 1), 1);
    EXPECT_EQ(one[0], -0.125);
}

TEST(Lu, PivotingAndZeroPivots)
{
    // gauss cures a zero first pivot by an exchange
    Guarded g(Mat{{0.0, 2.0, 1.0}, {1.0, 1.0, 0.0}, {2.0, 0.0, 1.0}});
    GVec gb({7.0, 3.0, 5.0});
    ASSERT_EQ(gauss(g.p(), gb.data(), 3), 1);
    EXPECT_EQ(gb.values(), (std::vector<double>{1.0, 2.0, 3.0}));
    // equal scaled candidates: the later row is taken
    Guarded t(Mat{{1.0, 0.0}, {1.0, 0.5}});
    int indx[2] = {-1, -1}, d = 0;
    ASSERT_EQ(ludcmp(t.p(), 2, indx, &d), 1);
    EXPECT_EQ(indx[0], 1);
    EXPECT_EQ(d, -1);
    // a zero pivot is reported, not replaced by a tiny number
    Guarded z(Mat{{1.0, 1.0}, {1.0, 1.0}});
    EXPECT_EQ(ludcmp(z.p(), 2, indx, &d), 0);
    // lubksb skips leading zeros of b and still solves
    const Mat fm = {{2.0, 1.0, 1.0}, {4.0, 3.0, 3.0}, {8.0, 7.0, 9.0}};
    Guarded f(fm);
    int ix[3];
    ASSERT_EQ(ludcmp(f.p(), 3, ix, &d), 1);
    GVec b({0.0, 0.0, 2.0});
    lubksb(f.p(), b.data(), 3, ix);
    EXPECT_LT(solve_ratio(fm, b.values(), {0.0, 0.0, 2.0}), 30.0);
}
