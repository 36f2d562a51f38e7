#include "series_io.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace tool {

extern const char *const kSunspotYearCsv; // generated from tools/data/sunspot_year.csv

namespace {

[[noreturn]] void Fail(const std::string &source, int line, const std::string &what)
{
    std::ostringstream m;
    m << source;
    if (line > 0)
        m << ":" << line;
    m << ": " << what;
    throw InputError{m.str()};
}

std::vector<std::string> SplitFields(const std::string &line)
{
    std::vector<std::string> out;
    std::string cur;
    auto flush = [&] {
        if (!cur.empty())
            out.push_back(cur);
        cur.clear();
    };
    for (char c : line) {
        if (c == ',' || c == ' ' || c == '\t' || c == '\r' || c == ';')
            flush();
        else
            cur += c;
    }
    flush();
    return out;
}

// strtod over the whole field; "nan" and "inf" parse, and are refused later
// with a message of their own.
bool ToNumber(const std::string &field, double &v)
{
    const char *b = field.c_str();
    char *e = nullptr;
    errno = 0;
    v = std::strtod(b, &e);
    return e != b && *e == '\0';
}

} // namespace

Series ParseSeries(const std::string &text, const std::string &source)
{
    Series s;
    s.source = source;
    std::istringstream in(text);
    std::string line;
    int lineno = 0, columns = 0;
    bool seen_data = false, seen_header = false;
    while (std::getline(in, line)) {
        lineno++;
        const size_t hash = line.find('#');
        if (hash != std::string::npos)
            line.erase(hash);
        const auto fields = SplitFields(line);
        if (fields.empty())
            continue;
        std::vector<double> vals;
        bool numeric = true;
        for (const auto &f : fields) {
            double v;
            if (!ToNumber(f, v)) {
                numeric = false;
                break;
            }
            vals.push_back(v);
        }
        if (!numeric) {
            if (!seen_data && !seen_header) {
                seen_header = true; // a column header such as "x,y"
                continue;
            }
            Fail(source, lineno, "not a number: \"" + line.substr(0, 60) + "\"");
        }
        if (vals.size() > 2)
            Fail(source, lineno, "expected one or two columns (x y), found " + std::to_string(vals.size()));
        if (columns == 0)
            columns = static_cast<int>(vals.size());
        else if (static_cast<int>(vals.size()) != columns)
            Fail(source, lineno, "expected " + std::to_string(columns) + " column(s) as on the first data line");
        for (double v : vals)
            if (!std::isfinite(v))
                Fail(source, lineno, "value is not finite (NaN or infinity)");
        seen_data = true;
        s.line.push_back(lineno);
        if (columns == 1) {
            s.x.push_back(static_cast<double>(s.y.size() + 1));
            s.y.push_back(vals[0]);
        } else {
            s.x.push_back(vals[0]);
            s.y.push_back(vals[1]);
        }
    }
    return s;
}

Series ReadSeriesFile(const std::string &path)
{
    std::ifstream f(path, std::ios::binary);
    if (!f)
        Fail(path, 0, "cannot open file");
    std::ostringstream buf;
    buf << f.rdbuf();
    if (f.bad())
        Fail(path, 0, "cannot read file");
    return ParseSeries(buf.str(), path);
}

Series BuiltinSunspots() { return ParseSeries(kSunspotYearCsv, "built-in yearly sunspot numbers 1700-1988"); }

void PrepareUniform(Series &s, double dx)
{
    const size_t n = s.y.size();
    if (n < 2)
        Fail(s.source, 0, "need at least 2 points, found " + std::to_string(n));
    if (dx > 0) {
        const double x0 = s.x[0];
        for (size_t i = 0; i < n; i++)
            s.x[i] = x0 + static_cast<double>(i) * dx;
        return;
    }
    for (size_t i = 1; i < n; i++)
        if (!(s.x[i] > s.x[i - 1]))
            Fail(s.source, s.line[i],
                 "x is not increasing at point " + std::to_string(i + 1) +
                     "; a Fourier spectrum needs uniformly spaced x (give --dx to impose a spacing)");
    // The spectrum takes the mean spacing for all points. Rounded x (monthly
    // data written as 1749.08, 1749.17, ...) is fine; points that stray from
    // the regular grid by more than a tenth of a step are refused rather than
    // answered wrongly.
    const double mean = (s.x[n - 1] - s.x[0]) / static_cast<double>(n - 1);
    for (size_t i = 1; i < n; i++) {
        const double grid = s.x[0] + static_cast<double>(i) * mean;
        if (std::fabs(s.x[i] - grid) > 0.1 * mean)
            Fail(s.source, s.line[i],
                 "x spacing is not uniform near point " + std::to_string(i + 1) +
                     "; a Fourier spectrum needs uniformly spaced x (give --dx to impose a spacing)");
    }
}

} // namespace tool
