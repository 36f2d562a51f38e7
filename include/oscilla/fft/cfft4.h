// CFFT4: power-of-two transforms (complex, real, cosine, sine), split-radix
// after Ooura's general purpose FFT package in its radix-4 form.
#ifndef OSCILLA_FFT_CFFT4_H
#define OSCILLA_FFT_CFFT4_H

#include "oscilla/series/complex.h"

namespace oscilla {

class CFFT4 {
public:
    int *ip;   // bit-reversal work area; ip[0], ip[1] hold the sizes of the tables built
    int n;     // the length last set, -1 after construction
    double *w; // cosine and sine table

    CFFT4();
    ~CFFT4();
    CFFT4(const CFFT4 &) = delete;
    CFFT4 &operator=(const CFFT4 &) = delete;

    void SetN(int n);
    void ComplexFFT(double *a, int n, int sign);
    void ComplexFFT(complex *a, int n, int sign);
    void RealFFT(double *a, int n, int sign);
    void CosineTransform(double *a, int n, int sign);
    void SineTransform(double *a, int n, int sign);
    void CosineTransOfRealFFT(double *a, double *t, int n);
    void SineTransOfRealFFT(double *a, double *t, int n);

private:
    // Which operation built the tables now held in ip and w (0: none).  A call
    // of that same operation at the same length finds them exactly as it would
    // rebuild them, so it skips the rebuild.
    int tables;

    bool Prepare(int n, int op);
};

} // namespace oscilla

#endif
