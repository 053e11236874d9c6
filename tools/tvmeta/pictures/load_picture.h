// Reads pictures of every supported format.
#pragma once

#include "pictures/picture.h"

#include <string>
#include <vector>

// Reads the picture of a file, whose format is recognised by its first bytes, with unconverted samples. Throws Failure
// if the file is damaged or its format is not supported by this build.
Picture loadPicture(const std::string& path, Request request = {});

// Does the file start like a picture of a supported format?
bool isPicture(const std::string& path);

// A JPEG file of the picture in an open JPEG file, whose longer side has less than twice `side` pixels, and at least
// `side` unless the picture is smaller. It contains no metadata and is not turned. Throws Failure with `name` if the
// picture is damaged, CMYK, or this build has no decoder for JPEG.
Bytes smallJpeg(std::FILE* file, const std::string& name, int32_t side);

// The names of the formats, such as "PNG".
std::vector<std::string> pictureFormats();
