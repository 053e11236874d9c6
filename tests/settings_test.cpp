// The parser of settings packets: methods, parameters in all forms.
#include "testing/bytes.h"
#include "tvmeta.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

using namespace test;

namespace {

using Slots = std::array<float, SETTINGS_SLOTS>;

constexpr float Untouched = 0.5F; // also an invalid smoothing mode

std::int32_t parse(std::int32_t method, const Bytes& text, Slots& slots) {
    slots.fill(Untouched);
    return get_settings_from_xmp(method, size32(text) + 1, text.c_str(), nullptr, slots.data());
}

std::int32_t detect(const Bytes& text) {
    return get_settings_from_xmp(METHOD_DETECT, size32(text) + 1, text.c_str(), nullptr, nullptr);
}

TEST(Detection, Methods) {
    const Bytes declaration = packet(""), version = element("Version", "5.0"),
                fusion = element("Method", "Fusion/Adjust");
    const struct {
        const char* what;
        Bytes text;
        std::int32_t result;
    } cases[] = {
        {"details enhancer", elementPacket("Details Enhancer", ""), 1},
        {"contrast enhancer", elementPacket("Contrast Enhancer", "", "1.0"), 1},
        {"tone compressor", elementPacket("Tone Compressor", ""), 2},
        {"smooth adaptation", elementPacket("Smooth Adaptation", ""), 2},
        {"contrast optimizer", elementPacket("Contrast Optimizer", ""), 3},
        {"fusion adjust", elementPacket("Fusion/Adjust", ""), 10},
        {"fusion natural", elementPacket("Fusion/Natural", ""), 10},
        {"fusion intensive", elementPacket("Fusion/Intensive and more", ""), 11},
        {"fusion real-estate", elementPacket("Fusion/Real-Estate", ""), 15},
        {"fusion realistic", elementPacket("Fusion/Realistic", ""), 15},
        {"unknown name", elementPacket("Fusion/None", ""), 0},
        {"no declaration", version + fusion, 0},
        {"another host", "xmlns:tvtm='http://tonalvista.text/' " + version + element("Method", "x"), 0},
        {"double quotes", packet(version + fusion, '"'), 10},
        {"attributes", packet(attribute("Version", "5.0") + attribute("Method", "Fusion/Adjust")), 10},
        {"no version", packet(fusion), -5},
        {"version with a letter as minor part", elementPacket("Fusion/Adjust", "", "5.x"), -5},
        {"version without a minor part", elementPacket("Fusion/Adjust", "", "5,0"), -5},
        {"second version", packet(element("Version", "x") + element("Version", " 2.4") + fusion), 10},
        {"method before version", packet(fusion + version), -5},
        {"method tag ends the text", declaration + "<tvtm:Version>5.0<tvtm:Method", 0},
        {"declaration ends the text", declaration.substr(0, declaration.find(".test/") + 6), -5},
        {"declaration cut", declaration.substr(0, declaration.find(".test/") + 5), 0},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(detect(test.text), test.result) << test.what;
    }
}

TEST(Detection, RequestsAndTerminators) {
    const Bytes text = elementPacket("Fusion/Natural", element("Shadows", "3"));
    Slots slots;
    EXPECT_EQ(parse(METHOD_FUSION_ADJUST, text, slots), static_cast<std::int32_t>(text.find("tvtm:Method")));
    EXPECT_EQ(slots[FUSION_ADJUST_SHADOWS], 3.0F);
    for (const std::int32_t request : {15, 0, 4, 99, 101, -2}) {
        EXPECT_EQ(parse(request, text, slots), -5) << request;
        EXPECT_EQ(slots[FUSION_ADJUST_SHADOWS], Untouched);
        EXPECT_EQ(parse(request, elementPacket("Unknown", ""), slots), -5) << request;
    }
    const auto size = size32(text);
    for (const std::int32_t request : {METHOD_DETECT + 0, METHOD_FUSION_ADJUST + 0, MODE_LENS + 0}) {
        char lens[64] = {};
        EXPECT_EQ(get_settings_from_xmp(request, size, text.c_str(), lens, slots.data()), -3);
        EXPECT_EQ(get_settings_from_xmp(request, 0, text.c_str(), lens, slots.data()), -3);
    }
}

TEST(Parameters, ValuesByFormAndVersion) {
    constexpr std::int32_t details = METHOD_DETAILS_ENHANCER, optimizer = METHOD_CONTRAST_OPTIMIZER;
    constexpr float Nan = std::numeric_limits<float>::quiet_NaN();
    const auto strength = [](const Bytes& value) { return element("Strength", value); };
    const auto clip = [](const Bytes& value) { return element("WhiteClip", value); };
    const auto contrast = [](const Bytes& value) { return element("Microcontrast", value); };
    const auto gamma = [](const Bytes& value) { return element("Gamma", value); };
    const Bytes halfway = "16777217." + Bytes(150, '0');
    const struct {
        const char* what;
        std::int32_t method;
        Bytes lines;
        int slot;
        float value;
        const char* version = "5.0";
    } cases[] = {
        {"float", details, strength("45.7"), 1, 45.7F},
        {"integer in old packets", details, strength("45.7"), 1, 45.0F, "2.4"},
        {"version of two digits", details, strength("45.7"), 1, 45.7F, "12.4"},
        {"fraction in old packets", details, clip("0.25"), 3, 0.25F, "2.4"},
        {"integer saturates", details, strength("-99999999999"), 1, -2147483648.0F, "2.4"},
        {"float overflows", details, strength("-1e99"), 1, -INFINITY},
        {"float underflows", details, strength("1e-99"), 1, 0.0F},
        {"long digits", optimizer, strength("0." + Bytes(99, '0') + "25e101"), 0, 25.0F},
        {"more digits than a float", optimizer, strength("16777219.1"), 0, 16777219.1F},
        {"a long fraction", optimizer, strength("0.0000005"), 0, 5e-7F},
        {"halfway, to even", optimizer, strength(halfway), 0, 16777216.0F},
        {"just above halfway", optimizer, strength(halfway + "1"), 0, 16777218.0F},
        {"a second point", optimizer, strength("1.2.3"), 0, 1.2F},
        {"a blank instead of an exponent", optimizer, strength("1" + Bytes(45, '0') + "e -60"), 0, INFINITY},
        {"infinity", details, strength("-inf"), 1, -INFINITY},
        {"infinity in full, any case", details, strength(" +InFiNiTyX"), 1, INFINITY},
        {"infinity, not in full", details, strength("infinit"), 1, Untouched},
        {"NaN", details, clip("-nan"), 3, -Nan},
        {"NaN with a payload", details, clip("NaN(12)"), 3, Nan},
        {"not quite NaN", details, clip("na"), 3, Untouched},
        {"no words in integers", details, strength("inf"), 1, Untouched, "2.4"},
        {"white space and sign", details, strength("\n +.5e1x"), 1, 5.0F},
        {"no number", details, strength("."), 1, Untouched},
        {"empty, then a digit", details, strength("x7"), 1, 7.0F},
        {"attribute in an element packet", details, attribute("Strength", "8"), 1, 8.0F},
        {"only the first tag", details, strength("a b") + strength("2"), 1, Untouched},
        {"the same first and last letter", details, element("Slowpath", "9"), 1, Untouched},
        {"prefix of a longer name", details, "tvtm:StrengthX9", 1, 9.0F},
        {"integer beyond 64 bits", details, strength("99999999999999999999"), 1, 2147483648.0F, "2.4"},
        {"unreadable integer", details, strength("x y"), 1, Untouched, "2.4"},
        {"unreadable clip", optimizer, clip("x y"), 3, Untouched},
        {"a small fraction", optimizer, strength("0." + Bytes(60, '0') + "1"), 0, 0.0F},
        {"a large exponent", optimizer, strength("1e9223372036854775807"), 0, INFINITY},
        {"a small exponent", optimizer, strength("1e-9223372036854775808"), 0, 0.0F},
        {"word High", details, contrast("High"), 6, 0.0F, "2.4"},
        {"word Medium High", details, contrast("Medium High"), 6, -2.0F, "2.4"},
        {"word Low", details, contrast("Low"), 6, -9.0F, "2.4"},
        {"word Very Low", details, contrast("Very Low"), 6, -10.0F, "2.4"},
        {"word in old packets", details, contrast("Medium Low"), 6, -6.0F, "2.4"},
        {"word of another parameter", details, contrast("Light"), 6, Untouched, "2.4"},
        {"shorter word", details, contrast("Medium"), 6, -2.0F, "2.0"},
        {"number from 2.5 on", details, contrast("-3.9"), 6, -3.0F, "2.5"},
        {"number in 3.0", details, contrast("-3.9"), 6, -3.9F, "3.0"},
        {"number in 1.5", details, contrast("-3.9"), 6, -3.0F, "1.5"},
        {"former name", details, element("NoiseSmoothing", "4"), 7, 4.0F},
        {"gamma 2", details, gamma("2.0"), 8, 0.0F},
        {"gamma 0.5", details, gamma("0.50"), 8, 100.0F},
        {"no gamma", details, "", 8, 50.0F},
        {"unreadable gamma", details, gamma("x y"), 8, Untouched},
        {"gamma 0", details, gamma("0"), 8, INFINITY},
        {"gamma below 0", details, gamma("-1"), 8, -Nan},
        {"gamma NaN", details, gamma("nan"), 8, Nan},
        {"clip below 0", optimizer, clip("-1"), 3, -Nan},
        {"panorama", details, element("IsPano360", "Yes"), 15, 1.0F},
        {"another word is no", details, element("IsPano360", "Y"), 15, 0.0F},
        {"lower case is no", details, element("IsPano360", "yes"), 15, 0.0F},
        {"clip", optimizer, clip("10.0"), 3, 10.0F},
        {"clip curve", optimizer, element("BlackClip", "5.0"), 4, 1.1958244F},
        {"second description", METHOD_FUSION_INTENSIVE, "</x>" + packet(element("Radius", "4")), 2, 4.0F},
    };
    for (const auto& test : cases) {
        Slots slots;
        const Bytes text = elementPacket(tvmeta_method_name(test.method), test.lines, test.version);
        EXPECT_GT(parse(test.method, text, slots), 46) << test.what;
        // compared as bytes, for the sign of NaN
        EXPECT_EQ(std::bit_cast<std::uint32_t>(slots[static_cast<std::size_t>(test.slot)]),
                  std::bit_cast<std::uint32_t>(test.value))
            << test.what << ' ' << slots[static_cast<std::size_t>(test.slot)];
    }
}

// As "%f" of the C library reads them.
TEST(Parameters, HexadecimalNumbers) {
    const struct {
        float value;
        std::vector<Bytes> texts;
    } cases[] = {
        {16.0F, {"0x10"}},
        {-12.0F, {"-0X1.8p3"}},
        {0.15625F, {"+0x.aP-2x"}},
        {485.0F, {"0x1e5"}},
        {1.5F, {"0x1.8.8"}},
        {Untouched, {"0x", "0xg"}},
        {2.0F, {"x0x2"}}, // one character after the value position, as other numbers
        {0.0F, {"0x.", "0x1p-150", "0x0p9223372036854775807", "0x1p-99999999999999999999"}},
        {1.0F, {"0x1p", "0x1p 3", "0x1p+-3", "0x100000" + Bytes(40, '0') + "p-180"}},
        {1.0F, {"0x0." + Bytes(300, '0') + "1p1204"}},
        {1.0F, {"0x1.000001p0", "0x1.0000010000000p0"}}, // halfway, to even
        {1.0000002F, {"0x1.000003p0"}},                  // halfway, to even
        {1.0000001F, {"0x1.0000010000001p0"}},           // just above halfway
        {1e-45F, {"0x1p-149", "0x1.8p-150"}},
        {3.40282347e+38F, {"0x1.fffffep127"}},
        {-INFINITY, {"-0x1.ffffffp127"}},
        {INFINITY, {"0x1p9223372036854775807"}},
    };
    for (const auto& test : cases) {
        for (const Bytes& text : test.texts) {
            Slots slots;
            parse(METHOD_CONTRAST_OPTIMIZER, elementPacket("Contrast Optimizer", element("Strength", text)), slots);
            EXPECT_EQ(slots[CONTRAST_OPTIMIZER_STRENGTH], test.value) << text;
        }
    }
    Slots slots; // "%d" reads the zero
    parse(METHOD_TONE_COMPRESSOR, elementPacket("Tone Compressor", element("Contrast", "0x10"), "2.0"), slots);
    EXPECT_EQ(slots[TONE_COMPRESSOR_CONTRAST], 0.0F);
}

// Up to version 2, some numbers of the first two methods are integers.
TEST(Parameters, IntegersInOldPackets) {
    const struct {
        std::int32_t method;
        std::vector<int> integers; // slots
    } cases[] = {
        {1, {0, 1, 2, 6, 7, 9, 10, 11, 12, 13, 14}}, {2, {0, 1, 2, 12, 13}}, {3, {}}, {10, {}}, {11, {}}, {15, {}}};
    for (const auto& [method, integers] : cases) {
        tvmeta_Parameter parameter;
        for (std::int32_t i = 0; tvmeta_parameter(method, i, &parameter) > 0; ++i) {
            if (parameter.kind == TVMETA_NUMBER || parameter.kind == TVMETA_FRACTION) {
                Slots slots;
                parse(method, elementPacket(tvmeta_method_name(method), element(parameter.name, "1.5"), "2.5"), slots);
                const bool isInteger = std::ranges::count(integers, parameter.slot) > 0;
                EXPECT_EQ(slots[static_cast<std::size_t>(parameter.slot)], isInteger ? 1.0F : 1.5F) << parameter.name;
            }
        }
    }
}

TEST(Parameters, TagAtTheEndOfTheText) {
    // Without a value a panorama is none, and the gamma is not the one of a packet without its tag.
    const struct {
        const char* name;
        int slot;
        float value;
    } cases[] = {{"Strength", 1, Untouched}, {"IsPano360", 15, 0.0F}, {"Gamma", 8, Untouched}};
    for (const auto& test : cases) {
        const Bytes text = elementPacket("Details Enhancer", element(test.name, "7"));
        Slots slots;
        EXPECT_GT(parse(METHOD_DETAILS_ENHANCER, cutAfter(text, Bytes("tvtm:") + test.name), slots), 46) << test.name;
        EXPECT_EQ(slots[static_cast<std::size_t>(test.slot)], test.value) << test.name;
    }
}

TEST(Parameters, SmoothingFollowsItsMode) {
    const auto details = [](const Bytes& lines) { return elementPacket("Details Enhancer", lines); };
    const auto level = [](const Bytes& value) { return element("Smoothing", value); };
    const Bytes light = element("SmoothingMode", "Light");
    constexpr float Same = Untouched;
    const struct {
        const char* what;
        Bytes text;
        float mode, level, slider;
    } cases[] = {
        {"light", details(level("Very Low") + light), 0, 4, Same},
        {"High", details(light + level("High    ")), 0, 1, Same},
        {"Low", details(light + level("Low     ")), 0, 3, Same},
        {"Very High", details(light + level("Very High")), 0, 0, Same},
        {"slider", details(element("SmoothingMode", "Slider") + level("35.5")), 1, Same, 35.5F},
        {"before the method", packet(element("Version", "5.0") + light + element("Method", "Details Enhancer")), Same,
         Same, Same},
        {"the caller's mode", details(level("Low     ")), Same, Same, Same},
        {"unknown mode", details(element("SmoothingMode", "None") + level("3")), Same, Same, Same},
        {"attributes",
         packet(attribute("Version", "5.0") + attribute("Method", "Details Enhancer") +
                attribute("SmoothingMode", "Light") + attribute("Smoothing", "Medium")),
         0, 2, Same},
    };
    for (const auto& test : cases) {
        Slots slots;
        EXPECT_GT(parse(METHOD_DETAILS_ENHANCER, test.text, slots), 46) << test.what;
        EXPECT_EQ(slots[DETAILS_ENHANCER_SMOOTHING_MODE], test.mode) << test.what;
        EXPECT_EQ(slots[DETAILS_ENHANCER_SMOOTHING_LEVEL], test.level) << test.what;
        EXPECT_EQ(slots[DETAILS_ENHANCER_SMOOTHING_SLIDER], test.slider) << test.what;
    }
}

// At every offset within a search block, with surrounding text of every length.
TEST(Parameters, AreFoundAtEveryOffset) {
    for (std::size_t distance = 0; distance < 600; ++distance) {
        const Bytes filler = Bytes(distance, 't');
        const Bytes text = filler + elementPacket("Fusion/Intensive", filler + element("Radius", "70.0")) + filler;
        Slots slots;
        ASSERT_EQ(parse(METHOD_FUSION_INTENSIVE, text, slots), static_cast<std::int32_t>(text.find("tvtm:Method")));
        ASSERT_EQ(slots[FUSION_INTENSIVE_RADIUS], 70.0F) << distance;
    }
}

TEST(Occurrences, BothQuotesCount) {
    const Bytes text = packet("a") + "xmlns:tvtm='http://another.test/'" + packet("b", '"');
    EXPECT_EQ(tvsettings_occurences_in_xmp(size32(text) + 1, text.c_str()), 2);
    EXPECT_EQ(tvsettings_occurences_in_xmp(size32(text), text.c_str()), -3);
}

} // namespace
