#include "pictures/image.h"

#include "output/failure.h"
#include "output/text.h"

#include <half.h>

#include <algorithm>
#include <cstring>
#include <string_view>

namespace {

constexpr std::string_view ExrStart = "\x76\x2F\x31\x01";
constexpr std::string_view PngStart = "\x89PNG";

// Beyond the range of half floats stands their largest finite number, since an infinite pixel would spoil every later
// calculation.
uint16_t halfBits(float sample) {
    return half(std::clamp<float>(sample, -HALF_MAX, HALF_MAX)).bits();
}

// The picture with every sample run through a function to another type.
template <typename From, typename To>
Image converted(const Image& image, Depth depth, To (*convert)(From)) {
    Image result = {image.width, image.height, image.channels, depth};
    result.samples.resize(image.samples.size() / sizeof(From) * sizeof(To));
    for (size_t i = 0; i < image.samples.size() / sizeof(From); ++i) {
        From sample;
        std::memcpy(&sample, &image.samples[i * sizeof sample], sizeof sample);
        const To changed = convert(sample);
        std::memcpy(&result.samples[i * sizeof changed], &changed, sizeof changed);
    }
    return result;
}

// 0xFF becomes 0xFFFF, so that white stays white.
uint16_t widenedSample(unsigned char sample) {
    return static_cast<uint16_t>(sample * 0x101);
}

} // namespace

size_t sampleBytes(const Image& image) {
    return static_cast<size_t>(image.width) * static_cast<size_t>(image.height) * static_cast<size_t>(image.channels) *
           static_cast<size_t>(bytesPerSample(image.depth));
}

Image loadImage(const std::string& path) {
    const Bytes start = readStart(path, 4);
    const std::string_view text = asText(start);
    if (text.starts_with("#?")) {
        return floatImage(decodeRadiance(path, readFile(path)));
    }
    if (text == ExrStart) {
        return decodeExr(path);
    }
    if (text.starts_with("P5") || text.starts_with("P6")) {
        return decodePnm(path, readFile(path));
    }
    if (text == PngStart) {
        return decodePng(path, readFile(path));
    }
    throw Failure(path, "it is not a PNG, binary PGM or PPM, Radiance HDR or OpenEXR picture: " + beginning(start));
}

HdrPlanes loadPlanes(const std::string& path) {
    const Bytes start = readStart(path, 4);
    const std::string_view text = asText(start);
    if (text.starts_with("#?")) {
        return decodeRadiance(path, readFile(path));
    }
    if (text == ExrStart) {
        return sharedExponentPlanes(decodeExr(path));
    }
    throw Failure(path, "it is not a Radiance HDR or OpenEXR picture: " + beginning(start));
}

Image widened(const Image& image) {
    return converted(image, Depth::Integer16, widenedSample);
}

Image halved(const Image& image) {
    return converted(image, Depth::Float16, halfBits);
}
