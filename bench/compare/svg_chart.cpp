// The chart: for each method a panel, in it for each family a group of bars, three for each axis
// mode.

#include <algorithm>
#include <cmath>

#include "bench/compare/reports.h"

namespace tavo::bench {
namespace {

constexpr int kWidth = 1080;
constexpr int kLeft = 56;
constexpr int kRight = 16;
constexpr int kHeader = 76;
constexpr int kPanelTitle = 34;
constexpr int kPlotHeight = 230;
constexpr int kPanelHeight = kPanelTitle + kPlotHeight + 44;
constexpr int kBarWidth = 17;
constexpr int kModeGap = 5;

struct Series {
    AxisMode mode;
    Build build;
    const char* label;
    const char* colour;
};
constexpr Series kSeries[] = {
    {AxisMode::Both, Build64, "both axes, AUTO", "#2f6db3"},
    {AxisMode::Both, Avx2Build64, "AVX2", "#6b9bd0"},
    {AxisMode::Both, Ssse3Build64, "SSSE3", "#b3cfec"},
    {AxisMode::Width, Build64, "width only, AUTO", "#3a9a5b"},
    {AxisMode::Width, Avx2Build64, "AVX2", "#78bd91"},
    {AxisMode::Width, Ssse3Build64, "SSSE3", "#b9e0c7"},
    {AxisMode::Height, Build64, "height only, AUTO", "#c8731a"},
    {AxisMode::Height, Avx2Build64, "AVX2", "#dfa261"},
    {AxisMode::Height, Ssse3Build64, "SSSE3", "#f3d3ae"},
};
constexpr int kGroupWidth = static_cast<int>(std::size(kSeries)) * kBarWidth + 2 * kModeGap;

std::string Text(double x, double y, const char* anchor, int size, const std::string& text) {
    return Format("<text x=\"%.1f\" y=\"%.1f\" text-anchor=\"%s\" font-size=\"%d\">", x, y, anchor,
                  size) +
           text + "</text>\n";
}

std::string Rectangle(double x, double y, double width, double height, const char* colour) {
    return Format("<rect x=\"%.1f\" y=\"%.1f\" width=\"%.1f\" height=\"%.1f\" fill=\"%s\"/>\n", x,
                  y, width, height, colour);
}

std::string HorizontalLine(double y, const char* colour, const char* width) {
    return Format(
        "<line x1=\"%d\" y1=\"%.1f\" x2=\"%d\" y2=\"%.1f\" stroke=\"%s\" "
        "stroke-width=\"%s\"/>\n",
        kLeft, y, kWidth - kRight, y, colour, width);
}

std::string Legend() {
    std::string svg;
    for (size_t i = 0; i < std::size(kSeries); ++i) {
        const double x = kLeft + static_cast<double>(i) * 112 + (i % 3 == 0 ? 0 : 28);
        svg += Rectangle(x, 48, 13, 13, kSeries[i].colour);
        svg += Text(x + 18, 59, "start", 13, kSeries[i].label);
    }
    return svg;
}

double Value(const Results& results, Method method, Family family, const Series& series) {
    return results.MeanRatio(series.build, [&](const Case& work) {
        return work.method == method && work.family == family && work.Mode() == series.mode;
    });
}

class Panel {
  public:
    Panel(const Results& results, Method method, int top)
        : results_(results), method_(method), plotTop_(top + kPanelTitle) {
        for (const FamilyInfo& info : kFamilies) {
            for (const Series& series : kSeries) {
                highest_ = std::max(highest_, Value(results, method, info.family, series));
            }
        }
        highest_ = std::ceil(highest_ + 0.3);
    }

    std::string Draw() const {
        const char* const title = method_ == Method::Bilinear ? "Bilinear" : "Nearest neighbour";
        std::string svg = Text(kLeft, plotTop_ - 14, "start", 16, title);
        for (int tick = 0; tick <= static_cast<int>(highest_); ++tick) {
            svg += HorizontalLine(Y(tick), "#dddddd", "1");
            svg += Text(kLeft - 8, Y(tick) + 4, "end", 12, std::to_string(tick));
        }
        const double pitch = static_cast<double>(kWidth - kLeft - kRight) / std::size(kFamilies);
        const double first = kLeft + pitch / 2;
        for (size_t i = 0; i < std::size(kFamilies); ++i) {
            const double middle = first + pitch * static_cast<double>(i);
            svg += Group(kFamilies[i], middle - kGroupWidth / 2.0, &Panel::Bar);
            svg += Text(middle, plotTop_ + kPlotHeight + 20, "middle", 14, kFamilies[i].name);
        }
        // Over the bars, under their figures.
        svg += HorizontalLine(Y(1), "#b02a37", "2");
        for (size_t i = 0; i < std::size(kFamilies); ++i) {
            const double middle = first + pitch * static_cast<double>(i);
            svg += Group(kFamilies[i], middle - kGroupWidth / 2.0, &Panel::Figure);
        }
        return svg;
    }

  private:
    double Y(double value) const { return plotTop_ + kPlotHeight * (1 - value / highest_); }

    using Draws = std::string (Panel::*)(double x, double value, const Series& series) const;

    std::string Group(const FamilyInfo& info, double x, Draws draws) const {
        std::string svg;
        for (const Series& series : kSeries) {
            const double value = Value(results_, method_, info.family, series);
            if (value > 0) svg += (this->*draws)(x, value, series);
            x += kBarWidth;
            if (series.build == Ssse3Build64) x += kModeGap;
        }
        return svg;
    }

    std::string Bar(double x, double value, const Series& series) const {
        return Rectangle(x + 0.5, Y(value), kBarWidth - 1, Y(0) - Y(value), series.colour);
    }

    std::string Figure(double x, double value, const Series&) const {
        const double middle = x + kBarWidth / 2.0;
        const std::string figure = Text(middle, Y(value) - 5, "middle", 10, Format("%.1f", value));
        return "<g stroke=\"#ffffff\" stroke-width=\"3\">" + figure + "</g>\n" + figure;
    }

    const Results& results_;
    Method method_;
    int plotTop_;
    double highest_ = 1;
};

}  // namespace

std::string SvgChart(const Run& run) {
    const Results& results = run.cold;
    std::vector<Method> methods;
    for (const Method method : {Method::Bilinear, Method::Nearest}) {
        if (results.MeanRatio(Build64,
                              [method](const Case& work) { return work.method == method; }) > 0) {
            methods.push_back(method);
        }
    }
    const int height = kHeader + static_cast<int>(methods.size()) * kPanelHeight;
    std::string svg = Format(
        "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%d\" height=\"%d\" "
        "font-family=\"DejaVu Sans, sans-serif\" fill=\"#222222\">\n"
        "<rect width=\"100%%\" height=\"100%%\" fill=\"#ffffff\"/>\n",
        kWidth, height);
    svg += Text(
        kLeft, 28, "start", 18,
        "Times faster than the fastest other library, pictures in no cache, geometric means (red "
        "line: 1)");
    svg += Legend();
    int top = kHeader;
    for (const Method method : methods) {
        svg += Panel(results, method, top).Draw();
        top += kPanelHeight;
    }
    return svg + "</svg>\n";
}

}  // namespace tavo::bench
