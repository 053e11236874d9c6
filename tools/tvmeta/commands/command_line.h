// The command line, as tables of commands and options.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

// What an option sets: a flag, one value, or a list that each use of the option extends.
using OptionTarget =
    std::variant<bool*, std::string*, int32_t*, std::optional<size_t>*, double*, std::vector<std::string>*>;

struct Option {
    std::vector<std::string> names; // "-o" and "--output"; one word in capitals for an argument without a name
    OptionTarget target;
    std::string help;
    std::string value = {}; // what the help calls its value
    bool isRequired = false;
    char separator = '\0';                // between several values in one word
    std::pair<double, double> range = {}; // of a number
    std::vector<std::string> choices = {};
    std::vector<std::string> needs = {}; // names of other options
    std::vector<std::string> excludes = {};
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

// Parses the words of a command line and runs the command that they name. Returns the exit status of the tool, after a
// message on standard error if it is not 0. Throws the exceptions of commands, except WrongCommandLine and Reported.
int runCommandLine(const Command& tool, int argc, const char* const* argv);

// The names of the commands and options of a command.
std::vector<std::string> commandNames(const Command& command);
std::vector<std::string> optionNames(const Command& command);
