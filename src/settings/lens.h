// Settings: the lens name of an XMP text.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

namespace tvmeta {

// Bytes of the buffer at the interface: a name, of up to 63 bytes, and the terminator that the caller provides.
inline constexpr std::size_t LensBufferSize = 64;

// Copies the name, up to the size of `lens`, without a terminator. Returns the offset of the end of the name, or of the
// end of the search, as get_settings_from_xmp does.
std::size_t copyLens(std::string_view text, std::span<char> lens);

} // namespace tvmeta
