// Metadata: the steps of getExifData: JPEG and Photoshop files, TIFF directories and the payloads in them. They fill
// the metadata record.
#pragma once

#include "metadata/stream_reader.h"
#include "metadata/tiff_reader.h"
#include "tvmeta.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string_view>

namespace tvmeta {

// A bound for the work that one call does for a file. Directories may overlap, refer to each other and declare 65,535
// entries each: a hostile file of 800 KB can require four billion entries, and the same payload again and again. A
// photograph has a few hundred entries and less than a megabyte of payloads.
struct WorkBudget {
    std::int32_t entries = 1 << 20;         // of EXIF and GPS directories; a larger directory is skipped
    std::int64_t payloadBytes = 64LL << 20; // of image descriptions and Photoshop resources; then no more is read

    bool takeEntries(std::int32_t count) {
        const bool isEnough = count <= entries;
        entries -= isEnough ? count : 0;
        return isEnough;
    }
    bool hasPayload() const { return payloadBytes > 0; }
    void takePayload(std::int64_t size) { payloadBytes -= size; }
};

// Read a file from its start. They return results of getExifData.
std::int32_t readJpeg(StreamReader& reader, WorkBudget& budget, ExifInfo& info);
std::int32_t readPsd(StreamReader& reader, WorkBudget& budget, ExifInfo& info);

// Walks the image directories from the TIFF header on, where the reader is. Returns a result of getExifData.
std::int32_t readImageDirectories(StreamReader& reader, std::int32_t tiffBase, std::int32_t fileType,
                                  WorkBudget& budget, ExifInfo& info);

// The reader is at the entry count of the directory, and afterwards at the end of the last entry that was read.
void readExifDirectory(const TiffReader& tiff, WorkBudget& budget, ExifInfo& info);
void readGpsDirectory(const TiffReader& tiff, WorkBudget& budget, ExifInfo& info);

// The reader is at a payload of `size` bytes. Return results of parse_image_description and parse_photoshop_data. A
// payload beyond the budget is skipped.
std::int32_t readImageDescription(StreamReader& reader, std::int32_t size, WorkBudget& budget, ExifInfo& info);
std::int32_t readPhotoshopResources(StreamReader& reader, std::int32_t size, WorkBudget& budget, ExifInfo& info);

// Clamps a declared size to what the file can contain, before memory is allocated for it. Small sizes are not worth the
// system call.
inline std::int64_t clampedSize(StreamReader& reader, std::int32_t declared) {
    constexpr std::int32_t MaxUnchecked = 1 << 16;
    return declared <= MaxUnchecked ? declared : std::min<std::int64_t>(declared, reader.remaining());
}

// Runs a parser on a stream of the caller, which is left where the parser stops.
template <typename Parse>
std::int32_t parseStream(std::FILE* stream, const ExifInfo* info, std::int32_t resultOfNull, Parse parse) {
    if (stream == nullptr || info == nullptr) {
        return resultOfNull;
    }
    BorrowedStreamReader reader(stream);
    WorkBudget budget;
    return parse(reader, budget);
}

// Exposure and colour values of a description, which a zero byte ends. Returns the last colour value.
std::int32_t parseDescription(std::string_view text, ExifInfo& info);

} // namespace tvmeta
