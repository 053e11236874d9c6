// Containers: the functions that find the blocks of a file in a region, by kind of file, and those of parts of files.
#pragma once

#include "containers/layout.h"

#include <cstdint>
#include <span>

namespace tvmeta {

// Finds the blocks of a source of `size` bytes. Returns TVMETA_OK, TVMETA_UNKNOWN_KIND or TVMETA_REFUSED_KIND.
std::int32_t findBlocks(SourceReader& reader, std::int64_t size, Layout& layout);

// A region with a JPEG is the source, or a preview that has the metadata of a raw file.
void findInJpeg(SourceReader& reader, const Region& region, Layout& layout);

// Photoshop files of the small and the large kind (PSD, PSB).
void findInPhotoshopFile(SourceReader& reader, const Region& file, Layout& layout);

// Raw files that have their metadata in a JPEG of their own.
void findInRaf(SourceReader& reader, const Region& file, Layout& layout);
void findInRw2(SourceReader& reader, const Region& file, Layout& layout);

// Files of boxes: CR3, HEIF and AVIF (ISO/IEC 23008-12), JPEG XL (ISO/IEC 18181-2).
void findInCr3(SourceReader& reader, const Region& file, Layout& layout);
void findInHeif(SourceReader& reader, const Region& file, Layout& layout);
void findInJxl(SourceReader& reader, const Region& file, Layout& layout);

// Files of chunks: PNG (third edition) and WebP (RFC 9649).
void findInPng(SourceReader& reader, const Region& file, Layout& layout);
void findInWebp(SourceReader& reader, const Region& file, Layout& layout);

// Photoshop image resources, in Photoshop files, JPEG segments and TIFF tags, as one sequence in these regions. A block
// that the layout has already takes precedence.
void findInResources(SourceReader& reader, std::span<const Region> regions, Layout& layout);

// Adds the largest preview that the index in a region of a JPEG lists (CIPA DC-007, Multi-Picture Format).
void findMultiPicturePreview(SourceReader& reader, const Region& index, const Region& file, Layout& layout);

// XMP packets of more than 64 KiB in JPEG files (XMP storage in files, JPEG). Joins the standard packet and the
// extended one to a single packet: the descriptions of the extended packet become the last ones of the standard packet.
// Packets whose text does not allow that follow each other.
void joinExtendedXmp(SourceReader& reader, Layout& layout);

} // namespace tvmeta
