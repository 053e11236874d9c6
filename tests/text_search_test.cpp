// Compares the search for a text with std::string::find.
#include "support/text_search.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

TEST(TextSearch, FoundAtEveryOffsetOfEveryLength) {
    constexpr tvmeta::SearchText Pair("tv", 0);
    for (const std::size_t length : {2U, 3U, 32U, 33U, 34U, 160U, 161U, 600U}) {
        for (std::size_t place = 0; place < length; ++place) {
            for (const std::size_t from : {std::size_t{0}, place / 2, place, place + 1}) {
                std::string text(length, 't'); // the first half of the pair everywhere
                text[place] = 'v';
                const std::vector<char> exact(text.begin(), text.end()); // so that sanitizers detect reads past the end
                const std::size_t expected = text.find("tv", from);
                EXPECT_EQ(tvmeta::findText({exact.data(), length}, Pair, from), expected) << length << ' ' << place;
            }
        }
    }
}

} // namespace
