// The photographs that a command line names, by themselves or in folders.
#pragma once

#include "output/terminal.h"

#include <cstddef>
#include <string>
#include <vector>

struct PhotoFile {
    std::string path;
    bool isNamed; // by the command line; a file in a folder need not be a photograph
};

struct PhotoFiles {
    std::vector<PhotoFile> files;
    size_t failures = 0; // folders that could not be searched; each has got its message
};

// The named files, and all files of the named folders in natural order. Folders are searched if `recursive`, and
// refused otherwise. Links to folders are followed where they are named, not inside of folders, so that loops of links
// end.
PhotoFiles findPhotoFiles(const std::vector<std::string>& names, bool recursive, Progress& progress);
