// Photo: the choice of sets that explains a run of photographs best.
#include "photo/brackets.h"

#include <algorithm>

namespace tvmeta::brackets {

namespace {

constexpr double PausePrice = 0.05; // per second: of two choices, the one with shorter pauses inside its sets
constexpr double UsualBonus = 0.45; // per exposure; three usual sets of three are worth less than one of nine
constexpr double RetakeBonus = 1.5; // one series with a shot twice, rather than two series
constexpr double QuickBonus = 32;   // more than any set gains by a stray frame less
constexpr double LongestPriced = 30;
constexpr double Tie = 0.02; // scores that differ by less, as by 0.4 s of pauses, are equal

// A set that grows frame by frame: all its exposures differ.
class GrowingSet {
  public:
    GrowingSet(Run run, Key chosen) : frames_(run), key_(chosen), low_(run.front().*key_), high_(low_) {}

    // Adds the next frame; false if its exposure is one of the set. The one before may be taken again.
    bool grow(bool allowsRetakes) {
        const double number = frames_[size_].*key_, last = frames_[size_ - 1].*key_;
        if (allowsRetakes && std::abs(number - last) <= Tolerance) {
            ++size_;
            return 3 * (size_ - levels_) <= size_;
        }
        for (std::size_t i = 0; i < size_; ++i) {
            step_ = std::min(step_, std::abs(frames_[i].*key_ - number));
        }
        goesOutward_ = goesOutward_ && (number < low_ || number > high_);
        rises_ = rises_ && (levels_ == 1 || number > last);
        falls_ = falls_ && (levels_ == 1 || number < last);
        low_ = std::min(low_, number);
        high_ = std::max(high_, number);
        ++size_;
        ++levels_;
        return step_ > Tolerance;
    }

    Run run() const { return frames_.first(size_); }
    std::size_t levels() const { return levels_; }

    // Exposures taken twice. The last one twice is no series with a retake: a correction, and then it is kept.
    std::size_t retakes() const {
        const bool endsWithOne =
            size_ > 1 && std::abs(frames_[size_ - 1].*key_ - frames_[size_ - 2].*key_) <= Tolerance;
        return endsWithOne ? 0 : size_ - levels_;
    }

    // Equal steps, in an order in which people and cameras take them.
    bool isRegular(double unevenness) const {
        return levels_ >= 3 && isOrdered() &&
               (high_ - low_) / static_cast<double>(levels_ - 1) - step_ <= allowed(unevenness);
    }

    // From one end to the other, in large steps of any size.
    bool goesOneWay() const {
        const double first = frames_[0].*key_, last = frames_[size_ - 1].*key_;
        return levels_ >= MinOneWay && step_ >= OneWayStep &&
               ((rises_ && first == low_) || (falls_ && first == high_)) && std::abs(last - first) >= high_ - low_;
    }

  private:
    static constexpr std::size_t MinOneWay = 4;
    static constexpr double OneWayStep = 0.5; // EV

    double allowed(double unevenness) const { return std::max(Tolerance, unevenness * step_); }

    // From the middle or from one end outward (0 - +, - 0 +, 0 - -- + ++), or the middle before the others (0 -- - +
    // ++).
    bool isOrdered() const {
        const bool startsInMiddle = std::abs(frames_[0].*key_ - (low_ + high_) / 2) <= Tolerance;
        return goesOutward_ || (startsInMiddle && (rises_ || falls_));
    }

    Run frames_;
    Key key_;
    double low_, high_;
    double step_ = HUGE_VAL;
    bool goesOutward_ = true;
    bool rises_ = true, falls_ = true;  // from the second frame on
    std::size_t size_ = 1, levels_ = 1; // frames; different exposures
};

// The pauses inside a set that grows, less the time that the camera needs after a long exposure.
class Pauses {
  public:
    void add(double pause, bool isQuick) {
        hasQuick_ = hasQuick_ || isQuick;
        second_ = std::max(second_, std::min(pause, longest_));
        longest_ = std::max(longest_, pause);
    }

    double longest() const { return longest_; }

    // One pause is so much longer than the others that it is between two sets.
    bool haveBreak(double seconds) const {
        return longest_ > (hasQuick_ ? 4 * second_ + QuickBreak : 4 * std::max(second_, 1.0) + seconds);
    }

  private:
    static constexpr double QuickBreak = 5; // seconds; a camera that takes one after the other does not wait

    double longest_ = 0, second_ = 0;
    bool hasQuick_ = false;
};

// The usual set, or one that was interrupted.
bool isStartOf(Run usual, Run run, const SetRule& rule) {
    return run.size() <= usual.size() && hasSameShape(usual.first(run.size()), run, rule.key) &&
           (rule.acceptsUsual == nullptr || rule.acceptsUsual(run, run.size() == usual.size()));
}

// Negative if the frames are no set by this rule.
double scoreOf(const GrowingSet& set, const SetRule& rule, Run usual, const Pauses& pauses) {
    const Run run = set.run();
    const double size = static_cast<double>(set.levels());
    const bool isUsual = isStartOf(usual, run, rule);
    const bool isSet = set.isRegular(rule.unevenness) || (rule.allowsOneWay && set.goesOneWay());
    const bool hasLongPause = pauses.longest() > rule.gap;
    if (isSet && (isUsual || !pauses.haveBreak(rule.breakPause)) &&
        (rule.accepts == nullptr || isUsual || rule.accepts(run))) {
        return 3 * size - 3 + RetakeBonus * static_cast<double>(set.retakes()) +
               (isUsual && usual.size() == run.size() ? UsualBonus * size : 0);
    }
    const bool isAllowed = !rule.needsRegular || (rule.acceptsIrregular != nullptr && rule.acceptsIrregular(run));
    return isUsual || (isAllowed && !hasLongPause) ? size - 1 : -1;
}

} // namespace

bool hasSameShape(Run a, Run b, Key key) {
    constexpr double Precision = 0.25; // EV; of two exposures
    if (a.size() != b.size()) {
        return false;
    }
    for (std::size_t i = 1; i < a.size(); ++i) {
        if (!(std::abs((a[i].*key - a[0].*key) - (b[i].*key - b[0].*key)) <= Precision)) {
            return false;
        }
    }
    return true;
}

bool isRegular(Run run, Key key, double unevenness) {
    GrowingSet set(run, key);
    while (set.run().size() < run.size()) {
        if (set.run().size() == MaxRegular || !set.grow(false)) {
            return false;
        }
    }
    return set.isRegular(unevenness);
}

// From the end, so that the choice can be read from the start.
double chooseSets(Run run, const SetRule& rule, Run usual, Workspace& work) {
    work.scores[run.size()] = 0;
    for (std::size_t first = run.size(); first-- > 0;) {
        work.scores[first] = work.scores[first + 1];
        work.lengths[first] = 1;
        GrowingSet set(run.subspan(first), rule.key);
        Pauses pauses;
        double price = 0;
        const std::size_t longest = std::min(MaxRegular, run.size() - first);
        for (std::size_t size = 2; size <= longest; ++size) {
            const Frame& next = run[first + size - 1];
            const double pause = next.pause - static_cast<double>(rule.patience * next.exposureBefore);
            pauses.add(pause, next.isQuick);
            if (pause > rule.regularGap || !set.grow(rule.allowsRetakes)) {
                break;
            }
            price += PausePrice * std::clamp(next.pause, 0.0, LongestPriced);
            price -= rule.joinsQuick && next.isQuick ? QuickBonus : 0;
            const double score = scoreOf(set, rule, usual, pauses);
            const double total = score - price + work.scores[first + size];
            if (score >= 0 && total > work.scores[first] - Tie) { // whole sets come first
                work.scores[first] = total;
                work.lengths[first] = static_cast<unsigned char>(size);
            }
        }
    }
    return work.scores[0];
}

} // namespace tvmeta::brackets
