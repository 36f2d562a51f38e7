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

// The four twiddle streams of the merge. With z1 = (a[i1], a[i2]), z2 =
// (a[i3], a[i4]) and d = z1 - conj z2, w h2 = swap(d) (-c2 wr, c2 wr) +
// d (-c2 wi, -c2 wi). Stream s starts at twiddle s + 1 in that scaled form,
// pairs A[2s..2s+1] and B[2s..2s+1] (c2 is a power of two, so the scaling is
// exact), and steps by 4 theta through wpr, wpi, the recurrence running on
// the scaled pairs directly.
struct MergeStreams {
    static constexpr int S = 4;
    double c1, c2, wpr, wpi;
    double A[2 * S], B[2 * S];

    MergeStreams(int n, int forward) : c1(0.5), c2(forward ? -0.5 : 0.5)
    {
        constexpr double pi = 3.14159265358979323846;
        const int N = n / 2;
        const double theta = forward ? pi / N : -pi / N;
        const double wtemp = std::sin(0.5 * S * theta);
        wpr = -2.0 * wtemp * wtemp;
        wpi = std::sin(S * theta);
        for (int s = 0; s < S; s++) {
            const double wr = std::cos((s + 1) * theta), wi = std::sin((s + 1) * theta);
            A[2 * s] = -c2 * wr;
            A[2 * s + 1] = c2 * wr;
            B[2 * s] = B[2 * s + 1] = -c2 * wi;
        }
    }
};

// One step of the merge: point i (one-based, 2 <= i <= N/2) with its partner
// N + 2 - i, a[0] the first value and (tA, tB) the stream's scaled twiddle.
// z1 becomes h1 + w h2 and z2 becomes conj(h1 - w h2), h1 = c1 (z1 + conj z2).
inline void merge_point(double *a, int n, double c1, int i, cpair::v2d tA, cpair::v2d tB)
{
    using cpair::v2d;
    const v2d conj{1.0, -1.0};
    double *q1 = a + 2 * i - 2, *q2 = a + n + 2 - 2 * i;
    const v2d z1 = cpair::load(q1), z2c = cpair::load(q2) * conj;
    const v2d h1 = c1 * (z1 + z2c);
    const v2d d = z1 - z2c;
    const v2d wh = cpair::swap(d) * tA + d * tB;
    cpair::store(q1, h1 + wh);
    cpair::store(q2, (h1 - wh) * conj);
}

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
    const MergeStreams ms(n, forward);
    constexpr int S = MergeStreams::S;
    const int N = n / 2;
    const double c1 = ms.c1, wpr = ms.wpr, wpi = ms.wpi;
    v2d A[S], B[S];
    for (int s = 0; s < S; s++) {
        A[s] = cpair::load(ms.A + 2 * s);
        B[s] = cpair::load(ms.B + 2 * s);
    }
    const v2d pa{-wpi, wpi}, pb{wpi, -wpi};
    int i = 2;
    for (; i + S - 1 <= N / 2; i += S)
        for (int s = 0; s < S; s++) {
            merge_point(p, n, c1, i + s, A[s], B[s]);
            const v2d t = A[s];
            A[s] = t * wpr + B[s] * pa + t;
            B[s] = B[s] * wpr + t * pb + B[s];
        }
    for (int s = 0; i <= N / 2; i++, s++)
        merge_point(p, n, c1, i, A[s], B[s]);
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
