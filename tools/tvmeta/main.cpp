// tvmeta: the library's functions at the command line.

#include "commands/commands.h"
#include "output/failure.h"
#include "output/temporary_file.h"
#include "output/text.h"

#include <tvmeta.h>

#include <exception>
#include <filesystem>
#include <iostream>
#include <new>
#include <optional>
#include <string>
#include <system_error>

namespace {

enum ExitStatus { Done = 0, Failed = 1, WrongUse = 2 };

constexpr const char* Footer = "Exit status: 0 all was done; 1 something failed; 2 the command line is wrong.\n\n"
                               "Examples:\n"
                               "  tvmeta info scene.jpg\n"
                               "  tvmeta tiff result.png result.tif --photo scene.jpg\n"
                               "  tvmeta info --help";

std::string versionText() {
    return "tvmeta " + std::to_string(TVMETA_VERSION_MAJOR) + "." + std::to_string(TVMETA_VERSION_MINOR) + "." +
           std::to_string(TVMETA_VERSION_PATCH);
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
}

int failed(const std::string& problem) {
    complain(problem);
    return Failed;
}

// Names the command whose help tells what it takes.
int wrongUse(const CLI::App& app, const std::string& problem) {
    complain(problem);
    std::string command = app.get_name();
    for (auto named = app.get_subcommands(); !named.empty(); named = named.front()->get_subcommands()) {
        command += " " + named.front()->get_name();
    }
    std::cerr << "Try: " << command << " --help\n";
    return WrongUse;
}

// The first option that does not exist: mostly it is why something else is missing. A file whose name begins with a
// dash is taken for one, too.
std::optional<std::string> strayOption(const CLI::App& app) {
    std::error_code error;
    for (const std::string& word : app.remaining(true)) {
        if (word.starts_with('-')) {
            const bool isFile = std::filesystem::exists(word, error);
            return "there is no option " + word + (isFile ? "; the file of that name is ./" + word : "");
        }
    }
    return std::nullopt;
}

int run(CLI::App& app, int argc, const char* const* argv) {
    try {
        app.parse(argc, argv);
        requireSubcommand(app);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() != 0) {
            return wrongUse(app, strayOption(app).value_or(error.what()));
        }
        app.exit(error); // prints help or version
    } catch (const WrongCommandLine& error) {
        return wrongUse(app, error.what());
    } catch (const Reported&) {
        std::cout.flush();
        return Failed;
    }
    return std::cout.flush() ? Done : failed("standard output could not be written");
}

} // namespace

int main(int argc, char** argv) {
    try {
        prepareProcess();
        expectUtf8();
        CLI::App app("Reads, writes and checks the metadata of HDR photographs.", "tvmeta");
        app.set_version_flag("--version", versionText());
        app.footer(Footer);
        addCommands(app);
        return run(app, argc, argv);
    } catch (const std::bad_alloc&) {
        return failed("not enough memory");
    } catch (const std::exception& error) {
        return failed(error.what());
    }
}
