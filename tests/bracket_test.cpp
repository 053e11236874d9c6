// The rule that groups photographs into bracketed sets.

#include "photographs/bracket_sets.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <limits>
#include <sstream>

namespace {

// Photographs of one camera from a text: stops relative to 1/64 s at f/8 and ISO 100, each optionally preceded by the
// pause after the previous shot ("9s"; default 0). The clock has whole seconds.
std::vector<BracketShot> shotsOf(const std::string& words) {
    std::vector<BracketShot> shots;
    double clock = 1e9;
    std::istringstream stream(words);
    for (std::string word; stream >> word;) {
        if (word.back() == 's') {
            clock += std::stod(word);
            continue;
        }
        BracketShot shot = {"day", "TV-100", 1, static_cast<int64_t>(clock), 0, 8, 100, 16};
        shot.exposureTime = word == "?" ? 0 : std::exp2(std::stod(word)) / 64;
        clock += shot.exposureTime;
        shots.push_back(shot);
    }
    return shots;
}

// The result with a letter per photograph: "abc de/3; f ? g" is a set, two shots of an incomplete set of three, a
// single, and an unknown exposure.
std::string lettersOf(const std::vector<BracketShot>& shots, const BracketRules& rules = {}) {
    const Brackets found = findBrackets(shots, rules);
    std::string text;
    const auto add = [&](const std::vector<size_t>& indices) {
        for (const size_t i : indices) {
            text += static_cast<char>('a' + i);
        }
    };
    for (const BracketSet& set : found.sets) {
        text += text.empty() ? "" : " ";
        add(set.shots);
        text += set.expectedShots == set.shots.size() ? "" : "/" + std::to_string(set.expectedShots);
    }
    text += found.singles.empty() ? "" : "; ";
    add(found.singles);
    text += found.unknown.empty() ? "" : " ? ";
    add(found.unknown);
    return text;
}

struct Case {
    const char* label;
    const char* shots;
    const char* expected;
    BracketRules rules = {};
};

TEST(Brackets, GroupsByExposurePattern) {
    const Case cases[] = {
        {"three, order 0 - +", "0 -2 2", "abc"},
        {"three, order - 0 +", "-2 0 2 9s -2 0 2", "abc def"},
        {"five and seven", "0 -1 1 -2 2 9s 0 -1 1 -2 2 -3 3", "abcde fghijkl"},
        {"nine, by hand", "-4 -3 -2 -1 0 1 2 3 4", "abcdefghi"},
        {"panorama of threes", "0 -2 2 0 -2 2 0 -2 2 0 -2 2", "abc def ghi jkl"},
        {"panorama of fives", "-2 -1 0 1 2 -2 -1 0 1 2", "abcde fghij"},
        {"equal exposures inside, once", "-3 -2 -1 0 0 1 2", "abcdefg"},
        {"equal exposures inside, twice", "-3 -2 -1 0 0 1 2 -3 -2 -1 0 0 1 2", "abcdefg hijklmn"},
        {"equal exposures first", "0 0 -2 2 0 0 -2 2", "abcd efgh"},
        {"a part repeats inside", "0 -2 0 -2 2 0 -2 0 -2 2", "abcde fghij"},
        {"last shot missing", "0 -2 2 0 -2", "abc de/3"},
        {"last two shots missing", "0 -2 2 0 -2 2 0", "abc def; g"},
        {"shot missing in a panorama", "0 -2 2 0 -2 2 0 -2 0 -2 2 0 -2 2", "abc def gh/3 ijk lmn"},
        {"stray shot before", "0 -2 0 2 -2 0 2", "bcd efg; a"},
        {"stray shot after", "-2 0 2 -2 0 2 1", "abc def; g"},
        {"threes, then fives", "0 -2 2 0 -2 2 1 -1 -2 2 3 1 -1 -2 2 3", "abc def ghijk lmnop"},
        {"burst", "0 0 0 0 0 0", "; abcdef"},
        {"burst in drifting light", "0 0 0 .1 .1 .1 0", "; abcdefg"},
        {"bursts in changing light", "0 0 0 0 .4 .4 .4 .4 .8 .8 .8 .8", "; abcdefghijkl"},
        {"burst, then a set", "0 0 0 0 0 0 -2 1 2", "ghi; abcdef"},
        {"single", "0", "; a"},
        {"two exposures", "0 -2", "ab"},
        {"within a sixth of a stop", "0 -2 2 .15 -2.1 1.9", "abc def"},
        {"beyond a sixth of a stop", "0 .2 0 .2", "ab cd"},
        {"gap of two seconds and one for the clock", "0 3.01s -2 3.01s 2", "abc"},
        {"gap beyond", "0 4.1s -2 4.1s 2", "; abc"},
        {"gap chosen", "0 4.1s -2 4.1s 2", "abc", {.gap = 4, .count = {}}},
        {"gap from the end of 8, 32 and 128 s", "9 3s 11 3s 13 3s 9 3s 11 3s 13", "abc def"},
        {"gap after a long exposure", "9 11 5s 13", "ab; c"},
        {"count of three", "0 -1 -2 0 -1 -2", "abc def", {.gap = 2, .count = 3}},
        {"count against the pattern", "0 -2 0 -2 0 -2", "abc def", {.gap = 2, .count = 3}},
        {"count with a stray shot before", "0 0 -2 2", "bcd; a", {.gap = 2, .count = 3}},
        {"count with a shot left", "-2 0 2 -2 0", "abc; de", {.gap = 2, .count = 3}},
        {"count above the shots", "-2 0 2", "; abc", {.gap = 2, .count = 5}},
        {"unknown exposure between", "0 ? -2 2", "acd ? b"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(lettersOf(shotsOf(c.shots), c.rules), c.expected) << c.label;
    }
}

// How two sets are grouped after a change to some of their photographs.
TEST(Brackets, SeparatesScenes) {
    const char* const Two = "0 -2 2 0 -2 2";
    struct Change {
        const char* label;
        void (*apply)(BracketShot& shot, size_t index);
        const char* expected;
    };
    const Change changes[] = {
        {"two cameras in turn", [](BracketShot& s, size_t i) { s.camera = i % 2 ? "TV-100" : "TV-200"; }, "ace bdf"},
        {"two cameras without sets",
         [](BracketShot& s, size_t i) { s.camera = i % 2 ? "TV-100" : "TV-200", s.exposureTime = 1; }, "; abcdef"},
        {"raw files with JPEGs", [](BracketShot& s, size_t i) { s.fileType = static_cast<int>(i % 2); }, "ace bdf"},
        {"two folders", [](BracketShot& s, size_t i) { s.folder = i < 2 ? "a" : "b"; }, "ab cde; f"},
        {"zoom", [](BracketShot& s, size_t i) { s.focalLength = i < 2 ? 16 : 17; }, "ab cde; f"},
        {"slow zoom", [](BracketShot& s, size_t i) { s.focalLength = 16 + 0.1 * static_cast<double>(i); }, "ab cd ef"},
        {"same focal length", [](BracketShot& s, size_t i) { s.focalLength = i < 2 ? 16 : 16.1; }, "abc def"},
        {"no focal length", [](BracketShot& s, size_t) { s.focalLength = 0; }, "abc def"},
        {"no time", [](BracketShot& s, size_t i) { i == 5 ? s.start.reset() : void(); }, "abc de/3 ? f"},
        {"one second", [](BracketShot& s, size_t) { s.start = 7; }, "abc def"},
        {"clock runs backwards", [](BracketShot& s, size_t i) { s.start = -*s.start - (i < 3 ? 0 : 99); }, "def abc"},
        {"infinite", [](BracketShot& s, size_t i) { s.isoSpeed = i == 5 ? HUGE_VAL : 100; }, "abc de/3 ? f"},
        {"no number", [](BracketShot& s, size_t i) { s.fNumber = i == 5 ? std::nan("") : 8; }, "abc de/3 ? f"},
        {"by ISO speed alone", [](BracketShot& s, size_t i) { s.isoSpeed = 100 << (s.exposureTime = 1, i % 3); },
         "abc def"},
    };
    for (const Change& change : changes) {
        std::vector<BracketShot> shots = shotsOf(Two);
        for (size_t i = 0; i < shots.size(); ++i) {
            change.apply(shots[i], i);
        }
        EXPECT_EQ(lettersOf(shots), change.expected) << change.label;
    }
}

TEST(Brackets, ExposuresAndOffsets) {
    EXPECT_NEAR(*exposureValue({"", "", 1, 0, 1.0 / 125, 8, 200, 16}), 11.966, 0.001); // the example of the manual
    EXPECT_NEAR(*exposureValue({"", "", 1, 0, 1, 1, 100, 16}), 0, 1e-12);
    const struct {
        std::vector<double> values, offsets;
    } cases[] = {
        {{12, 14, 10}, {0, -2, 2}}, {{14, 12, 10}, {-2, 0, 2}},        {{12, 14}, {0, -2}},
        {{14, 12}, {0, 2}},         {{9, 12, 10, 11}, {1, -2, 0, -1}}, {{12, 13, 14, 10}, {0, -1, -2, 2}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(exposureOffsets(c.values), c.offsets);
    }
}

// The worst input for the pattern search: a run that is similar to itself at every offset.
TEST(Brackets, GroupsTwentyThousandPhotographsQuickly) {
    std::string uniform, parts;
    for (int i = 0; i < 20000; ++i) {
        uniform += "0 ";
        parts += i % 97 == 0 ? "0 -2 " : "-2 ";
    }
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(findBrackets(shotsOf(uniform + "-2"), {}).sets.size(), 0U);
    findBrackets(shotsOf(parts + "2"), {});
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10)); // 0.2 s when optimised
}

} // namespace
