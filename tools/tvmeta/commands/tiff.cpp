// tvmeta tiff: a result image with the metadata of its source photograph.

#include "base/failure.h"
#include "base/text.h"
#include "base/words.h"
#include "commands/commands.h"
#include "commands/completion.h"
#include "commands/icc.h"
#include "commands/result_packet.h"
#include "commands/settings_options.h"
#include "output/output_file.h"
#include "photographs/iptc_block.h"
#include "photographs/photo.h"
#include "photographs/unkept_tags.h"
#include "pictures/convert.h"
#include "pictures/load_picture.h"
#include "system/system.h"

#include <cerrno>
#include <iostream>
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

// The metadata of the file; without a photograph only settings and profile.
struct Metadata {
    MetadataBuf camera = {};
    GpsBuf gps = {};
    Bytes iptc;
    Bytes profile;
    Settings settings;
    std::string packet;
    std::vector<std::string> unkept; // values of the photograph
};

// A damaged block of the photograph is omitted and the rest of its metadata is kept.
Bytes readOrLeaveOut(const OpenPhoto& photo, int32_t block) {
    try {
        return photo.block(block);
    } catch (const Failure& failure) {
        complain("warning: " + std::string(failure.what()) + "; omitted");
        return {};
    }
}

// Pixels are saved as they are, so unless chosen the orientation is that of the picture, which is upright without one.
int32_t orientationOf(const Options& options, const Picture& picture, const MetadataBuf& camera) {
    const int32_t orientation = options.orientation == "photo" ? camera.orientation
                                : options.orientation.empty()  ? picture.orientation.value_or(1)
                                                               : options.orientation.front() - '0';
    return orientation >= 1 && orientation <= 8 ? orientation : 1;
}

Metadata collectMetadata(const Options& options, const Settings& settings, const Picture& picture) {
    Metadata metadata;
    metadata.settings = settings;
    if (!options.profile.empty() || options.profileFromPhoto) {
        metadata.profile = profileFor(picture, options.profileFromPhoto ? options.photo : options.profile);
    } else if (canUse(picture.profile, picture)) {
        metadata.profile = picture.profile;
    }
    if (!options.photo.empty()) {
        const OpenPhoto file(options.photo);
        const Photo photo = file.read();
        const int64_t clamped = tvmeta_writer_records(&photo.record, &metadata.camera, &metadata.gps);
        metadata.iptc = readOrLeaveOut(file, TVMETA_IPTC);
        const int32_t orientation = orientationOf(options, picture, metadata.camera);
        ResultPacket packet = resultPacket(std::string(asText(readOrLeaveOut(file, TVMETA_XMP))), metadata.settings,
                                           photo.record.lens, orientation);
        metadata.packet = std::move(packet.text);
        metadata.unkept = unkeptValues(file, clamped);
        metadata.unkept.insert(metadata.unkept.end(), packet.unkept.begin(), packet.unkept.end());
    }
    for (const std::string& keyword : options.keywords) {
        metadata.iptc = withKeyword(options.photo.empty() ? "--keyword" : options.photo, metadata.iptc, keyword);
    }
    return metadata;
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
            complain(
                "warning: " + options.image + ": " + std::to_string(limited) +
                " samples are beyond 65504, the largest half float, and were limited to it; --depth 32 keeps them");
        }
    } else if (depth == Depth::Float32 && picture.depth == Depth::Float16) {
        convertFromHalf(picture);
    }
    return picture;
}

// What of picture and photograph has no place in the file, in one line. The metadata of the picture is kept when it is
// the photograph, too.
void reportLosses(const Options& options, const Picture& picture, const std::vector<std::string>& unkept) {
    std::vector<std::string> losses = picture.dropped;
    if (options.profile.empty() && !options.profileFromPhoto && !canUse(picture.profile, picture)) {
        losses.push_back("ICC profile for " + colourSpaceOf(picture.profile));
    }
    if (!isSameFile(options.image, options.photo)) {
        losses.insert(losses.end(), picture.metadata.begin(), picture.metadata.end());
    }
    if (!losses.empty()) {
        complain(options.image + ": not copied to the result: " + joined(losses) +
                 (unkept.empty() ? "" : "; from " + options.photo + ": " + joined(unkept)));
    } else if (!unkept.empty()) {
        complain(options.photo + ": not copied to the result: " + joined(unkept));
    }
}

std::string writingProblem(int32_t result, const Picture& picture) {
    return explain(result, {{BUF2TIF_CANNOT_OPEN, systemReason()},
                            {BUF2TIF_HEADER_FAILED, systemReason()},
                            {BUF2TIF_PIXELS_FAILED, systemReason()},
                            {BUF2TIF_NO_PIXEL_MEMORY, "not enough memory"},
                            {BUF2TIF_BAD_ARGUMENTS, "expected an image of less than 2 GiB, found " +
                                                        std::to_string(picture.width) + " x " +
                                                        std::to_string(picture.height) + " pixels"},
                            {BUF2TIF_DIRECTORY_FAILED, systemReason()}});
}

void writePicture(const Options& options, const Metadata& metadata, const Picture& picture, OutputFile& output) {
    const Depth depth = depthOf(options, picture);
    const bool isReduced = depth != picture.depth;
    constexpr int32_t UsualResolution = 300;
    const TifImageInfo info = {
        .width = picture.width,
        .height = picture.height,
        .channels = picture.channels,
        .bitsCode = static_cast<int32_t>(depth),
        .resolution = options.resolution ? static_cast<int32_t>(*options.resolution)
                                         : picture.resolution.value_or(UsualResolution),
        .iccLength = librarySize(metadata.profile),
        .pixelMode = isReduced ? 1 : 0,
        .orientation = orientationOf(options, picture, metadata.camera),
    };
    // In samples if the library converts them, else in bytes.
    const int32_t rowPitch = checkedSize(isReduced ? rowBytes(picture) / 2 : rowBytes(picture));
    const int32_t packetLength = metadata.packet.empty() ? 0 : textSize(metadata.packet);
    const std::string path = output.libraryPath();
    errno = 0;
    const int32_t result =
        buf2tif(picture.samples.data(), &info, rowPitch, metadata.profile.data(), &metadata.camera, &metadata.gps,
                librarySize(metadata.iptc), metadata.iptc.data(), metadata.settings.method,
                metadata.settings.values.data(), packetLength, metadata.packet.c_str(), path.c_str());
    if (result < 0) {
        throw Failure(options.output, writingProblem(result, picture));
    }
}

void writeTiff(const Options& options) {
    if (options.orientation == "photo" && options.photo.empty()) {
        throw WrongCommandLine("--orientation photo requires --photo");
    }
    const Settings settings = settingsFrom(options.settings); // refuses wrong ones before the work
    Picture picture;
    std::vector<std::string> unkept;
    writeOutput({options.output, options.force}, {options.image, options.photo, options.profile},
                [&](OutputFile& output) {
                    picture = pictureFor(options);
                    const Metadata metadata = collectMetadata(options, settings, picture);
                    writePicture(options, metadata, picture, output);
                    unkept = metadata.unkept;
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
    constexpr double MaxResolution = 4294967; // stored in thousandths, in 32 bits
    const auto options = std::make_shared<Options>();
    Command command = {
        .name = "tiff",
        .purpose = "Save an image as TIFF with a photograph's metadata",
        .options =
            {
                {.names = {"IMAGE"},
                 .target = &options->image,
                 .help = "Picture in one of the formats below",
                 .isRequired = true},
                {.names = {"OUT"}, .target = &options->output, .help = "TIFF file to write", .isRequired = true},
                {.names = {"--photo"},
                 .target = &options->photo,
                 .help = "Copy metadata from this photograph: camera,\nexposure, GPS, IPTC, XMP",
                 .value = "PHOTO"},
                {.names = {"--keyword"},
                 .target = &options->keywords,
                 .help = "Add a keyword to the IPTC block; can be repeated",
                 .value = "TEXT",
                 .suggest = suggestNothing},
                {.names = {"--icc"},
                 .target = &options->profile,
                 .help = "ICC profile of the image, or a photograph or\npicture with it; else the image's own",
                 .value = "PROFILE"},
                {.names = {"--icc-from-photo"},
                 .target = &options->profileFromPhoto,
                 .help = "Use the ICC profile of the --photo photograph",
                 .needs = {"--photo"},
                 .excludes = {"--icc"}},
                {.names = {"--resolution"},
                 .target = &options->resolution,
                 .help = "Dots per inch; else that of a PNG or TIFF, or 300",
                 .value = "N",
                 .range = {1, MaxResolution}},
                {.names = {"--depth"},
                 .target = &options->depth,
                 .help = "8 or 16 for integers; 32 or 16f (half floats) for\nfloats; else that of the image",
                 .value = "DEPTH",
                 .choices = {"8", "16", "32", "16f"}},
                {.names = {"--orientation"},
                 .target = &options->orientation,
                 .help = "TIFF orientation code, or 'photo' for that of\n--photo; else the image's own, or 1 "
                         "(upright)",
                 .value = "CODE",
                 .choices = {"photo", "1", "2", "3", "4", "5", "6", "7", "8"}},
                {.names = {"--allow-damaged"},
                 .target = &options->allowDamage,
                 .help = "Save what is left of a damaged JPEG"},
            },
        .footer = "Pictures are " + pictureFormats() + " files.\n\n" + methodHelp() +
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
