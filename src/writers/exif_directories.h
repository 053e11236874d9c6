// Writers: the EXIF and GPS directories of a result (EXIF 2.3, sections 4.6.5 and 4.6.6), and the texts beside them.
#pragma once

#include "tvmeta.h"
#include "writers/directory.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace tvmeta {

inline constexpr std::size_t MakeSize = 64; // of a make buffer at the interface

// The TIFF ASCII counts of a result's texts: their terminators included, 0 for an empty text.
struct TextCounts {
    std::size_t model;
    std::size_t make;
    std::size_t date;
    std::size_t gpsDate;
    std::size_t lens; // bytes of lens name for the settings packet
};

// The make of a camera from its model name, which is all that the readers keep; empty for an unknown model.
std::string_view makeOf(std::string_view model) noexcept;

// A text field of a record, without its terminator if it has one.
template <std::size_t Size>
std::string_view textOf(const char (&field)[Size]) noexcept {
    const std::string_view all(field, Size);
    return all.substr(0, all.find('\0'));
}

TextCounts countTexts(const MetadataBuf& metadata, const GpsBuf& gps) noexcept;

// What is present in the records, each with the layout of its directory. The records are borrowed.
Directory exifDirectory(const MetadataBuf& metadata, std::size_t dateCount) noexcept;
Directory gpsDirectory(const GpsBuf& gps, std::size_t gpsDateCount) noexcept;

// The orientation as it is written: codes that TIFF does not know become the ordinary one.
constexpr std::uint16_t writtenOrientation(std::int32_t orientation) noexcept {
    return orientation >= 1 && orientation <= 8 ? static_cast<std::uint16_t>(orientation) : std::uint16_t{1};
}

} // namespace tvmeta
