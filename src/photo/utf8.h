// Photo: texts of files as UTF-8.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

namespace tvmeta {

bool isUtf8(std::string_view text);

// Writes text to a buffer that may be too small, as snprintf does: `size` counts all of it.
class TextWriter {
  public:
    explicit TextWriter(std::span<char> buffer) : buffer_(buffer) {}

    // Adds a character, whole or not at all.
    void put(char32_t character);
    void put(std::string_view text);

    void clear() { size_ = written_ = 0; }

    std::size_t size() const { return size_; }       // of the whole text
    std::size_t written() const { return written_; } // of its start that is in the buffer

  private:
    std::span<char> buffer_;
    std::size_t size_ = 0;
    std::size_t written_ = 0;
};

// EXIF and IPTC texts are UTF-8 where they are valid as such, else ISO 8859-1.
void putText(TextWriter& writer, std::string_view text);

// The start of a longer text without the character that the end cuts.
std::string_view wholeCharacters(std::string_view start);

// The text up to its first zero byte, without white space at its ends.
std::string_view trimmed(std::string_view text);

} // namespace tvmeta
