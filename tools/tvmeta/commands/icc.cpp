// tvmeta icc: describes a profile, or replaces the profile of a TIFF file.

#include "commands/icc.h"

#include "base/failure.h"
#include "base/text.h"
#include "commands/command_line.h"
#include "output/output_file.h"
#include "photographs/photo.h"
#include "pictures/load_picture.h"
#include "pictures/profiles.h"
#include "system/paths.h"

#include <tvmeta.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <iostream>
#include <limits>
#include <memory>
#include <vector>

namespace {

Bytes readProfile(const std::string& path) {
    const OpenPhoto file(path);
    const bool isImage = file.isPhotograph() || isPicture(path);
    const bool isReadable = file.isPhotograph() && (!file.isCompressed(TVMETA_ICC) || !isPicture(path));
    Bytes profile = isReadable ? file.block(TVMETA_ICC)
                    : isImage  ? loadPicture(path, {.pixels = false}).profile
                               : readFile(path);
    if (isImage && profile.empty()) {
        throw Failure(path, "no ICC profile");
    }
    requireProfile(path, profile);
    return profile;
}

Bytes readRgbProfile(const std::string& path) {
    Bytes profile = readProfile(path);
    const std::string colours = profileColourSpace(profile);
    if (colours != "RGB") {
        throw Failure(path, "expected an ICC profile for RGB, found one for \"" + colours + "\"");
    }
    return profile;
}

void describeProfile(const std::string& path) {
    const Bytes profile = readProfile(path);
    const std::string name = profileName(profile);
    std::cout << (name.empty() ? "(no name)" : printable(name)) << "\n"
              << "  Version       " << profileVersion(profile) << "\n"
              << "  Class         " << printable(profileClass(profile)) << "\n"
              << "  Colour space  " << printable(profileColourSpace(profile)) << "\n";
}

// Refuses unsupported files before copying them.
void requireChangeable(const std::string& path, const Bytes& profile) {
    constexpr uint64_t MaxSize = std::numeric_limits<int32_t>::max();
    const Bytes start = readStart(path, 4);
    if (OpenPhoto(path).format() != TVMETA_FORMAT_TIFF) {
        throw Failure(path, "not a TIFF file: " + beginning(start));
    }
    if (start.front() != 'I') {
        throw Failure(path, "big-endian TIFF files are not supported");
    }
    if (std::filesystem::file_size(pathOf(readablePath(path))) >
        MaxSize - std::min<uint64_t>(profile.size(), MaxSize)) {
        throw Failure(path, "the file would exceed 2 GiB");
    }
}

struct Options {
    std::string file;
    std::string replacement;
    Output output; // without a name, the file is changed
};

// The library changes the file in place. It changes a copy here, so that the file survives a failure.
void replaceProfile(const Options& options) {
    const std::string& path = options.file;
    const bool isNew = !options.output.path.empty();
    const Output target = isNew ? options.output : Output(path, options.output.force);
    const auto inputs = isNew ? std::vector{path, options.replacement} : std::vector<std::string>();
    writeOutput(target, inputs, [&](OutputFile& output) {
        const Bytes profile = readRgbProfile(options.replacement);
        requireChangeable(path, profile);
        const std::string copy = output.libraryPath();
        copyFile(path, copy);
        errno = 0;
        const int32_t result = update_tif_profile(librarySize(profile), profile.data(), copy.c_str());
        if (result <= 0) {
            throw Failure(path, explain(result, {{UPDATE_PROFILE_NO_ENTRY, "no ICC profile to replace"},
                                                 {UPDATE_PROFILE_CANNOT_OPEN, systemReason()},
                                                 {UPDATE_PROFILE_FAILED,
                                                  errno == 0 ? "the file would exceed 2 GiB" : systemReason()}}));
        }
    });
    messagesFor(target.path) << (isNew ? "wrote " : "replaced the profile of ") << printable(target.path) << "\n";
}

void writeProfile(const Options& options) {
    writeOutput(options.output, {options.file},
                [&](OutputFile& output) { output.write(asText(readProfile(options.file))); });
    messagesFor(options.output.path) << "wrote " << printable(options.output.path) << "\n";
}

void runIcc(const Options& options) {
    if (!options.replacement.empty()) {
        replaceProfile(options);
    } else if (!options.output.path.empty()) {
        writeProfile(options);
    } else {
        describeProfile(options.file);
    }
}

} // namespace

bool canUse(const Bytes& profile, const Picture& picture) {
    return profile.empty() || (colourChannels(picture) == 3 && profileColourSpace(profile) == "RGB");
}

Bytes profileFor(const Picture& picture, const std::string& path) {
    if (colourChannels(picture) != 3) {
        throw Failure(path, "the picture is grey, and only ICC profiles for RGB can be saved; nothing was written");
    }
    return readRgbProfile(path);
}

Command iccCommand() {
    const auto options = std::make_shared<Options>();
    return {
        .name = "icc",
        .purpose = "Describe an ICC profile, or replace one in a TIFF",
        .options =
            {
                Option({"FILE"}, &options->file, "",
                       "Profile, or photograph that contains one; with\n--replace: a TIFF file", {.isRequired = true}),
                Option({"--replace"}, &options->replacement, "PROFILE", "New profile, or photograph that contains it"),
                Option({"-o", "--output"}, &options->output.path, "FILE",
                       "Write the profile, or the TIFF file with the new\nprofile, to this file"),
                forceOption(options->output.force),
            },
        .footer = "Without -o, --replace changes the TIFF file itself and requires --force.\n\n"
                  "Examples:\n"
                  "  tvmeta icc scene.jpg\n"
                  "  tvmeta icc scene.jpg -o scene.icc\n"
                  "  tvmeta icc --replace wide.icc result.tif -o wide.tif",
        .run = [options] { runIcc(*options); },
    };
}
