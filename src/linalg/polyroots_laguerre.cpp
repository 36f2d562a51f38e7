// Laguerre's method with deflation and polishing (in the manner of the
// Numerical Recipes zroots/laguer pair).
#include "oscilla/linalg/polyroots.h"

#include <cmath>
#include <vector>

namespace oscilla {

// All roots of sum a[i] x^i, i = 0..n, into roots[1..n], sorted by ascending real part.
void CPolyRoots::ZRoots(complex *a, int n, complex *roots_, int polish)
{
    const double EPS = 4e-12;
    std::vector<complex> ad(a, a + n + 1);
    int its = 0;
    for (int j = n; j >= 1; j--) {
        complex x(0.0, 0.0);
        Laguerre(ad.data(), j, &x, &its); // a non-converged last iterate is kept
        if (std::fabs(x.im) <= 2.0 * EPS * std::fabs(x.re)) x.im = 0.0;
        roots_[j] = x;
        // Forward deflation by synthetic division.
        complex b = ad[j];
        for (int jj = j - 1; jj >= 0; jj--) {
            complex c = ad[jj];
            ad[jj] = b;
            b = x * b + c;
        }
    }
    if (polish)
        for (int j = 1; j <= n; j++) Laguerre(a, n, &roots_[j], &its);
    for (int j = 2; j <= n; j++) {
        complex x = roots_[j];
        int i;
        for (i = j - 1; i >= 1; i--) {
            if (roots_[i].re <= x.re) break;
            roots_[i + 1] = roots_[i];
        }
        roots_[i + 1] = x;
    }
}

// Improves *x towards a root of the degree-m polynomial a[0..m]; 1 when converged.
int CPolyRoots::Laguerre(complex *a, int m, complex *x, int *its)
{
    const double EPSS = 1e-14;
    const int MT = 10, MAXIT = 80;
    // Fractional steps that break limit cycles, one every MT iterations.
    static const double frac[9] = {0.0, 0.5, 0.25, 0.75, 0.13, 0.38, 0.62, 0.88, 1.0};

    for (int iter = 1; iter <= MAXIT; iter++) {
        *its = iter;
        complex b = a[m], d(0.0, 0.0), f(0.0, 0.0);
        double err = abs(b);
        const double abx = abs(*x);
        for (int j = m - 1; j >= 0; j--) {
            f = (*x) * f + d;
            d = (*x) * d + b;
            b = (*x) * b + a[j];
            err = abs(b) + abx * err;
        }
        err *= EPSS;
        if (abs(b) <= err) return 1; // at the round-off level of the evaluation
        const complex g = d / b;
        const complex g2 = g * g;
        const complex h = g2 - 2.0 * (f / b);
        const complex sq = sqrt((double)(m - 1) * ((double)m * h - g2));
        complex gp = g + sq;
        const complex gm = g - sq;
        const double abp = abs(gp), abm = abs(gm);
        if (abp < abm) gp = gm;
        const double big = abp > abm ? abp : abm;
        const complex dx = big > 0.0 ? complex((double)m, 0.0) / gp
                                     : std::exp(std::log(1.0 + abx)) *
                                           complex(std::cos((double)iter), std::sin((double)iter));
        const complex x1 = *x - dx;
        if (x->re == x1.re && x->im == x1.im) return 1;
        if (iter % MT) *x = x1;
        else *x = *x - frac[iter / MT] * dx;
    }
    return 0;
}

} // namespace oscilla
