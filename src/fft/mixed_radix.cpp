// Mixed-radix kernel: the doors fft1, fftn and fftradix and the release of
// the working state. The passes themselves are in mixed_radix_pass.h.
#define OSCILLA_MR_VARIANT portable
#include "fft/mixed_radix_pass.h"

#include <atomic>

namespace oscilla {
namespace detail {

namespace {
std::atomic<bool> allowVector{true};
} // namespace

void mixed_radix_allow_vector(bool allow) { allowVector = allow; }

void fft_free(KernelEnv &env)
{
    KernelState *s = env.state;
    if (!s)
        return;
    std::free(s->tmp0);
    std::free(s->tmp1);
    std::free(s->tmp2);
    std::free(s->tmp3);
    std::free(s->perm);
    s->tmp0 = s->tmp1 = s->tmp2 = s->tmp3 = nullptr;
    s->perm = nullptr;
    s->workBytes = 0;
    s->permCount = 0;
}

int fft1(KernelEnv &env, double *data, int n, int sign)
{
    const int ret = fftradix(env, data, data + 1, n, n, n, 2 * sign, n, n);
    fft_free(env);
    return ret;
}

int fftn(KernelEnv &env, int ndim, const int dims[], double Re[], double Im[], int sign, double scaling)
{
    long nTotal = 1;
    int maxDim = 1;
    if (ndim != 0 && dims[0] != 0) {
        for (int i = 0; i < ndim; i++) {
            if (dims[i] < 1) {
                fft_free(env);
                return -1;
            }
            nTotal *= dims[i];
            if (dims[i] > maxDim)
                maxDim = dims[i];
        }
    } else {
        // A list ended by a zero; an empty list is one point.
        ndim = 0;
        for (int i = 0; dims[i] != 0; i++) {
            if (dims[i] < 1) {
                fft_free(env);
                return -1;
            }
            nTotal *= dims[i];
            if (dims[i] > maxDim)
                maxDim = dims[i];
            ndim++;
        }
    }
    if (nTotal > INT_MAX) {
        fft_free(env);
        return -1;
    }
    long nSpan = 1;
    for (int i = 0; i < ndim; i++) {
        nSpan *= dims[i];
        const int ret = fftradix(env, Re, Im, static_cast<int>(nTotal), dims[i], static_cast<int>(nSpan), sign,
                                 maxDim, maxDim);
        if (ret) {
            fft_free(env);
            return ret;
        }
    }
    if (scaling != 0.0 && scaling != 1.0) {
        if (scaling < -1.0)
            scaling = std::sqrt(static_cast<double>(nTotal));
        else if (scaling < 0.0)
            scaling = static_cast<double>(nTotal);
        const double f = 1.0 / scaling;
        // The bound is the point count, not the count times the increment:
        // with an increment above 1 only the leading part is scaled.
        const long inc = sign < 0 ? -static_cast<long>(sign) : sign;
        if (inc > 0)
            for (long i = 0; i < nTotal; i += inc) {
                Re[i] *= f;
                Im[i] *= f;
            }
    }
    fft_free(env);
    return 0;
}

int fftradix(KernelEnv &env, double Re[], double Im[], int nTotal, int nPass, int nSpan, int iSign, int maxFactors,
             int maxPerm)
{
    if (Im == Re + 1 && (iSign == 2 || iSign == -2)) {
        static const InterleavedPass fast = mixed_radix_avx2();
        if (fast && allowVector)
            return fast(env, Re, nTotal, nPass, nSpan, iSign, maxFactors, maxPerm);
        return portable::radix_pass<true>(env, Re, nullptr, nTotal, nPass, nSpan, iSign, maxFactors, maxPerm);
    }
    return portable::radix_pass<false>(env, Re, Im, nTotal, nPass, nSpan, iSign, maxFactors, maxPerm);
}

} // namespace detail
} // namespace oscilla
