#include "photographs/jpeg_segments.h"

#include "system/system.h"

#include <tvmeta.h>

#include <string>

namespace {

// A marker is one or more bytes 0xFF and a code. Returns 0 if there is none here.
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

} // namespace

std::vector<JpegSegment> readJpegSegments(std::FILE* file) {
    constexpr size_t MaxSegments = 4096; // of up to 64 KiB: more than any file has before its image data
    constexpr int StartOfScan = 0xDA;
    std::vector<JpegSegment> segments;
    seekTo(file, 2);
    for (int marker = nextMarker(file); marker != 0 && marker != StartOfScan && segments.size() < MaxSegments;
         marker = nextMarker(file)) {
        const int32_t length = (fgetm2(file) & 0xFFFF) - 2;
        const int64_t offset = positionOf(file);
        if (length < 0 || std::feof(file) != 0 || !seekBy(file, length)) {
            break;
        }
        segments.push_back({marker, {offset, length}});
    }
    return segments;
}

Region afterIdentifier(std::FILE* file, const JpegSegment& segment, int marker, std::string_view identifier) {
    const auto size = static_cast<int64_t>(identifier.size());
    if (segment.marker != marker || segment.data.length < size) {
        return {};
    }
    std::string found(identifier.size(), '\0');
    seekTo(file, segment.data.offset);
    found.resize(std::fread(found.data(), 1, found.size(), file));
    return found == identifier ? Region{segment.data.offset + size, segment.data.length - size} : Region{};
}
