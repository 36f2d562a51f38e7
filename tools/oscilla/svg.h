// Small SVG plots for the command-line tool: a line plot with marked peaks,
// and a heat map with its colour scale.
#ifndef OSCILLA_TOOLS_SVG_H
#define OSCILLA_TOOLS_SVG_H

#include <string>
#include <vector>

namespace tool {

struct Marker {
    double x, y;
    std::string label;
};

struct LinePlot {
    std::string title, xlabel, ylabel;
    std::vector<double> x, y;
    std::vector<Marker> markers;
    bool logy = false;
};

struct HeatMap {
    std::string title, xlabel, ylabel, zlabel;
    // cells on a regular grid: nx columns (time) by ny rows (frequency), z[col * ny + row]
    int nx = 0, ny = 0;
    double x0 = 0, x1 = 1, y0 = 0, y1 = 1;
    std::vector<double> z;
};

std::string RenderLinePlot(const LinePlot &p);
std::string RenderHeatMap(const HeatMap &h);

// Tick positions at 1, 2 or 5 times a power of ten covering [lo, hi].
std::vector<double> NiceTicks(double lo, double hi, int target);

} // namespace tool

#endif
