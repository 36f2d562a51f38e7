// CWinFn: building a window from its code, applying it with its gains, and
// the width and power figures of the code table.
#include "oscilla/windows/cwinfn.h"

#include "windows/window_table.h"

#include <cmath>
#include <cstddef>
#include <cstdlib>

namespace oscilla {

using detail::WinKind;

namespace {

// Whether a code's window can be built here. The Slepian tapers need the
// multitaper object, which this library doesn't provide yet.
bool buildable(const detail::WindowCode *row)
{
    if (!row)
        return true; // not a window: a buffer is still handed out
    return row->kind != WinKind::Slepian;
}

void fill(double *w, int n, const detail::WindowCode *row, double shape)
{
    if (!row) {
        for (int i = 0; i < n; i++)
            w[i] = 0.0;
        return;
    }
    switch (row->kind) {
    case WinKind::NotFilled:
        for (int i = 0; i < n; i++)
            w[i] = 0.0;
        break;
    case WinKind::Rectangular: CWinFn::Rectangular(w, n); break;
    case WinKind::Welch: CWinFn::Welch(w, n); break;
    case WinKind::Bartlett: CWinFn::Bartlett(w, n); break;
    case WinKind::GenCos2: CWinFn::GenCos2(w, n, row->arg); break;
    case WinKind::GenCos3: CWinFn::GenCos3(w, n, row->arg); break;
    case WinKind::GenCos4: CWinFn::GenCos4(w, n, row->arg); break;
    case WinKind::GenCos5: CWinFn::GenCos5(w, n, row->arg); break;
    case WinKind::CosineSq: CWinFn::CosineSq(w, n, shape); break;
    case WinKind::Kaiser: CWinFn::Kaiser(w, n, shape); break;
    case WinKind::TaperedCosine: CWinFn::TaperedCosine(w, n, shape); break;
    case WinKind::ModBartlett: CWinFn::ModBartlett(w, n); break;
    case WinKind::Tukey: CWinFn::Tukey(w, n, row->param); break;
    case WinKind::TriCubeWin: CWinFn::TriCubeWin(w, n, row->param); break;
    case WinKind::BetaWin: CWinFn::BetaWin(w, n, shape); break;
    case WinKind::GaussWin: CWinFn::GaussWin(w, n, shape); break;
    case WinKind::Chebyshev: CWinFn::Chebyshev(w, n, shape); break;
    case WinKind::ChebApprox: CWinFn::ChebApprox(w, n, shape); break;
    case WinKind::VanderMaas: CWinFn::VanderMaas(w, n, shape); break;
    case WinKind::Slepian: CWinFn::Slepian(w, n, shape, row->arg); break;
    case WinKind::Sine: CWinFn::Sine(w, n); break;
    }
}

double fitted(const detail::FittedFigure &f, double s)
{
    return f.exponential ? f.a * std::exp(-s / f.b) + f.c : f.a * std::pow(s, f.b) + f.c;
}

} // namespace

CWinFn::CWinFn() : window(nullptr) {}

CWinFn::CWinFn(int code, int n, double shape) : window(nullptr) { WindowFn(code, n, shape); }

CWinFn::CWinFn(double *data, int first, int code, int n, double shape, double *gains) : window(nullptr)
{
    WindowData(data, first, code, n, shape, gains);
}

CWinFn::~CWinFn() { std::free(window); }

double *CWinFn::WindowFn(int code, int n, double shape)
{
    const detail::WindowCode *row = detail::FindWindowCode(code);
    if (n < 2 || !buildable(row))
        return nullptr;
    std::free(window);
    window = static_cast<double *>(std::malloc(static_cast<std::size_t>(n) * sizeof(double)));
    if (!window)
        return nullptr;
    fill(window, n, row, shape);
    return window;
}

double *CWinFn::WindowFn(int n, int terms, double *coef)
{
    if (n < 2)
        return nullptr;
    std::free(window);
    window = static_cast<double *>(std::calloc(static_cast<std::size_t>(n), sizeof(double)));
    if (!window)
        return nullptr;
    GenCosUser(window, n, terms, coef);
    return window;
}

double *CWinFn::Get() { return window; }

int CWinFn::WindowData(double *data, int first, int code, int n, double shape, double *gains)
{
    if (!data || first < 0)
        return 0;
    const double *w = WindowFn(code, n, shape);
    if (!w)
        return 0; // nothing built by this call: the data stay as they are
    double *d = data + first;
    if (!gains) {
        for (int i = 0; i < n; i++)
            d[i] *= w[i];
        return 1;
    }
    double p0 = 0.0, p1 = 0.0, s = 0.0;
    for (int i = 0; i < n; i++) {
        const double v = d[i];
        p0 += v * v;
        d[i] = v * w[i];
        p1 += d[i] * d[i];
        s += w[i];
    }
    gains[0] = p1 != 0.0 ? p0 / p1 : 0.0;
    gains[1] = 1.0 / (s / n);
    return 1;
}

double CWinFn::Width(int code, double shape)
{
    const detail::WindowCode *row = detail::FindWindowCode(code);
    if (!row)
        return 0.0;
    switch (row->widthKind) {
    case detail::WidthKind::Value: return row->width;
    case detail::WidthKind::Shape: return shape;
    case detail::WidthKind::W1: return 0.2435419687771167 * std::exp(shape / 0.3118937960295506) + 0.7839389369832871;
    case detail::WidthKind::W2: return 0.03675384615384615 * shape + 0.2801538461538462;
    }
    return 0.0;
}

double CWinFn::PowerReduction(int code, double shape)
{
    // Codes from 40 up carry no measured figure.
    if (code >= 40)
        return 1.0;
    const detail::WindowCode *row = detail::FindWindowCode(code);
    if (!row)
        return 1.0;
    if (row->powerKind == detail::PowerKind::Value)
        return row->power;
    return fitted(detail::kPowerFormulas[static_cast<int>(row->powerKind) - 1], shape);
}

} // namespace oscilla
