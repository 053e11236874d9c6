// Sources, records of any size, and the functions beside the record: blocks, texts.
#include "testing/files.h"
#include "testing/photo_sources.h"
#include "testing/photographs_table.h"

#include <gtest/gtest.h>

#include <array>
#include <span>

#ifndef _WIN32
#include <sys/stat.h>
#endif

using namespace test;

namespace {

TEST(Source, Files) {
    const TempDir dir;
    const Bytes photo = cameraTiff(Tiff());
    const std::string path = dir.write("photo.tif", photo);
    tvmeta_Source source;
    ASSERT_EQ(tvmeta_open(path.c_str(), &source), TVMETA_OK);
    EXPECT_EQ(source.size, std::ssize(photo));
    Bytes end(10, '\0');
    EXPECT_EQ(source.read(source.context, source.size - 3, end.data(), 10), 3);
    EXPECT_EQ(end.substr(0, 3), photo.substr(photo.size() - 3));
    tvmeta_Photo record = emptyRecord();
    EXPECT_EQ(tvmeta_read_photo(&source, &record), TVMETA_OK);
    EXPECT_STREQ(record.model, "TV-100");
    tvmeta_close(&source);
    tvmeta_close(&source);
    EXPECT_EQ(tvmeta_read_photo(&source, &record), TVMETA_BAD_ARGUMENT); // closed
    tvmeta_close(nullptr);

    EXPECT_EQ(tvmeta_open(dir.write("empty", "").c_str(), &source), TVMETA_OK);
    EXPECT_EQ(tvmeta_read_photo(&source, &record), TVMETA_UNKNOWN_KIND);
    tvmeta_close(&source);
    EXPECT_EQ(tvmeta_open(nullptr, &source), TVMETA_BAD_ARGUMENT);
    EXPECT_EQ(tvmeta_open(path.c_str(), nullptr), TVMETA_BAD_ARGUMENT);
    for (const std::string& none : {dir.path("none"), dir.path("")}) { // "": the folder
        source.read = memorySource(photo).read;
        EXPECT_EQ(tvmeta_open(none.c_str(), &source), TVMETA_READ_FAILED) << none;
        EXPECT_EQ(source.read, nullptr);
    }
#ifndef _WIN32
    ASSERT_EQ(mkfifo(dir.path("pipe").c_str(), 0600), 0);
    for (const std::string& device : {dir.path("pipe"), std::string("/dev/null")}) { // without a writer: must not wait
        EXPECT_EQ(tvmeta_open(device.c_str(), &source), TVMETA_READ_FAILED) << device;
    }
#endif
}

TEST(Source, Memory) {
    tvmeta_Source source;
    EXPECT_EQ(tvmeta_memory(nullptr, 0, &source), TVMETA_OK);
    tvmeta_Photo record = emptyRecord();
    EXPECT_EQ(tvmeta_read_photo(&source, &record), TVMETA_UNKNOWN_KIND);
    EXPECT_EQ(tvmeta_memory(nullptr, 1, &source), TVMETA_BAD_ARGUMENT);
    EXPECT_EQ(tvmeta_memory("", -1, &source), TVMETA_BAD_ARGUMENT);
    EXPECT_EQ(tvmeta_memory("", 1, nullptr), TVMETA_BAD_ARGUMENT);
}

// The functions that read, on one source.
constexpr int Readers = 4;

std::int64_t read(const tvmeta_Source& source, int reader) {
    tvmeta_Photo photo = emptyRecord();
    char buffer[5000];
    return reader == 0   ? tvmeta_read_photo(&source, &photo)
           : reader == 1 ? tvmeta_list_tags(&source, nullptr, nullptr, 0)
           : reader == 2 ? tvmeta_read_block(&source, nullptr, TVMETA_XMP, buffer, sizeof buffer)
                         : tvmeta_read_text(&source, nullptr, TVMETA_TEXT_KEYWORD, 1, buffer, sizeof buffer);
}

// A source that fails at its n-th read, for every n, or returns more bytes than it was asked for.
TEST(Source, EveryReadFails) {
    for (const Photograph& photo : photographs()) {
        for (const auto fault : {CallerSource::Fault::Error, CallerSource::Fault::Excess}) {
            for (int reader = 0; reader < Readers; ++reader) {
                bool isDone = false;
                for (std::int64_t call = 0; !isDone; ++call) {
                    ASSERT_LT(call, 100) << photo.name;
                    CallerSource failing(photo.bytes, fault, call);
                    const std::int64_t result = read(failing.source(), reader);
                    isDone = failing.calls() <= call;
                    ASSERT_EQ(result == TVMETA_READ_FAILED, !isDone)
                        << photo.name << ", reader " << reader << ", read " << call << ": " << result;
                    ASSERT_FALSE(failing.isMisused()) << photo.name;
                }
            }
        }
    }
}

// A read that ends early is the end of the source.
TEST(Source, ShortReads) {
    for (const Photograph& photo : photographs()) {
        for (std::int64_t call = -2; call < 12; ++call) {
            CallerSource shorter(photo.bytes, CallerSource::Fault::Short, call);
            for (int reader = 0; reader < Readers; ++reader) {
                ASSERT_NE(read(shorter.source(), reader), TVMETA_READ_FAILED) << photo.name << ", read " << call;
            }
            ASSERT_FALSE(shorter.isMisused());
        }
    }
}

TEST(Source, ImpossibleOnesAreRefused) {
    const Bytes photo = cameraTiff(Tiff());
    const tvmeta_Source good = memorySource(photo);
    tvmeta_Source sources[] = {good, good, good};
    sources[0].read = nullptr;
    sources[1].size = -1;
    sources[2].size = INT64_MAX; // sums of positions would wrap
    for (const tvmeta_Source& source : sources) {
        for (int reader = 0; reader < Readers; ++reader) {
            EXPECT_EQ(read(source, reader), TVMETA_BAD_ARGUMENT);
        }
    }
    tvmeta_Photo record = emptyRecord();
    EXPECT_EQ(tvmeta_read_photo(nullptr, &record), TVMETA_BAD_ARGUMENT);
    EXPECT_EQ(tvmeta_read_photo(&good, nullptr), TVMETA_BAD_ARGUMENT);
    char text[8];
    for (const std::int32_t wrong : {-1, TVMETA_BLOCKS + 0, INT32_MAX}) {
        EXPECT_EQ(tvmeta_read_block(&good, nullptr, wrong, nullptr, 0), TVMETA_BAD_ARGUMENT);
    }
    for (const std::int32_t wrong : {-1, TVMETA_TEXT_SOFTWARE + 1, INT32_MIN}) {
        EXPECT_EQ(tvmeta_read_text(&good, nullptr, wrong, 0, text, 8), TVMETA_BAD_ARGUMENT);
    }
    EXPECT_EQ(tvmeta_read_text(&good, nullptr, TVMETA_TEXT_ARTIST, -1, text, 8), TVMETA_BAD_ARGUMENT);
    EXPECT_EQ(tvmeta_read_text(&good, nullptr, TVMETA_TEXT_ARTIST, 0, text, -1), TVMETA_BAD_ARGUMENT);
    EXPECT_EQ(tvmeta_read_block(&good, nullptr, TVMETA_XMP, text, -1), TVMETA_BAD_ARGUMENT);
    EXPECT_EQ(tvmeta_list_tags(&good, nullptr, nullptr, 1), TVMETA_BAD_ARGUMENT);
}

// A caller that was compiled with another version has a shorter or a longer record.
TEST(Record, AnySize) {
    const Bytes bytes = cameraTiff(Tiff());
    const tvmeta_Source source = memorySource(bytes);
    tvmeta_Photo whole = emptyRecord();
    ASSERT_EQ(tvmeta_read_photo(&source, &whole), TVMETA_OK);
    for (const std::size_t size : {sizeof whole, std::size_t{48}, std::size_t{100}, sizeof whole + 1000}) {
        std::vector<unsigned char> room(size + 16, 0xA5);
        const auto recordSize = static_cast<std::uint32_t>(size);
        std::memcpy(room.data(), &recordSize, sizeof recordSize);
        whole.recordSize = recordSize;
        EXPECT_EQ(tvmeta_read_photo(&source, reinterpret_cast<tvmeta_Photo*>(room.data())), TVMETA_OK);
        EXPECT_EQ(std::memcmp(room.data(), &whole, std::min(size, sizeof whole)), 0) << size;
        EXPECT_EQ(std::ranges::count(std::span(room).subspan(size), 0xA5), 16) << size;
        for (std::size_t i = sizeof whole; i < size; ++i) {
            ASSERT_EQ(room[i], 0);
        }
    }
    for (const std::uint32_t size : {0U, 1U, 47U, 65537U, 0xFFFFFFFFU}) { // and of one that was not initialised
        tvmeta_Photo record{};
        record.recordSize = size;
        record.isoSpeed = 77;
        EXPECT_EQ(tvmeta_read_photo(&source, &record), TVMETA_BAD_ARGUMENT) << size;
        EXPECT_EQ(record.isoSpeed, 77);
    }
}

// A record of another file leads to other bytes, never outside of the source.
TEST(Blocks, PlacesOfAnotherFile) {
    const Bytes bytes = photographs().front().bytes;
    const tvmeta_Source source = memorySource(bytes);
    tvmeta_Photo record = emptyRecord();
    std::array<char, 64> buffer{};
    record.blocks[TVMETA_XMP] = {std::ssize(bytes) - 10, 64, 1, 0};
    EXPECT_EQ(tvmeta_read_block(&source, &record, TVMETA_XMP, buffer.data(), 64), TVMETA_BROKEN);
    record.blocks[TVMETA_XMP] = {INT64_MAX, 64, 1, 0};
    EXPECT_EQ(tvmeta_read_block(&source, &record, TVMETA_XMP, buffer.data(), 64), TVMETA_BROKEN);
    EXPECT_EQ(tvmeta_read_block(&source, &record, TVMETA_XMP, buffer.data(), 63), TVMETA_TOO_SMALL);
    const Bytes compressed = png(pngChunk("iCCP", "name" + zeros(30)));
    const tvmeta_Source other = memorySource(compressed);
    EXPECT_EQ(tvmeta_read_block(&other, nullptr, TVMETA_ICC, buffer.data(), 64), TVMETA_REFUSED_KIND);
    EXPECT_EQ(tvmeta_read_block(&other, nullptr, TVMETA_EXIF, buffer.data(), 64), 0);
}

// By falling precedence XMP, IPTC, EXIF; whole characters of any encoding; the size of the whole text.
TEST(Texts, Precedence) {
    const Tiff t;
    const auto utf16 = [](const std::string& ascii) {
        Bytes wide;
        for (const char c : ascii + '\0') {
            wide += {c, '\0'};
        }
        return wide;
    };
    const Bytes keywords = utf16("a;;;b c;; ");
    const auto file = [&](const Bytes& packet, const Bytes& iptc, const Entries& more) {
        Tiff structure;
        Entries entries = more;
        if (!packet.empty()) {
            entries.push_back({700, 1, static_cast<std::uint32_t>(packet.size()), packet});
        }
        if (!iptc.empty()) {
            entries.push_back({33723, 7, static_cast<std::uint32_t>(iptc.size()), iptc});
        }
        return structure.finish(structure.add(entries));
    };
    const auto list = [](const Bytes& items) {
        return xmp("<dc:subject><rdf:Bag>" + items + "</rdf:Bag></dc:subject>");
    };
    const Bytes sixKeywords = dataset(25, "") + dataset(25, "one") + dataset(25, "two");
    const Entries exif = {t.textEntry(270, " J\xF8rn "), t.textEntry(305, "TV"),          t.textEntry(315, " "),
                          t.shortEntry(18246, 3),        {40091, 1, 14, utf16(" a; b ")}, {40093, 1, 4, utf16("x")},
                          {40094, 1, 22, keywords}};
    enum { Title = TVMETA_TEXT_TITLE, Description = TVMETA_TEXT_DESCRIPTION, Keyword = TVMETA_TEXT_KEYWORD };
    const auto only = [&](const Bytes& packet) { return file(packet, "", {}); };
    const struct {
        const char* what;
        Bytes bytes;
        int text, index;
        const char* expected;
    } cases[] = {
        {"EXIF in Latin-1", file("", "", exif), Description, 0, "J\xC3\xB8rn"},
        {"UTF-16 after a blank text", file("", "", exif), TVMETA_TEXT_ARTIST, 0, "x"},
        {"number", file("", "", exif), TVMETA_TEXT_RATING, 0, "3"},
        {"UTF-16", file("", "", exif), Title, 0, "a; b"},
        {"keyword in UTF-16", file("", "", exif), Keyword, 1, "b c"},
        {"after the last keyword", file("", "", exif), Keyword, 2, ""},
        {"one description only", file("", "", exif), Description, 1, ""},
        {"IPTC before EXIF", file("", IptcBlock, exif), Description, 0, "IPTC caption"},
        {"empty IPTC keyword", file("", sixKeywords, exif), Keyword, 1, "two"},
        {"no IPTC copyright", file("", IptcBlock, {t.textEntry(33432, "c")}), TVMETA_TEXT_COPYRIGHT, 0, "c"},
        {"XMP before IPTC", file(Packet, IptcBlock, exif), Title, 0, "Sea & sky"},
        {"XMP without the property", file(Packet, IptcBlock, exif), TVMETA_TEXT_ARTIST, 0, "IPTC artist"},
        {"IPTC of extended size", file("", "\x1C\2\5" + be16(0x8004) + be32(4) + "long" + dataset(5, "no"), {}), Title,
         0, "long"},
        {"lists do not mix", file(Packet, IptcBlock, exif), Keyword, 2, ""},
        {"attribute", only(xmp("", "dc:title = \"a &#x41;&#66;&lt;&no;\"")), Title, 0, "a AB<&no;"},
        {"empty attribute", file(xmp("", "dc:title=''"), IptcBlock, {}), Title, 0, "IPTC title"},
        {"element", file(xmp("<xmp:CreatorTool> Tool </xmp:CreatorTool>"), "", exif), TVMETA_TEXT_SOFTWARE, 0, "Tool"},
        {"other name", file(xmp("<dc:titles>no</dc:titles>"), "", exif), Title, 0, "a; b"},
        {"references", only(xmp("<dc:title>&quot;&apos;&gt;&#x1F600;&#xD7FF;&#xD800;&#x110000;&#6x;</dc:title>")),
         Title, 0, "\"'>\xF0\x9F\x98\x80\xED\x9F\xBF&#xD800;&#x110000;&#6x;"},
        {"attribute across lines", only(xmp("", "dc:title\n=\t'x'")), Title, 0, "x"},
        {"attribute without value", only(xmp("", "dc:title dc:x='x'")), Title, 0, ""},
        {"attribute without quotes", only(xmp("", "dc:title=x")), Title, 0, ""},
        {"attribute without end", file("<a dc:title='x", "", {}), Title, 0, ""},
        {"end of another name", only(xmp("", "xdc:title='x'")), Title, 0, ""},
        {"after another name", only(xmp("", "xdc:title='x' dc:title='y'")), Title, 0, "y"},
        {"second attribute", only(xmp("", "dc:subject='x'")), Keyword, 1, ""},
        {"closed at once", file(xmp("<dc:title/>"), IptcBlock, {}), Title, 0, "IPTC title"},
        {"closing of a longer name", only(xmp("<dc:title>x</dc:titles></dc:title>")), Title, 0, "x</dc:titles>"},
        {"blank item", file(list("<rdf:li> \n </rdf:li>"), sixKeywords, {}), Keyword, 0, "one"},
        {"empty items", only(list("<rdf:li/><rdf:li> </rdf:li><rdf:li>x</rdf:li><rdf:li>y</rdf:li>")), Keyword, 1, "y"},
        {"empty array", file(list(""), sixKeywords, {}), Keyword, 0, "one"},
        {"unclosed", only(list("<rdf:li>x")), Keyword, 3, ""},
        {"no UTF-8", only(xmp("<dc:title>J\xF8rn</dc:title>")), Title, 0, "J\xC3\xB8rn"},
    };
    for (const auto& test : cases) {
        const tvmeta_Source source = memorySource(test.bytes);
        Bytes text(40, '\0');
        const std::int64_t size = tvmeta_read_text(&source, nullptr, test.text, test.index, text.data(), 40);
        EXPECT_EQ(text.substr(0, static_cast<std::size_t>(size)), test.expected) << test.what;
    }
}

// Other bytes are Latin-1, of which each becomes two.
TEST(Texts, AreUtf8) {
    const std::vector<Bytes> valid = {"\x7F",         "\xC2\x80",     "\xDF\xBF",         "\xE0\xA0\x80",
                                      "\xED\x9F\xBF", "\xEF\xBF\xBD", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"};
    const std::vector<Bytes> others = {
        "\x80",         "\xC3",         "\xC3(",        "\xC1\xBF",         "\xE2\x82",         "\xE2\x82(",
        "\xE0\x9F\xBF", "\xED\xA0\x80", "\xF1\x80\x80", "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80"};
    for (const auto* texts : {&valid, &others}) {
        for (const Bytes& text : *texts) {
            const Bytes bytes = jpeg(xmpSegment(xmp("<dc:title>" + text + "</dc:title>")));
            const tvmeta_Source source = memorySource(bytes);
            const auto high = std::ranges::count_if(text, [](char c) { return (c & 0x80) != 0; });
            EXPECT_EQ(tvmeta_read_text(&source, nullptr, TVMETA_TEXT_TITLE, 0, nullptr, 0),
                      std::ssize(text) + (texts == &valid ? 0 : high))
                << testing::PrintToString(text);
        }
    }
}

TEST(Texts, CutBetweenCharacters) {
    const Bytes packet = xmp("<dc:title>\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80!</dc:title>"); // 2 + 3 + 4 + 1 bytes
    const Bytes bytes = jpeg(xmpSegment(packet));
    const tvmeta_Source source = memorySource(bytes);
    constexpr std::int64_t Whole[] = {0, 0, 2, 2, 2, 5, 5, 5, 5, 9, 10, 10};
    for (std::int64_t capacity = 0; capacity < std::ssize(Whole); ++capacity) {
        Bytes text(16, '#');
        EXPECT_EQ(tvmeta_read_text(&source, nullptr, TVMETA_TEXT_TITLE, 0, text.data(), capacity), 10);
        EXPECT_EQ(text.find('#'), static_cast<std::size_t>(Whole[capacity])) << capacity;
    }
    EXPECT_EQ(tvmeta_read_text(&source, nullptr, TVMETA_TEXT_TITLE, 0, nullptr, 99), 10);
    const Tiff t;
    for (const Bytes character : {"\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80"}) {
        const auto bytesEach = std::ssize(character);
        for (std::int64_t before = 0; before < bytesEach; ++before) {
            const Bytes start(static_cast<std::size_t>(before), 'x');
            const Bytes photo = cameraTiff(t, {t.textEntry(270, repeated(character, 40000, start))});
            const tvmeta_Source large = memorySource(photo);
            EXPECT_EQ(tvmeta_read_text(&large, nullptr, TVMETA_TEXT_DESCRIPTION, 0, nullptr, 0),
                      before + (65536 - before) / bytesEach * bytesEach); // 65,536 bytes are read
        }
    }
}

TEST(Status, Texts) {
    EXPECT_STREQ(tvmeta_status_text(TVMETA_OK), "success");
    EXPECT_STREQ(tvmeta_status_text(TVMETA_WRITE_FAILED), "the file cannot be written");
    for (const std::int32_t unknown : {1, -10, INT32_MIN, INT32_MAX}) {
        EXPECT_STREQ(tvmeta_status_text(unknown), "unknown status");
    }
}

} // namespace
