#include "oscilla/spectrum/cfft.h"
#include "support/oracle.h"
#include "support/records.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <vector>

using oscilla::CFFT;
using oscilla::XY;
using oracle::eps;
using Series = records::Series;

namespace {

const double TWO_PI = 6.283185307179586;

// The long-double spectrum of y[from..from+len-1] (one-based), zero-padded to L,
// with the library's forward sign.
std::vector<long double> Spectrum(const XY *r, int from, int count, int L)
{
    std::vector<double> c(2 * L, 0.0);
    for (int j = 0; j < count; j++)
        c[2 * j] = r[from + j].y;
    return oracle::dft(c, L, 1);
}

struct Owned {
    XY *p;
    explicit Owned(XY *q) : p(q) {}
    ~Owned() { std::free(p); }
};

} // namespace

TEST(Output, UnitSineAtAnIntegerBin)
{
    const int N = 64, bin = 5;
    Series r(N, [&](int i) { return std::sin(TWO_PI * bin * (i - 1) / N); });
    CFFT f(r.p, 0, 0, 0, 0, 0.0, 0, 0.0, 0);
    struct {
        int code;
        double want;
    } cases[] = {{4, 1.0}, {31, 0.7071067811865476}, {10, 0.5}, {30, 1.0}, {6, 0.0}};
    for (const auto &c : cases) {
        Owned p(f.GetXYpFFT(c.code, -1, 0));
        ASSERT_NE(p.p, nullptr);
        EXPECT_NEAR(p.p[bin + 1].y, c.want, 16 * eps) << "code " << c.code;
        EXPECT_NEAR(p.p[bin + 1].x, double(bin) / N, 1e-15);
    }
}

TEST(Output, ConstantSeriesGivesItsValueAtBinZeroInAmplitudeAndRms)
{
    Series r(50, [](int) { return 2.5; });
    CFFT f(r.p, 2, 0, 0, 0, 0.0, 0, 0.0, 0);
    for (int code : {4, 31}) {
        Owned p(f.GetXYpFFT(code, -1, 0));
        EXPECT_NEAR(p.p[1].y, 2.5, 16 * eps) << code; // sqrt(2) cancels 1/sqrt(2) for rms
        EXPECT_NEAR(p.p[2].y, 0.0, 1e-14);
    }
}

TEST(Output, DensityFamilySumsCloseParseval)
{
    // Even and odd transform lengths, unpadded.
    for (int N : {64, 45}) {
        const double dx = 0.25;
        Series r(
            N, [](int i) { return std::cos(0.3 * i) + 0.1 * i; }, dx);
        CFFT f(r.p, 2, 0, 0, 0, 0.0, 0, 0.0, 0);
        ASSERT_EQ(f.GetLen(), N);
        double sumsq = 0;
        for (int i = 1; i <= N; i++)
            sumsq += r.p[i].y * r.p[i].y;
        const struct {
            int code;
            double want;
        } cases[] = {{11, sumsq}, {10, sumsq / N}, {9, sumsq * dx}};
        for (const auto &c : cases) {
            Owned p(f.GetXYpFFT(c.code, -1, 0));
            double s = 0;
            for (int k = 1; k <= p.p[0].x; k++)
                s += p.p[k].y;
            EXPECT_NEAR(s, c.want, 64 * eps * N * c.want) << "N " << N << " code " << c.code;
        }
        EXPECT_NEAR(f.Power(0), f.RawPower(0), 64 * eps * N * sumsq);
        EXPECT_NEAR(f.Power(1), f.RawPower(1), 64 * eps * sumsq);
        EXPECT_NEAR(f.Power(2), f.RawPower(2), 64 * eps * N * sumsq);
    }
}

TEST(Output, PowerCompensatesZeroPadding)
{
    Series r(1000, [](int i) { return std::sin(0.01 * i * i); });
    CFFT f(r.p, 0, 0, 0, 0, 0.0, 0, 0.0, 0);
    ASSERT_EQ(f.GetLen(), 1024);
    EXPECT_NEAR(f.Power(0) / f.RawPower(0), 1.0, 1e-12);
    Series s(1000, [](int i) { return std::sin(0.01 * i * i); });
    CFFT g(s.p, 0, 0, 0, 0, 0.0, 200, 0.0, 0); // segments: scaled by S / L
    EXPECT_GT(g.Power(0), 0.0);
    EXPECT_EQ(g.Power(7), 0.0); // no such mode
}

TEST(Output, AmplitudeAndPhaseAgainstLongDoubleDFT)
{
    const int N = 40;
    oracle::Lcg g(77);
    Series r(N, [&](int) { return g.next(); });
    CFFT f(r.p, 2, 0, 0, 0, 0.0, 0, 0.0, 0);
    const auto X = Spectrum(r.p, 1, N, N);
    Owned amp(f.GetXYpFFT(4, -1, 0)), ph(f.GetXYpFFT(5, -1, 0)), pair(f.GetXYpFFT(14, -1, 0));
    const int M = N / 2 + 1;
    ASSERT_EQ(amp.p[0].x, M);
    for (int k = 0; k < M; k++) {
        const double fk = (k == 0 || k == M - 1) ? 1.0 : 2.0;
        const double re = static_cast<double>(fk * X[2 * k]), im = static_cast<double>(-fk * X[2 * k + 1]);
        EXPECT_NEAR(amp.p[k + 1].y, std::hypot(re, im) / N, 64 * eps) << k;
        EXPECT_NEAR(pair.p[k + 1].y, re, 64 * eps * N) << k;
        EXPECT_NEAR(pair.p[k + 1].w, im, 64 * eps * N) << k; // the sign is flipped once, here
        if (std::hypot(re, im) > 1e-9) {
            EXPECT_NEAR(ph.p[k + 1].y, std::atan2(im, re), 1e-12) << k;
        }
    }
}

TEST(Output, HeaderAndMetadataBehindTheCount)
{
    const int N = 100;
    Series r(
        N, [](int i) { return std::sin(0.5 * i); }, 0.1);
    CFFT f(r.p, 0, 0, 0, 0, 0.0, 0, 0.0, 0);
    XY *p = f.GetXYpFFT(4, 2, 0);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(f.GetXYf(2), p);
    const int L = 128, M = 65;
    EXPECT_EQ(p[0].x, M);
    EXPECT_EQ(p[0].y, N);
    EXPECT_EQ(p[0].flag, 32);
    const double df = (N - 1) / (L * (r.p[N].x - r.p[1].x));
    EXPECT_DOUBLE_EQ(f.fspc, df);
    EXPECT_DOUBLE_EQ(p[M].x, (M - 1) * df);
    EXPECT_EQ(p[M + 1].x, L);
    EXPECT_DOUBLE_EQ(p[M + 1].y, f.GetXSpc());
    EXPECT_DOUBLE_EQ(p[M + 1].w, df);
    EXPECT_EQ(p[M + 1].flag, 4);
    EXPECT_DOUBLE_EQ(p[M + 2].y, f.GetVariance());
    // Reusing the slot frees the earlier record (the leak checker sees to it).
    XY *q = f.GetXYpFFT(6, 2, 0);
    EXPECT_EQ(f.GetXYf(2), q);
}

TEST(Output, UnlistedCodesGiveZeroOnARightAxis)
{
    Series r(32);
    CFFT f(r.p, 0, 0, 0, 0, 0.0, 0, 0.0, 0);
    for (int code : {23, 16, 44, -1, 51, 1000}) {
        Owned p(f.GetXYpFFT(code, -1, 0));
        ASSERT_NE(p.p, nullptr);
        for (int k = 1; k <= 17; k++) {
            EXPECT_EQ(p.p[k].y, 0.0) << code;
            EXPECT_DOUBLE_EQ(p.p[k].x, (k - 1) / 32.0);
        }
    }
    EXPECT_EQ(f.FFTParm(1.0, 1.0, 1.0, 14, 0, 0), 0.0);
}

TEST(Output, DecibelsRelativeToTheLargestBin)
{
    Series r(256, [](int i) { return std::sin(0.3 * i) + 0.2 * std::cos(1.3 * i); });
    CFFT f(r.p, 0, 0, 0, 0, 0.0, 0, 0.0, 0);
    Owned p(f.GetXYpFFT(7, -1, 0));
    double top = -1e300;
    for (int k = 1; k <= p.p[0].x; k++)
        top = std::max(top, p.p[k].y);
    EXPECT_EQ(top, 0.0);

    CFFT s(r.p, 0, 0, 0, 0, 0.0, 64, 50.0, 0);
    Owned q(s.GetXYpFFT(7, -1, 0));
    top = -1e300;
    for (int k = 1; k <= q.p[0].x; k++)
        top = std::max(top, q.p[k].y);
    EXPECT_EQ(top, 0.0);           // the largest mean is the reference
    EXPECT_GE(s.maxdbseg, s.maxdb); // single segments may stand above it
}

TEST(Output, SegmentAveragesAndInverseVariancesFromTheBlocks)
{
    const int N = 600, S = 128;
    oracle::Lcg g(5);
    Series r(N, [&](int i) { return std::sin(0.7 * i) + 0.3 * g.next(); });
    CFFT f(r.p, 0, 0, 0, 0, 0.0, S, 50.0, 0);
    const int K = f.GetFftCnt(), M = S / 2 + 1;
    ASSERT_EQ(K, 8); // starts 1, 65, ..., 449
    XY *p = f.GetXYpFFT(4, 0, 0);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(p[0].w, 1.0);
    EXPECT_EQ(p[0].reps, 192);
    EXPECT_EQ(p[M + 2].x, S);
    std::vector<std::vector<long double>> X;
    for (int j = 0; j < K; j++)
        X.push_back(Spectrum(r.p, 1 + 64 * j, S, S));
    for (int k = 0; k < M; k++) {
        const long double fk = (k == 0 || k == M - 1) ? 1.0L : 2.0L;
        long double sum = 0, sum2 = 0;
        for (int j = 0; j < K; j++) {
            // amplitude with the segment scale (N/S)^2 and divisor N: f|X| / S
            const long double a = fk * std::sqrt(X[j][2 * k] * X[j][2 * k] + X[j][2 * k + 1] * X[j][2 * k + 1]) / S;
            sum += a;
            sum2 += a * a;
        }
        const long double mean = sum / K, var = (sum2 - sum * sum / K) / (K - 1);
        EXPECT_NEAR(p[k + 1].y, static_cast<double>(mean), 1e-13) << k;
        EXPECT_NEAR(p[k + 1].w * var, 1.0, 1e-9) << k;
        EXPECT_EQ(p[k + 1].reps, K);
        XY point{};
        f.GetSingleXYpFFT(k + 1, 4, &point, 0);
        EXPECT_NEAR(point.y, p[k + 1].y, 1e-15);
        EXPECT_NEAR(point.w, std::sqrt(static_cast<double>(var)), 1e-9); // a standard deviation here
        EXPECT_EQ(point.reps, K);
    }
    // Modes 1 and 2: raw sums of squared magnitudes, no format and no factor.
    Owned raw(f.GetXYpFFT(4, -1, 2));
    for (int k : {0, 5, 20}) {
        long double sum = 0;
        for (int j = 0; j < K; j++)
            sum += X[j][2 * k] * X[j][2 * k] + X[j][2 * k + 1] * X[j][2 * k + 1];
        EXPECT_NEAR(raw.p[k + 1].y / static_cast<double>(sum * N / (S * K)), 1.0, 1e-12) << k;
    }
    // The complex pair has no average: zero everywhere.
    Owned pair(f.GetXYpFFT(14, -1, 0));
    for (int k = 1; k <= M; k++)
        EXPECT_EQ(pair.p[k].y, 0.0);
}

TEST(Output, RepsAreCappedAt255)
{
    Series r(400);
    CFFT f(r.p, 0, 0, 0, 0, 0.0, 101, 99.5, 0); // step 1: 300 segments
    ASSERT_EQ(f.GetFftCnt(), 300);
    Owned p(f.GetXYpFFT(4, -1, 0));
    EXPECT_EQ(p.p[3].reps, 255);
}

TEST(Output, PerSegmentRecords)
{
    const int N = 300, S = 100;
    Series r(
        N, [](int i) { return std::cos(0.9 * i); }, 2.0, 10.0);
    CFFT f(r.p, 0, 0, 0, 0, 0.0, S, 0.0, 0);
    XY **pp = f.GetXYppFFT(4, 1, 0, 0);
    ASSERT_NE(pp, nullptr);
    const int M = S / 2 + 1;
    int count = 0;
    for (; pp[count]; count++) {
        XY *p = pp[count];
        EXPECT_EQ(p[0].y, count + 1);
        EXPECT_EQ(p[M + 1].w, N);
        EXPECT_DOUBLE_EQ(p[M + 2].x, (r.p[1 + S * count].x + r.p[S * (count + 1)].x) / 2);
        const auto X = Spectrum(r.p, 1 + S * count, S, S);
        for (int k : {1, 14, 30}) { // segnorm: divisor S, no segment scale
            EXPECT_NEAR(p[k + 1].y, static_cast<double>(2 * std::hypot(X[2 * k], X[2 * k + 1]) / S), 1e-13);
        }
    }
    EXPECT_EQ(count, 3);
    // Without segments there is no per-segment record.
    CFFT single(r.p, 0, 0, 0, 0, 0.0, 0, 0.0, 0);
    EXPECT_EQ(single.GetXYppFFT(4, 0, 0, 0), nullptr);
}

TEST(Output, FullSpectrumLayout)
{
    for (int L : {16, 15}) {
        Series r(L, [](int i) { return std::sin(0.4 * i) + 0.5; });
        CFFT f(r.p, 2, 0, 0, 0, 0.0, 0, 0.0, 0);
        Owned one(f.GetXYpFFT(4, -1, 0));
        XY *q = f.FullXYpFFT(4, 1);
        ASSERT_NE(q, nullptr);
        const int M = L / 2 + 1;
        EXPECT_EQ(q[0].x, L);
        EXPECT_DOUBLE_EQ(q[1].x, -one.p[M].x);
        EXPECT_DOUBLE_EQ(q[M].x, 0.0);
        EXPECT_DOUBLE_EQ(q[M].y, one.p[1].y);          // bin 0 is not halved
        EXPECT_DOUBLE_EQ(q[M + 1].y, one.p[2].y / 2);  // inner bins are
        EXPECT_DOUBLE_EQ(q[M - 1].y, one.p[2].y / 2);
        if (L % 2 == 0) {
            // The positive Nyquist point stands uncounted in element L + 1.
            EXPECT_DOUBLE_EQ(q[L + 1].x, one.p[M].x);
            EXPECT_DOUBLE_EQ(q[L + 1].y, one.p[M].y);
        } else {
            EXPECT_DOUBLE_EQ(q[L].x, one.p[M].x);
            EXPECT_EQ(q[L + 1].x, L); // the metadata survives
            EXPECT_EQ(q[L + 1].flag, 4);
        }
    }
}

TEST(Output, UnwrapPhaseRemovesJumpsAbovePi)
{
    const int N = 20;
    Series r(N, [](int i) { return std::remainder(0.9 * i, TWO_PI); });
    CFFT f(nullptr, 0, 0, 0, 0, 0.0, 0, 0.0, 0);
    f.UnwrapPhase(r.p);
    for (int i = 2; i <= N; i++)
        EXPECT_NEAR(r.p[i].y - r.p[i - 1].y, 0.9, 1e-12) << i;
}

TEST(Output, FailuresAndRawMeasures)
{
    CFFT f(nullptr, 0, 0, 0, 0, 0.0, 0, 0.0, 0);
    EXPECT_EQ(f.GetXYpFFT(4, 0, 0), nullptr);
    EXPECT_EQ(f.failed, 1);
    EXPECT_EQ(f.FullXYpFFT(4, 0), nullptr);
    EXPECT_EQ(f.MaxPower(nullptr), 0.0);
    double block[] = {4, 1, 0, 0, 3, 2, 0, 1, 1, 1};
    EXPECT_EQ(f.MaxPower(block), 9.0);
}
