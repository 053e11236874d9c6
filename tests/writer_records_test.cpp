// The records of the writers, from that of a photograph.
#include "testing/bytes.h"
#include "tvmeta_photo.h"

#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <tuple>
#include <vector>

using namespace test;

namespace {

// The smallest fraction means 0, which the writers would omit.
TEST(WriterRecords, OfPhotographs) {
    constexpr std::int32_t Max = INT32_MAX;
    using Words = std::vector<std::int32_t>;
    tvmeta_Photo photo{};
    photo.recordSize = sizeof photo;
    MetadataBuf metadata;
    GpsBuf gps;
    const auto convert = [&](int field, int other) {
        photo.present = std::uint64_t{1} << field | std::uint64_t{1} << other;
        std::memset(&metadata, 0xA5, sizeof metadata);
        std::memset(&gps, 0xA5, sizeof gps);
        const std::int64_t changed = tvmeta_writer_records(&photo, &metadata, &gps);
        EXPECT_EQ(changed & ~static_cast<std::int64_t>(photo.present), 0);
        return changed != 0;
    };
    const struct {
        tvmeta_Rational value;
        Words kept;
        bool isChanged;
    } fractions[] = {
        {{1, 125}, {1, 125}, false},
        {{2, 4}, {2, 4}, false},
        {{Max, 2}, {Max, 2}, false},
        {{2, Max}, {2, Max}, false},
        {{0, 1}, {0, 0}, false},
        {{1, 0}, {0, 0}, false},
        {{-1, 3}, {0, 0}, false},
        {{1, -3}, {0, 0}, false},
        {{Max + 1LL, 1024}, {2097152, 1}, false},
        {{Max + 1LL, 1}, {0, 0}, true},
        {{1, Max + 1LL}, {0, 0}, true},
        {{1024, Max + 1LL}, {1, 2097152}, false},
        {{4000000003, 12000000000}, {1, 3}, true},
    };
    for (const auto& row : fractions) {
        photo.exposureTime = photo.fNumber = photo.focalLength = row.value;
        for (const auto& [field, kept] : {std::pair{TVMETA_EXPOSURE_TIME, &metadata.exposureTime},
                                          {TVMETA_F_NUMBER, &metadata.fNumber},
                                          {TVMETA_FOCAL_LENGTH, &metadata.focalLength}}) {
            EXPECT_EQ(convert(field, field), row.isChanged) << row.value.numerator;
            EXPECT_EQ(Words(*kept, *kept + 2), row.kept) << row.value.numerator << '/' << row.value.denominator;
        }
        EXPECT_EQ(metadata.exposureTime[1], 0); // not present
    }
    const struct {
        std::int64_t seconds;
        const char* text;
        Words clock;
    } times[] = {
        {1718995267, "2024:06:21 18:41:07", {18, 1, 41, 1, 7, 1}},
        {-1, "1969:12:31 23:59:59", {23, 1, 59, 1, 59, 1}},
        {30, "1970:01:01 00:00:30", {1, 800, 0, 1, 51, 2}}, // 4.5 s and 25.5 s: the first number is above 0
        {45, "1970:01:01 00:00:45", {1, 80, 0, 1, 0, 1}},
        {-62135596800, "0001:01:01 00:00:00", {1, Max, 0, 1, 0, 1}},
        {253402300799, "9999:12:31 23:59:59", {23, 1, 59, 1, 59, 1}},
        {-62135596801, "", {0, 0, 0, 0, 0, 0}},
        {253402300800, "", {0, 0, 0, 0, 0, 0}},
    };
    for (const auto& row : times) {
        photo.captureTime = photo.gpsTime = row.seconds;
        EXPECT_EQ(convert(TVMETA_CAPTURE_TIME, TVMETA_GPS_TIME), row.text[0] == '\0') << row.seconds;
        EXPECT_STREQ(metadata.dateTimeOriginal, row.text);
        EXPECT_EQ(gps.dateStamp, Bytes(row.text).substr(0, 10));
        EXPECT_EQ(Words(gps.timeStamp, gps.timeStamp + 6), row.clock) << row.seconds;
    }
    const struct {
        double latitude, longitude;
        Words words; // of the latitude; none: no place
        const char* letters = "NE";
    } places[] = {
        {47.2692, 180, {47, 1, 16, 1, 228, 25}},
        {0.5, 180.01, {}},
        {90.01, 0, {}},
        {-90, -180, {90, 1, 0, 1, 0, 1}, "SW"},
        {0.5, std::nan(""), {}},
        {0, 0, {1, Max, 0, 1, 0, 1}},
        {0.5, 1, {1, 80, 29, 1, 15, 1}},
        {-0.001, 1, {1, 8000, 0, 1, 63, 20}, "SE"},
        {1.99999999999, 1, {1, 1, 59, 1, 60, 1}},
        {1, 1, {1, 1, 0, 1, 0, 1}},
    };
    for (const auto& row : places) {
        photo.latitude = row.latitude;
        photo.longitude = row.longitude;
        EXPECT_EQ(convert(TVMETA_LATITUDE, TVMETA_LONGITUDE), row.words.empty()) << row.latitude;
        EXPECT_EQ(Words(gps.latitude, gps.latitude + 6), row.words.empty() ? Words(6) : row.words) << row.latitude;
        EXPECT_EQ(gps.longitude[0] == 0, row.words.empty());
        EXPECT_EQ(Bytes({gps.latitudeRef, gps.longitudeRef}), row.words.empty() ? zeros(2) : row.letters);
        EXPECT_TRUE(convert(TVMETA_LATITUDE, TVMETA_LATITUDE));
        EXPECT_EQ(gps.latitudeRef, 0) << "without a longitude";
    }
    const struct {
        double metres;
        Words words;
        bool isChanged;
    } altitudes[] = {
        {574, {574, 1}, false},       {8848.86, {442443, 50}, false}, {-6.5, {13, 2}, false},
        {0.0004, {1, Max}, false},    {2e6, {2000000, 1}, false},     {-2000001, {2000000, 1}, true},
        {std::nan(""), {0, 0}, true}, {0, {1, Max}, false},
    };
    for (const auto& row : altitudes) {
        photo.altitude = row.metres;
        EXPECT_EQ(convert(TVMETA_ALTITUDE, TVMETA_ALTITUDE), row.isChanged) << row.metres;
        EXPECT_EQ(Words(gps.altitude, gps.altitude + 2), row.words) << row.metres;
        EXPECT_EQ(gps.altitudeRef, row.metres < 0 ? 1 : 0) << row.metres;
    }
    std::memset(photo.lens, 'l', 64);
    std::memset(photo.model, 'm', 63);
    photo.isoSpeed = 65536;
    photo.orientation = 6;
    photo.focalLength35mm = 52;
    EXPECT_TRUE(convert(TVMETA_LENS, TVMETA_ISO_SPEED));
    EXPECT_EQ(metadata.lens, Bytes(63, 'l'));
    EXPECT_EQ(std::tie(metadata.isoSpeed, metadata.orientation, metadata.focalLength35mm), std::tuple(65535, 6, 52));
    photo.isoSpeed = 65535;
    EXPECT_FALSE(convert(TVMETA_MODEL, TVMETA_ISO_SPEED));
    EXPECT_EQ(metadata.model, Bytes(63, 'm'));
    EXPECT_EQ(tvmeta_writer_records(nullptr, &metadata, &gps), TVMETA_BAD_ARGUMENT);
    EXPECT_EQ(tvmeta_writer_records(&photo, nullptr, &gps), TVMETA_BAD_ARGUMENT);
    EXPECT_EQ(tvmeta_writer_records(&photo, &metadata, nullptr), TVMETA_BAD_ARGUMENT);
    photo.recordSize -= 1;
    EXPECT_EQ(tvmeta_writer_records(&photo, &metadata, &gps), TVMETA_BAD_ARGUMENT);
}

} // namespace
