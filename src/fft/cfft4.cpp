// Stand-in for the split-radix package: a plain transform of the right
// direction and layout, replaced by the real kernel.
#include "oscilla/fft/cfft4.h"

#include <cmath>
#include <cstdlib>
#include <vector>

namespace oscilla {

CFFT4::CFFT4() : ip(nullptr), n(-1), w(nullptr) {}
CFFT4::~CFFT4()
{
    std::free(ip);
    std::free(w);
}

void CFFT4::SetN(int nn)
{
    n = nn;
    std::free(ip);
    std::free(w);
    ip = nullptr;
    w = nullptr;
}

void CFFT4::ComplexFFT(double *a, int nn, int sign)
{
    SetN(nn);
    if (nn < 2)
        return;
    std::vector<double> t(2 * nn);
    const double wv = (sign >= 0 ? 2.0 : -2.0) * 3.14159265358979323846 / nn;
    for (int k = 0; k < nn; k++) {
        double sr = 0, si = 0;
        for (int j = 0; j < nn; j++) {
            double th = wv * static_cast<double>((static_cast<long long>(j) * k) % nn);
            sr += a[2 * j] * std::cos(th) - a[2 * j + 1] * std::sin(th);
            si += a[2 * j] * std::sin(th) + a[2 * j + 1] * std::cos(th);
        }
        t[2 * k] = sr;
        t[2 * k + 1] = si;
    }
    for (int i = 0; i < 2 * nn; i++)
        a[i] = t[i];
}

void CFFT4::ComplexFFT(complex *a, int nn, int sign) { ComplexFFT(reinterpret_cast<double *>(a), nn, sign); }
void CFFT4::RealFFT(double *, int nn, int) { SetN(nn); }
void CFFT4::CosineTransform(double *, int nn, int) { SetN(nn); }
void CFFT4::SineTransform(double *, int nn, int) { SetN(nn); }
void CFFT4::CosineTransOfRealFFT(double *, double *, int nn) { SetN(nn); }
void CFFT4::SineTransOfRealFFT(double *, double *, int nn) { SetN(nn); }

} // namespace oscilla
