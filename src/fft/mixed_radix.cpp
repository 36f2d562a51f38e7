// Mixed-radix kernel: Singleton's in-place FFT for any length (R. C.
// Singleton, "An algorithm for computing the mixed radix fast Fourier
// transform", 1969). Butterflies for 2, 3, 4 and 5, a general butterfly for
// other odd factors, then a two-stage permutation into natural order. The
// routine keeps the published structure and names; the arrays are addressed
// one-based through A() and B() as in the original.
#include "fft/kernel_state.h"
#include "fft/complex_pair.h"
#include "fft/kernels.h"

#include <climits>
#include <cmath>
#include <cstdlib>

namespace oscilla {
namespace detail {

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

} // namespace

void fft_free(KernelEnv &env)
{
    KernelState *s = env.state;
    if (!s)
        return;
    std::free(s->tmp0);
    std::free(s->tmp1);
    std::free(s->tmp2);
    std::free(s->tmp3);
    std::free(s->perm);
    s->tmp0 = s->tmp1 = s->tmp2 = s->tmp3 = nullptr;
    s->perm = nullptr;
    s->workBytes = 0;
    s->permCount = 0;
}

int fft1(KernelEnv &env, double *data, int n, int sign)
{
    const int ret = fftradix(env, data, data + 1, n, n, n, 2 * sign, n, n);
    fft_free(env);
    return ret;
}

int fftn(KernelEnv &env, int ndim, const int dims[], double Re[], double Im[], int sign, double scaling)
{
    long nTotal = 1;
    int maxDim = 1;
    if (ndim != 0 && dims[0] != 0) {
        for (int i = 0; i < ndim; i++) {
            if (dims[i] < 1) {
                fft_free(env);
                return -1;
            }
            nTotal *= dims[i];
            if (dims[i] > maxDim)
                maxDim = dims[i];
        }
    } else {
        // A list ended by a zero; an empty list is one point.
        ndim = 0;
        for (int i = 0; dims[i] != 0; i++) {
            if (dims[i] < 1) {
                fft_free(env);
                return -1;
            }
            nTotal *= dims[i];
            if (dims[i] > maxDim)
                maxDim = dims[i];
            ndim++;
        }
    }
    if (nTotal > INT_MAX) {
        fft_free(env);
        return -1;
    }
    long nSpan = 1;
    for (int i = 0; i < ndim; i++) {
        nSpan *= dims[i];
        const int ret = fftradix(env, Re, Im, static_cast<int>(nTotal), dims[i], static_cast<int>(nSpan), sign,
                                 maxDim, maxDim);
        if (ret) {
            fft_free(env);
            return ret;
        }
    }
    if (scaling != 0.0 && scaling != 1.0) {
        if (scaling < -1.0)
            scaling = std::sqrt(static_cast<double>(nTotal));
        else if (scaling < 0.0)
            scaling = static_cast<double>(nTotal);
        const double f = 1.0 / scaling;
        // The bound is the point count, not the count times the increment:
        // with an increment above 1 only the leading part is scaled.
        const long inc = sign < 0 ? -static_cast<long>(sign) : sign;
        if (inc > 0)
            for (long i = 0; i < nTotal; i += inc) {
                Re[i] *= f;
                Im[i] *= f;
            }
    }
    fft_free(env);
    return 0;
}

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
    long tw;
    double c1, c2, c3, cd, aa, aj, ak, ajm, ajp, akm, akp;
    double s1, s2, s3, sd, bb, bj, bk, bjm, bjp, bkm, bkp;
    double *Rtmp, *Itmp, *Cos, *Sin;
    v2d za, zk, zj, zkp, zkm, zjp, zjm, zi;
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
                    ZS(k2, c1 * zj + s1 * times_i(zj));
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
        do {
            do {
                k1 = kk + kspan;
                k2 = k1 + kspan;
                zk = ZL(kk);
                zkp = ZL(k1);
                zkm = ZL(k2);
                zj = zkp + zkm;
                ZS(kk, zk + zj);
                zk = -0.5 * zj + zk;
                zi = times_i((zkp - zkm) * s120);
                ZS(k1, zk + zi);
                ZS(k2, zk - zi);
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
                        ZS(k1, c1 * zkp + s1 * times_i(zkp));
                        ZS(k2, c2 * zjp + s2 * times_i(zjp));
                        ZS(k3, c3 * zkm + s3 * times_i(zkm));
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
        do {
            do {
                k1 = kk + kspan;
                k2 = k1 + kspan;
                k3 = k2 + kspan;
                k4 = k3 + kspan;
                zk = ZL(k1);
                zj = ZL(k4);
                zkp = zk + zj;
                zkm = zk - zj;
                zk = ZL(k2);
                zj = ZL(k3);
                zjp = zk + zj;
                zjm = zk - zj;
                za = ZL(kk);
                ZS(kk, za + zkp + zjp);
                zk = zkp * c72 + zjp * c2 + za;
                zi = times_i(zkm * s72 + zjm * s2);
                ZS(k1, zk + zi);
                ZS(k4, zk - zi);
                zk = zkp * c2 + zjp * c72 + za;
                zi = times_i(zkm * s2 - zjm * s72);
                ZS(k2, zk + zi);
                ZS(k3, zk - zi);
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
        do {
            c2 = 1.0 - cd;
            s1 = sd;
            tw = 1;
            do {
                c1 = c2;
                s2 = s1;
                kk += kspan;
                do {
                    do {
                        za = ZL(kk);
                        ZS(kk, c2 * za + s2 * times_i(za));
                        kk += kspnn;
                    } while (kk <= nt);
                    ak = s1 * s2;
                    s2 = s1 * c2 + c1 * s2;
                    c2 = c1 * c2 - ak;
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
    kk += kspan;
L730:
    ak = A(kk);
    A(kk) = c2 * ak - s2 * B(kk);
    B(kk) = s2 * ak + c2 * B(kk);
    kk += kspnn;
    if (kk <= nt)
        goto L730;
    ak = s1 * s2;
    s2 = s1 * c2 + c1 * s2;
    c2 = c1 * c2 - ak;
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

int fftradix(KernelEnv &env, double Re[], double Im[], int nTotal, int nPass, int nSpan, int iSign, int maxFactors,
             int maxPerm)
{
    if (Im == Re + 1 && (iSign == 2 || iSign == -2))
        return radix_pass<true>(env, Re, nullptr, nTotal, nPass, nSpan, iSign, maxFactors, maxPerm);
    return radix_pass<false>(env, Re, Im, nTotal, nPass, nSpan, iSign, maxFactors, maxPerm);
}

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

} // namespace detail
} // namespace oscilla
