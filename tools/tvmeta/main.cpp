// tvmeta: the library's functions at the command line.

#include "commands/commands.h"
#include "output/failure.h"
#include "system/system.h"
#include "system/temporary_file.h"

#include <tvmeta.h>

#include <exception>
#include <new>
#include <string>

namespace {

Command tool() {
    return {
        .name = "tvmeta",
        .purpose = "Reads, writes and checks the metadata of HDR photographs.",
        .footer = "Exit status: 0 success; 1 something failed; 2 the command line is wrong.\n\n"
                  "Examples:\n"
                  "  tvmeta info scene.jpg\n"
                  "  tvmeta tiff result.png result.tif --photo scene.jpg\n"
                  "  tvmeta info --help",
        .commands = {infoCommand(), tiffCommand(), settingsCommand(), exifCommand(), iptcCommand(), iccCommand(),
                     statsCommand(), bracketsCommand(), reportCommand(), thumbnailCommand()},
        .version = std::string("tvmeta ") + tvmeta_version(),
    };
}

int failed(const std::string& problem) {
    complain(problem);
    return 1;
}

} // namespace

int main(int argc, char** argv) {
    try {
        prepareProcess();
        removeTemporaryFileOnSignals();
        return runCommandLine(tool(), argc, argv);
    } catch (const std::bad_alloc&) {
        return failed("not enough memory");
    } catch (const std::exception& error) {
        return failed(error.what());
    }
}
