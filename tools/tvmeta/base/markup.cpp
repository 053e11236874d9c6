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

std::string attribute(std::string_view name, std::string_view value) {
    return std::string(" ").append(name).append("=\"").append(value).append("\"");
}

std::string element(std::string_view name, std::string_view content, std::string_view attributes) {
    std::string text = "<";
    text.append(name).append(attributes).append(">").append(content);
    return text.append("</").append(name).append(">");
}

std::string urlPath(std::string_view path) {
    constexpr std::string_view HexDigits = "0123456789ABCDEF";
    constexpr std::string_view Plain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";
    std::string url;
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        url += Plain.find(c) != std::string_view::npos ? std::string(1, c)
                                                       : std::string{'%', HexDigits[byte >> 4], HexDigits[byte & 0xF]};
    }
    return url;
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
