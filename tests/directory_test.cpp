// The builder of directories refuses what it has no room for, in every build.
#include "writers/directory_builder.h"

#include <gtest/gtest.h>

namespace {

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
