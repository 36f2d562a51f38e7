// AVX2/FMA form of the radix-4 butterfly stages of the Ooura-style transform
// (cft1st, cftmdl and the last stage of cftfsub/cftbsub), two complex values
// per register.  Compiled for that target function by function and used only
// when the processor reports AVX2 and FMA, so the library still runs on any
// x86-64.  Same arithmetic as the portable stages, same table.
#include "fft/ooura.h"

#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__)) && !defined(OSCILLA_FFT_SCALAR) && \
    !defined(OSCILLA_FFT_NO_AVX2)
#define OSCILLA_FFT_AVX2 1
#include <immintrin.h>
#endif

namespace oscilla {
namespace detail {

#ifdef OSCILLA_FFT_AVX2

#define AVX2_FN __attribute__((target("avx2,fma")))
// The stage routines are kept out of interprocedural analysis: GCC 12 at -O1
// and above was seen to drop calls of the first stage after judging it free
// of side effects.
#if defined(__GNUC__) && !defined(__clang__)
#define STAGE_FN __attribute__((noipa)) AVX2_FN
#else
#define STAGE_FN AVX2_FN
#endif

namespace {

// Two twiddle factors, one per 128-bit lane, as (wr, wr) and (-wi, wi).
struct tw2 {
    __m256d r, i;
};

AVX2_FN inline tw2 mk2(double w0r, double w0i, double w1r, double w1i)
{
    tw2 t;
    t.r = _mm256_set_pd(w1r, w1r, w0r, w0r);
    t.i = _mm256_set_pd(w1i, -w1i, w0i, -w0i);
    return t;
}

AVX2_FN inline __m256d cmul2(__m256d x, const tw2 &w)
{
    return _mm256_fmadd_pd(x, w.r, _mm256_mul_pd(_mm256_permute_pd(x, 5), w.i));
}

// i*x in both lanes.
AVX2_FN inline __m256d muli2(__m256d x)
{
    return _mm256_xor_pd(_mm256_permute_pd(x, 5), _mm256_set_pd(0.0, -0.0, 0.0, -0.0));
}

AVX2_FN inline __m256d conj2(__m256d x)
{
    return _mm256_xor_pd(x, _mm256_set_pd(-0.0, 0.0, -0.0, 0.0));
}

// Radix-4 butterflies at a[j], a[j+l], a[j+2l], a[j+3l] for two adjacent j.
AVX2_FN inline void bfly4x2(double *a, int j, int l, const tw2 &wk1, const tw2 &wk2, const tw2 &wk3)
{
    int j1 = j + l, j2 = j1 + l, j3 = j2 + l;
    __m256d a0 = _mm256_loadu_pd(a + j), a1 = _mm256_loadu_pd(a + j1);
    __m256d a2 = _mm256_loadu_pd(a + j2), a3 = _mm256_loadu_pd(a + j3);
    __m256d x0 = _mm256_add_pd(a0, a1), x1 = _mm256_sub_pd(a0, a1);
    __m256d x2 = _mm256_add_pd(a2, a3), x3 = muli2(_mm256_sub_pd(a2, a3));
    _mm256_storeu_pd(a + j, _mm256_add_pd(x0, x2));
    _mm256_storeu_pd(a + j2, cmul2(_mm256_sub_pd(x0, x2), wk2));
    _mm256_storeu_pd(a + j1, cmul2(_mm256_add_pd(x1, x3), wk1));
    _mm256_storeu_pd(a + j3, cmul2(_mm256_sub_pd(x1, x3), wk3));
}

template <bool Conj> AVX2_FN inline __m256d out2(__m256d x) { return Conj ? conj2(x) : x; }

template <bool Conj> AVX2_FN inline void bfly4x2plain(double *a, int j, int l)
{
    int j1 = j + l, j2 = j1 + l, j3 = j2 + l;
    __m256d a0 = _mm256_loadu_pd(a + j), a1 = _mm256_loadu_pd(a + j1);
    __m256d a2 = _mm256_loadu_pd(a + j2), a3 = _mm256_loadu_pd(a + j3);
    __m256d x0 = _mm256_add_pd(a0, a1), x1 = _mm256_sub_pd(a0, a1);
    __m256d x2 = _mm256_add_pd(a2, a3), x3 = muli2(_mm256_sub_pd(a2, a3));
    _mm256_storeu_pd(a + j, out2<Conj>(_mm256_add_pd(x0, x2)));
    _mm256_storeu_pd(a + j2, out2<Conj>(_mm256_sub_pd(x0, x2)));
    _mm256_storeu_pd(a + j1, out2<Conj>(_mm256_add_pd(x1, x3)));
    _mm256_storeu_pd(a + j3, out2<Conj>(_mm256_sub_pd(x1, x3)));
}

// A twiddle pair held as two complex values, in multiplier form.
AVX2_FN inline tw2 totw(__m256d v)
{
    tw2 t;
    t.r = _mm256_movedup_pd(v);
    t.i = _mm256_xor_pd(_mm256_permute_pd(v, 15), _mm256_set_pd(0.0, -0.0, 0.0, -0.0));
    return t;
}

// Two neighbouring groups of the first stage, each four consecutive complex
// values (at a[j] and a[j+8]).  Lanes hold the two groups: the second group's
// wk1 follows the first's in the bit-reversed table, its wk2 is the first's
// turned by a quarter wave, and wk3 = wk1*wk2.
AVX2_FN inline void grp1st2(double *a, int j, const double *wk1, const double *wk2)
{
    __m256d vg01 = _mm256_loadu_pd(a + j), vg23 = _mm256_loadu_pd(a + j + 4);
    __m256d vh01 = _mm256_loadu_pd(a + j + 8), vh23 = _mm256_loadu_pd(a + j + 12);
    __m256d p0 = _mm256_permute2f128_pd(vg01, vh01, 0x20), p1 = _mm256_permute2f128_pd(vg01, vh01, 0x31);
    __m256d p2 = _mm256_permute2f128_pd(vg23, vh23, 0x20), p3 = _mm256_permute2f128_pd(vg23, vh23, 0x31);

    __m256d W1 = _mm256_loadu_pd(wk1);
    __m128d w2 = _mm_loadu_pd(wk2);
    __m128d w2i = _mm_xor_pd(_mm_shuffle_pd(w2, w2, 1), _mm_set_pd(0.0, -0.0));
    __m256d W2 = _mm256_set_m128d(w2i, w2);
    const tw2 t1 = totw(W1), t2 = totw(W2);
    const tw2 t3 = totw(cmul2(W2, t1));

    __m256d x0 = _mm256_add_pd(p0, p1), x1 = _mm256_sub_pd(p0, p1);
    __m256d x2 = _mm256_add_pd(p2, p3), x3 = muli2(_mm256_sub_pd(p2, p3));
    __m256d y0 = _mm256_add_pd(x0, x2);
    __m256d y2 = cmul2(_mm256_sub_pd(x0, x2), t2);
    __m256d y1 = cmul2(_mm256_add_pd(x1, x3), t1);
    __m256d y3 = cmul2(_mm256_sub_pd(x1, x3), t3);
    _mm256_storeu_pd(a + j, _mm256_permute2f128_pd(y0, y1, 0x20));
    _mm256_storeu_pd(a + j + 4, _mm256_permute2f128_pd(y2, y3, 0x20));
    _mm256_storeu_pd(a + j + 8, _mm256_permute2f128_pd(y0, y1, 0x31));
    _mm256_storeu_pd(a + j + 12, _mm256_permute2f128_pd(y2, y3, 0x31));
}

// First stage over a[jbeg..jend): the table starts with 1 and exp(i*pi/4),
// so the first pair of groups needs no case of its own.
STAGE_FN void cft1st_avx2(int jbeg, int jend, double *a, double *w)
{
    int j, k1;

    for (j = jbeg, k1 = jbeg >> 3; j < jend; j += 16, k1 += 2)
        grp1st2(a, j, w + 2 * k1, w + k1);
}

// Middle stage of span l over the groups in a[kbeg..kend); kbeg is a multiple
// of a group pair (8l doubles).
STAGE_FN void cftmdl_avx2(int l, double *a, double *w, int kbeg, int kend)
{
    int j, k, k1, k2, m, m2;
    double wk1r, wk1i, wk2r, wk2i, wk3r, wk3i;

    m = l << 2;
    m2 = 2 * m;
    k = kbeg;
    if (k == 0) {
        for (j = 0; j < l; j += 4)
            bfly4x2plain<false>(a, j, l);
        wk1r = w[2];
        const tw2 e1 = mk2(wk1r, wk1r, wk1r, wk1r), e2 = mk2(0.0, 1.0, 0.0, 1.0),
                  e3 = mk2(-wk1r, wk1r, -wk1r, wk1r);
        for (j = m; j < l + m; j += 4)
            bfly4x2(a, j, l, e1, e2, e3);
        k = m2;
    }
    for (k1 = 2 * (k / m2); k < kend; k += m2, k1 += 2) {
        k2 = 2 * k1;
        wk2r = w[k1];
        wk2i = w[k1 + 1];
        wk1r = w[k2];
        wk1i = w[k2 + 1];
        wk3r = wk1r - 2 * wk2i * wk1i;
        wk3i = 2 * wk2i * wk1r - wk1i;
        const tw2 t1 = mk2(wk1r, wk1i, wk1r, wk1i), t2 = mk2(wk2r, wk2i, wk2r, wk2i),
                  t3 = mk2(wk3r, wk3i, wk3r, wk3i);
        for (j = k; j < l + k; j += 4)
            bfly4x2(a, j, l, t1, t2, t3);
        wk1r = w[k2 + 2];
        wk1i = w[k2 + 3];
        wk3r = wk1r - 2 * wk2r * wk1i;
        wk3i = 2 * wk2r * wk1r - wk1i;
        const tw2 u1 = mk2(wk1r, wk1i, wk1r, wk1i), u2 = mk2(-wk2i, wk2r, -wk2i, wk2r),
                  u3 = mk2(wk3r, wk3i, wk3r, wk3i);
        for (j = k + m; j < l + (k + m); j += 4)
            bfly4x2(a, j, l, u1, u2, u3);
    }
}

// Doubles per cache block: for long transforms the short-span stages run
// block by block, so that each block stays in the second-level cache through
// all of them, and only the long spans sweep the whole array.
const int kBlock = 1 << 15;

template <bool Conj> STAGE_FN void cftsub_avx2(int n, double *a, double *w)
{
    int b, j, l;

    if (n <= kBlock) {
        cft1st_avx2(0, n, a, w);
        l = 8;
        while ((l << 2) < n) {
            cftmdl_avx2(l, a, w, 0, n);
            l <<= 2;
        }
    } else {
        l = 8;
        for (b = 0; b < n; b += kBlock) {
            cft1st_avx2(b, b + kBlock, a, w);
            for (l = 8; (l << 3) <= kBlock; l <<= 2)
                cftmdl_avx2(l, a, w, b, b + kBlock);
        }
        while ((l << 2) < n) {
            cftmdl_avx2(l, a, w, 0, n);
            l <<= 2;
        }
    }
    if ((l << 2) == n) {
        for (j = 0; j < l; j += 4)
            bfly4x2plain<Conj>(a, j, l);
    } else {
        for (j = 0; j < l; j += 4) {
            __m256d a0 = _mm256_loadu_pd(a + j), a1 = _mm256_loadu_pd(a + j + l);
            _mm256_storeu_pd(a + j, out2<Conj>(_mm256_add_pd(a0, a1)));
            _mm256_storeu_pd(a + j + l, out2<Conj>(_mm256_sub_pd(a0, a1)));
        }
    }
}

} // namespace

bool cft_avx2_usable()
{
    static const bool usable = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
    return usable;
}

void cftfsub_avx2(int n, double *a, double *w) { cftsub_avx2<false>(n, a, w); }
void cftbsub_avx2(int n, double *a, double *w) { cftsub_avx2<true>(n, a, w); }

#else

bool cft_avx2_usable() { return false; }
void cftfsub_avx2(int, double *, double *) {}
void cftbsub_avx2(int, double *, double *) {}

#endif

} // namespace detail
} // namespace oscilla
