// Power-of-two complex, real, cosine and sine transforms after Ooura's general
// purpose FFT package (radix-4 form, "fft4g"): bit reversal first, then radix-4
// butterflies from the shortest span to the longest, with a bit-reversed
// quarter-wave twiddle table so that every butterfly group reads its factors
// in sequence.  Variable names are those of the package.
#include "fft/ooura.h"

#include <cmath>

#if defined(__SSE2__) && !defined(OSCILLA_FFT_SCALAR)
#define OSCILLA_FFT_SSE2 1
#include <emmintrin.h>
#endif

namespace oscilla {
namespace detail {

namespace {

// Swaps complex a[j1] and a[k1]; with conj the imaginary parts change sign.
#ifdef OSCILLA_FFT_SSE2
inline void swap2(double *a, int j1, int k1)
{
    __m128d x = _mm_loadu_pd(a + j1), y = _mm_loadu_pd(a + k1);
    _mm_storeu_pd(a + j1, y);
    _mm_storeu_pd(a + k1, x);
}

inline void swap2conj(double *a, int j1, int k1)
{
    const __m128d c = _mm_set_pd(-0.0, 0.0);
    __m128d x = _mm_loadu_pd(a + j1), y = _mm_loadu_pd(a + k1);
    _mm_storeu_pd(a + j1, _mm_xor_pd(y, c));
    _mm_storeu_pd(a + k1, _mm_xor_pd(x, c));
}
#else
inline void swap2(double *a, int j1, int k1)
{
    double xr = a[j1], xi = a[j1 + 1];
    a[j1] = a[k1];
    a[j1 + 1] = a[k1 + 1];
    a[k1] = xr;
    a[k1 + 1] = xi;
}

inline void swap2conj(double *a, int j1, int k1)
{
    double xr = a[j1], xi = -a[j1 + 1];
    a[j1] = a[k1];
    a[j1 + 1] = -a[k1 + 1];
    a[k1] = xr;
    a[k1 + 1] = xi;
}
#endif


// Bit reversal of n/2 = 2^L complex values in 16 x 16 tiles, for data far
// larger than the caches. Index (a, b, c), with a and c the top and bottom
// four bits, goes to (rev c, rev b, rev a): the tiles of b and rev b are read
// into two small buffers row by row (sixteen consecutive values, whole cache
// lines) and written back transposed and reversed. The published loops swap
// one pair at a time across the whole array, two cache misses a pair once the
// data outgrow the caches. Same permutation, same values; with Conj every
// imaginary part changes sign, as in bitrv2conj.
constexpr int TILE_BITS = 4;
constexpr int TILE = 1 << TILE_BITS;
// Complex values from which the tiled form takes over (512 KB of data).
constexpr int TILED_FROM = 1 << 15;

inline unsigned reverse_bits(unsigned v, int bits)
{
    unsigned r = 0;
    for (int i = 0; i < bits; i++) {
        r = (r << 1) | (v & 1u);
        v >>= 1;
    }
    return r;
}

template <bool Conj>
void bitrv2_tiled(int n, double *a)
{
    const long N = n / 2;
    int L = 0;
    while ((1L << L) < N)
        L++;
    const int B = L - 2 * TILE_BITS;
    const long row = N >> TILE_BITS; // complex values from row a to row a + 1
    double X[2 * TILE * TILE], Y[2 * TILE * TILE];
    unsigned rq[TILE];
    for (int i = 0; i < TILE; i++)
        rq[i] = reverse_bits(static_cast<unsigned>(i), TILE_BITS);
    const double sign = Conj ? -1.0 : 1.0;
    const auto load = [a, row](double *buf, long base) {
        for (int r = 0; r < TILE; r++) {
            const double *src = a + 2 * (r * row + base);
            for (int c = 0; c < 2 * TILE; c++)
                buf[2 * TILE * r + c] = src[c];
        }
    };
    // Row r, column s of the tile at base receives buf[rev s][rev r].
    const auto store = [a, row, &rq, sign](const double *buf, long base) {
        for (int r = 0; r < TILE; r++) {
            double *dst = a + 2 * (r * row + base);
            for (int s = 0; s < TILE; s++) {
                const double *v = buf + 2 * (TILE * rq[s] + rq[r]);
                dst[2 * s] = v[0];
                dst[2 * s + 1] = sign * v[1];
            }
        }
    };
    for (unsigned b = 0; b < (1u << B); b++) {
        const unsigned br = reverse_bits(b, B);
        if (br < b)
            continue;
        const long base1 = static_cast<long>(b) << TILE_BITS, base2 = static_cast<long>(br) << TILE_BITS;
        load(X, base1);
        if (br == b) {
            store(X, base1);
        } else {
            load(Y, base2);
            store(X, base2);
            store(Y, base1);
        }
    }
}


// The first steps of bitrv2 and bitrv2conj: the table of reversed block
// offsets in ip (always built, as callers may read it), with l and m as the
// swap loops want them; then, for data past the caches, the whole reversal
// in tiles. True when that has done the work.
template <bool Conj>
bool bitrv2_start(int n, int *ip, double *a, int &l, int &m)
{
    ip[0] = 0;
    l = n;
    m = 1;
    while ((m << 3) < l) {
        l >>= 1;
        for (int j = 0; j < m; j++)
            ip[m + j] = ip[j] + l;
        m <<= 1;
    }
    if (n / 2 < TILED_FROM)
        return false;
    bitrv2_tiled<Conj>(n, a);
    return true;
}

} // namespace

namespace {

// One complex value in a register where SSE2 is there (every x86-64), else a
// pair of doubles; both forms give the package's butterflies.
#ifdef OSCILLA_FFT_SSE2
typedef __m128d cplx;
inline cplx cload(const double *p) { return _mm_loadu_pd(p); }
inline void cstore(double *p, cplx x) { _mm_storeu_pd(p, x); }
inline cplx cadd(cplx x, cplx y) { return _mm_add_pd(x, y); }
inline cplx csub(cplx x, cplx y) { return _mm_sub_pd(x, y); }
// i*x
inline cplx cmuli(cplx x) { return _mm_xor_pd(_mm_shuffle_pd(x, x, 1), _mm_set_pd(0.0, -0.0)); }
inline cplx cconj(cplx x) { return _mm_xor_pd(x, _mm_set_pd(-0.0, 0.0)); }
// A twiddle factor as (wr, wr) and (-wi, wi).
struct twid {
    __m128d r, i;
};
inline twid mktw(double wr, double wi)
{
    twid t;
    t.r = _mm_set1_pd(wr);
    t.i = _mm_set_pd(wi, -wi);
    return t;
}
inline cplx cmul(cplx x, const twid &w)
{
    return _mm_add_pd(_mm_mul_pd(x, w.r), _mm_mul_pd(_mm_shuffle_pd(x, x, 1), w.i));
}
#else
struct cplx {
    double r, i;
};
inline cplx cload(const double *p) { return cplx{p[0], p[1]}; }
inline void cstore(double *p, cplx x)
{
    p[0] = x.r;
    p[1] = x.i;
}
inline cplx cadd(cplx x, cplx y) { return cplx{x.r + y.r, x.i + y.i}; }
inline cplx csub(cplx x, cplx y) { return cplx{x.r - y.r, x.i - y.i}; }
inline cplx cmuli(cplx x) { return cplx{-x.i, x.r}; }
inline cplx cconj(cplx x) { return cplx{x.r, -x.i}; }
struct twid {
    double r, i;
};
inline twid mktw(double wr, double wi) { return twid{wr, wi}; }
inline cplx cmul(cplx x, const twid &w) { return cplx{w.r * x.r - w.i * x.i, w.r * x.i + w.i * x.r}; }
#endif

// Radix-4 butterfly on a[j], a[j+l], a[j+2l], a[j+3l] (offsets in doubles)
// with the outputs rotated by wk1 (second), wk2 (third) and wk3 (fourth).
inline void bfly4(double *a, int j, int l, const twid &wk1, const twid &wk2, const twid &wk3)
{
    int j1 = j + l, j2 = j1 + l, j3 = j2 + l;
    cplx a0 = cload(a + j), a1 = cload(a + j1), a2 = cload(a + j2), a3 = cload(a + j3);
    cplx x0 = cadd(a0, a1), x1 = csub(a0, a1), x2 = cadd(a2, a3), x3 = cmuli(csub(a2, a3));
    cstore(a + j, cadd(x0, x2));
    cstore(a + j2, cmul(csub(x0, x2), wk2));
    cstore(a + j1, cmul(cadd(x1, x3), wk1));
    cstore(a + j3, cmul(csub(x1, x3), wk3));
}

// The same without rotation; Conj conjugates the outputs (last stage of the
// inverse).
template <bool Conj> inline cplx outc(cplx x) { return Conj ? cconj(x) : x; }

template <bool Conj> inline void bfly4plain(double *a, int j, int l)
{
    int j1 = j + l, j2 = j1 + l, j3 = j2 + l;
    cplx a0 = cload(a + j), a1 = cload(a + j1), a2 = cload(a + j2), a3 = cload(a + j3);
    cplx x0 = cadd(a0, a1), x1 = csub(a0, a1), x2 = cadd(a2, a3), x3 = cmuli(csub(a2, a3));
    cstore(a + j, outc<Conj>(cadd(x0, x2)));
    cstore(a + j2, outc<Conj>(csub(x0, x2)));
    cstore(a + j1, outc<Conj>(cadd(x1, x3)));
    cstore(a + j3, outc<Conj>(csub(x1, x3)));
}

template <bool Conj> inline void bfly2plain(double *a, int j, int l)
{
    cplx a0 = cload(a + j), a1 = cload(a + j + l);
    cstore(a + j, outc<Conj>(cadd(a0, a1)));
    cstore(a + j + l, outc<Conj>(csub(a0, a1)));
}

// Last stage of cftfsub (Conj false) and cftbsub (Conj true): radix 4 when
// the stages so far leave a quarter, else radix 2.
template <bool Conj> void cftlast(int n, int l, double *a)
{
    int j;
    if ((l << 2) == n) {
        for (j = 0; j < l; j += 2)
            bfly4plain<Conj>(a, j, l);
    } else {
        for (j = 0; j < l; j += 2)
            bfly2plain<Conj>(a, j, l);
    }
}

} // namespace

void cdft(int n, int isgn, double *a, int *ip, double *w)
{
    if (n > (ip[0] << 2))
        makewt(n >> 2, ip, w);
    if (n > 4) {
        if (isgn >= 0) {
            bitrv2(n, ip + 2, a);
            cftfsub(n, a, w);
        } else {
            bitrv2conj(n, ip + 2, a);
            cftbsub(n, a, w);
        }
    } else if (n == 4) {
        cftfsub(n, a, w);
    }
}

void rdft(int n, int isgn, double *a, int *ip, double *w)
{
    int nw, nc;
    double xi;

    nw = ip[0];
    if (n > (nw << 2)) {
        nw = n >> 2;
        makewt(nw, ip, w);
    }
    nc = ip[1];
    if (n > (nc << 2)) {
        nc = n >> 2;
        makect(nc, ip, w + nw);
    }
    if (isgn >= 0) {
        if (n > 4) {
            bitrv2(n, ip + 2, a);
            cftfsub(n, a, w);
            rftfsub(n, a, nc, w + nw);
        } else if (n == 4) {
            cftfsub(n, a, w);
        }
        xi = a[0] - a[1];
        a[0] += a[1];
        a[1] = xi;
    } else {
        a[1] = 0.5 * (a[0] - a[1]);
        a[0] -= a[1];
        if (n > 4) {
            rftbsub(n, a, nc, w + nw);
            bitrv2(n, ip + 2, a);
            cftbsub(n, a, w);
        } else if (n == 4) {
            cftfsub(n, a, w);
        }
    }
}

void ddct(int n, int isgn, double *a, int *ip, double *w)
{
    int j, nw, nc;
    double xr;

    nw = ip[0];
    if (n > (nw << 2)) {
        nw = n >> 2;
        makewt(nw, ip, w);
    }
    nc = ip[1];
    if (n > nc) {
        nc = n;
        makect(nc, ip, w + nw);
    }
    if (isgn < 0) {
        xr = a[n - 1];
        for (j = n - 2; j >= 2; j -= 2) {
            a[j + 1] = a[j] - a[j - 1];
            a[j] += a[j - 1];
        }
        a[1] = a[0] - xr;
        a[0] += xr;
        if (n > 4) {
            rftbsub(n, a, nc, w + nw);
            bitrv2(n, ip + 2, a);
            cftbsub(n, a, w);
        } else if (n == 4) {
            cftfsub(n, a, w);
        }
    }
    dctsub(n, a, nc, w + nw);
    if (isgn >= 0) {
        if (n > 4) {
            bitrv2(n, ip + 2, a);
            cftfsub(n, a, w);
            rftfsub(n, a, nc, w + nw);
        } else if (n == 4) {
            cftfsub(n, a, w);
        }
        xr = a[0] - a[1];
        a[0] += a[1];
        for (j = 2; j < n; j += 2) {
            a[j - 1] = a[j] - a[j + 1];
            a[j] += a[j + 1];
        }
        a[n - 1] = xr;
    }
}

void ddst(int n, int isgn, double *a, int *ip, double *w)
{
    int j, nw, nc;
    double xr;

    nw = ip[0];
    if (n > (nw << 2)) {
        nw = n >> 2;
        makewt(nw, ip, w);
    }
    nc = ip[1];
    if (n > nc) {
        nc = n;
        makect(nc, ip, w + nw);
    }
    if (isgn < 0) {
        xr = a[n - 1];
        for (j = n - 2; j >= 2; j -= 2) {
            a[j + 1] = -a[j] - a[j - 1];
            a[j] -= a[j - 1];
        }
        a[1] = a[0] + xr;
        a[0] -= xr;
        if (n > 4) {
            rftbsub(n, a, nc, w + nw);
            bitrv2(n, ip + 2, a);
            cftbsub(n, a, w);
        } else if (n == 4) {
            cftfsub(n, a, w);
        }
    }
    dstsub(n, a, nc, w + nw);
    if (isgn >= 0) {
        if (n > 4) {
            bitrv2(n, ip + 2, a);
            cftfsub(n, a, w);
            rftfsub(n, a, nc, w + nw);
        } else if (n == 4) {
            cftfsub(n, a, w);
        }
        xr = a[0] - a[1];
        a[0] += a[1];
        for (j = 2; j < n; j += 2) {
            a[j - 1] = -a[j] - a[j + 1];
            a[j] -= a[j + 1];
        }
        a[n - 1] = -xr;
    }
}

// Cosine transform of a real symmetric sequence a[0..n].  The end samples
// enter with weight one half (the trapezoidal form), which makes the
// transform its own inverse up to the factor 2/n.
void dfct(int n, double *a, double *t, int *ip, double *w)
{
    int j, k, l, m, mh, nw, nc;
    double xr, xi, yr, yi;

    nw = ip[0];
    if (n > (nw << 3)) {
        nw = n >> 3;
        makewt(nw, ip, w);
    }
    nc = ip[1];
    if (n > (nc << 1)) {
        nc = n >> 1;
        makect(nc, ip, w + nw);
    }
    m = n >> 1;
    yi = a[m];
    xi = 0.5 * (a[0] + a[n]);
    a[0] = 0.5 * (a[0] - a[n]);
    t[0] = xi - yi;
    t[m] = xi + yi;
    if (n > 2) {
        mh = n >> 2;
        for (j = 1; j < mh; j++) {
            k = m - j;
            xr = a[j] - a[n - j];
            xi = a[j] + a[n - j];
            yr = a[k] - a[n - k];
            yi = a[k] + a[n - k];
            a[j] = xr;
            a[k] = yr;
            t[j] = xi - yi;
            t[k] = xi + yi;
        }
        t[mh] = a[mh] + a[n - mh];
        a[mh] -= a[n - mh];
        dctsub(m, a, nc, w + nw);
        if (m > 4) {
            bitrv2(m, ip + 2, a);
            cftfsub(m, a, w);
            rftfsub(m, a, nc, w + nw);
        } else if (m == 4) {
            cftfsub(m, a, w);
        }
        a[n - 1] = a[0] - a[1];
        a[1] = a[0] + a[1];
        for (j = m - 2; j >= 2; j -= 2) {
            a[2 * j + 1] = a[j] + a[j + 1];
            a[2 * j - 1] = a[j] - a[j + 1];
        }
        l = 2;
        m = mh;
        while (m >= 2) {
            dctsub(m, t, nc, w + nw);
            if (m > 4) {
                bitrv2(m, ip + 2, t);
                cftfsub(m, t, w);
                rftfsub(m, t, nc, w + nw);
            } else if (m == 4) {
                cftfsub(m, t, w);
            }
            a[n - l] = t[0] - t[1];
            a[l] = t[0] + t[1];
            k = 0;
            for (j = 2; j < m; j += 2) {
                k += l << 2;
                a[k - l] = t[j] - t[j + 1];
                a[k + l] = t[j] + t[j + 1];
            }
            l <<= 1;
            mh = m >> 1;
            for (j = 0; j < mh; j++) {
                k = m - j;
                t[j] = t[m + k] - t[m + j];
                t[k] = t[m + k] + t[m + j];
            }
            t[mh] = t[m + mh];
            m = mh;
        }
        a[l] = t[0];
        a[n] = t[2] - t[1];
        a[0] = t[2] + t[1];
    } else {
        a[1] = a[0];
        a[2] = t[0];
        a[0] = t[1];
    }
}

void dfst(int n, double *a, double *t, int *ip, double *w)
{
    int j, k, l, m, mh, nw, nc;
    double xr, xi, yr, yi;

    nw = ip[0];
    if (n > (nw << 3)) {
        nw = n >> 3;
        makewt(nw, ip, w);
    }
    nc = ip[1];
    if (n > (nc << 1)) {
        nc = n >> 1;
        makect(nc, ip, w + nw);
    }
    if (n > 2) {
        m = n >> 1;
        mh = m >> 1;
        for (j = 1; j < mh; j++) {
            k = m - j;
            xr = a[j] + a[n - j];
            xi = a[j] - a[n - j];
            yr = a[k] + a[n - k];
            yi = a[k] - a[n - k];
            a[j] = xr;
            a[k] = yr;
            t[j] = xi + yi;
            t[k] = xi - yi;
        }
        t[0] = a[mh] - a[n - mh];
        a[mh] += a[n - mh];
        a[0] = a[m];
        dstsub(m, a, nc, w + nw);
        if (m > 4) {
            bitrv2(m, ip + 2, a);
            cftfsub(m, a, w);
            rftfsub(m, a, nc, w + nw);
        } else if (m == 4) {
            cftfsub(m, a, w);
        }
        a[n - 1] = a[1] - a[0];
        a[1] = a[0] + a[1];
        for (j = m - 2; j >= 2; j -= 2) {
            a[2 * j + 1] = a[j] - a[j + 1];
            a[2 * j - 1] = -a[j] - a[j + 1];
        }
        l = 2;
        m = mh;
        while (m >= 2) {
            dstsub(m, t, nc, w + nw);
            if (m > 4) {
                bitrv2(m, ip + 2, t);
                cftfsub(m, t, w);
                rftfsub(m, t, nc, w + nw);
            } else if (m == 4) {
                cftfsub(m, t, w);
            }
            a[n - l] = t[1] - t[0];
            a[l] = t[0] + t[1];
            k = 0;
            for (j = 2; j < m; j += 2) {
                k += l << 2;
                a[k - l] = -t[j] - t[j + 1];
                a[k + l] = t[j] - t[j + 1];
            }
            l <<= 1;
            mh = m >> 1;
            for (j = 1; j < mh; j++) {
                k = m - j;
                t[j] = t[m + k] + t[m + j];
                t[k] = t[m + k] - t[m + j];
            }
            t[0] = t[m + mh];
            m = mh;
        }
        a[l] = t[0];
    }
    a[0] = 0;
}

// Quarter-wave table of exp(i*pi*j/(2*nwh)), j = 0..nw/2-1, stored in
// bit-reversed order.
void makewt(int nw, int *ip, double *w)
{
    int j, nwh;
    double delta, x, y;

    ip[0] = nw;
    ip[1] = 1;
    if (nw > 2) {
        nwh = nw >> 1;
        delta = std::atan(1.0) / nwh;
        w[0] = 1;
        w[1] = 0;
        w[nwh] = std::cos(delta * nwh);
        w[nwh + 1] = w[nwh];
        if (nwh > 2) {
            for (j = 2; j < nwh; j += 2) {
                x = std::cos(delta * j);
                y = std::sin(delta * j);
                w[j] = x;
                w[j + 1] = y;
                w[nw - j] = y;
                w[nw - j + 1] = x;
            }
            bitrv2(nw, ip + 2, w);
        }
    }
}

// Half-scaled cosine table for the real-data merge and the cosine/sine
// pre-rotations.
void makect(int nc, int *ip, double *c)
{
    int j, nch;
    double delta;

    ip[1] = nc;
    if (nc > 1) {
        nch = nc >> 1;
        delta = std::atan(1.0) / nch;
        c[0] = std::cos(delta * nch);
        c[nch] = 0.5 * c[0];
        for (j = 1; j < nch; j++) {
            c[j] = 0.5 * std::cos(delta * j);
            c[nc - j] = 0.5 * std::sin(delta * j);
        }
    }
}

// In-place bit reversal of n/2 complex values; ip is rebuilt as the table of
// reversed block offsets.
void bitrv2(int n, int *ip, double *a)
{
    int j, j1, k, k1, l, m, m2;

    if (bitrv2_start<false>(n, ip, a, l, m))
        return;
    m2 = 2 * m;
    if ((m << 3) == l) {
        for (k = 0; k < m; k++) {
            for (j = 0; j < k; j++) {
                j1 = 2 * j + ip[k];
                k1 = 2 * k + ip[j];
                swap2(a, j1, k1);
                j1 += m2;
                k1 += 2 * m2;
                swap2(a, j1, k1);
                j1 += m2;
                k1 -= m2;
                swap2(a, j1, k1);
                j1 += m2;
                k1 += 2 * m2;
                swap2(a, j1, k1);
            }
            j1 = 2 * k + m2 + ip[k];
            k1 = j1 + m2;
            swap2(a, j1, k1);
        }
    } else {
        for (k = 1; k < m; k++) {
            for (j = 0; j < k; j++) {
                j1 = 2 * j + ip[k];
                k1 = 2 * k + ip[j];
                swap2(a, j1, k1);
                j1 += m2;
                k1 += m2;
                swap2(a, j1, k1);
            }
        }
    }
}

// Bit reversal with conjugation: the inverse transform runs the forward
// butterflies on conjugated data and conjugates back in its last stage.
void bitrv2conj(int n, int *ip, double *a)
{
    int j, j1, k, k1, l, m, m2;

    if (bitrv2_start<true>(n, ip, a, l, m))
        return;
    m2 = 2 * m;
    if ((m << 3) == l) {
        for (k = 0; k < m; k++) {
            for (j = 0; j < k; j++) {
                j1 = 2 * j + ip[k];
                k1 = 2 * k + ip[j];
                swap2conj(a, j1, k1);
                j1 += m2;
                k1 += 2 * m2;
                swap2conj(a, j1, k1);
                j1 += m2;
                k1 -= m2;
                swap2conj(a, j1, k1);
                j1 += m2;
                k1 += 2 * m2;
                swap2conj(a, j1, k1);
            }
            k1 = 2 * k + ip[k];
            a[k1 + 1] = -a[k1 + 1];
            j1 = k1 + m2;
            k1 = j1 + m2;
            swap2conj(a, j1, k1);
            k1 += m2;
            a[k1 + 1] = -a[k1 + 1];
        }
    } else {
        a[1] = -a[1];
        a[m2 + 1] = -a[m2 + 1];
        for (k = 1; k < m; k++) {
            for (j = 0; j < k; j++) {
                j1 = 2 * j + ip[k];
                k1 = 2 * k + ip[j];
                swap2conj(a, j1, k1);
                j1 += m2;
                k1 += m2;
                swap2conj(a, j1, k1);
            }
            k1 = 2 * k + ip[k];
            a[k1 + 1] = -a[k1 + 1];
            a[k1 + m2 + 1] = -a[k1 + m2 + 1];
        }
    }
}

void cftfsub(int n, double *a, double *w)
{
    int l;

    if (n >= 32 && cft_avx2_usable()) {
        cftfsub_avx2(n, a, w);
        return;
    }
    l = 2;
    if (n > 8) {
        cft1st(n, a, w);
        l = 8;
        while ((l << 2) < n) {
            cftmdl(n, l, a, w);
            l <<= 2;
        }
    }
    cftlast<false>(n, l, a);
}

// The data arrive conjugated (bitrv2conj or rftbsub); the forward butterflies
// run over them and the last stage conjugates back.
void cftbsub(int n, double *a, double *w)
{
    int l;

    if (n >= 32 && cft_avx2_usable()) {
        cftbsub_avx2(n, a, w);
        return;
    }
    l = 2;
    if (n > 8) {
        cft1st(n, a, w);
        l = 8;
        while ((l << 2) < n) {
            cftmdl(n, l, a, w);
            l <<= 2;
        }
    }
    cftlast<true>(n, l, a);
}


// First radix-4 stage (span one complex value), blocks of 16 doubles.
void cft1st(int n, double *a, double *w)
{
    int j, k1, k2;
    double wk1r, wk1i, wk2r, wk2i, wk3r, wk3i;

    bfly4plain<false>(a, 0, 2);
    wk1r = w[2];
    bfly4(a, 8, 2, mktw(wk1r, wk1r), mktw(0.0, 1.0), mktw(-wk1r, wk1r));
    k1 = 0;
    for (j = 16; j < n; j += 16) {
        k1 += 2;
        k2 = 2 * k1;
        wk2r = w[k1];
        wk2i = w[k1 + 1];
        wk1r = w[k2];
        wk1i = w[k2 + 1];
        wk3r = wk1r - 2 * wk2i * wk1i;
        wk3i = 2 * wk2i * wk1r - wk1i;
        bfly4(a, j, 2, mktw(wk1r, wk1i), mktw(wk2r, wk2i), mktw(wk3r, wk3i));
        wk1r = w[k2 + 2];
        wk1i = w[k2 + 3];
        wk3r = wk1r - 2 * wk2r * wk1i;
        wk3i = 2 * wk2r * wk1r - wk1i;
        bfly4(a, j + 8, 2, mktw(wk1r, wk1i), mktw(-wk2i, wk2r), mktw(wk3r, wk3i));
    }
}

// Middle radix-4 stage of span l doubles over groups of m = 4l.  Groups come
// in pairs whose second member has wk2 turned by a quarter wave.
void cftmdl(int n, int l, double *a, double *w)
{
    int j, k, k1, k2, m, m2;
    double wk1r, wk1i, wk2r, wk2i, wk3r, wk3i;

    m = l << 2;
    for (j = 0; j < l; j += 2)
        bfly4plain<false>(a, j, l);
    wk1r = w[2];
    const twid e1 = mktw(wk1r, wk1r), e2 = mktw(0.0, 1.0), e3 = mktw(-wk1r, wk1r);
    for (j = m; j < l + m; j += 2)
        bfly4(a, j, l, e1, e2, e3);
    k1 = 0;
    m2 = 2 * m;
    for (k = m2; k < n; k += m2) {
        k1 += 2;
        k2 = 2 * k1;
        wk2r = w[k1];
        wk2i = w[k1 + 1];
        wk1r = w[k2];
        wk1i = w[k2 + 1];
        wk3r = wk1r - 2 * wk2i * wk1i;
        wk3i = 2 * wk2i * wk1r - wk1i;
        const twid t1 = mktw(wk1r, wk1i), t2 = mktw(wk2r, wk2i), t3 = mktw(wk3r, wk3i);
        for (j = k; j < l + k; j += 2)
            bfly4(a, j, l, t1, t2, t3);
        wk1r = w[k2 + 2];
        wk1i = w[k2 + 3];
        wk3r = wk1r - 2 * wk2r * wk1i;
        wk3i = 2 * wk2r * wk1r - wk1i;
        const twid u1 = mktw(wk1r, wk1i), u2 = mktw(-wk2i, wk2r), u3 = mktw(wk3r, wk3i);
        for (j = k + m; j < l + (k + m); j += 2)
            bfly4(a, j, l, u1, u2, u3);
    }
}

// Merge of the half-length complex transform into the real spectrum.
void rftfsub(int n, double *a, int nc, double *c)
{
    int j, k, kk, ks, m;
    double wkr, wki, xr, xi, yr, yi;

    m = n >> 1;
    ks = 2 * nc / m;
    kk = 0;
    for (j = 2; j < m; j += 2) {
        k = n - j;
        kk += ks;
        wkr = 0.5 - c[nc - kk];
        wki = c[kk];
        xr = a[j] - a[k];
        xi = a[j + 1] + a[k + 1];
        yr = wkr * xr - wki * xi;
        yi = wkr * xi + wki * xr;
        a[j] -= yr;
        a[j + 1] -= yi;
        a[k] += yr;
        a[k + 1] -= yi;
    }
}

// Split of a real spectrum into the half-length complex one, conjugated for
// the inverse butterflies.
void rftbsub(int n, double *a, int nc, double *c)
{
    int j, k, kk, ks, m;
    double wkr, wki, xr, xi, yr, yi;

    a[1] = -a[1];
    m = n >> 1;
    ks = 2 * nc / m;
    kk = 0;
    for (j = 2; j < m; j += 2) {
        k = n - j;
        kk += ks;
        wkr = 0.5 - c[nc - kk];
        wki = c[kk];
        xr = a[j] - a[k];
        xi = a[j + 1] + a[k + 1];
        yr = wkr * xr + wki * xi;
        yi = wkr * xi - wki * xr;
        a[j] -= yr;
        a[j + 1] = yi - a[j + 1];
        a[k] += yr;
        a[k + 1] = yi - a[k + 1];
    }
    a[m + 1] = -a[m + 1];
}

// Pre- and post-rotation of the cosine transform.
void dctsub(int n, double *a, int nc, double *c)
{
    int j, k, kk, ks, m;
    double wkr, wki, xr;

    m = n >> 1;
    ks = nc / n;
    kk = 0;
    for (j = 1; j < m; j++) {
        k = n - j;
        kk += ks;
        wkr = c[kk] - c[nc - kk];
        wki = c[kk] + c[nc - kk];
        xr = wki * a[j] - wkr * a[k];
        a[j] = wkr * a[j] + wki * a[k];
        a[k] = xr;
    }
    a[m] *= c[0];
}

// Pre- and post-rotation of the sine transform.
void dstsub(int n, double *a, int nc, double *c)
{
    int j, k, kk, ks, m;
    double wkr, wki, xr;

    m = n >> 1;
    ks = nc / n;
    kk = 0;
    for (j = 1; j < m; j++) {
        k = n - j;
        kk += ks;
        wkr = c[kk] - c[nc - kk];
        wki = c[kk] + c[nc - kk];
        xr = wki * a[k] - wkr * a[j];
        a[k] = wkr * a[k] + wki * a[j];
        a[j] = xr;
    }
    a[m] *= c[0];
}

} // namespace detail
} // namespace oscilla
