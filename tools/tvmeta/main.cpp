// tvmeta: the library's functions at the command line.

#include "base/failure.h"
#include "base/line_output.h"
#include "commands/command_line.h"
#include "system/files.h"
#include "system/system.h"
#include "system/temporary_file.h"

#include <tvmeta.h>

#include <exception>
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
        .commands =
            {
#define COMMAND(command) command(),
#include "commands/commands.inc"
#undef COMMAND
            },
        .version = std::string("tvmeta ") + tvmeta_version(),
    };
}

int run(int argc, char** argv) {
    try {
        prepareProcess();
        writeWholeLines();
        removeTemporaryFileOnSignals();
        return runCommandLine(tool(), argc, argv);
    } catch (const std::exception& error) {
        complain(problemOf(error));
    }
    return Failed;
}

} // namespace

// What was printed before a failure is written, too.
int main(int argc, char** argv) {
    const int status = run(argc, argv);
    if (!finishOutput()) {
        complain("cannot write to standard output");
        return Failed;
    }
    return status;
}
