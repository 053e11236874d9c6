// ICC profiles inside photographs, which the library's record does not contain.
#pragma once

#include "system/files.h"

#include <cstdint>
#include <string>

// The profile of a photograph of that file type; empty if there is none. Throws Failure if it is incomplete.
Bytes readPhotoProfile(const std::string& path, int32_t fileType);
