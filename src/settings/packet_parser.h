// Settings: what is read out of XMP texts. XML is not parsed: fixed texts are searched, and values scanned behind them.
//
// A text is given without the terminating zero that the exported functions demand; nothing behind it is read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace tvmeta {

namespace parse_result {
inline constexpr std::int32_t NoDeclaration = 0;
inline constexpr std::int32_t NotTerminated = -3;
inline constexpr std::int32_t OtherMethod = -5;
} // namespace parse_result

// Positions that are looked at for the end of a lens name; a name is one byte shorter.
inline constexpr std::size_t LensRoom = 64;

struct Method;

// Where a packet's settings stand and how they are written.
struct Packet {
    std::string_view text;
    std::size_t methodTag; // offset of "tvtm:Method"
    std::size_t valueSkip; // characters between the end of a tag and its value: ">" or "=" and a quote
    std::int64_t major;
    std::int64_t minor;
    const Method* method; // null for an unknown name
};

// A buffer of the interface as a text: `length` counts the terminating zero, which must be there.
std::optional<std::string_view> terminatedText(const char* buffer, std::int32_t length) noexcept;

// The method of the packet in the text: a method code, 0 or OtherMethod, as METHOD_DETECT reports it.
std::int32_t detectMethod(std::string_view text) noexcept;

// As get_settings_from_xmp with a method code.
std::int32_t readSettings(std::string_view text, std::int32_t method, std::span<float> settings) noexcept;

// Reads the parameters of the packet's method into their slots. Slots whose tags are missing stay as they are.
void readParameters(const Packet& packet, std::span<float> settings) noexcept;

// As get_settings_from_xmp with MODE_LENS: copies at most 63 bytes into `lens`, without a terminator.
std::int32_t copyLens(std::string_view text, std::span<char> lens) noexcept;

} // namespace tvmeta
