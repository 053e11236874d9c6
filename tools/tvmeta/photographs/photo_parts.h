// Positions of the parts of a photograph. The library's record contains them as stated in the file; here they are
// relative to the start of the file in every container.
#pragma once

#include "photographs/tiff_directory.h"

#include <cstdint>
#include <cstdio>
#include <optional>
#include <vector>

struct PhotoParts {
    int64_t width = 0; // pixels; 0 unknown
    int64_t height = 0;
    Region exif;                 // the TIFF structure; the file itself for TIFF
    Region xmp;                  // the packet
    bool hasExtendedXmp = false; // in JPEG segments of its own, beyond the 64 KiB of the first
    Region iptc;                 // the block
    Region thumbnail;            // a JPEG stream
    TiffDirectory image;
    TiffDirectory camera; // the EXIF directory
    TiffDirectory gps;
};

PhotoParts findParts(std::FILE* file, int32_t fileType);
