// Code tables of CPolyRoots: the method selector of the constructor and the
// root treatments of SpecFactor.
#ifndef OSCILLA_SRC_LINALG_POLYROOTS_TABLES_H
#define OSCILLA_SRC_LINALG_POLYROOTS_TABLES_H

namespace oscilla {
namespace detail {

enum class RootAlgo { Laguerre, Companion, JenkinsTraub };
// Monic: x^n + s c(1) x^(n-1) + ... + s c(n). Palindromic: 1 in the middle position,
// s c(i) mirrored around it. NoLeadingOne: x (s c(1) x^(n-1) + ... + s c(n)).
enum class PolyForm { Monic, Palindromic, NoLeadingOne };

struct PolyRootMethod {
    int code;
    RootAlgo algo;
    PolyForm form;
};

constexpr PolyRootMethod kPolyRootMethods[] = {
    {0, RootAlgo::Laguerre, PolyForm::Monic},
    {1, RootAlgo::Companion, PolyForm::Monic},
    {2, RootAlgo::JenkinsTraub, PolyForm::Monic},
    {3, RootAlgo::JenkinsTraub, PolyForm::Monic},
    {4, RootAlgo::JenkinsTraub, PolyForm::Palindromic},
    {5, RootAlgo::JenkinsTraub, PolyForm::NoLeadingOne},
};

// Null for a code outside the table: no roots are computed.
inline const PolyRootMethod *find_root_method(int code)
{
    for (const PolyRootMethod &m : kPolyRootMethods)
        if (m.code == code) return &m;
    return nullptr;
}

// Reflect: r -> 1/conj(r) when |r| > 1. Normalize: r -> r/|r| when |r| > 1.
// NormalizeAll: every r -> r/|r|, not counted as moves.
enum class RootMove { Reflect, Normalize, NormalizeAll };

struct SpecFactorMode {
    int mode;
    RootMove move;
    bool rebuild; // write the rebuilt coefficients back to coef
};

constexpr SpecFactorMode kSpecFactorModes[] = {
    {1, RootMove::Reflect, true},       {2, RootMove::Normalize, true},
    {3, RootMove::NormalizeAll, true},  {4, RootMove::Reflect, false},
    {5, RootMove::Normalize, false},    {6, RootMove::NormalizeAll, false},
};

inline const SpecFactorMode *find_spec_factor_mode(int mode)
{
    for (const SpecFactorMode &m : kSpecFactorModes)
        if (m.mode == mode) return &m;
    return nullptr;
}

} // namespace detail
} // namespace oscilla

#endif
