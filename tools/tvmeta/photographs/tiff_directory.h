// TIFF structures (TIFF 6.0, section 2), in TIFF files or inside JPEG and PSD files.
#pragma once

#include "system/files.h"

#include <cstdint>
#include <cstdio>
#include <optional>
#include <vector>

struct TiffEntry {
    int32_t tag = 0;
    int32_t type = 0;
    uint32_t count = 0;
    uint32_t value = 0;     // the number for one SHORT, else the four bytes
    int64_t valueField = 0; // file position of these four bytes
};

struct TiffDirectory {
    std::vector<TiffEntry> entries;
    uint32_t next = 0; // offset of the next directory; 0 after the last

    const TiffEntry* find(int32_t tag) const;
    std::optional<uint32_t> value(int32_t tag) const;
};

class TiffStructure {
  public:
    // The structure that starts at `base` of the file; empty if there is no TIFF header.
    static std::optional<TiffStructure> find(std::FILE* file, int64_t base);

    // The directory at an offset of the structure, as far as the file contains it.
    TiffDirectory directory(uint32_t offset) const;

    // Positions the file at an offset of the structure.
    void seek(uint32_t offset) const;

    // The region of the entry's value in the file.
    Region region(const TiffEntry& entry) const;

    std::FILE* file;
    int64_t base;
    int32_t order;
    uint32_t firstDirectory;
};
