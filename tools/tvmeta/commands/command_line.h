// The command line, as tables of commands and options.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <variant>
#include <vector>

enum ExitStatus { Done = 0, Failed = 1, WrongUse = 2 };

// What an option sets: a flag, one value, or a list that each use of the option extends.
using OptionTarget =
    std::variant<bool*, std::string*, int32_t*, std::optional<size_t>*, double*, std::vector<std::string>*>;

// The words that a shell offers for a value, in the context of a command line.
using Suggest = std::vector<std::string> (*)(const std::string& value, std::span<const std::string> words);

// What is special about an option.
struct OptionRules {
    bool isRequired = false;
    bool isFileList = false;              // adds --files0-from, which extends the list and can replace it
    char separator = '\0';                // between several values in one word
    std::pair<double, double> range = {}; // of a number
    std::vector<std::string> choices = {};
    Suggest suggest = nullptr;           // completes its value in a shell; default: file names
    std::vector<std::string> needs = {}; // names of other options
    std::vector<std::string> excludes = {};
};

struct Option {
    Option(std::vector<std::string> words, OptionTarget sets, std::string valueName, std::string text,
           OptionRules special = {})
        : names(std::move(words)), target(sets), value(std::move(valueName)), help(std::move(text)),
          rules(std::move(special)) {}

    std::vector<std::string> names; // "-o" and "--output"; one word in capitals for an argument without a name
    OptionTarget target;
    std::string value; // what the help calls its value; empty for flags and arguments
    std::string help;
    OptionRules rules;
};

struct Command {
    std::string name;
    std::string purpose;
    std::vector<Option> options = {};
    std::string footer = {};
    std::function<void()> run = {};
    std::vector<Command> commands = {}; // one of which must be named
    std::string version = {};           // what --version prints
};

// The option --force of commands that write a file.
Option forceOption(bool& force);

// Parses the words of a command line and runs the command that they name. Returns the exit status of the tool, after a
// message on standard error if it is not 0. Throws the exceptions of commands, except WrongCommandLine and Reported.
int runCommandLine(const Command& tool, int argc, const char* const* argv);

// An argument has no name.
bool hasName(const Option& option);
bool isFlag(const Option& option);

// The option of this name; null if there is none.
const Option* optionNamed(const Command& command, const std::string& name);

// The names of the commands and options of a command.
std::vector<std::string> commandNames(const Command& command);
std::vector<std::string> optionNames(const Command& command);

// The commands of the tool.
#define COMMAND(command) Command command();
#include "commands/commands.inc"
#undef COMMAND
