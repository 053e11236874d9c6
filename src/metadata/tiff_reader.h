// Metadata: a TIFF structure in a file, and the entries of one of its directories (TIFF 6.0, section 2).
#pragma once

#include "metadata/stream_reader.h"
#include "support/packed_numbers.h"
#include "support/result.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>

namespace tvmeta {

struct DirectoryEntry {
    std::uint16_t tag;
    std::uint16_t type;
    std::int32_t count;
    std::int32_t field; // the 32-bit value field
    std::int32_t value; // the first 16-bit number of the field for one or two SHORTs, otherwise the field
    std::array<unsigned char, EntryValueSize> fieldBytes;
    std::int64_t end; // position after the entry, or of the end of the file in it
};

// A rational as signed numbers, whatever the type of the entry.
struct Rational {
    std::int32_t numerator;
    std::int32_t denominator;
};

// A TIFF structure: its bytes, their order, and the file offset to which its offsets are relative.
struct TiffReader {
    StreamReader& reader;
    ByteOrder order;
    std::int32_t base;

    std::uint16_t read16() const { return reader.read16(order); }
    std::int32_t read32() const { return reader.read32(order); }
    Rational readRational() const { return {read32(), read32()}; }

    // Reads a line, including its newline, of at most text.size() - 1 bytes, and terminates it. The text is unchanged
    // at the end of the file.
    void readLine(std::span<char> text) const;

    // Moves to an offset of the structure. Offsets wrap at 32 bits. A negative position is ignored.
    void seek(std::int32_t offset) const { reader.seek(wrappingAdd(base, offset)); }

    // Moves to the value of an entry. If its position is negative, the bytes after the entry are read instead.
    void seekToValue(const DirectoryEntry& entry, std::int32_t offset) const {
        reader.seek(entry.end);
        seek(offset);
    }
    void seekToValue(const DirectoryEntry& entry) const { seekToValue(entry, entry.value); }
};

// Returns the entries of a directory one by one. It reads them in blocks, so the caller may move the reader.
class DirectoryReader {
  public:
    // The reader of the structure is at the first of `count` entries.
    DirectoryReader(const TiffReader& tiff, int count)
        : tiff_(tiff), remaining_(count), position_(tiff.reader.position()) {}

    // Empty after the last entry; the reader is then at its end.
    std::optional<DirectoryEntry> next();

  private:
    static constexpr int BlockEntries = 32; // most directories are smaller

    void readBlock();

    const TiffReader& tiff_;
    int remaining_;         // entries not yet returned
    std::int64_t position_; // of the next entry
    std::size_t blockSize_ = 0;
    std::size_t blockUsed_ = 0;
    std::array<unsigned char, BlockEntries * DirectoryEntrySize> block_;
};

// The entry of a tag in a little-endian TIFF file.
struct TagEntry {
    std::int64_t position; // of its first byte in the file
    std::int32_t count;
    std::int32_t value; // or the offset of the value
};

// Searches all directories from the position of the stream on, which is at the start of the file. A failure is a result
// of get_tif_tag.
Result<TagEntry> findTag(std::FILE* stream, std::int32_t tag);

} // namespace tvmeta
