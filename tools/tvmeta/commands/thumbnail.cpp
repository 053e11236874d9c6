// tvmeta thumbnail: writes the JPEG thumbnails of photographs to files.

#include "commands/commands.h"
#include "output/failure.h"
#include "output/output_file.h"
#include "output/text.h"
#include "photographs/read_photos.h"
#include "system/files.h"
#include "system/paths.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

namespace {

namespace fs = std::filesystem;

struct Options {
    std::vector<std::string> names;
    std::string output;
    bool recursive = false;
    bool force = false;
};

const Wanted WantedBlock = {.blocks = {TVMETA_THUMBNAIL}};

const Bytes& thumbnailOf(const Photo& photo) {
    const Bytes& thumbnail = photo.blocks[TVMETA_THUMBNAIL];
    if (thumbnail.empty()) {
        throw Failure(photo.path, "no JPEG thumbnail");
    }
    return thumbnail;
}

void writeThumbnail(const Photo& photo, const std::string& path, bool force) {
    const Bytes& thumbnail = thumbnailOf(photo);
    std::error_code error;
    if (!force && fs::is_regular_file(pathOf(path), error)) {
        throw Failure(path, "already exists; left unchanged (use --force to replace it)");
    }
    writeOutput(path, {photo.path}, [&](OutputFile& output) { output.write(asText(thumbnail)); });
}

// The path of the photograph relative to the folder that was searched.
fs::path targetOf(const Photo& photo, const Options& options) {
    const fs::path path = pathOf(photo.path);
    fs::path name = path.filename();
    std::error_code error;
    for (const std::string& folder : options.names) {
        const fs::path relative = path.lexically_relative(pathOf(folder));
        if (fs::is_directory(pathOf(folder), error) && !relative.empty() && *relative.begin() != "..") {
            name = relative;
        }
    }
    std::string extension = nameOf(name.extension());
    std::ranges::transform(extension, extension.begin(), [](unsigned char c) { return std::tolower(c); });
    if (extension != ".jpg" && extension != ".jpeg") {
        name += ".jpg";
    }
    return pathOf(options.output) / name;
}

void writeThumbnails(const Options& options) {
    size_t written = 0;
    size_t failures = 0;
    const Reading reading = readPhotos(options.names, options.recursive, WantedBlock, [&](Photo&& photo) {
        try {
            const fs::path target = targetOf(photo, options);
            fs::create_directories(target.parent_path());
            writeThumbnail(photo, nameOf(target), options.force);
            ++written;
        } catch (const Failure& failure) {
            complain(failure.what());
            ++failures;
        } catch (const fs::filesystem_error& error) {
            complain(nameOf(error.path1()) + ": " + error.code().message());
            ++failures;
        }
    });
    std::cout << "wrote " << written << (written == 1 ? " thumbnail" : " thumbnails") << " into "
              << printable(options.output) << "\n";
    requireAllRead(reading);
    if (failures > 0) {
        throw Failure(std::to_string(failures) + " of " + std::to_string(reading.files) +
                      " thumbnails could not be written");
    }
}

void writeOutputs(const Options& options) {
    std::error_code error;
    if (options.names.size() > 1 || options.recursive || fs::is_directory(pathOf(options.output), error)) {
        return writeThumbnails(options);
    }
    writeThumbnail(readPhoto(options.names.front(), WantedBlock), options.output, options.force);
    messagesFor(options.output) << "wrote " << printable(options.output) << "\n";
}

} // namespace

Command thumbnailCommand() {
    const auto options = std::make_shared<Options>();
    return {
        .name = "thumbnail",
        .purpose = "Write the thumbnails of photographs to files",
        .options =
            {
                {.names = {"PHOTO"},
                 .target = &options->names,
                 .help = "Photographs; with -r also folders",
                 .isRequired = true},
                {.names = {"-o", "--output"},
                 .target = &options->output,
                 .help = "File to write, or folder for several",
                 .value = "OUT",
                 .isRequired = true},
                {.names = {"-r", "--recursive"},
                 .target = &options->recursive,
                 .help = "Read the photographs in folders and subfolders"},
                {.names = {"--force"}, .target = &options->force, .help = "Replace existing files"},
            },
        .footer = "In a folder, thumbnails have the names and subfolders of their photographs;\n"
                  "the extension .jpg is added to other names.\n\n"
                  "Examples:\n"
                  "  tvmeta thumbnail scene.jpg -o small.jpg\n"
                  "  tvmeta thumbnail -r photos -o small",
        .run = [options] { writeOutputs(*options); },
    };
}
