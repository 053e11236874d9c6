// One pass over the text finds the tags, then the values are read.
#include "settings/methods.h"
#include "settings/packet_parser.h"
#include "settings/value_curves.h"
#include "settings/xmp_names.h"
#include "support/text_numbers.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace tvmeta {

namespace {

constexpr SearchText TagStart{SettingsPrefix, 0};

// The value position of each parameter, in the order of the method's table.
using ValuePositions = std::array<std::size_t, SETTINGS_SLOTS>;

// Compares the first and the last byte before the rest, which saves a quarter of the time of a packet.
bool beginsWith(std::string_view text, std::string_view name) {
    return text.size() >= name.size() && text.front() == name.front() && text[name.size() - 1] == name.back() &&
           text.starts_with(name);
}

// Whether a tag, without its prefix, starts with the name of the parameter. Except for "Smoothing", which would match
// "SmoothingMode", the name need not end there.
bool namesParameter(std::string_view tag, const Parameter& parameter, PropertyForm form) {
    if (parameter.kind == ValueKind::Smoothing) {
        const char end = form == PropertyForm::Element ? '>' : '=';
        return beginsWith(tag, parameter.name) && textFrom(tag, parameter.name.size()).starts_with(end);
    }
    return beginsWith(tag, parameter.name) || (!parameter.formerName.empty() && beginsWith(tag, parameter.formerName));
}

// Only the first tag of each parameter counts, whether its value can be read or not. Tags before the method tag are
// ignored. A second settings description supplies the tags that the first lacks.
ValuePositions locateValues(const Packet& packet) {
    const std::span<const Parameter> parameters = packet.method->parameters;
    ValuePositions positions;
    positions.fill(NotFound);
    std::size_t missing = parameters.size();
    for (std::size_t at = packet.methodTag; missing > 0; ++at) {
        at = findText(packet.text, TagStart, at);
        if (at == NotFound) {
            break;
        }
        const std::size_t nameAt = at + SettingsPrefix.size();
        const std::string_view tag = textFrom(packet.text, nameAt);
        for (std::size_t i = 0; i < parameters.size(); ++i) {
            if (positions[i] == NotFound && namesParameter(tag, parameters[i], packet.form)) {
                positions[i] = nameAt + parameters[i].name.size() + valueDistance(packet.form);
                --missing;
                break; // no tag is that of two parameters
            }
        }
    }
    return positions;
}

std::optional<float> scanIntegerValue(std::string_view text) {
    const std::optional<std::int64_t> number = scanInteger(text);
    if (!number) {
        return std::nullopt;
    }
    return static_cast<float>(std::clamp<std::int64_t>(*number, INT32_MIN, INT32_MAX));
}

// Scans a number at the value position, or one character after it. In a packet of elements, the second place is that of
// an attribute's value.
std::optional<float> scanNumber(std::string_view value, std::optional<float> (*scan)(std::string_view)) {
    const std::optional<float> number = scan(value);
    return number ? number : scan(textFrom(value, 1));
}

std::optional<float> readVersionedNumber(const Packet& packet, std::string_view value) {
    return scanNumber(value, packet.version.major > 2 ? scanFloat : scanIntegerValue);
}

// A word is compared with the start of a value, so it must not be the start of a later word.
consteval bool isInOrder(std::span<const Word> words) {
    const auto isHidden = [&](const Word& later) { return later.text.starts_with(words.front().text); };
    return words.empty() || (std::ranges::none_of(words.subspan(1), isHidden) && isInOrder(words.subspan(1)));
}
static_assert(isInOrder(SmoothingLevels) && isInOrder(MicrocontrastWords) && isInOrder(SmoothingModes));

std::optional<float> readWord(std::string_view value, std::span<const Word> words) {
    const auto word = std::ranges::find_if(words, [value](const Word& row) { return value.starts_with(row.text); });
    return word != words.end() ? std::optional(word->value) : std::nullopt;
}

std::optional<float> readMicrocontrast(const Packet& packet, std::string_view value) {
    const bool isNumber = packet.version.major > 2 || packet.version.minor > 4;
    return isNumber ? readVersionedNumber(packet, value) : readWord(value, MicrocontrastWords);
}

std::optional<float> readValue(const Packet& packet, ValueKind kind, std::string_view value) {
    switch (kind) {
    case ValueKind::Number:
    case ValueKind::Fraction:
    case ValueKind::Gamma:
    case ValueKind::Clip:
        if (const std::optional<float> number = scanNumber(value, scanFloat)) {
            return formOf(kind).toSlot(*number);
        }
        break;
    case ValueKind::VersionedNumber:
        return readVersionedNumber(packet, value);
    case ValueKind::Microcontrast:
        return readMicrocontrast(packet, value);
    case ValueKind::SmoothingMode:
        return readWord(value, SmoothingModes);
    case ValueKind::Smoothing:
        return readWord(value, SmoothingLevels);
    case ValueKind::Panorama:
        return readWord(value, YesNo).value_or(0.0F);
    }
    return std::nullopt;
}

// Smoothing is a level or a slider position, by the smoothing mode: that of the packet, which is read before, or the
// caller's.
void readParameter(const Packet& packet, const Parameter& parameter, std::string_view value,
                   std::span<float> settings) {
    int slot = parameter.slot;
    ValueKind kind = parameter.kind;
    if (kind == ValueKind::Smoothing && settings[SmoothingModeSlot] != LightSmoothing) {
        if (settings[SmoothingModeSlot] != SliderSmoothing) {
            return;
        }
        slot = SmoothingSliderSlot;
        kind = ValueKind::Number;
    }
    if (const std::optional<float> number = readValue(packet, kind, value)) {
        settings[static_cast<std::size_t>(slot)] = *number;
    }
}

} // namespace

void readParameters(const Packet& packet, std::span<float> settings) {
    const std::span<const Parameter> parameters = packet.method->parameters;
    const ValuePositions positions = locateValues(packet);
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        const Parameter& parameter = parameters[i];
        if (positions[i] != NotFound) {
            readParameter(packet, parameter, textFrom(packet.text, positions[i]), settings);
        } else if (parameter.kind == ValueKind::Gamma) {
            settings[static_cast<std::size_t>(parameter.slot)] = NeutralGamma; // older packets have no gamma tag
        }
    }
}

} // namespace tvmeta
