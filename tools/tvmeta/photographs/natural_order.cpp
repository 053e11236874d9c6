#include "photographs/natural_order.h"

#include <algorithm>
#include <compare>

namespace {

constexpr std::string_view Digits = "0123456789";

// Removes a run of digits or one other character from the start of the text and returns it.
std::string_view takePart(std::string_view& text) {
    const size_t digits = std::min(text.find_first_not_of(Digits), text.size());
    const std::string_view part = text.substr(0, std::max<size_t>(digits, 1));
    text.remove_prefix(part.size());
    return part;
}

std::string_view withoutZeros(std::string_view digits) {
    return digits.substr(std::min(digits.find_first_not_of('0'), digits.size()));
}

std::strong_ordering compareParts(std::string_view a, std::string_view b) {
    if (Digits.find(a[0]) == Digits.npos || Digits.find(b[0]) == Digits.npos) {
        return a <=> b;
    }
    const std::string_view first = withoutZeros(a), second = withoutZeros(b);
    const auto byLength = first.size() <=> second.size();
    return byLength != 0 ? byLength : first <=> second;
}

} // namespace

bool naturalLess(std::string_view a, std::string_view b) {
    std::string_view restOfA = a, restOfB = b;
    while (!restOfA.empty() && !restOfB.empty()) {
        const std::string_view partOfA = takePart(restOfA), partOfB = takePart(restOfB);
        if (const auto order = compareParts(partOfA, partOfB); order != 0) {
            return order < 0;
        }
    }
    return restOfA.empty() != restOfB.empty() ? restOfA.empty() : a < b;
}
