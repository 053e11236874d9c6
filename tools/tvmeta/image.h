// Pictures to be written as TIFF files or measured: PNG, PGM, PPM and Radiance HDR files in memory.
#pragma once

#include "files.h"

#include <cstdint>
#include <string>

// Sample formats; the values are the bitsCode of TifImageInfo.
enum class Depth : int32_t { Integer8 = 8, Integer16 = 16, Float32 = 32, Float16 = 3216 };

constexpr int32_t bytesPerSample(Depth depth) {
    return depth == Depth::Float16 ? 2 : static_cast<int32_t>(depth) / 8;
}

// Interleaved samples in machine byte order, rows without padding.
struct Image {
    int32_t width = 0;
    int32_t height = 0;
    int32_t channels = 0;
    Depth depth = Depth::Integer8;
    Bytes samples = {};
};

// Shared-exponent pixels as hdrMinMax takes them: per row one plane each of blue, green and red mantissas and of
// exponents. A mantissa m with exponent e stands for m * 2^(e - 128), e = 0 for no light.
struct HdrPlanes {
    int32_t width = 0;
    int32_t height = 0;
    Bytes bytes = {};
};

// A picture in the depth that its file has. Throws Failure when it cannot be read.
Image loadImage(const std::string& path);

// The Radiance picture in a file; path is for messages. Throws Failure when it holds none or a damaged one.
HdrPlanes decodeRadiance(const std::string& path, const Bytes& file);

// The same pixels as 32-bit floats, red first.
Image floatImage(const HdrPlanes& planes);

// An 8-bit picture with 16-bit samples, a 32-bit float one with 16-bit floats.
Image widened(const Image& image);
Image halved(const Image& image);
