// Radiance HDR pictures: RGBE pixels, plain or with run-length coded planes. Read here and not by stb_image, which
// hands out floats where the statistics want shared exponents, and never returns from a file that is cut short.

#include "output/failure.h"
#include "pictures/image.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>

namespace {

using ByteSpan = std::span<const unsigned char>;

// The plane of HdrPlanes for each byte of a pixel: red, green, blue, exponent.
constexpr std::array<size_t, 4> PlaneOf = {2, 1, 0, 3};

// What is left of a file; wanting more throws Failure.
struct Source {
    const std::string& path;
    size_t size;
    ByteSpan unread;

    ByteSpan take(size_t count) {
        if (count > unread.size()) {
            throw Failure(path, "it ends in the middle of the picture, at byte " + std::to_string(size));
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

// A line of the header for a message, as much of it as a line there should have.
std::string shownLine(std::string_view line) {
    constexpr size_t Most = 40;
    return line.empty() ? "none" : "\"" + std::string(line.substr(0, Most)) + "\"";
}

HdrPlanes readHeader(Source& source) {
    constexpr std::string_view Format = "FORMAT=32-bit_rle_rgbe";
    std::string_view format;
    for (std::string_view line = source.line(); !line.empty(); line = source.line()) {
        format = format != Format && line.starts_with("FORMAT=") ? line : format;
    }
    if (format != Format) {
        throw Failure(source.path, "expected the line \"" + std::string(Format) + "\", found " + shownLine(format));
    }
    HdrPlanes picture;
    const std::string size(source.line());
    if (std::sscanf(size.c_str(), "-Y %9d +X %9d", &picture.height, &picture.width) != 2) {
        throw Failure(source.path, "expected a size such as \"-Y 216 +X 324\", found " + shownLine(size));
    }
    constexpr int64_t MostPixels = 1 << 28;
    if (picture.width < 1 || picture.height < 1 || int64_t{picture.width} * picture.height > MostPixels) {
        throw Failure(source.path, "expected 1 to " + std::to_string(MostPixels) + " pixels, found " + shownLine(size));
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
            throw Failure(source.path, "its pixels are damaged: expected a run of 1 to " +
                                           std::to_string(plane.size()) + ", found " + std::to_string(count));
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
            throw Failure(source.path,
                          "expected plain or run-length coded planes of pixels, found the old form of runs");
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
    Source source = {path, file.size(), file};
    HdrPlanes picture = readHeader(source);
    const auto width = static_cast<size_t>(picture.width);
    const size_t rowBytes = PlaneOf.size() * width;
    constexpr size_t BestCompression = 64; // two bytes for a run of 127
    if (rowBytes * static_cast<size_t>(picture.height) / BestCompression > file.size()) {
        throw Failure(path, "expected " + std::to_string(picture.width) + " x " + std::to_string(picture.height) +
                                " pixels, found too few bytes for them: " + std::to_string(file.size()));
    }
    picture.bytes.resize(rowBytes * static_cast<size_t>(picture.height));
    for (size_t start = 0; start < picture.bytes.size(); start += rowBytes) {
        const auto row = std::span(picture.bytes).subspan(start, rowBytes);
        readRow(source, row);
        std::ranges::transform(row.last(width), row.last(width).begin(), wholeNumberExponent);
    }
    return picture;
}
