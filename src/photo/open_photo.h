// Photo: a source, its reader and the places of its blocks, as each exported function needs them.
#pragma once

#include "containers/kinds.h"
#include "containers/layout.h"
#include "containers/tag_walker.h"

namespace tvmeta {

// Finds the blocks of a source. The walker has found all of them after its last entry.
struct OpenPhoto {
    explicit OpenPhoto(const tvmeta_Source& source)
        : reader(sourceOf(source), 0, window_size::Jpeg), status(findBlocks(reader, source.size, layout)),
          tags(reader, layout) {}

    // Walks what is left of the directories, for the blocks in them.
    void walkToEnd() {
        for (tvmeta_Tag tag; tags.next(tag);) {
        }
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

} // namespace tvmeta
