// tvmeta report: the bracketed sets among photographs as a page for a browser.

#include "base/failure.h"
#include "base/text.h"
#include "commands/brackets.h"
#include "commands/commands.h"
#include "output/output_file.h"
#include "photographs/photo_sets.h"
#include "photographs/report_page.h"

#include <algorithm>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>

namespace {

struct Options {
    BracketOptions input;
    Output output;
};

void makeReport(const Options& options) {
    PhotoSets found;
    writeOutput(options.output, options.input.names, [&](OutputFile& file) {
        found = readPhotoSets(options.input.names, options.input.recursive, options.input.rules,
                              {.blocks = {TVMETA_THUMBNAIL}});
        if (found.photos.empty()) {
            throw Failure("no photograph found");
        }
        std::ranges::for_each(found.photos, [&](const Photo& photo) { requireOther(options.output.path, photo.path); });
        writeReport(found, [&](std::string_view text) { file.write(text); });
    });
    messagesFor(options.output.path) << "wrote " << printable(options.output.path) << ": " << found.sets.size()
                                     << " sets, " << found.singles.size() + found.unknown.size()
                                     << " other photographs\n";
    requireAllRead(found.reading);
}

} // namespace

Command reportCommand() {
    const auto options = std::make_shared<Options>();
    Command command = {
        .name = "report",
        .purpose = "Show the bracketed sets as a page for a browser",
        .options = bracketOptions(options->input),
        .footer = "The page shows the thumbnails of each set, its exposures as diagram and table,\n"
                  "single photographs, and unreadable files. It requires no other file,\n"
                  "no network and no script.\n\n"
                  "Example:\n"
                  "  tvmeta report -r photos -o report.html",
        .run = [options] { makeReport(*options); },
    };
    command.options.push_back({.names = {"-o", "--output"},
                               .target = &options->output.path,
                               .help = "HTML file to write",
                               .value = "FILE",
                               .isRequired = true});
    command.options.push_back(forceOption(options->output.force));
    return command;
}
