// Jenkins-Traub three-stage algorithm for the zeros of a complex polynomial,
// after the published CPOLY procedure (ACM algorithm 419), one-based arrays.
#include "oscilla/linalg/polyroots.h"

#include <cmath>
#include <cstdlib>

namespace oscilla {

int CPolyRoots::CPolyAlloc(int n)
{
    CPolyFree();
    double **arrays[10] = {&pr, &pi, &hr, &hi, &qpr, &qpi, &qhr, &qhi, &shr, &shi};
    for (double **p : arrays) {
        *p = (double *)std::calloc((size_t)n + 1, sizeof(double));
        if (!*p) {
            CPolyFree();
            return 0;
        }
    }
    return 1;
}

void CPolyRoots::CPolyFree()
{
    double **arrays[10] = {&pr, &pi, &hr, &hi, &qpr, &qpi, &qhr, &qhi, &shr, &shi};
    for (double **p : arrays) {
        std::free(*p);
        *p = nullptr;
    }
}

// Constants of the arithmetic: precision, largest and smallest number, base.
void CPolyRoots::MCON(double *eta_, double *infin_, double *smalno_, double *base)
{
    *base = 2.0;
    *eta_ = 2.220446049250313e-16;
    *infin_ = 1.7976931348621742e308;
    *smalno_ = 2.2250738585072014e-308;
}

// Zeros of sum (opr + i opi)[k] x^(n+1-k), k = 1..n+1, into zeror, zeroi [1..n].
// 1 on success; 0 when the leading coefficient is zero or no shift converges.
int CPolyRoots::CPoly(double *opr, double *opi, int degree_, double *zeror, double *zeroi)
{
    double xx, yy, cosr, sinr, xxx, zr = 0, zi = 0, bnd, base;
    int i, idnn2, cnt1, cnt2;

    MCON(&eta, &infin, &smalno, &base);
    are = eta;
    mre = 2.8284271247461903 * eta; // 2 sqrt(2) eta
    // Start direction and the 94-degree rotation between shifts.
    xx = 0.70710678;
    yy = -xx;
    cosr = -0.069756474;
    sinr = 0.99756405;
    nn = degree_ + 1;

    if (degree_ < 1) return 0;
    if (opr[1] == 0.0 && opi[1] == 0.0) return 0;

    // Zeros at the origin.
    while (nn > 1 && opr[nn] == 0.0 && opi[nn] == 0.0) {
        idnn2 = degree_ - nn + 2;
        zeror[idnn2] = 0.0;
        zeroi[idnn2] = 0.0;
        nn--;
    }
    if (nn == 1) return 1;

    if (!CPolyAlloc(nn)) return 0;
    for (i = 1; i <= nn; i++) {
        pr[i] = opr[i];
        pi[i] = opi[i];
        shr[i] = CMOD(pr[i], pi[i]);
    }
    bnd = SCALE1(nn, shr, eta, infin, smalno, base);
    if (bnd != 1.0)
        for (i = 1; i <= nn; i++) {
            pr[i] *= bnd;
            pi[i] *= bnd;
        }

    for (;;) {
        if (nn <= 2) {
            // The last zero from the linear term.
            CDIVID(-pr[2], -pi[2], pr[1], pi[1], &zeror[degree_], &zeroi[degree_]);
            CPolyFree();
            return 1;
        }
        // Lower bound on the moduli of the zeros.
        for (i = 1; i <= nn; i++) shr[i] = CMOD(pr[i], pi[i]);
        bnd = CAUCHY(nn, shr, shi);

        int conv = 0;
        // Two major passes with different sequences of shifts.
        for (cnt1 = 1; cnt1 <= 2 && !conv; cnt1++) {
            NOSHFT(5);
            for (cnt2 = 1; cnt2 <= 9; cnt2++) {
                // Shift of modulus bnd, rotated by 94 degrees from the previous one.
                xxx = cosr * xx - sinr * yy;
                yy = sinr * xx + cosr * yy;
                xx = xxx;
                sr = bnd * xx;
                si = bnd * yy;
                if (FXSHFT(10 * cnt2, &zr, &zi)) {
                    conv = 1;
                    break;
                }
            }
        }
        if (!conv) {
            CPolyFree();
            return 0;
        }
        // Store the zero and deflate.
        idnn2 = degree_ - nn + 2;
        zeror[idnn2] = zr;
        zeroi[idnn2] = zi;
        nn--;
        for (i = 1; i <= nn; i++) {
            pr[i] = qpr[i];
            pi[i] = qpi[i];
        }
    }
}

// Derivative as the first H polynomial, then l1 no-shift H polynomials.
void CPolyRoots::NOSHFT(int l1)
{
    int i, j, jj, n = nn - 1, nm1 = n - 1;
    double xni, t1, t2;
    for (i = 1; i <= n; i++) {
        xni = nn - i;
        hr[i] = xni * pr[i] / n;
        hi[i] = xni * pi[i] / n;
    }
    for (jj = 1; jj <= l1; jj++) {
        if (CMOD(hr[n], hi[n]) > eta * 10.0 * CMOD(pr[n], pi[n])) {
            CDIVID(-pr[nn], -pi[nn], hr[n], hi[n], &tr, &ti);
            for (i = 1; i <= nm1; i++) {
                j = nn - i;
                t1 = hr[j - 1];
                t2 = hi[j - 1];
                hr[j] = tr * t1 - ti * t2 + pr[j];
                hi[j] = tr * t2 + ti * t1 + pi[j];
            }
            hr[1] = pr[1];
            hi[1] = pi[1];
        } else {
            // Constant term essentially zero: shift the H coefficients.
            for (i = 1; i <= nm1; i++) {
                j = nn - i;
                hr[j] = hr[j - 1];
                hi[j] = hi[j - 1];
            }
            hr[1] = 0.0;
            hi[1] = 0.0;
        }
    }
}

// l2 fixed-shift H polynomials with a convergence test; on weak convergence starts
// the variable-shift stage. 1 with the zero in (zr, zi).
int CPolyRoots::FXSHFT(int l2, double *zr, double *zi)
{
    int i, j, n = nn - 1, test = 1, pasd = 0, bol = 0;
    double otr, oti, svsr, svsi;

    POLYEV(nn, sr, si, pr, pi, qpr, qpi, &pvr, &pvi);
    CALCT(&bol);
    for (j = 1; j <= l2; j++) {
        otr = tr;
        oti = ti;
        NEXTH(bol);
        CALCT(&bol);
        *zr = sr + tr;
        *zi = si + ti;
        // Test unless stage three has failed once or this is the last H polynomial.
        if (bol || !test || j == l2) continue;
        if (CMOD(tr - otr, ti - oti) >= 0.5 * CMOD(*zr, *zi)) {
            pasd = 0;
            continue;
        }
        if (!pasd) {
            pasd = 1;
            continue;
        }
        // Weak test passed twice: third stage, after saving H and the shift.
        for (i = 1; i <= n; i++) {
            shr[i] = hr[i];
            shi[i] = hi[i];
        }
        svsr = sr;
        svsi = si;
        if (VRSHFT(10, zr, zi)) return 1;
        // Failed: no more testing; restore H, s, p(s) and t.
        test = 0;
        for (i = 1; i <= n; i++) {
            hr[i] = shr[i];
            hi[i] = shi[i];
        }
        sr = svsr;
        si = svsi;
        POLYEV(nn, sr, si, pr, pi, qpr, qpi, &pvr, &pvi);
        CALCT(&bol);
    }
    // One more try with the final H polynomial of the second stage.
    return VRSHFT(10, zr, zi);
}

// Variable-shift iteration from (zr, zi); 1 with the converged zero in (zr, zi).
int CPolyRoots::VRSHFT(int l3, double *zr, double *zi)
{
    int i, j, b = 0, bol = 0;
    double mp, ms, omp = 0.0, relstp = 0.0, r1, r2, tp;

    sr = *zr;
    si = *zi;
    for (i = 1; i <= l3; i++) {
        POLYEV(nn, sr, si, pr, pi, qpr, qpi, &pvr, &pvi);
        mp = CMOD(pvr, pvi);
        ms = CMOD(sr, si);
        if (mp <= 20.0 * ERREV(nn, qpr, qpi, ms, mp, are, mre)) {
            // |p(s)| is within the bound on its rounding error: converged.
            *zr = sr;
            *zi = si;
            return 1;
        }
        if (i != 1) {
            if (!b && mp >= omp && relstp < 0.05) {
                // Stalled, probably in a cluster of zeros: a one-time perturbed shift
                // and five fixed-shift steps to let one zero dominate.
                tp = relstp;
                b = 1;
                if (relstp < eta) tp = eta;
                r1 = std::sqrt(tp);
                r2 = sr * (r1 + 1.0) - si * r1;
                si = sr * r1 + si * (r1 + 1.0);
                sr = r2;
                POLYEV(nn, sr, si, pr, pi, qpr, qpi, &pvr, &pvi);
                for (j = 1; j <= 5; j++) {
                    CALCT(&bol);
                    NEXTH(bol);
                }
                omp = infin;
                goto next;
            }
            // Give up when |p| grows significantly.
            if (mp * 0.1 > omp) return 0;
        }
        omp = mp;
    next:
        CALCT(&bol);
        NEXTH(bol);
        CALCT(&bol);
        if (!bol) {
            relstp = CMOD(tr, ti) / CMOD(sr, si);
            sr += tr;
            si += ti;
        }
    }
    return 0;
}

// t = -p(s)/h(s); *bol set when h(s) is essentially zero.
void CPolyRoots::CALCT(int *bol)
{
    int n = nn - 1;
    double hvr, hvi;
    POLYEV(n, sr, si, hr, hi, qhr, qhi, &hvr, &hvi);
    *bol = CMOD(hvr, hvi) <= are * 10.0 * CMOD(hr[n], hi[n]) ? 1 : 0;
    if (!*bol) {
        CDIVID(-pvr, -pvi, hvr, hvi, &tr, &ti);
        return;
    }
    tr = 0.0;
    ti = 0.0;
}

// Next shifted H polynomial; with bol set, H is replaced by QH.
void CPolyRoots::NEXTH(int bol)
{
    int j, n = nn - 1;
    double t1, t2;
    if (!bol) {
        for (j = 2; j <= n; j++) {
            t1 = qhr[j - 1];
            t2 = qhi[j - 1];
            hr[j] = tr * t1 - ti * t2 + qpr[j];
            hi[j] = tr * t2 + ti * t1 + qpi[j];
        }
        hr[1] = qpr[1];
        hi[1] = qpi[1];
        return;
    }
    for (j = 2; j <= n; j++) {
        hr[j] = qhr[j - 1];
        hi[j] = qhi[j - 1];
    }
    hr[1] = 0.0;
    hi[1] = 0.0;
}

// Horner evaluation at s, partial sums into q and the value into pv.
void CPolyRoots::POLYEV(int nn_, double sr_, double si_, double *pr_, double *pi_, double *qr,
                        double *qi, double *pvr_, double *pvi_)
{
    double t;
    qr[1] = pr_[1];
    qi[1] = pi_[1];
    *pvr_ = qr[1];
    *pvi_ = qi[1];
    for (int i = 2; i <= nn_; i++) {
        t = *pvr_ * sr_ - *pvi_ * si_ + pr_[i];
        *pvi_ = *pvr_ * si_ + *pvi_ * sr_ + pi_[i];
        *pvr_ = t;
        qr[i] = *pvr_;
        qi[i] = *pvi_;
    }
}

// Bound on the rounding error of the Horner evaluation.
double CPolyRoots::ERREV(int nn_, double *qr, double *qi, double ms, double mp, double are_,
                         double mre_)
{
    double e = CMOD(qr[1], qi[1]) * mre_ / (are_ + mre_);
    for (int i = 2; i <= nn_; i++) e = e * ms + CMOD(qr[i], qi[i]);
    return e * (are_ + mre_) - mp * mre_;
}

// Cauchy lower bound on the moduli of the zeros; pt holds the coefficient moduli.
double CPolyRoots::CAUCHY(int nn_, double *pt, double *q)
{
    int i, n = nn_ - 1;
    double x, xm, f, dx, df;
    pt[nn_] = -pt[nn_];
    // Upper estimate of the bound.
    x = std::exp((std::log(-pt[nn_]) - std::log(pt[1])) / n);
    if (pt[n] != 0.0) {
        // The Newton step at the origin, if better.
        xm = -pt[nn_] / pt[n];
        if (xm < x) x = xm;
    }
    // Chop the interval (0, x) until f <= 0.
    for (;;) {
        xm = x * 0.1;
        f = pt[1];
        for (i = 2; i <= nn_; i++) f = f * xm + pt[i];
        if (!(f > 0.0)) break; // also ends on a NaN
        x = xm;
    }
    // Newton to a relative change of 0.005 (a NaN ends it too).
    dx = x;
    while (std::fabs(dx / x) > 0.005) {
        q[1] = pt[1];
        for (i = 2; i <= nn_; i++) q[i] = q[i - 1] * x + pt[i];
        f = q[nn_];
        df = q[1];
        for (i = 2; i <= n; i++) df = df * x + q[i];
        dx = f / df;
        x -= dx;
    }
    return x;
}

// A power of the base that brings the coefficient moduli into range; 1 for none.
double CPolyRoots::SCALE1(int nn_, double *pt, double eta_, double infin_, double smalno_,
                          double base)
{
    double hi_ = std::sqrt(infin_), lo = smalno_ / eta_, max = 0.0, min = infin_, x, sc;
    int i, l;
    for (i = 1; i <= nn_; i++) {
        x = pt[i];
        if (x > max) max = x;
        if (x != 0.0 && x < min) min = x;
    }
    if (min >= lo && max <= hi_) return 1.0;
    x = lo / min;
    if (x <= 1.0) {
        sc = 1.0 / (std::sqrt(max) * std::sqrt(min));
    } else {
        sc = x;
        if (infin_ / sc > max) sc = 1.0;
    }
    l = (int)(std::log(sc) / std::log(base) + 0.5);
    return std::pow(base, l);
}

// c = a / b without avoidable overflow; division by zero gives infin in both parts.
void CPolyRoots::CDIVID(double ar, double ai, double br, double bi, double *cr, double *ci)
{
    double r, d;
    if (br == 0.0 && bi == 0.0) {
        *cr = infin;
        *ci = infin;
        return;
    }
    if (std::fabs(br) < std::fabs(bi)) {
        r = br / bi;
        d = bi + r * br;
        *cr = (ar * r + ai) / d;
        *ci = (ai * r - ar) / d;
        return;
    }
    r = bi / br;
    d = br + r * bi;
    *cr = (ar + ai * r) / d;
    *ci = (ai - ar * r) / d;
}

// Modulus without avoidable overflow.
double CPolyRoots::CMOD(double r, double i)
{
    double ar = std::fabs(r), ai = std::fabs(i);
    if (ar < ai) return ai * std::sqrt(1.0 + (ar / ai) * (ar / ai));
    if (ar > ai) return ar * std::sqrt(1.0 + (ai / ar) * (ai / ar));
    return ar * 1.4142135623730951;
}

} // namespace oscilla
