// Goertzel's second-order recursion: n bins of the spectrum of 2n real
// samples, one recursion per bin. The result carries the recursion's phase,
// exp(i theta (2n - 1)) away from the plain transform.
#include "fft/kernel_state.h"
#include "fft/kernels.h"

#include <cmath>
#include <cstdlib>

namespace oscilla {
namespace detail {

void goertzel(KernelEnv &env, double *x, int n, int sign)
{
    env.abort = 0;
    if (n < 1)
        return;
    KernelState *st = kernel_state(env);
    if (!st) {
        env.failed = 1;
        return;
    }
    // The result arrays live in the kernel state: an abort returns with them
    // still held, and the next call or the engine's destructor releases them.
    std::free(st->gzRe);
    std::free(st->gzIm);
    st->gzRe = static_cast<double *>(std::calloc(static_cast<size_t>(n), sizeof(double)));
    st->gzIm = static_cast<double *>(std::calloc(static_cast<size_t>(n), sizeof(double)));
    double *re = st->gzRe, *im = st->gzIm;
    if (!re || !im) {
        env.failed = 1;
        std::free(st->gzRe);
        std::free(st->gzIm);
        st->gzRe = st->gzIm = nullptr;
        return;
    }
    double d = 3.14159265358979323846 / n;
    if (sign == -1)
        d = -d;
    const int n2 = 2 * n;
    for (int k = 0; k < n; k++) {
        if (env.abort)
            return;
        const double theta = k * d, c = std::cos(theta), s = std::sin(theta);
        const double c2 = 2.0 * c;
        double s1 = 0.0, s2 = 0.0;
        for (int j = 0; j < n2; j++) {
            const double t = c2 * s1 - s2 + x[j];
            s2 = s1;
            s1 = t;
        }
        re[k] = c * s1 - s2;
        im[k] = s * s1;
    }
    for (int k = 0; k < n; k++) {
        x[2 * k] = re[k];
        x[2 * k + 1] = im[k];
    }
    std::free(st->gzRe);
    std::free(st->gzIm);
    st->gzRe = st->gzIm = nullptr;
}

} // namespace detail
} // namespace oscilla
