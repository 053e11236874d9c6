// Photoshop's image resources (Photoshop file format), in PSD files and in the APP13 segments of JPEG files.
#pragma once

#include "system/files.h"

#include <cstdint>
#include <cstdio>

enum class PsdResource { Iptc = 1028, Thumbnail = 1036, Profile = 1039, Exif = 1058, Xmp = 1060 };

struct PsdHeader {
    int32_t width = 0;
    int32_t height = 0;
    Region resources;
};

PsdHeader readPsdHeader(std::FILE* file);

// The data of the first resource with that number; empty if there is none.
Region findResource(std::FILE* file, const Region& resources, PsdResource number);
