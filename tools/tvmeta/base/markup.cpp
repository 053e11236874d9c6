#include "base/markup.h"

#include "base/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <utility>

std::string markup(std::string_view text) {
    constexpr std::pair<char, const char*> References[] = {
        {'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}, {'"', "&quot;"}, {'\'', "&#39;"}};
    std::string safe;
    for (const char c : printable(text)) {
        const auto* const known = std::ranges::find(References, c, &std::pair<char, const char*>::first);
        safe += known == std::end(References) ? std::string(1, c) : known->second;
    }
    return safe;
}

std::string attribute(std::string_view name, std::string_view value) {
    return fmt::format(" {}=\"{}\"", name, value);
}

std::string element(std::string_view name, std::string_view content, std::string_view attributes) {
    return fmt::format("<{0}{1}>{2}</{0}>", name, attributes, content);
}

std::string urlPath(std::string_view path) {
    constexpr std::string_view Plain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";
    std::string url;
    for (const char c : path) {
        const bool isPlain = Plain.find(c) != std::string_view::npos;
        url += isPlain ? std::string(1, c) : fmt::format("%{:02X}", static_cast<unsigned char>(c));
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
