#include "fft/kernels.h"

namespace oscilla {
namespace detail {

void run_kernel(int code, KernelEnv &env, double *a, int n, int sign)
{
    switch (code) {
    case 0:
        // The split-radix tables only exist for powers of two: another length
        // is left untransformed (wrong numbers, as for any unsuitable fixed
        // kernel) rather than run past the end of the data.
        if (env.split && n >= 1 && (n & (n - 1)) == 0)
            env.split->ComplexFFT(a, n, sign);
        break;
    case 1:
        pfacc(env, a, n, sign);
        break;
    case 2:
        fft1(env, a, n, sign);
        break;
    case 3:
        dfft(env, a, n, sign);
        break;
    case 4:
        chirpz(env, reinterpret_cast<complex *>(a), n, sign, 0, nullptr, 0.0);
        break;
    default:
        break;
    }
}

} // namespace detail
} // namespace oscilla
