// Metadata: the parsers that fill the metadata record from the parts of a TIFF structure.
#pragma once

#include "metadata/directory_reader.h"
#include "tvmeta.h"

namespace tvmeta {

// How much work one call does on behalf of a file.
//
// Directories may overlap, point at each other and claim 65,535 entries each: a hostile file of 800 KB can ask for four
// billion entries, and for the same payload again and again. A real photograph has some hundreds of entries and less
// than a megabyte of payloads.
struct WorkBudget {
    std::int32_t entries = 1 << 20;         // of EXIF and GPS directories; one that holds more is passed over
    std::int64_t payloadBytes = 64LL << 20; // of image descriptions and Photoshop resources; none is begun behind them

    bool takeEntries(std::int32_t count) noexcept {
        if (count > entries) {
            return false;
        }
        entries -= count;
        return true;
    }
};

// The structure's reader stands at the directory's entry count, and afterwards behind the last entry read.
void readExifDirectory(const TiffStructure& tiff, WorkBudget& budget, ExifInfo& info) noexcept;
void readGpsDirectory(const TiffStructure& tiff, WorkBudget& budget, ExifInfo& info) noexcept;

// The reader stands at the payload of `size` bytes. Results as parse_image_description and parse_photoshop_data give
// them; a payload that the budget does not allow is passed over.
std::int32_t readImageDescription(StreamReader& reader, std::int32_t size, WorkBudget& budget, ExifInfo& info) noexcept;
std::int32_t readPhotoshopResources(StreamReader& reader, std::int32_t size, WorkBudget& budget,
                                    ExifInfo& info) noexcept;

// Walks the image directories from the TIFF header on, at which the reader stands. Gives a result of getExifData.
std::int32_t readImageDirectories(StreamReader& reader, std::int32_t tiffBase, std::int32_t fileType,
                                  WorkBudget& budget, ExifInfo& info) noexcept;

} // namespace tvmeta
