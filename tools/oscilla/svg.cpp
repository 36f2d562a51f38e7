#include "svg.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <sstream>

namespace tool {

namespace {

constexpr double W = 900, H = 520;                             // canvas
constexpr double ML = 90, MR = 40, MT = 50, MB = 70;           // margins of the plot area
constexpr double HEAT_MR = 130;                                 // room for the colour scale

std::string Esc(const std::string &s)
{
    std::string o;
    for (char c : s) {
        switch (c) {
        case '&': o += "&amp;"; break;
        case '<': o += "&lt;"; break;
        case '>': o += "&gt;"; break;
        case '"': o += "&quot;"; break;
        default: o += c;
        }
    }
    return o;
}

std::string Num(double v)
{
    char b[32];
    std::snprintf(b, sizeof b, "%.2f", v);
    return b;
}

// Tick label: short, without trailing zeros, exponent form for extremes.
std::string TickLabel(double v)
{
    char b[32];
    const double a = std::fabs(v);
    if (v == 0)
        return "0";
    if (a >= 1e5 || a < 1e-3)
        std::snprintf(b, sizeof b, "%.0e", v);
    else
        std::snprintf(b, sizeof b, "%g", v);
    return b;
}

std::string Header(double w, double h, const std::string &title)
{
    std::ostringstream o;
    o << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << w << "\" height=\"" << h << "\" viewBox=\"0 0 " << w
      << " " << h << "\" font-family=\"DejaVu Sans, Arial, sans-serif\" font-size=\"13\">\n"
      << "<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n"
      << "<text x=\"" << w / 2 << "\" y=\"28\" text-anchor=\"middle\" font-size=\"17\" font-weight=\"bold\">"
      << Esc(title) << "</text>\n";
    return o.str();
}

// Perceptually uniform colour map (viridis), sampled at 9 points and
// interpolated linearly.
void Viridis(double t, int &r, int &g, int &b)
{
    static const double c[9][3] = {{68, 1, 84},    {71, 44, 122},  {59, 81, 139},   {44, 113, 142}, {33, 144, 141},
                                   {39, 173, 129}, {92, 200, 99},  {170, 220, 50},  {253, 231, 37}};
    t = std::min(1.0, std::max(0.0, t));
    const double p = t * 8;
    const int i = std::min(7, static_cast<int>(p));
    const double f = p - i;
    r = static_cast<int>(std::lround(c[i][0] + f * (c[i + 1][0] - c[i][0])));
    g = static_cast<int>(std::lround(c[i][1] + f * (c[i + 1][1] - c[i][1])));
    b = static_cast<int>(std::lround(c[i][2] + f * (c[i + 1][2] - c[i][2])));
}

struct Axis {
    double lo, hi, p0, p1; // data range and pixel range
    bool log = false;
    double Map(double v) const
    {
        if (log) {
            const double l = std::log10(v), a = std::log10(lo), b = std::log10(hi);
            return p0 + (l - a) / (b - a) * (p1 - p0);
        }
        return p0 + (v - lo) / (hi - lo) * (p1 - p0);
    }
};

void DrawAxes(std::ostringstream &o, const Axis &ax, const Axis &ay, const std::string &xl, const std::string &yl)
{
    const double left = ax.p0, right = ax.p1, top = ay.p1, bottom = ay.p0;
    o << "<rect x=\"" << Num(left) << "\" y=\"" << Num(top) << "\" width=\"" << Num(right - left) << "\" height=\""
      << Num(bottom - top) << "\" fill=\"none\" stroke=\"#333\"/>\n";
    for (double t : NiceTicks(ax.lo, ax.hi, 8)) {
        const double px = ax.Map(t);
        o << "<line x1=\"" << Num(px) << "\" y1=\"" << Num(bottom) << "\" x2=\"" << Num(px) << "\" y2=\""
          << Num(bottom + 6) << "\" stroke=\"#333\"/>\n"
          << "<line x1=\"" << Num(px) << "\" y1=\"" << Num(top) << "\" x2=\"" << Num(px) << "\" y2=\""
          << Num(bottom) << "\" stroke=\"#ddd\" stroke-width=\"0.6\"/>\n"
          << "<text x=\"" << Num(px) << "\" y=\"" << Num(bottom + 21) << "\" text-anchor=\"middle\">" << TickLabel(t)
          << "</text>\n";
    }
    std::vector<double> yt;
    if (ay.log) {
        for (double d = std::pow(10.0, std::floor(std::log10(ay.lo))); d <= ay.hi * 1.0000001; d *= 10)
            if (d >= ay.lo * 0.9999999)
                yt.push_back(d);
        if (yt.size() < 2)
            yt = NiceTicks(ay.lo, ay.hi, 6);
    } else {
        yt = NiceTicks(ay.lo, ay.hi, 6);
    }
    for (double t : yt) {
        const double py = ay.Map(t);
        o << "<line x1=\"" << Num(left - 6) << "\" y1=\"" << Num(py) << "\" x2=\"" << Num(left) << "\" y2=\"" << Num(py)
          << "\" stroke=\"#333\"/>\n"
          << "<line x1=\"" << Num(left) << "\" y1=\"" << Num(py) << "\" x2=\"" << Num(right) << "\" y2=\"" << Num(py)
          << "\" stroke=\"#ddd\" stroke-width=\"0.6\"/>\n"
          << "<text x=\"" << Num(left - 10) << "\" y=\"" << Num(py + 4) << "\" text-anchor=\"end\">" << TickLabel(t)
          << "</text>\n";
    }
    o << "<text x=\"" << Num((left + right) / 2) << "\" y=\"" << Num(bottom + 48) << "\" text-anchor=\"middle\">"
      << Esc(xl) << "</text>\n"
      << "<text transform=\"translate(" << Num(left - 68) << "," << Num((top + bottom) / 2)
      << ") rotate(-90)\" text-anchor=\"middle\">" << Esc(yl) << "</text>\n";
}

} // namespace

std::vector<double> NiceTicks(double lo, double hi, int target)
{
    std::vector<double> t;
    if (!(hi > lo) || !std::isfinite(lo) || !std::isfinite(hi))
        return t;
    const double raw = (hi - lo) / std::max(1, target);
    const double mag = std::pow(10.0, std::floor(std::log10(raw)));
    double step = mag;
    for (double m : {1.0, 2.0, 5.0, 10.0})
        if (m * mag >= raw) {
            step = m * mag;
            break;
        }
    for (double v = std::ceil(lo / step - 1e-9) * step; v <= hi + step * 1e-9; v += step)
        t.push_back(std::fabs(v) < step * 1e-9 ? 0.0 : v);
    return t;
}

std::string RenderLinePlot(const LinePlot &p)
{
    std::ostringstream o;
    o << Header(W, H, p.title);
    Axis ax{0, 1, ML, W - MR}, ay{0, 1, H - MB, MT};
    if (!p.x.empty()) {
        ax.lo = *std::min_element(p.x.begin(), p.x.end());
        ax.hi = *std::max_element(p.x.begin(), p.x.end());
    }
    if (ax.hi <= ax.lo)
        ax.hi = ax.lo + 1;
    double ylo = 1e300, yhi = -1e300;
    for (double v : p.y)
        if (std::isfinite(v) && (!p.logy || v > 0)) {
            ylo = std::min(ylo, v);
            yhi = std::max(yhi, v);
        }
    if (ylo > yhi) {
        ylo = 0;
        yhi = 1;
    }
    ay.log = p.logy;
    if (p.logy) {
        ylo = std::max(ylo, yhi * 1e-8); // keep eight decades at most
        ay.lo = std::pow(10.0, std::floor(std::log10(ylo)));
        ay.hi = std::pow(10.0, std::ceil(std::log10(yhi)));
        if (ay.hi <= ay.lo)
            ay.hi = ay.lo * 10;
    } else {
        const double pad = (yhi - ylo) * 0.05 + (yhi == ylo ? 1 : 0);
        ay.lo = ylo >= 0 && ylo - pad < 0 ? 0 : ylo - pad;
        ay.hi = yhi + pad;
    }
    DrawAxes(o, ax, ay, p.xlabel, p.ylabel);
    o << "<polyline fill=\"none\" stroke=\"#1f5fa8\" stroke-width=\"1.4\" points=\"";
    for (size_t i = 0; i < p.x.size(); i++) {
        double v = p.y[i];
        if (!std::isfinite(v))
            continue;
        if (p.logy)
            v = std::max(v, ay.lo);
        o << Num(ax.Map(p.x[i])) << "," << Num(ay.Map(v)) << " ";
    }
    o << "\"/>\n";
    // Markers carry their rank; the full labels go into a legend box, so
    // that close peaks don't write over each other.
    int rank = 0;
    std::ostringstream legend;
    for (const Marker &m : p.markers) {
        rank++;
        legend << "<text x=\"" << Num(ax.p1 - 200) << "\" y=\"" << Num(MT + 18 + 17 * (rank - 1))
               << "\" fill=\"#c0392b\">" << rank << ": " << Esc(m.label) << "</text>\n";
        if (!std::isfinite(m.y) || (p.logy && m.y <= 0))
            continue;
        const double px = ax.Map(m.x), py = ay.Map(m.y);
        o << "<g class=\"peak\"><circle cx=\"" << Num(px) << "\" cy=\"" << Num(py)
          << "\" r=\"4.5\" fill=\"none\" stroke=\"#c0392b\" stroke-width=\"1.8\"/>"
          << "<text x=\"" << Num(px + 6) << "\" y=\"" << Num(std::max(MT + 12, py - 7))
          << "\" fill=\"#c0392b\" font-size=\"12\">" << rank << "</text></g>\n";
    }
    if (rank > 0)
        o << "<rect x=\"" << Num(ax.p1 - 208) << "\" y=\"" << Num(MT + 4) << "\" width=\"202\" height=\""
          << Num(17 * rank + 8) << "\" fill=\"white\" fill-opacity=\"0.85\" stroke=\"#bbb\"/>\n"
          << legend.str();
    o << "</svg>\n";
    return o.str();
}

std::string RenderHeatMap(const HeatMap &h)
{
    std::ostringstream o;
    o << Header(W, H, h.title);
    Axis ax{h.x0, h.x1, ML, W - HEAT_MR}, ay{h.y0, h.y1, H - MB, MT};
    if (ax.hi <= ax.lo)
        ax.hi = ax.lo + 1;
    if (ay.hi <= ay.lo)
        ay.hi = ay.lo + 1;
    double zlo = 1e300, zhi = -1e300;
    for (double v : h.z)
        if (std::isfinite(v)) {
            zlo = std::min(zlo, v);
            zhi = std::max(zhi, v);
        }
    if (zlo > zhi) {
        zlo = 0;
        zhi = 1;
    }
    if (zhi == zlo)
        zhi = zlo + 1;
    const double cw = (ax.p1 - ax.p0) / std::max(1, h.nx), ch = (ay.p0 - ay.p1) / std::max(1, h.ny);
    o << "<g shape-rendering=\"crispEdges\">\n";
    for (int i = 0; i < h.nx; i++)
        for (int j = 0; j < h.ny; j++) {
            const double v = h.z[static_cast<size_t>(i) * h.ny + j];
            int r, g, b;
            Viridis(std::isfinite(v) ? (v - zlo) / (zhi - zlo) : 0, r, g, b);
            o << "<rect x=\"" << Num(ax.p0 + i * cw) << "\" y=\"" << Num(ay.p0 - (j + 1) * ch) << "\" width=\""
              << Num(cw + 0.5) << "\" height=\"" << Num(ch + 0.5) << "\" fill=\"rgb(" << r << "," << g << "," << b
              << ")\"/>\n";
        }
    o << "</g>\n";
    DrawAxes(o, ax, ay, h.xlabel, h.ylabel);
    // Colour scale bar with its own ticks.
    const double bx = W - HEAT_MR + 25, bw = 18;
    const int steps = 64;
    for (int k = 0; k < steps; k++) {
        int r, g, b;
        Viridis((k + 0.5) / steps, r, g, b);
        const double y0 = ay.p0 - (k + 1) * (ay.p0 - ay.p1) / steps;
        o << "<rect x=\"" << Num(bx) << "\" y=\"" << Num(y0) << "\" width=\"" << bw << "\" height=\""
          << Num((ay.p0 - ay.p1) / steps + 0.5) << "\" fill=\"rgb(" << r << "," << g << "," << b << ")\"/>\n";
    }
    o << "<rect x=\"" << Num(bx) << "\" y=\"" << Num(ay.p1) << "\" width=\"" << bw << "\" height=\""
      << Num(ay.p0 - ay.p1) << "\" fill=\"none\" stroke=\"#333\"/>\n";
    Axis az{zlo, zhi, ay.p0, ay.p1};
    for (double t : NiceTicks(zlo, zhi, 6)) {
        const double py = az.Map(t);
        o << "<line x1=\"" << Num(bx + bw) << "\" y1=\"" << Num(py) << "\" x2=\"" << Num(bx + bw + 5) << "\" y2=\""
          << Num(py) << "\" stroke=\"#333\"/><text x=\"" << Num(bx + bw + 8) << "\" y=\"" << Num(py + 4) << "\">"
          << TickLabel(t) << "</text>\n";
    }
    o << "<text transform=\"translate(" << Num(W - 18) << "," << Num((ay.p0 + ay.p1) / 2)
      << ") rotate(-90)\" text-anchor=\"middle\">" << Esc(h.zlabel) << "</text>\n";
    o << "</svg>\n";
    return o.str();
}

} // namespace tool
