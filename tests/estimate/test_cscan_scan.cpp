// CScan: extrema and zero-crossing rules, tracking fields, areas and moments.
#include "oscilla/estimate/cscan.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <vector>

using oscilla::CScan;
using oscilla::XY;

namespace {

// A record of the given points with a rogue element behind the last one, as
// spectrum records carry metadata there.
struct Rec {
    XY *p;
    int n;
    Rec(const std::vector<double> &y, const std::vector<double> &x = {}, const std::vector<double> &w = {})
        : n(static_cast<int>(y.size()))
    {
        p = static_cast<XY *>(std::calloc(static_cast<size_t>(n) + 2, sizeof(XY)));
        p[0].x = n;
        for (int i = 1; i <= n; i++) {
            p[i].x = x.empty() ? i : x[i - 1];
            p[i].y = y[i - 1];
            p[i].w = w.empty() ? 0.0 : w[i - 1];
        }
        p[n + 1].x = -1e30;
        p[n + 1].y = 1e30;
        p[n + 1].w = 1e30;
    }
    ~Rec() { std::free(p); }
    Rec(const Rec &) = delete;
    Rec &operator=(const Rec &) = delete;
};

std::vector<int> idx_list(const CScan &s, int cnt) { return std::vector<int>(s.listIdx, s.listIdx + cnt); }
std::vector<int> sgn_list(const CScan &s, int cnt) { return std::vector<int>(s.listSgn, s.listSgn + cnt); }

} // namespace

TEST(CScanExtrema, TiesShelvesAndFlatTops)
{
    CScan s;
    // Flat top 2..3 reported at its first sample, flat bottom 4..5 at its last.
    Rec a({0, 2, 2, 1, 1, 3, 0});
    ASSERT_EQ(s.Extrema(a.p), 3);
    EXPECT_EQ(idx_list(s, 3), (std::vector<int>{2, 5, 6}));
    EXPECT_EQ(sgn_list(s, 3), (std::vector<int>{1, 0, 1}));
    EXPECT_EQ(s.GetCnt(), 3);
    EXPECT_EQ(s.GetX()[1], 5.0);
    EXPECT_EQ(s.GetY()[2], 3.0);

    // A step up over a shelf: maximum at the start of the shelf, minimum at its end.
    Rec b({0, 1, 1, 1, 2, 3});
    ASSERT_EQ(s.Extrema(b.p), 2);
    EXPECT_EQ(idx_list(s, 2), (std::vector<int>{2, 4}));
    EXPECT_EQ(sgn_list(s, 2), (std::vector<int>{1, 0}));

    // Selective scans list one kind and track both.
    EXPECT_EQ(s.Maxima(a.p), 2);
    EXPECT_EQ(idx_list(s, 2), (std::vector<int>{2, 6}));
    double x, y;
    int i;
    s.GetMin(x, y, i);
    EXPECT_EQ(i, 5);
    EXPECT_EQ(x, 5.0);
    EXPECT_EQ(y, 1.0);
    s.GetMax(x, y, i);
    EXPECT_EQ(i, 6);
    EXPECT_EQ(y, 3.0);
    EXPECT_EQ(s.Minima(a.p), 1);
    EXPECT_EQ(s.GetIdx()[0], 5);
    EXPECT_EQ(s.GetSgn()[0], 0);
    s.GetMax(x, y, i);
    EXPECT_EQ(i, 6);
}

TEST(CScanExtrema, TrackingKeepsFirstOfEqualValues)
{
    CScan s;
    Rec r({0, 5, 1, 5, 1, 5, 0}, {10, 20, 30, 40, 50, 60, 70});
    EXPECT_EQ(s.Extrema(r.p), 5);
    double x, y;
    int i;
    s.GetMax(x, y, i);
    EXPECT_EQ(i, 2);
    EXPECT_EQ(x, 20.0);
    s.GetMin(x, y, i);
    EXPECT_EQ(i, 3);
    EXPECT_EQ(x, 30.0);
    // Each pass starts over: a scan without minima leaves the sentinel.
    Rec up({0, 1, 2, 1});
    EXPECT_EQ(s.Extrema(up.p), 1);
    s.GetMin(x, y, i);
    EXPECT_EQ(y, 1e300);
    s.GetMax(x, y, i);
    EXPECT_EQ(i, 3);
}

TEST(CScanExtrema, DegenerateSeries)
{
    CScan s;
    Rec two({1, 0}), mono({1, 2, 3, 4, 5}), flat({2, 2, 2, 2});
    EXPECT_EQ(s.Extrema(two.p), 0);
    EXPECT_EQ(s.Extrema(mono.p), 0);
    EXPECT_EQ(s.Maxima(flat.p), 0);
    EXPECT_EQ(s.Minima(flat.p), 0);
    EXPECT_EQ(s.Extrema(nullptr), 0);
    EXPECT_EQ(s.GetCnt(), 0);
    // End points are never extrema, however high.
    Rec ends({9, 1, 2, 1, 9});
    EXPECT_EQ(s.Extrema(ends.p), 3);
    EXPECT_EQ(idx_list(s, 3), (std::vector<int>{2, 3, 4}));
}

TEST(CScanExtrema, MaximaAbsScansMagnitudes)
{
    CScan s;
    Rec r({0, -3, 1, 2, -1, 0});
    ASSERT_EQ(s.MaximaAbs(r.p), 2);
    EXPECT_EQ(idx_list(s, 2), (std::vector<int>{2, 4}));
    EXPECT_EQ(s.GetY()[0], 3.0); // |y|, not y
    EXPECT_EQ(s.GetY()[1], 2.0);
    double x, y;
    int i;
    s.GetMin(x, y, i);
    EXPECT_EQ(i, 3);
    EXPECT_EQ(y, 1.0);
}

TEST(CScanExtrema, ClippedScansRestoreTheSeriesAndSkipTheLastPoint)
{
    CScan s;
    const std::vector<double> y = {-1, 2, -3, 1, -0.5, 4, -2};
    Rec r(y);
    // Negatives clipped to 0: 0 2 0 1 0 4 -2 gives maxima at 2, 4, 6.
    ASSERT_EQ(s.MaximaGTZero(r.p), 3);
    EXPECT_EQ(idx_list(s, 3), (std::vector<int>{2, 4, 6}));
    for (int i = 1; i <= r.n; i++)
        EXPECT_EQ(r.p[i].y, y[i - 1]) << i;
    // Positives clipped: -1 0 -3 0 -0.5 0 -2 gives minima at 3 and 5.
    ASSERT_EQ(s.MinimaLTZero(r.p), 2);
    EXPECT_EQ(idx_list(s, 2), (std::vector<int>{3, 5}));
    for (int i = 1; i <= r.n; i++)
        EXPECT_EQ(r.p[i].y, y[i - 1]) << i;

    // The last point keeps its sign: clipped it would end a flat 0 0 run and
    // make point 3 a maximum of the tracking fields.
    Rec t({-2, -1, 0.5, 3});
    EXPECT_EQ(s.MinimaLTZero(t.p), 0);
    double x, yy;
    int i;
    s.GetMax(x, yy, i);
    EXPECT_EQ(yy, -1e300);
    EXPECT_EQ(t.p[3].y, 0.5);
    EXPECT_EQ(t.p[4].y, 3.0);
}

TEST(CScanZero, CrossingsAndExactZeros)
{
    CScan s;
    Rec base({0, 3, 1, 4, 0});
    ASSERT_EQ(s.Extrema(base.p), 3);
    double mx0, my0;
    int mi0;
    s.GetMax(mx0, my0, mi0);

    // 0 counts as not positive: 1 -> 0 is a fall recorded at point 1.
    Rec r({1, 0, -1, 0, 2, 2, -3}, {0.5, 1.5, 2.5, 3.5, 4.5, 5.5, 6.5});
    ASSERT_EQ(s.Zero(r.p), 3);
    EXPECT_EQ(idx_list(s, 3), (std::vector<int>{1, 4, 6}));
    EXPECT_EQ(sgn_list(s, 3), (std::vector<int>{1, 0, 1}));
    EXPECT_EQ(s.GetX()[1], 3.5); // the point's own x: no interpolation
    EXPECT_EQ(s.GetY()[2], 2.0);
    EXPECT_EQ(s.ZeroDecr(r.p), 2);
    EXPECT_EQ(idx_list(s, 2), (std::vector<int>{1, 6}));
    EXPECT_EQ(s.ZeroIncr(r.p), 1);
    EXPECT_EQ(s.GetIdx()[0], 4);

    // The crossing scans leave count and the tracking fields of the extrema scan.
    EXPECT_EQ(s.GetCnt(), 3);
    double mx, my;
    int mi;
    s.GetMax(mx, my, mi);
    EXPECT_EQ(mi, mi0);
    EXPECT_EQ(my, my0);

    Rec zeros({0, 0, 0});
    EXPECT_EQ(s.Zero(zeros.p), 0);
    Rec one({-1});
    EXPECT_EQ(s.Zero(one.p), 0);
}

TEST(CScanMoments, AreaIsTheTrapezoidRule)
{
    CScan s;
    const std::vector<double> x = {0.0, 0.3, 1.1, 1.2, 2.5, 3.0, 4.7};
    std::vector<double> y(x.size());
    for (size_t i = 0; i < x.size(); i++)
        y[i] = std::sin(2 * x[i]) - 0.2;
    Rec r(y, x);
    long double trap = 0, trapAbs = 0;
    for (size_t i = 0; i + 1 < x.size(); i++) {
        const long double h = static_cast<long double>(x[i + 1]) - x[i];
        trap += h * (static_cast<long double>(y[i]) + y[i + 1]) / 2;
        trapAbs += h * (std::fabs(static_cast<long double>(y[i])) + std::fabs(static_cast<long double>(y[i + 1]))) / 2;
    }
    const double eps = std::numeric_limits<double>::epsilon();
    EXPECT_NEAR(s.Area(r.p), static_cast<double>(trap), 16 * eps * 5);
    EXPECT_NEAR(s.AreaAbs(r.p), static_cast<double>(trapAbs), 16 * eps * 5);
    Rec single({7.0});
    EXPECT_EQ(s.Area(single.p), 0.0);
}

TEST(CScanMoments, RangeUsesWholeSeriesWidths)
{
    CScan s;
    Rec ones(std::vector<double>(9, 1.0), {0, 1, 2, 3, 4, 5, 6, 7, 8});
    double area, c;
    s.Moments(ones.p, -5, 100, area, c); // clipped to 1..9
    EXPECT_DOUBLE_EQ(area, 8.0);
    EXPECT_DOUBLE_EQ(c, 4.0);
    // Points 2 and 3 are inner points: full width each, not a trapezoid of one gap.
    s.Moments(ones.p, 2, 3, area, c);
    EXPECT_DOUBLE_EQ(area, 2.0);
    EXPECT_DOUBLE_EQ(c, 1.5);
    // Zero area: the centroid stays the raw first moment.
    Rec anti({1, -1}, {0, 1});
    s.Moments(anti.p, 1, 2, area, c);
    EXPECT_EQ(area, 0.0);
    EXPECT_DOUBLE_EQ(c, -0.5);
}

TEST(CScanMoments, MovingMoment)
{
    CScan s;
    Rec r({1, 1, 1, 1, 1}, {0, 1, 2, 3, 4});
    XY *a = s.MovingMoment(r.p, 0, 1);
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(a[0].x, 5.0);
    const double area[] = {1.5, 2.5, 3.0, 2.5, 1.5};
    for (int i = 1; i <= 5; i++) {
        EXPECT_DOUBLE_EQ(a[i].y, area[i - 1]) << i;
        EXPECT_EQ(a[i].x, i - 1.0);
        EXPECT_EQ(a[i].w, 1.0);
    }
    std::free(a);
    XY *c = s.MovingMoment(r.p, 1, 1);
    ASSERT_NE(c, nullptr);
    EXPECT_DOUBLE_EQ(c[3].y, 2.0);                   // symmetric window: the point itself
    EXPECT_DOUBLE_EQ(c[1].y, (0 * 0.5 + 1 * 1.0) / 1.5); // clipped at the start
    std::free(c);
    XY *big = s.MovingMoment(r.p, 0, 2147483647);
    ASSERT_NE(big, nullptr);
    EXPECT_DOUBLE_EQ(big[3].y, 4.0);
    std::free(big);
}
