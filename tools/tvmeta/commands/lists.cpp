#include "commands/lists.h"

#include "commands/settings_options.h"
#include "output/failure.h"
#include "photographs/fields.h"

#include <iostream>
#include <string_view>

namespace {

// The command that the words name; other words are ignored.
const CLI::App& commandNamed(const CLI::App& app, std::span<const char* const> words) {
    const CLI::App* command = &app;
    for (const char* word : words) {
        for (const CLI::App* candidate : command->get_subcommands({})) {
            if (candidate->check_name(word)) {
                command = candidate;
                break;
            }
        }
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

std::vector<std::string> namesFor(const CLI::App& app, std::span<const char* const> words) {
    const std::string_view kind = words.empty() ? "" : words.front();
    const auto rest = words.subspan(words.empty() ? 0 : 1);
    if (kind == "commands") {
        return commandNames(commandNamed(app, rest));
    }
    if (kind == "options") {
        return optionNames(commandNamed(app, rest));
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

std::vector<std::string> commandNames(const CLI::App& command) {
    std::vector<std::string> names;
    for (const CLI::App* subcommand : command.get_subcommands({})) {
        names.push_back(subcommand->get_name());
    }
    return names;
}

std::vector<std::string> optionNames(const CLI::App& command) {
    std::vector<std::string> names;
    for (const CLI::Option* option : command.get_options()) {
        for (const std::string& name : option->get_snames()) {
            names.push_back("-" + name);
        }
        for (const std::string& name : option->get_lnames()) {
            names.push_back("--" + name);
        }
    }
    return names;
}

void printNames(const CLI::App& app, std::span<const char* const> words) {
    for (const std::string& name : namesFor(app, words)) {
        std::cout << name << "\n";
    }
}
