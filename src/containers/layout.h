// Containers: where the metadata of a photograph is. Each container fills a Layout; nothing else knows containers.
#pragma once

#include "metadata/source_reader.h"
#include "tvmeta_photo.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace tvmeta {

// A region of the source. The source may be shorter.
struct Region {
    std::int64_t position = 0;
    std::int64_t size = 0;

    std::int64_t end() const { return position + size; } // regions lie within 2^62
    Region after(std::int64_t skipped) const { return {position + skipped, size - skipped}; }
};

struct TiffStructure {
    Region region;
    std::int32_t directory = TVMETA_IMAGE; // what the first one is
};

// Blocks that become parts of those in tvmeta_photo.h once a container has been read.
enum { ExtendedXmp = TVMETA_BLOCKS, PhotoshopResources };

// A region of a block. Pieces are joined by ascending order.
struct Piece {
    std::int32_t block = 0; // TVMETA_XMP, ...
    std::uint32_t order = 0;
    Region region;
};

// Fixed room, so that hostile files cost no memory. No photograph needs more: there are up to 255 ICC chunks, and a
// piece of extended XMP for each 64 KiB. The first places of a photograph take precedence; excess ones are dropped.
class Layout {
  public:
    static constexpr std::size_t MaxPieces = 1024;

    std::int32_t format = TVMETA_FORMAT_UNKNOWN;
    std::int32_t width = 0; // of the main image; 0: a directory has it
    std::int32_t height = 0;
    std::int32_t orientation = 0; // 0: a directory has it
    std::int64_t brokenAt = -1;   // the first place where the file is broken
    bool hasMakerNote = false;    // outside of the directories
    bool isWithoutMemory = false; // an allocation has failed, so that something may be missing

    void markBroken(std::int64_t position) {
        if (brokenAt < 0) {
            brokenAt = position;
        }
    }

    void addStructure(Region region, std::int32_t directory = TVMETA_IMAGE);
    std::span<const TiffStructure> structures() const { return std::span(structures_).first(structureCount_); }

    void addPiece(std::int32_t block, Region region, std::uint32_t order = 0);
    // Adds a block in one piece, if there is no other.
    void addFirst(std::int32_t block, Region region);
    // Replaces the block by one region if that is larger.
    void offerLarger(std::int32_t block, Region region);
    void removePieces(std::int32_t block);
    // Copies the regions of a block, joined in order. Returns their number.
    std::size_t regionsOf(std::int32_t block, std::span<Region> regions) const;
    void sortPieces();
    bool has(std::int32_t block) const;
    std::span<Piece> pieces() { return std::span(pieces_).first(pieceCount_); }
    std::span<const Piece> pieces() const { return std::span(pieces_).first(pieceCount_); }

    // Adds a block that needs decompression, if there is no other.
    void addCompressed(std::int32_t block, Region region);
    bool isCompressed(std::int32_t block) const { return (compressed_ >> block & 1U) != 0; }

  private:
    std::uint32_t compressed_ = 0; // a bit for each block
    std::array<TiffStructure, 4> structures_;
    std::size_t structureCount_ = 0;
    std::array<Piece, MaxPieces> pieces_;
    std::size_t pieceCount_ = 0;
};

// Reads exactly the size of the block at a position.
bool readAt(SourceReader& reader, std::int64_t position, std::span<unsigned char> block);

// Reads the start of a region, up to the size of the block. Returns the bytes that were read.
std::span<const unsigned char> readStart(SourceReader& reader, const Region& region, std::span<unsigned char> block);

} // namespace tvmeta
