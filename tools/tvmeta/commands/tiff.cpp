// tvmeta tiff: a result image with the metadata of its source photograph.

#include "base/failure.h"
#include "base/text.h"
#include "base/words.h"
#include "commands/command_line.h"
#include "commands/completion.h"
#include "commands/icc.h"
#include "commands/result_file.h"
#include "commands/settings_options.h"
#include "output/output_file.h"
#include "photographs/photo.h"
#include "pictures/convert.h"
#include "pictures/load_picture.h"
#include "pictures/profiles.h"
#include "system/system.h"

#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace {

struct Options {
    std::string image;
    std::string output;
    std::string photo;
    std::vector<std::string> keywords;
    std::string profile;
    bool profileFromPhoto = false;
    SettingsOptions settings;
    std::string depth;
    std::string orientation;
    std::optional<size_t> resolution;
    bool allowDamage = false;
    bool force = false;
};

const std::map<std::string, Depth> DepthNames = {
    {"8", Depth::Integer8}, {"16", Depth::Integer16}, {"32", Depth::Float32}, {"16f", Depth::Float16}};

// The photograph whose metadata the result has: that of --photo, else the picture itself, if it has any.
std::optional<std::string> photographOf(const Options& options) {
    if (!options.photo.empty()) {
        return options.photo;
    }
    return isPhotograph(options.image) ? std::optional(options.image) : std::nullopt;
}

// Pixels are saved as they are, so unless chosen the orientation is that of the picture, which is upright without one.
int32_t orientationOf(const Options& options, const Picture& picture, const Photo* photo) {
    const int32_t orientation = options.orientation == "photo" ? (photo != nullptr ? photo->record.orientation : 1)
                                : options.orientation.empty()  ? picture.orientation.value_or(1)
                                                               : options.orientation.front() - '0';
    return orientation >= 1 && orientation <= 8 ? orientation : 1;
}

Bytes profileOf(const Options& options, const Picture& picture) {
    if (!options.profile.empty() || options.profileFromPhoto) {
        return profileFor(picture, options.profileFromPhoto ? options.photo : options.profile);
    }
    return canUse(picture.profile, picture) ? picture.profile : Bytes();
}

// The depth of the file (default: that of the picture).
Depth depthOf(const Options& options, const Picture& picture) {
    return options.depth.empty() ? picture.depth : DepthNames.at(options.depth);
}

// Converts the picture to that depth, except from 16 to 8 bits, which the library does.
Picture pictureFor(const Options& options) {
    Picture picture = loadPicture(options.image, {.allowDamage = options.allowDamage});
    const Depth depth = depthOf(options, picture);
    if (isFloat(depth) != isFloat(picture.depth)) {
        throw Failure(options.image, isFloat(picture.depth) ? "floating-point samples: expected a --depth "
                                                              "of 32 or 16f, found " +
                                                                  options.depth
                                                            : "integer samples: expected a --depth of 8 "
                                                              "or 16, found " +
                                                                  options.depth);
    }
    if (depth == Depth::Integer16 && picture.depth == Depth::Integer8) {
        widenTo16Bits(picture);
    } else if (depth == Depth::Float16 && picture.depth == Depth::Float32) {
        if (const uint64_t limited = convertToHalf(picture); limited > 0) {
            complain("warning: " + options.image + ": limited " + counted(limited, "sample") +
                     " to 65504, the largest half float; --depth 32 keeps larger ones");
        }
    } else if (depth == Depth::Float32 && picture.depth == Depth::Float16) {
        convertFromHalf(picture);
    }
    return picture;
}

// What of picture and photograph has no place in the file, in one line. The metadata of the picture is replaced by that
// of a photograph.
void reportLosses(const Options& options, const Picture& picture, const std::vector<std::string>& unkept) {
    std::vector<std::string> losses = picture.dropped;
    if (options.profile.empty() && !options.profileFromPhoto && !canUse(picture.profile, picture)) {
        losses.push_back("ICC profile for " + profileColourSpace(picture.profile));
    }
    if (!options.photo.empty() && !isSameFile(options.image, options.photo)) {
        losses.insert(losses.end(), picture.metadata.begin(), picture.metadata.end());
    }
    if (options.photo.empty()) {
        losses.insert(losses.end(), unkept.begin(), unkept.end());
    }
    if (!losses.empty()) {
        complain(options.image + ": not copied to the result: " + joined(losses) +
                 (unkept.empty() || options.photo.empty() ? "" : "; from " + options.photo + ": " + joined(unkept)));
    } else if (!unkept.empty()) {
        complain(options.photo + ": not copied to the result: " + joined(unkept));
    }
}

// Writes the file. Returns what could not be kept.
std::vector<std::string> writePicture(const Options& options, const Settings& settings, const Picture& picture,
                                      const std::string& path) {
    const Depth depth = depthOf(options, picture);
    const Bytes profile = profileOf(options, picture);
    const std::optional<std::string> photoPath = photographOf(options);
    std::optional<OpenPhoto> file;
    std::optional<Photo> photo;
    if (photoPath) {
        file.emplace(*photoPath);
        photo = readNamed(*file);
    }
    const std::vector<const char*> keywords = keywordTexts(options.keywords);
    tvmeta_Result result = {};
    result.recordSize = sizeof result;
    result.width = picture.width;
    result.height = picture.height;
    result.channels = picture.channels;
    result.bitsCode = static_cast<int32_t>(depth);
    result.pixelMode = depth != picture.depth ? 1 : 0; // 16 to 8 bits, which the library does
    result.resolution = options.resolution ? static_cast<int32_t>(*options.resolution) : picture.resolution.value_or(0);
    result.orientation = orientationOf(options, picture, photo ? &*photo : nullptr);
    result.path = path.c_str();
    result.pixels = picture.samples.data();
    result.rowPitch = static_cast<int64_t>(rowBytes(picture));
    result.icc = profile.data();
    result.iccSize = std::ssize(profile);
    result.keywords = keywords.data();
    result.keywordCount = static_cast<int32_t>(keywords.size());
    result.method = settings.method;
    result.settings = settings.values.data();
    result.photo = file ? &file->source() : nullptr;
    return lossWords(saveResult(result, options.output));
}

void writeTiff(const Options& options) {
    if (options.orientation == "photo" && options.photo.empty()) {
        throw WrongCommandLine("--orientation photo requires --photo");
    }
    // Wrong ones are refused before the work.
    const Settings settings = options.settings.settings();
    keywordTexts(options.keywords);
    Picture picture;
    std::vector<std::string> unkept;
    writeOutput({options.output, options.force}, {options.image, options.photo, options.profile},
                [&](OutputFile& output) {
                    picture = pictureFor(options);
                    unkept = writePicture(options, settings, picture, output.libraryPath());
                });
    if (!picture.damage.empty()) {
        complain("warning: " + options.image + ": damaged, some pixels may be wrong: " + picture.damage);
    }
    reportLosses(options, picture, unkept);
    messagesFor(options.output) << "wrote " << printable(options.output) << ": " << picture.width << " x "
                                << picture.height << " pixels\n";
}

} // namespace

Command tiffCommand() {
    constexpr double MaxResolution = 2147483; // stored in thousandths, in 31 bits
    const auto options = std::make_shared<Options>();
    Command command = {
        .name = "tiff",
        .purpose = "Save an image as TIFF with a photograph's metadata",
        .options =
            {
                Option({"IMAGE"}, &options->image, "", "Picture in one of the formats below", {.isRequired = true}),
                Option({"OUT"}, &options->output, "", "TIFF file to write", {.isRequired = true}),
                Option({"--photo"}, &options->photo, "PHOTO",
                       "Copy metadata from this photograph: camera,\nexposure, GPS, IPTC, XMP"),
                Option({"--keyword"}, &options->keywords, "TEXT", "Add a keyword to IPTC and XMP; can be repeated",
                       {.suggest = suggestNothing}),
                Option({"--icc"}, &options->profile, "PROFILE",
                       "ICC profile of the image, or a photograph or\npicture with it; else the image's own"),
                Option({"--icc-from-photo"}, &options->profileFromPhoto, "",
                       "Use the ICC profile of the --photo photograph", {.needs = {"--photo"}, .excludes = {"--icc"}}),
                Option({"--resolution"}, &options->resolution, "N",
                       "Dots per inch; else that of a PNG or TIFF, or of\nthe photograph, or 300",
                       {.range = {1, MaxResolution}}),
                Option({"--depth"}, &options->depth, "DEPTH",
                       "8 or 16 for integers; 32 or 16f (half floats) for\nfloats; else that of the image",
                       {.choices = {"8", "16", "32", "16f"}}),
                Option({"--orientation"}, &options->orientation, "CODE",
                       "TIFF orientation code, or 'photo' for that of\n--photo; else the image's own, or 1 "
                       "(upright)",
                       {.choices = {"photo", "1", "2", "3", "4", "5", "6", "7", "8"}}),
                Option({"--allow-damaged"}, &options->allowDamage, "", "Save what is left of a damaged JPEG"),
            },
        .footer = helpList("Pictures", pictureFormats()) + methodHelp() +
                  "Examples:\n"
                  "  tvmeta tiff result.png result.tif --photo scene.jpg --icc-from-photo\n"
                  "  tvmeta tiff light.exr light.tif --photo scene.jpg --depth 16f\n"
                  "  tvmeta tiff result.png result.tif --method Fusion/Intensive --set Radius=70",
        .run = [options] { writeTiff(*options); },
    };
    addSettingsOptions(command.options, options->settings, false);
    command.options.push_back(forceOption(options->force));
    return command;
}
