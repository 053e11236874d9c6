// Writers: metadata and images on their way out.
//
// A TIFF directory (TIFF 6.0, section 2) to be written: planned first, then placed, then emitted once. The TIFF file,
// the EXIF block, and the EXIF and GPS directories in both are made of it.
#pragma once

#include "support/tiff_vocabulary.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace tvmeta {

class Directory {
  public:
    // Fields are added in the order in which their values are to lie behind the entries; the entries themselves come
    // out in ascending order of their tags. What is not a number is borrowed until the directory has been written.
    void addShort(std::uint16_t tag, std::uint16_t value) noexcept;
    void addShorts(std::uint16_t tag, std::size_t count, std::uint16_t value) noexcept; // the same value so many times
    void addLong(std::uint16_t tag, std::uint32_t value) noexcept;
    void addShortOrLong(std::uint16_t tag, std::uint32_t value) noexcept; // as it needs
    void addRationals(std::uint16_t tag, std::span<const std::int32_t> words) noexcept;

    // `count` bytes, of which those that `text` does not hold are zeros.
    void addText(std::uint16_t tag, std::span<const char> text, std::size_t count) noexcept;
    // `count` items of the type, `size` bytes in all, of which those that `bytes` does not hold are zeros.
    void addBytes(std::uint16_t tag, std::uint16_t type, std::size_t count, std::span<const unsigned char> bytes,
                  std::size_t size) noexcept;
    void addDirectory(std::uint16_t tag, const Directory& directory) noexcept;

    // Fixes the number of entries and the bytes of values that the layout has room for, whatever has been added.
    void fixLayout(std::size_t entries, std::size_t valueBytes) noexcept;

    std::size_t entries() const noexcept { return entries_; }
    std::size_t valueBytes() const noexcept { return valueBytes_; }
    std::size_t size() const noexcept { return headSize() + valueBytes_; }

    // Writes the directory and its values into a block of its size, which begins at `position` of what its offsets
    // count from. Of an entry's value field only the bytes that mean something are written.
    void write(std::span<unsigned char> block, std::size_t position) const noexcept;

  private:
    static constexpr std::size_t MaxFields = 24; // the image directory with everything in it has 23
    static constexpr std::size_t OwnSize = 24;   // three rationals

    struct Field {
        std::uint16_t tag;
        std::uint16_t type;
        std::uint32_t count;
        std::size_t size;                        // of the value, zeros behind its bytes included
        std::array<unsigned char, OwnSize> own;  // the value, if it is made of numbers
        std::span<const unsigned char> borrowed; // the value, if it is not
        const Directory* directory;              // the value, if it is a directory

        bool isInline() const noexcept { return directory == nullptr && size <= EntryValueSize; }
        std::span<const unsigned char> bytes() const noexcept;
    };

    // A field and the offset of its value within the block.
    struct Placed {
        const Field* field;
        std::size_t offset;
    };

    static void writeValue(const Placed& placed, std::span<unsigned char> block, std::size_t position) noexcept;

    std::size_t headSize() const noexcept { return 2 + DirectoryEntrySize * entries_ + 4; }
    Field& addNumbers(std::uint16_t tag, std::uint16_t type, std::size_t count, std::size_t size) noexcept;
    Field& add(std::uint16_t tag, std::uint16_t type, std::size_t count, std::size_t size) noexcept;
    void writeEntries(std::span<const Placed> placed, std::span<unsigned char> block,
                      std::size_t position) const noexcept;

    std::array<Field, MaxFields> fields_;
    std::size_t fieldCount_ = 0;
    std::size_t entries_ = 0;
    std::size_t valueBytes_ = 0;
};

// The header of a little-endian TIFF structure, with the offset of its first directory.
void writeTiffHeader(std::span<unsigned char, TiffHeaderSize> header, std::size_t firstDirectory) noexcept;

} // namespace tvmeta
