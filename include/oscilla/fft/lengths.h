// Transform lengths: the prime-factor table and factorisation helpers.
#ifndef OSCILLA_FFT_LENGTHS_H
#define OSCILLA_FFT_LENGTHS_H

namespace oscilla {

// The 240 divisors of 720720 = 16*9*5*7*11*13, ascending: every length the
// prime-factor kernel can do.
constexpr int PFA_TABLE_SIZE = 240;
constexpr int PFA_MAX = 720720;
const int *PrimeFactorLengths();

int LargestPrimeFactor(int n);
int PrimeFactors(int n, int *primes, int *powers);

// Kernel codes, shared by the primefac setting and by BestFFT / BestCmplxFFT.
enum KernelCode : int {
    KERNEL_SPLIT_RADIX = 0,
    KERNEL_PRIME_FACTOR = 1,
    KERNEL_MIXED_RADIX = 2,
    KERNEL_DIRECT = 3,
    KERNEL_CHIRP_Z = 4,
    KERNEL_AUTO = 5,
    KERNEL_AUTO_RESTRICTED = 6
};

struct KernelName {
    int code;
    const char *name;
    const char *description;
};

// Every kernel code with a readable name, ascending.
extern const KernelName KERNEL_NAMES[];
extern const int KERNEL_NAME_COUNT;

} // namespace oscilla

#endif
