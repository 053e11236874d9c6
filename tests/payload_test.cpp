// Payloads and single values: descriptions, Photoshop resources, profile names, IPTC blocks, tags, dates.
#include "testing/files.h"
#include "testing/system.h"
#include "tvmeta.h"

#include <cstdlib>
#include <cstring>
#include <ctime>
#include <gtest/gtest.h>
#include <tuple>

using namespace test;

namespace {

TEST(ImageDescription, Fields) {
    const Bytes lead = "a, b, c, d, e, f, g, ";
    const struct {
        const char* what;
        Bytes text;
        std::int32_t result;
        float exposureTime;
        std::int32_t isoSpeed;
        std::int32_t exposureSource;
    } cases[] = {
        {"well-formed", lead + "1/250s, R30, G30, B30", 30, 0.004F, 400, 2},
        {"colours in one field", lead + "1/250s, R30 G60 B0, ", 0, 0.004F, 400, 0},
        {"last colour 0", lead + "1/250s, R30, G30, B0", 0, 0.004F, 200, 0},
        {"no fraction", lead + "2s, R30, G29, B30", 30, 0, 200, 0},
        {"six separators", "a, b, c, d, e, f, g", 0, 0, 0, 0},
        {"a token can cross separators", lead + "1/60, R30, G30, B30", 30, 1.0F / 596.0F, 400, 2},
        {"starts after the last point", lead + "1.5/250s, R30, G30, B30", 30, 5.0F / 250.0F, 400, 2},
        {"after a numerator of 0 the next one is read", lead + "0/5s, R30, G30, B30", 30, 1.0F / 2.0F, 400, 2},
        {"token of seven", lead + "1/250s, R1234567, G30, B30", 0, 0, 0, 0},
        {"denominator of six", lead + "1/123456s, R30, G30, B30", 30, 1.0F / 123456.0F, 400, 2},
        {"one byte", "x", 0, 0, 0, 0},
        {"denominator of seven", lead + "1/1234567s, R30, G30, B30", 0, 0, 0, 0},
        {"second slash", lead + "1/2/3s, R30, G30, B30", 30, 1.0F / 193.0F, 400, 2}, // '/' is one below '0'
        {"no colours after B", lead + "1/250s, R30, B30, G30", 30, 0, 0, 0},
        {"largest numerator", lead + "99998/1s, R30, G30, B30", 30, 99998.0F, 400, 2},
        {"beyond it", lead + "99999/1s, R30, G30, B30", 30, 99999.0F, 400, 0},
        {"token of seven before the slash", lead + "1234567/1s, R30, G30, B30", 0, 0, 0, 0},
        {"last colour 1", lead + "1/250s, R30, G30, B1", 1, 0.004F, 200, 2},
        {"denominator below 0", lead + "1/-s, R30, G30, B30", 30, 0, 400, 0}, // '-' is three below '0'
        {"a fourth field of colours", lead + "1/250s, R30, G30, x, B30", 30, 0, 0, 0},
        {"zero byte ends it", lead + "1/250s, R30, G30, B3" + zeros(1) + "0", 3, 0.004F, 200, 2},
        {"ISO saturates", lead + "1/250s, R999, G999, B999", 999, 0.004F, INT32_MAX, 2},
    };
    for (const auto& test : cases) {
        Bytes text = test.text;
        const Stream stream = streamOf(text);
        ExifInfo info{};
        const auto size = size32(text);
        EXPECT_EQ(parse_image_description(stream.get(), size, &info), test.result) << test.what;
        EXPECT_EQ(info.exposureTime, test.exposureTime) << test.what;
        EXPECT_EQ(info.isoSpeed, test.isoSpeed) << test.what;
        EXPECT_EQ(info.exposureSource, test.exposureSource) << test.what;
        std::rewind(stream.get());
        EXPECT_EQ(parse_image_description(stream.get(), size + 1, &info), -1) << test.what;
        EXPECT_EQ(parse_image_description(stream.get(), 0, &info), -1) << test.what;
    }
}

TEST(Photoshop, LastThumbnailAndUnnamedIptcCount) {
    const Bytes thumbnail = be32(1) + be32(160) + be32(120) + be32(480) + be32(57600) + be32(5000) + be16(24) + be16(1);
    const Bytes named = resource(0x0404, "named", Bytes("\1x", 2));
    Bytes block = named + "8BIM" + resource(0x0404, "IPTC") + resource(0x040C, thumbnail);
    const Stream stream = streamOf(block);
    ExifInfo info{};
    EXPECT_EQ(parse_photoshop_data(stream.get(), size32(block) + 1000, &info), 5000);
    EXPECT_EQ(std::tie(info.iptcLength, info.iptcOffset), std::tuple(4, size32(named) + 4 + 12));
    EXPECT_EQ(std::tie(info.thumbnailWidth, info.thumbnailHeight, info.thumbnailRowBytes), std::tuple(160, 120, 480));
    EXPECT_EQ(std::tie(info.thumbnailLength, info.thumbnailOffset), std::tuple(5000, size32(block)));
    std::rewind(stream.get());
    EXPECT_EQ(parse_photoshop_data(stream.get(), 10, &info), 1);
    EXPECT_EQ(parse_photoshop_data(stream.get(), 0, &info), 1);
}

// Two zero bytes past the end of the file complete a header.
TEST(Photoshop, BytesPastTheEndAreZero) {
    const TempDir dir;
    for (const std::int32_t announced : {7, 8, INT32_MAX}) {
        const Stream stream(std::fopen(dir.write("block", "8BIM\x04\x04").c_str(), "rb"));
        ExifInfo info{};
        EXPECT_EQ(parse_photoshop_data(stream.get(), announced, &info), 1);
        EXPECT_EQ(info.iptcLength, announced == 7 ? 0 : static_cast<std::int32_t>(0xFEFEFEFFU));
        std::fseek(stream.get(), 100, SEEK_SET);
        EXPECT_EQ(parse_photoshop_data(stream.get(), announced, &info), 1);
    }
}

TEST(Photoshop, ResourcesInSegmentsAndTags) {
    const TempDir dir;
    const Bytes iptc = resource(0x0404, "IPTC");
    ExifInfo info;
    const Bytes exif = exifSegment(Tiff().finish(0)), name = Bytes("Photoshop 3.0\0", 14);
    const struct {
        Bytes segments;
        std::int32_t length;
    } photos[] = {{segment(0xED, name + iptc), 4},
                  {segment(0xED, name) + iptc, 4}, // the scan reaches 16 bytes past the segment
                  {segment(0xED, "Other") + segment(0xED, name + iptc), 0}}; // only the first APP13 segment is read
    for (const auto& [segments, length] : photos) {
        const Bytes photo = jpeg(exif + segments);
        EXPECT_EQ(getExifData(dir.write("a.jpg", photo).c_str(), FILE_TYPE_JPEG, &info), 1);
        EXPECT_EQ(info.iptcLength, length);
        EXPECT_TRUE(length == 0 || photo.substr(static_cast<std::size_t>(info.iptcOffset), 4) == "IPTC");
    }
    Tiff tiff;
    const Bytes file = tiff.finish(tiff.add({tiff.textEntry(270, "a, b, c, d, e, f, g, 1/250s, R30, G30, B30"),
                                             {34377, 1, static_cast<std::uint32_t>(iptc.size()), iptc}}));
    for (const std::int32_t fileType : {FILE_TYPE_TIFF + 0, 77}) {
        EXPECT_EQ(getExifData(dir.write("c.tif", file).c_str(), fileType, &info), 1);
        EXPECT_EQ(info.iptcLength, fileType == FILE_TYPE_TIFF ? 4 : 0);
        EXPECT_EQ(info.isoSpeed, fileType == FILE_TYPE_TIFF ? 400 : 0);
    }
}

TEST(ProfileName, FromDescription) {
    const auto profile = [](const Bytes& text) {
        return zeros(128) + "desc" + zeros(7) + static_cast<char>(text.size()) + text + zeros(20);
    };
    const struct {
        Bytes profile;
        std::int32_t result;
        Bytes name;
    } cases[] = {
        {profile("sRGB IEC61966-2.1"), 4, "sRGB"},
        {profile("Adobe RGB (1998)"), 9, "Adobe RGB"},
        {profile("My ProPhoto RGB"), 12, "ProPhoto RGB"},
        {profile("A colour space of no renown at all, really"), 32, "A colour space of no renown at a"},
        {zeros(48), -1, ""},
        {zeros(200), -1, ""},
        {zeros(31) + "desc" + zeros(40), -1, ""},                             // starts too early
        {zeros(32) + "desc" + zeros(7) + "\x05short", 32, "short"},           // ends with the profile
        {zeros(32) + "desc" + zeros(7) + "\1xsRGB" + zeros(27), 32, "xsRGB"}, // the name starts too late
        {zeros(32) + "desc" + zeros(7) + "\2xsRGB" + zeros(27), 4, "sRGB"},
        {zeros(33) + "desc" + zeros(7) + "\4late", -1, ""},
        {zeros(32) + "desc" + zeros(6) + "\1" + zeros(40), -1, ""}, // 256 characters and more
    };
    for (const auto& test : cases) {
        char name[32];
        std::memset(name, 0xA5, sizeof name);
        const auto* bytes = raw(test.profile);
        EXPECT_EQ(get_profile_name(size32(test.profile), bytes, name), test.result);
        EXPECT_EQ(Bytes(name, 32), test.name + zeros(32 - test.name.size()));
    }
}

TEST(ReadIptc, Regions) {
    const TempDir dir;
    const std::string path = dir.write("file", "ab\x1C\x02\x19xyz");
    const struct {
        std::int32_t count, offset, result;
        Bytes bytes;
    } cases[] = {
        {3, 2, 3, "\x1C\x02\x19"}, {6, 2, 0, ""}, // ends with the file
        {2, 0, -2, "ab"},          {INT32_MAX, 2, 0, ""}, {3, -2, 0, ""}, {0, 2, 0, ""}, {-1, 2, 0, ""},
    };
    for (const auto& test : cases) {
        unsigned char buffer[8] = {};
        EXPECT_EQ(read_iptc(path.c_str(), test.count, test.offset, buffer), test.result)
            << test.count << '@' << test.offset;
        EXPECT_EQ(std::memcmp(buffer, test.bytes.data(), test.bytes.size()), 0);
        EXPECT_EQ(buffer[test.bytes.size()], 0);
    }
    unsigned char buffer[1] = {0x1C};
    const std::string directory = dir.path("");
    for (const std::string& unreadable : {directory, dir.path("none"), dir.write("empty", "")}) {
        EXPECT_EQ(read_iptc(unreadable.c_str(), 1, 0, buffer), -1) << unreadable;
        EXPECT_EQ(read_iptc(unreadable.c_str(), 0, 0, nullptr), -1) << unreadable;
        EXPECT_EQ(read_iptc(unreadable.c_str(), -1, 0, nullptr), -1) << unreadable;
    }
    EXPECT_EQ(read_iptc(path.c_str(), 0, 0, nullptr), 0);
    EXPECT_EQ(read_iptc(path.c_str(), 1, 2, nullptr), -1);
}

TEST(TifTag, SearchesTheChainOfDirectories) {
    Tiff tiff;
    const std::uint32_t second = tiff.add({tiff.shortEntry(256, 7), {34675, 7, 99, tiff.n32(555)}});
    const std::uint32_t first = tiff.add({tiff.shortEntry(257, 9)}, second);
    const Bytes file = tiff.finish(first);
    Tiff looping;
    const std::uint32_t back = looping.add({looping.shortEntry(256, 1)}, 26); // 18 bytes on, each way
    const std::uint32_t forth = looping.add({looping.shortEntry(256, 1)}, back);
    const struct {
        const char* what;
        Bytes file;
        std::int32_t tag, result, count, value;
    } cases[] = {
        {"in the second", file, 34675, static_cast<std::int32_t>(second) + 14, 99, 555},
        {"short value", file, 257, static_cast<std::int32_t>(first) + 2, 1, 9},
        {"absent", file, 258, -1, 0, 0},
        {"out of range", file, -1, -1, 0, 0},
        {"cut in an entry", "II" + le16(42) + le32(8) + le16(2) + "\1", 65535, 21, -0x1010101, -0x1010101},
        {"a loop", looping.finish(forth), 258, -1, 0, 0},
        {"big-endian", Tiff(false).finish(8), 256, -2, 0, 0},
        {"no byte-order mark", "IM" + le16(42) + le32(8), 256, -2, 0, 0},
        {"wrong magic number", "II" + le16(43) + le32(8), 256, -2, 0, 0},
        {"empty directory", "II" + le16(42) + le32(8) + le16(0), 256, -2, 0, 0},
        {"no directory", "II" + le16(42) + le32(0), 256, -1, 0, 0},
        {"negative offset", "II" + le16(42) + le32(0x80000000U), 256, -3, 0, 0},
        {"past the end", "II" + le16(42) + le32(4000), 256, -3, 0, 0},
    };
    for (const auto& test : cases) {
        Bytes bytes = test.file;
        const Stream stream = streamOf(bytes);
        std::int32_t count = 0;
        std::int32_t value = 0;
        EXPECT_EQ(get_tif_tag(stream.get(), test.tag, &count, &value), test.result) << test.what;
        EXPECT_EQ(count, test.count) << test.what;
        EXPECT_EQ(value, test.value) << test.what;
    }
}

// A chain of one-entry directories. Only the last one has the tag.
TEST(TifTag, ManyDirectories) {
    constexpr std::uint32_t Size = 2 + 12 + 4;
    for (const auto& [directories, isFound] : {std::pair{65'536U, true}, {65'537U, false}}) {
        Bytes bytes = "II" + le16(42) + le32(8);
        for (std::uint32_t i = 1; i <= directories; ++i) {
            const bool isLast = i == directories;
            bytes += le16(1) + le16(isLast ? 34675 : 256) + le16(4) + le32(1) + le32(7);
            bytes += le32(isLast ? 0 : 8 + i * Size);
        }
        const Stream stream = streamOf(bytes);
        std::int32_t count = 0;
        std::int32_t value = 0;
        const auto last = static_cast<std::int32_t>(8 + (directories - 1) * Size + 2);
        EXPECT_EQ(get_tif_tag(stream.get(), 34675, &count, &value), isFound ? last : -1) << directories;
        EXPECT_EQ(value, isFound ? 7 : 0);
    }
}

TEST(TimeFromDatetime, UsesTheTimeZoneOfTheProcess) {
    const struct {
        const char* zone;
        const char* text;
        std::time_t time;
    } cases[] = {{"UTC0", "2013:05:01 12:34:56", 1367411696},
                 {"EST5", "2013:05:01 12:00:00", 1367427600},
                 {"CET-1CEST,M3.5.0,M10.5.0/3", "2013:05:01 12:00:00", 1367402400}, // summer time
                 {"CET-1CEST,M3.5.0,M10.5.0/3", "2013: 1:01\t12:00:0", 1357038000},
                 {"<+1245>-12:45", "2013:05:01 12:00:00", 1367363700},
                 {"<UTC>0", "1970:01:01 596524:00:-2147483648", 2752},
                 {"<UTC>0", "1970:01:01 00:00:2147483647", 2147483647},
                 {"UTC0", "1970:01:01 00:00:90", 90}}; // carries over
    for (const auto& test : cases) {
        if (!HasTimeZoneRules && std::strlen(test.zone) > 4) {
            continue;
        }
        setEnvironment("TZ", test.zone);
        float seconds = -1.0F;
        EXPECT_EQ(time_from_datetime(test.text, test.time + 3600, &seconds), 1) << test.text;
        EXPECT_EQ(seconds, 3600.0F) << test.zone;
    }
    float seconds = 7.0F;
    for (const char* text :
         {"", "2013-05-01 12:00:00", "2013:05:01 12:00", "2013:05:01T12:00:00", "2013:05:01 12:00:99999999999",
          "-2147483648:01:01 00:00:00", "2013:-2147483648:01 00:00:00"}) {
        EXPECT_EQ(time_from_datetime(text, 0, &seconds), -1) << text;
    }
    EXPECT_EQ(seconds, 7.0F);
}

} // namespace
