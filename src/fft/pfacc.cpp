// Prime-factor kernel: Temperton's self-sorting in-place prime factor
// algorithm (C. Temperton, "Self-sorting in-place fast Fourier transforms",
// 1991) over the mutually prime factors 16, 13, 11, 9, 8, 7, 5, 4, 3, 2.
// No twiddles between stages, no tables, no allocation: each stage rotates
// its butterfly slots so that the result comes out in natural order.
#include "fft/complex_pair.h"
#include "fft/kernels.h"

#include <utility>

namespace oscilla {
namespace detail {

namespace {

// Cosines and sines of 2 pi q / P, q = 1 .. (P-1)/2, for the odd butterflies.
template <int P>
struct Roots;
template <>
struct Roots<3> {
    static constexpr double c[] = {-0.5};
    static constexpr double s[] = {0.8660254037844386};
};
template <>
struct Roots<5> {
    static constexpr double c[] = {0.30901699437494742, -0.80901699437494742};
    static constexpr double s[] = {0.95105651629515353, 0.58778525229247314};
};
template <>
struct Roots<7> {
    static constexpr double c[] = {0.62348980185873359, -0.22252093395631434, -0.90096886790241903};
    static constexpr double s[] = {0.7818314824680298, 0.97492791218182362, 0.43388373911755823};
};
template <>
struct Roots<9> {
    static constexpr double c[] = {0.76604444311897801, 0.17364817766693041, -0.5, -0.93969262078590832};
    static constexpr double s[] = {0.64278760968653925, 0.98480775301220802, 0.8660254037844386,
                                   0.34202014332566888};
};
template <>
struct Roots<11> {
    static constexpr double c[] = {0.84125353283118121, 0.41541501300188644, -0.142314838273285,
                                   -0.65486073394528499, -0.95949297361449737};
    static constexpr double s[] = {0.54064081745559756, 0.90963199535451833, 0.9898214418809328,
                                   0.75574957435425827, 0.28173255684142967};
};
template <>
struct Roots<13> {
    static constexpr double c[] = {0.88545602565320991, 0.56806474673115592, 0.12053668025532301,
                                   -0.35460488704253545, -0.74851074817110119, -0.97094181742605201};
    static constexpr double s[] = {0.46472317204376851, 0.82298386589365635, 0.99270887409805397,
                                   0.93501624268541483, 0.66312265824079519, 0.23931566428755768};
};

// exp(2 pi i j / 16), j = 0..3, for the power-of-two butterflies.
constexpr double C16[] = {1.0, 0.92387953251128674, 0.7071067811865476, 0.38268343236508978};

using cpair::load;
using cpair::store;
using cpair::swap;
using cpair::times_i;
using cpair::v2d;

// y[j] = sum over k of z[k] exp(+2 pi i jk / P): the unrotated butterfly.
template <int P>
struct Butterfly {
    // Odd P: sums and differences of mirrored inputs, then the even (cosine)
    // and odd (sine) parts, paired for outputs j and P - j.
    static inline void run(const v2d *z, v2d *y)
    {
        constexpr int H = (P - 1) / 2;
        v2d a[H], b[H];
        v2d y0 = z[0];
#pragma GCC unroll 8
        for (int k = 1; k <= H; k++) {
            a[k - 1] = z[k] + z[P - k];
            b[k - 1] = z[k] - z[P - k];
            y0 += a[k - 1];
        }
        y[0] = y0;
#pragma GCC unroll 8
        for (int j = 1; j <= H; j++) {
            v2d r = z[0], q = {0.0, 0.0};
#pragma GCC unroll 8
            for (int k = 1; k <= H; k++) {
                const int t = (j * k) % P;
                if (t == 0) { // composite P (9): a whole turn
                    r += a[k - 1];
                    continue;
                }
                const double c = t <= H ? Roots<P>::c[t - 1] : Roots<P>::c[P - t - 1];
                const double s = t <= H ? Roots<P>::s[t - 1] : -Roots<P>::s[P - t - 1];
                r += c * a[k - 1];
                q += s * b[k - 1];
            }
            const v2d iq = times_i(q);
            y[j] = r + iq;
            y[P - j] = r - iq;
        }
    }
};

template <>
struct Butterfly<2> {
    static inline void run(const v2d *z, v2d *y)
    {
        y[0] = z[0] + z[1];
        y[1] = z[0] - z[1];
    }
};

template <>
struct Butterfly<4> {
    static inline void run(const v2d *z, v2d *y)
    {
        const v2d t0 = z[0] + z[2], t1 = z[0] - z[2];
        const v2d t2 = z[1] + z[3], t3 = times_i(z[1] - z[3]); // exp(+i pi/2) = i
        y[0] = t0 + t2;
        y[2] = t0 - t2;
        y[1] = t1 + t3;
        y[3] = t1 - t3;
    }
};

// 8 and 16: two half-length butterflies over even and odd samples, joined
// with the twiddles exp(2 pi i j / P) written in as constants.
template <int P>
struct Pow2Butterfly {
    static inline void run(const v2d *z, v2d *y)
    {
        constexpr int H = P / 2;
        v2d ze[H], zo[H], e[H], o[H];
#pragma GCC unroll 8
        for (int k = 0; k < H; k++) {
            ze[k] = z[2 * k];
            zo[k] = z[2 * k + 1];
        }
        Butterfly<H>::run(ze, e);
        Butterfly<H>::run(zo, o);
#pragma GCC unroll 8
        for (int j = 0; j < H; j++) {
            v2d t;
            if (j == 0) {
                t = o[0];
            } else if (4 * j == P) {
                t = times_i(o[j]);
            } else {
                // angle 2 pi j / P in sixteenths of a turn
                const int q = j * (16 / P);
                const double c = q < 4 ? C16[q] : -C16[8 - q];
                const double s = q < 4 ? C16[4 - q] : C16[q - 4];
                t = c * o[j] + s * times_i(o[j]);
            }
            y[j] = e[j] + t;
            y[j + H] = e[j] - t;
        }
    }
};

template <>
struct Butterfly<8> : Pow2Butterfly<8> {};
template <>
struct Butterfly<16> : Pow2Butterfly<16> {};

// One stage of factor P over n complex points, m = n / P butterflies.
// Slot k of butterfly t is i0((k - t) mod P) + t, where i0(k) = k s mod n:
// the slots rotate by one position from butterfly to butterfly. Output j of
// the rotated transform, sum z[k] w^(jk) with w = exp(2 pi i V / P), is
// output (V j) mod P of the unrotated one; V is a template argument so
// that the pick is resolved at compile time.
template <int P, int V>
void stage(double *x, int n, int m, long long s)
{
    int slot0[2 * P];
    for (int k = 0; k < P; k++)
        slot0[k] = slot0[k + P] = static_cast<int>((k * s) % n);
    v2d z[P], y[P];
    int off = 0;
    for (int t = 0; t < m; t++) {
        const int *base = slot0 + P - off;
        double *xt = x + 2 * t;
#pragma GCC unroll 16
        for (int k = 0; k < P; k++)
            z[k] = load(xt + 2 * base[k]);
        Butterfly<P>::run(z, y);
#pragma GCC unroll 16
        for (int j = 0; j < P; j++)
            store(xt + 2 * base[j], y[(V * j) % P]);
        if (++off == P)
            off = 0;
    }
}

using StageFn = void (*)(double *, int, int, long long);

template <int P, int... V>
constexpr StageFn pick_stage(int v, std::integer_sequence<int, V...>)
{
    constexpr StageFn fns[] = {stage<P, V>...};
    return fns[v];
}

template <int P>
void run_stage(double *x, int n, int m, long long s, int v)
{
    pick_stage<P>(v, std::make_integer_sequence<int, P>{})(x, n, m, s);
}

struct Factor {
    int p;
    void (*run)(double *, int, int, long long, int);
};

constexpr Factor kFactors[] = {{16, run_stage<16>}, {13, run_stage<13>}, {11, run_stage<11>}, {9, run_stage<9>},
                               {8, run_stage<8>},   {7, run_stage<7>},   {5, run_stage<5>},   {4, run_stage<4>},
                               {3, run_stage<3>},   {2, run_stage<2>}};

} // namespace

void pfacc(KernelEnv &env, double *x, int n, int sign)
{
    env.abort = 0;
    if (n < 2)
        return;
    int rem = n;
    for (const Factor &f : kFactors) {
        const int p = f.p;
        if (rem % p != 0)
            continue;
        if (env.abort)
            return;
        rem /= p;
        const int m = n / p;
        // r m = 1 (mod p) makes the stage twiddle-free; for a length outside
        // the table there may be no such r, and the last one tried stands.
        int r = 1;
        for (; r < p; r++)
            if ((static_cast<long long>(r) * m) % p == 1)
                break;
        const long long s = static_cast<long long>(r) * m;
        const int v = sign < 0 ? (p - r) % p : r % p;
        f.run(x, n, m, s, v);
    }
}

} // namespace detail
} // namespace oscilla
