// Lens names in packets.
#include "testing/bytes.h"
#include "tvmeta.h"

#include <algorithm>
#include <gtest/gtest.h>

using namespace test;

namespace {

TEST(Lens, FormsAndLengths) {
    const Bytes longest(63, 'l');
    const Bytes tooLong(64, 'l');
    const struct {
        const char* what;
        Bytes text;
        Bytes lens;
        std::int32_t fromValue; // result relative to the value; -1: the end of the search for the tag
    } cases[] = {
        {"element", lensPacket("<aux:Lens>TV 35mm f/1.8 wide lens</aux:Lens>"), "TV 35mm f/1.8 wide lens", 23},
        {"attribute", lensPacket("aux:Lens=\"TV\""), "TV", 2},
        {"single closing quote", lensPacket("aux:Lens='TV'") + zeros(64), "", 64},
        {"longer name first", lensPacket("<aux:LensInfo>1</aux:LensInfo><aux:Lens>TV</aux:Lens>"), "TV", 2},
        {"adjacent names", lensPacket("aux:Lensaux:Lens=\"TV\""), "TV", 2},
        {"longest", lensPacket("<aux:Lens>" + longest + "</aux:Lens>"), longest, 63},
        {"too long", lensPacket("<aux:Lens>" + tooLong + "</aux:Lens>"), "", 64},
        {"empty", lensPacket("<aux:Lens></aux:Lens>"), "", 0},
        // Without a closing tag or quote, the result is the offset where the scan stopped.
        {"element, cut in its value", cutAfter(lensPacket("<aux:Lens>TV"), "TV"), "", 0},
        {"element, cut in its closing tag", cutAfter(lensPacket("<aux:Lens>TV</aux:Lens"), "</aux:Len"), "", 2},
        {"element, cut after its closing tag", cutAfter(lensPacket("<aux:Lens>TV</aux:Lens"), "</aux:Lens"), "TV", 2},
        {"attribute, cut in its value", cutAfter(lensPacket("aux:Lens=\"TV"), "TV"), "", 3},
        {"attribute, cut before its quote", cutAfter(lensPacket("aux:Lens="), "Lens="), "", 0},
        {"absent", lensPacket("<aux:LensID>7</aux:LensID>"), "", -1},
    };
    for (const auto& test : cases) {
        char lens[64] = {};
        const auto length = size32(test.text) + 1;
        const std::size_t tag = std::min(test.text.find("aux:Lens>"), test.text.find("aux:Lens="));
        const auto value = static_cast<std::int32_t>(tag + (test.text[tag + 8] == '=' ? 10 : 9));
        const std::int32_t expected = test.fromValue < 0 ? length - 8 : value + test.fromValue;
        EXPECT_EQ(get_settings_from_xmp(MODE_LENS, length, test.text.c_str(), lens, nullptr), expected) << test.what;
        EXPECT_EQ(Bytes(lens, 64), test.lens + zeros(64 - test.lens.size())) << test.what;
    }
    char lens[64] = {};
    EXPECT_EQ(get_settings_from_xmp(MODE_LENS, 101, Bytes(100, 'x').c_str(), lens, nullptr), 101 - 44);
    EXPECT_EQ(get_settings_from_xmp(MODE_LENS, 1, "", lens, nullptr), 0);
    EXPECT_EQ(get_settings_from_xmp(MODE_LENS, 45, "xmlns:aux='http://ns.adobe.com/exif/1.0/aux/", lens, nullptr), 44);
}

} // namespace
