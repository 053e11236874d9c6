// Lists made of other lists.
#pragma once

#include <algorithm>
#include <iterator>
#include <vector>

// What a function, or a member, gives for each element.
template <typename Result, typename Range, typename Function>
std::vector<Result> mapped(const Range& range, Function function) {
    std::vector<Result> results;
    std::ranges::transform(range, std::back_inserter(results), function);
    return results;
}
