// CPolyRoots: construction by method, frequency lists, root subsets and the
// spectral-factor root moves.
#include "oscilla/linalg/polyroots.h"

#include "linalg/polyroots_tables.h"

#include <cmath>
#include <cstdlib>
#include <vector>

namespace oscilla {

namespace {
const double kTwoPi = 6.283185307179586476925286766559;
}

CPolyRoots::CPolyRoots(double *c, int n, int meth, int oneBased, int negate)
    : degree(n > 0 ? n : 0), method(meth), offset(oneBased ? 0 : 1), coef(c), freq(nullptr),
      roots(nullptr), subset(nullptr), nn(0), sr(0), si(0), tr(0), ti(0), pvr(0), pvi(0), are(0),
      mre(0), eta(0), infin(0), smalno(0), pr(nullptr), pi(nullptr), hr(nullptr), hi(nullptr),
      qpr(nullptr), qpi(nullptr), qhr(nullptr), qhi(nullptr), shr(nullptr), shi(nullptr)
{
    n = degree;
    roots = (complex *)std::calloc((size_t)n + 1, sizeof(complex));
    freq = (double *)std::calloc((size_t)n + 1, sizeof(double));
    if (!roots) return;
    roots[0] = complex((double)n, 0.0);
    if (n == 0 || !c) return;

    const double s = negate ? -1.0 : 1.0;
    const int off = offset;
    auto C = [c, s, off](int i) { return s * c[i - off]; }; // c(i), i = 1..n

    const detail::PolyRootMethod *pm = detail::find_root_method(method);
    if (!pm) return;
    using detail::PolyForm;
    using detail::RootAlgo;

    if (pm->algo == RootAlgo::Laguerre) {
        // Monic, ascending powers: a[n] = 1, a[n-i] = s c(i).
        std::vector<complex> a(n + 1);
        a[n] = complex(1.0, 0.0);
        for (int i = 1; i <= n; i++) a[n - i] = complex(C(i), 0.0);
        ZRoots(a.data(), n, roots, 1);
    } else if (pm->algo == RootAlgo::Companion) {
        std::vector<double> a(n + 1), wr(n + 1, 0.0), wi(n + 1, 0.0);
        a[n] = 1.0;
        for (int i = 1; i <= n; i++) a[n - i] = C(i);
        if (EigenRoots(a.data(), n, wr.data(), wi.data()))
            for (int i = 1; i <= n; i++) roots[i] = complex(wr[i], wi[i]);
    } else {
        // Descending powers at positions 1..n+1, imaginary parts zero.
        std::vector<double> opr(n + 2, 0.0), opi(n + 2, 0.0), zr(n + 1, 0.0), zi(n + 1, 0.0);
        if (pm->form == PolyForm::Monic) {
            opr[1] = 1.0;
            for (int i = 1; i <= n; i++) opr[i + 1] = C(i);
        } else if (pm->form == PolyForm::Palindromic) {
            // 1 in the middle, c(i) mirrored around it; with an odd n the constant
            // term stays 0.
            const int m = n / 2;
            opr[m + 1] = 1.0;
            for (int i = 1; i <= m; i++) opr[m + 1 - i] = opr[m + 1 + i] = C(i);
        } else {
            // The given coefficients times x.
            for (int i = 1; i <= n; i++) opr[i] = C(i);
        }
        if (CPoly(opr.data(), opi.data(), n, zr.data(), zi.data()))
            for (int i = 1; i <= n; i++) roots[i] = complex(zr[i], zi[i]);
    }
}

CPolyRoots::~CPolyRoots()
{
    CPolyFree();
    std::free(roots);
    std::free(subset);
    std::free(freq);
}

complex *CPolyRoots::GetRoots() { return roots; }

double *CPolyRoots::GetAscFreq()
{
    if (!freq || !roots) return freq;
    const int n = degree;
    std::vector<double> f(n + 1, 0.0);
    std::vector<int> flag(n + 1, 0);
    for (int i = 1; i <= n; i++) {
        f[i] = arg(roots[i]) / kTwoPi;
        flag[i] = std::fabs(imag(roots[i])) < 1e-12 ? 1 : 0;
    }
    if (n > 1) Sort(f.data(), flag.data(), 1, n);
    int count = 0;
    for (int i = 1; i <= n; i++) {
        if (f[i] >= 1e-8 && f[i] <= 0.49999999) {
            // A negative frequency marks a root that is numerically on the real axis.
            count++;
            freq[count] = flag[i] ? -f[i] : f[i];
        }
    }
    freq[0] = (double)count;
    return freq;
}

complex *CPolyRoots::RootSubSet(int flags, int maxRoots, int sortMode, int *keep)
{
    if (!roots) return subset;
    const int n = degree;
    enum { UNSORTED, BY_FREQ, BY_DELTA } order = UNSORTED;
    std::vector<ROOTSORT> rs(n + 1);
    for (int i = 1; i <= n; i++) {
        rs[i].delta = std::fabs(1.0 - abs(roots[i]));
        rs[i].freq = arg(roots[i]) / kTwoPi;
        rs[i].index = i;
    }
    for (int i = 1; i <= n; i++) {
        const double af = std::fabs(rs[i].freq);
        bool out = ((flags & 1) && af > 0.49999999) || ((flags & 2) && af < 1e-8) ||
                   ((flags & 4) && rs[i].freq < -1e-8);
        if (out && rs[i].index > 0) rs[i].index = -rs[i].index;
    }
    if (flags & 8) {
        // Of roots at one frequency only the last in frequency order stays.
        if (n > 1) SortRootFreq(rs.data(), 1, n);
        order = BY_FREQ;
        for (int i = 1; i < n; i++)
            if (rs[i].index > 0 && std::fabs(rs[i].freq - rs[i + 1].freq) < 1e-12 &&
                std::fabs(rs[i].freq) > 1e-8)
                rs[i].index = -rs[i].index;
    }
    if (maxRoots != 0) {
        // The maxRoots included roots nearest the unit circle stay.
        if (n > 1) SortRootDelta(rs.data(), 1, n);
        order = BY_DELTA;
        int kept = 0;
        for (int i = 1; i <= n; i++) {
            if (rs[i].index <= 0) continue;
            if (kept < maxRoots) kept++;
            else rs[i].index = -rs[i].index;
        }
    }
    if (sortMode == 1 && order != BY_FREQ && n > 1) SortRootFreq(rs.data(), 1, n);
    if (sortMode == 2 && order != BY_DELTA && n > 1) SortRootDelta(rs.data(), 1, n);

    int count = 0;
    for (int i = 1; i <= n; i++)
        if (rs[i].index > 0) count++;
    std::free(subset);
    subset = (complex *)std::calloc((size_t)count + 1, sizeof(complex));
    if (!subset) return nullptr;
    subset[0] = complex((double)count, 0.0);
    int k = 0;
    for (int i = 1; i <= n; i++) {
        const int idx = rs[i].index;
        if (idx > 0) subset[++k] = roots[idx];
        if (keep) keep[idx > 0 ? idx : -idx] = idx > 0 ? 1 : 0;
    }
    // The next free index, one above the count.
    if (keep) keep[0] = count + 1;
    return subset;
}

int CPolyRoots::SpecFactor(int mode)
{
    const detail::SpecFactorMode *sm = detail::find_spec_factor_mode(mode);
    if (!roots || !sm) return 0;
    using detail::RootMove;
    const int n = degree;
    int count = 0;
    for (int i = 1; i <= n; i++) {
        complex &r = roots[i];
        const double a = abs(r);
        if (sm->move == RootMove::Reflect) {
            if (a > 1.0) {
                r = 1.0 / conj(r);
                count++;
            }
        } else if (sm->move == RootMove::Normalize) {
            if (a > 1.0) {
                r = r / a;
                count++;
            }
        } else if (a > 0.0) { // every root onto the circle, uncounted; 0 has no direction
            r = r / a;
        }
    }
    if (!sm->rebuild || n == 0) return count;
    if (count == 0 && sm->move != RootMove::NormalizeAll) return 0;
    if (!coef) return count;

    // Monic polynomial from the roots, ascending powers.
    std::vector<complex> c(n + 1);
    c[0] = -roots[1];
    c[1] = complex(1.0, 0.0);
    for (int j = 2; j <= n; j++) {
        c[j] = complex(1.0, 0.0);
        for (int k = j; k >= 2; k--) c[k - 1] = c[k - 2] - roots[j] * c[k - 1];
        c[0] = -roots[j] * c[0];
    }
    // Written back in the AR (negated) sign whatever the constructor was told.
    for (int i = 0; i < n; i++) coef[n - i - offset] = -real(c[i]);
    return count;
}

// Ascending quicksorts, middle element as pivot, scans bounded by lo and hi.
void CPolyRoots::Sort(double *f, int *flag, int lo, int hi)
{
    if (lo >= hi) return;
    int i = lo, j = hi;
    const double p = f[(lo + hi) / 2];
    do {
        while (f[i] < p && i < hi) i++;
        while (f[j] > p && j > lo) j--;
        if (i <= j) {
            double t = f[i]; f[i] = f[j]; f[j] = t;
            int g = flag[i]; flag[i] = flag[j]; flag[j] = g;
            i++;
            j--;
        }
    } while (i <= j);
    if (lo < j) Sort(f, flag, lo, j);
    if (i < hi) Sort(f, flag, i, hi);
}

void CPolyRoots::SortRootFreq(ROOTSORT *rs, int lo, int hi)
{
    if (lo >= hi) return;
    int i = lo, j = hi;
    const double p = rs[(lo + hi) / 2].freq;
    do {
        while (rs[i].freq < p && i < hi) i++;
        while (rs[j].freq > p && j > lo) j--;
        if (i <= j) {
            ROOTSORT t = rs[i]; rs[i] = rs[j]; rs[j] = t;
            i++;
            j--;
        }
    } while (i <= j);
    if (lo < j) SortRootFreq(rs, lo, j);
    if (i < hi) SortRootFreq(rs, i, hi);
}

void CPolyRoots::SortRootDelta(ROOTSORT *rs, int lo, int hi)
{
    if (lo >= hi) return;
    int i = lo, j = hi;
    const double p = rs[(lo + hi) / 2].delta;
    do {
        while (rs[i].delta < p && i < hi) i++;
        while (rs[j].delta > p && j > lo) j--;
        if (i <= j) {
            ROOTSORT t = rs[i]; rs[i] = rs[j]; rs[j] = t;
            i++;
            j--;
        }
    } while (i <= j);
    if (lo < j) SortRootDelta(rs, lo, j);
    if (i < hi) SortRootDelta(rs, i, hi);
}

} // namespace oscilla
