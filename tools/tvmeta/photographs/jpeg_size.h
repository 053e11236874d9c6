// The size of a JPEG picture in memory.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

struct PixelSize {
    int32_t width = 0;
    int32_t height = 0;
};

// Reads the frame header (ITU-T T.81, section B.2.2). Empty if there is none before the image data.
std::optional<PixelSize> jpegSize(std::span<const unsigned char> file);
