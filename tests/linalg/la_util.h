// Helpers shared by the linear-algebra tests: deterministic matrices, row
// storage with guard cells, norms and residual ratios in long double.
#ifndef OSCILLA_TESTS_LINALG_LA_UTIL_H
#define OSCILLA_TESTS_LINALG_LA_UTIL_H

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

namespace latest {

constexpr double kEps = std::numeric_limits<double>::epsilon();
constexpr double kGuard = -7.77e77; // rogue value in front of and behind every row

// Small deterministic generator (same sequence on every platform).
class Rng {
public:
    explicit Rng(std::uint64_t seed) : s(seed * 2862933555777941757ULL + 3037000493ULL) {}
    std::uint64_t next()
    {
        s ^= s << 13;
        s ^= s >> 7;
        s ^= s << 17;
        return s;
    }
    double uniform() { return (static_cast<double>(next() >> 11) + 0.5) / 9007199254740992.0 * 2.0 - 1.0; }
    int integer(int lo, int hi) { return lo + static_cast<int>(next() % static_cast<std::uint64_t>(hi - lo + 1)); }

private:
    std::uint64_t s;
};

using Mat = std::vector<std::vector<double>>;

inline Mat random_matrix(int rows, int cols, Rng &rng)
{
    Mat a(rows, std::vector<double>(cols));
    for (auto &r : a)
        for (auto &v : r)
            v = rng.uniform();
    return a;
}

inline Mat random_symmetric(int n, Rng &rng, double diagScale = 1.0)
{
    Mat a(n, std::vector<double>(n));
    for (int i = 0; i < n; i++)
        for (int j = 0; j <= i; j++)
            a[i][j] = a[j][i] = (i == j ? diagScale : 1.0) * rng.uniform();
    return a;
}

inline Mat transpose(const Mat &a)
{
    Mat t(a[0].size(), std::vector<double>(a.size()));
    for (size_t i = 0; i < a.size(); i++)
        for (size_t j = 0; j < a[0].size(); j++)
            t[j][i] = a[i][j];
    return t;
}

// Vector with a guard cell on each side; data() points at element 0.
class GVec {
public:
    explicit GVec(const std::vector<double> &v) : store(v.size() + 2, kGuard)
    {
        std::copy(v.begin(), v.end(), store.begin() + 1);
    }
    double *data() { return store.data() + 1; }
    double operator[](size_t i) const { return store[i + 1]; }
    bool guards_intact() const { return store.front() == kGuard && store.back() == kGuard; }
    std::vector<double> values() const { return std::vector<double>(store.begin() + 1, store.end() - 1); }

private:
    std::vector<double> store;
};

// Row-pointer view of the rows of a, each a GVec.
class Guarded {
public:
    explicit Guarded(const Mat &a) : rows(a.begin(), a.end())
    {
        for (GVec &r : rows)
            ptrs.push_back(r.data());
    }
    double **p() { return ptrs.data(); }
    double at(int i, int j) const { return ptrs[i][j]; }
    bool guards_intact() const
    {
        return std::all_of(rows.begin(), rows.end(), [](const GVec &r) { return r.guards_intact(); });
    }
    Mat values() const
    {
        Mat a;
        for (const GVec &r : rows)
            a.push_back(r.values());
        return a;
    }

private:
    std::vector<GVec> rows;
    std::vector<double *> ptrs;
};

inline double norm1(const Mat &a)
{
    double best = 0.0;
    for (size_t j = 0; j < a[0].size(); j++) {
        double s = 0.0;
        for (size_t i = 0; i < a.size(); i++)
            s += std::fabs(a[i][j]);
        best = std::fmax(best, s);
    }
    return best;
}

inline double norm1(const std::vector<double> &x)
{
    double s = 0.0;
    for (double v : x)
        s += std::fabs(v);
    return s;
}

inline std::vector<double> matvec(const Mat &a, const std::vector<double> &x)
{
    std::vector<double> y(a.size());
    for (size_t i = 0; i < a.size(); i++) {
        long double s = 0.0L;
        for (size_t j = 0; j < x.size(); j++)
            s += static_cast<long double>(a[i][j]) * x[j];
        y[i] = static_cast<double>(s);
    }
    return y;
}

// ||A x - b||_1 / (||A||_1 ||x||_1 eps), the residual in long double.
inline double solve_ratio(const Mat &a, const std::vector<double> &x, const std::vector<double> &b)
{
    long double r = 0.0L;
    for (size_t i = 0; i < a.size(); i++) {
        long double s = -static_cast<long double>(b[i]);
        for (size_t j = 0; j < x.size(); j++)
            s += static_cast<long double>(a[i][j]) * x[j];
        r += std::fabs(s);
    }
    double den = norm1(a) * norm1(x) * kEps;
    return den > 0.0 ? static_cast<double>(r) / den : static_cast<double>(r);
}

// ||A X - I||_1 / (n ||A||_1 ||X||_1 eps)
inline double inverse_ratio(const Mat &a, const Mat &x)
{
    size_t n = a.size();
    double worst = 0.0;
    for (size_t j = 0; j < n; j++) {
        long double col = 0.0L;
        for (size_t i = 0; i < n; i++) {
            long double s = i == j ? -1.0L : 0.0L;
            for (size_t k = 0; k < n; k++)
                s += static_cast<long double>(a[i][k]) * x[k][j];
            col += std::fabs(s);
        }
        worst = std::fmax(worst, static_cast<double>(col));
    }
    return worst / (static_cast<double>(n) * norm1(a) * norm1(x) * kEps);
}

} // namespace latest

#endif
