// Window samples against closed forms recomputed here in long double, the
// identities between codes, and the fitted Dolph-Chebyshev polynomial
// against a Dolph-Chebyshev window computed from its definition.
#include "oscilla/windows/cwinfn.h"

#include "windows/window_table.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <functional>
#include <utility>
#include <vector>

using namespace oscilla;

namespace {

using ld = long double;
constexpr double kEps = DBL_EPSILON;
constexpr ld kPiL = 3.141592653589793238462643383279502884L;
const int kLengths[] = {2, 3, 4, 16, 17, 255, 1000, 1001};

ld bessel_i0(ld x)
{
    ld term = 1.0L, sum = 1.0L;
    for (int k = 1; k < 500 && term > sum * 1e-22L; k++)
        sum += (term *= x * x / 4 / (static_cast<ld>(k) * k));
    return sum;
}

ld kaiser(ld alpha, int i, int n)
{
    const ld beta = std::sqrt((alpha * alpha - 1) / 0.10132118361L), v = 2.0L * i / (n - 1) - 1;
    return bessel_i0(beta * std::sqrt(1 - v * v)) / bessel_i0(beta);
}

// Side-lobe level in dB of the window the transform builds for a shape: main
// lobe 1 + delta over side lobes delta, delta = 10^(-A/20).
ld cheb_level_db(double shape)
{
    const ld delta = std::pow(10.0L, -static_cast<ld>(detail::ChebyshevSideLobeDb(shape)) / 20);
    return 20 * std::log10((1 + delta) / delta);
}

void expect_same(const double *a, const double *b, int n, double tol, const char *what)
{
    for (int i = 0; i < n; i++)
        EXPECT_NEAR(a[i], b[i], tol) << what << " i " << i;
}

struct ClosedForm {
    const char *name;
    int code;
    double shape, tolerance; // tolerance in units of eps, on samples of order 1
    std::function<ld(int, int)> ref;
};

// The three-term cosine sum a0 - a1 cos(p) + a2 cos(2p), p = 2 pi i / (n - 1).
ld cos_sum(ld a0, ld a1, ld a2, int i, int n)
{
    const ld p = 2 * kPiL * i / (n - 1);
    return a0 - a1 * std::cos(p) + a2 * std::cos(2 * p);
}

const ClosedForm kClosedForms[] = {
    {"Hann", 3, 0.0, 8, [](int i, int n) { ld s = std::sin(kPiL * i / (n - 1)); return s * s; }},
    {"Hamming", 4, 0.0, 8, [](int i, int n) { return cos_sum(0.53836L, 0.46164L, 0, i, n); }},
    {"Blackman", 6, 0.0, 8, [](int i, int n) { return cos_sum(0.42L, 0.5L, 0.08L, i, n); }},
    {"exact Blackman", 8, 0.0, 8,
     [](int i, int n) { return cos_sum(7938.0L / 18608, 9240.0L / 18608, 1430.0L / 18608, i, n); }},
    {"Bartlett", 2, 0.0, 4, [](int i, int n) { return 1.0L - std::fabs(2.0L * i / (n - 1) - 1.0L); }},
    {"Welch", 1, 0.0, 4, [](int i, int n) { const ld v = 2.0L * i / (n - 1) - 1; return 1.0L - v * v; }},
    {"Sine", 44, 0.0, 4, [](int i, int n) { return std::sin(kPiL * i / (n - 1)); }},
    {"Kaiser", 22, 3.0, 64, [](int i, int n) { return kaiser(3, i, n); }},
    {"Kaiser wide", 22, 8.0, 256, [](int i, int n) { return kaiser(8, i, n); }},
};

// Dolph-Chebyshev window of odd length n and side-lobe level db from its
// definition: the inverse DFT of T_M(x0 cos(pi k / n)), M = n - 1, with
// x0 = cosh(acosh(10^(db/20)) / M), scaled to a peak of 1.
std::vector<ld> dolph_chebyshev(int n, ld db)
{
    const int M = n - 1;
    const ld x0 = std::cosh(std::acosh(std::pow(10.0L, db / 20)) / M);
    std::vector<ld> W(n), w(n);
    for (int k = 0; k < n; k++) {
        const ld x = x0 * std::cos(kPiL * k / n);
        W[k] = std::fabs(x) <= 1 ? std::cos(M * std::acos(x))
                                 : (x < 0 && M % 2 ? -1 : 1) * std::cosh(M * std::acosh(std::fabs(x)));
    }
    for (int j = 0; j < n; j++)
        for (int k = 0; k < n; k++)
            w[j] += W[k] * std::cos(2 * kPiL * k * (j - M / 2.0L) / n);
    const ld peak = w[M / 2];
    for (ld &v : w)
        v /= peak;
    return w;
}

} // namespace

TEST(WindowFormulas, ClassicWindowsMatchTheirClosedForms)
{
    for (const ClosedForm &f : kClosedForms)
        for (int n : kLengths) {
            CWinFn win;
            const double *w = win.WindowFn(f.code, n, f.shape);
            ASSERT_NE(w, nullptr) << f.name << " n " << n;
            for (int i = 0; i < n; i++)
                ASSERT_LE(std::fabs(w[i] - f.ref(i, n)), f.tolerance * kEps) << f.name << " n " << n << " i " << i;
        }
}

TEST(WindowFormulas, ShapedWindowsAtTheirDefiningLimits)
{
    const int n = 101;
    // A raised cosine to the first power, and a taper covering half the
    // length from each side, are both the Hann window.
    CWinFn hann(3, n, 0.0), cossq(21, n, 2.0), taper(23, n, 2.0), taper3(23, n, 3.0);
    expect_same(cossq.Get(), hann.Get(), n, 4 * kEps, "cos^1");
    expect_same(taper.Get(), hann.Get(), n, 4 * kEps, "taper 2");
    expect_same(taper3.Get(), hann.Get(), n, 4 * kEps, "taper 3");
    // Shape 1 gives r = 0, limited to 0.01: flat from sample 2 to n - 3.
    CWinFn flat(23, 1000, 1.0);
    EXPECT_EQ(flat.Get()[0], 0.0);
    EXPECT_GT(flat.Get()[1], 0.0);
    EXPECT_LT(flat.Get()[1], 1.0);
    for (int i = 11; i < 989; i++)
        ASSERT_EQ(flat.Get()[i], 1.0) << i;
    EXPECT_LT(flat.Get()[998], 1.0);

    // Van der Maas ends carry the limit of the interior formula.
    CWinFn vdm(37, 4001, 3.0);
    EXPECT_NEAR(vdm.Get()[0], vdm.Get()[1], 0.02 * vdm.Get()[1]);
    EXPECT_EQ(vdm.Get()[0], vdm.Get()[4000]);
    EXPECT_NEAR(vdm.Get()[2000], 1.0, 1e-12); // the I1(x)/x limit gives a peak of 1

    // GaussWin, BetaWin and TriCubeWin have simple values at the middle and ends.
    CWinFn gw(29, 9, 2.0), bw(28, 9, 2.0), tc(27, 9, 0.0);
    for (CWinFn *w : {&gw, &bw, &tc})
        EXPECT_EQ(w->Get()[4], 1.0);
    EXPECT_EQ(bw.Get()[0], 0.0);
    EXPECT_EQ(tc.Get()[0], 0.0);
    EXPECT_NEAR(tc.Get()[2], 0.75 * 0.75, 4 * kEps); // (1 - (2/4)^2)^2
}

TEST(WindowFormulas, EveryFormulaIsSymmetricAndFiniteFromTwoPoints)
{
    for (const detail::WindowCode &row : detail::kWindowCodes)
        for (int n : {2, 3, 10, 33}) {
            CWinFn win;
            const double *w = win.WindowFn(row.code, n, 3.0);
            if (!w)
                continue; // codes whose service is missing, checked elsewhere
            // The transformed Dolph-Chebyshev window of even length is lopsided by construction.
            const bool symmetric = !(row.kind == detail::WinKind::Chebyshev && n % 2 == 0);
            for (int i = 0; i < n; i++) {
                ASSERT_TRUE(std::isfinite(w[i])) << "code " << row.code << " n " << n << " i " << i;
                if (symmetric) {
                    EXPECT_NEAR(w[i], w[n - 1 - i], 64 * kEps * std::fmax(1.0, std::fabs(w[i])))
                        << "code " << row.code << " n " << n;
                }
            }
        }
}

TEST(WindowFormulas, CosineSumRowsAndUserCoefficients)
{
    const int n = 64;
    // Codes 38 and 42 build the same flat top.
    CWinFn a(38, n, 0.0), b(42, n, 0.0);
    expect_same(a.Get(), b.Get(), n, 0.0, "38 vs 42");
    // Unnormalised flat tops: the peak is the plain sum of the coefficients.
    CWinFn ft5(43, 65, 0.0);
    EXPECT_NEAR(ft5.Get()[32], 1.0 + 1.93 + 1.29 + 0.388 + 0.0322, 16 * kEps);

    // Code 10: r = (sin(pi/(n-1)) / sin(2 pi/(n-1)))^2 = 1 / (4 cos^2(pi/(n-1))).
    CWinFn c10(10, n, 0.0);
    const ld r = 1.0L / (4 * std::cos(kPiL / (n - 1)) * std::cos(kPiL / (n - 1)));
    for (int i = 0; i < n; i++)
        EXPECT_NEAR(c10.Get()[i], cos_sum((1 - r) / 2, 0.5L, r / 2, i, n), 8 * kEps);

    // A selector outside a row table builds zeros.
    std::vector<double> w(8, 7.0);
    CWinFn::GenCos4(w.data(), 8, 14);
    for (double v : w)
        EXPECT_EQ(v, 0.0);

    // The user form: Hann from two coefficients; a sixth coefficient is ignored.
    double hann[2] = {0.5, 0.5};
    double six[6] = {1.0, 1.24, 0.244, 0.00305, 0.0, 99.0};
    CWinFn user, ref(3, n, 0.0);
    ASSERT_NE(user.WindowFn(n, 2, hann), nullptr);
    expect_same(user.Get(), ref.Get(), n, 0.0, "user Hann");
    ASSERT_NE(user.WindowFn(n, 6, six), nullptr);
    expect_same(user.Get(), a.Get(), n, 16 * kEps, "user flat top");
    EXPECT_EQ(user.WindowFn(1, 2, hann), nullptr);
}

TEST(WindowFormulas, ChebyshevByTransformIsTheDolphChebyshevWindow)
{
    double worst = 0.0;
    for (double shape : {2.0, 3.0, 4.0})
        for (int n : {2, 3, 9, 32, 33, 64, 65, 200}) {
            const int m = n % 2 ? n : n + 1;
            const std::vector<ld> ref = dolph_chebyshev(m, cheb_level_db(shape));
            CWinFn win;
            const double *w = win.WindowFn(30, n, shape);
            ASSERT_NE(w, nullptr) << n;
            // The peak at n/2 is 1; an even length keeps the first n samples
            // of the odd window one longer, so it is not symmetric.
            EXPECT_EQ(w[n / 2], 1.0);
            for (int i = 0; i < n; i++) {
                const double d = static_cast<double>(std::fabs(w[i] - ref[i]));
                worst = std::fmax(worst, d);
                EXPECT_LE(d, 64 * m * kEps) << "n " << n << " shape " << shape << " i " << i;
            }
            if (n % 2 == 0 && n > 2) {
                EXPECT_GT(std::fabs(w[0] - w[n - 1]), 1e-3 * w[0]) << n;
            }
        }
    RecordProperty("Chebyshev_vs_Dolph_max_abs", ::testing::PrintToString(worst));

    // Side lobes of the built window, from its transform on a fine grid.
    const int n = 65;
    CWinFn win(30, n, 3.0);
    auto response = [&](ld f) {
        ld s = 0;
        for (int i = 0; i < n; i++)
            s += win.Get()[i] * std::cos(2 * kPiL * f * (i - n / 2));
        return s;
    };
    const ld peak = response(0);
    ld f = 0, highest = 0;
    while (response(f) > 0) // out of the main lobe
        f += 1e-4L;
    for (; f <= 0.5L; f += 1e-4L)
        highest = std::fmax(highest, std::fabs(response(f)));
    EXPECT_NEAR(static_cast<double>(20 * std::log10(highest / peak)), static_cast<double>(-cheb_level_db(3.0)), 0.01);
}

TEST(WindowFormulas, ChebyshevFitTracksTheDolphChebyshevWindowWithClampedEvenCoefficients)
{
    double worst = 0.0;
    for (int n : {65, 257})
        for (double shape : {3.0, 4.0, 5.0}) {
            const std::vector<ld> ref = dolph_chebyshev(n, detail::ChebyshevSideLobeDb(shape));
            CWinFn win(31, n, shape);
            // The end samples of a long Dolph-Chebyshev window rise into
            // spikes that a smooth fit does not follow: compare the interior.
            for (int i = 1; i < n - 1; i++) {
                const double d = static_cast<double>(std::fabs(win.Get()[i] - ref[i]));
                worst = std::fmax(worst, d);
                EXPECT_LE(d, 0.01) << "n " << n << " shape " << shape << " i " << i;
            }
        }
    RecordProperty("ChebApprox_vs_Dolph_max_abs", ::testing::PrintToString(worst));

    // The fitted coefficients are clamped to the 50 to 150 dB range and even.
    double c40[21], c50[21], c150[21], c200[21], c90[21];
    const std::pair<double, double *> levels[] = {{40, c40}, {50, c50}, {150, c150}, {200, c200}, {90, c90}};
    for (const auto &l : levels)
        CWinFn::GetChebCoef(l.first, l.second);
    expect_same(c40, c50, 21, 0.0, "clamped below");
    expect_same(c200, c150, 21, 0.0, "clamped above");
    for (int j = 1; j <= 20; j += 2)
        EXPECT_EQ(c90[j], 0.0) << j;
    // The polynomial is even about the middle, and the fit peaks near 1.
    EXPECT_NEAR(CWinFn::EvalChebPoly(20, 0.5, c90), 1.0, 1e-3);
    for (double t : {0.0, 0.1, 0.37})
        EXPECT_NEAR(CWinFn::EvalChebPoly(20, t, c90), CWinFn::EvalChebPoly(20, 1.0 - t, c90), 1e-13);
    // Clenshaw against the direct sum of c[j] T_j(x), c[0] whole.
    for (double t : {0.0, 0.2, 0.5, 0.9, 1.0}) {
        const ld x = (t - 0.5L) / 0.5L;
        ld s = 0;
        for (int j = 0; j <= 20; j++)
            s += c90[j] * std::cos(j * std::acos(x));
        EXPECT_NEAR(CWinFn::EvalChebPoly(20, t, c90), static_cast<double>(s), 1e-12);
    }
}
