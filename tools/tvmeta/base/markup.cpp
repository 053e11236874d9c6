#include "base/markup.h"

#include "base/text.h"

#include <cstddef>
#include <cstdint>

std::string markup(std::string_view text) {
    std::string safe;
    for (const char c : printable(text)) {
        switch (c) {
        case '&':
            safe += "&amp;";
            break;
        case '<':
            safe += "&lt;";
            break;
        case '>':
            safe += "&gt;";
            break;
        case '"':
            safe += "&quot;";
            break;
        case '\'':
            safe += "&#39;";
            break;
        default:
            safe += c;
        }
    }
    return safe;
}

// RFC 4648, section 4.
std::string base64(std::span<const unsigned char> bytes) {
    constexpr std::string_view Digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve(bytes.size() / 3 * 4 + 4);
    while (!bytes.empty()) {
        const size_t count = bytes.size() < 3 ? bytes.size() : 3;
        uint32_t group = 0;
        for (size_t i = 0; i < 3; ++i) {
            group = group << 8 | (i < count ? bytes[i] : 0U);
        }
        for (size_t i = 0; i < 4; ++i) {
            text += i <= count ? Digits[group >> (18 - 6 * i) & 63] : '=';
        }
        bytes = bytes.subspan(count);
    }
    return text;
}

double tickStep(double range, double maxTicks) {
    double step = 1;
    while (range / step > maxTicks) {
        step *= 2;
    }
    return step;
}
