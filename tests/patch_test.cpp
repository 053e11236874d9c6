// Changes to what exists: the profile of a TIFF file, the keywords of an IPTC block.
#include "support/files.h"
#include "tvmeta.h"

#include <cstring>
#include <gtest/gtest.h>

using namespace test;

namespace {

std::int32_t replaceProfile(const std::string& path, const Bytes& profile) {
    return update_tif_profile(static_cast<std::int32_t>(profile.size()),
                              reinterpret_cast<const unsigned char*>(profile.data()), path.c_str());
}

TEST(Profile, IsAppendedAndItsEntryRepointed) {
    const TempDir dir;
    Tiff tiff;
    Bytes file = tiff.finish(tiff.add({tiff.shortEntry(256, 1), {34675, 7, 6, "before"}}));
    const std::string path = dir.write("a.tif", file);
    const Bytes profile(3144, 'p');
    EXPECT_EQ(replaceProfile(path, profile), 3144);
    file.replace(8 + 2 + 12 + 4, 8, le32(3144) + le32(static_cast<std::uint32_t>(file.size())));
    EXPECT_EQ(readFile(path), file + profile);
}

TEST(Profile, NothingChangesWithoutAnEntry) {
    const TempDir dir;
    Tiff tiff;
    Tiff bigEndian(false);
    Tiff cut;
    for (const Bytes& file : {cut.finish(cut.add({{34675, 7, 6, "before"}})).substr(0, 8 + 2 + 11),
                              tiff.finish(tiff.add({tiff.shortEntry(256, 1)})),
                              bigEndian.finish(bigEndian.add({{34675, 7, 1, "x"}})), Bytes("no TIFF")}) {
        const std::string path = dir.write("a.tif", file);
        EXPECT_EQ(replaceProfile(path, "profile"), 0);
        EXPECT_EQ(readFile(path), file);
    }
    testing::internal::CaptureStderr();
    EXPECT_EQ(replaceProfile(dir.path("none"), "profile"), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Can not open input file for reading\n");
}

TEST(Keyword, IsPlacedBehindItsAnchor) {
    const auto dataset = [](char record, char number, const Bytes& data) {
        return Bytes{'\x1C', record, number} + be16(static_cast<unsigned>(data.size())) + data;
    };
    const Bytes caption = dataset(2, 120, "caption");
    const Bytes first = dataset(2, 25, "first");
    const Bytes second = dataset(2, 25, "second");
    const Bytes city = dataset(2, 90, "city");
    const Bytes added = dataset(2, 25, "added");
    const struct {
        const char* what;
        Bytes before, behind;
    } cases[] = {
        {"behind the last keyword", caption + first + second, city},
        {"behind the last dataset", caption + city, ""},
        {"a keyword in front does not count", first + city, ""},
        {"behind a keyword at its end", caption + first, ""},
    };
    for (const auto& test : cases) {
        const Bytes block = test.before + test.behind;
        Bytes out(block.size() + 5 + 5 + 4, '!');
        const std::int32_t result = add_iptc_keyword(static_cast<std::int32_t>(block.size()),
                                                     reinterpret_cast<const unsigned char*>(block.data()), 5, "added",
                                                     reinterpret_cast<unsigned char*>(out.data()));
        EXPECT_EQ(result, static_cast<std::int32_t>(test.before.size())) << test.what;
        EXPECT_EQ(out, test.before + added + test.behind + "!!!!") << test.what;
    }
    Bytes out(18, '!');
    EXPECT_EQ(add_iptc_keyword(0, nullptr, 5, "added", reinterpret_cast<unsigned char*>(out.data())), 7);
    EXPECT_EQ(out, Bytes("\x1C\x02\x00\x00\x02\x02\x00", 7) + added + "!");
}

TEST(Keyword, Rejections) {
    const Bytes overrun("\x1C\x02\x78\x00\xFFxyz", 8);
    const auto* block = reinterpret_cast<const unsigned char*>(overrun.data());
    unsigned char out[32];
    std::memset(out, 0xA5, sizeof out);
    EXPECT_EQ(add_iptc_keyword(8, block, 1, "k", out), -1);
    EXPECT_EQ(add_iptc_keyword(4, block, 1, "k", out), -1);
    EXPECT_EQ(add_iptc_keyword(-1, block, 1, "k", out), -1);
    EXPECT_EQ(add_iptc_keyword(0, block, 32768, "k", out), -1);
    EXPECT_EQ(add_iptc_keyword(0, block, -1, "k", out), -1);
    EXPECT_EQ(add_iptc_keyword(8, nullptr, 1, "k", out), -1);
    EXPECT_EQ(add_iptc_keyword(0, block, 1, nullptr, out), -1);
    EXPECT_EQ(out[0], 0xA5);
}

} // namespace
