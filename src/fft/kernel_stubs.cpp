// Stand-ins for the kernels of other lengths until they are written: a plain
// O(n^2) transform that has the direction convention of the real kernels.
#include "fft/kernels.h"

#include <cmath>
#include <vector>

namespace oscilla {
namespace detail {

struct KernelState {
    int unused;
};

namespace {
void slow_dft(double *x, int n, int sign, bool conjugate_input)
{
    if (n < 2)
        return;
    std::vector<double> re(n), im(n);
    const double w = (sign == -1 ? -2.0 : 2.0) * 3.14159265358979323846 / n;
    for (int k = 0; k < n; k++) {
        double sr = 0, si = 0;
        for (int j = 0; j < n; j++) {
            double t = w * static_cast<double>((static_cast<long long>(j) * k) % n);
            double xr = x[2 * j], xi = conjugate_input ? -x[2 * j + 1] : x[2 * j + 1];
            sr += xr * std::cos(t) - xi * std::sin(t);
            si += xr * std::sin(t) + xi * std::cos(t);
        }
        re[k] = sr;
        im[k] = si;
    }
    for (int k = 0; k < n; k++) {
        x[2 * k] = re[k];
        x[2 * k + 1] = im[k];
    }
}
} // namespace

void kernel_state_free(KernelState *&state)
{
    delete state;
    state = nullptr;
}

int fft1(KernelEnv &, double *data, int n, int sign)
{
    slow_dft(data, n, sign, false);
    return 0;
}

int fftn(KernelEnv &, int, const int[], double[], double[], int, double) { return 0; }
int fftradix(KernelEnv &, double[], double[], int, int, int, int, int, int) { return 0; }
void fft_free(KernelEnv &) {}

void pfacc(KernelEnv &env, double *x, int n, int sign)
{
    env.abort = 0;
    slow_dft(x, n, sign < 0 ? -1 : 1, false);
}

void chirpz(KernelEnv &, complex *x, int n, int, int, const complex *, double)
{
    slow_dft(reinterpret_cast<double *>(x), n, 1, true);
}

void dfft(KernelEnv &, double *x, int n, int sign) { slow_dft(x, n, sign == -1 ? -1 : 1, false); }
void goertzel(KernelEnv &env, double *, int, int) { env.abort = 0; }

} // namespace detail
} // namespace oscilla
