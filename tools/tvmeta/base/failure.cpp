#include "base/failure.h"

#include "base/text.h"

#include <algorithm>
#include <iostream>

constexpr size_t MaxOfKind = 10;

void complain(const std::string& message) {
    std::cerr << "tvmeta: " + printable(message) + "\n";
}

void FileMessages::add(const std::string& path, const std::string& message) {
    const std::string reason = message.starts_with(path + ": ") ? message.substr(path.size() + 2) : message;
    std::string kind = reason.substr(0, reason.find_first_of(":;'\"0123456789"));
    kind += kind.ends_with(' ') ? "..." : "";
    ++total;
    if (++kinds[kind] <= MaxOfKind) {
        complain(message);
    }
}

void FileMessages::finish() const {
    for (const auto& [kind, number] : kinds) {
        if (number > MaxOfKind) {
            complain(std::to_string(number - MaxOfKind) + " more of: " + kind);
        }
    }
}

std::string explain(int32_t result, std::initializer_list<Meaning> meanings) {
    const auto* const known = std::ranges::find(meanings, result, &Meaning::result);
    return known == meanings.end() ? "unexpected result of the library" : known->text;
}
