// Small versions of JPEG pictures.
#pragma once

#include "system/files.h"

#include <cstdint>
#include <string>

// A JPEG file of the picture in an open JPEG file, whose longer side has less than twice `side` pixels, and at least
// `side` unless the picture is smaller. It contains no metadata and is not turned. Throws Failure with `name` if the
// picture is damaged, CMYK, or this build has no decoder for JPEG.
Bytes smallJpeg(File file, const std::string& name, int32_t side);
