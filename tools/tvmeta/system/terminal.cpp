#include "system/terminal.h"

#include "base/numbers.h"
#include "system/system.h"

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <limits>
#include <string_view>

namespace {

constexpr auto Interval = std::chrono::milliseconds(200);
constexpr std::string_view EraseLine = "\r\033[K";

std::optional<int> chosenWidth() {
    const char* text = std::getenv("COLUMNS");
    const std::string_view columns = text == nullptr ? "" : text;
    const std::optional<int64_t> width = parseWholeNumber(columns);
    const bool isWidth = width && *width > 0 && *width <= std::numeric_limits<int>::max();
    return isWidth ? std::optional(static_cast<int>(*width)) : std::nullopt;
}

} // namespace

std::optional<int> outputWidth() {
    const std::optional<int> width = chosenWidth();
    return width ? width : terminalWidth();
}

// Work that is soon done shows nothing.
Progress::Progress() : isTerminal(canEraseLines()), next(Clock::now() + Interval) {}

void Progress::found(size_t count) {
    if (isDue()) {
        show(std::to_string(count) + " found");
    }
}

void Progress::done(size_t count, size_t total) {
    if (isDue()) {
        show(std::to_string(count) + " of " + std::to_string(total));
    }
}

void Progress::erase() {
    if (isShown) {
        std::cerr << std::string(EraseLine) + "\r" << std::flush;
    }
    isShown = false;
}

// The cursor returns to the start of the line, and the text is short: a message, even one that the library prints by
// itself, overwrites it.
void Progress::show(const std::string& text) {
    std::cerr << std::string(EraseLine) + text + "\r" << std::flush;
    isShown = true;
}

bool Progress::isDue() {
    if (!isTerminal || Clock::now() < next) {
        return false;
    }
    next = Clock::now() + Interval;
    return true;
}
