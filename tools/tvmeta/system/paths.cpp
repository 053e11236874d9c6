#include "system/paths.h"

#include <algorithm>
#include <system_error>

std::filesystem::path pathOf(std::string_view name) {
    return std::u8string(name.begin(), name.end());
}

std::string nameOf(const std::filesystem::path& path) {
    const std::u8string text = path.u8string(); // generic_u8string() takes one slash from \\server
    std::string name(text.begin(), text.end());
    if constexpr (std::filesystem::path::preferred_separator != '/') {
        std::ranges::replace(name, '\\', '/');
    }
    return name;
}

std::string nameKey(const std::string& name) {
    std::string key = nameOf(pathOf(name).lexically_normal());
    if constexpr (std::filesystem::path::preferred_separator != '/') {
        std::ranges::transform(key, key.begin(),
                               [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 32) : c; });
    }
    return key;
}

bool isThere(const std::string& name) {
    std::error_code error;
    return std::filesystem::exists(std::filesystem::symlink_status(pathOf(name), error));
}
