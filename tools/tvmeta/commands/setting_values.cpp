#include "commands/setting_values.h"

#include "output/failure.h"
#include "output/suggestion.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <span>
#include <string_view>

namespace {

constexpr float NeutralGamma = 50; // slot value of gamma 1

// Words by slot value.
const std::array<std::string, 2> SmoothingModes = {"Light", "Slider"};
const std::array<std::string, 5> SmoothingLevels = {"Very High", "High", "Medium", "Low", "Very Low"};
const std::array<std::string, 2> YesNo = {"No", "Yes"};

// The curves between slot and packet, each with its inverse.
double gammaFromSlider(double slider) {
    return std::exp2((50 - slider) / 50);
}

double sliderFromGamma(double gamma) {
    return 50 - 50 * std::log2(gamma);
}

constexpr double ClipExponent = 0.3263790046007694;

double clipFromSlot(double slot) {
    return 10 * std::pow(slot / 10, ClipExponent);
}

double slotFromClip(double clip) {
    return 10 * std::pow(clip / 10, 1 / ClipExponent);
}

bool usesSlider(const SlotValues& values) {
    return values[DETAILS_ENHANCER_SMOOTHING_MODE] == 1;
}

// The words of a parameter, indexed by slot value; empty for a number.
std::span<const std::string> wordsOf(const SlotValues& values, int32_t kind) {
    switch (kind) {
    case TVMETA_SMOOTHING_MODE:
        return SmoothingModes;
    case TVMETA_SMOOTHING:
        return usesSlider(values) ? std::span<const std::string>() : SmoothingLevels;
    case TVMETA_YES_NO:
        return YesNo;
    default:
        return {};
    }
}

std::optional<double> parseNumber(const std::string& text) {
    double number = 0;
    const char* end = text.data() + text.size();
    const auto [parsed, error] = std::from_chars(text.data(), end, number);
    const bool isNumber = error == std::errc() && parsed == end && std::isfinite(number);
    return isNumber ? std::optional(number) : std::nullopt;
}

double slotFromNumber(double number, int32_t kind) {
    return kind == TVMETA_GAMMA ? sliderFromGamma(number) : kind == TVMETA_CLIP ? slotFromClip(number) : number;
}

double numberFromSlot(double slot, int32_t kind) {
    return kind == TVMETA_GAMMA ? gammaFromSlider(slot) : kind == TVMETA_CLIP ? clipFromSlot(slot) : slot;
}

int decimalsOf(int32_t kind) {
    switch (kind) {
    case TVMETA_FRACTION:
        return 6;
    case TVMETA_GAMMA:
        return 2;
    case TVMETA_CLIP:
        return 3;
    default:
        return 1;
    }
}

// The values that a parameter accepts, for messages.
std::string allowedValues(std::span<const std::string> words, int32_t kind) {
    if (kind == TVMETA_SMOOTHING) {
        return words.empty() ? "a number, because SmoothingMode is Slider"
                             : wordList(words, "or") + ", or a number with SmoothingMode=Slider";
    }
    if (!words.empty()) {
        return wordList(words, "or");
    }
    return kind == TVMETA_GAMMA ? "a number above 0" : kind == TVMETA_CLIP ? "a number of 0 or more" : "a number";
}

std::optional<float> parseValue(std::span<const std::string> words, int32_t kind, const std::string& text) {
    if (!words.empty()) {
        const auto found = std::ranges::find(words, text);
        return found == words.end() ? std::nullopt : std::optional(static_cast<float>(found - words.begin()));
    }
    const std::optional<double> number = parseNumber(text);
    const double slot = number ? slotFromNumber(*number, kind) : std::numeric_limits<double>::quiet_NaN();
    // NaN and numbers beyond the range of a float are refused.
    return std::abs(slot) <= std::numeric_limits<float>::max() ? std::optional(static_cast<float>(slot)) : std::nullopt;
}

} // namespace

float defaultValue(const tvmeta_Parameter& parameter) {
    return parameter.kind == TVMETA_GAMMA ? NeutralGamma : 0;
}

int32_t slotOf(const SlotValues& values, const tvmeta_Parameter& parameter) {
    const bool isSlider = parameter.kind == TVMETA_SMOOTHING && usesSlider(values);
    return isSlider ? DETAILS_ENHANCER_SMOOTHING_SLIDER : parameter.slot;
}

void setValue(SlotValues& values, const tvmeta_Parameter& parameter, const std::string& text) {
    const std::span<const std::string> words = wordsOf(values, parameter.kind);
    const std::optional<float> value = parseValue(words, parameter.kind, text);
    if (!value) {
        const double number = parseNumber(text).value_or(0);
        const bool isLarge = words.empty() && (number > 1 || std::abs(number) > std::numeric_limits<float>::max());
        throw WrongCommandLine("invalid " + std::string(parameter.name) + " '" + text + "': " +
                               (isLarge ? "the number is too large" : "use " + allowedValues(words, parameter.kind)));
    }
    values[static_cast<size_t>(slotOf(values, parameter))] = *value;
}

std::string valueText(const SlotValues& values, const tvmeta_Parameter& parameter) {
    const std::span<const std::string> words = wordsOf(values, parameter.kind);
    const float slot = values[static_cast<size_t>(slotOf(values, parameter))];
    if (!words.empty()) {
        const bool isWord = slot > 0; // not below 0, and not NaN
        const float last = static_cast<float>(words.size() - 1);
        return words[isWord ? static_cast<size_t>(std::min(slot, last)) : 0];
    }
    std::array<char, 64> text; // enough for the largest float with six decimals
    const auto number = static_cast<float>(numberFromSlot(slot, parameter.kind));
    const auto [end, error] =
        std::to_chars(text.begin(), text.end(), number, std::chars_format::fixed, decimalsOf(parameter.kind));
    return {text.begin(), end};
}
