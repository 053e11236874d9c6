// Exposure and colour values in the text of an ImageDescription tag: fields separated by a comma and a space. Field 8
// is the exposure ("1/250s"), fields 9 to 11 are colour values ("R30", "G30", "B30").
#include "metadata/directory_parsers.h"
#include "support/text_search.h"
#include "support/zeroed_buffer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <string_view>

namespace tvmeta {

namespace {

constexpr std::size_t MaxToken = 6;
constexpr int ExposureField = 8;
constexpr int FirstColorField = 9;
constexpr int LastColorField = 11;
constexpr std::string_view Separator = ", ";
constexpr std::string_view ColorLetters = "RGB";
constexpr std::int32_t NotSeen = -1;

// The values found so far.
struct Description {
    bool stopped = false; // by 'B', which is the last colour, or by a token that is too long
    std::int64_t numerator = 0;
    std::int64_t denominator = 0;
    std::array<std::int32_t, ColorLetters.size()> colors = {NotSeen, NotSeen, NotSeen};
    std::int32_t lastColor = 0;
};

// The token at the start of the text, up to one of the end characters. A token of MaxToken + 1 characters is too long.
std::string_view takeToken(std::string_view text, std::string_view ends) {
    text = text.substr(0, MaxToken + 1);
    return text.substr(0, text.find_first_of(ends));
}

// The value of a token. Characters other than digits count by their distance from '0' too. Only characters after the
// last point count.
std::int32_t tokenValue(std::string_view token) {
    std::int32_t value = 0;
    std::int32_t weight = 1;
    for (std::size_t i = token.size(); i > 0 && token[i - 1] != '.'; --i) {
        value += (static_cast<unsigned char>(token[i - 1]) - '0') * weight;
        weight *= 10;
    }
    return value;
}

// A numerator token, and a denominator token if "/" follows.
void parseFraction(std::string_view text, Description& description) {
    const std::string_view numerator = takeToken(text, " /s");
    description.stopped = numerator.size() > MaxToken;
    if (description.stopped) {
        return;
    }
    description.numerator = tokenValue(numerator);
    text.remove_prefix(numerator.size());
    if (text.starts_with('/')) {
        const std::string_view denominator = takeToken(textFrom(text, 1), " s");
        description.stopped = denominator.size() > MaxToken;
        description.denominator += description.stopped ? 0 : tokenValue(denominator);
    }
}

// The field ends at the next separator, but its tokens may cross it. While the numerator is 0, each character other
// than a space starts another fraction.
void parseExposure(std::string_view text, Description& description) {
    for (; !text.empty() && !text.starts_with(Separator) && !description.stopped; text.remove_prefix(1)) {
        if (text.front() != ' ' && description.numerator == 0) {
            parseFraction(text, description);
        }
    }
}

void parseColors(std::string_view text, Description& description) {
    for (; !text.empty() && !text.starts_with(Separator) && !description.stopped; text.remove_prefix(1)) {
        const std::size_t color = ColorLetters.find(text.front());
        if (color == NotFound) {
            continue;
        }
        const std::string_view token = takeToken(textFrom(text, 1), " ,.");
        const bool tooLong = token.size() > MaxToken;
        description.lastColor = tooLong ? 0 : tokenValue(token);
        description.colors[color] = description.lastColor;
        description.stopped = tooLong || text.front() == 'B';
    }
}

Description parseFields(std::string_view text) {
    Description description;
    int field = 1;
    for (std::size_t at = text.find(Separator); at != NotFound && field < LastColorField;
         at = text.find(Separator, at + 1)) {
        ++field;
        const std::string_view rest = textFrom(text, at + Separator.size());
        if (field == ExposureField) {
            parseExposure(rest, description);
        } else if (field >= FirstColorField) {
            parseColors(rest, description);
        }
    }
    return description;
}

// 200, doubled for each 30 of the mean of the smallest and the largest colour value, in whole steps of 200.
std::int32_t isoSpeedFor(const Description& description) {
    constexpr std::int32_t Step = 200;
    const auto [low, high] = std::ranges::minmax(description.colors);
    const std::int64_t middle = (std::int64_t{low} + high) / 2;
    const double steps = std::exp2(static_cast<double>(middle) / 30.0);
    constexpr double Limit = double{INT32_MAX / Step} + 1.0;
    return steps < Limit ? static_cast<std::int32_t>(steps) * Step : INT32_MAX;
}

constexpr bool isPlausible(std::int64_t value) {
    return value >= 1 && value <= 99'998;
}

void copyValues(const Description& description, ExifInfo& info) {
    if (std::ranges::count(description.colors, NotSeen) > 0) {
        return;
    }
    if (description.denominator > 0) {
        info.exposureTime = static_cast<float>(description.numerator) / static_cast<float>(description.denominator);
    }
    info.isoSpeed = isoSpeedFor(description);
    if (isPlausible(description.numerator) && description.denominator >= 1 && isPlausible(description.lastColor)) {
        info.exposureSource = 2;
    }
}

} // namespace

std::int32_t readImageDescription(StreamReader& reader, std::int32_t size, WorkBudget& budget, ExifInfo& info) {
    if (size <= 0 || !budget.hasPayload() || clampedSize(reader, size) < size) {
        return PARSE_DESCRIPTION_UNREADABLE;
    }
    budget.takePayload(size);
    ZeroedBuffer buffer(static_cast<std::size_t>(size));
    if (!buffer || reader.read(buffer.bytes()) < buffer.size()) {
        return PARSE_DESCRIPTION_UNREADABLE;
    }
    return parseDescription({buffer.text(), buffer.size()}, info);
}

// The count of a TIFF text includes its terminator, which must not count as a digit.
std::int32_t parseDescription(std::string_view text, ExifInfo& info) {
    const Description description = parseFields(text.substr(0, text.find('\0')));
    copyValues(description, info);
    return description.lastColor;
}

} // namespace tvmeta

using namespace tvmeta;

std::int32_t parse_image_description(FILE* stream, std::int32_t size, ExifInfo* info) noexcept {
    return parseStream(stream, info, PARSE_DESCRIPTION_UNREADABLE, [&](StreamReader& reader, WorkBudget& budget) {
        return readImageDescription(reader, size, budget, *info);
    });
}
