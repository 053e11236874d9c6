// Metadata: JPEG files.
#pragma once

#include "metadata/stream_reader.h"
#include "metadata/work_budget.h"
#include "support/result.h"
#include "tvmeta.h"

#include <cstdint>

namespace tvmeta {

struct ExifSegment {
    std::int32_t tiffBase; // file offset of the TIFF structure; 0 if the segment does not have the EXIF signature
    std::int64_t end;
};

// Finds the first APP1 segment, and moves after its signature. A failure is a result of getExifData.
Result<ExifSegment> findExifSegment(StreamReader& reader);

// Reads the XMP segment, which must be close to the EXIF segment: the lens name goes into the record, and the packet's
// position if the packet contains processing settings. The reader is after the EXIF segment. Returns a result of
// getExifData.
std::int32_t readXmpSegment(StreamReader& reader, ExifInfo& info);

// Reads the Photoshop segment in a second pass over the file. Returns a result of getExifData.
std::int32_t readPhotoshopSegment(StreamReader& reader, WorkBudget& budget, ExifInfo& info);

} // namespace tvmeta
