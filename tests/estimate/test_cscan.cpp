// CScan: scan rules, interpolation and refinement against independent
// solutions, and the peak lists with their cuts.
#include "oscilla/estimate/cscan.h"
#include "oscilla/series/cxy.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>
#include <vector>

using namespace oscilla;
typedef long double ld;
typedef std::vector<double> V;

namespace {

constexpr double eps = std::numeric_limits<double>::epsilon();

struct FreeDel {
    void operator()(XY *p) const { std::free(p); }
};
typedef std::unique_ptr<XY, FreeDel> Rec;

// A record with x = 1..n unless given, and a rogue element behind the last
// point (spectrum records keep metadata there).
Rec rec(const V &y, const V &x = {}, const V &w = {})
{
    const int n = static_cast<int>(y.size());
    XY *p = static_cast<XY *>(std::calloc(static_cast<size_t>(n) + 2, sizeof(XY)));
    p[0].x = n;
    for (int i = 1; i <= n; i++) {
        p[i].x = x.empty() ? i : x[i - 1];
        p[i].y = y[i - 1];
        p[i].w = w.empty() ? 0.0 : w[i - 1];
    }
    p[n + 1].x = 0.0;
    p[n + 1].y = p[n + 1].w = 1e6;
    return Rec(p);
}

template <class F>
Rec sampled(double lo, double dx, int n, F fn)
{
    V x(n), y(n);
    for (int i = 0; i < n; i++) {
        x[i] = lo + i * dx;
        y[i] = fn(x[i]);
    }
    return rec(y, x);
}

V col(const XY *p, double XY::*f)
{
    V v;
    for (int i = 1; p && i <= static_cast<int>(p[0].x); i++)
        v.push_back(p[i].*f);
    return v;
}

// A column of a returned record, which is freed.
V take(XY *p, double XY::*f) { return col(Rec(p).get(), f); }

// The tracked extreme: {x, y, index}.
V tracked(const CScan &s, bool max)
{
    double x, y;
    int i;
    max ? s.GetMax(x, y, i) : s.GetMin(x, y, i);
    return {x, y, (double)i};
}

std::vector<int> idx(const CScan &s, int c) { return std::vector<int>(s.listIdx, s.listIdx + c); }
std::vector<int> sgn(const CScan &s, int c) { return std::vector<int>(s.listSgn, s.listSgn + c); }

// Natural-spline second derivatives from the moment equations
// h0 M[i-1] + 2 (h0 + h1) M[i] + h1 M[i+1] = 6 (slope differences), solved as a
// dense system by Gaussian elimination in long double.
std::vector<ld> natural_moments(const V &x, const V &y)
{
    const int n = static_cast<int>(x.size()), m = n - 2;
    std::vector<ld> M(n, 0.0L);
    std::vector<std::vector<ld>> A(m, std::vector<ld>(m + 1, 0.0L));
    for (int r = 0; r < m; r++) {
        const ld h0 = (ld)x[r + 1] - x[r], h1 = (ld)x[r + 2] - x[r + 1];
        if (r > 0)
            A[r][r - 1] = h0;
        A[r][r] = 2 * (h0 + h1);
        if (r < m - 1)
            A[r][r + 1] = h1;
        A[r][m] = 6 * (((ld)y[r + 2] - y[r + 1]) / h1 - ((ld)y[r + 1] - y[r]) / h0);
    }
    for (int c = 0; c < m; c++)
        for (int r = c + 1; r < m; r++) {
            const ld f = A[r][c] / A[c][c];
            for (int k = c; k <= m; k++)
                A[r][k] -= f * A[c][k];
        }
    for (int r = m - 1; r >= 0; r--) {
        ld s = A[r][m];
        for (int k = r + 1; k < m; k++)
            s -= A[r][k] * M[k + 1];
        M[r + 1] = s / A[r][r];
    }
    return M;
}

// The spline in its moment form on [x[k], x[k+1]].
ld moment_spline(const V &x, const V &y, const std::vector<ld> &M, ld t)
{
    const int n = static_cast<int>(x.size());
    t = std::fmin(std::fmax(t, (ld)x[0]), (ld)x[n - 1]);
    int k = 0;
    while (k < n - 2 && t > x[k + 1])
        k++;
    const ld h = (ld)x[k + 1] - x[k], l = t - x[k], r = x[k + 1] - t;
    return (M[k] * r * r * r + M[k + 1] * l * l * l) / (6 * h) + (y[k] / h - M[k] * h / 6) * r +
           (y[k + 1] / h - M[k + 1] * h / 6) * l;
}

// The local maximum of the cubic through four points: Newton divided
// differences to monomial form, then the root of p' with p'' < 0.
ld cubic_peak(const ld *xs, const ld *ys)
{
    ld d[4] = {ys[0], ys[1], ys[2], ys[3]};
    for (int j = 1; j < 4; j++)
        for (int i = 3; i >= j; i--)
            d[i] = (d[i] - d[i - 1]) / (xs[i] - xs[i - j]);
    const ld c3 = d[3], c2 = d[2] - d[3] * (xs[0] + xs[1] + xs[2]);
    const ld c1 = d[1] - d[2] * (xs[0] + xs[1]) + d[3] * (xs[0] * xs[1] + xs[0] * xs[2] + xs[1] * xs[2]);
    const ld disc = std::sqrt(4 * c2 * c2 - 12 * c3 * c1);
    const ld r1 = (-2 * c2 + disc) / (6 * c3), r2 = (-2 * c2 - disc) / (6 * c3);
    return 6 * c3 * r1 + 2 * c2 < 0 ? r1 : r2;
}

// Maxima at 3 (y 3), 8 (y 4), 11 (y 5), minima at 5 and 10, unit spacing: the
// maxima have list widths 4, 5 and 2.
const V PEAKS = {0, 1, 3, 2, 0, 1, 2, 4, 3.5, 3, 5, 1};

} // namespace

TEST(CScanScan, TiesShelvesAndTracking)
{
    CScan s;
    // Flat top at its first sample, flat bottom at its last.
    Rec a = rec({0, 2, 2, 1, 1, 3, 0});
    ASSERT_EQ(s.Extrema(a.get()), 3);
    EXPECT_EQ(idx(s, 3), (std::vector<int>{2, 5, 6}));
    EXPECT_EQ(sgn(s, 3), (std::vector<int>{1, 0, 1}));
    // A step up over a shelf: maximum at the shelf's start, minimum at its end.
    Rec b = rec({0, 1, 1, 1, 2, 3});
    ASSERT_EQ(s.Extrema(b.get()), 2);
    EXPECT_EQ(idx(s, 2), (std::vector<int>{2, 4}));
    // Maxima lists one kind but tracks both.
    EXPECT_EQ(s.Maxima(a.get()), 2);
    EXPECT_EQ(tracked(s, false), (V{5, 1, 5}));
    // Equal values: the first stays.
    Rec c = rec({0, 5, 1, 5, 1, 5, 0}, {10, 20, 30, 40, 50, 60, 70});
    EXPECT_EQ(s.Minima(c.get()), 2);
    EXPECT_EQ(tracked(s, true), (V{20, 5, 2}));
    EXPECT_EQ(tracked(s, false), (V{30, 1, 3}));
    // Each pass starts over from the sentinels.
    Rec d = rec({0, 1, 2, 1});
    EXPECT_EQ(s.Extrema(d.get()), 1);
    EXPECT_EQ(tracked(s, false)[1], 1e300);
    // Short, monotonic, constant: nothing; the ends never count.
    for (const V &v : {V{1, 0}, V{1, 2, 3, 4}, V{2, 2, 2, 2}, V{9, 1, 9}}) {
        Rec r = rec(v);
        EXPECT_EQ(s.Extrema(r.get()), v.size() == 3 ? 1 : 0);
    }
}

TEST(CScanScan, AbsoluteAndClipped)
{
    CScan s;
    Rec a = rec({0, -3, 1, 2, -1, 0});
    ASSERT_EQ(s.MaximaAbs(a.get()), 2);
    EXPECT_EQ(idx(s, 2), (std::vector<int>{2, 4}));
    EXPECT_EQ(s.GetY()[0], 3.0); // |y| is listed
    const V y = {-1, 2, -3, 1, -0.5, 4, -2};
    Rec r = rec(y);
    ASSERT_EQ(s.MaximaGTZero(r.get()), 3); // 0 2 0 1 0 4 -2
    EXPECT_EQ(idx(s, 3), (std::vector<int>{2, 4, 6}));
    ASSERT_EQ(s.MinimaLTZero(r.get()), 2); // -1 0 -3 0 -0.5 0 -2
    EXPECT_EQ(idx(s, 2), (std::vector<int>{3, 5}));
    EXPECT_EQ(col(r.get(), &XY::y), y); // restored
    // The last point isn't clipped: clipped, 0 0 would end the rise at point 3
    // and make it a tracked maximum.
    Rec t = rec({-2, -1, 0.5, 3});
    EXPECT_EQ(s.MinimaLTZero(t.get()), 0);
    EXPECT_EQ(tracked(s, true)[1], -1e300);
}

TEST(CScanScan, ZeroCrossings)
{
    CScan s;
    Rec base = rec({0, 3, 1, 4, 0});
    ASSERT_EQ(s.Extrema(base.get()), 3);
    // Zero is not positive; the point before the change is recorded as it is.
    Rec r = rec({1, 0, -1, 0, 2, 2, -3}, {0.5, 1.5, 2.5, 3.5, 4.5, 5.5, 6.5});
    ASSERT_EQ(s.Zero(r.get()), 3);
    EXPECT_EQ(idx(s, 3), (std::vector<int>{1, 4, 6}));
    EXPECT_EQ(sgn(s, 3), (std::vector<int>{1, 0, 1}));
    EXPECT_EQ(s.GetX()[1], 3.5);
    EXPECT_EQ(s.ZeroDecr(r.get()), 2);
    EXPECT_EQ(idx(s, 2), (std::vector<int>{1, 6}));
    EXPECT_EQ(s.ZeroIncr(r.get()), 1);
    EXPECT_EQ(s.GetIdx()[0], 4);
    // count and the tracking fields stay those of the extrema scan.
    EXPECT_EQ(s.GetCnt(), 3);
    EXPECT_EQ(tracked(s, true)[2], 4);
    Rec one = rec({-1});
    EXPECT_EQ(s.Zero(one.get()), 0);
}

TEST(CScanScan, AreaAndMoments)
{
    CScan s;
    const V x = {0.0, 0.3, 1.1, 1.2, 2.5, 3.0, 4.7};
    V y;
    for (double t : x)
        y.push_back(std::sin(2 * t) - 0.2);
    Rec r = rec(y, x);
    ld trap = 0, trapAbs = 0;
    for (size_t i = 0; i + 1 < x.size(); i++) {
        trap += ((ld)x[i + 1] - x[i]) * ((ld)y[i] + y[i + 1]) / 2;
        trapAbs += ((ld)x[i + 1] - x[i]) * (std::fabs((ld)y[i]) + std::fabs((ld)y[i + 1])) / 2;
    }
    EXPECT_NEAR(s.Area(r.get()), (double)trap, 64 * eps);
    EXPECT_NEAR(s.AreaAbs(r.get()), (double)trapAbs, 64 * eps);

    Rec ones = rec(V(9, 1.0), {0, 1, 2, 3, 4, 5, 6, 7, 8});
    double area, c;
    s.Moments(ones.get(), -5, 100, area, c);
    EXPECT_DOUBLE_EQ(area, 8.0);
    EXPECT_DOUBLE_EQ(c, 4.0);
    s.Moments(ones.get(), 2, 3, area, c); // inner points keep their full widths
    EXPECT_DOUBLE_EQ(area, 2.0);
    EXPECT_DOUBLE_EQ(c, 1.5);
    Rec anti = rec({1, -1}, {0, 1});
    s.Moments(anti.get(), 1, 2, area, c); // zero area: the raw moment stays
    EXPECT_DOUBLE_EQ(c, -0.5);

    Rec m(s.MovingMoment(ones.get(), 0, 1));
    EXPECT_EQ(col(m.get(), &XY::y), (V{1.5, 2.5, 3, 3, 3, 3, 3, 2.5, 1.5}));
    EXPECT_EQ(col(m.get(), &XY::w), V(9, 1.0));
    Rec cm(s.MovingMoment(ones.get(), 1, 2147483647));
    EXPECT_DOUBLE_EQ(cm.get()[5].y, 4.0);
}

TEST(CScanInterp, PolintIsTheSeriesInterpolant)
{
    // The accuracy of the shared routine is tested with the series; here only that
    // the scan passes its arguments through, clamp flag included.
    CScan s;
    double xa[5] = {0, -1.0, 0.3, 0.7, 2.0}, ya[5] = {0, 0.5, -2, 1.25, 3};
    for (double t : {-3.0, 0.1, 0.5, 5.0})
        for (int limit : {0, 1})
            EXPECT_EQ(s.polint(xa, ya, 4, t, limit), CXY::polint(xa, ya, 4, t, limit)) << t << " " << limit;
}

TEST(CScanInterp, SplineMatchesIndependentSolve)
{
    const V x = {-1.0, -0.62, -0.5, 0.0, 0.11, 0.7, 1.3, 1.35, 2.2, 3.0, 3.1, 4.5};
    V y;
    for (double t : x)
        y.push_back(std::sin(1.7 * t) + 0.3 * t * t - 0.05 * std::cos(9 * t));
    Rec r = rec(y, x);
    CScan s;
    EXPECT_EQ(s.SplineEval(0.3), 0.0); // no coefficients yet
    s.SplineCoef(r.get());
    EXPECT_EQ(s.splineCount, 12);
    EXPECT_EQ(s.splineSeries, r.get());
    const std::vector<ld> M = natural_moments(x, y);
    double scale = 0, worst = 0;
    for (ld m : M)
        scale = std::fmax(scale, std::fabs((double)m));
    for (int i = 1; i <= 12; i++)
        EXPECT_NEAR(s.splineY2[i], (double)M[i - 1], 64 * 12 * eps * scale) << i;
    for (double t = -1.5; t <= 5.0; t += 0.0137)
        worst = std::fmax(worst, std::fabs(s.SplineEval(t) - (double)moment_spline(x, y, M, t)));
    EXPECT_LT(worst, 64 * 12 * eps * 4.0);
    EXPECT_EQ(s.SplineEval(-100.0), y.front()); // clamped
    EXPECT_EQ(s.SplineEval(100.0), y.back());
    // Lines are exact; a bracket of zero width gives 0.
    Rec line = sampled(0.0, 0.37, 9, [](double t) { return 3.0 - 2.0 * t; });
    s.SplineCoef(line.get());
    for (double t = 0.0; t <= 3.0; t += 0.1)
        EXPECT_NEAR(s.SplineEval(t), 3.0 - 2.0 * t, 64 * eps) << t;
    Rec dup = rec({1, 2, 3}, {0, 1, 1});
    s.SplineCoef(dup.get());
    EXPECT_EQ(s.SplineEval(1.0), 0.0);
}

TEST(CScanRefine, PeakBetweenSamplesRecovered)
{
    // A cubic peaking at x0 is exact for the four-point stencil; a densely
    // sampled cosine is close enough for both interpolants.
    double worst[2] = {0, 0};
    for (int kind = 0; kind < 2; kind++)
        for (double x0 = -0.9; x0 < 0.9; x0 += 0.0731) {
            Rec r = sampled(-2.0, kind ? 0.02 : 0.1, kind ? 201 : 41, [&](double t) {
                const double u = t - x0;
                return kind ? std::cos(2 * u) : 3 - u * u + 0.1 * u * u * u;
            });
            CScan s;
            ASSERT_EQ(s.Maxima(r.get()), 1);
            const int p = s.GetIdx()[0];
            s.SplineCoef(r.get());
            for (int spline = 0; spline < 2; spline++) {
                double x = 0, y = 0;
                EXPECT_EQ(s.RefineCtr(r.get(), p, y, x, 0, 1e-5, spline), 1);
                worst[spline] = std::fmax(worst[spline], std::fabs(x - x0));
                EXPECT_NEAR(y, kind ? 1.0 : 3.0, 1e-7);
            }
        }
    EXPECT_LT(worst[0], 1e-5);
    EXPECT_LT(worst[1], 1e-5);
    // A minimum through the public list.
    Rec v = sampled(-2.0, 0.05, 81, [](double t) { return 1.0 + (t - 0.3123) * (t - 0.3123); });
    CScan s;
    Rec m(s.GetMimina(v.get(), 1));
    ASSERT_EQ(col(m.get(), &XY::x).size(), 1u);
    EXPECT_NEAR(m.get()[1].x, 0.3123, 1e-5);
}

TEST(CScanRefine, StencilFollowsTheHigherNeighbour)
{
    // Coarse samples: the two possible stencils give cubics whose peaks differ
    // by more than the tolerance; the refinement must land on the ruled one.
    for (double x0 : {0.07, -0.11, 0.13}) {
        Rec r = sampled(-3.0, 0.3, 21, [&](double t) { return std::cos(2 * (t - x0)); });
        XY *p = r.get();
        CScan s;
        ASSERT_EQ(s.Maxima(p), 1);
        const int k = s.GetIdx()[0];
        const int first = p[k - 1].y > p[k + 1].y ? k - 2 : k - 1, other = 2 * k - 3 - first;
        ld px[4], py[4], qx[4], qy[4];
        for (int j = 0; j < 4; j++) {
            px[j] = p[first + j].x, py[j] = p[first + j].y;
            qx[j] = p[other + j].x, qy[j] = p[other + j].y;
        }
        const ld want = cubic_peak(px, py);
        ASSERT_GT(std::fabs((double)(want - cubic_peak(qx, qy))), 1e-4);
        double x = 0, y = 0;
        ASSERT_EQ(s.RefineCtr(p, k, y, x, 0, 1e-5, 0), 1);
        EXPECT_NEAR(x, (double)want, 1e-5) << x0;
    }
}

TEST(CScanRefine, EdgesAndStepRules)
{
    CScan s;
    // Peak right of x[n-1]: the stencil would reach the rogue element behind
    // point n (y = 1e6) unless it is kept inside the series.
    Rec r = sampled(0.0, 1.0, 6, [](double t) { return 2.0 - (t - 4.3) * (t - 4.3); });
    double x = 0, y = 0;
    ASSERT_EQ(s.RefineCtr(r.get(), 5, y, x, 0, 1e-5, 0), 1);
    EXPECT_NEAR(x, 4.3, 1e-5);
    Rec three = rec({2 - 1.44, 2 - 0.04, 2 - 0.64}, {0, 1, 2});
    ASSERT_EQ(s.RefineCtr(three.get(), 2, y, x, 0, 1e-5, 0), 1);
    EXPECT_NEAR(x, 1.2, 1e-5);
    // Ends give the sample and 0; outside the series nothing is touched.
    EXPECT_EQ(s.RefineCtr(r.get(), 6, y, x, 1, 1e-5, 1), 0);
    EXPECT_EQ(x, 5.0);
    x = y = -7;
    EXPECT_EQ(s.RefineCtr(r.get(), 0, y, x, 0, 1e-5, 0), 0);
    EXPECT_EQ(s.RefineCtr(r.get(), 7, y, x, 0, 1e-5, 0), 0);
    // A tolerance that can't be met: 200 iterations, then 0, outputs untouched.
    EXPECT_EQ(s.RefineCtr(r.get(), 3, y, x, 0, -1.0, 1), 0);
    EXPECT_EQ(x, -7.0);
    EXPECT_EQ(y, -7.0);

    // On a flat stencil every parabola is rejected and every trial point is
    // accepted (fx >= fu on a tie), so the search is pure golden section from
    // x[idx] over [x[idx-1], x[idx+2]].
    Rec flat = rec(V(7, 2.0), {0, 1, 2, 3, 4, 5, 6});
    double a = 1, b = 4, xx = 2;
    for (;;) {
        const double xm = (a + b) / 2, tol1 = std::fabs(xx) * 1e-5 + 1e-10;
        if (std::fabs(xx - xm) <= 2 * tol1 - (b - a) / 2)
            break;
        const double d = 0.381966 * (xm <= xx ? a - xx : b - xx);
        const double u = std::fabs(d) >= tol1 ? xx + d : (d > 0 ? xx + tol1 : xx - tol1);
        (xx <= u ? a : b) = xx;
        xx = u;
    }
    ASSERT_EQ(s.RefineCtr(flat.get(), 3, y, x, 0, 1e-5, 0), 1);
    EXPECT_EQ(x, xx);
    EXPECT_EQ(y, 2.0);

    Rec asc = rec({0, 0, 0, 0, 0}, {1, 2, 2, 3.5, 7});
    const double probe[][2] = {{-5, 1}, {1, 1}, {1.5, 2}, {2, 2}, {3.5, 4}, {6.9, 5}, {99, 5}};
    for (const auto &q : probe)
        EXPECT_EQ(s.BisecXY(asc.get(), q[0]), (int)q[1]) << q[0];
}

TEST(CScanPeaks, MaximaListsAndRefineTable)
{
    CScan s;
    Rec r = rec(PEAKS);
    EXPECT_EQ(take(s.GetMaxima(r.get(), 0), &XY::x), (V{3, 8, 11}));
    EXPECT_EQ(take(s.GetMaxima(r.get(), 0), &XY::w), (V{0, 0, 0}));
    Rec mn(s.GetMimina(r.get(), 2));
    ASSERT_EQ(col(mn.get(), &XY::x).size(), 2u);
    EXPECT_LE(mn.get()[1].y, 0.0); // a refined minimum is never above its sample
    Rec mono = rec({1, 2, 3, 4});
    EXPECT_EQ(s.GetMaxima(mono.get(), 1), nullptr);
    EXPECT_EQ(s.GetLmtdMaxima(mono.get(), 0, 0, 0), nullptr);

    ASSERT_EQ(PEAK_REFINE_MODE_COUNT, 4);
    EXPECT_EQ(FindPeakRefineMode(17).code, 3);
    EXPECT_EQ(FindPeakRefineMode(-2).method, PEAK_POLYNOMIAL);
    const V index = {3, 8, 11}, width = {4, 5, 2};
    for (int k = 0; k < PEAK_REFINE_MODE_COUNT; k++) {
        const PeakRefineMode &md = PEAK_REFINE_MODES[k];
        EXPECT_EQ(&FindPeakRefineMode(md.code), &md);
        Rec o(s.GetLmtdMaxima(r.get(), 0, md.code, 0));
        EXPECT_EQ(col(o.get(), &XY::w), md.wcolumn == PEAK_W_INDEX ? index : width) << md.name;
        EXPECT_EQ(col(o.get(), &XY::x) == index, md.method == PEAK_SAMPLE) << md.name;
        if (md.method == PEAK_SPLINE) { // the spline rows agree with GetMaxima's spline
            EXPECT_EQ(col(o.get(), &XY::x), take(s.GetMaxima(r.get(), 2), &XY::x));
        }
    }
}

TEST(CScanPeaks, WidthAndCountCuts)
{
    CScan s;
    Rec r = rec(PEAKS);
    const std::pair<int, V> cases[] = {{0, {3, 8, 11}}, {3, {3, 8}}, {4, {3, 8}}, {5, {8}}, {6, {}}, {-10, {3, 8, 11}}};
    for (const auto &c : cases)
        EXPECT_EQ(take(s.GetLmtdMaxima(r.get(), c.first, 0, 0), &XY::x), c.second) << c.first;
    // A width exactly at the limit stays, one ulp below it goes: the limit is
    // |minWidth| mean spacings less a hundredth of one, 3.99 here.
    const double D = (4 - 0.01) * (5.0 - -2.0) / 7;
    for (double xr : {D, std::nextafter(D, 0.0)}) {
        Rec e = rec({1, 0.5, 0, 2, 0, 0.5, 0.7, 1}, {-2, -1, 0, 1, xr, 4.2, 4.6, 5});
        EXPECT_EQ(take(s.GetLmtdMaxima(e.get(), 4, 0, 0), &XY::w), xr == D ? V{4} : V{});
    }
    // A lone maximum has no width to test.
    Rec lone = rec({0, 1, 0});
    EXPECT_EQ(take(s.GetLmtdMaxima(lone.get(), 100, 1, 0), &XY::w), V{0});

    // The count cut keeps the highest, in x order, with the number found in header y.
    Rec two(s.GetLmtdMaxima(r.get(), 0, 0, 2));
    EXPECT_EQ(col(two.get(), &XY::x), (V{8, 11}));
    EXPECT_EQ(two.get()[0].y, 3.0);
    Rec all(s.GetLmtdMaxima(r.get(), 0, 0, 3));
    EXPECT_EQ(all.get()[0].x, 3.0);
    EXPECT_EQ(all.get()[0].y, 0.0);

    EXPECT_EQ(take(s.GetLmtdMaximaYThreshold(r.get(), 4.0, 0, 0, 0), &XY::x), (V{8, 11}));
    Rec none(s.GetLmtdMaximaYThreshold(r.get(), 10.0, 0, 1, 0));
    ASSERT_NE(none.get(), nullptr); // empty, not null
    EXPECT_EQ(none.get()[0].x, 0.0);
    EXPECT_EQ(take(s.GetLmtdMaximaYThreshold(r.get(), 0.0, 5, 0, 1), &XY::x), (V{8}));
    Rec cut1(s.GetLmtdMaximaYThreshold(r.get(), 0.0, 0, 0, 1));
    EXPECT_EQ(col(cut1.get(), &XY::x), (V{11}));
    EXPECT_EQ(cut1.get()[0].y, 3.0);
}

TEST(CScanPeaks, ReferenceForms)
{
    CScan s;
    V up, down, cy;
    for (int i = 1; i <= 20; i++) {
        up.push_back(10 + i);
        down.push_back(30 - i);
        cy.push_back(std::cos(2 * 3.141592653589793 * (i - (i < 10.5 ? 5.3 : 5.7)) / 10));
    }
    // Samples: y from the w column, w the sample's y.
    Rec r = rec(PEAKS, {}, up);
    Rec o(s.GetLmtdMaximaReference(r.get(), 0, 0, 0, 0.0));
    EXPECT_EQ(col(o.get(), &XY::y), (V{13, 18, 21}));
    EXPECT_EQ(col(o.get(), &XY::w), (V{3, 4, 5}));
    EXPECT_EQ(take(s.GetLmtdMaximaReference(r.get(), 3.5, 0, 0, 0, 0.0), &XY::x), (V{8, 11}));

    // Refined peaks at 5.3 and 15.7: the reference takes the neighbour on the
    // side the peak moved to, only when that neighbour is larger.
    Rec cu = rec(cy, {}, up), cd = rec(cy, {}, down);
    Rec ref(s.GetLmtdMaxima(cu.get(), 0, 1, 0));
    Rec u(s.GetLmtdMaximaReference(cu.get(), 0, 1, 0, 0.0));
    EXPECT_EQ(col(u.get(), &XY::y), (V{16, 26}));
    EXPECT_EQ(col(u.get(), &XY::x), col(ref.get(), &XY::x));
    EXPECT_EQ(col(u.get(), &XY::w), col(ref.get(), &XY::y));
    EXPECT_NEAR(u.get()[2].x, 15.7, 0.05);
    EXPECT_EQ(take(s.GetLmtdMaximaReference(cd.get(), 0, 2, 0, 0.0), &XY::y), (V{25, 15}));

    // A lone extremum needs a negative minWidth here.
    Rec lone = rec({0, 1, 0}, {}, {5, 6, 7});
    EXPECT_EQ(s.GetLmtdMaximaReference(lone.get(), 0, 0, 0, 0.0), nullptr);
    EXPECT_EQ(s.GetLmtdMaximaReference(lone.get(), -1e300, 0, 0, 0, 0.0), nullptr);
    EXPECT_EQ(take(s.GetLmtdMaximaReference(lone.get(), -1, 0, 0, 0.0), &XY::y), V{6});

    // Separation 3.5: the peak at 11 (reference 21) displaces the one at 8.
    // The plain form compares the 3 found before thinning with maxCount, the
    // threshold form the 2 left after it.
    EXPECT_EQ(take(s.GetLmtdMaximaReference(r.get(), 0, 0, 0, 3.5), &XY::x), (V{3, 11}));
    for (int maxCount : {1, 2}) {
        Rec p(s.GetLmtdMaximaReference(r.get(), 0, 0, maxCount, 3.5));
        Rec q(s.GetLmtdMaximaReference(r.get(), -1e300, 0, 0, maxCount, 3.5));
        const V keep = maxCount == 1 ? V{11} : V{3, 11};
        EXPECT_EQ(col(p.get(), &XY::x), keep);
        EXPECT_EQ(col(q.get(), &XY::x), keep);
        EXPECT_EQ(p.get()[0].y, 3.0);
        EXPECT_EQ(q.get()[0].y, maxCount == 1 ? 2.0 : 0.0);
    }
}

TEST(CScanPeaks, ExtremaOutline)
{
    CScan s;
    Rec r = rec(PEAKS);
    Rec e(s.GetExtrema(r.get(), 0, 0, 0));
    EXPECT_EQ(col(e.get(), &XY::x), (V{3, 5, 8, 10, 11}));
    EXPECT_EQ(col(e.get(), &XY::y), (V{3, 0, 4, 3, 5}));
    EXPECT_EQ(col(e.get(), &XY::w), col(e.get(), &XY::x));
    EXPECT_EQ(take(s.GetExtrema(r.get(), 7, 7, 1), &XY::x), (V{1, 3, 5, 8, 10, 11, 12}));

    // Reduce by the larger step to a list neighbour (3, 4, 4, 2, 2).
    Rec a(s.GetExtrema(r.get(), 0, 3, 0));
    EXPECT_EQ(col(a.get(), &XY::x), (V{3, 5, 8}));
    EXPECT_EQ(col(a.get(), &XY::y), (V{3, 0, 4}));
    // With the ends: point 1 displaces the first kept extremum, the others keep
    // their weights as y, and point n sits in slot c + 2 behind the count.
    Rec b(s.GetExtrema(r.get(), 0, 5, 1));
    EXPECT_EQ(col(b.get(), &XY::x), (V{1, 5, 8}));
    EXPECT_EQ(col(b.get(), &XY::y), (V{0, 4, 4}));
    EXPECT_EQ(b.get()[7].x, 12.0);
    EXPECT_EQ(b.get()[7].w, 12.0);

    // Fill: the gap midpoint comes from the series by the list index k and is
    // bisected in the list, so the outline gains series points 1 and 2.
    Rec tri = rec({0, 1, 2, 3, 4, 3, 2, 1, 0});
    Rec g(s.GetExtrema(tri.get(), 5, 0, 1));
    EXPECT_EQ(col(g.get(), &XY::x), (V{1, 1, 2, 5, 9}));
    EXPECT_EQ(col(g.get(), &XY::w), (V{1, 1, 2, 5, 9}));
    Rec big(s.GetExtrema(tri.get(), 1000, 0, 1));
    EXPECT_EQ(big.get()[0].x, 9.0);
    Rec mono = rec({1, 2, 3, 4});
    EXPECT_EQ(s.GetExtrema(mono.get(), 4, 0, 0), nullptr);
    EXPECT_EQ(take(s.GetExtrema(mono.get(), 0, 0, 1), &XY::x), (V{1, 4}));
}
