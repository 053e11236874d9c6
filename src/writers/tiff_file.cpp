#include "writers/tiff_file.h"

#include "support/file.h"
#include "support/zeroed_buffer.h"
#include "tvmeta.h"

namespace tvmeta {

namespace {

constexpr std::uint16_t NoCompression = 1;
constexpr std::uint16_t BlackIsZero = 1;
constexpr std::uint16_t Rgb = 2;
constexpr std::uint16_t Interleaved = 1;
constexpr std::uint16_t Inch = 2;

} // namespace

void addPixelFields(DirectoryBuilder& directory, const PixelLayout& layout, DirectoryForm form) {
    const auto height = static_cast<std::uint32_t>(layout.height);
    directory.addShortOrLong(tiff_tag::ImageWidth, static_cast<std::uint32_t>(layout.width));
    directory.addShortOrLong(tiff_tag::ImageLength, height);
    directory.addShorts(tiff_tag::BitsPerSample, layout.samples, static_cast<std::uint16_t>(layout.sampleBytes * 8));
    directory.addShort(tiff_tag::Compression, NoCompression);
    directory.addShort(tiff_tag::PhotometricInterpretation, layout.samples == 1 ? BlackIsZero : Rgb);
    directory.addOffset(tiff_tag::StripOffsets, form.headerSize());
    directory.addShort(tiff_tag::SamplesPerPixel, static_cast<std::uint16_t>(layout.samples));
    directory.addShortOrLong(tiff_tag::RowsPerStrip, height);
    directory.addOffset(tiff_tag::StripByteCounts, layout.dataSize());
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

void addBlocks(DirectoryBuilder& directory, std::span<const unsigned char> icc, std::span<const unsigned char> xmp,
               std::span<const unsigned char> iptc) {
    directory.addBlock(tiff_tag::IccProfile, tiff_type::Undefined, icc);
    directory.addBlock(tiff_tag::Xmp, tiff_type::Byte, xmp);
    if (!iptc.empty()) {
        const std::size_t longs = iptc.size() / 4 + (iptc.size() % 4 != 0 ? 1 : 0);
        directory.addBytes(tiff_tag::Iptc, tiff_type::Long, longs, iptc, 4 * longs);
    }
}

Result<std::int32_t> writeTiffFile(const char* path, const PixelWriter& pixels, std::size_t dataSize,
                                   DirectoryBuilder& directory, DirectoryForm form) {
    ZeroedBuffer pixelBlock(pixels.blockSize());
    if (!pixelBlock) {
        return Failure{BUF2TIF_NO_PIXEL_MEMORY};
    }
    const std::size_t padding = form.aligned(dataSize) - dataSize;
    ZeroedBuffer directoryBlock(padding + directory.size());
    if (!directoryBlock) {
        return Failure{NoDirectoryMemory};
    }
    const std::size_t directoryOffset = form.headerSize() + dataSize + padding;
    directory.write(directoryBlock.bytes().subspan(padding), directoryOffset);
    unsigned char bytes[16];
    const auto header = std::span(bytes).first(form.headerSize());
    writeTiffHeader(header, directoryOffset, form);
    File file = openUnbuffered(path, Access::Write);
    if (!file) {
        return Failure{BUF2TIF_CANNOT_OPEN};
    }
    if (std::fwrite(header.data(), header.size(), 1, file.get()) != 1) {
        return Failure{BUF2TIF_HEADER_FAILED};
    }
    const Result<std::int32_t> rows = pixels.write(file.get(), pixelBlock.bytes());
    if (!rows) {
        return rows;
    }
    const bool isWritten = std::fwrite(directoryBlock.data(), directoryBlock.size(), 1, file.get()) == 1;
    return closeWritten(file) && isWritten ? rows : Failure{BUF2TIF_DIRECTORY_FAILED};
}

} // namespace tvmeta
