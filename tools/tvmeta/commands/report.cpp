// tvmeta report: the bracketed sets among photographs as a page for a browser.

#include "commands/brackets.h"
#include "commands/commands.h"
#include "output/failure.h"
#include "output/output_file.h"
#include "output/text.h"
#include "pages/page_content.h"
#include "pages/report_page.h"
#include "photographs/photo_sets.h"
#include "system/paths.h"
#include "system/system.h"

#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>

namespace {

namespace fs = std::filesystem;

struct Options {
    BracketOptions input;
    std::string output;
};

// Photographs in folders are inputs too, even unreadable ones.
void requireNoPhoto(const std::string& output) {
    std::error_code error;
    if (fs::is_regular_file(pathOf(output), error) && isPhotograph(output)) {
        throw Failure(output, "output is a photograph; left unchanged");
    }
}

// The folder from which the links of the page lead to the photographs: the current one for a pipe or device.
fs::path folderOf(const std::string& page) {
    std::error_code error;
    const bool isFile = !fs::exists(pathOf(page), error) || fs::is_regular_file(pathOf(page), error);
    const fs::path folder = isFile && !isStandardOutput(page) ? fs::absolute(pathOf(page)).parent_path() : ".";
    return fs::weakly_canonical(fs::absolute(folder));
}

void makeReport(const Options& options) {
    requireNoPhoto(options.output);
    const PhotoSets found = readPhotoSets(options.input.names, options.input.recursive, options.input.rules);
    const PageContent content = pageContent(found, folderOf(options.output));
    writeOutput(options.output, options.input.names,
                [&](OutputFile& file) { writeReport(content, [&](std::string_view text) { file.write(text); }); });
    messagesFor(options.output) << "wrote " << printable(options.output) << ": " << found.sets.size() << " sets, "
                                << found.singles.size() + found.unknown.size() << " other photographs\n";
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
                  "single photographs, and unreadable files. It requires no network and no\n"
                  "script. A click on a thumbnail shows the photograph in its folder.\n\n"
                  "Example:\n"
                  "  tvmeta report -r photos -o report.html",
        .run = [options] { makeReport(*options); },
    };
    command.options.push_back({.names = {"-o", "--output"},
                               .target = &options->output,
                               .help = "HTML file to write",
                               .value = "FILE",
                               .isRequired = true});
    return command;
}
