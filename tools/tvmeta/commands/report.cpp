// tvmeta report: the bracketed sets among photographs as a page for a browser.

#include "base/failure.h"
#include "base/text.h"
#include "base/words.h"
#include "commands/brackets.h"
#include "commands/command_line.h"
#include "output/output_file.h"
#include "pages/page_content.h"
#include "pages/report_page.h"
#include "photographs/photo_sets.h"
#include "system/files.h"
#include "system/paths.h"
#include "system/system.h"

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>

namespace {

namespace fs = std::filesystem;

struct Options {
    BracketOptions input;
    Output output;
};

// The folder from which the links of the page lead to the photographs: the current one for a pipe or device.
fs::path folderOf(const std::string& page) {
    std::error_code error;
    const bool isFile = !fs::exists(pathOf(page), error) || fs::is_regular_file(pathOf(page), error);
    const fs::path folder = isFile && page != StandardStream && fileIdentity(page) != fileIdentity(stdout)
                                ? fs::absolute(pathOf(page)).parent_path()
                                : ".";
    return fs::weakly_canonical(fs::absolute(folder));
}

void makeReport(const Options& options) {
    PhotoSets found;
    writeOutput(options.output, options.input.names, [&](OutputFile& file) {
        found = readPhotoSets(options.input.names, options.input.recursive, options.input.rules);
        if (found.photos.empty()) {
            throw Failure("no photograph found");
        }
        std::ranges::for_each(found.photos, [&](const Photo& photo) { requireOther(options.output.path, photo.path); });
        const PageContent content = pageContent(found, folderOf(options.output.path));
        writeReport(content, [&](std::string_view text) { file.write(text); });
    });
    messagesFor(options.output.path) << "wrote " << printable(options.output.path) << ": "
                                     << counted(found.sets.size(), "set") << ", "
                                     << counted(found.singles.size() + found.unknown.size(), "other photograph")
                                     << "\n";
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
                  "script. A click on a thumbnail shows the photograph large.\n\n"
                  "Example:\n"
                  "  tvmeta report -r photos -o report.html",
        .run = [options] { makeReport(*options); },
    };
    command.options.push_back(
        Option({"-o", "--output"}, &options->output.path, "FILE", "HTML file to write", {.isRequired = true}));
    command.options.push_back(forceOption(options->output.force));
    return command;
}
