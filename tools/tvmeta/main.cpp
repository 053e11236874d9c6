// tvmeta: the library's functions at the command line.

#include "commands.h"

#include <tvmeta.h>

#include <exception>
#include <iostream>
#include <new>
#include <stdexcept>
#include <string>

namespace {

std::string versionText() {
    return "tvmeta " + std::to_string(TVMETA_VERSION_MAJOR) + "." + std::to_string(TVMETA_VERSION_MINOR) + "." +
           std::to_string(TVMETA_VERSION_PATCH);
}

void run(CLI::App& app, int argc, const char* const* argv) {
    app.parse(argc, argv);
    requireSubcommand(app);
    if (!std::cout.flush()) {
        throw std::runtime_error("standard output could not be written");
    }
}

int report(const char* problem) {
    std::cerr << "tvmeta: " << problem << "\n";
    return 1;
}

} // namespace

int main(int argc, char** argv) {
    try {
        CLI::App app("Reads, writes and checks the metadata of HDR photographs.", "tvmeta");
        app.set_version_flag("--version", versionText());
        addInfoCommand(app);
        addTiffCommand(app);
        addSettingsCommand(app);
        addExifCommand(app);
        addIptcCommand(app);
        addIccCommand(app);
        addStatsCommand(app);
        try {
            run(app, argc, argv);
        } catch (const CLI::ParseError& error) {
            return app.exit(error);
        }
        return 0;
    } catch (const std::bad_alloc&) {
        return report("there is not enough memory");
    } catch (const std::exception& error) {
        return report(error.what());
    }
}
