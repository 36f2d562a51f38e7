#include "oscilla/fft/lengths.h"

#include <algorithm>
#include <array>

namespace oscilla {

namespace {

// Built once from the rule: every divisor of 16*9*5*7*11*13, ascending.
std::array<int, PFA_TABLE_SIZE> build_table()
{
    std::array<int, PFA_TABLE_SIZE> t{};
    int k = 0;
    for (int d = 1; d <= PFA_MAX; d++)
        if (PFA_MAX % d == 0)
            t[k++] = d;
    return t;
}

} // namespace

const KernelName KERNEL_NAMES[] = {
    {KERNEL_SPLIT_RADIX, "pow2", "split radix, powers of two"},
    {KERNEL_PRIME_FACTOR, "pfa", "prime factor, divisors of 720720"},
    {KERNEL_MIXED_RADIX, "mixed", "mixed radix, any length"},
    {KERNEL_DIRECT, "direct", "direct O(n^2) transform"},
    {KERNEL_CHIRP_Z, "chirpz", "chirp-z, any length"},
    {KERNEL_AUTO, "auto", "automatic choice per length"},
    {KERNEL_AUTO_RESTRICTED, "auto-pfa", "automatic, restricted to split radix and prime factor"},
};

const int KERNEL_NAME_COUNT = static_cast<int>(sizeof(KERNEL_NAMES) / sizeof(KERNEL_NAMES[0]));

const int *PrimeFactorLengths()
{
    static const std::array<int, PFA_TABLE_SIZE> table = build_table();
    return table.data();
}

// Trial division; primes[] and powers[] are one-based.
int PrimeFactors(int n, int *primes, int *powers)
{
    int d = 2, last = 0, count = 0, m = n;
    for (;;) {
        int q = m / d;
        if (q * d == m && m != 0) {
            if (d > last) {
                count++;
                primes[count] = d;
                powers[count] = 1;
                last = d;
            } else {
                powers[count]++;
            }
            m = q;
            continue;
        }
        if (q <= d)
            break;
        d = d == 2 ? 3 : d + 2;
    }
    if (m >= 2) {
        if (m > last) {
            count++;
            primes[count] = m;
            powers[count] = 1;
        } else {
            powers[count]++;
        }
    }
    return count;
}

int LargestPrimeFactor(int n)
{
    if (n < 2)
        return 0;
    int primes[50], powers[50];
    int count = PrimeFactors(n, primes, powers);
    return count > 0 ? primes[count] : 0;
}

} // namespace oscilla
