#include "photographs/capture_time.h"

#include <charconv>

namespace {

// The number at `start` of the text; empty if it contains other characters.
std::optional<int> digitsAt(std::string_view text, size_t start, size_t count) {
    int number = 0;
    for (const char c : text.substr(start, count)) {
        if (c < '0' || c > '9') {
            return std::nullopt;
        }
        number = 10 * number + (c - '0');
    }
    return number;
}

} // namespace

std::optional<CivilTime> parseCaptureTime(std::string_view text) {
    constexpr std::string_view Form = "YYYY:MM:DD HH:MM:SS";
    if (text.size() != Form.size()) {
        return std::nullopt;
    }
    for (const size_t separator : {4U, 7U, 10U, 13U, 16U}) {
        if (text[separator] != Form[separator]) {
            return std::nullopt;
        }
    }
    const auto year = digitsAt(text, 0, 4), month = digitsAt(text, 5, 2), day = digitsAt(text, 8, 2);
    const auto hour = digitsAt(text, 11, 2), minute = digitsAt(text, 14, 2), second = digitsAt(text, 17, 2);
    if (!year || !month || !day || !hour || !minute || !second) {
        return std::nullopt;
    }
    const std::chrono::year_month_day date(std::chrono::year(*year), std::chrono::month(static_cast<unsigned>(*month)),
                                           std::chrono::day(static_cast<unsigned>(*day)));
    constexpr int LeapSecond = 60;
    if (*year == 0 || !date.ok() || *hour > 23 || *minute > 59 || *second > LeapSecond) {
        return std::nullopt;
    }
    return std::chrono::local_days(date) + std::chrono::hours(*hour) + std::chrono::minutes(*minute) +
           std::chrono::seconds(*second);
}
