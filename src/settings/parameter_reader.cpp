// Reads the parameters of a packet: one pass over the text that notes where each tag stands, then the values.
#include "settings/methods.h"
#include "settings/packet_parser.h"
#include "settings/value_curves.h"
#include "settings/xmp_names.h"
#include "support/text_numbers.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <limits>

namespace tvmeta {

namespace {

constexpr SearchText TagStart{SettingsPrefix, 0};
constexpr std::size_t NotFound = std::string_view::npos;

// The value position of each parameter, in the order of the method's table.
using ValuePositions = std::array<std::size_t, SETTINGS_SLOTS>;

// Whether the text begins with the name: most do not by the first byte or the last.
bool beginsWith(std::string_view text, std::string_view name) noexcept {
    return text.size() >= name.size() && text.front() == name.front() && text[name.size() - 1] == name.back() &&
           text.starts_with(name);
}

// Whether the text behind the prefix begins with the parameter's name; a longer name that begins
// with it counts too.
bool namesParameter(std::string_view text, const Parameter& parameter, std::size_t valueSkip) noexcept {
    if (parameter.kind == ValueKind::Smoothing) { // but not "SmoothingMode": the next character must end the name
        const char end = valueSkip == 1 ? '>' : '=';
        return beginsWith(text, parameter.name) && textFrom(text, parameter.name.size()).starts_with(end);
    }
    return beginsWith(text, parameter.name) ||
           (!parameter.formerName.empty() && beginsWith(text, parameter.formerName));
}

// Parameters by their place in the method's table, a bit each.
using ParameterSet = std::uint32_t;
static_assert(SETTINGS_SLOTS < 32);

constexpr ParameterSet setOf(std::size_t index) noexcept {
    return ParameterSet{1} << index;
}

// The parameters that a name's first letter leaves to be compared.
class ParametersByLetter {
  public:
    explicit ParametersByLetter(std::span<const Parameter> parameters) noexcept {
        for (std::size_t i = 0; i < parameters.size(); ++i) {
            sets_[indexOf(parameters[i].name)] |= setOf(i);
            sets_[indexOf(parameters[i].formerName)] |= setOf(i);
        }
    }
    ParameterSet operator[](std::string_view name) const noexcept { return sets_[indexOf(name)]; }

  private:
    static constexpr std::size_t Letters = 32; // more than there are in ASCII, of which these are the low bits

    static std::size_t indexOf(std::string_view name) noexcept {
        return name.empty() ? 0 : static_cast<unsigned char>(name.front()) % Letters;
    }

    std::array<ParameterSet, Letters> sets_{};
};

// Only the first tag of each parameter counts, whether its value can be read or not. Tags before the method tag are not
// seen; those of a second description are, if the first lacks them.
ValuePositions locateValues(const Packet& packet) noexcept {
    const std::span<const Parameter> parameters = packet.method->parameters;
    const ParametersByLetter byLetter(parameters);
    ValuePositions positions;
    positions.fill(NotFound);
    ParameterSet missing = setOf(parameters.size()) - 1;
    for (std::size_t at = packet.methodTag; missing != 0; ++at) {
        at = findText(packet.text, TagStart, at);
        if (at == NotFound) {
            break;
        }
        const std::size_t nameAt = at + SettingsPrefix.size();
        const std::string_view name = textFrom(packet.text, nameAt);
        for (ParameterSet rest = missing & byLetter[name]; rest != 0; rest &= rest - 1) {
            const auto i = static_cast<std::size_t>(std::countr_zero(rest));
            if (namesParameter(name, parameters[i], packet.valueSkip)) {
                positions[i] = nameAt + parameters[i].name.size() + packet.valueSkip;
                missing &= ~setOf(i);
            }
        }
    }
    return positions;
}

std::optional<float> scanIntegerValue(std::string_view text) noexcept {
    const std::optional<std::int64_t> number = scanInteger(text);
    if (!number) {
        return std::nullopt;
    }
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<float>(std::clamp<std::int64_t>(*number, Limits::min(), Limits::max()));
}

// Scans a number at the value position, or one character behind it: a property written as an attribute in a packet
// whose method tag is an element has a quote there.
template <typename Scan>
std::optional<float> scanNumber(std::string_view value, Scan scan) noexcept {
    std::optional<float> number = scan(value);
    if (!number) {
        number = scan(textFrom(value, 1));
    }
    return number;
}

std::optional<float> readFloat(std::string_view value) noexcept {
    return scanNumber(value, scanFloat);
}

std::optional<float> readVersionedNumber(const Packet& packet, std::string_view value) noexcept {
    return packet.major > 2 ? readFloat(value) : scanNumber(value, scanIntegerValue);
}

std::optional<float> readWord(std::string_view value, std::span<const Word> words) noexcept {
    for (const Word& word : words) {
        if (value.starts_with(word.text)) {
            return word.value;
        }
    }
    return std::nullopt;
}

std::optional<float> readMicrocontrast(const Packet& packet, std::string_view value) noexcept {
    const bool isNumber = packet.major > 2 || packet.minor > 4;
    return isNumber ? readVersionedNumber(packet, value) : readWord(value, MicrocontrastWords);
}

// The slot value of a packet value, if there is one.
std::optional<float> convert(std::optional<float> value, float (*curve)(float)) noexcept {
    return value ? std::optional<float>(curve(*value)) : std::nullopt;
}

void store(std::optional<float> value, float& slot) noexcept {
    if (value) {
        slot = *value;
    }
}

// What stands here depends on the smoothing mode, which has been read by now or is the caller's.
void readSmoothing(std::string_view value, std::span<float> settings) noexcept {
    if (settings[SmoothingModeSlot] == LightSmoothing) {
        store(readWord(value, SmoothingLevels), settings[SmoothingLevelSlot]);
    } else if (settings[SmoothingModeSlot] == SliderSmoothing) {
        store(readFloat(value), settings[SmoothingSliderSlot]);
    }
}

void readParameter(const Packet& packet, const Parameter& parameter, std::string_view value,
                   std::span<float> settings) noexcept {
    float& slot = settings[static_cast<std::size_t>(parameter.slot)];
    switch (parameter.kind) {
    case ValueKind::Number:
    case ValueKind::Fraction:
        store(readFloat(value), slot);
        break;
    case ValueKind::VersionedNumber:
        store(readVersionedNumber(packet, value), slot);
        break;
    case ValueKind::Gamma:
        store(convert(readFloat(value), sliderFromGamma), slot);
        break;
    case ValueKind::Clip:
        store(convert(readFloat(value), slotFromClip), slot);
        break;
    case ValueKind::Microcontrast:
        store(readMicrocontrast(packet, value), slot);
        break;
    case ValueKind::SmoothingMode:
        store(readWord(value, SmoothingModes), slot);
        break;
    case ValueKind::Smoothing:
        readSmoothing(value, settings);
        break;
    case ValueKind::Panorama:
        slot = value.starts_with("Yes") ? 1.0F : 0.0F;
        break;
    }
}

} // namespace

void readParameters(const Packet& packet, std::span<float> settings) noexcept {
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
