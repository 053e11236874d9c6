#include "photographs/photo_profile.h"

#include "output/failure.h"
#include "photographs/psd_resources.h"

#include <tvmeta.h>

#include <cstdio>
#include <map>

namespace {

// Going beyond the end of the file is no error: nothing is found there.
void skip(std::FILE* file, long count) {
    std::fseek(file, count, SEEK_CUR);
}

// ITU-T T.81, annex B: a marker is 0xFF, more of them, and a code. 0 if there is none here.
int nextMarker(std::FILE* file) {
    if (std::fgetc(file) != 0xFF) {
        return 0;
    }
    int code = std::fgetc(file);
    while (code == 0xFF) {
        code = std::fgetc(file);
    }
    return code == EOF ? 0 : code;
}

// The pieces of a profile by their number, and the count that they announce.
struct Pieces {
    std::map<int, Bytes> byNumber;
    int count = 0;
};

// ICC.1, annex B.4: an identifier, the number of the piece and the count of pieces precede it.
void takePiece(const Bytes& segment, Pieces& pieces) {
    constexpr std::string_view Identifier("ICC_PROFILE\0", 12);
    constexpr size_t HeaderSize = Identifier.size() + 2;
    if (segment.size() > HeaderSize && asText(segment).starts_with(Identifier)) {
        pieces.count = segment[HeaderSize - 1];
        pieces.byNumber[segment[HeaderSize - 2]] = Bytes(segment.begin() + HeaderSize, segment.end());
    }
}

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

Bytes profileOfJpeg(const std::string& path, std::FILE* file) {
    constexpr int App2 = 0xE2;
    constexpr int StartOfScan = 0xDA;
    Pieces pieces;
    skip(file, 2);
    for (int marker = nextMarker(file); marker != 0 && marker != StartOfScan; marker = nextMarker(file)) {
        const int32_t length = fgetm2(file) - 2;
        if (length < 0) {
            break;
        }
        if (marker != App2) {
            skip(file, length);
            continue;
        }
        Bytes segment(static_cast<size_t>(length));
        segment.resize(std::fread(segment.data(), 1, segment.size(), file));
        takePiece(segment, pieces);
    }
    return joined(path, pieces);
}

// TIFF 6.0, section 2, in either byte order: the directories hang together by the offset at the end of each.
Bytes profileOfTiff(const std::string& path, std::FILE* file) {
    constexpr int32_t ProfileTag = 34675;
    constexpr int MostDirectories = 64; // a chain can come back on itself
    const int32_t order = fgetm2(file);
    skip(file, 2);
    for (int directory = 0; directory < MostDirectories; ++directory) {
        const int32_t offset = fgetmi4(file, order);
        if (offset <= 0 || std::fseek(file, offset, SEEK_SET) != 0) {
            break;
        }
        for (int entries = fgetmi2(file, order); entries > 0 && std::feof(file) == 0; --entries) {
            const int32_t tag = fgetmi2(file, order);
            skip(file, 2);
            const int32_t length = fgetmi4(file, order);
            const int32_t value = fgetmi4(file, order);
            if (tag == ProfileTag) {
                return readRegion(path, value, length);
            }
        }
    }
    return {};
}

Bytes profileOfPsd(const std::string& path, std::FILE* file) {
    constexpr int32_t ProfileResource = 1039;
    const Region region = findPsdResource(file, ProfileResource);
    return readRegion(path, region.offset, region.length);
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
