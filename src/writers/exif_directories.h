// Writers: the EXIF and GPS directories of a result (EXIF 2.3, sections 4.6.5 and 4.6.6), and its texts.
#pragma once

#include "support/text_search.h"
#include "tvmeta.h"
#include "writers/directory_builder.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tvmeta {

inline constexpr std::size_t MakeSize = 64; // the make buffer of the interface

// The TIFF ASCII counts of the texts: terminators included, 0 for an empty text.
struct TextCounts {
    std::size_t model;
    std::size_t make;
    std::size_t date;
    std::size_t gpsDate;
    std::size_t lens; // bytes of lens name for the settings packet
};

// The make of a camera, derived from its model name; empty for an unknown model. (The readers keep no make.)
std::string_view makeOf(std::string_view model);

TextCounts countTexts(const MetadataBuf& metadata, const GpsBuf& gps);

// The directories of the values that are present in the records. The records are borrowed.
DirectoryBuilder exifDirectory(const MetadataBuf& metadata, std::size_t dateCount);
DirectoryBuilder gpsDirectory(const GpsBuf& gps, std::size_t gpsDateCount);

// Codes that TIFF does not define are written as 1.
constexpr std::uint16_t writtenOrientation(std::int32_t orientation) {
    return orientation >= 1 && orientation <= 8 ? static_cast<std::uint16_t>(orientation) : std::uint16_t{1};
}

} // namespace tvmeta
