// CPolyRoots: all roots of a real polynomial by Laguerre's method, by the eigenvalues
// of the companion matrix or by the Jenkins-Traub complex algorithm, with frequency
// lists, root subsets and spectral-factor style root moves for the model classes.
#ifndef OSCILLA_LINALG_POLYROOTS_H
#define OSCILLA_LINALG_POLYROOTS_H

#include "oscilla/series/complex.h"

namespace oscilla {

// Sort record of RootSubSet.
struct ROOTSORT {
    double delta; // | 1 - |root| |, the distance from the unit circle
    double freq;  // arg(root) / (2 pi), -0.5 to 0.5
    int index;    // the root's index; negative marks an excluded root
};

class CPolyRoots {
public:
    int degree;      // n
    int method;      // 0 Laguerre, 1 companion matrix, 2-5 Jenkins-Traub forms
    int offset;      // 0 for one-based coefficients, 1 for zero-based
    double *coef;    // the caller's coefficients, not owned; SpecFactor writes them
    double *freq;    // n+1 doubles for GetAscFreq, element 0 the count
    complex *roots;  // n+1: element 0 holds (n, 0), the roots at 1..n
    complex *subset; // RootSubSet result, element 0 holds (count, 0)

    // Working state of the Jenkins-Traub iteration.
    int nn;
    double sr, si, tr, ti, pvr, pvi;
    double are, mre, eta, infin, smalno;
    double *pr, *pi, *hr, *hi, *qpr, *qpi, *qhr, *qhi, *shr, *shi;

    CPolyRoots(double *coef, int n, int method, int oneBased, int negate);
    ~CPolyRoots();

    complex *GetRoots();
    double *GetAscFreq();
    complex *RootSubSet(int flags, int maxRoots, int sortMode, int *keep);
    int SpecFactor(int mode);

    // Laguerre with deflation and polishing; a[0..n], a[n] leading.
    void ZRoots(complex *a, int n, complex *roots, int polish);
    int Laguerre(complex *a, int m, complex *x, int *its);
    // Companion-matrix eigenvalues; a[0..n], roots in wr[1..n], wi[1..n].
    int EigenRoots(double *a, int n, double *wr, double *wi);
    void Balance(double **a, int n);
    int Hqr(double **a, int n, double *wr, double *wi);
    double SIGN(double a, double b);

    // Jenkins-Traub: opr[1..n+1], opi[1..n+1] leading first; zeros at zeror[1..n].
    int CPoly(double *opr, double *opi, int n, double *zeror, double *zeroi);
    int CPolyAlloc(int n);
    void CPolyFree();
    void NOSHFT(int l1);
    int FXSHFT(int l2, double *zr, double *zi);
    int VRSHFT(int l3, double *zr, double *zi);
    void CALCT(int *bol);
    void NEXTH(int bol);
    void POLYEV(int nn, double sr, double si, double *pr, double *pi, double *qr, double *qi,
                double *pvr, double *pvi);
    double ERREV(int nn, double *qr, double *qi, double ms, double mp, double are, double mre);
    double CAUCHY(int nn, double *pt, double *q);
    double SCALE1(int nn, double *pt, double eta, double infin, double smalno, double base);
    void CDIVID(double ar, double ai, double br, double bi, double *cr, double *ci);
    double CMOD(double r, double i);
    void MCON(double *eta, double *infin, double *smalno, double *base);

    // Ascending quicksorts: values with flags, and the RootSubSet records.
    void Sort(double *f, int *flag, int lo, int hi);
    void SortRootFreq(ROOTSORT *rs, int lo, int hi);
    void SortRootDelta(ROOTSORT *rs, int lo, int hi);
};

} // namespace oscilla

#endif
