// Reads the photographs that a command line names, several at a time.
#pragma once

#include "photographs/photo.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

// How many files were read, and how many of them or of their folders could not be read whole.
struct Reading {
    size_t files = 0;
    size_t failures = 0;
    std::vector<std::string> problems = {}; // the messages about files
};

// Hands each photograph over, in the order of the names and within folders in natural order. Named files must be
// photographs; in folders, which are searched if `recursive` and refused otherwise, other files are passed over.
// A file that cannot be read whole gets a message. Memory does not grow with the number of photographs, but for
// their paths.
Reading readPhotos(const std::vector<std::string>& names, bool recursive, const std::function<void(Photo&&)>& take);

// Ends the command if a file could not be read whole, after its message.
void requireAllRead(const Reading& reading);

// Sorts by capture time, photographs without one last. Those of the same second are in natural order of their names.
void sortByCaptureTime(std::vector<Photo>& photos);
