// tvmeta exif and tvmeta iptc: metadata blocks as other file formats embed them.

#include "base/failure.h"
#include "base/text.h"
#include "base/words.h"
#include "commands/command_line.h"
#include "commands/completion.h"
#include "commands/result_file.h"
#include "output/output_file.h"
#include "photographs/photo.h"

#include <algorithm>
#include <functional>
#include <iomanip>
#include <iostream>
#include <iterator>
#include <memory>
#include <new>
#include <string>
#include <vector>

namespace {

// The directories of a photograph. Throws Failure if it has no camera, exposure or position.
Bytes exifBlockOf(const std::string& path) {
    const OpenPhoto file(path);
    const Photo photo = readNamed(file);
    const std::vector<tvmeta_Tag> tags = tagsOf(file.source());
    constexpr int32_t Camera[] = {TVMETA_EXIF_DIRECTORY, TVMETA_GPS_DIRECTORY};
    const bool hasCamera =
        photo.has(TVMETA_MAKE) || photo.has(TVMETA_MODEL) || std::ranges::any_of(tags, [&](const tvmeta_Tag& tag) {
            return std::ranges::find(Camera, tag.directory) != std::end(Camera);
        });
    if (!hasCamera) {
        throw Failure(path, "no camera, exposure or position to write");
    }
    tvmeta_Result result = {};
    result.recordSize = sizeof result;
    result.channels = 3;
    result.orientation = photo.record.orientation;
    result.photo = &file.source();
    std::vector<tvmeta_Loss> losses;
    Bytes block = exifBlock(result, path, losses);
    if (!losses.empty()) {
        complain(path + ": not copied to the block: " + joined(lossWords(losses)));
    }
    return block;
}

void writeBlock(const std::string& photo, const Output& file, const std::function<Bytes()>& makeBlock) {
    size_t size = 0;
    writeOutput(file, {photo}, [&](OutputFile& output) {
        const Bytes block = makeBlock();
        size = block.size();
        output.write(asText(block));
    });
    messagesFor(file.path) << "wrote " << printable(file.path) << ": " << size << " bytes\n";
}

void listDatasets(const Bytes& block) {
    std::vector<tvmeta_Dataset> datasets(
        static_cast<size_t>(tvmeta_list_datasets(block.data(), std::ssize(block), nullptr, 0)));
    tvmeta_list_datasets(block.data(), std::ssize(block), datasets.data(), std::ssize(datasets));
    size_t end = 0;
    for (const tvmeta_Dataset& dataset : datasets) {
        const auto position = static_cast<size_t>(dataset.position);
        end = position + static_cast<size_t>(dataset.size);
        std::cout << dataset.record << ":" << std::setfill('0') << std::setw(2) << dataset.number << "  "
                  << printable(asText(block).substr(position, end - position)) << "\n";
    }
    // Blocks are padded with zeros.
    if (asText(block).find_first_not_of('\0', end) != std::string_view::npos) {
        std::cout << "and " << block.size() - end << " bytes that are not standard datasets\n";
    }
}

// The IPTC block of a photograph; empty if there is none.
Bytes photographBlock(const std::string& path) {
    constexpr unsigned char DatasetMarker = 0x1C;
    const OpenPhoto file(path);
    file.read(); // throws if it is none
    Bytes block = file.block(TVMETA_IPTC);
    if (!block.empty() && block.front() != DatasetMarker) {
        throw Failure(path, "expected a dataset at the start of the IPTC block: " + beginning(block));
    }
    return block;
}

struct IptcOptions {
    std::string photo;
    Output output;
    std::vector<std::string> keywords;
};

Bytes withKeywords(const std::string& path, const Bytes& block, const std::vector<std::string>& keywords) {
    const std::vector<const char*> texts = keywordTexts(keywords);
    int64_t leftOut = 0;
    const auto add = [&](unsigned char* buffer, int64_t capacity) {
        return tvmeta_add_keywords(block.data(), std::ssize(block), texts.data(), std::ssize(texts), buffer, capacity,
                                   &leftOut);
    };
    const int64_t size = add(nullptr, 0);
    if (size < 0) {
        throw std::bad_alloc();
    }
    if (leftOut > 0) {
        throw Failure(path, "the IPTC block contains texts in an encoding other than UTF-8, so only keywords in "
                            "ASCII can be added");
    }
    Bytes longer(static_cast<size_t>(size));
    add(longer.data(), size);
    return longer;
}

Bytes iptcBlock(const IptcOptions& options) {
    const Bytes block = withKeywords(options.photo, photographBlock(options.photo), options.keywords);
    if (block.empty()) {
        throw Failure(options.photo, "no IPTC block");
    }
    return block;
}

void runIptc(const IptcOptions& options) {
    if (options.output.path.empty()) {
        listDatasets(iptcBlock(options));
    } else {
        writeBlock(options.photo, options.output, [&] { return iptcBlock(options); });
    }
}

} // namespace

Command exifCommand() {
    const auto photo = std::make_shared<std::string>();
    const auto output = std::make_shared<Output>();
    return {
        .name = "exif",
        .purpose = "Write the EXIF data of a photograph as a block",
        .options =
            {
                Option({"PHOTO"}, photo.get(), "", "Photograph", {.isRequired = true}),
                Option({"-o", "--output"}, &output->path, "FILE",
                       "File to write: the TIFF structure of a JPEG EXIF\nsegment", {.isRequired = true}),
                forceOption(output->force),
            },
        .footer = "Example:\n"
                  "  tvmeta exif scene.jpg -o block",
        .run = [photo, output] { writeBlock(*photo, *output, [&] { return exifBlockOf(*photo); }); },
    };
}

Command iptcCommand() {
    const auto options = std::make_shared<IptcOptions>();
    return {
        .name = "iptc",
        .purpose = "List or write the IPTC block of a photograph",
        .options =
            {
                Option({"PHOTO"}, &options->photo, "", "Photograph", {.isRequired = true}),
                Option({"-o", "--output"}, &options->output.path, "FILE",
                       "Write the block to this file instead of listing it"),
                Option({"--add-keyword"}, &options->keywords, "TEXT", "Add a keyword to the block; can be repeated",
                       {.suggest = suggestNothing}),
                forceOption(options->output.force),
            },
        .footer = "Examples:\n"
                  "  tvmeta iptc scene.jpg\n"
                  "  tvmeta iptc scene.jpg --add-keyword sun --add-keyword evening -o block",
        .run = [options] { runIptc(*options); },
    };
}
