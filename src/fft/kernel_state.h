// Working state that the kernels keep in the engine between calls: the
// mixed-radix work arrays and the chirp-z arrays of the last length.
#ifndef OSCILLA_SRC_FFT_KERNEL_STATE_H
#define OSCILLA_SRC_FFT_KERNEL_STATE_H

#include "fft/kernels.h"

namespace oscilla {
namespace detail {

struct KernelState {
    // Mixed radix (Singleton). The arrays grow and never shrink while they
    // live; fft_free releases them and zeroes both counts.
    unsigned workBytes; // bytes in each of tmp0..tmp3, 0 when none exist
    int permCount;      // entries in perm
    double *tmp0;       // sums of the general odd butterfly
    double *tmp1;       // differences of the general odd butterfly
    double *tmp2;       // cosines of 2 pi / k
    double *tmp3;       // sines of 2 pi / k
    int *perm;          // permutation work array
    int factor[17];     // factor list of the current pass

    // Chirp-z: chirp c and the transformed, 1/L-scaled reciprocal chirp of
    // the last default-argument length, and the convolution buffer.
    int czN;       // length the arrays were built for, 0 when none
    int czL;       // convolution length
    complex *czC;  // c[i], i < L
    complex *czV;  // FFT of 1/c, divided by L
    complex *czY;  // work buffer of L points

    // Goertzel: the two result arrays stay here when an abort leaves them.
    double *gzRe;
    double *gzIm;
};

// The state, created zero-filled on first use; null when memory is short.
KernelState *kernel_state(KernelEnv &env);

// Releases the chirp-z arrays and forgets their length.
void chirp_free(KernelState *s);

} // namespace detail
} // namespace oscilla

#endif
