// Settings: detects and reads a settings packet in an XMP text. XML is not parsed: fixed texts are searched, and values
// are scanned after them.
#pragma once

#include "support/result.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace tvmeta {

// A buffer of the interface as a text without its terminating zero, which `length` includes. Empty if the zero is
// missing.
std::optional<std::string_view> terminatedText(const char* buffer, std::int32_t length);

// The method of the packet, as get_settings_from_xmp detects it. METHOD_NONE: an unknown name.
Result<std::int32_t> detectMethod(std::string_view text);

inline bool hasSettings(std::string_view text) {
    return detectMethod(text).result() > 0;
}

// Reads the slots of a method. Returns the offset of the method tag. A failure is a result of get_settings_from_xmp.
Result<std::size_t> readSettings(std::string_view text, std::int32_t method, std::span<float> settings);

} // namespace tvmeta
