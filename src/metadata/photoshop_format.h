// Metadata: Photoshop image resources, in Photoshop files, JPEG segments and TIFF tags. A resource is a signature, an
// identifier, a name, a data size and the data.
#pragma once

#include <array>
#include <cstdint>

namespace tvmeta::photoshop {

inline constexpr std::array<unsigned char, 4> Signature = {'8', 'B', 'I', 'M'};

inline constexpr std::uint16_t IptcBlock = 0x0404;
inline constexpr std::uint16_t Thumbnail = 0x040C;
inline constexpr std::uint16_t IccProfile = 0x040F;
inline constexpr std::uint16_t ExifData = 0x0422;
inline constexpr std::uint16_t Xmp = 0x0424;

} // namespace tvmeta::photoshop
