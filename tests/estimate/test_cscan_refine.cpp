// CScan: Neville interpolation, the natural spline and the Brent refinement,
// checked against closed forms and independent long-double solutions.
#include "oscilla/estimate/cscan.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <vector>

using oscilla::CScan;
using oscilla::XY;

namespace {

constexpr double eps = std::numeric_limits<double>::epsilon();
typedef long double ld;

// A record of n points from fn at the given x, with a rogue element behind it.
template <class F>
XY *make(const std::vector<double> &x, F fn)
{
    const int n = static_cast<int>(x.size());
    XY *p = static_cast<XY *>(std::calloc(static_cast<size_t>(n) + 2, sizeof(XY)));
    p[0].x = n;
    for (int i = 1; i <= n; i++) {
        p[i].x = x[i - 1];
        p[i].y = fn(x[i - 1]);
    }
    p[n + 1].x = 0.0;
    p[n + 1].y = 1e6;
    return p;
}

std::vector<double> grid(double lo, double dx, int n)
{
    std::vector<double> x(n);
    for (int i = 0; i < n; i++)
        x[i] = lo + i * dx;
    return x;
}

// Natural spline second derivatives from the moment equations, solved as a
// dense system by Gaussian elimination with partial pivoting in long double.
std::vector<ld> natural_moments(const std::vector<double> &x, const std::vector<double> &y)
{
    const int n = static_cast<int>(x.size());
    std::vector<ld> M(n, 0.0L);
    const int m = n - 2;
    if (m < 1)
        return M;
    std::vector<std::vector<ld>> A(m, std::vector<ld>(m + 1, 0.0L));
    for (int r = 0; r < m; r++) {
        const int i = r + 1;
        const ld h0 = static_cast<ld>(x[i]) - x[i - 1], h1 = static_cast<ld>(x[i + 1]) - x[i];
        if (r > 0)
            A[r][r - 1] = h0;
        A[r][r] = 2 * (h0 + h1);
        if (r < m - 1)
            A[r][r + 1] = h1;
        A[r][m] = 6 * ((static_cast<ld>(y[i + 1]) - y[i]) / h1 - (static_cast<ld>(y[i]) - y[i - 1]) / h0);
    }
    for (int c = 0; c < m; c++) {
        int piv = c;
        for (int r = c + 1; r < m; r++)
            if (std::fabs(A[r][c]) > std::fabs(A[piv][c]))
                piv = r;
        std::swap(A[c], A[piv]);
        for (int r = c + 1; r < m; r++) {
            const ld f = A[r][c] / A[c][c];
            for (int k = c; k <= m; k++)
                A[r][k] -= f * A[c][k];
        }
    }
    for (int r = m - 1; r >= 0; r--) {
        ld s = A[r][m];
        for (int k = r + 1; k < m; k++)
            s -= A[r][k] * M[k + 1];
        M[r + 1] = s / A[r][r];
    }
    return M;
}

// The spline in its moment form, S = piecewise cubic with S'' = M at the knots.
ld spline_at(const std::vector<double> &x, const std::vector<double> &y, const std::vector<ld> &M, ld t)
{
    const int n = static_cast<int>(x.size());
    t = std::fmin(std::fmax(t, static_cast<ld>(x[0])), static_cast<ld>(x[n - 1]));
    int k = 0;
    while (k < n - 2 && t > x[k + 1])
        k++;
    const ld h = static_cast<ld>(x[k + 1]) - x[k];
    const ld l = t - x[k], r = x[k + 1] - t;
    return (M[k] * r * r * r + M[k + 1] * l * l * l) / (6 * h) + (y[k] / h - M[k] * h / 6) * r +
           (y[k + 1] / h - M[k + 1] * h / 6) * l;
}

// The maximum in [a, b] of the cubic through four points: monomial
// coefficients from Newton's divided differences, then the root of the
// derivative with negative curvature.
ld cubic_peak(const ld *xs, const ld *ys)
{
    ld dd[4] = {ys[0], ys[1], ys[2], ys[3]};
    for (int j = 1; j < 4; j++)
        for (int i = 3; i >= j; i--)
            dd[i] = (dd[i] - dd[i - 1]) / (xs[i] - xs[i - j]);
    // p = dd0 + dd1 (t - x0) + dd2 (t - x0)(t - x1) + dd3 (t - x0)(t - x1)(t - x2)
    const ld c3 = dd[3];
    const ld c2 = dd[2] - dd[3] * (xs[0] + xs[1] + xs[2]);
    const ld c1 = dd[1] - dd[2] * (xs[0] + xs[1]) + dd[3] * (xs[0] * xs[1] + xs[0] * xs[2] + xs[1] * xs[2]);
    // p' = 3 c3 t^2 + 2 c2 t + c1
    const ld A = 3 * c3, B = 2 * c2, C = c1;
    const ld disc = std::sqrt(B * B - 4 * A * C);
    const ld r1 = (-B + disc) / (2 * A), r2 = (-B - disc) / (2 * A);
    return (6 * c3 * r1 + 2 * c2 < 0) ? r1 : r2;
}

} // namespace

TEST(CScanPolint, ReproducesPolynomials)
{
    CScan s;
    // A cubic through four uneven points is reproduced everywhere.
    double xa[5] = {0, -1.0, 0.3, 0.7, 2.0}, ya[5];
    auto cub = [](ld t) { return 0.5L - 1.25L * t + 0.75L * t * t - 0.4L * t * t * t; };
    for (int i = 1; i <= 4; i++)
        ya[i] = static_cast<double>(cub(xa[i]));
    for (double t = -1.5; t <= 2.5; t += 0.173) {
        const ld ref = cub(t);
        EXPECT_NEAR(s.polint(xa, ya, 4, t, 0), static_cast<double>(ref), 64 * eps * 4) << t;
    }

    // Longer than the fixed work arrays: degree 11 through 12 Chebyshev nodes,
    // against the Lagrange form in long double.
    const int n = 12;
    std::vector<double> X(n + 1), Y(n + 1);
    for (int i = 1; i <= n; i++) {
        X[i] = std::cos(3.141592653589793 * (2 * i - 1) / (2 * n));
        Y[i] = std::exp(X[i]) * std::sin(3 * X[i]);
    }
    for (double t = -0.95; t < 1.0; t += 0.21) {
        ld ref = 0;
        for (int i = 1; i <= n; i++) {
            ld l = Y[i];
            for (int j = 1; j <= n; j++)
                if (j != i)
                    l *= (t - static_cast<ld>(X[j])) / (static_cast<ld>(X[i]) - X[j]);
            ref += l;
        }
        EXPECT_NEAR(s.polint(X.data(), Y.data(), n, t, 0), static_cast<double>(ref), 1e3 * eps) << t;
    }
}

TEST(CScanPolint, EqualAbscissaeAndClampUseFourValues)
{
    CScan s;
    double xa[5] = {0, 1.0, 2.0, 2.0, 3.0}, ya[5] = {0, 1.0, 4.0, 2.0, 9.0};
    EXPECT_DOUBLE_EQ(s.polint(xa, ya, 4, 2.5, 0), 4.0); // mean of the four
    // Two points define a line, but the clamp range is that of ya[1..4].
    double xb[5] = {0, 0.0, 1.0, 7.0, 8.0}, yb[5] = {0, 0.0, 1.0, 5.0, -5.0};
    EXPECT_DOUBLE_EQ(s.polint(xb, yb, 2, 3.0, 1), 3.0);
    EXPECT_DOUBLE_EQ(s.polint(xb, yb, 2, 10.0, 1), 5.0);
    EXPECT_DOUBLE_EQ(s.polint(xb, yb, 2, -7.0, 1), -5.0);
    EXPECT_DOUBLE_EQ(s.polint(xb, yb, 2, 10.0, 0), 10.0);
}

TEST(CScanSpline, MatchesIndependentNaturalSpline)
{
    const std::vector<double> x = {-1.0, -0.62, -0.5, 0.0, 0.11, 0.7, 1.3, 1.35, 2.2, 3.0, 3.1, 4.5};
    std::vector<double> y(x.size());
    for (size_t i = 0; i < x.size(); i++)
        y[i] = std::sin(1.7 * x[i]) + 0.3 * x[i] * x[i] - 0.05 * std::cos(9 * x[i]);
    XY *r = make(x, [&](double t) {
        for (size_t i = 0; i < x.size(); i++)
            if (x[i] == t)
                return y[i];
        return 0.0;
    });
    CScan s;
    EXPECT_EQ(s.SplineEval(0.3), 0.0); // no coefficients yet
    s.SplineCoef(r);
    EXPECT_EQ(s.splineCount, 12);
    EXPECT_EQ(s.splineSeries, r);
    ASSERT_NE(s.splineY2, nullptr);
    EXPECT_EQ(s.splineY2[1], 0.0);
    EXPECT_EQ(s.splineY2[12], 0.0);

    const std::vector<ld> M = natural_moments(x, y);
    double scale = 0;
    for (ld m : M)
        scale = std::fmax(scale, static_cast<double>(std::fabs(m)));
    for (int i = 2; i < 12; i++)
        EXPECT_NEAR(s.splineY2[i], static_cast<double>(M[i - 1]), 64 * 12 * eps * scale) << i;
    double worst = 0;
    for (double t = -1.5; t <= 5.0; t += 0.0137) {
        const double err = std::fabs(s.SplineEval(t) - static_cast<double>(spline_at(x, y, M, t)));
        worst = std::fmax(worst, err);
    }
    EXPECT_LT(worst / (12 * eps * 4.0), 64.0);
    // Knots are interpolated and the ends are clamped.
    for (size_t i = 0; i < x.size(); i++)
        EXPECT_NEAR(s.SplineEval(x[i]), y[i], 8 * eps * 4.0);
    EXPECT_EQ(s.SplineEval(-100.0), y.front());
    EXPECT_EQ(s.SplineEval(100.0), y.back());
    std::free(r);
}

TEST(CScanSpline, LinesAreExactAndZeroWidthBracketsGiveZero)
{
    CScan s;
    XY *r = make({0.0, 0.5, 2.0, 2.25, 4.0}, [](double t) { return 3.0 - 2.0 * t; });
    s.SplineCoef(r);
    for (double t = 0.0; t <= 4.0; t += 0.1)
        EXPECT_NEAR(s.SplineEval(t), 3.0 - 2.0 * t, 32 * eps * 5) << t;
    std::free(r);

    XY *one = make({1.0}, [](double) { return 5.0; });
    s.SplineCoef(one);
    EXPECT_EQ(s.SplineEval(1.0), 0.0);
    std::free(one);
}

TEST(CScanRefine, PeakBetweenSamplesRecovered)
{
    // A cubic with its peak at x0 is exact for the four-point stencil; a
    // densely sampled cosine is near enough for both refinements.
    double worstPoly = 0, worstSpline = 0;
    for (int kind = 0; kind < 2; kind++) {
        for (double x0 = -0.9; x0 < 0.9; x0 += 0.0731) {
            const double dx = kind == 0 ? 0.1 : 0.02;
            const int n = static_cast<int>(std::lround(4.0 / dx)) + 1;
            XY *r = make(grid(-2.0, dx, n), [&](double t) {
                const double u = t - x0;
                return kind == 0 ? 3 - u * u + 0.1 * u * u * u : std::cos(2 * u);
            });
            CScan s;
            ASSERT_EQ(s.Maxima(r), 1);
            const int idx = s.GetIdx()[0];
            double x = 0, y = 0;
            EXPECT_EQ(s.RefineCtr(r, idx, y, x, 0, 1e-5, 0), 1);
            worstPoly = std::fmax(worstPoly, std::fabs(x - x0));
            EXPECT_NEAR(y, kind == 0 ? 3.0 : 1.0, kind == 0 ? 1e-9 : 1e-7);
            s.SplineCoef(r);
            EXPECT_EQ(s.RefineCtr(r, idx, y, x, 0, 1e-5, 1), 1);
            worstSpline = std::fmax(worstSpline, std::fabs(x - x0));
            std::free(r);
        }
    }
    EXPECT_LT(worstPoly, 1e-5);
    EXPECT_LT(worstSpline, 1e-5);

    // A minimum, through the public list.
    XY *v = make(grid(-2.0, 0.05, 81), [](double t) { return 1.0 + std::pow(t - 0.3123, 2); });
    CScan s;
    XY *m = s.GetMimina(v, 1);
    ASSERT_NE(m, nullptr);
    ASSERT_EQ(m[0].x, 1.0);
    EXPECT_NEAR(m[1].x, 0.3123, 1e-5);
    EXPECT_NEAR(m[1].y, 1.0, 1e-9);
    std::free(m);
    std::free(v);
}

TEST(CScanRefine, StencilFollowsTheHigherNeighbour)
{
    // Coarse cosine samples: the two candidate stencils give visibly different
    // cubics, and the refinement must land on the one the rule picks.
    const double dx = 0.3;
    for (double x0 : {0.07, -0.11, 0.13}) {
        const std::vector<double> xs = grid(-3.0, dx, 21);
        XY *r = make(xs, [&](double t) { return std::cos(2 * (t - x0)); });
        CScan s;
        ASSERT_EQ(s.Maxima(r), 1);
        const int idx = s.GetIdx()[0];
        const int first = r[idx - 1].y > r[idx + 1].y ? idx - 2 : idx - 1;
        ld px[4], py[4], qx[4], qy[4];
        const int other = first == idx - 2 ? idx - 1 : idx - 2;
        for (int k = 0; k < 4; k++) {
            px[k] = r[first + k].x;
            py[k] = r[first + k].y;
            qx[k] = r[other + k].x;
            qy[k] = r[other + k].y;
        }
        const ld want = cubic_peak(px, py), wrong = cubic_peak(qx, qy);
        ASSERT_GT(std::fabs(static_cast<double>(want - wrong)), 1e-4);
        double x = 0, y = 0;
        ASSERT_EQ(s.RefineCtr(r, idx, y, x, 0, 1e-5, 0), 1);
        EXPECT_NEAR(x, static_cast<double>(want), 1e-5) << x0;
        std::free(r);
    }
}

TEST(CScanRefine, LastInnerPointNeverReadsPastTheSeries)
{
    // Peak right of x[n-1]: the stencil isn't moved left by the rule, and the
    // element behind the last point holds y = 1e6 at x = 0.
    XY *r = make(grid(0.0, 1.0, 6), [](double t) { return 2.0 - (t - 4.3) * (t - 4.3); });
    CScan s;
    double x = 0, y = 0;
    ASSERT_EQ(s.RefineCtr(r, 5, y, x, 0, 1e-5, 0), 1);
    EXPECT_NEAR(x, 4.3, 1e-5);
    EXPECT_NEAR(y, 2.0, 1e-9);
    std::free(r);
    // Three points: the parabola through them.
    XY *t = make({0.0, 1.0, 2.0}, [](double u) { return 2.0 - (u - 1.2) * (u - 1.2); });
    ASSERT_EQ(s.RefineCtr(t, 2, y, x, 0, 1e-5, 0), 1);
    EXPECT_NEAR(x, 1.2, 1e-5);
    std::free(t);
}

TEST(CScanRefine, EndsOutOfRangeAndNoConvergence)
{
    XY *r = make(grid(0.0, 1.0, 7), [](double t) { return std::sin(t); });
    CScan s;
    double x = -7, y = -7;
    EXPECT_EQ(s.RefineCtr(r, 1, y, x, 0, 1e-5, 0), 0);
    EXPECT_EQ(x, 0.0);
    EXPECT_EQ(y, 0.0);
    EXPECT_EQ(s.RefineCtr(r, 7, y, x, 1, 1e-5, 1), 0);
    EXPECT_EQ(x, 6.0);
    EXPECT_EQ(y, std::sin(6.0));
    x = y = -7;
    EXPECT_EQ(s.RefineCtr(r, 0, y, x, 0, 1e-5, 0), 0);
    EXPECT_EQ(s.RefineCtr(r, 8, y, x, 0, 1e-5, 0), 0);
    // A negative tolerance can never be met: 200 iterations, then 0 with the
    // outputs untouched.
    EXPECT_EQ(s.RefineCtr(r, 2, y, x, 0, -1.0, 0), 0);
    EXPECT_EQ(s.RefineCtr(r, 2, y, x, 0, -1.0, 1), 0);
    EXPECT_EQ(x, -7.0);
    EXPECT_EQ(y, -7.0);
    std::free(r);
}

TEST(CScanBisec, FirstPointAtOrAbove)
{
    XY *r = make({1.0, 2.0, 2.0, 3.5, 7.0}, [](double) { return 0.0; });
    CScan s;
    EXPECT_EQ(s.BisecXY(r, -5.0), 1);
    EXPECT_EQ(s.BisecXY(r, 1.0), 1);
    EXPECT_EQ(s.BisecXY(r, 1.5), 2);
    EXPECT_EQ(s.BisecXY(r, 2.0), 2);
    EXPECT_EQ(s.BisecXY(r, 3.5), 4);
    EXPECT_EQ(s.BisecXY(r, 6.9), 5);
    EXPECT_EQ(s.BisecXY(r, 99.0), 5); // kept in 1..n
    std::free(r);
}
