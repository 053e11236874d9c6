// Writers: everything of the photograph and the caller that goes into the directories of a result.
#pragma once

#include "support/zeroed_buffer.h"
#include "tvmeta_photo.h"
#include "writers/losses.h"
#include "writers/photo_entries.h"

#include <cstdint>
#include <span>

namespace tvmeta {

using Bytes = std::span<const unsigned char>;

struct ResultContents {
    // Reads the photograph, once, and names what is lost. Without blocks there is neither IPTC nor XMP. Returns a
    // status. The result is borrowed.
    std::int32_t collect(const tvmeta_Result& result, bool withBlocks, LossList& losses);

    PhotoEntries entries;
    ZeroedBuffer iptc;
    ZeroedBuffer xmp;
    Bytes icc;
};

} // namespace tvmeta
