#include "photographs/field_words.h"

#include "base/text.h"

#include <fmt/format.h>

#include <array>
#include <cmath>
#include <string_view>

namespace {

// The word for a code, or the number if the standard does not define it.
template <size_t N>
std::string wordOf(const Value& value, const std::array<std::string_view, N>& words) {
    const double code = numberOf(value);
    const bool isKnown = code >= 0 && code < N && !words[static_cast<size_t>(code)].empty();
    return isKnown ? std::string(words[static_cast<size_t>(code)]) : plainWords(value);
}

} // namespace

std::string plainWords(const Value& value) {
    if (!isNumber(value)) {
        return printable(textOf(value));
    }
    return fmt::format("{:.9g}", numberOf(value));
}

// Cameras show exposures of a quarter of a second and less as fractions.
std::string exposureWords(const Value& value) {
    constexpr double MaxFraction = 0.26;
    constexpr double MaxDenominator = 1e6;
    const double seconds = numberOf(value);
    const bool isFraction = seconds <= MaxFraction && seconds * MaxDenominator >= 1;
    return isFraction ? "1/" + std::to_string(std::lround(1 / seconds)) : plainWords(value);
}

std::string apertureWords(const Value& value) {
    return "f/" + plainWords(value);
}

std::string evWords(const Value& value) {
    return fmt::format("{:.1f}", numberOf(value));
}

// TIFF 6.0, Orientation: how to turn the picture upright.
std::string orientationWords(const Value& value) {
    static constexpr std::array<std::string_view, 9> Words = {
        "",
        "upright",
        "mirror horizontally",
        "rotate 180 degrees",
        "mirror vertically",
        "mirror horizontally, rotate 270 degrees clockwise",
        "rotate 90 degrees clockwise",
        "mirror horizontally, rotate 90 degrees clockwise",
        "rotate 270 degrees clockwise",
    };
    return wordOf(value, Words);
}

std::string biasWords(const Value& value) {
    std::string words = numberOf(value) > 0 ? "+" : "";
    words += plainWords(value);
    return words;
}

// EXIF 2.32, section 4.6.5, as are the codes below.
std::string exposureModeWords(const Value& value) {
    static constexpr std::array<std::string_view, 3> Words = {"automatic", "manual", "automatic bracket"};
    return wordOf(value, Words);
}

std::string exposureProgramWords(const Value& value) {
    static constexpr std::array<std::string_view, 9> Words = {
        "not defined", "manual",          "program AE",    "aperture priority", "shutter priority",
        "creative",    "action (sports)", "portrait mode", "landscape mode"};
    return wordOf(value, Words);
}

std::string meteringModeWords(const Value& value) {
    static constexpr std::array<std::string_view, 7> Words = {"unknown",    "average",       "centre-weighted", "spot",
                                                              "multi-spot", "multi-segment", "partial"};
    return wordOf(value, Words);
}

// Bit 0 says whether the flash fired; the mode is in bits 3 and 4.
std::string flashWords(const Value& value) {
    const auto code = static_cast<int64_t>(numberOf(value));
    const bool fired = (code & 1) != 0;
    const bool isAutomatic = (code >> 3 & 3) == 3;
    return std::string(fired ? "fired" : "did not fire") + (isAutomatic ? ", automatic" : "");
}

std::string whiteBalanceWords(const Value& value) {
    static constexpr std::array<std::string_view, 2> Words = {"automatic", "manual"};
    return wordOf(value, Words);
}
