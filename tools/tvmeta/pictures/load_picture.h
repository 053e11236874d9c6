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

// The names of the formats, such as "PNG".
std::vector<std::string> pictureFormats();
