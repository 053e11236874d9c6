// What containers lead to: sizes, damaged places, packets in pieces, tags.
#include "testing/photo_sources.h"
#include "testing/photographs_containers.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <vector>

using namespace test;

namespace {

// Sizes and ratios of codestreams, as numbers of some bits from the lowest on (ISO/IEC 18181-1, annex B).
TEST(Containers, SizesOfJpegXl) {
    struct Number {
        unsigned bits, value;
    };
    const struct {
        std::vector<Number> numbers; // ratio and "all default" are those of 3 and of 1 bit
        int width, height;
    } rows[] = {
        {{{1, 1}, {5, 15}, {3, 0}, {5, 4}, {1, 1}}, 40, 128},
        {{{1, 1}, {5, 15}, {3, 1}, {1, 1}}, 128, 128},
        {{{1, 1}, {5, 15}, {3, 2}, {1, 1}}, 153, 128}, // 12:10, rounded down
        {{{1, 1}, {5, 15}, {3, 3}, {1, 1}}, 170, 128},
        {{{1, 1}, {5, 15}, {3, 4}, {1, 1}}, 192, 128},
        {{{1, 1}, {5, 15}, {3, 5}, {1, 1}}, 227, 128},
        {{{1, 1}, {5, 15}, {3, 6}, {1, 1}}, 160, 128},
        {{{1, 1}, {5, 15}, {3, 7}, {1, 1}}, 256, 128},
        {{{1, 0}, {2, 0}, {9, 511}, {3, 0}, {2, 1}, {13, 8191}, {1, 1}}, 8192, 512},
        {{{1, 0}, {2, 2}, {18, 99999}, {3, 0}, {2, 3}, {30, 999999}, {1, 1}}, 1000000, 100000},
        {{{1, 0}, {2, 3}, {30, (1U << 30) - 1}, {3, 1}, {1, 1}}, 1 << 30, 1 << 30},
        {{{1, 0}, {2, 3}, {30, (1U << 30) - 1}, {3, 7}, {1, 1}}, 0, 0}, // 2^31 wide
    };
    for (const auto& row : rows) {
        Bytes bytes = "\xFF\x0A" + zeros(14);
        std::size_t at = 16;
        for (const Number& number : row.numbers) {
            for (unsigned i = 0; i < number.bits; ++i, ++at) {
                const char bit = static_cast<char>((number.value >> i & 1U) << at % 8);
                bytes[at / 8] = static_cast<char>(bytes[at / 8] | bit);
            }
        }
        const auto [result, record] = readPhotoOf(bytes);
        EXPECT_EQ(result, TVMETA_OK) << row.width;
        EXPECT_EQ(record.width, row.width);
        EXPECT_EQ(record.height, row.height);
    }
}

// The first place where a file is damaged: a header, a chunk, a box, a directory.
TEST(Containers, DamagedPlaces) {
    const Bytes exif = exifItem(cameraTiff(Tiff(false)));
    const Bytes image = heif({}, exif, Packet);
    const Bytes headless = heif({}, be32(1000) + exif.substr(4), Packet);
    const Bytes section = psd(resource(0x0404, IptcBlock));
    const Bytes chunks = png(pngChunk("eXIf", cameraTiff(Tiff())));
    const Bytes raw = raf(plainJpeg(600, 400, 1));
    const Bytes file = webp(webpChunk("VP8L", "\x2F" + le32(639 | 479U << 14) + zeros(10)));
    const Bytes whole = "\xFF\xD8" + exifSegment(cameraTiff(Tiff()));
    const struct {
        const char* what;
        Bytes bytes;
        std::size_t place;
    } rows[] = {
        {"PSD, header", section.substr(0, 29), 0},
        {"PSD, colours beyond the file", Bytes(section).replace(26, 4, be32(1000)), 30 + 1000},
        {"PSD, resources beyond the file", section.substr(0, section.size() - 1), 34},
        {"PNG, header of a chunk", chunks.substr(0, 40), 33},
        {"PNG, content of a chunk", chunks.substr(0, 60), 33},
        {"WebP, content of a chunk", file.substr(0, file.size() - 2), 12},
        {"JPEG XL, size of a box below its header", jxl(be32(7) + "jxlc"), 32},
        {"JPEG XL, large size of a box below its header", jxl(be32(1) + "jxlc" + be64(15)), 32},
        {"JPEG XL, large size that is cut", jxl(be32(1) + "jxlc" + zeros(7)), 32},
        {"JPEG XL, EXIF beyond its box", jxl(box("Exif", be32(1) + "x")), 40},
        {"HEIF without tables", box("ftyp", "heic" + zeros(8)), 0},
        {"HEIF with empty tables", box("ftyp", "heic" + zeros(8)) + versionBox("meta", 0, ""), 0},
        {"HEIF, EXIF beyond its item", headless, headless.find(be32(1000) + "Exif")},
        {"HEIF, EXIF beyond the file", image.substr(0, image.find(exif) + 1), image.find("iloc") + 4},
        {"CR3 without movie", box("ftyp", "crx " + zeros(8)), 0},
        {"RAF, header", raw.substr(0, 91), 0},
        {"RAF, preview beyond the file", raw.substr(0, raw.size() - 65), 108},
        {"RAF, empty preview", Bytes(raw).replace(88, 4, be32(0)), 108},
        {"RAF, preview after the file", Bytes(raw).replace(84, 4, be32(99999)), 99999},
        {"TIFF, directory beyond the file", Tiff().finish(500), 0},
        {"TIFF, directory across the end of the file", Tiff().finish(8) + "x", 8},
        {"JPEG, end", whole, whole.size()},
        {"JPEG, short segment", "\xFF\xD8\xFF\xE1" + be16(1) + zeros(9), 2},
        {"JPEG, segment beyond the file", "\xFF\xD8\xFF\xE1" + be16(5) + "xy", 2},
        {"JPEG, marker 0", "\xFF\xD8\xFF" + zeros(1) + be16(2) + "\xFF\xD9", 2},
        {"JPEG, no marker", "\xFF\xD8\xFF\xE1" + be16(3) + "xy\xE1" + be16(2), 7},
    };
    for (const auto& row : rows) {
        const auto [result, record] = readPhotoOf(row.bytes);
        EXPECT_EQ(result, TVMETA_BROKEN) << row.what;
        EXPECT_EQ(record.brokenAt, static_cast<std::int64_t>(row.place)) << row.what;
    }
}

// A directory claims three entries, of which its segment has two. The bytes after the segment look like a third.
TEST(Containers, DirectoriesEndWithTheirBlock) {
    Tiff tiff;
    Bytes structure = tiff.finish(tiff.add({tiff.shortEntry(274, 6), tiff.shortEntry(296, 2)}));
    structure = structure.substr(0, 8) + le16(3) + structure.substr(10, 24);
    const Bytes after = le16(512) + le16(3) + le32(1) + le32(1) + zeros(4000);
    const Bytes bytes = "\xFF\xD8" + exifSegment(structure) + after;
    const tvmeta_Source source = memorySource(bytes);
    EXPECT_EQ(tvmeta_list_tags(&source, nullptr, nullptr, 0), 2);
    const auto [result, record] = readPhotoOf(bytes);
    EXPECT_EQ(result, TVMETA_BROKEN);
    EXPECT_EQ(record.orientation, 6);
    EXPECT_EQ(record.brokenAt, 2 + 4 + 6 + 8 + 2 + 24);
}

// A TIFF file has none, and any number of them is read.
TEST(Containers, ExifBlocks) {
    const Bytes tiff = cameraTiff(Tiff());
    for (const int blocks : {0, 1, 10}) {
        Bytes chunks;
        for (int i = 0; i < blocks; ++i) {
            chunks += pngChunk("eXIf", tiff);
        }
        const auto [result, record] = readPhotoOf(blocks > 0 ? png(chunks) : tiff);
        EXPECT_EQ(result, TVMETA_OK) << blocks;
        EXPECT_STREQ(record.model, "TV-100") << blocks;
        EXPECT_EQ(record.blocks[TVMETA_EXIF].pieces, blocks == 1 ? 1 : 0) << blocks; // of several, none is the block
    }
}

// An extended packet is joined if the packet names it, and its RDF element declares no names that would be lost.
TEST(Containers, ExtendedXmp) {
    const Bytes moved = "<rdf:Description>more</rdf:Description>";
    const Bytes rdf = "<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>";
    const Bytes extension = "<x:xmpmeta>" + rdf + moved + "</rdf:RDF></x:xmpmeta>";
    const Bytes declaring = "<rdf:RDF xmlns:rdf='r' xmlns:dc='d'>" + moved + "</rdf:RDF>";
    const Bytes other = "<rdf:RDF xmlns:dc='d'>" + moved + "</rdf:RDF>";
    const auto packet = [&](const Bytes& reference, const Bytes& more = "") {
        return "<x:xmpmeta>" + rdf + "<rdf:Description " + reference + "/>" + more + "</rdf:RDF></x:xmpmeta>";
    };
    const Bytes name = "xmpNote:HasExtendedXMP";
    const Bytes quoted = packet(name + "='" + Guid + "'");
    const Bytes element = "<" + name + ">" + Guid + "</" + name + ">";
    const Bytes cut = packet(name + "='" + Guid.substr(1) + "' ");
    const Bytes unnamed = packet(name + "='" + Bytes(32, '7') + "'");
    const Bytes unclosed = "<rdf:RDF " + name + "='" + Guid + "'>";
    const struct {
        const char* what;
        Bytes packet, extension, joined;
    } rows[] = {
        {"attribute", quoted, extension, packet("", moved)},
        {"quotation marks", packet(name + "=\"" + Guid + "\""), extension, packet("", moved)},
        {"element", packet("", element), extension, packet("", moved)},
        {"no reference", packet(""), extension, packet("")},
        {"cut reference", cut, extension, cut},
        {"reference to another", unnamed, extension, unnamed},
        {"more names", quoted, declaring, quoted + declaring},
        {"other names", quoted, other, quoted + other},
        {"no names", quoted, "<rdf:RDF>" + moved + "</rdf:RDF>", packet("", moved)},
        {"no RDF", quoted, "<more/>", quoted + "<more/>"},
        {"no end of RDF", quoted, rdf + moved, quoted + rdf + moved},
        {"no end of the packet", unclosed, extension, unclosed + extension},
        {"no packet", "", extension, ""},
    };
    for (const auto& row : rows) {
        const Bytes bytes = jpeg((row.packet.empty() ? "" : xmpSegment(row.packet)) +
                                 extensionSegment(Guid, row.extension, 0, row.extension.size()));
        const tvmeta_Source source = memorySource(bytes);
        Bytes joined(1000, '\0');
        const std::int64_t size = tvmeta_read_block(&source, nullptr, TVMETA_XMP, joined.data(), std::ssize(joined));
        EXPECT_EQ(joined.substr(0, static_cast<std::size_t>(size)), row.joined) << row.what;
    }
}

// The places are those that `exiftool -v3 examples/scene.jpg` prints.
TEST(Tags, Places) {
    tvmeta_Source source;
    ASSERT_EQ(tvmeta_open(TVMETA_EXAMPLES "/scene.jpg", &source), TVMETA_OK);
    std::array<tvmeta_Tag, 40> tags{};
    EXPECT_EQ(tvmeta_list_tags(&source, nullptr, tags.data(), 5), 36);
    EXPECT_EQ(tags[4].tag, 0x011B);
    EXPECT_EQ(tags[5].tag, 0);
    EXPECT_EQ(tvmeta_list_tags(&source, nullptr, tags.data(), std::ssize(tags)), 36);
    tvmeta_close(&source);
    const struct {
        std::size_t index;
        tvmeta_Tag tag;
    } expected[] = {
        {0, {TVMETA_IMAGE, 0x010F, 2, 11, 0x98, 1, 0}},
        {2, {TVMETA_IMAGE, 0x0112, 3, 1, 0x48, 1, 0}},
        {8, {TVMETA_IMAGE, 0x8825, 4, 1, 0x90, 1, 0}},
        {9, {TVMETA_EXIF_DIRECTORY, 0x829A, 5, 1, 0x152, 1, 1}},
        {13, {TVMETA_EXIF_DIRECTORY, 0x9003, 2, 20, 0x162, 1, 1}},
        {20, {TVMETA_EXIF_DIRECTORY, 0xA405, 3, 1, 0x14A, 1, 1}},
        {21, {TVMETA_GPS_DIRECTORY, 0x0000, 1, 4, 0x188, 1, 2}},
        {23, {TVMETA_GPS_DIRECTORY, 0x0002, 5, 3, 0x1F0, 1, 2}},
        {30, {TVMETA_THUMBNAIL_IMAGE, 0x0103, 3, 1, 0x256, 1, 3}},
        {35, {TVMETA_THUMBNAIL_IMAGE, 0x0202, 4, 1, 0x292, 1, 3}},
    };
    for (const auto& row : expected) {
        EXPECT_EQ(std::memcmp(&tags[row.index], &row.tag, sizeof row.tag), 0) << row.index;
    }
}

// A chain of images and a list of children end at their limits.
TEST(Tags, OfChainsAndChildren) {
    Tiff tiff;
    std::uint32_t next = 0;
    for (int i = 0; i < 6; ++i) {
        next = tiff.add({tiff.shortEntry(274, 1)}, next);
    }
    const Bytes chain = tiff.finish(next);
    const tvmeta_Source chained = memorySource(chain);
    EXPECT_EQ(tvmeta_list_tags(&chained, nullptr, nullptr, 0), 4);

    Tiff family;
    Bytes children;
    for (int i = 0; i < 40; ++i) {
        children += family.n32(family.add({family.shortEntry(274, 1)}));
    }
    const Bytes parent = family.finish(family.add({{330, 4, 40, children}}));
    const tvmeta_Source related = memorySource(parent);
    EXPECT_EQ(tvmeta_list_tags(&related, nullptr, nullptr, 0), 32); // 31 children
}

// Values outside of the structure and types that no standard has are listed without a place.
TEST(Tags, WithoutPlace) {
    Tiff tiff;
    const std::uint32_t first = tiff.add({{271, 2, 100, le32(40)}, {272, 99, 1, "x"}, {305, 2, 5, "12345"}});
    const Bytes bytes = tiff.finish(first);
    const tvmeta_Source source = memorySource(bytes);
    std::array<tvmeta_Tag, 3> tags{};
    EXPECT_EQ(tvmeta_list_tags(&source, nullptr, tags.data(), 3), 3);
    EXPECT_TRUE(tags[0].position == -1 && tags[1].position == -1);
    EXPECT_EQ(tags[2].position, static_cast<std::int64_t>(bytes.find("12345")));
}

} // namespace
