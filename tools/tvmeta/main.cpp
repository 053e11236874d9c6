// tvmeta: the library's functions at the command line.

#include "commands/commands.h"
#include "commands/lists.h"
#include "output/failure.h"
#include "output/suggestion.h"
#include "output/text.h"
#include "system/files.h"
#include "system/system.h"
#include "system/temporary_file.h"

#include <tvmeta.h>

#include <algorithm>
#include <exception>
#include <filesystem>
#include <iostream>
#include <new>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace {

enum ExitStatus { Done = 0, Failed = 1, WrongUse = 2 };

constexpr const char* Footer = "Exit status: 0 success; 1 something failed; 2 the command line is wrong.\n\n"
                               "Examples:\n"
                               "  tvmeta info scene.jpg\n"
                               "  tvmeta tiff result.png result.tif --photo scene.jpg\n"
                               "  tvmeta info --help";

std::string versionText() {
    return std::string("tvmeta ") + tvmeta_version();
}

void addCommands(CLI::App& app) {
    addInfoCommand(app);
    addTiffCommand(app);
    addSettingsCommand(app);
    addExifCommand(app);
    addIptcCommand(app);
    addIccCommand(app);
    addStatsCommand(app);
    addBracketsCommand(app);
    addReportCommand(app);
    addThumbnailCommand(app);
}

int failed(const std::string& problem) {
    complain(problem);
    return Failed;
}

// The innermost command that the command line names.
const CLI::App& chosenCommand(const CLI::App& app) {
    const CLI::App* command = &app;
    while (!command->get_subcommands().empty()) {
        command = command->get_subcommands().front();
    }
    return *command;
}

// Names the command whose help explains it.
int wrongUse(const CLI::App& app, const std::string& problem) {
    complain(problem);
    std::string command = app.get_name();
    for (auto named = app.get_subcommands(); !named.empty(); named = named.front()->get_subcommands()) {
        command += " " + named.front()->get_name();
    }
    std::cerr << "Try: " << command << " --help\n";
    return WrongUse;
}

bool isOption(const CLI::App& command, const std::string& word) {
    if (word.starts_with("--")) {
        return command.get_option_no_throw(word.substr(0, word.find('='))) != nullptr;
    }
    const CLI::Option* option = command.get_option_no_throw(word.substr(0, 2));
    return option != nullptr && (word.size() == 2 || option->get_items_expected_max() > 0);
}

// The first unknown option, which is usually why something else is missing. A file name that begins with a dash is
// treated as an option too; CLI11 accepts names that begin with a dash and a digit.
std::optional<std::string> strayOption(const CLI::App& app, std::span<const char* const> words) {
    const CLI::App& command = chosenCommand(app);
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

std::optional<std::string> strayCommand(const CLI::App& app) {
    const std::vector<std::string> names = commandNames(chosenCommand(app));
    const std::vector<std::string> words = app.remaining(true);
    if (names.empty() || words.empty()) {
        return std::nullopt;
    }
    return "unknown command '" + words.front() + "'" + nearestOrAll(words.front(), names);
}

std::string explainMisuse(const CLI::App& app, std::span<const char* const> words, const CLI::ParseError& error) {
    std::optional<std::string> stray = strayOption(app, words);
    if (!stray) {
        stray = strayCommand(app);
    }
    return stray.value_or(error.what());
}

int run(CLI::App& app, int argc, const char* const* argv) {
    const std::span<const char* const> words(argv + 1, argv + std::max(argc, 1));
    try {
        if (!words.empty() && words.front() == std::string_view("--list")) { // for the completion
            printNames(app, words.subspan(1));
            return Done;
        }
        app.parse(argc, argv);
        requireSubcommand(app);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() != 0) {
            return wrongUse(app, explainMisuse(app, words, error));
        }
        app.exit(error); // prints help or version
    } catch (const WrongCommandLine& error) {
        return wrongUse(app, error.what());
    } catch (const Reported&) {
        std::cout.flush();
        return Failed;
    }
    return std::cout.flush() ? Done : failed("cannot write to standard output");
}

} // namespace

int main(int argc, char** argv) {
    try {
        prepareProcess();
        removeTemporaryFileOnSignals();
        CLI::App app("Reads, writes and checks the metadata of HDR photographs.", "tvmeta");
        app.set_version_flag("--version", versionText());
        app.footer(Footer);
        app.allow_windows_style_options(false); // a path may begin with a slash
        addCommands(app);
        return run(app, argc, argv);
    } catch (const std::bad_alloc&) {
        return failed("not enough memory");
    } catch (const std::exception& error) {
        return failed(error.what());
    }
}
