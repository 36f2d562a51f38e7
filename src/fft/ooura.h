// Internal interface of the power-of-two transform routines behind CFFT4:
// Ooura's general purpose FFT package, radix-4 form.  Lengths are powers of
// two; `ip` is the bit-reversal work area (ip[0], ip[1] the sizes of the
// twiddle and cosine tables built so far) and `w` the table they live in.
#ifndef OSCILLA_FFT_OOURA_H
#define OSCILLA_FFT_OOURA_H

namespace oscilla {
namespace detail {

void cdft(int n, int isgn, double *a, int *ip, double *w);
void rdft(int n, int isgn, double *a, int *ip, double *w);
void ddct(int n, int isgn, double *a, int *ip, double *w);
void ddst(int n, int isgn, double *a, int *ip, double *w);
void dfct(int n, double *a, double *t, int *ip, double *w);
void dfst(int n, double *a, double *t, int *ip, double *w);

void makewt(int nw, int *ip, double *w);
void makect(int nc, int *ip, double *c);
void bitrv2(int n, int *ip, double *a);
void bitrv2conj(int n, int *ip, double *a);
void cftfsub(int n, double *a, double *w);
void cftbsub(int n, double *a, double *w);
void cft1st(int n, double *a, double *w);
void cftmdl(int n, int l, double *a, double *w);
void rftfsub(int n, double *a, int nc, double *c);
void rftbsub(int n, double *a, int nc, double *c);
void dctsub(int n, double *a, int nc, double *c);
void dstsub(int n, double *a, int nc, double *c);

// The butterfly stages of cftfsub and cftbsub for n >= 32 in AVX2/FMA form,
// for processors that have it (cft_avx2_usable); same results to rounding.
bool cft_avx2_usable();
void cftfsub_avx2(int n, double *a, double *w);
void cftbsub_avx2(int n, double *a, double *w);

} // namespace detail
} // namespace oscilla

#endif
