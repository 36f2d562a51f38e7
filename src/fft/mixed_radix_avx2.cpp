// The interleaved mixed-radix passes compiled for AVX2 and FMA, picked at
// run time where the processor has both, so that the library still runs on
// any x86-64. Same source as the portable build; where the compiler fuses a
// multiply and an add, the last bits of a result may differ from it.
#include "fft/kernels.h"
#include "fft/ooura.h"

#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && !defined(OSCILLA_FFT_SCALAR) && \
    !defined(OSCILLA_FFT_NO_AVX2)
// Standard headers first, compiled for the default target.
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>

#pragma GCC push_options
#pragma GCC target("avx2,fma")
#define OSCILLA_MR_VARIANT avx2
#define OSCILLA_MR_WIDE 1
#include "fft/mixed_radix_pass.h"
#pragma GCC pop_options

namespace oscilla {
namespace detail {


namespace {
__attribute__((target("avx2,fma"))) int interleaved_avx2(KernelEnv &env, double *Re, int nTotal, int nPass,
                                                         int nSpan, int iSign, int maxFactors, int maxPerm)
{
    return avx2::radix_pass<true>(env, Re, nullptr, nTotal, nPass, nSpan, iSign, maxFactors, maxPerm);
}
} // namespace

InterleavedPass mixed_radix_avx2()
{
    // The processor test of the radix-4 stages: AVX2 and FMA both present.
    return cft_avx2_usable() ? interleaved_avx2 : nullptr;
}

} // namespace detail
} // namespace oscilla

#else

namespace oscilla {
namespace detail {

InterleavedPass mixed_radix_avx2() { return nullptr; }

} // namespace detail
} // namespace oscilla

#endif
