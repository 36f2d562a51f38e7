// CWinFn as an object: building and keeping windows by code, applying them
// with their gains, the width and power figures of the code table, and the
// gains as the spectrum engine stores them.
#include "oscilla/spectrum/cfft.h"
#include "oscilla/windows/cwinfn.h"

#include "windows/window_table.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstdlib>
#include <vector>

using namespace oscilla;

namespace {

constexpr double kEps = DBL_EPSILON;
constexpr double kRogue = -12345.678;

} // namespace

TEST(WindowObject, BuildsEveryCodeAndKeepsTheOldWindowWhenItCannot)
{
    CWinFn win;
    EXPECT_EQ(win.Get(), nullptr);
    double *hann = win.WindowFn(3, 9, 0.0);
    ASSERT_NE(hann, nullptr);
    EXPECT_EQ(win.Get(), hann);
    // Too short: null, and the kept window is neither freed nor changed.
    for (int n : {1, 0, -5})
        EXPECT_EQ(win.WindowFn(4, n, 0.0), nullptr) << n;
    ASSERT_EQ(win.Get(), hann);
    EXPECT_EQ(hann[4], 1.0);
    EXPECT_EQ(hann[0], 0.0);

    for (const detail::WindowCode &row : detail::kWindowCodes) {
        CWinFn w(3, 9, 0.0);
        double *old = w.Get();
        double *got = w.WindowFn(row.code, 16, 3.0);
        if (row.kind == detail::WinKind::Slepian) { // no service builds these yet
            EXPECT_EQ(got, nullptr) << "code " << row.code;
            EXPECT_EQ(w.Get(), old) << "code " << row.code;
            EXPECT_EQ(old[4], 1.0);
        } else {
            ASSERT_NE(got, nullptr) << "code " << row.code;
            EXPECT_EQ(w.Get(), got);
        }
    }
    // Codes outside the table are not windows, but a buffer is handed out.
    for (int code : {-1, 45, 1000})
        EXPECT_NE(CWinFn().WindowFn(code, 8, 0.0), nullptr) << code;
}

TEST(WindowObject, WindowDataGainsOnKnownData)
{
    // Hann over 5 points is 0, 1/2, 1, 1/2, 0 (sum 2, sum of squares 3/2).
    std::vector<double> d = {kRogue, 1.0, 1.0, 1.0, 1.0, 1.0, kRogue};
    double gains[2] = {-1, -1};
    CWinFn win;
    EXPECT_EQ(win.WindowData(d.data(), 1, 3, 5, 0.0, gains), 1);
    EXPECT_NEAR(gains[0], 5.0 / 1.5, 4 * kEps);
    EXPECT_NEAR(gains[1], 5.0 / 2.0, 4 * kEps);
    const double expect[] = {kRogue, 0.0, 0.5, 1.0, 0.5, 0.0, kRogue};
    for (int i = 0; i < 7; i++)
        EXPECT_NEAR(d[i], expect[i], 4 * kEps) << i;

    // The power gain depends on the data: a spike at the middle keeps its
    // power; all-zero data give a power gain of 0, while the coherent gain is
    // still n over the window sum (Bartlett over 9 points sums to 4).
    std::vector<double> spike = {0.0, 0.0, 3.0, 0.0, 0.0}, zeros(9, 0.0);
    EXPECT_EQ(win.WindowData(spike.data(), 0, 3, 5, 0.0, gains), 1);
    EXPECT_NEAR(gains[0], 1.0, 4 * kEps);
    EXPECT_NEAR(gains[1], 2.5, 4 * kEps);
    EXPECT_EQ(win.WindowData(zeros.data(), 0, 2, 9, 0.0, gains), 1);
    EXPECT_EQ(gains[0], 0.0);
    EXPECT_NEAR(gains[1], 9.0 / 4.0, 4 * kEps);

    // Without a gain array the data are only multiplied; a code that is not
    // a window still multiplies and answers 1.
    std::vector<double> ones(6, 1.0), data26(4, 2.0);
    EXPECT_EQ(win.WindowData(ones.data(), 0, 1, 6, 0.0, nullptr), 1);
    for (int i = 0; i < 6; i++)
        EXPECT_EQ(ones[i], win.Get()[i]);
    EXPECT_EQ(win.WindowData(data26.data(), 0, 26, 4, 0.0, nullptr), 1);

    // Nothing built: 0, the data and gains untouched.
    std::vector<double> keep = {3.0, 4.0};
    gains[0] = gains[1] = 7.0;
    EXPECT_EQ(win.WindowData(keep.data(), 0, 3, 1, 0.0, gains), 0);
    EXPECT_EQ(win.WindowData(keep.data(), 0, 39, 2, 2.0, gains), 0);
    EXPECT_EQ(keep, (std::vector<double>{3.0, 4.0}));
    EXPECT_EQ(gains[0], 7.0);
    EXPECT_EQ(win.WindowData(nullptr, 0, 3, 4, 0.0, gains), 0);

    // The data constructor is WindowData.
    std::vector<double> e = {kRogue, 1.0, 1.0, 1.0, 1.0, 1.0, kRogue};
    CWinFn byctor(e.data(), 1, 3, 5, 0.0, gains);
    EXPECT_NEAR(gains[1], 2.5, 4 * kEps);
    EXPECT_EQ(e[0], kRogue);
    EXPECT_EQ(e[6], kRogue);
    EXPECT_NE(byctor.Get(), nullptr);
}

TEST(WindowObject, WidthAndPowerSpotValuesForEveryRowKind)
{
    // Fixed figures (code 10 has no measured power value; the flat tops 38
    // and 42 are the same window with different widths).
    const struct {
        int code;
        double shape, width, power;
    } fixed[] = {{2, 9.0, 2.8, 0.7526}, {24, 0.0, 2.3, 0.621}, {38, 0.0, 0.0, 1.0}};
    for (const auto &f : fixed) {
        EXPECT_EQ(CWinFn::Width(f.code, f.shape), f.width) << f.code;
        EXPECT_EQ(CWinFn::PowerReduction(f.code, f.shape), f.power) << f.code;
    }
    EXPECT_EQ(CWinFn::PowerReduction(10, 0.0), 1.0);
    EXPECT_EQ(CWinFn::Width(42, 0.0), 3.0);
    // The shape is the width.
    for (int code : {21, 22, 28, 29, 37, 39, 40, 41})
        EXPECT_EQ(CWinFn::Width(code, 3.25), 3.25) << code;
    // Fitted widths.
    EXPECT_NEAR(CWinFn::Width(23, 0.5), 1.993967302536256, 1e-14);
    EXPECT_NEAR(CWinFn::Width(30, 3.0), 0.39041538461538466, 1e-15);
    EXPECT_EQ(CWinFn::Width(31, 3.0), CWinFn::Width(30, 3.0));
    // Fitted power figures A to H.
    const struct {
        int code;
        double shape, value;
    } fits[] = {{21, 3.0, 0.5177363036929725}, {22, 3.0, 0.575902260035908}, {23, 0.5, 0.6665601814571284},
                {28, 3.0, 0.5072585162457218}, {29, 3.0, 0.6350646310175267}, {30, 60.0, 0.6637598951727044},
                {31, 60.0, 0.6637598951727044}, {37, 3.0, 0.596370083467658}, {39, 3.0, 0.5678711077326443}};
    for (const auto &f : fits)
        EXPECT_NEAR(CWinFn::PowerReduction(f.code, f.shape), f.value, 1e-14) << f.code;
    // From 40 up there is no power figure; outside the table no width either.
    for (int code : {40, 41, 44, 45, 100, 26, 32, 33, -1, 1000})
        EXPECT_EQ(CWinFn::PowerReduction(code, 3.0), 1.0) << code;
    for (int code : {26, 32, 33, -1, 45, 1000})
        EXPECT_EQ(CWinFn::Width(code, 3.0), 0.0) << code;
}

// The measured power figures are the inverse equivalent noise bandwidth,
// (sum w)^2 / (n sum w^2), of the windows they belong to: recompute it from
// the built windows.
TEST(WindowObject, PowerFiguresAgreeWithTheBuiltWindows)
{
    const int n = 1024;
    auto inverse_enbw = [n](int code, double shape) {
        CWinFn win(code, n, shape);
        long double s = 0, s2 = 0;
        for (int i = 0; i < n; i++) {
            s += win.Get()[i];
            s2 += static_cast<long double>(win.Get()[i]) * win.Get()[i];
        }
        return static_cast<double>(s * s / (n * s2));
    };
    for (const detail::WindowCode &row : detail::kWindowCodes)
        if (row.powerKind == detail::PowerKind::Value && row.power != 1.0) {
            EXPECT_NEAR(CWinFn::PowerReduction(row.code, 0.0) / inverse_enbw(row.code, 0.0), 1.0, 0.01)
                << "code " << row.code;
        }
    for (int code : {21, 22, 28, 29, 37})
        for (double shape : {1.5, 2.0, 3.0, 4.0, 6.0})
            EXPECT_NEAR(CWinFn::PowerReduction(code, shape) / inverse_enbw(code, shape), 1.0, 0.02)
                << "code " << code << " shape " << shape;
}

// A unit sine at an integer bin through the engine with a Hann window: the
// trailer's coherent gain restores its amplitude, in the raw block and in
// the amplitude spectrum (code 4) with gain mode 2; mode 0 leaves the
// window's loss, its mean (N - 1) / (2N). Without a window both gains are 1.
TEST(WindowObject, EngineStoresGainsThatRestoreAHannWindowedSine)
{
    const int N = 256, bin = 32;
    XY *xy = static_cast<XY *>(std::calloc(N + 1, sizeof(XY)));
    ASSERT_NE(xy, nullptr);
    xy[0].x = N;
    double sumsq = 0.0, wsq = 0.0;
    CWinFn hann(3, N, 0.0);
    for (int i = 1; i <= N; i++) {
        xy[i].x = i - 1;
        xy[i].y = std::sin(2.0 * 3.14159265358979323846 * bin * (i - 1) / N);
        sumsq += xy[i].y * xy[i].y;
        wsq += std::pow(hann.Get()[i - 1] * xy[i].y, 2);
    }
    CFFT g2(xy, 0, 0, 0, 3, 0.0, 0, 0.0, 2), g0(xy, 0, 0, 0, 3, 0.0, 0, 0.0, 0), plain(xy, 0, 0, 0, 0, 0.0, 0, 0.0, 2);
    const double *b = g2.GetFFT(), *p = plain.GetFFT();
    ASSERT_TRUE(b && p);
    ASSERT_EQ(static_cast<int>(b[0]), N);
    // Symmetric Hann over N points sums to (N - 1) / 2.
    EXPECT_NEAR(b[N + 4], std::pow(N / ((N - 1) / 2.0), 2), 1e-12);
    EXPECT_NEAR(b[N + 3], sumsq / wsq, 1e-12);
    EXPECT_EQ(b[N + 5], 1.0);
    EXPECT_NEAR(2.0 * std::hypot(b[2 * bin + 1], b[2 * bin + 2]) / N * std::sqrt(b[N + 4]), 1.0, 1e-5);
    EXPECT_EQ(p[N + 3], 1.0);
    EXPECT_EQ(p[N + 4], 1.0);

    const XY *a2 = g2.GetXYpFFT(4, 0, 0), *a0 = g0.GetXYpFFT(4, 0, 0);
    ASSERT_TRUE(a2 && a0);
    EXPECT_NEAR(a2[bin + 1].y, 1.0, 1e-5);
    EXPECT_NEAR(a0[bin + 1].y, (N - 1) / (2.0 * N), 1e-5);
    std::free(xy);
}
