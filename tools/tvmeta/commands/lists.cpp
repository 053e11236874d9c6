#include "commands/lists.h"

#include "commands/settings_options.h"
#include "output/failure.h"
#include "photographs/fields.h"

#include <algorithm>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

namespace {

// The command that the words name; other words are ignored.
const Command& commandNamed(const Command& tool, std::span<const char* const> words) {
    const Command* command = &tool;
    for (const std::string_view word : words) {
        const auto found = std::ranges::find(command->commands, word, &Command::name);
        command = found == command->commands.end() ? command : &*found;
    }
    return *command;
}

std::vector<std::string> fieldNames() {
    std::vector<std::string> names;
    for (const Field& field : allFields()) {
        names.emplace_back(field.key);
    }
    return names;
}

std::vector<std::string> namesFor(const Command& tool, std::span<const char* const> words) {
    const std::string_view kind = words.empty() ? "" : words.front();
    const auto rest = words.subspan(words.empty() ? 0 : 1);
    if (kind == "commands") {
        return commandNames(commandNamed(tool, rest));
    }
    if (kind == "options") {
        return optionNames(commandNamed(tool, rest));
    }
    if (kind == "fields") {
        return fieldNames();
    }
    if (kind == "methods") {
        return methodNames();
    }
    if (kind == "settings" && !rest.empty()) {
        return settingNames(rest.front());
    }
    throw WrongCommandLine("--list requires commands, options, fields, methods, or settings with a method");
}

} // namespace

void printNames(const Command& tool, std::span<const char* const> words) {
    for (const std::string& name : namesFor(tool, words)) {
        std::cout << name << "\n";
    }
}
