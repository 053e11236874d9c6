// The ICC profiles inside photographs, for which the library's record has no place.
#pragma once

#include "output/files.h"

#include <cstdint>
#include <string>

// The profile of a photograph of that file type, empty if it holds none. Throws Failure when it is not whole.
Bytes readPhotoProfile(const std::string& path, int32_t fileType);
