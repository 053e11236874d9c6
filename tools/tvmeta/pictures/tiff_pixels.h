// The pixels of TIFF pictures.
#pragma once

#include "pictures/picture.h"

#include <tiffio.h>

#include <cstdint>
#include <string>

// The storage of the samples (TIFF 6.0).
struct TiffLayout {
    uint32_t width = 0;
    uint32_t height = 0;
    uint16_t samples = 1; // of a pixel, in the file
    uint16_t bits = 1;
    uint16_t format = SAMPLEFORMAT_UINT;
    uint16_t photometric = PHOTOMETRIC_MINISBLACK;
    uint16_t compression = COMPRESSION_NONE;
    bool isPlanar = false;
    bool isTiled = false;
};

template <typename Value>
Value tiffField(TIFF* tiff, uint32_t tag, Value otherwise) {
    TIFFGetFieldDefaulted(tiff, tag, &otherwise);
    return otherwise;
}

// Reads the samples that the picture keeps of each pixel, black as zero. Returns false if libtiff fails. Throws Failure
// for rows or tiles that the library cannot read.
bool readTiffPixels(const std::string& path, TIFF* tiff, const TiffLayout& layout, Picture& picture);
