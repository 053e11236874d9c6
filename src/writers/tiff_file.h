// Writers: an uncompressed little-endian TIFF file (TIFF 6.0, BigTIFF) of header, one strip of pixels, and a directory
// block with everything else.
#pragma once

#include "support/result.h"
#include "writers/directory_builder.h"
#include "writers/pixel_writer.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace tvmeta {

inline constexpr std::uint16_t IeeeFloat = 3; // SampleFormat
inline constexpr std::string_view FloatSoftware = "Tonalvista 32-bit Float Output";

// Size, samples and place of the strip.
void addPixelFields(DirectoryBuilder& directory, const PixelLayout& layout, DirectoryForm form);

void addResolution(DirectoryBuilder& directory, std::int32_t dotsPerInch);

// Of these blocks, those that are not empty.
void addBlocks(DirectoryBuilder& directory, std::span<const unsigned char> icc, std::span<const unsigned char> xmp,
               std::span<const unsigned char> iptc);

// A failure of writeTiffFile that buf2tif reports as BUF2TIF_NO_MEMORY, which is also BUF2TIF_CANNOT_OPEN.
inline constexpr std::int32_t NoDirectoryMemory = -5;

// Writes the planned file. All memory is allocated before the file is opened, which empties it. The stream is
// unbuffered, so a write that fails is the one that found no room. Returns the rows of the last block, or
// NoDirectoryMemory, or the result of buf2tif for another failure.
Result<std::int32_t> writeTiffFile(const char* path, const PixelWriter& pixels, std::size_t dataSize,
                                   DirectoryBuilder& directory, DirectoryForm form);

} // namespace tvmeta
