#include "photographs/bracket_sets.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numeric>
#include <tuple>

namespace {

constexpr double Tolerance = 1.0 / 6;   // EV; half of the smallest step that cameras offer
constexpr double FocalTolerance = 0.01; // share of the focal length
constexpr double ClockStep = 1;         // capture times are whole seconds
constexpr size_t MaxPeriod = 100;       // bounds the work on runs that do not repeat
constexpr size_t MinBurst = 3;

struct Candidate {
    size_t shot = 0;
    double value = 0; // EV
};
using Run = std::span<const Candidate>;

bool isSame(const Candidate& a, const Candidate& b) {
    return std::abs(a.value - b.value) <= Tolerance;
}

// How many exposures of a run differ by more than the tolerance.
size_t levelCount(Run run) {
    std::vector<double> values;
    std::ranges::transform(run, std::back_inserter(values), &Candidate::value);
    std::ranges::sort(values);
    size_t levels = 0;
    double level = 0;
    for (const double value : values) {
        if (levels == 0 || value - level > Tolerance) {
            ++levels;
            level = value;
        }
    }
    return levels;
}

// The length of the equal exposures at the start of a run.
size_t burstLength(Run run) {
    const auto other = std::ranges::find_if(run, [&](const Candidate& c) { return !isSame(run.front(), c); });
    return static_cast<size_t>(other - run.begin());
}

// The length over which a run repeats its first `period` exposures.
size_t repeatedLength(Run run, size_t period) {
    size_t length = period;
    while (length < run.size() && isSame(run[length], run[length - period])) {
        ++length;
    }
    return length;
}

struct Repetition {
    size_t period = 0; // 0: none
    size_t length = 0;
};

// The smallest period, from `shortest`, with which the start of a run repeats over at least the length that `needed`
// gives for it.
template <typename Length>
Repetition findRepetition(Run run, size_t shortest, Length needed) {
    for (size_t period = shortest; period <= MaxPeriod && period < run.size(); ++period) {
        const size_t length = repeatedLength(run, period);
        if (length >= needed(period)) {
            return {period, length};
        }
    }
    return {};
}

class RunSplitter {
  public:
    RunSplitter(const BracketRules& chosen, std::vector<BracketSet>& found) : rules(chosen), sets(found) {}

    void split(Run run) {
        if (run.size() < 2 || levelCount(run) < 2) {
            return;
        }
        if (rules.count) {
            return splitByCount(run, *rules.count);
        }
        const Repetition whole = findRepetition(run, 2, [&](size_t) { return run.size(); });
        if (whole.period > 0 && whole.period <= run.size() / 2) {
            addPeriods(run, whole.period);
        } else if (!splitByParts(run)) {
            whole.period > 0 ? addPeriods(run, whole.period) : addUnrepeated(run);
        }
    }

  private:
    void addSet(Run run, size_t expectedShots) {
        if (levelCount(run) < 2) {
            return;
        }
        BracketSet set = {{}, expectedShots};
        std::ranges::transform(run, std::back_inserter(set.shots), &Candidate::shot);
        sets.push_back(std::move(set));
    }

    void addPeriods(Run run, size_t period) {
        for (size_t at = 0; at < run.size(); at += period) {
            addSet(run.subspan(at, std::min(period, run.size() - at)), period);
        }
    }

    // The repeating parts of a run and the shots between them; false if nothing repeats.
    bool splitByParts(Run run) {
        size_t rest = 0;
        for (size_t at = 0; at < run.size();) {
            const Run next = run.subspan(at);
            const size_t burst = burstLength(next.first(std::min(next.size(), MaxPeriod)));
            const Repetition part =
                findRepetition(next, std::max<size_t>(burst + 1, 2), [](size_t period) { return 2 * period; });
            if (part.period == 0) {
                ++at;
                continue;
            }
            addUnrepeated(run.subspan(rest, at - rest));
            addPeriods(next.first(part.length), part.period);
            at += part.length;
            rest = at;
        }
        if (rest > 0) {
            addUnrepeated(run.subspan(rest));
        }
        return rest > 0;
    }

    // One set. If fewer than half of its exposures differ: the shots between the bursts.
    void addUnrepeated(Run run) {
        if (levelCount(run) >= run.size() - run.size() / 2) {
            return addSet(run, run.size());
        }
        size_t rest = 0;
        for (size_t at = 0; at < run.size();) {
            const size_t burst = burstLength(run.subspan(at));
            if (burst >= MinBurst) {
                addSet(run.subspan(rest, at - rest), at - rest);
                rest = at + burst;
            }
            at += burst;
        }
        addSet(run.subspan(rest), run.size() - rest);
    }

    // Sets of `count` shots. Shots at the start are left out where that gives the sets the most
    // different exposures.
    void splitByCount(Run run, size_t count) {
        const size_t groups = run.size() / count;
        size_t bestStart = 0;
        size_t bestLevels = 0;
        for (size_t start = 0; groups > 0 && start <= run.size() % count; ++start) {
            size_t levels = 0;
            for (size_t i = 0; i < groups; ++i) {
                levels += levelCount(run.subspan(start + i * count, count));
            }
            if (levels > bestLevels) {
                bestStart = start;
                bestLevels = levels;
            }
        }
        addPeriods(run.subspan(bestStart, groups * count), count);
    }

    const BracketRules& rules;
    std::vector<BracketSet>& sets;
};

auto sameScene(const BracketShot& shot) {
    return std::tie(shot.folder, shot.camera, shot.fileType);
}

bool continuesRun(const BracketShot& first, const BracketShot& previous, const BracketShot& shot, double gap) {
    const double pause = static_cast<double>(*shot.start - *previous.start) - previous.exposureTime;
    return sameScene(first) == sameScene(shot) && pause <= gap + ClockStep &&
           std::abs(shot.focalLength - first.focalLength) <= FocalTolerance * first.focalLength;
}

// Photographs with a time and an exposure, by scene and time; of one time, in the order of the input.
std::vector<Candidate> sortedCandidates(std::span<const BracketShot> shots, std::vector<size_t>& unknown) {
    std::vector<Candidate> candidates;
    for (size_t i = 0; i < shots.size(); ++i) {
        const std::optional<double> value = exposureValue(shots[i]);
        if (value && shots[i].start) {
            candidates.push_back({i, *value});
        } else {
            unknown.push_back(i);
        }
    }
    std::ranges::sort(candidates, {}, [&](const Candidate& candidate) {
        const BracketShot& shot = shots[candidate.shot];
        return std::tie(shot.folder, shot.camera, shot.fileType, *shot.start, candidate.shot);
    });
    return candidates;
}

} // namespace

std::optional<double> exposureValue(const BracketShot& shot) {
    const double light = shot.fNumber * shot.fNumber / shot.exposureTime;
    const double value = std::log2(light) - std::log2(shot.isoSpeed / 100);
    const bool isKnown = shot.fNumber > 0 && shot.exposureTime > 0 && shot.isoSpeed > 0;
    return isKnown && std::isfinite(value) ? std::optional(value) : std::nullopt;
}

// 1. Photographs of one folder, camera and file type are sorted by start time, then by name.
// 2. A run continues while each start is at most gap + 1 s after the end (start + exposure time) of the previous
//    exposure and the focal length is within 1 % of that of the first shot. Exposures within 1/6 EV are equal.
// 3. The smallest period from 2 to 100 with which the whole run repeats divides it into sets; the last set may be
//    shorter. If no period fills the whole run twice, parts that a period fills at least twice are divided first.
// 4. A run without repetition is one set, and so are the shots between two parts. If fewer than half of its exposures
//    differ, bursts of 3 or more equal exposures divide it and are omitted.
// 5. With a count, every set has that number of shots, and the others are single.
// 6. A set has at least two different exposures: equal ones are a burst. Shots in no set are single.
// Limits: exposures that drift by more than 1/6 EV from set to set do not repeat; a set that occurs once and repeats a
// part of itself is divided; two cameras of one model in one folder count as one.
Brackets findBrackets(std::span<const BracketShot> shots, const BracketRules& rules) {
    Brackets result;
    const std::vector<Candidate> candidates = sortedCandidates(shots, result.unknown);
    RunSplitter splitter(rules, result.sets);
    for (auto first = candidates.begin(); first != candidates.end();) {
        auto end = std::next(first);
        while (end != candidates.end() &&
               continuesRun(shots[first->shot], shots[std::prev(end)->shot], shots[end->shot], rules.gap)) {
            ++end;
        }
        splitter.split({first, end});
        first = end;
    }

    const auto captureOrder = [&](size_t shot) { return std::make_pair(*shots[shot].start, shot); };
    std::ranges::sort(result.sets, {}, [&](const BracketSet& set) { return captureOrder(set.shots.front()); });
    std::vector<bool> isInSet(shots.size());
    for (const BracketSet& set : result.sets) {
        std::ranges::for_each(set.shots, [&](size_t shot) { isInSet[shot] = true; });
    }
    for (const Candidate& candidate : candidates) {
        if (!isInSet[candidate.shot]) {
            result.singles.push_back(candidate.shot);
        }
    }
    std::ranges::sort(result.singles, {}, captureOrder);
    return result;
}

std::vector<double> exposureOffsets(std::span<const double> values) {
    std::vector<size_t> order(values.size());
    std::iota(order.begin(), order.end(), size_t{0});
    std::ranges::stable_sort(order, {}, [&](size_t i) { return values[i]; });
    size_t middle = order[values.size() / 2];
    if (values.size() % 2 == 0) {
        middle = std::min(middle, order[values.size() / 2 - 1]);
    }
    std::vector<double> offsets;
    for (const double value : values) {
        offsets.push_back(values[middle] - value);
    }
    return offsets;
}
