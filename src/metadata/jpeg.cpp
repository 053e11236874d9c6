// JPEG files (ITU-T T.81 annex B): segments that carry EXIF (EXIF 2.3, section 4.5.4), XMP (XMP storage in files)
// and Photoshop resources.
#include "metadata/containers.h"
#include "metadata/status.h"
#include "settings/methods.h"
#include "settings/packet_parser.h"
#include "support/message.h"
#include "support/zeroed_buffer.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string_view>

namespace tvmeta {

namespace {

namespace marker {
constexpr int Prefix = 0xFF;
constexpr int StartOfImage = 0xD8;
constexpr int EndOfImage = 0xD9;
constexpr int StartOfScan = 0xDA;
constexpr int App1 = 0xE1;
constexpr int App13 = 0xED;
} // namespace marker

using namespace std::string_view_literals;
constexpr std::string_view ExifSignature = "Exif\0\0"sv;
constexpr std::string_view XmpSignature = "http://ns.adobe.com/xap/1.0/\0"sv;
constexpr std::string_view PhotoshopSignature = "Photoshop 3.0\0"sv;

// More bytes of prefix and fill than this are taken for a broken file.
constexpr int LongestMarker = 5;

// The XMP segment stands among so many markers behind the EXIF segment.
constexpr int XmpSearchMarkers = 10;

bool endsHeader(int code) noexcept {
    return code == marker::EndOfImage || code == marker::StartOfScan;
}

bool startsImage(StreamReader& reader) noexcept {
    const int first = reader.get();
    return first == marker::Prefix && reader.get() == marker::StartOfImage;
}

// Reads a marker's code behind its prefix and fill bytes. The prefix alone when there is no code within LongestMarker
// bytes, or when the file ends first.
int readMarker(StreamReader& reader) noexcept {
    for (int i = 0; i < LongestMarker; ++i) {
        const int byte = reader.get();
        if (byte != marker::Prefix && byte != EOF) {
            return byte;
        }
    }
    return marker::Prefix;
}

// A segment behind its marker: where its length field stands, and what it says.
struct Segment {
    std::int64_t start;
    std::uint16_t length; // counts itself

    std::int64_t end() const noexcept { return start + length; }
    bool valid() const noexcept { return length >= 2; }
};

Segment readSegment(StreamReader& reader) noexcept {
    const std::int64_t start = reader.position();
    return {start, reader.read16(ByteOrder::Big)};
}

std::int32_t reportInvalidMarker() noexcept {
    printMessage("invalid marker");
    return status::Broken;
}

// Passes over a segment; false, and reported, when its length is impossible.
bool skipSegment(StreamReader& reader) noexcept {
    const Segment segment = readSegment(reader);
    if (!segment.valid()) {
        reportInvalidMarker();
        return false;
    }
    reader.seek(segment.end());
    return true;
}

bool readSignature(StreamReader& reader, std::string_view signature) noexcept {
    unsigned char bytes[32] = {};
    const auto block = std::span(bytes).first(signature.size());
    return reader.read(block) == signature.size() && std::ranges::equal(block, signature, [](unsigned char a, char b) {
               return a == static_cast<unsigned char>(b);
           });
}

// Looks for the first APP1 segment. Gives the result to end with when there is none.
std::optional<std::int32_t> findApp1(StreamReader& reader) noexcept {
    for (int code = readMarker(reader); code != marker::App1; code = readMarker(reader)) {
        if (endsHeader(code)) {
            return status::WrongSignature;
        }
        if (code == marker::Prefix) {
            printMessage("too many padding bytes");
            return status::Broken;
        }
        if (!skipSegment(reader)) {
            return status::Broken;
        }
    }
    return std::nullopt;
}

// Takes the lens name out of the XMP segment at which the reader stands, and keeps the packet's place if it holds
// processing settings.
void examineXmp(StreamReader& reader, ExifInfo& info) noexcept {
    const Segment segment = readSegment(reader);
    if (!segment.valid() || !readSignature(reader, XmpSignature)) {
        return;
    }
    const std::int64_t offset = reader.position();
    // The length counts itself and the signature too: so many bytes are read, of which the last lie behind the segment.
    ZeroedBuffer packet(segment.length);
    if (!packet || reader.read(packet.bytes()) < packet.size()) {
        return;
    }
    const std::string_view text(packet.text(), packet.size());
    copyLens(text, info.lens);
    if (isMethodCode(detectMethod(text))) {
        info.xmpLength = segment.length;
        info.xmpOffset = static_cast<std::int32_t>(offset);
    }
}

// Looks among the markers behind the EXIF segment for the next APP1. False when a segment is broken.
bool searchXmp(StreamReader& reader, ExifInfo& info) noexcept {
    for (int i = 0; i < XmpSearchMarkers; ++i) {
        const int code = readMarker(reader);
        if (endsHeader(code) || code == marker::Prefix) {
            return true;
        }
        if (code == marker::App1) {
            examineXmp(reader, info);
            return true;
        }
        if (!skipSegment(reader)) {
            return false;
        }
    }
    return true;
}

} // namespace

TiffPlace findTiffInJpeg(StreamReader& reader, ExifInfo& info) noexcept {
    if (!startsImage(reader)) {
        return {status::Broken, 0};
    }
    if (const std::optional<std::int32_t> failure = findApp1(reader)) {
        return {*failure, 0};
    }
    const Segment segment = readSegment(reader);
    if (!segment.valid()) {
        return {reportInvalidMarker(), 0};
    }
    if (!readSignature(reader, ExifSignature)) {
        return {status::Done, 0}; // what stands here is looked at all the same, and is no TIFF header in practice
    }
    const std::int64_t base = reader.position();
    reader.seek(segment.end());
    if (!searchXmp(reader, info)) {
        return {status::Broken, 0};
    }
    reader.seek(base);
    return {status::Done, static_cast<std::int32_t>(base)};
}

std::int32_t readPhotoshopSegment(StreamReader& reader, WorkBudget& budget, ExifInfo& info) noexcept {
    reader.seek(0);
    if (!startsImage(reader)) {
        return status::Broken;
    }
    while (reader.get() == marker::Prefix) {
        const int code = reader.get();
        if (endsHeader(code)) {
            return status::Done;
        }
        if (code == marker::App13) {
            const Segment segment = readSegment(reader);
            if (!segment.valid()) {
                return reportInvalidMarker();
            }
            if (readSignature(reader, PhotoshopSignature)) {
                readPhotoshopResources(reader, segment.length, budget, info);
            }
            return status::Done;
        }
        if (!skipSegment(reader)) {
            return status::Broken;
        }
    }
    return status::BrokenSegmentChain;
}

} // namespace tvmeta
