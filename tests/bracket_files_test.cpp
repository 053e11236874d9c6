// Exposure brackets: which files are one photograph, and which photographs can be of one set.
#include "testing/shoots.h"
#include "tvmeta_photo.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace test;

namespace {

void setSecond(tvmeta_Shot& shot, int64_t second) {
    shot.captureTime = 1000 + second;
}

constexpr const char* Names[] = {"IMG_9998.jpg", "IMG_9999.jpg", "IMG_0001.jpg",
                                 "IMG_0002.jpg", "IMG_0003.jpg", "IMG_0004.jpg"};

// The first two photographs are in one folder, the others in `next`.
void file(tvmeta_Shot& shot, size_t index, const char* next) {
    shot.name = Names[index];
    shot.folder = index < 2 ? "c/100CANON" : next;
}

// How two sets are grouped after a change to some of their photographs.
TEST(Brackets, SeparatesScenes) {
    struct Change {
        const char* label;
        const char* shots;
        void (*apply)(tvmeta_Shot& shot, size_t index);
        const char* expected;
    };
    static const char* const Numbers[] = {"B0.jpg",          "B007.jpg",         "B90000001.jpg",
                                          "B0123450002.jpg", "B90000000003.jpg", "B:4.jpg"};
    const char* const Two = "0 -2 2 0 -2 2";
    const char* const Marked = "bracket bias fine 0 -2 2 1s 0 -2 2";
    const Change changes[] = {
        {"two cameras in turn", Two, [](tvmeta_Shot& s, size_t i) { s.camera = i % 2; }, "ace? bdf?"},
        {"two bodies in turn", Two, [](tvmeta_Shot& s, size_t i) { s.serialNumber = 1 + i % 2; }, "ace? bdf?"},
        {"other formats", Two, [](tvmeta_Shot& s, size_t i) { s.format = 1 + static_cast<int>(i % 2); }, "ace? bdf?"},
        {"two folders", Two, [](tvmeta_Shot& s, size_t i) { s.folder = i < 2 ? "a" : "b"; }, "ab? cde?; f"},
        {"next folder of a card", Two, [](tvmeta_Shot& s, size_t i) { file(s, i, "c/101CANON"); }, "abc def"},
        {"next folder from number 0", Two,
         [](tvmeta_Shot& s, size_t i) { file(s, i, "c/101CANON"), s.name = i == 2 ? "IMG_0000.jpg" : s.name; },
         "abc def"},
        {"folder of another card", Two, [](tvmeta_Shot& s, size_t i) { file(s, i, "d/101CANON"); }, "ab? cde?; f"},
        {"folder after the next", Two, [](tvmeta_Shot& s, size_t i) { file(s, i, "c/102CANON"); }, "ab? cde?; f"},
        {"next folder, another number", Two,
         [](tvmeta_Shot& s, size_t i) { file(s, i, "c/101CANON"), s.name = Names[i < 2 ? i : 6 - i]; }, "ab? fed?; c"},
        {"numbers wrap in one second", Two, [](tvmeta_Shot& s, size_t i) { s.name = Names[i], setSecond(s, 0); },
         "abc def"},
        {"IMG_9 before IMG_10 in one second", Two, [](tvmeta_Shot& s, size_t) { setSecond(s, 0); }, "abc def"},
        {"numbers of any length in one second", Two,
         [](tvmeta_Shot& s, size_t i) { s.name = Numbers[i], setSecond(s, 0); }, "abc def"},
        {"folders before names in one second", Two,
         [](tvmeta_Shot& s, size_t i) { file(s, i, "c/101CANON"), setSecond(s, 0); }, "abc def"},
        {"fractions before names", "bracket bias fine -2 0 2 1s -2 0 2",
         [](tvmeta_Shot& s, size_t i) { setSecond(s, 0), s.captureNanoseconds = static_cast<int32_t>(600000 - i); },
         "fed! cba!"},
        {"fractions that are always 0", "fine 0 -2 2",
         [](tvmeta_Shot& s, size_t i) { setSecond(s, 3 * static_cast<int64_t>(i)), s.captureNanoseconds = 0; }, "abc?"},
        {"zone changed by the clock of the camera", Marked,
         [](tvmeta_Shot& s, size_t i) {
             s.present |= bit(TVMETA_UTC_OFFSET), s.utcOffset = i < 2 ? 60 : 120, s.captureTime += 60 * s.utcOffset;
         },
         "abc! def!"},
        {"an offset is missing", Marked,
         [](tvmeta_Shot& s, size_t i) {
             s.utcOffset = i < 2 ? 60 : 120, s.present |= i == 5 ? 0 : bit(TVMETA_UTC_OFFSET);
         },
         "abc! def!"},
        {"zoom", Two, [](tvmeta_Shot& s, size_t i) { s.focalLength = i < 2 ? 16 : 17; }, "ab? cde?; f"},
        {"slow zoom", Two, [](tvmeta_Shot& s, size_t i) { s.focalLength = 16 + 0.1F * static_cast<float>(i); },
         "ab? cd? ef?"},
        {"same focal length", Two, [](tvmeta_Shot& s, size_t i) { s.focalLength = i < 2 ? 16 : 16.1F; }, "abc def"},
        {"no focal length", Two, [](tvmeta_Shot& s, size_t) { s.focalLength = 0; }, "abc def"},
        {"camera turned", Two, [](tvmeta_Shot& s, size_t i) { s.orientation = i < 3 ? 1 : 6; }, "abc def"},
        {"camera turned in a slow series", "manual fine -2 5s 0 5s 2",
         [](tvmeta_Shot& s, size_t i) { s.orientation = i < 2 ? 1 : 6; }, "; abc"},
        {"smaller pictures", "manual fine -2 5s 0 5s 2",
         [](tvmeta_Shot& s, size_t i) { s.width = i < 2 ? 6000 : 3000; }, "; abc"},
        {"aperture unknown in some", Two, [](tvmeta_Shot& s, size_t i) { s.fNumber = i < 3 ? 8 : 0; }, "abc def"},
        {"no time", Two, [](tvmeta_Shot& s, size_t i) { s.present &= ~(i == 5 ? bit(TVMETA_CAPTURE_TIME) : 0); },
         "abc? de/3?; f"},
        {"clock runs backwards", "0 -2 2 9s 0 -2 2",
         [](tvmeta_Shot& s, size_t i) { s.captureTime = (i < 3 ? -1 : -99) * 1000; }, "def abc"},
        {"infinite", Two, [](tvmeta_Shot& s, size_t i) { s.isoSpeed = i == 5 ? HUGE_VALF : 100; }, "abc? de/3?; f"},
        {"no number", Two, [](tvmeta_Shot& s, size_t i) { s.fNumber = i == 5 ? std::nanf("") : 8; }, "abc? de/3?; f"},
    };
    for (const Change& change : changes) {
        Shoot shoot = Photographer().take(change.shots);
        for (size_t i = 0; i < shoot.shots.size(); ++i) {
            change.apply(shoot.shots[i], i);
        }
        EXPECT_EQ(lettersOf(find(shoot.shots)), change.expected) << change.label;
    }
}

// Files of one bracket: which are one photograph. The leaders are letters, in the order of the files.
TEST(Brackets, JoinsFilesOfAPhotograph) {
    struct Files {
        const char* label;
        const char *second, *third; // names of two more files with the time of the first, IMG_8.jpg
        int32_t format;             // of the third
        void (*change)(tvmeta_Shot& second);
        const char* leaders;
    };
    const auto nothing = [](tvmeta_Shot&) {};
    const char *const copy = "IMG_8-1.jpg", *const raw = "IMG_8.CR2", *const other = "IMG_8_x.jpg";
    const Files cases[] = {
        {"raw file speaks for the JPEG file", "IMG_8.xyz", "IMG_8.CR2", TVMETA_FORMAT_TIFF, nothing, "cccdef"},
        {"raw file of another container", "IMG_8.xyz", "IMG_8.RAF", TVMETA_FORMAT_RAF, nothing, "cccdef"},
        {"JPEG file speaks for a TIFF file", "IMG_8.xyz", "IMG_8.Tiff", TVMETA_FORMAT_TIFF, nothing, "aaadef"},
        {"raw file speaks for the HEIF file", "IMG_8.hif", raw, TVMETA_FORMAT_TIFF,
         [](tvmeta_Shot& s) { s.format = TVMETA_FORMAT_HEIF; }, "cccdef"},
        {"HEIF file", "IMG_8.xyz", "IMG_8.hif", TVMETA_FORMAT_HEIF, nothing, "cccdef"},
        {"edited copies", "IMG_8-edit.jpg", "IMG_8_bw.jpg", TVMETA_FORMAT_JPEG, nothing, "aaadef"},
        {"edited copy of a copy", "IMG_8-edit.jpg", "IMG_8-edit 2.jpg", TVMETA_FORMAT_JPEG, nothing, "aaadef"},
        {"another number", "IMG_81.jpg", "IMG_8_x.jpg", TVMETA_FORMAT_JPEG, nothing, "abadef"},
        {"another second", raw, other, 1, [](tvmeta_Shot& s) { s.captureTime += 1; }, "abadef"},
        {"another exposure", copy, other, 1, [](tvmeta_Shot& s) { s.exposureTime *= 2; }, "abadef"},
        {"another bias", copy, other, 1, [](tvmeta_Shot& s) { s.exposureBias = 1; }, "abadef"},
        {"another fraction", copy, other, 1, [](tvmeta_Shot& s) { s.captureNanoseconds += 9; }, "abadef"},
        {"copy without exposure", copy, other, 1, [](tvmeta_Shot& s) { s.exposureTime = 0; }, "aaadef"},
        {"another body", raw, other, 1, [](tvmeta_Shot& s) { s.serialNumber = 2; }, "abadef"},
        {"copy without serial number", "IMG_8.png", other, 1, [](tvmeta_Shot& s) { s.serialNumber = 0; }, "aaadef"},
        {"another camera", raw, other, 1, [](tvmeta_Shot& s) { s.camera = 2; }, "abadef"},
        {"another folder", raw, other, 1, [](tvmeta_Shot& s) { s.folder = "night"; }, "abadef"},
        {"no names", nullptr, nullptr, 1, nothing, "abcdef"},
    };
    for (const Files& c : cases) {
        Shoot shoot = Photographer().take("bracket bias fine 0 -2 2 auto ?");
        std::vector<tvmeta_Shot>& shots = shoot.shots;
        shots.insert(shots.begin() + 1, 2, shots[0]);
        shots[1].name = c.second;
        shots[2].name = c.third;
        shots[2].format = c.format;
        std::ranges::for_each(shots, [](tvmeta_Shot& s) { s.serialNumber = 1; });
        c.change(shots[1]);
        const Brackets found = find(shots);
        std::string leaders;
        for (const tvmeta_BracketMember& member : found.members) {
            const tvmeta_BracketMember& leader = found.members[static_cast<size_t>(member.leader)];
            leaders += static_cast<char>('a' + member.leader);
            EXPECT_TRUE(member.set == leader.set && member.place == leader.place && member.offset == leader.offset);
        }
        EXPECT_EQ(leaders, c.leaders) << c.label;
    }
}

TEST(Brackets, DoublesAreNoSet) {
    Shoot shoot = Photographer().take("bracket bias fine 0 -2 2 1s 0 -2 2");
    const size_t count = shoot.shots.size();
    for (size_t i = 0; i < count; ++i) { // the raw files follow: g is of a
        shoot.names.push_back("IMG_" + std::to_string(i + 8) + ".RW2");
        shoot.shots.push_back(shoot.shots[i]);
        shoot.shots.back().name = shoot.names.back().c_str();
        shoot.shots.back().format = TVMETA_FORMAT_RW2;
    }
    EXPECT_EQ(lettersOf(find(shoot.shots)), "ghi! jkl!");
}

TEST(Brackets, WithoutTimesACountGoesByName) {
    Shoot shoot = Photographer().take("0 -2 2 0 -2 2");
    std::ranges::for_each(shoot.shots, [](tvmeta_Shot& s) { s.present &= ~bit(TVMETA_CAPTURE_TIME); });
    std::ranges::reverse(shoot.shots);
    EXPECT_EQ(lettersOf(find(shoot.shots, {.count = 3})), "fed# cba#");
    EXPECT_EQ(lettersOf(find(shoot.shots)), "; abcdef");
}

} // namespace
