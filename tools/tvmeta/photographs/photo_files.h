// The photographs of a command line: files and folders.
#pragma once

#include "base/failure.h"
#include "system/terminal.h"

#include <string>
#include <vector>

struct PhotoFile {
    std::string path;
    bool isNamed; // given on the command line; files found in folders need not be photographs
};

// Whether a file has the extension of a photograph.
bool hasPhotoName(const std::string& path);

// The named files, and all files of the named folders in natural order. Folders are searched if `recursive`, and
// refused otherwise. Links to folders are followed where they are named, not inside of folders, so that loops of links
// end. Inside of folders, the excluded one and those that an interrupted run of tvmeta has left are not searched.
// Folders that cannot be searched are reported.
std::vector<PhotoFile> findPhotoFiles(const std::vector<std::string>& names, bool recursive,
                                      const std::string& excludedFolder, Progress& progress, FileMessages& messages);
