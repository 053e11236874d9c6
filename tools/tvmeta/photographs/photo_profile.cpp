#include "photographs/photo_profile.h"

#include "output/failure.h"
#include "photographs/jpeg_segments.h"
#include "photographs/psd_resources.h"
#include "photographs/tags.h"
#include "photographs/tiff_directory.h"

#include <tvmeta.h>

#include <cstdio>
#include <map>
#include <optional>
#include <string_view>

namespace {

// The segments of a profile by number, and their declared count.
struct Pieces {
    std::map<int, Bytes> byNumber;
    int count = 0;
};

Bytes joined(const std::string& path, const Pieces& pieces) {
    Bytes profile;
    std::string numbers;
    bool isWhole = pieces.byNumber.size() == static_cast<size_t>(pieces.count);
    for (const auto& [number, bytes] : pieces.byNumber) {
        isWhole = isWhole && number >= 1 && number <= pieces.count;
        numbers += (numbers.empty() ? "" : ", ") + std::to_string(number);
        profile.insert(profile.end(), bytes.begin(), bytes.end());
    }
    if (!isWhole) {
        throw Failure(path,
                      "expected pieces 1 to " + std::to_string(pieces.count) + " of its ICC profile, found " + numbers);
    }
    return profile;
}

// ICC.1, annex B.4: an identifier, the number of the piece and the count of pieces precede it.
Bytes profileOfJpeg(const std::string& path, std::FILE* file) {
    Pieces pieces;
    for (const JpegSegment& segment : readJpegSegments(file)) {
        constexpr int64_t NumberSize = 2;
        const Region piece = afterIdentifier(file, segment, App2, std::string_view("ICC_PROFILE\0", 12));
        if (piece.length > NumberSize) {
            const int number = std::fgetc(file);
            pieces.count = std::fgetc(file);
            pieces.byNumber[number] = readRegion(path, {piece.offset + NumberSize, piece.length - NumberSize});
        }
    }
    return joined(path, pieces);
}

// Each directory ends with the offset of the next one.
Bytes profileOfTiff(const std::string& path, std::FILE* file) {
    constexpr int MaxDirectories = 64; // a chain can be a loop
    const std::optional<TiffStructure> tiff = TiffStructure::find(file, 0);
    uint32_t offset = tiff ? tiff->firstDirectory : 0;
    for (int count = 0; count < MaxDirectories && offset != 0; ++count) {
        const TiffDirectory directory = tiff->directory(offset);
        if (const TiffEntry* entry = directory.find(tag::IccProfile)) {
            return readRegion(path, tiff->region(*entry));
        }
        offset = directory.next;
    }
    return {};
}

Bytes profileOfPsd(const std::string& path, std::FILE* file) {
    return readRegion(path, findResource(file, readPsdHeader(file).resources, PsdResource::Profile));
}

} // namespace

Bytes readPhotoProfile(const std::string& path, int32_t fileType) {
    const File file = openFile(path);
    switch (fileType) {
    case FILE_TYPE_JPEG:
        return profileOfJpeg(path, file.get());
    case FILE_TYPE_PSD:
        return profileOfPsd(path, file.get());
    default:
        return profileOfTiff(path, file.get());
    }
}
