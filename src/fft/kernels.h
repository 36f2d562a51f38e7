// Internal interface of the complex kernels: one function per kernel, each in
// a file of its own, and one dispatch point over the kernel codes.
#ifndef OSCILLA_SRC_FFT_KERNELS_H
#define OSCILLA_SRC_FFT_KERNELS_H

#include "oscilla/fft/cfft4.h"
#include "oscilla/series/complex.h"

namespace oscilla {
namespace detail {

struct KernelState;

// What a kernel may touch of the engine that runs it.
struct KernelEnv {
    int &failed;
    int &abort;
    CFFT4 *&split;
    KernelState *&state;
};

// Runs kernel `code` (0 split radix, 1 prime factor, 2 mixed radix, 3 direct,
// 4 chirp-z) over n complex points interleaved from a[0], direction sign
// (1 forward, -1 inverse). Any other code does nothing.
void run_kernel(int code, KernelEnv &env, double *a, int n, int sign);

// Releases everything the kernel state holds, and the state itself.
void kernel_state_free(KernelState *&state);

// The merge of the real transforms built for AVX2 and FMA (p the first
// value, n a multiple of 4, forward or not); null where the processor or the
// compiler lacks them.
using RealMerge = void (*)(double *p, int n, int forward);
RealMerge real_merge_avx2();

// The interleaved mixed-radix passes built for AVX2 and FMA (fftradix with
// Im = Re + 1 and an increment of 2); null where the processor or the
// compiler lacks them.
using InterleavedPass = int (*)(KernelEnv &, double *Re, int nTotal, int nPass, int nSpan, int sign,
                                int maxFactors, int maxPerm);
InterleavedPass mixed_radix_avx2();

// Whether fftradix may take the AVX2 build of the interleaved passes where
// the processor has it (on by default); tests turn it off to reach the
// portable build on any machine.
void mixed_radix_allow_vector(bool allow);

int fft1(KernelEnv &env, double *data, int n, int sign);
int fftn(KernelEnv &env, int ndim, const int dims[], double Re[], double Im[], int sign, double scaling);
int fftradix(KernelEnv &env, double Re[], double Im[], int nTotal, int nPass, int nSpan, int sign,
             int maxFactors, int maxPerm);
void fft_free(KernelEnv &env);
void pfacc(KernelEnv &env, double *x, int n, int sign);
void chirpz(KernelEnv &env, complex *x, int n, int sign, int m, const complex *W, double A);
void dfft(KernelEnv &env, double *x, int n, int sign);
void goertzel(KernelEnv &env, double *x, int n, int sign);

} // namespace detail
} // namespace oscilla

#endif
