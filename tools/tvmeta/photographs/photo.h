// Source photographs: the library's record of one, and the blocks that the record points to.
#pragma once

#include "output/files.h"
#include "photographs/capture_time.h"
#include "photographs/photo_parts.h"

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
    std::string damage = {}; // why only a part could be read: the file breaks off after its EXIF data
};

// The kind of photograph that the first bytes of a file announce, if any.
std::optional<int32_t> findFileType(const std::string& path);

const char* containerName(int32_t fileType);

// Throw Failure when the file is no photograph or cannot be read. A damaged one is taken as far as it goes, by
// readPhoto with a warning.
Photo readRecord(const std::string& path);
Photo readPhoto(const std::string& path);

// The XMP packet, empty when the record points to none. Throws Failure when it is not where it should be.
std::string readPacket(const Photo& photo);

// The IPTC block, empty when the photograph holds none. Throws Failure when it is not where it should be.
Bytes readIptcBlock(const Photo& photo);

// Text fields of the library's records need no terminator when they are full.
template <size_t N>
std::string fieldText(const char (&field)[N]) {
    return {field, strnlen(field, N)};
}
