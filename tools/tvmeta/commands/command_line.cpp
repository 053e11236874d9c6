// The one file that includes CLI11, because compiling its header takes seven seconds.
#include "commands/command_line.h"

#include "base/failure.h"
#include "base/mapped.h"
#include "base/numbers.h"
#include "base/words.h"
#include "commands/completion.h"
#include "output/output_file.h"
#include "system/files.h"
#include "system/paths.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string_view>
#include <system_error>
#include <type_traits>

namespace {

bool hasRange(const Option& option) {
    return option.rules.range.second > 0;
}

// What the help shows after the names. CLI11 would show types, and the options that one excludes.
std::string valueText(const Option& option) {
    const bool isNoted = option.rules.isRequired && hasName(option);
    return option.value + (isNoted ? " (required)" : option.value.empty() ? " " : "");
}

// A check returns a message for an invalid value.
CLI::Validator oneOf(const std::vector<std::string>& choices) {
    return CLI::Validator(
        [choices](const std::string& word) {
            const bool isValid = std::ranges::find(choices, word) != choices.end();
            return isValid ? "" : "expected " + wordList(choices) + ", found " + word;
        },
        "");
}

// The limits of a number, for help and messages: "from 2 to 100".
std::string limitsOf(const Option& option) {
    return fmt::format("from {} to {}", option.rules.range.first, option.rules.range.second);
}

CLI::Validator numberOf(const Option& option) {
    return CLI::Validator(
        [option](const std::string& word) {
            const bool isWhole = !std::holds_alternative<double*>(option.target);
            const bool isNumber = isWhole ? parseWholeNumber(word).has_value() : parseNumber(word).has_value();
            const double number = parseNumber(word).value_or(0);
            const bool isValid = isNumber && number >= option.rules.range.first && number <= option.rules.range.second;
            return isValid ? ""
                           : fmt::format("expected a {}number {}, found {}", isWhole ? "whole " : "", limitsOf(option),
                                         word);
        },
        "");
}

// An empty value is usually a variable of a script that is not set. Without this check the option would be ignored.
CLI::Validator notEmpty(const Option& option) {
    return CLI::Validator(
        [option](const std::string& word) {
            return word.empty() ? "expected " + option.value + " after it, found ''" : "";
        },
        "");
}

CLI::Option* addOption(CLI::App& app, const Option& option) {
    std::string names; // as CLI11 wants them
    for (const std::string& name : option.names) {
        names.append(names.empty() ? "" : ",").append(name);
    }
    const std::string help = option.help + (hasRange(option) ? "\n" + limitsOf(option) : "");
    CLI::Option* const added = std::visit(
        [&](auto* target) {
            if constexpr (std::is_same_v<decltype(target), bool*>) {
                return app.add_flag(names, *target, help)->disable_flag_override();
            } else {
                return app.add_option(names, *target, help);
            }
        },
        option.target);
    added->required(option.rules.isRequired)->option_text(valueText(option));
    if (std::holds_alternative<std::vector<std::string>*>(option.target) && hasName(option)) {
        added->allow_extra_args(false); // one value after each name
    }
    if (option.rules.separator != '\0') {
        added->delimiter(option.rules.separator);
    }
    if (hasName(option) && !isFlag(option)) {
        added->check(notEmpty(option));
    }
    if (!option.rules.choices.empty()) {
        added->check(oneOf(option.rules.choices));
    }
    if (hasRange(option)) {
        added->check(numberOf(option));
    }
    return added;
}

void addOptions(CLI::App& app, const std::vector<Option>& options) {
    std::vector<CLI::Option*> added;
    for (const Option& option : options) {
        added.push_back(addOption(app, option));
    }
    for (size_t i = 0; i < options.size(); ++i) { // names of options that are known by now
        for (const std::string& name : options[i].rules.needs) {
            added[i]->needs(app.get_option(name));
        }
        for (const std::string& name : options[i].rules.excludes) {
            added[i]->excludes(app.get_option(name));
        }
    }
}

// Asked after parsing, so that a mistyped name is reported as an unknown command.
void requireSubcommand(const CLI::App& app, const Command& command) {
    if (app.get_subcommands().empty()) {
        throw WrongCommandLine("expected a command: " + wordList(commandNames(command)));
    }
}

void describe(CLI::App& app, const Command& command) {
    app.footer(command.footer);
    app.require_subcommand(0, 1);           // after a command, the name of another one is a file
    app.allow_windows_style_options(false); // a path may begin with a slash
    addOptions(app, command.options);
    for (const Command& subcommand : command.commands) {
        describe(*app.add_subcommand(subcommand.name, subcommand.purpose), subcommand);
    }
    const bool isGroup = !command.commands.empty();
    app.callback(isGroup ? [&app, &command] { requireSubcommand(app, command); } : command.run);
}

constexpr std::string_view HelpName = "help";

// Adds --files0-from to a command with a list of files, one of which must be named on the command line or in the list.
void addFileList(Command& command, Option& files) {
    auto* const names = std::get<std::vector<std::string>*>(files.target);
    const std::string word = files.rules.isRequired ? files.names.front() : "";
    const auto list = std::make_shared<std::string>();
    files.rules.isRequired = false;
    command.run = [run = command.run, options = command.options, names, word, list] {
        if (!list->empty()) {
            for (const Option& option : options) {
                if (const auto* const text = std::get_if<std::string*>(&option.target); text && !(*text)->empty()) {
                    requireOther(**text, *list);
                }
            }
            std::ranges::copy(readNames(*list), std::back_inserter(*names));
        } else if (names->empty() && !word.empty()) {
            throw WrongCommandLine("expected " + word);
        }
        run();
    };
    command.options.push_back(
        Option({"--files0-from"}, list.get(), "FILE",
               "Also read names, each with a NUL after it, from\nthis file ('-': standard input)"));
}

// The command with what is the same in all commands.
Command completed(Command command) {
    const auto files =
        std::ranges::find_if(command.options, [](const Option& option) { return option.rules.isFileList; });
    if (files != command.options.end()) {
        addFileList(command, *files);
    }
    std::ranges::transform(command.commands, command.commands.begin(), completed);
    if (!command.version.empty()) {
        const auto words = std::make_shared<std::vector<std::string>>();
        command.commands.push_back({.name = std::string(HelpName),
                                    .purpose = "Show the help of a command",
                                    .options = {Option({"COMMAND"}, words.get(), "", "Its name")},
                                    .footer = "Example:\n  tvmeta help info",
                                    .run = [words] {}});
    }
    return command;
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
    std::cerr << "Try: " + chosen.words + " --help\n";
    return WrongUse;
}

// The words that no argument takes, as on the command line: CLI11 lists those after "--" first.
std::vector<std::string> inOrder(std::vector<std::string> unread, const std::vector<std::string>& words) {
    const auto fromEnd = [&](const std::string& word) { return std::find(words.rbegin(), words.rend(), word); };
    std::erase(unread, "--");
    std::ranges::sort(unread, std::greater(), fromEnd);
    return unread;
}

// The messages of CLI11 about an option begin with its name. `unread` are the words that nothing takes.
std::string inOurWords(const CLI::ParseError& error, const Command& command, const std::vector<std::string>& unread) {
    std::string message = error.what();
    if (constexpr std::string_view NotConverted = "Could not convert: "; message.starts_with(NotConverted)) {
        message.erase(0, NotConverted.size());
    }
    const std::string start = message.substr(0, message.find_first_of(": "));
    const std::string name = (message.ends_with("disallowed flag override") ? "--" : "") + start;
    const std::string last = message.substr(message.rfind(' ') + 1);
    if (dynamic_cast<const CLI::RequiredError*>(&error) != nullptr) {
        return (name.starts_with('-') ? name + " is required" : "expected " + name);
    }
    if (dynamic_cast<const CLI::ExcludesError*>(&error) != nullptr) {
        return name + " and " + last + " cannot be combined";
    }
    if (dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr) {
        return fmt::format("unexpected word {}", fmt::join(unread, " "));
    }
    const Option* const option = optionNamed(command, name);
    const bool isOurs = dynamic_cast<const CLI::ValidationError*>(&error) != nullptr;
    if (option == nullptr || isOurs || dynamic_cast<const CLI::RequiresError*>(&error) != nullptr) {
        return message;
    }
    return name + ": " +
           (isFlag(*option)                                ? "has no value"
            : message.find("missing") != std::string::npos ? "expected " + option->value + " after it"
            : message.find("At Most") != std::string::npos ? "can be given only once"
                                                           : "invalid value");
}

bool isOption(const Command& command, const std::string& word) {
    const bool isLong = word.starts_with("--");
    const std::string name = isLong ? word.substr(0, word.find('=')) : word.substr(0, 2);
    const std::vector<std::string> names = optionNames(command);
    const Option* const option = optionNamed(command, name);
    const bool isJoined = !isLong && word.size() > 2; // -oFILE
    return isJoined ? option != nullptr && !isFlag(*option) : std::ranges::find(names, name) != names.end();
}

// The first unknown option, which is usually why something else is missing. A file name that begins with a dash is
// treated as an option too; CLI11 accepts names that begin with a dash and a digit.
std::optional<std::string> strayOption(const Command& command, const std::vector<std::string>& words) {
    for (const std::string& word : words) {
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

// help COMMAND means COMMAND --help.
std::vector<std::string> helpWords(const Command& tool, std::span<const std::string> names) {
    const Command* command = &tool;
    for (const std::string& name : names) {
        const auto found = std::ranges::find(command->commands, name, &Command::name);
        if (found == command->commands.end() && !name.starts_with('-')) {
            const std::vector<std::string> known = commandNames(*command);
            throw WrongCommandLine("unknown command '" + name + "'" + (known.empty() ? "" : nearestOrAll(name, known)));
        }
        command = found == command->commands.end() ? command : &*found;
    }
    std::vector<std::string> words(names.begin(), names.end());
    words.emplace_back("--help");
    return words;
}

} // namespace

int runCommandLine(const Command& described, int argc, const char* const* argv) {
    const Command tool = completed(described);
    CLI::App app(tool.purpose, tool.name);
    app.set_version_flag("-V,--version", tool.version, "Show the version");
    describe(app, tool);
    std::vector<std::string> words(argv + 1, argv + std::max(argc, 1));
    try {
        if (!words.empty() && words.front() == HelpName) {
            words = helpWords(tool, std::span(words).subspan(1));
        }
        if (!words.empty() && words.front() == "--complete") { // for the shells
            printCompletions(tool, std::span(words).subspan(1));
        } else {
            app.parse(std::vector<std::string>(words.rbegin(), words.rend()));
        }
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() != 0) {
            const Chosen chosen = chosenCommand(tool, app);
            const std::vector<std::string> unread = inOrder(app.remaining(true), words);
            const std::optional<std::string> option = strayOption(*chosen.command, words);
            const std::optional<std::string> stray = option ? option : strayCommand(*chosen.command, unread);
            return wrongUse(chosen, stray.value_or(inOurWords(error, *chosen.command, unread)));
        }
        app.exit(error); // prints help or version
    } catch (const WrongCommandLine& error) {
        return wrongUse(chosenCommand(tool, app), error.what());
    } catch (const Reported&) {
        return Failed;
    }
    return Done;
}

Option forceOption(bool& force) {
    return Option({"--force"}, &force, "", "Replace any existing file");
}

bool hasName(const Option& option) {
    return option.names.front().starts_with('-');
}

bool isFlag(const Option& option) {
    return std::holds_alternative<bool*>(option.target);
}

const Option* optionNamed(const Command& command, const std::string& name) {
    const auto option = std::ranges::find_if(command.options, [&](const Option& known) {
        return std::ranges::find(known.names, name) != known.names.end();
    });
    return option == command.options.end() ? nullptr : &*option;
}

std::vector<std::string> commandNames(const Command& command) {
    return mapped<std::string>(command.commands, &Command::name);
}

std::vector<std::string> optionNames(const Command& command) {
    std::vector<std::string> names = {"-h", "--help"};
    if (!command.version.empty()) {
        names.insert(names.end(), {"-V", "--version"});
    }
    for (const Option& option : command.options) {
        if (hasName(option)) {
            names.insert(names.end(), option.names.begin(), option.names.end());
        }
    }
    return names;
}
