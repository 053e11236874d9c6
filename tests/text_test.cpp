// Texts from files, made safe for a terminal, on every system.
#include "base/text.h"
#include "system/system.h"

#include <gtest/gtest.h>

#include <string>

using namespace std::string_view_literals;

namespace {

class Text : public testing::Test {
  protected:
    static void SetUpTestSuite() { prepareProcess(); }
};

TEST_F(Text, PrintableCharactersAndOthers) {
    const struct {
        const char* what;
        std::string_view text;
        std::string printable;
        int width; // of the printable text
        bool isUtf8;
    } cases[] = {
        {"nothing", "", "", 0, true},
        {"ASCII", "IMG 1.jpg", "IMG 1.jpg", 9, true},
        {"two bytes", "F\xC3\xB6hn", "F\xC3\xB6hn", 4, true},
        {"wide", "\xE5\xAD\x97!", "\xE5\xAD\x97!", 3, true},
        {"wide, Hangul", "\xEA\xB0\x80", "\xEA\xB0\x80", 2, true},
        {"wide, four bytes", "\xF0\x9F\x98\x80", "\xF0\x9F\x98\x80", 2, true},
        {"combining", "e\xCC\x81", "e\xCC\x81", 1, true},
        {"zero byte", "a\0b"sv, "a\\x00b", 6, true},
        {"line end", "a\nb", "a\\x0Ab", 6, true},
        {"escape sequence", "\x1B[31m", "\\x1B[31m", 8, true},
        {"control character of two bytes", "\xC2\x9B", "\\xC2\\x9B", 8, true},
        {"line separator", "\xE2\x80\xA8", "\\xE2\\x80\\xA8", 12, true},
        {"first and last marks", "\xD8\x9C\xE2\x80\x8E\xE2\x80\x8F\xE2\x80\xAA\xE2\x81\xA6\xE2\x81\xA9",
         "\\xD8\\x9C\\xE2\\x80\\x8E\\xE2\\x80\\x8F\\xE2\\x80\\xAA\\xE2\\x81\\xA6\\xE2\\x81\\xA9", 68, true},
        {"mark that turns the direction", "a\xE2\x80\xAEgpj", "a\\xE2\\x80\\xAEgpj", 16, true},
        {"Latin-1", "F\xF6hn", "F\\xF6hn", 7, false},
        {"lone continuation", "\x80", "\\x80", 4, false},
        {"cut after one byte of two", "a\xC3", "a\\xC3", 5, false},
        {"cut after three bytes of four", "\xF0\x9F\x98", "\\xF0\\x9F\\x98", 12, false},
        {"overlong zero", "\xC0\x80", "\\xC0\\x80", 8, false},
        {"overlong slash", "\xE0\x80\xAF", "\\xE0\\x80\\xAF", 12, false},
        {"surrogate", "\xED\xA0\x80", "\\xED\\xA0\\x80", 12, false},
        {"above the last character", "\xF4\x90\x80\x80", "\\xF4\\x90\\x80\\x80", 16, false},
        {"valid after invalid", "\xFF\xC3\xB6", "\\xFF\xC3\xB6", 5, false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(printable(c.text), c.printable) << c.what;
        EXPECT_EQ(displayWidth(printable(c.text)), c.width) << c.what;
        EXPECT_EQ(isUtf8(c.text), c.isUtf8) << c.what;
    }
}

TEST_F(Text, ShortenedBetweenCharacters) {
    const std::string wide = "\xE5\xAD\x97\xE5\xAD\x97\xE5\xAD\x97"; // three characters of two columns
    const std::string dots = "\xE2\x80\xA6";
    const struct {
        std::string text;
        int width;
        std::string withoutEnd, withoutStart;
    } cases[] = {
        {"photographs", 11, "photographs", "photographs"},
        {"photographs", 5, "phot" + dots, dots + "aphs"},
        {wide, 6, wide, wide},
        {wide, 5, wide.substr(0, 6) + dots, dots + wide.substr(0, 6)},
        {wide, 4, wide.substr(0, 3) + dots, dots + wide.substr(0, 3)},
        {wide, 1, dots, dots},
        {"e\xCC\x81te\xCC\x81", 2, "e\xCC\x81" + dots, dots + "e\xCC\x81"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(withoutEnd(c.text, c.width), c.withoutEnd) << c.text << ", " << c.width;
        EXPECT_EQ(withoutStart(c.text, c.width), c.withoutStart) << c.text << ", " << c.width;
    }
}

} // namespace
