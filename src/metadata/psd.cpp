// Photoshop files: the header and the image resources (Photoshop file format). All numbers are big-endian.
#include "metadata/containers.h"
#include "metadata/photoshop_resource.h"
#include "metadata/status.h"

#include <array>
#include <cstdint>

namespace tvmeta {

namespace {

constexpr std::array<unsigned char, 4> FileSignature = {'8', 'B', 'P', 'S'};
constexpr std::int64_t VersionAndReserved = 2 + 6;
constexpr std::int64_t SizeAndDepth = 4 + 4 + 2;
constexpr std::uint16_t FewestChannels = 3;
constexpr std::uint16_t RgbColorMode = 3;

constexpr std::int64_t roundUpToEven(std::int64_t size) noexcept {
    return size + (size & 1);
}

// Passes over a resource's name: a length byte and so many characters, padded to an even size.
void skipName(StreamReader& reader) noexcept {
    const int length = reader.get();
    if (length != EOF) {
        reader.skip(roundUpToEven(1 + length) - 1);
    }
}

// Walks the resources up to the EXIF data, at whose first byte the reader then stands.
bool findExifResource(StreamReader& reader, std::int32_t sectionSize) noexcept {
    std::int64_t walked = 0;
    while (walked < sectionSize) {
        const std::int64_t start = reader.position();
        std::array<unsigned char, photoshop::Signature.size()> signature{};
        if (reader.read(signature) < signature.size() || signature != photoshop::Signature) {
            return false;
        }
        const std::uint16_t id = reader.read16(ByteOrder::Big);
        skipName(reader);
        const std::int32_t size = reader.read32(ByteOrder::Big);
        if (id == photoshop::ExifData) {
            return true;
        }
        if (size < 0) { // would lead backwards, and around in a circle
            return false;
        }
        reader.skip(roundUpToEven(size));
        walked += reader.position() - start;
    }
    return false;
}

} // namespace

TiffPlace findTiffInPsd(StreamReader& reader) noexcept {
    std::array<unsigned char, FileSignature.size()> signature{};
    if (reader.read(signature) < signature.size()) {
        return {status::Broken, 0};
    }
    if (signature != FileSignature) {
        return {status::WrongSignature, 0};
    }
    reader.skip(VersionAndReserved);
    if (reader.read16(ByteOrder::Big) < FewestChannels) {
        return {status::Unsupported, 0};
    }
    reader.skip(SizeAndDepth);
    if (reader.read16(ByteOrder::Big) != RgbColorMode) {
        return {status::Unsupported, 0};
    }
    reader.skip(reader.read32(ByteOrder::Big)); // colour mode data
    if (!findExifResource(reader, reader.read32(ByteOrder::Big))) {
        return {status::Broken, 0};
    }
    return {status::Done, static_cast<std::int32_t>(reader.position())};
}

} // namespace tvmeta
