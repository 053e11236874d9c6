// Photoshop files: the header and the image resources (Photoshop file format). All numbers are big-endian.
#include "metadata/directory_parsers.h"
#include "metadata/signatures.h"

#include <array>
#include <cstdint>

namespace tvmeta {

namespace {

constexpr std::array<unsigned char, 4> FileSignature = {'8', 'B', 'P', 'S'};
constexpr std::int64_t VersionAndReserved = 2 + 6;
constexpr std::int64_t SizeAndDepth = 4 + 4 + 2;
constexpr std::uint16_t MinChannels = 3;
constexpr std::uint16_t RgbColorMode = 3;

constexpr std::int64_t roundUpToEven(std::int64_t size) {
    return size + (size & 1);
}

// Skips the name of a resource: a length byte and the characters, padded to an even size.
void skipName(StreamReader& reader) {
    const int length = reader.get();
    if (length != EOF) {
        reader.skip(roundUpToEven(1 + length) - 1);
    }
}

// Walks the resources up to the EXIF data, and leaves the reader at its first byte.
bool findExifResource(StreamReader& reader, std::int32_t sectionSize) {
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
        const std::int64_t next = reader.position() + roundUpToEven(size);
        if (next <= start) { // a negative size could lead around in a loop
            return false;
        }
        reader.seek(next);
        walked += next - start;
    }
    return false;
}

} // namespace

std::int32_t readPsd(StreamReader& reader, WorkBudget& budget, ExifInfo& info) {
    std::array<unsigned char, FileSignature.size()> signature{};
    if (reader.read(signature) < signature.size()) {
        return GET_EXIF_UNREADABLE;
    }
    if (signature != FileSignature) {
        return GET_EXIF_WRONG_SIGNATURE;
    }
    reader.skip(VersionAndReserved);
    const std::uint16_t channels = reader.read16(ByteOrder::Big);
    reader.skip(SizeAndDepth);
    if (channels < MinChannels || reader.read16(ByteOrder::Big) != RgbColorMode) {
        return GET_EXIF_UNSUPPORTED;
    }
    reader.skip(reader.read32(ByteOrder::Big)); // colour mode data
    if (!findExifResource(reader, reader.read32(ByteOrder::Big))) {
        return GET_EXIF_UNREADABLE;
    }
    return readImageDirectories(reader, static_cast<std::int32_t>(reader.position()), FILE_TYPE_PSD, budget, info);
}

} // namespace tvmeta
