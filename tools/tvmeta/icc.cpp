// tvmeta icc: names a profile, or replaces the one of a TIFF file.

#include "icc.h"

#include "commands.h"
#include "failure.h"
#include "photo.h"

#include <tvmeta.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <memory>

namespace {

constexpr int32_t IccProfileTag = 34675;

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

// ICC.1, profile header: the signature of every profile stands at byte 36, the colour space at byte 16.
void requireProfile(const std::string& path, const Bytes& profile) {
    constexpr size_t HeaderSize = 128;
    if (profile.size() < HeaderSize || asText(profile).substr(36, 4) != "acsp") {
        throw Failure(path, "it is not an ICC profile");
    }
}

Bytes profileOfTiff(const std::string& path) {
    const std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "rb"));
    int32_t length = 0;
    int32_t offset = 0;
    const int32_t result = get_tif_tag(file.get(), IccProfileTag, &length, &offset);
    if (result < 0) {
        throw Failure(path, explain(result, {{-1, "it has no ICC profile"},
                                             {-2, "it is not a little-endian TIFF file, or has an empty directory"},
                                             {-3, "its directories cannot be followed"}}));
    }
    return readRegion(path, offset, length);
}

Bytes readProfile(const std::string& path) {
    const bool isTiff = findFileType(path) == FILE_TYPE_TIFF;
    Bytes profile = isTiff ? profileOfTiff(path) : readFile(path);
    requireProfile(path, profile);
    return profile;
}

void nameProfile(const std::string& path) {
    const Bytes profile = readProfile(path);
    char name[32];
    const int32_t result = get_profile_name(librarySize(profile), profile.data(), name);
    if (result < 0) {
        throw Failure(path, explain(result, {{-1, "it has no description of ICC version 2"}}));
    }
    std::cout << printable(fieldText(name)) << "\n";
}

void replaceProfile(const std::string& profilePath, const std::string& path) {
    const Bytes profile = readRgbProfile(profilePath);
    const int32_t result = update_tif_profile(librarySize(profile), profile.data(), path.c_str());
    if (result <= 0) {
        throw Failure(path,
                      explain(result, {{0, "it has no ICC profile to replace, or is not a little-endian TIFF file"},
                                       {-1, "it cannot be opened for reading and writing"},
                                       {-2, "it could not be written, or would grow beyond 2 GiB"}}));
    }
    std::cout << "replaced the profile of " << path << "\n";
}

struct Options {
    std::string file;
    std::string replacement;
};

} // namespace

Bytes readRgbProfile(const std::string& path) {
    Bytes profile = readProfile(path);
    if (asText(profile).substr(16, 3) != "RGB") {
        throw Failure(path, "it is a profile for other colours than RGB");
    }
    return profile;
}

void addIccCommand(CLI::App& app) {
    CLI::App* command = app.add_subcommand("icc", "Name an ICC profile, or replace that of a TIFF file");
    const auto options = std::make_shared<Options>();
    command->add_option("FILE", options->file, "Profile or TIFF file to name; TIFF file to change with --replace")
        ->required();
    command->add_option("--replace", options->replacement, "Profile to put into the TIFF file")->option_text("PROFILE");
    command->callback([options] {
        if (options->replacement.empty()) {
            nameProfile(options->file);
        } else {
            replaceProfile(options->replacement, options->file);
        }
    });
}
