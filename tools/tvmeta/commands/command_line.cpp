// The one file that includes CLI11, because compiling its header takes seven seconds.
#include "commands/command_line.h"

#include "commands/lists.h"
#include "output/failure.h"
#include "output/suggestion.h"
#include "system/paths.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <charconv>
#include <filesystem>
#include <iostream>
#include <optional>
#include <span>
#include <string_view>
#include <system_error>
#include <type_traits>

namespace {

enum ExitStatus { Done = 0, Failed = 1, WrongUse = 2 };

bool hasName(const Option& option) {
    return option.names.front().starts_with('-');
}

bool isFlag(const Option& option) {
    return std::holds_alternative<bool*>(option.target);
}

bool isList(const Option& option) {
    return std::holds_alternative<std::vector<std::string>*>(option.target);
}

// What the help shows after the names. CLI11 would show types, and the options that one excludes.
std::string valueText(const Option& option) {
    const bool isNoted = option.isRequired && hasName(option);
    return option.value + (isNoted ? " (required)" : option.value.empty() ? " " : "");
}

// A check returns a message for an invalid value.
CLI::Validator oneOf(const std::vector<std::string>& choices) {
    return CLI::Validator(
        [choices](const std::string& word) {
            const bool isValid = std::ranges::find(choices, word) != choices.end();
            return isValid ? "" : "'" + word + "' is unknown; use " + wordList(choices, "or");
        },
        "");
}

std::string shortest(double number) {
    std::array<char, 32> text;
    return {text.data(), std::to_chars(text.begin(), text.end(), number).ptr};
}

CLI::Validator inRange(const std::pair<double, double>& range) {
    return CLI::Validator(
        [range](const std::string& word) {
            double number = 0;
            const char* end = word.data() + word.size();
            const auto [parsed, error] = std::from_chars(word.data(), end, number);
            const bool isValid =
                error == std::errc() && parsed == end && number >= range.first && number <= range.second;
            return isValid ? ""
                           : "'" + word + "' is not a number from " + shortest(range.first) + " to " +
                                 shortest(range.second);
        },
        "");
}

CLI::Option* addOption(CLI::App& app, const Option& option) {
    std::string names; // as CLI11 wants them
    for (const std::string& name : option.names) {
        names.append(names.empty() ? "" : ",").append(name);
    }
    CLI::Option* const added = std::visit(
        [&](auto* target) {
            if constexpr (std::is_same_v<decltype(target), bool*>) {
                return app.add_flag(names, *target, option.help);
            } else {
                return app.add_option(names, *target, option.help);
            }
        },
        option.target);
    added->required(option.isRequired)->option_text(valueText(option));
    if (isList(option) && hasName(option)) {
        added->allow_extra_args(false); // one value after each name
    }
    if (option.separator != '\0') {
        added->delimiter(option.separator);
    }
    if (!option.choices.empty()) {
        added->check(oneOf(option.choices));
    }
    if (option.range.second > 0) {
        added->check(inRange(option.range));
    }
    return added;
}

void addOptions(CLI::App& app, const std::vector<Option>& options) {
    std::vector<CLI::Option*> added;
    for (const Option& option : options) {
        added.push_back(addOption(app, option));
    }
    for (size_t i = 0; i < options.size(); ++i) { // names of options that are known by now
        for (const std::string& name : options[i].needs) {
            added[i]->needs(app.get_option(name));
        }
        for (const std::string& name : options[i].excludes) {
            added[i]->excludes(app.get_option(name));
        }
    }
}

// Asked after parsing, so that a mistyped name is reported as an unknown command.
void requireSubcommand(const CLI::App& app) {
    if (app.get_subcommands().empty()) {
        throw CLI::RequiredError::Subcommand(1);
    }
}

void describe(CLI::App& app, const Command& command) {
    app.footer(command.footer);
    app.allow_windows_style_options(false); // a path may begin with a slash
    addOptions(app, command.options);
    for (const Command& subcommand : command.commands) {
        describe(*app.add_subcommand(subcommand.name, subcommand.purpose), subcommand);
    }
    const bool isGroup = !command.commands.empty();
    app.callback(isGroup ? [&app] { requireSubcommand(app); } : command.run);
}

// The innermost command that was named, and its name with those of its groups.
struct Chosen {
    const Command* command;
    std::string words;
};

Chosen chosenCommand(const Command& tool, const CLI::App& app) {
    Chosen chosen = {&tool, tool.name};
    for (auto named = app.get_subcommands(); !named.empty(); named = named.front()->get_subcommands()) {
        chosen.words += " " + named.front()->get_name();
        chosen.command = &*std::ranges::find(chosen.command->commands, named.front()->get_name(), &Command::name);
    }
    return chosen;
}

// Names the command whose help explains it.
int wrongUse(const Chosen& chosen, const std::string& problem) {
    complain(problem);
    std::cerr << "Try: " << chosen.words << " --help\n";
    return WrongUse;
}

bool isOption(const Command& command, const std::string& word) {
    const bool isLong = word.starts_with("--");
    const std::string name = isLong ? word.substr(0, word.find('=')) : word.substr(0, 2);
    const std::vector<std::string> names = optionNames(command);
    const auto option = std::ranges::find_if(command.options, [&](const Option& known) {
        return std::ranges::find(known.names, name) != known.names.end();
    });
    const bool isJoined = !isLong && word.size() > 2; // -oFILE
    return isJoined ? option != command.options.end() && !isFlag(*option)
                    : std::ranges::find(names, name) != names.end();
}

// The first unknown option, which is usually why something else is missing. A file name that begins with a dash is
// treated as an option too; CLI11 accepts names that begin with a dash and a digit.
std::optional<std::string> strayOption(const Command& command, std::span<const char* const> words) {
    for (const std::string word : words) {
        const bool isDash = word.size() > 1 && word[0] == '-' && (word[1] < '0' || word[1] > '9');
        if (word == "--") {
            break;
        }
        if (isDash && !isOption(command, word)) {
            std::error_code error;
            const bool isFile =
                word.find_first_of("./") != std::string::npos || std::filesystem::exists(pathOf(word), error);
            return "unknown option '" + word + "'" +
                   (isFile ? "; a file of that name is ./" + word : nearestName(word, optionNames(command)));
        }
    }
    return std::nullopt;
}

std::optional<std::string> strayCommand(const Command& command, const std::vector<std::string>& words) {
    const std::vector<std::string> names = commandNames(command);
    if (names.empty() || words.empty()) {
        return std::nullopt;
    }
    return "unknown command '" + words.front() + "'" + nearestOrAll(words.front(), names);
}

} // namespace

int runCommandLine(const Command& tool, int argc, const char* const* argv) {
    CLI::App app(tool.purpose, tool.name);
    app.set_version_flag("--version", tool.version);
    describe(app, tool);
    const std::span<const char* const> words(argv + 1, argv + std::max(argc, 1));
    try {
        if (!words.empty() && words.front() == std::string_view("--list")) { // for the completion
            printNames(tool, words.subspan(1));
        } else {
            app.parse(argc, argv);
        }
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() != 0) {
            const Chosen chosen = chosenCommand(tool, app);
            std::optional<std::string> stray = strayOption(*chosen.command, words);
            if (!stray) {
                stray = strayCommand(*chosen.command, app.remaining(true));
            }
            return wrongUse(chosen, stray.value_or(error.what()));
        }
        app.exit(error); // prints help or version
    } catch (const WrongCommandLine& error) {
        return wrongUse(chosenCommand(tool, app), error.what());
    } catch (const Reported&) {
        std::cout.flush();
        return Failed;
    }
    if (!std::cout.flush()) {
        complain("cannot write to standard output");
        return Failed;
    }
    return Done;
}

std::vector<std::string> commandNames(const Command& command) {
    std::vector<std::string> names;
    std::ranges::transform(command.commands, std::back_inserter(names), &Command::name);
    return names;
}

std::vector<std::string> optionNames(const Command& command) {
    std::vector<std::string> names = {"-h", "--help"};
    if (!command.version.empty()) {
        names.emplace_back("--version");
    }
    for (const Option& option : command.options) {
        if (hasName(option)) {
            names.insert(names.end(), option.names.begin(), option.names.end());
        }
    }
    return names;
}
