// Gaussian elimination with partial pivoting, and Gauss-Jordan elimination
// with full pivoting.
#include "oscilla/linalg/solvers.h"

#include <cmath>
#include <cstdlib>

namespace oscilla {

int gauss(double **a, double *b, int n)
{
    if (n < 1)
        return 0;
    for (int k = 0; k < n - 1; k++) {
        int p = k;
        double big = std::fabs(a[k][k]);
        for (int i = k + 1; i < n; i++) {
            if (std::fabs(a[i][k]) > big) {
                big = std::fabs(a[i][k]);
                p = i;
            }
        }
        if (big == 0.0)
            return 0;
        if (p != k) {
            for (int j = 0; j < n; j++) {
                double t = a[p][j];
                a[p][j] = a[k][j];
                a[k][j] = t;
            }
            double t = b[p];
            b[p] = b[k];
            b[k] = t;
        }
        for (int i = k + 1; i < n; i++) {
            double f = a[i][k] / a[k][k];
            if (f == 0.0)
                continue;
            for (int j = k + 1; j < n; j++)
                a[i][j] -= f * a[k][j];
            b[i] -= f * b[k];
        }
    }
    if (a[n - 1][n - 1] == 0.0)
        return 0;
    for (int i = n - 1; i >= 0; i--) {
        double s = b[i];
        for (int j = i + 1; j < n; j++)
            s -= a[i][j] * b[j];
        b[i] = s / a[i][i];
    }
    return 1;
}

// Gauss-Jordan elimination with full pivoting (Numerical Recipes gaussj, one
// right-hand side). indxr, indxc and ipiv share one block of 3(n+1) ints.
int gaussj(double **a, double *b, int n)
{
    if (n < 1)
        return 0;
    int *block = static_cast<int *>(std::malloc(3 * (static_cast<size_t>(n) + 1) * sizeof(int)));
    if (!block)
        return 0;
    int *indxc = block;
    int *indxr = block + (n + 1);
    int *ipiv = block + 2 * (n + 1);
    for (int j = 0; j < n; j++)
        ipiv[j] = 0;

    int ok = 1;
    for (int i = 0; i < n && ok; i++) {
        double big = 0.0;
        int irow = 0, icol = 0;
        for (int j = 0; j < n; j++) {
            if (ipiv[j] == 1)
                continue;
            for (int k = 0; k < n; k++) {
                if (ipiv[k] == 0) {
                    if (std::fabs(a[j][k]) >= big) {
                        big = std::fabs(a[j][k]);
                        irow = j;
                        icol = k;
                    }
                } else if (ipiv[k] > 1) {
                    ok = 0;
                }
            }
        }
        if (!ok || ++ipiv[icol] > 1) {
            ok = 0;
            break;
        }
        if (irow != icol) {
            for (int l = 0; l < n; l++) {
                double t = a[irow][l];
                a[irow][l] = a[icol][l];
                a[icol][l] = t;
            }
            double t = b[irow];
            b[irow] = b[icol];
            b[icol] = t;
        }
        indxr[i] = irow;
        indxc[i] = icol;
        if (a[icol][icol] == 0.0) {
            ok = 0;
            break;
        }
        double pivinv = 1.0 / a[icol][icol];
        a[icol][icol] = 1.0;
        for (int l = 0; l < n; l++)
            a[icol][l] *= pivinv;
        b[icol] *= pivinv;
        for (int ll = 0; ll < n; ll++) {
            if (ll == icol)
                continue;
            double dum = a[ll][icol];
            a[ll][icol] = 0.0;
            for (int l = 0; l < n; l++)
                a[ll][l] -= a[icol][l] * dum;
            b[ll] -= b[icol] * dum;
        }
    }
    if (ok) {
        for (int l = n - 1; l >= 0; l--) {
            if (indxr[l] == indxc[l])
                continue;
            for (int k = 0; k < n; k++) {
                double t = a[k][indxr[l]];
                a[k][indxr[l]] = a[k][indxc[l]];
                a[k][indxc[l]] = t;
            }
        }
    }
    std::free(block);
    return ok;
}

} // namespace oscilla
