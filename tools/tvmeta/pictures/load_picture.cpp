#include "pictures/load_picture.h"

#include "base/failure.h"
#include "base/text.h"
#include "pictures/decoders.h"

#include <string_view>

namespace {

struct Format {
    std::string_view name;
    std::string_view start; // the first bytes of its files
    Decoder decoder;
};

constexpr Format Formats[] = {
    {"PNG", "\x89PNG", readPng},
    {"JPEG", "\xFF\xD8\xFF", readJpeg},
    {"TIFF", {"II*\0", 4}, readTiff},
    {"TIFF", {"MM\0*", 4}, readTiff},
    {"TIFF", {"II+\0", 4}, readTiff}, // BigTIFF
    {"TIFF", {"MM\0+", 4}, readTiff},
    {"OpenEXR", "\x76\x2F\x31\x01", readExr},
    {"Radiance HDR", "#?", readRadiance},
    {"PGM", "P5", readPnm},
    {"PPM", "P6", readPnm},
    {"PFM", "PF", readPnm},
    {"PFM", "Pf", readPnm},
};

const Format* findFormat(const Bytes& start) {
    for (const Format& format : Formats) {
        if (asText(start).starts_with(format.start)) {
            return &format;
        }
    }
    return nullptr;
}

Picture decode(const std::string& path, Part part) {
    const Bytes start = readStart(path, 4);
    const Format* const format = findFormat(start);
    if (format == nullptr) {
        throw Failure(path, "not a PNG, JPEG, TIFF, OpenEXR, Radiance HDR, PFM or binary PGM or PPM picture: " +
                                beginning(start));
    }
    if (format->decoder == nullptr) {
        throw Failure(path, "this build of tvmeta does not support " + std::string(format->name) + " pictures");
    }
    return format->decoder(path, part);
}

} // namespace

Picture loadPicture(const std::string& path) {
    return decode(path, Part::Everything);
}

bool isPicture(const std::string& path) {
    return findFormat(readStart(path, 4)) != nullptr;
}

Bytes pictureProfile(const std::string& path) {
    return decode(path, Part::Header).profile;
}
