// The merge of the real transforms (realft's last step forward, first step
// inverse) for processors with AVX2 and FMA: the four twiddle streams of the
// portable merge in two 256-bit registers, two neighbouring points a step.
// The points pair as the portable loop pairs them, z1 ascending from the
// start and z2 descending from the end, so the second pair of each step is
// loaded and stored with its halves exchanged.
#include "fft/kernels.h"
#include "fft/ooura.h"
#include "fft/real_merge.h"

#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && !defined(OSCILLA_FFT_SCALAR) && \
    !defined(OSCILLA_FFT_NO_AVX2)
#include <cmath>

namespace oscilla {
namespace detail {

namespace {

typedef double v4d __attribute__((vector_size(32)));
typedef long long v4i __attribute__((vector_size(32)));

#define AVX2_FN __attribute__((target("avx2,fma")))

AVX2_FN inline v4d load4(const double *p)
{
    v4d v;
    __builtin_memcpy(&v, p, sizeof v);
    return v;
}
AVX2_FN inline void store4(double *p, v4d v) { __builtin_memcpy(p, &v, sizeof v); }
AVX2_FN inline v4d swap4(v4d a) { return __builtin_shuffle(a, v4i{1, 0, 3, 2}); }
AVX2_FN inline v4d halves4(v4d a) { return __builtin_shuffle(a, v4i{2, 3, 0, 1}); }

AVX2_FN void merge_avx2(double *a, int n, int forward)
{
    MergeStreams ms(n, forward);
    constexpr int S = MergeStreams::S;
    const int N = n / 2;
    const double c1 = ms.c1, wpr = ms.wpr, wpi = ms.wpi;
    // Stream s in lanes 2 (s % 2) of register s / 2.
    double *A = ms.A, *B = ms.B;
    v4d A01 = load4(A), A23 = load4(A + 4), B01 = load4(B), B23 = load4(B + 4);
    const v4d conj{1.0, -1.0, 1.0, -1.0}, pa{-wpi, wpi, -wpi, wpi}, pb{wpi, -wpi, wpi, -wpi};
    // Points i and i + 1 (one-based, as in the portable merge).
    const auto pair = [a, n, c1, conj](int i, v4d tA, v4d tB) AVX2_FN {
        double *q1 = a + 2 * i - 2, *q2 = a + n - 2 * i;
        const v4d z1 = load4(q1), z2c = halves4(load4(q2)) * conj;
        const v4d h1 = c1 * (z1 + z2c);
        const v4d d = z1 - z2c;
        const v4d wh = swap4(d) * tA + d * tB;
        store4(q1, h1 + wh);
        store4(q2, halves4((h1 - wh) * conj));
    };
    int i = 2;
    for (; i + S - 1 <= N / 2; i += S) {
        pair(i, A01, B01);
        pair(i + 2, A23, B23);
        v4d t = A01;
        A01 = t * wpr + B01 * pa + t;
        B01 = B01 * wpr + t * pb + B01;
        t = A23;
        A23 = t * wpr + B23 * pa + t;
        B23 = B23 * wpr + t * pb + B23;
    }
    store4(A, A01);
    store4(A + 4, A23);
    store4(B, B01);
    store4(B + 4, B23);
    for (int s = 0; i <= N / 2; i++, s++)
        merge_point(a, n, c1, i, cpair::load(A + 2 * s), cpair::load(B + 2 * s));
}

} // namespace

RealMerge real_merge_avx2()
{
    // The processor test of the radix-4 stages: AVX2 and FMA both present.
    return cft_avx2_usable() ? merge_avx2 : nullptr;
}

} // namespace detail
} // namespace oscilla

#else

namespace oscilla {
namespace detail {

RealMerge real_merge_avx2() { return nullptr; }

} // namespace detail
} // namespace oscilla

#endif
