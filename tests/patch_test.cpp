// Patching: the profile of a TIFF file, the keywords of an IPTC block.
#include "testing/files.h"
#include "tvmeta.h"

#include <cstring>
#include <gtest/gtest.h>
#include <utility>

using namespace test;

namespace {

std::int32_t replaceProfile(const std::string& path, const Bytes& profile) {
    return update_tif_profile(size32(profile), raw(profile), path.c_str());
}

TEST(Profile, IsAppendedAndItsEntryPatched) {
    const TempDir dir;
    Tiff tiff;
    Bytes file = tiff.finish(tiff.add({tiff.shortEntry(256, 1), {34675, 7, 6, "before"}}));
    const std::string path = dir.write("a.tif", file);
    const Bytes profile(3144, 'p');
    EXPECT_EQ(replaceProfile(path, profile), 3144);
    file.replace(8 + 2 + 12 + 4, 8, le32(3144) + le32(static_cast<std::uint32_t>(file.size())));
    EXPECT_EQ(readFile(path), file + profile);
}

// An entry that the file cuts short is completed, and the profile follows it. The offset is the old size of the file.
TEST(Profile, FollowsAnEntryThatIsCutShort) {
    const TempDir dir;
    const Bytes start = "II" + le16(42) + le32(8) + le16(1);
    const Bytes entry = le16(34675) + le16(7) + le32(6) + le32(26);
    for (std::uint32_t length = 2; length <= 13; ++length) {
        const Bytes kept = (entry + "x").substr(0, length);
        const Bytes completed = (kept + zeros(2)).substr(0, 4) + le32(7) + le32(10 + length);
        const std::string path = dir.write("cut.tif", start + kept);
        EXPECT_EQ(replaceProfile(path, "profile"), 7) << length;
        EXPECT_EQ(readFile(path), start + completed + (length == 13 ? "xprofile" : "profile")) << length;
        dir.write("cut.tif", start + kept);
        EXPECT_EQ(update_tif_profile(0, nullptr, path.c_str()), 0) << length;
        EXPECT_EQ(readFile(path).substr(14, 8), le32(0) + le32(10 + length)) << length;
    }
}

TEST(Profile, MayBeEmpty) {
    const TempDir dir;
    Tiff tiff;
    const Bytes file = tiff.finish(tiff.add({{34675, 7, 6, "before"}}));
    Bytes emptied = file;
    emptied.replace(8 + 2 + 4, 8, le32(0) + le32(static_cast<std::uint32_t>(file.size())));
    for (const unsigned char* profile : {raw(file), static_cast<const unsigned char*>(nullptr)}) {
        const std::string path = dir.write("a.tif", file);
        EXPECT_EQ(update_tif_profile(0, profile, path.c_str()), 0);
        EXPECT_EQ(readFile(path), emptied);
    }
    const std::string path = dir.write("a.tif", file);
    EXPECT_EQ(update_tif_profile(1, nullptr, path.c_str()), -2);
    EXPECT_EQ(update_tif_profile(-1, raw(file), path.c_str()), -2);
    EXPECT_EQ(readFile(path), file);
}

TEST(Profile, FileWithoutEntryIsUnchanged) {
    const TempDir dir;
    Tiff tiff;
    Tiff bigEndian(false);
    for (const Bytes& file : {tiff.finish(tiff.add({tiff.shortEntry(256, 1)})),
                              bigEndian.finish(bigEndian.add({{34675, 7, 1, "x"}})), Bytes("no TIFF")}) {
        const std::string path = dir.write("a.tif", file);
        EXPECT_EQ(replaceProfile(path, "profile"), 0);
        EXPECT_EQ(readFile(path), file);
    }
    testing::internal::CaptureStderr();
    EXPECT_EQ(replaceProfile(dir.path("none"), "profile"), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Can not open input file for reading\n");
}

// The size modulo 2^32 is small: 32-bit positions would wrap and overwrite the header.
TEST(Profile, LargeFileIsUnchanged) {
    const TempDir dir;
    Tiff tiff;
    const Bytes file = tiff.finish(tiff.add({{34675, 7, 6, "before"}}));
    const std::string path = dir.write("large.tif", file);
    for (const std::uintmax_t size : {INT32_MAX - std::uintmax_t{6}, (std::uintmax_t{4} << 30) + 1000}) {
        std::filesystem::resize_file(path, size);
        EXPECT_EQ(replaceProfile(path, "profile"), -2);
        EXPECT_EQ(std::filesystem::file_size(path), size);
        Bytes start(file.size(), '!');
        std::ifstream(path, std::ios::binary).read(start.data(), size32(start));
        EXPECT_EQ(start, file);
    }
}

// The directory starts below 2^31, its entry does not.
TEST(Profile, EntryThatIsTooFarIsUnchanged) {
    const TempDir dir;
    const std::string path = dir.write("far.tif", "II" + le16(42) + le32(0x7FFFFFFEU));
    const Bytes directory = le16(1) + le16(34675) + le16(7) + le32(4) + "icc!" + le32(0);
    std::filesystem::resize_file(path, 0x7FFFFFFEU);
    std::ofstream(path, std::ios::binary | std::ios::app) << directory;
    std::int32_t count = 7;
    std::int32_t value = 7;
    EXPECT_EQ(get_tif_tag(Stream(std::fopen(path.c_str(), "rb")).get(), 34675, &count, &value), -1);
    EXPECT_EQ(std::pair(count, value), std::pair(7, 7));
    EXPECT_EQ(replaceProfile(path, ""), -2);
    Bytes end(directory.size() + 1, '!');
    std::ifstream(path, std::ios::binary).seekg(0x7FFFFFFE).read(end.data(), size32(end));
    EXPECT_EQ(end, directory + "!");
}

TEST(Keyword, FollowsItsAnchor) {
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
        Bytes before, after;
    } cases[] = {
        {"after the last keyword", caption + first + second, city},
        {"after the last dataset", caption + city, ""},
        {"a keyword followed by another dataset does not count", first + city, ""},
        {"after a keyword at the end", caption + first, ""},
        {"an empty dataset at the end does not count", caption, dataset(2, 90, "")},
        {"after an empty dataset", dataset(2, 90, ""), ""},
        {"a keyword of another record does not count", caption, dataset(3, 25, "other")},
    };
    for (const auto& test : cases) {
        const Bytes block = test.before + test.after;
        Bytes out(block.size() + 5 + 5 + 4, '!');
        const std::int32_t result = add_iptc_keyword(size32(block), raw(block), 5, "added", raw(out));
        EXPECT_EQ(result, size32(test.before)) << test.what;
        EXPECT_EQ(out, test.before + added + test.after + "!!!!") << test.what;
    }
    Bytes out(18, '!');
    EXPECT_EQ(add_iptc_keyword(0, nullptr, 5, "added", raw(out)), 7);
    EXPECT_EQ(out, Bytes("\x1C\x02\x00\x00\x02\x02\x00", 7) + added + "!");
}

TEST(Keyword, Rejections) {
    const Bytes overrun("\x1C\x02\x78\x00\xFFxyz", 8);
    Bytes out(32, '!');
    for (const auto& [length, keywordLength] : {std::pair{8, 1}, {4, 1}, {-1, 1}, {0, 32768}, {0, -1}}) {
        EXPECT_EQ(add_iptc_keyword(length, raw(overrun), keywordLength, "k", raw(out)), -1) << length;
    }
    Bytes longest(7 + 5 + 32767, '!');
    EXPECT_EQ(add_iptc_keyword(0, nullptr, 32767, Bytes(32767, 'k').c_str(), raw(longest)), 7);
    EXPECT_EQ(add_iptc_keyword(8, nullptr, 1, "k", raw(out)), -1);
    EXPECT_EQ(add_iptc_keyword(0, raw(overrun), 1, nullptr, raw(out)), -1);
    EXPECT_EQ(out, Bytes(32, '!'));
}

} // namespace
