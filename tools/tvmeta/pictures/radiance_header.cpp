#include "pictures/radiance_header.h"

#include "base/failure.h"
#include "base/numbers.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace {

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
        throw Failure(path, "expected " + std::to_string(count) + " numbers above 0, found " + shownLine(line));
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

} // namespace

ByteSpan ByteSource::peek(size_t count) {
    if (last - first < count) {
        std::memmove(window.data(), window.data() + first, last - first);
        last -= first;
        first = 0;
        last += std::fread(window.data() + last, 1, window.size() - last, file.get());
    }
    return ByteSpan(window).subspan(first, std::min(count, last - first));
}

ByteSpan ByteSource::take(size_t count) {
    const ByteSpan bytes = peek(count);
    if (bytes.size() < count) {
        throw Failure(path, "the file ends inside the picture");
    }
    first += count;
    return bytes;
}

std::string ByteSource::line() {
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

RadianceHeader readRadianceHeader(ByteSource& source) {
    RadianceHeader header;
    for (std::string line = source.line(); !line.empty(); line = source.line()) {
        applyLine(source.path, line, header);
    }
    readSize(source.path, source.line(), header);
    return header;
}
