// Independent oracles shared by the tests: a direct DFT in long double and
// error measures scaled by machine epsilon.
#ifndef OSCILLA_TESTS_SUPPORT_ORACLE_H
#define OSCILLA_TESTS_SUPPORT_ORACLE_H

#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

namespace oracle {

constexpr double eps = std::numeric_limits<double>::epsilon();

// X[k] = sum_j x[j] exp(sign * 2 pi i jk/n), in long double, for the bins
// listed (all bins when `bins` is empty). Input interleaved complex.
inline std::vector<long double> dft(const std::vector<double> &x, int n, int sign, const std::vector<int> &bins = {})
{
    const long double pi = 3.141592653589793238462643383279502884L;
    std::vector<int> ks = bins;
    if (ks.empty())
        for (int k = 0; k < n; k++)
            ks.push_back(k);
    std::vector<long double> out(2 * static_cast<size_t>(n), 0.0L);
    for (int k : ks) {
        long double sr = 0, si = 0;
        for (int j = 0; j < n; j++) {
            // Reduce jk mod n first so the angle keeps full precision.
            const long double t = sign * 2 * pi * static_cast<long double>((static_cast<int64_t>(j) * k) % n) / n;
            const long double c = std::cos(t), s = std::sin(t);
            sr += x[2 * j] * c - x[2 * j + 1] * s;
            si += x[2 * j] * s + x[2 * j + 1] * c;
        }
        out[2 * k] = sr;
        out[2 * k + 1] = si;
    }
    return out;
}

// Deterministic pseudo-random values in [-1, 1) (a fixed LCG: no global state).
struct Lcg {
    uint64_t s;
    explicit Lcg(uint64_t seed = 12345) : s(seed) {}
    double next()
    {
        s = s * 6364136223846793005ULL + 1442695040888963407ULL;
        return static_cast<double>(s >> 11) / 4503599627370496.0 - 1.0;
    }
};

inline std::vector<double> random_vector(int n, uint64_t seed = 7)
{
    Lcg g(seed);
    std::vector<double> v(n);
    for (auto &x : v)
        x = g.next();
    return v;
}

} // namespace oracle

#endif
