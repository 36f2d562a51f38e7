// Reading a series from text for the command-line tool.
#ifndef OSCILLA_TOOLS_SERIES_IO_H
#define OSCILLA_TOOLS_SERIES_IO_H

#include <string>
#include <vector>

namespace tool {

struct Series {
    std::string source; // file name, or the built-in sample's name
    std::vector<double> x, y;
    std::vector<int> line; // text line of each point, for messages
};

// An input problem, reported as "source:line: message" with exit status 2.
struct InputError {
    std::string message;
};

// Parses text with one or two numeric columns (x y), separated by spaces, tabs
// or commas; '#' starts a comment; a header line before the first data line is
// allowed. One column means y with x = 1, 2, ... Throws InputError.
Series ParseSeries(const std::string &text, const std::string &source);
Series ReadSeriesFile(const std::string &path);
Series BuiltinSunspots();

// Applies --dx (a positive spacing replaces x by x0 + i dx) and checks that the
// series is fit for a uniform-spacing spectrum: at least 2 points, finite
// values, x increasing with uniform spacing. Throws InputError.
void PrepareUniform(Series &s, double dx);

} // namespace tool

#endif
