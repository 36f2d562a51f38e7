// CScan: interpolation and the refinement of an extremum between samples.
#include "oscilla/estimate/cscan.h"
#include "oscilla/series/cxy.h"

#include "series/xy_access.h"

#include <cmath>
#include <cstdlib>

namespace oscilla {

using detail::xy_count;

// The same Neville scheme as the series container's: one implementation
// serves both (fallback mean and clamp range from ya[1..4]).
double CScan::polint(double *xa, double *ya, int n, double x, int limit)
{
    return CXY::polint(xa, ya, n, x, limit);
}

// Natural cubic spline: second derivatives zero at both ends, the tridiagonal
// system solved by one forward sweep and back substitution.
void CScan::SplineCoef(XY *xy)
{
    std::free(splineY2);
    splineY2 = nullptr;
    splineSeries = xy;
    splineCount = xy ? xy_count(xy) : 0;
    if (!xy)
        return;
    const int n = splineCount;
    double *y2 = static_cast<double *>(std::calloc(static_cast<size_t>(n) + 1, sizeof(double)));
    double *u = static_cast<double *>(std::calloc(static_cast<size_t>(n) + 1, sizeof(double)));
    if (!y2 || !u) {
        std::free(y2);
        std::free(u);
        return;
    }
    for (int i = 2; i < n; i++) {
        const double sig = (xy[i].x - xy[i - 1].x) / (xy[i + 1].x - xy[i - 1].x);
        const double p = sig * y2[i - 1] + 2.0;
        y2[i] = (sig - 1.0) / p;
        u[i] = (xy[i + 1].y - xy[i].y) / (xy[i + 1].x - xy[i].x) - (xy[i].y - xy[i - 1].y) / (xy[i].x - xy[i - 1].x);
        u[i] = (6.0 * u[i] / (xy[i + 1].x - xy[i - 1].x) - sig * u[i - 1]) / p;
    }
    if (n >= 1)
        y2[n] = 0.0;
    for (int k = n - 1; k >= 1; k--)
        y2[k] = y2[k] * y2[k + 1] + u[k];
    std::free(u);
    splineY2 = y2;
}

double CScan::SplineEval(double x)
{
    if (!splineY2 || !splineSeries || splineCount < 1)
        return 0.0;
    const XY *xy = splineSeries;
    const int n = splineCount;
    if (x < xy[1].x)
        x = xy[1].x;
    if (x > xy[n].x)
        x = xy[n].x;
    int klo = 1, khi = n;
    while (khi - klo > 1) {
        const int k = (khi + klo) >> 1;
        if (xy[k].x > x)
            khi = k;
        else
            klo = k;
    }
    const double h = xy[khi].x - xy[klo].x;
    if (h == 0.0)
        return 0.0;
    const double a = (xy[khi].x - x) / h;
    const double b = (x - xy[klo].x) / h;
    return a * xy[klo].y + b * xy[khi].y +
           ((a * a * a - a) * splineY2[klo] + (b * b * b - b) * splineY2[khi]) * (h * h) / 6.0;
}

// The first point whose x is at or above v, in an ascending series, kept in 1..n.
int CScan::BisecXY(XY *xy, double v)
{
    if (!xy)
        return 0;
    const int n = xy_count(xy);
    if (n < 1)
        return 0;
    int lo = 1, hi = n;
    while (lo < hi) {
        const int mid = lo + (hi - lo) / 2;
        if (xy[mid].x < v)
            lo = mid + 1;
        else
            hi = mid;
    }
    return lo;
}

// Brent's one-dimensional minimisation (golden section with parabolic steps)
// over the interpolant of the samples around idx, negated for a maximum.
int CScan::RefineCtr(XY *xy, int idx, double &y, double &x, int minimum, double tol, int useSpline)
{
    if (!xy)
        return 0;
    const int n = xy_count(xy);
    if (idx < 1 || idx > n)
        return 0;
    if (idx == 1 || idx == n) {
        y = xy[idx].y;
        x = xy[idx].x;
        return 0;
    }

    const double sgn = minimum ? 1.0 : -1.0;
    double a, b;
    double xa[5], ya[5];
    int npts = 4;
    if (useSpline) {
        // The coefficients must belong to this series; build them if they don't.
        if (!splineY2 || splineSeries != xy || splineCount != n)
            SplineCoef(xy);
        a = xy[idx - 1].x;
        b = xy[idx + 1].x;
    } else {
        int s = idx - 1;
        if (s != 1) {
            const bool left = minimum ? xy[idx - 1].y < xy[idx + 1].y : xy[idx - 1].y > xy[idx + 1].y;
            if (left)
                s = idx - 2;
        }
        // At idx = n - 1 the stencil would take the element after the last
        // point, which holds metadata in spectrum records: move it left, or
        // use the three points there are.
        if (s + 3 > n) {
            if (n >= 4)
                s = n - 3;
            else
                npts = n - s + 1;
        }
        for (int k = 1; k <= 4; k++) {
            const int p = s + (k <= npts ? k : npts) - 1;
            xa[k] = xy[p].x;
            ya[k] = xy[p].y;
        }
        a = xa[1];
        b = xa[npts];
    }
    auto f = [&](double u) { return sgn * (useSpline ? SplineEval(u) : polint(xa, ya, npts, u, 0)); };

    const double CGOLD = 0.381966;
    double xx = xy[idx].x, w = xx, v = xx;
    double fx = sgn * xy[idx].y, fw = fx, fv = fx;
    double d = 0.0, e = 0.0;
    for (int iter = 1; iter <= 200; iter++) {
        const double xm = 0.5 * (a + b);
        const double tol1 = std::fabs(xx) * tol + 1e-10;
        const double tol2 = 2.0 * tol1;
        if (std::fabs(xx - xm) <= tol2 - 0.5 * (b - a)) {
            x = xx;
            y = sgn * fx;
            return 1;
        }
        bool golden = true;
        if (std::fabs(e) > tol1) {
            const double r = (xx - w) * (fx - fv);
            double q = (xx - v) * (fx - fw);
            double p = (xx - v) * q - (xx - w) * r;
            q = 2.0 * (q - r);
            if (q > 0.0)
                p = -p;
            q = std::fabs(q);
            const double etemp = e;
            e = d;
            if (!(std::fabs(p) >= std::fabs(0.5 * q * etemp) || p <= q * (a - xx) || p >= q * (b - xx))) {
                d = q == 0.0 ? 0.0 : p / q;
                const double u = xx + d;
                if (u - a < tol2 || b - u < tol2)
                    d = xm - xx > 0.0 ? tol1 : -tol1;
                golden = false;
            }
        }
        if (golden) {
            e = xm <= xx ? a - xx : b - xx;
            d = CGOLD * e;
        }
        const double u = std::fabs(d) >= tol1 ? xx + d : (d > 0.0 ? xx + tol1 : xx - tol1);
        const double fu = f(u);
        if (fx >= fu) {
            if (xx <= u)
                a = xx;
            else
                b = xx;
            v = w;
            fv = fw;
            w = xx;
            fw = fx;
            xx = u;
            fx = fu;
        } else {
            if (xx <= u)
                b = u;
            else
                a = u;
            if (fu <= fw || w == xx) {
                v = w;
                fv = fw;
                w = u;
                fw = fu;
            } else if (fu <= fv || v == xx || v == w) {
                v = u;
                fv = fu;
            }
        }
    }
    return 0;
}

} // namespace oscilla
