// Photographs such as a camera and an image editor leave them, with everything that the library reads.
#pragma once

#include "support/tiff_builder.h"

#include <tvmeta.h>

namespace bench {

struct Photograph {
    Bytes file;
    std::vector<Region> needed; // what any reader of the metadata must see, in the order of the file
    ExifInfo record;            // what the library must find
};

// Segments: EXIF data with a maker note and a thumbnail, Photoshop resources with another one, an XMP packet.
Photograph jpegPhotograph();

// Pixels first, the directories behind them.
Photograph tiffPhotograph();

// Of the size of the usual sRGB profile, and for RGB images by its header.
Bytes iccProfile();

} // namespace bench
