#include "base/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <compare>
#include <cstring>
#include <cwchar>
#include <locale>
#include <vector>

namespace {

constexpr std::string_view Ellipsis = "\xE2\x80\xA6";

struct Character {
    std::string_view bytes;
    int width = -1; // columns; below 0: not printable
};

struct Decoded {
    char32_t code = 0;
    size_t length = 0; // 0: not UTF-8
};

// The first character of a text that is not empty.
Decoded decodeFirst(std::string_view text) {
    using Utf8 = std::codecvt<char32_t, char8_t, std::mbstate_t>;
    static const auto& utf8 = std::use_facet<Utf8>(std::locale::classic());
    std::array<char8_t, 4> bytes = {};
    const size_t size = std::min(text.size(), bytes.size());
    std::memcpy(bytes.data(), text.data(), size);
    std::mbstate_t state = {};
    Decoded decoded;
    const char8_t* end = nullptr;
    char32_t* next = nullptr;
    utf8.in(state, bytes.data(), bytes.data() + size, end, &decoded.code, &decoded.code + 1, next);
    const bool isSurrogate = decoded.code >= 0xD800 && decoded.code <= 0xDFFF;
    decoded.length = next == &decoded.code || isSurrogate ? 0 : static_cast<size_t>(end - bytes.data());
    return decoded;
}

// Unicode's marks and embeddings of direction, with which a name can pretend to be another.
bool turnsDirection(char32_t code) {
    return code == 0x61C || code == 0x200E || code == 0x200F || (code >= 0x202A && code <= 0x202E) ||
           (code >= 0x2066 && code <= 0x2069);
}

Character takeCharacter(std::string_view& text) {
    const Decoded decoded = decodeFirst(text);
    const bool isSafe = decoded.length > 0 && !turnsDirection(decoded.code);
    const Character character = {text.substr(0, std::max<size_t>(decoded.length, 1)),
                                 isSafe ? characterWidth(decoded.code) : -1};
    text.remove_prefix(character.bytes.size());
    return character;
}

std::vector<Character> charactersOf(std::string_view text) {
    std::vector<Character> characters;
    while (!text.empty()) {
        characters.push_back(takeCharacter(text));
    }
    return characters;
}

// The size of the first characters that fit in `width` columns.
template <typename Iterator>
size_t fittingBytes(Iterator first, Iterator last, int width) {
    size_t bytes = 0;
    for (; first != last && std::max(first->width, 0) <= width; ++first) {
        width -= std::max(first->width, 0);
        bytes += first->bytes.size();
    }
    return bytes;
}

constexpr std::string_view Digits = "0123456789";

// Removes a run of digits or one other character from the start of the text and returns it.
std::string_view takePart(std::string_view& text) {
    const size_t digits = std::min(text.find_first_not_of(Digits), text.size());
    const std::string_view part = text.substr(0, std::max<size_t>(digits, 1));
    text.remove_prefix(part.size());
    return part;
}

std::string_view withoutZeros(std::string_view digits) {
    return digits.substr(std::min(digits.find_first_not_of('0'), digits.size()));
}

std::strong_ordering compareParts(std::string_view a, std::string_view b) {
    if (Digits.find(a[0]) == Digits.npos || Digits.find(b[0]) == Digits.npos) {
        return a <=> b;
    }
    const std::string_view first = withoutZeros(a), second = withoutZeros(b);
    const auto byLength = first.size() <=> second.size();
    return byLength != 0 ? byLength : first <=> second;
}

} // namespace

std::string printable(std::string_view text) {
    std::string safe;
    for (const Character& character : charactersOf(text)) {
        if (character.width >= 0) {
            safe += character.bytes;
            continue;
        }
        for (const char c : character.bytes) {
            safe += fmt::format("\\x{:02X}", static_cast<unsigned char>(c));
        }
    }
    return safe;
}

std::string lowerCase(std::string text) {
    std::ranges::transform(text, text.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c; });
    return text;
}

bool isUtf8(std::string_view text) {
    while (!text.empty()) {
        const size_t length = decodeFirst(text).length;
        if (length == 0) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

int displayWidth(std::string_view text) {
    int width = 0;
    for (const Character& character : charactersOf(text)) {
        width += std::max(character.width, 0);
    }
    return width;
}

std::string withoutEnd(std::string_view text, int width) {
    if (displayWidth(text) <= width) {
        return std::string(text);
    }
    const std::vector<Character> characters = charactersOf(text);
    const size_t bytes = fittingBytes(characters.begin(), characters.end(), width - 1);
    return std::string(text.substr(0, bytes)) += Ellipsis;
}

std::string withoutStart(std::string_view text, int width) {
    if (displayWidth(text) <= width) {
        return std::string(text);
    }
    const std::vector<Character> characters = charactersOf(text);
    const size_t bytes = fittingBytes(characters.rbegin(), characters.rend(), width - 1);
    return std::string(Ellipsis) += text.substr(text.size() - bytes);
}

std::string helpList(const std::string& heading, std::span<const std::string> words) {
    constexpr size_t LineWidth = 78;
    std::string list = heading + ":";
    size_t lineStart = 0;
    for (const std::string& word : words) {
        const bool isFirst = lineStart == 0;
        list += isFirst ? "" : ",";
        if (isFirst || list.size() - lineStart + word.size() + 2 > LineWidth) {
            lineStart = list.size() + 1;
            list += "\n ";
        }
        list += " " + word;
    }
    return list + "\n\n";
}

double decimal(float value) {
    std::array<char, 32> text;
    const char* end = std::to_chars(text.begin(), text.end(), value).ptr;
    double number = 0;
    std::from_chars(text.begin(), end, number);
    return number;
}

std::string beginning(std::span<const unsigned char> file) {
    constexpr size_t Shown = 4;
    const std::string_view start(reinterpret_cast<const char*>(file.data()), std::min(file.size(), Shown));
    const std::string_view littleBigTiff("II\x2B\0", 4);
    const std::string_view bigBigTiff("MM\0\x2B", 4);
    if (start == littleBigTiff || start == bigBigTiff) {
        return "BigTIFF is not supported";
    }
    return start.empty() ? "the file is empty" : "it starts with \"" + printable(start) + "\"";
}

bool naturalLess(std::string_view a, std::string_view b) {
    std::string_view restOfA = a, restOfB = b;
    while (!restOfA.empty() && !restOfB.empty()) {
        const std::string_view partOfA = takePart(restOfA), partOfB = takePart(restOfB);
        if (const auto order = compareParts(partOfA, partOfB); order != 0) {
            return order < 0;
        }
    }
    return restOfA.empty() != restOfB.empty() ? restOfA.empty() : a < b;
}
