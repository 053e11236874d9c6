#include "containers/joined_regions.h"
#include "photo/open_photo.h"

#include <array>
#include <cstddef>
#include <utility>

namespace tvmeta {

std::int64_t blockSize(const Layout& layout, std::int32_t block) {
    std::int64_t size = 0;
    for (const Piece& piece : layout.pieces()) {
        size += piece.block == block ? piece.region.size : 0;
    }
    return size;
}

bool copyBlock(OpenPhoto& photo, std::int32_t block, std::span<unsigned char> bytes) {
    std::array<Region, Layout::MaxPieces> regions;
    const std::size_t count = photo.layout.regionsOf(block, regions);
    return JoinedRegions{std::span<const Region>(regions).first(count)}.read(photo.reader, 0, bytes);
}

// The pieces are inside of the source and do not overlap, so no more is allocated than the source has.
ZeroedBuffer loadBlock(OpenPhoto& photo, std::int32_t block) {
    constexpr std::int64_t MaxSize = 64 << 20;
    const std::int64_t size = photo.layout.isCompressed(block) ? 0 : blockSize(photo.layout, block);
    ZeroedBuffer buffer(static_cast<std::size_t>(size <= MaxSize ? size : 0));
    photo.layout.isWithoutMemory |= !buffer;
    return !buffer || copyBlock(photo, block, buffer.bytes()) ? std::move(buffer) : ZeroedBuffer(0);
}

namespace {

// The EXIF block is the structure that the record names.
void addExifPiece(Layout& layout) {
    const auto structures = layout.structures();
    if (structures.size() == 1 && structures[0].region.position > 0 && !layout.has(TVMETA_EXIF)) {
        layout.addPiece(TVMETA_EXIF, structures[0].region);
    }
}

// The place that the caller's record has, if that suffices: a block in one piece.
bool isRecorded(const tvmeta_Photo* photo, std::int32_t block) {
    constexpr std::size_t End = offsetof(tvmeta_Photo, blocks) + sizeof(tvmeta_Photo::blocks);
    return photo != nullptr && photo->recordSize >= End && photo->blocks[block].size > 0 &&
           photo->blocks[block].position >= 0;
}

// Copies a block if there is a buffer, and returns its size.
std::int64_t copyTo(void* buffer, std::int64_t capacity, SourceReader& reader, std::span<const Region> regions) {
    const JoinedRegions block(regions);
    if (buffer == nullptr) {
        return block.size();
    }
    if (capacity < block.size()) {
        return TVMETA_TOO_SMALL;
    }
    const std::span bytes(static_cast<unsigned char*>(buffer), static_cast<std::size_t>(block.size()));
    const bool isComplete = block.read(reader, 0, bytes);
    if (reader.failed()) {
        return TVMETA_READ_FAILED;
    }
    return isComplete ? block.size() : std::int64_t{TVMETA_BROKEN};
}

std::int64_t readRecorded(const tvmeta_Source& source, const tvmeta_Block& block, void* buffer, std::int64_t capacity) {
    constexpr std::size_t NoWindow = 1; // the source writes into the buffer
    SourceReader reader(source, 0, NoWindow);
    const Region region{block.position, block.size};
    return copyTo(buffer, capacity, reader, std::span(&region, 1));
}

std::int64_t readBlock(const tvmeta_Source& source, std::int32_t block, void* buffer, std::int64_t capacity) {
    OpenPhoto photo(source);
    photo.readTags();
    addExifPiece(photo.layout);
    if (const std::int32_t failure = photo.failure(); failure != TVMETA_OK) {
        return failure;
    }
    if (photo.layout.isCompressed(block)) {
        return TVMETA_REFUSED_KIND;
    }
    std::array<Region, Layout::MaxPieces> regions;
    const std::size_t count = photo.layout.regionsOf(block, regions);
    return copyTo(buffer, capacity, photo.reader, std::span(regions).first(count));
}

} // namespace

} // namespace tvmeta

using namespace tvmeta;

std::int64_t tvmeta_read_block(const tvmeta_Source* source, const tvmeta_Photo* photo, std::int32_t block, void* buffer,
                               std::int64_t capacity) noexcept {
    if (!isUsable(source) || block < 0 || block >= TVMETA_BLOCKS || capacity < 0) {
        return TVMETA_BAD_ARGUMENT;
    }
    return isRecorded(photo, block) ? readRecorded(*source, photo->blocks[block], buffer, capacity)
                                    : readBlock(*source, block, buffer, capacity);
}
