// Builders of the containers: where each has the blocks.
#pragma once

#include "testing/photographs_camera.h"

namespace test {

// ---- JPEG ----

inline Bytes iccSegment(unsigned number, unsigned count, const Bytes& part) {
    return segment(0xE2, Bytes("ICC_PROFILE\0", 12) + static_cast<char>(number) + static_cast<char>(count) + part);
}
inline Bytes photoshopSegment(const Bytes& part) {
    return segment(0xED, Bytes("Photoshop 3.0\0", 14) + part);
}

inline const Bytes Guid = "0123456789ABCDEF0123456789ABCDEF";
inline Bytes extensionSegment(const Bytes& guid, const Bytes& packet, std::size_t offset, std::size_t size) {
    return segment(0xE1, Bytes("http://ns.adobe.com/xmp/extension/\0", 35) + guid +
                             be32(static_cast<std::uint32_t>(packet.size())) +
                             be32(static_cast<std::uint32_t>(offset)) + packet.substr(offset, size));
}

// An index of pictures (CIPA DC-007): the photograph, and a preview at an offset from the byte-order mark.
inline Bytes multiPictureSegment(const Bytes& offset) {
    Tiff tiff;
    const auto picture = [](std::uint32_t attributes, std::size_t size, const Bytes& place) {
        return le32(attributes) + le32(static_cast<std::uint32_t>(size)) + place + zeros(4);
    };
    const Bytes pictures = picture(0x030000, 5000, le32(0)) + picture(0x010002, Preview.size(), offset);
    return segment(0xE2, Bytes("MPF\0", 4) +
                             tiff.finish(tiff.add(
                                 {{0xB000, 7, 4, "0100"}, tiff.longEntry(0xB001, 2), {0xB002, 7, 32, pictures}})));
}

// ---- Boxes (ISO/IEC 14496-12) ----

inline Bytes box(const Bytes& type, const Bytes& content) {
    return be32(static_cast<std::uint32_t>(content.size() + 8)) + type + content;
}
inline Bytes versionBox(const Bytes& type, unsigned version, const Bytes& content, unsigned flags = 0) {
    return box(type, be32(version << 24 | flags) + content);
}

inline Bytes cr3(std::size_t makerNotes = 12) {
    const Bytes metadata = Bytes("\x85\xC0\xB6\x87\x82\x0F\x11\xE0\x81\x11\xF4\xCE\x46\x2B\x6A\x48", 16);
    const Bytes preview = Bytes("\xEA\xF4\x2B\x5E\x1C\x98\x4B\x88\xB9\xFB\xB7\xDC\x40\x6E\x4D\x16", 16);
    const Bytes packet = Bytes("\xBE\x7A\xCF\xCB\x97\xA9\x42\xE8\x9C\x71\x99\x94\x91\xE3\xAF\xAC", 16);
    const auto structure = [](Entries (*entries)(const Tiff&), const Entries& more) {
        Tiff tiff;
        Entries all = more;
        const Entries own = entries(tiff);
        all.insert(all.end(), own.begin(), own.end());
        return tiff.finish(tiff.add(all));
    };
    const Bytes size = be16(16) + be16(12) + be32(static_cast<std::uint32_t>(Thumbnail.size())) + be32(0);
    const Bytes own =
        box("CMT1", structure(imageEntries, {Tiff().shortEntry(256, 6000), Tiff().shortEntry(257, 4000)})) +
        box("CMT2", structure(exifEntries, {})) + box("CMT3", zeros(makerNotes)) +
        box("CMT4", structure(gpsEntries, {})) + box("THMB", zeros(4) + size + Thumbnail);
    const Bytes table = versionBox("stsz", 0, be32(static_cast<std::uint32_t>(Preview.size())) + be32(1)) +
                        versionBox("co64", 0, be32(1) + be32(0) + Later);
    const Bytes smaller = plainJpeg(20, 15, 3);
    const Bytes file =
        box("ftyp", "crx " + be32(1) + "crx isom") +
        box("moov", box("uuid", metadata + own) + box("trak", box("mdia", box("minf", box("stbl", table))))) +
        box("uuid", packet + Packet) +
        box("uuid", preview + be32(0) + be32(1) +
                        box("PRVW", zeros(4) + be16(1) + be16(20) + be16(15) + be16(1) +
                                        be32(static_cast<std::uint32_t>(smaller.size())) + smaller)) +
        be32(1) + "mdat" + be64(16 + Preview.size()) + Preview;
    return resolved(file, be32(placeOf(Preview, file)));
}

// ---- HEIF and AVIF ----

inline Bytes itemInfo(unsigned id, const Bytes& type, const Bytes& more = "", bool isWide = false) {
    return versionBox("infe", isWide ? 3 : 2, (isWide ? be32(id) : be16(id)) + be16(0) + type + zeros(1) + more);
}

// The item of EXIF data: the offset of the TIFF header after this number, here six bytes for the signature.
inline Bytes exifItem(const Bytes& tiff) {
    return be32(6) + Bytes("Exif\0\0", 6) + tiff;
}

struct HeifOptions {
    Bytes brand = "heic";
    unsigned method = 0;   // of construction: 0 in the file, 1 in 'idat'
    Bytes properties = ""; // of the primary image, after its size
    unsigned associations = 0;
    std::size_t pictures = 0; // bytes of coded pictures before the other items
    unsigned version = 1;     // of the item locations. With 2, all identifiers and indices are wide
};

// The size of the primary image is 4032 x 3024, that of the thumbnail before it 320 x 240.
inline Bytes heif(const HeifOptions& options, const Bytes& exif, const Bytes& packet) {
    const auto size = [](std::uint32_t width, std::uint32_t height) {
        return versionBox("ispe", 0, be32(width) + be32(height));
    };
    const bool isWide = options.version == 2;
    const auto id = [&](unsigned number) { return isWide ? be32(number) : be16(number); };
    const auto item = [&](unsigned number, const Bytes& type, const Bytes& more = "") {
        return itemInfo(number, type, more, isWide);
    };
    const Bytes items = versionBox("iinf", isWide ? 1 : 0,
                                   id(4) + item(3, "hvc1") + item(2, "hvc1") + item(1, "Exif") +
                                       item(4, "mime", Bytes("application/rdf+xml\0", 20)));
    const bool isInside = options.method == 1;
    const Bytes exifPlace = isInside ? be32(0) : Later;
    const Bytes packetPlace = isInside ? be32(static_cast<std::uint32_t>(exif.size())) : Later;
    const auto location = [&](unsigned number, const Bytes& place, std::size_t length) {
        const Bytes method = options.version > 0 ? be16(options.method) : "";
        const Bytes start =
            isWide ? place + be16(1) + be64(1) + be16(0) : be16(1) + place; // a base, an index, an offset
        return id(number) + method + be16(0) + start + be32(static_cast<std::uint32_t>(length));
    };
    const Bytes locations =
        versionBox("iloc", options.version,
                   be16(isWide ? 0x2448 : 0x4400) + id(3) + location(2, be32(1), 1) +
                       location(1, exifPlace, exif.size()) + location(4, packetPlace, packet.size()));
    Bytes indices = isWide ? Bytes("\0\x02\x80\x04", 4) : "\x02\x84"; // the highest bit: essential
    for (unsigned i = 0; i < options.associations; ++i) {
        indices += isWide ? be16(0x8005 + i) : Bytes(1, static_cast<char>(0x85 + i));
    }
    const Bytes properties = box("ipco", size(320, 240) + size(4032, 3024) + box("pixi", zeros(8)) +
                                             box("colr", "prof" + Profile) + options.properties);
    const Bytes other = isWide ? Bytes("\1\0\1", 3) : "\1\1";
    const auto count = static_cast<char>(2 + options.associations);
    const Bytes associations =
        versionBox("ipma", isWide ? 1 : 0, be32(2) + id(2) + other + id(3) + count + indices, isWide ? 1 : 0);
    const Bytes meta = versionBox(
        "meta", 0,
        versionBox("hdlr", 0, zeros(4) + "pict" + zeros(13)) + versionBox("pitm", isWide ? 1 : 0, id(3)) + items +
            locations + box("iprp", properties + associations) + (isInside ? box("idat", exif + packet) : ""));
    Bytes file = box("ftyp", options.brand + be32(0) + "mif1" + options.brand) + meta;
    if (isInside) {
        return file + box("mdat", zeros(16));
    }
    file += box("mdat", zeros(options.pictures) + exif + packet + zeros(16));
    const Bytes withExif = resolved(file, be32(placeOf(exif, file)));
    return resolved(withExif, be32(placeOf(packet, file)));
}

// ---- JPEG XL ----

// The header of a codestream: 170 x 128 pixels (a small height, and the ratio 4:3), and an orientation.
inline Bytes jxlCodestream(unsigned orientation) {
    // From the lowest bit on: 1 small, 5 height / 8 - 1, 3 ratio, 1 not all default, 1 more fields, 3 orientation - 1.
    const unsigned bits = 1U | 15U << 1 | 3U << 6 | 0U << 9 | 1U << 10 | (orientation - 1) << 11;
    return "\xFF\x0A" + le16(bits) + zeros(20);
}
inline Bytes jxl(const Bytes& boxes) {
    return Bytes("\0\0\0\x0CJXL \r\n\x87\n", 12) + box("ftyp", "jxl " + be32(0) + "jxl ") + boxes;
}

// ---- Chunks ----

// Nothing checks the sums.
inline Bytes pngChunk(const Bytes& type, const Bytes& data) {
    return be32(static_cast<std::uint32_t>(data.size())) + type + data + zeros(4);
}
inline Bytes png(const Bytes& chunks) {
    return Bytes("\x89PNG\r\n\x1A\n") + pngChunk("IHDR", be32(640) + be32(480) + "\x08\x02" + zeros(3)) + chunks +
           pngChunk("IDAT", zeros(5)) + pngChunk("IEND", "");
}
inline Bytes pngText(const Bytes& text, bool isCompressed = false) {
    return pngChunk("iTXt", Bytes("XML:com.adobe.xmp\0", 18) + static_cast<char>(isCompressed) + zeros(3) + text);
}

inline Bytes webpChunk(const Bytes& type, const Bytes& data) {
    return type + le32(static_cast<std::uint32_t>(data.size())) + data + zeros(data.size() % 2);
}
inline Bytes webp(const Bytes& chunks) {
    return "RIFF" + le32(static_cast<std::uint32_t>(chunks.size() + 4)) + "WEBP" + chunks;
}

// ---- Raw files ----

inline Bytes raf(const Bytes& preview) {
    const Bytes header = "FUJIFILMCCD-RAW 0201FF1593" + zeros(2) + "TV-100" + zeros(50);
    return header + be32(108) + be32(static_cast<std::uint32_t>(preview.size())) + zeros(16) + preview + zeros(64);
}

// The camera and the borders of the sensor; EXIF is in the preview alone.
inline Bytes rw2(const Bytes& preview) {
    Tiff tiff(true, 85);
    const Bytes file = tiff.finish(tiff.add({tiff.shortEntry(4, 4),
                                             tiff.shortEntry(5, 8),
                                             tiff.shortEntry(6, 3004),
                                             tiff.shortEntry(7, 4008),
                                             tiff.shortEntry(23, 400),
                                             {46, 7, static_cast<std::uint32_t>(preview.size()), preview},
                                             tiff.textEntry(271, "Tonalvista"),
                                             tiff.textEntry(272, "TV-100")}));
    return file + zeros(16);
}

// A reduced first image, and as its children a preview, the full image, a mask and another image as wide.
inline Bytes dng(bool little) {
    Tiff tiff(little);
    const auto length = static_cast<std::uint32_t>(Preview.size());
    const std::uint32_t preview = tiff.add({tiff.longEntry(254, 1),
                                            tiff.longEntry(256, 1024),
                                            tiff.longEntry(257, 683),
                                            tiff.shortEntry(259, 7),
                                            tiff.shortEntry(262, little ? 6 : 2), // YCbCr, RGB
                                            {273, 4, 1, Later},
                                            tiff.longEntry(279, length)});
    const std::uint32_t full = tiff.add({tiff.longEntry(254, 0), tiff.longEntry(256, 6000), tiff.longEntry(257, 4000),
                                         tiff.shortEntry(259, 7), tiff.shortEntry(262, 32803)});
    const std::uint32_t mask = tiff.add({tiff.longEntry(254, 4), tiff.longEntry(256, 8000), tiff.longEntry(257, 8000)});
    const std::uint32_t second = tiff.add({tiff.longEntry(254, 0), tiff.longEntry(256, 6000), tiff.longEntry(257, 20)});
    const Bytes children = tiff.n32(preview) + tiff.n32(full) + tiff.n32(mask) + tiff.n32(second);
    const Bytes file = cameraTiff(tiff, {tiff.longEntry(254, 1),
                                         tiff.longEntry(256, 256),
                                         tiff.longEntry(257, 171),
                                         {330, 4, 4, children},
                                         tiff.textEntry(50735, "another number")});
    return resolved(file, tiff.n32(static_cast<std::uint32_t>(file.size()))) + Preview;
}

} // namespace test
