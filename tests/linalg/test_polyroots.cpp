// Polynomial roots: every method against polynomials built from known roots,
// frequency lists, root subsets and the spectral-factor root moves.
#include "oscilla/linalg/polyroots.h"

#include "linalg/polyroots_tables.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <complex>
#include <cstdio>
#include <vector>

using namespace oscilla;

namespace {

using cld = std::complex<long double>;
const double eps = DBL_EPSILON;
const double kPi = 3.14159265358979323846;

// Monic coefficients of prod (x - r), descending: a[0] = 1, a[k] the x^(n-k) coefficient.
std::vector<cld> monic_from_roots(const std::vector<cld> &r)
{
    std::vector<cld> a(1, cld(1));
    for (const cld &z : r) {
        a.push_back(cld(0));
        for (size_t k = a.size() - 1; k >= 1; k--) a[k] -= z * a[k - 1];
    }
    return a;
}

// c(1..n) of x^n + c(1) x^(n-1) + ... + c(n), zero-based, no negation.
std::vector<double> coefs_from_roots(const std::vector<cld> &r)
{
    std::vector<cld> a = monic_from_roots(r);
    std::vector<double> c;
    for (size_t k = 1; k < a.size(); k++) c.push_back((double)a[k].real());
    return c;
}

std::vector<cld> conj_pairs(const std::vector<std::pair<double, double>> &polar)
{
    std::vector<cld> r;
    for (auto &p : polar) {
        cld z = std::polar((long double)p.first, (long double)(2 * kPi * p.second));
        r.push_back(z);
        r.push_back(std::conj(z));
    }
    return r;
}

// Largest |computed - true| / max(1, |true|) (or / |true| when own_scale) after pairing
// each true root with the nearest unused computed one.
double root_error(const complex *got, const std::vector<cld> &truth, bool own_scale = false)
{
    const size_t n = truth.size();
    std::vector<bool> used(n + 1, false);
    double worst = 0;
    for (const cld &t : truth) {
        size_t best = 0;
        double bd = INFINITY;
        for (size_t i = 1; i <= n; i++) {
            if (used[i]) continue;
            double d = (double)std::abs(cld(got[i].re, got[i].im) - t);
            if (d < bd) { bd = d; best = i; }
        }
        if (best == 0) return INFINITY;
        used[best] = true;
        worst = std::max(worst, bd / (own_scale ? (double)std::abs(t) : std::max(1.0, (double)std::abs(t))));
    }
    return worst;
}

// The codes that solve x^n + c(1) x^(n-1) + ... + c(n) itself.
std::vector<int> monic_methods()
{
    std::vector<int> m;
    for (const auto &pm : detail::kPolyRootMethods)
        if (pm.form == detail::PolyForm::Monic) m.push_back(pm.code);
    return m;
}
const std::vector<int> kMethods = monic_methods();

struct Problem {
    const char *name;
    std::vector<cld> roots;
    double tol; // on the root error, for every method
};

} // namespace

TEST(CPolyRoots, KnownRootsEveryMethod)
{
    auto wilkinson = [](int n) {
        std::vector<cld> w;
        for (int k = 1; k <= n; k++) w.push_back(k);
        return w;
    };
    std::vector<cld> mixed = conj_pairs({{0.9, 0.1}, {1.2, 0.3}});
    mixed.push_back(-0.6);
    const Problem probs[] = {
        {"separated real", {-3.5, -1, 0.25, 2, 7}, 1e-13},
        {"AR pairs", conj_pairs({{0.95, 0.05}, {0.8, 0.21}, {0.99, 0.37}, {0.5, 0.45}}), 1e-13},
        {"mixed", mixed, 1e-13},
        {"cluster", {0.5, 0.501, 0.502, -1, 3}, 1e-8},
        {"double", {1, 1, -2, cld(0, 1), cld(0, -1)}, 1e-7},
        {"Wilkinson 12", wilkinson(12), 1e-8},
        {"Wilkinson 16", wilkinson(16), 1e-4}};
    for (const Problem &p : probs) {
        std::vector<double> c = coefs_from_roots(p.roots);
        const int n = (int)c.size();
        for (int method : kMethods) {
            CPolyRoots pr(c.data(), n, method, 0, 0);
            const complex *r = pr.GetRoots();
            EXPECT_EQ(r[0].re, n);
            EXPECT_EQ(r[0].im, 0.0);
            double e = root_error(r, p.roots);
            EXPECT_LT(e, p.tol) << p.name << " method " << method;
            std::printf("[ roots ] %-14s method %d  max rel error %.2e\n", p.name, method, e);
            if (method <= 1) {
                for (int i = 2; i <= n; i++) EXPECT_LE(r[i - 1].re, r[i].re) << p.name;
            }
        }
    }
}

TEST(CPolyRoots, ScaledRoots)
{
    // Relative accuracy must not depend on the magnitude of the roots: this catches a
    // convergence test whose error bound grows with the wrong power of |s|.
    for (double scale : {1e-20, 1e20, 1e-45, 1e45}) { // coefficients up to 1e270
        std::vector<cld> r = {cld(1, 1), cld(1, -1), -2.0L, 0.5L, cld(0, 3), cld(0, -3)};
        for (cld &z : r) z *= (long double)scale;
        std::vector<double> c = coefs_from_roots(r);
        const int n = (int)c.size();
        for (int method : kMethods) {
            if (method == 0 && std::fabs(std::log10(scale)) > 30) continue; // complex abs overflows
            CPolyRoots pr(c.data(), n, method, 0, 0);
            EXPECT_LT(root_error(pr.roots, r, true), 1e-13) << "scale " << scale << " method " << method;
        }
    }
}

TEST(CPolyRoots, UnitImaginaryRootsAndForms)
{
    double c[2] = {0, 1}; // x^2 + 1
    for (int method : kMethods) {
        CPolyRoots pr(c, 2, method, 0, 0);
        EXPECT_LT(root_error(pr.GetRoots(), {cld(0, 1), cld(0, -1)}), 4 * eps) << method;
        double *f = pr.GetAscFreq();
        ASSERT_EQ(f[0], 1.0);
        EXPECT_NEAR(f[1], 0.25, 4 * eps);
    }
    // One-based, negated: the same polynomial from -c, with a rogue value in element 0.
    double c1[3] = {NAN, 0, -1};
    CPolyRoots one(c1, 2, 2, 1, 1);
    EXPECT_LT(root_error(one.GetRoots(), {cld(0, 1), cld(0, -1)}), 4 * eps);

    // The same coefficients in the palindromic and no-leading-one forms have a zero
    // leading coefficient: the failure shows as zeros. Codes outside the table give
    // zeros too.
    std::vector<int> zero_codes = {-1, 6, 99};
    for (const auto &pm : detail::kPolyRootMethods)
        if (pm.form != detail::PolyForm::Monic) zero_codes.push_back(pm.code);
    for (int method : zero_codes) {
        CPolyRoots pr(c, 2, method, 0, 0);
        EXPECT_EQ(pr.GetRoots()[0].re, 2.0);
        for (int i = 1; i <= 2; i++) EXPECT_EQ(pr.GetRoots()[i], complex(0, 0)) << method;
    }
    // Palindromic, even n: (x^4 + x^3 + 2x^2 + x + 1)/2 = (x^2 + 1)(x^2 + x + 1)/2.
    const cld w = std::polar(1.0L, (long double)(2 * kPi / 3));
    double p4[2] = {0.5, 0.5};
    CPolyRoots pal(p4, 4, 4, 0, 0);
    EXPECT_LT(root_error(pal.GetRoots(), {cld(0, 1), cld(0, -1), w, std::conj(w)}), 20 * eps);
    // Palindromic, odd n: x^3 + x^2 + x with the constant position left 0.
    double p3[1] = {1};
    CPolyRoots pal3(p3, 3, 4, 0, 0);
    EXPECT_LT(root_error(pal3.GetRoots(), {0, w, std::conj(w)}), 20 * eps);
    // No leading one: x (x^2 + 1) from c = 1, 0, 1; negated coefficients with negate set.
    double p5[3] = {-1, 0, -1};
    CPolyRoots nl(p5, 3, 5, 0, 1);
    EXPECT_LT(root_error(nl.GetRoots(), {0, cld(0, 1), cld(0, -1)}), 20 * eps);
}

TEST(CPolyRoots, DegreeZeroAndLinear)
{
    double c[1] = {-0.5};
    for (int method : {0, 1, 2, 4, 5}) {
        CPolyRoots z(c, 0, method, 0, 0);
        EXPECT_EQ(z.GetRoots()[0], complex(0, 0));
        EXPECT_EQ(z.GetAscFreq()[0], 0.0);
        EXPECT_EQ(z.RootSubSet(0, 0, 0, nullptr)[0], complex(0, 0));
    }
    for (int method : kMethods) {
        CPolyRoots lin(c, 1, method, 0, 0); // x - 0.5
        EXPECT_NEAR(lin.GetRoots()[1].re, 0.5, eps);
        EXPECT_EQ(lin.GetRoots()[1].im, 0.0);
    }
}

TEST(CPolyRoots, NonFiniteCoefficientsEnd)
{
    // Every iteration is bounded: non-finite input must come back, not hang.
    for (double bad : {NAN, INFINITY}) {
        double c[4] = {1, bad, -2, 0.5};
        for (int method = 0; method <= 5; method++) {
            CPolyRoots pr(c, 4, method, 0, 0);
            EXPECT_EQ(pr.GetRoots()[0].re, 4.0);
            pr.GetAscFreq();
            pr.RootSubSet(15, 2, 1, nullptr);
        }
    }
}

namespace {

// An object whose roots the test sets by hand (method -1 leaves them zero).
struct Manual {
    CPolyRoots pr;
    explicit Manual(const std::vector<complex> &r) : pr(nullptr, (int)r.size(), -1, 0, 0)
    {
        for (size_t i = 0; i < r.size(); i++) pr.roots[i + 1] = r[i];
    }
};

complex at(double mod, double f) { return polar(mod, 2 * kPi * f); }

} // namespace

TEST(CPolyRoots, AscendingFrequenciesMarkRealRoots)
{
    // A root at -1 (0.5) and one at +1 (0) are not listed; a root within 1e-12 of
    // the real axis at a listed angle comes out negative.
    Manual m({at(0.9, 0.3), at(0.9, -0.3), complex(-1, 0), complex(1, 0), at(0.5, 0.1),
              complex(1e-13, 5e-13), at(1, 0.49999998)});
    double *f = m.pr.GetAscFreq();
    ASSERT_EQ(f[0], 4.0);
    EXPECT_NEAR(f[1], 0.1, 1e-15);
    EXPECT_NEAR(f[2], -std::atan2(5.0, 1.0) / (2 * kPi), 1e-15);
    EXPECT_NEAR(f[3], 0.3, 1e-15);
    EXPECT_NEAR(f[4], 0.49999998, 1e-15);
}

TEST(CPolyRoots, RootSubSetFlagsAndKeep)
{
    // 1..2: a double pair at 0.2; 3..4: a pair at 0.35; 5: real 0.7; 6: real -0.8;
    // 7: a root just off the circle at 0.1.
    const complex d = at(0.95, 0.2);
    std::vector<complex> r = {d, conj(d), at(0.6, 0.35), at(0.6, -0.35), complex(0.7, 0),
                              complex(-0.8, 0), at(1.01, 0.1), d, conj(d)};
    Manual m(r);
    const int n = (int)r.size();
    std::vector<int> keep(n + 2, -9);

    complex *s = m.pr.RootSubSet(0, 0, 0, keep.data());
    ASSERT_EQ(s[0].re, n);
    for (int i = 1; i <= n; i++) EXPECT_EQ(s[i], r[i - 1]); // record order untouched
    EXPECT_EQ(keep[0], n + 1);
    EXPECT_EQ(keep[n + 1], -9);

    // Positive frequencies inside the open interval, duplicates removed.
    s = m.pr.RootSubSet(1 | 2 | 4 | 8, 0, 1, keep.data());
    ASSERT_EQ(s[0].re, 3.0);
    EXPECT_EQ(keep[0], 4);
    const double freq[] = {0, 0.1, 0.2, 0.35};
    for (int i = 1; i <= 3; i++) EXPECT_NEAR(arg(s[i]) / (2 * kPi), freq[i], 1e-15);
    const int expect_keep[] = {4, 0, 0, 1, 0, 0, 0, 1, 0, 0};
    EXPECT_EQ(keep[1] + keep[8], 1); // one of the double root stays
    for (int i : {2, 3, 4, 5, 6, 7, 9}) EXPECT_EQ(keep[i], expect_keep[i]) << i;

    // Without flag 8 both copies stay.
    s = m.pr.RootSubSet(1 | 2 | 4, 0, 0, keep.data());
    EXPECT_EQ(s[0].re, 4.0);

    // The two nearest the unit circle, then by distance.
    s = m.pr.RootSubSet(1 | 2 | 4 | 8, 2, 2, keep.data());
    ASSERT_EQ(s[0].re, 2.0);
    EXPECT_EQ(keep[0], 3);
    EXPECT_NEAR(abs(s[1]), 1.01, 1e-15);
    EXPECT_NEAR(abs(s[2]), 0.95, 1e-15);
    EXPECT_EQ(keep[7], 1);
    EXPECT_EQ(keep[3], 0);

    // Flag 2 drops the root at frequency 0; flag 1 the one at 0.5.
    EXPECT_EQ(m.pr.RootSubSet(1, 0, 0, nullptr)[0].re, n - 1.0);
    s = m.pr.RootSubSet(2, 0, 0, nullptr);
    EXPECT_EQ(s[0].re, n - 1.0);
    for (int i = 1; i <= n - 1; i++) EXPECT_NE(s[i], complex(0.7, 0));
}

namespace {

// Coefficients in AR sign (negate set): c(i) = -a_i of the monic polynomial.
std::vector<double> ar_coefs(const std::vector<cld> &roots)
{
    std::vector<double> c = coefs_from_roots(roots);
    for (double &x : c) x = -x;
    return c;
}

double coef_error(const double *got, const std::vector<double> &want)
{
    double e = 0, nrm = 0;
    for (size_t i = 0; i < want.size(); i++) {
        e = std::max(e, std::fabs(got[i] - want[i]));
        nrm = std::max(nrm, std::fabs(want[i]));
    }
    return e / (want.size() * nrm * eps);
}

} // namespace

TEST(CPolyRoots, SpecFactorModes)
{
    const cld out = std::polar(1.25L, (long double)(2 * kPi * 0.15));
    const cld in = std::polar(0.7L, (long double)(2 * kPi * 0.3));
    std::vector<cld> roots = {out, std::conj(out), in, std::conj(in), 0.5};
    const std::vector<double> c0 = ar_coefs(roots);
    const int n = (int)c0.size();

    for (const auto &md : detail::kSpecFactorModes) {
        // Where each root should go, by the move of the mode.
        auto moved_to = [&](cld r) -> cld {
            const long double a = std::abs(r);
            switch (md.move) {
            case detail::RootMove::Reflect: return a > 1 ? 1.0L / std::conj(r) : r;
            case detail::RootMove::Normalize: return a > 1 ? r / a : r;
            default: return r / a;
            }
        };
        const int count = md.move == detail::RootMove::NormalizeAll ? 0 : 2;
        // One-based with guard cells on both sides of the data.
        std::vector<double> buf(n + 2, -555.0);
        std::copy(c0.begin(), c0.end(), buf.begin() + 1);
        CPolyRoots pr(buf.data(), n, 1, 1, 1);
        EXPECT_EQ(pr.SpecFactor(md.mode), count) << md.mode;
        std::vector<cld> moved;
        for (const cld &r : roots) moved.push_back(moved_to(r));
        EXPECT_LT(root_error(pr.GetRoots(), moved), 1e-13) << md.mode;
        const std::vector<double> want = md.rebuild ? ar_coefs(moved) : c0;
        EXPECT_LT(coef_error(buf.data() + 1, want), 30.0) << md.mode;
        EXPECT_EQ(buf[0], -555.0);
        EXPECT_EQ(buf[n + 1], -555.0);
    }
    EXPECT_EQ(CPolyRoots(nullptr, 0, 0, 0, 0).SpecFactor(7), 0);
    {
        // The numbering itself: 4 reflects without writing, 2 normalises and writes.
        std::vector<double> c = c0;
        CPolyRoots p4(c.data(), n, 2, 0, 1);
        EXPECT_EQ(p4.SpecFactor(4), 2);
        EXPECT_EQ(c, c0);
        const cld refl = 1.0L / std::conj(out);
        EXPECT_LT(root_error(p4.GetRoots(), {refl, std::conj(refl), in, std::conj(in), 0.5}), 1e-13);
        CPolyRoots p2(c.data(), n, 2, 0, 1);
        EXPECT_EQ(p2.SpecFactor(2), 2);
        EXPECT_NE(c, c0);
        const cld u = out / std::abs(out);
        EXPECT_LT(root_error(p2.GetRoots(), {u, std::conj(u), in, std::conj(in), 0.5}), 1e-13);
    }

    // Zero-based, all roots inside: mode 1 moves none and leaves coef alone.
    std::vector<cld> inside = {in, std::conj(in), 0.5};
    std::vector<double> ci = ar_coefs(inside);
    ci.push_back(-555.0);
    std::vector<double> before = ci;
    CPolyRoots pr(ci.data(), 3, 2, 0, 1);
    EXPECT_EQ(pr.SpecFactor(1), 0);
    EXPECT_EQ(ci, before);
    EXPECT_EQ(pr.SpecFactor(3), 0); // always rebuilds
    EXPECT_NE(ci, before);
    EXPECT_EQ(ci[3], -555.0);
    const cld unit_in = in / std::abs(in);
    std::vector<cld> on = {unit_in, std::conj(unit_in), 1.0L};
    std::vector<double> won = ar_coefs(on);
    EXPECT_LT(coef_error(ci.data(), won), 30.0);
}
