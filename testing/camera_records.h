// The records of a camera and a place, and the TIFF directories that they are written to.
#pragma once

#include "testing/bytes.h"
#include "tvmeta.h"

#include <cstring>
#include <vector>

namespace test {

inline MetadataBuf camera() {
    MetadataBuf metadata = {{100, 6000}, {280, 100}, 70000, 0, {5000, 100}, 0, {}, 0, 0, 0, 0, 0, 0, 0, 0, "", "", ""};
    std::strcpy(metadata.model, "X10 TV");
    std::strcpy(metadata.dateTimeOriginal, "2013:05:01 12:00:00");
    return metadata;
}

inline GpsBuf position() {
    GpsBuf gps = {
        {48, 1, 51, 1, 2996, 100}, {2, 1, 21, 1, 7, 1}, {35, 1}, {0, 1, 30, 1, 0, 1}, 'N', 'E', 1, "2013:05:01"};
    return gps;
}

inline Bytes entry(unsigned tag, unsigned type, std::uint32_t count, const Bytes& value) {
    return le16(tag) + le16(type) + le32(count) + value + zeros(4 - value.size());
}

// The EXIF and GPS directories at offset `at`.
inline Bytes exifDirectory(std::uint32_t at) {
    const std::uint32_t values = at + 2 + 5 * 12 + 4;
    return le16(5) + entry(33434, 5, 1, le32(values)) + entry(33437, 5, 1, le32(values + 8)) +
           entry(34855, 3, 1, le16(4464)) + entry(36867, 2, 20, le32(values + 16)) +
           entry(37386, 5, 1, le32(values + 36)) + le32(0) + le32(100) + le32(6000) + le32(280) + le32(100) +
           Bytes("2013:05:01 12:00:00\0", 20) + le32(5000) + le32(100);
}
inline Bytes gpsDirectory(std::uint32_t at) { // a time stamp within the hour after midnight counts as absent
    const std::uint32_t values = at + 2 + 8 * 12 + 4;
    Bytes words;
    for (const std::uint32_t word : std::vector<std::uint32_t>{48, 1, 51, 1, 2996, 100, 2, 1, 21, 1, 7, 1, 35, 1}) {
        words += le32(word);
    }
    return le16(8) + entry(0, 1, 4, Bytes("\2\2\0\0", 4)) + entry(1, 2, 2, "N") + entry(2, 5, 3, le32(values)) +
           entry(3, 2, 2, "E") + entry(4, 5, 3, le32(values + 24)) + entry(5, 1, 1, "\1") +
           entry(6, 5, 1, le32(values + 48)) + entry(29, 2, 11, le32(values + 56)) + le32(0) + words +
           Bytes("2013:05:01\0", 11);
}

} // namespace test
