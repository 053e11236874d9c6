#include "output/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <clocale>
#include <cstdint>
#include <cwchar>
#include <vector>

namespace {

constexpr std::string_view Ellipsis = "\xE2\x80\xA6";

struct Character {
    std::string_view bytes;
    int width = -1; // columns; below 0: not printable
};

// Unicode's marks and embeddings of direction, with which a name can pretend to be another.
bool turnsDirection(wchar_t code) {
    return code == 0x61C || code == 0x200E || code == 0x200F || (code >= 0x202A && code <= 0x202E) ||
           (code >= 0x2066 && code <= 0x2069);
}

Character takeCharacter(std::string_view& text) {
    wchar_t code = 0;
    std::mbstate_t state = {};
    const size_t length = std::mbrtowc(&code, text.data(), text.size(), &state);
    const bool isWhole = length > 0 && length <= text.size();
    const Character character = {text.substr(0, isWhole ? length : 1),
                                 isWhole && !turnsDirection(code) ? wcwidth(code) : -1};
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

} // namespace

void expectUtf8() {
    std::setlocale(LC_CTYPE, "C.UTF-8");
}

std::string printable(std::string_view text) {
    constexpr std::string_view HexDigits = "0123456789ABCDEF";
    std::string safe;
    for (const Character& character : charactersOf(text)) {
        if (character.width >= 0) {
            safe += character.bytes;
            continue;
        }
        for (const char c : character.bytes) {
            const auto code = static_cast<unsigned char>(c);
            safe += "\\x";
            safe += HexDigits[code >> 4];
            safe += HexDigits[code & 0xF];
        }
    }
    return safe;
}

bool isUtf8(std::string_view text) {
    while (!text.empty()) {
        std::mbstate_t state = {};
        const size_t length = std::mbrtowc(nullptr, text.data(), text.size(), &state);
        if (length > text.size()) {
            return false;
        }
        text.remove_prefix(std::max<size_t>(length, 1)); // 0 for a zero byte
    }
    return true;
}

std::string base64(std::string_view bytes) {
    constexpr std::string_view Alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (size_t i = 0; i < bytes.size(); i += 3) {
        const std::string_view group = bytes.substr(i, 3);
        uint32_t bits = 0;
        for (size_t j = 0; j < 3; ++j) {
            bits = bits << 8 | (j < group.size() ? static_cast<unsigned char>(group[j]) : 0);
        }
        for (size_t j = 0; j < 4; ++j) {
            text += j <= group.size() ? Alphabet[bits >> (18 - 6 * j) & 0x3F] : '=';
        }
    }
    return text;
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
