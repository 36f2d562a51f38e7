// Every complex kernel through the public front ends (cmplxfft and realft
// with primefac set to the kernel code), next to FFTW with FFTW_MEASURE at
// the same lengths. Each row of ours carries `vs_fftw`: our time / FFTW time.
#include "oscilla/fft/lengths.h"
#include "oscilla/spectrum/cfft.h"

#include <benchmark/benchmark.h>

#ifdef OSCILLA_HAVE_FFTW
#include <fftw3.h>
#endif

#include <algorithm>
#include <chrono>
#include <cmath>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

using namespace oscilla;

namespace {

using Clock = std::chrono::steady_clock;

std::vector<double> noise(size_t count)
{
    std::mt19937 gen(7);
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    std::vector<double> v(count);
    for (auto &d : v)
        d = u(gen);
    return v;
}

// Forward transforms grow the data, by a factor that depends on the kind of
// transform (a real one packs half the spectrum); the data are scaled back to
// unit root mean square outside the timed region. A fixed factor would let
// them drift into subnormal numbers over many runs and time those instead.
void rescale(double *p, size_t count)
{
    double ss = 0.0;
    for (size_t i = 0; i < count; i++)
        ss += p[i] * p[i];
    if (!(ss > 0.0))
        return;
    const double f = std::sqrt(static_cast<double>(count) / ss);
    for (size_t i = 0; i < count; i++)
        p[i] *= f;
}

#ifdef OSCILLA_HAVE_FFTW
// One plan and buffer per (kind, n), made once with FFTW_MEASURE.
struct FftwCase {
    fftw_plan plan = nullptr;
    double *buf = nullptr;
    size_t count = 0;
    double seconds = 0.0; // per transform, 0 until measured
};

FftwCase &fftw_case(bool real, int n)
{
    static std::map<std::pair<bool, int>, FftwCase> cases;
    FftwCase &c = cases[{real, n}];
    if (!c.plan) {
        c.count = real ? static_cast<size_t>(n) + 2 : 2 * static_cast<size_t>(n);
        c.buf = static_cast<double *>(fftw_malloc(sizeof(double) * c.count));
        std::fill(c.buf, c.buf + c.count, 0.0);
        if (real)
            c.plan = fftw_plan_dft_r2c_1d(n, c.buf, reinterpret_cast<fftw_complex *>(c.buf), FFTW_MEASURE);
        else
            c.plan = fftw_plan_dft_1d(n, reinterpret_cast<fftw_complex *>(c.buf),
                                      reinterpret_cast<fftw_complex *>(c.buf), FFTW_BACKWARD, FFTW_MEASURE);
        const std::vector<double> x = noise(c.count);
        std::copy(x.begin(), x.end(), c.buf);
    }
    return c;
}

// Best of several timed batches: the figure the ratios are taken against.
double fftw_seconds(bool real, int n)
{
    FftwCase &c = fftw_case(real, n);
    if (c.seconds > 0.0)
        return c.seconds;
    double best = 1e30;
    for (int batch = 0; batch < 7; batch++) {
        int reps = 0;
        double total = 0.0;
        while (total < 0.02 || reps < 3) {
            const auto t0 = Clock::now();
            fftw_execute(c.plan);
            total += std::chrono::duration<double>(Clock::now() - t0).count();
            reps++;
            rescale(c.buf, c.count);
        }
        best = std::min(best, total / reps);
    }
    c.seconds = best;
    return best;
}

void BM_fftw(benchmark::State &state, bool real, int n)
{
    FftwCase &c = fftw_case(real, n);
    for (auto _ : state) {
        const auto t0 = Clock::now();
        fftw_execute(c.plan);
        state.SetIterationTime(std::chrono::duration<double>(Clock::now() - t0).count());
        rescale(c.buf, c.count);
    }
}
#endif

void BM_ours(benchmark::State &state, int code, bool real, int n)
{
    CFFT engine(nullptr, code, 0, 0, 0, 0.0, 0, 0.0, 0);
    // realft is one-based and stores bins 0..n/2 up to index n+2.
    std::vector<double> data = noise(real ? static_cast<size_t>(n) + 3 : 2 * static_cast<size_t>(n));
    double timed = 0.0;
    for (auto _ : state) {
        const auto t0 = Clock::now();
        if (real)
            engine.realft(data.data(), n, 1, 1);
        else
            engine.cmplxfft(reinterpret_cast<complex *>(data.data()), n, 1, 0);
        const double s = std::chrono::duration<double>(Clock::now() - t0).count();
        state.SetIterationTime(s);
        timed += s;
        rescale(data.data(), data.size());
    }
#ifdef OSCILLA_HAVE_FFTW
    if (state.iterations() > 0)
        state.counters["vs_fftw"] = timed / static_cast<double>(state.iterations()) / fftw_seconds(real, n);
#else
    (void)timed;
#endif
}

const char *kKernelNames[] = {"split-radix", "prime-factor", "mixed-radix", "direct", "chirp-z", "auto"};

// Whether kernel `code` serves a transform of n points (complex) or of n
// real values (the kernel then runs on n/2 points when 4 divides n).
bool serves(int code, bool real, int n)
{
    const int m = real && n % 4 == 0 ? n / 2 : n;
    const bool pow2 = (m & (m - 1)) == 0;
    const bool table = PFA_MAX % m == 0;
    switch (code) {
    case KERNEL_SPLIT_RADIX:
        return pow2 && !(real && n % 4 != 0);
    case KERNEL_PRIME_FACTOR:
        return table;
    case KERNEL_MIXED_RADIX:
        return LargestPrimeFactor(m) < 5000; // the general odd butterfly is quadratic
    case KERNEL_DIRECT:
        return n <= 1100; // a reference: quadratic with two trig calls a term
    case KERNEL_CHIRP_Z:
        return m <= 1 << 19;
    default:
        return true;
    }
}

const int kSizes[] = {1024, 4096, 65536, 1 << 20, 1000, 1008, 5040, 720720, 1031, 65537};

const bool registered = [] {
    for (bool real : {false, true}) {
        const std::string kind = real ? "real" : "complex";
        for (int n : kSizes) {
#ifdef OSCILLA_HAVE_FFTW
            benchmark::RegisterBenchmark((kind + "/fftw/" + std::to_string(n)).c_str(), BM_fftw, real, n)
                ->UseManualTime()
                ->Unit(benchmark::kMicrosecond);
#endif
            for (int code = 0; code <= KERNEL_AUTO; code++)
                if (serves(code, real, n))
                    benchmark::RegisterBenchmark((kind + "/" + kKernelNames[code] + "/" + std::to_string(n)).c_str(),
                                                 BM_ours, code, real, n)
                        ->UseManualTime()
                        ->Unit(benchmark::kMicrosecond);
        }
    }
    return true;
}();

} // namespace


