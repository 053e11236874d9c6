#include "containers/boxes.h"
#include "containers/finders.h"
#include "metadata/byte_cursor.h"
#include "metadata/signatures.h"
#include "support/text_search.h"

#include <algorithm>
#include <array>

namespace tvmeta {

namespace {

constexpr int MaxRiffChunks = 1 << 16;

// The canvas of the extended format, which comes first, or the size in the header of the one bitstream.
void readSize(SourceReader& reader, std::uint32_t type, const Region& data, Layout& layout) {
    constexpr std::uint32_t SizeBits = 0x3FFF;
    std::array<unsigned char, 10> bytes{};
    ByteCursor cursor(readStart(reader, data, bytes), ByteOrder::Little);
    std::uint64_t width = 0;
    std::uint64_t height = 0;
    if (type == boxType("VP8X")) {
        cursor.skip(4); // flags
        width = cursor.number(3) + 1;
        height = cursor.number(3) + 1;
    } else if (type == boxType("VP8 ")) {
        cursor.skip(6); // frame tag and start code
        width = cursor.get16() & SizeBits;
        height = cursor.get16() & SizeBits;
    } else {
        cursor.skip(1); // signature
        const std::uint32_t sizes = cursor.get32();
        width = (sizes & SizeBits) + 1;
        height = (sizes >> 14 & SizeBits) + 1;
    }
    if (cursor && layout.width == 0) {
        layout.width = static_cast<std::int32_t>(width);
        layout.height = static_cast<std::int32_t>(height);
    }
}

// Some programs write the signature of JPEG segments before the TIFF structure.
void addExif(SourceReader& reader, const Region& data, Layout& layout) {
    std::array<unsigned char, 6> start{};
    const bool hasSignature = readAt(reader, data.position, start) && asText(start) == jpeg::ExifSignature;
    layout.addStructure(hasSignature ? data.after(std::int64_t{start.size()}) : data);
}

void readRiffChunk(SourceReader& reader, std::uint32_t type, const Region& data, Layout& layout) {
    switch (type) {
    case boxType("VP8X"):
    case boxType("VP8 "):
    case boxType("VP8L"):
        return readSize(reader, type, data, layout);
    case boxType("EXIF"):
        return addExif(reader, data, layout);
    case boxType("XMP "):
        return layout.addFirst(TVMETA_XMP, data);
    case boxType("ICCP"):
        return layout.addFirst(TVMETA_ICC, data);
    default:
        return;
    }
}

} // namespace

void findInWebp(SourceReader& reader, const Region& file, Layout& layout) {
    constexpr std::int64_t FileHeaderSize = 12;
    constexpr std::int64_t ChunkHeaderSize = 8;
    std::int64_t position = file.position + FileHeaderSize;
    for (int i = 0; i < MaxRiffChunks && file.end() - position >= ChunkHeaderSize; ++i) {
        std::array<unsigned char, ChunkHeaderSize> header{};
        if (!readAt(reader, position, header)) {
            return layout.markBroken(position);
        }
        const std::uint32_t type = ByteCursor(header).get32();
        const std::int64_t size = ByteCursor(std::span(header).subspan(4), ByteOrder::Little).get32();
        const std::int64_t available = file.end() - position - ChunkHeaderSize;
        if (size > available) {
            layout.markBroken(position);
        }
        readRiffChunk(reader, type, {position + ChunkHeaderSize, std::min(size, available)}, layout);
        position += ChunkHeaderSize + size + size % 2;
    }
}

} // namespace tvmeta
