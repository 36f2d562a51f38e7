// Direct transform: the O(n^2) definition, every angle computed afresh. A
// reference, not a fast path.
#include "fft/kernels.h"

#include <cmath>
#include <cstdlib>

namespace oscilla {
namespace detail {

void dfft(KernelEnv &env, double *x, int n, int sign)
{
    if (n < 1)
        return;
    double *re = static_cast<double *>(std::calloc(static_cast<size_t>(n), sizeof(double)));
    double *im = static_cast<double *>(std::calloc(static_cast<size_t>(n), sizeof(double)));
    if (!re || !im) {
        env.failed = 1;
        std::free(re);
        std::free(im);
        return;
    }
    const double w = (sign == -1 ? 2.0 : -2.0) * 3.14159265358979323846 / n;
    for (int k = 0; k < n; k++) {
        const double kw = k * w;
        double sr = 0.0, si = 0.0;
        for (int j = 0; j < n; j++) {
            const double t = j * kw;
            const double c = std::cos(t), s = std::sin(t);
            sr += x[2 * j] * c + x[2 * j + 1] * s;
            si += -x[2 * j] * s + x[2 * j + 1] * c;
        }
        re[k] = sr;
        im[k] = si;
    }
    for (int k = 0; k < n; k++) {
        x[2 * k] = re[k];
        x[2 * k + 1] = im[k];
    }
    std::free(re);
    std::free(im);
}

} // namespace detail
} // namespace oscilla
