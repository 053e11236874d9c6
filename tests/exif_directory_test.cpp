// EXIF and GPS directories that are read from the caller's stream, and its numbers.
#include "testing/files.h"
#include "testing/photographs.h"
#include "tvmeta.h"

#include <cstring>
#include <gtest/gtest.h>
#include <tuple>

using namespace test;

namespace {

TEST(ExifDirectory, Fallbacks) {
    const Tiff tiff;
    const auto speed = [&](unsigned n, unsigned d) { return tiff.rationalEntry(37377, n, d); };
    const auto maxAperture = tiff.rationalEntry(37381, 5, 1);
    const auto index = [&](unsigned n, unsigned d) { return tiff.rationalEntry(41493, n, d); };
    const struct {
        const char* what;
        std::vector<Tiff::Entry> entries;
        float exposureTime, fNumber;
        std::int32_t isoSpeed;
    } cases[] = {
        {"shutter speed", {speed(6, 1)}, 0.015625F, 0, 0},
        {"exposure time wins", {speed(6, 1), tiff.rationalEntry(33434, 1, 60)}, 1.0F / 60.0F, 0, 0},
        {"shutter speed below 0", {speed(2, 0xFFFFFFFFU)}, 4.0F, 0, 0},
        {"shutter speed 0", {speed(0, 1)}, 0, 0, 0},
        {"shutter speed over 0", {speed(3, 0)}, 0.125F, 0, 0},
        {"aperture is not converted", {tiff.rationalEntry(37378, 5, 1)}, 0, 5.0F, 0},
        {"maximum aperture", {maxAperture}, 0, 5.0F, 0},
        {"f-number wins", {tiff.rationalEntry(33437, 4, 1), maxAperture}, 0, 4.0F, 0},
        {"exposure index", {index(400, 3)}, 0, 0, 133},
        {"exposure index over 0", {index(400, 0)}, 0, 0, 400},
        {"denominator of 0", {tiff.rationalEntry(33434, 1, 0)}, 0, 0, 0},
        {"denominators below 0", {tiff.rationalEntry(33437, 28, ~0U), index(400, ~0U)}, 0, 0, 400},
        {"the first of two ISO speeds", {{34855, 3, 2, le16(200) + le16(100)}}, 0, 0, 200},
        {"ISO wins", {tiff.shortEntry(34855, 200), index(400, 1)}, 0, 0, 200},
    };
    for (const auto& test : cases) {
        Tiff file;
        file.add(test.entries);
        Bytes bytes = file.finish(8) + "after";
        const Stream stream = streamOf(bytes);
        std::fseek(stream.get(), 8, SEEK_SET);
        ExifInfo info{};
        EXPECT_EQ(parse_exif_data(stream.get(), 0, 0x4949, 0, &info), 1) << test.what;
        EXPECT_EQ(std::tie(info.exposureTime, info.fNumber, info.isoSpeed),
                  std::tie(test.exposureTime, test.fNumber, test.isoSpeed))
            << test.what;
        EXPECT_EQ(std::ftell(stream.get()), static_cast<long>(8 + 2 + 12 * test.entries.size())) << test.what;
    }
}

// If an offset is before the start of the file, the bytes after the entry are read. Past the end of the file, the
// readers return their end-of-file values.
TEST(ExifDirectory, OffsetsOutsideTheFile) {
    Tiff tiff;
    tiff.add({{33434, 5, 1, tiff.n32(0x80000000U)}, {36867, 2, 20, tiff.n32(5000)}, {34855, 3, 1, tiff.n16(100)}});
    Bytes bytes = tiff.finish(8);
    const Stream stream = streamOf(bytes);
    std::fseek(stream.get(), 8, SEEK_SET);
    ExifInfo info{};
    std::strcpy(info.dateTimeOriginal, "before");
    parse_exif_data(stream.get(), 0, 0x4949, 0, &info);
    EXPECT_EQ(info.exposureTime, static_cast<float>(36867 + (2 << 16)) / 20.0F); // the next entry's first eight bytes
    EXPECT_STREQ(info.dateTimeOriginal, "before");
    EXPECT_EQ(info.isoSpeed, 100);
}

TEST(GpsDirectory, CountsAndTypes) {
    Tiff tiff(false);
    const Bytes rationals = tiff.rational(48, 1) + tiff.rational(51, 1);
    const std::uint32_t shortDate = tiff.add({{29, 2, 5, "2013:"}, {2, 3, 2, rationals}, {4, 3, 0, rationals}});
    tiff.add({{29, 2, 6, "2013:0"}});
    Bytes bytes = tiff.finish(shortDate);
    const Stream stream = streamOf(bytes);
    std::fseek(stream.get(), static_cast<long>(shortDate), SEEK_SET);
    ExifInfo info{};
    EXPECT_EQ(parse_gps_data(stream.get(), 0, 0x4D4D, 0, &info), 1);
    EXPECT_STREQ(info.gpsDateStamp, "");
    EXPECT_EQ(std::tie(info.gpsLatitude[0], info.gpsLatitude[2], info.gpsLongitude[0]), std::tuple(48U, 51U, 0U));
    std::fseek(stream.get(), 8 + 2 + 3 * 12 + 4 + 5 + 16 + 16, SEEK_SET);
    parse_gps_data(stream.get(), 0, 0x4D4D, 0, &info);
    EXPECT_STREQ(info.gpsDateStamp, "2013:");
}

TEST(ByteReaders, OrdersAndEndOfFile) {
    Bytes bytes("\x2A\x00\x00\x00\x04\x22\x80\x01\x02", 9);
    const Stream stream = streamOf(bytes);
    EXPECT_EQ(fgetmi2(stream.get(), 0x12344949), 42); // only the low 16 bits are used
    EXPECT_EQ(fgetm4(stream.get()), 1058);
    EXPECT_EQ(fgetmi4(stream.get(), 0x4949), 0x80 + 0x100 + 0x20000 - 0x1000000); // one byte short
    EXPECT_EQ(fgetmi4(stream.get(), 0x4949), static_cast<std::int32_t>(0xFEFEFEFFU));
    EXPECT_EQ(fgetm2(stream.get()), 0xFFFF);
    std::fseek(stream.get(), 8, SEEK_SET);
    EXPECT_EQ(fgetmi2(stream.get(), 0x4D4D), 0x02FF);
}

} // namespace
