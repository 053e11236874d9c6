// Binary PGM and PPM pictures.

#include "output/failure.h"
#include "pictures/image.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <string_view>
#include <utility>

namespace {

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

std::string found(int32_t number) {
    return number == 0 ? "none" : std::to_string(number);
}

void requireSize(const std::string& path, const Image& image) {
    constexpr int32_t LargestSide = 1 << 24;
    for (const int32_t side : {image.width, image.height}) {
        if (side < 1 || side > LargestSide) {
            throw Failure(path, "expected a width and height of 1 to " + std::to_string(LargestSide) + ", found " +
                                    found(side));
        }
    }
}

} // namespace

// stb_image would leave 16-bit samples in the byte order of the file and hand out uninitialised
// memory for what a short file lacks.
Image decodePnm(const std::string& path, const Bytes& file) {
    std::string_view rest = asText(file);
    Image image = {.channels = rest.starts_with("P5") ? 1 : 3};
    rest.remove_prefix(2);
    image.width = takeNumber(rest);
    image.height = takeNumber(rest);
    const int32_t white = takeNumber(rest);
    requireSize(path, image);
    if (white != 255 && white != 65535) {
        throw Failure(path, "expected a white of 255 or 65535, found " + found(white));
    }
    image.depth = white == 255 ? Depth::Integer8 : Depth::Integer16;
    if (rest.size() < 1 + sampleBytes(image)) {
        throw Failure(path, "expected " + std::to_string(sampleBytes(image)) + " bytes of pixels, found " +
                                std::to_string(rest.empty() ? 0 : rest.size() - 1));
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
