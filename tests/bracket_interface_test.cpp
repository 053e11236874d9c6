// The functions for exposure brackets: records, sizes, arguments, any numbers, speed.
#include "testing/shoots.h"
#include "tvmeta_photo.h"

#include <cmath>
#include <cstring>
#include <ctime>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

using namespace test;

namespace {

TEST(Brackets, MakesRecords) {
    const auto photo = std::make_unique<tvmeta_Photo>();
    photo->recordSize = sizeof *photo;
    photo->format = TVMETA_FORMAT_RAF;
    photo->present = bit(TVMETA_EXPOSURE_BIAS) | bit(TVMETA_MAKE);
    std::strcpy(photo->make, "NIKON CORPORATION");
    std::strcpy(photo->serialNumber, "4711");
    photo->exposureTime = {1, 64};
    photo->fNumber = {8, 0};
    photo->exposureBias = {-2, 3};
    photo->isoSpeed = 200;
    photo->captureTime = 77;
    photo->captureNanoseconds = 5;
    photo->utcOffset = 60;
    photo->focalLength = {35, 1};
    photo->exposureMode = 2;
    photo->width = 6;
    photo->height = 4;
    photo->orientation = 8;
    tvmeta_Shot shot = {}, other = {};
    shot.recordSize = other.recordSize = sizeof shot;
    ASSERT_EQ(tvmeta_shot(photo.get(), "folder", "name", &shot), TVMETA_OK);
    EXPECT_EQ(shot.format, TVMETA_FORMAT_RAF);
    EXPECT_EQ(shot.present, photo->present);
    EXPECT_STREQ(shot.folder, "folder");
    EXPECT_STREQ(shot.name, "name");
    EXPECT_EQ(shot.captureTime, 77);
    EXPECT_EQ(shot.captureNanoseconds, 5);
    EXPECT_EQ(
        std::tuple(shot.utcOffset, shot.focalLength, shot.exposureMode, shot.width, shot.height, shot.orientation),
        std::tuple(60, 35.0F, 2, 6, 4, 8));
    EXPECT_EQ(shot.exposureTime, 1 / 64.0F);
    EXPECT_EQ(shot.fNumber, 0);
    EXPECT_FLOAT_EQ(shot.exposureBias, -2 / 3.0F);
    EXPECT_EQ(shot.isoSpeed, 200);
    EXPECT_EQ(shot.hidesBrackets, 1);

    std::strcpy(photo->make, "NIKO");
    std::strcpy(photo->model, "N CORPORATION"); // the texts joined are the same
    ASSERT_EQ(tvmeta_shot(photo.get(), nullptr, nullptr, &other), TVMETA_OK);
    EXPECT_NE(other.camera, shot.camera);
    EXPECT_EQ(other.serialNumber, shot.serialNumber);
    EXPECT_EQ(other.hidesBrackets, 0);
    std::memset(photo->serialNumber, 'x', sizeof photo->serialNumber); // not terminated
    for (const auto& [make, hidesBrackets] : {std::pair{"FUJIFILM", 0}, {"Nikon", 1}}) {
        std::strcpy(photo->make, make);
        EXPECT_EQ(tvmeta_shot(photo.get(), nullptr, nullptr, &other), TVMETA_OK);
        EXPECT_EQ(other.hidesBrackets, hidesBrackets) << make;
    }

    other.recordSize = 8; // a caller that knows two members
    other.camera = 99;
    EXPECT_EQ(tvmeta_shot(photo.get(), "", "", &other), TVMETA_OK);
    EXPECT_EQ(other.camera, 99U);
    other.recordSize = 3;
    EXPECT_EQ(tvmeta_shot(photo.get(), "", "", &other), TVMETA_BAD_ARGUMENT);
    EXPECT_EQ(tvmeta_shot(nullptr, "", "", &shot), TVMETA_BAD_ARGUMENT);
    EXPECT_EQ(tvmeta_shot(photo.get(), "", "", nullptr), TVMETA_BAD_ARGUMENT);
}

// Callers that were built for a smaller or a larger record.
TEST(Brackets, HonoursRecordSizes) {
    struct LargerShot {
        tvmeta_Shot shot;
        char more[24];
    };
    const Shoot shoot = Photographer().take("bracket bias fine 0 .5s -2 .5s 2");
    std::vector<LargerShot> larger;
    for (const tvmeta_Shot& shot : shoot.shots) {
        larger.push_back({shot, {}});
        larger.back().shot.recordSize = sizeof(LargerShot);
    }
    tvmeta_BracketMember members[3];
    struct SmallerSet {
        uint32_t recordSize;
        int32_t confidence;
        int64_t shots;
    } sets[3] = {{sizeof(SmallerSet), 0, 0}, {1, 2, 3}, {}};
    auto* const setRecords = reinterpret_cast<tvmeta_BracketSet*>(sets);
    const tvmeta_BracketOptions countAlone = {8, 0, 0};
    EXPECT_EQ(tvmeta_find_brackets(&larger[0].shot, 3, &countAlone, members, setRecords), 1);
    EXPECT_EQ(sets[0].shots, 3);
    EXPECT_EQ(sets[1].shots, 3) << "written beyond the record";

    const uint32_t withoutMode = offsetof(tvmeta_Shot, exposureMode);
    std::vector<unsigned char> bytes(3 * withoutMode);
    for (size_t i = 0; i < 3; ++i) {
        std::memcpy(&bytes[i * withoutMode], &shoot.shots[i], withoutMode);
        std::memcpy(&bytes[i * withoutMode], &withoutMode, sizeof withoutMode);
    }
    const auto* const smaller = reinterpret_cast<const tvmeta_Shot*>(bytes.data());
    EXPECT_EQ(tvmeta_find_brackets(smaller, 3, nullptr, members, setRecords), 1);
    EXPECT_EQ(sets[0].confidence, TVMETA_BY_GUESS);
}

TEST(Brackets, RefusesArguments) {
    Shoot shoot = Photographer().take("0 -2 2");
    const tvmeta_Shot* const shots = shoot.shots.data();
    tvmeta_BracketMember members[3];
    tvmeta_BracketSet sets[3] = {{sizeof(tvmeta_BracketSet), 0, 0, 0, 0, 0, 0}, {}, {}};
    tvmeta_BracketOptions options = {2, 0, 0};
    EXPECT_EQ(tvmeta_find_brackets(nullptr, 0, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(tvmeta_find_brackets(nullptr, 3, nullptr, members, sets), TVMETA_BAD_ARGUMENT);
    EXPECT_EQ(tvmeta_find_brackets(shots, -1, nullptr, members, sets), TVMETA_BAD_ARGUMENT);
    EXPECT_EQ(tvmeta_find_brackets(shots, 3, nullptr, nullptr, sets), TVMETA_BAD_ARGUMENT);
    EXPECT_EQ(tvmeta_find_brackets(shots, 3, nullptr, members, nullptr), TVMETA_BAD_ARGUMENT);
    EXPECT_EQ(tvmeta_find_brackets(shots, 3, &options, members, sets), TVMETA_BAD_ARGUMENT);
    EXPECT_EQ(tvmeta_find_brackets(shots, std::numeric_limits<int64_t>::max(), nullptr, members, sets),
              TVMETA_NO_MEMORY);
    sets[0].recordSize = 0;
    EXPECT_EQ(tvmeta_find_brackets(shots, 3, nullptr, members, sets), TVMETA_BAD_ARGUMENT);
    shoot.shots[0].recordSize = 0;
    EXPECT_EQ(tvmeta_find_brackets(shots, 3, nullptr, members, sets), TVMETA_BAD_ARGUMENT);
}

// Any numbers: each photograph is in one set at most, and its place is its own.
TEST(Brackets, AcceptsAnyNumbers) {
    uint32_t state = 1;
    const auto random = [&](uint32_t limit) { return (state = state * 1664525 + 1013904223) >> 8 & (limit - 1); };
    const float numbers[] = {0, -1,  1, 2,  0.5F, 1e38F, 1e-38F, HUGE_VALF, -HUGE_VALF, std::nanf(""),
                             8, 100, 4, 16, 3,    7};
    const char* const names[] = {nullptr,          "",  "IMG_1.jpg", "IMG_9999.jpg",
                                 "99999999999999", ".", "a1.b",      "IMG_1-x.CR2"};
    const char* const folders[] = {nullptr, "", "/", "100CANON", "x/101CANON", "x\\999_____", "12345678", "x/"};
    const int64_t times[] = {0,  1, 2, std::numeric_limits<int64_t>::min(), std::numeric_limits<int64_t>::max(),
                             -5, 9, 30};
    const double gaps[] = {-1, 0, 2, 1e300, HUGE_VAL, -HUGE_VAL, std::nan(""), 60};
    for (int round = 0; round < 2000; ++round) {
        std::vector<tvmeta_Shot> shots(1 + random(64));
        for (tvmeta_Shot& s : shots) {
            s = {};
            s.recordSize = sizeof s;
            s.folder = folders[random(8)];
            s.name = names[random(8)];
            s.present = random(8) > 0 ? ~uint64_t{0} : random(1 << 20);
            s.captureTime = times[random(8)];
            for (int32_t* const field : {&s.captureNanoseconds, &s.utcOffset}) {
                *field = static_cast<int32_t>(random(1 << 24) << 8);
            }
            for (float* const field : {&s.exposureTime, &s.fNumber, &s.exposureBias, &s.isoSpeed, &s.focalLength}) {
                *field = numbers[random(16)];
            }
            s.exposureMode = static_cast<int32_t>(random(4));
            s.hidesBrackets = static_cast<int32_t>(random(2));
        }
        const Brackets found = find(shots, {static_cast<int32_t>(random(8)) - 3, gaps[random(8)]});
        std::vector<int64_t> sizes(found.sets.size());
        for (size_t i = 0; i < shots.size(); ++i) {
            const tvmeta_BracketMember& member = found.members[i];
            ASSERT_TRUE(member.leader >= 0 && member.leader < static_cast<int64_t>(shots.size()));
            ASSERT_LT(member.set, static_cast<int64_t>(found.sets.size()));
            ASSERT_FALSE(std::isnan(member.offset));
            if (member.set >= 0 && member.leader == static_cast<int64_t>(i)) {
                ASSERT_LT(member.place, found.sets[static_cast<size_t>(member.set)].shots);
                ++sizes[static_cast<size_t>(member.set)];
            }
        }
        for (size_t i = 0; i < sizes.size(); ++i) {
            ASSERT_EQ(sizes[i], found.sets[i].shots);
            ASSERT_GE(sizes[i], 2);
        }
    }
}

// The worst input for the pattern search: a run that is similar to itself at every offset.
TEST(Brackets, GroupsManyPhotographsQuickly) {
    std::string uniform, parts, day;
    for (int i = 0; i < 20000; ++i) {
        uniform += "0 ";
        parts += i % 97 == 0 ? "0 -2 " : "-2 ";
        day += "bracket bias fine 0 -2 2 9s ";
    }
    const Shoot shoots[] = {Photographer().take(uniform + "-2"), Photographer().take(parts + "2"),
                            Photographer().take(day)};
    const std::clock_t start = std::clock();
    EXPECT_EQ(find(shoots[0].shots).sets.size(), 0U);
    find(shoots[1].shots);
    EXPECT_EQ(find(shoots[2].shots).sets.size(), 20000U);
    EXPECT_LT(std::clock() - start, 10 * CLOCKS_PER_SEC); // 0.2 s when optimised
}

} // namespace
