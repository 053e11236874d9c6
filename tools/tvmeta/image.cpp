#include "image.h"

#include "failure.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>

#define STBI_NO_STDIO
#include <stb/stb_image.h>

namespace {

struct StbDeleter {
    void operator()(void* samples) const { stbi_image_free(samples); }
};

size_t sampleBytes(const Image& image) {
    return static_cast<size_t>(image.width) * static_cast<size_t>(image.height) * static_cast<size_t>(image.channels) *
           static_cast<size_t>(bytesPerSample(image.depth));
}

Image decodePng(const std::string& path, const Bytes& file) {
    const int size = librarySize(file);
    const bool isDeep = stbi_is_16_bit_from_memory(file.data(), size) != 0;
    Image image = {.depth = isDeep ? Depth::Integer16 : Depth::Integer8};
    const auto decode = [&](auto load) -> void* {
        return load(file.data(), size, &image.width, &image.height, &image.channels, 0);
    };
    const std::unique_ptr<void, StbDeleter> samples(isDeep ? decode(stbi_load_16_from_memory)
                                                           : decode(stbi_load_from_memory));
    if (!samples) {
        throw Failure(path, std::string("it cannot be decoded: ") + stbi_failure_reason());
    }
    const auto* bytes = static_cast<const unsigned char*>(samples.get());
    image.samples.assign(bytes, bytes + sampleBytes(image));
    return image;
}

// The next number of a PNM header, behind white space and comments that run to the end of their line; 0 for none.
int32_t takeNumber(std::string_view& header) {
    constexpr std::string_view Blanks = " \t\n\v\f\r";
    size_t start = header.find_first_not_of(Blanks);
    while (start < header.size() && header[start] == '#') {
        start = header.find_first_not_of(Blanks, header.find('\n', start));
    }
    header.remove_prefix(std::min(start, header.size()));
    int32_t number = 0;
    const char* end = std::from_chars(header.data(), header.data() + header.size(), number).ptr;
    header.remove_prefix(static_cast<size_t>(end - header.data()));
    return number;
}

// Binary PGM and PPM. stb_image would leave 16-bit samples in the byte order of the file and hand out uninitialised
// memory for what a short file lacks.
Image decodePnm(const std::string& path, const Bytes& file) {
    std::string_view rest = asText(file);
    Image image = {.channels = rest.starts_with("P5") ? 1 : 3};
    rest.remove_prefix(2);
    image.width = takeNumber(rest);
    image.height = takeNumber(rest);
    const int32_t white = takeNumber(rest);
    constexpr int32_t LargestSide = 1 << 24;
    if (std::min(image.width, image.height) < 1 || std::max(image.width, image.height) > LargestSide ||
        (white != 255 && white != 65535)) {
        throw Failure(path, "its header is not that of a PGM or PPM picture with a white of 255 or 65535");
    }
    image.depth = white == 255 ? Depth::Integer8 : Depth::Integer16;
    if (rest.size() < 1 + sampleBytes(image)) {
        throw Failure(path, "it ends in the middle of the picture");
    }
    rest = rest.substr(1, sampleBytes(image)); // one blank ends the header
    image.samples.assign(rest.begin(), rest.end());
    if (image.depth == Depth::Integer16 && std::endian::native == std::endian::little) {
        for (size_t i = 0; i < image.samples.size(); i += 2) {
            std::swap(image.samples[i], image.samples[i + 1]); // the file is big-endian
        }
    }
    return image;
}

// IEEE 754 binary16 of a sample, rounded to nearest even. Radiance samples are never negative; those beyond the range
// become the largest finite number, since an infinite pixel would spoil every later calculation.
uint16_t halfBits(float sample) {
    constexpr float Largest = 65504.0F;
    constexpr float SmallestNormal = 0x1p-14F;
    if (sample < SmallestNormal) {
        return static_cast<uint16_t>(std::nearbyint(std::ldexp(sample, 24)));
    }
    const auto bits = std::bit_cast<uint32_t>(std::min(sample, Largest));
    constexpr uint32_t ExponentShift = (127 - 15) << 23;
    const uint32_t rounding = 0xFFF + (bits >> 13 & 1);
    return static_cast<uint16_t>((bits - ExponentShift + rounding) >> 13);
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

Image loadImage(const std::string& path) {
    const Bytes file = readFile(path);
    const std::string_view start = asText(file).substr(0, 4);
    if (start.starts_with("#?")) {
        return floatImage(decodeRadiance(path, file));
    }
    if (start.starts_with("P5") || start.starts_with("P6")) {
        return decodePnm(path, file);
    }
    if (start == "\x89PNG") {
        return decodePng(path, file);
    }
    throw Failure(path, "it is not a PNG, binary PGM or PPM, or Radiance HDR picture");
}

Image widened(const Image& image) {
    return converted(image, Depth::Integer16, widenedSample);
}

Image halved(const Image& image) {
    return converted(image, Depth::Float16, halfBits);
}
