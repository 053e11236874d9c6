#include "base/words.h"

#include "base/text.h"

#include <algorithm>
#include <vector>

namespace {

// The Damerau-Levenshtein distance (optimal string alignment): the number of insertions, deletions,
// replacements and swaps of adjacent characters.
size_t editDistance(std::string_view from, std::string_view to) {
    std::vector<std::vector<size_t>> distances(from.size() + 1, std::vector<size_t>(to.size() + 1)); // of the starts
    for (size_t i = 0; i <= from.size(); ++i) {
        for (size_t j = 0; j <= to.size(); ++j) {
            size_t& distance = distances[i][j] = std::max(i, j); // one is empty
            if (i > 0 && j > 0) {
                const size_t replacement = from[i - 1] == to[j - 1] ? 0 : 1;
                distance =
                    std::min({distances[i - 1][j] + 1, distances[i][j - 1] + 1, distances[i - 1][j - 1] + replacement});
            }
            if (i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1]) {
                distance = std::min(distance, distances[i - 2][j - 2] + 1);
            }
        }
    }
    return distances.back().back();
}

} // namespace

std::string wordList(std::span<const std::string> words) {
    return words.size() < 2 ? joined(words) : joined(words.first(words.size() - 1)) + " or " + words.back();
}

std::string nearestName(std::string_view word, std::span<const std::string> names) {
    constexpr size_t MaxWord = 64; // the time is proportional to the product of the sizes
    const std::string given = lowerCase(std::string(word));
    const auto distance = [&](const std::string& name) { return editDistance(given, lowerCase(name)); };
    if (names.empty() || word.size() > MaxWord) {
        return {};
    }
    const auto nearest = std::ranges::min_element(names, {}, distance);
    const size_t limit = std::min(word.size(), nearest->size()) / 3;
    return distance(*nearest) <= limit ? "; did you mean '" + *nearest + "'?" : "";
}

std::string nearestOrAll(std::string_view word, std::span<const std::string> names) {
    const std::string nearest = nearestName(word, names);
    return nearest.empty() ? "; use " + wordList(names) : nearest;
}
