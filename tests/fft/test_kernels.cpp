// The complex kernels against a direct transform in long double, through the
// public front ends and through the kernel members themselves.
#include "fft/kernel_state.h"
#include "fft/kernels.h"
#include "oscilla/fft/cfft4.h"
#include "oscilla/fft/lengths.h"
#include "oscilla/spectrum/cfft.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <random>
#include <vector>

using namespace oscilla;

namespace {

using LD = long double;
constexpr double EPS = 2.220446049250313e-16;

std::vector<double> noise(size_t count, unsigned seed)
{
    std::mt19937 gen(seed);
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    std::vector<double> v(count);
    for (auto &d : v)
        d = u(gen);
    return v;
}

// Direct transform sum_j z[j] exp(s 2 pi i jk / n) in long double, for the
// requested bins; z interleaved, conj negates the input's imaginary parts.
struct Oracle {
    int n;
    std::vector<LD> c, s; // exp(2 pi i q / n), q < n

    explicit Oracle(int n_) : n(n_), c(n_), s(n_)
    {
        // q = a + B b: two short tables of directly computed roots and one
        // long-double product per entry.
        const LD pi = 3.141592653589793238462643383279502884L;
        const int B = static_cast<int>(std::sqrt(static_cast<double>(n))) + 1;
        std::vector<LD> ca(B), sa(B);
        for (int a = 0; a < B; a++) {
            ca[a] = std::cos(2 * pi * a / n);
            sa[a] = std::sin(2 * pi * a / n);
        }
        for (int b = 0; b * B < n; b++) {
            const LD cb = std::cos(2 * pi * (static_cast<LD>(b) * B) / n);
            const LD sb = std::sin(2 * pi * (static_cast<LD>(b) * B) / n);
            for (int a = 0; a < B && a + b * B < n; a++) {
                c[a + b * B] = ca[a] * cb - sa[a] * sb;
                s[a + b * B] = sa[a] * cb + ca[a] * sb;
            }
        }
    }
    void bin(const double *z, int k, int sgn, bool conj, LD &re, LD &im) const
    {
        re = im = 0;
        long long q = 0;
        for (int j = 0; j < n; j++) {
            const LD zr = z[2 * j], zi = conj ? -z[2 * j + 1] : z[2 * j + 1];
            const LD sn = sgn > 0 ? s[q] : -s[q];
            re += zr * c[q] - zi * sn;
            im += zr * sn + zi * c[q];
            q += k;
            if (q >= n)
                q -= n;
        }
    }
};

std::vector<int> bins_for(int n)
{
    std::vector<int> k;
    if (n <= 2048) {
        for (int i = 0; i < n; i++)
            k.push_back(i);
    } else {
        const int picks[] = {0, 1, 2, 3, n / 2, n / 3, n - 1, n - 2, n / 2 + 1, n / 7, 5 * n / 11};
        for (int i : picks)
            k.push_back(i);
        std::mt19937 gen(n);
        for (int i = 0; i < 8; i++)
            k.push_back(static_cast<int>(gen() % n));
    }
    return k;
}

// ||error|| / (||x|| sqrt(n)) over the bins ks (by default sampled from all n):
// the rms bin error relative to the rms input.
double complex_error(const std::vector<double> &in, const double *out, int n, int sgn, bool conj,
                     std::vector<int> ks = {})
{
    if (ks.empty())
        ks = bins_for(n);
    Oracle o(n);
    LD xx = 0, ee = 0;
    for (int i = 0; i < 2 * n; i++)
        xx += static_cast<LD>(in[i]) * in[i];
    for (int k : ks) {
        LD re, im;
        o.bin(in.data(), k, sgn, conj, re, im);
        const LD dr = out[2 * k] - re, di = out[2 * k + 1] - im;
        ee += dr * dr + di * di;
    }
    return xx == 0 ? 0 : static_cast<double>(std::sqrt(ee / ks.size() / xx));
}

// Worst error per kernel, printed at the end of the run.
std::map<std::string, double> g_worst;
void note(const std::string &kernel, double err) { g_worst[kernel] = std::max(g_worst[kernel], err); }
struct Reporter : ::testing::Environment {
    void TearDown() override
    {
        for (auto &kv : g_worst)
            std::printf("worst error / (||x|| sqrt(n)) %-14s %.3g\n", kv.first.c_str(), kv.second);
    }
};
const auto *const reporter = ::testing::AddGlobalTestEnvironment(new Reporter);

// Accuracy bound: a few eps per stage of log2 n.
double bound(int n) { return 8 * EPS * std::max(1.0, std::log2(static_cast<double>(n))); }

// The split-radix stand-in is quadratic; the long chirp-z convolutions are
// run only once the real package is in, which allocates its tables in SetN.
bool fast_split()
{
    CFFT4 c;
    c.SetN(8);
    return c.ip != nullptr;
}

struct Engine {
    CFFT f;
    explicit Engine(int code) : f(nullptr, code, 0, 0, 0, 0.0, 0, 0.0, 0) {}
};

const char *kernel_name(int code)
{
    static const char *names[] = {"split-radix", "prime-factor", "mixed-radix", "direct", "chirp-z"};
    return names[code];
}

// Complex forward transform through cmplxfft with primefac = code, checked
// against the oracle; chirp-z gives the transform of the conjugate.
double check_complex(int code, int n, unsigned seed)
{
    Engine e(code);
    const std::vector<double> in = noise(2 * static_cast<size_t>(n), seed);
    std::vector<double> out = in;
    e.f.cmplxfft(reinterpret_cast<complex *>(out.data()), n, 1, 0);
    const int used = code >= KERNEL_AUTO ? e.f.BestCmplxFFT(n) : code;
    const double err = complex_error(in, out.data(), n, 1, used == KERNEL_CHIRP_Z);
    note(kernel_name(used), err);
    return err;
}

// Real forward transform through realft (one-based) against the oracle over
// bins 0..n/2 (sampled for long n), with a guard cell on either side.
double check_real(int code, int n, unsigned seed)
{
    Engine e(code);
    const std::vector<double> x = noise(static_cast<size_t>(n), seed);
    const double guard = 12345.0;
    std::vector<double> a(static_cast<size_t>(n) + 4, 0.0), z(2 * static_cast<size_t>(n), 0.0);
    a[0] = a[n + 3] = guard;
    for (int j = 0; j < n; j++)
        a[j + 1] = z[2 * j] = x[j];
    e.f.realft(a.data(), n, 1, 1);
    EXPECT_EQ(a[0], guard);
    EXPECT_EQ(a[n + 3], guard);
    std::vector<int> ks;
    for (int k = 0; k <= n / 2; k++)
        if (n <= 4096 || k <= 16 || k >= n / 2 - 16 || k % 20011 == 0)
            ks.push_back(k);
    const double err = complex_error(z, a.data() + 1, n, 1, false, ks);
    note(std::string(kernel_name(code >= KERNEL_AUTO ? e.f.BestFFT(n) : code)) + " real", err);
    return err;
}

} // namespace

// ---- automatic choice over every length ------------------------------------

TEST(KernelsAuto, ComplexEveryLengthTo512)
{
    for (int n = 1; n <= 512; n++)
        EXPECT_LE(check_complex(KERNEL_AUTO, n, 100 + n), bound(n)) << "n = " << n;
}

TEST(KernelsAuto, RealEveryLengthTo512)
{
    for (int n = 3; n <= 512; n++)
        EXPECT_LE(check_real(KERNEL_AUTO, n, 900 + n), bound(n)) << "n = " << n;
}

TEST(KernelsAuto, LengthOneLeavesEveryKernelAlone)
{
    for (int code = 1; code <= 5; code++) {
        Engine e(code);
        complex z(0.25, -0.5);
        e.f.cmplxfft(&z, 1, 1, 0);
        EXPECT_EQ(z.re, 0.25) << code;
        EXPECT_EQ(z.im, code == KERNEL_CHIRP_Z ? 0.5 : -0.5) << code;
    }
}

// ---- each kernel on the lengths it serves -----------------------------------

// Each kernel on the lengths it serves, forward (complex and real) and, where the
// kernel has its own inverse entry, the transform with the negative exponent.
TEST(KernelsEach, AgainstOracle)
{
    const int *t = PrimeFactorLengths();
    std::vector<int> cz = {2, 3, 5, 17, 100, 509, 521, 1031};
    if (fast_split())
        cz.insert(cz.end(), {3000, 65537, 720720});
    struct Run {
        int code;
        std::vector<int> cplx, real, inverse;
        void (*inv)(CFFT &, double *, int);
    };
    const Run runs[] = {
        {KERNEL_PRIME_FACTOR, std::vector<int>(t, t + PFA_TABLE_SIZE),
         {4, 6, 10, 14, 22, 26, 36, 1008, 10010, 1441440 / 16, 720720}, {1001},
         [](CFFT &f, double *z, int n) { f.pfacc(z, n, -1); }},
        {KERNEL_MIXED_RADIX, {1000, 1022, 3000, 509, 1031, 3600, 4096, 65536, 720720, 2 * 3 * 5 * 7 * 11 * 13 * 17},
         {4, 6, 18, 30, 50, 1000, 1022, 3000, 509 * 4, 1031 * 2}, {7, 100, 3600, 1022},
         [](CFFT &f, double *z, int n) { EXPECT_EQ(f.fft1(z, n, -1), 0); }},
        {KERNEL_DIRECT, {1, 2, 3, 17, 64, 509, 1031}, {6, 9, 100, 1022}, {}, nullptr},
        {KERNEL_CHIRP_Z, cz, {6, 9, 1022, 1031, 2 * 521}, {}, nullptr}};
    for (const Run &r : runs) {
        // the direct transform's angles grow with n; the others are log n
        auto tol = [&](int n) { return r.code == KERNEL_DIRECT ? 8 * EPS * n : bound(n); };
        for (int n : r.cplx)
            EXPECT_LE(check_complex(r.code, n, n), tol(n)) << kernel_name(r.code) << " n = " << n;
        for (int n : r.real)
            EXPECT_LE(check_real(r.code, n, n), tol(n)) << kernel_name(r.code) << " real n = " << n;
        Engine e(r.code);
        for (int n : r.inverse) {
            const std::vector<double> in = noise(2 * static_cast<size_t>(n), n);
            std::vector<double> z = in;
            r.inv(e.f, z.data(), n);
            EXPECT_LE(complex_error(in, z.data(), n, -1, false), bound(n)) << kernel_name(r.code) << " inverse n = " << n;
        }
    }
    // sign 0 is the forward transform of the direct kernel
    Engine e(KERNEL_DIRECT);
    std::vector<double> a = noise(2 * 9, 4), b = a;
    e.f.dfft(a.data(), 9, 0);
    e.f.dfft(b.data(), 9, 1);
    EXPECT_EQ(a, b);
}

TEST(KernelsPrimeFactor, Edges)
{
    Engine e(KERNEL_PRIME_FACTOR);
    // Thirty-two is outside the table: the 16 stage and a degenerate 2 stage
    // run, nothing is reported, the numbers are wrong and stay in bounds.
    std::vector<double> x = noise(66, 5);
    const double guard = x[64];
    std::vector<double> y = x;
    e.f.pfacc(y.data(), 32, 1);
    EXPECT_EQ(y[64], guard);
    x.resize(64);
    y.resize(64);
    EXPECT_GT(complex_error(x, y.data(), 32, 1, false), 1e-3);
    // Forward then inverse multiplies by n.
    for (int n : {6, 360, 5040}) {
        const std::vector<double> in = noise(2 * static_cast<size_t>(n), n);
        std::vector<double> z = in;
        e.f.pfacc(z.data(), n, 1);
        e.f.pfacc(z.data(), n, -1);
        double worst = 0;
        for (int i = 0; i < 2 * n; i++)
            worst = std::max(worst, std::fabs(z[i] / n - in[i]));
        EXPECT_LE(worst, bound(n)) << n;
    }
}

TEST(KernelsMixedRadix, FactorOrderAndResultCodes)
{
    Engine e(KERNEL_MIXED_RADIX);
    // n = 1: nothing to do.
    double one[2] = {1.5, -2.5};
    EXPECT_EQ(e.f.fft1(one, 1, 1), 0);
    EXPECT_EQ(one[0], 1.5);
    EXPECT_EQ(one[1], -2.5);
    // 16 * 9 * 25: square factors, then the same in reverse.
    std::vector<double> z = noise(2 * 3600, 1);
    EXPECT_EQ(e.f.fft1(z.data(), 3600, 1), 0);
    ASSERT_NE(e.f.kstate, nullptr);
    const int expect[] = {4, 3, 5, 5, 3, 4};
    for (int i = 0; i < 6; i++)
        EXPECT_EQ(e.f.kstate->factor[i], expect[i]) << i;
    EXPECT_EQ(e.f.kstate->workBytes, 0u); // fft1 releases its arrays
    EXPECT_EQ(e.f.kstate->tmp0, nullptr);

    // 2^20 * 81 * 25 has sixteen factors: refused before any data is read.
    double dummy[2] = {0, 0};
    EXPECT_EQ(e.f.fftradix(dummy, dummy + 1, 2123366400, 2123366400, 2123366400, 2, 16, 16), -2);
    EXPECT_EQ(e.f.kstate->workBytes, 0u);
    // An odd factor above maxFactors.
    std::vector<double> seven = noise(14, 2);
    EXPECT_EQ(e.f.fftradix(seven.data(), seven.data() + 1, 7, 7, 7, 2, 5, 7), -3);
    EXPECT_EQ(e.f.kstate->perm, nullptr);
    // A square-free core of 6 and maxPerm 4.
    std::vector<double> six = noise(12, 3);
    EXPECT_EQ(e.f.fftradix(six.data(), six.data() + 1, 6, 6, 6, 2, 6, 4), -4);
    EXPECT_EQ(e.f.kstate->workBytes, 0u);
    // Success keeps the arrays for the next pass.
    EXPECT_EQ(e.f.fftradix(six.data(), six.data() + 1, 6, 6, 6, 2, 6, 6), 0);
    EXPECT_EQ(e.f.kstate->workBytes, 48u);
    e.f.fft_free();
    EXPECT_EQ(e.f.kstate->workBytes, 0u);
    EXPECT_EQ(e.f.kstate->permCount, 0);
}

// The interleaved passes come in a portable and an AVX2 build; both against
// the oracle, on lengths that take the folded rotations (factors 3 and 5 with
// many offsets), the one-gather reordering, and its fallback to the published
// exchange when the first factor is above 256 (257^2, 263 * 269). Those two
// also check the rotation after a long general factor, whose powers of the
// twiddle are reseeded so that 256 products do not add up 256 roundings.
TEST(KernelsMixedRadix, PortableAndVectorBuilds)
{
    const int lengths[] = {1000, 500, 375, 2 * 7 * 11 * 13, 3 * 3 * 5 * 5 * 7, 257 * 257, 263 * 269};
    for (bool vector : {false, true}) {
        detail::mixed_radix_allow_vector(vector);
        for (int n : lengths)
            EXPECT_LE(check_complex(KERNEL_MIXED_RADIX, n, 7 * n), bound(n)) << "n = " << n << " vector " << vector;
        for (int n : {1000, 2000})
            EXPECT_LE(check_real(KERNEL_MIXED_RADIX, n, 3 * n), bound(n)) << "real n = " << n << " vector " << vector;
        // The inverse direction through fft1.
        Engine e(KERNEL_MIXED_RADIX);
        const std::vector<double> in = noise(2 * 1500, 15);
        std::vector<double> z = in;
        EXPECT_EQ(e.f.fft1(z.data(), 1500, -1), 0);
        EXPECT_LE(complex_error(in, z.data(), 1500, -1, false), bound(1500)) << "vector " << vector;
    }
    detail::mixed_radix_allow_vector(true);
}

TEST(KernelsMixedRadix, MultiDimensional)
{
    Engine e(KERNEL_MIXED_RADIX);
    // 2-D transform of 12 x 35 points in separate arrays, dims[0] fastest.
    const int n0 = 12, n1 = 35, N = n0 * n1;
    const std::vector<double> re0 = noise(N, 11), im0 = noise(N, 12);
    std::vector<double> re = re0, im = im0;
    const int dims[] = {n0, n1};
    EXPECT_EQ(e.f.fftn(2, dims, re.data(), im.data(), -1, -2.0), 0);
    const LD pi = 3.141592653589793238462643383279502884L;
    LD ee = 0, xx = 0;
    for (int i = 0; i < N; i++)
        xx += static_cast<LD>(re0[i]) * re0[i] + static_cast<LD>(im0[i]) * im0[i];
    for (int k1 = 0; k1 < n1; k1 += 3)
        for (int k0 = 0; k0 < n0; k0++) {
            LD sr = 0, si = 0;
            for (int j1 = 0; j1 < n1; j1++)
                for (int j0 = 0; j0 < n0; j0++) {
                    const LD t = -2 * pi * ((LD)(j0 * k0 % n0) / n0 + (LD)(j1 * k1 % n1) / n1);
                    const LD c = std::cos(t), s = std::sin(t), xr = re0[j0 + n0 * j1], xi = im0[j0 + n0 * j1];
                    sr += xr * c - xi * s;
                    si += xr * s + xi * c;
                }
            // scaling -2 divides by the root of the point count
            const LD f = std::sqrt(static_cast<LD>(N));
            const LD dr = re[k0 + n0 * k1] * f - sr, di = im[k0 + n0 * k1] * f - si;
            ee += dr * dr + di * di;
        }
    EXPECT_LE(std::sqrt(ee / (N / 3) / xx), bound(N));

    // The same transform on interleaved data (increment 2, unscaled).
    std::vector<double> il(2 * N);
    for (int i = 0; i < N; i++) {
        il[2 * i] = re0[i];
        il[2 * i + 1] = im0[i];
    }
    std::vector<double> sre = re0, sim = im0;
    EXPECT_EQ(e.f.fftn(2, dims, sre.data(), sim.data(), 1, 0.0), 0);
    EXPECT_EQ(e.f.fftn(2, dims, il.data(), il.data() + 1, 2, 0.0), 0);
    for (int i = 0; i < N; i++) {
        EXPECT_NEAR(il[2 * i], sre[i], 1e-12) << i;
        EXPECT_NEAR(il[2 * i + 1], sim[i], 1e-12) << i;
    }

    // A zero-ended list with ndim ignored; the empty list is one point.
    std::vector<double> a = noise(2 * 15, 13), b = a;
    const int list[] = {15, 0};
    EXPECT_EQ(e.f.fftn(0, list, a.data(), a.data() + 1, 2, 0.0), 0);
    EXPECT_EQ(e.f.fft1(b.data(), 15, 1), 0);
    for (int i = 0; i < 30; i++)
        EXPECT_DOUBLE_EQ(a[i], b[i]);
    const int empty[] = {0};
    EXPECT_EQ(e.f.fftn(3, empty, a.data(), a.data() + 1, 2, 0.0), 0);
    for (int i = 0; i < 30; i++)
        EXPECT_DOUBLE_EQ(a[i], b[i]);
    const int bad[] = {4, -1};
    EXPECT_EQ(e.f.fftn(2, bad, a.data(), a.data() + 1, 2, 0.0), -1);

    // With an increment of 2, scaling by nTotal stops at index nTotal: only
    // the first half of the interleaved points is divided.
    std::vector<double> c = noise(2 * 10, 14), d = c;
    const int ten[] = {10};
    EXPECT_EQ(e.f.fftn(1, ten, c.data(), c.data() + 1, 2, -1.0), 0);
    EXPECT_EQ(e.f.fft1(d.data(), 10, 1), 0);
    for (int i = 0; i < 20; i++)
        EXPECT_NEAR(c[i], i < 10 ? d[i] / 10 : d[i], 1e-14) << i;
}

TEST(KernelsChirpZ, Edges)
{
    Engine e(KERNEL_CHIRP_Z);
    complex one(2.0, 3.0);
    e.f.chirpz(&one, 1, 1, 0, nullptr, 0.0);
    EXPECT_NEAR(one.re, 2.0, 1e-15);
    EXPECT_NEAR(one.im, -3.0, 1e-15);
    // Both directions compute the same thing on complex data.
    std::vector<double> a = {1, 2, -3, 0.5, 0.25, -1}, b = a;
    e.f.chirpz(reinterpret_cast<complex *>(a.data()), 3, 1, 0, nullptr, 0.0);
    e.f.chirpz(reinterpret_cast<complex *>(b.data()), 3, -1, 0, nullptr, 0.0);
    for (int i = 0; i < 6; i++)
        EXPECT_NEAR(a[i], b[i], 1e-14);
    // The explicit root and start of the default path give the same result.
    std::vector<double> x = noise(2 * 12, 6), y = x;
    const complex W = polar(1.0, -2.0 * 3.14159265358979323846 / 12);
    e.f.chirpz(reinterpret_cast<complex *>(x.data()), 12, 1, 0, nullptr, 0.0);
    e.f.chirpz(reinterpret_cast<complex *>(y.data()), 12, 1, 12, const_cast<complex *>(&W), 1.0);
    for (int i = 0; i < 24; i++)
        EXPECT_NEAR(x[i], y[i], 1e-13);
}

// ---- Goertzel --------------------------------------------------------------

// The recursion ends at s1 exp(i theta) - s2 = exp(2n i theta) sum x[j]
// exp(-i theta j); at the bins theta = k pi / n the leading factor is 1.
TEST(KernelsGoertzel, PhaseOfTheRecursion)
{
    Engine e(KERNEL_AUTO);
    double two[2] = {1.25, -0.5};
    e.f.goertzel(two, 1, 1);
    EXPECT_DOUBLE_EQ(two[0], 0.75);
    EXPECT_DOUBLE_EQ(two[1], 0.0);

    const int n = 50;
    const std::vector<double> x = noise(2 * n, 9);
    for (int sign : {1, -1}) {
        std::vector<double> g = x;
        e.f.goertzel(g.data(), n, sign);
        std::vector<double> z(4 * n, 0.0);
        for (int j = 0; j < 2 * n; j++)
            z[2 * j] = x[j];
        Oracle o(2 * n);
        for (int k = 0; k < n; k++) {
            LD re, im;
            o.bin(z.data(), k, -sign, false, re, im);
            EXPECT_NEAR(g[2 * k], static_cast<double>(re), 1e-12) << k;
            EXPECT_NEAR(g[2 * k + 1], static_cast<double>(im), 1e-12) << k;
        }
    }
    EXPECT_EQ(e.f.IsAbort(), 0);
}
