// The photographs that a command line names, by themselves or in folders.
#pragma once

#include "output/terminal.h"

#include <cstddef>
#include <string>
#include <vector>

struct PhotoFiles {
    std::vector<std::string> paths;
    size_t failures = 0; // files and folders that could not be looked into; each has got its message
};

// Named files are taken as they are. Folders are searched if `recursive`, and refused otherwise; in them only files
// that begin like a photograph are taken. Links to folders are followed where they are named, not inside of folders,
// so that loops of links end.
PhotoFiles findPhotoFiles(const std::vector<std::string>& names, bool recursive, Progress& progress);
