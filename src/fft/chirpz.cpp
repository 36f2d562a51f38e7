// Chirp-z kernel: Bluestein's algorithm, the transform of any length as a
// convolution with a chirp, done by power-of-two transforms of the engine's
// split-radix object. With the default arguments both directions return
// sum over j of conj(x[j]) exp(+2 pi i jk / n); the real front ends repair
// that for real data.
#include "fft/kernel_state.h"
#include "fft/kernels.h"

#include <cmath>
#include <cstdlib>
#include <cstring>

namespace oscilla {
namespace detail {

namespace {

constexpr double kPi = 3.14159265358979323846;

int pow2_at_least(long n)
{
    long p = 2;
    while (p < n && p < (1L << 30))
        p <<= 1;
    return static_cast<int>(p);
}

complex *alloc_points(int L) { return static_cast<complex *>(std::malloc(sizeof(complex) * static_cast<size_t>(L))); }

// exp(-pi i q^2 / m): the chirp of the default root exp(-2 pi i / m). q^2 is
// reduced modulo 2m in integers first, so the angle stays below 2 pi and
// keeps full precision for large q.
complex default_chirp(long q, long m)
{
    const long long r = (static_cast<long long>(q) * q) % (2LL * m);
    return polar(1.0, -kPi * static_cast<double>(r) / static_cast<double>(m));
}

// The convolution and the final products, shared by both paths. V holds the
// transform of 1/c already divided by L. The loops work on the doubles
// directly so that the compiler can keep them in registers and vectorise.
void convolve(CFFT4 &split, complex *x, int n, int sign, const complex *c, const complex *V, complex *y, int L)
{
    split.ComplexFFT(y, L, 1);
    double *yd = reinterpret_cast<double *>(y);
    const double *vd = reinterpret_cast<const double *>(V);
    for (int i = 0; i < L; i++) {
        const double yr = yd[2 * i], yi = yd[2 * i + 1], vr = vd[2 * i], vi = vd[2 * i + 1];
        yd[2 * i] = yr * vr - yi * vi;
        yd[2 * i + 1] = yr * vi + yi * vr;
    }
    split.ComplexFFT(y, L, -1);
    const double *cd = reinterpret_cast<const double *>(c + n - 1);
    const double *ys = reinterpret_cast<const double *>(y + n - 1);
    double *xd = reinterpret_cast<double *>(x);
    if (sign == 1) {
        // x[j] = conj(y[n-1+j] c[n-1+j])
        for (int j = 0; j < n; j++) {
            const double yr = ys[2 * j], yi = ys[2 * j + 1], cr = cd[2 * j], ci = cd[2 * j + 1];
            xd[2 * j] = yr * cr - yi * ci;
            xd[2 * j + 1] = -(yr * ci + yi * cr);
        }
    } else {
        x[0] = y[n - 1] * c[n - 1];
        for (int j = 1; j < n; j++) {
            const double yr = ys[2 * j], yi = ys[2 * j + 1], cr = cd[2 * j], ci = cd[2 * j + 1];
            xd[2 * (n - j)] = yr * cr - yi * ci;
            xd[2 * (n - j) + 1] = yr * ci + yi * cr;
        }
    }
}

// Any root W and start A: no cache, three arrays per call.
void chirpz_general(KernelEnv &env, complex *x, int n, int sign, int m, complex W, double A)
{
    const int L = pow2_at_least(static_cast<long>(n) + m - 1);
    const long lo = 1 - n, hi = n - 1 > m - 1 ? n - 1 : m - 1, count = hi - lo + 1;
    complex *c = alloc_points(L), *y = alloc_points(L), *v = alloc_points(L);
    if (!c || !y || !v || !env.split) {
        env.failed = 1;
        std::free(c);
        std::free(y);
        std::free(v);
        return;
    }
    for (long i = 0; i < L; i++)
        c[i] = i < count ? pow(W, static_cast<double>((lo + i) * (lo + i)) * 0.5) : complex_zero;
    if (sign == -1)
        for (int j = 0; j < n; j++)
            x[j] = conj(x[j]);
    for (int j = 0; j < L; j++)
        y[j] = j < n ? x[j] * c[n - 1 + j] * std::pow(A, -j) : complex_zero;
    for (long i = 0; i < L; i++)
        v[i] = i < count ? 1.0 / c[i] : complex_zero;
    env.split->ComplexFFT(v, L, 1);
    const double s = 1.0 / L;
    for (int i = 0; i < L; i++)
        v[i] *= s;
    convolve(*env.split, x, n, sign, c, v, y, L);
    std::free(c);
    std::free(y);
    std::free(v);
}

} // namespace

void chirpz(KernelEnv &env, complex *x, int n, int sign, int m, const complex *W, double A)
{
    if (n < 1)
        return;
    if (m <= 0)
        m = n;
    if (A == 0.0)
        A = 1.0;
    if (W || m != n || A != 1.0) {
        const complex w = W ? *W : polar(1.0, -2.0 * kPi / m);
        chirpz_general(env, x, n, sign, m, w, A);
        return;
    }

    // Default arguments, the front ends' path: the chirp and the transform
    // of its reciprocal are kept while the length stays the same.
    KernelState *st = kernel_state(env);
    if (!st || !env.split) {
        env.failed = 1;
        return;
    }
    const int L = pow2_at_least(2L * n - 1);
    if (st->czN != n || st->czL != L || !st->czC) {
        chirp_free(st);
        st->czC = alloc_points(L);
        st->czV = alloc_points(L);
        st->czY = alloc_points(L);
        if (!st->czC || !st->czV || !st->czY) {
            env.failed = 1;
            chirp_free(st);
            return;
        }
        const long lo = 1 - n, count = 2L * n - 1;
        complex *c = st->czC, *V = st->czV;
        for (long i = 0; i < L; i++)
            c[i] = i < count ? default_chirp(lo + i, n) : complex_zero;
        // 1/c is the conjugate on the unit circle.
        for (long i = 0; i < L; i++)
            V[i] = i < count ? conj(c[i]) : complex_zero;
        env.split->ComplexFFT(V, L, 1);
        // Dividing by L is exact: fold it into the kept transform.
        const double s = 1.0 / L;
        for (int i = 0; i < L; i++)
            V[i] *= s;
        st->czN = n;
        st->czL = L;
    }
    const complex *c = st->czC;
    complex *y = st->czY;
    if (sign == -1)
        for (int j = 0; j < n; j++)
            x[j] = conj(x[j]);
    const double *xd = reinterpret_cast<const double *>(x);
    const double *cd = reinterpret_cast<const double *>(c + n - 1);
    double *yd = reinterpret_cast<double *>(y);
    for (int j = 0; j < n; j++) {
        const double xr = xd[2 * j], xi = xd[2 * j + 1], cr = cd[2 * j], ci = cd[2 * j + 1];
        yd[2 * j] = xr * cr - xi * ci;
        yd[2 * j + 1] = xr * ci + xi * cr;
    }
    std::memset(static_cast<void *>(y + n), 0, sizeof(complex) * static_cast<size_t>(L - n));
    convolve(*env.split, x, n, sign, c, st->czV, y, L);
}

} // namespace detail
} // namespace oscilla
