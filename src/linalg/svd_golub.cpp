// Golub-Reinsch singular value decomposition: Householder reduction to upper
// bidiagonal form, accumulation of the right and left transformations, then
// implicit-shift QR on the bidiagonal. Indices count from 1 as in the published
// procedure; the matrices are row-major with their leading dimensions.
#include "linalg/svd_impl.h"

#include <cmath>
#include <vector>

namespace oscilla {
namespace detail {

namespace {

// sqrt(a^2 + b^2) without destructive overflow or underflow, for the QR sweep.
double svd_hypot(double a, double b)
{
    double absa = std::fabs(a), absb = std::fabs(b);
    if (absa > absb) {
        double r = absb / absa;
        return absa * std::sqrt(1.0 + r * r);
    }
    if (absb == 0.0) return 0.0;
    double r = absa / absb;
    return absb * std::sqrt(1.0 + r * r);
}

// |a| with the sign of b, b >= 0 counting as positive.
double sign_of(double a, double b) { return b >= 0.0 ? std::fabs(a) : -std::fabs(a); }

void notify(const SvdProgress *pg, int pct)
{
    if (pg && pg->report && pg->onProgress) pg->onProgress(pct);
}

} // namespace

void golub_reinsch(const double *a, double *u, double *v, double *s, int lda, int ldu, int ldv,
                   int m, int n, int wantu, int wantv, int *ierr, const SvdProgress *pg)
{
    *ierr = 0;
    if (n <= 0 || m < 0) return;
    if (pg && pg->report && pg->onStart) pg->onStart();

    const int mn = m < n ? m : n;
    const int T = 2 * n + mn;

    // One-based accessors into the zero-based storage.
#define U_(i, j) u[((i)-1) * ldu + (j)-1]
#define V_(i, j) v[((i)-1) * ldv + (j)-1]
#define W_(i) s[(i)-1]

    if (a != u) copym(u, a, m, n, ldu, lda);

    std::vector<double> rv1v(n + 1, 0.0);
    double *rv1 = rv1v.data();

    int i, j, k, l = 1, nm, its, flag, jj;
    double anorm = 0.0, c, f, g = 0.0, h, scale = 0.0, sum, x, y, z;

    // Householder reduction to bidiagonal form.
    for (i = 1; i <= n; i++) {
        notify(pg, i * 100 / T);
        l = i + 1;
        rv1[i] = scale * g;
        g = sum = scale = 0.0;
        if (i <= m) {
            scale = sumvabssk(&U_(i, i), m - i + 1, ldu);
            if (scale != 0.0) {
                vdivksk(&U_(i, i), scale, m - i + 1, ldu);
                sum = sumvsqrsk(&U_(i, i), m - i + 1, ldu);
                f = U_(i, i);
                g = -sign_of(std::sqrt(sum), f);
                h = f * g - sum;
                U_(i, i) = f - g;
                for (j = l; j <= n; j++) {
                    for (sum = 0.0, k = i; k <= m; k++) sum += U_(k, i) * U_(k, j);
                    f = sum / h;
                    vaddkxvsk(&U_(i, j), &U_(i, j), f, &U_(i, i), m - i + 1, ldu);
                }
                kxvsk(&U_(i, i), scale, m - i + 1, ldu);
            }
        }
        W_(i) = scale * g;
        g = sum = scale = 0.0;
        if (i <= m && i != n) {
            scale = sumvabs(&U_(i, l), n - l + 1);
            if (scale != 0.0) {
                vdivk(&U_(i, l), scale, n - l + 1);
                sum = sumvsqr(&U_(i, l), n - l + 1);
                f = U_(i, l);
                g = -sign_of(std::sqrt(sum), f);
                h = f * g - sum;
                U_(i, l) = f - g;
                for (k = l; k <= n; k++) rv1[k] = U_(i, k) / h;
                for (j = l; j <= m; j++) {
                    sum = dotprod(&U_(j, l), &U_(i, l), n - l + 1);
                    vaddkxv(&U_(j, l), &U_(j, l), sum, &rv1[l], n - l + 1);
                }
                kxv(&U_(i, l), scale, n - l + 1);
            }
        }
        double t = std::fabs(W_(i)) + std::fabs(rv1[i]);
        if (t > anorm) anorm = t;
    }

    // Accumulation of the right-hand transformations.
    if (wantv) {
        for (i = n; i >= 1; i--) {
            if (i < n) {
                if (g != 0.0) {
                    // Double division avoids a possible underflow.
                    for (j = l; j <= n; j++) V_(j, i) = (U_(i, j) / U_(i, l)) / g;
                    for (j = l; j <= n; j++) {
                        for (sum = 0.0, k = l; k <= n; k++) sum += U_(i, k) * V_(k, j);
                        for (k = l; k <= n; k++) V_(k, j) += sum * V_(k, i);
                    }
                }
                for (j = l; j <= n; j++) V_(i, j) = V_(j, i) = 0.0;
            }
            V_(i, i) = 1.0;
            g = rv1[i];
            l = i;
        }
    }

    // Accumulation of the left-hand transformations.
    if (wantu) {
        for (i = mn; i >= 1; i--) {
            notify(pg, (n + 1 + mn - i) * 100 / T);
            l = i + 1;
            g = W_(i);
            if (l <= n) zerov(&U_(i, l), n - l + 1);
            if (g != 0.0) {
                g = 1.0 / g;
                for (j = l; j <= n; j++) {
                    for (sum = 0.0, k = l; k <= m; k++) sum += U_(k, i) * U_(k, j);
                    f = (sum / U_(i, i)) * g;
                    vaddkxvsk(&U_(i, j), &U_(i, j), f, &U_(i, i), m - i + 1, ldu);
                }
                kxvsk(&U_(i, i), g, m - i + 1, ldu);
            } else {
                zerovsk(&U_(i, i), m - i + 1, ldu);
            }
            ++U_(i, i);
        }
    }

    // Diagonalisation of the bidiagonal form: at most 30 sweeps per singular value.
    for (k = n; k >= 1; k--) {
        notify(pg, (T + 1 - k) * 100 / T);
        for (its = 0;; its++) {
            // Split test without an epsilon: a term is negligible when adding it to
            // anorm changes nothing. rv1[1] is zero, so l = 1 always ends the search.
            flag = 1;
            for (l = k; l >= 1; l--) {
                nm = l - 1;
                if (l == 1 || std::fabs(rv1[l]) + anorm == anorm) {
                    flag = 0;
                    break;
                }
                if (std::fabs(W_(nm)) + anorm == anorm) break;
            }
            if (flag) {
                // W_(nm) is negligible: cancel rv1[l] by rotations from the left.
                c = 0.0;
                sum = 1.0;
                for (i = l; i <= k; i++) {
                    f = sum * rv1[i];
                    rv1[i] = c * rv1[i];
                    if (std::fabs(f) + anorm == anorm) break;
                    g = W_(i);
                    h = std::sqrt(f * f + g * g);
                    W_(i) = h;
                    h = 1.0 / h;
                    c = g * h;
                    sum = -f * h;
                    if (wantu) {
                        for (j = 1; j <= m; j++) {
                            y = U_(j, nm);
                            z = U_(j, i);
                            U_(j, nm) = y * c + z * sum;
                            U_(j, i) = z * c - y * sum;
                        }
                    }
                }
            }
            z = W_(k);
            if (l == k) {
                // Converged; make the singular value non-negative.
                if (z < 0.0) {
                    W_(k) = -z;
                    if (wantv) negvsk(&V_(1, k), n, ldv);
                }
                break;
            }
            if (its == 30) {
                *ierr = k;
                if (pg && pg->report && pg->onEnd) pg->onEnd();
                return;
            }
            // Shift from the trailing 2 by 2 minor.
            x = W_(l);
            nm = k - 1;
            y = W_(nm);
            g = rv1[nm];
            h = rv1[k];
            f = ((y + z) * (y - z) + (g + h) * (g - h)) / (2.0 * h * y);
            g = std::sqrt(f * f + 1.0);
            f = ((x + z) * (x - z) + h * ((y / (f + sign_of(g, f))) - h)) / x;
            // Next QR transformation.
            c = sum = 1.0;
            for (j = l; j <= nm; j++) {
                i = j + 1;
                g = rv1[i];
                y = W_(i);
                h = sum * g;
                g = c * g;
                z = svd_hypot(f, h);
                rv1[j] = z;
                c = f / z;
                sum = h / z;
                f = x * c + g * sum;
                g = g * c - x * sum;
                h = y * sum;
                y *= c;
                if (wantv) {
                    for (jj = 1; jj <= n; jj++) {
                        x = V_(jj, j);
                        z = V_(jj, i);
                        V_(jj, j) = x * c + z * sum;
                        V_(jj, i) = z * c - x * sum;
                    }
                }
                z = svd_hypot(f, h);
                W_(j) = z;
                // With z = 0 the rotation can be arbitrary: keep the previous one.
                if (z != 0.0) {
                    z = 1.0 / z;
                    c = f * z;
                    sum = h * z;
                }
                f = c * g + sum * y;
                x = c * y - sum * g;
                if (wantu) {
                    for (jj = 1; jj <= m; jj++) {
                        y = U_(jj, j);
                        z = U_(jj, i);
                        U_(jj, j) = y * c + z * sum;
                        U_(jj, i) = z * c - y * sum;
                    }
                }
            }
            rv1[l] = 0.0;
            rv1[k] = f;
            W_(k) = x;
        }
    }
#undef U_
#undef V_
#undef W_
    if (pg && pg->report && pg->onEnd) pg->onEnd();
}

void svd_backsub(const double *u, const double *s, const double *v, int m, int n,
                 const double *b, double *x)
{
    std::vector<double> t(n > 0 ? n : 1, 0.0);
    for (int j = 0; j < n; j++) {
        double sum = 0.0;
        if (s[j] != 0.0) {
            for (int i = 0; i < m; i++) sum += u[i * n + j] * b[i];
            sum /= s[j];
        }
        t[j] = sum;
    }
    for (int j = 0; j < n; j++) {
        double sum = 0.0;
        for (int k = 0; k < n; k++) sum += v[j * n + k] * t[k];
        x[j] = sum;
    }
}

// Hoare quicksort, middle element as pivot, scans bounded by lo and hi.
void sort_desc_idx(int lo, int hi, double *values, int *index)
{
    if (lo >= hi) return;
    int i = lo, j = hi;
    double p = values[(lo + hi) / 2];
    do {
        while (values[i] > p && i < hi) i++;
        while (values[j] < p && j > lo) j--;
        if (i <= j) {
            double t = values[i]; values[i] = values[j]; values[j] = t;
            int ti = index[i]; index[i] = index[j]; index[j] = ti;
            i++;
            j--;
        }
    } while (i <= j);
    if (lo < j) sort_desc_idx(lo, j, values, index);
    if (i < hi) sort_desc_idx(i, hi, values, index);
}

void sort_desc_rows(int lo, int hi, double *values, double **rows)
{
    if (lo >= hi) return;
    int i = lo, j = hi;
    double p = values[(lo + hi) / 2];
    do {
        while (values[i] > p && i < hi) i++;
        while (values[j] < p && j > lo) j--;
        if (i <= j) {
            double t = values[i]; values[i] = values[j]; values[j] = t;
            double *tr = rows[i]; rows[i] = rows[j]; rows[j] = tr;
            i++;
            j--;
        }
    } while (i <= j);
    if (lo < j) sort_desc_rows(lo, j, values, rows);
    if (i < hi) sort_desc_rows(i, hi, values, rows);
}

double svd_threshold(double *s, double *sorted, int *index, int n, double thresh)
{
    if (n <= 0) return 1e-100;
    for (int i = 0; i < n; i++) {
        sorted[i] = s[i];
        index[i] = i;
    }
    sort_desc_idx(0, n - 1, sorted, index);
    const double largest = sorted[0], smallest = sorted[n - 1];
    const double cond = largest == 0.0 ? 1e-100 : smallest / largest;
    if (thresh == 0.0) {
        // The geometric point a quarter of the way from the smallest to the largest.
        const double cut = std::pow(smallest, 0.75) * std::pow(largest, 0.25);
        for (int i = 0; i < n; i++)
            if (s[i] < cut) s[i] = 0.0;
    } else if (thresh > 0.0) {
        const double cut = largest * thresh;
        for (int i = 0; i < n; i++)
            if (s[i] < cut) s[i] = 0.0;
    } else {
        // A negative threshold is a rank: keep the k largest.
        const double kd = -std::trunc(thresh);
        const int k = kd >= (double)n ? n : (kd > 0.0 ? (int)kd : 0);
        for (int i = k; i < n; i++) s[index[i]] = 0.0;
    }
    return cond;
}

} // namespace detail
} // namespace oscilla
