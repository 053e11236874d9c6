// Reading photographs: file types, containers, image directories.
#include "testing/files.h"
#include "testing/photographs.h"
#include "testing/system.h"
#include "tvmeta.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <gtest/gtest.h>
#include <tuple>

using namespace test;

namespace {

struct Reading {
    std::int32_t result;
    ExifInfo info;
};

Reading readBytes(const Bytes& bytes, std::int32_t fileType) {
    const TempDir dir;
    Reading reading;
    std::memset(&reading.info, 0xA5, sizeof reading.info);
    reading.result = getExifData(dir.write("photo", bytes).c_str(), fileType, &reading.info);
    return reading;
}

TEST(FileType, FirstBytes) {
    const struct {
        const char* what;
        Bytes bytes;
        std::int32_t type;
    } cases[] = {
        {"JPEG", jpeg(""), FILE_TYPE_JPEG},
        {"JPEG, cut after its marker", "\xFF\xD8", FILE_TYPE_JPEG},
        {"PSD", psd(""), FILE_TYPE_PSD},
        {"another marker", "\xFF\xD9", TVMETA_FILE_UNKNOWN},
        {"PSD, cut", "8BP", TVMETA_FILE_UNKNOWN},
        {"TIFF, little-endian", fullTiff(true), FILE_TYPE_TIFF},
        {"TIFF, big-endian", fullTiff(false), FILE_TYPE_TIFF},
        {"TIFF with the magic of the other byte order", Bytes("II\0*", 4), TVMETA_FILE_UNKNOWN},
        {"BigTIFF", Bytes("II+\0", 4), TVMETA_FILE_UNKNOWN},
        {"empty", "", TVMETA_FILE_UNKNOWN},
    };
    const TempDir dir;
    for (const auto& test : cases) {
        EXPECT_EQ(tvmeta_file_type(dir.write("photo", test.bytes).c_str()), test.type) << test.what;
    }
    EXPECT_EQ(tvmeta_file_type(dir.path("missing").c_str()), TVMETA_FILE_UNREADABLE);
    EXPECT_EQ(tvmeta_file_type(dir.path("").c_str()), TVMETA_FILE_UNREADABLE); // a directory
    EXPECT_EQ(tvmeta_file_type(nullptr), TVMETA_FILE_UNREADABLE);
}

TEST(Containers, Results) {
    const auto resourceHeader = [](const Bytes& name, std::int32_t size) {
        return "8BIM" + be16(1000) + name + be32(static_cast<std::uint32_t>(size));
    };
    const Bytes tiff = fullTiff(true);
    const Bytes exif = exifSegment(tiff);
    // Padded: a name of three characters occupies four bytes, seven bytes of data eight.
    const Bytes padded = resource(1036, Bytes(7, 'x'), "\3abc") + resource(1000, "");
    const Bytes fill(5, '\xFF');
    const struct {
        const char* what;
        std::int32_t fileType;
        Bytes bytes;
        std::int32_t result;
        const char* message;
    } cases[] = {
        {"no start of image", FILE_TYPE_JPEG, "\xFF\xD9", -1, ""},
        {"empty JPEG", FILE_TYPE_JPEG, "", -1, ""},
        {"no EXIF before the image", FILE_TYPE_JPEG, jpeg(segment(0xE0, "JFIF")), -2, ""},
        {"end of image before any EXIF", FILE_TYPE_JPEG, "\xFF\xD8\xFF\xD9" + exif, -2, ""},
        {"XMP before EXIF", FILE_TYPE_JPEG, jpeg(xmpSegment("x") + exif), -2, ""},
        {"fill bytes", FILE_TYPE_JPEG, "\xFF\xD8" + fill.substr(1) + exif, -1, "too many padding bytes\n"},
        {"ends at a marker", FILE_TYPE_JPEG, "\xFF\xD8" + segment(0xE0, "JFIF"), -1, "too many padding bytes\n"},
        {"four fill bytes", FILE_TYPE_JPEG, "\xFF\xD8\xFF\xFF\xFF" + exif + "\xFF\xD9", -10, ""},
        {"empty segment", FILE_TYPE_JPEG, jpeg(segment(0xE0, "") + exif), 1, ""},
        {"short segment", FILE_TYPE_JPEG, "\xFF\xD8\xFF\xE0" + be16(1), -1, "invalid marker\n"},
        {"short EXIF segment", FILE_TYPE_JPEG, "\xFF\xD8\xFF\xE1" + be16(1), -1, "invalid marker\n"},
        {"short segment before XMP", FILE_TYPE_JPEG, "\xFF\xD8" + exif + "\xFF\xE0" + be16(0), -1, "invalid marker\n"},
        {"fill bytes before XMP", FILE_TYPE_JPEG, "\xFF\xD8" + exif + fill + be16(0), -10, ""},
        {"stray byte after EXIF", FILE_TYPE_JPEG, "\xFF\xD8" + exif + "x\xDA", -10, ""},
        {"not EXIF", FILE_TYPE_JPEG, jpeg(segment(0xE1, "Exif\1\1" + Bytes("no TIFF"))), -2, ""},
        {"short APP13", FILE_TYPE_JPEG, "\xFF\xD8" + exif + "\xFF\xED" + be16(1), -1, "invalid marker\n"},
        {"short APP13 after XMP", FILE_TYPE_JPEG, "\xFF\xD8" + exif + xmpSegment("x") + "\xFF\xED" + be16(1), -1,
         "invalid marker\n"},
        {"padded resources", FILE_TYPE_PSD, psd(padded + resource(1058, tiff)), 1, ""},
        {"short PSD", FILE_TYPE_PSD, "8BP", -1, ""},
        {"wrong PSD signature", FILE_TYPE_PSD, tiff, -2, ""},
        {"PSD of two channels", FILE_TYPE_PSD, psd(resource(1058, tiff), 2), -3, ""},
        {"CMYK PSD", FILE_TYPE_PSD, psd(resource(1058, tiff), 4, 4), -3, ""},
        {"PSD without EXIF", FILE_TYPE_PSD, psd(resource(1028, "x")), -1, ""},
        {"PSD with another signature", FILE_TYPE_PSD, psd("8BIX" + resource(1058, tiff).substr(4)), -1, ""},
        {"PSD with EXIF after its resources", FILE_TYPE_PSD, psd(resource(1028, "x")) + resource(1058, tiff), -1, ""},
        {"PSD with a size of -1", FILE_TYPE_PSD, psd(resourceHeader(zeros(2), -1) + resource(1058, tiff)), 1, ""},
        {"PSD with a size that leads to itself", FILE_TYPE_PSD, psd(resourceHeader(zeros(2), -12)), -1, ""},
        {"PSD with a size that leads back", FILE_TYPE_PSD, psd(resourceHeader(zeros(2), -9999)), -1, ""},
        {"PSD with a size that leads into the name", FILE_TYPE_PSD,
         psd(resourceHeader("\x0Fx" + resourceHeader(zeros(2), 6) + "xx", -19) + resource(1058, tiff)), 1, ""},
        {"no byte-order mark", FILE_TYPE_TIFF, "IM" + tiff.substr(2), -2, ""},
        {"wrong magic number", FILE_TYPE_TIFF, "II" + le16(43) + le32(8), -3, ""},
        {"no directory", FILE_TYPE_TIFF, "II" + le16(42) + le32(0), 1, ""},
        {"directory past the end", FILE_TYPE_TIFF, "II" + le16(42) + le32(1000), 1, ""},
        {"negative directory", FILE_TYPE_TIFF, "II" + le16(42) + le32(0x80000000U), 1, ""},
        {"unknown types are read as TIFF", 77, "II" + le16(42) + le32(0), 1, ""},
    };
    for (const auto& test : cases) {
        testing::internal::CaptureStderr();
        EXPECT_EQ(readBytes(test.bytes, test.fileType).result, test.result) << test.what;
        EXPECT_EQ(testing::internal::GetCapturedStderr(), test.message) << test.what;
    }
}

TEST(Containers, RecordIsClearedOnFailure) {
    ExifInfo info;
    std::memset(&info, 0xA5, sizeof info);
    EXPECT_EQ(getExifData("/nonexistent/file", FILE_TYPE_TIFF, &info), -1);
    EXPECT_EQ(Bytes(reinterpret_cast<const char*>(&info), sizeof info), zeros(sizeof info));
    EXPECT_EQ(getExifData("/", FILE_TYPE_TIFF, &info),
              OpensDirectories ? -2 : -1); // a directory has no bytes
}

TEST(JpegXmp, IsSearchedInTenMarkers) {
    const Bytes exif = exifSegment(Tiff().finish(0));
    const Bytes lens = lensPacket("<aux:Lens>TV 35mm f/1.8</aux:Lens>");
    const Bytes settings = elementPacket("Fusion/Intensive", "");
    Bytes others;
    for (int i = 0; i < 9; ++i) {
        others += segment(0xE2, "ICC");
    }
    const struct {
        const char* what;
        Bytes segments;
        std::string lens;
        bool kept;
    } cases[] = {
        {"settings and lens", exif + xmpSegment(lens + settings), "TV 35mm f/1.8", true},
        {"lens alone", exif + xmpSegment(lens), "TV 35mm f/1.8", false},
        {"tenth marker", exif + others + xmpSegment(settings), "", true},
        {"eleventh marker", exif + others + segment(0xE2, "ICC") + xmpSegment(settings + lens), "", false},
        {"after another APP1", exif + segment(0xE1, "other") + xmpSegment(settings + lens), "", false},
        {"unknown method", exif + xmpSegment(elementPacket("Fusion/None", "")), "", false},
    };
    for (const auto& test : cases) {
        const Reading reading = readBytes(jpeg(test.segments), FILE_TYPE_JPEG);
        EXPECT_EQ(reading.result, 1) << test.what;
        EXPECT_EQ(reading.info.lens, test.lens) << test.what;
        EXPECT_EQ(reading.info.xmpLength > 0, test.kept) << test.what;
        EXPECT_EQ(reading.info.xmpOffset > 0, test.kept) << test.what;
    }
    const ExifInfo info = readBytes(jpeg(exif + xmpSegment(settings)), FILE_TYPE_JPEG).info;
    EXPECT_EQ(std::tie(info.xmpLength, info.xmpOffset), std::tuple(size32(settings) + 31, 2 + size32(exif) + 4 + 29));
    // The length field counts 31 bytes more than the packet. In a file that ends earlier, the packet is ignored.
    const Bytes cut = "\xFF\xD8" + exif + xmpSegment(settings) + zeros(30);
    EXPECT_EQ(readBytes(cut, FILE_TYPE_JPEG).info.xmpLength, 0);
}

// Hundredths are cut: 1/60 s has become a float.
TEST(Containers, RecordsForWriters) {
    const TempDir dir;
    MetadataBuf camera;
    GpsBuf place;
    ASSERT_EQ(get_exif_data(dir.write("photo", fullJpeg()).c_str(), FILE_TYPE_JPEG, &camera, &place), 100);
    std::array<std::int32_t, offsetof(MetadataBuf, model) / 4> numbers;
    std::memcpy(numbers.data(), &camera, sizeof numbers);
    EXPECT_EQ(numbers,
              (std::array{100, 5999, 279, 100, 400, 0, 5000, 100, 75, 500000, 100, 3, 903, 3, 919, 3, 6, 3000, 500}));
    EXPECT_STREQ(camera.model, "TV-100");
    EXPECT_STREQ(camera.dateTimeOriginal, "2013:05:01 12:00:00");
    EXPECT_STREQ(camera.lens, "TV 35mm f/1.8");
    std::array<std::int32_t, offsetof(GpsBuf, latitudeRef) / 4> position;
    std::memcpy(position.data(), &place, sizeof position);
    EXPECT_EQ(position, (std::array{48, 1, 51, 1, 2996, 100, 48, 1, 51, 1, 2996, 100, 35, 1, 12, 1, 30, 1, 0, 0}));
    EXPECT_EQ(std::tuple(place.latitudeRef, place.longitudeRef, place.altitudeRef), std::tuple('N', 'E', 1));
    EXPECT_STREQ(place.dateStamp, "2013:05:01");
}

TEST(ImageDirectories, ModelTexts) {
    const struct {
        const char* what;
        unsigned type;
        std::uint32_t count;
        Bytes value;
        Bytes model; // up to the terminator
    } cases[] = {
        {"two letters and a terminator", 2, 3, Bytes("X1\0", 3), "X1  "},
        {"three letters and a terminator", 2, 4, Bytes("X10\0", 4), "X10 "},
        {"one letter", 2, 2, Bytes("X\0", 2), "X"},
        {"unknown type counts single bytes", 99, 4, Bytes("X10\0", 4), "X10 "},
        {"a line feed ends it", 2, 12, Bytes("TV\n100\0\0\0\0\0\0", 12), "TV\n"},
        {"63 characters at most", 2, 100, Bytes(100, 'm'), Bytes(63, 'm')},
        {"two shorts are inline", 3, 2, "ABCD", "ABCD"},
        {"two longs are ignored", 4, 2, "ABCDEFGH", ""},
        {"three shorts are text of two characters", 3, 3, "ABCDEF", "AB"},
    };
    for (const auto& test : cases) {
        Tiff tiff;
        const Bytes file = tiff.finish(tiff.add({{272, test.type, test.count, test.value}}));
        EXPECT_EQ(readBytes(file, FILE_TYPE_TIFF).info.model, test.model) << test.what;
    }
    Tiff twice;
    const Bytes file = twice.finish(twice.add({{272, 2, 9, "old name"}, {272, 2, 9, "\nnew name"}}));
    EXPECT_STREQ(readBytes(file, FILE_TYPE_TIFF).info.model, "\n");
}

// The number of values of each type that fit in an entry. The others are at an offset past the end.
TEST(ImageDirectories, InlineCounts) {
    constexpr std::uint32_t Fit[] = {4, 4, 4, 2, 1, 0, 4, 4, 2, 1, 0, 1, 0, 0, 4};
    for (unsigned type = 0; type < std::size(Fit); ++type) {
        for (const std::uint32_t count : {1U, 2U, 4U, 5U}) {
            Tiff tiff;
            const Bytes file = tiff.finish(tiff.add({{272, type, count, "ABCD"}}));
            const bool isInline = readBytes(file, FILE_TYPE_TIFF).info.model[0] == 'A';
            EXPECT_EQ(isInline, count <= Fit[type]) << type << ' ' << count;
        }
    }
}

// Limits of the work for a file do not hide values after many entries, or in a large payload.
TEST(ImageDirectories, LateValues) {
    Tiff tiff;
    std::vector<Tiff::Entry> entries(60'000, tiff.shortEntry(40000, 1));
    entries.push_back(tiff.rationalEntry(33437, 28, 10));
    const Bytes payload = resource(1000, zeros(2'000'000)) + resource(0x0404, "IPTC");
    const std::uint32_t exif = tiff.add(entries);
    const Bytes file = tiff.finish(
        tiff.add({{34377, 1, static_cast<std::uint32_t>(payload.size()), payload}, tiff.longEntry(34665, exif)}));
    const ExifInfo info = readBytes(file, FILE_TYPE_TIFF).info;
    EXPECT_EQ(std::tuple(info.fNumber, info.iptcLength), std::tuple(2.8F, 4));
}

// A name in shorts does not reach the field of the next tag.
TEST(ImageDirectories, ModelIsNoOrientation) {
    Tiff tiff;
    const Bytes file = tiff.finish(tiff.add({{272, 3, 2, "AB"}}));
    EXPECT_EQ(readBytes(file, FILE_TYPE_TIFF).info.orientation, 0);
    const Bytes both = tiff.finish(tiff.add({tiff.shortEntry(274, 6), {272, 3, 2, "AB"}}));
    EXPECT_EQ(readBytes(both, FILE_TYPE_TIFF).info.orientation, 6);
}

// A short name in the second directory overwrites the first bytes of a long one.
TEST(ImageDirectories, SecondModel) {
    for (const auto& [count, value, model] :
         {std::tuple{4U, Bytes("X10\0", 4), "X10 "}, {2U, Bytes("X\0", 2), "X"}, {1U, Bytes("ABCD"), "ABCD00 long"}}) {
        Tiff tiff;
        const std::uint32_t second = tiff.add({{272, 2, count, value}});
        const Bytes file = tiff.finish(tiff.add({tiff.textEntry(272, "TV-100 long")}, second));
        EXPECT_STREQ(readBytes(file, FILE_TYPE_TIFF).info.model, model);
    }
}

TEST(ImageDirectories, IptcLengthByType) {
    for (const auto& [type, length] : {std::pair{7U, 25}, {4U, 100}, {1U, 0}}) {
        Tiff tiff;
        const Bytes file = tiff.finish(tiff.add({{33723, type, 25, tiff.n32(4000)}}));
        const ExifInfo info = readBytes(file, FILE_TYPE_TIFF).info;
        EXPECT_EQ(std::tie(info.iptcLength, info.iptcOffset), std::tuple(length, 4000)) << type;
    }
}

TEST(ImageDirectories, AtMostThreeAndNoneAfterOneOf255Entries) {
    Tiff tiff;
    const std::uint32_t fourth = tiff.add({tiff.shortEntry(274, 4)});
    const std::uint32_t third = tiff.add({tiff.shortEntry(274, 3)}, fourth);
    const std::uint32_t second = tiff.add({tiff.shortEntry(274, 2)}, third);
    EXPECT_EQ(readBytes(tiff.finish(tiff.add({}, second)), FILE_TYPE_TIFF).info.orientation, 3);
    std::vector<Tiff::Entry> entries(254, tiff.shortEntry(274, 5));
    entries.push_back(tiff.shortEntry(274, 8));
    const std::uint32_t last = tiff.add(entries, second);
    EXPECT_EQ(readBytes(tiff.finish(last), FILE_TYPE_TIFF).info.orientation, 8);
}

// The reader's windows are far apart, and it moves backwards between them.
TEST(ImageDirectories, FarPlaces) {
    const auto fileWith = [](const Bytes& entry) {
        Bytes file = "II" + le16(42) + le32(8) + le16(1) + le16(272) + le16(2) + le32(12) + le32(20000) + le32(8192);
        file.resize(25000);
        return file.replace(8192, 14, le16(1) + entry);
    };
    const Bytes rotated = fileWith(le16(274) + le16(3) + le32(1) + le32(6));
    EXPECT_EQ(readBytes(rotated, FILE_TYPE_TIFF).info.orientation, 6);
    Bytes file = fileWith(le16(33434) + le16(5) + le32(1) + le32(0));
    const Stream stream = streamOf(file);
    std::fseek(stream.get(), 8192, SEEK_SET);
    ExifInfo info{};
    parse_exif_data(stream.get(), 0, 0x4949, 0, &info);
    EXPECT_EQ(std::ftell(stream.get()), 8192 + 14); // after the directory, although its value is at the start
}

} // namespace
