#include "output/set_names.h"

#include "base/failure.h"
#include "base/text.h"
#include "output/move_journal.h"

#include <algorithm>
#include <optional>
#include <string_view>

namespace {

struct Placeholder {
    std::string_view name;
    std::string SetWords::*word;
    const char* unknown;
};

constexpr Placeholder Placeholders[] = {
    {"date", &SetWords::date, "undated"},       {"time", &SetWords::time, "no-time"},
    {"first", &SetWords::first, "unnamed"},     {"last", &SetWords::last, "unnamed"},
    {"shots", &SetWords::shots, "0"},           {"camera", &SetWords::camera, "unknown-camera"},
    {"folder", &SetWords::folder, "no-folder"},
};

constexpr std::string_view Number = "number"; // of the set

std::string wordOf(std::string_view name, const SetWords& words, const std::string& number) {
    if (name == Number) {
        return number;
    }
    const Placeholder& placeholder = *std::ranges::find(Placeholders, name, &Placeholder::name);
    const std::string& word = words.*placeholder.word;
    return word.empty() ? placeholder.unknown : word;
}

// Passes the texts of a pattern and the names in braces to a function each. False if a brace is not closed.
template <typename Text, typename Name>
bool readPattern(std::string_view pattern, Text text, Name name) {
    while (!pattern.empty()) {
        const size_t open = std::min(pattern.find('{'), pattern.size());
        text(pattern.substr(0, open));
        pattern.remove_prefix(open);
        const size_t close = pattern.find('}');
        if (!pattern.empty() && close == std::string_view::npos) {
            return false;
        }
        if (!pattern.empty()) {
            name(pattern.substr(1, close - 1));
            pattern.remove_prefix(close + 1);
        }
    }
    return true;
}

// Windows and the file systems of memory cards refuse some characters. Names that begin with a dot are hidden. A long
// name leaves room for a suffix; it is cut between characters of UTF-8.
std::string safeName(std::string name) {
    constexpr std::string_view Refused = "<>:\"/\\|?*";
    constexpr size_t MaxLength = 200;
    for (char& c : name) {
        const bool isControl = (c >= 0 && c < ' ') || c == 0x7F;
        c = isControl || Refused.find(c) != std::string_view::npos ? '_' : c;
    }
    size_t length = std::min(name.size(), MaxLength);
    while (length > 0 && length < name.size() && (name[length] & 0xC0) == 0x80) {
        --length;
    }
    name.resize(length);
    name.resize(name.find_last_not_of(". ") + 1); // Windows removes them
    if (name.starts_with('.')) {
        name.front() = '_';
    }
    return name.empty() ? "_" : name;
}

std::string padded(size_t number, size_t last) {
    const std::string digits = std::to_string(number);
    return std::string(std::to_string(last).size() - digits.size(), '0') + digits;
}

} // namespace

std::string namePlaceholders() {
    std::string list;
    for (const Placeholder& placeholder : Placeholders) {
        list += "{" + std::string(placeholder.name) + "}, ";
    }
    return list + "{" + std::string(Number) + "}";
}

void requireNamePattern(const std::string& pattern) {
    const auto isUnknown = [](std::string_view name) {
        return name != Number && std::ranges::find(Placeholders, name, &Placeholder::name) == std::end(Placeholders);
    };
    std::optional<std::string> unknown;
    const bool isClosed = readPattern(
        pattern, [](std::string_view) {},
        [&](std::string_view name) { unknown = isUnknown(name) ? std::optional(std::string(name)) : unknown; });
    if (pattern.empty() || pattern.find('/') != std::string::npos || !isClosed) {
        throw WrongCommandLine("--name '" + pattern + "' is not the name of a folder");
    }
    if (unknown) {
        throw WrongCommandLine("unknown {" + *unknown + "} in --name; use " + namePlaceholders());
    }
}

std::vector<std::string> setNames(const std::string& pattern, std::span<const SetWords> sets) {
    std::vector<std::string> names;
    UniqueNames unique;
    unique.take(JournalName);
    for (const SetWords& words : sets) {
        const std::string number = padded(names.size() + 1, sets.size());
        std::string name;
        readPattern(
            pattern, [&](std::string_view text) { name += text; },
            [&](std::string_view word) { name += wordOf(word, words, number); });
        names.push_back(unique.take(safeName(name)));
    }
    return names;
}

std::string UniqueNames::take(const std::string& name, const std::string& extension) {
    std::string result = name + extension;
    for (int suffix = 2; !taken.insert(lowerCase(result)).second; ++suffix) {
        result = name + "_" + std::to_string(suffix) + extension;
    }
    return result;
}
