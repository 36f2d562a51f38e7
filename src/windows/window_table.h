// The window code table: what each integer window code builds and the two
// figures it answers without building. The constructor's dispatch, Width,
// PowerReduction and the tests all walk this one table.
#ifndef OSCILLA_SRC_WINDOWS_WINDOW_TABLE_H
#define OSCILLA_SRC_WINDOWS_WINDOW_TABLE_H

namespace oscilla {
namespace detail {

enum class WinKind {
    NotFilled, // codes 26, 32, 33: no window behind the code
    Rectangular,
    Welch,
    Bartlett,
    GenCos2, // arg = selector
    GenCos3,
    GenCos4,
    GenCos5,
    CosineSq,
    Kaiser,
    TaperedCosine,
    ModBartlett,
    Tukey,      // param = the fixed shape
    TriCubeWin, // param = the fixed exponent
    BetaWin,
    GaussWin,
    Chebyshev,
    ChebApprox,
    VanderMaas,
    Slepian, // arg = taper
    Sine
};

// Width: a fixed value, the shape itself, or one of the fitted formulas.
enum class WidthKind { Value, Shape, W1, W2 };

// Power reduction: a fixed value or one of the fitted formulas A..H.
enum class PowerKind { Value, A, B, C, D, E, F, G, H };

struct WindowCode {
    int code;
    WinKind kind;
    int arg;       // selector of a cosine sum, or the Slepian taper
    double param;  // fixed shape of codes that take none from the caller
    bool shaped;   // whether the caller's shape parameter counts
    WidthKind widthKind;
    double width;
    PowerKind powerKind;
    double power;
};

constexpr int WINDOW_CODE_COUNT = 45;
// Row i describes code i.
extern const WindowCode kWindowCodes[WINDOW_CODE_COUNT];

// Fitted figure: a * s^b + c (power law) or a * exp(-s / b) + c.
struct FittedFigure {
    bool exponential;
    double a, b, c;
};
// Indexed by PowerKind::A .. H (PowerKind value - 1).
extern const FittedFigure kPowerFormulas[8];

// Cosine-sum coefficient rows, a0 first; a selector outside a table gives zeros.
constexpr int GENCOS2_ROWS = 2, GENCOS3_ROWS = 8, GENCOS4_ROWS = 13, GENCOS5_ROWS = 1;
extern const double kGenCos2[GENCOS2_ROWS][2];
extern const double kGenCos3[GENCOS3_ROWS][3];
extern const double kGenCos4[GENCOS4_ROWS][4];
extern const double kGenCos5[GENCOS5_ROWS][5];

// The row of a code, or null for a code outside 0..44.
const WindowCode *FindWindowCode(int code);

// Side-lobe level in decibels of the two Dolph-Chebyshev codes for a shape.
inline double ChebyshevSideLobeDb(double shape) { return 27.79259718492468 * shape - 9.033804558629607; }

} // namespace detail
} // namespace oscilla

#endif
