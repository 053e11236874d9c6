// One decoder per picture format. Each throws Failure if the file is damaged or not supported.
#pragma once

#include "pictures/picture.h"

#include <string>

#define PICTURE_FORMAT(start, name, decoder, package) Picture decoder(const std::string& path, Request request);
#include "pictures/formats.inc"
#undef PICTURE_FORMAT

// In builds with libjpeg-turbo:
// The samples of the picture in an open JPEG file at the smallest scale by eighths whose longer side has at least
// `side` pixels, if the picture has.
Picture readSmallJpeg(File file, const std::string& name, int32_t side);

// A JPEG file with the samples, 8 bits each, of a grey or RGB picture.
Bytes encodeJpeg(const Picture& picture);
