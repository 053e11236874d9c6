// Capture times (EXIF 2.3, DateTimeOriginal) as seconds.
#include "support/text_numbers.h"
#include "tvmeta.h"

#include <array>
#include <cstdint>
#include <ctime>
#include <limits>
#include <optional>
#include <string_view>

namespace {

using DateTime = std::array<int, 6>; // year, month, day, hour, minute, second

// Scans "%d:%d:%d %d:%d:%d".
bool scanDateTime(std::string_view text, DateTime& fields) noexcept {
    constexpr std::string_view Separators = ":: ::";
    for (std::size_t i = 0; i < fields.size(); ++i) {
        // The blank of the format stands for any white space, none included, which the next number skips anyway.
        if (i > 0 && Separators[i - 1] != ' ') {
            if (!text.starts_with(Separators[i - 1])) {
                return false;
            }
            text.remove_prefix(1);
        }
        const std::optional<std::int64_t> number = tvmeta::scanInteger(text);
        if (!number || *number < std::numeric_limits<int>::min() || *number > std::numeric_limits<int>::max()) {
            return false;
        }
        fields[i] = static_cast<int>(*number);
    }
    return true;
}

} // namespace

std::int32_t time_from_datetime(const char* text, std::time_t reference, float* seconds) noexcept {
    constexpr std::int32_t Done = 1;
    constexpr std::int32_t NoDate = -1;
    DateTime fields{};
    if (text == nullptr || seconds == nullptr || !scanDateTime(text, fields)) {
        return NoDate;
    }
    const auto [year, month, day, hour, minute, second] = fields;
    constexpr int FirstYear = 1900;
    if (year < std::numeric_limits<int>::min() + FirstYear || month == std::numeric_limits<int>::min()) {
        return NoDate;
    }
    std::tm local{};
    local.tm_year = year - FirstYear;
    local.tm_mon = month - 1;
    local.tm_mday = day;
    local.tm_hour = hour;
    local.tm_min = minute;
    local.tm_sec = second;
    local.tm_isdst = -1; // unknown: the conversion decides
    std::time_t time = std::mktime(&local);
    if (time > 0) {
        // Once more with the fields that the first conversion normalised, daylight saving time included.
        time = std::mktime(&local);
    }
    *seconds = static_cast<float>(std::difftime(reference, time));
    return Done;
}
