// tvmeta tiff: a result image with the metadata of its source photograph.

#include "commands/commands.h"
#include "commands/icc.h"
#include "commands/settings_options.h"
#include "output/failure.h"
#include "output/output_file.h"
#include "output/text.h"
#include "photographs/iptc_block.h"
#include "photographs/photo.h"
#include "photographs/unkept_tags.h"
#include "photographs/writer_records.h"
#include "pictures/image.h"

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
    std::optional<int32_t> orientation;
    int32_t resolution = 300;
};

const std::map<std::string, Depth> DepthNames = {
    {"8", Depth::Integer8}, {"16", Depth::Integer16}, {"32", Depth::Float32}, {"16f", Depth::Float16}};

// The metadata of the file; without a photograph only settings and profile.
struct Metadata {
    WriterRecords records;
    Bytes iptc;
    Bytes profile;
    Settings settings;
    std::string packet;
    std::string unkept; // values of the photograph
};

// A damaged block of the photograph is omitted and the rest of its metadata is kept.
template <typename Block>
Block readOrLeaveOut(const Photo& photo, Block (*read)(const Photo& photo)) {
    try {
        return read(photo);
    } catch (const Failure& failure) {
        complain("warning: " + std::string(failure.what()) + "; omitted");
        return {};
    }
}

Metadata collectMetadata(const Options& options) {
    Metadata metadata;
    metadata.settings = settingsFrom(options.settings);
    if (!options.profile.empty() || options.profileFromPhoto) {
        metadata.profile = readRgbProfile(options.profileFromPhoto ? options.photo : options.profile);
    }
    if (!options.photo.empty()) {
        const Photo photo = readPhoto(options.photo);
        metadata.records = writerRecords(photo.info);
        metadata.unkept = unkeptValues(photo);
        metadata.iptc = readOrLeaveOut(photo, readIptcBlock);
        // The photograph's packet would take precedence over the settings of this run.
        if (metadata.settings.method == METHOD_NONE) {
            metadata.packet = readOrLeaveOut(photo, readPacket);
        }
    }
    for (const std::string& keyword : options.keywords) {
        metadata.iptc = withKeyword(options.photo.empty() ? "--keyword" : options.photo, metadata.iptc, keyword);
    }
    return metadata;
}

// The depth of the file (default: that of the picture).
Depth depthOf(const Options& options, const Image& image) {
    return options.depth.empty() ? image.depth : DepthNames.at(options.depth);
}

// Converts the picture to that depth, except from 16 to 8 bits, which the library does.
Image imageFor(const Options& options) {
    Image image = loadImage(options.image);
    const Depth depth = depthOf(options, image);
    if (depth == image.depth || (depth == Depth::Integer8 && image.depth == Depth::Integer16)) {
        return image;
    }
    if (depth == Depth::Integer16 && image.depth == Depth::Integer8) {
        return widened(image);
    }
    if (depth == Depth::Float16 && image.depth == Depth::Float32) {
        return halved(image);
    }
    throw Failure(options.image, image.depth == Depth::Float32
                                     ? "floating-point samples: expected a --depth of 32 or 16f, found " + options.depth
                                     : "integer samples: expected a --depth of 8 or 16, found " + options.depth);
}

std::string writingProblem(int32_t result, const Image& image) {
    return explain(result, {{-1, systemReason()},
                            {-2, systemReason()},
                            {-3, systemReason()},
                            {-4, "not enough memory"},
                            {-6, "expected an image of less than 2 GiB, found " + std::to_string(image.width) + " x " +
                                     std::to_string(image.height) + " pixels"},
                            {-12, systemReason()}});
}

void writePicture(const Options& options, const Metadata& metadata, const Image& image, OutputFile& output) {
    const Depth depth = depthOf(options, image);
    const bool isReduced = depth != image.depth;
    const TifImageInfo info = {
        .width = image.width,
        .height = image.height,
        .channels = image.channels,
        .bitsCode = static_cast<int32_t>(depth),
        .resolution = options.resolution,
        .iccLength = librarySize(metadata.profile),
        .pixelMode = isReduced ? 1 : 0,
        .orientation = options.orientation.value_or(metadata.records.metadata.orientation),
    };
    // In samples if the library converts them, else in bytes.
    const uint64_t samples = static_cast<uint64_t>(image.width) * static_cast<uint64_t>(image.channels);
    const int32_t rowPitch =
        checkedSize(isReduced ? samples : samples * static_cast<uint64_t>(bytesPerSample(image.depth)));
    const int32_t packetLength = metadata.packet.empty() ? 0 : textSize(metadata.packet);
    const std::string path = output.libraryPath();
    errno = 0;
    const int32_t result =
        buf2tif(image.samples.data(), &info, rowPitch, metadata.profile.data(), &metadata.records.metadata,
                &metadata.records.gps, librarySize(metadata.iptc), metadata.iptc.data(), metadata.settings.method,
                metadata.settings.values.data(), packetLength, metadata.packet.c_str(), path.c_str());
    if (result < 0) {
        throw Failure(options.output, writingProblem(result, image));
    }
}

void writeTiff(const Options& options) {
    Image image;
    std::string unkept;
    writeOutput(options.output, {options.image, options.photo, options.profile}, [&](OutputFile& output) {
        const Metadata metadata = collectMetadata(options);
        image = imageFor(options);
        writePicture(options, metadata, image, output);
        unkept = metadata.unkept;
    });
    if (!unkept.empty()) {
        complain(options.photo + ": not copied to the result: " + unkept);
    }
    messagesFor(options.output) << "wrote " << printable(options.output) << ": " << image.width << " x " << image.height
                                << " pixels\n";
}

} // namespace

void addTiffCommand(CLI::App& app) {
    CLI::App* command = app.add_subcommand("tiff", "Save an image as TIFF with a photograph's metadata");
    const auto options = std::make_shared<Options>();
    command->add_option("IMAGE", options->image, "PNG, binary PGM or PPM, Radiance HDR or OpenEXR")->required();
    command->add_option("OUT", options->output, "TIFF file to write")->required();
    command
        ->add_option("--photo", options->photo, "Copy metadata from this photograph: camera,\nexposure, GPS, IPTC, XMP")
        ->option_text("PHOTO");
    command->add_option("--keyword", options->keywords, "Add a keyword to the IPTC block; can be repeated")
        ->option_text("TEXT")
        ->allow_extra_args(false);
    addSettingsOptions(*command, options->settings, false);
    command->add_option("--icc", options->profile, "ICC profile, or photograph that contains it")
        ->option_text("PROFILE");
    command->add_flag("--icc-from-photo", options->profileFromPhoto, "Use the ICC profile of the --photo photograph")
        ->option_text(" ") // else it shows the option that it needs
        ->needs("--photo")
        ->excludes("--icc");
    command->add_option("--resolution", options->resolution, "Dots per inch (default 300)")
        ->check(CLI::Range(1, 4294967)) // stored in thousandths, in 32 bits
        ->option_text("N");
    command
        ->add_option("--depth", options->depth, "8 or 16 for PNG, PGM, PPM; 32 or 16f (half floats)\nfor HDR, OpenEXR")
        ->check(CLI::IsMember(DepthNames))
        ->option_text("DEPTH");
    command->add_option("--orientation", options->orientation, "TIFF orientation code (default: the photograph's)")
        ->check(CLI::Range(1, 8))
        ->option_text("1-8");
    command->footer(methodHelp() + "Examples:\n"
                                   "  tvmeta tiff result.png result.tif --photo scene.jpg --icc-from-photo\n"
                                   "  tvmeta tiff light.exr light.tif --photo scene.jpg --depth 16f\n"
                                   "  tvmeta tiff result.png result.tif --method Fusion/Intensive --set Radius=70");
    command->callback([options] { writeTiff(*options); });
}
