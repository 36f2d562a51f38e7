// A complex value as a pair of doubles in one SIMD register (real, imaginary),
// for the kernels that work on interleaved data.
#ifndef OSCILLA_SRC_FFT_COMPLEX_PAIR_H
#define OSCILLA_SRC_FFT_COMPLEX_PAIR_H

namespace oscilla {
namespace detail {
namespace cpair {

typedef double v2d __attribute__((vector_size(16)));
typedef long long v2i __attribute__((vector_size(16)));

inline v2d swap(v2d a)
{
#if defined(__clang__)
    return __builtin_shufflevector(a, a, 1, 0);
#else
    return __builtin_shuffle(a, v2i{1, 0});
#endif
}
// i a
inline v2d times_i(v2d a) { return swap(a) * v2d{-1.0, 1.0}; }
inline v2d load(const double *p)
{
    v2d v;
    __builtin_memcpy(&v, p, sizeof v);
    return v;
}
inline void store(double *p, v2d v) { __builtin_memcpy(p, &v, sizeof v); }

} // namespace cpair
} // namespace detail
} // namespace oscilla

#endif
