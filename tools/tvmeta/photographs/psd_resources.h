// The image resources of PSD files.
#pragma once

#include <cstdint>
#include <cstdio>

// A place in a file; the length is 0 for nothing.
struct Region {
    int32_t offset = 0;
    int32_t length = 0;
};

// Where the first resource of that number lies. The file stands at its start.
Region findPsdResource(std::FILE* file, int32_t number);
