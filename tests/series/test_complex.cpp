#include "oscilla/series/complex.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstdint>
#include <cstdlib>
#include <limits>

using oscilla::complex;

namespace {

std::complex<double> S(const complex &z) { return {z.re, z.im}; }

void ExpectNear(const complex &got, const std::complex<double> &want, double tol_ulps = 64)
{
    const double scale = std::max(1.0, std::abs(want));
    const double tol = tol_ulps * std::numeric_limits<double>::epsilon() * scale;
    EXPECT_NEAR(got.re, want.real(), tol);
    EXPECT_NEAR(got.im, want.imag(), tol);
}

} // namespace

TEST(Complex, LayoutIsInterleavedDoubles)
{
    static_assert(sizeof(complex) == 2 * sizeof(double), "two doubles");
    complex a[3] = {complex(1, 2), complex(3, 4), complex(5, 6)};
    const double *d = reinterpret_cast<const double *>(a);
    for (int i = 0; i < 6; i++)
        EXPECT_EQ(d[i], i + 1.0);
    EXPECT_EQ(complex().re, 0.0);
    EXPECT_EQ(complex().im, 0.0);
}

TEST(Complex, ArithmeticMatchesTheDefinitions)
{
    const complex a(1.5, -2.0), b(-0.25, 3.0);
    ExpectNear(a * b, S(a) * S(b));
    ExpectNear(a / b, S(a) / S(b));
    ExpectNear(2.0 / b, 2.0 / S(b));
    ExpectNear(a + 2.0, S(a) + 2.0);
    ExpectNear(2.0 - a, 2.0 - S(a)); // double minus z negates the imaginary part
    complex c = a;
    c *= b;
    ExpectNear(c, S(a) * S(b));
    c = a;
    c /= b;
    ExpectNear(c, S(a) / S(b));
    c = a;
    c += 1.0;
    EXPECT_EQ(c.im, a.im); // a real addend touches the real part only
    c -= 1.0;
    EXPECT_EQ(c.re, a.re);
    EXPECT_EQ(-a, complex(-1.5, 2.0));
    EXPECT_EQ(oscilla::conj(a), complex(1.5, 2.0));
    EXPECT_DOUBLE_EQ(oscilla::norm(a), 6.25);
    EXPECT_DOUBLE_EQ(oscilla::abs(a), 2.5);
}

TEST(Complex, DivisionByZeroGivesNonFiniteValuesSilently)
{
    const complex q = complex(1, 1) / complex(0, 0);
    EXPECT_FALSE(std::isfinite(q.re));
    EXPECT_FALSE(std::isfinite(q.im));
}

TEST(Complex, ComparisonIsExactAndNaNIsNotEqualToItself)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const complex z(nan, 0);
    EXPECT_EQ(z == z, 0);
    EXPECT_EQ(z != z, 1);
    EXPECT_EQ(complex(1, 2) == complex(1, 2), 1);
    EXPECT_EQ(complex(1, 2) != complex(1, 2.0000000000000004), 1);
}

TEST(Complex, ElementaryFunctionsAgreeWithTheStandardLibraryAwayFromEdges)
{
    const complex pts[] = {complex(0.3, 0.7), complex(-1.2, 0.4), complex(2.0, -1.5), complex(-0.6, -0.9),
                           complex(0.1, 2.2)};
    for (const complex &z : pts) {
        SCOPED_TRACE(testing::Message() << z.re << "+" << z.im << "i");
        const std::complex<double> s = S(z);
        ExpectNear(oscilla::exp(z), std::exp(s));
        ExpectNear(oscilla::log(z), std::log(s));
        ExpectNear(oscilla::log10(z), std::log10(s));
        ExpectNear(oscilla::sqrt(z), std::sqrt(s));
        ExpectNear(oscilla::pow(z, 2.5), std::pow(s, 2.5));
        ExpectNear(oscilla::pow(z, complex(0.5, 1.5)), std::pow(s, std::complex<double>(0.5, 1.5)));
        ExpectNear(oscilla::pow(3.0, z), std::pow(3.0, s));
        ExpectNear(oscilla::sin(z), std::sin(s));
        ExpectNear(oscilla::cos(z), std::cos(s));
        ExpectNear(oscilla::sinh(z), std::sinh(s));
        ExpectNear(oscilla::cosh(z), std::cosh(s));
        ExpectNear(oscilla::tan(z), std::tan(s));
        ExpectNear(oscilla::tanh(z), std::tanh(s));
        ExpectNear(oscilla::acos(z), std::acos(s), 256);
        ExpectNear(oscilla::asin(z), std::asin(s), 256);
        ExpectNear(oscilla::atan(z), std::atan(s), 256);
    }
}

TEST(Complex, ZeroAndPowerEdges)
{
    EXPECT_EQ(oscilla::arg(complex(0, 0)), 0.0);
    EXPECT_EQ(oscilla::arg(complex(-0.0, 0.0)), 0.0); // exactly zero, whatever the sign bit
    EXPECT_EQ(oscilla::pow(complex(0, 0), 2.0), complex(0, 0));
    // p = 0 goes through polar: pow(0, 0) = 1 as modulus.
    EXPECT_EQ(oscilla::pow(complex(0, 0), 0.0), complex(1, 0));
    EXPECT_EQ(oscilla::pow(0.0, complex(1, 5)), complex(0, 0));
    EXPECT_EQ(oscilla::pow(complex(0, 0), complex(2, -1)), complex(0, 0));
    // A negative base takes log|a| + i pi: the result carries a rounding residue.
    const complex p = oscilla::pow(-2.0, complex(2, 0));
    EXPECT_NEAR(p.re, 4.0, 1e-14);
    EXPECT_NE(p.im, 0.0);
    EXPECT_LT(std::fabs(p.im), 1e-13);
}

TEST(Complex, ExponentialFormsOverflowAsTheirFormulasDo)
{
    // exp(800) overflows: the forms give infinities, not a library's guarded values.
    const complex s = oscilla::sin(complex(1.0, 800.0));
    EXPECT_TRUE(std::isinf(s.re) && s.re > 0);
    EXPECT_TRUE(std::isinf(s.im) && s.im > 0);
    const complex c = oscilla::cosh(complex(800.0, 0.5));
    EXPECT_TRUE(std::isinf(c.re));
}

TEST(Complex, FractionAndIntegerSplitTowardsZero)
{
    EXPECT_EQ(oscilla::fraction(-2.5), -0.5);
    EXPECT_EQ(oscilla::integer(-2.5), -2.0);
    EXPECT_EQ(oscilla::fraction(3.25), 0.25);
    EXPECT_EQ(oscilla::integer(3.25), 3.0);
}

TEST(Allocators, VectorIsZeroFilled)
{
    double *v = oscilla::lvec(17);
    ASSERT_NE(v, nullptr);
    for (int i = 0; i < 17; i++)
        EXPECT_EQ(v[i], 0.0);
    oscilla::lvecfree(v);
    oscilla::lvecfree(nullptr);
}

TEST(Allocators, MatrixKeepsItsDimensionsInFrontOfTheRowPointers)
{
    double **m = oscilla::lmatr(3, 5);
    ASSERT_NE(m, nullptr);
    const int32_t *hdr = reinterpret_cast<const int32_t *>(m) - 2;
    EXPECT_EQ(hdr[0], 3);
    EXPECT_EQ(hdr[1], 5);
    int r = 0, c = 0;
    oscilla::lmatrdims(m, r, c);
    EXPECT_EQ(r, 3);
    EXPECT_EQ(c, 5);
    for (int i = 0; i < 3; i++)
        for (int j = 0; j < 5; j++)
            m[i][j] = i * 10 + j; // every cell addressable
    EXPECT_EQ(m[2][4], 24.0);
    oscilla::lmatrfree(m);

    int **im = oscilla::imatr(4, 2);
    ASSERT_NE(im, nullptr);
    oscilla::imatrdims(im, r, c);
    EXPECT_EQ(r, 4);
    EXPECT_EQ(c, 2);
    im[3][1] = 7;
    oscilla::imatrfree(im);
}

TEST(Allocators, EmptyMatrixTestsTheWordInFrontOfTheRows)
{
    double **m = oscilla::lmatr(0, 4);
    ASSERT_NE(m, nullptr); // the column count stands where the last row pointer would be
    int r = -1, c = -1;
    oscilla::lmatrdims(m, r, c);
    EXPECT_EQ(r, 0);
    EXPECT_EQ(c, 4);
    oscilla::lmatrfree(m);
    EXPECT_EQ(oscilla::lmatr(0, 0), nullptr);
    EXPECT_EQ(oscilla::imatr(0, 0), nullptr);
}
