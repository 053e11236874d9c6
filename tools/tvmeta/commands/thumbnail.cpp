// tvmeta thumbnail: writes the JPEG thumbnails of photographs to files.

#include "base/failure.h"
#include "base/text.h"
#include "base/words.h"
#include "commands/command_line.h"
#include "output/output_file.h"
#include "photographs/read_photos.h"
#include "system/files.h"
#include "system/paths.h"
#include "system/system.h"

#include <filesystem>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <set>
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

struct Thumbnail {
    std::string photo;
    fs::path target;
};

void writeThumbnail(const std::string& photo, const Output& file) {
    writeOutput(file, {photo}, [&](OutputFile& output) {
        const Bytes thumbnail = OpenPhoto(photo).block(TVMETA_THUMBNAIL);
        if (thumbnail.empty()) {
            throw Failure(photo, "no JPEG thumbnail");
        }
        output.write(asText(thumbnail));
    });
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
    const std::string extension = extensionOf(name);
    if (extension != ".jpg" && extension != ".jpeg") {
        name += ".jpg";
    }
    return pathOf(options.output) / name;
}

// Refuses what would replace a photograph of the same run, and two thumbnails of one name, before the first is written.
void requireSafe(const std::vector<Thumbnail>& thumbnails, const Reading& reading) {
    std::set<FileIdentity> inputs;
    for (const std::string& path : reading.paths) {
        if (const std::optional<FileIdentity> identity = fileIdentity(path)) {
            inputs.insert(*identity);
        }
    }
    std::map<std::string, std::string> photos; // by the names of their thumbnails
    for (const Thumbnail& thumbnail : thumbnails) {
        const std::string target = nameOf(thumbnail.target);
        const auto [photo, isNew] = photos.emplace(nameKey(target), thumbnail.photo);
        if (!isNew) {
            throw Failure(target, "would be the thumbnail of " + photo->second + " and of " + thumbnail.photo +
                                      "; nothing was written");
        }
        if (const auto identity = fileIdentity(target); identity && inputs.contains(*identity)) {
            throw Failure(target, "output is the same file as input; nothing was written");
        }
    }
}

void writeThumbnails(const Options& options) {
    std::vector<Thumbnail> thumbnails;
    std::set<std::string> paths;
    FileMessages messages;
    const Reading reading = readPhotos(options.names, options.recursive, {}, [&](Photo&& photo) {
        if (photo.record.blocks[TVMETA_THUMBNAIL].size <= 0) {
            messages.add(photo.path, photo.path + ": no JPEG thumbnail");
        } else if (paths.insert(nameOf(pathOf(photo.path).lexically_normal())).second) { // each once
            thumbnails.push_back({photo.path, targetOf(photo, options)});
        }
    });
    requireSafe(thumbnails, reading);
    size_t written = 0;
    for (const auto& [photo, target] : thumbnails) {
        try {
            fs::create_directories(target.parent_path());
            writeThumbnail(photo, {nameOf(target), options.force});
            ++written;
        } catch (const Failure& failure) {
            messages.add(photo, failure.what());
        } catch (const fs::filesystem_error& error) {
            messages.add(photo, nameOf(error.path1()) + ": " + error.code().message());
        }
    }
    messages.finish();
    std::cout << "wrote " << counted(written, "thumbnail") << " into " << printable(options.output) << "\n";
    requireAllRead(reading);
    if (messages.count() > 0) {
        throw Failure(std::to_string(messages.count()) + " of " + std::to_string(reading.files) +
                      " thumbnails could not be written");
    }
}

void writeOutputs(const Options& options) {
    std::error_code error;
    const bool isFolder = options.names.size() != 1 || options.recursive; // a list of names can be empty
    if (isFolder && options.output == StandardStream) {
        throw WrongCommandLine("-o - requires one photograph");
    }
    if (isFolder || fs::is_directory(pathOf(options.output), error)) {
        return writeThumbnails(options);
    }
    writeThumbnail(readNamed(OpenPhoto(options.names.at(0))).path, {options.output, options.force});
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
                Option({"PHOTO"}, &options->names, "", "Photographs; with -r also folders",
                       {.isRequired = true, .isFileList = true}),
                Option({"-o", "--output"}, &options->output, "OUT", "File to write, or folder for several",
                       {.isRequired = true}),
                Option({"-r", "--recursive"}, &options->recursive, "",
                       "Read the photographs in folders and subfolders"),
                forceOption(options->force),
            },
        .footer = "In a folder, thumbnails have the names and subfolders of their photographs;\n"
                  "the extension .jpg is added to other names.\n\n"
                  "Examples:\n"
                  "  tvmeta thumbnail scene.jpg -o small.jpg\n"
                  "  tvmeta thumbnail -r photos -o small",
        .run = [options] { writeOutputs(*options); },
    };
}
