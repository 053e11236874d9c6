// Photo: exposures that repeat, of photographs of which the camera says no more.
#include "photo/brackets.h"

#include <algorithm>

namespace tvmeta::brackets {

namespace {

constexpr std::size_t MaxPeriod = 32; // bounds the work on runs that do not repeat
constexpr std::size_t MinBurst = 3;

// The length of the equal exposures at the start of a run.
std::size_t burstLength(Run run, Key key) {
    const auto isOther = [&](const Frame& frame) { return std::abs(run.front().*key - frame.*key) > Tolerance; };
    return static_cast<std::size_t>(std::ranges::find_if(run, isOther) - run.begin());
}

// The length over which a run repeats its first `period` exposures.
std::size_t repeatedLength(Run run, std::size_t period, Key key) {
    std::size_t length = period;
    while (length < run.size() && std::abs(run[length].*key - run[length - period].*key) <= Tolerance) {
        ++length;
    }
    return length;
}

struct PauseMeans {
    double inside, between;
};

PauseMeans meanPauses(Run run, std::size_t period) {
    double inside = 0, between = 0;
    std::size_t betweenCount = 0;
    for (std::size_t i = 1; i < run.size(); ++i) {
        (i % period == 0 ? between : inside) += run[i].pause;
        betweenCount += i % period == 0 ? 1U : 0U;
    }
    const std::size_t insideCount = run.size() - 1 - betweenCount;
    return {inside / static_cast<double>(std::max<std::size_t>(insideCount, 1)),
            between / static_cast<double>(std::max<std::size_t>(betweenCount, 1))};
}

// The first frame of a run after which sets start, by the pauses: the longest are between sets, if they differ.
std::size_t firstStart(Run run, std::size_t period) {
    constexpr double Clear = 0.5; // seconds
    std::size_t start = 0;
    double inside = HUGE_VAL, longest = 0;
    for (std::size_t phase = 0; phase < period && phase < run.size(); ++phase) {
        double sum = 0;
        std::size_t count = 0;
        for (std::size_t i = phase == 0 ? period : phase; i < run.size(); i += period) {
            sum += run[i].pause;
            ++count;
        }
        const double mean = sum / static_cast<double>(std::max<std::size_t>(count, 1));
        if (phase == 0) {
            inside = mean;
        } else if (mean > longest) {
            longest = mean;
            start = phase;
        }
    }
    return longest > 2 * std::max(inside, 0.0) + Clear ? start : 0;
}

class PatternRule {
  public:
    PatternRule(Key chosen, Workspace& memory) : key(chosen), work(memory) {}

    void addPeriods(Run run, std::size_t period, std::int32_t confidence, std::int32_t evidence) {
        for (std::size_t at = 0; at < run.size(); at += period) {
            addSet(run.subspan(at, std::min(period, run.size() - at)), period, confidence, evidence);
        }
    }

    void addRepeated(Run run, std::size_t period) {
        const std::size_t start = firstStart(run, period);
        addSet(run.first(start), period, TVMETA_BY_PATTERN, TVMETA_EVIDENCE_REPEATED);
        addPeriods(run.subspan(start), period, TVMETA_BY_PATTERN, TVMETA_EVIDENCE_REPEATED);
    }

    // The repeating parts of a run and the frames between them; false if nothing repeats.
    bool splitByParts(Run run) {
        std::size_t rest = 0;
        for (std::size_t at = 0; at < run.size();) {
            const Run next = run.subspan(at);
            const std::size_t burst = burstLength(next.first(std::min(next.size(), MaxPeriod)), key);
            std::size_t length = 0;
            const std::size_t period = findPart(next, std::max<std::size_t>(burst + 1, 2), length);
            if (period == 0) {
                ++at;
                continue;
            }
            addUnrepeated(run.subspan(rest, at - rest));
            addRepeated(next.first(length), period);
            at += length;
            rest = at;
        }
        if (rest > 0) {
            addUnrepeated(run.subspan(rest));
        }
        return rest > 0;
    }

    // One set. If fewer than half of its exposures differ: the frames between the bursts.
    void addUnrepeated(Run run) {
        if (levelCount(run, key, work) >= run.size() - run.size() / 2) {
            return addOnce(run);
        }
        std::size_t rest = 0;
        for (std::size_t at = 0; at < run.size();) {
            const std::size_t burst = burstLength(run.subspan(at), key);
            if (burst >= MinBurst) {
                addOnce(run.subspan(rest, at - rest));
                rest = at + burst;
            }
            at += burst;
        }
        addOnce(run.subspan(rest));
    }

  private:
    void addSet(Run run, std::size_t expected, std::int32_t confidence, std::int32_t evidence) {
        const bool isUnknown = std::ranges::none_of(run, &Frame::isExposure) && run.size() > 1;
        const bool isCounted = confidence == TVMETA_BY_COUNT;
        const bool mayWander = !isCounted && !run.empty() && run.front().kind == Kind::Manual && !isSetByTime(run);
        const std::size_t levels = levelCount(run, key, work);
        const bool areMostlyEqual = 2 * levels <= run.size(); // a burst with a change
        if ((isCounted && isUnknown) || (levels >= (mayWander ? 3U : 2U) && (isCounted || !areMostlyEqual))) {
            work.add(run, expected, confidence, evidence);
        }
    }

    // In manual exposure, settings change between photographs: only a change of the exposure time alone, twice, is a
    // set.
    void addOnce(Run run) {
        const bool isManual = !run.empty() && run.front().kind == Kind::Manual;
        if (!isManual || (isSetByTime(run) && levelCount(run, key, work) >= 3 && isClear(run))) {
            addSet(run, 0, TVMETA_BY_GUESS, TVMETA_EVIDENCE_DIFFERENT);
        }
    }

    // Faster than anybody turns a dial, or further than a correction.
    bool isClear(Run run) const {
        constexpr double DialPause = 1, ClearRange = 1.8; // seconds, EV
        const auto [low, high] = std::ranges::minmax(run, {}, key);
        if (std::abs(run.back().*key - run[run.size() - 2].*key) <= Tolerance) {
            return false; // corrected, then kept
        }
        return high.*key - low.*key >= ClearRange || std::ranges::all_of(run.subspan(1), [](const Frame& frame) {
                   return frame.pause + static_cast<double>(frame.doubt) < DialPause;
               });
    }

    std::size_t findPart(Run run, std::size_t shortest, std::size_t& length) const {
        for (std::size_t period = shortest; period <= MaxPeriod && 2 * period <= run.size(); ++period) {
            length = repeatedLength(run, period, key);
            if (length >= 2 * period) {
                return period;
            }
        }
        return 0;
    }

    Key key;
    Workspace& work;
};

} // namespace

std::size_t levelCount(Run run, Key key, Workspace& work) {
    const std::span<Place> places = work.places.first(run.size());
    for (std::size_t i = 0; i < run.size(); ++i) {
        places[i] = {run[i].*key, i};
    }
    std::ranges::sort(places, {}, &Place::number);
    std::size_t levels = 0;
    double level = 0;
    for (const Place& place : places) {
        if (levels == 0 || place.number - level > Tolerance) {
            ++levels;
            level = place.number;
        }
    }
    return levels;
}

std::size_t wholePeriod(Run run, Key key) {
    for (std::size_t period = 2; period <= MaxPeriod && period < run.size(); ++period) {
        if (repeatedLength(run, period, key) == run.size()) {
            return period;
        }
    }
    return 0;
}

bool agreesWithPauses(Run run, std::size_t period) {
    const PauseMeans pauses = meanPauses(run, period);
    return run.size() <= period || pauses.between >= 0.8 * pauses.inside;
}

void divideByPattern(Run run, Key key, Workspace& work) {
    if (run.size() < 2 || levelCount(run, key, work) < 2) {
        return;
    }
    PatternRule rule(key, work);
    const std::size_t period = wholePeriod(run, key);
    if (period > 0 && period <= run.size() / 2) {
        rule.addRepeated(run, period);
    } else if (!rule.splitByParts(run)) {
        const bool canBeCut =
            period > 0 && (run.front().kind != Kind::Manual || (isSetByTime(run) && levelCount(run, key, work) > 2));
        canBeCut ? rule.addPeriods(run, period, TVMETA_BY_GUESS, TVMETA_EVIDENCE_REPEATED) : rule.addUnrepeated(run);
    }
}

// Sets of `count` frames. Frames at the start are left out where that gives the sets the most different exposures.
void divideByCount(Run run, std::size_t count, Workspace& work) {
    constexpr std::size_t MaxLeftOut = 100; // test shots are few; bounds the work on large counts
    const std::size_t groups = run.size() / count;
    std::size_t bestStart = 0, bestLevels = 0;
    for (std::size_t start = 0; groups > 0 && start <= std::min(run.size() % count, MaxLeftOut); ++start) {
        std::size_t levels = 0;
        for (std::size_t i = 0; i < groups; ++i) {
            levels += levelCount(run.subspan(start + i * count, count), &Frame::value, work);
        }
        if (levels > bestLevels) {
            bestStart = start;
            bestLevels = levels;
        }
    }
    PatternRule(&Frame::value, work)
        .addPeriods(run.subspan(bestStart, groups * count), count, TVMETA_BY_COUNT, TVMETA_EVIDENCE_COUNT);
}

} // namespace tvmeta::brackets
