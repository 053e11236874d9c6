// Reads the photographs of a command line, several in parallel.
#pragma once

#include "photographs/photo.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

// The number of files read, and of files and folders that could not be read completely.
struct Reading {
    size_t files = 0;
    size_t failures = 0;
    std::vector<std::string> problems = {}; // the messages about files
    std::vector<std::string> paths = {};    // of all files read
};

// Passes each photograph to the callback, in the order of the names and within folders in natural order. Named files
// must be photographs. Folders are searched if `recursive` and refused otherwise. Of other files in folders, those that
// are pictures or films of another kind, or have the name of a photograph, are counted in one message at the end.
// Prints a message for a file that cannot be read completely, at most ten of a kind and then a count. Memory does not
// grow with the number of photographs, except for their paths. A folder to exclude is not searched unless it is named.
Reading readPhotos(const std::vector<std::string>& names, bool recursive, const Wanted& wanted,
                   const std::function<void(Photo&&)>& take, const std::string& excludedFolder = "");

// Ends the command if a file could not be read completely.
void requireAllRead(const Reading& reading);

// Sorts by capture time, then by natural order of the names. Photographs without a time come last.
void sortByCaptureTime(std::vector<Photo>& photos);
