// Words of messages.
#pragma once

#include <fmt/format.h>

#include <cstddef>
#include <string>

// "1 photograph", "2 photographs".
inline std::string counted(size_t count, const std::string& thing) {
    return fmt::format("{} {}{}", count, thing, count == 1 ? "" : "s");
}

// "a, b, c".
template <typename Words>
std::string joined(const Words& words) {
    return fmt::format("{}", fmt::join(words, ", "));
}
