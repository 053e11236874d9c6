// ICC profiles, in files or in photographs.
#pragma once

#include "pictures/picture.h"
#include "system/files.h"

#include <string>

// The profile of a file, a profile or a photograph, for the result of a picture. Throws Failure if there is none, or if
// it or the picture is not for RGB.
Bytes profileFor(const Picture& picture, const std::string& path);

// Whether a result can contain that profile of the picture's own: none, or one for RGB in an RGB picture.
bool canUse(const Bytes& profile, const Picture& picture);
