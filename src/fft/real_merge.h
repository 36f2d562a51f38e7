// The merge of a half-length complex transform into the spectrum of real
// data, shared by the real front ends: the portable form here, the AVX2 form
// in real_merge_avx2.cpp, and real_merge picking one at run time.
#ifndef OSCILLA_SRC_FFT_REAL_MERGE_H
#define OSCILLA_SRC_FFT_REAL_MERGE_H

#include "fft/complex_pair.h"
#include "fft/kernels.h"

#include <cmath>

namespace oscilla {
namespace detail {

// Merge of a half-length complex transform into the spectrum of 2N real
// values (Numerical Recipes' realft). p[0] is the first data value; p[i-1]
// is a[i] of the one-based description. The twiddles come from the
// trigonometric recurrence, not from a table. A single recurrence is one
// long dependency chain (each twiddle waits for the last), which at 1K points
// costs as much as the half-length transform; four interleaved recurrences,
// each seeded exactly and stepping by 4 theta, run side by side and also
// accumulate a quarter of the rounding.
inline void real_merge_portable(double *p, int n, int forward)
{
    using cpair::v2d;
    constexpr double pi = 3.14159265358979323846;
    constexpr int S = 4;
    const int N = n / 2;
    const double c1 = 0.5, c2 = forward ? -0.5 : 0.5;
    const double theta = forward ? pi / N : -pi / N;
    const double wtemp = std::sin(0.5 * S * theta);
    const double wpr = -2.0 * wtemp * wtemp, wpi = std::sin(S * theta);
    // With z1 = (a[i1], a[i2]), z2 = (a[i3], a[i4]) and d = z1 - conj z2,
    // w h2 = swap(d) (-c2 wr, c2 wr) + d (-c2 wi, -c2 wi). Each stream keeps
    // its twiddle in that scaled form (c2 is a power of two, so the scaling
    // is exact), and the recurrence runs on it directly.
    v2d A[S], B[S];
    for (int s = 0; s < S; s++) {
        const double wr = std::cos((s + 1) * theta), wi = std::sin((s + 1) * theta);
        A[s] = v2d{-c2 * wr, c2 * wr};
        B[s] = v2d{-c2 * wi, -c2 * wi};
    }
    const v2d conj{1.0, -1.0}, pa{-wpi, wpi}, pb{wpi, -wpi};
    double *a = p; // zero-based view: one-based index k is a[k - 1]
    // z1 becomes h1 + w h2 and z2 becomes conj(h1 - w h2), h1 = c1 (z1 + conj z2).
    const auto merge = [a, n, c1, conj](int i, v2d tA, v2d tB) {
        double *q1 = a + 2 * i - 2, *q2 = a + n + 2 - 2 * i;
        const v2d z1 = cpair::load(q1), z2c = cpair::load(q2) * conj;
        const v2d h1 = c1 * (z1 + z2c);
        const v2d d = z1 - z2c;
        const v2d wh = cpair::swap(d) * tA + d * tB;
        cpair::store(q1, h1 + wh);
        cpair::store(q2, (h1 - wh) * conj);
    };
    int i = 2;
    for (; i + S - 1 <= N / 2; i += S)
        for (int s = 0; s < S; s++) {
            merge(i + s, A[s], B[s]);
            const v2d t = A[s];
            A[s] = t * wpr + B[s] * pa + t;
            B[s] = B[s] * wpr + t * pb + B[s];
        }
    for (int s = 0; i <= N / 2; i++, s++)
        merge(i, A[s], B[s]);
}

inline void real_merge(double *p, int n, int forward)
{
    static const RealMerge wide = real_merge_avx2();
    if (wide)
        wide(p, n, forward);
    else
        real_merge_portable(p, n, forward);
}

} // namespace detail
} // namespace oscilla

#endif
