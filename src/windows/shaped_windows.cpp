// The windows given by a closed formula in the sample index: the classic
// fixed shapes and those with a shape parameter.
#include "oscilla/windows/cwinfn.h"

#include "oscilla/series/mathsupport.h"

#include <cmath>

namespace oscilla {

namespace {
constexpr double kPi = 3.14159265358979323846;
constexpr double kTwoPi = 6.283185307179586476925;
} // namespace

void CWinFn::Rectangular(double *w, int n)
{
    if (!w)
        return;
    for (int i = 0; i < n; i++)
        w[i] = 1.0;
}

// Rising by 2/(n-1) per sample up to the middle, falling after it.
void CWinFn::Bartlett(double *w, int n)
{
    if (!w)
        return;
    const double s = 2.0 / (n - 1);
    const int h = (n - 1) / 2 + 1;
    for (int i = 0; i < n; i++)
        w[i] = i < h ? i * s : 2.0 - i * s;
}

void CWinFn::Welch(double *w, int n)
{
    if (!w)
        return;
    for (int i = 0; i < n; i++) {
        const double v = static_cast<double>(n - 1 - 2 * static_cast<long long>(i)) / (n - 1);
        w[i] = 1.0 - v * v;
    }
}

void CWinFn::Sine(double *w, int n)
{
    if (!w)
        return;
    for (int i = 0; i < n; i++)
        w[i] = std::sin(kPi * i / (n - 1));
}

// A squared sinc-like lobe. The lower sine takes u - 0.5 without the factor
// pi on purpose: that is the lobe this code stands for.
void CWinFn::ModBartlett(double *w, int n)
{
    if (!w)
        return;
    for (int i = 0; i < n; i++) {
        const double u = static_cast<double>(i) / (n - 1);
        const double a = std::sin((2.0 * u - 1.0) * kPi);
        const double b = std::sin(u - 0.5);
        w[i] = b == 0.0 ? 1.0 : a * a / (39.47841760435743 * b * b);
    }
}

// Kernel sin((2 pi + 0.5) x) / (2 pi sin(x / 2)), with its limit where the
// denominator vanishes.
double CWinFn::Dirichlet(double x)
{
    const double s = std::sin(0.5 * x);
    if (s == 0.0)
        return 2.159154943091895;
    return std::sin(6.783185307179586 * x) / (kTwoPi * s);
}

// Three shifted kernels, weighted a, 1 - 2a, a, over v = 2u - 1.
void CWinFn::Tukey(double *w, int n, double shape)
{
    if (!w)
        return;
    const double a = shape;
    for (int i = 0; i < n; i++) {
        const double v = 2.0 * i / (n - 1) - 1.0;
        w[i] = a * Dirichlet(v - 0.5) + (1.0 - 2.0 * a) * Dirichlet(v) + a * Dirichlet(v + 0.5);
    }
}

// (1 - |i - c|^p / c^p)^p about the middle c = (n - 1) / 2.
void CWinFn::TriCubeWin(double *w, int n, double shape)
{
    if (!w)
        return;
    const double p = shape;
    const double c = 0.5 * n - 0.5;
    const double cp = std::pow(c, p);
    for (int i = 0; i < n; i++)
        w[i] = std::pow(1.0 - std::pow(std::fabs(i - 0.5 * n + 0.5), p) / cp, p);
}

// A raised cosine to the power shape - 1: shape 2 is the Hann window.
void CWinFn::CosineSq(double *w, int n, double shape)
{
    if (!w)
        return;
    for (int i = 0; i < n; i++)
        w[i] = std::pow(std::fabs(0.5 * (1.0 - std::cos(kTwoPi * i / (n - 1)))), shape - 1.0);
}

// Kaiser-Bessel: beta from a time-bandwidth style shape figure, with the
// rounded 1/pi^2 of the fit that relates the two.
void CWinFn::Kaiser(double *w, int n, double shape)
{
    if (!w)
        return;
    const double beta = std::sqrt((shape * shape - 1.0) / 0.10132118361);
    const double h = (n - 1) / 2.0;
    const double norm = BesselI0(beta);
    for (int i = 0; i < n; i++)
        w[i] = BesselI0(beta * std::sqrt(i * (2.0 * h - i)) / h) / norm;
}

// Flat in the middle, Hann-shaped ends over the fraction r of the length on each side.
void CWinFn::TaperedCosine(double *w, int n, double shape)
{
    if (!w)
        return;
    double r = 1.0 - 1.0 / shape;
    if (r > 0.5)
        r = 0.5;
    if (r < 0.01)
        r = 0.01;
    const double step = (kPi / r) / (n - 1);
    const double lo = std::trunc(n * r + 0.5);
    const double hi = std::trunc((1.0 - r) * n - 0.5);
    const double mid = n / 2.0;
    for (int i = 0; i < n; i++) {
        if (i > lo && i < hi) {
            w[i] = 1.0;
        } else {
            const double m = i > mid ? n - 1.0 - i : static_cast<double>(i);
            w[i] = 0.5 - 0.5 * std::cos(step * m);
        }
    }
}

// Gaussian whose width s is a fitted function of the shape figure.
void CWinFn::GaussWin(double *w, int n, double shape)
{
    if (!w)
        return;
    const double s = (0.3202556336455866 * shape + 2.453274901281656) / (2.348619671799226 * shape + 1.0);
    const double c = (n - 1) / 2.0;
    const double d = (n - 1) * s;
    for (int i = 0; i < n; i++) {
        const double v = (i - c) / d;
        w[i] = std::exp(-2.772588722239781 * v * v);
    }
}

// The parabola 4u(1 - u) to a power fitted from the shape figure.
void CWinFn::BetaWin(double *w, int n, double shape)
{
    if (!w)
        return;
    const double p = 2.76079379640931 * shape - 3.218913776512187;
    for (int i = 0; i < n; i++) {
        const double u = static_cast<double>(i) / (n - 1);
        w[i] = std::pow(4.0 * (1.0 - u) * u, p);
    }
}

// Van der Maas: I1(2 B sqrt(u(1-u))) / sqrt(u(1-u)), whose limit B/2 / I1(B)
// stands at the two ends.
void CWinFn::VanderMaas(double *w, int n, double shape)
{
    if (!w || n < 1)
        return;
    const double B = std::sqrt(4.0 * shape * shape - 1.0) * 1.5707963267948966;
    const double D = BesselI1(B);
    w[0] = 0.5 * B / D;
    if (n < 2)
        return;
    w[n - 1] = w[0];
    for (int i = 1; i < n - 1; i++) {
        const double u = static_cast<double>(i) / (n - 1);
        const double s = std::sqrt((1.0 - u) * u);
        w[i] = 0.5 * BesselI1(2.0 * B * s) / (s * D);
    }
}

// The Slepian tapers come from the multitaper object, which this library
// doesn't provide yet: w is left as it is, and the codes that use this
// routine build no window.
void CWinFn::Slepian(double *, int, double, int) {}

} // namespace oscilla
