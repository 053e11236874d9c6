// IPTC blocks: their datasets, and keywords that are added to them and to results.
#include "testing/results.h"
#include "testing/tiff_fields.h"

#include <gtest/gtest.h>
#include <sstream>

using namespace test;

namespace {

std::int64_t sizeOf(const Bytes& block) {
    return static_cast<std::int64_t>(block.size());
}

Bytes added(const Bytes& block, const std::vector<const char*>& keywords, std::int64_t& leftOut) {
    const auto count = static_cast<std::int64_t>(keywords.size());
    const std::int64_t size =
        tvmeta_add_keywords(block.data(), sizeOf(block), keywords.data(), count, nullptr, 0, &leftOut);
    Bytes result(static_cast<std::size_t>(size), '\xEE');
    EXPECT_EQ(size,
              tvmeta_add_keywords(block.data(), sizeOf(block), keywords.data(), count, result.data(), size, nullptr));
    return result;
}

TEST(IptcKeywords, AddedToBlocksAndResults) {
    const Bytes utf8 = dataset(1, 90, "\x1B%G");
    const Bytes version = dataset(2, 0, Bytes("\0\4", 2));
    const Bytes sun = dataset(2, 25, "sun");
    const Bytes sea = dataset(2, 25, "s\xC3\xA9");
    const Bytes city = dataset(2, 90, "Ulm");
    const Bytes latin = dataset(2, 90, "Z\xFCrich");
    const Bytes envelope = dataset(1, 0, Bytes("\0\4", 2));
    const Bytes next = dataset(3, 0, "x");
    const struct {
        const char* what;
        Bytes block, expected;
        std::vector<const char*> keywords;
        bool isLeft;
    } rows[] = {
        {"new block", "", version + sun, {"sun"}, false},
        {"new block beyond ASCII", "", utf8 + version + sun + sea, {"sun", "s\xC3\xA9"}, false},
        {"no keywords", city + sun, city + sun, {}, false},
        {"the same keyword twice", "", version + sun, {"sun", "sun"}, false},
        {"known keyword", sun + city, sun + city, {"sun"}, false},
        {"after the last keyword", sun + city, sun + dataset(2, 25, "fog") + city, {"fog"}, false},
        {"after record 2", version + city + next, version + city + sun + next, {"sun"}, false},
        {"designation after the envelope", envelope + city, envelope + utf8 + city + sea, {"s\xC3\xA9"}, false},
        {"designated", utf8 + city, utf8 + city + sea, {"s\xC3\xA9"}, false},
        {"Latin-1, keyword of ASCII", latin, latin + sun, {"sun"}, false},
        {"Latin-1, keyword beyond", latin, latin, {"s\xC3\xA9"}, true},
        {"Latin-1, keywords of both kinds", latin, latin + sun, {"sun", "s\xC3\xA9"}, true},
        {"other designation", dataset(1, 90, "\x1B%/A") + city, dataset(1, 90, "\x1B%/A") + city, {"s\xC3\xA9"}, true},
        {"envelope at the end", city + envelope, utf8 + city + sea + envelope, {"s\xC3\xA9"}, false},
    };
    for (const auto& row : rows) {
        std::int64_t leftOut = -1;
        EXPECT_EQ(added(row.block, row.keywords, leftOut), row.expected) << row.what;
        EXPECT_EQ(leftOut, row.isLeft ? 1 : 0) << row.what;
        PhotoParts parts;
        if (!row.block.empty()) {
            parts.image = {{33723, 7, static_cast<std::uint32_t>(row.block.size()), row.block}};
        }
        const Saved saved = save(photoOf(parts), [&row](tvmeta_Result& result) {
            result.keywords = row.keywords.data();
            result.keywordCount = static_cast<std::int32_t>(row.keywords.size());
        });
        const Losses left = {{-1 - TVMETA_IPTC, 0, TVMETA_LOSS_CLAMPED}};
        EXPECT_EQ(saved.losses, row.isLeft ? left : Losses()) << row.what;
        const TiffFields fields(saved.file);
        const Bytes padded = row.expected + zeros((4 - row.expected.size() % 4) % 4);
        EXPECT_EQ(fields.value(ImageFields, 33723), padded) << row.what;
        EXPECT_EQ(fields.find(ImageFields, 33723)->type, 4U);
        if (!row.keywords.empty()) {
            const Bytes packet = fields.value(ImageFields, 700);
            const Bytes item = Bytes("<rdf:li>") + row.keywords.back() + "<";
            ASSERT_NE(packet.find(item), Bytes::npos) << row.what;
            EXPECT_EQ(packet.find(item), packet.rfind(item)) << row.what;
        }
    }
}

TEST(IptcKeywords, ArgumentsAndRoom) {
    const char* const sun[] = {"sun"};
    const char* const latin[] = {"\xFC"};
    const Bytes city = dataset(2, 90, "Ulm"); // 8 bytes; the keyword has 8, too
    Bytes room(16, '\xEE');
    const struct {
        const char* what;
        const void* block;
        std::int64_t size;
        const char* const* keywords;
        std::int64_t count, capacity, expected;
    } rows[] = {
        {"too small", city.data(), 8, sun, 1, 15, TVMETA_TOO_SMALL},
        {"negative size", city.data(), -1, sun, 1, 16, TVMETA_BAD_ARGUMENT},
        {"no block", nullptr, 8, sun, 1, 16, TVMETA_BAD_ARGUMENT},
        {"above 2^31 - 1", city.data(), std::int64_t{1} << 31, sun, 1, 16, TVMETA_TOO_LARGE},
        {"no keywords", city.data(), 8, nullptr, 1, 16, TVMETA_BAD_ARGUMENT},
        {"not UTF-8", city.data(), 8, latin, 1, 16, TVMETA_BAD_ARGUMENT},
        {"negative count", city.data(), 8, sun, -1, 16, TVMETA_BAD_ARGUMENT},
        {"negative capacity", city.data(), 8, sun, 1, -1, TVMETA_BAD_ARGUMENT},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(tvmeta_add_keywords(row.block, row.size, row.keywords, row.count, room.data(), row.capacity, nullptr),
                  row.expected)
            << row.what;
        EXPECT_EQ(room, Bytes(16, '\xEE')) << row.what;
    }
    EXPECT_EQ(tvmeta_add_keywords(city.data(), 8, sun, 1, room.data(), 16, nullptr), 16);
    EXPECT_EQ(room, city + dataset(2, 25, "sun"));
}

TEST(IptcDatasets, AreListed) {
    const Bytes city = dataset(2, 90, "Ulm");
    const Bytes large = Bytes("\x1C\x08\x0A\x80\x04\0\0\0\2xy", 11); // a size of four bytes
    const struct {
        const char* what;
        Bytes block;
        std::string expected; // record:number@position+size
    } rows[] = {
        {"empty", "", ""},
        {"two and padding", city + dataset(1, 90, "") + zeros(3), "2:90@5+3 1:90@13+0 "},
        {"extended", large + city, "8:10@9+2 2:90@16+3 "},
        {"cut short", city + city.substr(0, 7), "2:90@5+3 "},
        {"text first", "x" + city, ""},
    };
    for (const auto& row : rows) {
        tvmeta_Dataset datasets[2] = {};
        const std::int64_t count = tvmeta_list_datasets(row.block.data(), sizeOf(row.block), datasets, 2);
        EXPECT_EQ(tvmeta_list_datasets(row.block.data(), sizeOf(row.block), nullptr, 0), count) << row.what;
        std::ostringstream list;
        for (std::int64_t i = 0; i < count; ++i) {
            const tvmeta_Dataset& found = datasets[i];
            list << found.record << ":" << found.number << "@" << found.position << "+" << found.size << " ";
        }
        EXPECT_EQ(list.str(), row.expected) << row.what;
    }
    EXPECT_EQ(tvmeta_list_datasets(nullptr, 1, nullptr, 0), TVMETA_BAD_ARGUMENT);
    EXPECT_EQ(tvmeta_list_datasets(nullptr, -1, nullptr, 0), TVMETA_BAD_ARGUMENT);
    EXPECT_EQ(tvmeta_list_datasets(city.data(), 8, nullptr, 1), TVMETA_BAD_ARGUMENT);
}

} // namespace
