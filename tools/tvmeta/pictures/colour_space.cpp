#include "pictures/colour_space.h"

#include <algorithm>
#include <cmath>

namespace {

using Vector = std::array<double, 3>;

Vector xyz(const Chromaticities::Point& point) {
    return {point.x, point.y, 1 - point.x - point.y};
}

double determinant(const Vector& a, const Vector& b, const Vector& c) {
    return a[0] * (b[1] * c[2] - b[2] * c[1]) - b[0] * (a[1] * c[2] - a[2] * c[1]) + c[0] * (a[1] * b[2] - a[2] * b[1]);
}

// SMPTE ST 2084, the inverse of its equation 5.2.
double fromPq(double sample) {
    constexpr double M1 = 2610.0 / 16384, M2 = 2523.0 / 32;
    constexpr double C1 = 3424.0 / 4096, C2 = 2413.0 / 128, C3 = 2392.0 / 128;
    const double root = std::pow(sample, 1 / M2);
    return std::pow(std::max(root - C1, 0.0) / (C2 - C3 * root), 1 / M1);
}

// ITU-R BT.2100, table 5: the inverse of the opto-electronic transfer function.
double fromHlg(double sample) {
    constexpr double A = 0.17883277, B = 0.28466892, C = 0.55991073;
    return sample <= 0.5 ? sample * sample / 3 : (std::exp((sample - C) / A) + B) / 12;
}

} // namespace

std::optional<Weights> luminanceWeights(const Chromaticities& points) {
    constexpr double SmallestArea = 1e-4; // of the triangle; with none there is no matrix
    const Vector red = xyz(points.red), green = xyz(points.green), blue = xyz(points.blue), white = xyz(points.white);
    const double area = determinant(red, green, blue);
    if (!(std::fabs(area) > SmallestArea && std::isfinite(area) && points.white.y > 0 && points.white.y <= 2)) {
        return std::nullopt;
    }
    // Cramer's rule for the amounts of the primaries that give white with the luminance 1.
    const double unit = area * points.white.y;
    return Weights{determinant(white, green, blue) * points.red.y / unit,
                   determinant(red, white, blue) * points.green.y / unit,
                   determinant(red, green, white) * points.blue.y / unit};
}

double linearLight(const ColourSpace& space, double sample) {
    switch (space.transfer) {
    case Transfer::Linear:
        return sample;
    case Transfer::Gamma:
        return std::pow(sample, space.gamma);
    case Transfer::Srgb: // IEC 61966-2-1
        return sample <= 0.04045 ? sample / 12.92 : std::pow((sample + 0.055) / 1.055, 2.4);
    case Transfer::Bt709:
        return sample < 0.081 ? sample / 4.5 : std::pow((sample + 0.099) / 1.099, 1 / 0.45);
    case Transfer::Pq:
        return fromPq(sample);
    case Transfer::Hlg:
        return fromHlg(sample);
    }
    return sample;
}
