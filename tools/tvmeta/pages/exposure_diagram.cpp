#include "pages/report_parts.h"

#include "base/numbers.h"
#include "photographs/photo_sets.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>

namespace {

constexpr double Width = 480;
constexpr double Margin = 24;
constexpr double RowHeight = 22;
constexpr double AxisHeight = 24;

constexpr double MaxTicks = 12;

struct Axis {
    double low;
    double high;

    double at(double stops) const { return std::round(Margin + (stops - low) / (high - low) * (Width - 2 * Margin)); }
};

// One path for all lines: pages can have thousands of diagrams.
std::string drawnAxis(const Axis& axis, double y) {
    std::string path = fmt::format("M{:g} {:g}H{:g}", axis.at(axis.low), y, axis.at(axis.high)), labels;
    const double step = doubledStep(axis.high - axis.low, MaxTicks);
    for (double tick = std::ceil(axis.low / step) * step; tick <= axis.high; tick += step) {
        const double x = axis.at(tick);
        path += fmt::format("M{:g} {:g}v4", x, y);
        labels += fmt::format("<text x=\"{:g}\" y=\"{:g}\">{}</text>", x, y + 18, offsetText(tick));
    }
    return "<path d=\"" + path + "\"/>" + labels;
}

} // namespace

std::string exposureDiagram(std::span<const double> offsets) {
    std::map<std::string, size_t> dots; // number of dots per exposure so far
    std::vector<size_t> rows;
    for (const double offset : offsets) {
        rows.push_back(dots[offsetText(offset)]++);
    }
    const double axisY = RowHeight * static_cast<double>(std::ranges::max(rows) + 1) + 4;
    const auto [low, high] = std::ranges::minmax(offsets);
    constexpr double Rounding = 1.0 / 6; // of shutter speeds, such as 1/30 s for 1/32 s
    const double start = std::floor(low + Rounding);
    const Axis axis = {start, std::max(std::ceil(high - Rounding), start + 1)};
    std::string svg = fmt::format("<svg class=\"diagram\" role=\"img\" aria-label=\"Exposures in order of capture: {} "
                                  "stops\" viewBox=\"0 0 {:g} {:g}\">{}",
                                  offsetsText(offsets), Width, axisY + AxisHeight, drawnAxis(axis, axisY));
    for (size_t i = 0; i < rows.size(); ++i) {
        const double x = axis.at(offsets[i]);
        const double y = axisY - RowHeight * (static_cast<double>(rows[i]) + 0.5);
        svg += fmt::format(
            "<circle cx=\"{0:g}\" cy=\"{1:g}\" r=\"9\"/><text class=\"dot\" x=\"{0:g}\" y=\"{2:g}\">{3}</text>", x, y,
            y + 4, i + 1);
    }
    return svg + "</svg>\n";
}
