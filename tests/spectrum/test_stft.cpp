#include "oscilla/spectrum/cfft.h"
#include "support/records.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>

using oscilla::CFFT;
using oscilla::XY;
using oscilla::XYZ;
using Series = records::Series;

namespace {
double Wave(int i) { return std::sin(0.05 * i) + 0.5 * std::sin(0.9 * i + 0.001 * i * i / 100); }
} // namespace

TEST(STFT, GridSizing)
{
    struct Case {
        int n, seglen;
        double overlap;
        int slices, per;
    } cases[] = {
        {20480, 2048, 0.0, 10, 1025},  // limit 1638: no grouping, 10250 points
        {103424, 2048, 50.0, 100, 146}, // limit 163: 1025/163 rounds up to 7, 146 per slice
        {16447, 64, 99.0, 4096, 4},     // limit 1: group 33 leaves 1 per slice, so 4 per slice and 4096 slices
    };
    for (const Case &c : cases) {
        Series r(c.n, Wave);
        CFFT f(r.p, 0, 0, 0, 0, 0.0, c.seglen, c.overlap, 0);
        XYZ *g = f.STFT(4);
        ASSERT_NE(g, nullptr);
        EXPECT_EQ(g[0].y, c.slices) << c.n;
        EXPECT_EQ(g[0].w, c.per) << c.n;
        EXPECT_EQ(g[0].x, double(c.slices) * c.per) << c.n;
        EXPECT_LE(g[0].x, 16384);
        // Slice after slice, frequency ascending within a slice.
        const int n = static_cast<int>(g[0].x);
        for (int i = 2; i <= n; i++) {
            if ((i - 1) % c.per != 0) {
                ASSERT_GT(g[i].y, g[i - 1].y) << i;
                ASSERT_EQ(g[i].x, g[i - 1].x);
            } else {
                ASSERT_GT(g[i].x, g[i - 1].x);
            }
        }
        EXPECT_EQ(g[n + 1].y, g[1].x); // trailer: first and last slice times
        EXPECT_EQ(g[n + 1].w, g[n].x);
    }
}

TEST(STFT, GroupsKeepTheLargestValueAndRescaleByNOverS)
{
    Series r(103424, Wave);
    CFFT f(r.p, 0, 0, 0, 0, 0.0, 2048, 50.0, 0);
    XY **pp = f.GetXYppFFT(4, 1, 1, 0); // the same per-segment values, in the other slot
    ASSERT_NE(pp, nullptr);
    XYZ *g = f.STFT(4);
    ASSERT_NE(g, nullptr);
    const double ratio = 103424.0 / 2048.0;
    for (int slice : {0, 57}) {
        for (int grp : {0, 10, 145}) {
            const XY *p = pp[slice];
            double zmax = -1, sx = 0;
            for (int i = 1 + 7 * grp; i < 1 + 7 * grp + 7; i++) {
                zmax = std::max(zmax, p[i].y);
                sx += p[i].x;
            }
            const XYZ &q = g[1 + slice * 146 + grp];
            EXPECT_NEAR(q.z, zmax * ratio, 1e-12 * zmax * ratio);
            EXPECT_NEAR(q.y, sx / 7, 1e-12);
        }
    }
}

TEST(STFT, DecibelsRelativeToTheLargestPoint)
{
    Series r(4000, Wave);
    CFFT f(r.p, 0, 0, 0, 0, 0.0, 256, 50.0, 0);
    XYZ *g = f.STFT(7);
    ASSERT_NE(g, nullptr);
    double top = -1e300;
    for (int i = 1; i <= g[0].x; i++)
        top = std::max(top, g[i].z);
    EXPECT_EQ(top, 0.0);
}

TEST(STFTGrid, RangeFloorsDecibelsOnlyWithinItsBounds)
{
    Series r(4000, Wave);
    CFFT f(r.p, 0, 0, 0, 0, 0.0, 256, 50.0, 0);
    auto span = [](XY **pp, double &lo, double &hi) {
        lo = 1e300;
        hi = -1e300;
        for (int j = 0; pp[j]; j++)
            for (int i = 1; i <= pp[j][0].x; i++) {
                lo = std::min(lo, pp[j][i].y);
                hi = std::max(hi, pp[j][i].y);
            }
    };
    double lo, hi;
    XY **pp = f.STFTGrid(6, 1, 60.0);
    ASSERT_NE(pp, nullptr);
    span(pp, lo, hi);
    EXPECT_GE(lo, hi - 60.0);
    EXPECT_EQ(lo, hi - 60.0); // this series reaches below the floor
    for (double range : {0.5, 200.0}) {
        span(f.STFTGrid(6, 1, range), lo, hi);
        EXPECT_LT(lo, hi - 60.0) << range;
    }
    // Grouped: means of groups, the slice's metadata behind the last group.
    XY **gp = f.STFTGrid(4, 8, 0.0);
    ASSERT_NE(gp, nullptr);
    XY **raw = f.GetXYppFFT(4, 1, 1, 0);
    EXPECT_EQ(gp[0][0].x, 16); // 129 bins, groups of 8
    EXPECT_NEAR(gp[2][3].y, [&] {
        double s = 0;
        for (int i = 17; i < 25; i++)
            s += raw[2][i].y;
        return s / 8;
    }(), 1e-15);
    EXPECT_EQ(gp[2][17].x, 256); // L, from the slice's metadata
    EXPECT_EQ(gp[0][18].y, f.GetFftCnt()); // the first record carries the slice count
}

TEST(STFTDataPower, SumsTheSquaresBetweenTwoTimes)
{
    Series r(
        100, [](int i) { return i % 2 ? 1.0 : -2.0; }, 0.5);
    CFFT f(r.p, 0, 0, 0, 0, 0.0, 20, 0.0, 0);
    EXPECT_EQ(f.STFTDataPower(11, 0.0, 4.5), 5 * 1.0 + 5 * 4.0);
    EXPECT_EQ(f.STFTDataPower(11, 100.0, 200.0), 0.0);
    EXPECT_DOUBLE_EQ(f.STFTDataPower(9, 0.0, 4.5), 25 * 0.5);
    EXPECT_DOUBLE_EQ(f.STFTDataPower(10, 0.0, 4.5), 25 / 100.0);
    EXPECT_DOUBLE_EQ(f.STFTDataPower(4, 0.0, 4.5), 25 * 0.5 * 20 / 100.0);
}

TEST(STFTPeaks, FollowTheRidgeOfAChirpSliceBySlice)
{
    const int N = 8192;
    const double f0 = 0.05, f1 = 0.4, k = (f1 - f0) / N;
    Series r(N, [&](int i) {
        const double t = i - 1;
        return std::sin(2 * M_PI * (f0 * t + 0.5 * k * t * t));
    });
    CFFT f(r.p, 0, 0, 0, 3, 0.0, 256, 50.0, 2);
    ASSERT_NE(f.STFT(4), nullptr);
    XYZ *pk = f.STFTPeaks(4, 2);
    ASSERT_NE(pk, nullptr);
    const int slices = f.GetFftCnt();
    ASSERT_EQ(slices, 63);
    ASSERT_GE(pk[0].x, slices);
    int checked = 0;
    double last_time = -1;
    for (int i = 1; i <= pk[0].x; i++) {
        if (pk[i].x == last_time)
            continue; // the second peak of a slice is weaker: the first one is the ridge
        last_time = pk[i].x;
        EXPECT_NEAR(pk[i].y, f0 + k * pk[i].x, 1.5 / 256) << "slice time " << pk[i].x;
        checked++;
    }
    EXPECT_EQ(checked, slices);
}

TEST(Noise, CachedForTheInputFreshForTheResultAndFormattedAsText)
{
    Series r(64, [](int i) { return std::sin(0.3 * i) + 0.01 * ((i * 37) % 11); });
    CFFT f(r.p, 0, 0, 0, 0, 0.0, 0, 0.0, 0);
    const double n0 = f.GetNoise(0);
    EXPECT_GT(n0, 0.0);
    r.p[5].y += 10.0; // the input's noise is cached: a changed record is not measured again
    EXPECT_EQ(f.GetNoise(0), n0);
    EXPECT_EQ(f.GetNoise(7), 0.0);
    char buf[64];
    EXPECT_EQ(f.GetStrNoise(nullptr, 0), nullptr);
    char want[64];
    std::snprintf(want, sizeof want, "%6.3f", n0);
    EXPECT_STREQ(f.GetStrNoise(buf, 0), want);
    EXPECT_STREQ(f.GetStrNoise(buf, -1), ""); // no result record: no ratio
    EXPECT_STREQ(f.GetStrNoise(buf, 5), "");
    Series q(64, [](int i) { return 0.5 * std::sin(0.3 * i) + 0.02 * ((i * 37) % 11); });
    f.xyp = q.p;
    const double n1 = f.GetNoise(1);
    std::snprintf(want, sizeof want, "(%.2f%%)", n1 / n0 * 100);
    EXPECT_STREQ(f.GetStrNoise(buf, -1), want);
    f.xyp = nullptr; // the record is the test's, not the object's
}

TEST(STFTGrid, FewBinsFallBackToWholeCopiesWithinTheirBlocks)
{
    // seglen 8: 5 bins; groups of 2 leave 2 per slice, so whole records are copied.
    Series r(200, Wave);
    CFFT f(r.p, 0, 0, 0, 0, 0.0, 8, 50.0, 0);
    XY **pp = f.STFTGrid(4, 2, 0.0);
    ASSERT_NE(pp, nullptr);
    EXPECT_EQ(pp[0][0].x, 5);
    EXPECT_EQ(pp[3][6].x, 8); // the slice's metadata came along: L
}

TEST(STFT, SettersChangedSinceThePassGiveNoRecordInsteadOfReadingPastTheSeries)
{
    Series r(100, Wave);
    CFFT f(r.p, 0, 0, 0, 0, 0.0, 20, 0.0, 0);
    ASSERT_EQ(f.GetFftCnt(), 5);
    f.SetOverlap(90.0); // the walk over 5 slices would now fit, with other times
    EXPECT_NE(f.GetXYppFFT(4, 0, 0, 0), nullptr);
    f.SetSeglen(90); // the walk leaves the series: no record
    EXPECT_EQ(f.GetXYppFFT(4, 0, 0, 0), nullptr);
    EXPECT_EQ(f.STFT(4), nullptr);
    f.SetSeglen(500); // the frequency step stays within the series
    XY *p = f.GetXYpFFT(4, -1, 0);
    ASSERT_NE(p, nullptr);
    std::free(p);
}
