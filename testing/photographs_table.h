// One table of photographs of every container, with the values that every reader of them must find.
#pragma once

#include "testing/photographs_containers.h"
#include "tvmeta_photo.h"

#include <algorithm>
#include <vector>

namespace test {

struct Photograph {
    std::string name; // of the file
    Bytes bytes;
    Fields expected;
    std::map<std::int32_t, Bytes> blocks; // TVMETA_XMP, ..., joined
    std::int32_t status = TVMETA_OK;
    std::uint64_t damaged = 0;
};

inline constexpr const char* BlockKeys[TVMETA_BLOCKS] = {nullptr, "xmp", "iptc", "icc", "thumbnail", "preview"};

// Later fields replace earlier ones; an empty value removes a field.
inline Fields joined(std::initializer_list<Fields> parts) {
    Fields all;
    for (const Fields& part : parts) {
        for (const auto& [key, value] : part) {
            all[key] = value;
        }
    }
    std::erase_if(all, [](const auto& field) { return field.second.empty(); });
    return all;
}

// All expected fields, with the sizes and places of the blocks. A block in several pieces has no place.
inline Fields expectedFields(const Photograph& photo) {
    Fields fields = photo.expected;
    for (const auto& [block, content] : photo.blocks) {
        if (BlockKeys[block] != nullptr) {
            const std::string key = BlockKeys[block];
            fields[key + "Length"] = std::to_string(content.size());
            if (const std::size_t at = photo.bytes.find(content); at != Bytes::npos) {
                fields[key + "Offset"] = std::to_string(at);
            }
        }
    }
    return fields;
}

inline Fields container(const char* name, int width, int height) {
    return {{"container", '"' + std::string(name) + '"'},
            {"width", std::to_string(width)},
            {"height", std::to_string(height)}};
}

// EXIF after another APP1 segment and fill bytes, an index of pictures, a profile in three chunks out of order, a
// packet with an extension in two chunks out of order, and an IPTC block across two segments.
inline Photograph completeJpeg() {
    const Bytes name = "<rdf:Description rdf:about='' xmlns:dc='http://purl.org/dc/elements/1.1/'>";
    const Bytes moved = name + "<dc:description>moved out</dc:description></rdf:Description>";
    const Bytes extension = "<x:xmpmeta><rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>" + moved +
                            "</rdf:RDF></x:xmpmeta>";
    const Bytes reference = "xmpNote:HasExtendedXMP=\"" + Guid + "\"";
    const Bytes packet = xmp("<dc:title>Sea &amp; sky</dc:title>", reference);
    const Bytes joinedPacket =
        xmp("<dc:title>Sea &amp; sky</dc:title>").insert(packet.find("</rdf:RDF>") - reference.size(), moved);
    const Bytes resources = resource(0x03ED, zeros(16)) + resource(0x0404, IptcBlock);
    const std::size_t half = resources.size() - 20;
    Bytes file =
        jpeg(segment(0xE0, Bytes("JFIF\0\1\2\0\0\1\0\1\0\0", 14)) + multiPictureSegment(Later) + xmpSegment(packet) +
             extensionSegment(Guid, extension, 100, 1000) + extensionSegment(Guid, extension, 0, 100) +
             extensionSegment(Bytes(32, '7'), "<stale>" + extension, 0, 90) + "\xFF\xFF\xFF" +
             exifSegment(cameraTiffWithThumbnail()) + iccSegment(3, 3, Profile.substr(130)) +
             iccSegment(1, 3, Profile.substr(0, 70)) + iccSegment(2, 3, Profile.substr(70, 60)) +
             photoshopSegment(resources.substr(0, half)) + photoshopSegment(resources.substr(half)) +
             segment(0xC0, "\x08" + be16(4000) + be16(6000) + "\x01\x01\x11" + zeros(1))) +
        Preview;
    file = resolved(file, le32(placeOf(Preview, file) - static_cast<std::uint32_t>(file.find("MPF") + 4)));
    return {"complete.jpg",
            file,
            joined({Camera,
                    container("JPEG", 6000, 4000),
                    IptcFields,
                    {{"title", "\"Sea & sky\""}, {"description", "\"moved out\""}}}),
            {{TVMETA_EXIF, cameraTiffWithThumbnail()},
             {TVMETA_XMP, joinedPacket},
             {TVMETA_IPTC, IptcBlock},
             {TVMETA_ICC, Profile},
             {TVMETA_THUMBNAIL, Thumbnail},
             {TVMETA_PREVIEW, Preview}}};
}

inline void addTiffs(std::vector<Photograph>& photos) {
    const auto size = [](const Tiff& tiff) { return Entries{tiff.longEntry(256, 600), tiff.longEntry(257, 400)}; };
    const Tiff::Entry blocks[] = {{700, 1, static_cast<std::uint32_t>(Packet.size()), Packet},
                                  {33723, 7, static_cast<std::uint32_t>(IptcBlock.size()), IptcBlock},
                                  {34675, 7, static_cast<std::uint32_t>(Profile.size()), Profile}};
    const struct {
        const char* name;
        const char* container;
        bool little;
        unsigned magic;
    } rows[] = {
        {"little.tif", "TIFF", true, 42},   {"big.tif", "TIFF", false, 42},  {"little.btf", "BigTIFF", true, 43},
        {"big.btf", "BigTIFF", false, 43},  {"ro.orf", "ORF", true, 0x4F52}, {"rs.orf", "ORF", true, 0x5352},
        {"mmor.orf", "ORF", false, 0x4F52},
    };
    for (const auto& row : rows) {
        const Tiff tiff(row.little, row.magic);
        Entries images = size(tiff);
        images.insert(images.end(), std::begin(blocks), std::end(blocks));
        photos.push_back({row.name,
                          cameraTiff(tiff, images),
                          joined({Camera, container(row.container, 600, 400), IptcFields, PacketFields}),
                          {{TVMETA_XMP, Packet}, {TVMETA_IPTC, IptcBlock}, {TVMETA_ICC, Profile}}});
    }
    for (const bool little : {true, false}) {
        photos.push_back({little ? "little.dng" : "big.dng",
                          dng(little),
                          joined({Camera, container("TIFF", 6000, 4000)}),
                          {{TVMETA_PREVIEW, Preview}}});
    }
}

inline void addPhotoshopFiles(std::vector<Photograph>& photos) {
    const Bytes thumbnail = be32(1) + be32(16) + be32(12) + be32(48) + be32(576) +
                            be32(static_cast<std::uint32_t>(Thumbnail.size())) + be16(24) + be16(1) + Thumbnail;
    const Bytes resources = resource(0x0404, IptcBlock) + resource(0x040C, thumbnail) +
                            resource(0x040F, Profile, Bytes("\3abc", 4)) + resource(0x0422, cameraTiff(Tiff(false))) +
                            resource(0x0424, Packet);
    for (const unsigned version : {1U, 2U}) {
        photos.push_back({version == 1 ? "small.psd" : "large.psb",
                          psd(resources, 1, 1).replace(4, 2, be16(version)),
                          joined({Camera, container("PSD", 10, 10), IptcFields, PacketFields}),
                          {{TVMETA_EXIF, cameraTiff(Tiff(false))},
                           {TVMETA_XMP, Packet},
                           {TVMETA_IPTC, IptcBlock},
                           {TVMETA_ICC, Profile},
                           {TVMETA_THUMBNAIL, Thumbnail}}});
    }
}

inline void addRawFiles(std::vector<Photograph>& photos) {
    photos.push_back({"camera.cr3",
                      cr3(),
                      joined({Camera, container("CR3", 6000, 4000), PacketFields}),
                      {{TVMETA_XMP, Packet}, {TVMETA_THUMBNAIL, Thumbnail}, {TVMETA_PREVIEW, Preview}}});
    const Bytes frame = segment(0xC0, "\x08" + be16(3000) + be16(4000) + "\x01\x01\x11" + zeros(1));
    const Bytes full = jpeg(exifSegment(cameraTiffWithThumbnail(false)) + xmpSegment(Packet) + frame);
    const std::map<std::int32_t, Bytes> blocks = {
        {TVMETA_XMP, Packet}, {TVMETA_THUMBNAIL, Thumbnail}, {TVMETA_PREVIEW, full}};
    photos.push_back({"camera.raf", raf(full), joined({Camera, container("RAF", 4000, 3000), PacketFields}), blocks});
    photos.back().blocks[TVMETA_EXIF] = cameraTiffWithThumbnail(false);
    photos.push_back({"camera.rw2", rw2(full), joined({Camera, container("RW2", 4000, 3000), PacketFields}), blocks});
}

// Every way to turn a picture. The EXIF data say 6, which counts where the container says nothing.
inline void addHeifs(std::vector<Photograph>& photos) {
    const Bytes exif = exifItem(cameraTiff(Tiff(false)));
    const auto irot = [](char quarters) { return box("irot", Bytes(1, quarters)); };
    const auto imir = [](char axis) { return box("imir", Bytes(1, axis)); };
    const struct {
        const char* name;
        HeifOptions options;
        const char* orientation;
    } rows[] = {
        {"plain.heic", {}, "6"},
        {"inside.heic", {.brand = "heix", .method = 1}, "6"},
        {"former.heic", {.version = 0}, "6"},
        {"wide.heic", {.properties = irot(1) + imir(0), .associations = 2, .version = 2}, "5"},
        {"film.hif", {.brand = "heic", .properties = irot(0), .associations = 1}, "1"},
        {"left.heic", {.properties = irot(1), .associations = 1}, "8"},
        {"around.heic", {.brand = "msf1", .properties = irot(2), .associations = 1}, "3"},
        {"right.avif", {.brand = "avif", .properties = irot(3), .associations = 1}, "6"},
        {"flipped.avif", {.brand = "avif", .method = 1, .properties = imir(0), .associations = 1}, "4"},
        {"mirrored.avif", {.brand = "avis", .properties = imir(1), .associations = 1}, "2"},
        {"left-flipped.heic", {.properties = irot(1) + imir(0), .associations = 2}, "5"},
        {"left-mirrored.heic", {.properties = irot(1) + imir(1), .associations = 2}, "7"},
        {"right-flipped.heic", {.brand = "mif1", .properties = irot(3) + imir(0), .associations = 2}, "7"},
        {"right-mirrored.heic", {.properties = irot(3) + imir(1), .associations = 2}, "5"},
    };
    for (const auto& row : rows) {
        photos.push_back({row.name,
                          heif(row.options, exif, Packet),
                          joined({Camera,
                                  container(row.options.brand.starts_with("avi") ? "AVIF" : "HEIF", 4032, 3024),
                                  PacketFields,
                                  {{"orientation", row.orientation}}}),
                          {{TVMETA_EXIF, cameraTiff(Tiff(false))}, {TVMETA_XMP, Packet}, {TVMETA_ICC, Profile}}});
    }
}

inline void addJpegXls(std::vector<Photograph>& photos) {
    const Bytes exif = cameraTiff(Tiff());
    const Fields size = container("JPEG XL", 170, 128);
    const Fields turned = joined({Camera, size, PacketFields, {{"orientation", "8"}}});
    photos.push_back({"bare.jxl", jxlCodestream(5), joined({size, {{"orientation", "5"}}}), {}});
    photos.push_back({"boxes.jxl",
                      jxl(box("jxlc", jxlCodestream(8)) + box("Exif", be32(0) + exif) + box("xml ", Packet)),
                      turned,
                      {{TVMETA_EXIF, exif}, {TVMETA_XMP, Packet}}});
    photos.push_back({"parts.jxl",
                      jxl(box("Exif", exifItem(exif)) + box("xml ", Packet) + box("jxlp", be32(0) + jxlCodestream(8)) +
                          be32(0) + "jxlp" + be32(0x80000001) + zeros(50)),
                      turned,
                      {{TVMETA_EXIF, exif}, {TVMETA_XMP, Packet}}});
    photos.push_back(
        {"brotli.jxl",
         jxl(box("jxlc", jxlCodestream(1)) + box("brob", "Exif" + zeros(30)) + box("brob", "xml " + zeros(20))),
         joined({size, {{"orientation", "1"}, {"xmpLength", "24"}}}),
         {}});
}

inline void addChunked(std::vector<Photograph>& photos) {
    const Bytes exif = cameraTiff(Tiff(false));
    const std::map<std::int32_t, Bytes> blocks = {{TVMETA_EXIF, exif}, {TVMETA_XMP, Packet}};
    const Fields pngFields = joined({Camera, container("PNG", 640, 480), PacketFields});
    photos.push_back(
        {"text.png", png(pngChunk("eXIf", exif) + pngText(Packet) + pngText("<another packet/>")), pngFields, blocks});
    photos.push_back({"compressed.png",
                      png(pngChunk("iCCP", "name" + zeros(30)) + pngText(zeros(40), true) +
                          pngChunk("zTXt", Bytes("Raw profile type exif\0", 22) + zeros(30))),
                      joined({container("PNG", 640, 480), {{"iccLength", "34"}, {"xmpLength", "62"}}}),
                      {}});
    const Bytes canvas = webpChunk("VP8X", "\x2C" + zeros(3) + le16(639) + zeros(1) + le16(479) + zeros(1));
    const Bytes lossy = webpChunk("VP8 ", Bytes("\x10\2\0\x9D\1\x2A", 6) + le16(640) + le16(480) + zeros(9));
    const Fields webpFields = joined({Camera, container("WebP", 640, 480), PacketFields});
    for (const bool hasSignature : {false, true}) {
        const Bytes data = (hasSignature ? Bytes("Exif\0\0", 6) : "") + exif;
        photos.push_back(
            {hasSignature ? "signature.webp" : "plain.webp",
             webp(canvas + webpChunk("ICCP", Profile) + lossy + webpChunk("EXIF", data) + webpChunk("XMP ", Packet)),
             webpFields, blocks});
        photos.back().blocks[TVMETA_ICC] = Profile;
    }
    photos.push_back({"lossy.webp", webp(lossy), container("WebP", 640, 480), {}});
    photos.push_back({"lossless.webp",
                      webp(webpChunk("VP8L", "\x2F" + le32(639 | 479U << 14) + zeros(9))),
                      container("WebP", 640, 480),
                      {}});
}

inline Bytes jpegOf(const Bytes& tiff) {
    return jpeg(exifSegment(tiff) + segment(0xC0, "\x08" + be16(480) + be16(640) + "\x01\x01\x11" + zeros(1)));
}

inline Bytes repeated(const Bytes& part, int count, Bytes start) {
    while (count-- > 0) {
        start += part;
    }
    return start;
}

// Values in other forms, unknown, impossible, or too long.
inline void addUnusual(std::vector<Photograph>& photos) {
    const Tiff t;
    const auto add = [&](const char* name, const Entries& image, const Entries& exif, const Fields& fields,
                         std::uint64_t damaged = 0) {
        Tiff tiff;
        Entries entries = image;
        entries.push_back(tiff.longEntry(34665, tiff.add(exif)));
        photos.push_back({name,
                          jpegOf(tiff.finish(tiff.add(entries))),
                          joined({container("JPEG", 640, 480), fields}),
                          {},
                          TVMETA_OK,
                          damaged});
    };
    const auto bit = [](int field) { return std::uint64_t{1} << field; };
    add("apex.jpg", {}, {fractionEntry(t, 37377, 6, 1), t.rationalEntry(37378, 4, 1), t.rationalEntry(41493, 160, 1)},
        {{"exposureTime", "0.015625"},
         {"fNumber", "4"},
         {"isoSpeed", "160"},
         {"derived", "\"exposureTime fNumber isoSpeed\""}});
    add("sensitive.jpg", {}, {t.shortEntry(34855, 65535), t.shortEntry(34864, 2), t.longEntry(34866, 102400)},
        {{"isoSpeed", "102400"}});
    add("unknown.jpg", {t.shortEntry(274, 0), t.textEntry(271, "   ")},
        {t.rationalEntry(33434, 0, 0), t.rationalEntry(33437, 0, 1), t.rationalEntry(37386, 0, 0),
         t.textEntry(36867, "0000:00:00 00:00:00"), t.shortEntry(41989, 0), t.textEntry(37521, "  ")},
        {});
    add("impossible.jpg", {t.shortEntry(274, 9)},
        {t.rationalEntry(33434, 1, 0),
         fractionEntry(t, 33437, -8, 1),
         t.textEntry(36867, "2024:02:30 10:00:00"),
         {42036, 2, 100, le32(0xFFFFFF00)},
         {37521, 2, 100, le32(0xFFFFFF00)}},
        {},
        bit(TVMETA_ORIENTATION) | bit(TVMETA_EXPOSURE_TIME) | bit(TVMETA_F_NUMBER) | bit(TVMETA_CAPTURE_TIME) |
            bit(TVMETA_LENS));
    add("unreadable.jpg", {},
        {{34855, 3, 100, le32(0xFFFFFF00)},
         t.textEntry(36867, "2024:06:21 20:41:07"),
         {36881, 2, 7, le32(0xFFFFFF00)},
         {37521, 2, 100, le32(0xFFFFFF00)}},
        {{"dateTimeOriginal", "\"2024:06:21 20:41:07\""}},
        bit(TVMETA_ISO_SPEED) | bit(TVMETA_UTC_OFFSET) | bit(TVMETA_SUB_SECOND));
    add("digitized.jpg", {},
        {t.textEntry(36868, "2023-12-31T23:59:60"), t.textEntry(36882, "-03:30"), t.textEntry(37522, "123456789012")},
        {{"dateTimeOriginal", "\"2024:01:01 00:00:00\""}, {"utcOffset", "\"-03:30\""}, {"subSecond", "\"123456789\""}});
    // 63 bytes of UTF-8, and one more letter of two; Latin-1 becomes UTF-8.
    add("long.jpg", {t.textEntry(271, Bytes(62, 'm') + "\xC3\xA9"), t.textEntry(272, "caf\xE9")},
        {t.textEntry(42036, repeated("\xC3\xA9", 600, "x"))},
        {{"make", '"' + std::string(62, 'm') + '"'},
         {"model", "\"caf\xC3\xA9\""},
         {"lens", '"' + repeated("\xC3\xA9", 63, "x") + '"'}},
        bit(TVMETA_MAKE) | bit(TVMETA_LENS));
    const Bytes lens = "TV \xE2\x80\x93 " + Bytes(119, 'l') + "\xE2\x80\x93 50mm"; // 126 bytes before the second dash
    photos.push_back({"xmp-lens.jpg",
                      jpeg(xmpSegment(xmp("<aux:Lens>" + lens + "</aux:Lens>"))),
                      {{"container", "\"JPEG\""}, {"lens", '"' + lens.substr(0, 126) + '"'}},
                      {{TVMETA_XMP, xmp("<aux:Lens>" + lens + "</aux:Lens>")}},
                      TVMETA_OK,
                      bit(TVMETA_LENS)});
    const auto addDescribed = [&](const char* name, const Bytes& description, const Fields& derived) {
        Tiff tiff;
        photos.push_back({name,
                          tiff.finish(tiff.add(
                              {tiff.longEntry(256, 600), tiff.longEntry(257, 400), tiff.textEntry(270, description)})),
                          joined({container("TIFF", 600, 400), derived, {{"description", '"' + description + '"'}}}),
                          {}});
    };
    addDescribed("described.tif", "a, b, c, d, e, f, g, 1/250s, R30, G30, B30",
                 {{"exposureTime", "0.004"}, {"isoSpeed", "400"}, {"derived", "\"exposureTime isoSpeed\""}});
    addDescribed("captioned.tif", "a, b, c, d, e, f, g, sunset, R30, G30, B30", {});
    // Inside of the frame header.
    const Bytes whole = jpegOf(cameraTiff(t));
    photos.push_back({"cut.jpg",
                      whole.substr(0, whole.size() - 71),
                      joined({Camera, {{"container", "\"JPEG\""}}}),
                      {{TVMETA_EXIF, cameraTiff(t)}},
                      TVMETA_BROKEN});
}

inline std::vector<Photograph> photographs() {
    std::vector<Photograph> photos = {completeJpeg()};
    addTiffs(photos);
    addPhotoshopFiles(photos);
    addRawFiles(photos);
    addHeifs(photos);
    addJpegXls(photos);
    addChunked(photos);
    addUnusual(photos);
    return photos;
}

// Files that are recognised and refused.
inline std::vector<Photograph> refusedFiles() {
    std::vector<Photograph> files;
    const struct {
        const char* name;
        Bytes start;
        const char* format;
    } rows[] = {
        {"a.x3f", "FOVb" + zeros(60), "X3F"},
        {"a.crw", "II" + le32(26) + "HEAPCCDR" + zeros(50), "CRW"},
        {"a.mrw", Bytes("\0MRM", 4) + zeros(60), "MRW"},
        {"a.iiq", "II" + le16(42) + zeros(4) + "IIII" + zeros(52), "IIQ"},
        {"b.iiq", "MM" + be16(42) + zeros(4) + "MMMM" + zeros(52), "IIQ"},
        {"moov.mov", be32(8) + "moov" + zeros(56), "QuickTime"},
        {"mdat.mov", be32(8) + "mdat" + zeros(56), "QuickTime"},
        {"wide.mov", be32(8) + "wide" + zeros(56), "QuickTime"},
        {"a.j2c", "\xFF\x4F\xFF\x51" + zeros(60), "JPEG 2000"},
        {"b.hdr", "#?RGBE\n" + zeros(57), "Radiance"},
        {"a.gif", "GIF89a" + zeros(58), "GIF"},
        {"a.mp4", box("ftyp", "isom" + zeros(52)), "MP4"},
        {"a.mov", box("ftyp", "qt  " + zeros(52)), "QuickTime"},
        {"a.avi", "RIFF" + zeros(4) + "AVI " + zeros(52), "AVI"},
        {"a.jp2", be32(12) + "jP  \r\n\x87\n" + zeros(52), "JPEG 2000"},
        {"a.bmp", "BM" + zeros(62), "BMP"},
        {"a.exr", "v/1\x01" + zeros(60), "OpenEXR"},
        {"a.hdr", "#?RADIANCE\n" + zeros(53), "Radiance"},
        {"a.pdf", "%PDF-1.7" + zeros(56), "PDF"},
    };
    for (const auto& row : rows) {
        files.push_back(
            {row.name, row.start, {{"container", '"' + std::string(row.format) + '"'}}, {}, TVMETA_REFUSED_KIND});
    }
    return files;
}

} // namespace test
