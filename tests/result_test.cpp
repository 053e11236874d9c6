// Results of photographs: which entries they keep, byte for byte, and which they name as lost.
#include "testing/photographs_containers.h"
#include "testing/results.h"
#include "testing/tiff_fields.h"

#include <algorithm>
#include <gtest/gtest.h>

using namespace test;

namespace {

constexpr int Kept = 0;
constexpr int Silent = -1; // describes the photograph's own pixels or file

// One row for each kind of row of the table of kept tags. Others: the reason of the loss.
const struct {
    const char* what;
    int directory;
    Tiff::Entry entry;
    int outcome;
} Rules[] = {
    {"sensor data of RW2", TVMETA_IMAGE, {17, 1, 1, "\1"}, TVMETA_LOSS_PRIVATE},
    {"compression", TVMETA_IMAGE, {259, 1, 1, "\7"}, Silent},
    {"artist", TVMETA_IMAGE, {315, 2, 4, Bytes("Ann\0", 4)}, Kept},
    {"extra samples", TVMETA_IMAGE, {338, 1, 1, "\1"}, Silent},
    {"print matching", TVMETA_IMAGE, {50341, 7, 4, "Prin"}, Silent},
    {"DNG version", TVMETA_IMAGE, {50706, 1, 4, "\1\4\1\1"}, Silent},
    {"black level of DNG", TVMETA_IMAGE, {50714, 1, 1, "\5"}, Silent},
    {"private tag of the image", TVMETA_IMAGE, {60000, 1, 1, "\5"}, TVMETA_LOSS_PRIVATE},
    {"private tag of EXIF", TVMETA_EXIF_DIRECTORY, {60000, 1, 1, "\5"}, Kept},
    {"zone of the modification time", TVMETA_EXIF_DIRECTORY, {36880, 2, 4, Bytes("+1 \0", 4)}, Silent},
    {"compressed bits", TVMETA_EXIF_DIRECTORY, {37122, 1, 1, "\4"}, Silent},
    {"subject area", TVMETA_EXIF_DIRECTORY, {37396, 1, 2, "\1\1"}, Kept},
    {"maker note with offsets", TVMETA_EXIF_DIRECTORY, {37500, 7, 8, "TVCAMERA"}, TVMETA_LOSS_MAKER_NOTE},
    {"Nikon, type 1", TVMETA_EXIF_DIRECTORY, {37500, 7, 8, Bytes("Nikon\0\1\0", 8)}, TVMETA_LOSS_MAKER_NOTE},
    {"Nikon, type 3", TVMETA_EXIF_DIRECTORY, {37500, 7, 8, Bytes("Nikon\0\2\x11", 8)}, Kept},
    {"Olympus", TVMETA_EXIF_DIRECTORY, {37500, 7, 10, Bytes("OLYMPUS\0II", 10)}, Kept},
    {"Olympus, old", TVMETA_EXIF_DIRECTORY, {37500, 7, 8, Bytes("OLYMP\0\1\0", 8)}, TVMETA_LOSS_MAKER_NOTE},
    {"OM System", TVMETA_EXIF_DIRECTORY, {37500, 7, 12, Bytes("OM SYSTEM\0\0\0", 12)}, Kept},
    {"Fujifilm", TVMETA_EXIF_DIRECTORY, {37500, 7, 12, Bytes("FUJIFILM\x0C\0\0\0", 12)}, Kept},
    {"Apple", TVMETA_EXIF_DIRECTORY, {37500, 7, 14, Bytes("Apple iOS\0\0\1MM", 14)}, Kept},
    {"Pentax", TVMETA_EXIF_DIRECTORY, {37500, 7, 10, Bytes("PENTAX \0MM", 10)}, Kept},
    {"Pentax, old", TVMETA_EXIF_DIRECTORY, {37500, 7, 6, Bytes("AOC\0MM", 6)}, TVMETA_LOSS_MAKER_NOTE},
    {"fraction of the modification time", TVMETA_EXIF_DIRECTORY, {37520, 2, 2, Bytes("5\0", 2)}, Silent},
    {"sound file", TVMETA_EXIF_DIRECTORY, {40964, 2, 13, Bytes("DSC00000.WAV\0", 13)}, Silent},
    {"EXIF version", TVMETA_EXIF_DIRECTORY, {36864, 7, 4, "0220"}, Kept},
    {"gamma", TVMETA_EXIF_DIRECTORY, {42240, 1, 1, "\2"}, Silent},
    {"padding", TVMETA_EXIF_DIRECTORY, {59932, 7, 4, "\x1C\xEA\1\1"}, Silent},
    {"GPS version", TVMETA_GPS_DIRECTORY, {0, 1, 4, Bytes("\2\2\0\0", 4)}, Kept},
    {"north", TVMETA_GPS_DIRECTORY, {1, 2, 2, Bytes("N\0", 2)}, Kept},
    {"unknown GPS tag", TVMETA_GPS_DIRECTORY, {65534, 1, 1, "\1"}, Kept},
    {"last GPS tag", TVMETA_GPS_DIRECTORY, {65535, 1, 1, "\1"}, TVMETA_LOSS_PRIVATE},
    {"interoperability", TVMETA_INTEROPERABILITY, {1, 2, 4, Bytes("R98\0", 4)}, Kept},
    {"size of a related image", TVMETA_INTEROPERABILITY, {4097, 1, 1, "\5"}, Silent},
    {"no items", TVMETA_EXIF_DIRECTORY, {37385, 3, 0, ""}, Silent},
    {"unknown type", TVMETA_EXIF_DIRECTORY, {37385, 14, 1, "\1"}, TVMETA_LOSS_BROKEN},
    {"value outside of the file", TVMETA_EXIF_DIRECTORY, {37386, 5, 1, "\1\1\1\1"}, TVMETA_LOSS_BROKEN},
    {"count beyond the file", TVMETA_EXIF_DIRECTORY, {37386, 4, 0xFFFFFFFF, "\1\1\1\1"}, TVMETA_LOSS_BROKEN},
};

// Where the entries of a directory are in the parts of a photograph and in the fields of a result.
struct Place {
    std::vector<Tiff::Entry> PhotoParts::*entries;
    int fields;
};

Place placeOf(int directory) {
    return directory == TVMETA_IMAGE            ? Place{&PhotoParts::image, ImageFields}
           : directory == TVMETA_EXIF_DIRECTORY ? Place{&PhotoParts::exif, ExifFields}
           : directory == TVMETA_GPS_DIRECTORY  ? Place{&PhotoParts::gps, GpsFields}
                                                : Place{&PhotoParts::interoperability, InteroperabilityFields};
}

// Adds an entry to a directory of the photograph, beside one that is kept.
Bytes photoWith(int directory, const Tiff::Entry& entry, bool little) {
    const Tiff tiff(little);
    PhotoParts parts;
    parts.image = {tiff.textEntry(272, "TV-100")};
    parts.exif = {tiff.shortEntry(34850, 2)};
    (parts.*(placeOf(directory).entries)).push_back(entry);
    return photoOf(parts, little);
}

TEST(Result, KeepsWhatIsTrueOfIt) {
    for (const bool little : {true, false}) {
        for (const auto& rule : Rules) {
            const Bytes photo = photoWith(rule.directory, rule.entry, little);
            const Saved saved = save(photo);
            SCOPED_TRACE(Bytes(rule.what) + (little ? ", II" : ", MM"));
            const Losses named = {{rule.directory, static_cast<std::int32_t>(rule.entry.tag), rule.outcome}};
            EXPECT_EQ(saved.losses, rule.outcome > 0 ? named : Losses());
            const Bytes block = buildExif(photo);
            for (const Bytes* const bytes : {&saved.file, &block}) {
                const TiffFields fields(*bytes);
                const TiffField* const field = fields.find(placeOf(rule.directory).fields, rule.entry.tag);
                EXPECT_EQ(fields.value(ImageFields, 272), Bytes("TV-100\0", 7));
                EXPECT_EQ(fields.value(ExifFields, 34850), le16(2));
                if (rule.outcome == Kept) {
                    ASSERT_NE(field, nullptr);
                    EXPECT_EQ(*field, (TiffField{rule.entry.type, rule.entry.count, rule.entry.value}));
                } else if (rule.entry.tag != 259 || bytes == &block) { // a TIFF file has its own compression
                    EXPECT_EQ(field, nullptr);
                }
            }
        }
    }
}

TEST(Result, ConvertsEveryType) {
    const struct {
        unsigned type;
        std::uint32_t count;
        Bytes big, little;
    } types[] = {
        {1, 5, "abcde", "abcde"},
        {2, 3, Bytes("ab\0", 3), Bytes("ab\0", 3)},
        {3, 3, "\x01\x02\x03\x04\x05\x06", "\x02\x01\x04\x03\x06\x05"},
        {4, 1, "\x01\x02\x03\x04", "\x04\x03\x02\x01"},
        {5, 1, "\x01\x02\x03\x04\x05\x06\x07\x08", "\x04\x03\x02\x01\x08\x07\x06\x05"},
        {6, 2, "\xFF\xFE", "\xFF\xFE"},
        {7, 5, "abcde", "abcde"},
        {8, 2, "\xFF\xFE\x01\x02", "\xFE\xFF\x02\x01"},
        {9, 2, "\xFF\xFE\xFD\xFC\x01\x02\x03\x04", "\xFC\xFD\xFE\xFF\x04\x03\x02\x01"},
        {10, 1, "\xFF\x02\x03\x04\x05\x06\x07\x08", "\x04\x03\x02\xFF\x08\x07\x06\x05"},
        {11, 1, "\x3F\x80\x01\x02", "\x02\x01\x80\x3F"},
        {12, 1, "\x01\x02\x03\x04\x05\x06\x07\x08", "\x08\x07\x06\x05\x04\x03\x02\x01"},
        {13, 1, "\x01\x01\x01\x01", ""},
        {129, 5, "\xC3\xA9te\x01", "\xC3\xA9te\x01"},
    };
    for (const bool little : {false, true}) {
        for (const auto& row : types) {
            const Saved saved = save(
                photoWith(TVMETA_EXIF_DIRECTORY, {50000, row.type, row.count, little ? row.little : row.big}, little));
            if (row.type == 13) { // the offset of a directory says nothing in another file
                EXPECT_EQ(saved.losses, (Losses{{TVMETA_EXIF_DIRECTORY, 50000, TVMETA_LOSS_BROKEN}}));
                continue;
            }
            EXPECT_EQ(saved.status, 0) << row.type;
            const TiffFields fields(saved.file);
            const TiffField* const field = fields.find(ExifFields, 50000);
            ASSERT_NE(field, nullptr) << row.type;
            EXPECT_EQ(*field, (TiffField{row.type, row.count, row.little})) << row.type;
        }
    }
}

TEST(Result, KeepsLargeValuesAndDirectories) {
    const Tiff tiff(false);
    Bytes big, little;
    for (unsigned i = 0; i < 70'000; ++i) {
        big += be16(i & 0xFFFF);
        little += le16(i & 0xFFFF);
    }
    PhotoParts parts;
    for (unsigned tag = 50'000; tag < 50'500; ++tag) {
        parts.exif.push_back(tiff.longEntry(tag, tag * 1000));
    }
    parts.exif.push_back({60'000, 3, 70'000, big});
    const Saved saved = save(photoOf(parts, false));
    const TiffFields fields(saved.file);
    EXPECT_EQ(saved.status, 0);
    EXPECT_EQ(fields.size(ExifFields), 501U + 5U); // two versions, colour space, width and height
    EXPECT_EQ(fields.value(ExifFields, 60'000), little);
    EXPECT_EQ(fields.value(ExifFields, 50'499), le32(50'499'000));
    EXPECT_EQ(fields.value(ExifFields, 36864), "0232");
    EXPECT_EQ(fields.value(ExifFields, 40960), "0100");
    EXPECT_EQ(fields.value(ExifFields, 40961), le16(0xFFFF));
    EXPECT_EQ(fields.value(ExifFields, 40962), le32(2));
    EXPECT_EQ(fields.value(ExifFields, 40963), le32(1));
}

// Of an entry that is there twice, the first readable one counts. Directories in loops end.
TEST(Result, SurvivesHostileDirectories) {
    const Tiff tiff;
    PhotoParts twice;
    twice.exif = {
        {37386, 5, 1, Bytes("\0\0\0\1", 4)}, tiff.rationalEntry(37386, 50, 1), tiff.rationalEntry(37386, 7, 1)};
    const Saved second = save(photoOf(twice));
    EXPECT_EQ(second.losses, (Losses{{TVMETA_EXIF_DIRECTORY, 37386, TVMETA_LOSS_BROKEN}}));
    EXPECT_EQ(TiffFields(second.file).value(ExifFields, 37386), le32(50) + le32(1));

    PhotoParts loop;
    loop.image = {tiff.textEntry(271, "TV"), tiff.longEntry(34665, 8), tiff.longEntry(34853, 8)};
    const Saved self = save(photoOf(loop));
    EXPECT_EQ(self.status, 0);
    EXPECT_EQ(TiffFields(self.file).value(ImageFields, 271), Bytes("TV\0", 3));
    EXPECT_EQ(TiffFields(self.file).find(ImageFields, 34665), nullptr);

    PhotoParts dangling; // nobody knows what the EXIF directory has
    dangling.image = {tiff.textEntry(271, "TV"), tiff.longEntry(34665, 1 << 20)};
    const Saved broken = save(photoOf(dangling));
    EXPECT_EQ(broken.losses, (Losses{{-1 - TVMETA_EXIF, 0, TVMETA_LOSS_BROKEN}}));
    EXPECT_EQ(TiffFields(broken.file).value(ImageFields, 271), Bytes("TV\0", 3));

    PhotoParts overlapping; // both values are the same bytes, the header
    overlapping.exif = {{50000, 4, 2, ""}, {50001, 7, 8, ""}};
    Bytes photo = photoOf(overlapping);
    for (const Bytes& entry : {le16(50000) + le16(4) + le32(2), le16(50001) + le16(7) + le32(8)}) {
        photo.replace(photo.find(entry) + 8, 4, le32(0));
    }
    const Saved shared = save(photo);
    EXPECT_EQ(shared.status, 0);
    EXPECT_EQ(TiffFields(shared.file).value(ExifFields, 50000), photo.substr(0, 8));
    EXPECT_EQ(TiffFields(shared.file).value(ExifFields, 50001), photo.substr(0, 8));

    PhotoParts greedy; // 70 values of 1 MiB that are all the same bytes: 64 are kept
    greedy.exif = {{49999, 7, 1 << 20, zeros(1 << 20)}};
    for (unsigned tag = 50'000; tag < 50'070; ++tag) {
        greedy.exif.push_back({tag, 7, 1 << 20, le32(0)});
    }
    EXPECT_EQ(save(photoOf(greedy)).status, 71 - 64);
}

// Compressed blocks are not read, so a result does not have them.
TEST(Result, NamesCompressedBlocks) {
    const tvmeta_Loss exif = {-1 - TVMETA_EXIF, 0, TVMETA_LOSS_BLOCK}, xmp = {-1 - TVMETA_XMP, 0, TVMETA_LOSS_BLOCK};
    const Bytes packet = pngText(zeros(40), true);
    const Bytes profile = pngChunk("zTXt", Bytes("Raw profile type exif\0", 22) + zeros(30));
    EXPECT_EQ(save(png(packet)).losses, Losses{xmp});
    EXPECT_EQ(save(png(profile)).losses, Losses{exif});
    EXPECT_EQ(save(png(packet + profile)).losses, (Losses{exif, xmp}));
    EXPECT_EQ(save(png(pngText(Packet))).losses, Losses());
}

TEST(Result, CountsAllLosses) {
    PhotoParts parts;
    for (unsigned tag = 60'000; tag < 60'003; ++tag) {
        parts.image.push_back({tag, 1, 1, "\1"});
    }
    const Bytes photo = photoOf(parts);
    for (std::int32_t capacity = 0; capacity <= 4; ++capacity) {
        tvmeta_Source source;
        tvmeta_memory(photo.data(), static_cast<std::int64_t>(photo.size()), &source);
        const tvmeta_Result result = smallResult(nullptr, &source);
        Losses losses(5, {77, 77, 77});
        std::int32_t count = -1;
        EXPECT_GT(tvmeta_build_exif(&result, nullptr, 0, losses.data(), capacity, &count), 0);
        EXPECT_EQ(count, 3);
        for (std::int32_t i = 0; i < 5; ++i) {
            const tvmeta_Loss expected = {TVMETA_IMAGE, 60'000 + i, TVMETA_LOSS_PRIVATE};
            EXPECT_EQ(losses[static_cast<std::size_t>(i)],
                      i < std::min(capacity, 3) ? expected : (tvmeta_Loss{77, 77, 77}))
                << capacity;
        }
    }
}

// What the caller says, what the photograph says, and what the result has.
TEST(Result, PrefersTheCallersValues) {
    const Tiff tiff;
    PhotoParts parts;
    parts.image = {tiff.shortEntry(274, 6),          tiff.rationalEntry(282, 72, 1),
                   tiff.rationalEntry(283, 72, 1),   tiff.shortEntry(296, 3),
                   tiff.textEntry(305, "cam 1.0"),   tiff.textEntry(306, "2001:01:01 00:00:00"),
                   tiff.longEntry(34675, 0x11111111)};
    parts.exif = {tiff.shortEntry(37385, 1),
                  tiff.shortEntry(40961, 1),
                  {37396, 3, 2, le16(1) + le16(0)},
                  tiff.shortEntry(40962, 9)};
    const Bytes photo = photoOf(parts);
    const Bytes desc = be32(1) + "desc" + be32(144) + be32(17) + "desc" + zeros(4) + be32(5);
    const Bytes start = zeros(16) + "GRAY" + zeros(108) + desc, gray = start + "Gray" + zeros(1),
                srgb = start + "sRGB" + zeros(1);
    const Bytes vertical = photoOf({{tiff.rationalEntry(283, 72, 1)}, {}, {}, {}});
    const Bytes unit = photoOf({{tiff.shortEntry(296, 3)}, {}, {}, {}});
    const Bytes north = photoOf({{}, {}, {{1, 2, 2, Bytes("N\0", 2)}}, {}});
    const Bytes rgb = zeros(16) + "RGB " + zeros(108);
    const Change none = [](auto&) {};
    const Change floats = [](auto& r) { r.bitsCode = 3216, r.width = 1; };
    const Change fine = [](auto& r) { r.resolution = 200; };
    const Change grayProfile = [&](auto& r) { r.icc = gray.data(), r.iccSize = 161; };
    const Change srgbProfile = [&](auto& r) { r.icc = srgb.data(), r.iccSize = 161; };
    constexpr int Image = ImageFields, Exif = ExifFields;
    const struct {
        const char* what;
        Bytes photo;
        Change change;
        int directory;
        unsigned tag;
        Bytes value;
    } rows[] = {
        {"photograph's software", photo, none, Image, 305, Bytes("cam 1.0\0", 8)},
        {"caller's software", photo, [](auto& r) { r.software = "app"; }, Image, 305, Bytes("app\0", 4)},
        {"no software", "", none, Image, 305, "absent"},
        {"float text", "", floats, Image, 305, Bytes("Tonalvista 32-bit Float Output\0", 31)},
        {"float text against the photograph", photo, floats, Image, 305, Bytes("cam 1.0\0", 8)},
        {"no date of its own", photo, none, Image, 306, "absent"},
        {"caller's date", photo, [](auto& r) { r.modifyDate = "2024:02:29 23:59:59"; }, Image, 306,
         Bytes("2024:02:29 23:59:59\0", 20)},
        {"photograph's resolution", photo, none, Image, 282, le32(72) + le32(1)},
        {"photograph's unit", photo, none, Image, 296, le16(3)},
        {"caller's resolution", photo, fine, Image, 283, le32(200'000) + le32(1000)},
        {"caller's unit", photo, fine, Image, 296, le16(2)},
        {"usual resolution", "", none, Image, 282, le32(300'000) + le32(1000)},
        {"orientation", photo, none, Image, 274, le16(1)},
        {"orientation 8", photo, [](auto& r) { r.orientation = 8; }, Image, 274, le16(8)},
        {"orientation 9", photo, [](auto& r) { r.orientation = 9; }, Image, 274, le16(1)},
        {"photograph's profile", photo, none, Image, 34675, "absent"},
        {"caller's profile", photo, grayProfile, Image, 34675, gray},
        {"profile of three channels", photo,
         [&](auto& r) { r.channels = 3, r.height = 0, r.icc = rgb.data(), r.iccSize = 128; }, Image, 34675, rgb},
        {"photograph's colour space", photo, none, Exif, 40961, le16(1)},
        {"colour space of a profile", photo, grayProfile, Exif, 40961, le16(0xFFFF)},
        {"colour space of sRGB", photo, srgbProfile, Exif, 40961, le16(1)},
        {"colour space of floats", photo, floats, Exif, 40961, le16(0xFFFF)},
        {"size", photo, none, Exif, 40962, le32(2)},
        {"no size", photo, [](auto& r) { r.height = 0; }, Exif, 40962, "absent"},
        {"size of one column", photo, [](auto& r) { r.width = 1; }, Exif, 40962, le32(1)},
        {"subject at the same size", photo, none, Exif, 37396, le16(1) + le16(0)},
        {"subject without a size", photo, [](auto& r) { r.height = 0; }, Exif, 37396, le16(1) + le16(0)},
        {"vertical resolution alone", vertical, none, Image, 282, "absent"},
        {"unit alone", unit, none, Image, 282, "absent"},
        {"version of a position", north, none, GpsFields, 0, Bytes("\2\3\0\0", 4)},
        {"subject at another size", photo, [](auto& r) { r.width = 1; }, Exif, 37396, "absent"},
    };
    for (const auto& row : rows) {
        const Saved saved = save(row.photo, row.change);
        ASSERT_EQ(saved.status, 0) << row.what;
        EXPECT_EQ(TiffFields(saved.file).value(row.directory, row.tag), row.value) << row.what;
    }
    // The result has one channel.
    const Saved mismatch = save(photo, [&](auto& r) { r.icc = rgb.data(), r.iccSize = 128; });
    EXPECT_EQ(mismatch.losses, (Losses{{-1 - TVMETA_ICC, 0, TVMETA_LOSS_BLOCK}}));
    EXPECT_EQ(TiffFields(mismatch.file).find(ImageFields, 34675), nullptr);
}

} // namespace
