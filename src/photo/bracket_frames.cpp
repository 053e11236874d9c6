// Photo: photographs in order of capture, with the pauses between them.
#include "photo/brackets.h"
#include "photo/file_names.h"
#include "support/text_search.h"

#include <algorithm>

namespace tvmeta::brackets {

namespace {

constexpr double LongestPause = 30;     // seconds; series set by hand are slower than this between each other
constexpr double TurnedPause = 2;       // seconds; between pictures of other sizes or orientations
constexpr double FocalTolerance = 0.01; // share of the focal length
constexpr double QuickPause = 0.7;      // seconds
constexpr double ClockStep = 1;         // seconds, of a clock without fractions
constexpr std::int64_t MinTime = -(std::int64_t{1} << 53); // the seconds that a double distinguishes
constexpr std::int32_t NanosecondsPerSecond = 1000000000;
constexpr std::int32_t FileNumbers = 10000; // after IMG_9999 comes IMG_0001

enum ClockFlag : unsigned char { UsesOffset = 1, UsesFraction = 2 };

std::size_t fileOf(const SortKey& key) {
    return static_cast<std::size_t>(key.file);
}

std::uint64_t bodyOf(const tvmeta_Shot& shot) {
    return shot.camera ^ (shot.serialNumber * 31 + 1);
}

// What is known of the clock of each body: an offset counts if all its photographs have one, a fraction if not all
// fractions are 0.
void learnClocks(const Shots& shots, Workspace& work) {
    std::ranges::sort(work.keys, {}, &SortKey::group);
    for (auto first = work.keys.begin(); first != work.keys.end();) {
        bool haveOffset = true, haveFraction = false;
        auto end = first;
        for (; end != work.keys.end() && end->group == first->group; ++end) {
            const tvmeta_Shot shot = shots[fileOf(*end)];
            haveOffset = haveOffset && has(shot, TVMETA_UTC_OFFSET);
            haveFraction = haveFraction || (has(shot, TVMETA_SUB_SECOND) && shot.captureNanoseconds > 0);
        }
        const int flags = (haveOffset ? UsesOffset : 0) | (haveFraction ? UsesFraction : 0);
        for (; first != end; ++first) {
            work.clock[fileOf(*first)] = static_cast<unsigned char>(flags);
        }
    }
}

bool usesFraction(const tvmeta_Shot& shot, unsigned char clock) {
    return (clock & UsesFraction) != 0 && has(shot, TVMETA_SUB_SECOND) && shot.captureNanoseconds >= 0 &&
           shot.captureNanoseconds < NanosecondsPerSecond;
}

SortKey keyOf(const tvmeta_Shot& shot, std::size_t file, unsigned char clock, std::size_t commonStart) {
    SortKey key = {};
    key.order = orderOfName(textFrom(textOrEmpty(shot.name), commonStart));
    const std::string_view card = cardOf(textOrEmpty(shot.folder));
    key.folder = orderOfName(textFrom(textOrEmpty(shot.folder), card.size()));
    key.group = hashText(bodyOf(shot) + static_cast<std::uint64_t>(shot.format), card);
    key.file = static_cast<std::int64_t>(file);
    if (has(shot, TVMETA_CAPTURE_TIME)) {
        key.time = std::clamp(shot.captureTime, MinTime, -MinTime);
        key.time -= (clock & UsesOffset) != 0 ? std::int64_t{shot.utcOffset} * 60 : 0;
        key.nanoseconds = usesFraction(shot, clock) ? shot.captureNanoseconds : 0;
    } else {
        key.time = INT64_MIN;
    }
    return key;
}

Kind kindOf(const tvmeta_Shot& shot) {
    if (!has(shot, TVMETA_EXPOSURE_MODE)) {
        return Kind::Unknown;
    }
    switch (shot.exposureMode) {
    case 0:
        return shot.hidesBrackets != 0 ? Kind::Unmarked : Kind::Automatic;
    case 1:
        return Kind::Manual;
    case 2:
        return Kind::Marked;
    default:
        return Kind::Unknown;
    }
}

bool hasBias(const tvmeta_Shot& shot) {
    return has(shot, TVMETA_EXPOSURE_BIAS) && std::isfinite(shot.exposureBias);
}

// What can be in a set: an exposure at a time, or a photograph of a marked bracket whose bias says what is needed.
bool canBeInSet(const tvmeta_Shot& shot) {
    const bool isExposure = positive(shot, TVMETA_EXPOSURE_TIME, shot.exposureTime) > 0;
    return has(shot, TVMETA_CAPTURE_TIME) && (isExposure || (kindOf(shot) == Kind::Marked && hasBias(shot)));
}

Frame frameOf(const tvmeta_Shot& shot, const SortKey& key) {
    Frame frame = {};
    frame.file = key.file;
    const float time = positive(shot, TVMETA_EXPOSURE_TIME, shot.exposureTime);
    frame.fNumber = positive(shot, TVMETA_F_NUMBER, shot.fNumber);
    frame.isoSpeed = positive(shot, TVMETA_ISO_SPEED, shot.isoSpeed);
    const auto stops = [](float number) { return number > 0 ? std::log2(static_cast<double>(number)) : 0; };
    frame.value = 2 * stops(frame.fNumber) - stops(time) - (frame.isoSpeed > 0 ? stops(frame.isoSpeed / 100) : 0);
    frame.bias = hasBias(shot) ? static_cast<double>(shot.exposureBias) : 0;
    frame.kind = kindOf(shot);
    frame.isExposure = time > 0;
    return frame;
}

// The folder and the file number go on from one photograph to the next.
bool continuesCard(const tvmeta_Shot& before, const tvmeta_Shot& shot) {
    const std::string_view folder = textOrEmpty(shot.folder), folderBefore = textOrEmpty(before.folder);
    if (folder == folderBefore) {
        return true;
    }
    const std::int32_t number = fileNumber(stemOf(textOrEmpty(shot.name)));
    const std::int32_t numberBefore = fileNumber(stemOf(textOrEmpty(before.name)));
    const bool isNext = number >= 0 && numberBefore >= 0 &&
                        (number == numberBefore + 1 || (numberBefore == FileNumbers - 1 && number <= 1));
    return isNext && cardFolderNumber(folderBefore) >= 0 && cardOf(folder) == cardOf(folderBefore) &&
           cardFolderNumber(folder) == cardFolderNumber(folderBefore) + 1;
}

bool hasSameAbsences(const tvmeta_Shot& a, const tvmeta_Shot& b) {
    const auto same = [&](int field, float tvmeta_Shot::*number) {
        return (positive(a, field, a.*number) > 0) == (positive(b, field, b.*number) > 0);
    };
    return same(TVMETA_EXPOSURE_TIME, &tvmeta_Shot::exposureTime) && same(TVMETA_F_NUMBER, &tvmeta_Shot::fNumber) &&
           same(TVMETA_ISO_SPEED, &tvmeta_Shot::isoSpeed);
}

bool hasSameView(const tvmeta_Shot& a, const tvmeta_Shot& b) {
    return a.width == b.width && a.height == b.height && a.orientation == b.orientation;
}

// Whether two photographs in order can be of one sequence, whatever the pause.
bool continuesSequence(const tvmeta_Shot& before, const tvmeta_Shot& shot, double firstFocal, bool isCounted) {
    const bool hasSameEvidence = kindOf(before) == kindOf(shot) && hasSameAbsences(before, shot);
    const double focal = positive(shot, TVMETA_FOCAL_LENGTH, shot.focalLength);
    return before.camera == shot.camera && before.serialNumber == shot.serialNumber && before.format == shot.format &&
           (isCounted || hasSameEvidence) && continuesCard(before, shot) &&
           std::abs(focal - firstFocal) <= FocalTolerance * firstFocal;
}

// The longest pause in a sequence: what the user gives; else it is short where the camera was turned.
double longestPause(const tvmeta_Shot& before, const tvmeta_Shot& shot, const Options& options) {
    if (options.gap >= 0) {
        return options.gap;
    }
    const bool isView = kindOf(shot) == Kind::Marked || options.count > 0 || hasSameView(before, shot);
    return (isView ? LongestPause : TurnedPause) +
           static_cast<double>(positive(before, TVMETA_EXPOSURE_TIME, before.exposureTime));
}

// Seconds from the end of an exposure to the start of the next, at least.
double pauseBetween(const SortKey& before, const tvmeta_Shot& shotBefore, const SortKey& key, bool isExact) {
    constexpr std::int64_t NoTime = INT64_MIN;
    if (before.time == NoTime || key.time == NoTime) {
        return before.time == key.time ? 0 : HUGE_VAL;
    }
    const double seconds = static_cast<double>(key.time - before.time);
    const double fraction = static_cast<double>(key.nanoseconds - before.nanoseconds) / NanosecondsPerSecond;
    const double exposure = positive(shotBefore, TVMETA_EXPOSURE_TIME, shotBefore.exposureTime);
    return seconds + fraction - exposure - (isExact ? 0 : ClockStep);
}

// Within a second, IMG_9999 comes before IMG_0001: the names start after their largest step.
void rotateWrappedNames(const Shots& shots, std::span<SortKey> equalTimes) {
    const auto numberAt = [&](const SortKey& key) { return fileNumber(stemOf(shots.name(fileOf(key)))); };
    for (std::size_t i = 1; i < equalTimes.size(); ++i) {
        if (numberAt(equalTimes[i]) - numberAt(equalTimes[i - 1]) > FileNumbers / 2) {
            std::rotate(equalTimes.begin(), equalTimes.begin() + static_cast<std::ptrdiff_t>(i), equalTimes.end());
            return;
        }
    }
}

void sortKeys(const Shots& shots, std::span<SortKey> keys) {
    const auto isSameTime = [](const SortKey& a, const SortKey& b) {
        return a.group == b.group && a.time == b.time && a.nanoseconds == b.nanoseconds;
    };
    std::ranges::sort(keys, [&](const SortKey& a, const SortKey& b) {
        if (!isSameTime(a, b)) {
            return a.group != b.group ? a.group < b.group
                   : a.time != b.time ? a.time < b.time
                                      : a.nanoseconds < b.nanoseconds;
        }
        if (a.folder != b.folder || a.order != b.order) {
            return a.folder != b.folder ? a.folder < b.folder : a.order < b.order;
        }
        const int folders = compareNames(shots.folder(fileOf(a)), shots.folder(fileOf(b)));
        const int names = folders != 0 ? 0 : compareNames(shots.name(fileOf(a)), shots.name(fileOf(b)));
        return folders != 0 ? folders < 0 : names != 0 ? names < 0 : a.file < b.file;
    });
    for (std::size_t first = 0; first < keys.size();) {
        std::size_t end = first + 1;
        while (end < keys.size() && isSameTime(keys[first], keys[end]) &&
               shots.folder(fileOf(keys[end])) == shots.folder(fileOf(keys[first]))) {
            ++end;
        }
        rotateWrappedNames(shots, keys.subspan(first, end - first));
        first = end;
    }
}

} // namespace

void makeFrames(const Shots& shots, const Options& options, Workspace& work) {
    for (std::size_t i = 0; i < shots.count; ++i) {
        work.keys[i] = {bodyOf(shots[i]), 0, 0, 0, static_cast<std::int64_t>(i), 0};
    }
    learnClocks(shots, work);
    const std::size_t commonStart = shots.commonStart();
    std::size_t count = 0;
    for (std::size_t i = 0; i < shots.count; ++i) {
        const tvmeta_Shot shot = shots[i];
        if (work.leaders[i] == static_cast<std::int64_t>(i) && (options.count > 0 || canBeInSet(shot))) {
            work.keys[count++] = keyOf(shot, i, work.clock[i], commonStart);
        }
    }
    work.keys = work.keys.first(count);
    work.frames = work.frames.first(count);
    sortKeys(shots, work.keys);

    tvmeta_Shot before = {};
    double firstFocal = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const SortKey& key = work.keys[i];
        const tvmeta_Shot shot = shots[fileOf(key)];
        Frame& frame = work.frames[i] = frameOf(shot, key);
        frame.startsCamera = i == 0 || key.group != work.keys[i - 1].group;
        frame.pause = HUGE_VAL;
        if (!frame.startsCamera && continuesSequence(before, shot, firstFocal, options.count > 0)) {
            const bool isExact = usesFraction(before, work.clock[fileOf(work.keys[i - 1])]) &&
                                 usesFraction(shot, work.clock[fileOf(key)]);
            const double pause = pauseBetween(work.keys[i - 1], before, key, isExact);
            frame.exposureBefore = positive(before, TVMETA_EXPOSURE_TIME, before.exposureTime);
            // Some cameras record the end of the exposure.
            const double exposure = positive(shot, TVMETA_EXPOSURE_TIME, shot.exposureTime);
            frame.isQuick =
                isExact && pause + std::max(static_cast<double>(frame.exposureBefore) - exposure, 0.0) <= QuickPause;
            frame.doubt = isExact ? 0 : static_cast<float>(ClockStep);
            frame.pause = pause <= longestPause(before, shot, options) ? pause : HUGE_VAL;
        }
        if (frame.pause == HUGE_VAL) {
            firstFocal = positive(shot, TVMETA_FOCAL_LENGTH, shot.focalLength);
        }
        before = shot;
    }
}

} // namespace tvmeta::brackets
