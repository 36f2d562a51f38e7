// Symmetric eigenproblem: Householder tridiagonalisation (tred2) followed by
// the QL algorithm with implicit shifts (tqli), after Numerical Recipes, on
// one-based storage.
#include "oscilla/linalg/eigensym.h"
#include "oscilla/series/complex.h"

#include <cmath>
#include <cstdlib>

namespace oscilla {

CEigenSymMatr::CEigenSymMatr(double **a, int n_, int inPlace_, int valuesOnly_)
    : n(n_), inPlace(inPlace_), status(0), valuesOnly(valuesOnly_), work(nullptr), values(nullptr),
      vectors(nullptr), sortedValues(nullptr)
{
    if (n < 1 || !a)
        return;
    if (inPlace) {
        work = a;
    } else {
        work = lmatr(n + 1, n + 1);
        if (!work)
            return;
        for (int i = 0; i < n; i++)
            for (int j = 0; j < n; j++)
                work[i + 1][j + 1] = a[i][j];
    }
    values = lvec(n + 1);
    double *e = lvec(n + 1);
    if (values && e) {
        Tred2(work, n, values, e);
        status = Tqli(values, e, n, work);
        if (status) {
            vectors = lmatr(n, n);
            if (vectors) {
                for (int i = 0; i < n; i++)
                    for (int j = 0; j < n; j++)
                        vectors[j][i] = work[i + 1][j + 1];
                sortedValues = values + 1;
                SortDscwMatr(0, n - 1, sortedValues, vectors);
            }
        }
    }
    lvecfree(e);
    if (!inPlace)
        lmatrfree(work);
    work = nullptr;
}

CEigenSymMatr::~CEigenSymMatr()
{
    if (vectors)
        lmatrfree(vectors);
    lvecfree(values);
}

double **CEigenSymMatr::EigenVectors() { return sortedValues ? vectors : nullptr; }

double *CEigenSymMatr::EigenValues() { return sortedValues; }

// Householder reduction of the symmetric a (lower triangle read) to
// tridiagonal form: d the diagonal, e the subdiagonal with e[1] = 0. Unless
// only values are wanted, a is replaced by the orthogonal transformation.
void CEigenSymMatr::Tred2(double **a, int n, double *d, double *e)
{
    for (int i = n; i >= 2; i--) {
        int l = i - 1;
        double h = 0.0, scale = 0.0;
        if (l > 1) {
            for (int k = 1; k <= l; k++)
                scale += std::fabs(a[i][k]);
            if (scale == 0.0) {
                // row already reduced: skip the transformation
                e[i] = a[i][l];
            } else {
                for (int k = 1; k <= l; k++) {
                    a[i][k] /= scale;
                    h += a[i][k] * a[i][k];
                }
                double f = a[i][l];
                double g = f >= 0.0 ? -std::sqrt(h) : std::sqrt(h);
                e[i] = scale * g;
                h -= f * g;
                a[i][l] = f - g;
                f = 0.0;
                for (int j = 1; j <= l; j++) {
                    a[j][i] = a[i][j] / h;
                    g = 0.0;
                    for (int k = 1; k <= j; k++)
                        g += a[j][k] * a[i][k];
                    for (int k = j + 1; k <= l; k++)
                        g += a[k][j] * a[i][k];
                    e[j] = g / h;
                    f += e[j] * a[i][j];
                }
                double hh = f / (h + h);
                for (int j = 1; j <= l; j++) {
                    f = a[i][j];
                    e[j] = g = e[j] - hh * f;
                    for (int k = 1; k <= j; k++)
                        a[j][k] -= (f * e[k] + g * a[i][k]);
                }
            }
        } else {
            e[i] = a[i][l];
        }
        d[i] = h;
    }
    d[1] = 0.0;
    e[1] = 0.0;
    for (int i = 1; i <= n; i++) {
        if (!valuesOnly) {
            // accumulate the transformations
            int l = i - 1;
            if (d[i] != 0.0) {
                for (int j = 1; j <= l; j++) {
                    double g = 0.0;
                    for (int k = 1; k <= l; k++)
                        g += a[i][k] * a[k][j];
                    for (int k = 1; k <= l; k++)
                        a[k][j] -= g * a[k][i];
                }
            }
            d[i] = a[i][i];
            a[i][i] = 1.0;
            for (int j = 1; j <= l; j++)
                a[j][i] = a[i][j] = 0.0;
        } else {
            d[i] = a[i][i];
        }
    }
}

// QL iteration with implicit shifts on the tridiagonal d, e (one-based);
// unless only values are wanted, the rotations are applied to the columns of
// z. 1 on convergence, 0 when one eigenvalue needs more than 30 iterations.
int CEigenSymMatr::Tqli(double *d, double *e, int n, double **z)
{
    for (int i = 2; i <= n; i++)
        e[i - 1] = e[i];
    e[n] = 0.0;
    for (int l = 1; l <= n; l++) {
        int iter = 0;
        int m;
        do {
            for (m = l; m <= n - 1; m++) {
                double dd = std::fabs(d[m]) + std::fabs(d[m + 1]);
                // The negligibility test is made in single precision: the sum
                // is stored as a float and compared with the double dd.
                float sum = static_cast<float>(std::fabs(e[m]) + dd);
                if (static_cast<double>(sum) == dd)
                    break;
            }
            if (m == l)
                break;
            if (iter == 30)
                return 0;
            iter++;
            double g = (d[l + 1] - d[l]) / (2.0 * e[l]);
            double r = Pythag(g, 1.0);
            g = d[m] - d[l] + e[l] / (g + (g >= 0.0 ? std::fabs(r) : -std::fabs(r)));
            double s = 1.0, c = 1.0, p = 0.0;
            int i;
            for (i = m - 1; i >= l; i--) {
                double f = s * e[i];
                double b = c * e[i];
                e[i + 1] = (r = Pythag(f, g));
                if (r == 0.0) {
                    // recover from underflow
                    d[i + 1] -= p;
                    e[m] = 0.0;
                    break;
                }
                s = f / r;
                c = g / r;
                g = d[i + 1] - p;
                r = (d[i] - g) * s + 2.0 * c * b;
                d[i + 1] = g + (p = s * r);
                g = c * r - b;
                if (!valuesOnly) {
                    for (int k = 1; k <= n; k++) {
                        f = z[k][i + 1];
                        z[k][i + 1] = s * z[k][i] + c * f;
                        z[k][i] = c * z[k][i] - s * f;
                    }
                }
            }
            if (r == 0.0 && i >= l)
                continue;
            d[l] -= p;
            e[l] = g;
            e[m] = 0.0;
        } while (m != l);
    }
    return 1;
}

// sqrt(a^2 + b^2) without destructive underflow or overflow
double CEigenSymMatr::Pythag(double a, double b)
{
    double absa = std::fabs(a), absb = std::fabs(b);
    if (absa > absb)
        return absa * std::sqrt(1.0 + (absb / absa) * (absb / absa));
    if (absb == 0.0)
        return 0.0;
    return absb * std::sqrt(1.0 + (absa / absb) * (absa / absb));
}

// Descending quicksort of values[lo..hi], carrying the row pointers along:
// middle element as pivot, strict comparisons, scans bounded by lo and hi.
void CEigenSymMatr::SortDscwMatr(int lo, int hi, double *values, double **rows)
{
    if (lo >= hi)
        return;
    int i = lo, j = hi;
    double pivot = values[lo + (hi - lo) / 2];
    while (i <= j) {
        while (i < hi && values[i] > pivot)
            i++;
        while (j > lo && values[j] < pivot)
            j--;
        if (i <= j) {
            double t = values[i];
            values[i] = values[j];
            values[j] = t;
            double *r = rows[i];
            rows[i] = rows[j];
            rows[j] = r;
            i++;
            j--;
        }
    }
    if (lo < j)
        SortDscwMatr(lo, j, values, rows);
    if (i < hi)
        SortDscwMatr(i, hi, values, rows);
}

} // namespace oscilla
