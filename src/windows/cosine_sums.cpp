// Cosine-sum windows: a0 - a1 cos(i t) + a2 cos(2 i t) - a3 cos(3 i t) + a4 cos(4 i t)
// with t = 2 pi / (n - 1), from the coefficient rows of the code table or the caller.
#include "oscilla/windows/cwinfn.h"

#include "windows/window_table.h"

#include <cmath>

namespace oscilla {

namespace {

constexpr double kTwoPi = 6.283185307179586476925;

// Alternating-sign sum of up to five cosine terms.
void cosine_sum(double *w, int n, const double *a, int terms)
{
    if (!w || n < 1)
        return;
    const double t = kTwoPi / (n - 1);
    for (int i = 0; i < n; i++) {
        const double x = i * t;
        double v = a[0];
        if (terms > 1)
            v -= a[1] * std::cos(x);
        if (terms > 2)
            v += a[2] * std::cos(2.0 * x);
        if (terms > 3)
            v -= a[3] * std::cos(3.0 * x);
        if (terms > 4)
            v += a[4] * std::cos(4.0 * x);
        w[i] = v;
    }
}

// Coefficients of row `selector` (one-based) of a table, or zeros outside it.
template <int Rows, int Terms>
void cosine_sum_row(double *w, int n, int selector, const double (&table)[Rows][Terms])
{
    static const double zeros[5] = {0.0, 0.0, 0.0, 0.0, 0.0};
    const double *a = (selector >= 1 && selector <= Rows) ? table[selector - 1] : zeros;
    cosine_sum(w, n, a, Terms);
}

} // namespace

void CWinFn::GenCos2(double *w, int n, int selector) { cosine_sum_row(w, n, selector, detail::kGenCos2); }

void CWinFn::GenCos3(double *w, int n, int selector)
{
    if (selector == 6) {
        // The one row that depends on the length.
        const double q = std::sin(0.5 * kTwoPi / (n - 1)) / std::sin(kTwoPi / (n - 1));
        const double r = q * q;
        const double a[3] = {(1.0 - r) / 2.0, 0.5, r / 2.0};
        cosine_sum(w, n, a, 3);
        return;
    }
    cosine_sum_row(w, n, selector, detail::kGenCos3);
}

void CWinFn::GenCos4(double *w, int n, int selector) { cosine_sum_row(w, n, selector, detail::kGenCos4); }

void CWinFn::GenCos5(double *w, int n, int selector) { cosine_sum_row(w, n, selector, detail::kGenCos5); }

// Caller's coefficients: at most five count; none, or no array, gives zeros.
void CWinFn::GenCosUser(double *w, int n, int terms, double *coef)
{
    if (!w || n < 1)
        return;
    if (!coef || terms < 1) {
        for (int i = 0; i < n; i++)
            w[i] = 0.0;
        return;
    }
    cosine_sum(w, n, coef, terms > 5 ? 5 : terms);
}

} // namespace oscilla
