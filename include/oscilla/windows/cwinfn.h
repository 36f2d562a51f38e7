// CWinFn: data windows over uniformly spaced samples, selected by an integer
// window code with a shape parameter beside it, and the gains of applying one.
#ifndef OSCILLA_WINDOWS_CWINFN_H
#define OSCILLA_WINDOWS_CWINFN_H

namespace oscilla {

class CWinFn {
public:
    // The last window built, n doubles from index 0, owned; null at the start.
    // Copying an object copies this pointer: the two copies then share one
    // buffer, and only one of them may be destroyed.
    double *window;

    CWinFn();
    // As WindowFn(window, n, shape).
    CWinFn(int window, int n, double shape);
    // As WindowData: windows data[first .. first+n-1] in place and stores the
    // power gain in gains[0] and n / sum of the window in gains[1].
    CWinFn(double *data, int first, int window, int n, double shape, double *gains);
    ~CWinFn();

    // Builds window code `window` over n points, keeps it and returns it.
    // Null, with the previous window kept, if n is below 2, if the code needs
    // a service that is not available, or if memory is short. Codes that are
    // not windows (26, 32, 33, negative, above 44) give a buffer of zeros.
    double *WindowFn(int window, int n, double shape);
    // The user cosine sum of GenCosUser with up to five coefficients.
    double *WindowFn(int n, int terms, double *coef);
    double *Get();
    // Builds the window and multiplies data[first + i] by w[i], i = 0..n-1.
    // With gains: gains[0] = sum of squares before / after (0 if after is 0),
    // gains[1] = n / sum of the window. 1 on success, 0 if no window was built.
    int WindowData(double *data, int first, int window, int n, double shape, double *gains);

    // Main-lobe width and noise-power reduction figures of a window code.
    static double Width(int window, double shape);
    static double PowerReduction(int window, double shape);

    // The kernel of the Tukey sum (code 25).
    static double Dirichlet(double x);
    // The degree-20 Chebyshev fit of code 31: Clenshaw on x = (t - 0.5) / 0.5,
    // coef[0] taken whole. GetChebCoef fills coef[0..20] for a side-lobe level
    // in decibels, limited to 50..150.
    static double EvalChebPoly(int degree, double t, double *coef);
    static void GetChebCoef(double db, double *coef);

    // Fill routines: w[0..n-1], symmetric over the n-1 spacing.
    static void Rectangular(double *w, int n);
    static void Bartlett(double *w, int n);
    static void Welch(double *w, int n);
    static void Sine(double *w, int n);
    static void ModBartlett(double *w, int n);
    static void GenCos2(double *w, int n, int selector);
    static void GenCos3(double *w, int n, int selector);
    static void GenCos4(double *w, int n, int selector);
    static void GenCos5(double *w, int n, int selector);
    static void GenCosUser(double *w, int n, int terms, double *coef);
    static void CosineSq(double *w, int n, double shape);
    static void Kaiser(double *w, int n, double shape);
    static void TaperedCosine(double *w, int n, double shape);
    static void Tukey(double *w, int n, double shape);
    static void GaussWin(double *w, int n, double shape);
    static void BetaWin(double *w, int n, double shape);
    static void TriCubeWin(double *w, int n, double shape);
    static void Chebyshev(double *w, int n, double shape);
    static void ChebApprox(double *w, int n, double shape);
    static void VanderMaas(double *w, int n, double shape);
    // Slepian taper 0, 1 or 2 of time-bandwidth product shape.
    static void Slepian(double *w, int n, double shape, int taper);
};

} // namespace oscilla

#endif
