#include "fft/real_merge.h"
#include "oscilla/spectrum/cfft.h"
#include "support/oracle.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <random>
#include <vector>

using oscilla::CFFT;
using oscilla::complex;
using oracle::eps;

namespace {

constexpr double ROGUE = -9.87654321e300;

CFFT MakeEngine(int primefac) { return CFFT(nullptr, primefac, 0, 0, 0, 0.0, 0, 0.0, 0); }

// The forward real spectrum of x by the long-double oracle, as pairs for bins 0..n/2.
std::vector<long double> RealSpectrum(const std::vector<double> &x, const std::vector<int> &bins = {})
{
    const int n = static_cast<int>(x.size());
    std::vector<double> c(2 * n, 0.0);
    for (int j = 0; j < n; j++)
        c[2 * j] = x[j];
    return oracle::dft(c, n, 1, bins);
}

// One-based buffer for realft: data from index 1, guard cells at 0 and past n+2.
std::vector<double> OneBased(const std::vector<double> &x)
{
    std::vector<double> a(x.size() + 4, ROGUE);
    for (size_t j = 0; j < x.size(); j++)
        a[j + 1] = x[j];
    return a;
}

// Relative L2 error of a one-based realft result against the oracle over the given bins.
double RealftError(const std::vector<double> &a, const std::vector<long double> &X, const std::vector<int> &bins)
{
    long double err = 0, ref = 0;
    for (int k : bins) {
        const long double dr = a[2 * k + 1] - X[2 * k], di = a[2 * k + 2] - X[2 * k + 1];
        err += dr * dr + di * di;
        ref += X[2 * k] * X[2 * k] + X[2 * k + 1] * X[2 * k + 1];
    }
    return static_cast<double>(std::sqrt(err / ref));
}

std::vector<int> AllBins(int n)
{
    std::vector<int> b;
    for (int k = 0; k <= n / 2; k++)
        b.push_back(k);
    return b;
}

} // namespace

// Forward realft of every power of two against the long-double DFT. The merge
// twiddles come from a recurrence, so its error grows with n; the bound here
// is what was measured with some margin, and the table of errors is printed.
TEST(Realft, PowersOfTwoAgainstLongDoubleDFT)
{
    CFFT f = MakeEngine(0);
    for (int p = 2; p <= 16; p++) {
        const int n = 1 << p;
        const auto x = oracle::random_vector(n, 100 + p);
        std::vector<int> bins = AllBins(n);
        if (n > 4096) { // quadratic oracle: sample the bins, the ends included
            bins.clear();
            for (int k = 0; k <= n / 2; k += n / 128)
                bins.push_back(k);
            bins.push_back(n / 2 - 1);
            bins.push_back(1);
        }
        const auto X = RealSpectrum(x, bins);
        auto a = OneBased(x);
        f.realft(a.data(), n, 1, 1);
        const double err = RealftError(a, X, bins);
        std::printf("realft n=%-6d relative L2 error %.3e (%.2f eps*log2 n)\n", n, err, err / (eps * p));
        EXPECT_LT(err, 4.0 * eps * p) << n;
        EXPECT_EQ(a[0], ROGUE);
        EXPECT_EQ(a[n + 3], ROGUE);
        EXPECT_EQ(a[2], 0.0);     // imaginary part of bin 0
        EXPECT_EQ(a[n + 2], 0.0); // imaginary part of the Nyquist bin
    }
}

TEST(Realft, FourPointsRunNoMergeIterationAndAreStillRight)
{
    CFFT f = MakeEngine(0);
    const std::vector<double> x = {1.0, -2.0, 0.5, 3.0};
    auto a = OneBased(x);
    f.realft(a.data(), 4, 1, 1);
    const auto X = RealSpectrum(x);
    for (int k = 0; k <= 2; k++) {
        EXPECT_NEAR(a[2 * k + 1], static_cast<double>(X[2 * k]), 1e-15);
        EXPECT_NEAR(a[2 * k + 2], static_cast<double>(X[2 * k + 1]), 1e-15);
    }
    EXPECT_EQ(a[2], 0.0);
    EXPECT_EQ(a[6], 0.0);
}

TEST(Realft, TwoPointsGoThroughTheOddPathUntransformed)
{
    CFFT f = MakeEngine(5);
    std::vector<double> a = {ROGUE, 3.0, 7.0, ROGUE, ROGUE, ROGUE};
    f.realft(a.data(), 2, 1, 1);
    // Code 0 has no branch on the odd path: x0, 0, x1, 0 instead of a transform.
    EXPECT_EQ(a[1], 3.0);
    EXPECT_EQ(a[2], 0.0);
    EXPECT_EQ(a[3], 7.0);
    EXPECT_EQ(a[4], 0.0);
    EXPECT_EQ(a[5], ROGUE);
}

TEST(Realft, OddAndTwiceOddLengthsAgainstLongDoubleDFT)
{
    CFFT f = MakeEngine(5);
    for (int n : {1, 3, 5, 6, 9, 10, 15, 18, 30, 45, 63, 90}) {
        const auto x = oracle::random_vector(n, n);
        auto a = OneBased(x);
        f.realft(a.data(), n, 1, 1);
        const auto X = RealSpectrum(x);
        // Odd n stores up to the imaginary part of bin (n-1)/2 at index n+1.
        const int last = n % 2 ? n + 1 : n + 2;
        long double err = 0, ref = 0;
        for (int i = 1; i <= last; i++) {
            const long double want = X[i - 1];
            err += (a[i] - want) * (a[i] - want);
            ref += want * want;
        }
        EXPECT_LT(std::sqrt(err / ref), 64 * eps) << n;
        EXPECT_EQ(a[0], ROGUE) << n;
        EXPECT_EQ(a[last + 1], ROGUE) << n;
    }
}

TEST(Realft, RoundTripScalingForEveryKernelThatSuitsTheLength)
{
    const int n = 24; // half-length 12: a power of two it is not, so code 0 is left out
    const auto x = oracle::random_vector(n, 3);
    for (int code : {1, 2, 3, 4}) {
        CFFT f = MakeEngine(code);
        auto a = OneBased(x);
        f.realft(a.data(), n, 1, 1);
        f.realft(a.data(), n, -1, 1);
        for (int j = 0; j < n; j++)
            EXPECT_NEAR(a[j + 1], x[j], 32 * eps) << "code " << code;
        auto b = OneBased(x);
        f.realft(b.data(), n, 1, 1);
        f.realft(b.data(), n, -1, 0);
        for (int j = 0; j < n; j++)
            EXPECT_NEAR(b[j + 1], (n / 2) * x[j], 32 * n * eps) << "code " << code;
    }
    CFFT f = MakeEngine(0);
    const auto y = oracle::random_vector(32, 4);
    auto a = OneBased(y);
    f.realft(a.data(), 32, 1, 1);
    f.realft(a.data(), 32, -1, 1);
    for (int j = 0; j < 32; j++)
        EXPECT_NEAR(a[j + 1], y[j], 32 * eps);
}

TEST(Realft, OddPathInverseWithoutNormKeepsTheSpectrum)
{
    CFFT f = MakeEngine(5);
    const auto x = oracle::random_vector(10, 9);
    auto a = OneBased(x);
    f.realft(a.data(), 10, 1, 1);
    const auto spectrum = a;
    f.realft(a.data(), 10, -1, 0);
    EXPECT_EQ(a, spectrum);
    f.realft(a.data(), 10, -1, 1);
    for (int j = 0; j < 10; j++)
        EXPECT_NEAR(a[j + 1], x[j], 32 * eps);
}

TEST(Realft, ZeroBasedTwinMatchesTheOneBasedForm)
{
    CFFT f = MakeEngine(5);
    for (int n : {8, 12, 10, 7}) {
        const auto x = oracle::random_vector(n, 2 * n);
        auto a = OneBased(x);
        std::vector<double> b(x);
        b.resize(n + 3, ROGUE);
        f.realft(a.data(), n, 1, 1);
        f.realfft(b.data(), n, 1, 1);
        const int last = n % 2 ? n + 1 : n + 2;
        for (int i = 1; i <= last; i++)
            EXPECT_EQ(b[i - 1], a[i]) << n << " index " << i;
        EXPECT_EQ(b[last], ROGUE);
        f.realfft(b.data(), n, -1, 1);
        for (int j = 0; j < n; j++)
            EXPECT_NEAR(b[j], x[j], 32 * eps);
    }
}

TEST(Realft, ChirpZFlipsTheImaginaryPartsOfTheUpperBins)
{
    const int n = 32, N = n / 2;
    const auto x = oracle::random_vector(n, 11);
    CFFT mixed = MakeEngine(2), chirp = MakeEngine(4);
    auto a = OneBased(x), b = OneBased(x);
    mixed.realft(a.data(), n, 1, 1);
    chirp.realft(b.data(), n, 1, 1);
    for (int k = 0; k <= N; k++) {
        const double ma = std::hypot(a[2 * k + 1], a[2 * k + 2]), mb = std::hypot(b[2 * k + 1], b[2 * k + 2]);
        EXPECT_NEAR(ma, mb, 64 * eps * n) << k;
        EXPECT_NEAR(a[2 * k + 1], b[2 * k + 1], 64 * eps * n) << k;
        const double sign = k <= N / 2 ? 1.0 : -1.0;
        EXPECT_NEAR(a[2 * k + 2], sign * b[2 * k + 2], 64 * eps * n) << k;
    }
    chirp.realft(b.data(), n, -1, 1); // the inverse undoes the repair exactly
    for (int j = 0; j < n; j++)
        EXPECT_NEAR(b[j + 1], x[j], 64 * eps);
}

TEST(Realft, SignZeroTakesTheInversePath)
{
    CFFT f = MakeEngine(0);
    const auto x = oracle::random_vector(16, 5);
    auto a = OneBased(x), b = OneBased(x);
    f.realft(a.data(), 16, 0, 1);
    f.realft(b.data(), 16, -1, 1);
    EXPECT_EQ(a, b);
}

TEST(FrontEnds, NegativePrimefacRunsNoKernel)
{
    CFFT f = MakeEngine(-1);
    const auto x = oracle::random_vector(16, 6);
    std::vector<double> c(x);
    f.cmplxfft(reinterpret_cast<complex *>(c.data()), 8, 1, 0);
    EXPECT_EQ(c, x);
    auto d = OneBased(x);
    const auto before = d;
    f.complexft(d.data(), 8, 1, 0);
    EXPECT_EQ(d, before);
    // The real path still merges over the untransformed data.
    f.realft(d.data(), 16, 1, 1);
    EXPECT_NE(d, before);
    EXPECT_EQ(d[2], 0.0);
}

TEST(FrontEnds, ComplexTransformsAgainstLongDoubleDFT)
{
    for (int code : {0, 1, 2, 3, 4, 5}) {
        CFFT f = MakeEngine(code);
        const int n = 16;
        const auto x = oracle::random_vector(2 * n, 40 + code);
        const auto X = oracle::dft(x, n, 1), Xneg = oracle::dft(x, n, -1);
        std::vector<double> c(x);
        f.cmplxfft(reinterpret_cast<complex *>(c.data()), n, 1, 0);
        for (int i = 0; i < 2 * n; i++) {
            // chirp-z conjugates the input: the conjugate of the negative-exponent spectrum
            const double want = static_cast<double>(code == 4 ? (i % 2 ? -Xneg[i] : Xneg[i]) : X[i]);
            EXPECT_NEAR(c[i], want, 64 * eps * n) << "code " << code << " index " << i;
        }
        f.cmplxfft(reinterpret_cast<complex *>(c.data()), n, -1, 1);
        for (int i = 0; i < 2 * n; i++)
            EXPECT_NEAR(c[i], x[i], 64 * eps) << "code " << code;
    }
}

TEST(FrontEnds, ComplexScalingRules)
{
    CFFT f = MakeEngine(0);
    const int n = 8;
    const auto x = oracle::random_vector(2 * n, 8);
    std::vector<double> c(x);
    f.cmplxfft(reinterpret_cast<complex *>(c.data()), n, 1, 0);
    f.cmplxfft(reinterpret_cast<complex *>(c.data()), n, -1, 0);
    for (int i = 0; i < 2 * n; i++)
        EXPECT_NEAR(c[i], n * x[i], 64 * eps * n);

    // complexft scales only the first n of its 2n doubles.
    std::vector<double> a(2 * n + 2, ROGUE);
    for (int i = 0; i < 2 * n; i++)
        a[i + 1] = x[i];
    f.complexft(a.data(), n, 1, 1);
    f.complexft(a.data(), n, -1, 1);
    for (int i = 0; i < 2 * n; i++)
        EXPECT_NEAR(a[i + 1], (i < n ? 1.0 : n) * x[i], 64 * eps * n) << i;
    EXPECT_EQ(a[0], ROGUE);
    EXPECT_EQ(a[2 * n + 1], ROGUE);

    // Any sign but +-1 does nothing in the complex front ends.
    std::vector<double> d(x);
    f.cmplxfft(reinterpret_cast<complex *>(d.data()), n, 0, 1);
    EXPECT_EQ(d, x);
    f.cmplxfft(reinterpret_cast<complex *>(d.data()), n, 2, 1);
    EXPECT_EQ(d, x);
}

TEST(FrontEnds, TwofftGivesBothTwoSidedSpectra)
{
    CFFT f = MakeEngine(5);
    const int n = 16;
    const auto x1 = oracle::random_vector(n, 21), x2 = oracle::random_vector(n, 22);
    std::vector<double> d1(n + 1), d2(n + 1), s1(2 * n + 1), s2(2 * n + 1);
    for (int j = 0; j < n; j++) {
        d1[j + 1] = x1[j];
        d2[j + 1] = x2[j];
    }
    f.twofft(d1.data(), d2.data(), s1.data(), s2.data(), n);
    for (const auto &[s, x] : {std::pair(&s1, &x1), std::pair(&s2, &x2)}) {
        std::vector<double> c(2 * n, 0.0);
        for (int j = 0; j < n; j++)
            c[2 * j] = (*x)[j];
        const auto X = oracle::dft(c, n, 1);
        for (int i = 0; i < 2 * n; i++)
            EXPECT_NEAR((*s)[i + 1], static_cast<double>(X[i]), 64 * eps * n) << i;
    }
}

TEST(FrontEnds, RadixTwoExtrasAgainstLongDoubleDFTAndClearAbort)
{
    CFFT f = MakeEngine(0);
    for (int n : {1, 2, 8, 64}) {
        const auto x = oracle::random_vector(2 * n, n + 50);
        const auto X = oracle::dft(x, n, 1);
        std::vector<double> z(x), o(2 * n + 1, ROGUE);
        for (int i = 0; i < 2 * n; i++)
            o[i + 1] = x[i];
        f.Abort(); // an abort delivered before the call is lost
        f.four0(z.data(), n, 1);
        EXPECT_EQ(f.IsAbort(), 0);
        f.four1(o.data(), n, 1);
        for (int i = 0; i < 2 * n; i++) {
            EXPECT_NEAR(z[i], static_cast<double>(X[i]), 64 * eps * n);
            EXPECT_EQ(o[i + 1], z[i]);
        }
        EXPECT_EQ(o[0], ROGUE);
        f.four0(z.data(), n, -1);
        for (int i = 0; i < 2 * n; i++)
            EXPECT_NEAR(z[i], n * x[i], 64 * eps * n);
    }
}

TEST(FrontEnds, PolicySevenSelectsLikeAutomatic)
{
    CFFT a = MakeEngine(5), b = MakeEngine(7);
    for (int n : {24, 30, 1000}) {
        const auto x = oracle::random_vector(n, n + 1);
        auto p = OneBased(x), q = OneBased(x);
        a.realft(p.data(), n, 1, 1);
        b.realft(q.data(), n, 1, 1);
        EXPECT_EQ(p, q) << n;
    }
}

TEST(FrontEnds, SignZeroDoesNothingOffTheHalfLengthPath)
{
    CFFT f = MakeEngine(5);
    const auto x = oracle::random_vector(10, 12);
    auto a = OneBased(x);
    const auto before = a;
    f.realft(a.data(), 10, 0, 1); // odd path: only +1 and -1 compute
    EXPECT_EQ(a, before);
    f.complexft(a.data(), 5, 0, 1);
    EXPECT_EQ(a, before);
}

TEST(FrontEnds, SplitRadixOnAnUnsuitableLengthStaysInBounds)
{
    // Code 0 on a length that is no power of two gives wrong numbers, never a
    // write past the data (the sanitizer run watches this).
    CFFT f = MakeEngine(0);
    for (int n : {12, 24, 40}) {
        auto a = OneBased(oracle::random_vector(n, n));
        f.realft(a.data(), n, 1, 1);
        EXPECT_EQ(a[0], ROGUE);
        EXPECT_EQ(a[n + 3], ROGUE);
    }
    std::vector<double> c(2 * 6 + 2, 1.0);
    f.cmplxfft(reinterpret_cast<complex *>(c.data()), 6, 1, 0);
    EXPECT_EQ(c[12], 1.0);
}

TEST(FrontEnds, PrimeFactorPastTheTableFallsOverToChirpZ)
{
    // realft under primefac 1 with a half-length above 720720: chirp-z runs,
    // with its sign flip in the upper bins, and no notice.
    const int n = 2 * 720722;
    const auto x = oracle::random_vector(n, 99);
    CFFT pf = MakeEngine(1), cz = MakeEngine(4);
    auto a = OneBased(x), b = OneBased(x);
    pf.realft(a.data(), n, 1, 1);
    cz.realft(b.data(), n, 1, 1);
    EXPECT_EQ(a, b);
    EXPECT_EQ(pf.GetPrimeFac(), 1); // the front end changes no setting
}

// The portable merge and the AVX2 one (where the processor has it) agree to
// rounding on every length from 4 to 4096 in steps of 4, so that every tail
// of the four-stream loop is covered; realft's own tests check whichever of
// the two this machine runs against the long-double transform.
TEST(Realft, PortableAndVectorMergesAgree)
{
    const oscilla::detail::RealMerge wide = oscilla::detail::real_merge_avx2();
    if (!wide)
        GTEST_SKIP() << "no AVX2 on this processor";
    for (int n = 4; n <= 4096; n += 4) {
        for (int forward : {0, 1}) {
            std::vector<double> a(static_cast<size_t>(n) + 2);
            std::mt19937 gen(n + forward);
            std::uniform_real_distribution<double> u(-1.0, 1.0);
            for (auto &v : a)
                v = u(gen);
            std::vector<double> b = a;
            oscilla::detail::real_merge_portable(a.data(), n, forward);
            wide(b.data(), n, forward);
            double worst = 0.0;
            for (size_t i = 0; i < a.size(); i++)
                worst = std::max(worst, std::fabs(a[i] - b[i]));
            EXPECT_LE(worst, 16 * 2.220446049250313e-16) << "n = " << n << " forward " << forward;
        }
    }
}
