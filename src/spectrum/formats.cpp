#include "oscilla/spectrum/formats.h"

#include <cmath>

namespace oscilla {

namespace {

double phase(const BinTerms &t) { return (t.re == 0.0 && t.im == 0.0) ? 0.0 : std::atan2(t.im, t.re); }
double decibel(const BinTerms &t) { return 20.0 * std::log10(t.A); }
double amplitude(const BinTerms &t) { return t.A; }

} // namespace

const SpectrumFormat SPECTRUM_FORMATS[] = {
    {0, "real", "magnitude of the real part", 0, [](const BinTerms &t) { return std::fabs(t.re) * std::sqrt(t.s); }},
    {1, "imag", "magnitude of the imaginary part", 0,
     [](const BinTerms &t) { return std::fabs(t.im) * std::sqrt(t.s); }},
    {2, "rawpower", "raw power", 0, [](const BinTerms &t) { return t.P; }},
    {3, "rawmagnitude", "raw magnitude", 0, [](const BinTerms &t) { return std::sqrt(t.P); }},
    {4, "amplitude", "amplitude", 0, amplitude},
    {5, "phase", "phase (radians)", 0, phase},
    {6, "db", "amplitude (dB)", 0, decibel},
    {7, "dbmax", "dB relative to the largest bin", 0, decibel},
    {8, "psd", "power spectral density", 1, [](const BinTerms &t) { return t.L * t.dx * t.P / t.D / t.D / 2.0; }},
    {9, "energy", "energy per bin", 1, [](const BinTerms &t) { return t.dx * t.P / t.D / 2.0; }},
    {10, "power", "mean-square power per bin", 1, [](const BinTerms &t) { return t.P / t.D / t.D / 2.0; }},
    {11, "sumsq", "sum of squares per bin", 1, [](const BinTerms &t) { return t.P / t.D / 2.0; }},
    {12, "re", "real part", 0, [](const BinTerms &t) { return t.re * std::sqrt(t.s); }},
    {13, "im", "imaginary part", 0, [](const BinTerms &t) { return t.im * std::sqrt(t.s); }},
    // The complex pair is written by the record builder itself; one value alone is 0.
    {14, "complex", "complex pair", 0, [](const BinTerms &) { return 0.0; }},
    {15, "normpower", "power / variance", 1, [](const BinTerms &t) { return t.P / t.D / t.variance / 2.0; }},
    {30, "amplitude2", "amplitude squared", 0, [](const BinTerms &t) { return t.A * t.A; }},
    {31, "rms", "rms amplitude", 1, [](const BinTerms &t) { return t.A * SQRT1_2; }},
    {40, "third-octave-sum", "third-octave bands, amplitude summed", 0, amplitude},
    {41, "third-octave-mean", "third-octave bands, amplitude averaged", 0, amplitude},
    {42, "octave-sum", "octave bands, amplitude summed", 0, amplitude},
    {43, "octave-mean", "octave bands, amplitude averaged", 0, amplitude},
    {50, "unwrapped", "unwrapped phase (radians)", 0, phase},
};

const int SPECTRUM_FORMAT_COUNT = static_cast<int>(sizeof(SPECTRUM_FORMATS) / sizeof(SPECTRUM_FORMATS[0]));

namespace {

struct FormatIndex {
    const SpectrumFormat *byCode[51] = {};
    FormatIndex()
    {
        for (int i = 0; i < SPECTRUM_FORMAT_COUNT; i++)
            byCode[SPECTRUM_FORMATS[i].code] = &SPECTRUM_FORMATS[i];
    }
};

} // namespace

const SpectrumFormat *FindSpectrumFormat(int code)
{
    static const FormatIndex index;
    // Taken as unsigned: negative codes are as unknown as those above 50.
    if (static_cast<unsigned>(code) > 50u)
        return nullptr;
    return index.byCode[code];
}

int IsDensityFormat(int code)
{
    const SpectrumFormat *f = FindSpectrumFormat(code);
    return f ? f->density : 0;
}

} // namespace oscilla
