// Transform front ends, length policy and kernel members of the spectrum
// engine. Included once, by the file that instantiates the engine.
#ifndef OSCILLA_SRC_FFT_FRONTENDS_IMPL_H
#define OSCILLA_SRC_FFT_FRONTENDS_IMPL_H

#include "fft/kernels.h"
#include "fft/real_merge.h"
#include "oscilla/spectrum/cfft.h"

#include <cmath>
#include <cstdlib>

namespace oscilla {

namespace detail {

constexpr double PI = 3.14159265358979323846;

// Radix-2 decimation in time over n complex points, p[0] the first real part.
// Polls `abort` once per element of the bit reversal and once per stage.
inline void radix2(double *p, int n, int sign, int &abort)
{
    abort = 0;
    if (sign == 0 || n < 1)
        return;
    double *data = p; // one-based index k of the published routine is data[k - 1]
    const int n2 = n << 1;
    int j = 1;
    for (int i = 1; i < n2; i += 2) {
        if (abort)
            return;
        if (j > i) {
            double t = data[j - 1];
            data[j - 1] = data[i - 1];
            data[i - 1] = t;
            t = data[j];
            data[j] = data[i];
            data[i] = t;
        }
        int m = n;
        while (m >= 2 && j > m) {
            j -= m;
            m >>= 1;
        }
        j += m;
    }
    int mmax = 2;
    while (n2 > mmax) {
        if (abort)
            return;
        const int istep = mmax << 1;
        const double theta = 2.0 * PI / (sign * mmax);
        double wtemp = std::sin(0.5 * theta);
        const double wpr = -2.0 * wtemp * wtemp, wpi = std::sin(theta);
        double wr = 1.0, wi = 0.0;
        for (int m = 1; m < mmax; m += 2) {
            for (int i = m; i <= n2; i += istep) {
                const int jj = i + mmax;
                const double tr = wr * data[jj - 1] - wi * data[jj];
                const double ti = wr * data[jj] + wi * data[jj - 1];
                data[jj - 1] = data[i - 1] - tr;
                data[jj] = data[i] - ti;
                data[i - 1] += tr;
                data[i] += ti;
            }
            wtemp = wr;
            wr = wtemp * wpr - wi * wpi + wr;
            wi = wi * wpr + wtemp * wpi + wi;
        }
        mmax = istep;
    }
}

} // namespace detail

// ---- kernel choice -------------------------------------------------------

template <class S>
int BasicFFT<S>::KernelCode(int n, bool real, int L)
{
    int code = primefac >= KERNEL_AUTO ? (real ? BestFFT(n) : BestCmplxFFT(n)) : primefac;
    if (primefac == KERNEL_AUTO_RESTRICTED && code >= KERNEL_MIXED_RADIX)
        code = KERNEL_PRIME_FACTOR;
    if (code == KERNEL_PRIME_FACTOR && L > PFA_MAX)
        code = KERNEL_CHIRP_Z;
    return code;
}

template <class S>
void BasicFFT<S>::RunKernel(int code, double *a, int n, int sign)
{
    detail::KernelEnv env{failed, abort, split, kstate};
    detail::run_kernel(code, env, a, n, sign);
}

// ---- real transforms -----------------------------------------------------

// Real transform of n values, n a multiple of 4, by a complex transform of
// n/2 points and the merge. p[0] is the first value: realft passes data + 1,
// realfft data itself, so ReverseImSign's flag 0 on p is flag 1 on data.
template <class S>
void BasicFFT<S>::RealHalfLength(double *p, int n, int sign, int norm)
{
    const int N = n / 2;
    const int code = KernelCode(n, true, N);
    double *a = p; // a[0] is the first value
    if (sign == 1) {
        RunKernel(code, a, N, 1);
    } else {
        // Any sign other than 1 is the inverse.
        if (code == KERNEL_CHIRP_Z) {
            ReverseImSign(a, N, 0);
            ReverseComplex(reinterpret_cast<complex *>(a), N + 1);
        }
        a[1] = a[n];
    }
    detail::real_merge(a, n, sign == 1);
    if (sign == 1) {
        const double t = a[0];
        a[0] = t + a[1];
        a[1] = t - a[1];
        a[n] = a[1];
        a[n + 1] = 0.0;
        a[1] = 0.0;
        // Chirp-z conjugates its input: bin N-k arrives in place of bin k.
        if (code == KERNEL_CHIRP_Z) {
            ReverseComplex(reinterpret_cast<complex *>(a), N + 1);
            ReverseImSign(a, N, 0);
        }
    } else {
        const double t = a[0];
        a[0] = 0.5 * (t + a[1]);
        a[1] = 0.5 * (t - a[1]);
        RunKernel(code, a, N, -1);
        if (norm) {
            const double s = 1.0 / N;
            for (int i = 0; i < n; i++)
                a[i] *= s;
        }
    }
}

template <class S>
void BasicFFT<S>::realft(double *data, int n, int sign, int norm)
{
    if (n % 4 != 0 || n <= 0)
        realftodd(data, n, sign, norm);
    else
        RealHalfLength(data + 1, n, sign, norm);
}

template <class S>
void BasicFFT<S>::realfft(double *data, int n, int sign, int norm)
{
    if (n % 4 != 0 || n <= 0)
        realfftodd(data, n, sign, norm);
    else
        RealHalfLength(data, n, sign, norm);
}

namespace detail {

// Full-length complex transform of real data, for lengths not divisible by 4.
// p[0] is the first value (one-based callers pass data + 1).
template <class Engine, class Runner>
void real_odd(Engine &e, Runner run, double *p, int n, int sign, int norm, int code)
{
    if (n < 1)
        return;
    double *t = static_cast<double *>(std::calloc(2 * static_cast<size_t>(n), sizeof(double)));
    if (!t) {
        e.failed = 1;
        return;
    }
    // Code 0 has no branch on this path: t stays untransformed (n = 2 only).
    if (sign == 1) {
        for (int j = 0; j < n; j++)
            t[2 * j] = p[j];
        if (code != KERNEL_SPLIT_RADIX)
            run(code, t, n, 1);
        for (int i = 0; i <= n; i++)
            p[i] = t[i];
        if (n % 2 == 0)
            p[n + 1] = t[n + 1];
    } else if (sign == -1) {
        t[0] = p[0];
        t[1] = p[1];
        for (int j = 2; j <= n; j += 2) {
            t[j] = t[2 * n - j] = p[j];
            t[j + 1] = p[j + 1];
            t[2 * n - j + 1] = -p[j + 1];
        }
        if (code != KERNEL_SPLIT_RADIX)
            run(code, t, n, -1);
        // Without norm nothing is written back: data keeps the spectrum.
        if (norm) {
            const double s = 1.0 / n;
            for (int j = 0; j < n; j++)
                p[j] = t[2 * j] * s;
        }
    }
    std::free(t);
}

} // namespace detail

template <class S>
void BasicFFT<S>::realftodd(double *data, int n, int sign, int norm)
{
    const int code = KernelCode(n, true, n);
    detail::real_odd(*this, [this](int c, double *a, int m, int s) { RunKernel(c, a, m, s); }, data + 1, n,
                     sign, norm, code);
}

template <class S>
void BasicFFT<S>::realfftodd(double *data, int n, int sign, int norm)
{
    const int code = KernelCode(n, true, n);
    detail::real_odd(*this, [this](int c, double *a, int m, int s) { RunKernel(c, a, m, s); }, data, n, sign,
                     norm, code);
}

// ---- complex transforms --------------------------------------------------

template <class S>
void BasicFFT<S>::complexft(double *data, int n, int sign, int norm)
{
    if (sign != 1 && sign != -1)
        return;
    RunKernel(KernelCode(n, false, n), data + 1, n, sign);
    if (sign == -1 && norm) {
        // Only the first n of the 2n doubles are scaled; the second half of
        // the points keeps the unscaled inverse.
        const double s = 1.0 / n;
        for (int i = 1; i <= n; i++)
            data[i] *= s;
    }
}

template <class S>
void BasicFFT<S>::cmplxfft(complex *data, int n, int sign, int norm)
{
    if (sign != 1 && sign != -1)
        return;
    RunKernel(KernelCode(n, false, n), reinterpret_cast<double *>(data), n, sign);
    if (sign == -1 && norm) {
        const double s = 1.0 / n;
        for (int i = 0; i < n; i++)
            data[i] *= s;
    }
}

template <class S>
void BasicFFT<S>::twofft(double *data1, double *data2, double *fft1, double *fft2, int n)
{
    double *a = fft1, *b = fft2;
    for (int j = 1; j <= n; j++) {
        a[2 * j - 1] = data1[j];
        a[2 * j] = data2[j];
    }
    complexft(a, n, 1, 1);
    b[1] = a[2];
    b[2] = 0.0;
    a[2] = 0.0;
    for (int j = 3; j <= n + 1; j += 2) {
        const int p = 2 * n + 2 - j, q = 2 * n + 3 - j;
        const double rep = 0.5 * (a[j] + a[p]), rem = 0.5 * (a[j] - a[p]);
        const double aip = 0.5 * (a[j + 1] + a[q]), aim = 0.5 * (a[j + 1] - a[q]);
        a[j] = rep;
        a[j + 1] = aim;
        a[p] = rep;
        a[q] = -aim;
        b[j] = aip;
        b[j + 1] = -rem;
        b[p] = aip;
        b[q] = rem;
    }
}

template <class S>
void BasicFFT<S>::ReverseImSign(double *data, int n, int flag)
{
    const int s = flag == 1 ? 2 : 1;
    for (int i = 0; i <= n / 2; i++)
        data[s + 2 * i] = -data[s + 2 * i];
}

template <class S>
void BasicFFT<S>::ReverseComplex(complex *data, int n)
{
    for (int i = 0; i < n / 2; i++) {
        const complex t = data[i];
        data[i] = data[n - 1 - i];
        data[n - 1 - i] = t;
    }
}

template <class S>
void BasicFFT<S>::four1(double *data, int n, int sign)
{
    detail::radix2(data + 1, n, sign, abort);
}

template <class S>
void BasicFFT<S>::four0(double *data, int n, int sign)
{
    detail::radix2(data, n, sign, abort);
}

// ---- lengths -------------------------------------------------------------

template <class S>
int BasicFFT<S>::npfa(int n)
{
    const int *t = PrimeFactorLengths();
    for (int i = 0; i < PFA_TABLE_SIZE; i++)
        if (t[i] >= n)
            return t[i];
    return PFA_MAX;
}

template <class S>
int BasicFFT<S>::npfar(int n)
{
    return 2 * npfa((n + 1) / 2);
}

template <class S>
int BasicFFT<S>::OptPrimeFacCmplx(int n)
{
    return npfa(n);
}

template <class S>
int BasicFFT<S>::OptPrimeFacReal(int n)
{
    return npfar(n);
}

template <class S>
int BasicFFT<S>::NPowerof2(int n)
{
    int p = 2;
    while (p < n && p <= (1 << 29))
        p <<= 1;
    return p;
}

template <class S>
int BasicFFT<S>::Powerof2(int n)
{
    const int p = NPowerof2(n);
    int e = 0;
    while ((1 << e) < p)
        e++;
    return e;
}

template <class S>
int BasicFFT<S>::IsPow2()
{
    return (cnt >= 2 && (cnt & (cnt - 1)) == 0) ? 1 : 0;
}

template <class S>
int BasicFFT<S>::FindFFTlen(int n)
{
    switch (primefac) {
    case KERNEL_SPLIT_RADIX:
        return NPowerof2(n);
    case KERNEL_PRIME_FACTOR:
        return n % 2 ? npfa(n) : npfar(n);
    case KERNEL_AUTO_RESTRICTED:
        if (n >= 2 && (n & (n - 1)) == 0)
            return n;
        return n % 2 ? npfa(n) : npfar(n);
    default:
        return n;
    }
}

template <class S>
int BasicFFT<S>::BestFFT(int n)
{
    if (n >= 2 && (n & (n - 1)) == 0)
        return KERNEL_SPLIT_RADIX;
    const int p = n % 2 ? npfa(n) : npfar(n);
    if (p == n)
        return KERNEL_PRIME_FACTOR;
    if (LargestPrimeFactor(n) < 510)
        return KERNEL_MIXED_RADIX;
    return KERNEL_CHIRP_Z;
}

template <class S>
int BasicFFT<S>::BestCmplxFFT(int n)
{
    if (n >= 2 && (n & (n - 1)) == 0)
        return KERNEL_SPLIT_RADIX;
    if (npfa(n) == n)
        return KERNEL_PRIME_FACTOR;
    if (LargestPrimeFactor(n) < 510)
        return KERNEL_MIXED_RADIX;
    return KERNEL_CHIRP_Z;
}

// ---- kernels as members --------------------------------------------------

template <class S>
int BasicFFT<S>::fft1(double *data, int n, int sign)
{
    detail::KernelEnv env{failed, abort, split, kstate};
    return detail::fft1(env, data, n, sign);
}

template <class S>
int BasicFFT<S>::fftn(int ndim, const int dims[], double Re[], double Im[], int sign, double scaling)
{
    detail::KernelEnv env{failed, abort, split, kstate};
    return detail::fftn(env, ndim, dims, Re, Im, sign, scaling);
}

template <class S>
int BasicFFT<S>::fftradix(double Re[], double Im[], int nTotal, int nPass, int nSpan, int sign, int maxFactors,
                          int maxPerm)
{
    detail::KernelEnv env{failed, abort, split, kstate};
    return detail::fftradix(env, Re, Im, nTotal, nPass, nSpan, sign, maxFactors, maxPerm);
}

template <class S>
void BasicFFT<S>::fft_free()
{
    detail::KernelEnv env{failed, abort, split, kstate};
    detail::fft_free(env);
}

template <class S>
void BasicFFT<S>::pfacc(double *x, int n, int sign)
{
    detail::KernelEnv env{failed, abort, split, kstate};
    detail::pfacc(env, x, n, sign);
}

template <class S>
void BasicFFT<S>::chirpz(complex *x, int n, int sign, int m, complex *W, double A)
{
    detail::KernelEnv env{failed, abort, split, kstate};
    detail::chirpz(env, x, n, sign, m, W, A);
}

template <class S>
void BasicFFT<S>::dfft(double *x, int n, int sign)
{
    detail::KernelEnv env{failed, abort, split, kstate};
    detail::dfft(env, x, n, sign);
}

template <class S>
void BasicFFT<S>::goertzel(double *x, int n, int sign)
{
    detail::KernelEnv env{failed, abort, split, kstate};
    detail::goertzel(env, x, n, sign);
}

} // namespace oscilla

#endif
