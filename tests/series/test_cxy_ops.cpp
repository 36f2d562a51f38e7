// Tests of the CXY operations beyond the core: order, selection, activity,
// statistics and the text dumps.
#include "oscilla/series/cxy.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cstddef>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

using oscilla::CXY;
using oscilla::XY;
using oscilla::XYSTATS;
using V = std::vector<double>;

namespace {

const double kRogue = -777.25;

// Frees every distinct record handed to it when the test ends.
struct Pool {
    std::vector<XY *> v;
    XY *operator()(XY *p)
    {
        if (p && std::find(v.begin(), v.end(), p) == v.end())
            v.push_back(p);
        return p;
    }
    ~Pool()
    {
        for (XY *p : v)
            std::free(p);
    }
};

// A malloc'd record of n points with one guard element past the end.
XY *make(int n)
{
    XY *r = static_cast<XY *>(std::calloc(static_cast<size_t>(n) + 2, sizeof(XY)));
    r[0].x = n;
    r[n + 1].x = r[n + 1].y = r[n + 1].w = kRogue;
    r[n + 1].flag = 99;
    return r;
}

XY *make(const V &x, const V &y, const std::vector<int> &flag = {})
{
    const int n = static_cast<int>(x.size());
    XY *r = make(n);
    for (int i = 1; i <= n; i++) {
        r[i].x = x[i - 1];
        r[i].y = y[i - 1];
        r[i].flag = flag.empty() ? 0 : static_cast<signed char>(flag[i - 1]);
    }
    return r;
}

bool guard_intact(const XY *r, int n)
{
    return r[n + 1].x == kRogue && r[n + 1].y == kRogue && r[n + 1].w == kRogue && r[n + 1].flag == 99;
}

int count(const XY *r) { return static_cast<int>(r[0].x); }

// One field of points 1..N.
V col(const XY *r, double XY::*f)
{
    V v;
    for (int i = 1; i <= count(r); i++)
        v.push_back(r[i].*f);
    return v;
}

std::string bytes(const XY &p) { return std::string(reinterpret_cast<const char *>(&p), sizeof(XY)); }

std::string read_file(const std::string &path)
{
    std::ifstream f(path, std::ios::binary);
    std::ostringstream s;
    s << f.rdbuf();
    return s.str();
}

// Lagrange interpolation through the points nb[0..k-1] of (x, y) in long double.
template <class X, class Y>
long double lagrange(X x, Y y, const int *nb, int k, long double t)
{
    long double p = 0;
    for (int a = 0; a < k; a++) {
        long double l = y(nb[a]);
        for (int b = 0; b < k; b++)
            if (b != a)
                l *= (t - x(nb[b])) / ((long double)x(nb[a]) - x(nb[b]));
        p += l;
    }
    return p;
}

} // namespace

// Ties and inactive points: every door must give a monotone key, move whole
// points (a permutation of the 32-byte elements) and leave header and guard alone.
TEST(CxyOrder, SortsAreWholePointPermutationsWithTies)
{
    struct Door {
        void (*sort)(XY *);
        double XY::*key;
        bool asc;
    };
    const Door doors[] = {{CXY::SortIncX, &XY::x, true},  {CXY::SortDecX, &XY::x, false},
                          {CXY::SortIncY, &XY::y, true},  {CXY::SortDecY, &XY::y, false},
                          {CXY::SortIncW, &XY::w, true},  {CXY::SortDecW, &XY::w, false}};
    auto points = [](const XY *r, int n) {
        std::vector<std::string> v;
        for (int i = 1; i <= n; i++)
            v.push_back(bytes(r[i]));
        std::sort(v.begin(), v.end());
        return v;
    };
    std::mt19937 rng(7);
    for (int n : {1, 2, 3, 17, 200}) {
        for (const Door &d : doors) {
            Pool P;
            XY *r = P(make(n));
            r[0].y = 3.5;
            r[0].flag = 32;
            for (int i = 1; i <= n; i++) {
                r[i].x = static_cast<double>(rng() % 5); // many ties
                r[i].y = static_cast<double>(rng() % 4) - 1.5;
                r[i].w = static_cast<double>(rng() % 3);
                r[i].flag = static_cast<signed char>((rng() % 3 == 0) ? 42 : 0);
                r[i].reps = static_cast<unsigned char>(i);
            }
            const std::vector<std::string> before = points(r, n);
            const std::string hdr = bytes(r[0]);
            d.sort(r);
            for (int i = 1; i < n; i++)
                EXPECT_TRUE(d.asc ? r[i].*d.key <= r[i + 1].*d.key : r[i].*d.key >= r[i + 1].*d.key) << i;
            EXPECT_EQ(before, points(r, n));
            EXPECT_EQ(hdr, bytes(r[0]));
            EXPECT_TRUE(guard_intact(r, n));
        }
    }
}

TEST(CxyOrder, WorkerSortsBisectionGapsAndSwaps)
{
    Pool P;
    XY *q = P(make({9, 8, 7, 6, 5, 4, 3}, V(7, 0.0)));
    CXY::xaqsr(3, 5, q); // only its range
    EXPECT_EQ(col(q, &XY::x), (V{9, 8, 5, 6, 7, 4, 3}));
    CXY::xaqsr(0, 50, q); // clamped to the record
    EXPECT_EQ(col(q, &XY::x), (V{3, 4, 5, 6, 7, 8, 9}));
    EXPECT_TRUE(guard_intact(q, 7));

    XY *r = P(make({1, 2, 3, 4, 5, 6}, {60, 50, 40, 30, 20, 10}));
    for (int k = 1; k <= 6; k++)
        EXPECT_EQ(CXY::BisecX(r, k), k - 1); // equal value gives the index before
    EXPECT_EQ(CXY::BisecX(r, 3.5), 3);
    EXPECT_EQ(CXY::BisecX(r, 100), 6);
    EXPECT_EQ(CXY::BisecY(r, 35), 3); // descending y: last index with y >= v
    EXPECT_EQ(CXY::BisecY(r, 5), 6);
    // Exactly-42 ends are skipped, 43 is not; the answer is first - 1 when none is less.
    r[1].flag = r[2].flag = 42;
    EXPECT_EQ(CXY::BisecX(r, 0.5), 2);
    EXPECT_EQ(CXY::BisecX(r, 4.5), 4);
    r[1].flag = 43;
    EXPECT_EQ(CXY::BisecX(r, 0.5), 0);
    for (int i = 1; i <= 6; i++)
        r[i].flag = 42;
    const int k = CXY::BisecX(r, 3.5); // all inactive: must stay inside the record
    EXPECT_TRUE(k >= 0 && k <= 6) << k;

    XY *g = P(make({0, 1, 3, 5, 5.5}, {1, 2, 3, 4, 5}));
    EXPECT_EQ(CXY::LargestXDelta(g), 2); // gaps 1, 2, 2, 0.5: first of the equal ones
    EXPECT_EQ(CXY::LargestXDelta(P(make({5, 4, 4, 1}, V(4, 0.0)))), 0);
    g[3].w = 9;
    CXY::ReverseXY(g);
    CXY::ReverseYW(g); // x <- y, y <- w, w <- x
    EXPECT_EQ(g[3].x, 3);
    EXPECT_EQ(g[3].y, 9);
    EXPECT_EQ(g[3].w, 3);
    EXPECT_TRUE(guard_intact(g, 5));
}

TEST(CxySelect, SegmentByRangeAndByChunk)
{
    Pool P;
    XY *r = P(make({3, 1, 2, 5, 4}, {30, 10, 20, 50, 40}, {0, 42, 0, 0, 0}));
    r[0].y = 7;
    XY *all = P(CXY::Segment(r, 3, 4)); // covers x[1] and x[N]: plain duplicate with header
    ASSERT_NE(all, nullptr);
    EXPECT_EQ(std::memcmp(all, r, 6 * sizeof(XY)), 0);
    XY *s = P(CXY::Segment(r, 1, 3)); // in record order, flags ignored, bare header
    EXPECT_EQ(col(s, &XY::x), (V{3, 1, 2}));
    EXPECT_EQ(s[0].y, 0.0);
    EXPECT_EQ(s[2].flag, 42);

    XY *big = P(make(30));
    for (int i = 1; i <= 30; i++)
        big[i].x = i;
    CXY c(big);
    EXPECT_EQ(c.Segment(2, 10), nullptr); // 21 + 10 > 30: refused although 21..30 exist
    XY *w = c.Segment(1, 10);
    ASSERT_NE(w, nullptr);
    EXPECT_EQ(count(w), 10);
    EXPECT_EQ(w[1].x, 11);
    EXPECT_EQ(w[10].x, 20);
    EXPECT_EQ(c.Segment(0, 10), w); // same count: the block is reused
    EXPECT_EQ(w[1].x, 1);
    EXPECT_EQ(c.Segment(0, 31), nullptr);
    EXPECT_EQ(c.Segment(0, 4)[4].x, 4);
    EXPECT_EQ(CXY().Segment(0, 1), nullptr);
}

TEST(CxySelect, LimitByKeepsExtremesInXOrder)
{
    Pool P;
    const V x = {10, 9, 8, 7, 6, 5, 4, 3, 2, 1}, y = {5, 1, 9, 3, 7, 2, 8, 0, 6, 4};
    XY *r = P(make(x, y));
    EXPECT_EQ(CXY::LimitByDecY(r, 5, 0), r);
    ASSERT_EQ(count(r), 5);
    for (int i = 2; i <= 5; i++)
        EXPECT_LT(r[i - 1].x, r[i].x);
    V kept = col(r, &XY::y);
    std::sort(kept.begin(), kept.end());
    EXPECT_EQ(kept, (V{5, 6, 7, 8, 9}));

    r = P(make(x, y));
    for (int i = 1; i <= 10; i++)
        r[i].w = y[i - 1];
    XY *c = P(CXY::LimitByIncW(r, 3, 1));
    ASSERT_NE(c, r);
    EXPECT_EQ(col(r, &XY::x), x); // the source is untouched
    ASSERT_EQ(count(c), 3);
    EXPECT_EQ(c[1].w + c[2].w + c[3].w, 0 + 1 + 2);
    EXPECT_EQ(CXY::LimitByDecW(r, 10, 0), r); // maxn >= N: unchanged
    EXPECT_EQ(col(r, &XY::x), x);
}

TEST(CxySelect, RemoveAdjacentKeepsHighestAndMovesReference)
{
    Pool P;
    XY *r = P(make({1, 1, 2, 2.5, 3, 10}, {5, 7, 1, 9, 8, 2}));
    XY *z = P(CXY::RemoveAdjacent(r, 0)); // only equal x merge
    EXPECT_EQ(col(z, &XY::x), (V{1, 2, 2.5, 3, 10}));
    EXPECT_EQ(z[1].y, 7);
    // dist 1: 1,1,2 merge (keep 7 at x=1); 2.5 is 1.5 away from 1 -> new; 3 merges into 2.5 (9 stays)
    XY *m = P(CXY::RemoveAdjacent(r, 1));
    EXPECT_EQ(col(m, &XY::x), (V{1, 2.5, 10}));
    EXPECT_EQ(m[1].y, 7);
    // A higher neighbour moves the reference: 0 (1), 0.8 (2) -> ref 0.8, 1.6 (3) merges too.
    EXPECT_EQ(col(P(CXY::RemoveAdjacent(P(make({0, 0.8, 1.6}, {1, 2, 3})), 1)), &XY::x), V{1.6});
}

TEST(CxyAverage, AvgReplicates)
{
    Pool P;
    XY *r = P(make({1, 1, 2}, {2, 4, 7}));
    r[1].w = 0.5;
    r[2].w = 0.25;
    r[3].w = 3;
    XY *a = P(CXY::AvgReplicates(r, 0, 0));
    EXPECT_EQ(col(a, &XY::y), (V{3, 7}));
    EXPECT_EQ(a[1].w, 0.75);
    EXPECT_EQ(a[1].flag, 32);
    EXPECT_EQ(a[0].w, 1.0);

    // No replicates: header w untouched; keepfour falls back on the input's ends.
    XY *s = P(make({1, 2, 3}, {1, 2, 3}, {42, 0, 0}));
    XY *k = P(CXY::AvgReplicates(s, 1, 1));
    EXPECT_EQ(col(k, &XY::x), (V{1, 2, 2, 3}));
    EXPECT_EQ(k[0].w, 0.0);
    for (int i = 1; i <= 4; i++)
        EXPECT_EQ(k[i].flag, 0);
    EXPECT_EQ(col(P(CXY::AvgReplicates(s, 1, 0)), &XY::x), (V{2, 3})); // the inactive point is dropped
    CXY obj(s);
    XY *d = obj.ActiveDiscrete();
    ASSERT_NE(d, nullptr);
    EXPECT_EQ(count(d), 2);
    EXPECT_EQ(obj.GetXYp(), d);
}

TEST(CxyAverage, AvgReplSD)
{
    Pool P;
    CXY o;
    int nrepl = -1, nrem = -1, nsing = -1;
    XY *a = P(o.AvgReplSD(P(make({1, 1}, {3, 3})), 0, nrepl, nrem, nsing));
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(count(a), 1);
    EXPECT_EQ(a[1].w, 1.0);
    EXPECT_EQ(a[1].reps, 2);
    EXPECT_EQ(a[0].reps, 192);
    EXPECT_EQ(a[0].w, 1.0);
    EXPECT_EQ((std::vector<int>{nrepl, nrem, nsing}), (std::vector<int>{1, 0, 1}));

    // x equal only in single precision still forms a run; the inactive point is packed away.
    XY *s = P(make({0.5, 2, 2.0 + 1e-12, 2, 4, 9}, {1, 2, 5, 11, 8, 100}, {0, 0, 0, 0, 0, 42}));
    a = P(o.AvgReplSD(s, 1, nrepl, nrem, nsing));
    ASSERT_NE(a, nullptr);
    EXPECT_EQ((std::vector<int>{nrepl, nrem, nsing}), (std::vector<int>{1, 1, 2}));
    EXPECT_EQ(col(a, &XY::x), (V{0.5, 2, 4})); // x of the run's last point
    EXPECT_EQ(a[1].reps, 1);
    EXPECT_EQ(a[1].w, 1.0);
    EXPECT_EQ(a[1].flag, 32);
    EXPECT_EQ(a[2].y, 6);
    const double var = ((2 - 6.0) * (2 - 6.0) + (5 - 6.0) * (5 - 6.0) + (11 - 6.0) * (11 - 6.0)) / 2.0;
    EXPECT_NEAR(a[2].w, 1.0 / var, 4 * DBL_EPSILON / var);
    EXPECT_EQ(a[2].reps, 3);
    // In double precision those x differ, so AvgReplicates keeps all five active points.
    EXPECT_EQ(count(P(CXY::AvgReplicates(s, 1, 0))), 5);

    // No replicate: null, or the packed copy if one was made.
    XY *u = P(make({1, 2, 3}, {1, 2, 3}));
    EXPECT_EQ(o.AvgReplSD(u, 1, nrepl, nrem, nsing), nullptr);
    u[2].flag = 42;
    XY *p = P(o.AvgReplSD(u, 1, nrepl, nrem, nsing));
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(count(p), 2);
    EXPECT_EQ(nrem, 1);
    CXY own(u); // a null record means pxy
    EXPECT_EQ(count(P(own.AvgReplSD(nullptr, 1, nrepl, nrem, nsing))), 2);
}

TEST(CxyAverage, SumExtRefAndFnData)
{
    Pool P;
    XY *a = P(make({1, 2, 3}, {1, 5, 2})), *b = P(make({1, 2, 3}, {3, 5, 4})), *c = P(make({1, 2, 3}, {8, 5, 0}));
    XY *list3[] = {a, b, c, nullptr};
    XY *s = P(CXY::SumExtRef(list3));
    ASSERT_EQ(count(s), 3);
    EXPECT_EQ(s[0].w, 1.0);
    EXPECT_EQ(s[0].reps, 192);
    EXPECT_EQ(s[0].y, 0.0);
    // Point 1: mean 4, sample variance ((1-4)^2 + (3-4)^2 + (8-4)^2) / 2 = 13.
    EXPECT_DOUBLE_EQ(s[1].y, 4);
    EXPECT_DOUBLE_EQ(s[1].w, 1.0 / 13);
    EXPECT_EQ(s[2].w, 0.0); // no spread: inverse variance 0
    EXPECT_EQ(s[3].reps, 3);
    XY *list1[] = {b, nullptr};
    s = P(CXY::SumExtRef(list1));
    EXPECT_EQ(s[3].y, 4);
    EXPECT_EQ(s[0].w, 0.0);
    EXPECT_EQ(CXY::SumExtRef(nullptr), nullptr);

    XY *f = P(CXY::FnData([](double x) { return x > 0.5 ? -12345.6789 : 2 * x; }, 0.1, 0.7, 7));
    ASSERT_EQ(count(f), 7);
    EXPECT_EQ(f[1].x, 0.1);
    EXPECT_EQ(f[7].x, 0.7);
    EXPECT_NEAR(f[3].x, 0.3, 2 * DBL_EPSILON);
    EXPECT_NEAR(f[3].y, 0.6, 4 * DBL_EPSILON);
    EXPECT_EQ(f[7].y, 0.0);
    CXY::ScaleY(f, -2);
    EXPECT_NEAR(f[3].y, -1.2, 8 * DBL_EPSILON);
}

TEST(CxyActivity, FlagsTestsAndAssureActive)
{
    Pool P;
    XY *r = P(make({1, 2, 3, 4, 5, 6}, V(6, 0.0), {42, 43, 40, 0, 106, 42}));
    EXPECT_EQ(CXY::IsInactive(r), 1);
    XY *q = P(make({1, 2}, {0, 0}, {40, 1}));
    EXPECT_EQ(CXY::IsInactive(q), 0);
    EXPECT_EQ(CXY::IsReplicate(q), 0);
    q[2].x = 1 + 1e-10; // equal as floats
    EXPECT_EQ(CXY::IsReplicate(q), 1);

    CXY o(r);
    // Active: 40 and 0, so 2 of the 5 needed are there; 3 short: 2 from the front, 1 from the end.
    EXPECT_EQ(o.AssureActive(r, 5), 0);
    const int want[] = {0, 1, 40, 0, 106, 0};
    for (int i = 1; i <= 6; i++)
        EXPECT_EQ(r[i].flag, want[i - 1]) << i;
    EXPECT_EQ(o.AssureActive(r, 5), 1);
    EXPECT_EQ(o.AssureActive(nullptr, 1), 0); // null means xyp, of which there is none
    o.Dup();
    for (int i : {1, 2, 4, 6})
        o.GetXYp()[i].flag = 42;
    EXPECT_EQ(o.AssureActive(nullptr, 6), 0);
    EXPECT_EQ(o.GetXYp()[1].flag, 0); // the copy changed ...
    EXPECT_EQ(r[1].flag, 0);         // ... and pxy only through the earlier call
}

TEST(CxyActivity, SaveRestoreCopyIncl)
{
    Pool P;
    XY *r = P(make({1, 2, 3, 4}, V(4, 0.0), {0, 42, 32, 0}));
    r[0].flag = 32;
    CXY o(r);
    o.SaveIncl(nullptr);
    EXPECT_EQ(o.inclcnt, 4);
    for (int i = 0; i <= 4; i++)
        r[i].flag = 7;
    o.RestoreIncl(nullptr);
    EXPECT_EQ(r[0].flag, 32);
    EXPECT_EQ(r[2].flag, 42);
    r[2].flag = 0;
    o.RestoreIncl(r); // can be restored again
    EXPECT_EQ(r[2].flag, 42);
    XY *shortr = P(make({1, 2}, {0, 0}));
    o.RestoreIncl(shortr);
    EXPECT_TRUE(guard_intact(shortr, 2));

    o.CopyIncl(nullptr, P(make({1, 2, 3}, V(3, 0.0), {1, 3, 32}))); // into pxy, over the 3 common points
    const int want[] = {42, 42 | 2, 32, 0};
    for (int i = 1; i <= 4; i++)
        EXPECT_EQ(r[i].flag, want[i - 1]) << i;
    EXPECT_EQ(CXY::IsInactive(r), 1);
}

TEST(CxyMeasure, SpacingAreaPower)
{
    Pool P;
    V x;
    for (int i = 0; i < 10; i++)
        x.push_back(i * 1.0 + (i == 5 ? 0.0004 : 0.0));
    XY *r = P(make(x, V(10, 1.0)));
    CXY o;
    EXPECT_DOUBLE_EQ(o.XSpacing(r), 9.0 / 9);
    EXPECT_EQ(r[0].flag & 96, 32);
    r[6].x += 0.002; // gaps of 1.0024 and 0.9976: outside 0.1 percent
    r[0].flag = 64 | 8;
    o.XSpacing(r);
    EXPECT_EQ(r[0].flag, 64 | 8);
    r[0].flag = 32; // the known-uniform bit skips the scan ...
    o.XSpacing(r);
    EXPECT_EQ(r[0].flag, 32);
    EXPECT_EQ(CXY::IsUniformX(r, 0.001), 0); // ... but IsUniformX always scans
    EXPECT_EQ(r[0].flag, 64);
    EXPECT_EQ(CXY::IsUniformX(r, 0.01), 1);
    EXPECT_EQ(r[0].flag, 32);

    CXY own(P(make({0, 1, 2}, {1, 1, 1})));
    EXPECT_EQ(own.Area(nullptr), 2);
    EXPECT_EQ(own.Power(nullptr), 3);

    // Area is the trapezoid rule; Power the same on y^2 plus half an end gap at either end.
    std::mt19937 rng(3);
    std::uniform_real_distribution<double> u(0.1, 1.0);
    XY *v = P(make(50));
    long double trap = 0, trap2 = 0, xv = 0;
    for (int i = 1; i <= 50; i++) {
        xv += u(rng);
        v[i].x = static_cast<double>(xv);
        v[i].y = u(rng) - 0.5;
        if (i > 1) {
            trap += 0.5L * (v[i].x - v[i - 1].x) * ((long double)v[i].y + v[i - 1].y);
            trap2 += 0.5L * (v[i].x - v[i - 1].x) * ((long double)v[i].y * v[i].y + (long double)v[i - 1].y * v[i - 1].y);
        }
    }
    trap2 += 0.5L * (v[2].x - v[1].x) * v[1].y * v[1].y + 0.5L * (v[50].x - v[49].x) * v[50].y * v[50].y;
    EXPECT_NEAR(o.Area(v), static_cast<double>(trap), 50 * 50 * DBL_EPSILON);
    EXPECT_NEAR(o.Power(v), static_cast<double>(trap2), 50 * 50 * DBL_EPSILON);
}

// Weighted least squares against the closed-form normal equations in long double.
TEST(CxyStats, XYStatsAgainstWeightedLeastSquares)
{
    Pool P;
    std::mt19937 rng(11);
    std::uniform_real_distribution<double> u(0, 1);
    const int n = 40;
    XY *r = P(make(n));
    for (int i = 1; i <= n; i++) {
        r[i].x = 0.3 * i + u(rng);
        r[i].y = 2.5 - 0.7 * r[i].x + (u(rng) - 0.5);
        r[i].w = (i % 5 == 0) ? 0.0 : 0.5 + u(rng);
        r[i].flag = (i % 7 == 0) ? 42 : (i % 11 == 0 ? 43 : 0);
    }
    XYSTATS st;
    CXY::XYStats(r, &st, 1);
    long double S = 0, Sx = 0, Sy = 0, Sxx = 0, Sxy = 0;
    int m = 0;
    for (int i = 1; i <= n; i++) {
        if (i % 7 == 0)
            continue; // exactly 42; 43 counts
        EXPECT_NE(r[i].w, 0.0); // zero weights replaced in the record
        const long double w = r[i].w;
        S += w;
        Sx += w * r[i].x;
        Sy += w * r[i].y;
        Sxx += w * r[i].x * r[i].x;
        Sxy += w * r[i].x * r[i].y;
        m++;
    }
    const long double b = (S * Sxy - Sx * Sy) / (S * Sxx - Sx * Sx);
    const long double a = (Sy - b * Sx) / S;
    long double sse = 0, ssm = 0;
    for (int i = 1; i <= n; i++) {
        if (i % 7 == 0)
            continue;
        const long double e = r[i].y - a - b * r[i].x, dm = r[i].y - Sy / S;
        sse += r[i].w * e * e;
        ssm += r[i].w * dm * dm;
    }
    const long double scale = m / S; // weights rescaled to sum to the point count
    const double tol = n * 64 * DBL_EPSILON;
    EXPECT_EQ(st.n, m);
    EXPECT_NEAR(st.slope, static_cast<double>(b), tol);
    EXPECT_NEAR(st.intercept, static_cast<double>(a), tol * 10);
    EXPECT_NEAR(st.sse, static_cast<double>(scale * sse), tol * 100);
    EXPECT_NEAR(st.ssm, static_cast<double>(scale * ssm), tol * 100);
    EXPECT_NEAR(st.xmean, static_cast<double>(Sx / S), tol);
    EXPECT_NEAR(st.ysd, std::sqrt(static_cast<double>(ssm / (S - 1))), tol);
    EXPECT_DOUBLE_EQ(st.sumw, static_cast<double>(S));

    // Stride 2 sees exactly the odd points: the same as a record made of them.
    XY *odd = P(make((n + 1) / 2));
    for (int i = 1; i <= n; i += 2)
        odd[(i + 1) / 2] = r[i];
    XYSTATS st2, sto;
    CXY::XYStats(r, &st2, 2);
    CXY::XYStats(odd, &sto, 1);
    EXPECT_EQ(st2.n, sto.n);
    const size_t off = offsetof(XYSTATS, xmean);
    EXPECT_EQ(std::memcmp(reinterpret_cast<char *>(&st2) + off, reinterpret_cast<char *>(&sto) + off, sizeof(XYSTATS) - off), 0);

    // A flat x gives D = 0; nothing left gives a zeroed block.
    XY *flat = P(make({2, 2, 2}, {1, 2, 6}));
    CXY::XYStats(flat, &st, 1);
    EXPECT_EQ(st.slope, 0.0);
    EXPECT_EQ(st.sse, st.ssm);
    EXPECT_DOUBLE_EQ(st.ssm, 14.0);
    for (int i = 1; i <= 3; i++)
        flat[i].flag = 42;
    CXY::XYStats(flat, &st, 1);
    EXPECT_EQ(st.n, 0);
    EXPECT_EQ(st.xmean, 0.0);
}

// Only the members that say so fall back on pxy; the others leave it alone.
TEST(CxyNull, DefaultsOnlyWhereDocumented)
{
    Pool P;
    XY *r = P(make({1, 2, 3, 4, 5, 6}, {3, 1, 4, 1, 5, 9}, {42, 0, 0, 0, 0, 0}));
    XY *copy = P(make({1, 2, 3, 4, 5, 6}, {3, 1, 4, 1, 5, 9}, {42, 0, 0, 0, 0, 0}));
    CXY o(r);
    EXPECT_EQ(o.SSM(nullptr), o.SSM(copy));
    EXPECT_EQ(o.Area(nullptr), o.Area(copy));
    EXPECT_EQ(o.UniNoise(nullptr), o.UniNoise(copy));
    EXPECT_EQ(o.ComputeSSM(nullptr, 0), o.ComputeSSM(copy, 0));
    o.XSpacing(nullptr);
    EXPECT_EQ(r[0].flag, 32);
    EXPECT_EQ(o.ClearInactive(nullptr), 5);
    r[0].x = 6;
    r[1].flag = 42;
    EXPECT_EQ(CXY::IsInactive(nullptr), 0);
    EXPECT_EQ(CXY::LimitByDecY(nullptr, 2, 0), nullptr);
    EXPECT_EQ(CXY::AvgReplicates(nullptr, 1, 1), nullptr);
    EXPECT_EQ(CXY::Segment(nullptr, 0, 1), nullptr);
    EXPECT_EQ(CXY::RemoveAdjacent(nullptr, 1), nullptr);
    CXY::SortDecY(nullptr);
    EXPECT_EQ(r[1].flag, 42);
    EXPECT_EQ(r[0].x, 6);
}

TEST(CxyStats, SumsOfSquaresAndMoments)
{
    Pool P;
    XY *r = P(make({1, 2, 3, 4}, {1, 2, 4, 9}, {0, 42, 43, 0}));
    r[1].w = 2;
    r[3].w = -1; // not positive: weight 1
    r[4].w = 1;
    CXY o(r);
    EXPECT_DOUBLE_EQ(o.SSM(nullptr), 102 - 256.0 / 4);
    // Points 1, 3, 4 with weights 2, 1, 1: W = 4, n = 3.
    const double swy = 2 + 4 + 9, swy2 = 2 + 16 + 81;
    EXPECT_DOUBLE_EQ(o.ComputeSSM(nullptr, 1), 3.0 / 4 * (swy2 - swy * swy / 4));
    EXPECT_DOUBLE_EQ(o.ComputeSSM(r, 0), 1 + 16 + 81 - 14.0 * 14 / 3);

    EXPECT_EQ(o.SSE(r, P(make({1, 2}, {0, 5}))), 1 + 9);
    EXPECT_EQ(o.SSE(nullptr, static_cast<XY *>(nullptr)), 0.0); // no xyp yet
    o.Dup();
    o.GetXYp()[4].y = 7;
    EXPECT_EQ(o.SSE(nullptr, static_cast<XY *>(nullptr)), 4);
    EXPECT_EQ(o.SSE(r, [](double x) { return x * x; }), 0 + 4 + 25 + 49);

    double m, sd;
    CXY::Std(1, 5, 25, m, sd);
    EXPECT_EQ(V({m, sd}), (V{5, 5}));
    CXY::Std(4, 16, 102, m, sd);
    EXPECT_EQ(m, 4);
    EXPECT_DOUBLE_EQ(sd, std::sqrt(38.0 / 3));
    // Inverse variance from {n, sum, sum of squares}: 0 for one point or no spread.
    for (const V &c : {V{1, 5, 25, 0}, V{3, 6, 12, 0}, V{4, 16, 102, 3.0 / 38}}) {
        CXY::IVar(static_cast<int>(c[0]), c[1], c[2], m, sd);
        EXPECT_DOUBLE_EQ(sd, c[3]) << c[0];
    }
}

TEST(CxyStats, PolintNeville)
{
    // A cubic is reproduced exactly; compare with the Lagrange form in long double.
    double xa[5] = {kRogue, 0.5, 1.25, 2.0, 3.5};
    double ya[5] = {kRogue, 0, 0, 0, 0};
    auto cubic = [](long double x) { return 1.5L - 2 * x + 0.25L * x * x * x; };
    for (int i = 1; i <= 4; i++)
        ya[i] = static_cast<double>(cubic(xa[i]));
    const int nb[12] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    for (double x : {-1.0, 0.5, 0.9, 1.7, 3.0, 4.2}) {
        const long double lag = lagrange([&](int i) { return xa[i]; }, [&](int i) { return ya[i]; }, nb, 4, x);
        EXPECT_NEAR(CXY::polint(xa, ya, 4, x, 0), static_cast<double>(lag), 64 * DBL_EPSILON * (1 + std::fabs((double)lag)));
    }
    // Longer than the fixed work arrays: 12 Chebyshev nodes.
    V X(13), Y(13);
    for (int i = 1; i <= 12; i++) {
        X[i] = std::cos(3.141592653589793 * (2 * i - 1) / 24);
        Y[i] = std::exp(X[i]) * std::sin(3 * X[i]);
    }
    for (double t = -0.95; t < 1.0; t += 0.21) {
        const long double lag = lagrange([&](int i) { return X[i]; }, [&](int i) { return Y[i]; }, nb, 12, t);
        EXPECT_NEAR(CXY::polint(X.data(), Y.data(), 12, t, 0), (double)lag, 1e3 * DBL_EPSILON) << t;
    }
    // Clamp to the range of the four values, whatever n.
    EXPECT_EQ(CXY::polint(xa, ya, 4, 6.0, 1), *std::max_element(ya + 1, ya + 5));
    EXPECT_EQ(CXY::polint(xa, ya, 4, -5.0, 1), *std::min_element(ya + 1, ya + 5)); // the cubic gives -19.75 there
    EXPECT_NEAR(CXY::polint(xa, ya, 4, 3.0, 1), static_cast<double>(cubic(3.0L)), 64 * DBL_EPSILON);
    double xl[5] = {0, 0, 1, 7, 8}, yl[5] = {0, 0, 1, 5, -5};
    EXPECT_DOUBLE_EQ(CXY::polint(xl, yl, 2, 3.0, 1), 3.0);
    EXPECT_DOUBLE_EQ(CXY::polint(xl, yl, 2, 10.0, 1), 5.0);
    EXPECT_DOUBLE_EQ(CXY::polint(xl, yl, 2, 10.0, 0), 10.0);
    // Coincident abscissae: the mean of the four.
    double xb[5] = {0, 1, 2, 2, 3}, yb[5] = {0, 1, 2, 6, 3};
    EXPECT_EQ(CXY::polint(xb, yb, 4, 2.5, 0), 3.0);
}

TEST(CxyStats, NoiseEstimates)
{
    Pool P;
    CXY none;
    EXPECT_EQ(none.UniNoise(nullptr), 0.0);
    EXPECT_EQ(none.GaussNoise(nullptr), 0.0);
    XY *four = P(make({1, 2, 3, 4}, {1, 5, 2, 8}));
    EXPECT_EQ(none.GaussNoise(four), 0.0);
    EXPECT_EQ(none.UniNoise(four), 0.0);

    // Leave-one-out residuals recomputed by the Lagrange cubic in long double.
    std::mt19937 rng(5);
    std::uniform_real_distribution<double> u(-1, 1);
    const int n = 60;
    XY *r = P(make(n));
    for (int i = 1; i <= n; i++) {
        r[i].x = i + 0.3 * u(rng);
        r[i].y = std::sin(0.2 * i) + 0.1 * u(rng);
    }
    long double sabs = 0, ssq = 0, sy = 0, sy2 = 0, maxy = 0;
    const int c = n - 4;
    for (int i = 3; i <= n - 2; i++) {
        const int nb[4] = {i - 2, i - 1, i + 1, i + 2};
        const long double res =
            r[i].y - lagrange([&](int j) { return r[j].x; }, [&](int j) { return r[j].y; }, nb, 4, r[i].x);
        sabs += std::fabs(res);
        ssq += res * res;
        sy += r[i].y;
        sy2 += (long double)r[i].y * r[i].y;
        maxy = std::max(maxy, std::fabs((long double)r[i].y));
    }
    const double uni = static_cast<double>(3.890323139103122L * 100 * sabs / (c * maxy));
    EXPECT_NEAR(none.UniNoise(r), uni, uni * 1e3 * DBL_EPSILON);

    const long double v = (c * sy2 - sy * sy) / ((c - 1.0L) * c);
    const long double a = std::min(1.1L, (sabs / c) / std::sqrt(v));
    const long double b = std::sqrt(std::min(2.0L, (ssq / c) / v));
    const long double p1[8] = {4289.553675700584L, -11549.48614715645L, 11703.52516751066L, -5304.260114274041L,
                               994.2354162728265L, -6.845218480868838L, 79.90137359331042L, 0.335521575829068L};
    const long double p2[8] = {1112.112147884841L, -4024.399173679832L, 5666.2530685807L,  -3841.8100368794L,
                               1295.010930714868L, -184.2245285267929L, 80.12153279479253L, 0.01695537426861433L};
    long double e1 = 0, e2 = 0;
    for (int k = 0; k < 8; k++) {
        e1 += p1[k] * std::pow(a, 7 - k);
        e2 += p2[k] * std::pow(b, 7 - k);
    }
    const double gauss = static_cast<double>(std::max(0.0L, (e1 + e2) / 2));
    EXPECT_GT(gauss, 0.0);
    EXPECT_NEAR(none.GaussNoise(r), gauss, 1e-9 * (1 + gauss));

    // Exact cubic data: zero residuals give the polynomials' constant terms.
    for (int i = 1; i <= n; i++)
        r[i].y = 0.001 * r[i].x * r[i].x * r[i].x - r[i].x;
    EXPECT_NEAR(none.UniNoise(r), 0.0, 1e-9);
    EXPECT_NEAR(none.GaussNoise(r), (0.335521575829068 + 0.01695537426861433) / 2, 1e-9);

    // Five points: c = 1, a zero spread; the caps still give a finite number.
    const double g5 = none.GaussNoise(P(make({1, 2, 3, 4, 5}, {0, 1, 5, 1, 0})));
    EXPECT_TRUE(std::isfinite(g5) && g5 >= 0.0) << g5;
}

TEST(CxyFiles, TextFormatsByteForByte)
{
    Pool P;
    XY *r = P(make({1.5, -0.25, 1.0 / 3}, {-2, 1e-20, 12345678.9}, {0, 42, 43}));
    r[1].w = 0.5;
    r[2].w = 2;
    r[3].w = -1e300;
    const std::string path = ::testing::TempDir() + "cxy_ops_dump.txt";
    auto pad = [](const std::string &s, int width, bool left) {
        const std::string fill(static_cast<size_t>(std::max(0, width - static_cast<int>(s.size()))), ' ');
        return left ? s + fill : fill + s;
    };
    const char *xs[] = {"1.5", "-0.25", "0.333333333333333"}, *xt[] = {"1.5", "-0.25", "0.33333333333333"};
    const char *ys[] = {"-2", "1e-20", "12345678.9"}, *ws[] = {"0.5", "2", "-1e+300"};
    const char marks[] = {' ', '*', '*'};
    // 0: ASCIIFile without w, 1: with w (only under the header mark), 2: ToFile.
    auto expected = [&](int form) {
        std::string want;
        for (int i = 0; i < 3; i++)
            want += form == 2 ? pad(xt[i], 22, false) + " " + pad(ys[i], 22, false) + "\n"
                              : pad(xs[i], 23, true) + " " + pad(ys[i], 23, true) + " " + marks[i] +
                                    (form ? " W" + pad(ws[i], 23, true) : "") + "\n";
        return want;
    };
    CXY o(r);
    ASSERT_EQ(o.ASCIIFile(nullptr, path.c_str()), 3);
    EXPECT_EQ(read_file(path), expected(0));
    r[0].w = 1.0;
    ASSERT_EQ(o.ASCIIFile(r, path.c_str()), 3);
    EXPECT_EQ(read_file(path), expected(1));
    ASSERT_EQ(CXY::ToFile(r, path.c_str()), 1);
    EXPECT_EQ(read_file(path), expected(2));
    std::remove(path.c_str());

    const std::string bad = ::testing::TempDir() + "no_such_dir_cxy/x.txt";
    EXPECT_EQ(o.ASCIIFile(r, bad.c_str()), 0);
    EXPECT_EQ(CXY::ToFile(r, bad.c_str()), 0);
    EXPECT_EQ(CXY().ASCIIFile(nullptr, path.c_str()), 0);
}
