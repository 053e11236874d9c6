#include "photo/utf8.h"

#include "support/packed_numbers.h"
#include "support/text_search.h"

#include <algorithm>

namespace tvmeta {

namespace {

constexpr std::string_view Space = " \t\r\n\v\f";

// The length of the sequence at the start of a text (RFC 3629); 0 if there is none.
std::size_t sequenceLength(std::string_view text) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char first = byte(0);
    const std::size_t length = first < 0x80   ? 1
                               : first < 0xC2 ? 0
                               : first < 0xE0 ? 2
                               : first < 0xF0 ? 3
                               : first < 0xF5 ? 4
                                              : 0;
    if (length > text.size()) {
        return 0;
    }
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80) {
            return 0;
        }
    }
    const bool isOverlong = (first == 0xE0 && byte(1) < 0xA0) || (first == 0xF0 && byte(1) < 0x90);
    const bool isSurrogate = first == 0xED && byte(1) >= 0xA0;
    const bool isTooLarge = first == 0xF4 && byte(1) >= 0x90;
    return isOverlong || isSurrogate || isTooLarge ? 0 : length;
}

} // namespace

bool isUtf8(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = sequenceLength(text);
        if (length == 0) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

void TextWriter::put(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = std::max<std::size_t>(sequenceLength(text), 1);
        if (written_ == size_ && length <= buffer_.size() - written_) {
            copyBytes(buffer_.data() + written_, text.data(), length);
            written_ += length;
        }
        size_ += length;
        text.remove_prefix(length);
    }
}

void TextWriter::put(char32_t character) {
    constexpr unsigned char Leads[] = {0, 0, 0xC0, 0xE0, 0xF0}; // by the length of the sequence
    const std::size_t length = character < 0x80 ? 1 : character < 0x800 ? 2 : character < 0x10000 ? 3 : 4;
    char bytes[4];
    for (std::size_t i = length - 1; i > 0; --i, character >>= 6) {
        bytes[i] = static_cast<char>(0x80 | (character & 0x3F));
    }
    bytes[0] = static_cast<char>(Leads[length] | character);
    put(std::string_view(bytes, length));
}

void putText(TextWriter& writer, std::string_view text) {
    if (isUtf8(text)) {
        return writer.put(text);
    }
    for (const char byte : text) {
        writer.put(static_cast<char32_t>(static_cast<unsigned char>(byte)));
    }
}

std::string_view wholeCharacters(std::string_view start) {
    constexpr std::size_t MaxSequence = 4;
    for (std::size_t size = 1; size < MaxSequence && size <= start.size(); ++size) {
        const auto byte = static_cast<unsigned char>(start[start.size() - size]);
        if (byte >= 0xC0) { // starts a sequence
            const std::size_t whole = byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
            start.remove_suffix(size < whole ? size : 0);
            break;
        }
        if (byte < 0x80) {
            break;
        }
    }
    return start;
}

std::string_view trimmed(std::string_view text) {
    text = text.substr(0, text.find('\0'));
    const std::size_t first = text.find_first_not_of(Space);
    return textFrom(text, first).substr(0, text.find_last_not_of(Space) - first + 1); // empty if there is none
}

} // namespace tvmeta
