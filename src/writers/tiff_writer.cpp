// Saves a result as a TIFF file. Nothing is aligned, and nothing follows the directory block.
#include "settings/packet_parser.h"
#include "settings/packet_writer.h"
#include "support/file.h"
#include "support/zeroed_buffer.h"
#include "tvmeta.h"
#include "writers/directory_builder.h"
#include "writers/exif_directories.h"
#include "writers/pixel_writer.h"
#include "writers/tiff_file.h"

#include <cstddef>
#include <cstdint>
#include <utility>

using namespace tvmeta;

namespace {

constexpr std::size_t MaxSamples = 3;

// The contents of the image directory besides the pixels.
struct Contents {
    const TifImageInfo& info;
    const MetadataBuf& metadata;
    std::size_t makeCount;
    std::size_t modelCount;
    std::span<const unsigned char> icc;
    std::span<const unsigned char> xmp;
    std::span<const unsigned char> iptc;
};

// False for a profile whose header names another colour space. A profile too short for that is accepted.
bool isForRgb(std::span<const unsigned char> profile) {
    constexpr std::size_t ColorSpaceOffset = 16; // ICC.1, profile header
    return profile.size() <= ColorSpaceOffset + 4 || asText(profile.subspan(ColorSpaceOffset, 3)) == "RGB";
}

// Fields are added in the order of their values in the file.
DirectoryBuilder imageDirectory(const PixelLayout& layout, const Contents& contents) {
    DirectoryBuilder directory;
    addPixelFields(directory, layout, {});
    directory.addText(tiff_tag::Make, makeOf(textOf(contents.metadata.model)), contents.makeCount);
    directory.addText(tiff_tag::Model, contents.metadata.model, contents.modelCount);
    directory.addShort(tiff_tag::Orientation, writtenOrientation(contents.info.orientation));
    addResolution(directory, contents.info.resolution);
    if (layout.isFloat) {
        directory.addText(tiff_tag::Software, FloatSoftware, FloatSoftware.size() + 1);
        directory.addShorts(tiff_tag::SampleFormat, MaxSamples, IeeeFloat);
    }
    addBlocks(directory, contents.icc, contents.xmp, contents.iptc);
    return directory;
}

// The packet to be stored: the caller's, one that was made, or none.
struct XmpPacket {
    ZeroedBuffer made;
    std::span<const unsigned char> bytes;
};

// The last byte of the caller's packet should be a terminator. It is not stored, and settings are found only if it is
// zero. The exception: without a method, a packet that ends with another byte is stored whole.
Result<XmpPacket> chooseXmp(std::span<const unsigned char> packet, PacketRequest request) {
    if (!packet.empty()) {
        const auto start = packet.first(packet.size() - 1);
        const bool isTerminated = packet.back() == '\0';
        if (request.method <= METHOD_NONE || (isTerminated && hasSettings(asText(start)))) {
            return XmpPacket{{}, isTerminated || request.method != METHOD_NONE ? start : packet};
        }
    }
    if (request.method <= METHOD_NONE && !request.lens) {
        return XmpPacket{};
    }
    ZeroedBuffer made(writePacket(request, nullptr) + 1); // a space ends a packet that was made
    if (!made) {
        return Failure{BUF2TIF_NO_MEMORY};
    }
    made.bytes()[writePacket(request, made.text())] = ' ';
    const std::span<const unsigned char> bytes = made.bytes();
    return XmpPacket{std::move(made), bytes};
}

// Bytes at the interface. Empty for a negative length, and for a null pointer with a length above 0.
std::optional<std::span<const unsigned char>> bytesAt(const unsigned char* bytes, std::int32_t length) {
    if (length < 0 || (length > 0 && bytes == nullptr)) {
        return std::nullopt;
    }
    return std::span(bytes, static_cast<std::size_t>(length));
}

} // namespace

std::int32_t buf2tif(const void* pixels, const TifImageInfo* info, std::int32_t rowPitch, const unsigned char* icc,
                     const MetadataBuf* metadata, const GpsBuf* gps, std::int32_t iptcLength, const unsigned char* iptc,
                     std::int32_t method, const float* settings, std::int32_t xmpLength, const char* xmp,
                     const char* path) noexcept {
    PacketRequest request = packetRequest(method, settings);
    if (info == nullptr || metadata == nullptr || gps == nullptr || path == nullptr ||
        (info->height > 0 && pixels == nullptr) || !hasNeededSettings(request)) {
        return BUF2TIF_BAD_ARGUMENTS;
    }
    const std::optional<PixelLayout> layout = pixelLayout(*info);
    const auto profile = bytesAt(icc, info->iccLength);
    const auto iptcBlock = bytesAt(iptc, iptcLength);
    const auto callersPacket = bytesAt(reinterpret_cast<const unsigned char*>(xmp), xmpLength);
    if (!layout || !profile || !iptcBlock || !callersPacket) {
        return BUF2TIF_BAD_ARGUMENTS;
    }
    const TextCounts counts = countTexts(*metadata, *gps);
    if (counts.lens > 0) {
        request.lens = textOf(metadata->lens).substr(0, counts.lens);
    }
    const Result<XmpPacket> packet = chooseXmp(*callersPacket, request);
    if (!packet) {
        return packet.code();
    }
    DirectoryBuilder exif = exifDirectory(*metadata, counts.date);
    DirectoryBuilder place = gpsDirectory(*gps, counts.gpsDate);
    const auto rgbProfile = isForRgb(*profile) ? *profile : std::span<const unsigned char>();
    DirectoryBuilder directory =
        imageDirectory(*layout, {*info, *metadata, counts.make, counts.model, rgbProfile, packet->bytes, *iptcBlock});
    directory.addDirectory(tiff_tag::ExifIfd, exif);
    directory.addDirectory(tiff_tag::GpsIfd, place);
    if (directory.size() > MaxImageData - layout->dataSize()) {
        return BUF2TIF_BAD_ARGUMENTS;
    }
    const std::ptrdiff_t pitch = std::ptrdiff_t{rowPitch} * (layout->takesHighBytes ? 2 : 1); // from samples
    const Result<std::int32_t> rows =
        writeTiffFile(path, PixelWriter(pixels, pitch, *layout), layout->dataSize(), directory, {});
    if (rows) {
        return *rows;
    }
    const std::int32_t code = rows.code() == NoDirectoryMemory ? std::int32_t{BUF2TIF_NO_MEMORY} : rows.code();
    if (code == BUF2TIF_CANNOT_OPEN) {
        printMessage("Could not open for writing file:  ", path);
    }
    return code;
}
