// Photographs as written by a camera and by an image editor, with everything that the library reads.
#pragma once

#include "support/tiff_builder.h"

#include <tvmeta.h>

namespace bench {

struct Photograph {
    Bytes file;
    std::vector<Region> needed; // bytes that any reader of the metadata needs, in file order
    ExifInfo record;            // expected result
};

// EXIF data with a maker note and a thumbnail, Photoshop resources with another thumbnail, an XMP packet.
Photograph jpegPhotograph();

// Pixels first, then the directories.
Photograph tiffPhotograph();

// As large as the usual sRGB profile; the header is that of an RGB profile.
Bytes iccProfile();

} // namespace bench
