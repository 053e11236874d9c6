// One decoder per picture format. Each throws Failure if the file is damaged or not supported.
#pragma once

#include "pictures/picture.h"

#include <string>

#define PICTURE_FORMAT(start, name, decoder, package) Picture decoder(const std::string& path, Request request);
#include "pictures/formats.inc"
#undef PICTURE_FORMAT
