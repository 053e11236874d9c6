// Capture times (EXIF 2.3, DateTimeOriginal) as seconds.
#include "support/text_numbers.h"
#include "support/text_search.h"
#include "tvmeta.h"

#include <array>
#include <climits>
#include <cstdint>
#include <ctime>
#include <optional>
#include <string_view>
#include <utility>

using namespace tvmeta;

namespace {

using DateTime = std::array<int, 6>; // year, month, day, hour, minute, second

// Scans "%d:%d:%d %d:%d:%d".
std::optional<DateTime> scanDateTime(std::string_view text) {
    constexpr std::string_view Separators = ":: ::";
    DateTime fields{};
    for (std::size_t i = 0; i < fields.size(); ++i) {
        // The space in the format matches any white space or none, which scanning the next number skips.
        if (i > 0 && Separators[i - 1] != ' ' && !takeOneOf(text, Separators.substr(i - 1, 1))) {
            return std::nullopt;
        }
        const std::optional<std::int64_t> number = scanInteger(text);
        if (!number || !std::in_range<int>(*number)) {
            return std::nullopt;
        }
        fields[i] = static_cast<int>(*number);
    }
    return fields;
}

} // namespace

std::int32_t time_from_datetime(const char* text, std::time_t reference, float* seconds) noexcept {
    if (text == nullptr || seconds == nullptr) {
        return DATETIME_INVALID;
    }
    const std::optional<DateTime> fields = scanDateTime(text);
    if (!fields) {
        return DATETIME_INVALID;
    }
    const auto [year, month, day, hour, minute, second] = *fields;
    constexpr int FirstYear = 1900;
    if (year < INT_MIN + FirstYear || month == INT_MIN) {
        return DATETIME_INVALID;
    }
    std::tm local{};
    local.tm_year = year - FirstYear;
    local.tm_mon = month - 1;
    local.tm_mday = day;
    local.tm_hour = hour;
    local.tm_min = minute;
    local.tm_sec = second;
    local.tm_isdst = -1; // unknown; mktime decides
    std::time_t time = std::mktime(&local);
    if (time > 0) {
        // Again, with the normalised fields of the first conversion and its daylight saving time.
        time = std::mktime(&local);
    }
    *seconds = static_cast<float>(std::difftime(reference, time));
    return DATETIME_OK;
}
