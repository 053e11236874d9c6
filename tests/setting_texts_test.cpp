// The description of parameters, and their values as texts.
#include "testing/bytes.h"
#include "tvmeta.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>

using namespace test;

namespace {

using Slots = std::array<float, SETTINGS_SLOTS>;

Bytes settingText(std::int32_t method, std::int32_t index, const Slots& slots) {
    char text[TVMETA_SETTING_TEXT_SIZE];
    std::fill(std::begin(text), std::end(text), '#');
    const std::int32_t length = tvmeta_setting_text(method, index, slots.data(), text);
    EXPECT_EQ(Bytes(text), Bytes(text, static_cast<std::size_t>(length))); // terminated there
    return text;
}

// tvmeta_parameter lists the parameters of a packet in packet order.
TEST(Description, MatchesTheWrittenPacket) {
    for (const std::int32_t method : {1, 2, 3, 10, 11, 15}) {
        const Slots slots{};
        char text[2048] = {};
        embed_xmp(1, method + 200, slots.data(), 0, nullptr, text);
        const char* at = std::strstr(text, "<tvtm:Method>");
        ASSERT_NE(at, nullptr);
        EXPECT_EQ(Bytes(at).find("<tvtm:Method>" + Bytes(tvmeta_method_name(method)) + "</tvtm:Method>\n"), 0U);
        tvmeta_Parameter parameter;
        std::int32_t index = 0;
        for (; tvmeta_parameter(method, index, &parameter) > 0; ++index) {
            at = std::strstr(at + 1, "<tvtm:");
            ASSERT_NE(at, nullptr) << method << " " << index;
            EXPECT_EQ(Bytes(at).find("<tvtm:" + Bytes(parameter.name) + ">"), 0U) << parameter.name;
        }
        EXPECT_EQ(std::strstr(at + 1, "<tvtm:"), nullptr) << method;
        EXPECT_EQ(tvmeta_parameter(method, 0, nullptr), index);
        EXPECT_EQ(tvmeta_parameter(method, -1, nullptr), 0);
    }
    tvmeta_Parameter smoothing{};
    EXPECT_EQ(tvmeta_parameter(METHOD_DETAILS_ENHANCER, 6, &smoothing), 17);
    EXPECT_EQ(smoothing.slot, DETAILS_ENHANCER_SMOOTHING_LEVEL);
    EXPECT_EQ(smoothing.kind, TVMETA_SMOOTHING);
    EXPECT_EQ(tvmeta_parameter(4, 0, &smoothing), 0);
    EXPECT_EQ(smoothing.kind, TVMETA_SMOOTHING); // unchanged
    EXPECT_EQ(tvmeta_method_name(METHOD_NONE), nullptr);
    EXPECT_EQ(Bytes(tvmeta_version()).find("1."), 0U);
}

// Parameters: 0 Strength, 3 WhiteClip, 5 SmoothingMode, 6 Smoothing, 9 Gamma, 16 IsPano360.
TEST(SettingTexts, SetOneSlotOrNone) {
    constexpr std::int32_t details = METHOD_DETAILS_ENHANCER, optimizer = METHOD_CONTRAST_OPTIMIZER;
    const struct {
        const char* what;
        std::int32_t method, index;
        const char* text;
        std::int32_t result;
        Bytes shown; // afterwards
        int slot;
        float value;
        float mode = 0;
    } cases[] = {
        {"number", details, 0, "70.5", 1, "70.5", 1, 70.5F},
        {"rounded as in the packet", details, 0, "-70.26", 1, "-70.3", 1, -70.3F},
        {"plus, no digit before the point", details, 0, "+.5", 1, "0.5", 1, 0.5F},
        {"no digit after the point", details, 0, "5.", 1, "5.0", 1, 5.0F},
        {"exponent", details, 0, "12E-1", 1, "1.2", 1, 1.2F},
        {"fraction", details, 3, "0.0123456", 1, "0.012346", 3, 0.012346F},
        {"too large for a float", details, 0, "1e39", -3, "0.0", 1, 0},
        {"gamma 0.5", details, 9, "0.5", 1, "0.50", 8, 100},
        {"gamma, rounded", details, 9, "1.9999", 1, "2.00", 8, 0},
        {"default gamma", details, 9, nullptr, 1, "1.00", 8, 50},
        {"smallest gamma", details, 9, "0.0051", 1, "0.01", 8, 382.19280949F},
        {"gamma, rounded to 0", details, 9, "0.0049", -2, "2.00", 8, 0},
        {"gamma 0", details, 9, "0", -2, "2.00", 8, 0},
        {"largest gamma", details, 9, "10000", 1, "10000.00", 8, -614.38561898F},
        {"gamma above it", details, 9, "10000.01", -3, "2.00", 8, 0},
        {"clip", optimizer, 3, "5", 1, "5.000", 3, 1.1958244F},
        {"slot of a clip beyond a float", optimizer, 3, "1e14", -3, "0.000", 3, 0},
        {"Yes", details, 16, "Yes", 1, "Yes", 15, 1},
        {"No", details, 16, "No", 1, "No", 15, 0},
        {"Slider", details, 5, "Slider", 1, "Slider", 16, 1},
        {"Light", details, 5, "Light", 1, "Light", 16, 0, 1},
        {"default mode", details, 5, nullptr, 1, "Light", 16, 0, 1},
        {"level", details, 6, "Very Low", 1, "Very Low", 5, 4},
        {"slider", details, 6, "35.55", 1, "35.5", 17, 35.5F, 1}, // the nearest float is 35.549999
        {"slider, by the integer part of the mode", details, 6, "-3", 1, "-3.0", 17, -3.0F, 1.5F},
        {"default of the slider", details, 6, nullptr, 1, "0.0", 17, 0, 1},
        {"level for the slider", details, 6, "Low", -1, "0.0", 17, 0, 1},
    };
    for (const auto& test : cases) {
        Slots slots = {};
        slots[DETAILS_ENHANCER_SMOOTHING_MODE] = test.mode;
        Slots expected = slots;
        expected[static_cast<std::size_t>(test.slot)] = test.value;
        EXPECT_EQ(tvmeta_setting_value(test.method, test.index, test.text, slots.data()), test.result) << test.what;
        EXPECT_EQ(slots, expected) << test.what;
        EXPECT_EQ(settingText(test.method, test.index, slots), test.shown) << test.what;
    }
}

TEST(SettingTexts, RefuseOtherTexts) {
    const struct {
        std::int32_t method, index;
        std::vector<const char*> texts;
    } cases[] = {{1, 0, {"", ".", "1e+", "e5", " 7", "7 ", "1,5", "1.2.3", "0x10", "inf", "nan", "High"}},
                 {1, 6, {"Very", "3"}},
                 {1, 9, {"-1"}},
                 {1, 16, {"No ", "yes", "1"}},
                 {3, 3, {"-0.001"}}};
    for (const auto& test : cases) {
        for (const char* const text : test.texts) {
            Slots slots = {};
            EXPECT_EQ(tvmeta_setting_value(test.method, test.index, text, slots.data()), -1) << '"' << text << '"';
            EXPECT_EQ(slots, Slots()) << '"' << text << '"';
        }
    }
}

TEST(SettingTexts, ShowAnySlot) {
    constexpr float Nan = std::numeric_limits<float>::quiet_NaN();
    constexpr float Max = std::numeric_limits<float>::max();
    const struct {
        std::int32_t index;
        float value; // of every slot
        Bytes text;
    } cases[] = {
        {0, -Nan, "-nan"},      {0, INFINITY, "inf"}, {3, -Max, "-340282346638528859811704183484516925440.000000"},
        {6, 0.9F, "Very High"}, {6, 2.5F, "Medium"},  {6, 1e30F, "Very Low"},
        {6, Nan, "Very High"},  {6, 1.0F, "1.0"}, // the mode is slider
        {5, 2.0F, "Light"},     {16, 0.1F, "Yes"},    {16, Nan, "No"},
    };
    for (const auto& [index, value, text] : cases) {
        Slots slots;
        slots.fill(value);
        EXPECT_EQ(settingText(METHOD_DETAILS_ENHANCER, index, slots), text) << index << ' ' << value;
    }
}

// The text of each parameter is that of the packet, and setting it changes nothing.
TEST(SettingTexts, AreThoseOfThePacket) {
    for (const std::int32_t method : {1, 2, 3, 10, 11, 15}) {
        for (const float value : {0.0F, 1.0F, 3.0F, 36.8F}) {
            Slots slots;
            slots.fill(value);
            char packet[2048] = {};
            embed_xmp(1, method + 200, slots.data(), 0, nullptr, packet);
            tvmeta_Parameter parameter;
            for (std::int32_t i = 0; tvmeta_parameter(method, i, &parameter) > 0; ++i) {
                const Bytes text = settingText(method, i, slots);
                const Bytes tag = Bytes("tvtm:") + parameter.name + ">";
                const std::size_t start = Bytes(packet).find(tag) + tag.size();
                const Bytes written = Bytes(packet).substr(start, Bytes(packet).find('<', start) - start);
                EXPECT_EQ(text, written.substr(0, written.find_last_not_of(' ') + 1)) << parameter.name;
                Slots again = slots;
                EXPECT_EQ(tvmeta_setting_value(method, i, text.c_str(), again.data()), 1) << parameter.name;
                EXPECT_EQ(settingText(method, i, again), text) << parameter.name;
            }
        }
    }
}

TEST(SettingTexts, RefuseUnknownParametersAndNull) {
    Slots slots = {};
    char text[TVMETA_SETTING_TEXT_SIZE] = "#";
    const std::int32_t unknown[][2] = {{0, 0}, {4, 0}, {1, -1}, {1, 17}, {11, 3}};
    for (const auto& [method, index] : unknown) {
        EXPECT_EQ(tvmeta_setting_text(method, index, slots.data(), text), 0) << method << ' ' << index;
        EXPECT_EQ(tvmeta_setting_value(method, index, "1", slots.data()), 0) << method << ' ' << index;
    }
    EXPECT_EQ(tvmeta_setting_text(1, 0, nullptr, text), 0);
    EXPECT_EQ(tvmeta_setting_text(1, 0, slots.data(), nullptr), 0);
    EXPECT_EQ(tvmeta_setting_value(1, 0, "1", nullptr), -1);
    EXPECT_EQ(slots, Slots());
    EXPECT_EQ(Bytes(text), "#");
}

} // namespace
