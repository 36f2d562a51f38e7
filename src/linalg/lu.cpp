// LU decomposition by Crout's method with implicit scaled pivoting, and the
// drivers built on it.
#include "oscilla/linalg/solvers.h"

#include <cmath>
#include <cstdlib>

namespace oscilla {

double lastFigure = 0.0;

// Crout's method (Numerical Recipes ludcmp), but a zero pivot is reported
// rather than replaced by a tiny number.
int ludcmp(double **a, int n, int *indx, int *d)
{
    if (n < 1)
        return 0;
    double *vv = static_cast<double *>(std::malloc(static_cast<size_t>(n) * sizeof(double)));
    if (!vv)
        return 0;
    *d = 1;
    for (int i = 0; i < n; i++) {
        double big = 0.0;
        for (int j = 0; j < n; j++) {
            double temp = std::fabs(a[i][j]);
            if (temp > big)
                big = temp;
        }
        if (big == 0.0) {
            std::free(vv);
            return 0;
        }
        vv[i] = 1.0 / big;
    }
    for (int j = 0; j < n; j++) {
        for (int i = 0; i < j; i++) {
            double sum = a[i][j];
            for (int k = 0; k < i; k++)
                sum -= a[i][k] * a[k][j];
            a[i][j] = sum;
        }
        double big = 0.0;
        int imax = j;
        for (int i = j; i < n; i++) {
            double sum = a[i][j];
            for (int k = 0; k < j; k++)
                sum -= a[i][k] * a[k][j];
            a[i][j] = sum;
            double dum = vv[i] * std::fabs(sum);
            // >= : of equal scaled values the later row is taken
            if (dum >= big) {
                big = dum;
                imax = i;
            }
        }
        if (j != imax) {
            for (int k = 0; k < n; k++) {
                double dum = a[imax][k];
                a[imax][k] = a[j][k];
                a[j][k] = dum;
            }
            *d = -*d;
            vv[imax] = vv[j];
        }
        indx[j] = imax;
        if (a[j][j] == 0.0) {
            std::free(vv);
            return 0;
        }
        if (j != n - 1) {
            double dum = 1.0 / a[j][j];
            for (int i = j + 1; i < n; i++)
                a[i][j] *= dum;
        }
    }
    std::free(vv);
    return 1;
}

void lubksb(double **a, double *b, int n, int *indx)
{
    int ii = -1;
    for (int i = 0; i < n; i++) {
        int ip = indx[i];
        double sum = b[ip];
        b[ip] = b[i];
        if (ii >= 0) {
            for (int j = ii; j < i; j++)
                sum -= a[i][j] * b[j];
        } else if (sum != 0.0) {
            // leading zeros of b contribute nothing to the forward pass
            ii = i;
        }
        b[i] = sum;
    }
    for (int i = n - 1; i >= 0; i--) {
        double sum = b[i];
        for (int j = i + 1; j < n; j++)
            sum -= a[i][j] * b[j];
        b[i] = sum / a[i][i];
    }
}

int luproc(double **a, double *b, int n)
{
    if (n < 1)
        return 0;
    int *indx = static_cast<int *>(std::malloc(static_cast<size_t>(n) * sizeof(int)));
    if (!indx)
        return 0;
    int d = 1;
    if (!ludcmp(a, n, indx, &d)) {
        lastFigure = 0.0;
        std::free(indx);
        return 0;
    }
    double det = d;
    for (int i = 0; i < n; i++)
        det *= a[i][i];
    lastFigure = det;
    lubksb(a, b, n, indx);
    std::free(indx);
    return 1;
}

int luinv(double **a, double *b, int n)
{
    if (n < 1)
        return 0;
    int *indx = static_cast<int *>(std::malloc(static_cast<size_t>(n) * sizeof(int)));
    double *col = static_cast<double *>(std::malloc(static_cast<size_t>(n) * sizeof(double)));
    int ok = 0;
    int d = 1;
    if (indx && col && ludcmp(a, n, indx, &d)) {
        if (b)
            lubksb(a, b, n, indx);
        // Column j of the result goes straight into column j of a, so the
        // solves for later columns read factors already partly overwritten.
        for (int j = 0; j < n; j++) {
            for (int i = 0; i < n; i++)
                col[i] = 0.0;
            col[j] = 1.0;
            lubksb(a, col, n, indx);
            for (int i = 0; i < n; i++)
                a[i][j] = col[i];
        }
        ok = 1;
    }
    std::free(col);
    std::free(indx);
    return ok;
}

} // namespace oscilla
