// oscilla: spectra and short-time spectra of a series from the command line.
#include "series_io.h"
#include "svg.h"
#include "window_names.h"

#include <oscilla/oscilla.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace {

using oscilla::XY;

struct UsageError {
    std::string message;
};

// A table entry with a code and a name: the library's formats and kernels,
// the tool's windows and gain modes.
struct NamedCode {
    int code;
    const char *name;
};

// A code given by one of the table's names or as a number.
template <class Entry>
int CodeOf(const std::string &value, const char *what, const Entry *table, int count, const char *extra = nullptr)
{
    std::string names = extra ? extra : "";
    for (int i = 0; i < count; i++) {
        if (value == table[i].name)
            return table[i].code;
        names += (names.empty() ? "" : ", ") + std::string(table[i].name);
    }
    char *end = nullptr;
    const long v = std::strtol(value.c_str(), &end, 10);
    if (!value.empty() && end && *end == '\0')
        return static_cast<int>(v);
    throw UsageError{std::string("unknown ") + what + " \"" + value + "\" (one of: " + names + ", or a code)"};
}

int WindowCode(const std::string &v)
{
    if (v == "none")
        return 0;
    return CodeOf(v, "window", tool::WINDOW_NAMES, tool::WINDOW_NAME_COUNT, "none");
}

int FormatCode(const std::string &v)
{
    return CodeOf(v, "format", oscilla::SPECTRUM_FORMATS, oscilla::SPECTRUM_FORMAT_COUNT);
}

int KernelCode(const std::string &v) { return CodeOf(v, "kernel", oscilla::KERNEL_NAMES, oscilla::KERNEL_NAME_COUNT); }

int GainCode(const std::string &v)
{
    static const NamedCode gains[] = {{0, "none"}, {1, "power"}, {2, "coherent"}, {3, "segment"}};
    return CodeOf(v, "gain", gains, 4);
}

const char *FormatLabel(int code)
{
    const oscilla::SpectrumFormat *f = oscilla::FindSpectrumFormat(code);
    return f ? f->label : "value";
}

// Formats whose values are positive magnitudes, drawn on a log axis when they span decades.
bool IsMagnitudeFormat(int code)
{
    static const int codes[] = {2, 3, 4, 8, 9, 10, 11, 15, 30, 31};
    return std::find(std::begin(codes), std::end(codes), code) != std::end(codes);
}

struct Options {
    std::string file, window = "hann", format = "amplitude", kernel = "auto", gain = "coherent", csv, svg;
    double shape = 0.0, overlap = 50.0, dx = 0.0;
    int segment = 0, pad = 0, peaks = 5;
    bool detrend = false;
};

void AddCommon(CLI::App *cmd, Options &o)
{
    cmd->add_option("file", o.file, "Series to read: one column (y) or two (x y); default: the built-in yearly sunspot numbers");
    cmd->add_option("--window", o.window, "Window: a name or a code from 0 to 44")->capture_default_str();
    cmd->add_option("--shape", o.shape, "Shape parameter of shaped windows")->capture_default_str();
    cmd->add_option("--segment", o.segment, "Segment length in points for averaged spectra; 0: one block")
        ->capture_default_str();
    cmd->add_option("--overlap", o.overlap, "Segment overlap in percent")->capture_default_str();
    cmd->add_option("--pad", o.pad, "Zeros to append before the transform")->capture_default_str();
    cmd->add_flag("--detrend", o.detrend, "Subtract the chord through the first and last point");
    cmd->add_option("--kernel", o.kernel, "Transform kernel and length policy: a name or a code")
        ->capture_default_str();
    cmd->add_option("--format", o.format, "Spectrum format: a name or a code")->capture_default_str();
    cmd->add_option("--gain", o.gain, "Window gain correction: none, power, coherent, segment")
        ->capture_default_str();
    cmd->add_option("--dx", o.dx, "Impose this x spacing (x = x1 + (i-1) dx); 0: use the x column")
        ->capture_default_str();
    cmd->add_option("--csv", o.csv, "Write the values as CSV to this file");
    cmd->add_option("--svg", o.svg, "Write a plot as SVG to this file");
}

struct Record {
    XY *p = nullptr;
    explicit Record(const tool::Series &s)
    {
        const int n = static_cast<int>(s.y.size());
        p = static_cast<XY *>(std::calloc(static_cast<size_t>(n) + 1, sizeof(XY)));
        if (!p)
            throw UsageError{"out of memory"};
        p[0].x = n;
        for (int i = 0; i < n; i++) {
            p[i + 1].x = s.x[i];
            p[i + 1].y = s.y[i];
        }
    }
    ~Record() { std::free(p); }
    Record(const Record &) = delete;
    Record &operator=(const Record &) = delete;
};

void WriteFile(const std::string &path, const std::string &text)
{
    std::ofstream f(path, std::ios::binary);
    f << text;
    if (!f)
        throw UsageError{path + ": cannot write file"};
}

tool::Series Load(const Options &o)
{
    tool::Series s = o.file.empty() ? tool::BuiltinSunspots() : tool::ReadSeriesFile(o.file);
    tool::PrepareUniform(s, o.dx);
    return s;
}

struct Peak {
    double freq, value;
};

// The strongest maxima of a spectrum record, strongest first, refined between
// bins by the library's peak scan (natural spline through the bins).
std::vector<Peak> FindPeaks(XY *p, int count)
{
    std::vector<Peak> peaks;
    if (count < 1)
        return peaks;
    oscilla::CScan scan;
    XY *m = scan.GetLmtdMaxima(p, 1, oscilla::PEAK_SPLINE, count);
    if (!m)
        return peaks;
    for (int i = 1; i <= static_cast<int>(m[0].x); i++)
        peaks.push_back({m[i].x, m[i].y});
    std::free(m);
    std::sort(peaks.begin(), peaks.end(), [](const Peak &x, const Peak &y) { return x.value > y.value; });
    return peaks;
}

std::string Fmt(const char *f, double v)
{
    char b[64];
    std::snprintf(b, sizeof b, f, v);
    return b;
}

int RunSpectrum(const Options &o)
{
    const int window = WindowCode(o.window), format = FormatCode(o.format), kernel = KernelCode(o.kernel),
              gain = GainCode(o.gain);
    if (o.peaks < 0)
        throw UsageError{"--peaks must not be negative"};
    tool::Series s = Load(o);
    Record rec(s);
    const int n = static_cast<int>(s.y.size());
    if (o.segment < 0 || o.segment > n)
        throw UsageError{"--segment must be between 0 and the number of points (" + std::to_string(n) + ")"};
    oscilla::CFFT f(rec.p, kernel, o.detrend ? 1 : 0, o.pad, window, o.shape, o.segment, o.overlap, gain);
    XY *spec = f.GetXYpFFT(format, 0, 0);
    if (!spec)
        throw UsageError{"the spectrum could not be computed (out of memory or no segment fits)"};
    const int M = static_cast<int>(spec[0].x);

    std::printf("# %s\n", s.source.c_str());
    std::printf("# %d points, spacing %g, transform length %d (%d zeros), %d block(s)\n", n, f.GetXSpc(), f.GetLen(),
                f.GetPad(), f.GetIPass());
    const tool::WindowName *wn = tool::FindWindowName(window);
    std::printf("# window %s, format %s\n", wn ? wn->name : std::to_string(window).c_str(), FormatLabel(format));
    const auto peaks = FindPeaks(spec, o.peaks);
    std::printf("%4s %14s %14s %16s\n", "rank", "frequency", "period", FormatLabel(format));
    for (size_t i = 0; i < peaks.size(); i++)
        std::printf("%4zu %14.6g %14.6g %16.6g\n", i + 1, peaks[i].freq, peaks[i].freq > 0 ? 1.0 / peaks[i].freq : 0.0,
                    peaks[i].value);

    if (!o.csv.empty()) {
        std::string text = "frequency,value\n";
        for (int k = 1; k <= M; k++)
            text += Fmt("%.17g", spec[k].x) + "," + Fmt("%.17g", spec[k].y) + "\n";
        WriteFile(o.csv, text);
    }
    if (!o.svg.empty()) {
        tool::LinePlot plot;
        plot.title = "Spectrum of " + s.source;
        plot.xlabel = "frequency (cycles per x unit)";
        plot.ylabel = FormatLabel(format);
        double lo = 1e300, hi = 0;
        for (int k = 1; k <= M; k++) {
            plot.x.push_back(spec[k].x);
            plot.y.push_back(spec[k].y);
            if (spec[k].y > 0) {
                lo = std::min(lo, spec[k].y);
                hi = std::max(hi, spec[k].y);
            }
        }
        plot.logy = IsMagnitudeFormat(format) && hi > 0 && hi / lo > 1e3;
        for (const Peak &pk : peaks)
            plot.markers.push_back({pk.freq, pk.value, "period " + Fmt("%.4g", pk.freq > 0 ? 1 / pk.freq : 0.0)});
        WriteFile(o.svg, tool::RenderLinePlot(plot));
    }
    return 0;
}

int RunSTFT(const Options &o)
{
    const int window = WindowCode(o.window), format = FormatCode(o.format), kernel = KernelCode(o.kernel),
              gain = GainCode(o.gain);
    tool::Series s = Load(o);
    Record rec(s);
    const int n = static_cast<int>(s.y.size());
    int seglen = o.segment > 0 ? o.segment : std::max(4, std::min(n, n / 8 > 16 ? n / 8 : 16));
    if (seglen > n)
        throw UsageError{"--segment must not exceed the number of points (" + std::to_string(n) + ")"};
    oscilla::CFFT f(rec.p, kernel, o.detrend ? 1 : 0, o.pad, window, o.shape, seglen, o.overlap, gain);
    oscilla::XYZ *g = f.STFT(format);
    if (!g)
        throw UsageError{"the short-time spectrum could not be computed"};
    const int points = static_cast<int>(g[0].x), slices = static_cast<int>(g[0].y), per = static_cast<int>(g[0].w);
    std::printf("# %s\n", s.source.c_str());
    std::printf("# %d points, segment %d, overlap %g%%, %d slices of %d values, format %s\n", n, f.GetSeglen(),
                o.overlap, slices, per, FormatLabel(format));
    // The ridge: the strongest maximum of every slice.
    std::printf("%14s %14s %16s\n", "time", "frequency", FormatLabel(format));
    if (oscilla::XYZ *pk = f.STFTPeaks(format, 1))
        for (int i = 1; i <= static_cast<int>(pk[0].x); i++)
            std::printf("%14.6g %14.6g %16.6g\n", pk[i].x, pk[i].y, pk[i].z);
    if (!o.csv.empty()) {
        std::string text = "time,frequency,value\n";
        for (int i = 1; i <= points; i++)
            text += Fmt("%.17g", g[i].x) + "," + Fmt("%.17g", g[i].y) + "," + Fmt("%.17g", g[i].z) + "\n";
        WriteFile(o.csv, text);
    }
    if (!o.svg.empty()) {
        tool::HeatMap h;
        h.title = "Short-time spectrum of " + s.source;
        h.xlabel = "time (x units)";
        h.ylabel = "frequency (cycles per x unit)";
        h.zlabel = FormatLabel(format);
        h.nx = slices;
        h.ny = per;
        const double dt = slices > 1 ? (g[1 + (slices - 1) * per].x - g[1].x) / (slices - 1) : 1.0;
        const double df = per > 1 ? (g[per].y - g[1].y) / (per - 1) : 1.0;
        h.x0 = g[1].x - dt / 2;
        h.x1 = g[1 + (slices - 1) * per].x + dt / 2;
        h.y0 = std::max(0.0, g[1].y - df / 2);
        h.y1 = g[per].y + df / 2;
        for (int i = 1; i <= points; i++)
            h.z.push_back(g[i].z);
        WriteFile(o.svg, tool::RenderHeatMap(h));
    }
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    CLI::App app{"oscilla: spectra of a sampled series (numeric signal analysis)"};
    app.require_subcommand(1);
    Options spec, stft;
    stft.format = "db";
    CLI::App *cs = app.add_subcommand("spectrum", "Spectrum of a series, with its strongest peaks");
    AddCommon(cs, spec);
    cs->add_option("--peaks", spec.peaks, "How many peaks to list")->capture_default_str();
    CLI::App *ct = app.add_subcommand("stft", "Short-time spectrum (spectrogram) of a series, with its ridge");
    AddCommon(ct, stft);
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp &e) {
        return app.exit(e);
    } catch (const CLI::CallForAllHelp &e) {
        return app.exit(e);
    } catch (const CLI::ParseError &e) {
        std::fprintf(stderr, "oscilla: %s\n", e.what());
        return 2;
    }
    try {
        if (cs->parsed())
            return RunSpectrum(spec);
        return RunSTFT(stft);
    } catch (const tool::InputError &e) {
        std::fprintf(stderr, "oscilla: %s\n", e.message.c_str());
        return 2;
    } catch (const UsageError &e) {
        std::fprintf(stderr, "oscilla: %s\n", e.message.c_str());
        return 2;
    } catch (const std::exception &e) {
        std::fprintf(stderr, "oscilla: %s\n", e.what());
        return 2;
    }
}
