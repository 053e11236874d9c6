// Containers: the entries of all directories of a photograph (TIFF 6.0 section 2, BigTIFF, EXIF 2.32 section 4.6).
#pragma once

#include "containers/layout.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace tvmeta {

// What the directories say of one image.
struct ImageDirectory {
    Region structure;
    std::int32_t kind = TVMETA_IMAGE; // TVMETA_IMAGE, TVMETA_THUMBNAIL_IMAGE, TVMETA_SUB_IMAGE
    std::int64_t width = 0;
    std::int64_t height = 0;
    std::int64_t subfileType = 0;
    std::int64_t compression = 0;
    std::int64_t photometric = 0;
    std::int64_t jpegOffset = 0; // JPEGInterchangeFormat
    std::int64_t jpegSize = 0;
    std::int64_t stripOffset = 0; // if there is one strip only
    std::int64_t stripSize = 0;
};

// Returns the entries of the structures of a layout one by one. After the last, the layout also has the blocks and the
// main image that the directories describe.
class TagWalker {
  public:
    TagWalker(SourceReader& reader, Layout& layout) : reader_(reader), layout_(layout) {}

    // Gives the next entry to `tag`, or returns false after the last. `position` is -1 if the value is outside of the
    // structure, or of a type that TIFF does not define.
    bool next(tvmeta_Tag& tag);

  private:
    // Photographs have up to 15 directories and some hundred entries; the bounds keep hostile files cheap.
    static constexpr std::size_t MaxDirectories = 32;
    static constexpr std::size_t MaxChainedImages = 4;
    static constexpr int MaxChildren = 64;
    static constexpr std::uint64_t MaxEntries = 1 << 17;
    static constexpr std::uint64_t BlockEntries = 32;
    static constexpr std::size_t MaxEntrySize = 20;

    struct Directory {
        std::int64_t position;
        std::int32_t kind;
        std::size_t chainIndex; // of an image directory in the chain; others have no next one
        bool isChained;
    };

    bool openStructure();
    bool openDirectory();
    void closeDirectory();
    bool readBlock();
    tvmeta_Tag decodeEntry();
    void follow(const tvmeta_Tag& tag);
    void enqueue(std::uint64_t offset, std::int32_t kind, std::size_t chainIndex = 0, bool isChained = false);
    std::uint64_t valueOf(const tvmeta_Tag& tag, std::uint64_t index = 0);
    void describeImage(const tvmeta_Tag& tag);
    void addBlock(const tvmeta_Tag& tag);
    void finish();
    const ImageDirectory* mainImage() const;
    void addJpegs();
    void addJpeg(std::int32_t block, const Region& structure, Region region);

    std::size_t entrySize() const { return isBig_ ? 20 : 12; }
    std::size_t offsetSize() const { return isBig_ ? 8 : 4; }

    SourceReader& reader_;
    Layout& layout_;
    std::size_t structureIndex_ = 0; // of the next one
    TiffStructure structure_;
    ByteOrder order_ = ByteOrder::Little;
    bool isBig_ = false;
    bool isOpen_ = false; // a directory is being read
    bool isFinished_ = false;

    std::array<Directory, MaxDirectories> directories_; // of the structure: read, open, and waiting
    std::size_t directoryCount_ = 0;
    std::size_t directoryIndex_ = 0; // of the open one

    std::uint64_t remaining_ = 0; // entries of the open directory
    std::int64_t entryPosition_ = 0;
    std::array<unsigned char, BlockEntries * MaxEntrySize> block_;
    std::size_t blockUsed_ = 0;
    std::size_t blockSize_ = 0;
    std::uint64_t entriesLeft_ = MaxEntries;
    int childrenLeft_ = MaxChildren;
    bool areResourcesRead_ = false;

    std::array<ImageDirectory, MaxDirectories> images_;
    std::size_t imageCount_ = 0;
    std::int32_t number_ = -1; // of the open directory in the photograph
};

} // namespace tvmeta
