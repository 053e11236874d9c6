// Writing: the writers' records, directory sizes and EXIF blocks byte for byte.
#include "testing/camera_records.h"
#include "tvmeta.h"

#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <tuple>

using namespace test;

namespace {

struct Counts {
    std::int32_t exif, exifBytes, gps, gpsBytes, model, make, date, gpsDate, lens;
    char makeText[64];
    std::int32_t result;
};

Counts count(const MetadataBuf& metadata, const GpsBuf& gps) {
    Counts c;
    std::memset(&c, 0xA5, sizeof c);
    c.result = get_exif_count(&metadata, &c.exif, &c.exifBytes, &gps, &c.gps, &c.gpsBytes, &c.model, &c.make, &c.date,
                              &c.gpsDate, &c.lens, c.makeText);
    return c;
}

TEST(MetadataRecord, RationalsTruncateAndSaturate) {
    const struct {
        float value;
        std::int32_t numerator, denominator;
    } cases[] = {{0.004F, 100, 24999},   {1.0F / 60.0F, 100, 5999}, {2.8F, 279, 100},
                 {1.0F, 100, 100},       {0.5F, 100, 200},          {30.0F, 3000, 100},
                 {3e7F, INT32_MAX, 100}, {1e-9F, 100, INT32_MAX},   {0.0F, 7, 7},
                 {-1.0F, 7, 7},          {std::nanf(""), 7, 7},     {INFINITY, INT32_MAX, 100}};
    for (const auto& test : cases) {
        ExifInfo info{};
        info.exposureTime = test.value;
        std::memset(info.lens, 'l', sizeof info.lens);
        MetadataBuf metadata{};
        metadata.exposureTime[0] = metadata.exposureTime[1] = 7;
        GpsBuf gps{};
        EXPECT_EQ(metadataBufFromExifInfo(&info, &metadata, &gps), test.numerator) << test.value;
        EXPECT_EQ(metadata.exposureTime[1], test.denominator) << test.value;
        EXPECT_EQ(metadata.lens[63], 'l');
    }
}

TEST(MetadataRecord, EveryFieldIsCopied) {
    ExifInfo info = {2,  3,  4,   5,  6,   7,  8, 9,  "model", "date",       0,  0,  0,     10, 11, 12,
                     13, 14, 'S', {}, 'W', {}, 1, {}, {},      "2013:05:01", 15, 16, "lens"};
    for (std::uint32_t i = 0; i < 6; ++i) {
        info.gpsLatitude[i] = 20 + i;
        info.gpsLongitude[i] = 30 + i;
        info.gpsTimeStamp[i] = 40 + i;
        info.gpsAltitude[i % 2] = 50 + i % 2;
    }
    const MetadataBuf expected = {{300, 100}, {400, 100}, 5,  2,  {600, 100}, 7,  {800, 100}, 9,      11,
                                  10,         14,         13, 12, 16,         15, "model",    "date", "lens"};
    const std::int32_t place[] = {20, 21, 22, 23, 24, 25, 30, 31, 32, 33, 34, 35, 50, 51, 40, 41, 42, 43, 44, 45};
    MetadataBuf metadata{};
    GpsBuf gps{};
    metadataBufFromExifInfo(&info, &metadata, &gps);
    EXPECT_EQ(std::memcmp(&metadata, &expected, sizeof expected), 0);
    EXPECT_EQ(std::memcmp(&gps, place, sizeof place), 0);
    EXPECT_EQ(std::tie(gps.latitudeRef, gps.longitudeRef, gps.altitudeRef), std::tuple('S', 'W', 1));
    EXPECT_STREQ(gps.dateStamp, "2013:05:01");
}

TEST(ExifCount, TextsAndMakes) {
    const struct {
        Bytes make;
        std::vector<const char*> models;
    } cases[] = {
        {"NIKON CORPORATION", {"NIKON D800"}},
        {"Canon", {"Canon EOS 5D"}},
        {"FUJIFILM", {"X10 more", "FinePix X100", "FUJIFILM"}},
        {"OLYMPUS", {"E-M5", "E-1", "E-20", "E-300", "E-420", "E-510", "E-620", "E-7", "E-PL5"}},
        {"OLYMPUS", {"SP350", "SP550UZ", "OLYMPUS"}},
        {"Panasonic", {"Panasonic", "DMC-GH3"}},
        {"SONY", {"SLT-A99", "SONY DSC", "NEX-7", "DSLR-A900"}},
        {"PENTAX", {"PENTAX K-5"}},
        {"", {"X10", "E-", "", "canon", "E-8", "SP450"}},
    };
    for (const auto& [make, models] : cases) {
        for (const char* const model : models) {
            MetadataBuf metadata{};
            std::strcpy(metadata.model, model);
            const Counts counts = count(metadata, GpsBuf{});
            EXPECT_EQ(Bytes(counts.makeText, 64), make + zeros(64 - make.size())) << model;
            EXPECT_EQ(counts.make, make.empty() ? 0 : size32(make) + 1) << model;
        }
    }
    MetadataBuf full;
    std::memset(&full, 'x', sizeof full);
    GpsBuf reference{};
    reference.latitudeRef = 'N';
    reference.longitudeRef = '\x80'; // not a letter: counts as absent
    const Counts counts = count(full, reference);
    EXPECT_EQ(std::tie(counts.model, counts.lens, counts.date), std::tuple(63, 63, 21));
    EXPECT_EQ(std::tie(counts.exif, counts.exifBytes, counts.gps, counts.gpsBytes, counts.result),
              std::tuple(5, 3 * 8 + 21, 2, 0, 7));
    full.exposureTime[1] = 0;
    full.focalLength[1] = -1;
    EXPECT_EQ(count(full, reference).exif, 3); // denominators of 0 and below count as absent
}

TEST(ExifBlock, IsATiffStructure) {
    const MetadataBuf metadata = camera();
    const GpsBuf gps = position();
    const Counts c = count(metadata, gps);
    const auto write = [&](std::int32_t orientation, Bytes& block) {
        return write_exif_buf(c.exif, c.exifBytes, c.gps, c.gpsBytes, c.model, c.make, c.date, c.gpsDate, orientation,
                              &metadata, &gps, c.makeText, raw(block));
    };
    const std::uint32_t exif = 14 + 5 * 12 + 9 + 7;
    const Bytes exifBytes = exifDirectory(exif);
    const std::uint32_t gpsOffset = exif + static_cast<std::uint32_t>(exifBytes.size());
    const Bytes expected = "II" + le16(42) + le32(8) + le16(5) + entry(271, 2, 9, le32(74)) +
                           entry(272, 2, 7, le32(83)) + entry(274, 3, 1, le16(6)) + entry(34665, 4, 1, le32(exif)) +
                           entry(34853, 4, 1, le32(gpsOffset)) + le32(0) + Bytes("FUJIFILM\0X10 TV\0", 16) + exifBytes +
                           gpsDirectory(gpsOffset);
    Bytes block = zeros(expected.size()) + "!";
    EXPECT_EQ(write(6, block), size32(expected));
    EXPECT_EQ(block, expected + "!");
    EXPECT_EQ(write_exif_buf(0, 9, 0, 9, 0, 0, 9, 9, 1, &metadata, &gps, c.makeText, raw(block)), -1);
    // Counts smaller than the records: nothing is written past the size that they define.
    Bytes small = zeros(14 + 3 * 12 + 2 + 12 + 4) + Bytes(99, '!');
    EXPECT_EQ(write_exif_buf(0, 0, 1, 0, 4, 0, 0, 0, 9, &metadata, &gps, c.makeText, raw(small)), size32(small) - 99);
    EXPECT_EQ(small.substr(small.size() - 103), le32(0) + Bytes(99, '!'));
}

TEST(ExifBlock, WithoutDate) {
    MetadataBuf metadata = {};
    metadata.focalLength[0] = metadata.focalLength[1] = 7;
    const GpsBuf gps = {};
    const Bytes expected = "II" + le16(42) + le32(8) + le16(2) + entry(274, 3, 1, le16(1)) +
                           entry(34665, 4, 1, le32(38)) + le32(0) + le16(1) + entry(37386, 5, 1, le32(56)) + le32(0) +
                           le32(7) + le32(7);
    Bytes block = zeros(expected.size());
    EXPECT_EQ(write_exif_buf(1, 8, 0, 0, 0, 0, 0, 0, 1, &metadata, &gps, zeros(64).c_str(), raw(block)),
              size32(expected));
    EXPECT_EQ(block, expected);
    EXPECT_EQ(write_exif_buf(0, 0, 0, 0, 0, 4, 0, 0, 1, &metadata, &gps, zeros(64).c_str(), raw(block)), 38);
}

} // namespace
