#include "base/words.h"

#include "base/text.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace {

// The Damerau-Levenshtein distance (optimal string alignment): the number of insertions, deletions,
// replacements and swaps of adjacent characters.
size_t editDistance(std::string_view from, std::string_view to) {
    std::vector<size_t> beforeLast;
    std::vector<size_t> last;
    std::vector<size_t> current(to.size() + 1);
    for (size_t j = 0; j <= to.size(); ++j) {
        current[j] = j;
    }
    for (size_t i = 1; i <= from.size(); ++i) {
        beforeLast = std::move(last);
        last = std::move(current);
        current.assign(to.size() + 1, i);
        for (size_t j = 1; j <= to.size(); ++j) {
            const bool isSame = from[i - 1] == to[j - 1];
            current[j] = std::min({last[j] + 1, current[j - 1] + 1, last[j - 1] + (isSame ? 0 : 1)});
            const bool isExchanged = i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1];
            if (isExchanged) {
                current[j] = std::min(current[j], beforeLast[j - 2] + 1);
            }
        }
    }
    return current.back();
}

} // namespace

std::string wordList(std::span<const std::string> words, std::string_view conjunction) {
    const std::string beforeLast = std::string(" ").append(conjunction).append(" ");
    std::string list;
    for (size_t i = 0; i < words.size(); ++i) {
        const bool isLast = i + 1 == words.size();
        list += i == 0 ? "" : isLast ? beforeLast : ", ";
        list += words[i];
    }
    return list;
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
    return nearest.empty() ? "; use " + wordList(names, "or") : nearest;
}
