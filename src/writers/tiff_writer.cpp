// Saves a result: an uncompressed little-endian TIFF file (TIFF 6.0) of header, one strip of pixels, and the directory
// block with everything else. There is no alignment and nothing behind the directory block.
#include "settings/methods.h"
#include "support/file.h"
#include "support/message.h"
#include "support/zeroed_buffer.h"
#include "tvmeta.h"
#include "writers/exif_directories.h"
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
constexpr std::size_t MostSamples = 3;
constexpr std::string_view FloatSoftware = "Tonalvista 32-bit Float Output";

// What the file carries beside its pixels, and the record that describes them.
struct Metadata {
    const TifImageInfo& info;
    const MetadataBuf& camera;
    TextCounts counts;
    std::span<const unsigned char> icc;
    std::span<const unsigned char> xmp;
    std::span<const unsigned char> iptc;
    const Directory& exif;
    const Directory& gps;
};

// A profile whose header names a colour space other than RGB is left out; one too short to tell is not.
bool isForRgb(std::span<const unsigned char> profile) noexcept {
    constexpr std::size_t ColorSpaceOffset = 16; // ICC.1, profile header
    return profile.size() <= ColorSpaceOffset + 4 ||
           (profile[ColorSpaceOffset] == 'R' && profile[ColorSpaceOffset + 1] == 'G' &&
            profile[ColorSpaceOffset + 2] == 'B');
}

void addPixelFields(Directory& directory, const TiffImage& image) noexcept {
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

void addResolution(Directory& directory, std::int32_t dotsPerInch) noexcept {
    constexpr std::int32_t Thousand = 1000;
    const auto scaled = static_cast<std::int32_t>(static_cast<std::uint32_t>(dotsPerInch) * std::uint32_t{Thousand});
    const std::int32_t resolution[] = {scaled, Thousand};
    directory.addRationals(tiff_tag::XResolution, resolution);
    directory.addRationals(tiff_tag::YResolution, resolution);
    directory.addShort(tiff_tag::ResolutionUnit, Inch);
}

void addIptc(Directory& directory, std::span<const unsigned char> iptc) noexcept {
    const std::size_t longs = iptc.size() / 4 + (iptc.size() % 4 != 0 ? 1 : 0);
    directory.addBytes(tiff_tag::Iptc, tiff_type::Long, longs, iptc, 4 * longs);
}

// The order is that of the values in the file.
Directory imageDirectory(const TiffImage& image, const Metadata& metadata) noexcept {
    Directory directory;
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
        directory.addShorts(tiff_tag::SampleFormat, MostSamples, IeeeFloat);
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

// Writes the planned file. The stream is unbuffered: what fails is what could not be written.
std::int32_t writeFile(const char* path, const void* pixels, std::int32_t rowPitch, const TiffImage& image,
                       const Directory& directory) noexcept {
    File file = openUnbuffered(path, "wb");
    if (!file) {
        printMessage("Could not open for writing file:  ", path);
        return write_result::CannotOpen;
    }
    const std::size_t directoryOffset = TiffHeaderSize + image.dataSize();
    unsigned char header[TiffHeaderSize];
    writeTiffHeader(header, directoryOffset);
    if (std::fwrite(header, sizeof header, 1, file.get()) != 1) {
        return write_result::HeaderFailed;
    }
    const std::int32_t rows = writePixels(file.get(), pixels, rowPitch, image);
    if (rows < 0) {
        return rows;
    }
    ZeroedBuffer block(directory.size());
    if (!block) {
        return write_result::NoMemory;
    }
    directory.write(block.bytes(), directoryOffset);
    if (std::fwrite(block.data(), block.size(), 1, file.get()) != 1 || !closeWritten(file)) {
        return write_result::DirectoryFailed;
    }
    return rows;
}

// Bytes of the interface: a length, and a pointer that may be null only if the length is 0.
template <typename Byte>
std::optional<std::span<const Byte>> announced(const Byte* bytes, std::int32_t length) noexcept {
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
        (info->height > 0 && pixels == nullptr) || (isMethodCode(method) && settings == nullptr)) {
        return write_result::BadArguments;
    }
    const std::optional<TiffImage> image = TiffImage::from(*info);
    if (!image) {
        return write_result::BadArguments;
    }
    const auto profile = announced(icc, info->iccLength);
    const auto iptcBlock = announced(iptc, iptcLength);
    const auto callersPacket = announced(xmp, xmpLength);
    if (!profile || !iptcBlock || !callersPacket) {
        return write_result::BadArguments;
    }
    const TextCounts counts = countTexts(*metadata, *gps);
    const std::string_view packetText(callersPacket->data(), callersPacket->size());
    const std::optional<XmpPacket> packet = chooseXmp(packetText, method, settings, *metadata, counts.lens);
    if (!packet) {
        return write_result::NoMemory;
    }
    const Directory exif = exifDirectory(*metadata, counts.date);
    const Directory position = gpsDirectory(*gps, counts.gpsDate);
    const std::span<const unsigned char> written = isForRgb(*profile) ? *profile : std::span<const unsigned char>();
    const Directory directory =
        imageDirectory(*image, {*info, *metadata, counts, written, packet->bytes, *iptcBlock, exif, position});
    if (directory.size() > MaxImageData - image->dataSize()) {
        return write_result::BadArguments;
    }
    return writeFile(path, pixels, rowPitch, *image, directory);
}
