#include "oscilla/spectrum/cfft.h"
#include "support/oracle.h"
#include "support/records.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <functional>
#include <vector>

using oscilla::CFFT;
using oscilla::XY;
using oracle::eps;

namespace {

using Record = records::Series;

// Relative L2 error of block bins 0..L/2 against the long-double DFT of data[0..L-1].
double BlockError(const double *b, const std::vector<double> &data)
{
    const int L = static_cast<int>(data.size());
    std::vector<double> c(2 * L, 0.0);
    for (int j = 0; j < L; j++)
        c[2 * j] = data[j];
    const auto X = oracle::dft(c, L, 1);
    long double err = 0, ref = 0;
    for (int k = 0; k <= L / 2; k++) {
        const long double dr = b[2 * k + 1] - X[2 * k], di = b[2 * k + 2] - X[2 * k + 1];
        err += dr * dr + di * di;
        ref += X[2 * k] * X[2 * k] + X[2 * k + 1] * X[2 * k + 1];
    }
    return static_cast<double>(std::sqrt(err / (ref > 0 ? ref : 1)));
}

} // namespace

TEST(Forward, PowerOfTwoSeriesNeedsNoPadding)
{
    Record r(1024);
    CFFT f(r.p, 0, 0, 0, 0, 0.0, 0, 0.0, 0);
    EXPECT_EQ(f.GetLen(), 1024);
    EXPECT_EQ(f.GetPad(), 0);
    EXPECT_EQ(f.GetIPass(), 1);
    ASSERT_NE(f.GetFFT(), nullptr);
    EXPECT_EQ(f.GetFFT()[0], 1024.0);
    EXPECT_EQ(f.failed, 0);
}

TEST(Forward, SingleBlockIsTheTransformOfTheZeroPaddedSeries)
{
    Record r(1000);
    CFFT f(r.p, 0, 0, 0, 0, 0.0, 0, 0.0, 0);
    ASSERT_EQ(f.GetLen(), 1024);
    EXPECT_EQ(f.GetPad(), 24);
    std::vector<double> data(1024, 0.0);
    for (int i = 1; i <= 1000; i++)
        data[i - 1] = r.p[i].y;
    const double *b = f.GetFFT();
    EXPECT_LT(BlockError(b, data), 100 * eps);
    EXPECT_EQ(b[1024 + 3], 1.0); // no window: both gains 1
    EXPECT_EQ(b[1024 + 4], 1.0);
    EXPECT_EQ(b[1024 + 5], 1.0);
}

TEST(Forward, MinPadAddsZerosBeforeTheLengthSearch)
{
    Record r(100);
    CFFT f(r.p, 2, 0, 28, 0, 0.0, 0, 0.0, 0);
    EXPECT_EQ(f.GetLen(), 128);
    EXPECT_EQ(f.GetPad(), 28);
    CFFT g(r.p, 1, 0, 0, 0, 0.0, 0, 0.0, 0);
    EXPECT_EQ(g.GetLen(), 104); // npfar(100) = 2 npfa(50) = 2 * 52
}

TEST(Forward, ChordDetrendUsesTheSampleIndex)
{
    // Uneven x must not matter: the chord runs through the first and last sample by index.
    Record r(
        37, [](int i) { return 2.0 + 0.5 * i + std::cos(1.1 * i); }, 1.0);
    for (int i = 1; i <= 37; i++)
        r.p[i].x = i * i; // strongly non-uniform
    CFFT f(r.p, 3, 1, 0, 0, 0.0, 0, 0.0, 0);
    ASSERT_EQ(f.GetLen(), 37);
    std::vector<double> data(37);
    const double y1 = r.p[1].y, yN = r.p[37].y;
    for (int i = 1; i <= 37; i++)
        data[i - 1] = r.p[i].y - ((37 - i) * y1 + (i - 1) * yN) / 36.0;
    EXPECT_LT(BlockError(f.GetFFT(), data), 1000 * eps);
    EXPECT_NEAR(data[0], 0.0, 1e-15);
}

TEST(Forward, SegmentCountingAndStep)
{
    struct Case {
        int n, seglen;
        double overlap;
        int segments;
    } cases[] = {
        {1024, 256, 50.0, 7},  // step 128: starts 1, 129, ..., 769
        {300, 256, 99.9, 45},  // the rounded step is 0, so 1: starts 1..45
        {1000, 300, 0.0, 3},   // starts 1, 301, 601: the last 100 samples unused
        {1000, 250, 0.0, 4},
        {1000, 100, 150.0, 901}, // overlap above 100 gives step 1
    };
    for (const Case &c : cases) {
        Record r(c.n);
        CFFT f(r.p, 0, 0, 0, 0, 0.0, c.seglen, c.overlap, 0);
        EXPECT_EQ(f.GetFftCnt(), c.segments) << c.n << " " << c.seglen << " " << c.overlap;
        EXPECT_EQ(f.GetIPass(), c.segments);
        EXPECT_EQ(f.GetLen(), c.seglen);
        EXPECT_EQ(f.GetPrimeFac(), 0); // restored after the pass
    }
}

TEST(Forward, SegmentBlocksAreTransformsOfTheirSlices)
{
    const int N = 1000, S = 300;
    Record r(N);
    CFFT f(r.p, 0, 0, 0, 0, 0.0, S, 0.0, 0);
    ASSERT_EQ(f.GetFftCnt(), 3);
    for (int k = 0; k < 3; k++) {
        std::vector<double> data(S);
        for (int i = 0; i < S; i++)
            data[i] = r.p[1 + k * S + i].y;
        const double *b = f.GetFft()[k];
        EXPECT_EQ(b[0], S);
        EXPECT_LT(BlockError(b, data), 200 * eps) << k;
        EXPECT_DOUBLE_EQ(b[S + 5], (double(N) / S) * (double(N) / S));
        EXPECT_EQ(b[S + 3], 1.0);
    }
    // The single block seen by GetFFT is segment 0, whole.
    for (int i = 0; i < S + 6; i++)
        ASSERT_EQ(f.GetFFT()[i], f.GetFft()[0][i]) << i;
}

TEST(Forward, SegmentLongerThanTheSeriesIsCutPermanently)
{
    Record r(100);
    CFFT f(r.p, 0, 0, 8, 0, 0.0, 500, 50.0, 0);
    EXPECT_EQ(f.GetSeglen(), 100);
    EXPECT_EQ(f.GetFftCnt(), 1);
    EXPECT_EQ(f.GetLen(), 108); // seglen + minpad exactly, no length search
    EXPECT_EQ(f.GetPad(), 8);
    std::vector<double> data(108, 0.0);
    for (int i = 1; i <= 100; i++)
        data[i - 1] = r.p[i].y;
    EXPECT_LT(BlockError(f.GetFFT(), data), 200 * eps);
}

TEST(Forward, GlobalChordRemovesARampFromEverySegment)
{
    Record r(
        512, [](int i) { return 3.0 - 0.25 * i; });
    CFFT f(r.p, 0, 1, 0, 0, 0.0, 128, 50.0, 0);
    ASSERT_EQ(f.GetFftCnt(), 7);
    for (int k = 0; k < 7; k++)
        for (int i = 1; i <= 130; i++)
            EXPECT_NEAR(f.GetFft()[k][i], 0.0, 1e-12) << k << " " << i;
}

TEST(Forward, NullSeriesTransformsNothing)
{
    CFFT f(nullptr, 0, 0, 0, 0, 0.0, 0, 0.0, 0);
    EXPECT_EQ(f.GetFFT(), nullptr);
    EXPECT_EQ(f.GetCnt(), 0);
    EXPECT_EQ(f.failed, 0);
    f.Forward();
    EXPECT_EQ(f.GetFFT(), nullptr);
}

TEST(Forward, DegenerateSegmentsLeaveNoBlock)
{
    Record r(1);
    CFFT f(r.p, 0, 1, 0, 0, 0.0, 4, 0.0, 0);
    EXPECT_EQ(f.GetFftCnt(), 0);
    EXPECT_EQ(f.GetFFT(), nullptr);
}

TEST(Forward, PrimeFactorPolicyFallsOverToChirpZPastTheTable)
{
    struct Case {
        int n;
        int primefac_after;
    } cases[] = {{720721, 4}, {1441442, 4}, {720720, 1}, {1441440, 1}};
    for (const Case &c : cases) {
        Record r(c.n, [](int i) { return (i % 7) - 3.0; });
        CFFT f(r.p, 1, 0, 0, 0, 0.0, 0, 0.0, 0);
        EXPECT_EQ(f.GetPrimeFac(), c.primefac_after) << c.n;
        EXPECT_EQ(f.GetLen(), c.n) << c.n;
        // bin 0 holds the sum of the series whatever the kernel
        double sum = 0;
        for (int i = 1; i <= c.n; i++)
            sum += r.p[i].y;
        EXPECT_NEAR(f.GetFFT()[1], sum, 1e-7 * c.n) << c.n;
    }
}

TEST(Forward, InputMeasures)
{
    Record r(
        11, [](int) { return 1.0; }, 0.5);
    CFFT f(r.p, 0, 0, 0, 0, 0.0, 0, 0.0, 0);
    EXPECT_DOUBLE_EQ(f.GetArea(), 5.0); // trapezoid of a constant over x = 0..5
    EXPECT_DOUBLE_EQ(f.GetXSpc(), 0.5);
    EXPECT_EQ(r.p[0].flag & 32, 32); // uniform spacing marked in the header
    EXPECT_EQ(r.p[0].flag & 64, 0);
    EXPECT_DOUBLE_EQ(f.GetMean(), 1.0);
    EXPECT_DOUBLE_EQ(f.GetVariance(), 0.0);

    Record v(
        5, [](int i) { return static_cast<double>(i * i); });
    v.p[4].x = v.p[3].x + 1.01 * (v.p[2].x - v.p[1].x); // 1 percent off: still uniform
    v.p[5].x = v.p[4].x + 1.0;
    CFFT g(v.p, 0, 0, 0, 0, 0.0, 0, 0.0, 0);
    EXPECT_EQ(v.p[0].flag & 32, 32);
    EXPECT_DOUBLE_EQ(g.GetMean(), 11.0);
    EXPECT_DOUBLE_EQ(g.GetVariance(), 93.5); // sample variance of 1, 4, 9, 16, 25

    v.p[0].flag = 0;
    v.p[5].x = v.p[4].x + 1.02;
    CFFT h(v.p, 0, 0, 0, 0, 0.0, 0, 0.0, 0);
    EXPECT_EQ(v.p[0].flag & 64, 64);
    EXPECT_EQ(v.p[0].flag & 32, 0);
    EXPECT_DOUBLE_EQ(h.GetXSpc(), (v.p[5].x - v.p[1].x) / 4); // the mean spacing all the same
}

TEST(Forward, ResetRecomputesOnANewSeries)
{
    Record a(64), b(
                      100, [](int i) { return std::cos(0.2 * i); });
    CFFT f(a.p, 0, 0, 0, 0, 0.0, 0, 0.0, 0);
    f.noise[0] = 5.0;
    f.Reset(b.p, 2, 0, 0, 0, 0.0, 0, 0.0, 0);
    EXPECT_EQ(f.Getpxy(), b.p);
    EXPECT_EQ(f.GetCnt(), 100);
    EXPECT_EQ(f.GetLen(), 100);
    EXPECT_EQ(f.noise[0], 0.0);
    std::vector<double> data(100);
    for (int i = 1; i <= 100; i++)
        data[i - 1] = b.p[i].y;
    EXPECT_LT(BlockError(f.GetFFT(), data), 200 * eps);
}

TEST(Forward, WindowCoversTheDataNotThePaddingAndLeavesItsGains)
{
    const int N = 1000, L = 1024;
    Record r(N, [](int i) { return 1.0 + std::sin(0.05 * i); });
    CFFT f(r.p, 0, 0, 0, 3, 0.0, 0, 0.0, 0); // code 3: Hann over N = 1000 points
    ASSERT_EQ(f.GetLen(), L);
    long double sw = 0, swy = 0, sy2 = 0, swy2 = 0;
    for (int i = 0; i < N; i++) {
        const long double w = 0.5L - 0.5L * std::cos(2 * 3.141592653589793238L * i / (N - 1));
        const long double y = r.p[i + 1].y;
        sw += w;
        swy += w * y;
        sy2 += y * y;
        swy2 += (w * y) * (w * y);
    }
    const double *b = f.GetFFT();
    EXPECT_NEAR(b[1], static_cast<double>(swy), 1e-12 * static_cast<double>(swy)); // bin 0: the windowed sum
    EXPECT_NEAR(b[L + 3], static_cast<double>(sy2 / swy2), 1e-12);                  // power gain
    EXPECT_NEAR(b[L + 4], static_cast<double>((N / sw) * (N / sw)), 1e-12);         // coherent gain squared
    // Gain modes pick the trailer value that scales power: amplitude scales by its root.
    oscilla::XY *plain = f.GetXYpFFT(4, -1, 0);
    for (int g = 1; g <= 3; g++) {
        CFFT h(r.p, 0, 0, 0, 3, 0.0, 0, 0.0, g);
        oscilla::XY *p = h.GetXYpFFT(4, -1, 0);
        const double want = std::sqrt(b[L + g + 2]);
        for (int k : {1, 9, 100})
            EXPECT_NEAR(p[k].y, plain[k].y * want, 1e-12 * plain[k].y * want) << g;
        std::free(p);
    }
    std::free(plain);
}
