// Photo: exposures that were set by hand, or by a camera that says nothing of it.
#include "photo/brackets.h"

#include <algorithm>

namespace tvmeta::brackets {

namespace {

// Seconds. The pauses inside series are learnt: the longest of these gaps whose runs consist of series.
constexpr double Gaps[] = {30, 12, 5, 2};
constexpr double HandStep = 0.3, MixedRange = 3; // EV
constexpr std::size_t MinMixed = 4;
constexpr double HandUnevenness = 0.4; // of the smallest step

// Steps that a dial makes, of the exposure time alone; with other settings, too many equal steps to be chance.
bool isSeries(Run run) {
    const auto [low, high] = std::ranges::minmax(run, {}, &Frame::value);
    const double range = high.value - low.value;
    const bool isSteady = range / static_cast<double>(run.size() - 1) >= HandStep;
    return isSteady && range >= (isSetByTime(run) ? HandRange : MixedRange) &&
           (isSetByTime(run) || (run.size() >= MinMixed && isRegular(run, &Frame::value, HandUnevenness)));
}

bool isSlow(Run run) {
    return std::ranges::any_of(run.subspan(1), [](const Frame& frame) { return frame.pause > FastGap; });
}

// Corrections end with an exposure that is kept: a short series before a photograph like its last is none.
void dropCorrections(Run run, Workspace& work) {
    constexpr std::size_t MaxCorrections = 5;
    for (std::size_t at = 0, next = 0; at < run.size(); at = next) {
        next = at + work.lengths[at];
        const bool isKept = next < run.size() && work.lengths[next] == 1 && next - at <= MaxCorrections &&
                            std::abs(run[next].value - run[next - 1].value) <= Tolerance;
        if (isKept) {
            std::ranges::fill(work.lengths.subspan(at, next - at), static_cast<unsigned char>(1));
        }
    }
}

// Chooses the sets of a run that consists of series, with few stray photographs.
bool chooseSeries(Run run, Workspace& work) {
    SetRule rule = {&Frame::value, Gaps[0], Gaps[0], 1, HandUnevenness, true};
    rule.allowsOneWay = true;
    rule.allowsRetakes = true;
    rule.accepts = isSeries;
    chooseSets(run, rule, {}, work);
    dropCorrections(run, work);
    std::size_t strays = 0;
    for (std::size_t at = 0; at < run.size(); at += work.lengths[at]) {
        strays += work.lengths[at] == 1 ? 1U : 0U;
    }
    return strays <= std::max<std::size_t>(1, run.size() / 6);
}

void addSeries(Run run, Workspace& work) {
    for (std::size_t at = 0; at < run.size(); at += work.lengths[at]) {
        if (work.lengths[at] > 1) {
            work.add(run.subspan(at, work.lengths[at]), 0, TVMETA_BY_GUESS, TVMETA_EVIDENCE_SERIES);
        }
    }
}

// Whether every pause between the chosen sets is longer than every pause inside them.
bool areApart(Run run, const Workspace& work) {
    double inside = 0, between = HUGE_VAL;
    for (std::size_t at = 0; at < run.size(); at += work.lengths[at]) {
        for (std::size_t i = 1; i < work.lengths[at]; ++i) {
            inside = std::max(inside, run[at + i].pause);
        }
        between = at == 0 ? between : std::min(between, run[at].pause);
    }
    return between > inside;
}

// A slow run that consists of series.
bool addSlowRun(Run run, Workspace& work) {
    const std::size_t period = wholePeriod(run, &Frame::value);
    const bool repeats = period >= 3 && period <= run.size() / 2 && isSetByTime(run) && agreesWithPauses(run, period);
    if (repeats && isRegular(run.first(period), &Frame::value, HandUnevenness)) {
        divideByPattern(run, &Frame::value, work);
        return true;
    }
    if (!chooseSeries(run, work)) {
        return false;
    }
    addSeries(run, work);
    return true;
}

// In a run without longer pauses: one series with a photograph before or after it, or what repeats. Where the numbers
// of the exposure are equal, a bias is the exposure.
void divideFastRun(Run run, Workspace& work) {
    const bool usesBias = run.front().kind == Kind::Manual && levelCount(run, &Frame::value, work) < 2;
    const Key key = usesBias ? &Frame::bias : &Frame::value;
    if (run.size() > 3 && wholePeriod(run, key) == 0 && !isRegular(run, key, HandUnevenness)) {
        for (const Run part : {run.subspan(1), run.first(run.size() - 1)}) {
            const bool isKept = part.data() == run.data() && std::abs(run.back().*key - part.back().*key) <= Tolerance;
            const bool mayBeSet = part.front().kind != Kind::Manual || (isSetByTime(part) && !isKept);
            if (isRegular(part, key, HandUnevenness) && mayBeSet) {
                return work.add(part, 0, TVMETA_BY_GUESS, TVMETA_EVIDENCE_SERIES);
            }
        }
    }
    if (!usesBias && run.size() > 3 && chooseSeries(run, work) && work.lengths[0] < run.size() && areApart(run, work)) {
        return addSeries(run, work);
    }
    divideByPattern(run, key, work);
}

void divideRun(Run run, std::span<const double> gaps, Workspace& work) {
    if (!isSlow(run)) {
        return divideFastRun(run, work);
    }
    const auto continues = [&](const Frame& frame) {
        const bool isNoiseReduced = gaps.front() > FastGap;
        return frame.pause - (isNoiseReduced ? static_cast<double>(frame.exposureBefore) : 0) <= gaps.front();
    };
    forEachPart(run, continues, [&](Run part) {
        if (!isSlow(part)) {
            divideFastRun(part, work);
        } else if (part.size() < 3 || !addSlowRun(part, work)) {
            divideRun(part, gaps.subspan(1), work);
        }
    });
}

// A part whose length and pauses agree with the count is divided; others at shorter pauses, as far as there are.
void countRun(Run run, std::size_t count, std::span<const double> gaps, Workspace& work) {
    if (gaps.empty() || (run.size() % count == 0 && agreesWithPauses(run, count))) {
        return divideByCount(run, count, work);
    }
    forEachPart(
        run, [&](const Frame& frame) { return frame.pause <= gaps.front(); },
        [&](Run part) { countRun(part, count, gaps.subspan(1), work); });
}

} // namespace

void divideRunByCount(Run run, const Options& options, Workspace& work) {
    countRun(run, options.count, options.gap < 0 ? std::span(Gaps) : std::span<const double>(), work);
}

void divideByHand(Run run, const Options& options, Workspace& work) {
    if (run.front().kind == Kind::Manual && divideManualByBias(run, options, work)) {
        return;
    }
    options.gap < 0 ? divideRun(run, Gaps, work) : divideFastRun(run, work);
}

} // namespace tvmeta::brackets
