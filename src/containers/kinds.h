// Containers: the kinds of files, by their first bytes.
#pragma once

#include "containers/layout.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace tvmeta {

// As many bytes of a file as decide its kind.
inline constexpr std::size_t KindBytes = 64;

// TVMETA_FORMAT_UNKNOWN, a format that is read, or TVMETA_FORMAT_REFUSED and above.
std::int32_t formatOf(std::span<const unsigned char> start);

// Finds the blocks of a source of `size` bytes. Returns TVMETA_OK, TVMETA_UNKNOWN_KIND or TVMETA_REFUSED_KIND.
std::int32_t findBlocks(SourceReader& reader, std::int64_t size, Layout& layout);

} // namespace tvmeta
