#include "pages/histogram_plot.h"

#include "base/markup.h"
#include "base/numbers.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <utility>

namespace {

std::string percent(double share) {
    return hundredths(100 * share) + " %";
}

// The distance between the ticks of an axis: the smallest of 1, 2, 5, 10, ... times a power of ten that gives at most
// `maxTicks`.
double roundStep(double range, double maxTicks) {
    const double decade = std::pow(10, std::floor(std::log10(range / maxTicks)));
    for (const double step : {1.0, 2.0, 5.0}) {
        if (range / (step * decade) <= maxTicks) {
            return step * decade;
        }
    }
    return 10 * decade;
}

// The axis of the shares, from `low` to `high`, both with a tick.
class ShareAxis {
  public:
    ShareAxis(const std::vector<double>& shares, Scale kind) : scale(kind), high(std::ranges::max(shares)) {
        constexpr double MaxSteps = 5;
        if (scale == Scale::Linear) {
            const double step = roundStep(high, MaxSteps);
            high = std::ceil(high / step) * step;
            for (double tick = 0; tick < high + step / 2; tick += step) {
                ticks.push_back(tick);
            }
            return;
        }
        double least = high;
        for (const double share : shares) {
            least = share > 0 ? std::min(least, share) : least;
        }
        low = std::ceil(std::log10(least)) - 1; // below every share
        high = std::ceil(std::log10(high));
        for (double decade = low; decade <= high; ++decade) {
            ticks.push_back(std::pow(10, decade));
        }
    }

    const std::vector<double>& positions() const { return ticks; }

    // 0 at the low end of the axis to 1 at the high one; no share is at the low end.
    double place(double share) const {
        return share <= 0 ? 0 : ((scale == Scale::Linear ? share : std::log10(share)) - low) / (high - low);
    }

  private:
    Scale scale;
    double low = 0; // of a logarithmic axis, both are exponents of ten
    double high;
    std::vector<double> ticks;
};

// A bar of eighths of a column. Where there is a pixel, there is a bar.
std::string bar(double place, int columns) {
    constexpr std::array Eighths = {"", "▏", "▎", "▍", "▌", "▋", "▊", "▉"};
    const auto length = static_cast<int>(std::lround(place * columns * 8));
    const int eighths = place > 0 ? std::max(length, 1) : 0;
    std::string text;
    for (int i = 0; i < eighths / 8; ++i) {
        text += "█";
    }
    const int used = (eighths + 7) / 8;
    return text + Eighths[static_cast<size_t>(eighths % 8)] + std::string(static_cast<size_t>(columns - used), ' ');
}

struct Plot {
    static constexpr double Width = 800;
    static constexpr double Height = 400;
    static constexpr double Left = 70;
    static constexpr double Right = 20;
    static constexpr double Top = 90;
    static constexpr double Bottom = 60;
    static constexpr double BarGap = 1;
    static constexpr double MaxTicks = 20;

    const StopHistogram& histogram;
    ShareAxis axis;

    double end() const { return histogram.start + static_cast<double>(histogram.shares.size()) * histogram.step; }
    double x(double stops) const {
        return Left + (stops - histogram.start) / (end() - histogram.start) * (Width - Left - Right);
    }
    double y(double share) const { return Height - Bottom - axis.place(share) * (Height - Top - Bottom); }
};

constexpr const char* PlotStyle = R"(<style>
svg { --ink: #1c1c1c; --paper: #fff; --line: #d0d0d0; --bar: #3f6fb5; --mark: #b3470a; background: var(--paper); }
@media (prefers-color-scheme: dark) {
  svg { --ink: #ececec; --paper: #161616; --line: #444; --bar: #7aa7e8; --mark: #ff9d57; }
}
.paper { fill: var(--paper); }
text { fill: var(--ink); font: 13px system-ui, sans-serif; text-anchor: middle; }
.title { font-size: 17px; text-anchor: start; }
.share { text-anchor: end; }
.line { stroke: var(--line); }
.bar { fill: var(--bar); }
.mark { stroke: var(--mark); stroke-dasharray: 4 3; }
.label { fill: var(--mark); }
</style>
)";

// Appends to an SVG text.
class Svg {
  public:
    template <typename... Values>
    void add(fmt::format_string<Values...> format, Values&&... values) {
        fmt::format_to(std::back_inserter(text), format, std::forward<Values>(values)...);
    }
    void line(const char* name, double x1, double y1, double x2, double y2) {
        add("<line class=\"{}\" x1=\"{:g}\" y1=\"{:g}\" x2=\"{:g}\" y2=\"{:g}\"/>\n", name, x1, y1, x2, y2);
    }
    void label(const char* name, double x, double y, const std::string& label) {
        add("<text class=\"{}\" x=\"{:g}\" y=\"{:g}\">{}</text>\n", name, x, y, markup(label));
    }

    std::string text;
};

void drawAxes(Svg& svg, const Plot& plot) {
    const double bottom = Plot::Height - Plot::Bottom;
    for (const double share : plot.axis.positions()) {
        const double y = share == plot.axis.positions().front() ? bottom : plot.y(share);
        svg.line("line", Plot::Left, y, Plot::Width - Plot::Right, y);
        svg.label("share", Plot::Left - 8, y + 4, shortNumber(100 * share) + " %");
    }
    const double step = std::max(roundStep(plot.end() - plot.histogram.start, Plot::MaxTicks), 1.0);
    for (double stops = std::ceil(plot.histogram.start / step) * step; stops <= plot.end(); stops += step) {
        svg.line("line", plot.x(stops), bottom, plot.x(stops), bottom + 6);
        svg.label("tick", plot.x(stops), bottom + 21, shortNumber(stops));
    }
    svg.label("axis", (Plot::Left + Plot::Width - Plot::Right) / 2, Plot::Height - 12,
              "stops from the 99.9 % percentile; share of the pixels above zero in each " +
                  (plot.histogram.step > 1 ? shortNumber(plot.histogram.step) + " stops" : std::string("stop")));
}

void drawBars(Svg& svg, const Plot& plot) {
    for (size_t i = 0; i < plot.histogram.shares.size(); ++i) {
        const double share = plot.histogram.shares[i];
        const double start = plot.histogram.start + static_cast<double>(i) * plot.histogram.step;
        const double end = start + plot.histogram.step;
        if (share > 0) {
            svg.add("<rect class=\"bar\" x=\"{:g}\" y=\"{:g}\" width=\"{:g}\" height=\"{:g}\"><title>{} to {} stops: "
                    "{}</title></rect>\n",
                    plot.x(start), plot.y(share), std::max(plot.x(end) - plot.x(start) - Plot::BarGap, Plot::BarGap),
                    Plot::Height - Plot::Bottom - plot.y(share), shortNumber(start), shortNumber(end), percent(share));
        }
    }
}

// Labels of adjacent marks are below each other, so that near ones do not overlap.
void drawMarks(Svg& svg, const Plot& plot, std::span<const PlotMark> marks) {
    constexpr size_t Rows = 3;
    for (size_t i = 0; i < marks.size(); ++i) {
        const double x = plot.x(marks[i].stops);
        const double y = 46 + 15 * static_cast<double>(i % Rows);
        svg.line("mark", x, y + 3, x, Plot::Height - Plot::Bottom);
        svg.label("label", std::clamp(x, Plot::Left, Plot::Width - 40), y, marks[i].label);
    }
}

} // namespace

std::string histogramBars(const StopHistogram& histogram, Scale scale, int width) {
    constexpr int TextWidth = 24; // of the other columns
    const int columns = std::max(width - TextWidth, 1);
    const ShareAxis axis(histogram.shares, scale);
    const double longest = axis.place(std::ranges::max(histogram.shares));
    std::string text;
    for (size_t i = 0; i < histogram.shares.size(); ++i) {
        const double stops = histogram.start + static_cast<double>(i) * histogram.step;
        text += fmt::format("{:5g} to {:4g} {}{:>10}\n", stops, stops + histogram.step,
                            bar(axis.place(histogram.shares[i]) / longest, columns), percent(histogram.shares[i]));
    }
    return text;
}

std::string histogramPlot(const StopHistogram& histogram, Scale scale, const std::string& title,
                          std::span<const PlotMark> marks) {
    const Plot plot = {histogram, ShareAxis(histogram.shares, scale)};
    Svg svg;
    svg.add("<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 {0:g} {1:g}\" width=\"{0:g}\" height=\"{1:g}\" "
            "role=\"img\" aria-labelledby=\"title\">\n"
            "{2}<title id=\"title\">{3}: luminance in stops from the 99.9 % percentile</title>\n"
            "{4}<rect class=\"paper\" width=\"100%\" height=\"100%\"/>\n",
            Plot::Width, Plot::Height, MadeByTvmeta, markup(title), PlotStyle);
    svg.label("title", 20, 26, title);
    drawAxes(svg, plot);
    drawBars(svg, plot);
    drawMarks(svg, plot, marks);
    return svg.text + "</svg>\n";
}
