// The window code table and the coefficient tables of the cosine sums.
#include "windows/window_table.h"

namespace oscilla {
namespace detail {

namespace {
constexpr WinKind NF = WinKind::NotFilled;
constexpr WidthKind WV = WidthKind::Value, WS = WidthKind::Shape;
constexpr PowerKind PV = PowerKind::Value;
} // namespace

const WindowCode kWindowCodes[WINDOW_CODE_COUNT] = {
    // code, kind, arg, param, shaped, width kind, width, power kind, power
    {0, WinKind::Rectangular, 0, 0.0, false, WV, 1.0, PV, 1.0},
    {1, WinKind::Welch, 0, 0.0, false, WV, 1.4, PV, 0.8357},
    {2, WinKind::Bartlett, 0, 0.0, false, WV, 2.8, PV, 0.7526},
    {3, WinKind::GenCos2, 1, 0.0, false, WV, 2.0, PV, 0.6695},   // Hann
    {4, WinKind::GenCos2, 2, 0.0, false, WV, 2.0, PV, 0.7341},   // Hamming
    {5, WinKind::GenCos3, 1, 0.0, false, WV, 3.0, PV, 0.5171},   // cosine squared, three terms
    {6, WinKind::GenCos3, 2, 0.0, false, WV, 3.0, PV, 0.5821},   // Blackman
    {7, WinKind::GenCos3, 3, 0.0, false, WV, 3.0, PV, 0.5671},
    {8, WinKind::GenCos3, 4, 0.0, false, WV, 3.0, PV, 0.5933},   // exact Blackman
    {9, WinKind::GenCos3, 5, 0.0, false, WV, 3.0, PV, 0.5899},   // minimum side lobe
    {10, WinKind::GenCos3, 6, 0.0, false, WV, 3.0, PV, 1.0},     // length dependent
    {11, WinKind::GenCos4, 1, 0.0, false, WV, 4.0, PV, 0.4355},  // binomial
    {12, WinKind::GenCos4, 2, 0.0, false, WV, 4.0, PV, 0.4734},
    {13, WinKind::GenCos4, 3, 0.0, false, WV, 4.0, PV, 0.4975},
    {14, WinKind::GenCos4, 4, 0.0, false, WV, 4.0, PV, 0.5018},  // Blackman-Harris
    {15, WinKind::GenCos4, 5, 0.0, false, WV, 4.0, PV, 0.5089},
    {16, WinKind::GenCos4, 6, 0.0, false, WV, 4.0, PV, 1.0},
    {17, WinKind::GenCos4, 7, 0.0, false, WV, 4.0, PV, 1.0},
    {18, WinKind::GenCos4, 8, 0.0, false, WV, 4.0, PV, 1.0},
    {19, WinKind::GenCos4, 9, 0.0, false, WV, 4.0, PV, 1.0},
    {20, WinKind::GenCos4, 10, 0.0, false, WV, 4.0, PV, 1.0},
    {21, WinKind::CosineSq, 0, 0.0, true, WS, 0.0, PowerKind::A, 0.0},
    {22, WinKind::Kaiser, 0, 0.0, true, WS, 0.0, PowerKind::B, 0.0},
    {23, WinKind::TaperedCosine, 0, 0.0, true, WidthKind::W1, 0.0, PowerKind::C, 0.0},
    {24, WinKind::ModBartlett, 0, 0.0, false, WV, 2.3, PV, 0.621},
    {25, WinKind::Tukey, 0, 0.25, false, WV, 2.0, PV, 0.6869},
    {26, NF, 0, 0.0, false, WV, 0.0, PV, 1.0},
    {27, WinKind::TriCubeWin, 0, 2.0, false, WV, 1.8, PV, 0.7028},
    {28, WinKind::BetaWin, 0, 0.0, true, WS, 0.0, PowerKind::D, 0.0},
    {29, WinKind::GaussWin, 0, 0.0, true, WS, 0.0, PowerKind::E, 0.0},
    {30, WinKind::Chebyshev, 0, 0.0, true, WidthKind::W2, 0.0, PowerKind::F, 0.0},
    {31, WinKind::ChebApprox, 0, 0.0, true, WidthKind::W2, 0.0, PowerKind::F, 0.0},
    {32, NF, 0, 0.0, false, WV, 0.0, PV, 1.0},
    {33, NF, 0, 0.0, false, WV, 0.0, PV, 1.0},
    {34, WinKind::GenCos3, 7, 0.0, false, WV, 3.0, PV, 0.5883},
    {35, WinKind::GenCos3, 8, 0.0, false, WV, 3.0, PV, 0.6238},
    {36, WinKind::GenCos4, 11, 0.0, false, WV, 4.0, PV, 0.5605},
    {37, WinKind::VanderMaas, 0, 0.0, true, WS, 0.0, PowerKind::G, 0.0},
    // 38 and 42 build the same flat top; only 42 carries a width figure.
    {38, WinKind::GenCos4, 12, 0.0, false, WV, 0.0, PV, 1.0},
    {39, WinKind::Slepian, 0, 0.0, true, WS, 0.0, PowerKind::H, 0.0},
    {40, WinKind::Slepian, 1, 0.0, true, WS, 0.0, PV, 1.0},
    {41, WinKind::Slepian, 2, 0.0, true, WS, 0.0, PV, 1.0},
    {42, WinKind::GenCos4, 13, 0.0, false, WV, 3.0, PV, 1.0},
    {43, WinKind::GenCos5, 1, 0.0, false, WV, 5.0, PV, 1.0},   // five-term flat top
    {44, WinKind::Sine, 0, 0.0, false, WV, 1.5, PV, 1.0},
};

const FittedFigure kPowerFormulas[8] = {
    {false, 0.9710483846321382, -0.7718199994946229, 0.1018360899578998},  // A: cosine power
    {false, 0.9600603651531922, -0.6307850070108829, 0.09579573682188049}, // B: Kaiser
    {true, 1.15644731441551, 1.461832681499549, -0.1548901839754966},      // C: tapered cosine
    {false, 1.040311664514894, -0.9464999112268186, 0.1394953389826256},   // D: beta
    {true, 0.9329111713835333, 2.483915451246183, 0.3562521594540134},     // E: Gaussian
    {true, 0.8312353921819202, 58.32686337568864, 0.3666127380099747},     // F: Dolph-Chebyshev
    {false, 1.076200198905443, -0.4840343619142509, -0.03596894245555288}, // G: Van der Maas
    {false, 1.033149651372762, -0.4024259626135113, -0.0961123402722051},  // H: first Slepian taper
};

const double kGenCos2[GENCOS2_ROWS][2] = {
    {0.5, 0.5},         // Hann
    {0.53836, 0.46164}, // Hamming
};

const double kGenCos3[GENCOS3_ROWS][3] = {
    {0.375, 0.5, 0.125},
    {0.42, 0.5, 0.08},
    {0.40897, 0.5, 0.09103},
    {0.4265907136715391, 0.4965606190885641, 0.07684866723989682},
    {0.4243801, 0.4973406, 0.0782793},
    {0.0, 0.5, 0.0}, // length dependent: a0 and a2 are computed from n
    {0.42323, 0.49755, 0.07922},
    {0.44959, 0.49364, 0.05677},
};

const double kGenCos4[GENCOS4_ROWS][4] = {
    {0.3125, 0.46875, 0.1875, 0.03125},
    {0.338946, 0.481973, 0.161054, 0.018027},
    {0.355768, 0.487396, 0.144232, 0.012604},
    {0.35875, 0.48829, 0.14128, 0.01168},
    {0.3635819, 0.4891775, 0.1365995, 0.0106411},
    {0.363587, 0.4891777, 0.1365996, 0.0106357},
    {0.3587289, 0.4883, 0.1412869, 0.0116842},
    {0.3587287, 0.4883523, 0.14128, 0.011639},
    {0.3587289, 0.4883523, 0.1412727, 0.0111461},
    {0.338946, 0.4819192, 0.161054, 0.0180808},
    {0.40217, 0.49703, 0.09892, 0.00188},
    {1.0, 1.24, 0.244, 0.00305}, // flat top, peak far above 1
    {1.0, 1.24, 0.244, 0.00305},
};

const double kGenCos5[GENCOS5_ROWS][5] = {
    {1.0, 1.93, 1.29, 0.388, 0.0322}, // flat top
};

const WindowCode *FindWindowCode(int code)
{
    if (code < 0 || code >= WINDOW_CODE_COUNT)
        return nullptr;
    return &kWindowCodes[code];
}

} // namespace detail
} // namespace oscilla
