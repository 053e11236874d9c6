// Writing settings and reading them back: packets, settings files, insertion into packets.
#include "testing/files.h"
#include "testing/system.h"
#include "tvmeta.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <memory>

using namespace test;

namespace {

const Bytes Opening = "<x:xmpmeta xmlns:x='adobe:ns:meta/'>\n"
                      "<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>\n\n";
const Bytes Closing = "</rdf:RDF>\n</x:xmpmeta>\n";

Bytes description(const Bytes& lines, const Bytes& number = "01") {
    return "<rdf:Description rdf:about=''\nxmlns:tvtm='http://" + Bytes(Host) + "/tonalvista_settings" + number +
           "'>\n" + element("Version", "5.0") + lines + "</rdf:Description>\n\n";
}

const Bytes Intensive = element("Method", "Fusion/Intensive") + element("Strength", "5.0") +
                        element("Saturation", "3.0") + element("Radius", "70.0");
constexpr SettingsValues IntensiveSettings = {5, 3, 70};

// The result of both passes, which must agree.
Bytes embed(std::int32_t pass, std::int32_t method, const float* settings, const char* lens = nullptr) {
    const std::int32_t lensLength = lens != nullptr ? 1 : 0;
    const std::int32_t size = embed_xmp(0, method, settings, lensLength, lens, nullptr);
    Bytes text(static_cast<std::size_t>(size) + 2, '\1');
    const std::int32_t written = embed_xmp(pass, method, settings, lensLength, lens, text.data());
    EXPECT_EQ(written, size + (pass > 99 ? 1 : 0));
    EXPECT_EQ(text[static_cast<std::size_t>(written)], '\1');
    return text.substr(0, static_cast<std::size_t>(written));
}

TEST(PacketWriter, Blocks) {
    const Bytes lens = "<rdf:Description rdf:about=''\nxmlns:aux='http://ns.adobe.com/exif/1.0/aux/'>\n"
                       "<aux:Lens>A<B&C</aux:Lens>\n</rdf:Description>\n\n";
    const float* settings = IntensiveSettings;
    EXPECT_EQ(embed(1, 0, nullptr), Opening + Closing);
    EXPECT_EQ(embed(1, -7, nullptr, "A<B&C"), Opening + lens + Closing);
    EXPECT_EQ(embed(1, 11, settings, "A<B&C"), Opening + lens + description(Intensive) + Closing);
    EXPECT_EQ(embed(9, 211, settings), description(Intensive, "09"));
    EXPECT_EQ(embed(10, 211, settings), description(Intensive, "10"));
    EXPECT_EQ(embed(-1, 211, settings), description(Intensive));
    EXPECT_EQ(embed(123, 211, settings), description(Intensive, "123"));
    EXPECT_EQ(embed(1, 4, settings), Opening + description("") + Closing);
    for (const std::int32_t method : {4, 9, 16, 200, 204}) { // codes that read no slot
        EXPECT_EQ(embed(1, method, nullptr), embed(1, method, settings)) << method;
    }
    EXPECT_EQ(embed(1, 200, nullptr), Opening + description("") + Closing);
    EXPECT_EQ(embed(1, 0, nullptr, Bytes(5000, 'l').c_str()).size(), 247U + 5000U);
}

// The value of a parameter in a packet.
Bytes valueOf(const Bytes& name, std::int32_t method, int slot, float value, SettingsValues settings) {
    settings[slot] = value;
    const Bytes text = embed(1, method, settings);
    const std::size_t start = text.find("<tvtm:" + name + ">") + name.size() + 7;
    return text.substr(start, text.find('<', start) - start);
}

TEST(PacketWriter, Values) {
    constexpr float Nan = std::numeric_limits<float>::quiet_NaN();
    const struct {
        const char* name;
        std::int32_t method;
        int slot;
        float value;
        const char* text;
    } cases[] = {
        {"Strength", 1, 1, 0.25F, "0.2"},
        {"Strength", 1, 1, 0.35F, "0.3"}, // exact ties round to even
        {"Strength", 1, 1, -0.04F, "-0.0"},
        {"Strength", 1, 1, 1e15F, "999999986991104.0"},
        {"Strength", 1, 1, -3e38F, "-300000000549775575777803994281145270272.0"},
        {"Strength", 1, 1, INFINITY, "inf"},
        {"Strength", 1, 1, -Nan, "-nan"},
        {"WhiteClip", 1, 3, 0.25F, "0.250000"},
        {"WhiteClip", 1, 3, 1e-7F, "0.000000"},
        {"BlackClip", 10, 5, 999999.94F, "999999.937500"},
        {"Gamma", 1, 8, 0, "2.00"},
        {"Gamma", 1, 8, 25, "1.41"},
        {"Gamma", 1, 8, 100, "0.50"},
        {"Gamma", 1, 8, -INFINITY, "inf"},
        {"Gamma", 1, 8, -Nan, "-nan"},
        {"WhiteClip", 3, 3, 5, "7.975"},
        {"BlackClip", 3, 4, 0, "0.000"},
        {"WhiteClip", 3, 3, -5, "-nan"}, // not defined; the same text on every platform
        {"WhiteClip", 3, 3, Nan, "nan"},
        {"Smoothing", 1, 5, 2.9F, "Medium  "},
        {"Smoothing", 1, 5, 0.9F, "Very High"},
        {"Smoothing", 1, 5, 77, "Very Low"},
        {"Smoothing", 1, 5, -1, "Very High"},
        {"Smoothing", 1, 5, Nan, "Very High"},
        {"Smoothing", 1, 16, 1.9F, "3.5"},
        {"SmoothingMode", 1, 16, 1.9F, "Slider"},
        {"SmoothingMode", 1, 16, 1, "Slider"},
        {"SmoothingMode", 1, 16, 2, "Light"},
        {"SmoothingMode", 1, 16, Nan, "Light"},
        {"IsPano360", 1, 15, 0.5F, "Yes"},
        {"IsPano360", 3, 15, -1, "No "},
        {"IsPano360", 10, 7, Nan, "No "},
        {"LocalContrast", 15, 8, 4, "4.0"},
        {"Saturation", 2, 13, -9.95F, "-9.9"},
    };
    for (const auto& test : cases) {
        SettingsValues settings = {};
        settings[DETAILS_ENHANCER_SMOOTHING_SLIDER] = 3.5F;
        EXPECT_EQ(valueOf(test.name, test.method, test.slot, test.value, settings), test.text)
            << test.name << test.value;
    }
}

TEST(SettingsFile, Results) {
    const TempDir dir;
    SettingsValues settings = {};
    EXPECT_EQ(write_xmp(dir.path("four").c_str(), 4, settings), -2);
    EXPECT_FALSE(std::filesystem::exists(dir.path("four")));
    EXPECT_EQ(write_xmp(dir.path("none/file").c_str(), 1, settings), -1);
    if (hasFullDevice()) {
        EXPECT_EQ(write_xmp(FullDevice, 1, settings), -3);
    }
    EXPECT_EQ(write_xmp(dir.path("eleven").c_str(), 11, IntensiveSettings), 1);
    EXPECT_EQ(readFile(dir.path("eleven")), Opening + description(Intensive) + Closing);
    EXPECT_EQ(read_xmp(dir.path("eleven").c_str(), METHOD_DETECT, nullptr), 11);
    EXPECT_EQ(read_xmp(dir.path("eleven").c_str(), 1, settings), -5);
    EXPECT_GT(read_xmp(dir.path("eleven").c_str(), 11, settings), 46);
    EXPECT_TRUE(std::equal(settings, settings + SETTINGS_SLOTS, IntensiveSettings));
    EXPECT_EQ(read_xmp(dir.path("none").c_str(), METHOD_DETECT, nullptr), -1);
    const std::string folder = dir.path("");
    for (const char* directory : {folder.c_str(), "/proc/self"}) { // the second reports a size of 0
        EXPECT_EQ(read_xmp(directory, METHOD_DETECT, nullptr), -1) << directory;
    }
    EXPECT_EQ(read_xmp(dir.write("empty", "").c_str(), 1, settings), 0);
    EXPECT_EQ(read_xmp(dir.path("none").c_str(), MODE_LENS, nullptr), -1);
    EXPECT_EQ(read_xmp(dir.path("eleven").c_str(), MODE_LENS, settings), -5);
    std::filesystem::resize_file(dir.path("empty"), INT32_MAX); // with its terminator, too long for 32 bits
    EXPECT_EQ(read_xmp(dir.path("empty").c_str(), METHOD_DETECT, nullptr), -1);
}

TEST(ExtractXmp, Regions) {
    const TempDir dir;
    const Bytes text = elementPacket("Fusion/Real-Estate", "");
    const auto count = size32(text);
    const std::string path = dir.write("image", "ab" + text + "c");
    const struct {
        std::int32_t count, offset, result;
    } cases[] = {{count, 2, 15},      {count + 1, 2, 0}, {count, -1, 0}, {-1, 2, -3}, {-1, -1, 0},
                 {-9, count + 20, 0}, {INT32_MAX, 2, 0}, {20, 2, 0},     {0, 2, 0}};
    for (const auto& test : cases) {
        Bytes buffer = zeros(text.size() + 2);
        EXPECT_EQ(extract_xmp(path.c_str(), test.count, test.offset, buffer.data()), test.result) << test.count;
        const bool isRead = test.offset == 2 && test.count > 0 && test.count <= count;
        const Bytes region = isRead ? text.substr(0, static_cast<std::size_t>(test.count)) : "";
        EXPECT_EQ(buffer, region + zeros(buffer.size() - region.size())) << test.count;
    }
    Bytes unterminated(text.size() + 2, 'x');
    EXPECT_EQ(extract_xmp(path.c_str(), count, 2, unterminated.data()), -3);
    Bytes buffer = zeros(2);
    EXPECT_EQ(extract_xmp(dir.path("").c_str(), 1, 0, buffer.data()), -1);
    EXPECT_EQ(extract_xmp(dir.path("none").c_str(), 1, 0, unterminated.data()), -1);
    EXPECT_EQ(extract_xmp(dir.path("none").c_str(), -1, 0, unterminated.data()), -1);
    EXPECT_EQ(extract_xmp(dir.write("empty", "").c_str(), 0, 0, unterminated.data()), -1);
}

TEST(InsertXmp, PlacesTheDescription) {
    const Bytes added = description(Intensive);
    const Bytes rdf = "<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>";
    const Bytes meta = "<x:xmpmeta xmlns:x='adobe:ns:meta/'>";
    const auto doubled = [](Bytes text) {
        std::replace(text.begin(), text.end(), '\'', '"');
        return text;
    };
    const auto size = [](const Bytes& text) { return -size32(text); };
    const Bytes mixed = meta + doubled(rdf).replace(63, 1, "'") + "\n\n  ";
    const struct {
        const char* what;
        Bytes before, after;
        std::int32_t failure;
    } cases[] = {
        {"this library's own", Opening.substr(0, Opening.size() - 1), "\n" + description("a") + Closing, 0},
        {"indented line", meta + rdf, "\n  <rdf:Description/>", 0},
        {"blank line with a carriage return", meta + rdf + "\r", "\nxx", 0},
        {"second and third byte are line feeds", meta + rdf + "x\n", "\nxx", 0},
        {"double quotes", doubled(meta + rdf), "\n  ", 0},
        {"after other text", "<?xpacket?>" + meta + " " + rdf, "\n  ", 0},
        {"mixed quotes", mixed, "", size(mixed)},
        {"nothing", "", "", -34},
        {"no room for an opening", "<x:xmpmeta", "", -34},
        {"opening ends the data", meta.substr(0, 34), "", -34},
        {"no RDF opening", meta + zeros(99), "", -size32(meta) - 99},
        {"no room for it", meta, "", -34 - 65},
        {"RDF before xmpmeta", rdf + meta + zeros(70), "", size(rdf + meta + zeros(70))},
        {"two bytes follow", meta + rdf, "xx", -1},
        {"two bytes follow a line feed", meta + rdf, "\n\nx", -1},
    };
    const std::int32_t shift = insert_xmp(0, 11, IntensiveSettings, 0, 0, nullptr);
    EXPECT_EQ(shift, size32(added));
    Bytes numberless = meta + rdf + "\n  " + added;
    EXPECT_EQ(insert_xmp(-1, 11, IntensiveSettings, size32(meta + rdf) + 3, shift, numberless.data()), shift);
    EXPECT_EQ(numberless, meta + rdf + added + "\n  ");
    for (const auto& test : cases) {
        const Bytes data = test.before + test.after;
        Bytes buffer = data + Bytes(added.size() + 1, '!');
        const std::int32_t result = insert_xmp(1, 11, IntensiveSettings, size32(data), shift, buffer.data());
        EXPECT_EQ(result, test.failure < 0 ? test.failure : shift) << test.what;
        const Bytes expected = test.failure < 0 ? data + Bytes(added.size(), '!') : test.before + added + test.after;
        EXPECT_EQ(buffer, expected + "!") << test.what;
    }
}

// The largest code, which names no method: a description without a method and its parameters.
TEST(InsertXmp, LargestMethodCode) {
    EXPECT_EQ(insert_xmp(0, INT32_MAX - 200, IntensiveSettings, 0, 0, nullptr), size32(description("")));
    EXPECT_EQ(insert_xmp(0, INT32_MAX - 199, IntensiveSettings, 0, 0, nullptr), -1);
}

// An opening at the end of 2^31 - 1 bytes: the negated end offset of the next search does not fit in 32 bits.
TEST(InsertXmp, LargestPacket) {
    constexpr std::size_t Size = INT32_MAX;
    const std::unique_ptr<char, decltype(&std::free)> packet(static_cast<char*>(std::calloc(Size, 1)), std::free);
    if (!packet) {
        GTEST_SKIP() << "no memory for 2 GiB";
    }
    std::memcpy(packet.get() + Size - 40, "<x:xmpmeta xmlns:x='adobe:ns:meta/'>", 36);
    EXPECT_EQ(insert_xmp(1, 11, IntensiveSettings, INT32_MAX, 292, packet.get()), INT32_MIN);
}

} // namespace
