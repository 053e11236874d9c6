// Settings: the value of one parameter as the text that people read and type. It is the text of a packet, so the forms
// of writer and reader serve here too.
#include "settings/methods.h"
#include "settings/packet_writer.h"
#include "settings/value_curves.h"
#include "support/text_numbers.h"
#include "support/text_search.h"
#include "tvmeta.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

using namespace tvmeta;

namespace {

static_assert(TVMETA_SETTING_TEXT_SIZE > PrintedFloatSize, "a value and its terminator");

bool takeDigits(std::string_view& text) {
    const std::size_t count = std::min(text.find_first_not_of("0123456789"), text.size());
    text.remove_prefix(count);
    return count > 0;
}

// Whether the text is a decimal number and nothing else; the scanner of packets ignores what follows.
bool isDecimalNumber(std::string_view text) {
    takeOneOf(text, "+-");
    bool hasDigits = takeDigits(text);
    if (takeOneOf(text, ".")) {
        hasDigits = takeDigits(text) || hasDigits;
    }
    if (hasDigits && takeOneOf(text, "eE")) {
        takeOneOf(text, "+-");
        hasDigits = takeDigits(text);
    }
    return hasDigits && text.empty();
}

// The words of a parameter; empty if its value is a number.
std::span<const Word> wordsOf(ValueKind kind, bool bySlider) {
    switch (kind) {
    case ValueKind::SmoothingMode:
        return SmoothingModes;
    case ValueKind::Smoothing:
        return bySlider ? std::span<const Word>() : SmoothingLevels;
    case ValueKind::Panorama:
        return YesNo;
    default:
        return {};
    }
}

std::int32_t storeWord(std::string_view text, std::span<const Word> words, float& slot) {
    const auto word = std::ranges::find(words, text, &Word::text);
    if (word == words.end()) {
        return TVMETA_SETTING_INVALID;
    }
    slot = word->value;
    return TVMETA_SETTING_OK;
}

// Above this, slider positions are too coarse for the two decimals of a gamma: what is read back would drift.
constexpr float MaxGamma = 10'000.0F;

std::int32_t storeNumber(std::string_view text, ValueKind kind, float& slot) {
    const std::optional<float> number = isDecimalNumber(text) ? scanFloat(text) : std::nullopt;
    const KindForm& form = formOf(kind);
    if (!number || std::isnan(form.toSlot(*number))) {
        return TVMETA_SETTING_INVALID;
    }
    if (kind == ValueKind::Gamma && *number > MaxGamma) {
        return TVMETA_SETTING_TOO_LARGE;
    }
    char buffer[PrintedFloatSize];
    const std::string_view written = printFixed(buffer, form.fromSlot(form.toSlot(*number)), form.decimals);
    const float readBack = form.toSlot(*scanFloat(written));
    if (!std::isfinite(readBack)) {
        return kind == ValueKind::Gamma ? TVMETA_SETTING_TOO_SMALL : TVMETA_SETTING_TOO_LARGE;
    }
    slot = readBack;
    return TVMETA_SETTING_OK;
}

} // namespace

std::int32_t tvmeta_setting_text(std::int32_t method, std::int32_t index, const float* settings,
                                 char text[TVMETA_SETTING_TEXT_SIZE]) noexcept {
    const Parameter* const parameter = findParameter(method, index);
    if (parameter == nullptr || settings == nullptr || text == nullptr) {
        return 0;
    }
    std::string_view value(text, writeValue(*parameter, settings, text));
    value = value.substr(0, value.find_last_not_of(' ') + 1);
    text[value.size()] = '\0';
    return static_cast<std::int32_t>(value.size());
}

std::int32_t tvmeta_setting_value(std::int32_t method, std::int32_t index, const char* text, float* settings) noexcept {
    const Parameter* const parameter = findParameter(method, index);
    if (parameter == nullptr) {
        return TVMETA_SETTING_UNKNOWN;
    }
    if (settings == nullptr) {
        return TVMETA_SETTING_INVALID;
    }
    const bool bySlider = parameter->kind == ValueKind::Smoothing && smoothsBySlider(settings);
    float& slot = settings[bySlider ? SmoothingSliderSlot : parameter->slot];
    if (text == nullptr) {
        slot = parameter->kind == ValueKind::Gamma ? NeutralGamma : 0.0F;
        return TVMETA_SETTING_OK;
    }
    const std::span<const Word> words = wordsOf(parameter->kind, bySlider);
    return words.empty() ? storeNumber(text, parameter->kind, slot) : storeWord(text, words, slot);
}
