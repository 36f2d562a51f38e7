// The passes of the mixed-radix kernel (Singleton's in-place FFT, R. C.
// Singleton, "An algorithm for computing the mixed radix fast Fourier
// transform", 1969): butterflies for 2, 3, 4 and 5, a general butterfly for
// other odd factors, then the permutation into natural order. The routine
// keeps the published structure and names; the arrays are addressed
// one-based through A() and B() as in the original.
//
// Included by two files, each with its own OSCILLA_MR_VARIANT namespace: the
// portable build and one compiled for AVX2 and FMA, which fftradix picks at
// run time for interleaved data where the processor has them.
#ifndef OSCILLA_MR_VARIANT
#error "define OSCILLA_MR_VARIANT before including this file"
#endif

#include "fft/complex_pair.h"
#include "fft/kernel_state.h"
#include "fft/kernels.h"

#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace oscilla {
namespace detail {
namespace OSCILLA_MR_VARIANT {

namespace {

template <class T>
bool grow(T *&p, size_t count)
{
    T *q = static_cast<T *>(std::realloc(p, count * sizeof(T)));
    if (!q)
        return false;
    p = q;
    return true;
}

// The twiddle recurrence keeps its values on the unit circle, but the phase
// still drifts by a rounding per step; every RESEED steps the twiddle is
// taken afresh from cos and sin, which bounds the drift on long spans.
constexpr long RESEED = 32;

using cpair::v2d;
using cpair::times_i;

#ifdef OSCILLA_MR_WIDE
// Two neighbouring offsets at once, one complex value of each in a 256-bit
// register (the AVX2 build): the same operations lane by lane.
typedef double v4d __attribute__((vector_size(32)));
typedef long long v4i __attribute__((vector_size(32)));
inline v4d swap(v4d a) { return __builtin_shuffle(a, v4i{1, 0, 3, 2}); }
inline v4d times_i(v4d a) { return swap(a) * v4d{-1.0, 1.0, -1.0, 1.0}; }
inline v4d rotate(v4d z, v4d c, v4d sn) { return c * z + sn * swap(z); }
inline v4d load4(const double *p)
{
    v4d v;
    __builtin_memcpy(&v, p, sizeof v);
    return v;
}
inline void store4(double *p, v4d v) { __builtin_memcpy(p, &v, sizeof v); }
#endif

// Natural order for one-dimensional interleaved data in one gather. After
// the passes, X[k] with k = e1 + e2 f1 + e3 f1 f2 + ... (f1, f2, ... the
// factor list in order) sits at position e1 n/f1 + e2 n/(f1 f2) + ...; the
// two-stage exchange of the published routine moves most points twice, along
// index chains that cost more than the moves. Here the points go out to the
// work arrays once, in blocks, and come back once, in natural order. Each of
// t0, t1, t2 holds n doubles, so the f1 blocks of n/f1 points (one per value
// of e1) fit whole, f1/2 to an array. The leading digits' source addresses
// come from a small table so that the inner loop runs without a carry test.
// False (nothing done) when the first factor is too large for that table.
bool gather_natural(double *Re, long n, const int *fac, long m, double *t0, double *t1, double *t2)
{
    constexpr long LO_MAX = 256;
    if (m < 2)
        return true; // a single factor leaves the points in order
    if (fac[0] > LO_MAX)
        return false;
    long W[17];
    long rest = n;
    for (long i = 0; i < m; i++) {
        rest /= fac[i];
        W[i] = rest;
    }
    const double *block[LO_MAX];
    const long perArray = fac[0] / 2;
    for (long r = 0; r < fac[0]; r++) {
        double *arr = r / perArray == 0 ? t0 : r / perArray == 1 ? t1 : t2;
        double *dst = arr + 2 * W[0] * (r % perArray);
        std::memcpy(dst, Re + 2 * W[0] * r, sizeof(double) * 2 * static_cast<size_t>(W[0]));
        block[r] = dst;
    }
    const double *lo[LO_MAX];
    long size = fac[0], L = 1;
    for (long r = 0; r < size; r++)
        lo[r] = block[r];
    while (L < m && size * fac[L] <= LO_MAX) {
        for (long e = 1; e < fac[L]; e++)
            for (long l = 0; l < size; l++)
                lo[e * size + l] = lo[l] + 2 * e * W[L];
        size *= fac[L];
        L++;
    }
    long e[17] = {};
    long base = 0;
    double *out = Re;
    for (;;) {
        for (long l = 0; l < size; l++) {
            cpair::store(out, cpair::load(lo[l] + base));
            out += 2;
        }
        long i = L;
        while (i < m) {
            base += 2 * W[i];
            if (++e[i] < fac[i])
                break;
            base -= 2 * fac[i] * W[i];
            e[i] = 0;
            i++;
        }
        if (i == m)
            return true;
    }
}

// Twiddle walk for one-dimensional interleaved data (jc equal to the
// increment): body(t0, count, c, s) for blocks of offsets t0 .. t0 + count - 1
// below tcount, in order, with (c[k], s[k]) the twiddle the recurrence gives
// at step t0 + k ((1, 0) at t = 0).
// Stepped along with the butterflies, every twiddle waits for the last, and
// on a pass of many offsets with one group each that chain is the whole
// cost. Every RESEED steps the recurrence starts afresh, so the twiddles of
// a block of offsets are formed first, G runs side by side (the same values,
// G chains at a time), and the butterflies then read them.
template <class Body>
void walk_runs(long tcount, double cd, double sd, double phi, Body body)
{
    constexpr int G = 8;
    constexpr long BLOCK = G * RESEED;
    double cb[BLOCK], sb[BLOCK];
    for (long blk = 0; blk < tcount; blk += BLOCK) {
        const long count = tcount - blk < BLOCK ? tcount - blk : BLOCK;
        double cr[G], sr[G];
        for (int r = 0; r < G; r++) {
            const long t = blk + r * RESEED;
            const bool seed = t != 0 && r * RESEED < count;
            cr[r] = seed ? std::cos(static_cast<double>(t) * phi) : 1.0;
            sr[r] = seed ? std::sin(static_cast<double>(t) * phi) : 0.0;
            cb[r * RESEED] = cr[r];
            sb[r * RESEED] = sr[r];
        }
        const long steps = count < RESEED ? count : RESEED;
        for (long i = 1; i < steps; i++) {
            for (int r = 0; r < G; r++) {
                const double c1 = cr[r], s1 = sr[r];
                const double u = c1 - (cd * c1 + sd * s1);
                const double v = s1 + (sd * c1 - cd * s1);
                const double f = 2.0 - (u * u + v * v);
                cr[r] = f * u;
                sr[r] = f * v;
                cb[r * RESEED + i] = cr[r];
                sb[r * RESEED + i] = sr[r];
            }
            if (i == 1 && blk == 0) {
                // Step 1 is (1 - cd, sd) itself, not a step from (1, 0).
                cr[0] = cb[1] = 1.0 - cd;
                sr[0] = sb[1] = sd;
            }
        }
        body(blk, count, cb, sb);
    }
}

// Power pw + 1 of the twiddle w = (c1, s1) from power pw in (c2, s2), angle
// the angle of w: one more multiplication, or afresh from cos and sin every
// RESEED powers, so that a long general factor (257 outputs a group) does
// not pile up a rounding per power.
inline void next_power(double c1, double s1, double &c2, double &s2, long &pw, double angle)
{
    if (++pw % RESEED == 0) {
        c2 = std::cos(static_cast<double>(pw) * angle);
        s2 = std::sin(static_cast<double>(pw) * angle);
    } else {
        const double ak = s1 * s2;
        s2 = s1 * c2 + c1 * s2;
        c2 = c1 * c2 - ak;
    }
}

// Powers w^1 .. w^K of w = (c1, s1) by repeated multiplication, as the
// rotation pass forms them: pc[j] = (c, c) and ps[j] = (-s, s) of w^j, the
// pairs rotate() takes.
template <int K>
inline void twiddle_powers(double c1, double s1, v2d pc[], v2d ps[])
{
    double c2 = c1, s2 = s1;
    for (int j = 1; j <= K; j++) {
        pc[j] = v2d{c2, c2};
        ps[j] = v2d{-s2, s2};
        const double ak = s1 * s2;
        s2 = s1 * c2 + c1 * s2;
        c2 = c1 * c2 - ak;
    }
}

// z times c + i s, with c = (c, c) and sn = (-s, s): c z + s (i z) with the
// sign of i z folded into the sine pair.
inline v2d rotate(v2d z, v2d c, v2d sn) { return c * z + sn * cpair::swap(z); }

// Output j of offset t times w^j, w = (c1, s1).
inline void rotate_offset(double *Re, long kspan, long kspnn, long nt, long jc, double phi, long t, double c1,
                          double s1)
{
    if (t == 0)
        return;
    double c2 = c1, s2 = s1;
    long pw = 1;
    for (long kk = 1 + t * jc + kspan; kk <= kspnn; kk += kspan) {
        const v2d vc{c2, c2}, vs{-s2, s2};
        for (long q = kk; q <= nt; q += kspnn) {
            const v2d za = cpair::load(Re + q - 1);
            cpair::store(Re + q - 1, rotate(za, vc, vs));
        }
        next_power(c1, s1, c2, s2, pw, static_cast<double>(t) * phi);
    }
}

// The rotation pass after an odd factor, for one-dimensional interleaved
// data: output j of offset t times w_t^j.
void rotate_runs(double *Re, long kspan, long kspnn, long nt, long jc, double cd, double sd, double phi)
{
    walk_runs(kspan / jc, cd, sd, phi, [=](long t0, long count, const double *cb, const double *sb) {
        for (long k = 0; k < count; k++)
            rotate_offset(Re, kspan, kspnn, nt, jc, phi, t0 + k, cb[k], sb[k]);
    });
}

// Factor-5 and factor-3 butterflies on interleaved pairs (or, in the AVX2
// build, pairs of pairs), inputs z[], outputs y[].
struct Radix5 {
    double c72, s72, c2, s2;
    template <class V>
    void operator()(const V z[5], V y[5]) const
    {
        const V zkp = z[1] + z[4], zkm = z[1] - z[4], zjp = z[2] + z[3], zjm = z[2] - z[3];
        y[0] = z[0] + zkp + zjp;
        V zk = zkp * c72 + zjp * c2 + z[0];
        V zi = times_i(zkm * s72 + zjm * s2);
        y[1] = zk + zi;
        y[4] = zk - zi;
        zk = zkp * c2 + zjp * c72 + z[0];
        zi = times_i(zkm * s2 - zjm * s72);
        y[2] = zk + zi;
        y[3] = zk - zi;
    }
};

struct Radix3 {
    double s120;
    template <class V>
    void operator()(const V z[3], V y[3]) const
    {
        const V zj = z[1] + z[2];
        y[0] = z[0] + zj;
        const V zk = -0.5 * zj + z[0];
        const V zi = times_i((z[1] - z[2]) * s120);
        y[1] = zk + zi;
        y[2] = zk - zi;
    }
};

// A factor-2 pass with its twiddles, for one-dimensional interleaved data:
// K offsets (kspan doubles), offset t below K/2 with w_t and its mirror
// K - t with (-c, s) of w_t, as the published loop pairs them, the twiddles
// from walk_runs. Offset 0 has none.
void radix2_rotated(double *Re, long K, long kspan, long nt, double cd, double sd, double phi)
{
    double *const end = Re + nt;
    for (double *p = Re; p < end; p += 2 * kspan) {
        const v2d a = cpair::load(p), b = cpair::load(p + kspan);
        cpair::store(p, a + b);
        cpair::store(p + kspan, a - b);
    }
    const auto offset = [=](long o, v2d c, v2d sn) {
        for (double *p = Re + 2 * o; p < end; p += 2 * kspan) {
            const v2d a = cpair::load(p), b = cpair::load(p + kspan);
            cpair::store(p, a + b);
            cpair::store(p + kspan, rotate(a - b, c, sn));
        }
    };
#ifdef OSCILLA_MR_WIDE
    // Offsets t, t + 1 together, and their mirrors K - t - 1, K - t.
    const auto pair = [=](long o, v4d c, v4d sn) {
        for (double *p = Re + 2 * o; p < end; p += 2 * kspan) {
            const v4d a = load4(p), b = load4(p + kspan);
            store4(p, a + b);
            store4(p + kspan, rotate(a - b, c, sn));
        }
    };
#endif
    walk_runs(K / 2 + 1, cd, sd, phi, [=](long t0, long count, const double *cb, const double *sb) {
        for (long k = t0 == 0 ? 1 : 0; k < count; k++) {
            const long t = t0 + k;
#ifdef OSCILLA_MR_WIDE
            if (k + 1 < count && t + 1 < K - t - 1) {
                const double c = cb[k], s = sb[k], c1 = cb[k + 1], s1 = sb[k + 1];
                pair(t, v4d{c, c, c1, c1}, v4d{-s, s, -s1, s1});
                pair(K - t - 1, v4d{-c1, -c1, -c, -c}, v4d{-s1, s1, -s, s});
                k++;
                continue;
            }
#endif
            const double c = cb[k], s = sb[k];
            offset(t, v2d{c, c}, v2d{-s, s});
            if (K - t != t)
                offset(K - t, v2d{-c, -c}, v2d{-s, s});
        }
    });
}

// A factor-5 or factor-3 pass followed by its rotation, in one sweep, for
// one-dimensional interleaved data: each butterfly's outputs are rotated as
// they are stored. Offset 0 is not rotated.
template <int K, class Butterfly>
inline void odd_rotated_offset(double *Re, long kspan, long kspnn, long nn, long jc, long t, double c1, double s1,
                               const Butterfly &bf)
{
    v2d pc[K], ps[K], z[K], y[K];
    twiddle_powers<K - 1>(c1, s1, pc, ps);
    for (long kk = 1 + t * jc; kk < nn; kk += kspnn) {
        double *p0 = Re + kk - 1;
        for (int j = 0; j < K; j++)
            z[j] = cpair::load(p0 + j * kspan);
        bf(z, y);
        cpair::store(p0, y[0]);
        for (int j = 1; j < K; j++)
            cpair::store(p0 + j * kspan, t == 0 ? y[j] : rotate(y[j], pc[j], ps[j]));
    }
}

#ifdef OSCILLA_MR_WIDE

template <int K, class Butterfly>
inline void odd_rotated_pair(double *Re, long kspan, long kspnn, long nn, long jc, long t, const double *c1,
                             const double *s1, const Butterfly &bf)
{
    v2d pa[K], qa[K], pb[K], qb[K];
    twiddle_powers<K - 1>(c1[0], s1[0], pa, qa);
    twiddle_powers<K - 1>(c1[1], s1[1], pb, qb);
    v4d pc[K], ps[K], z[K], y[K];
    for (int j = 1; j < K; j++) {
        pc[j] = v4d{pa[j][0], pa[j][1], pb[j][0], pb[j][1]};
        ps[j] = v4d{qa[j][0], qa[j][1], qb[j][0], qb[j][1]};
    }
    for (long kk = 1 + t * jc; kk < nn; kk += kspnn) {
        double *p0 = Re + kk - 1;
        for (int j = 0; j < K; j++)
            z[j] = load4(p0 + j * kspan);
        bf(z, y);
        store4(p0, y[0]);
        for (int j = 1; j < K; j++)
            store4(p0 + j * kspan, rotate(y[j], pc[j], ps[j]));
    }
}
#endif

template <int K, class Butterfly>
void odd_rotated(double *Re, long kspan, long kspnn, long nn, long jc, double cd, double sd, double phi,
                 const Butterfly &bf)
{
    walk_runs(kspan / jc, cd, sd, phi, [=, &bf](long t0, long count, const double *cb, const double *sb) {
        long k = 0;
#ifdef OSCILLA_MR_WIDE
        if (t0 == 0) {
            odd_rotated_offset<K>(Re, kspan, kspnn, nn, jc, 0, cb[0], sb[0], bf);
            k = 1;
        }
        for (; k + 1 < count; k += 2)
            odd_rotated_pair<K>(Re, kspan, kspnn, nn, jc, t0 + k, cb + k, sb + k, bf);
#endif
        for (; k < count; k++)
            odd_rotated_offset<K>(Re, kspan, kspnn, nn, jc, t0 + k, cb[k], sb[k], bf);
    });
}

} // namespace

#define A(i) Re[(i) - 1]
#define B(i) (Interleaved ? Re[(i)] : Im[(i) - 1])
#define ZL(i) cpair::load(Re + (i) - 1)
#define ZS(i, v) cpair::store(Re + (i) - 1, v)
#define AT(i) Rtmp[(i) - 1]
#define BT(i) Itmp[(i) - 1]
#define CK(i) Cos[(i) - 1]
#define SK(i) Sin[(i) - 1]
#define NP(i) Perm[(i) - 1]
#define NFAC(i) nfac[(i) - 1]

namespace {

// The body of fftradix. With Interleaved, Im is Re + 1 and B(k) addresses
// Re directly, so that the compiler sees each real part next to its
// imaginary part and can work on the pair at once.
template <bool Interleaved>
int radix_pass(KernelEnv &env, double *__restrict Re, double *__restrict Im, int nTotal, int nPass, int nSpan,
               int iSign, int maxFactors, int maxPerm)
{
    long ii, inc, j, jc, jf, jj, k, k1, k2, k3, k4, kk, kt, m, nn, ns, nt, kspan, kspnn, maxf;
    double radf, rad, c72, s72, s120, phi;
    long tw, pw = 0;
    double c1, c2, c3, cd, aa, aj, ak, ajm, ajp, akm, akp;
    double s1, s2, s3, sd, bb, bj, bk, bjm, bjp, bkm, bkp;
    double *Rtmp, *Itmp, *Cos, *Sin;
    v2d za, zk, zj, zkp, zkm, zjp, zjm, zi, y[5];
    int *Perm, *nfac;
    int fac[40];
    KernelState *st;

    env.abort = 0;
    if (nPass < 2)
        return 0;
    // A zero increment would never advance through the data.
    if (iSign == 0)
        return 0;

    st = kernel_state(env);
    if (!st) {
        env.failed = 1;
        return -1;
    }
    if (maxFactors < 1)
        maxFactors = 1;
    if (maxPerm < 1)
        maxPerm = 1;
    if (static_cast<unsigned long>(maxFactors) > UINT_MAX / 8u) {
        fft_free(env);
        return -1;
    }
    if (st->workBytes < 8u * static_cast<unsigned>(maxFactors)) {
        st->workBytes = 8u * static_cast<unsigned>(maxFactors);
        bool ok = grow(st->tmp0, maxFactors) & grow(st->tmp1, maxFactors);
        ok = grow(st->tmp2, maxFactors) & ok;
        ok = grow(st->tmp3, maxFactors) & ok;
        if (!ok) {
            fft_free(env);
            return -1;
        }
    } else {
        maxFactors = static_cast<int>(st->workBytes / 8u);
    }
    if (st->permCount < maxPerm) {
        // A few entries beyond maxPerm hold the digit weights of the square
        // factors, whose count is bounded by the factor list.
        if (!grow(st->perm, static_cast<size_t>(maxPerm) + 20)) {
            fft_free(env);
            return -1;
        }
        st->permCount = maxPerm;
    } else {
        maxPerm = st->permCount;
    }
    if (!st->tmp0 || !st->tmp1 || !st->tmp2 || !st->tmp3 || !st->perm) {
        fft_free(env);
        return -1;
    }
    Rtmp = st->tmp0;
    Itmp = st->tmp1;
    Cos = st->tmp2;
    Sin = st->tmp3;
    Perm = st->perm;
    nfac = fac;
    maxf = maxFactors;

    c72 = 0.3090169943749474;  // cos 72
    s72 = 0.9510565162951535;  // sin 72
    s120 = 0.8660254037844386; // sin 120
    rad = 3.14159265358979323846;
    inc = iSign;
    if (iSign < 0) {
        s72 = -s72;
        s120 = -s120;
        rad = -rad;
        inc = -inc;
    }
    nt = inc * nTotal;
    ns = inc * nSpan;
    kspan = ns;
    nn = nt - inc;
    jc = ns / nPass;
    radf = rad * static_cast<double>(jc);
    rad *= 2.0; // the general factor works with 2 pi
    ii = 0;
    jf = 0;

    // Factors of nPass: square factors (16 as 4) first, then the square-free
    // core, then the square factors again in reverse order.
    m = 0;
    k = nPass;
    while (k % 16 == 0) {
        NFAC(++m) = 4;
        k /= 16;
    }
    j = 3;
    jj = 9;
    while (jj <= k) {
        while (k % jj == 0) {
            NFAC(++m) = static_cast<int>(j);
            k /= jj;
        }
        j += 2;
        jj = j * j;
    }
    if (k <= 4) {
        kt = m;
        NFAC(m + 1) = static_cast<int>(k);
        if (k != 1)
            m++;
    } else {
        if (k % 4 == 0) {
            NFAC(++m) = 2;
            k /= 4;
        }
        kt = m;
        j = 2;
        do {
            if (k % j == 0) {
                NFAC(++m) = static_cast<int>(j);
                k /= j;
            }
            j = ((j + 1) / 2) * 2 + 1;
        } while (j <= k);
    }
    if (kt != 0) {
        for (j = kt; j != 0; j--) {
            m++;
            NFAC(m) = NFAC(j);
        }
    }
    if (m >= 16) {
        fft_free(env);
        return -2;
    }
    for (j = 0; j <= m && j < 17; j++)
        st->factor[j] = fac[j];
    nfac = st->factor;

    // Compute the Fourier transform, one factor at a time.
L100:
    if (env.abort)
        return 0;
    sd = radf / static_cast<double>(kspan);
    phi = sd + sd; // the angle each twiddle step advances by
    cd = std::sin(sd);
    cd = 2.0 * cd * cd;
    sd = std::sin(sd + sd);
    kk = 1;
    ii++;
    if (NFAC(ii) != 2)
        goto L400;

    // Factor 2, including the rotation factor.
    if constexpr (Interleaved) {
        // The same steps on (real, imaginary) pairs.
        kspan /= 2;
        if (jc == inc) {
            radix2_rotated(Re, kspan / jc, kspan, nt, cd, sd, phi);
            if (kspan == jc)
                goto L800;
            goto L100;
        }
        k1 = kspan + 2;
        do {
            do {
                k2 = kk + kspan;
                zk = ZL(k2);
                za = ZL(kk);
                ZS(k2, za - zk);
                ZS(kk, za + zk);
                kk = k2 + kspan;
            } while (kk <= nn);
            kk -= nn;
        } while (kk <= jc);
        if (kk > kspan)
            goto L800;
        do {
            c1 = 1.0 - cd;
            s1 = sd;
            tw = 1;
            for (;;) {
                do {
                    k2 = kk + kspan;
                    za = ZL(kk);
                    zk = ZL(k2);
                    zj = za - zk;
                    ZS(kk, za + zk);
                    ZS(k2, rotate(zj, v2d{c1, c1}, v2d{-s1, s1}));
                    kk = k2 + kspan;
                } while (kk < nt);
                k2 = kk - nt;
                c1 = -c1;
                kk = k1 - k2;
                if (kk > k2)
                    continue;
                if (++tw % RESEED == 0) {
                    c1 = std::cos(tw * phi);
                    s1 = std::sin(tw * phi);
                } else {
                    ak = c1 - (cd * c1 + sd * s1);
                    s1 = (sd * c1 - cd * s1) + s1;
                    c1 = 2.0 - (ak * ak + s1 * s1);
                    s1 = c1 * s1;
                    c1 = c1 * ak;
                }
                kk += jc;
                if (kk < k2)
                    continue;
                break;
            }
            k1 += inc + inc;
            kk = (k1 - kspan) / 2 + jc;
        } while (kk <= jc + jc);
        goto L100;
    }
    kspan /= 2;
    k1 = kspan + 2;
L210:
    k2 = kk + kspan;
    ak = A(k2);
    bk = B(k2);
    A(k2) = A(kk) - ak;
    B(k2) = B(kk) - bk;
    A(kk) = A(kk) + ak;
    B(kk) = B(kk) + bk;
    kk = k2 + kspan;
    if (kk <= nn)
        goto L210;
    kk -= nn;
    if (kk <= jc)
        goto L210;
    if (kk > kspan)
        goto L800;
L220:
    c1 = 1.0 - cd;
    s1 = sd;
    tw = 1;
L230:
    k2 = kk + kspan;
    ak = A(kk) - A(k2);
    bk = B(kk) - B(k2);
    A(kk) = A(kk) + A(k2);
    B(kk) = B(kk) + B(k2);
    A(k2) = c1 * ak - s1 * bk;
    B(k2) = s1 * ak + c1 * bk;
    kk = k2 + kspan;
    if (kk < nt)
        goto L230;
    k2 = kk - nt;
    c1 = -c1;
    kk = k1 - k2;
    if (kk > k2)
        goto L230;
    if (++tw % RESEED == 0) {
        c1 = std::cos(tw * phi);
        s1 = std::sin(tw * phi);
    } else {
        ak = c1 - (cd * c1 + sd * s1);
        s1 = (sd * c1 - cd * s1) + s1;
        c1 = 2.0 - (ak * ak + s1 * s1);
        s1 = c1 * s1;
        c1 = c1 * ak;
    }
    kk += jc;
    if (kk < k2)
        goto L230;
    k1 += inc + inc;
    kk = (k1 - kspan) / 2 + jc;
    if (kk <= jc + jc)
        goto L220;
    goto L100;

    // Factor 3.
L320:
    if constexpr (Interleaved) {
        const Radix3 bf{s120};
        if (jc == inc && ii != m) {
            odd_rotated<3>(Re, kspan, kspnn, nn, jc, cd, sd, phi, bf);
            goto L100;
        }
        do {
            do {
                k1 = kk + kspan;
                k2 = k1 + kspan;
                const v2d z3[3] = {ZL(kk), ZL(k1), ZL(k2)};
                bf(z3, y);
                ZS(kk, y[0]);
                ZS(k1, y[1]);
                ZS(k2, y[2]);
                kk = k2 + kspan;
            } while (kk < nn);
            kk -= nn;
        } while (kk <= kspan);
        goto L700;
    }
    k1 = kk + kspan;
    k2 = k1 + kspan;
    ak = A(kk);
    bk = B(kk);
    aj = A(k1) + A(k2);
    bj = B(k1) + B(k2);
    A(kk) = ak + aj;
    B(kk) = bk + bj;
    ak = -0.5 * aj + ak;
    bk = -0.5 * bj + bk;
    aj = (A(k1) - A(k2)) * s120;
    bj = (B(k1) - B(k2)) * s120;
    A(k1) = ak - bj;
    B(k1) = bk + aj;
    A(k2) = ak + bj;
    B(k2) = bk - aj;
    kk = k2 + kspan;
    if (kk < nn)
        goto L320;
    kk -= nn;
    if (kk <= kspan)
        goto L320;
    goto L700;

    // Factor 4; the sign of the direction picks the odd combinations.
L400:
    if (NFAC(ii) != 4)
        goto L600;
    kspnn = kspan;
    kspan /= 4;
    if constexpr (Interleaved) {
        do {
            c1 = 1.0;
            s1 = 0.0;
            c2 = c3 = s2 = s3 = 0.0;
            tw = 0;
            do {
                do {
                    k1 = kk + kspan;
                    k2 = k1 + kspan;
                    k3 = k2 + kspan;
                    za = ZL(kk);
                    zk = ZL(k2);
                    zj = ZL(k1);
                    zi = ZL(k3);
                    zkp = za + zk;
                    zkm = za - zk;
                    zjp = zj + zi;
                    zjm = zj - zi;
                    ZS(kk, zkp + zjp);
                    zjp = zkp - zjp;
                    zi = times_i(zjm);
                    if (iSign < 0)
                        zi = -zi;
                    zkp = zkm + zi;
                    zkm = zkm - zi;
                    if (s1 == 0.0) {
                        ZS(k1, zkp);
                        ZS(k2, zjp);
                        ZS(k3, zkm);
                    } else {
                        ZS(k1, rotate(zkp, v2d{c1, c1}, v2d{-s1, s1}));
                        ZS(k2, rotate(zjp, v2d{c2, c2}, v2d{-s2, s2}));
                        ZS(k3, rotate(zkm, v2d{c3, c3}, v2d{-s3, s3}));
                    }
                    kk = k3 + kspan;
                } while (kk <= nt);
                if (++tw % RESEED == 0) {
                    c1 = std::cos(tw * phi);
                    s1 = std::sin(tw * phi);
                } else {
                    c2 = c1 - (cd * c1 + sd * s1);
                    s1 = (sd * c1 - cd * s1) + s1;
                    c1 = 2.0 - (c2 * c2 + s1 * s1);
                    s1 = c1 * s1;
                    c1 = c1 * c2;
                }
                c2 = c1 * c1 - s1 * s1;
                s2 = 2.0 * c1 * s1;
                c3 = c2 * c1 - s2 * s1;
                s3 = c2 * s1 + s2 * c1;
                kk = kk - nt + jc;
            } while (kk <= kspan);
            kk = kk - kspan + inc;
        } while (kk <= jc);
        if (kspan == jc)
            goto L800;
        goto L100;
    }
L410:
    c1 = 1.0;
    s1 = 0.0;
    tw = 0;
    c2 = c3 = s2 = s3 = 0.0;
L420:
    k1 = kk + kspan;
    k2 = k1 + kspan;
    k3 = k2 + kspan;
    akp = A(kk) + A(k2);
    akm = A(kk) - A(k2);
    ajp = A(k1) + A(k3);
    ajm = A(k1) - A(k3);
    A(kk) = akp + ajp;
    ajp = akp - ajp;
    bkp = B(kk) + B(k2);
    bkm = B(kk) - B(k2);
    bjp = B(k1) + B(k3);
    bjm = B(k1) - B(k3);
    B(kk) = bkp + bjp;
    bjp = bkp - bjp;
    if (iSign < 0)
        goto L450;
    akp = akm - bjm;
    akm = akm + bjm;
    bkp = bkm + ajm;
    bkm = bkm - ajm;
    if (s1 == 0.0)
        goto L460;
L430:
    A(k1) = akp * c1 - bkp * s1;
    B(k1) = akp * s1 + bkp * c1;
    A(k2) = ajp * c2 - bjp * s2;
    B(k2) = ajp * s2 + bjp * c2;
    A(k3) = akm * c3 - bkm * s3;
    B(k3) = akm * s3 + bkm * c3;
    kk = k3 + kspan;
    if (kk <= nt)
        goto L420;
L440:
    if (++tw % RESEED == 0) {
        c1 = std::cos(tw * phi);
        s1 = std::sin(tw * phi);
    } else {
        c2 = c1 - (cd * c1 + sd * s1);
        s1 = (sd * c1 - cd * s1) + s1;
        c1 = 2.0 - (c2 * c2 + s1 * s1);
        s1 = c1 * s1;
        c1 = c1 * c2;
    }
    c2 = c1 * c1 - s1 * s1;
    s2 = 2.0 * c1 * s1;
    c3 = c2 * c1 - s2 * s1;
    s3 = c2 * s1 + s2 * c1;
    kk = kk - nt + jc;
    if (kk <= kspan)
        goto L420;
    kk = kk - kspan + inc;
    if (kk <= jc)
        goto L410;
    if (kspan == jc)
        goto L800;
    goto L100;
L450:
    akp = akm + bjm;
    akm = akm - bjm;
    bkp = bkm - ajm;
    bkm = bkm + ajm;
    if (s1 != 0.0)
        goto L430;
L460:
    A(k1) = akp;
    B(k1) = bkp;
    A(k2) = ajp;
    B(k2) = bjp;
    A(k3) = akm;
    B(k3) = bkm;
    kk = k3 + kspan;
    if (kk <= nt)
        goto L420;
    goto L440;

    // Factor 5.
L510:
    c2 = c72 * c72 - s72 * s72;
    s2 = 2.0 * c72 * s72;
    if constexpr (Interleaved) {
        const Radix5 bf{c72, s72, c2, s2};
        if (jc == inc && ii != m) {
            odd_rotated<5>(Re, kspan, kspnn, nn, jc, cd, sd, phi, bf);
            goto L100;
        }
        do {
            do {
                k1 = kk + kspan;
                k2 = k1 + kspan;
                k3 = k2 + kspan;
                k4 = k3 + kspan;
                const v2d z5[5] = {ZL(kk), ZL(k1), ZL(k2), ZL(k3), ZL(k4)};
                bf(z5, y);
                ZS(kk, y[0]);
                ZS(k1, y[1]);
                ZS(k2, y[2]);
                ZS(k3, y[3]);
                ZS(k4, y[4]);
                kk = k4 + kspan;
            } while (kk < nn);
            kk -= nn;
        } while (kk <= kspan);
        goto L700;
    }
L520:
    k1 = kk + kspan;
    k2 = k1 + kspan;
    k3 = k2 + kspan;
    k4 = k3 + kspan;
    akp = A(k1) + A(k4);
    akm = A(k1) - A(k4);
    bkp = B(k1) + B(k4);
    bkm = B(k1) - B(k4);
    ajp = A(k2) + A(k3);
    ajm = A(k2) - A(k3);
    bjp = B(k2) + B(k3);
    bjm = B(k2) - B(k3);
    aa = A(kk);
    bb = B(kk);
    A(kk) = aa + akp + ajp;
    B(kk) = bb + bkp + bjp;
    ak = akp * c72 + ajp * c2 + aa;
    bk = bkp * c72 + bjp * c2 + bb;
    aj = akm * s72 + ajm * s2;
    bj = bkm * s72 + bjm * s2;
    A(k1) = ak - bj;
    A(k4) = ak + bj;
    B(k1) = bk + aj;
    B(k4) = bk - aj;
    ak = akp * c2 + ajp * c72 + aa;
    bk = bkp * c2 + bjp * c72 + bb;
    aj = akm * s2 - ajm * s72;
    bj = bkm * s2 - bjm * s72;
    A(k2) = ak - bj;
    A(k3) = ak + bj;
    B(k2) = bk + aj;
    B(k3) = bk - aj;
    kk = k4 + kspan;
    if (kk < nn)
        goto L520;
    kk -= nn;
    if (kk <= kspan)
        goto L520;
    goto L700;

    // Other odd factors: the general butterfly.
L600:
    k = NFAC(ii);
    kspnn = kspan;
    kspan /= k;
    if (k == 3)
        goto L320;
    if (k == 5)
        goto L510;
    if (k == jf)
        goto L640;
    jf = k;
    s1 = rad / static_cast<double>(k);
    c1 = std::cos(s1);
    s1 = std::sin(s1);
    if (jf > maxf) {
        fft_free(env);
        return -3;
    }
    // Cosines and sines of 2 pi / k by the symmetric recurrence.
    CK(jf) = 1.0;
    SK(jf) = 0.0;
    j = 1;
    do {
        if (j % RESEED == 0) {
            CK(j) = std::cos(j * (rad / static_cast<double>(jf)));
            SK(j) = std::sin(j * (rad / static_cast<double>(jf)));
        } else {
            CK(j) = CK(k) * c1 + SK(k) * s1;
            SK(j) = CK(k) * s1 - SK(k) * c1;
        }
        k--;
        CK(k) = CK(j);
        SK(k) = -SK(j);
        j++;
    } while (j < k);
L640:
    k1 = kk;
    k2 = kk + kspnn;
    aa = A(kk);
    bb = B(kk);
    ak = aa;
    bk = bb;
    j = 1;
    k1 += kspan;
    do {
        k2 -= kspan;
        j++;
        AT(j) = A(k1) + A(k2);
        ak = AT(j) + ak;
        BT(j) = B(k1) + B(k2);
        bk = BT(j) + bk;
        j++;
        AT(j) = A(k1) - A(k2);
        BT(j) = B(k1) - B(k2);
        k1 += kspan;
    } while (k1 < k2);
    A(kk) = ak;
    B(kk) = bk;
    k1 = kk;
    k2 = kk + kspnn;
    j = 1;
    do {
        k1 += kspan;
        k2 -= kspan;
        jj = j;
        ak = aa;
        bk = bb;
        aj = 0.0;
        bj = 0.0;
        k = 1;
        do {
            k++;
            ak = AT(k) * CK(jj) + ak;
            bk = BT(k) * CK(jj) + bk;
            k++;
            aj = AT(k) * SK(jj) + aj;
            bj = BT(k) * SK(jj) + bj;
            jj += j;
            if (jj > jf)
                jj -= jf;
        } while (k < jf);
        k = jf - j;
        A(k1) = ak - bj;
        B(k1) = bk + aj;
        A(k2) = ak + bj;
        B(k2) = bk - aj;
        j++;
    } while (j < k);
    kk += kspnn;
    if (kk <= nn)
        goto L640;
    kk -= nn;
    if (kk <= kspan)
        goto L640;

    // Rotation factors, except after factors 2 and 4 and after the last one.
L700:
    if (ii == m)
        goto L800;
    kk = jc + 1;
    if constexpr (Interleaved) {
        if (jc == inc) {
            rotate_runs(Re, kspan, kspnn, nt, jc, cd, sd, phi);
            goto L100;
        }
        do {
            c2 = 1.0 - cd;
            s1 = sd;
            tw = 1;
            do {
                c1 = c2;
                s2 = s1;
                pw = 1;
                kk += kspan;
                do {
                    do {
                        za = ZL(kk);
                        ZS(kk, rotate(za, v2d{c2, c2}, v2d{-s2, s2}));
                        kk += kspnn;
                    } while (kk <= nt);
                    next_power(c1, s1, c2, s2, pw, static_cast<double>(tw) * phi);
                    kk = kk - nt + kspan;
                } while (kk <= kspnn);
                if (++tw % RESEED == 0) {
                    c2 = std::cos(tw * phi);
                    s1 = std::sin(tw * phi);
                } else {
                    c2 = c1 - (cd * c1 + sd * s1);
                    s1 = s1 + (sd * c1 - cd * s1);
                    c1 = 2.0 - (c2 * c2 + s1 * s1);
                    s1 = c1 * s1;
                    c2 = c1 * c2;
                }
                kk = kk - kspnn + jc;
            } while (kk <= kspan);
            kk = kk - kspan + jc + inc;
        } while (kk <= jc + jc);
        goto L100;
    }
L710:
    c2 = 1.0 - cd;
    s1 = sd;
    tw = 1;
L720:
    c1 = c2;
    s2 = s1;
    pw = 1;
    kk += kspan;
L730:
    ak = A(kk);
    A(kk) = c2 * ak - s2 * B(kk);
    B(kk) = s2 * ak + c2 * B(kk);
    kk += kspnn;
    if (kk <= nt)
        goto L730;
    next_power(c1, s1, c2, s2, pw, static_cast<double>(tw) * phi);
    kk = kk - nt + kspan;
    if (kk <= kspnn)
        goto L730;
    if (++tw % RESEED == 0) {
        c2 = std::cos(tw * phi);
        s1 = std::sin(tw * phi);
    } else {
        c2 = c1 - (cd * c1 + sd * s1);
        s1 = s1 + (sd * c1 - cd * s1);
        c1 = 2.0 - (c2 * c2 + s1 * s1);
        s1 = c1 * s1;
        c2 = c1 * c2;
    }
    kk = kk - kspnn + jc;
    if (kk <= kspan)
        goto L720;
    kk = kk - kspan + jc + inc;
    if (kk <= jc + jc)
        goto L710;
    goto L100;

    // Permutation into natural order, in two stages. First the square
    // factors, by digit reversal.
L800:
    if constexpr (Interleaved) {
        if (nPass == nTotal && maxf >= nPass) {
            int order[17] = {};
            for (j = 0; j < m; j++)
                order[j] = nfac[j];
            // The square-free core's product, formed in the factor list as
            // the exchange below forms it, decides -4 all the same.
            if (2 * kt + 1 < m) {
                j = m - kt;
                NFAC(j + 1) = 1;
                do {
                    NFAC(j) = NFAC(j) * NFAC(j + 1);
                    j--;
                } while (j != kt);
                if (NFAC(kt + 1) - 1 > maxPerm) {
                    fft_free(env);
                    return -4;
                }
            }
            if (gather_natural(Re, nPass, order, m, Rtmp, Itmp, Cos))
                return 0;
            for (j = 0; j < m; j++)
                nfac[j] = order[j];
        }
    }
    NP(1) = static_cast<int>(ns);
    if (kt == 0)
        goto L890;
    k = kt + kt + 1;
    if (m < k)
        k--;
    j = 1;
    NP(k + 1) = static_cast<int>(jc);
    do {
        NP(j + 1) = NP(j) / NFAC(j);
        NP(k) = NP(k + 1) * NFAC(j);
        j++;
        k--;
    } while (j < k);
    k3 = NP(k + 1);
    kspan = NP(2);
    kk = jc + 1;
    k2 = kspan + 1;
    j = 1;
    if (nPass != nTotal)
        goto L850;

    // Single-variate case.
L820:
    if constexpr (Interleaved) {
        za = ZL(kk);
        ZS(kk, ZL(k2));
        ZS(k2, za);
    } else {
        ak = A(kk);
        A(kk) = A(k2);
        A(k2) = ak;
        bk = B(kk);
        B(kk) = B(k2);
        B(k2) = bk;
    }
    kk += inc;
    k2 += kspan;
    if (k2 < ns)
        goto L820;
L830:
    do {
        k2 -= NP(j);
        j++;
        k2 += NP(j + 1);
    } while (k2 > NP(j));
    j = 1;
L840:
    if (kk < k2)
        goto L820;
    kk += inc;
    k2 += kspan;
    if (k2 < ns)
        goto L840;
    if (kk < ns)
        goto L830;
    jc = k3;
    goto L890;

    // Multivariate case: blocks of jc elements.
L850:
    k = kk + jc;
    do {
        if constexpr (Interleaved) {
            za = ZL(kk);
            ZS(kk, ZL(k2));
            ZS(k2, za);
        } else {
            ak = A(kk);
            A(kk) = A(k2);
            A(k2) = ak;
            bk = B(kk);
            B(kk) = B(k2);
            B(k2) = bk;
        }
        kk += inc;
        k2 += inc;
    } while (kk < k);
    kk += ns - jc;
    k2 += ns - jc;
    if (kk < nt)
        goto L850;
    k2 = k2 - nt + kspan;
    kk = kk - nt + jc;
    if (k2 < ns)
        goto L850;
L870:
    do {
        k2 -= NP(j);
        j++;
        k2 += NP(j + 1);
    } while (k2 > NP(j));
    j = 1;
L880:
    if (kk < k2)
        goto L850;
    kk += jc;
    k2 += kspan;
    if (k2 < ns)
        goto L880;
    if (kk < ns)
        goto L870;
    jc = k3;

    // Then the square-free core, by following permutation cycles.
L890:
    if (2 * kt + 1 >= m)
        return 0;
    kspnn = NP(kt + 1);
    j = m - kt;
    NFAC(j + 1) = 1;
    do {
        NFAC(j) = NFAC(j) * NFAC(j + 1);
        j--;
    } while (j != kt);
    kt++;
    nn = NFAC(kt) - 1;
    if (nn > maxPerm) {
        fft_free(env);
        return -4;
    }
    jj = 0;
    j = 0;
    goto L906;
L902:
    jj -= k2;
    k2 = kk;
    k++;
    kk = NFAC(k);
L904:
    jj += kk;
    if (jj >= k2)
        goto L902;
    NP(j) = static_cast<int>(jj);
L906:
    k2 = NFAC(kt);
    k = kt + 1;
    kk = NFAC(k);
    j++;
    if (j <= nn)
        goto L904;

    // Cycles of length above 1; visited entries are negated.
    j = 0;
    k3 = 0;
    goto L914;
L910:
    k = kk;
    kk = NP(k);
    NP(k) = static_cast<int>(-kk);
    if (kk != j)
        goto L910;
    k3 = kk;
L914:
    j++;
    kk = NP(j);
    if (kk < 0)
        goto L914;
    if (kk != j)
        goto L910;
    NP(j) = static_cast<int>(-j);
    if (j != nn)
        goto L914;
    maxf *= inc;

    // Reorder A and B along the cycles, in blocks of at most maxf.
    goto L950;
L924:
    do {
        j--;
    } while (NP(j) < 0);
    jj = jc;
L926:
    kspan = jj;
    if (jj > maxf)
        kspan = maxf;
    jj -= kspan;
    k = NP(j);
    kk = jc * k + ii + jj;
    k1 = kk + kspan;
    k2 = 0;
    do {
        k2++;
        AT(k2) = A(k1);
        BT(k2) = B(k1);
        k1 -= inc;
    } while (k1 != kk);
    do {
        k1 = kk + kspan;
        k2 = k1 - jc * (k + NP(k));
        k = -NP(k);
        do {
            if constexpr (Interleaved) {
                ZS(k1, ZL(k2));
            } else {
                A(k1) = A(k2);
                B(k1) = B(k2);
            }
            k1 -= inc;
            k2 -= inc;
        } while (k1 != kk);
        kk = k2;
    } while (k != j);
    k1 = kk + kspan;
    k2 = 0;
    do {
        k2++;
        A(k1) = AT(k2);
        B(k1) = BT(k2);
        k1 -= inc;
    } while (k1 != kk);
    if (jj != 0)
        goto L926;
    if (j != 1)
        goto L924;
L950:
    j = k3 + 1;
    nt -= kspnn;
    ii = nt - inc + 1;
    if (nt >= 0)
        goto L924;
    return 0;
}

} // namespace

#undef A
#undef B
#undef ZL
#undef ZS
#undef AT
#undef BT
#undef CK
#undef SK
#undef NP
#undef NFAC

} // namespace OSCILLA_MR_VARIANT
} // namespace detail
} // namespace oscilla
