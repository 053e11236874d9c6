#include "system/paths.h"

#include "base/text.h"

#include <algorithm>
#include <random>
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

std::string extensionOf(const std::filesystem::path& path) {
    return lowerCase(nameOf(path.extension()));
}

std::string nameKey(const std::string& name) {
    std::string key = nameOf(pathOf(name).lexically_normal());
    if constexpr (std::filesystem::path::preferred_separator != '/') {
        key = lowerCase(key);
    }
    return key;
}

std::string temporaryName(const std::string& path) {
    constexpr std::string_view Base32 = "0123456789abcdefghijklmnopqrstuv";
    constexpr int Length = 16;
    std::random_device random;
    std::string name = ".tvmeta-";
    for (int i = 0; i < Length; ++i) {
        name += Base32[random() % Base32.size()];
    }
    return nameOf(pathOf(path).replace_filename(name + ".tmp"));
}

bool isThere(const std::string& name) {
    std::error_code error;
    return std::filesystem::exists(std::filesystem::symlink_status(pathOf(name), error));
}
