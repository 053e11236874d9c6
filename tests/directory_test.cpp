// Directories of results: the builder refuses what it has no room for, in every build; which tags are kept.
#include "tvmeta_photo.h"
#include "writers/directory_builder.h"
#include "writers/kept_tags.h"

#include <gtest/gtest.h>
#include <string>

namespace {

// The tags from `first` to `last` that are kept, as numbers and ranges.
std::string keptTags(std::int32_t directory, int first, int last) {
    std::string text;
    for (int start = first; start <= last; ++start) {
        int end = start;
        while (end <= last && tvmeta::fateOf(directory, static_cast<std::uint16_t>(end)) == tvmeta::Fate::Kept) {
            ++end;
        }
        if (end > start) {
            text += (text.empty() ? "" : " ") + std::to_string(start);
            text += end - start > 1 ? "-" + std::to_string(end - 1) : "";
            start = end;
        }
    }
    return text;
}

// What describes the photograph, by TIFF 6.0, TIFF/EP, EXIF 3.0 and DNG 1.7, and the texts of Windows.
TEST(KeptTags, Numbers) {
    EXPECT_EQ(keptTags(TVMETA_IMAGE, 0, 32767),
              "260-261 267-272 275-276 285 294-295 298-299 302-304 307-316 329 331 337 348-350 352-399 436-511 533-558 "
              "560-699 701-32767");
    EXPECT_EQ(keptTags(TVMETA_IMAGE, 32768, 65535),
              "33432 33434 33437 34850 34855 34858-34859 36867 37377-37386 37393-37396 37399 40091-40095 41483 "
              "41486-41488 42032-42037 50708-50709 50735-50736");
    EXPECT_EQ(keptTags(TVMETA_EXIF_DIRECTORY, 36864, 42240),
              "36864-36879 36881-37120 37123-37395 37397-37499 37501-37519 37521-40960 40966-41491 41493-42239");
}

#if GTEST_HAS_DEATH_TEST
TEST(DirectoryDeathTest, StopsAtItsCapacity) {
    tvmeta::DirectoryBuilder directory;
    for (std::uint16_t tag = 1; tag <= 24; ++tag) {
        directory.addShort(tag, tag);
    }
    EXPECT_EQ(directory.entries(), 24U);
    EXPECT_DEATH(directory.addShort(25, 25), "");
    EXPECT_DEATH(tvmeta::DirectoryBuilder().addShorts(1, 13, 0), "");
    const std::int32_t words[8] = {};
    EXPECT_DEATH(tvmeta::DirectoryBuilder().addRationals(1, words), "");
}
#endif

} // namespace
