// Shoots in the language of photographers, and the brackets found in them.
#pragma once

#include "tvmeta_photo.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace test {

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

inline Brackets find(const std::vector<tvmeta_Shot>& shots, const Rules& rules = {}) {
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
inline std::string lettersOf(const Brackets& found) {
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

} // namespace test
