// Metadata: the results of getExifData.
#pragma once

#include <cstdint>

namespace tvmeta::status {

inline constexpr std::int32_t Done = 1;
inline constexpr std::int32_t Broken = -1; // cannot be opened, read or walked
inline constexpr std::int32_t WrongSignature = -2;
inline constexpr std::int32_t Unsupported = -3;
inline constexpr std::int32_t BrokenSegmentChain = -10; // of a JPEG, behind its EXIF data

} // namespace tvmeta::status
