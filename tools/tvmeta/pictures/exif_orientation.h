// The orientation in the EXIF block of a picture.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

// The orientation code, 1 to 8, in the first directory of a TIFF structure in memory (EXIF 2.3, tag 274).
std::optional<int32_t> exifOrientation(std::span<const unsigned char> structure);
