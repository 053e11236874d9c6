// Pictures to be written as TIFF files or measured.
#pragma once

#include "output/files.h"

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
    static constexpr size_t Count = 4;

    int32_t width = 0;
    int32_t height = 0;
    Bytes bytes = {};
};

// The bytes that the samples of a picture take.
size_t sampleBytes(const Image& image);

// A picture in the depth that its file has: PNG, binary PGM or PPM, Radiance HDR or OpenEXR, whatever its name. Throws
// Failure when it cannot be read.
Image loadImage(const std::string& path);

// A Radiance HDR or OpenEXR picture for the statistics. Throws Failure when it cannot be read.
HdrPlanes loadPlanes(const std::string& path);

// The decoders; the path is for messages, but for OpenEXR, which is read as it is decoded. They throw Failure for
// pictures that are damaged, or of a kind that is not supported.
Image decodePng(const std::string& path, const Bytes& file);
Image decodePnm(const std::string& path, const Bytes& file);
Image decodeExr(const std::string& path);
HdrPlanes decodeRadiance(const std::string& path, const Bytes& file);

// Shared-exponent pixels as 32-bit floats, red first, and back. On the way back the colours lose what exceeds 8 bits,
// and pixels with a colour that is not finite count as without light.
Image floatImage(const HdrPlanes& planes);
HdrPlanes sharedExponentPlanes(const Image& image);

// An 8-bit picture with 16-bit samples, a 32-bit float one with 16-bit floats.
Image widened(const Image& image);
Image halved(const Image& image);
