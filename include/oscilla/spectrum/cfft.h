// CFFT: the Fourier spectrum engine. One engine, written once over a data
// source; CFFT reads an XY record.
#ifndef OSCILLA_SPECTRUM_CFFT_H
#define OSCILLA_SPECTRUM_CFFT_H

#include "oscilla/fft/cfft4.h"
#include "oscilla/fft/lengths.h"
#include "oscilla/series/complex.h"
#include "oscilla/series/xy.h"
#include "oscilla/spectrum/formats.h"

namespace oscilla {

namespace detail {

struct KernelState; // working state of the mixed-radix and chirp-z kernels

// Source adapter of CFFT: an XY record, points from 1.
struct XYSource {
    using Record = XY;
    static int Count(const XY *r) { return static_cast<int>(r[0].x); }
    static double X(const XY *r, int i) { return r[i].x; }
    static double Y(const XY *r, int i) { return r[i].y; }
    // A two-sided spectrum halves the one-sided values of every format.
    static bool HalvesFullSpectrum(int) { return true; }
};

} // namespace detail

template <class Source>
class BasicFFT {
public:
    using Record = typename Source::Record;

    int failed;
    Record *pxy;
    XY *xyp;
    XY *xyf[5];
    XY **xyff[2];
    XY **xyfs;
    XYZ *xyzs;
    XYZ *xyzpk;
    int cnt;
    int len;
    double area;
    int minpad;
    int pad;
    int remlintrend;
    int gainmode; // 1 power gain, 2 coherent gain squared, 3 segment scale; any other value: no correction
    double *fft;
    double *ifft;
    double *response;
    double **segs;
    double **summary;
    double **freqmatr;
    int fftcnt;
    double noise[2];
    double xspc;
    double fspc;
    int primefac;
    int window;
    int seglen;
    double overlap;
    double alpha;
    int ipass;
    complex *cfft[5];
    CFFT4 *split;
    detail::KernelState *kstate;
    int abort;
    double maxdbseg;
    double maxdb;
    double mean;
    double variance;

    // Construction and the forward pass.
    BasicFFT(Record *xy, int primefac, int remlintrend, int minpad, int window, double alpha, int seglen,
             double overlap, int gainmode);
    ~BasicFFT();
    void Reset(Record *xy, int primefac, int remlintrend, int minpad, int window, double alpha, int seglen,
               double overlap, int gainmode);
    void Forward();
    void Init();

    // Input measures.
    double RawArea(Record *xy);
    double XSpacing(Record *xy);
    void AveVar(Record *xy, double &mean, double &var);

    // Releasing results.
    void FreeFft();
    void FreeXYf();
    void FreeXYff();
    void FreeXYfs();
    void FreeCfft();

    // Accessors and setters; a new value counts from the next Forward or Reset.
    Record *Getpxy() const { return pxy; }
    XY *GetXYp() const { return xyp; }
    double *GetFFT() const { return fft; }
    double *Getfft() const { return ifft; }
    double **GetFft() const { return segs; }
    int GetFftCnt() const { return fftcnt; }
    int GetLen() const { return len; }
    int GetCnt() const { return cnt; }
    int GetPad() const { return pad; }
    int GetIPass() const { return ipass; }
    double GetArea() const { return area; }
    double GetXSpc() const { return xspc; }
    double GetMean() const { return mean; }
    double GetVariance() const { return variance; }
    int GetMinPad() const { return minpad; }
    void SetMinPad(int v) { minpad = v; }
    int GetRemLinTrend() const { return remlintrend; }
    void SetRemLinTrend(int v) { remlintrend = v; }
    int GetPrimeFac() const { return primefac; }
    void SetPrimeFac(int v) { primefac = v; }
    int GetWindow() const { return window; }
    void SetWindow(int v) { window = v; }
    int GetSeglen() const { return seglen; }
    void SetSeglen(int v) { seglen = v; }
    double GetOverlap() const { return overlap; }
    void SetOverlap(double v) { overlap = v; }
    double GetAlpha() const { return alpha; }
    void SetAlpha(double v) { alpha = v; }
    int GetGainMode() const { return gainmode; }
    XY *GetXYf(int i) const { return (i >= 0 && i < 5) ? xyf[i] : nullptr; }
    complex *GetCfft(int i) const { return (i >= 0 && i < 5) ? cfft[i] : nullptr; }
    void Abort() { abort = 1; }
    int IsAbort() const { return abort; }

    // Spectrum output. Slots 0..4 keep the record in the object (the earlier
    // record of that slot is freed); any other slot hands it to the caller.
    double FFTParm(double re, double im, double s, int format, int segnorm, int full);
    XY *GetXYpFFT(int format, int slot, int mode);
    XY **GetXYppFFT(int format, int segnorm, int slot, int full);
    XY *FullXYpFFT(int format, int slot);
    void GetSingleXYpFFT(int bin, int format, XY *point, int segnorm);
    static void std(int n, double sum, double sum2, double &mean, double &ivar);
    double Power(int mode);
    double RawPower(int mode);
    double MaxPower(double *block);
    void UnwrapPhase(XY *xy);
    void CopyFrequency(XY *xy);
    double GetNoise(int which);
    char *GetStrNoise(char *dst, int which);
    double UniNoise(XY *xy);
    double GaussNoise(XY *xy);

    // Short-time transform over the segment blocks: a grid of at most 16384
    // points, one record per slice, or the strongest peaks per slice.
    XYZ *STFT(int format);
    XY **STFTGrid(int format, int group, double range);
    XYZ *STFTPeaks(int format, int maxpeaks);
    double STFTDataPower(int format, double t0, double t1);
    XY **GetXYfs() const { return xyfs; }
    XYZ *GetXYZs() const { return xyzs; }
    XYZ *GetXYZpk() const { return xyzpk; }

    // Transform front ends. Forward is sign 1, exp(+2 pi i jk/n), unscaled.
    void realft(double *data, int n, int sign, int norm);
    void realfft(double *data, int n, int sign, int norm);
    void realftodd(double *data, int n, int sign, int norm);
    void realfftodd(double *data, int n, int sign, int norm);
    void complexft(double *data, int n, int sign, int norm);
    void cmplxfft(complex *data, int n, int sign, int norm);
    void twofft(double *data1, double *data2, double *fft1, double *fft2, int n);
    void ReverseImSign(double *data, int n, int flag);
    void ReverseComplex(complex *data, int n);
    void four1(double *data, int n, int sign);
    void four0(double *data, int n, int sign);

    // Lengths and kernel choice.
    int npfa(int n);
    int npfar(int n);
    int OptPrimeFacCmplx(int n);
    int OptPrimeFacReal(int n);
    int NPowerof2(int n);
    int Powerof2(int n);
    int IsPow2();
    int FindFFTlen(int n);
    int BestFFT(int n);
    int BestCmplxFFT(int n);

    // Kernels.
    int fft1(double *data, int n, int sign);
    int fftn(int ndim, const int dims[], double Re[], double Im[], int sign, double scaling);
    int fftradix(double Re[], double Im[], int nTotal, int nPass, int nSpan, int sign, int maxFactors,
                 int maxPerm);
    void fft_free();
    void pfacc(double *x, int n, int sign);
    void chirpz(complex *x, int n, int sign, int m, complex *W, double A);
    void dfft(double *x, int n, int sign);
    void goertzel(double *x, int n, int sign);

private:
    void StoreParameters(int primefac, int remlintrend, int minpad, int window, double alpha, int seglen,
                         double overlap, int gainmode);
    void Measure(Record *xy);
    void RealHalfLength(double *p, int n, int sign, int norm);
    static void FewBinsPerSlice(int bins, int &group, int &per, int &slices);
    double FreqStep(bool segmented);
    double GainScale(const double *b) const;
    double SegmentScale(const double *b) const;
    double BinValue(const SpectrumFormat *f, double re, double im, double s, int segnorm, int full);
    XY *Bands(XY *record, int format);
    bool SliceTimes(double *times, int count);
    static void STFTRescale(double &z, int format, double r);
    int KernelCode(int n, bool real, int L);
    void RunKernel(int code, double *a, int n, int sign);
    int CountSegments(int step) const;
    int SegmentStep() const;
};

using CFFT = BasicFFT<detail::XYSource>;
extern template class BasicFFT<detail::XYSource>;

} // namespace oscilla

#endif
