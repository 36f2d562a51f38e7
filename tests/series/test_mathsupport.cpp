// Math support layer: the error queue, the special-value bit tests, the
// deviates, and Bessel / gamma functions against independent references
// (long-double power series, closed forms, Poisson sums, the C library).
#include "oscilla/series/mathsupport.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>

using namespace oscilla;

namespace {

constexpr double kEps = DBL_EPSILON;
constexpr long double kPiL = 3.141592653589793238462643383279502884L;

double from_bits(std::uint64_t bits)
{
    double x;
    std::memcpy(&x, &bits, sizeof x);
    return x;
}

// I_nu(x) = sum (x/2)^(2k+nu) / (k! (k+nu)!), all terms positive.
long double bessel_series(int nu, long double x)
{
    const long double h = x / 2, q = h * h;
    long double term = nu == 0 ? 1.0L : h, sum = term;
    for (int k = 1; k < 5000 && term >= sum * 1e-22L; k++)
        sum += (term *= q / (static_cast<long double>(k) * (k + nu)));
    return sum;
}

// P(a, x) for integer a: 1 - exp(-x) sum_{k<a} x^k / k!.
long double poisson_gamma_p(int a, long double x)
{
    long double term = 1.0L, sum = 1.0L;
    for (int k = 1; k < a; k++)
        sum += (term *= x / k);
    return 1.0L - std::exp(-x) * sum;
}

struct Moments {
    double mean, meansq, lo, hi;
};

Moments moments(double (*draw)(), int n)
{
    Moments m{0.0, 0.0, HUGE_VAL, -HUGE_VAL};
    for (int i = 0; i < n; i++) {
        const double u = draw();
        m.mean += u / n;
        m.meansq += u * u / n;
        m.lo = std::fmin(m.lo, u);
        m.hi = std::fmax(m.hi, u);
    }
    return m;
}

class MathSupport : public ::testing::Test {
protected:
    void SetUp() override { ClearMathErrors(); }
    void TearDown() override { ClearMathErrors(); }
};

} // namespace

TEST_F(MathSupport, ErrorQueueHoldsTenCodesAndTracksTheLast)
{
    for (int k = 1; k <= 11; k++)
        EXPECT_EQ(PostMathError(-1000 - k), -1000 - k);
    EXPECT_EQ(errorCount, 10);
    EXPECT_EQ(lastError, -1011);
    for (int k = 1; k <= 10; k++) {
        EXPECT_EQ(errorSlots[k - 1], -1000 - k);
        EXPECT_EQ(IsMathError(-1000 - k), 1);
    }
    EXPECT_EQ(IsMathError(-1011), 0); // reached lastError but no slot
    ClearMathErrors();
    EXPECT_EQ(errorCount, 0);
    EXPECT_EQ(lastError, 0);
    EXPECT_EQ(IsMathError(-1001), 0);
    for (int s : errorSlots)
        EXPECT_EQ(s, 0);
}

TEST_F(MathSupport, SafeDivideAcoshAndAngles)
{
    const long before = zeroDivideCount;
    EXPECT_EQ(SafeDivide(6.0, 3.0), 2.0);
    EXPECT_EQ(errorCount, 0);
    for (double zero : {0.0, -0.0})
        EXPECT_EQ(SafeDivide(1.0, zero), 0.0);
    EXPECT_EQ(zeroDivideCount, before + 2);
    EXPECT_EQ(lastError, MATHERR_DIVIDE_BY_ZERO);
    EXPECT_EQ(IsMathError(-1), 1);

    ClearMathErrors();
    EXPECT_EQ(Acosh(1.0), 0.0);
    for (double x : {1.5, 2.0, 10.0, 1e6}) {
        const long double ref = std::acosh(static_cast<long double>(x));
        EXPECT_LE(std::fabs(Acosh(x) - ref), 4 * kEps * ref) << x;
    }
    EXPECT_EQ(errorCount, 0);
    EXPECT_EQ(Acosh(0.5), 0.0);
    EXPECT_EQ(lastError, MATHERR_ACOSH_DOMAIN);
    EXPECT_EQ(errorCount, 1);

    EXPECT_NEAR(DegToRad(180.0), static_cast<double>(kPiL), 2 * kEps * 3.2);
    EXPECT_NEAR(RadToDeg(static_cast<double>(kPiL) / 2), 90.0, 2 * kEps * 90);
    EXPECT_NEAR(RadToDeg(DegToRad(37.5)), 37.5, 4 * kEps * 37.5);
}

TEST_F(MathSupport, BitTestsLookOnlyAtTheirPatterns)
{
    // The marker ignores the sign and low bits; an ordinary quiet NaN is not one.
    const double marker = from_bits(0x7FF8002000000000ull);
    const struct {
        double x;
        int nan_marker, infinite;
    } cases[] = {{marker, 1, 0}, {from_bits(0xFFF80020DEADBEEFull), 1, 0}, {from_bits(0x7FF8000000000000ull), 0, 0},
                 {std::nan(""), 0, 0}, {1.0, 0, 0}, {0.0, 0, 0}, {DBL_MAX, 0, 0}, {HUGE_VAL, 0, 1},
                 {-HUGE_VAL, 0, 1}, {from_bits(0x7FF0000000000001ull), 0, 1}}; // infinity ignores the lower word
    for (const auto &c : cases) {
        EXPECT_EQ(IsNanMarker(c.x), c.nan_marker) << c.x;
        EXPECT_EQ(IsInfinite(c.x), c.infinite) << c.x;
    }
}

TEST_F(MathSupport, UniformDeviateUsesFourRandValuesAndStaysInRange)
{
    std::srand(12345);
    (void)UniformDeviate();
    const int next = std::rand();
    std::srand(12345);
    for (int k = 0; k < 4; k++)
        (void)std::rand();
    EXPECT_EQ(next, std::rand());

    std::srand(1);
    const Moments m = moments(UniformDeviate, 20000);
    EXPECT_GE(m.lo, 0.0);
    EXPECT_LT(m.hi, 1.0);
    EXPECT_NEAR(m.mean, 0.5, 0.01);
    EXPECT_NEAR(m.meansq - m.mean * m.mean, 1.0 / 12.0, 0.005);
}

TEST_F(MathSupport, GaussDeviateHandsOutThePairsSpare)
{
    std::srand(99);
    gaussStored = 0;
    const double first = GaussDeviate();
    EXPECT_EQ(gaussStored, 1);
    const double spare = gaussSpare;
    EXPECT_EQ(GaussDeviate(), spare);
    EXPECT_EQ(gaussStored, 0);
    EXPECT_TRUE(std::isfinite(first));

    const Moments m = moments(GaussDeviate, 20000);
    EXPECT_NEAR(m.mean, 0.0, 0.03);
    EXPECT_NEAR(m.meansq, 1.0, 0.04);
}

TEST_F(MathSupport, BesselAgainstLongDoublePowerSeries)
{
    double worst0 = 0.0, worst1 = 0.0;
    for (double x = 0.0; x <= 700.0; x += (x < 20.0 ? 0.0625 : 1.7)) {
        const long double r0 = bessel_series(0, x), r1 = bessel_series(1, x);
        const double e0 = static_cast<double>(std::fabs((BesselI0(x) - r0) / r0));
        const double e1 = x > 0.0 ? static_cast<double>(std::fabs((BesselI1(x) - r1) / r1)) : 0.0;
        worst0 = std::fmax(worst0, e0);
        worst1 = std::fmax(worst1, e1);
        EXPECT_LE(e0, 8 * kEps) << "I0 at " << x;
        EXPECT_LE(e1, 8 * kEps) << "I1 at " << x;
        EXPECT_EQ(BesselI0(-x), BesselI0(x));
        EXPECT_EQ(BesselI1(-x), -BesselI1(x));
    }
    // A second, independent implementation for the moderate range.
    for (double x = 0.01; x < 50.0; x *= 1.21) {
        EXPECT_LE(std::fabs(BesselI0(x) / std::cyl_bessel_i(0.0, x) - 1.0), 16 * kEps) << x;
        EXPECT_LE(std::fabs(BesselI1(x) / std::cyl_bessel_i(1.0, x) - 1.0), 16 * kEps) << x;
    }
    RecordProperty("I0_worst_rel_eps", ::testing::PrintToString(worst0 / kEps));
    RecordProperty("I1_worst_rel_eps", ::testing::PrintToString(worst1 / kEps));

    EXPECT_EQ(BesselI0(0.0), 1.0);
    EXPECT_EQ(BesselI1(0.0), 0.0);
    // Past the double range the large branch overflows quietly.
    EXPECT_TRUE(std::isfinite(BesselI0(709.0)));
    EXPECT_EQ(BesselI0(720.0), HUGE_VAL);
    EXPECT_EQ(BesselI1(-720.0), -HUGE_VAL);
    EXPECT_EQ(BesselI0(1e6), HUGE_VAL);
    EXPECT_EQ(errorCount, 0);
}

TEST_F(MathSupport, LogGammaAndGammaAgainstFactorialsAndReflection)
{
    long double logfact = 0.0L; // log (n-1)!, accumulated in long double
    for (int n = 1; n <= 170; logfact += std::log(static_cast<long double>(n++)))
        EXPECT_LE(std::fabs(LogGamma(n) - logfact), 32 * kEps * std::fmax(1.0L, logfact)) << n;
    // Half-integers: Gamma(k + 1/2) = (2k)! sqrt(pi) / (4^k k!). Gamma is
    // exp(log Gamma), so its relative error is the absolute error of the log.
    long double g = std::sqrt(kPiL);
    // (The multiplied-up argument puts log Gamma near 30 even for small x.)
    for (double x = 0.5; x < 60; g *= x, x += 1.0)
        EXPECT_LE(std::fabs(GammaFn(x) - g), 8 * kEps * std::fmax(32.0L, std::log(g)) * g) << x;
    EXPECT_LE(std::fabs(GammaFn(5.0) - 24.0), 64 * kEps * 24.0);
    // Non-integer arguments against the C library, and reflection below zero.
    for (double x = 0.013; x < 120.0; x *= 1.37) {
        const double ref = std::lgamma(x);
        EXPECT_LE(std::fabs(LogGamma(x) - ref), 64 * kEps * std::fmax(1.0, std::fabs(ref))) << x;
    }
    const long double rpi = std::sqrt(kPiL);
    EXPECT_LE(std::fabs(GammaFn(-0.5) + 2.0 * rpi), 64 * kEps * 3.6);
    EXPECT_LE(std::fabs(GammaFn(-2.5) + 8.0 * rpi / 15.0), 64 * kEps);
    EXPECT_LE(std::fabs(LogGamma(-1.5) - std::log(4.0 * rpi / 3.0)), 64 * kEps);
    // Where Gamma is negative the reflected logarithm has no real value.
    EXPECT_TRUE(std::isnan(LogGamma(-0.5)));
    EXPECT_EQ(errorCount, 0);

    EXPECT_EQ(GammaFn(168.0), 1e300);
    EXPECT_TRUE(std::isfinite(GammaFn(167.9)));
    EXPECT_EQ(GammaFn(0.0), 0.0);
    EXPECT_EQ(lastError, MATHERR_GAMMA_POLE);
    EXPECT_EQ(GammaFn(-3.0), 0.0);
    EXPECT_EQ(LogGamma(-2.0), 0.0);
    EXPECT_EQ(lastError, MATHERR_LOGGAMMA_POLE);
    EXPECT_EQ(errorCount, 3);
}

TEST_F(MathSupport, IncompleteGammaAgainstPoissonSumsAndClosedForms)
{
    double worst = 0.0;
    for (int a = 1; a <= 30; a++)
        for (double x = 0.05; x < 80.0; x *= 1.3) {
            const long double ref = poisson_gamma_p(a, x);
            const double err = static_cast<double>(std::fabs(GammaP(a, x) - ref));
            worst = std::fmax(worst, err);
            EXPECT_LE(err, 1e-13) << "a " << a << " x " << x;
        }
    RecordProperty("GammaP_worst_abs", ::testing::PrintToString(worst));
    for (double x = 0.0; x < 100.0; x += 0.37) {
        EXPECT_NEAR(ChiSquareP(2, x), 1.0 - std::exp(-x / 2), 1e-14) << x;
        EXPECT_NEAR(ChiSquareP(1, x), std::erf(std::sqrt(x / 2)), 1e-14) << x;
    }
    EXPECT_EQ(GammaP(1.0, 0.0), 0.0);
    EXPECT_EQ(ChiSquareP(3.0, HUGE_VAL), 1.0);
    EXPECT_EQ(errorCount, 0);

    EXPECT_EQ(GammaP(0.0, 1.0), 0.0);
    EXPECT_EQ(lastError, MATHERR_GAMMAP_DOMAIN);
    EXPECT_EQ(GammaP(2.0, -1.0), 0.0);
    EXPECT_EQ(errorCount, 2);

    // The series needs far more than 1000 terms this close to a huge a.
    ClearMathErrors();
    (void)GammaP(1e7, 1e7 - 10.0);
    EXPECT_EQ(IsMathError(MATHERR_NO_CONVERGENCE), 1);
}

TEST_F(MathSupport, MeanStdFromSums)
{
    double m = -1, s = -1;
    MeanStdFromSums(1, 3.5, 12.25, &m, &s);
    EXPECT_EQ(m, 3.5);
    EXPECT_EQ(s, 3.5);
    MeanStdFromSums(4, 10.0, 30.0, &m, &s); // 1, 2, 3, 4
    EXPECT_DOUBLE_EQ(m, 2.5);
    EXPECT_DOUBLE_EQ(s, std::sqrt(5.0 / 3.0));
    MeanStdFromSums(3, 0.3, 0.03, &m, &s); // equal values: the quotient rounds to 0 or below
    EXPECT_DOUBLE_EQ(m, 0.1);
    EXPECT_EQ(s, 0.0);
}
