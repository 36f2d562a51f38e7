// CFFT4 against direct long-double sums of each transform's definition, plus
// round trips, the degenerate lengths and guard cells around the data.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstdio>
#include <random>
#include <vector>

#include "fft/ooura.h"
#include "oscilla/fft/cfft4.h"

using oscilla::CFFT4;

namespace {

typedef long double ld;
const ld kPi = 3.141592653589793238462643383279502884L;
const double kEps = DBL_EPSILON;
const double kRogue = -12345.678;

std::vector<double> noise(int count, unsigned seed)
{
    std::mt19937 gen(seed);
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    std::vector<double> v(count);
    for (double &x : v)
        x = u(gen);
    return v;
}

// ||got - want|| / ||want|| over the listed indices.
double rel_err(const double *got, const std::vector<ld> &want, const std::vector<int> &idx)
{
    ld num = 0, den = 0;
    for (int i : idx) {
        ld d = got[i] - want[i];
        num += d * d;
        den += want[i] * want[i];
    }
    return static_cast<double>(std::sqrt(num / den));
}

std::vector<int> all_indices(int count)
{
    std::vector<int> v(count);
    for (int i = 0; i < count; i++)
        v[i] = i;
    return v;
}

// Direct DFT X[k] = sum x[j] exp(sgn 2 pi i jk/n) in long double, for the
// listed bins only; the phase index jk is reduced mod n so that the angles
// are exact.
std::vector<ld> direct_dft(const std::vector<double> &x, int n, int sgn, const std::vector<int> &bins)
{
    std::vector<ld> c(n), s(n), out(2 * n, 0.0L);
    for (int r = 0; r < n; r++) {
        c[r] = std::cos(2 * kPi * r / n);
        s[r] = sgn * std::sin(2 * kPi * r / n);
    }
    for (int k : bins) {
        ld re = 0, im = 0;
        int r = 0; // j*k mod n
        for (int j = 0; j < n; j++, r = (r + k >= n) ? r + k - n : r + k) {
            re += x[2 * j] * c[r] - x[2 * j + 1] * s[r];
            im += x[2 * j] * s[r] + x[2 * j + 1] * c[r];
        }
        out[2 * k] = re;
        out[2 * k + 1] = im;
    }
    return out;
}

double bound(int n) { return 5 * kEps * std::sqrt(std::log2(static_cast<double>(n))); }

// Runs op on a copy of x placed between guard cells and checks the guards.
template <class Op> std::vector<double> guarded(const std::vector<double> &x, Op op)
{
    std::vector<double> buf(x.size() + 2, kRogue);
    std::copy(x.begin(), x.end(), buf.begin() + 1);
    op(buf.data() + 1);
    EXPECT_EQ(buf.front(), kRogue);
    EXPECT_EQ(buf.back(), kRogue);
    return std::vector<double>(buf.begin() + 1, buf.end() - 1);
}

const double kTolReal = 10 * kEps;


} // namespace

TEST(CFFT4, ComplexFFTMatchesDirectDftForEveryPowerOfTwo)
{
    CFFT4 f;
    for (int p = 1; p <= 16; p++) {
        const int n = 1 << p;
        std::vector<int> bins;
        if (n <= 4096) {
            bins = all_indices(n);
        } else {
            std::mt19937 gen(p);
            for (int i = 0; i < 64; i++)
                bins.push_back(static_cast<int>(gen() % n));
            bins.push_back(0);
            bins.push_back(n - 1);
        }
        std::vector<int> places, both(bins);
        for (int k : bins) {
            places.push_back(2 * k);
            places.push_back(2 * k + 1);
            both.push_back((n - k) % n);
        }
        const std::vector<double> x = noise(2 * n, 100 + p);
        // One long-double sum serves both directions: X-[k] = X+[n-k].
        const std::vector<ld> ref = direct_dft(x, n, 1, both);
        std::vector<ld> ref_minus(2 * n, 0.0L);
        for (int k : bins) {
            ref_minus[2 * k] = ref[2 * ((n - k) % n)];
            ref_minus[2 * k + 1] = ref[2 * ((n - k) % n) + 1];
        }
        std::vector<double> plus;
        for (int sign : {1, -1}) {
            // Offset by one double from the allocation: unaligned data.
            std::vector<double> a = guarded(x, [&](double *q) { f.ComplexFFT(q, n, sign); });
            const double err = rel_err(a.data(), sign == 1 ? ref : ref_minus, places);
            EXPECT_LT(err, bound(n)) << "n = " << n << " sign = " << sign;
            if (sign == 1) {
                plus = a;
                std::printf("    n = %6d  relative L2 error %.3g (%.2f eps)\n", n, err, err / kEps);
            }
        }
        // sign 0 is the forward transform
        std::vector<double> a(x);
        f.ComplexFFT(a.data(), n, 0);
        EXPECT_EQ(a, plus) << "n = " << n;
        EXPECT_EQ(f.n, n);
        EXPECT_EQ(f.ip[0], n / 2); // twiddle table size, in doubles
    }
}

TEST(CFFT4, ComplexRoundTripAndComplexOverload)
{
    CFFT4 f;
    for (int n : {2, 4, 8, 32, 512, 8192, 32768}) {
        std::vector<double> x = noise(2 * n, n);
        std::vector<oscilla::complex> z(n);
        for (int j = 0; j < n; j++)
            z[j] = oscilla::complex(x[2 * j], x[2 * j + 1]);
        f.ComplexFFT(z.data(), n, 1);
        f.ComplexFFT(z.data(), n, -1);
        ld num = 0, den = 0;
        for (int j = 0; j < n; j++) {
            ld dr = z[j].re / n - x[2 * j], di = z[j].im / n - x[2 * j + 1];
            num += dr * dr + di * di;
            den += static_cast<ld>(x[2 * j]) * x[2 * j] + static_cast<ld>(x[2 * j + 1]) * x[2 * j + 1];
        }
        EXPECT_LT(std::sqrt(static_cast<double>(num / den)), 2 * bound(n)) << "n = " << n;
    }
}

TEST(CFFT4, DegenerateLengthsAndSetN)
{
    CFFT4 f;
    EXPECT_EQ(f.n, -1);
    EXPECT_EQ(f.ip, nullptr);
    EXPECT_EQ(f.w, nullptr);

    double one[3] = {1.5, -2.5, kRogue};
    f.ComplexFFT(one, 1, 1);
    EXPECT_EQ(one[0], 1.5);
    EXPECT_EQ(one[1], -2.5);
    EXPECT_EQ(one[2], kRogue);
    EXPECT_EQ(f.n, 1);

    for (int sign : {1, -1}) {
        double two[5] = {1.0, 2.0, 5.0, -3.0, kRogue};
        f.ComplexFFT(two, 2, sign);
        EXPECT_EQ(two[0], 6.0);
        EXPECT_EQ(two[1], -1.0);
        EXPECT_EQ(two[2], -4.0);
        EXPECT_EQ(two[3], 5.0);
        EXPECT_EQ(two[4], kRogue);
    }

    // The real members leave a single sample as it is.
    double r1[2] = {3.25, kRogue};
    f.RealFFT(r1, 1, 1);
    f.CosineTransform(r1, 1, -1);
    f.SineTransform(r1, 1, 1);
    EXPECT_EQ(r1[0], 3.25);
    EXPECT_EQ(r1[1], kRogue);

    f.SetN(16);
    EXPECT_EQ(f.n, 16);
    ASSERT_NE(f.ip, nullptr);
    ASSERT_NE(f.w, nullptr);
    for (int i = 0; i < 6; i++) // floor(sqrt(16)) + 2, zero-filled
        EXPECT_EQ(f.ip[i], 0);
    for (int i = 0; i < 20; i++)
        EXPECT_EQ(f.w[i], 0.0);
    f.SetN(0);
    EXPECT_EQ(f.n, 0);
    EXPECT_EQ(f.ip, nullptr);
    EXPECT_EQ(f.w, nullptr);
    f.ComplexFFT(one, 0, 1);
    EXPECT_EQ(one[0], 1.5);
}

// Tables kept from one call must never serve another length or member.
TEST(CFFT4, ChangingLengthAndMemberBetweenCalls)
{
    CFFT4 f;
    for (int n : {64, 1024, 64, 16, 1024}) {
        std::vector<double> c = noise(n + 1, 7);
        f.CosineTransform(c.data(), n, 1);
        std::vector<double> x = noise(2 * n, n);
        std::vector<double> a(x);
        f.ComplexFFT(a.data(), n, -1);
        EXPECT_LT(rel_err(a.data(), direct_dft(x, n, -1, all_indices(n)), all_indices(2 * n)), bound(n));
        f.SetN(n);
        a = x;
        f.ComplexFFT(a.data(), n, 1);
        EXPECT_LT(rel_err(a.data(), direct_dft(x, n, 1, all_indices(n)), all_indices(2 * n)), bound(n));
    }
}


TEST(CFFT4, RealFFTPackingAndInverse)
{
    CFFT4 f;
    for (int n = 2; n <= 1024; n *= 2) {
        std::vector<double> x = noise(n, n + 1);
        std::vector<double> a = guarded(x, [&](double *p) { f.RealFFT(p, n, 1); });
        std::vector<ld> want(n);
        for (int k = 0; k <= n / 2; k++) {
            ld re = 0, im = 0;
            for (int j = 0; j < n; j++) {
                re += x[j] * std::cos(2 * kPi * ((static_cast<long long>(j) * k) % n) / n);
                im += x[j] * std::sin(2 * kPi * ((static_cast<long long>(j) * k) % n) / n);
            }
            if (k == 0)
                want[0] = re;
            else if (k == n / 2)
                want[1] = re;
            else {
                want[2 * k] = re;
                want[2 * k + 1] = im;
            }
        }
        EXPECT_LT(rel_err(a.data(), want, all_indices(n)), kTolReal * std::log2(2.0 * n)) << n;
        std::vector<double> back = guarded(a, [&](double *p) { f.RealFFT(p, n, -1); });
        std::vector<ld> half(x.begin(), x.end());
        for (ld &v : half)
            v *= n / 2;
        EXPECT_LT(rel_err(back.data(), half, all_indices(n)), kTolReal * std::log2(2.0 * n)) << n;
    }
}

TEST(CFFT4, CosineAndSineTransformsMatchDefinitions)
{
    CFFT4 f;
    for (int n = 2; n <= 512; n *= 2) {
        const std::vector<double> x = noise(n, 3 * n);
        for (int sign : {1, -1}) {
            std::vector<ld> wc(n), ws(n);
            for (int k = 0; k < n; k++) {
                ld c = 0, s = 0;
                for (int j = 0; j < n; j++) {
                    if (sign >= 0) {
                        c += x[j] * std::cos(kPi * j * (k + 0.5L) / n);
                        // A[j] = a[j], A[n] = a[0]
                        s += (j == 0 ? x[0] : x[j]) * std::sin(kPi * (j == 0 ? n : j) * (k + 0.5L) / n);
                    } else {
                        c += x[j] * std::cos(kPi * (j + 0.5L) * k / n);
                        // S[k] for 0 < k <= n, S[n] in a[0]
                        s += x[j] * std::sin(kPi * (j + 0.5L) * (k == 0 ? n : k) / n);
                    }
                }
                wc[k] = c;
                ws[k] = s;
            }
            std::vector<double> c = guarded(x, [&](double *p) { f.CosineTransform(p, n, sign); });
            std::vector<double> s = guarded(x, [&](double *p) { f.SineTransform(p, n, sign); });
            EXPECT_LT(rel_err(c.data(), wc, all_indices(n)), kTolReal * std::log2(2.0 * n)) << n << " " << sign;
            EXPECT_LT(rel_err(s.data(), ws, all_indices(n)), kTolReal * std::log2(2.0 * n)) << n << " " << sign;
        }
        // Inverse pairs: the sign -1 transforms undone by the sign 1 ones
        // with the first term halved and a factor 2/n.
        std::vector<double> c(x), s(x);
        f.CosineTransform(c.data(), n, -1);
        c[0] *= 0.5;
        f.CosineTransform(c.data(), n, 1);
        f.SineTransform(s.data(), n, -1);
        s[0] *= 0.5;
        f.SineTransform(s.data(), n, 1);
        for (int j = 0; j < n; j++) {
            EXPECT_NEAR(c[j] * 2 / n, x[j], 20 * kEps * std::log2(2.0 * n)) << n;
            EXPECT_NEAR(s[j] * 2 / n, x[j], 20 * kEps * std::log2(2.0 * n)) << n;
        }
    }
}

TEST(CFFT4, TransformsOfSymmetricSequencesMatchDefinitions)
{
    CFFT4 f;
    for (int n = 1; n <= 1024; n *= 2) {
        const std::vector<double> x = noise(n + 1, 5 * n);
        std::vector<ld> wc(n + 1), ws(n + 1, 0.0L);
        for (int k = 0; k <= n; k++) {
            ld c = 0, s = 0;
            for (int j = 0; j <= n; j++) {
                ld r = static_cast<ld>((static_cast<long long>(j) * k) % (2 * n));
                ld term = x[j] * std::cos(kPi * r / n);
                c += (j == 0 || j == n) ? 0.5L * term : term;
                s += x[j] * std::sin(kPi * r / n);
            }
            wc[k] = c;
            if (k > 0 && k < n)
                ws[k] = s;
        }
        std::vector<double> tc(n / 2 + 1, 0.0), ts(n / 2 + 1, 0.0);
        tc.push_back(kRogue);
        ts.push_back(kRogue);
        std::vector<double> c = guarded(x, [&](double *p) { f.CosineTransOfRealFFT(p, tc.data(), n); });
        std::vector<double> s = guarded(x, [&](double *p) { f.SineTransOfRealFFT(p, ts.data(), n); });
        EXPECT_EQ(tc.back(), kRogue);
        EXPECT_EQ(ts.back(), kRogue);
        EXPECT_LT(rel_err(c.data(), wc, all_indices(n + 1)), kTolReal * std::log2(2.0 * n)) << n;
        std::vector<int> inner;
        for (int k = 1; k < n; k++)
            inner.push_back(k);
        if (!inner.empty()) {
            EXPECT_LT(rel_err(s.data(), ws, inner), kTolReal * std::log2(2.0 * n)) << n;
        }
        EXPECT_EQ(s[n], x[n]); // beyond the outputs, untouched
        // With the half-weight ends the cosine transform is its own inverse
        // up to 2/n, and so is the sine transform on its inner points.
        f.CosineTransOfRealFFT(c.data(), tc.data(), n);
        for (int j = 0; j <= n; j++)
            EXPECT_NEAR(c[j] * 2 / n, x[j], 20 * kEps * std::log2(2.0 * n)) << n;
        f.SineTransOfRealFFT(s.data(), ts.data(), n);
        for (int j = 1; j < n; j++)
            EXPECT_NEAR(s[j] * 2 / n, x[j], 20 * kEps * std::log2(2.0 * n)) << n;
    }
}

// The bit reversal on its own, below and above the size from which it works
// in tiles: complex k moves to rev(k) (and is conjugated by bitrv2conj); a
// rogue value on either side of the array stays.
TEST(CFFT4, BitReversalIsThePermutationAtEverySize)
{
    for (int N : {1 << 10, 1 << 14, 1 << 15, 1 << 16, 1 << 17}) {
        int L = 0;
        while ((1 << L) < N)
            L++;
        for (bool conj : {false, true}) {
            std::vector<double> buf(2 * static_cast<size_t>(N) + 2);
            const double guard = -7.25;
            buf.front() = buf.back() = guard;
            double *a = buf.data() + 1;
            for (int k = 0; k < N; k++) {
                a[2 * k] = k;
                a[2 * k + 1] = -0.5 - k;
            }
            std::vector<int> ip(2 + 2048, 0);
            if (conj)
                oscilla::detail::bitrv2conj(2 * N, ip.data() + 2, a);
            else
                oscilla::detail::bitrv2(2 * N, ip.data() + 2, a);
            int bad = 0;
            for (int k = 0; k < N && bad < 5; k++) {
                int r = 0;
                for (int b = 0; b < L; b++)
                    r |= ((k >> b) & 1) << (L - 1 - b);
                const double im = -0.5 - k;
                if (a[2 * r] != k || a[2 * r + 1] != (conj ? -im : im)) {
                    ADD_FAILURE() << "N = " << N << " conj " << conj << " k = " << k << " -> " << r;
                    bad++;
                }
            }
            EXPECT_EQ(buf.front(), guard);
            EXPECT_EQ(buf.back(), guard);
        }
    }
}
