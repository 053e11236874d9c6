// Numbers of tags in TIFF and EXIF directories (TIFF 6.0; EXIF 2.3; XMP and ICC: their annexes on TIFF files).
#pragma once

#include <cstdint>

namespace tag {

enum Tag : int32_t {
    NewSubfileType = 254,
    ImageWidth = 256,
    ImageLength = 257,
    Model = 272,
    Orientation = 274,
    SubIfds = 330,
    ThumbnailOffset = 513,
    ThumbnailLength = 514,
    Xmp = 700,
    Iptc = 33723,
    PhotoshopResources = 34377,
    ExifDirectory = 34665,
    IccProfile = 34675,
    GpsDirectory = 34853,
    LensModel = 42036,
};

} // namespace tag
