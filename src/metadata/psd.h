// Metadata: Photoshop files.
#pragma once

#include "metadata/stream_reader.h"
#include "support/result.h"

#include <cstdint>

namespace tvmeta {

// Finds the TIFF structure in the EXIF resource, and moves to it. A failure is a result of getExifData.
Result<std::int32_t> findTiffInPsd(StreamReader& reader);

} // namespace tvmeta
