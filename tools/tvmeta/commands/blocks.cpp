// tvmeta exif and tvmeta iptc: metadata blocks as other file formats embed them.

#include "base/failure.h"
#include "base/text.h"
#include "commands/commands.h"
#include "commands/completion.h"
#include "output/output_file.h"
#include "photographs/iptc_block.h"
#include "photographs/photo.h"

#include <functional>
#include <iomanip>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace {

// The counts and sizes that get_exif_count returns.
struct ExifCounts {
    int32_t exifCount, exifBytes, gpsCount, gpsBytes, modelCount, makeCount, dateCount, gpsDateCount, lensCount;
    char make[64];
};

struct WriterRecords {
    MetadataBuf metadata;
    GpsBuf gps;
};

ExifCounts countsOf(const WriterRecords& records) {
    ExifCounts c = {};
    get_exif_count(&records.metadata, &c.exifCount, &c.exifBytes, &records.gps, &c.gpsCount, &c.gpsBytes, &c.modelCount,
                   &c.makeCount, &c.dateCount, &c.gpsDateCount, &c.lensCount, c.make);
    return c;
}

// TIFF 6.0: a directory is a count, 12 bytes for each entry and the offset of the next directory; values that do not
// fit the four bytes of an entry follow.
int32_t directorySize(int32_t entries, int32_t valueBytes) {
    return entries > 0 ? 2 + 12 * entries + 4 + valueBytes : 0;
}

int32_t blockSize(const ExifCounts& c) {
    constexpr int32_t HeaderSize = 8;
    int32_t entries = 1; // the orientation
    for (const int32_t count : {c.makeCount, c.modelCount, c.exifCount, c.gpsCount}) {
        entries += count > 0 ? 1 : 0;
    }
    int32_t texts = 0;
    for (const int32_t count : {c.makeCount, c.modelCount}) {
        texts += count > 4 ? count : 0;
    }
    return HeaderSize + directorySize(entries, texts) + directorySize(c.exifCount, c.exifBytes) +
           directorySize(c.gpsCount, c.gpsBytes);
}

Bytes exifBlock(const std::string& path) {
    const Photo photo = readPhoto(path);
    WriterRecords records;
    tvmeta_writer_records(&photo.record, &records.metadata, &records.gps);
    const ExifCounts c = countsOf(records);
    Bytes block(static_cast<size_t>(blockSize(c)));
    const int32_t result = write_exif_buf(c.exifCount, c.exifBytes, c.gpsCount, c.gpsBytes, c.modelCount, c.makeCount,
                                          c.dateCount, c.gpsDateCount, records.metadata.orientation, &records.metadata,
                                          &records.gps, c.make, block.data());
    if (result < 0) {
        throw Failure(path, explain(result, {{WRITE_EXIF_NOTHING, "no camera, exposure or position to write"}}));
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

void listDatasets(std::string_view block) {
    while (const std::optional<IptcDataset> dataset = takeDataset(block)) {
        std::cout << dataset->record << ":" << std::setfill('0') << std::setw(2) << dataset->number << "  "
                  << printable(dataset->value) << "\n";
    }
    // Blocks are padded with zeros.
    if (block.find_first_not_of('\0') != std::string_view::npos) {
        std::cout << "and " << block.size() << " bytes that are not standard datasets\n";
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

Bytes iptcBlock(const IptcOptions& options) {
    Bytes block = photographBlock(options.photo);
    for (const std::string& keyword : options.keywords) {
        block = withKeyword(options.photo, block, keyword);
    }
    if (block.empty()) {
        throw Failure(options.photo, "no IPTC block");
    }
    return block;
}

void runIptc(const IptcOptions& options) {
    if (options.output.path.empty()) {
        listDatasets(asText(iptcBlock(options)));
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
        .purpose = "Write camera, exposure and position as EXIF block",
        .options =
            {
                {.names = {"PHOTO"}, .target = photo.get(), .help = "Photograph", .isRequired = true},
                {.names = {"-o", "--output"},
                 .target = &output->path,
                 .help = "File to write: the TIFF structure of a JPEG EXIF\nsegment",
                 .value = "FILE",
                 .isRequired = true},
                forceOption(output->force),
            },
        .footer = "Example:\n"
                  "  tvmeta exif scene.jpg -o block",
        .run = [photo, output] { writeBlock(*photo, *output, [&] { return exifBlock(*photo); }); },
    };
}

Command iptcCommand() {
    const auto options = std::make_shared<IptcOptions>();
    return {
        .name = "iptc",
        .purpose = "List or write the IPTC block of a photograph",
        .options =
            {
                {.names = {"PHOTO"}, .target = &options->photo, .help = "Photograph", .isRequired = true},
                {.names = {"-o", "--output"},
                 .target = &options->output.path,
                 .help = "Write the block to this file instead of listing it",
                 .value = "FILE"},
                {.names = {"--add-keyword"},
                 .target = &options->keywords,
                 .help = "Add a keyword to the block; can be repeated",
                 .value = "TEXT",
                 .suggest = suggestNothing},
                forceOption(options->output.force),
            },
        .footer = "Examples:\n"
                  "  tvmeta iptc scene.jpg\n"
                  "  tvmeta iptc scene.jpg --add-keyword sun --add-keyword evening -o block",
        .run = [options] { runIptc(*options); },
    };
}
