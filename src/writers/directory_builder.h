// Writers: a TIFF directory to be written (TIFF 6.0, section 2). It is planned first, then placed, then written once.
// TIFF files, EXIF blocks, and the EXIF and GPS directories in both are made of it.
#pragma once

#include "support/packed_numbers.h"
#include "support/tiff_vocabulary.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace tvmeta {

// How directories are laid out. In an aligned one values start at even offsets, as TIFF 6.0 asks for.
struct DirectoryForm {
    bool isAligned = false;
    bool isBig = false; // BigTIFF: counts and offsets of 64 bits

    std::size_t headerSize() const { return isBig ? 16 : TiffHeaderSize; }
    std::size_t countSize() const { return isBig ? 8 : 2; }
    std::size_t entrySize() const { return isBig ? 20 : DirectoryEntrySize; }
    std::size_t offsetSize() const { return isBig ? 8 : EntryValueSize; }
    std::uint16_t offsetType() const { return isBig ? tiff_type::Long8 : tiff_type::Long; }
    std::size_t aligned(std::size_t size) const { return isAligned ? size + size % 2 : size; }
};

class DirectoryBuilder {
    static constexpr std::size_t MaxFields = 24;      // the image directory has at most 23
    static constexpr std::size_t MaxNumbersSize = 24; // three rationals

  public:
    struct Field {
        std::uint16_t tag;
        std::uint16_t type;
        std::uint32_t count;
        std::size_t size;                                  // of the value, including zeros at its end
        std::array<unsigned char, MaxNumbersSize> numbers; // the value of a field of numbers
        std::span<const unsigned char> borrowed;           // the value of a field of texts or bytes
        DirectoryBuilder* directory;                       // the value of a field that is a directory
        std::size_t offset;                                // of the value in the block, once it is placed

        std::span<const unsigned char> bytes() const;
    };

    // A directory of up to MaxFields fields.
    DirectoryBuilder() = default;

    // A directory whose fields are in a room of the caller.
    DirectoryBuilder(std::span<Field> room, DirectoryForm form) : room_(room), form_(form) {}

    // Fields are added in the order of their values after the entries. The entries are written in ascending order of
    // their tags. Texts, bytes and directories are borrowed until the directory is written.
    void addShort(std::uint16_t tag, std::uint16_t value) { addShorts(tag, 1, value); }
    void addShorts(std::uint16_t tag, std::size_t count, std::uint16_t value); // the same value `count` times
    void addLong(std::uint16_t tag, std::uint32_t value) { addNumber(tag, tiff_type::Long, 4, value); }
    void addShortOrLong(std::uint16_t tag, std::uint32_t value) { // SHORT if the value fits
        value <= UINT16_MAX ? addShort(tag, static_cast<std::uint16_t>(value)) : addLong(tag, value);
    }
    void addOffset(std::uint16_t tag, std::uint64_t value) { // LONG8 in BigTIFF
        addNumber(tag, form_.offsetType(), form_.offsetSize(), value);
    }
    void addRationals(std::uint16_t tag, std::span<const std::int32_t> words);

    // `count` characters: those of `text`, then zeros. None if the count is 0.
    void addText(std::uint16_t tag, std::span<const char> text, std::size_t count);
    // `count` items of the type, in `size` bytes: those of `bytes`, then zeros.
    void addBytes(std::uint16_t tag, std::uint16_t type, std::size_t count, std::span<const unsigned char> bytes,
                  std::size_t size);
    // Bytes as they are, an item of the type each. None if there are none.
    void addBlock(std::uint16_t tag, std::uint16_t type, std::span<const unsigned char> block);
    // None if it has no entries.
    void addDirectory(std::uint16_t tag, DirectoryBuilder& directory);

    // Overrides the number of entries and the bytes of values for which the layout has room.
    void setRoom(std::size_t entries, std::size_t valueBytes) {
        entries_ = entries;
        valueBytes_ = valueBytes;
    }

    bool has(std::uint16_t tag) const;
    std::size_t entries() const { return entries_; }
    std::size_t valueBytes() const { return valueBytes_; }
    std::size_t size() const { return headSize() + valueBytes_; }

    // Writes the directory and its values into a block of its size. Offsets are written relative to the start of the
    // TIFF structure, where the block is at `position`. Unused bytes of an entry's value field are not written.
    void write(std::span<unsigned char> block, std::size_t position);

  private:
    bool isInline(const Field& field) const { return field.directory == nullptr && field.size <= form_.offsetSize(); }
    std::size_t headSize() const { return form_.countSize() + form_.entrySize() * entries_ + form_.offsetSize(); }
    std::span<Field> room() { return room_.data() != nullptr ? room_ : std::span<Field>(own_); }
    std::span<Field> fields() { return room().first(fieldCount_); }
    void addNumber(std::uint16_t tag, std::uint16_t type, std::size_t size, std::uint64_t value);
    ByteWriter addNumbers(std::uint16_t tag, std::uint16_t type, std::size_t count, std::size_t size);
    Field& add(std::uint16_t tag, std::uint16_t type, std::size_t count, std::size_t size,
               DirectoryBuilder* directory = nullptr);
    void writeValue(const Field& field, std::span<unsigned char> block, std::size_t position) const;
    void writeEntries(std::span<unsigned char> block, std::size_t position);

    std::array<Field, MaxFields> own_{};
    std::span<Field> room_; // null: own_
    DirectoryForm form_;
    std::size_t fieldCount_ = 0;
    std::size_t entries_ = 0;
    std::size_t valueBytes_ = 0;
};

// Writes the header of a little-endian TIFF structure.
void writeTiffHeader(std::span<unsigned char> header, std::size_t firstDirectory, DirectoryForm form = {});

} // namespace tvmeta
