// The two Dolph-Chebyshev windows: by transform of the Chebyshev response
// (code 30) and by a fitted degree-20 Chebyshev polynomial in the position
// along the window (code 31).
#include "oscilla/windows/cwinfn.h"

#include "oscilla/series/mathsupport.h"
#include "oscilla/series/xy.h"
#include "oscilla/spectrum/cfft.h"
#include "windows/window_table.h"

#include <cmath>
#include <cstdlib>

namespace oscilla {

namespace {

// Each even coefficient of the fit as a polynomial in the attenuation A
// (coefficients of A^5 .. A^0) plus a polynomial in r = 1/A.
struct ChebCoefRow {
    int index;
    bool hasA;
    double a[6];
    int nr;       // number of r coefficients, highest power first
    double r[10];
    bool rFactor; // the r polynomial has no constant term: it is multiplied by r once more
};

const ChebCoefRow kChebCoefRows[11] = {
    {0, true,
     {-1.610545244779786e-13, 1.435580063095168e-10, -5.573872141576466e-8, 1.234642429719602e-5,
      -0.001750211769289048, 0.2406446275655643},
     4, {-222299.5171731789, 18787.75173463684, -401.6596095208749, 12.62420180059968}, true},
    {2, false, {},
     9, {15303526476343.2, -1616326924459.58, 76720778245.17113, -2196540114.401068, 42642167.34296326,
         -583985.4329372683, 6314.294574762436, -60.77791776857242, -0.114966652002957}, false},
    {4, true,
     {-1.45540185568732e-13, 1.38278057430379e-10, -5.618573168142057e-8, 1.291021111374069e-5,
      -0.001982809307574176, 0.3834193392727281},
     4, {-950840.71016696, 88282.41773453065, -2364.307304696957, 11.27920779300572}, true},
    {6, true,
     {-7.403039519884179e-13, 6.047254665764969e-10, -2.019400084306013e-7, 3.24057047674991e-5,
      -0.001248736534864968, -0.6431667388685176},
     4, {-1262413.442901418, 132936.8863237769, -4994.47471633105, 88.40691411866382}, true},
    {8, true,
     {9.156462412227363e-13, -9.983945974930895e-10, 4.883552627618342e-7, -0.000140071122139604,
      0.02558836078044333, -2.828004848723176},
     4, {-1659869.878001039, 184734.449028261, -8081.120195503556, 193.7168002720762}, true},
    {10, true,
     {1.031977162017046e-12, -1.071708137937413e-9, 4.839779390592954e-7, -0.0001227921858288013,
      0.0187725826798031, -1.860574457360802},
     4, {-983555.4064549132, 113955.4981538064, -5009.37096971694, 121.5595882125579}, true},
    {12, true,
     {5.393008602164853e-13, -5.40668844432207e-10, 2.33292011093107e-7, -5.746338864750336e-5,
      0.009309657414495173, -1.020852953255804},
     4, {-702870.1035058018, 79892.27840208693, -3316.599630130694, 73.95930024580572}, true},
    {14, false, {},
     9, {-95121107953631.7, 10151125721808.49, -473490760622.85, 12632447617.80891, -211046969.8080644,
         2267103.4548145, -15361.79951238877, 60.40295571351758, -0.1063464739692595}, false},
    {16, false, {},
     10, {-7122370820286095.0, 829706058201296.3, -42657167422856.5, 1271118084758.622, -24218942845.97569,
          306716709.2088969, -2590303.065274124, 14121.46995884294, -45.29842477305148, 0.06549051055286628},
     false},
    {18, false, {},
     9, {-24454187129436.44, 2492574246464.376, -110614954727.3954, 2793550134.270791, -43778081.32027222,
         435460.9690676414, -2687.740203709469, 9.434603169807897, -0.01446996828489304}, false},
    {20, true,
     {1.218217064378638e-12, -1.091946153867596e-9, 4.307054238257924e-7, -9.811339502656662e-5,
      0.01422304268081192, -1.359861747191823},
     4, {-714252.9092837648, 76355.9005329237, -3399.73003570827, 85.57602699357979}, true},
};

double horner(const double *c, int count, double x)
{
    double v = 0.0;
    for (int k = 0; k < count; k++)
        v = v * x + c[k];
    return v;
}

} // namespace

void CWinFn::GetChebCoef(double db, double *coef)
{
    if (!coef)
        return;
    double A = db;
    if (A < 50.0)
        A = 50.0;
    if (A > 150.0)
        A = 150.0;
    const double r = 1.0 / A;
    for (int j = 0; j <= 20; j++)
        coef[j] = 0.0;
    for (const ChebCoefRow &row : kChebCoefRows) {
        double v = horner(row.r, row.nr, r);
        if (row.rFactor)
            v *= r;
        if (row.hasA)
            v += horner(row.a, 6, A);
        coef[row.index] = v;
    }
}

// Clenshaw's recurrence for sum c[j] T_j(x), x = (t - 0.5) / 0.5, c[0] whole.
double CWinFn::EvalChebPoly(int degree, double t, double *coef)
{
    if (!coef)
        return 0.0;
    const double x = (t - 0.5) / 0.5;
    double d = 0.0, dd = 0.0;
    for (int j = degree; j >= 1; j--) {
        const double sv = d;
        d = 2.0 * x * d - dd + coef[j];
        dd = sv;
    }
    return x * d - dd + coef[0];
}

void CWinFn::ChebApprox(double *w, int n, double shape)
{
    if (!w)
        return;
    double c[21];
    GetChebCoef(detail::ChebyshevSideLobeDb(shape), c);
    for (int i = 0; i < n; i++)
        w[i] = EvalChebPoly(20, static_cast<double>(i) / (n - 1), c);
}

// Dolph-Chebyshev window of odd length m = n, or n + 1 for even n, as the
// amplitude spectrum of its own frequency response
//   R[k] = delta T_M(cosh(C / M) cos(pi k / m)),  M = m - 1,
// written as T_{M/2}(alpha cos(2 pi k / m) + beta) so that only the half order
// is evaluated. The main lobe peaks at 1 + delta and the side lobes stand at delta.
void CWinFn::Chebyshev(double *w, int n, double shape)
{
    if (!w || n < 2)
        return;
    const double pi = 3.14159265358979323846;
    const int m = n % 2 ? n : n + 1;
    const double delta = std::pow(10.0, -detail::ChebyshevSideLobeDb(shape) / 20.0);
    const double C = Acosh((1.0 + delta) / delta);
    const double M = m - 1;
    const double dF = std::acos(1.0 / std::cosh(C / M)) / pi;
    const double c = std::cos(2.0 * pi * dF);
    const double x0 = (3.0 - c) / (c + 1.0);
    const double alpha = (1.0 + x0) / 2.0, beta = (x0 - 1.0) / 2.0;

    XY *xy = static_cast<XY *>(std::calloc(static_cast<std::size_t>(m) + 1, sizeof(XY)));
    if (!xy) {
        for (int i = 0; i < n; i++)
            w[i] = 0.0;
        return;
    }
    xy[0].x = m;
    for (int k = 0; k < m; k++) {
        const double x = alpha * std::cos(2.0 * pi * k / m) + beta;
        xy[k + 1].x = k + 1;
        xy[k + 1].y = std::fabs(x) <= 1.0 ? delta * std::cos(0.5 * M * std::acos(x))
                                          : delta * std::cosh(0.5 * M * Acosh(x));
    }
    {
        // Automatic kernel at the exact length, no detrending, padding,
        // window or segments; the record in slot 0 stays the object's.
        CFFT fft(xy, KERNEL_AUTO, 0, 0, 0, 0.0, 0, 0.0, 1);
        XY *P = fft.GetXYpFFT(0, 0, 0);
        if (!P || P[1].y == 0.0) {
            for (int i = 0; i < n; i++)
                w[i] = 0.0;
        } else {
            // Bin 0 carries no one-sided factor of 2: restore it, so that the
            // peak comes out as exactly 1.
            P[1].y *= 2.0;
            const double peak = P[1].y;
            // The peak stands at h = n/2; bins run outwards from it. For even n
            // the window has one sample more before the peak than after it.
            const int h = n / 2;
            for (int i = 1; i <= h + 1; i++)
                w[i - 1] = P[h + 2 - i].y / peak;
            for (int i = h + 2; i <= n; i++)
                w[i - 1] = P[i - h].y / peak;
        }
    }
    std::free(xy);
}

} // namespace oscilla
