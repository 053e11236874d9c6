// Metadata: payloads that are read into memory as a whole.
#pragma once

#include "metadata/stream_reader.h"

#include <algorithm>
#include <cstdint>

namespace tvmeta {

// Clamps a declared size to what the file can contain, before memory is allocated for it. Small sizes are not worth the
// system call.
inline std::int64_t availableSize(StreamReader& reader, std::int32_t declared) {
    constexpr std::int32_t MaxUnchecked = 1 << 16;
    return declared <= MaxUnchecked ? declared : std::min<std::int64_t>(declared, reader.remaining());
}

} // namespace tvmeta
