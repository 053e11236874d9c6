// The thumbnail and the IPTC block in Photoshop image resources. The block is scanned, not walked, so a broken resource
// does not hide the others.
#include "metadata/byte_cursor.h"
#include "metadata/directory_parsers.h"
#include "metadata/signatures.h"
#include "support/text_search.h"
#include "support/zeroed_buffer.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace tvmeta {

namespace {

constexpr std::size_t HeaderSize = 8; // signature, identifier, and the two bytes of an empty name
constexpr SearchText Signature{"8BIM", 0};

constexpr std::int64_t ThumbnailWidthOffset = 16; // after the header, the data size and a format

void readThumbnail(StreamReader& reader, ExifInfo& info) {
    info.thumbnailWidth = reader.read32(ByteOrder::Big);
    info.thumbnailHeight = reader.read32(ByteOrder::Big);
    info.thumbnailRowBytes = reader.read32(ByteOrder::Big);
    reader.read32(ByteOrder::Big); // size in memory
    info.thumbnailLength = reader.read32(ByteOrder::Big);
    reader.read32(ByteOrder::Big); // bits per pixel, number of planes
    info.thumbnailOffset = static_cast<std::int32_t>(reader.position());
}

// Reads the resource whose header is at `position`. Returns true for a thumbnail.
bool readResource(StreamReader& reader, std::span<const unsigned char> header, std::int64_t position, ExifInfo& info) {
    ByteCursor cursor(header.subspan(photoshop::Signature.size()));
    const std::uint16_t id = cursor.get16();
    if (id == photoshop::Thumbnail) {
        reader.seek(position + ThumbnailWidthOffset);
        readThumbnail(reader, info);
        return true;
    }
    const bool unnamed = cursor.get16() == 0;
    if (id == photoshop::IptcBlock && unnamed) {
        reader.seek(position + static_cast<std::int64_t>(HeaderSize));
        info.iptcLength = reader.read32(ByteOrder::Big);
        info.iptcOffset = static_cast<std::int32_t>(reader.position());
    }
    return false;
}

} // namespace

std::int32_t readPhotoshopResources(StreamReader& reader, std::int32_t size, WorkBudget& budget, ExifInfo& info) {
    // Bytes that the file lacks count as zeros. A signature and an identifier at the end of the file, and two such
    // zeros, are the header of an IPTC resource.
    constexpr std::int64_t ZerosSeen = 2;
    if (size <= 0 || !budget.hasPayload()) {
        return PARSE_PHOTOSHOP_NO_THUMBNAIL;
    }
    const std::int64_t start = reader.position();
    ZeroedBuffer block(static_cast<std::size_t>(std::min<std::int64_t>(size, clampedSize(reader, size) + ZerosSeen)));
    if (!block) {
        return PARSE_PHOTOSHOP_NO_MEMORY;
    }
    budget.takePayload(static_cast<std::int64_t>(reader.read(block.bytes())));
    std::int32_t result = PARSE_PHOTOSHOP_NO_THUMBNAIL;
    const std::string_view text(block.text(), block.size());
    for (std::size_t at = findText(text, Signature); at != NotFound && text.size() - at >= HeaderSize;
         at = findText(text, Signature, at + 1)) {
        if (readResource(reader, block.bytes().subspan(at), start + static_cast<std::int64_t>(at), info)) {
            result = info.thumbnailLength;
        }
    }
    return result;
}

} // namespace tvmeta

using namespace tvmeta;

std::int32_t parse_photoshop_data(FILE* stream, std::int32_t size, ExifInfo* info) noexcept {
    return parseStream(stream, info, PARSE_PHOTOSHOP_NO_MEMORY, [&](StreamReader& reader, WorkBudget& budget) {
        return readPhotoshopResources(reader, size, budget, *info);
    });
}
