#include "containers/finders.h"

#include "metadata/byte_cursor.h"
#include "metadata/signatures.h"
#include "support/text_search.h"

#include <array>
#include <optional>
#include <string_view>

namespace tvmeta {

namespace {

using namespace jpeg;

constexpr int MaxSegments = 1 << 16;

struct Segment {
    int code;
    Region data; // without the length field
};

struct JpegFile {
    SourceReader& reader;
    const Region& region;
    Layout& layout;
    bool hasExif = false;  // of several EXIF segments the first counts
    bool hasIndex = false; // as of indices of pictures
};

// A segment whose signature has been compared.
class SegmentReader {
  public:
    SegmentReader(SourceReader& reader, const Region& data) : data_(data), bytes_(readStart(reader, data, start_)) {}
    SegmentReader(const SegmentReader&) = delete;
    SegmentReader& operator=(const SegmentReader&) = delete;

    bool hasSignature(std::string_view signature) const { return asText(bytes_).starts_with(signature); }

    Region after(std::size_t size) const { return data_.after(static_cast<std::int64_t>(size)); }
    ByteCursor cursorAfter(std::size_t size) const { return ByteCursor(bytes_.subspan(size)); }

  private:
    Region data_;
    std::array<unsigned char, 80> start_; // the longest signature with the numbers after it has 75 bytes
    std::span<const unsigned char> bytes_;
};

void readApp1(JpegFile& file, const Region& data) {
    constexpr std::size_t Guid = 32;
    Layout& layout = file.layout;
    const SegmentReader segment(file.reader, data);
    if (segment.hasSignature(ExifSignature) && !file.hasExif) {
        file.hasExif = true;
        layout.addStructure(segment.after(ExifSignature.size()));
    } else if (segment.hasSignature(XmpSignature)) {
        layout.addFirst(TVMETA_XMP, segment.after(XmpSignature.size()));
    } else if (segment.hasSignature(ExtendedXmpSignature)) {
        ByteCursor cursor = segment.cursorAfter(ExtendedXmpSignature.size());
        cursor.skip(Guid + 4); // and the size of the whole
        const std::uint32_t offset = cursor.get32();
        if (cursor) {
            layout.addPiece(ExtendedXmp, segment.after(ExtendedXmpSignature.size() + Guid + 8), offset);
        }
    }
}

void readApp2(JpegFile& file, const Region& data) {
    const SegmentReader segment(file.reader, data);
    if (segment.hasSignature(IccSignature)) {
        ByteCursor cursor = segment.cursorAfter(IccSignature.size());
        const std::uint32_t number = cursor.get8();
        file.layout.addPiece(TVMETA_ICC, segment.after(IccSignature.size() + 2), number);
    } else if (segment.hasSignature(MultiPictureSignature) && !file.hasIndex) {
        file.hasIndex = true;
        findMultiPicturePreview(file.reader, segment.after(MultiPictureSignature.size()), file.region, file.layout);
    }
}

void readFrameHeader(const JpegFile& file, const Region& data) {
    std::array<unsigned char, 5> header{};
    if (file.layout.width == 0 && readAt(file.reader, data.position, header)) {
        ByteCursor cursor(header);
        cursor.skip(1); // sample precision
        file.layout.height = cursor.get16();
        file.layout.width = cursor.get16();
    }
}

void readSegment(JpegFile& file, const Segment& segment) {
    if (segment.code == marker::App1) {
        readApp1(file, segment.data);
    } else if (segment.code == marker::App2) {
        readApp2(file, segment.data);
    } else if (segment.code == marker::App13) {
        const SegmentReader resources(file.reader, segment.data);
        if (resources.hasSignature(PhotoshopSignature)) {
            file.layout.addPiece(PhotoshopResources, resources.after(PhotoshopSignature.size()));
        }
    } else if (marker::startsFrame(segment.code)) {
        readFrameHeader(file, segment.data);
        file.reader.setWindowSize(window_size::Tiff); // a few tables follow, then image data
    }
}

// Reads the next marker and the length of its segment. Any number of fill bytes is allowed. Returns nothing where the
// chain breaks.
std::optional<Segment> nextSegment(SourceReader& reader, const Region& file) {
    if (reader.get() != marker::Prefix) {
        return std::nullopt;
    }
    int code = marker::Prefix;
    while (code == marker::Prefix && reader.position() < file.end()) {
        code = reader.get();
    }
    if (marker::endsHeader(code) || marker::isAlone(code)) {
        return Segment{code, {reader.position(), 0}};
    }
    const std::int64_t length = reader.read16(ByteOrder::Big);
    const Region data{reader.position(), length - 2};
    const bool isValid = code > 0 && code != marker::Prefix && length >= 2 && data.size <= file.end() - data.position;
    return isValid ? std::optional(Segment{code, data}) : std::nullopt;
}

void joinResources(SourceReader& reader, Layout& layout) {
    std::array<Region, 64> resources;
    const std::size_t count = layout.regionsOf(PhotoshopResources, resources);
    layout.removePieces(PhotoshopResources);
    findInResources(reader, std::span(resources).first(count), layout);
}

} // namespace

void findInJpeg(SourceReader& reader, const Region& region, Layout& layout) {
    JpegFile file{reader, region, layout};
    std::int64_t position = region.position + 2; // after the start of the image
    for (int i = 0; i < MaxSegments; ++i) {
        reader.seek(position);
        const std::optional<Segment> segment = nextSegment(reader, region);
        if (!segment) {
            layout.markBroken(position);
            break;
        }
        if (marker::endsHeader(segment->code)) {
            break;
        }
        readSegment(file, *segment);
        position = segment->data.end();
    }
    layout.sortPieces();
    joinResources(reader, layout);
    joinExtendedXmp(reader, layout);
}

} // namespace tvmeta
