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

    // The result of a function that has read what it needs.
    std::int32_t result() const {
        if (reader.failed()) {
            return TVMETA_READ_FAILED;
        }
        if (status != TVMETA_OK) {
            return status;
        }
        return layout.brokenAt >= 0 ? TVMETA_BROKEN : TVMETA_OK;
    }

    Layout layout;
    SourceReader reader;
    std::int32_t status;
    TagWalker tags;
};

constexpr bool isUsable(const tvmeta_Source* source) {
    return source != nullptr && source->read != nullptr && source->size >= 0;
}

} // namespace tvmeta
