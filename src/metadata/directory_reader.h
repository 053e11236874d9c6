// Metadata: a TIFF structure inside a file, and the entries of one of its directories (TIFF 6.0, section 2).
#pragma once

#include "metadata/stream_reader.h"

#include <array>
#include <cstdint>

namespace tvmeta {

struct DirectoryEntry {
    std::uint16_t tag;
    std::uint16_t type;
    std::int32_t count;
    std::int32_t field; // the 32-bit value field
    std::int32_t value; // the first 16-bit number of the field for one or two SHORTs, else the field
    std::array<unsigned char, EntryValueSize> fieldBytes;
    std::int64_t end; // position behind the entry, or where the file ended within it
};

// A rational as it stands in the file, taken as signed numbers.
struct Rational {
    std::int32_t numerator;
    std::int32_t denominator;
};

// A TIFF structure: where its numbers come from, their order, and the file offset that its own offsets count from.
struct TiffStructure {
    StreamReader& reader;
    ByteOrder order;
    std::int32_t base;

    std::uint16_t read16() const noexcept { return reader.read16(order); }
    std::int32_t read32() const noexcept { return reader.read32(order); }

    Rational readRational() const noexcept {
        const std::int32_t numerator = read32();
        return {numerator, read32()};
    }

    // Moves to an offset of the structure. Offsets wrap at 32 bits; one that comes out negative leaves the reader where
    // it is.
    void seek(std::int32_t offset) const noexcept;

    // Moves to an entry's value; if its offset is refused, what follows the entry is read for it.
    void seekToValue(const DirectoryEntry& entry, std::int32_t offset) const noexcept {
        reader.seek(entry.end);
        seek(offset);
    }
    void seekToValue(const DirectoryEntry& entry) const noexcept { seekToValue(entry, entry.value); }
};

// Yields the entries of a directory one by one. They are fetched in blocks, so whoever acts on an entry may move the
// reader as it likes.
class DirectoryReader {
  public:
    // The structure's reader stands at the first of `count` entries.
    DirectoryReader(const TiffStructure& tiff, int count) noexcept
        : tiff_(tiff), remaining_(count), position_(tiff.reader.position()) {}

    // False when all entries have been read; the reader then stands behind the last one.
    bool next(DirectoryEntry& entry) noexcept;

  private:
    static constexpr int BlockEntries = 32; // enough for most directories, little enough to be read in vain

    void readBlock() noexcept;

    const TiffStructure& tiff_;
    int remaining_;         // entries not yet yielded
    std::int64_t position_; // of the next entry
    std::size_t blockSize_ = 0;
    std::size_t blockUsed_ = 0;
    std::array<unsigned char, BlockEntries * DirectoryEntrySize> block_;
};

} // namespace tvmeta
