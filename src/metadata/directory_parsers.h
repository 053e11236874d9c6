// Metadata: the parsers of TIFF directories and of the payloads in them. They fill the metadata record.
#pragma once

#include "metadata/tiff_reader.h"
#include "metadata/work_budget.h"
#include "tvmeta.h"

#include <cstdint>
#include <string_view>

namespace tvmeta {

// Walks the image directories from the TIFF header on, where the reader is. Returns a result of getExifData.
std::int32_t readImageDirectories(StreamReader& reader, std::int32_t tiffBase, std::int32_t fileType,
                                  WorkBudget& budget, ExifInfo& info);

// The reader is at the entry count of the directory, and afterwards at the end of the last entry that was read.
void readExifDirectory(const TiffReader& tiff, WorkBudget& budget, ExifInfo& info);
void readGpsDirectory(const TiffReader& tiff, WorkBudget& budget, ExifInfo& info);

// The reader is at a payload of `size` bytes. Results are those of parse_image_description and parse_photoshop_data. A
// payload beyond the budget is skipped.
std::int32_t readImageDescription(StreamReader& reader, std::int32_t size, WorkBudget& budget, ExifInfo& info);
std::int32_t readPhotoshopResources(StreamReader& reader, std::int32_t size, WorkBudget& budget, ExifInfo& info);

// Exposure and colour values of a description, which a zero byte ends. Returns the last colour value.
std::int32_t parseDescription(std::string_view text, ExifInfo& info);

} // namespace tvmeta
