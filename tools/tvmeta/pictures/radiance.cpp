// Radiance HDR pictures: pixels of three mantissas and one exponent, plain or with run-length coded planes.
// No small maintained library reads them.

#include "base/failure.h"
#include "pictures/decoders.h"
#include "pictures/radiance_header.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <utility>

namespace {

constexpr size_t Colours = 3;
constexpr size_t Planes = 4; // red, green, blue, exponent

// The run-length form begins each row with 2, 2 and the width; it exists for widths of 8 to 32767.
bool isRunLengthCoded(ByteSpan bytes, size_t width) {
    return width >= 8 && width < 0x8000 && bytes.size() >= 4 && bytes[0] == 2 && bytes[1] == 2 &&
           bigEndian(bytes.subspan(2, 2)) == width;
}

// One plane of a row: a code above 128 repeats the next byte code - 128 times, any other copies `code` bytes.
void readPlane(ByteSource& source, std::span<unsigned char> plane) {
    while (!plane.empty()) {
        const unsigned char code = source.take(1).front();
        const size_t count = code > 128 ? code - 128U : code;
        if (count == 0 || count > plane.size()) {
            throw Failure(source.path, "damaged pixels: expected a run of 1 to " + std::to_string(plane.size()) +
                                           ", found " + std::to_string(count));
        }
        if (code > 128) {
            std::memset(plane.data(), source.take(1).front(), count);
        } else {
            std::memcpy(plane.data(), source.take(count).data(), count);
        }
        plane = plane.subspan(count);
    }
}

// A row as four planes. Mantissas are counted in 256ths.
void readRow(ByteSource& source, std::span<unsigned char> row) {
    const size_t width = row.size() / Planes;
    if (isRunLengthCoded(source.peek(4), width)) {
        source.take(4);
        for (size_t plane = 0; plane < Planes; ++plane) {
            readPlane(source, row.subspan(plane * width, width));
        }
        return;
    }
    for (size_t x = 0; x < width; ++x) {
        const ByteSpan pixel = source.take(Planes);
        // Three ones are not the colour of a pixel but the repeat mark of an older run-length form.
        if (pixel[0] == 1 && pixel[1] == 1 && pixel[2] == 1) {
            throw Failure(source.path, "expected plain or run-length coded planes, found the old run-length form");
        }
        for (size_t i = 0; i < Planes; ++i) {
            row[i * width + x] = pixel[i];
        }
    }
}

// The value of one mantissa unit for each exponent, without the colour correction.
using Scale = std::array<float, 256>;

Scale scaleOf(double correction) {
    Scale scale = {}; // exponent 0 is black
    for (size_t exponent = 1; exponent < scale.size(); ++exponent) {
        scale[exponent] = static_cast<float>(std::ldexp(1 / correction, static_cast<int>(exponent) - 136));
    }
    return scale;
}

void readPixels(ByteSource& source, const RadianceHeader& header, Picture& picture) {
    picture.samples.resize(sampleBytes(picture));
    const auto width = static_cast<size_t>(picture.width);
    const auto height = static_cast<size_t>(picture.height);
    std::array<Scale, Colours> scales;
    std::ranges::transform(header.correction, scales.begin(), scaleOf);
    Bytes planes(Planes * width);
    std::vector<float> pixels(Colours * width);
    for (size_t row = 0; row < height; ++row) {
        readRow(source, planes);
        const unsigned char* const exponents = planes.data() + Colours * width;
        for (size_t colour = 0; colour < Colours; ++colour) {
            const unsigned char* const mantissas = planes.data() + colour * width;
            for (size_t x = 0; x < width; ++x) {
                pixels[Colours * x + colour] = static_cast<float>(mantissas[x]) * scales[colour][exponents[x]];
            }
        }
        const size_t place = header.isBottomUp ? height - 1 - row : row;
        std::memcpy(picture.samples.data() + place * rowBytes(picture), pixels.data(), rowBytes(picture));
    }
}

// Throws Failure if the size is too large for a result or for the file.
Picture withoutSamples(const std::string& path, const RadianceHeader& header) {
    constexpr uint64_t MaxCompression = 64; // two bytes for a run of 127
    Picture picture = pictureWithoutSamples(path, header.width, header.height, Colours, Depth::Float32);
    const auto pixels = static_cast<uint64_t>(picture.width) * static_cast<uint64_t>(picture.height);
    requireFileBytes(path, picture, pixels * Planes / MaxCompression);
    return picture;
}

} // namespace

Picture readRadiance(const std::string& path, Request request) {
    ByteSource source(path);
    RadianceHeader header = readRadianceHeader(source);
    Picture picture = withoutSamples(path, header);
    if (request.pixels) {
        readPixels(source, header, picture);
    }
    picture.colours = std::move(header.colours);
    return picture;
}
