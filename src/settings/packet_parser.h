// Settings: detects and reads a settings packet in an XMP text. XML is not parsed: fixed texts are searched, and values
// are scanned after them.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace tvmeta {

// A buffer of the interface as a text without its terminating zero, which `length` includes. Empty if the zero is
// missing.
std::optional<std::string_view> terminatedText(const char* buffer, std::int32_t length);

// Returns what get_settings_from_xmp returns for METHOD_DETECT.
std::int32_t detectMethod(std::string_view text);

// Returns what get_settings_from_xmp returns for a method code.
std::int32_t readSettings(std::string_view text, std::int32_t method, std::span<float> settings);

} // namespace tvmeta
