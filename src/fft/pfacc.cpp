// Prime-factor kernel: Temperton's self-sorting in-place prime factor
// algorithm (C. Temperton, "Self-sorting in-place fast Fourier transforms",
// 1991) over the mutually prime factors 16, 13, 11, 9, 8, 7, 5, 4, 3, 2.
// No twiddles between stages, no tables, no allocation: each stage rotates
// its butterfly slots so that the result comes out in natural order.
#include "fft/kernels.h"

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

// exp(2 pi i j / 16), j = 0..7, for the power-of-two butterflies.
constexpr double C16[] = {1.0, 0.92387953251128674, 0.7071067811865476, 0.38268343236508978};

// Y[j] = sum over k of z[k] exp(+2 pi i jk / P): the unrotated butterfly.
template <int P>
struct Butterfly {
    // Odd P: sums and differences of mirrored inputs, then the even (cosine)
    // and odd (sine) parts, paired for outputs j and P - j.
    static inline void run(const double *xr, const double *xi, double *yr, double *yi)
    {
        constexpr int H = (P - 1) / 2;
        double ar[H], ai[H], br[H], bi[H];
        double sr0 = xr[0], si0 = xi[0];
#pragma GCC unroll 8
        for (int k = 1; k <= H; k++) {
            ar[k - 1] = xr[k] + xr[P - k];
            ai[k - 1] = xi[k] + xi[P - k];
            br[k - 1] = xr[k] - xr[P - k];
            bi[k - 1] = xi[k] - xi[P - k];
            sr0 += ar[k - 1];
            si0 += ai[k - 1];
        }
        yr[0] = sr0;
        yi[0] = si0;
#pragma GCC unroll 8
        for (int j = 1; j <= H; j++) {
            double rr = xr[0], ri = xi[0], qr = 0.0, qi = 0.0;
#pragma GCC unroll 8
            for (int k = 1; k <= H; k++) {
                const int q = (j * k) % P;
                if (q == 0) { // composite P (9): a whole turn
                    rr += ar[k - 1];
                    ri += ai[k - 1];
                    continue;
                }
                const double c = q <= H ? Roots<P>::c[q - 1] : Roots<P>::c[P - q - 1];
                const double s = q <= H ? Roots<P>::s[q - 1] : -Roots<P>::s[P - q - 1];
                rr += c * ar[k - 1];
                ri += c * ai[k - 1];
                qr += s * br[k - 1];
                qi += s * bi[k - 1];
            }
            yr[j] = rr - qi;
            yi[j] = ri + qr;
            yr[P - j] = rr + qi;
            yi[P - j] = ri - qr;
        }
    }
};

template <>
struct Butterfly<2> {
    static inline void run(const double *xr, const double *xi, double *yr, double *yi)
    {
        yr[0] = xr[0] + xr[1];
        yi[0] = xi[0] + xi[1];
        yr[1] = xr[0] - xr[1];
        yi[1] = xi[0] - xi[1];
    }
};

template <>
struct Butterfly<4> {
    static inline void run(const double *xr, const double *xi, double *yr, double *yi)
    {
        const double t0r = xr[0] + xr[2], t0i = xi[0] + xi[2];
        const double t1r = xr[0] - xr[2], t1i = xi[0] - xi[2];
        const double t2r = xr[1] + xr[3], t2i = xi[1] + xi[3];
        const double t3r = xr[1] - xr[3], t3i = xi[1] - xi[3];
        yr[0] = t0r + t2r;
        yi[0] = t0i + t2i;
        yr[2] = t0r - t2r;
        yi[2] = t0i - t2i;
        // exp(+i pi/2) = i
        yr[1] = t1r - t3i;
        yi[1] = t1i + t3r;
        yr[3] = t1r + t3i;
        yi[3] = t1i - t3r;
    }
};

// 8 and 16: two half-length butterflies over even and odd samples, joined
// with the twiddles exp(2 pi i j / P) written in as constants.
template <int P>
struct Pow2Butterfly {
    static inline void run(const double *xr, const double *xi, double *yr, double *yi)
    {
        constexpr int H = P / 2;
        double er[H], ei[H], orr[H], oi[H], zr[H], zi[H];
#pragma GCC unroll 8
        for (int k = 0; k < H; k++) {
            zr[k] = xr[2 * k];
            zi[k] = xi[2 * k];
        }
        Butterfly<H>::run(zr, zi, er, ei);
#pragma GCC unroll 8
        for (int k = 0; k < H; k++) {
            zr[k] = xr[2 * k + 1];
            zi[k] = xi[2 * k + 1];
        }
        Butterfly<H>::run(zr, zi, orr, oi);
#pragma GCC unroll 8
        for (int j = 0; j < H; j++) {
            double tr, ti;
            if (j == 0) {
                tr = orr[0];
                ti = oi[0];
            } else if (4 * j == P) { // times i
                tr = -oi[j];
                ti = orr[j];
            } else {
                // angle 2 pi j / P in sixteenths of a turn
                const int q = j * (16 / P);
                const double c = q < 4 ? C16[q] : -C16[8 - q];
                const double s = q < 4 ? C16[4 - q] : C16[q - 4];
                tr = orr[j] * c - oi[j] * s;
                ti = orr[j] * s + oi[j] * c;
            }
            yr[j] = er[j] + tr;
            yi[j] = ei[j] + ti;
            yr[j + H] = er[j] - tr;
            yi[j + H] = ei[j] - ti;
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
// the rotated transform, sum z[k] w^(jk) with w = exp(2 pi i v / P), is
// output (v j) mod P of the unrotated one.
template <int P>
void stage(double *x, int n, int m, long long s, int v)
{
    int slot0[2 * P];
    int pick[P];
    for (int k = 0; k < P; k++) {
        slot0[k] = slot0[k + P] = static_cast<int>((k * s) % n);
        pick[k] = (v * k) % P;
    }
    double zr[P], zi[P], yr[P], yi[P];
    int off = 0;
    for (int t = 0; t < m; t++) {
        const int *base = slot0 + P - off;
#pragma GCC unroll 16
        for (int k = 0; k < P; k++) {
            const double *p = x + 2 * (base[k] + t);
            zr[k] = p[0];
            zi[k] = p[1];
        }
        Butterfly<P>::run(zr, zi, yr, yi);
#pragma GCC unroll 16
        for (int j = 0; j < P; j++) {
            double *p = x + 2 * (base[j] + t);
            p[0] = yr[pick[j]];
            p[1] = yi[pick[j]];
        }
        if (++off == P)
            off = 0;
    }
}

struct Factor {
    int p;
    void (*run)(double *, int, int, long long, int);
};

constexpr Factor kFactors[] = {{16, stage<16>}, {13, stage<13>}, {11, stage<11>}, {9, stage<9>},
                               {8, stage<8>},   {7, stage<7>},   {5, stage<5>},   {4, stage<4>},
                               {3, stage<3>},   {2, stage<2>}};

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
