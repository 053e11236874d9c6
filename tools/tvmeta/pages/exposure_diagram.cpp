#include "pages/exposure_diagram.h"

#include "base/markup.h"
#include "photographs/photo_sets.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <sstream>

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
void drawAxis(std::ostream& svg, const Axis& axis, double y) {
    std::ostringstream path, labels;
    path << "M" << axis.at(axis.low) << " " << y << "H" << axis.at(axis.high);
    const double step = tickStep(axis.high - axis.low, MaxTicks);
    for (double tick = std::ceil(axis.low / step) * step; tick <= axis.high; tick += step) {
        const double x = axis.at(tick);
        path << "M" << x << " " << y << "v4";
        labels << "<text x=\"" << x << "\" y=\"" << y + 18 << "\">" << offsetText(tick) << "</text>";
    }
    svg << "<path d=\"" << path.str() << "\"/>" << labels.str();
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
    std::ostringstream svg;
    svg << "<svg class=\"diagram\" role=\"img\" aria-label=\"Exposures in order of capture: " << offsetsText(offsets)
        << " stops\" viewBox=\"0 0 " << Width << " " << axisY + AxisHeight << "\">";
    drawAxis(svg, axis, axisY);
    for (size_t i = 0; i < rows.size(); ++i) {
        const double x = axis.at(offsets[i]);
        const double y = axisY - RowHeight * (static_cast<double>(rows[i]) + 0.5);
        svg << "<circle cx=\"" << x << "\" cy=\"" << y << "\" r=\"9\"/><text class=\"dot\" x=\"" << x << "\" y=\""
            << y + 4 << "\">" << i + 1 << "</text>";
    }
    svg << "</svg>\n";
    return svg.str();
}
