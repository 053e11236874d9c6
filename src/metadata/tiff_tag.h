// Metadata: the entry of a tag in a little-endian TIFF file.
#pragma once

#include "support/result.h"

#include <cstdint>
#include <cstdio>

namespace tvmeta {

struct TagEntry {
    std::int64_t position; // of its first byte in the file
    std::int32_t count;
    std::int32_t value; // or the offset of the value
};

// Searches all directories from the position of the stream on, which is at the start of the file. A failure is a result
// of get_tif_tag.
Result<TagEntry> findTag(std::FILE* stream, std::int32_t tag);

} // namespace tvmeta
