// Photo: a source, its reader, the places of its blocks and their bytes, as each exported function needs them.
#pragma once

#include "containers/finders.h"
#include "containers/tag_walker.h"
#include "photo/tag_set.h"
#include "support/zeroed_buffer.h"

namespace tvmeta {

// Finds the blocks of a source. The walker has found all of them after its last entry.
struct OpenPhoto {
    explicit OpenPhoto(const tvmeta_Source& source)
        : reader(source, 0, window_size::Jpeg), status(findBlocks(reader, source.size, layout)), tags(reader, layout) {}

    // Walks all directories, and so finds the blocks in them, too.
    TagSet readTags() {
        TagSet wanted;
        for (tvmeta_Tag tag; tags.next(tag);) {
            wanted.offer(tag);
        }
        return wanted;
    }

    // Why there is no result; TVMETA_OK if there is one.
    std::int32_t failure() const {
        if (reader.failed()) {
            return TVMETA_READ_FAILED;
        }
        return layout.isWithoutMemory ? static_cast<std::int32_t>(TVMETA_NO_MEMORY) : status;
    }

    Layout layout;
    SourceReader reader;
    std::int32_t status;
    TagWalker tags;
};

// Sums of two positions in a source of this size do not wrap.
inline constexpr std::int64_t MaxSourceSize = std::int64_t{1} << 62;

constexpr bool isUsable(const tvmeta_Source* source) {
    return source != nullptr && source->read != nullptr && source->size >= 0 && source->size <= MaxSourceSize;
}

// Fills a cleared record. `tags` have been offered every entry of the walker. open.failure() says whether it is valid.
void fillPhoto(OpenPhoto& open, const TagSet& tags, tvmeta_Photo& photo);

// Bytes of the pieces of a block together.
std::int64_t blockSize(const Layout& layout, std::int32_t block);

// Copies the start of a block. Returns false if it cannot be read.
bool copyBlock(OpenPhoto& photo, std::int32_t block, std::span<unsigned char> bytes);

// A block in memory; empty if it cannot be read, or if it is larger than what is worth a search. False without memory.
ZeroedBuffer loadBlock(OpenPhoto& photo, std::int32_t block);

} // namespace tvmeta
