// Metadata: JPEG files.
#pragma once

#include "metadata/stream_reader.h"
#include "metadata/work_budget.h"
#include "support/result.h"
#include "tvmeta.h"

#include <cstdint>

namespace tvmeta {

// Finds the TIFF structure in the EXIF segment, and moves to it. Also reads the XMP segment after it: the lens name
// goes into the record, and the packet's position if the packet contains processing settings. A failure is a result of
// getExifData.
Result<std::int32_t> findTiffInJpeg(StreamReader& reader, ExifInfo& info);

// Reads the Photoshop segment in a second pass over the file. Returns a result of getExifData.
std::int32_t readPhotoshopSegment(StreamReader& reader, WorkBudget& budget, ExifInfo& info);

} // namespace tvmeta
