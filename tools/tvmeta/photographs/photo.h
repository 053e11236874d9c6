// Source photographs: the library's record of one, and the blocks that the record points to.
#pragma once

#include "photographs/capture_time.h"
#include "photographs/photo_parts.h"
#include "system/files.h"

#include <tvmeta.h>

#include <cstring>
#include <optional>
#include <string>

struct Photo {
    std::string path;
    int32_t fileType = FILE_TYPE_TIFF;
    ExifInfo info = {};
    PhotoParts parts = {};
    std::optional<CivilTime> taken = {};
    std::string damage = {}; // description of the damage if only a part could be read
};

// The file type by the first bytes of a file, if it is a photograph.
std::optional<int32_t> findFileType(const std::string& path);

const char* containerName(int32_t fileType);

// Throw Failure if the file is not a photograph or cannot be read. From a damaged one, a part is read; readPhoto prints
// a warning.
Photo readRecord(const std::string& path);
Photo readPhoto(const std::string& path);

// The XMP packet; empty if there is none. Throws Failure if it is not at the recorded offset.
std::string readPacket(const Photo& photo);

// The IPTC block; empty if there is none. Throws Failure if it is not at the recorded offset.
Bytes readIptcBlock(const Photo& photo);

// Reads a text field of a library record, which has no terminator if it is full.
template <size_t N>
std::string fieldText(const char (&field)[N]) {
    return {field, strnlen(field, N)};
}
