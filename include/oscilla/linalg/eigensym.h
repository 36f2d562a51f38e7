// Eigenvalues and eigenvectors of a real symmetric matrix: Householder
// reduction to tridiagonal form and the QL iteration with implicit shifts.
// The constructor does all the work; the object then serves the results.
#ifndef OSCILLA_LINALG_EIGENSYM_H
#define OSCILLA_LINALG_EIGENSYM_H

namespace oscilla {

class CEigenSymMatr {
public:
    // a: the matrix. With inPlace 0 it is read as n by n from index 0 and
    // left alone (only the triangle with row index >= column index is used).
    // With inPlace non-zero it must have n+1 rows and columns used from
    // index 1, and is overwritten. valuesOnly skips the eigenvectors.
    CEigenSymMatr(double **a, int n, int inPlace, int valuesOnly);
    ~CEigenSymMatr();

    // n by n, row i the eigenvector of value i; null if the iteration failed.
    double **EigenVectors();
    // n values from index 0, descending; null if the iteration failed.
    double *EigenValues();

private:
    int n;
    int inPlace;
    int status;
    int valuesOnly;
    double **work;
    double *values;
    double **vectors;
    double *sortedValues;

    void Tred2(double **a, int n, double *d, double *e);
    int Tqli(double *d, double *e, int n, double **z);
    double Pythag(double a, double b);
    void SortDscwMatr(int lo, int hi, double *values, double **rows);
};

} // namespace oscilla

#endif
