// Math support layer: the process-wide error queue, tests for the two
// floating-point specials, the two random generators, the modified Bessel
// functions I0 and I1, and the gamma family with the chi-square distribution.
#ifndef OSCILLA_SERIES_MATHSUPPORT_H
#define OSCILLA_SERIES_MATHSUPPORT_H

namespace oscilla {

// Error codes posted by the numeric layer.
enum : int {
    MATHERR_DIVIDE_BY_ZERO = -1,  // SafeDivide
    MATHERR_ACOSH_DOMAIN = -11,   // Acosh below 1
    MATHERR_INTEGRAL = -100,      // adaptive integration: too many steps or a step too small
    MATHERR_LOGGAMMA_POLE = -108, // LogGamma at a non-positive integer
    MATHERR_GAMMA_POLE = -109,    // GammaFn at a non-positive integer
    MATHERR_NO_CONVERGENCE = -120, // incomplete gamma: no convergence in 1000 terms
    MATHERR_GAMMAP_DOMAIN = -123  // GammaP with x below 0 or a not above 0
};

constexpr int MATH_ERROR_SLOTS = 10;

// The error queue, shared by the whole process and unprotected: the last code
// posted, and the first ten codes posted since the last clear.
extern int lastError;
extern int errorSlots[MATH_ERROR_SLOTS];
extern int errorCount;
// Number of divisions by exactly zero that SafeDivide has met.
extern long zeroDivideCount;

// Sets lastError, files the code if a slot is free, returns the code.
int PostMathError(int code);
// Empties the slots and zeroes the count and lastError.
void ClearMathErrors();
// 1 if one of the used slots holds code, else 0.
int IsMathError(int code);

// Bit tests: a NaN marker has the upper word 0x7FF80020 or 0xFFF80020 (other
// NaNs are not markers); infinity has the upper word 0x7FF00000 or
// 0xFFF00000, whatever the lower word.
int IsNanMarker(double x);
int IsInfinite(double x);

// a / b; for b exactly 0 posts MATHERR_DIVIDE_BY_ZERO, counts it and returns 0.
double SafeDivide(double a, double b);
double DegToRad(double deg);
double RadToDeg(double rad);
// log(sqrt(x^2 - 1) + x) for x >= 1; otherwise posts MATHERR_ACOSH_DOMAIN and returns 0.
double Acosh(double x);

// Uniform in [0, 1), assembled from four runs of rand(); never seeds rand.
double UniformDeviate();
// Standard normal by the polar method. Every other call returns the spare of
// the previous pair, kept process-wide in gaussStored and gaussSpare.
double GaussDeviate();
extern int gaussStored;
extern double gaussSpare;

// Modified Bessel functions of the first kind, orders 0 and 1. Both overflow
// to infinity (no error is posted) once the true value leaves the double range.
double BesselI0(double x);
double BesselI1(double x);

// log Gamma(x), Gamma(x). Gamma is 1e300 above 167.92; poles post an error and give 0.
double LogGamma(double x);
double GammaFn(double x);
// Regularised lower incomplete gamma P(a, x).
double GammaP(double a, double x);
// Chi-square distribution function with dof degrees of freedom: GammaP(dof/2, x/2).
double ChiSquareP(double dof, double x);

// Mean and sample standard deviation from n, the sum and the sum of squares.
void MeanStdFromSums(int n, double sum, double sumsq, double *mean, double *std);

} // namespace oscilla

#endif
