#include "pictures/stop_histogram.h"

#include "base/markup.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iomanip>
#include <sstream>

namespace {

std::string percent(double share) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(2) << 100 * share << " %";
    return text.str();
}

// A bar of eighths of a column. Where there is a pixel, there is a bar.
std::string bar(double share, double largest, int columns) {
    constexpr std::array Eighths = {"", "▏", "▎", "▍", "▌", "▋", "▊", "▉"};
    const auto length = static_cast<int>(std::lround(share / largest * columns * 8));
    const int eighths = share > 0 ? std::max(length, 1) : 0;
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

    const StopHistogram& histogram;
    double largest;

    double x(double stops) const {
        return Left + (stops - histogram.start) / -histogram.start * (Width - Left - Right);
    }
    double y(double share) const { return Height - Bottom - share / largest * (Height - Top - Bottom); }
};

constexpr const char* PlotStyle = R"(<style>
svg { --ink: #1c1c1c; --paper: #fff; --line: #d0d0d0; --bar: #3f6fb5; --mark: #b3470a; background: var(--paper); }
@media (prefers-color-scheme: dark) {
  svg { --ink: #ececec; --paper: #161616; --line: #444; --bar: #7aa7e8; --mark: #ff9d57; }
}
rect { fill: var(--paper); }
text { fill: var(--ink); font: 13px system-ui, sans-serif; text-anchor: middle; }
.title { font-size: 17px; text-anchor: start; }
.share { text-anchor: end; }
.line { stroke: var(--line); }
.bars { fill: var(--bar); }
.mark { stroke: var(--mark); stroke-dasharray: 4 3; }
.label { fill: var(--mark); }
</style>
)";

constexpr double MaxTicks = 20;

void drawLine(std::ostream& svg, const char* name, double x1, double y1, double x2, double y2) {
    svg << "<line class=\"" << name << "\" x1=\"" << x1 << "\" y1=\"" << y1 << "\" x2=\"" << x2 << "\" y2=\"" << y2
        << "\"/>\n";
}

void drawText(std::ostream& svg, const char* name, double x, double y, const std::string& text) {
    svg << "<text class=\"" << name << "\" x=\"" << x << "\" y=\"" << y << "\">" << markup(text) << "</text>\n";
}

void drawAxes(std::ostream& svg, const Plot& plot) {
    for (const double part : {0.0, 0.5, 1.0}) {
        const double y = plot.y(part * plot.largest);
        drawLine(svg, "line", Plot::Left, y, Plot::Width - Plot::Right, y);
        drawText(svg, "share", Plot::Left - 8, y + 4, percent(part * plot.largest));
    }
    const double step = tickStep(-plot.histogram.start, MaxTicks);
    for (double stops = 0; stops >= plot.histogram.start; stops -= step) {
        drawLine(svg, "line", plot.x(stops), plot.y(0), plot.x(stops), plot.y(0) + 6);
        std::ostringstream label;
        label << stops + 0.0;
        drawText(svg, "tick", plot.x(stops), plot.y(0) + 21, label.str());
    }
    std::ostringstream words;
    words << "stops from the maximum; pixels above zero in each " << plot.histogram.step << " stops";
    drawText(svg, "axis", (Plot::Left + Plot::Width - Plot::Right) / 2, Plot::Height - 12, words.str());
}

void drawBars(std::ostream& svg, const Plot& plot) {
    svg << "<path class=\"bars\" d=\"";
    for (size_t i = 0; i < plot.histogram.shares.size(); ++i) {
        if (plot.histogram.shares[i] > 0) {
            const double stops = plot.histogram.start + static_cast<double>(i) * plot.histogram.step;
            svg << "M" << plot.x(stops) << " " << plot.y(0) << "V" << plot.y(plot.histogram.shares[i]) << "H"
                << plot.x(stops + plot.histogram.step) << "V" << plot.y(0) << "Z";
        }
    }
    svg << "\"/>\n";
}

// Labels of adjacent marks are below each other, so that near ones do not overlap.
void drawMarks(std::ostream& svg, const Plot& plot, std::span<const PlotMark> marks) {
    constexpr size_t Rows = 3;
    for (size_t i = 0; i < marks.size(); ++i) {
        const double x = plot.x(marks[i].stops);
        const double y = 46 + 15 * static_cast<double>(i % Rows);
        drawLine(svg, "mark", x, y + 3, x, plot.y(0));
        drawText(svg, "label", std::clamp(x, Plot::Left, Plot::Width - 40), y, marks[i].label);
    }
}

} // namespace

StopHistogram stopHistogram(std::span<const LuminanceHistogram::Bin> luminances, double step, size_t maxBins) {
    const double maximum = luminances.back().luminance;
    const double range = std::log2(maximum / luminances.front().luminance);
    while (range / step > static_cast<double>(maxBins)) {
        step *= 2;
    }
    const double bins = std::max(std::ceil(range / step), 1.0);
    StopHistogram histogram = {-bins * step, step, std::vector<double>(static_cast<size_t>(bins))};
    double pixels = 0;
    for (const LuminanceHistogram::Bin& bin : luminances) {
        const double fromStart = std::log2(bin.luminance / maximum) - histogram.start;
        const double index = std::clamp(std::floor(fromStart / step), 0.0, bins - 1);
        histogram.shares[static_cast<size_t>(index)] += static_cast<double>(bin.pixels);
        pixels += static_cast<double>(bin.pixels);
    }
    std::ranges::for_each(histogram.shares, [&](double& share) { share /= pixels; });
    return histogram;
}

std::string histogramBars(const StopHistogram& histogram, int width) {
    constexpr int LabelWidth = 5;
    constexpr int PercentWidth = 9;
    const int columns = std::max(width - 2 * LabelWidth - PercentWidth - 5, 1);
    const double largest = std::ranges::max(histogram.shares);
    std::ostringstream text;
    for (size_t i = 0; i < histogram.shares.size(); ++i) {
        const double stops = histogram.start + static_cast<double>(i) * histogram.step;
        text << std::setw(LabelWidth) << stops << " to " << std::setw(LabelWidth - 1) << stops + histogram.step << " "
             << bar(histogram.shares[i], largest, columns) << std::setw(PercentWidth + 1)
             << percent(histogram.shares[i]) << "\n";
    }
    return text.str();
}

std::string histogramPlot(const StopHistogram& histogram, const std::string& title, std::span<const PlotMark> marks) {
    const Plot plot = {histogram, std::ranges::max(histogram.shares)};
    std::ostringstream svg;
    svg << "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " << Plot::Width << " " << Plot::Height
        << "\" width=\"" << Plot::Width << "\" height=\"" << Plot::Height
        << "\" role=\"img\" aria-labelledby=\"title\">\n"
        << MadeByTvmeta << "<title id=\"title\">" << markup(title) << ": luminance in stops from the maximum</title>\n"
        << PlotStyle << "<rect width=\"100%\" height=\"100%\"/>\n";
    drawText(svg, "title", 20, 26, title);
    drawAxes(svg, plot);
    drawBars(svg, plot);
    drawMarks(svg, plot, marks);
    svg << "</svg>\n";
    return svg.str();
}
