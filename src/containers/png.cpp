#include "containers/boxes.h"
#include "containers/finders.h"
#include "metadata/byte_cursor.h"
#include "support/text_search.h"

#include <array>
#include <string_view>

namespace tvmeta {

namespace {

using namespace std::string_view_literals;

constexpr int MaxChunks = 1 << 16;

// An international text: keyword, compression flag and method, language, translated keyword, text.
void readText(SourceReader& reader, const Region& data, Layout& layout) {
    constexpr std::string_view XmpKeyword = "XML:com.adobe.xmp\0"sv;
    std::array<unsigned char, 256> start{};
    const std::span<const unsigned char> bytes = readStart(reader, data, start);
    if (!asText(bytes).starts_with(XmpKeyword)) {
        return;
    }
    ByteCursor cursor(bytes);
    cursor.skip(XmpKeyword.size());
    const bool isCompressed = cursor.get8() != 0;
    cursor.skip(1);
    for (int text = 0; text < 2; ++text) {
        while (cursor && cursor.get8() != 0) {
        }
    }
    if (isCompressed) {
        layout.addCompressed(TVMETA_XMP, data);
    } else if (cursor) {
        layout.addFirst(TVMETA_XMP, data.after(static_cast<std::int64_t>(cursor.position())));
    }
}

// Before PNG had a chunk for EXIF, programs wrote it as compressed text.
void noteProfile(SourceReader& reader, const Region& data, Layout& layout) {
    std::array<unsigned char, 26> start{};
    if (data.size > static_cast<std::int64_t>(start.size()) && readAt(reader, data.position, start) &&
        (asText(start).starts_with("Raw profile type exif\0"sv) ||
         asText(start).starts_with("Raw profile type APP1\0"sv))) {
        layout.addCompressed(TVMETA_EXIF, data);
    }
}

void readChunk(SourceReader& reader, std::uint32_t type, const Region& data, Layout& layout) {
    std::array<unsigned char, 8> size{};
    switch (type) {
    case boxType("IHDR"):
        if (readAt(reader, data.position, size)) {
            ByteCursor cursor(size);
            layout.width = static_cast<std::int32_t>(cursor.get32() & INT32_MAX);
            layout.height = static_cast<std::int32_t>(cursor.get32() & INT32_MAX);
        }
        break;
    case boxType("eXIf"):
        layout.addStructure(data);
        break;
    case boxType("iTXt"):
        readText(reader, data, layout);
        break;
    case boxType("iCCP"):
        layout.addCompressed(TVMETA_ICC, data);
        break;
    case boxType("zTXt"):
        noteProfile(reader, data, layout);
        break;
    default:
        break;
    }
}

} // namespace

void findInPng(SourceReader& reader, const Region& file, Layout& layout) {
    constexpr std::int64_t HeaderSize = 8; // of the file, and of a chunk
    constexpr std::int64_t ChecksumSize = 4;
    std::int64_t position = file.position + HeaderSize;
    for (int i = 0; i < MaxChunks; ++i) {
        std::array<unsigned char, HeaderSize> header{};
        if (!readAt(reader, position, header)) {
            return layout.markBroken(position);
        }
        ByteCursor cursor(header);
        const std::int64_t size = cursor.get32();
        const std::uint32_t type = cursor.get32();
        if (type == boxType("IEND")) {
            return;
        }
        const Region data{position + HeaderSize, size};
        if (size > file.end() - data.position) {
            return layout.markBroken(position);
        }
        readChunk(reader, type, data, layout);
        position = data.end() + ChecksumSize;
    }
}

} // namespace tvmeta
