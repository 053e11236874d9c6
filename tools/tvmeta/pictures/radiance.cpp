// Radiance HDR pictures: pixels of three mantissas and one exponent, plain or with run-length coded planes.
// No small maintained library reads them.

#include "base/failure.h"
#include "base/numbers.h"
#include "base/words.h"
#include "pictures/decoders.h"
#include "pictures/picture.h"
#include "system/files.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <span>
#include <string>
#include <utility>

namespace {

using ByteSpan = std::span<const unsigned char>;

// Reads a file sequentially through one window.
class ByteSource {
  public:
    explicit ByteSource(const std::string& name) : path(name), file(openFile(name)), window(WindowSize) {}

    // The next `count` bytes, at most WindowSize; at the end of the file peek returns fewer, take throws Failure. They
    // are valid until the next call.
    ByteSpan peek(size_t count) {
        if (last - first < count) {
            std::memmove(window.data(), window.data() + first, last - first);
            last -= first;
            first = 0;
            last += std::fread(window.data() + last, 1, window.size() - last, file.get());
        }
        return ByteSpan(window).subspan(first, std::min(count, last - first));
    }

    ByteSpan take(size_t count) {
        const ByteSpan bytes = peek(count);
        if (bytes.size() < count) {
            throw Failure(path, "the file ends inside the picture");
        }
        first += count;
        return bytes;
    }

    // The next line, without its line feed.
    std::string line() {
        constexpr size_t MaxLine = 4096;
        const std::string_view text = asText(peek(MaxLine));
        const size_t length = text.find('\n');
        if (length == std::string_view::npos && text.size() == MaxLine) {
            throw Failure(path, "expected lines of less than " + std::to_string(MaxLine) + " bytes in the header");
        }
        std::string line(text.substr(0, length));
        take(line.size() + 1);
        return line;
    }

    static constexpr size_t WindowSize = size_t{1} << 18;

    const std::string& path;

  private:
    File file;
    Bytes window;
    size_t first = 0; // unread bytes of the window
    size_t last = 0;
};

struct RadianceHeader {
    int32_t width = 0;
    int32_t height = 0;
    bool isBottomUp = false;
    std::array<double, 3> correction = {1, 1, 1}; // the factors by which the colours were multiplied
    std::optional<ColourSpace> colours = {};
};

// Maximum size of a line in a message.
std::string shownLine(const std::string& line) {
    constexpr size_t MaxShown = 40;
    return line.empty() ? "none" : "\"" + line.substr(0, MaxShown) + "\"";
}

// The numbers after the name of a line such as "EXPOSURE= 2.5"; none if there is anything else.
std::vector<double> numbersOf(std::string_view line) {
    std::vector<double> numbers;
    line.remove_prefix(line.find('=') + 1);
    for (;;) {
        line.remove_prefix(std::min(line.find_first_not_of(" \t\r"), line.size()));
        const std::optional<double> number = takeNumber(line);
        if (!number) {
            return line.empty() ? numbers : std::vector<double>();
        }
        numbers.push_back(*number);
    }
}

// EXPOSURE has one factor for all colours, COLORCORR one for each. Several lines multiply.
void applyFactors(const std::string& path, const std::string& line, size_t count, RadianceHeader& header) {
    const std::vector<double> factors = numbersOf(line);
    const auto isFactor = [](double factor) { return std::isfinite(factor) && factor > 0; };
    if (factors.size() != count || !std::ranges::all_of(factors, isFactor)) {
        throw Failure(path, "expected " + counted(count, "number") + " above 0, found " + shownLine(line));
    }
    for (size_t i = 0; i < header.correction.size(); ++i) {
        header.correction[i] *= factors[i % count];
    }
    if (!std::ranges::all_of(header.correction, isFactor)) {
        throw Failure(path, "the product of the EXPOSURE and COLORCORR lines is out of range");
    }
}

void applyPrimaries(const std::string& line, RadianceHeader& header) {
    header.colours = {.name = "primaries", .primaries = Chromaticities{}};
    if (const std::vector<double> xy = numbersOf(line); xy.size() == 8) {
        header.colours->primaries = {{xy[0], xy[1]}, {xy[2], xy[3]}, {xy[4], xy[5]}, {xy[6], xy[7]}};
    }
}

void applyLine(const std::string& path, const std::string& line, RadianceHeader& header) {
    constexpr std::string_view Format = "FORMAT=32-bit_rle_rgbe";
    if (line.starts_with("FORMAT=") && !line.starts_with(Format)) {
        throw Failure(path, "expected the line \"" + std::string(Format) + "\", found " + shownLine(line));
    }
    if (line.starts_with("EXPOSURE=")) {
        applyFactors(path, line, 1, header);
    } else if (line.starts_with("COLORCORR=")) {
        applyFactors(path, line, 3, header);
    } else if (line.starts_with("PRIMARIES=")) {
        applyPrimaries(line, header);
    }
}

void readSize(const std::string& path, const std::string& line, RadianceHeader& header) {
    char direction = 0;
    if (std::sscanf(line.c_str(), "%cY %9d +X %9d", &direction, &header.height, &header.width) != 3 ||
        (direction != '-' && direction != '+')) {
        throw Failure(path, "expected a size such as \"-Y 216 +X 324\", found " + shownLine(line));
    }
    header.isBottomUp = direction == '+';
}

// Throws Failure if the header is damaged or not supported.
RadianceHeader readRadianceHeader(ByteSource& source) {
    RadianceHeader header;
    for (std::string line = source.line(); !line.empty(); line = source.line()) {
        applyLine(source.path, line, header);
    }
    readSize(source.path, source.line(), header);
    return header;
}

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
