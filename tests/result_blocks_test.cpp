// Results: XMP packets, pixels, invalid arguments and sources that fail.
#include "testing/photo_sources.h"
#include "testing/photographs_containers.h"
#include "testing/results.h"
#include "testing/tiff_fields.h"

#include <algorithm>
#include <gtest/gtest.h>

using namespace test;

namespace {

const Bytes RdfStart = "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF "
                       "xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>";
const Bytes RdfEnd = "</rdf:RDF></x:xmpmeta>";
const Bytes SubjectStart = "<rdf:Description rdf:about=''\nxmlns:dc='http://purl.org/dc/elements/1.1/'>\n"
                           "<dc:subject>\n<rdf:Bag>\n";
const Bytes SubjectEnd = "</rdf:Bag>\n</dc:subject>\n</rdf:Description>\n\n";

Tiff::Entry blockEntry(unsigned tag, const Bytes& block) {
    return {tag, 7, static_cast<std::uint32_t>(block.size()), block};
}

Saved saveBlock(unsigned tag, const Bytes& block, const Change& change) {
    PhotoParts parts;
    if (!block.empty()) {
        parts.image = {blockEntry(tag, block)};
    }
    return save(photoOf(parts), change);
}

Change withKeywords(const std::vector<const char*>& keywords) {
    return [&keywords](tvmeta_Result& result) {
        result.keywords = keywords.data();
        result.keywordCount = static_cast<std::int32_t>(keywords.size());
    };
}

TEST(ResultXmp, AddsKeywords) {
    const std::vector<const char*> keywords = {"lake", "a<b&c>d"};
    const Bytes added = "<rdf:li>a&lt;b&amp;c&gt;d</rdf:li>\n";
    const Bytes both = "<rdf:li>lake</rdf:li>\n" + added;
    const Bytes bag = "<dc:subject><rdf:Bag><rdf:li>sun</rdf:li>";
    const Bytes bagEnd = "</rdf:Bag></dc:subject>";
    const struct {
        const char* what;
        Bytes packet, expected;
        bool isLeft;
    } rows[] = {
        {"own bag", RdfStart + bag + bagEnd + RdfEnd, RdfStart + bag + both + bagEnd + RdfEnd, false},
        {"known keyword", RdfStart + "<dc:subject><rdf:Bag><rdf:li> lake </rdf:li>" + bagEnd + RdfEnd,
         RdfStart + "<dc:subject><rdf:Bag><rdf:li> lake </rdf:li>" + added + bagEnd + RdfEnd, false},
        {"known word elsewhere", RdfStart + "<dc:title><rdf:li>lake</rdf:li></dc:title>" + bag + bagEnd + RdfEnd,
         RdfStart + "<dc:title><rdf:li>lake</rdf:li></dc:title>" + bag + both + bagEnd + RdfEnd, false},
        {"no subject", RdfStart + RdfEnd, RdfStart + SubjectStart + both + SubjectEnd + RdfEnd, false},
        {"attribute", RdfStart + "<rdf:Description dc:subject='sun'/>" + RdfEnd, "", true},
        {"sequence", RdfStart + "<dc:subject><rdf:Seq/></dc:subject>" + RdfEnd, "", true},
        {"two bags", RdfStart + bag + bagEnd + bag + bagEnd + RdfEnd, "", true},
        {"bag after the subject", RdfStart + "<dc:subject></dc:subject><x><rdf:Bag></rdf:Bag></x>" + RdfEnd, "", true},
        {"no RDF", "<x:xmpmeta/>", "", true},
    };
    for (const auto& row : rows) {
        const Saved saved = saveBlock(700, row.packet, withKeywords(keywords));
        const Losses left = {{-1 - TVMETA_XMP, 0, TVMETA_LOSS_XMP_LEFT}};
        EXPECT_EQ(saved.losses, row.isLeft ? left : Losses()) << row.what;
        EXPECT_EQ(TiffFields(saved.file).value(ImageFields, 700), row.isLeft ? row.packet : row.expected) << row.what;
    }
    // The keywords of an IPTC block come with the first ones of a packet.
    const Bytes block = dataset(2, 25, "sea");
    for (const auto& [packet, comes] :
         {std::pair{RdfStart + RdfEnd, true}, {RdfStart + bag + bagEnd + RdfEnd, false}}) {
        const Saved saved = saveBlock(700, packet, [&](tvmeta_Result& result) {
            withKeywords(keywords)(result);
            result.iptc = block.data();
            result.iptcSize = size32(block);
        });
        const Bytes written = TiffFields(saved.file).value(ImageFields, 700);
        EXPECT_EQ(written.find("<rdf:li>sea</rdf:li>") != Bytes::npos, comes) << packet;
    }
    const Bytes fresh = TiffFields(saveBlock(700, "", withKeywords(keywords)).file).value(ImageFields, 700);
    EXPECT_TRUE(fresh.starts_with("<?xpacket begin='\xEF\xBB\xBF'"));
    EXPECT_NE(fresh.find(">\n\n" + SubjectStart + both + SubjectEnd + "</rdf:RDF>"), Bytes::npos) << fresh;
}

TEST(ResultXmp, InsertsSettings) {
    SettingsValues settings = {};
    settings[FUSION_INTENSIVE_STRENGTH] = 5;
    const Change change = [&](tvmeta_Result& result) {
        result.method = METHOD_FUSION_INTENSIVE;
        result.settings = settings;
    };
    const Bytes fresh = TiffFields(saveBlock(700, "", change).file).value(ImageFields, 700);
    const std::size_t begin = fresh.find("<rdf:Description");
    const Bytes own = fresh.substr(begin, fresh.find("</rdf:RDF>") - begin);
    EXPECT_NE(own.find("<tvtm:Strength>5"), Bytes::npos) << own;
    const Bytes open = "<rdf:RDF>";
    const Bytes old = own.substr(0, own.find("</rdf:Description>") + 18);
    const Bytes hidden = old.substr(0, old.find('>') + 1) + "<dc:subject><rdf:Bag></rdf:Bag></dc:subject>"
                                                            "<tiff:Orientation>6</tiff:Orientation></rdf:RDF>"
                                                            "</rdf:Description>";
    const struct {
        const char* what;
        Bytes packet, expected;
        bool isLost;
    } rows[] = {
        {"usual opening", RdfStart + RdfEnd, RdfStart + own + RdfEnd, false},
        {"other attributes", "<rdf:RDF\n xmlns:x='y' >" + RdfEnd, "<rdf:RDF\n xmlns:x='y' >" + own + RdfEnd, false},
        {"text before", "\xEF\xBB\xBF<!-- a -->" + open + RdfEnd, "\xEF\xBB\xBF<!-- a -->" + open + own + RdfEnd,
         false},
        {"the last of two ends", open + "</rdf:RDF>" + open + RdfEnd, open + "</rdf:RDF>" + open + own + RdfEnd, false},
        {"own old settings", open + "<a/>" + old + RdfEnd, open + "<a/>" + own + RdfEnd, false},
        {"other text in old settings", open + hidden + RdfEnd, open + own + RdfEnd, false},
        {"settings in another form", open + elementPacket("Fusion/Intensive", "") + RdfEnd, fresh, true},
        {"no end", open + "<a/>", fresh, true},
    };
    for (const auto& row : rows) {
        const Saved saved = saveBlock(700, row.packet, change);
        const Losses lost = {{-1 - TVMETA_XMP, 0, TVMETA_LOSS_BLOCK}};
        EXPECT_EQ(saved.losses, row.isLost ? lost : Losses()) << row.what;
        EXPECT_EQ(TiffFields(saved.file).value(ImageFields, 700), row.expected) << row.what;
    }
    // A keyword of a packet that is lost is added to the new one.
    const std::vector<const char*> keywords = {"sun"};
    const Bytes lost = open + "<dc:subject><rdf:Bag><rdf:li>sun</rdf:li></rdf:Bag></dc:subject>";
    const Saved saved = saveBlock(700, lost, [&](tvmeta_Result& result) {
        change(result);
        withKeywords(keywords)(result);
    });
    EXPECT_NE(TiffFields(saved.file).value(ImageFields, 700).find("<rdf:li>sun</rdf:li>"), Bytes::npos);
}

TEST(ResultXmp, CorrectsSizesAndOrientation) {
    const auto left = [](std::int32_t tag) { return Losses{{-1 - TVMETA_XMP, tag, TVMETA_LOSS_XMP_LEFT}}; };
    const struct {
        Bytes packet, expected;
        Losses losses;
    } rows[] = {
        {"<a tiff:ImageWidth=\"40\" tiff:ImageLength='30'/>", "<a tiff:ImageWidth=\"2\" tiff:ImageLength='1'/>", {}},
        {"<tiff:Orientation>6</tiff:Orientation>", "<tiff:Orientation>8</tiff:Orientation>", {}},
        {"\nexif:PixelXDimension='1'", "\nexif:PixelXDimension='2'", {}},
        {"\texif:PixelYDimension='2'", "\texif:PixelYDimension='1'", {}},
        {"<a tiff:ImageWidth='7'/><b tiff:ImageWidth='7'/>", "", left(256)},
        {"<tiff:ImageLength rdf:value='7'/>", "", left(257)},
        {"<tiff:Orientation>left</tiff:Orientation>", "", left(274)},
        {"<a exif:PixelXDimension=''/>", "", left(40962)},
        {"<exif:PixelYDimension>3", "", left(40963)},
        {"<a b='x-tiff:ImageWidth=\"3\"'/>", "<a b='x-tiff:ImageWidth=\"3\"'/>", {}},
    };
    const Change turned = [](tvmeta_Result& result) { result.orientation = 8; };
    for (const auto& row : rows) {
        const Saved saved = saveBlock(700, row.packet, turned);
        EXPECT_EQ(saved.losses, row.losses) << row.packet;
        EXPECT_EQ(TiffFields(saved.file).value(ImageFields, 700), row.losses.empty() ? row.expected : row.packet);
    }
    const Bytes own = "<tiff:Orientation>6</tiff:Orientation>"; // the caller's packet is the caller's
    const Saved saved = saveBlock(700, rows[0].packet, [&](tvmeta_Result& result) {
        result.xmp = own.data();
        result.xmpSize = static_cast<std::int64_t>(own.size());
    });
    EXPECT_EQ(TiffFields(saved.file).value(ImageFields, 700), own);
}

TEST(ResultPixels, RowsAndConversions) {
    const Bytes source = "abcdefghijklmnopqrstuvwx";
    const struct {
        const char* what;
        std::int32_t channels, bitsCode, pixelMode;
        std::int64_t rowPitch;
        std::size_t first;
        Bytes written; // two rows
        std::int32_t width = 1;
    } rows[] = {
        {"gray", 1, 8, 0, 3, 0, "ad"},
        {"gray without alpha", 2, 8, 0, 2, 0, "ac"},
        {"RGB, bottom up", 3, 8, 0, -4, 4, "efgabc"},
        {"RGB without alpha", 4, 16, 0, 8, 0, "abcdefijklmn"},
        {"high bytes, a pitch of bytes", 3, 8, 1, 8, 0, "bdfjln"},
        {"high bytes of gray", 1, 8, 1, 4, 0, "bdfh", 2},
        {"high bytes of gray without alpha", 2, 8, 1, 8, 0, "bfjn", 2},
        {"high bytes of RGB", 3, 8, 1, 12, 0, "bdfhjlnprtvx", 2},
        {"high bytes of RGB without alpha", 4, 8, 1, 0, 0, "bdfjlnbdfjln", 2},
        {"half floats", 1, 3216, 0, 2, 0, "abcd"},
        {"the same row twice", 1, 32, 0, 0, 0, "abcdabcd"},
    };
    for (const auto& row : rows) {
        const Saved saved = save("", [&](tvmeta_Result& result) {
            result.width = row.width;
            result.height = 2;
            result.channels = row.channels;
            result.bitsCode = row.bitsCode;
            result.pixelMode = row.pixelMode;
            result.rowPitch = row.rowPitch;
            result.pixels = source.data() + row.first;
        });
        ASSERT_EQ(saved.status, 0) << row.what;
        EXPECT_EQ(saved.file.substr(8, row.written.size()), row.written) << row.what;
        EXPECT_EQ(TiffFields(saved.file).value(ImageFields, 273), le32(8)) << row.what;
        EXPECT_EQ(loadLe32(TiffFields(saved.file).value(ImageFields, 279), 0), row.written.size()) << row.what;
    }
}

TEST(ResultArguments, AreChecked) {
    static const char* const empty[] = {""};
    static const char* const latin[] = {"\xFC"};
    static const char* const null[] = {nullptr};
    static const Bytes longKeyword(0x8000, 'k');
    static const char* const tooLong[] = {longKeyword.c_str()};
    static const SettingsValues slots{};
    static tvmeta_Source noRead{};
    constexpr std::int32_t Bad = TVMETA_BAD_ARGUMENT, Large = TVMETA_TOO_LARGE;
    constexpr std::int64_t TwoGiB = std::int64_t{1} << 31;
    const struct {
        const char* what;
        Change change;
        std::int32_t saved, built;
    } rows[] = {
        {"recordSize", [](auto& r) { r.recordSize -= 1; }, Bad, Bad},
        {"recordSize beyond", [](auto& r) { r.recordSize = 0x10001; }, Bad, Bad},
        {"width", [](auto& r) { r.width = 0; }, Bad, 1},
        {"height", [](auto& r) { r.height = -1; }, Bad, 1},
        {"channels", [](auto& r) { r.channels = 5; }, Bad, 1},
        {"bitsCode", [](auto& r) { r.bitsCode = 12; }, Bad, 1},
        {"pixelMode", [](auto& r) { r.pixelMode = 2; }, Bad, 1},
        {"resolution", [](auto& r) { r.resolution = -1; }, Bad, Bad},
        {"resolution above", [](auto& r) { r.resolution = 2'147'484; }, Bad, Bad},
        {"largest resolution", [](auto& r) { r.resolution = 2'147'483; }, 0, 1},
        {"path", [](auto& r) { r.path = nullptr; }, Bad, 1},
        {"pixels", [](auto& r) { r.pixels = nullptr; }, Bad, 1},
        {"no rows, no pixels", [](auto& r) { r.height = 0, r.pixels = nullptr; }, 0, 1},
        {"rowPitch", [](auto& r) { r.height = 3, r.rowPitch = INT64_MAX / 2; }, Bad, 1},
        {"rowPitch, negative", [](auto& r) { r.height = 3, r.rowPitch = INT64_MIN; }, Bad, 1},
        {"icc", [](auto& r) { r.iccSize = 1; }, Bad, Bad},
        {"iccSize", [](auto& r) { r.icc = "x", r.iccSize = -1; }, Bad, Bad},
        {"iptc", [](auto& r) { r.iptcSize = 1; }, Bad, Bad},
        {"iptcSize", [](auto& r) { r.iptc = "x", r.iptcSize = -1; }, Bad, Bad},
        {"xmp", [](auto& r) { r.xmpSize = 1; }, Bad, Bad},
        {"xmpSize", [](auto& r) { r.xmp = "x", r.xmpSize = -1; }, Bad, Bad},
        {"xmp of 2 GiB", [](auto& r) { r.xmp = "x", r.xmpSize = TwoGiB; }, Large, Large},
        {"icc of 2 GiB", [](auto& r) { r.icc = "x", r.iccSize = TwoGiB; }, Large, Large},
        {"keywords", [](auto& r) { r.keywordCount = 1; }, Bad, Bad},
        {"keywordCount", [](auto& r) { r.keywordCount = -1; }, Bad, Bad},
        {"null keyword", [](auto& r) { r.keywords = null, r.keywordCount = 1; }, Bad, Bad},
        {"empty keyword", [](auto& r) { r.keywords = empty, r.keywordCount = 1; }, Bad, Bad},
        {"keyword in Latin-1", [](auto& r) { r.keywords = latin, r.keywordCount = 1; }, Bad, Bad},
        {"long keyword", [](auto& r) { r.keywords = tooLong, r.keywordCount = 1; }, Bad, Bad},
        {"settings", [](auto& r) { r.method = METHOD_TONE_COMPRESSOR; }, Bad, Bad},
        {"method", [](auto& r) { r.method = 4, r.settings = slots; }, Bad, Bad},
        {"negative method", [](auto& r) { r.method = METHOD_DETECT; }, Bad, Bad},
        {"modifyDate", [](auto& r) { r.modifyDate = "2024-02-29 23:59:59"; }, Bad, Bad},
        {"short modifyDate", [](auto& r) { r.modifyDate = "2024:02:29 23:59"; }, Bad, Bad},
        {"photo", [](auto& r) { r.photo = &noRead; }, Bad, Bad},
    };
    for (const auto& row : rows) {
        const Saved saved = save("", row.change);
        EXPECT_EQ(saved.status, row.saved) << row.what;
        EXPECT_EQ(saved.file == "old", row.saved < 0) << row.what;
        tvmeta_Result result = smallResult(nullptr, nullptr);
        row.change(result);
        const std::int64_t size = tvmeta_build_exif(&result, nullptr, 0, nullptr, 0, nullptr);
        EXPECT_EQ(std::min<std::int64_t>(size, 1), row.built) << row.what;
    }
    tvmeta_Result result = smallResult("/nowhere/result.tif", nullptr);
    EXPECT_EQ(tvmeta_save_tiff(nullptr, nullptr, 0), Bad);
    EXPECT_EQ(tvmeta_save_tiff(&result, nullptr, 1), Bad);
    EXPECT_EQ(tvmeta_save_tiff(&result, nullptr, -1), Bad);
    EXPECT_EQ(tvmeta_save_tiff(&result, nullptr, 0), TVMETA_WRITE_FAILED);
    EXPECT_EQ(tvmeta_build_exif(nullptr, nullptr, 0, nullptr, 0, nullptr), Bad);
    EXPECT_EQ(tvmeta_build_exif(&result, nullptr, -1, nullptr, 0, nullptr), Bad);
    EXPECT_EQ(tvmeta_build_exif(&result, nullptr, 0, nullptr, 1, nullptr), Bad);
    EXPECT_EQ(tvmeta_build_exif(&result, nullptr, 0, nullptr, -1, nullptr), Bad);
}

// A record of a later version is accepted if what this version does not know is not used.
TEST(ResultArguments, LargerRecords) {
    alignas(tvmeta_Result) unsigned char later[sizeof(tvmeta_Result) + 8] = {};
    auto* const result = reinterpret_cast<tvmeta_Result*>(later);
    *result = smallResult(nullptr, nullptr);
    result->recordSize = sizeof later;
    EXPECT_GT(tvmeta_build_exif(result, nullptr, 0, nullptr, 0, nullptr), 0);
    later[sizeof(tvmeta_Result)] = 1;
    EXPECT_EQ(tvmeta_build_exif(result, nullptr, 0, nullptr, 0, nullptr), TVMETA_BAD_ARGUMENT);
}

TEST(ResultExif, NeedsItsMeasuredSize) {
    const tvmeta_Result result = smallResult(nullptr, nullptr);
    // Orientation and resolution: a header, four entries, two fractions.
    constexpr std::int64_t Size = 8 + 2 + 4 * 12 + 4 + 2 * 8;
    EXPECT_EQ(tvmeta_build_exif(&result, nullptr, 0, nullptr, 0, nullptr), Size);
    Bytes block(Size + 1, '\xEE');
    EXPECT_EQ(tvmeta_build_exif(&result, block.data(), Size - 1, nullptr, 0, nullptr), TVMETA_TOO_SMALL);
    EXPECT_EQ(block, Bytes(Size + 1, '\xEE'));
    EXPECT_EQ(tvmeta_build_exif(&result, block.data(), Size + 1, nullptr, 0, nullptr), Size);
    EXPECT_EQ(block.back(), '\xEE');
    EXPECT_EQ(TiffFields(block).value(ImageFields, 274), le16(1));
}

TEST(ResultSource, EveryReadFailsInTurn) {
    PhotoParts parts;
    parts.image = {blockEntry(700, RdfStart + RdfEnd + Bytes(40'000, ' ')),
                   blockEntry(33723, dataset(2, 25, Bytes(20'000, 'k')))};
    parts.exif = {blockEntry(37500, "PENTAX \0MM" + Bytes(30'000, 'n')), blockEntry(50000, Bytes(40'000, 'v'))};
    const Bytes photo = photoOf(parts);
    for (std::int64_t call = 0;; ++call) {
        CallerSource failing(photo, CallerSource::Fault::Error, call);
        const tvmeta_Source source = failing.source();
        const Saved saved = save("", [&](tvmeta_Result& result) { result.photo = &source; });
        if (failing.calls() <= call) {
            EXPECT_EQ(saved.losses, (Losses{{TVMETA_EXIF_DIRECTORY, 37500, TVMETA_LOSS_MAKER_NOTE}}));
            EXPECT_GT(call, 4);
            break;
        }
        ASSERT_EQ(saved.status, TVMETA_READ_FAILED) << call;
        ASSERT_EQ(saved.file, "old") << call;
    }
    EXPECT_EQ(save(cr3()).losses, (Losses{{TVMETA_EXIF_DIRECTORY, 37500, TVMETA_LOSS_MAKER_NOTE}})) << "beside EXIF";
    const Saved unknown = save("no photograph");
    EXPECT_EQ(unknown.status, TVMETA_UNKNOWN_KIND);
    EXPECT_EQ(unknown.file, "old");
}

} // namespace
