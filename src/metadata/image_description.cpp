// Exposure and colour values in the text of an ImageDescription tag: fields separated by a comma and a blank, of which
// the eighth is the exposure ("1/250s") and the ninth to eleventh hold colour values ("R30", "G30", "B30").
#include "metadata/exif_info.h"
#include "metadata/payload.h"
#include "support/text_search.h"
#include "support/zeroed_buffer.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string_view>

namespace tvmeta {

namespace {

constexpr std::size_t LongestToken = 6;
constexpr int ExposureField = 8;
constexpr int FirstColorField = 9;
constexpr int LastColorField = 11;
constexpr std::string_view Separator = ", ";
constexpr std::int32_t NotSeen = -1;

// What the text has told so far.
struct Description {
    bool separated = false;
    bool stopped = false; // by 'B', the last colour, or by a token that is too long to be one
    std::int64_t numerator = 0;
    std::int64_t denominator = 0;
    std::int32_t red = NotSeen;
    std::int32_t green = NotSeen;
    std::int32_t blue = NotSeen;
    std::int32_t lastColor = 0;
};

// The token at the start of the text: up to the first of the end characters, or the end of the text. One character
// beyond the longest token tells that it is too long.
std::string_view takeToken(std::string_view text, std::string_view ends) noexcept {
    text = text.substr(0, LongestToken + 1);
    return text.substr(0, text.find_first_of(ends));
}

// The value of a token, whose characters need not be digits: each counts by its distance from '0'. Only what follows
// the last point counts.
std::int32_t tokenValue(std::string_view token) noexcept {
    std::int32_t value = 0;
    std::int32_t weight = 1;
    for (std::size_t i = token.size(); i > 0 && token[i - 1] != '.'; --i) {
        value += (static_cast<unsigned char>(token[i - 1]) - '0') * weight;
        weight *= 10;
    }
    return value;
}

// A numerator token, and the denominator token behind it if there is one.
void parseFraction(std::string_view text, Description& description) noexcept {
    const std::string_view numerator = takeToken(text, " /s");
    if (numerator.size() > LongestToken) {
        description.stopped = true;
        return;
    }
    description.numerator = tokenValue(numerator);
    text.remove_prefix(numerator.size());
    if (!text.starts_with('/')) {
        return;
    }
    const std::string_view denominator = takeToken(textFrom(text, 1), " s");
    if (denominator.size() > LongestToken) {
        description.stopped = true;
        return;
    }
    description.denominator += tokenValue(denominator);
}

// The field ends at the next separator; its tokens may reach over it. As long as the numerator is 0, every character
// that is not a blank begins another fraction.
void parseExposure(std::string_view text, Description& description) noexcept {
    for (; !text.empty() && !text.starts_with(Separator) && !description.stopped; text.remove_prefix(1)) {
        if (text.front() != ' ' && description.numerator == 0) {
            parseFraction(text, description);
        }
    }
}

std::int32_t* colorNamed(char letter, Description& description) noexcept {
    switch (letter) {
    case 'R':
        return &description.red;
    case 'G':
        return &description.green;
    case 'B':
        return &description.blue;
    default:
        return nullptr;
    }
}

void parseColors(std::string_view text, Description& description) noexcept {
    for (; !text.empty() && !text.starts_with(Separator) && !description.stopped; text.remove_prefix(1)) {
        std::int32_t* const color = colorNamed(text.front(), description);
        if (color == nullptr) {
            continue;
        }
        const std::string_view token = takeToken(textFrom(text, 1), " ,.");
        const bool tooLong = token.size() > LongestToken;
        *color = tooLong ? 0 : tokenValue(token);
        description.lastColor = *color;
        description.stopped = tooLong || text.front() == 'B';
    }
}

Description parseFields(std::string_view text) noexcept {
    Description description;
    int field = 1;
    for (std::size_t at = text.find(Separator); at != std::string_view::npos && field < LastColorField;
         at = text.find(Separator, at + 1)) {
        description.separated = true;
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

// 200 doubled for every 30 of the middle between the darkest and the brightest colour, in whole steps of 200.
std::int32_t isoSpeedFor(const Description& description) noexcept {
    constexpr std::int32_t Step = 200;
    constexpr std::int32_t Most = std::numeric_limits<std::int32_t>::max();
    const auto [low, high] = std::minmax({description.red, description.green, description.blue});
    const std::int64_t middle = (std::int64_t{low} + high) / 2;
    const double steps = std::exp2(static_cast<double>(middle) / 30.0);
    constexpr double TooMany = double{Most / Step} + 1.0;
    return steps < TooMany ? static_cast<std::int32_t>(steps) * Step : Most;
}

constexpr bool isPlausible(std::int64_t value) noexcept {
    return value >= 1 && value <= 99'998;
}

void store(const Description& description, ExifInfo& info) noexcept {
    const bool colors = description.red != NotSeen && description.green != NotSeen && description.blue != NotSeen;
    if (!description.separated || !colors) {
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

std::int32_t readImageDescription(StreamReader& reader, std::int32_t size, WorkBudget& budget,
                                  ExifInfo& info) noexcept {
    constexpr std::int32_t Unreadable = -1;
    if (size <= 0 || budget.payloadBytes <= 0 || fillable(reader, size) < size) {
        return Unreadable;
    }
    budget.payloadBytes -= size;
    ZeroedBuffer buffer(static_cast<std::size_t>(size));
    if (!buffer || reader.read(buffer.bytes()) < buffer.size()) {
        return Unreadable;
    }
    // TIFF counts the terminator of a text: it must not become a digit.
    const std::string_view bytes(buffer.text(), buffer.size());
    const Description description = parseFields(bytes.substr(0, bytes.find('\0')));
    store(description, info);
    return description.lastColor;
}

} // namespace tvmeta

std::int32_t parse_image_description(FILE* stream, std::int32_t size, ExifInfo* info) noexcept {
    if (stream == nullptr || info == nullptr) {
        return -1;
    }
    tvmeta::LentStreamReader reader(stream);
    tvmeta::WorkBudget budget;
    return tvmeta::readImageDescription(reader, size, budget, *info);
}
