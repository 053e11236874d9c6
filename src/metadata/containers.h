// Metadata: the containers of a TIFF structure. Each answers one question: where does the structure start?
#pragma once

#include "metadata/exif_info.h"
#include "metadata/stream_reader.h"
#include "tvmeta.h"

namespace tvmeta {

// The place of a TIFF header, at which the reader then stands, or the result with which getExifData ends.
struct TiffPlace {
    std::int32_t status;
    std::int32_t base;
};

// Looks for the EXIF segment, and for the XMP segment behind it: its lens name goes into the record, and its place too
// if the packet holds processing settings.
TiffPlace findTiffInJpeg(StreamReader& reader, ExifInfo& info) noexcept;

// The second pass over a JPEG, once the EXIF data has been read: looks into its Photoshop segment.
std::int32_t readPhotoshopSegment(StreamReader& reader, WorkBudget& budget, ExifInfo& info) noexcept;

TiffPlace findTiffInPsd(StreamReader& reader) noexcept;

} // namespace tvmeta
