// The work that hostile files cause: bytes read, calls and memory.
#include "testing/files.h"
#include "testing/io_monitor.h"
#include "tvmeta.h"

#include <gtest/gtest.h>

using namespace test;

namespace {

// Bytes read, calls and memory stay within the documented bounds.
TEST(Bounds, HostileFiles) {
    const TempDir dir;
    const auto header = [](std::uint32_t first) { return "II" + le16(42) + le32(first); };
    // With a distance, the values are at more places than the reader has windows.
    const auto entries = [](unsigned count, unsigned tag, unsigned type, std::uint32_t items, std::uint32_t value,
                            std::uint32_t distance = 0) {
        Bytes bytes = le16(count);
        for (unsigned i = 0; i < count; ++i) {
            bytes += le16(tag) + le16(type) + le32(items) + le32(value + i % 11 * distance);
        }
        return bytes;
    };
    Bytes chain = header(8);
    for (std::uint32_t i = 0; i < 20'000; ++i) {
        chain += le16(1) + le16(1) + zeros(10) + le32(8 + 18 * ((i * 7919 + 1) % 20'000));
    }
    Bytes versions = packet("");
    while (versions.size() < 60'000) {
        versions += "<tvtm:Version> <tvtm:Versio";
    }
    const struct {
        const char* what;
        std::int32_t fileType;
        Bytes file;
        std::int64_t kibibytes; // upper limit: 1 per entry, plus the payloads
    } cases[] = {
        {"a directory that is its own EXIF directory", 0, header(8) + entries(65535, 34665, 4, 1, 8) + le32(8), 16'000},
        {"EXIF directories past the end", 0, header(8) + entries(65535, 34665, 4, 1, 1 << 30), 2'000},
        {"GPS values at both ends", 0, header(8) + entries(1, 34853, 4, 1, 26) + le32(0) + entries(60000, 2, 5, 3, 0),
         1'000},
        {"values in eleven places", 0, header(8) + entries(60000, 272, 2, 9, 0, 65000) + le32(0), 65'000},
        {"scattered EXIF directories", 0,
         header(8) + entries(174, 34665, 4, 1, 2102) + le32(0) + entries(6000, 33434, 5, 1, 0, 6700), 1'080'000},
        {"huge description", 0, header(8) + entries(500, 270, 2, INT32_MAX, 8), 40},
        {"huge resources", 0, header(8) + entries(500, 34377, 7, INT32_MAX, 8), 40},
        {"repeated descriptions", 0, header(8) + entries(65535, 270, 2, 600'000, 8), 67'000},
        {"repeated resources", 0, header(8) + entries(65535, 34377, 7, 600'000, 8), 67'000},
        {"repeated version tags", 1, jpeg(exifSegment(header(0)) + xmpSegment(versions)), 200},
        {"overlapping chain", 77, chain, 2'100},
    };
    for (const auto& test : cases) {
        const std::string path = dir.write("hostile", test.file);
        const auto size = static_cast<std::int64_t>(test.file.size());
        ExifInfo info;
        const Stream stream(std::fopen(path.c_str(), "rb"));
        std::int32_t count = 0;
        monitor = {};
        monitor.armed = true;
        getExifData(path.c_str(), test.fileType, &info);
        get_tif_tag(stream.get(), 34675, &count, &count);
        monitor.armed = false;
        EXPECT_LE(monitor.bytesRead, test.kibibytes * 1024) << test.what;
        EXPECT_LE(monitor.calls[Read] + monitor.calls[Seek], 1000 + 2 * test.kibibytes) << test.what;
        EXPECT_LE(monitor.peakBytes, size + (1 << 20)) << test.what;
    }
}

} // namespace
