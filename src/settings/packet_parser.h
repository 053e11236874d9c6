// Settings: detects and reads a settings packet, and the lens name, in an XMP text. XML is not parsed: fixed texts are
// searched, and values are scanned after them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace tvmeta {

struct Method;

// Bytes of the buffer at the interface: a name, of up to 63 bytes, and the terminator that the caller provides.
inline constexpr std::size_t LensBufferSize = 64;

// Copies the name, up to the size of `lens`, without a terminator. Returns the offset of the end of the name, or of the
// end of the search, as get_settings_from_xmp does.
std::size_t copyLens(std::string_view text, std::span<char> lens);

// A buffer of the interface as a text without its terminating zero, which `length` includes. Empty if the zero is
// missing.
std::optional<std::string_view> terminatedText(const char* buffer, std::int32_t length);

// The method of the packet, or another result of get_settings_from_xmp for METHOD_DETECT.
std::int32_t detectMethod(std::string_view text);

inline bool hasSettings(std::string_view text) {
    return detectMethod(text) > 0;
}

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
