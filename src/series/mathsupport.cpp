// Math support layer: error queue, special-value tests, random deviates,
// modified Bessel functions and the gamma family.
#include "oscilla/series/mathsupport.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace oscilla {

int lastError = 0;
int errorSlots[MATH_ERROR_SLOTS] = {};
int errorCount = 0;
long zeroDivideCount = 0;
int gaussStored = 0;
double gaussSpare = 0.0;

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kDegPerRad = 57.29577951308232;

std::uint32_t upper_word(double x)
{
    std::uint64_t bits;
    std::memcpy(&bits, &x, sizeof bits);
    return static_cast<std::uint32_t>(bits >> 32);
}

bool is_integral(double x) { return std::floor(x) == x; }

// Chebyshev coefficients (the first halved when summed) of
//   I0(a) and I1(a)/a on 0 <= a <= 8, in u = 2 (a/8)^2 - 1, and of
//   sqrt(a) exp(-a) I0(a) and sqrt(a) exp(-a) I1(a) for a >= 8, in z = 8/a
//   mapped from [0.00072, 1] onto [-1, 1].
// Computed at 50 digits from Chebyshev-node interpolation; truncated here
// where the next term is below 1e-16 of the leading one (relative error of
// the truncated sums below 3e-17 against the 50-digit functions).
const double kI0Small[19] = {
    255.466879624362167,      190.494320172742844,      82.4890327440240996,
    22.2748192424622309,      4.01167376017934853,      0.509493365439982871,
    0.0477187487981741352,    0.00341633176601234095,   0.00019246935968811366,
    8.73831549662236186e-6,   3.26091050578962916e-7,   1.01697267276907754e-8,
    2.68828128950864233e-10,  6.09689279523836953e-12,  1.19890829891963634e-13,
    2.0630514741113972e-15,   3.13191771153875599e-17,  4.22493675236403095e-19,
    5.09728415090953995e-21,
};
const double kI1Small[19] = {
    32.4862797258096615,      22.6640770050712832,      8.67448970421680594,
    2.04181881906525827,      0.321432488293469363,     0.0359819389755840038,
    0.00299913489348006897,   0.000192877376953402392,  9.84459821927064361e-6,
    4.08017265288732076e-7,   1.3993285570486523e-8,    4.03452065028431763e-10,
    9.91131991170676659e-12,  2.09871602135413826e-13,  3.86911944441610609e-15,
    6.26498244774662348e-17,  8.97930457236337468e-19,  1.14702466911150894e-20,
    1.31397358980892202e-22,
};
const double kI0Large[23] = {
    0.804495075749384941,     0.00336687757415971209,   0.0000688098414291108646,
    2.88616950580326991e-6,   2.04440535697158638e-7,   2.26098895932114426e-8,
    3.38616041635597919e-9,   4.91962282206095888e-10,  1.15690178387630775e-11,
    -3.14506499590449631e-11, -1.31552661385420348e-11, -1.77388880069927334e-12,
    7.18063372667141907e-13,  3.82615834789532016e-13,  1.46191835553636228e-14,
    -4.13227989896862141e-14, -9.39952045158033748e-15, 3.8122453752159119e-15,
    1.7481418969095755e-15,   -3.45661705156694163e-16, -2.78986094254361708e-16,
    3.54115501830973623e-17,  4.40299359472564054e-17,
};
const double kI1Large[23] = {
    0.778562481744716628,     -0.00975437231708102191,  -0.000110445215649256432,
    -3.87546772366826756e-6,  -2.50661993639919867e-7,  -2.6247990166753473e-8,
    -3.823982008733588e-9,    -5.56634897311787166e-10, -1.86103460302735955e-11,
    3.24804042936660174e-11,  1.40622555644427412e-11,  2.01370799023865492e-12,
    -7.20198984727917018e-13, -4.05598672217985878e-13, -2.01688235449910645e-14,
    4.25460684409607607e-14,  1.02571246333080539e-14,  -3.81711642483358838e-15,
    -1.85513368733472931e-15, 3.34365302303605246e-16,  2.9240610568063619e-16,
    -3.29704943013726262e-17, -4.58675484395556087e-17,
};
constexpr double kLargeLo = 0.00072;
constexpr double kLargeHi = 1.0;

// sum' c[k] T_k(u) for the small branch, |u| <= 1: the T_k themselves come
// from T(k+1) = 2u T(k) - T(k-1), which is stable on [-1, 1].
template <int K>
double cheb_even_sum(const double (&c)[K], double u)
{
    double tkm1 = 1.0, tk = u;
    double sum = 0.5 * c[0] + c[1] * u;
    for (int k = 2; k < K; k++) {
        const double tkp1 = 2.0 * u * tk - tkm1;
        sum += c[k] * tkp1;
        tkm1 = tk;
        tk = tkp1;
    }
    return sum;
}

// Clenshaw recurrence for sum' c[k] T_k(y) with y mapped from z in [lo, hi].
template <int K>
double cheb_clenshaw(const double (&c)[K], double z, double lo, double hi)
{
    const double y = (2.0 * z - lo - hi) / (hi - lo);
    const double y2 = 2.0 * y;
    double d = 0.0, dd = 0.0;
    for (int k = K - 1; k >= 1; k--) {
        const double sv = d;
        d = y2 * d - dd + c[k];
        dd = sv;
    }
    return y * d - dd + 0.5 * c[0];
}

// Near zero the Chebyshev sum in u cancels heavily (its terms add to some
// hundreds for a value near 1), so below a = 4 the power series
// sum (a^2/4)^k / (k! (k + nu)!) is used instead: all its terms are positive.
double bessel_power_series(int nu, double a)
{
    const double h = 0.5 * a, q = h * h;
    double term = nu == 0 ? 1.0 : h;
    double sum = term;
    for (int k = 1; k < 60; k++) {
        term *= q / (static_cast<double>(k) * (k + nu));
        sum += term;
        if (term < sum * 1e-17)
            break;
    }
    return sum;
}
constexpr double kSeriesLimit = 4.0;

// sqrt(a) exp(-a) f(a) known as s: f(a) = s / (exp(-a) sqrt(a)). Split in two
// half exponentials so that the result keeps full precision right up to the
// overflow of f itself, where it becomes infinity.
double unscale_large(double s, double a)
{
    const double e = std::exp(0.5 * a);
    return s / std::sqrt(a) * e * e;
}

// Incomplete gamma by its series (Numerical Recipes gser), for x < a + 1.
constexpr int ITMAX = 1000;
constexpr double EPS = 1e-14;
constexpr double FPMIN = 1e-300;

double GammaSeries(double a, double x)
{
    if (x <= 0.0)
        return 0.0;
    const double gln = LogGamma(a);
    double ap = a;
    double del = 1.0 / a;
    double sum = del;
    for (int n = 1; n <= ITMAX; n++) {
        ap += 1.0;
        del *= x / ap;
        sum += del;
        if (std::fabs(del) < std::fabs(sum) * EPS)
            return sum * std::exp(-x + a * std::log(x) - gln);
    }
    PostMathError(MATHERR_NO_CONVERGENCE);
    return sum * std::exp(-x + a * std::log(x) - gln);
}

// Complement Q(a, x) by its continued fraction, modified Lentz
// (Numerical Recipes gcf), for x >= a + 1.
double GammaFraction(double a, double x)
{
    const double gln = LogGamma(a);
    double b = x + 1.0 - a;
    double c = 1.0 / FPMIN;
    double d = 1.0 / b;
    double h = d;
    int i;
    for (i = 1; i <= ITMAX; i++) {
        const double an = -i * (i - a);
        b += 2.0;
        d = an * d + b;
        if (std::fabs(d) < FPMIN)
            d = FPMIN;
        c = b + an / c;
        if (std::fabs(c) < FPMIN)
            c = FPMIN;
        d = 1.0 / d;
        const double del = d * c;
        h *= del;
        if (std::fabs(del - 1.0) < EPS)
            break;
    }
    if (i > ITMAX)
        PostMathError(MATHERR_NO_CONVERGENCE);
    return std::exp(-x + a * std::log(x) - gln) * h;
}

} // namespace

int PostMathError(int code)
{
    lastError = code;
    if (errorCount < MATH_ERROR_SLOTS)
        errorSlots[errorCount++] = code;
    return code;
}

void ClearMathErrors()
{
    for (int &s : errorSlots)
        s = 0;
    errorCount = 0;
    lastError = 0;
}

int IsMathError(int code)
{
    for (int i = 0; i < errorCount && i < MATH_ERROR_SLOTS; i++)
        if (errorSlots[i] == code)
            return 1;
    return 0;
}

int IsNanMarker(double x)
{
    const std::uint32_t hi = upper_word(x);
    return hi == 0x7FF80020u || hi == 0xFFF80020u;
}

int IsInfinite(double x)
{
    const std::uint32_t hi = upper_word(x);
    return hi == 0x7FF00000u || hi == 0xFFF00000u;
}

double SafeDivide(double a, double b)
{
    if (b == 0.0) {
        PostMathError(MATHERR_DIVIDE_BY_ZERO);
        zeroDivideCount++;
        return 0.0;
    }
    return a / b;
}

double DegToRad(double deg) { return deg / kDegPerRad; }
double RadToDeg(double rad) { return rad * kDegPerRad; }

double Acosh(double x)
{
    if (!(x >= 1.0)) {
        PostMathError(MATHERR_ACOSH_DOMAIN);
        return 0.0;
    }
    return std::log(std::sqrt(x * x - 1.0) + x);
}

// Four groups of four decimal digits, each from one rand() value scaled to
// 0..9999, joined behind a point and read back. rand() is first brought to
// 15 bits so that the digits have the same spread on every runtime,
// whatever its RAND_MAX.
double UniformDeviate()
{
    char buf[24];
    buf[0] = '.';
    for (int k = 0; k < 4; k++) {
        const long long r15 = static_cast<long long>(std::rand()) * 32768 / (static_cast<long long>(RAND_MAX) + 1);
        const int r = static_cast<int>(r15 * 10000 / 32768);
        std::snprintf(buf + 1 + 4 * k, sizeof buf - 1 - 4 * k, "%04d", r);
    }
    return std::atof(buf);
}

// Marsaglia's polar method; the second value of each pair is kept for the next call.
double GaussDeviate()
{
    if (gaussStored) {
        gaussStored = 0;
        return gaussSpare;
    }
    double p, q, r;
    do {
        p = 2.0 * UniformDeviate() - 1.0;
        q = 2.0 * UniformDeviate() - 1.0;
        r = p * p + q * q;
    } while (r >= 1.0 || r == 0.0);
    const double f = std::sqrt(-2.0 * std::log(r) / r);
    gaussSpare = p * f;
    gaussStored = 1;
    return q * f;
}

double BesselI0(double x)
{
    const double a = std::fabs(x);
    if (a == 0.0)
        return 1.0;
    if (a < kSeriesLimit)
        return bessel_power_series(0, a);
    if (a <= 8.0) {
        const double t = a / 8.0;
        return cheb_even_sum(kI0Small, 2.0 * t * t - 1.0);
    }
    return unscale_large(cheb_clenshaw(kI0Large, 8.0 / a, kLargeLo, kLargeHi), a);
}

double BesselI1(double x)
{
    const double a = std::fabs(x);
    if (a == 0.0)
        return 0.0;
    double v;
    if (a < kSeriesLimit) {
        v = bessel_power_series(1, a);
    } else if (a <= 8.0) {
        const double t = a / 8.0;
        v = a * cheb_even_sum(kI1Small, 2.0 * t * t - 1.0);
    } else {
        v = unscale_large(cheb_clenshaw(kI1Large, 8.0 / a, kLargeLo, kLargeHi), a);
    }
    return x < 0.0 ? -v : v;
}

// Stirling's series after multiplying the argument up to 16 or more.
double LogGamma(double x)
{
    if (x <= 0.0) {
        if (is_integral(x)) {
            PostMathError(MATHERR_LOGGAMMA_POLE);
            return 0.0;
        }
        // Reflection; for arguments where the quotient is negative the log is a NaN.
        return std::log(kPi / std::sin(kPi * x)) - LogGamma(1.0 - x);
    }
    static const double c[8] = {1.0 / 12.0,       -1.0 / 360.0, 1.0 / 1260.0,    -1.0 / 1680.0,
                                1.0 / 1188.0,     -691.0 / 360360.0, 1.0 / 156.0, -3617.0 / 122400.0};
    double p = 1.0;
    while (x < 16.0) {
        p *= x;
        x += 1.0;
    }
    double s = (x - 0.5) * std::log(x) - x + 0.5 * std::log(2.0 * kPi);
    const double z = 1.0 / x;
    const double z2 = z * z;
    double term = z;
    double series = 0.0;
    for (int k = 0; k < 8; k += 2) {
        const double pair = c[k] * term + c[k + 1] * term * z2;
        if (series + pair == series)
            break;
        series += pair;
        term *= z2 * z2;
    }
    return s + series + std::log(1.0 / p);
}

double GammaFn(double x)
{
    if (x <= 0.0) {
        if (is_integral(x)) {
            PostMathError(MATHERR_GAMMA_POLE);
            return 0.0;
        }
        return kPi / (std::sin(kPi * x) * GammaFn(1.0 - x));
    }
    if (x > 167.92)
        return 1e300;
    return std::exp(LogGamma(x));
}

double GammaP(double a, double x)
{
    if (x < 0.0 || !(a > 0.0)) {
        PostMathError(MATHERR_GAMMAP_DOMAIN);
        return 0.0;
    }
    if (std::isnan(x) || std::isnan(a))
        return x + a; // no iteration on a NaN
    if (std::isinf(x))
        return 1.0; // the whole distribution lies below an infinite x
    if (x < a + 1.0)
        return GammaSeries(a, x);
    return 1.0 - GammaFraction(a, x);
}

double ChiSquareP(double dof, double x) { return GammaP(0.5 * dof, 0.5 * x); }

void MeanStdFromSums(int n, double sum, double sumsq, double *mean, double *std)
{
    double m, s;
    if (n == 1) {
        m = s = sum;
    } else if (n < 1) {
        m = s = 0.0; // no points: nothing to average
    } else {
        m = sum / n;
        const double q = (n * sumsq - sum * sum) / ((n - 1.0) * n);
        s = q > 0.0 ? std::sqrt(q) : 0.0;
    }
    if (mean)
        *mean = m;
    if (std)
        *std = s;
}

} // namespace oscilla
