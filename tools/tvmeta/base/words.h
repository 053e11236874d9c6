// Words of messages.
#pragma once

#include <fmt/format.h>

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

// "1 photograph", "2 photographs".
inline std::string counted(size_t count, const std::string& thing) {
    return fmt::format("{} {}{}", count, thing, count == 1 ? "" : "s");
}

// "a, b, c".
template <typename Words>
std::string joined(const Words& words) {
    return fmt::format("{}", fmt::join(words, ", "));
}

// "8, 16 or 32".
std::string wordList(std::span<const std::string> words);

// "; did you mean 'info'?" for the most similar name; empty if none is similar.
std::string nearestName(std::string_view word, std::span<const std::string> names);

// The same; if no name is similar, a list of all names.
std::string nearestOrAll(std::string_view word, std::span<const std::string> names);
