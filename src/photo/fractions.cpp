#include "photo/fractions.h"

#include <cmath>

namespace tvmeta {

// Convergents of the continued fraction. Each is the best one for its denominator.
tvmeta_Rational nearestFraction(double value, double tolerance) {
    constexpr double Max = 2147483647.0;
    if (!(value > 0.0 && value <= Max)) {
        return {0, 0};
    }
    tvmeta_Rational before{0, 1};
    tvmeta_Rational fraction{1, 0};
    double rest = value;
    for (;;) {
        const double whole = std::floor(rest);
        const double numerator =
            whole * static_cast<double>(fraction.numerator) + static_cast<double>(before.numerator);
        const double denominator =
            whole * static_cast<double>(fraction.denominator) + static_cast<double>(before.denominator);
        if (numerator > Max || denominator > Max) {
            return {0, 0};
        }
        before = fraction;
        fraction = {static_cast<std::int64_t>(numerator), static_cast<std::int64_t>(denominator)};
        if (fraction.numerator > 0 && std::fabs(quotient(fraction) - value) <= tolerance * value) {
            return fraction;
        }
        if (rest == whole) {
            return {0, 0};
        }
        rest = 1.0 / (rest - whole);
    }
}

} // namespace tvmeta
