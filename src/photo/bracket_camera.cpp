// Photo: brackets that the camera recorded: exposure mode 2, or a bias that varies.
#include "photo/brackets.h"

#include <algorithm>

namespace tvmeta::brackets {

namespace {

constexpr double MarkedGap = 5, PressedGap = 15; // seconds; one press for all, one press for each
constexpr double MarkedBreak = 10;               // seconds; presses differ more than the pauses of a drive
constexpr double HandGap = 30;
constexpr double BiasUnevenness = 0.5;

bool hasPausesWithin(Run run, double gap) {
    return std::ranges::all_of(run.subspan(1), [&](const Frame& frame) {
        return frame.pause - static_cast<double>(frame.exposureBefore) <= gap;
    });
}

// Whether the exposures follow the bias, as they do while the light is constant. A step may be missing where the
// exposure time reaches a limit of the camera.
bool followsBias(Run run, std::size_t maxLimits = 1) {
    std::size_t limits = 0;
    double asked = 0, made = 0; // stops
    for (std::size_t i = 1; i < run.size(); ++i) {
        const double bias = run[i].bias - run[i - 1].bias;
        const double stops = run[i - 1].value - run[i].value;
        const bool isAtLimit = std::abs(stops) <= Tolerance && limits++ < maxLimits;
        if (!(std::abs(stops - bias) <= 0.5 + std::abs(bias) / 4) && !isAtLimit) {
            return false;
        }
        asked += std::abs(bias);
        made += std::copysign(stops, stops * bias);
    }
    return made >= asked / 2; // steps of a third may be rounded, but not all to nothing
}

// The middle exposure first, or the darkest: the orders in which cameras bracket, and hardly those of corrections.
bool hasCameraOrder(Run run) {
    const auto [low, high] = std::ranges::minmax(run, {}, &Frame::bias);
    const bool middleFirst = std::abs(run.front().bias - (low.bias + high.bias) / 2) <= Tolerance;
    return middleFirst || std::ranges::is_sorted(run, {}, &Frame::bias);
}

bool isUnmarkedSet(Run run) {
    return followsBias(run) &&
           (hasPausesWithin(run, FastGap) ||
            (hasPausesWithin(run, PressedGap) && hasCameraOrder(run) && isRegular(run, &Frame::bias, 0)));
}

// Any exposures, too quick for a dial.
bool isQuickSet(Run run) {
    return followsBias(run, 0) && std::ranges::all_of(run.subspan(1), &Frame::isQuick);
}

// Corrections repeat, too: the first exposures of the usual set count if they are fast.
bool isUsualByBias(Run run, bool isWhole) {
    return followsBias(run) && hasPausesWithin(run, isWhole ? PressedGap : FastGap);
}

bool isGuessedSet(Run run) {
    const auto [low, high] = std::ranges::minmax(run, {}, &Frame::bias);
    return followsBias(run) && (hasPausesWithin(run, FastGap) || high.bias - low.bias >= HandRange);
}

struct CameraRule {
    SetRule rule;
    std::int32_t confidence, evidence;
};

SetRule ruleFor(Key key, double gap, double regularGap, const Options& options) {
    const bool isGiven = options.gap >= 0;
    return {key, isGiven ? options.gap : gap, isGiven ? options.gap : regularGap, isGiven ? 0.0F : 1.0F, 0, false};
}

CameraRule markedRule(Key key, const Options& options) {
    CameraRule marked = {ruleFor(key, MarkedGap, PressedGap, options), TVMETA_BY_CAMERA,
                         key == &Frame::bias ? TVMETA_EVIDENCE_MARK_BIAS : TVMETA_EVIDENCE_MARK_EXPOSURE};
    marked.rule.joinsQuick = true;
    marked.rule.breakPause = MarkedBreak;
    marked.rule.unevenness = key == &Frame::bias ? 0 : 1.6; // metered exposures are rounded
    return marked;
}

CameraRule biasRule(Kind kind, const Options& options) {
    CameraRule bias = {ruleFor(&Frame::bias, HandGap, HandGap, options), TVMETA_BY_GUESS, TVMETA_EVIDENCE_BIAS};
    bias.rule.needsRegular = true;
    bias.rule.unevenness = BiasUnevenness;
    bias.rule.allowsOneWay = true;
    bias.rule.accepts = isGuessedSet;
    bias.rule.acceptsUsual = isUsualByBias;
    bias.rule.allowsRetakes = kind == Kind::Automatic;
    if (kind == Kind::Unmarked) {
        bias.rule.accepts = [](Run run) { return isUnmarkedSet(run) || isGuessedSet(run); };
        bias.rule.acceptsIrregular = isQuickSet;
        bias.rule.joinsQuick = true;
    }
    return bias;
}

void addChosen(Run run, const CameraRule& camera, Workspace& work) {
    for (std::size_t at = 0; at < run.size(); at += work.lengths[at]) {
        if (work.lengths[at] > 1) {
            const Run set = run.subspan(at, work.lengths[at]);
            const bool isKnown = set.front().kind == Kind::Unmarked && isUnmarkedSet(set);
            work.add(set, 0, isKnown ? TVMETA_BY_CAMERA : camera.confidence, camera.evidence);
        }
    }
}

// Of marked frames, the bias divides them, unless the exposures explain more.
void divideMarked(Run run, const Options& options, Run usual, Workspace& work) {
    const CameraRule byBias = markedRule(&Frame::bias, options), byValue = markedRule(&Frame::value, options);
    const double valueScore = chooseSets(run, byValue.rule, usual, work);
    const double biasScore = chooseSets(run, byBias.rule, usual, work);
    if (biasScore < valueScore && biasScore <= valueScore / 2) {
        chooseSets(run, byValue.rule, usual, work);
        return addChosen(run, byValue, work);
    }
    addChosen(run, byBias, work);
}

void divideRuns(Run camera, const Options& options, Run usual, Workspace& work) {
    forEachPart(
        camera, [](const Frame& frame) { return frame.pause < HUGE_VAL; },
        [&](Run run) {
            if (run.front().kind == Kind::Marked) {
                divideMarked(run, options, usual, work);
            } else if (run.front().kind == Kind::Unmarked || run.front().kind == Kind::Automatic) {
                const CameraRule byBias = biasRule(run.front().kind, options);
                chooseSets(run, byBias.rule, usual, work);
                addChosen(run, byBias, work);
            }
        });
}

Key keyOf(const FoundSet& set) {
    return set.evidence == TVMETA_EVIDENCE_MARK_EXPOSURE ? &Frame::value : &Frame::bias;
}

// The set of a camera whose shape occurs most often, and at least twice; empty if there is none. Samples bound the
// work.
Run usualSet(std::size_t firstSet, const Workspace& work) {
    constexpr std::size_t Samples = 64;
    const auto sets = std::span<const FoundSet>(work.sets).subspan(firstSet, work.setCount - firstSet);
    const std::size_t step = sets.size() / Samples + 1;
    Run usual;
    std::size_t most = 1;
    for (std::size_t i = 0; i < sets.size(); i += step) {
        std::size_t equal = 0;
        for (std::size_t j = 0; j < sets.size(); j += step) {
            equal += sets[i].evidence == sets[j].evidence &&
                             hasSameShape(work.framesOf(sets[i]), work.framesOf(sets[j]), keyOf(sets[i]))
                         ? 1U
                         : 0U;
        }
        if (equal > most) {
            most = equal;
            usual = work.framesOf(sets[i]);
        }
    }
    return usual;
}

// Two exposures pressed slowly look like a correction, unless nearly all pairs of the camera are the same.
Run usualPair(Run camera, Workspace& work) {
    constexpr std::size_t MinPairs = 3;
    const std::size_t firstSet = work.setCount;
    for (std::size_t i = 0; i + 1 < camera.size(); ++i) {
        const Run pair = camera.subspan(i, 2);
        const bool differs = std::abs(pair[0].bias - pair[1].bias) > Tolerance;
        if (pair[1].kind == Kind::Unmarked && differs && hasPausesWithin(pair, PressedGap) && followsBias(pair, 0)) {
            work.add(pair, 0, TVMETA_BY_GUESS, TVMETA_EVIDENCE_BIAS);
            ++i;
        }
    }
    const Run usual = usualSet(firstSet, work);
    const auto pairs = std::span<const FoundSet>(work.sets).subspan(firstSet, work.setCount - firstSet);
    const auto equal = static_cast<std::size_t>(std::ranges::count_if(pairs, [&](const FoundSet& set) {
        const Run pair = work.framesOf(set);
        return !usual.empty() && std::abs(pair[0].bias - usual[0].bias) <= Tolerance &&
               hasSameShape(pair, usual, &Frame::bias);
    }));
    work.setCount = firstSet;
    return equal >= MinPairs && 4 * equal >= 3 * pairs.size() ? usual : Run();
}

std::size_t expectedShots(const FoundSet& set, Run usual, const Workspace& work) {
    const Run run = work.framesOf(set);
    if (run.size() <= usual.size() && hasSameShape(usual.first(run.size()), run, keyOf(set))) {
        return usual.size();
    }
    return run.size() % 2 == 1 && isRegular(run, keyOf(set), 0) ? run.size() : 0;
}

} // namespace

void divideByCamera(Run camera, const Options& options, Workspace& work) {
    const std::size_t firstSet = work.setCount;
    divideRuns(camera, options, {}, work);
    Run usual = usualSet(firstSet, work);
    usual = usual.empty() && work.setCount == firstSet ? usualPair(camera, work) : usual;
    if (!usual.empty()) {
        work.setCount = firstSet;
        divideRuns(camera, options, usual, work);
    }
    for (std::size_t i = firstSet; i < work.setCount; ++i) {
        work.sets[i].expected = expectedShots(work.sets[i], usual, work);
    }
}

bool divideManualByBias(Run run, const Options& options, Workspace& work) {
    const std::size_t firstSet = work.setCount;
    CameraRule byBias = biasRule(Kind::Unmarked, options);
    byBias.rule.accepts = isUnmarkedSet;
    chooseSets(run, byBias.rule, {}, work);
    addChosen(run, byBias, work);
    return work.setCount > firstSet;
}

} // namespace tvmeta::brackets
