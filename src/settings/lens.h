// Settings: the lens name of an XMP text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace tvmeta {

// Positions at which the end of a name may be. A name is at most one byte shorter.
inline constexpr std::size_t LensRoom = 64;

// Copies at most 63 bytes into `lens`, without a terminator. Returns what get_settings_from_xmp returns for MODE_LENS.
std::int32_t copyLens(std::string_view text, std::span<char> lens);

} // namespace tvmeta
