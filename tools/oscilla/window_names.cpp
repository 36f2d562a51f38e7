#include "window_names.h"


namespace tool {

const WindowName WINDOW_NAMES[] = {
    {0, "rectangular", "all ones (no taper)", 0},
    {1, "welch", "parabola", 0},
    {2, "bartlett", "triangle", 0},
    {3, "hann", "Hann (raised cosine)", 0},
    {4, "hamming", "Hamming", 0},
    {5, "cosine3", "cosine squared, three terms", 0},
    {6, "blackman", "Blackman", 0},
    {8, "exact-blackman", "exact Blackman", 0},
    {9, "minsidelobe3", "three-term minimum side lobe", 0},
    {11, "binomial4", "four-term binomial", 0},
    {14, "blackman-harris", "four-term Blackman-Harris", 0},
    {21, "cosine-power", "power of a raised cosine (shape: the power)", 1},
    {22, "kaiser", "Kaiser (shape: alpha)", 1},
    {23, "tapered-cosine", "cosine taper at the two ends (shape: taper fraction)", 1},
    {24, "mod-bartlett", "modified Bartlett", 0},
    {25, "tukey", "Tukey, shape 0.25", 0},
    {27, "tricube", "tri-cube", 0},
    {28, "beta", "power of a parabola (shape: the power)", 1},
    {29, "gauss", "Gaussian (shape: width)", 1},
    {30, "chebyshev", "Dolph-Chebyshev by transform (shape: width figure)", 1},
    {31, "chebyshev-approx", "Dolph-Chebyshev by fitted polynomial (shape: width figure)", 1},
    {37, "vandermaas", "Van der Maas (shape: width figure)", 1},
    {38, "flattop", "four-term flat top", 0},
    {43, "flattop5", "five-term flat top", 0},
    {44, "sine", "half sine", 0},
};

const int WINDOW_NAME_COUNT = static_cast<int>(sizeof(WINDOW_NAMES) / sizeof(WINDOW_NAMES[0]));

const WindowName *FindWindowName(int code)
{
    for (int i = 0; i < WINDOW_NAME_COUNT; i++)
        if (WINDOW_NAMES[i].code == code)
            return &WINDOW_NAMES[i];
    return nullptr;
}

} // namespace tool
