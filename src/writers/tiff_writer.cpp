// Saves a result: an uncompressed little-endian TIFF file (TIFF 6.0) of header, one strip of pixels, and a directory
// block with everything else. Nothing is aligned, and nothing follows the directory block.
#include "settings/packet_writer.h"
#include "support/file.h"
#include "support/message.h"
#include "support/zeroed_buffer.h"
#include "tvmeta.h"
#include "writers/directory_builder.h"
#include "writers/exif_directories.h"
#include "writers/pixel_writer.h"
#include "writers/tiff_image.h"
#include "writers/xmp_choice.h"

#include <cstdint>
#include <string_view>

using namespace tvmeta;

namespace {

constexpr std::uint16_t NoCompression = 1;
constexpr std::uint16_t BlackIsZero = 1;
constexpr std::uint16_t Rgb = 2;
constexpr std::uint16_t Interleaved = 1;
constexpr std::uint16_t Inch = 2;
constexpr std::uint16_t IeeeFloat = 3;
constexpr std::size_t MaxSamples = 3;
constexpr std::span<const unsigned char> NoBytes;
constexpr std::string_view FloatSoftware = "Tonalvista 32-bit Float Output";

// The contents of the file besides its pixels.
struct Metadata {
    const TifImageInfo& info;
    const MetadataBuf& camera;
    TextCounts counts;
    std::span<const unsigned char> icc;
    std::span<const unsigned char> xmp;
    std::span<const unsigned char> iptc;
    const DirectoryBuilder& exif;
    const DirectoryBuilder& gps;
};

// False for a profile whose header names another colour space. A profile too short for that is accepted.
bool isForRgb(std::span<const unsigned char> profile) {
    constexpr std::size_t ColorSpaceOffset = 16; // ICC.1, profile header
    return profile.size() <= ColorSpaceOffset + 4 ||
           (profile[ColorSpaceOffset] == 'R' && profile[ColorSpaceOffset + 1] == 'G' &&
            profile[ColorSpaceOffset + 2] == 'B');
}

void addPixelFields(DirectoryBuilder& directory, const TiffImage& image) {
    const auto height = static_cast<std::uint32_t>(image.height);
    directory.addShortOrLong(tiff_tag::ImageWidth, static_cast<std::uint32_t>(image.width));
    directory.addShortOrLong(tiff_tag::ImageLength, height);
    directory.addShorts(tiff_tag::BitsPerSample, image.samples, static_cast<std::uint16_t>(image.sampleBytes * 8));
    directory.addShort(tiff_tag::Compression, NoCompression);
    directory.addShort(tiff_tag::PhotometricInterpretation, image.samples == 1 ? BlackIsZero : Rgb);
    directory.addLong(tiff_tag::StripOffsets, TiffHeaderSize);
    directory.addShort(tiff_tag::SamplesPerPixel, static_cast<std::uint16_t>(image.samples));
    directory.addShortOrLong(tiff_tag::RowsPerStrip, height);
    directory.addLong(tiff_tag::StripByteCounts, static_cast<std::uint32_t>(image.dataSize()));
    directory.addShort(tiff_tag::PlanarConfiguration, Interleaved);
}

void addResolution(DirectoryBuilder& directory, std::int32_t dotsPerInch) {
    constexpr std::int32_t Thousand = 1000;
    const auto scaled = static_cast<std::int32_t>(static_cast<std::uint32_t>(dotsPerInch) * std::uint32_t{Thousand});
    const std::int32_t resolution[] = {scaled, Thousand};
    directory.addRationals(tiff_tag::XResolution, resolution);
    directory.addRationals(tiff_tag::YResolution, resolution);
    directory.addShort(tiff_tag::ResolutionUnit, Inch);
}

void addIptc(DirectoryBuilder& directory, std::span<const unsigned char> iptc) {
    const std::size_t longs = iptc.size() / 4 + (iptc.size() % 4 != 0 ? 1 : 0);
    directory.addBytes(tiff_tag::Iptc, tiff_type::Long, longs, iptc, 4 * longs);
}

// Fields are added in the order of their values in the file.
DirectoryBuilder imageDirectory(const TiffImage& image, const Metadata& metadata) {
    DirectoryBuilder directory;
    addPixelFields(directory, image);
    if (metadata.counts.make > 0) {
        directory.addText(tiff_tag::Make, makeOf(textOf(metadata.camera.model)), metadata.counts.make);
    }
    if (metadata.counts.model > 0) {
        directory.addText(tiff_tag::Model, metadata.camera.model, metadata.counts.model);
    }
    directory.addShort(tiff_tag::Orientation, writtenOrientation(metadata.info.orientation));
    addResolution(directory, metadata.info.resolution);
    if (image.isFloat) {
        directory.addText(tiff_tag::Software, FloatSoftware, FloatSoftware.size() + 1);
        directory.addShorts(tiff_tag::SampleFormat, MaxSamples, IeeeFloat);
    }
    if (!metadata.icc.empty()) {
        directory.addBytes(tiff_tag::IccProfile, tiff_type::Undefined, metadata.icc.size(), metadata.icc,
                           metadata.icc.size());
    }
    if (!metadata.xmp.empty()) {
        directory.addBytes(tiff_tag::Xmp, tiff_type::Byte, metadata.xmp.size(), metadata.xmp, metadata.xmp.size());
    }
    if (!metadata.iptc.empty()) {
        addIptc(directory, metadata.iptc);
    }
    if (metadata.exif.entries() > 0) {
        directory.addDirectory(tiff_tag::ExifIfd, metadata.exif);
    }
    if (metadata.gps.entries() > 0) {
        directory.addDirectory(tiff_tag::GpsIfd, metadata.gps);
    }
    return directory;
}

// Writes the planned file. All memory is allocated before the file is opened, which empties it. The stream is
// unbuffered, so a write that fails is the one that found no room.
std::int32_t writeFile(const char* path, const PixelWriter& pixels, std::size_t directoryOffset,
                       const DirectoryBuilder& directory) {
    ZeroedBuffer pixelBlock(pixels.blockSize());
    if (!pixelBlock) {
        return BUF2TIF_NO_PIXEL_MEMORY;
    }
    ZeroedBuffer directoryBlock(directory.size());
    if (!directoryBlock) {
        return BUF2TIF_NO_MEMORY;
    }
    directory.write(directoryBlock.bytes(), directoryOffset);
    unsigned char header[TiffHeaderSize];
    writeTiffHeader(header, directoryOffset);
    File file = openUnbuffered(path, "wb");
    if (!file) {
        printMessage("Could not open for writing file:  ", path);
        return BUF2TIF_CANNOT_OPEN;
    }
    if (std::fwrite(header, sizeof header, 1, file.get()) != 1) {
        return BUF2TIF_HEADER_FAILED;
    }
    const Result<std::int32_t> rows = pixels.write(file.get(), pixelBlock.bytes());
    if (!rows) {
        return rows.code();
    }
    const bool isWritten = std::fwrite(directoryBlock.data(), directoryBlock.size(), 1, file.get()) == 1;
    return closeWritten(file) && isWritten ? *rows : BUF2TIF_DIRECTORY_FAILED;
}

// Bytes at the interface. Empty for a negative length, and for a null pointer with a length above 0.
template <typename Byte>
std::optional<std::span<const Byte>> bytesAt(const Byte* bytes, std::int32_t length) {
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
    if (info == nullptr || metadata == nullptr || gps == nullptr || path == nullptr ||
        (info->height > 0 && pixels == nullptr) || !hasNeededSettings(packetRequest(method, settings))) {
        return BUF2TIF_BAD_ARGUMENTS;
    }
    const std::optional<TiffImage> image = TiffImage::from(*info);
    if (!image) {
        return BUF2TIF_BAD_ARGUMENTS;
    }
    const auto profile = bytesAt(icc, info->iccLength);
    const auto iptcBlock = bytesAt(iptc, iptcLength);
    const auto callersPacket = bytesAt(xmp, xmpLength);
    if (!profile || !iptcBlock || !callersPacket) {
        return BUF2TIF_BAD_ARGUMENTS;
    }
    const TextCounts counts = countTexts(*metadata, *gps);
    const std::string_view packetText(callersPacket->data(), callersPacket->size());
    const std::optional<XmpPacket> packet = chooseXmp(packetText, method, settings, *metadata, counts.lens);
    if (!packet) {
        return BUF2TIF_NO_MEMORY;
    }
    const DirectoryBuilder exif = exifDirectory(*metadata, counts.date);
    const DirectoryBuilder position = gpsDirectory(*gps, counts.gpsDate);
    const DirectoryBuilder directory = imageDirectory(*image, {
                                                                  .info = *info,
                                                                  .camera = *metadata,
                                                                  .counts = counts,
                                                                  .icc = isForRgb(*profile) ? *profile : NoBytes,
                                                                  .xmp = packet->bytes,
                                                                  .iptc = *iptcBlock,
                                                                  .exif = exif,
                                                                  .gps = position,
                                                              });
    if (directory.size() > MaxImageData - image->dataSize()) {
        return BUF2TIF_BAD_ARGUMENTS;
    }
    return writeFile(path, PixelWriter(pixels, rowPitch, *image), TiffHeaderSize + image->dataSize(), directory);
}
