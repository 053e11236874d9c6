#include "system/temporary_file.h"

#include "system/paths.h"

#include <random>
#include <string_view>

std::string temporaryName(const std::string& path) {
    constexpr std::string_view Digits = "0123456789abcdefghijklmnopqrstuv";
    constexpr int Length = 16;
    std::random_device random;
    std::string name = ".tvmeta-";
    for (int i = 0; i < Length; ++i) {
        name += Digits[random() % Digits.size()];
    }
    return nameOf(pathOf(path).replace_filename(name + ".tmp"));
}
