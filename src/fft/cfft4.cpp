// CFFT4: power-of-two complex, real, cosine and sine transforms over Ooura's
// radix-4 FFT routines, with the bit-reversal area and the twiddle tables
// kept in the object.
#include "oscilla/fft/cfft4.h"

#include <cmath>
#include <cstdlib>

#include "fft/ooura.h"

namespace oscilla {

namespace {

// Operation tags for the table cache.
enum { kNone = 0, kComplex, kReal, kCosine, kSine, kCosineRft, kSineRft };

int isqrt(int n)
{
    int r = static_cast<int>(std::sqrt(static_cast<double>(n)));
    while (r > 0 && static_cast<long long>(r) * r > n)
        r--;
    while (static_cast<long long>(r + 1) * (r + 1) <= n)
        r++;
    return r;
}

} // namespace

CFFT4::CFFT4() : ip(nullptr), n(-1), w(nullptr), tables(kNone) {}

CFFT4::~CFFT4()
{
    std::free(ip);
    std::free(w);
}

void CFFT4::SetN(int nn)
{
    n = nn;
    tables = kNone;
    std::free(ip);
    std::free(w);
    ip = nullptr;
    w = nullptr;
    if (nn > 0) {
        // The bit reversal of the largest member indexes ip[2 .. 1 + sqrt(n)];
        // the cosine and sine transforms keep their rotation table behind the
        // twiddles and reach w[5n/4 - 1].
        ip = static_cast<int *>(std::calloc(static_cast<size_t>(isqrt(nn)) + 2, sizeof(int)));
        w = static_cast<double *>(std::calloc(static_cast<size_t>(nn) + nn / 4, sizeof(double)));
    }
}

// Makes the tables ready for operation op at length nn; false when there is
// nothing to do (no length or no memory).
bool CFFT4::Prepare(int nn, int op)
{
    if (nn != n || tables != op || !ip || !w) {
        SetN(nn);
        tables = op;
    }
    return nn > 0 && ip && w;
}

void CFFT4::ComplexFFT(double *a, int nn, int sign)
{
    if (Prepare(nn, kComplex))
        detail::cdft(2 * nn, sign, a, ip, w);
}

void CFFT4::ComplexFFT(complex *a, int nn, int sign)
{
    ComplexFFT(reinterpret_cast<double *>(a), nn, sign);
}

// Below two points every real member is the identity, and the routines
// would read past a one-element array.
void CFFT4::RealFFT(double *a, int nn, int sign)
{
    if (Prepare(nn, kReal) && nn >= 2)
        detail::rdft(nn, sign, a, ip, w);
}

void CFFT4::CosineTransform(double *a, int nn, int sign)
{
    if (Prepare(nn, kCosine) && nn >= 2)
        detail::ddct(nn, sign, a, ip, w);
}

void CFFT4::SineTransform(double *a, int nn, int sign)
{
    if (Prepare(nn, kSine) && nn >= 2)
        detail::ddst(nn, sign, a, ip, w);
}

void CFFT4::CosineTransOfRealFFT(double *a, double *t, int nn)
{
    if (!Prepare(nn, kCosineRft))
        return;
    if (nn >= 2) {
        detail::dfct(nn, a, t, ip, w);
    } else {
        // Two samples with half weight each.
        double s = 0.5 * (a[0] + a[1]);
        a[1] = 0.5 * (a[0] - a[1]);
        a[0] = s;
    }
}

void CFFT4::SineTransOfRealFFT(double *a, double *t, int nn)
{
    if (Prepare(nn, kSineRft) && nn >= 2)
        detail::dfst(nn, a, t, ip, w);
}

} // namespace oscilla
