// Roots as eigenvalues of the companion matrix: balancing and the Francis
// double-shift QR on the upper Hessenberg matrix (EISPACK balanc/hqr as given in
// Numerical Recipes), one-based.
#include "oscilla/linalg/polyroots.h"

#include <cmath>

namespace oscilla {

double CPolyRoots::SIGN(double a, double b) { return b >= 0.0 ? std::fabs(a) : -std::fabs(a); }

int CPolyRoots::EigenRoots(double *a, int n, double *wr, double *wi)
{
    double **hess = lmatr(n + 2, n + 2);
    if (!hess) return 0;
    for (int i = 0; i < n + 2; i++)
        for (int j = 0; j < n + 2; j++) hess[i][j] = 0.0;
    if (a[n] == 0.0) {
        lmatrfree(hess);
        return 0;
    }
    for (int k = 1; k <= n; k++) {
        hess[1][k] = -a[n - k] / a[n];
        if (k > 1) hess[k][k - 1] = 1.0;
    }
    Balance(hess, n);
    const int ok = Hqr(hess, n, wr, wi);
    lmatrfree(hess);
    if (!ok) return 0;
    for (int j = 2; j <= n; j++) {
        const double x = wr[j], y = wi[j];
        int i;
        for (i = j - 1; i >= 1; i--) {
            if (wr[i] <= x) break;
            wr[i + 1] = wr[i];
            wi[i + 1] = wi[i];
        }
        wr[i + 1] = x;
        wi[i + 1] = y;
    }
    return 1;
}

// Similarity scaling by powers of the radix so that row and column norms match.
void CPolyRoots::Balance(double **a, int n)
{
    const double RADIX = 2.0;
    const double sqrdx = RADIX * RADIX;
    int last = 0;
    while (last == 0) {
        last = 1;
        for (int i = 1; i <= n; i++) {
            double r = 0.0, c = 0.0;
            for (int j = 1; j <= n; j++)
                if (j != i) {
                    c += std::fabs(a[j][i]);
                    r += std::fabs(a[i][j]);
                }
            // Non-finite norms would never leave the scaling loops.
            if (c != 0.0 && r != 0.0 && std::isfinite(c) && std::isfinite(r)) {
                double g = r / RADIX, f = 1.0;
                const double s = c + r;
                while (c < g) {
                    f *= RADIX;
                    c *= sqrdx;
                }
                g = r * RADIX;
                while (c > g) {
                    f /= RADIX;
                    c /= sqrdx;
                }
                if ((c + r) / f < 0.95 * s) {
                    last = 0;
                    g = 1.0 / f;
                    for (int j = 1; j <= n; j++) a[i][j] *= g;
                    for (int j = 1; j <= n; j++) a[j][i] *= f;
                }
            }
        }
    }
}

// Eigenvalues of the upper Hessenberg a[1..n][1..n] (destroyed) into wr, wi.
// 0 when an eigenvalue needs more than 30 iterations.
int CPolyRoots::Hqr(double **a, int n, double *wr, double *wi)
{
    int nn_, m, l, k, j, its, i, mmin;
    double z = 0, y, x, w, v, u, t, s, r = 0, q = 0, p = 0, anorm = 0.0;

    for (i = 1; i <= n; i++)
        for (j = (i - 1 > 1 ? i - 1 : 1); j <= n; j++) anorm += std::fabs(a[i][j]);
    nn_ = n;
    t = 0.0;
    while (nn_ >= 1) {
        its = 0;
        do {
            // Look for a single small subdiagonal element.
            for (l = nn_; l >= 2; l--) {
                s = std::fabs(a[l - 1][l - 1]) + std::fabs(a[l][l]);
                if (s == 0.0) s = anorm;
                if (std::fabs(a[l][l - 1]) + s == s) {
                    a[l][l - 1] = 0.0;
                    break;
                }
            }
            x = a[nn_][nn_];
            if (l == nn_) { // one root found
                wr[nn_] = x + t;
                wi[nn_--] = 0.0;
            } else {
                y = a[nn_ - 1][nn_ - 1];
                w = a[nn_][nn_ - 1] * a[nn_ - 1][nn_];
                if (l == nn_ - 1) { // two roots found
                    p = 0.5 * (y - x);
                    q = p * p + w;
                    z = std::sqrt(std::fabs(q));
                    x += t;
                    if (q >= 0.0) {
                        z = p + SIGN(z, p);
                        wr[nn_ - 1] = wr[nn_] = x + z;
                        if (z != 0.0) wr[nn_] = x - w / z;
                        wi[nn_ - 1] = wi[nn_] = 0.0;
                    } else {
                        wr[nn_ - 1] = wr[nn_] = x + p;
                        wi[nn_ - 1] = -(wi[nn_] = z);
                    }
                    nn_ -= 2;
                } else {
                    if (its == 30) return 0;
                    if (its == 10 || its == 20) { // exceptional shift
                        t += x;
                        for (i = 1; i <= nn_; i++) a[i][i] -= x;
                        s = std::fabs(a[nn_][nn_ - 1]) + std::fabs(a[nn_ - 1][nn_ - 2]);
                        y = x = 0.75 * s;
                        w = -0.4375 * s * s;
                    }
                    ++its;
                    // Form the shift and look for two consecutive small subdiagonal elements.
                    for (m = nn_ - 2; m >= l; m--) {
                        z = a[m][m];
                        r = x - z;
                        s = y - z;
                        p = (r * s - w) / a[m + 1][m] + a[m][m + 1];
                        q = a[m + 1][m + 1] - z - r - s;
                        r = a[m + 2][m + 1];
                        s = std::fabs(p) + std::fabs(q) + std::fabs(r);
                        p /= s;
                        q /= s;
                        r /= s;
                        if (m == l) break;
                        u = std::fabs(a[m][m - 1]) * (std::fabs(q) + std::fabs(r));
                        v = std::fabs(p) *
                            (std::fabs(a[m - 1][m - 1]) + std::fabs(z) + std::fabs(a[m + 1][m + 1]));
                        if (u + v == v) break;
                    }
                    for (i = m + 2; i <= nn_; i++) {
                        a[i][i - 2] = 0.0;
                        if (i != m + 2) a[i][i - 3] = 0.0;
                    }
                    // Double QR step on rows l..nn_ and columns m..nn_.
                    for (k = m; k <= nn_ - 1; k++) {
                        if (k != m) {
                            p = a[k][k - 1];
                            q = a[k + 1][k - 1];
                            r = 0.0;
                            if (k != nn_ - 1) r = a[k + 2][k - 1];
                            if ((x = std::fabs(p) + std::fabs(q) + std::fabs(r)) != 0.0) {
                                p /= x;
                                q /= x;
                                r /= x;
                            }
                        }
                        if ((s = SIGN(std::sqrt(p * p + q * q + r * r), p)) != 0.0) {
                            if (k == m) {
                                if (l != m) a[k][k - 1] = -a[k][k - 1];
                            } else {
                                a[k][k - 1] = -s * x;
                            }
                            p += s;
                            x = p / s;
                            y = q / s;
                            z = r / s;
                            q /= p;
                            r /= p;
                            for (j = k; j <= nn_; j++) {
                                p = a[k][j] + q * a[k + 1][j];
                                if (k != nn_ - 1) {
                                    p += r * a[k + 2][j];
                                    a[k + 2][j] -= p * z;
                                }
                                a[k + 1][j] -= p * y;
                                a[k][j] -= p * x;
                            }
                            mmin = nn_ < k + 3 ? nn_ : k + 3;
                            for (i = l; i <= mmin; i++) {
                                p = x * a[i][k] + y * a[i][k + 1];
                                if (k != nn_ - 1) {
                                    p += z * a[i][k + 2];
                                    a[i][k + 2] -= p * r;
                                }
                                a[i][k + 1] -= p * q;
                                a[i][k] -= p;
                            }
                        }
                    }
                }
            }
        } while (l < nn_ - 1);
    }
    return 1;
}

} // namespace oscilla
