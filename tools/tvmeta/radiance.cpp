// Radiance HDR pictures: RGBE pixels, plain or with run-length coded planes. Read here and not by stb_image, which
// hands out floats where the statistics want shared exponents, and never returns from a file that is cut short.

#include "failure.h"
#include "image.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace {

using ByteSpan = std::span<const unsigned char>;

// The plane of HdrPlanes for each byte of a pixel: red, green, blue, exponent.
constexpr std::array<size_t, 4> PlaneOf = {2, 1, 0, 3};

// What is left of a file; wanting more throws Failure.
struct Source {
    const std::string& path;
    ByteSpan unread;

    ByteSpan take(size_t count) {
        if (count > unread.size()) {
            throw Failure(path, "it ends in the middle of the picture");
        }
        const ByteSpan taken = unread.first(count);
        unread = unread.subspan(count);
        return taken;
    }

    std::string_view line() {
        const std::string_view text = asText(unread);
        const size_t length = std::min(text.find('\n'), text.size());
        take(length + 1);
        return text.substr(0, length);
    }
};

HdrPlanes readHeader(Source& source) {
    if (!asText(source.unread).starts_with("#?")) {
        throw Failure(source.path, "it is not a Radiance HDR picture");
    }
    bool isRgbe = false;
    for (std::string_view line = source.line(); !line.empty(); line = source.line()) {
        isRgbe = isRgbe || line == "FORMAT=32-bit_rle_rgbe";
    }
    HdrPlanes picture;
    const std::string size(source.line());
    if (!isRgbe || std::sscanf(size.c_str(), "-Y %9d +X %9d", &picture.height, &picture.width) != 2) {
        throw Failure(source.path, "it does not hold RGBE pixels in rows from the top left corner");
    }
    constexpr int64_t MostPixels = 1 << 28;
    if (picture.width < 1 || picture.height < 1 || int64_t{picture.width} * picture.height > MostPixels) {
        throw Failure(source.path, "its size is out of range");
    }
    return picture;
}

// The run-length form begins each row with 2, 2 and the width; it exists for widths of 8 to 32767.
bool isRunLengthCoded(ByteSpan bytes, size_t width) {
    return width >= 8 && width < 0x8000 && bytes.size() >= 4 && bytes[0] == 2 && bytes[1] == 2 &&
           (size_t{bytes[2]} << 8 | bytes[3]) == width;
}

// One plane of a row: a code above 128 repeats one byte code - 128 times, any other precedes as many bytes.
void readPlane(Source& source, std::span<unsigned char> plane) {
    while (!plane.empty()) {
        const unsigned char code = source.take(1).front();
        const size_t count = code > 128 ? code - 128U : code;
        if (count == 0 || count > plane.size()) {
            throw Failure(source.path, "its pixels are damaged");
        }
        if (code > 128) {
            std::ranges::fill(plane.first(count), source.take(1).front());
        } else {
            std::ranges::copy(source.take(count), plane.begin());
        }
        plane = plane.subspan(count);
    }
}

void readRow(Source& source, std::span<unsigned char> row) {
    const size_t width = row.size() / PlaneOf.size();
    if (isRunLengthCoded(source.unread, width)) {
        source.take(4);
        for (const size_t plane : PlaneOf) {
            readPlane(source, row.subspan(plane * width, width));
        }
        return;
    }
    for (size_t x = 0; x < width; ++x) {
        const ByteSpan pixel = source.take(PlaneOf.size());
        // Three ones are not the colour of a pixel but the repeat mark of an older run-length form.
        if (pixel[0] == 1 && pixel[1] == 1 && pixel[2] == 1) {
            throw Failure(source.path, "its pixels are run-length coded in the old form");
        }
        for (size_t i = 0; i < PlaneOf.size(); ++i) {
            row[PlaneOf[i] * width + x] = pixel[i];
        }
    }
}

// Radiance counts mantissas in 256ths, HdrPlanes in whole numbers.
unsigned char wholeNumberExponent(unsigned char exponent) {
    return exponent > 8 ? static_cast<unsigned char>(exponent - 8) : 0;
}

} // namespace

HdrPlanes decodeRadiance(const std::string& path, const Bytes& file) {
    Source source = {path, file};
    HdrPlanes picture = readHeader(source);
    const auto width = static_cast<size_t>(picture.width);
    const size_t rowBytes = PlaneOf.size() * width;
    picture.bytes.resize(rowBytes * static_cast<size_t>(picture.height));
    for (size_t start = 0; start < picture.bytes.size(); start += rowBytes) {
        const auto row = std::span(picture.bytes).subspan(start, rowBytes);
        readRow(source, row);
        std::ranges::transform(row.last(width), row.last(width).begin(), wholeNumberExponent);
    }
    return picture;
}

Image floatImage(const HdrPlanes& planes) {
    const auto width = static_cast<size_t>(planes.width);
    std::vector<float> samples;
    for (size_t row = 0; row < planes.bytes.size(); row += PlaneOf.size() * width) {
        for (size_t x = row; x < row + width; ++x) {
            const int exponent = planes.bytes[x + 3 * width];
            for (const size_t plane : {2U, 1U, 0U}) {
                const int mantissa = exponent == 0 ? 0 : planes.bytes[x + plane * width];
                samples.push_back(std::ldexp(static_cast<float>(mantissa), exponent - 128));
            }
        }
    }
    Image image = {planes.width, planes.height, 3, Depth::Float32, Bytes(samples.size() * sizeof(float))};
    std::memcpy(image.samples.data(), samples.data(), image.samples.size());
    return image;
}
