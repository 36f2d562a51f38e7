// A small host: builds a two-tone series, transforms it with CFFT and prints
// the transform length, the padding and the strongest bins.
#include <oscilla/oscilla.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>

int main()
{
    using namespace oscilla;
    const int n = 1000;
    const double dt = 0.001; // 1 kHz sampling
    std::vector<double> x(n), y(n);
    for (int i = 0; i < n; i++) {
        x[i] = i * dt;
        y[i] = 1.0 * std::sin(2 * 3.14159265358979323846 * 50.0 * x[i]) +
               0.5 * std::sin(2 * 3.14159265358979323846 * 120.0 * x[i]);
    }
    CXY series(n, x.data(), y.data());
    CFFT spectrum(series.Getpxy(), 0, 0, 0, 0, 0.0, 0, 0.0, 0);
    const double *b = spectrum.GetFFT();
    if (!b) {
        std::fprintf(stderr, "transform failed\n");
        return 1;
    }
    const int L = spectrum.GetLen();
    std::printf("points %d, transform length %d, padding %d\n", spectrum.GetCnt(), L, spectrum.GetPad());
    std::vector<int> bins(L / 2 + 1);
    for (int k = 0; k <= L / 2; k++)
        bins[k] = k;
    auto amp = [&](int k) { return std::hypot(b[2 * k + 1], b[2 * k + 2]) * 2.0 / n; };
    std::partial_sort(bins.begin(), bins.begin() + 5, bins.end(), [&](int a, int c) { return amp(a) > amp(c); });
    const double df = 1.0 / (L * spectrum.GetXSpc());
    std::printf("%6s %12s %12s\n", "bin", "frequency", "amplitude");
    for (int i = 0; i < 5; i++)
        std::printf("%6d %12.3f %12.5f\n", bins[i], bins[i] * df, amp(bins[i]));
    return 0;
}
