// Settings: a settings packet that was found in an XMP text, and its parameter values.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace tvmeta {

struct Method;

struct Version {
    std::int64_t major;
    std::int64_t minor;
};

enum class PropertyForm { Element, Attribute };

// Characters between a tag and its value: ">", or "=" and a quote.
constexpr std::size_t valueDistance(PropertyForm form) {
    return form == PropertyForm::Element ? 1 : 2;
}

struct Packet {
    std::string_view text; // the whole XMP text
    Version version;
    std::size_t methodTag; // offset of "tvtm:Method"
    PropertyForm form;     // of the method tag, and so of the parameters
    const Method* method;  // null: unknown name
};

// Reads the parameters of the packet's method into their slots. Slots whose tags are missing are unchanged.
void readParameters(const Packet& packet, std::span<float> settings);

} // namespace tvmeta
