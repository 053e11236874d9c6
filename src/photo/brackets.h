// Photo: what the steps of the search for brackets share.
#pragma once

#include "tvmeta_photo.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

namespace tvmeta::brackets {

constexpr double Tolerance = 1.0 / 6; // EV; half of the smallest step that cameras offer
constexpr std::size_t MaxRegular = 16;
constexpr double FastGap = 2;     // seconds; nobody turns a dial twice as fast
constexpr double HandRange = 1.8; // EV; of settings by hand that look like a series

// A copy of a record of which the caller may know less or more than this library.
template <typename Record>
Record recordAt(const void* records, std::size_t recordSize, std::size_t index) {
    Record record = {};
    const std::size_t size = recordSize < sizeof record ? recordSize : sizeof record;
    std::memcpy(&record, static_cast<const unsigned char*>(records) + index * recordSize, size);
    return record;
}

// The caller's files.
class Shots {
  public:
    Shots(const tvmeta_Shot* first, std::size_t size, std::size_t files)
        : records(first), recordSize(size), count(files) {}

    const tvmeta_Shot* records;
    std::size_t recordSize;
    std::size_t count;

    tvmeta_Shot operator[](std::size_t index) const { return recordAt<tvmeta_Shot>(records, recordSize, index); }

    // Sorting reads little else.
    std::string_view name(std::size_t index) const { return textAt(index, offsetof(tvmeta_Shot, name)); }
    std::string_view folder(std::size_t index) const { return textAt(index, offsetof(tvmeta_Shot, folder)); }

    // The length of the start that all names have in common, without digits at its end.
    std::size_t commonStart() const;

  private:
    std::string_view textAt(std::size_t index, std::size_t offset) const {
        const char* text = nullptr;
        if (recordSize >= offset + sizeof text) {
            const unsigned char* const bytes = static_cast<const unsigned char*>(static_cast<const void*>(records));
            std::memcpy(&text, bytes + index * recordSize + offset, sizeof text);
        }
        return text == nullptr ? std::string_view() : std::string_view(text);
    }
};

inline std::string_view textOrEmpty(const char* text) {
    return text == nullptr ? std::string_view() : std::string_view(text);
}

// Continues a hash. Equal hashes of different texts do no harm: they only group keys for sorting.
inline std::uint64_t hashText(std::uint64_t hash, std::string_view text) {
    constexpr std::uint64_t Factor = 0x9e3779b97f4a7c15; // odd, spreads the bits
    for (const char c : text) {
        hash = (hash ^ static_cast<unsigned char>(c)) * Factor;
    }
    return (hash ^ hash >> 32) * Factor; // so that "ab" "c" differs from "a" "bc"
}

inline bool has(const tvmeta_Shot& shot, int field) {
    return (shot.present >> field & 1) != 0;
}

// A number that must be positive; 0 if absent or impossible.
inline float positive(const tvmeta_Shot& shot, int field, float value) {
    return has(shot, field) && value > 0 && std::isfinite(value) ? value : 0;
}

enum class Kind : std::uint8_t {
    Marked,    // exposure mode 2: the camera varied the exposure
    Unmarked,  // exposure mode 0 of a camera that never records 2
    Automatic, // exposure mode 0
    Manual,    // exposure mode 1
    Unknown
};

// One photograph, in order of capture.
struct Frame {
    std::int64_t file;       // that speaks for it
    double value;            // EV at ISO 100, absent numbers as constants
    double bias;             // stops
    double pause;            // seconds since the end of the exposure before, at least; infinite: a sequence starts
    float exposureBefore;    // seconds
    float doubt;             // seconds by which the pause is probably longer: 0 or 1
    float fNumber, isoSpeed; // 0 unknown
    Kind kind;
    bool isExposure; // has an exposure time
    bool isQuick;    // nobody changes a setting after the frame before and presses again in that time
    bool startsCamera;
};

using Run = std::span<const Frame>;
using Key = double Frame::*; // the number by which exposures differ: value or bias

struct FoundSet {
    std::size_t first, size; // frames
    std::size_t expected;    // 0: unknown
    std::int64_t time;
    std::int32_t nanoseconds;
    std::int32_t confidence, evidence;
};

// One entry for sorting. Names are in memory that is far apart: `folder` and `order` decide most comparisons without
// them.
struct SortKey {
    std::uint64_t group;
    std::int64_t time;
    std::uint64_t folder, order; // of its name on the card, and of the file name
    std::int64_t file;
    std::int32_t nanoseconds;
};

// A number and its place, for sorting.
struct Place {
    double number;
    std::size_t place;
};

// All memory of a search. The spans have room for one entry per file, `scores` and `lengths` for one more.
struct Workspace {
    std::span<SortKey> keys;
    std::span<unsigned char> clock; // flags of each file
    std::span<std::int64_t> leaders;
    std::span<Frame> frames;
    std::span<FoundSet> sets;
    std::span<Place> places;
    std::span<double> scores;
    std::span<unsigned char> lengths;
    std::size_t setCount = 0;

    std::size_t indexOf(Run run) const { return static_cast<std::size_t>(run.data() - frames.data()); }

    Run framesOf(const FoundSet& set) const { return Run(frames).subspan(set.first, set.size); }

    std::size_t fileAt(std::size_t frame) const { return static_cast<std::size_t>(frames[frame].file); }

    void add(Run run, std::size_t expected, std::int32_t confidence, std::int32_t evidence) {
        sets[setCount++] = {indexOf(run), run.size(), expected, 0, 0, confidence, evidence};
    }
};

struct Options {
    std::size_t count; // 0: found
    double gap;        // negative: learnt
};

// bracket_files.cpp: files of one photograph. `leaders` gets the file that speaks for each.
void findLeaders(const Shots& shots, Workspace& work);

// bracket_frames.cpp: the photographs in order of capture, with their pauses. Shortens `frames` to those that can be in
// a set, and `keys` with it.
void makeFrames(const Shots& shots, const Options& options, Workspace& work);

// bracket_regular.cpp

// Whether two runs have the same differences between their exposures.
bool hasSameShape(Run a, Run b, Key key);

struct SetRule {
    Key key;
    double gap;                // longest pause in any set
    double regularGap;         // longest pause in a set of regular steps
    float patience;            // exposures that count as part of the pause after them: noise reduction
    double unevenness;         // share of the smallest step by which steps may differ
    bool needsRegular;         // three or more in regular steps
    bool allowsOneWay = false; // four or more from one end to the other, in any steps
    bool allowsRetakes = false;
    bool joinsQuick = false;                 // frames that follow quickly are of one set, if they can be
    double breakPause = 8;                   // seconds by which a pause between sets is longer than those inside
    bool (*accepts)(Run) = nullptr;          // of regular ones; null: all
    bool (*acceptsIrregular)(Run) = nullptr; // in spite of needsRegular; null: none
    bool (*acceptsUsual)(Run run, bool isWhole) = nullptr; // of the usual set and its starts; null: all
};

// Chooses the sets of a run that explain it best: `lengths` gets the length of the set that starts at each frame (1: in
// no set). Returns the score.
double chooseSets(Run run, const SetRule& rule, Run usual, Workspace& work);

bool isRegular(Run run, Key key, double unevenness);

// bracket_camera.cpp: what cameras record, of all frames of a camera.
void divideByCamera(Run camera, const Options& options, Workspace& work);

// Whether f-number and ISO speed are constant.
inline bool isSetByTime(Run run) {
    return std::ranges::all_of(run, [run](const Frame& frame) {
        return frame.fNumber == run.front().fNumber && frame.isoSpeed == run.front().isoSpeed;
    });
}

// Manual exposure whose bias varies with it, as in brackets of some cameras. False if there is none.
bool divideManualByBias(Run run, const Options& options, Workspace& work);

// bracket_series.cpp: exposures set by hand, of one run without a long pause; the same with a given count.
void divideByHand(Run run, const Options& options, Workspace& work);
void divideRunByCount(Run run, const Options& options, Workspace& work);

// bracket_pattern.cpp: exposures that repeat.
std::size_t levelCount(Run run, Key key, Workspace& work);
std::size_t wholePeriod(Run run, Key key); // with which the run repeats at least once; 0: none
bool agreesWithPauses(Run run, std::size_t period);
void divideByPattern(Run run, Key key, Workspace& work);
void divideByCount(Run run, std::size_t count, Workspace& work);

// Calls `visit` for the parts of a run, in order; `continues` says of a frame whether it belongs to the part before.
template <typename Continues, typename Visit>
void forEachPart(Run run, Continues continues, Visit visit) {
    for (std::size_t first = 0; first < run.size();) {
        std::size_t end = first + 1;
        while (end < run.size() && continues(run[end])) {
            ++end;
        }
        visit(run.subspan(first, end - first));
        first = end;
    }
}

} // namespace tvmeta::brackets
