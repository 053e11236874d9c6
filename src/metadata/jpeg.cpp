// JPEG files (ITU-T T.81 annex B): segments with EXIF (EXIF 2.3, section 4.5.4), XMP (XMP storage in files) and
// Photoshop resources.
#include "metadata/directory_parsers.h"
#include "metadata/signatures.h"
#include "settings/packet_parser.h"
#include "support/file.h"
#include "support/result.h"
#include "support/text_search.h"
#include "support/zeroed_buffer.h"

#include <cstdint>
#include <string_view>

namespace tvmeta {

namespace {

using namespace jpeg;

// A marker with more prefix and fill bytes than this is a broken file.
constexpr int MaxMarkerBytes = 5;

// The XMP segment must be among this many markers after the EXIF segment.
constexpr int XmpSearchMarkers = 10;

bool startsImage(StreamReader& reader) {
    return reader.get() == marker::Prefix && reader.get() == marker::StartOfImage;
}

// Reads the code of a marker after its prefix and fill bytes. Returns the prefix if there is no code within
// MaxMarkerBytes, or the file ends.
int readMarker(StreamReader& reader) {
    for (int i = 0; i < MaxMarkerBytes; ++i) {
        const int byte = reader.get();
        if (byte != marker::Prefix && byte != EOF) {
            return byte;
        }
    }
    return marker::Prefix;
}

// The segment after a marker: the position of its length field, and the length.
struct Segment {
    std::int64_t start;
    std::uint16_t length; // includes the length field

    std::int64_t end() const { return start + length; }
    bool isValid() const { return length >= 2; }
};

Segment readSegment(StreamReader& reader) {
    const std::int64_t start = reader.position();
    return {start, reader.read16(ByteOrder::Big)};
}

// Reports an impossible length.
Result<Segment> readValidSegment(StreamReader& reader) {
    const Segment segment = readSegment(reader);
    if (!segment.isValid()) {
        printMessage("invalid marker");
        return Failure{GET_EXIF_UNREADABLE};
    }
    return segment;
}

bool skipSegment(StreamReader& reader) {
    const Result<Segment> segment = readValidSegment(reader);
    return segment && reader.seek(segment->end());
}

bool readSignature(StreamReader& reader, std::string_view signature) {
    unsigned char bytes[XmpSignature.size()] = {};
    static_assert(std::size(bytes) >= PhotoshopSignature.size() && std::size(bytes) >= ExifSignature.size());
    const auto block = std::span(bytes).first(signature.size());
    return reader.read(block) == signature.size() && asText(block) == signature;
}

// The first APP1 segment.
Result<Segment> findApp1(StreamReader& reader) {
    for (int code = readMarker(reader); code != marker::App1; code = readMarker(reader)) {
        if (marker::endsHeader(code)) {
            return Failure{GET_EXIF_WRONG_SIGNATURE};
        }
        if (code == marker::Prefix) {
            printMessage("too many padding bytes");
            return Failure{GET_EXIF_UNREADABLE};
        }
        if (!skipSegment(reader)) {
            return Failure{GET_EXIF_UNREADABLE};
        }
    }
    return readValidSegment(reader);
}

// Reads the lens name from the XMP segment at the reader, and records the position of the packet if it contains
// processing settings.
void readXmp(StreamReader& reader, ExifInfo& info) {
    const Segment segment = readSegment(reader);
    if (!segment.isValid() || !readSignature(reader, XmpSignature)) {
        return;
    }
    const std::int64_t offset = reader.position();
    // The length includes its own field and the signature, so this reads bytes after the segment too.
    ZeroedBuffer packet(segment.length);
    if (!packet || reader.read(packet.bytes()) < packet.size()) {
        return;
    }
    const std::string_view text(packet.text(), packet.size());
    copyLens(text, info.lens);
    if (hasSettings(text)) {
        info.xmpLength = segment.length;
        info.xmpOffset = static_cast<std::int32_t>(offset);
    }
}

// Reads the XMP segment, which must be close to the EXIF segment: the reader is after that. Returns false if the chain
// of segments breaks.
bool readXmpSegment(StreamReader& reader, ExifInfo& info) {
    for (int i = 0; i < XmpSearchMarkers; ++i) {
        const int code = readMarker(reader);
        if (marker::endsHeader(code) || code == marker::Prefix) {
            break;
        }
        if (code == marker::App1) {
            readXmp(reader, info);
            break;
        }
        if (!skipSegment(reader)) {
            return false;
        }
    }
    return true;
}

// Reads the Photoshop segment in a second pass over the file. Returns a result of getExifData.
std::int32_t readPhotoshopSegment(StreamReader& reader, WorkBudget& budget, ExifInfo& info) {
    reader.seek(0);
    if (!startsImage(reader)) {
        return GET_EXIF_UNREADABLE;
    }
    while (reader.get() == marker::Prefix) {
        const int code = reader.get();
        if (marker::endsHeader(code)) {
            return GET_EXIF_OK;
        }
        if (code == marker::App13) {
            const Result<Segment> segment = readValidSegment(reader);
            if (segment && readSignature(reader, PhotoshopSignature)) {
                readPhotoshopResources(reader, segment->length, budget, info);
            }
            return segment ? GET_EXIF_OK : segment.code();
        }
        if (!skipSegment(reader)) {
            return GET_EXIF_UNREADABLE;
        }
    }
    return GET_EXIF_BROKEN_CHAIN;
}

} // namespace

std::int32_t readJpeg(StreamReader& reader, WorkBudget& budget, ExifInfo& info) {
    if (!startsImage(reader)) {
        return GET_EXIF_UNREADABLE;
    }
    const Result<Segment> app1 = findApp1(reader);
    if (!app1) {
        return app1.code();
    }
    const bool isExif = readSignature(reader, ExifSignature);
    const std::int32_t tiffBase = isExif ? static_cast<std::int32_t>(reader.position()) : 0;
    if (tiffBase > 0) {
        reader.seek(app1->end());
        if (!readXmpSegment(reader, info)) {
            return GET_EXIF_UNREADABLE;
        }
        reader.seek(tiffBase);
    }
    const std::int32_t result = readImageDirectories(reader, tiffBase, FILE_TYPE_JPEG, budget, info);
    return result == GET_EXIF_OK ? readPhotoshopSegment(reader, budget, info) : result;
}

} // namespace tvmeta
