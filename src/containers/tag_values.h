// Containers: the values of directory entries, at their places in the source.
#pragma once

#include "metadata/source_reader.h"
#include "tvmeta_photo.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace tvmeta {

// Bytes of one item of a field type; 0 for types that TIFF 6.0, EXIF 2.32 and BigTIFF do not define.
std::uint64_t itemSize(std::uint16_t type);

// The item at an index as a number. Empty if the entry has fewer items, another type, or no place in the source.
std::optional<std::int64_t> readInteger(SourceReader& reader, const tvmeta_Tag& tag, std::uint64_t index = 0);

// An integer counts as a fraction with the denominator 1.
std::optional<tvmeta_Rational> readFraction(SourceReader& reader, const tvmeta_Tag& tag, std::uint64_t index = 0);

// Copies up to the size of `bytes`, and returns the number of bytes.
std::size_t readBytes(SourceReader& reader, const tvmeta_Tag& tag, std::span<char> bytes);

} // namespace tvmeta
