// CXY measures and statistics: spacing, area, power, weighted regression,
// sums of squares and the two noise estimates.
#include "oscilla/series/cxy.h"

#include "series/xy_access.h"

#include <cmath>
#include <cstring>
#include <vector>

namespace oscilla {

using detail::xy_count;
using detail::xy_exact_inactive;

namespace {

// Marks the header with the outcome of a spacing scan; the two bits exclude each other.
void mark_spacing(XY *xy, bool uniform)
{
    int f = xy[0].flag;
    if (uniform)
        f = (f | XY_HDR_UNIFORM) & ~XY_HDR_NONUNIFORM;
    else
        f = (f | XY_HDR_NONUNIFORM) & ~XY_HDR_UNIFORM;
    xy[0].flag = static_cast<signed char>(f);
}

// Every gap x[i] - x[i-1], i = 3..N, against [lo d, hi d] with d = x[2] - x[1];
// stops at the first gap outside.
bool gaps_within(const XY *xy, int n, double lofac, double hifac)
{
    const double d = xy[2].x - xy[1].x;
    const double lo = lofac * d, hi = hifac * d;
    for (int i = 3; i <= n; i++) {
        const double g = xy[i].x - xy[i - 1].x;
        if (g < lo || g > hi)
            return false;
    }
    return true;
}

// Horner evaluation, coefficients highest power first.
template <size_t K>
double horner(const double (&c)[K], double x)
{
    double p = 0.0;
    for (size_t k = 0; k < K; k++)
        p = p * x + c[k];
    return p;
}

// Calibration polynomials of the Gaussian noise estimate: the level in percent
// from the mean absolute residual in units of sd, and from the root of the
// residual-to-total variance ratio.
const double kNoiseFromAbsResid[8] = {4289.553675700584,  -11549.48614715645, 11703.52516751066,
                                      -5304.260114274041, 994.2354162728265,  -6.845218480868838,
                                      79.90137359331042,  0.335521575829068};
const double kNoiseFromVarRatio[8] = {1112.112147884841,  -4024.399173679832, 5666.2530685807,
                                      -3841.8100368794,   1295.010930714868,  -184.2245285267929,
                                      80.12153279479253,  0.01695537426861433};

// Scale of the uniform noise estimate: 100 sum|r| / (c max|y|) times this gives percent.
const double kUniformNoiseScale = 3.890323139103122;

// Leave-one-out residuals: each inner point i = 3..N-2 predicted by the cubic
// through its two neighbours on either side.
struct LooResiduals {
    int c = 0;
    double sumabs = 0.0, sumsq = 0.0; // of the residuals
    double sumy = 0.0, sumy2 = 0.0;   // of the visited y
    double maxabsy = 0.0;
};

LooResiduals loo_residuals(const XY *xy)
{
    LooResiduals s;
    const int n = xy_count(xy);
    for (int i = 3; i <= n - 2; i++) {
        double xa[5] = {0.0, xy[i - 2].x, xy[i - 1].x, xy[i + 1].x, xy[i + 2].x};
        double ya[5] = {0.0, xy[i - 2].y, xy[i - 1].y, xy[i + 1].y, xy[i + 2].y};
        const double y = xy[i].y;
        const double r = y - CXY::polint(xa, ya, 4, xy[i].x, 0);
        s.c++;
        s.sumabs += std::fabs(r);
        s.sumsq += r * r;
        s.sumy += y;
        s.sumy2 += y * y;
        if (std::fabs(y) > s.maxabsy)
            s.maxabsy = std::fabs(y);
    }
    return s;
}

} // namespace

double CXY::XSpacing(XY *xy)
{
    if (!xy)
        xy = pxy;
    if (!xy)
        return 0.0;
    const int n = xy_count(xy);
    if (n < 2)
        return 0.0;
    // A tighter tolerance than the spectrum object's own scan (0.1 against 1 percent).
    if (!(xy[0].flag & XY_HDR_UNIFORM))
        mark_spacing(xy, gaps_within(xy, n, 0.999, 1.001));
    return (xy[n].x - xy[1].x) / (n - 1);
}

int CXY::IsUniformX(XY *xy, double tol)
{
    const int n = xy_count(xy);
    if (n < 2)
        return 0;
    const bool uniform = gaps_within(xy, n, 1.0 - tol, 1.0 + tol);
    mark_spacing(xy, uniform);
    return uniform ? 1 : 0;
}

double CXY::Area(XY *xy)
{
    if (!xy)
        xy = pxy;
    if (!xy)
        return 0.0;
    const int n = xy_count(xy);
    if (n < 2)
        return 0.0;
    double sum = (xy[2].x - xy[1].x) * xy[1].y / 2.0;
    for (int i = 2; i < n; i++)
        sum += xy[i].y * (xy[i + 1].x - xy[i - 1].x) / 2.0;
    sum += (xy[n].x - xy[n - 1].x) * xy[n].y / 2.0;
    return sum;
}

double CXY::Power(XY *xy)
{
    if (!xy)
        xy = pxy;
    if (!xy)
        return 0.0;
    const int n = xy_count(xy);
    if (n < 2)
        return 0.0;
    // The end terms take the full gap, not half of it as Area does.
    double sum = xy[1].y * xy[1].y * (xy[2].x - xy[1].x);
    for (int i = 2; i < n; i++)
        sum += xy[i].y * xy[i].y * (xy[i + 1].x - xy[i - 1].x) / 2.0;
    sum += xy[n].y * xy[n].y * (xy[n].x - xy[n - 1].x);
    return sum;
}

void CXY::XYStats(XY *xy, XYSTATS *stats, int stride)
{
    if (!stats)
        return;
    const int n = xy_count(xy);
    if (stride < 1)
        stride = 1;
    int cnt = 0;
    double W = 0.0;
    for (int i = 1; i <= n; i += stride) {
        if (xy_exact_inactive(xy[i].flag))
            continue;
        // An unweighted point gets weight 1, written back into the record.
        if (xy[i].w == 0.0)
            xy[i].w = 1.0;
        W += xy[i].w;
        cnt++;
    }
    if (W == 0.0) {
        std::memset(stats, 0, sizeof(XYSTATS));
        return;
    }
    double swx = 0.0, swy = 0.0, swx2 = 0.0, swy2 = 0.0, swxy = 0.0;
    for (int i = 1; i <= n; i += stride) {
        if (xy_exact_inactive(xy[i].flag))
            continue;
        const double w = xy[i].w, x = xy[i].x, y = xy[i].y;
        swx += w * x;
        swy += w * y;
        swx2 += w * x * x;
        swy2 += w * y * y;
        swxy += w * x * y;
    }
    stats->n = cnt;
    stats->sumw = W;
    stats->sumwx = swx;
    stats->sumwy = swy;
    stats->sumwx2 = swx2;
    stats->sumwy2 = swy2;
    stats->sumwxy = swxy;
    stats->xmean = swx / W;
    stats->ymean = swy / W;
    stats->xsd = std::sqrt((W * swx2 - swx * swx) / ((W - 1.0) * W));
    stats->ysd = std::sqrt((W * swy2 - swy * swy) / ((W - 1.0) * W));
    // Weights are rescaled to sum to the point count for the fit.
    const double r = cnt / W;
    stats->ssm = r * (swy2 - swy * swy / W);
    const double A = r * swx, B = r * swx2;
    const double D = cnt * B - A * A;
    if (D == 0.0) {
        stats->slope = 0.0;
        stats->intercept = 0.0;
        stats->sse = stats->ssm;
        return;
    }
    const double E = r * swxy, F = r * swy;
    stats->slope = (cnt * E - A * F) / D;
    stats->intercept = (F * B - E * A) / D;
    stats->sse = r * swy2 - stats->intercept * F - stats->slope * E;
}

double CXY::SSM(XY *xy)
{
    if (!xy)
        xy = pxy;
    if (!xy)
        return 0.0;
    const int n = xy_count(xy);
    if (n < 1)
        return 0.0;
    double s = 0.0, s2 = 0.0;
    for (int i = 1; i <= n; i++) {
        s += xy[i].y;
        s2 += xy[i].y * xy[i].y;
    }
    return s2 - s * s / n;
}

double CXY::ComputeSSM(XY *xy, int useweights)
{
    if (!xy)
        xy = pxy;
    if (!xy)
        return 0.0;
    const int n = xy_count(xy);
    int cnt = 0;
    double W = 0.0, swy = 0.0, swy2 = 0.0;
    for (int i = 1; i <= n; i++) {
        if (xy_exact_inactive(xy[i].flag))
            continue;
        const double w = (useweights && xy[i].w > 0.0) ? xy[i].w : 1.0;
        W += w;
        swy += w * xy[i].y;
        swy2 += w * xy[i].y * xy[i].y;
        cnt++;
    }
    if (cnt == 0)
        return 0.0;
    return (cnt / W) * (swy2 - swy * swy / W);
}

double CXY::SSE(XY *a, XY *b)
{
    if (!a)
        a = pxy;
    if (!b)
        b = xyp;
    if (!a || !b)
        return 0.0;
    int n = xy_count(a);
    const int nb = xy_count(b);
    if (nb < n)
        n = nb;
    double s = 0.0;
    for (int i = 1; i <= n; i++) {
        const double d = a[i].y - b[i].y;
        s += d * d;
    }
    return s;
}

double CXY::SSE(XY *xy, double (*fn)(double))
{
    if (!fn)
        return 0.0;
    if (!xy)
        xy = pxy;
    if (!xy)
        return 0.0;
    const int n = xy_count(xy);
    double s = 0.0;
    for (int i = 1; i <= n; i++) {
        const double d = xy[i].y - fn(xy[i].x);
        s += d * d;
    }
    return s;
}

void CXY::Std(int n, double sum, double sum2, double &mean, double &sd)
{
    // A single sample is handed back as both its mean and its deviation.
    if (n == 1) {
        mean = sum;
        sd = sum;
        return;
    }
    mean = sum / n;
    sd = std::sqrt((n * sum2 - sum * sum) / ((n - 1.0) * n));
}

void CXY::IVar(int n, double sum, double sum2, double &mean, double &ivar)
{
    if (n == 1) {
        mean = sum;
        ivar = 0.0;
        return;
    }
    mean = sum / n;
    const double v = (n * sum2 - sum * sum) / ((n - 1.0) * n);
    ivar = v == 0.0 ? 0.0 : 1.0 / v;
}

// Polynomial interpolation by Neville's algorithm (the tableau of differences
// c and d corrected from the entry nearest x), arrays from index 1. The range
// and mean used for the fallback and the clamp are always those of ya[1..4].
double CXY::polint(double *xa, double *ya, int n, double x, int clamp)
{
    double ymin = ya[1], ymax = ya[1], mean = 0.0;
    for (int i = 1; i <= 4; i++) {
        if (ya[i] < ymin)
            ymin = ya[i];
        if (ya[i] > ymax)
            ymax = ya[i];
        mean += ya[i];
    }
    mean /= 4.0;
    if (n < 1)
        return mean;

    double cbuf[9], dbuf[9];
    std::vector<double> cvec, dvec;
    double *c = cbuf, *d = dbuf;
    if (n > 8) {
        cvec.resize(static_cast<size_t>(n) + 1);
        dvec.resize(static_cast<size_t>(n) + 1);
        c = cvec.data();
        d = dvec.data();
    }
    int ns = 1;
    double dif = std::fabs(x - xa[1]);
    for (int i = 1; i <= n; i++) {
        const double dift = std::fabs(x - xa[i]);
        if (dift < dif) {
            ns = i;
            dif = dift;
        }
        c[i] = ya[i];
        d[i] = ya[i];
    }
    double y = ya[ns--];
    for (int m = 1; m < n; m++) {
        for (int i = 1; i <= n - m; i++) {
            const double ho = xa[i] - x;
            const double hp = xa[i + m] - x;
            const double w = c[i + 1] - d[i];
            double den = ho - hp;
            // Two equal abscissae: no polynomial through them, fall back on the mean.
            if (den == 0.0)
                return mean;
            den = w / den;
            d[i] = hp * den;
            c[i] = ho * den;
        }
        const double dy = (2 * ns < (n - m)) ? c[ns + 1] : d[ns--];
        y += dy;
    }
    if (clamp) {
        if (y < ymin)
            y = ymin;
        if (y > ymax)
            y = ymax;
    }
    return y;
}

double CXY::UniNoise(XY *xy)
{
    if (!xy)
        xy = pxy;
    if (!xy)
        return 0.0;
    const LooResiduals s = loo_residuals(xy);
    if (s.c == 0 || s.maxabsy == 0.0)
        return 0.0;
    const double p = 100.0 * s.sumabs / (s.c * s.maxabsy);
    return kUniformNoiseScale * p;
}

double CXY::GaussNoise(XY *xy)
{
    if (!xy)
        xy = pxy;
    if (!xy)
        return 0.0;
    const LooResiduals s = loo_residuals(xy);
    if (s.c == 0)
        return 0.0;
    const double c = s.c;
    const double v = s.c == 1 ? 0.0 : (c * s.sumy2 - s.sumy * s.sumy) / ((c - 1.0) * c);
    const double sd = std::sqrt(v);
    // With no spread in y the ratios are infinite or undefined; the caps turn
    // either into their limits.
    double a = (s.sumabs / c) / sd;
    if (!(a <= 1.1))
        a = 1.1;
    const double p1 = horner(kNoiseFromAbsResid, a);
    double b = (s.sumsq / c) / v;
    if (!(b <= 2.0))
        b = 2.0;
    b = std::sqrt(b);
    const double p2 = horner(kNoiseFromVarRatio, b);
    const double level = (p1 + p2) / 2.0;
    return level < 0.0 ? 0.0 : level;
}

} // namespace oscilla
