// Writers: the pixel strip of a TIFF result.
#pragma once

#include "support/result.h"
#include "writers/tiff_image.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace tvmeta {

// Writes the rows of the image. `rowPitch` is in bytes, or in 16-bit samples if the image takes high bytes. Returns the
// rows of the last block, or the result of buf2tif for the failure.
Result<std::int32_t> writePixels(std::FILE* stream, const void* pixels, std::ptrdiff_t rowPitch,
                                 const TiffImage& image);

} // namespace tvmeta
