// The command-line tool run as a process on small files.
#include "oscilla/spectrum/cfft.h"

#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#ifndef OSCILLA_TOOL_PATH
#error "OSCILLA_TOOL_PATH must name the oscilla executable"
#endif

namespace {

struct Outcome {
    int status;
    std::string out, err;
};

std::string TempPath(const std::string &name)
{
    const char *dir = std::getenv("TMPDIR");
    return std::string(dir ? dir : "/tmp") + "/oscilla_cli_" + std::to_string(::getpid()) + "_" + name;
}

std::string Slurp(const std::string &path)
{
    std::ifstream f(path, std::ios::binary);
    std::ostringstream b;
    b << f.rdbuf();
    return b.str();
}

Outcome Tool(const std::string &args)
{
    const std::string out = TempPath("stdout"), err = TempPath("stderr");
    const std::string cmd = std::string(OSCILLA_TOOL_PATH) + " " + args + " >" + out + " 2>" + err;
    const int raw = std::system(cmd.c_str());
    Outcome r{WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, Slurp(out), Slurp(err)};
    std::remove(out.c_str());
    std::remove(err.c_str());
    return r;
}

std::string WriteTemp(const std::string &name, const std::string &text)
{
    const std::string p = TempPath(name);
    std::ofstream(p, std::ios::binary) << text;
    return p;
}

// A two-tone series at 1 kHz: 1.0 at 50 Hz and 0.5 at 120 Hz, two columns.
std::string TwoTone()
{
    std::ostringstream s;
    s << "# two tones\ntime,signal\n";
    for (int i = 0; i < 1000; i++) {
        const double t = i * 0.001;
        s << t << "," << std::sin(2 * M_PI * 50 * t) + 0.5 * std::sin(2 * M_PI * 120 * t) << "\n";
    }
    return s.str();
}

// Minimal well-formedness check: balanced tags, quoted attributes, known entities.
bool WellFormedXml(const std::string &x, std::string &why)
{
    std::vector<std::string> stack;
    size_t i = 0;
    while ((i = x.find('<', i)) != std::string::npos) {
        const size_t j = x.find('>', i);
        if (j == std::string::npos) {
            why = "unterminated tag";
            return false;
        }
        std::string tag = x.substr(i + 1, j - i - 1);
        i = j + 1;
        if (tag.empty()) {
            why = "empty tag";
            return false;
        }
        if (tag[0] == '?' || tag[0] == '!')
            continue;
        if (tag[0] == '/') {
            if (stack.empty() || stack.back() != tag.substr(1)) {
                why = "mismatched </" + tag.substr(1) + ">";
                return false;
            }
            stack.pop_back();
            continue;
        }
        const bool selfclosing = tag.back() == '/';
        const std::string name = tag.substr(0, tag.find_first_of(" \t\n/"));
        size_t quotes = 0;
        for (char c : tag)
            quotes += c == '"';
        if (quotes % 2) {
            why = "unbalanced quotes in <" + name + ">";
            return false;
        }
        if (!selfclosing)
            stack.push_back(name);
    }
    for (size_t k = 0; (k = x.find('&', k)) != std::string::npos; k++) {
        const std::string ent = x.substr(k, 6);
        if (ent.rfind("&amp;", 0) && ent.rfind("&lt;", 0) && ent.rfind("&gt;", 0) && ent.rfind("&quot;", 0)) {
            why = "bare ampersand";
            return false;
        }
    }
    if (!stack.empty()) {
        why = "unclosed <" + stack.back() + ">";
        return false;
    }
    return true;
}

int Count(const std::string &s, const std::string &what)
{
    int n = 0;
    for (size_t k = 0; (k = s.find(what, k)) != std::string::npos; k += what.size())
        n++;
    return n;
}

} // namespace

TEST(Tool, BuiltInSunspotsShowTheElevenYearCycleFirst)
{
    const Outcome r = Tool("spectrum");
    ASSERT_EQ(r.status, 0) << r.err;
    std::istringstream in(r.out);
    std::string line;
    while (std::getline(in, line) && line.rfind("   1 ", 0) != 0) {
    }
    ASSERT_FALSE(line.empty()) << r.out;
    int rank;
    double freq, period, value;
    ASSERT_EQ(std::sscanf(line.c_str(), "%d %lf %lf %lf", &rank, &freq, &period, &value), 4) << line;
    EXPECT_NEAR(period, 11.0, 0.6);
}

TEST(Tool, TwoTonesComeOutAtTheirFrequenciesAndAmplitudes)
{
    const std::string file = WriteTemp("tones.csv", TwoTone());
    const std::string csv = TempPath("tones_spec.csv"), svg = TempPath("tones.svg");
    const Outcome r = Tool("spectrum " + file + " --window hann --peaks 2 --csv " + csv + " --svg " + svg);
    ASSERT_EQ(r.status, 0) << r.err;
    std::istringstream in(r.out);
    std::string line;
    std::vector<std::vector<double>> rows;
    while (std::getline(in, line)) {
        int rank;
        double f, p, v;
        if (std::sscanf(line.c_str(), "%d %lf %lf %lf", &rank, &f, &p, &v) == 4)
            rows.push_back({f, v});
    }
    ASSERT_EQ(rows.size(), 2u) << r.out;
    EXPECT_NEAR(rows[0][0], 50.0, 0.05);
    EXPECT_NEAR(rows[0][1], 1.0, 0.02);
    EXPECT_NEAR(rows[1][0], 120.0, 0.05);
    EXPECT_NEAR(rows[1][1], 0.5, 0.01);

    // The SVG is well-formed and marks both peaks.
    const std::string x = Slurp(svg);
    std::string why;
    EXPECT_TRUE(WellFormedXml(x, why)) << why;
    EXPECT_EQ(Count(x, "<g class=\"peak\">"), 2);
    EXPECT_NE(x.find("amplitude"), std::string::npos);

    // The CSV carries the spectrum values at full precision.
    std::vector<double> data;
    std::istringstream src(TwoTone());
    std::getline(src, line);
    std::getline(src, line);
    std::vector<oscilla::XY> rec(1001);
    rec[0].x = 1000;
    int n = 0;
    while (std::getline(src, line)) {
        n++;
        std::sscanf(line.c_str(), "%lf,%lf", &rec[n].x, &rec[n].y);
    }
    oscilla::CFFT f(rec.data(), 5, 0, 0, 3, 0.0, 0, 50.0, 2);
    oscilla::XY *spec = f.GetXYpFFT(4, -1, 0);
    ASSERT_NE(spec, nullptr);
    std::istringstream c(Slurp(csv));
    std::getline(c, line);
    EXPECT_EQ(line, "frequency,value");
    int k = 0;
    while (std::getline(c, line)) {
        k++;
        double fx, fy;
        ASSERT_EQ(std::sscanf(line.c_str(), "%lf,%lf", &fx, &fy), 2);
        ASSERT_EQ(fx, spec[k].x);
        ASSERT_EQ(fy, spec[k].y);
    }
    EXPECT_EQ(k, static_cast<int>(spec[0].x));
    std::free(spec);
    for (const auto &p : {file, csv, svg})
        std::remove(p.c_str());
}

TEST(Tool, ShortTimeSpectrumWritesAHeatMap)
{
    const std::string file = WriteTemp("tones_stft.txt", TwoTone());
    const std::string svg = TempPath("stft.svg"), csv = TempPath("stft.csv");
    const Outcome r = Tool("stft " + file + " --segment 200 --overlap 50 --svg " + svg + " --csv " + csv);
    ASSERT_EQ(r.status, 0) << r.err;
    std::string why;
    EXPECT_TRUE(WellFormedXml(Slurp(svg), why)) << why;
    EXPECT_EQ(Count(Slurp(csv), "\n"), 1 + 9 * 101); // header, 9 slices of 101 bins
    for (const auto &p : {file, svg, csv})
        std::remove(p.c_str());
}

TEST(Tool, BadInputGetsAOneLineErrorAndStatusTwo)
{
    struct Case {
        std::string name, text, args, expect;
    } cases[] = {
        {"missing", "", "spectrum /nonexistent/dir/none.csv", "/nonexistent/dir/none.csv: cannot open"},
        {"words.txt", "x y\n1 2\n2 abc\n", "", "words.txt:3: not a number"},
        {"one.txt", "# just one\n5\n", "", "need at least 2 points"},
        {"nan.txt", "1 1\n2 nan\n3 4\n", "", "nan.txt:2: value is not finite"},
        {"inf.txt", "1 1\n2 2\n3 -inf\n", "", "inf.txt:3: value is not finite"},
        {"back.txt", "1 1\n3 2\n2 3\n4 4\n", "", "back.txt:3: x is not increasing"},
        {"uneven.txt", "1 1\n2 2\n2.5 3\n4 4\n5 5\n", "", "x spacing is not uniform"},
        {"columns.txt", "1 2 3\n", "", "columns.txt:1: expected one or two columns"},
        {"ok.txt", "1\n2\n3\n4\n", " --frobnicate", "frobnicate"},
        {"ok2.txt", "1\n2\n3\n4\n", " --window kaizer", "unknown window \"kaizer\""},
        {"ok3.txt", "1\n2\n3\n4\n", " --format loudness", "unknown format \"loudness\""},
    };
    for (const Case &c : cases) {
        std::string args = c.args;
        std::string path;
        if (c.name != "missing") {
            path = WriteTemp(c.name, c.text);
            args = "spectrum " + path + c.args;
        }
        const Outcome r = Tool(args);
        EXPECT_EQ(r.status, 2) << c.name << ": " << r.err;
        EXPECT_NE(r.err.find(c.expect), std::string::npos) << c.name << ": " << r.err;
        EXPECT_EQ(Count(r.err, "\n"), 1) << c.name << ": " << r.err;
        if (!path.empty())
            std::remove(path.c_str());
    }
}

TEST(Tool, HelpDocumentsEveryOption)
{
    const Outcome r = Tool("spectrum --help");
    EXPECT_EQ(r.status, 0);
    for (const char *opt : {"--window", "--shape", "--segment", "--overlap", "--pad", "--detrend", "--kernel",
                            "--format", "--gain", "--peaks", "--csv", "--svg", "--dx"})
        EXPECT_NE(r.out.find(opt), std::string::npos) << opt;
}
