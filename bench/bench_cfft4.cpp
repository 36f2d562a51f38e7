// CFFT4 complex transform speed, side by side with FFTW3 when it is present.
// Every iteration transforms the same buffer in place, alternating forward and
// inverse; each 32 iterations the data are brought back by an exact power of
// two, so that the values stay finite without copying input in the timed loop.
#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <vector>

#include "oscilla/fft/cfft4.h"

#ifdef OSCILLA_HAVE_FFTW
#include <fftw3.h>
#endif

namespace {

void fill(double *a, int count)
{
    std::mt19937 gen(42);
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    for (int i = 0; i < count; i++)
        a[i] = u(gen);
}

int log2i(int n)
{
    int p = 0;
    while ((1 << p) < n)
        p++;
    return p;
}

// Undoes the growth of 16 forward/inverse pairs, a factor n^16.
void rescale(double *a, int count, int p)
{
    const double s = std::ldexp(1.0, -16 * p);
    for (int i = 0; i < count; i++)
        a[i] *= s;
}

void BM_CFFT4_Complex(benchmark::State &state)
{
    const int n = static_cast<int>(state.range(0)), p = log2i(n);
    std::vector<double> a(2 * n);
    fill(a.data(), 2 * n);
    oscilla::CFFT4 f;
    int i = 0;
    for (auto _ : state) {
        f.ComplexFFT(a.data(), n, (i & 1) ? -1 : 1);
        if ((++i & 31) == 0)
            rescale(a.data(), 2 * n, p);
        benchmark::ClobberMemory();
    }
    state.counters["MFlops"] = benchmark::Counter(5.0 * n * p, benchmark::Counter::kIsIterationInvariantRate,
                                                  benchmark::Counter::OneK::kIs1000);
}

// The same with the tables rebuilt at every call, as a fresh object does.
void BM_CFFT4_ComplexWithTables(benchmark::State &state)
{
    const int n = static_cast<int>(state.range(0)), p = log2i(n);
    std::vector<double> a(2 * n);
    fill(a.data(), 2 * n);
    oscilla::CFFT4 f;
    int i = 0;
    for (auto _ : state) {
        f.SetN(n);
        f.ComplexFFT(a.data(), n, (i & 1) ? -1 : 1);
        if ((++i & 31) == 0)
            rescale(a.data(), 2 * n, p);
        benchmark::ClobberMemory();
    }
}

void BM_CFFT4_Real(benchmark::State &state)
{
    const int n = static_cast<int>(state.range(0));
    std::vector<double> a(n);
    fill(a.data(), n);
    oscilla::CFFT4 f;
    int i = 0;
    for (auto _ : state) {
        f.RealFFT(a.data(), n, (i & 1) ? -1 : 1);
        if ((++i & 31) == 0)
            rescale(a.data(), n, log2i(n) - 1);
        benchmark::ClobberMemory();
    }
}

#ifdef OSCILLA_HAVE_FFTW
void BM_FFTW_Complex(benchmark::State &state)
{
    const int n = static_cast<int>(state.range(0)), p = log2i(n);
    fftw_complex *a = fftw_alloc_complex(n);
    fftw_plan fwd = fftw_plan_dft_1d(n, a, a, FFTW_FORWARD, FFTW_MEASURE);
    fftw_plan inv = fftw_plan_dft_1d(n, a, a, FFTW_BACKWARD, FFTW_MEASURE);
    double *d = reinterpret_cast<double *>(a);
    fill(d, 2 * n);
    int i = 0;
    for (auto _ : state) {
        fftw_execute((i & 1) ? inv : fwd);
        if ((++i & 31) == 0)
            rescale(d, 2 * n, p);
        benchmark::ClobberMemory();
    }
    state.counters["MFlops"] = benchmark::Counter(5.0 * n * p, benchmark::Counter::kIsIterationInvariantRate,
                                                  benchmark::Counter::OneK::kIs1000);
    fftw_destroy_plan(fwd);
    fftw_destroy_plan(inv);
    fftw_free(a);
}
BENCHMARK(BM_FFTW_Complex)->RangeMultiplier(4)->Range(64, 1 << 20)->Arg(1 << 15)->Arg(1 << 17);
#endif

} // namespace

BENCHMARK(BM_CFFT4_Complex)->RangeMultiplier(4)->Range(64, 1 << 20)->Arg(1 << 15)->Arg(1 << 17);
BENCHMARK(BM_CFFT4_ComplexWithTables)->RangeMultiplier(16)->Range(64, 1 << 20);
BENCHMARK(BM_CFFT4_Real)->RangeMultiplier(16)->Range(64, 1 << 20);
