// Results with their losses, saved from photographs in memory.
#pragma once

#include "testing/files.h"
#include "tvmeta_photo.h"

#include <functional>
#include <ostream>

inline bool operator==(const tvmeta_Loss& a, const tvmeta_Loss& b) {
    return a.directory == b.directory && a.tag == b.tag && a.reason == b.reason;
}
inline std::ostream& operator<<(std::ostream& stream, const tvmeta_Loss& loss) {
    return stream << "{directory " << loss.directory << ", tag " << loss.tag << ", reason " << loss.reason << "}";
}

namespace test {

using Losses = std::vector<tvmeta_Loss>;
using Change = std::function<void(tvmeta_Result&)>;

// Entries of a photograph of 2 x 1 pixels, by directory.
struct PhotoParts {
    std::vector<Tiff::Entry> image, exif, gps, interoperability;
};

inline Bytes photoOf(PhotoParts parts, bool little = true) {
    Tiff tiff(little);
    if (!parts.interoperability.empty()) {
        parts.exif.push_back(tiff.longEntry(40965, tiff.add(parts.interoperability)));
    }
    if (!parts.exif.empty()) {
        parts.image.push_back(tiff.longEntry(34665, tiff.add(parts.exif)));
    }
    if (!parts.gps.empty()) {
        parts.image.push_back(tiff.longEntry(34853, tiff.add(parts.gps)));
    }
    parts.image.insert(parts.image.begin(), {tiff.shortEntry(256, 2), tiff.shortEntry(257, 1)});
    return tiff.finish(tiff.add(parts.image));
}

// A dataset of an IPTC block.
inline Bytes dataset(int record, int number, const Bytes& value) {
    return Bytes("\x1C") + static_cast<char>(record) + static_cast<char>(number) +
           be16(static_cast<unsigned>(value.size())) + value;
}

// A result of 2 x 1 gray pixels.
inline tvmeta_Result smallResult(const char* path, const tvmeta_Source* photo) {
    tvmeta_Result result{};
    result.recordSize = sizeof result;
    result.width = 2;
    result.height = 1;
    result.channels = 1;
    result.bitsCode = 8;
    result.orientation = 1;
    result.path = path;
    result.pixels = "\x10\x20";
    result.rowPitch = 2;
    result.photo = photo;
    return result;
}

struct Saved {
    std::int32_t status; // the number of losses
    Losses losses;
    Bytes file;
};

inline Saved save(
    const Bytes& photo, const Change& change = [](tvmeta_Result&) {}) {
    static const TempDir dir;
    const std::string path = dir.write("result.tif", "old");
    tvmeta_Source source;
    tvmeta_memory(photo.data(), static_cast<std::int64_t>(photo.size()), &source);
    tvmeta_Result result = smallResult(path.c_str(), photo.empty() ? nullptr : &source);
    change(result);
    Losses losses(1000);
    const std::int32_t status = tvmeta_save_tiff(&result, losses.data(), 1000);
    losses.resize(static_cast<std::size_t>(status > 0 ? status : 0));
    return {status, losses, readFile(path)};
}

inline Bytes buildExif(
    const Bytes& photo, const Change& change = [](tvmeta_Result&) {}) {
    tvmeta_Source source;
    tvmeta_memory(photo.data(), static_cast<std::int64_t>(photo.size()), &source);
    tvmeta_Result result = smallResult(nullptr, &source);
    change(result);
    const std::int64_t size = tvmeta_build_exif(&result, nullptr, 0, nullptr, 0, nullptr);
    Bytes block(static_cast<std::size_t>(size > 0 ? size : 0), '\xEE');
    return tvmeta_build_exif(&result, block.data(), size, nullptr, 0, nullptr) == size ? block : Bytes();
}

} // namespace test
