// Spectrum format codes: the integer that selects amplitude, power, density,
// decibels, phase and the rest in every spectrum output of the library.
#ifndef OSCILLA_SPECTRUM_FORMATS_H
#define OSCILLA_SPECTRUM_FORMATS_H

namespace oscilla {

// The values one bin needs to be formatted.
struct BinTerms {
    double re, im; // after the bin factor and the sign flip of the imaginary part
    double s;      // power scale
    double P;      // (re^2 + im^2) s, after the full-segment factor
    double A;      // sqrt(P) / D
    double D;      // divisor: N, or the segment length
    double L;      // transform length
    double dx;     // x spacing of the series
    double variance;
};

struct SpectrumFormat {
    int code;
    const char *name;  // short name, as a command line would take it
    const char *label; // what a bin holds
    int density;       // 1: end bins get the factor sqrt(2) instead of 1
    double (*value)(const BinTerms &);
};

// Every defined code, ascending. Codes from 0 to 50 that are not listed are
// accepted and give 0 in every bin, and so do codes outside 0..50.
extern const SpectrumFormat SPECTRUM_FORMATS[];
extern const int SPECTRUM_FORMAT_COUNT;

// The entry of a code, or null for a code that gives 0.
const SpectrumFormat *FindSpectrumFormat(int code);
// 1 if the code belongs to the density family (8 to 11, 15, 31).
int IsDensityFormat(int code);

constexpr double SQRT2 = 1.4142135623730951;
constexpr double SQRT1_2 = 0.7071067811865476;

} // namespace oscilla

#endif
