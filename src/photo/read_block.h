// Photo: the bytes of blocks.
#pragma once

#include "photo/open_photo.h"
#include "support/zeroed_buffer.h"

#include <optional>

namespace tvmeta {

// Bytes of the pieces of a block together.
std::int64_t blockSize(const Layout& layout, std::int32_t block);

// Copies the start of a block. Returns false if it cannot be read.
bool copyBlock(OpenPhoto& photo, std::int32_t block, std::span<unsigned char> bytes);

// A block in memory; empty if it cannot be read, or if it is larger than what is worth a search. False without memory.
ZeroedBuffer loadBlock(OpenPhoto& photo, std::int32_t block);

} // namespace tvmeta
