// The rule that groups photographs into exposure brackets.

#include "tvmeta_photo.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <deque>
#include <limits>
#include <memory>
#include <span>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr std::uint64_t bit(int field) {
    return std::uint64_t{1} << field;
}

// Photographs of one camera. The names live as long as the shoot.
struct Shoot {
    std::vector<tvmeta_Shot> shots;
    std::deque<std::string> names;
};

// Words: stops relative to 1/64 s at f/8 and ISO 100, such as -2, or with another bias, -2/0. Before them, and valid
// from there on: a pause ("9s", added to what the shutter takes), and
//   bracket, auto, manual, unmarked  exposure mode 2, 1, 0, none
//   bias, level                      the bias is the stops, or 0 (none in the unmarked mode)
//   fine, whole                      a clock with fractions of a second, or without
//   nikon                            a camera that does not mark brackets
//   f0, noiso                        an absent number
//   iso                              the stops change the ISO speed
//   ?                                a photograph without an exposure time
class Photographer {
  public:
    Shoot take(const std::string& words) {
        std::istringstream stream(words);
        for (std::string word; stream >> word;) {
            if (!follow(word)) {
                shoot(word);
            }
        }
        return std::move(done);
    }

  private:
    bool follow(const std::string& word) {
        static const struct {
            const char* word;
            void (*change)(Photographer& p);
        } Settings[] = {
            {"bracket", [](Photographer& p) { p.mode = 2; }},    {"auto", [](Photographer& p) { p.mode = 0; }},
            {"manual", [](Photographer& p) { p.mode = 1; }},     {"unmarked", [](Photographer& p) { p.mode = -1; }},
            {"bias", [](Photographer& p) { p.hasBias = true; }}, {"level", [](Photographer& p) { p.hasBias = false; }},
            {"fine", [](Photographer& p) { p.isFine = true; }},  {"whole", [](Photographer& p) { p.isFine = false; }},
            {"nikon", [](Photographer& p) { p.hides = 1; }},     {"f0", [](Photographer& p) { p.fNumber = 0; }},
            {"noiso", [](Photographer& p) { p.isoSpeed = 0; }},  {"iso", [](Photographer& p) { p.byIso = true; }},
        };
        for (const auto& setting : Settings) {
            if (word == setting.word) {
                setting.change(*this);
                return true;
            }
        }
        if (word.back() == 's') {
            clock += std::stod(word);
        }
        return word.back() == 's';
    }

    void shoot(const std::string& word) {
        const double stops = word[0] == '?' ? 0 : std::stod(word);
        const size_t slash = word.find('/');
        tvmeta_Shot shot = {};
        shot.recordSize = sizeof shot;
        shot.format = TVMETA_FORMAT_JPEG;
        shot.folder = "day";
        done.names.push_back("IMG_" + std::to_string(done.names.size() + 8) + ".jpg");
        shot.name = done.names.back().c_str();
        shot.camera = 7;
        shot.present =
            bit(TVMETA_CAPTURE_TIME) | bit(TVMETA_F_NUMBER) | bit(TVMETA_ISO_SPEED) | bit(TVMETA_FOCAL_LENGTH);
        shot.captureTime = static_cast<int64_t>(clock);
        if (isFine) {
            shot.present |= bit(TVMETA_SUB_SECOND);
            shot.captureNanoseconds = static_cast<int32_t>((clock - std::floor(clock)) * 100) * 10000000;
        }
        shot.present |= word[0] == '?' ? 0 : bit(TVMETA_EXPOSURE_TIME);
        shot.exposureTime = static_cast<float>(byIso ? 1.0 / 64 : std::exp2(stops) / 64);
        shot.fNumber = fNumber;
        shot.isoSpeed = byIso ? static_cast<float>(100 * std::exp2(stops)) : isoSpeed;
        shot.focalLength = 16;
        shot.hidesBrackets = hides;
        if (mode >= 0) {
            shot.present |= bit(TVMETA_EXPOSURE_MODE) | bit(TVMETA_EXPOSURE_BIAS);
            shot.exposureMode = mode;
            const double bias = slash != word.npos ? std::stod(word.substr(slash + 1)) : hasBias ? stops : 0;
            shot.exposureBias = static_cast<float>(bias);
        }
        clock += static_cast<double>(shot.exposureTime);
        done.shots.push_back(shot);
    }

    Shoot done;
    double clock = 1e9 + 0.01;
    int32_t mode = -1, hides = 0;
    bool hasBias = false, isFine = false, byIso = false;
    float fNumber = 8, isoSpeed = 100;
};

struct Rules {
    int32_t count = 0;
    double gap = -1;
};

struct Brackets {
    std::vector<tvmeta_BracketMember> members;
    std::vector<tvmeta_BracketSet> sets;
};

Brackets find(const std::vector<tvmeta_Shot>& shots, const Rules& rules = {}) {
    Brackets found;
    found.members.resize(shots.size());
    found.sets.resize(shots.size() + 1);
    found.sets[0].recordSize = sizeof(tvmeta_BracketSet);
    const tvmeta_BracketOptions options = {sizeof options, rules.count, rules.gap};
    const int64_t count = tvmeta_find_brackets(shots.data(), static_cast<int64_t>(shots.size()), &options,
                                               found.members.data(), found.sets.data());
    EXPECT_GE(count, 0);
    found.sets.resize(static_cast<size_t>(std::max<int64_t>(count, 0)));
    return found;
}

// A letter per photograph: "abc! de/3? f": by the camera; two of an expected three, a guess; in no set. A repeated
// pattern has no mark, a count has "#".
std::string lettersOf(const Brackets& found) {
    std::vector<std::string> sets(found.sets.size());
    std::string singles;
    for (size_t i = 0; i < found.members.size(); ++i) {
        const tvmeta_BracketMember& member = found.members[i];
        if (member.leader != static_cast<int64_t>(i)) {
            continue;
        }
        const char letter = static_cast<char>('a' + i);
        if (member.set < 0) {
            singles += letter;
        } else {
            std::string& set = sets[static_cast<size_t>(member.set)];
            const size_t place = static_cast<size_t>(member.place);
            set.resize(std::max(set.size(), place + 1), '.');
            set[place] = letter;
        }
    }
    std::string text;
    for (size_t i = 0; i < sets.size(); ++i) {
        const tvmeta_BracketSet& set = found.sets[i];
        EXPECT_EQ(set.shots, static_cast<int64_t>(sets[i].size()));
        const bool isShort = set.expectedShots > set.shots;
        const char* const Marks[] = {"", "!", "", "?", "#"};
        text += sets[i] + (isShort ? "/" + std::to_string(set.expectedShots) : "") + Marks[set.confidence] + ' ';
    }
    text = text.substr(0, text.empty() ? 0 : text.size() - 1);
    return singles.empty() ? text : text + "; " + singles;
}

struct Case {
    const char* label;
    const char* shots;
    const char* expected;
    Rules rules = {};
};

void check(std::span<const Case> cases) {
    for (const Case& c : cases) {
        EXPECT_EQ(lettersOf(find(Photographer().take(c.shots).shots, c.rules)), c.expected)
            << c.label << ": " << c.shots;
    }
}

// Exposure mode 2: the camera varied the exposure.
TEST(Brackets, BelievesCameras) {
    const Case cases[] = {
        {"one press", "bracket bias fine 0 -2 2", "abc!"},
        {"brackets in a row", "bracket bias fine 0 -2 2 1s 0 -2 2 1s 0 -2 2", "abc! def! ghi!"},
        {"without a pause and a clock of seconds", "bracket bias whole -1 0 1 -1 0 1", "abc! def!"},
        {"seven from the middle outward", "bracket bias fine 0 -1 1 -2 2 -3 3 9s 0 -1 1 -2 2 -3 3",
         "abcdefg! hijklmn!"},
        {"middle first, then from dark to bright", "bracket bias fine 0 -2 -1 1 2 1s 0 -2 -1 1 2", "abcde! fghij!"},
        {"two exposures", "bracket bias fine 0 -1 60s 0 -1", "ab! cd!"},
        {"thirds, rounded", "bracket bias fine -.33 0 .33 1s -.33 0 .33", "abc! def!"},
        {"interrupted after two", "bracket bias fine 0 -2 2 9s 0 -2 9s 0 -2 2", "abc! de/3! fgh!"},
        {"interrupted once, dark one first", "bracket bias fine -2 0 2 1s -2 0 1s -2 0 2", "abc! de/3! fgh!"},
        {"dark one deleted", "bracket bias fine -2 0 2 1.5s 0 2 1.5s -2 0 2 1.5s -2 0 2", "abc! de/3! fgh! ijk!"},
        {"test shot before", "auto bias fine 0 1s bracket -2 0 2", "bcd!; a"},
        {"test shot with the bracket on", "bracket bias fine 0 2s -2 0 2 2s -2 0 2", "bcd! efg!; a"},
        {"compensation between brackets", "bracket bias fine 0 -1 1 1s 1 0 2", "abc! def!"},
        {"compensation of a third", "bracket bias fine -2 0 2 1s -1.67 .33 2.33", "abc! def!"},
        {"interrupted once, then compensation", "bracket bias fine 0 -1 3s 1 0 2", "ab! cde!"},
        {"interrupted, then compensation", "bracket bias fine 0 -1 8s 1 0 2 8s 1 0 2", "ab/3! cde! fgh!"},
        {"drifting light at dusk", "bracket bias fine 0/0 -2.2/-2 1.6/2 1s -.6/0 -2.8/-2 1/2", "abc! def!"},
        {"rounded to thirds in changing light", "bracket level fine 0 -.67 1 -1.67 1.33 1s 0 -.67 1 -1.67 1.33",
         "abcde! fghij!"},
        {"manual exposure, no bias", "bracket level fine 0 -2 2 .5s 0 -2 2", "abc! def!"},
        {"shutter at its limit", "bracket fine bias -2/0 -2/-2 0/2 1s -2/0 -2/-2 0/2", "abc! def!"},
        {"exposures equal as recorded", "bracket bias fine 0/0 0/-1 0/1", "abc!"},
        {"one press for each", "bracket bias fine 0 9s -2 12s 2 14s 0 8s -2 9s 2", "abc! def!"},
        {"one press for each, first and last", "bracket bias fine -2 9s 0 16s 2", "; abc"},
        {"presses that make no bracket", "bracket bias fine 0 7s -1", "; ab"},
        {"noise reduction after 16 s", "bracket bias fine 10 18s 8 6s 12 80s 10 18s 8 6s 12", "abc! def!"},
        {"pause beyond single presses", "bracket level fine 0 15.5s -2 1s 2", "bc!; a"},
        {"gap given", "bracket bias fine 0 1s -2 3s 2", "ab!; c", {.count = 0, .gap = 2}},
        {"white balance or focus", "bracket level fine 0 0 0 1s 0 0 0", "; abcdef"},
        {"no exposure time", "bracket bias fine ?/0 ?/-1 ?/1", "abc!"},
        {"manual lens", "f0 bracket level fine 0 -2 2 1s 0 -2 2", "abc! def!"},
        {"no ISO speed", "noiso bracket level fine 0 -2 2", "abc!"},
        {"other frames between", "bracket bias fine 0 -2 auto 0 bracket 2", "ab!; cd"},
    };
    check(cases);
}

// Exposure mode 0.
TEST(Brackets, DistrustsAutomaticExposure) {
    const Case cases[] = {
        {"metering that wanders", "auto level fine 0 -1 1 .1s 0 -1 1 .1s 0 -1 1", "; abcdefghi"},
        {"burst in changing light", "auto level fine 0 .3 .7 1 1.3 1.7 2", "; abcdefg"},
        {"flash, bias varies", "auto bias fine 0/0 0/-1 0/1", "; abc"},
        {"corrections", "auto bias fine 0 5s -.33 7s -.67", "; abc"},
        {"correction in a walk", "auto bias fine 0 0 3s -1 9s -1", "; abcd"},
        {"bias that the exposure does not follow", "auto bias fine 0/0 1.5/-1 -1/1", "; abc"},
        {"bracket of another maker", "auto bias fine 0 -1 1 1s 0 -1 1", "abc? def?"},
        {"compensation by hand", "auto bias fine -2 5s -1 6s 0 4s 1 9s 2", "abcde?"},
        {"compensation by hand, down", "auto bias fine 2 5s 1 6s 0 4s -1 9s -2", "abcde?"},
        {"maker that hides brackets", "nikon auto bias fine -1 0 1 1s -1 0 1", "abc! def!"},
        {"hidden, test shot before and after", "nikon auto bias fine 0 1s -1 0 1 1s 0", "bcd!; ae"},
        {"hidden, one press for each", "nikon auto bias fine 0 9s -1 7s 1", "abc!"},
        {"hidden, interrupted", "nikon auto bias fine -1 0 1 9s -1 0 9s -1 0 1", "abc! de/3! fgh!"},
        {"hidden, corrections", "nikon auto bias fine 0 4s -.33 4s -.67", "; abc"},
        {"hidden, a correction", "nikon auto bias fine 0 1s -1", "; ab"},
        {"hidden, by hand", "nikon auto bias fine 2 5s 1 5s 0 5s -1 5s -2", "abcde?"},
        {"hidden, long exposure at its limit", "nikon auto bias fine 8/-2 10/0 10/2", "abc!"},
        {"hidden, walk", "nikon auto level fine 0 5s 1 5s -1 5s .5", "; abcd"},
    };
    check(cases);
}

// Exposure mode 1.
TEST(Brackets, FindsSeriesByHand) {
    const Case cases[] = {
        {"dial turned, slowly", "manual fine -2 4s -1 9s 0 6s 1 14s 2", "abcde?"},
        {"from bright to dark", "manual fine 3 8s 1 20s -1 25s -3", "abcd?"},
        {"around the middle", "manual fine 0 8s -2 9s 2 7s -4 8s 4", "abcde?"},
        {"middle, down, then up", "manual fine 0 8s -1 9s -2 7s 1 8s 2", "abcde?"},
        {"scenes of a day", "manual fine -2 5s 0 6s 2 400s 0 8s 2 9s 4 40s -1 9s 1 9s 3", "abc def ghi"},
        {"scenes without a longer pause", "manual fine -2 9s 0 9s 2 9s -2 9s 0 9s 2", "abc def"},
        {"scenes apart by their pause", "manual fine -2 2s 0 3s 2 28s 4 3s 6 2s 8", "abc def"},
        {"one step forgotten", "manual fine -3 5s -2 5s -1 5s 1 5s 2", "abcde?"},
        {"a shot repeated", "manual fine -2 5s -1 5s -1 5s 0 5s 1 5s 2", "abcdef?"},
        {"test shot before", "manual fine 0 20s -2 5s 0 5s 2", "bcd?; a"},
        {"fast test shot before", "manual fine 0 1s -2 0 2", "bcd?; a"},
        {"fast shot after", "manual fine -2 0 2 1s 0", "abc?; d"},
        {"corrections of the exposure", "manual fine 0 5s .33 6s .67 7s .67", "; abcd"},
        {"fast corrections", "manual fine 0 1.5s .33 1.5s -.33", "; abc"},
        {"corrections, then kept", "manual fine 0 5s 1 6s 2 7s 2", "; abcd"},
        {"fast corrections, then kept", "manual fine 0 1.2s 1 1.2s 2 1.2s 2", "; abcd"},
        {"series after series", "manual fine 0 5s 1 6s 2 7s 2 5s 1 6s 0", "abc? def?"},
        {"two levels of light, without a pause between", "manual fine 0 -2 2 1s 1 -1 3 1s 0 -2 2 1s 1 -1 3",
         "abc def ghi jkl"},
        {"bias that varies with the exposure", "manual bias fine -.67 7s 0 7s .67", "abc?"},
        {"two settings", "manual fine 0 5s -2", "; ab"},
        {"two settings, fast", "manual fine 0 1s -2", "; ab"},
        {"sunset, in steps", "manual fine 0 5s 0 5s 0 5s .33 5s .33 5s .33 5s .67 5s .67 5s .67", "; abcdefghi"},
        {"automatic ISO speed", "manual iso fine 0 1 .4 0 1.2", "; abcde"},
        {"automatic ISO speed, twice the same", "manual iso fine 0 1 0 1 .5", "; abcde"},
        {"automatic ISO speed, slowly", "manual iso fine 0 5s 1 5s 2 5s .5", "; abcd"},
        {"bracket without a mark", "manual fine -2 0 2 1s -2 0 2", "abc def"},
        {"bracket without a mark, once", "manual fine 0 -1 1", "abc?"},
        {"exposures equal as recorded", "manual bias fine 0/0 0/-1 0/1", "abc?"},
        {"manual lens", "f0 manual fine -2 5s 0 5s 2", "abc?"},
        {"longest pause", "manual fine -2 5s 0 29s 2 29s 4", "abcd?"},
        {"beyond the longest pause", "manual fine -2 5s 0 5s 2 31s 4", "abc?; d"},
        {"one long pause", "manual fine -2 1s 0 25s 2", "; abc"},
        {"noise reduction", "manual fine 10 40s 8 9s 12 80s 14", "abcd?"},
        {"gap given", "manual fine -2 5s 0 5s 2", "; abc", {.count = 0, .gap = 2}},
        {"gap given, longer", "manual fine -2 60s 0 60s 2", "abc?", {.count = 0, .gap = 61}},
        {"interval series", "manual fine 0 5s 0 5s 0 5s 0 5s 0", "; abcde"},
    };
    check(cases);
}

// No exposure mode.
TEST(Brackets, GroupsByExposurePattern) {
    const Case cases[] = {
        {"three, order 0 - +", "0 -2 2", "abc?"},
        {"three, order - 0 +", "-2 0 2 9s -2 0 2", "abc def"},
        {"five and seven", "0 -1 1 -2 2 9s 0 -1 1 -2 2 -3 3", "abcde? fghijkl?"},
        {"nine, by hand", "-4 -3 -2 -1 0 1 2 3 4", "abcdefghi?"},
        {"panorama of threes", "0 -2 2 0 -2 2 0 -2 2 0 -2 2", "abc def ghi jkl"},
        {"panorama of fives", "-2 -1 0 1 2 -2 -1 0 1 2", "abcde fghij"},
        {"equal exposures inside, once", "-3 -2 -1 0 0 1 2", "abcdefg?"},
        {"equal exposures inside, twice", "-3 -2 -1 0 0 1 2 -3 -2 -1 0 0 1 2", "abcdefg hijklmn"},
        {"equal exposures first", "0 0 -2 2 0 0 -2 2", "abcd efgh"},
        {"a part repeats inside", "0 -2 0 -2 2 0 -2 0 -2 2", "abcde fghij"},
        {"last shot missing", "0 -2 2 0 -2", "abc? de/3?"},
        {"last two shots missing", "0 -2 2 0 -2 2 0", "abc def; g"},
        {"shot missing in a panorama", "0 -2 2 0 -2 2 0 -2 0 -2 2 0 -2 2", "abc def gh/3 ijk lmn"},
        {"stray shot before", "0 -2 0 2 -2 0 2", "bcd efg; a"},
        {"stray shot before, by its pause", "fine 2 2s -2 0 2 2s -2 0 2", "bcd efg; a"},
        {"stray shot after", "-2 0 2 -2 0 2 1", "abc def; g"},
        {"threes, then fives", "0 -2 2 0 -2 2 1 -1 -2 2 3 1 -1 -2 2 3", "abc def ghijk lmnop"},
        {"burst", "0 0 0 0 0 0", "; abcdef"},
        {"burst in drifting light", "0 0 0 .1 .1 .1 0", "; abcdefg"},
        {"bursts in changing light", "0 0 0 0 .4 .4 .4 .4 .8 .8 .8 .8", "; abcdefghijkl"},
        {"burst, then a set", "0 0 0 0 0 0 -2 1 2", "ghi?; abcdef"},
        {"single", "0", "; a"},
        {"two exposures", "0 -2", "ab?"},
        {"within a sixth of a stop", "0 -2 2 .15 -2.1 1.9", "abc def"},
        {"beyond a sixth of a stop", "0 .2 0 .2", "ab cd"},
        {"gap of two seconds and one for the clock", "0 3.01s -3", "ab?"},
        {"gap beyond", "0 4.1s -2", "; ab"},
        {"gap given", "0 4.1s -2 4.1s 2", "; abc", {.count = 0, .gap = 2}},
        {"gap given, longer", "0 4.1s -2 4.1s 2", "abc?", {.count = 0, .gap = 4}},
        {"gap from the end of 8, 32 and 128 s", "9 3s 11 3s 13 3s 9 3s 11 3s 13", "abc def"},
        {"gap after a long exposure", "9 11 5s 13", "ab?; c", {.count = 0, .gap = 2}},
        {"count of three", "0 -1 -2 0 -1 -2", "abc# def#", {.count = 3}},
        {"count against the pattern", "0 -2 0 -2 0 -2", "abc# def#", {.count = 3}},
        {"count against the camera", "bracket bias fine 0 -2 2 0 -2 2", "ab# cd# ef#", {.count = 2}},
        {"count of automatic exposures", "auto level fine 0 -1 1 8s 0 -1 1", "abc# def#", {.count = 3}},
        {"count with a stray shot before", "0 0 -2 2", "bcd#; a", {.count = 3}},
        {"count with a shot left", "-2 0 2 -2 0", "abc#; de", {.count = 3}},
        {"count above the shots", "-2 0 2", "; abc", {.count = 5}},
        {"count by hand", "manual fine 0 9s 3 9s 1 50s 2 9s 0 9s 5", "abc# def#", {.count = 3}},
        {"count with a gap", "fine 0 1s -1 9s 0 1s -1 1s 1", "ab# cd#; e", {.count = 2, .gap = 2}},
        {"count without exposures", "? ? ? ?", "ab# cd#", {.count = 2}},
        {"unknown exposure between", "0 ? -2 2", "acd?; b"},
    };
    check(cases);
}

void setSecond(tvmeta_Shot& shot, int64_t second) {
    shot.captureTime = 1000 + second;
}

// How two sets are grouped after a change to some of their photographs.
TEST(Brackets, SeparatesScenes) {
    struct Change {
        const char* label;
        const char* shots;
        void (*apply)(tvmeta_Shot& shot, size_t index);
        const char* expected;
    };
    static const char* const Names[] = {"IMG_9998.jpg", "IMG_9999.jpg", "IMG_0001.jpg",
                                        "IMG_0002.jpg", "IMG_0003.jpg", "IMG_0004.jpg"};
    const char* const Two = "0 -2 2 0 -2 2";
    const char* const Marked = "bracket bias fine 0 -2 2 1s 0 -2 2";
    const Change changes[] = {
        {"two cameras in turn", Two, [](tvmeta_Shot& s, size_t i) { s.camera = i % 2; }, "ace? bdf?"},
        {"two bodies in turn", Two, [](tvmeta_Shot& s, size_t i) { s.serialNumber = 1 + i % 2; }, "ace? bdf?"},
        {"other formats", Two, [](tvmeta_Shot& s, size_t i) { s.format = 1 + static_cast<int>(i % 2); }, "ace? bdf?"},
        {"two folders", Two, [](tvmeta_Shot& s, size_t i) { s.folder = i < 2 ? "a" : "b"; }, "ab? cde?; f"},
        {"next folder of a card", Two,
         [](tvmeta_Shot& s, size_t i) { s.name = Names[i], s.folder = i < 2 ? "c/100CANON" : "c/101CANON"; },
         "abc def"},
        {"folder of another card", Two,
         [](tvmeta_Shot& s, size_t i) { s.name = Names[i], s.folder = i < 2 ? "c/100CANON" : "d/101CANON"; },
         "ab? cde?; f"},
        {"folder after the next", Two,
         [](tvmeta_Shot& s, size_t i) { s.name = Names[i], s.folder = i < 2 ? "c/100CANON" : "c/102CANON"; },
         "ab? cde?; f"},
        {"next folder, another number", Two,
         [](tvmeta_Shot& s, size_t i) {
             s.name = Names[i < 2 ? i : 6 - i], s.folder = i < 2 ? "100CANON" : "101CANON";
         },
         "ab? fed?; c"},
        {"numbers wrap in one second", Two, [](tvmeta_Shot& s, size_t i) { s.name = Names[i], setSecond(s, 0); },
         "abc def"},
        {"IMG_9 before IMG_10 in one second", Two, [](tvmeta_Shot& s, size_t) { setSecond(s, 0); }, "abc def"},
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
    const Files cases[] = {
        {"raw file speaks for the JPEG file", "IMG_8.xyz", "IMG_8.CR2", TVMETA_FORMAT_TIFF, nothing, "cccdef"},
        {"raw file of another container", "IMG_8.xyz", "IMG_8.RAF", TVMETA_FORMAT_RAF, nothing, "cccdef"},
        {"JPEG file speaks for a TIFF file", "IMG_8.xyz", "IMG_8.Tiff", TVMETA_FORMAT_TIFF, nothing, "aaadef"},
        {"HEIF file", "IMG_8.xyz", "IMG_8.hif", TVMETA_FORMAT_HEIF, nothing, "cccdef"},
        {"edited copies", "IMG_8-edit.jpg", "IMG_8_bw.jpg", TVMETA_FORMAT_JPEG, nothing, "aaadef"},
        {"edited copy of a copy", "IMG_8-edit.jpg", "IMG_8-edit 2.jpg", TVMETA_FORMAT_JPEG, nothing, "aaadef"},
        {"another number", "IMG_81.jpg", "IMG_8_x.jpg", TVMETA_FORMAT_JPEG, nothing, "abadef"},
        {"another second", "IMG_8.CR2", "IMG_8_x.jpg", 1, [](tvmeta_Shot& s) { s.captureTime += 1; }, "abadef"},
        {"another exposure", "IMG_8-edit.jpg", "IMG_8_x.jpg", 1, [](tvmeta_Shot& s) { s.exposureTime *= 2; }, "abadef"},
        {"another bias", "IMG_8-1.jpg", "IMG_8_x.jpg", 1, [](tvmeta_Shot& s) { s.exposureBias = 1; }, "abadef"},
        {"another fraction", "IMG_8-1.jpg", "IMG_8_x.jpg", 1, [](tvmeta_Shot& s) { s.captureNanoseconds += 9; },
         "abadef"},
        {"copy without exposure", "IMG_8-1.jpg", "IMG_8_x.jpg", 1, [](tvmeta_Shot& s) { s.exposureTime = 0; },
         "aaadef"},
        {"another body", "IMG_8.CR2", "IMG_8_x.jpg", 1, [](tvmeta_Shot& s) { s.serialNumber = 2; }, "abadef"},
        {"copy without serial number", "IMG_8.png", "IMG_8_x.jpg", 1, [](tvmeta_Shot& s) { s.serialNumber = 0; },
         "aaadef"},
        {"another camera", "IMG_8.CR2", "IMG_8_x.jpg", 1, [](tvmeta_Shot& s) { s.camera = 2; }, "abadef"},
        {"another folder", "IMG_8.CR2", "IMG_8_x.jpg", 1, [](tvmeta_Shot& s) { s.folder = "night"; }, "abadef"},
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

// Stops from the middle exposure; of two, from the first.
TEST(Brackets, MeasuresOffsets) {
    const struct {
        const char* shots;
        std::vector<double> offsets;
    } cases[] = {
        {"0 -2 2", {0, -2, 2}},
        {"-2 0 2", {-2, 0, 2}},
        {"0 -2", {0, -2}},
        {"0 2", {0, 2}},
        {"1 -2 0 -1", {1, -2, 0, -1}},
        {"0 -1 -2 2", {0, -1, -2, 2}},
        {"iso 0 -1 1", {0, -1, 1}},
        {"bracket fine 0/0 0/-1 0/1", {0, -1, 1}},
        {"bracket ?/0 ?/-1 ?/1", {0, -1, 1}},
    };
    for (const auto& c : cases) {
        const Brackets found = find(Photographer().take(c.shots).shots);
        ASSERT_EQ(found.sets.size(), 1U) << c.shots;
        for (size_t i = 0; i < c.offsets.size(); ++i) {
            EXPECT_NEAR(found.members[i].offset, c.offsets[i], 1e-5) << c.shots;
        }
    }
}

TEST(Brackets, SaysWhy) {
    const struct {
        const char* shots;
        Rules rules;
        const char* evidence;
        double pause;
    } cases[] = {
        {"bracket bias fine 0 1s -2 3s 2", {}, "exposure mode 2, bias varies", 3},
        {"bracket level fine 0 1s -2 2s 2", {}, "exposure mode 2, exposure varies", 2},
        {"auto bias fine 0 -2 .5s 2", {}, "automatic exposure, bias in regular steps", .5},
        {"fine 0 -2 0 -2", {}, "exposures repeat", 0},
        {"manual fine -2 9s 0 8s 2", {}, "exposures in regular steps", 9},
        {"0 -2", {}, "exposures differ, no longer pause", 0},
        {"0 -2 2", {.count = 3}, "by the given count", 0},
    };
    for (const auto& c : cases) {
        const Brackets found = find(Photographer().take(c.shots).shots, c.rules);
        ASSERT_FALSE(found.sets.empty()) << c.shots;
        EXPECT_STREQ(tvmeta_evidence_text(found.sets[0].evidence), c.evidence) << c.shots;
        EXPECT_NEAR(found.sets[0].longestPause, c.pause, .02) << c.shots;
    }
    EXPECT_STREQ(tvmeta_evidence_text(0), "");
    EXPECT_STREQ(tvmeta_evidence_text(-1), "");
}

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
    tvmeta_Shot shot = {}, other = {};
    shot.recordSize = other.recordSize = sizeof shot;
    ASSERT_EQ(tvmeta_shot(photo.get(), "folder", "name", &shot), TVMETA_OK);
    EXPECT_EQ(shot.format, TVMETA_FORMAT_RAF);
    EXPECT_EQ(shot.present, photo->present);
    EXPECT_STREQ(shot.folder, "folder");
    EXPECT_STREQ(shot.name, "name");
    EXPECT_EQ(shot.captureTime, 77);
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
    EXPECT_EQ(tvmeta_shot(photo.get(), nullptr, nullptr, &other), TVMETA_OK);

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
    const Shoot shoot = Photographer().take("bracket bias fine 0 -2 2");
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
    EXPECT_EQ(tvmeta_find_brackets(&larger[0].shot, 3, nullptr, members, setRecords), 1);
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
            s = {sizeof s,
                 static_cast<int32_t>(random(4)),
                 folders[random(8)],
                 names[random(8)],
                 random(2),
                 random(2),
                 random(8) > 0 ? ~uint64_t{0} : random(1 << 20),
                 times[random(8)] + (random(2) ? 0 : random(4)) * 0,
                 static_cast<int32_t>(random(1 << 24) << 8),
                 static_cast<int32_t>(random(1 << 24) << 8),
                 numbers[random(16)],
                 numbers[random(16)],
                 numbers[random(16)],
                 numbers[random(16)],
                 numbers[random(2)],
                 static_cast<int32_t>(random(4)),
                 0,
                 0,
                 0,
                 static_cast<int32_t>(random(2))};
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
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(find(shoots[0].shots).sets.size(), 0U);
    find(shoots[1].shots);
    EXPECT_EQ(find(shoots[2].shots).sets.size(), 20000U);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10)); // 0.2 s when optimised
}

} // namespace
