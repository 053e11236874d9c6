// Metadata: payloads that are read into memory as a whole.
#pragma once

#include "metadata/stream_reader.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace tvmeta {

// How many of the announced bytes the file can fill, so that a count is never believed before memory is taken for it.
// Small counts are not worth a question to the system.
inline std::int64_t fillable(StreamReader& reader, std::int32_t announced) noexcept {
    constexpr std::int32_t Small = 1 << 16;
    return announced <= Small ? announced : std::min<std::int64_t>(announced, reader.remaining());
}

} // namespace tvmeta
