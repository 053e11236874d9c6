#include "photographs/exposure_diagram.h"

#include "base/markup.h"

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

void drawAxis(std::ostream& svg, const Axis& axis, double y) {
    svg << "<line x1=\"" << axis.at(axis.low) << "\" x2=\"" << axis.at(axis.high) << "\" y1=\"" << y << "\" y2=\"" << y
        << "\"/>";
    const double step = tickStep(axis.high - axis.low, MaxTicks);
    for (double tick = std::ceil(axis.low / step) * step; tick <= axis.high; tick += step) {
        const double x = axis.at(tick);
        svg << "<line x1=\"" << x << "\" x2=\"" << x << "\" y1=\"" << y << "\" y2=\"" << y + 4 << "\"/><text x=\"" << x
            << "\" y=\"" << y + 18 << "\">" << offsetText(tick) << "</text>";
    }
}

} // namespace

std::string exposureDiagram(const PhotoSet& set) {
    std::map<std::string, size_t> dots; // number of dots per exposure so far
    std::vector<size_t> rows;
    for (const double offset : set.offsets) {
        rows.push_back(dots[offsetText(offset)]++);
    }
    const double axisY = RowHeight * static_cast<double>(std::ranges::max(rows) + 1) + 4;
    const auto [low, high] = std::ranges::minmax(set.offsets);
    constexpr double Rounding = 1.0 / 6; // of shutter speeds, such as 1/30 s for 1/32 s
    const double start = std::floor(low + Rounding);
    const Axis axis = {start, std::max(std::ceil(high - Rounding), start + 1)};
    std::ostringstream svg;
    svg << "<svg class=\"ev\" role=\"img\" aria-label=\"Exposures in order of capture: " << offsetsText(set)
        << " stops\" viewBox=\"0 0 " << Width << " " << axisY + AxisHeight << "\">";
    drawAxis(svg, axis, axisY);
    for (size_t i = 0; i < rows.size(); ++i) {
        const double x = axis.at(set.offsets[i]);
        const double y = axisY - RowHeight * (static_cast<double>(rows[i]) + 0.5);
        svg << "<circle cx=\"" << x << "\" cy=\"" << y << "\" r=\"9\"/><text class=\"dot\" x=\"" << x << "\" y=\""
            << y + 4 << "\">" << i + 1 << "</text>";
    }
    svg << "</svg>\n";
    return svg.str();
}
