// CScan: the peak lists, their width and count cuts, the reference forms and
// the extrema outline.
#include "oscilla/estimate/cscan.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <vector>

using oscilla::CScan;
using oscilla::XY;

namespace {

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
        p[n + 1].x = -1e30; // rogue element behind the last point
        p[n + 1].y = 1e30;
        p[n + 1].w = 1e30;
    }
    ~Rec() { std::free(p); }
    Rec(const Rec &) = delete;
    Rec &operator=(const Rec &) = delete;
};

// Owns a returned record.
struct Out {
    XY *p;
    explicit Out(XY *r) : p(r) {}
    ~Out() { std::free(p); }
    Out(const Out &) = delete;
    Out &operator=(const Out &) = delete;
    int n() const { return static_cast<int>(p[0].x); }
    std::vector<double> col(double XY::*f) const
    {
        std::vector<double> v;
        for (int i = 1; i <= n(); i++)
            v.push_back(p[i].*f);
        return v;
    }
};

// Extrema at 3 (max, y 3), 5 (min), 8 (max, y 4), 10 (min), 11 (max, y 5) with
// unit spacing; the maxima have list widths 4, 5 and 2.
const std::vector<double> PEAKS_Y = {0, 1, 3, 2, 0, 1, 2, 4, 3.5, 3, 5, 1};

} // namespace

TEST(CScanPeaks, GetMaximaAndMinima)
{
    CScan s;
    Rec r(PEAKS_Y);
    Out m0(s.GetMaxima(r.p, 0));
    ASSERT_NE(m0.p, nullptr);
    EXPECT_EQ(m0.col(&XY::x), (std::vector<double>{3, 8, 11}));
    EXPECT_EQ(m0.col(&XY::y), (std::vector<double>{3, 4, 5}));
    EXPECT_EQ(m0.col(&XY::w), (std::vector<double>{0, 0, 0}));
    for (int mode : {1, 2}) {
        Out m(s.GetMaxima(r.p, mode));
        ASSERT_NE(m.p, nullptr);
        ASSERT_EQ(m.n(), 3);
        const double px[] = {3, 8, 11};
        for (int i = 1; i <= 3; i++) {
            EXPECT_GT(m.p[i].x, px[i - 1] - 1);
            EXPECT_LT(m.p[i].x, px[i - 1] + 1);
            EXPECT_GE(m.p[i].y, m0.p[i].y - 1e-12); // a refined maximum is never below its sample
            EXPECT_EQ(m.p[i].w, 0.0);
        }
    }
    Out mn(s.GetMimina(r.p, 0));
    ASSERT_NE(mn.p, nullptr);
    EXPECT_EQ(mn.col(&XY::x), (std::vector<double>{5, 10}));
    Rec mono({1, 2, 3, 4});
    EXPECT_EQ(s.GetMaxima(mono.p, 1), nullptr);
    EXPECT_EQ(s.GetMimina(mono.p, 0), nullptr);
}

TEST(CScanPeaks, RefineTable)
{
    using namespace oscilla;
    ASSERT_EQ(PEAK_REFINE_MODE_COUNT, 4);
    for (int r = 0; r < PEAK_REFINE_MODE_COUNT; r++)
        EXPECT_EQ(&FindPeakRefineMode(PEAK_REFINE_MODES[r].code), &PEAK_REFINE_MODES[r]);
    EXPECT_EQ(FindPeakRefineMode(17).code, 3);
    EXPECT_EQ(FindPeakRefineMode(-2).method, PEAK_POLYNOMIAL);

    // What each row puts in w, and whether x, y are the samples.
    CScan s;
    Rec r(PEAKS_Y);
    const std::vector<double> index = {3, 8, 11}, width = {4, 5, 2};
    for (int k = 0; k < PEAK_REFINE_MODE_COUNT; k++) {
        const PeakRefineMode &m = PEAK_REFINE_MODES[k];
        Out o(s.GetLmtdMaxima(r.p, 0, m.code, 0));
        ASSERT_NE(o.p, nullptr);
        EXPECT_EQ(o.col(&XY::w), m.wcolumn == PEAK_W_INDEX ? index : width) << m.name;
        if (m.method == PEAK_SAMPLE)
            EXPECT_EQ(o.col(&XY::x), index);
        else
            EXPECT_NE(o.col(&XY::x), index) << m.name;
    }
    // The spline rows agree on x and y; they differ from the polynomial.
    Out p1(s.GetLmtdMaxima(r.p, 0, 1, 0)), p2(s.GetLmtdMaxima(r.p, 0, 2, 0)), p3(s.GetLmtdMaxima(r.p, 0, 3, 0));
    EXPECT_EQ(p2.col(&XY::x), p3.col(&XY::x));
    EXPECT_EQ(p2.col(&XY::y), p3.col(&XY::y));
    EXPECT_NE(p1.col(&XY::x), p2.col(&XY::x));
}

TEST(CScanPeaks, WidthCut)
{
    CScan s;
    Rec r(PEAKS_Y);
    struct Case {
        int minWidth;
        std::vector<double> x;
    } cases[] = {
        {0, {3, 8, 11}}, {2, {3, 8, 11}}, {3, {3, 8}}, {4, {3, 8}}, {5, {8}}, {-10, {3, 8, 11}},
    };
    for (const Case &c : cases) {
        Out o(s.GetLmtdMaxima(r.p, c.minWidth, 0, 0));
        ASSERT_NE(o.p, nullptr) << c.minWidth;
        EXPECT_EQ(o.col(&XY::x), c.x) << c.minWidth;
        EXPECT_EQ(o.p[0].y, 0.0);
    }
    EXPECT_EQ(s.GetLmtdMaxima(r.p, 6, 0, 0), nullptr);

    // A width exactly at the limit stays, one ulp below it goes. The limit is
    // |minWidth| mean spacings less a hundredth: here 3.99 with spacing 1.
    const double D = (4 - 0.01) * (5.0 - -2.0) / 7;
    for (int below = 0; below < 2; below++) {
        const double xr = below ? std::nextafter(D, 0.0) : D;
        Rec e({1, 0.5, 0, 2, 0, 0.5, 0.7, 1}, {-2, -1, 0, 1, xr, 4.2, 4.6, 5});
        Out o(s.GetLmtdMaxima(e.p, 4, 0, 0));
        if (below) {
            EXPECT_EQ(o.p, nullptr);
        } else {
            ASSERT_NE(o.p, nullptr);
            EXPECT_EQ(o.n(), 1);
            EXPECT_EQ(o.p[1].w, 4.0);
        }
    }

    // A lone maximum has no width to test and always passes.
    Rec lone({0, 1, 0});
    Out o(s.GetLmtdMaxima(lone.p, 100, 1, 0));
    ASSERT_NE(o.p, nullptr);
    EXPECT_EQ(o.n(), 1);
    EXPECT_EQ(o.p[1].w, 0.0);
    EXPECT_NEAR(o.p[1].x, 2.0, 1e-5);

    Rec mono({3, 2, 1, 0});
    EXPECT_EQ(s.GetLmtdMaxima(mono.p, 0, 0, 0), nullptr);
}

TEST(CScanPeaks, CountCutKeepsHighestInXOrder)
{
    CScan s;
    Rec r(PEAKS_Y);
    Out two(s.GetLmtdMaxima(r.p, 0, 0, 2));
    ASSERT_NE(two.p, nullptr);
    EXPECT_EQ(two.n(), 2);
    EXPECT_EQ(two.p[0].y, 3.0); // the number found before the cut
    EXPECT_EQ(two.col(&XY::x), (std::vector<double>{8, 11}));
    EXPECT_EQ(two.col(&XY::w), (std::vector<double>{8, 11}));
    for (int maxCount : {3, 5}) {
        Out all(s.GetLmtdMaxima(r.p, 0, 0, maxCount));
        EXPECT_EQ(all.n(), 3);
        EXPECT_EQ(all.p[0].y, 0.0);
    }
    Out one(s.GetLmtdMaxima(r.p, 0, 2, 1));
    EXPECT_EQ(one.n(), 1);
    EXPECT_EQ(one.p[0].y, 3.0);
    EXPECT_NEAR(one.p[1].x, 11.0, 1.0);
}

TEST(CScanPeaks, YThreshold)
{
    CScan s;
    Rec r(PEAKS_Y);
    Out hi(s.GetLmtdMaximaYThreshold(r.p, 4.0, 0, 0, 0));
    ASSERT_NE(hi.p, nullptr);
    EXPECT_EQ(hi.col(&XY::x), (std::vector<double>{8, 11}));
    // Nothing reaches the threshold: an empty record, not null.
    Out none(s.GetLmtdMaximaYThreshold(r.p, 10.0, 0, 1, 0));
    ASSERT_NE(none.p, nullptr);
    EXPECT_EQ(none.n(), 0);
    Out cut(s.GetLmtdMaximaYThreshold(r.p, 0.0, 0, 0, 1));
    EXPECT_EQ(cut.n(), 1);
    EXPECT_EQ(cut.p[0].y, 3.0);
    EXPECT_EQ(cut.p[1].x, 11.0);
    // The width rule still applies underneath.
    Out wide(s.GetLmtdMaximaYThreshold(r.p, 3.0, 5, 0, 0));
    EXPECT_EQ(wide.col(&XY::x), (std::vector<double>{8}));
    Rec mono({1, 2, 3});
    EXPECT_EQ(s.GetLmtdMaximaYThreshold(mono.p, 0.0, 0, 0, 0), nullptr);
}

TEST(CScanPeaks, ReferenceColumns)
{
    CScan s;
    std::vector<double> up(12);
    for (int i = 0; i < 12; i++)
        up[i] = 10 + i;
    Rec r(PEAKS_Y, {}, up);
    // Sample values: y from the w column, w the sample's y.
    Out o(s.GetLmtdMaximaReference(r.p, 0, 0, 0, 0.0));
    ASSERT_NE(o.p, nullptr);
    EXPECT_EQ(o.col(&XY::x), (std::vector<double>{3, 8, 11}));
    EXPECT_EQ(o.col(&XY::y), (std::vector<double>{12, 17, 20}));
    EXPECT_EQ(o.col(&XY::w), (std::vector<double>{3, 4, 5}));

    // Refined: the cosine peaks at 5.3 and 15.7 move right and left of their
    // samples; the reference is raised to the neighbour on that side only when
    // that one is larger.
    std::vector<double> cy(20), cup(20), cdown(20);
    for (int i = 1; i <= 20; i++) {
        const double c = i < 10.5 ? 5.3 : 5.7;
        cy[i - 1] = std::cos(2 * 3.141592653589793 * (i - c) / 10);
        cup[i - 1] = 10 + i;
        cdown[i - 1] = 30 - i;
    }
    Rec cu(cy, {}, cup), cd(cy, {}, cdown);
    Out ref(s.GetLmtdMaxima(cu.p, 0, 1, 0));
    Out u(s.GetLmtdMaximaReference(cu.p, 0, 1, 0, 0.0));
    ASSERT_NE(u.p, nullptr);
    ASSERT_EQ(u.n(), 2);
    EXPECT_NEAR(u.p[1].x, 5.3, 0.05);
    EXPECT_NEAR(u.p[2].x, 15.7, 0.05);
    EXPECT_EQ(u.col(&XY::y), (std::vector<double>{16, 26}));
    EXPECT_EQ(u.col(&XY::x), ref.col(&XY::x));
    EXPECT_EQ(u.col(&XY::w), ref.col(&XY::y)); // the refined y lands in w
    Out d(s.GetLmtdMaximaReference(cd.p, 0, 2, 0, 0.0));
    EXPECT_EQ(d.col(&XY::y), (std::vector<double>{25, 15}));

    // The threshold form tests the sample's y.
    Out t(s.GetLmtdMaximaReference(r.p, 3.5, 0, 0, 0, 0.0));
    EXPECT_EQ(t.col(&XY::x), (std::vector<double>{8, 11}));
}

TEST(CScanPeaks, ReferenceLoneExtremumNeedsNegativeWidth)
{
    CScan s;
    Rec lone({0, 1, 0}, {}, {5, 6, 7});
    EXPECT_EQ(s.GetLmtdMaximaReference(lone.p, 0, 0, 0, 0.0), nullptr);
    EXPECT_EQ(s.GetLmtdMaximaReference(lone.p, -1e300, 0, 0, 0, 0.0), nullptr);
    Out o(s.GetLmtdMaximaReference(lone.p, -1, 0, 0, 0.0));
    ASSERT_NE(o.p, nullptr);
    EXPECT_EQ(o.n(), 1);
    EXPECT_EQ(o.p[1].y, 6.0);
}

TEST(CScanPeaks, ReferenceSeparationAndCountAsymmetry)
{
    CScan s;
    std::vector<double> up(12);
    for (int i = 0; i < 12; i++)
        up[i] = 10 + i;
    Rec r(PEAKS_Y, {}, up);
    // Peaks at 3, 8, 11 with references 12, 17, 20: within 3.5 of 8, the higher
    // reference at 11 takes its place.
    Out a(s.GetLmtdMaximaReference(r.p, 0, 0, 0, 3.5));
    ASSERT_NE(a.p, nullptr);
    EXPECT_EQ(a.col(&XY::x), (std::vector<double>{3, 11}));
    EXPECT_EQ(a.p[0].y, 0.0);

    // maxCount 2: the plain form still compares the 3 found before the
    // thinning and so goes through the cut; the threshold form compares 2.
    Out plain(s.GetLmtdMaximaReference(r.p, 0, 0, 2, 3.5));
    Out thr(s.GetLmtdMaximaReference(r.p, -1e300, 0, 0, 2, 3.5));
    EXPECT_EQ(plain.col(&XY::x), (std::vector<double>{3, 11}));
    EXPECT_EQ(thr.col(&XY::x), (std::vector<double>{3, 11}));
    EXPECT_EQ(plain.p[0].y, 3.0);
    EXPECT_EQ(thr.p[0].y, 0.0);

    Out p1(s.GetLmtdMaximaReference(r.p, 0, 0, 1, 3.5));
    Out t1(s.GetLmtdMaximaReference(r.p, -1e300, 0, 0, 1, 3.5));
    EXPECT_EQ(p1.col(&XY::x), (std::vector<double>{11}));
    EXPECT_EQ(t1.col(&XY::x), (std::vector<double>{11}));
    EXPECT_EQ(p1.p[0].y, 3.0);
    EXPECT_EQ(t1.p[0].y, 2.0);
}

TEST(CScanOutline, EveryExtremumWithAndWithoutEnds)
{
    CScan s;
    Rec r(PEAKS_Y);
    Out e(s.GetExtrema(r.p, 0, 0, 0));
    ASSERT_NE(e.p, nullptr);
    EXPECT_EQ(e.col(&XY::x), (std::vector<double>{3, 5, 8, 10, 11}));
    EXPECT_EQ(e.col(&XY::y), (std::vector<double>{3, 0, 4, 3, 5}));
    EXPECT_EQ(e.col(&XY::w), e.col(&XY::x));
    Out f(s.GetExtrema(r.p, 7, 7, 1));
    EXPECT_EQ(f.col(&XY::x), (std::vector<double>{1, 3, 5, 8, 10, 11, 12}));
    Rec mono({1, 2, 3});
    EXPECT_EQ(s.GetExtrema(mono.p, 0, 0, 0), nullptr);
    Out ends(s.GetExtrema(mono.p, 0, 0, 1));
    EXPECT_EQ(ends.col(&XY::x), (std::vector<double>{1, 3}));
}

TEST(CScanOutline, ReduceByLargestStep)
{
    CScan s;
    Rec r(PEAKS_Y);
    // Steps to the list neighbours: 3, 4, 4, 2, 2.
    Out a(s.GetExtrema(r.p, 0, 3, 0));
    ASSERT_NE(a.p, nullptr);
    EXPECT_EQ(a.col(&XY::x), (std::vector<double>{3, 5, 8}));
    EXPECT_EQ(a.col(&XY::y), (std::vector<double>{3, 0, 4}));
    EXPECT_EQ(a.col(&XY::w), (std::vector<double>{3, 5, 8}));

    // With the ends: three kept, the first gives way to point 1, the others
    // keep their weights as y, and point n sits at slot c + 2 behind the count.
    Out b(s.GetExtrema(r.p, 0, 5, 1));
    ASSERT_NE(b.p, nullptr);
    EXPECT_EQ(b.n(), 3);
    EXPECT_EQ(b.col(&XY::x), (std::vector<double>{1, 5, 8}));
    EXPECT_EQ(b.col(&XY::y), (std::vector<double>{0, 4, 4}));
    EXPECT_EQ(b.col(&XY::w), (std::vector<double>{1, 5, 8}));
    EXPECT_EQ(b.p[7].x, 12.0);
    EXPECT_EQ(b.p[7].y, 1.0);
    EXPECT_EQ(b.p[7].w, 12.0);
}

TEST(CScanOutline, FillTowardsMinPoints)
{
    CScan s;
    // One maximum at 5 plus the ends. The gap midpoint is read from the series
    // by the list index and bisected in the list: the outline gains series
    // points 1 and then 2.
    Rec r({0, 1, 2, 3, 4, 3, 2, 1, 0});
    Out a(s.GetExtrema(r.p, 5, 0, 1));
    ASSERT_NE(a.p, nullptr);
    EXPECT_EQ(a.col(&XY::x), (std::vector<double>{1, 1, 2, 5, 9}));
    EXPECT_EQ(a.col(&XY::y), (std::vector<double>{0, 0, 1, 4, 0}));
    EXPECT_EQ(a.col(&XY::w), (std::vector<double>{1, 1, 2, 5, 9}));
    // The target is limited by the series length.
    Out b(s.GetExtrema(r.p, 1000, 0, 1));
    ASSERT_NE(b.p, nullptr);
    EXPECT_LE(b.n(), 9);
    // Nothing to start from and no ends: null.
    Rec mono({1, 2, 3, 4});
    EXPECT_EQ(s.GetExtrema(mono.p, 4, 0, 0), nullptr);
}
