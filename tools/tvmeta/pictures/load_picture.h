// Reads pictures of every supported format.
#pragma once

#include "pictures/picture.h"

#include <string>

// The picture of a file, recognised by its first bytes, with the samples as the file has them. Throws Failure when the
// file is damaged, of no supported format, or of one that this build cannot read.
Picture loadPicture(const std::string& path);

// Whether the file begins like a picture of such a format.
bool isPicture(const std::string& path);

// The ICC profile of a picture, empty if it has none.
Bytes pictureProfile(const std::string& path);
