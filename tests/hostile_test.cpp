// Hostile input: every prefix and every changed byte of a seed of each kind, and arguments that the header does not
// allow. Sanitizers and the results show faults.
#include "testing/golden.h"
#include "testing/memory_file.h"
#include "testing/photographs.h"
#include "testing/results.h"
#include "tvmeta.h"

#include <cstring>
#include <gtest/gtest.h>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

using namespace test;

namespace {

// An allocation of exactly these bytes, so that a sanitizer detects reads past the end.
class Exact {
  public:
    explicit Exact(const Bytes& bytes) : size_(size32(bytes)), block_(new char[bytes.size()]) {
        std::memcpy(block_.get(), bytes.data(), bytes.size());
    }
    const char* text() const { return block_.get(); }
    const unsigned char* bytes() const { return reinterpret_cast<const unsigned char*>(block_.get()); }
    std::int32_t size() const { return size_; }

  private:
    std::int32_t size_;
    std::unique_ptr<char[]> block_;
};

void readPhoto(const MemoryFile& file, const Bytes& bytes, Digest& digest) {
    const char* const path = file.write(bytes).path();
    for (const std::int32_t fileType : {FILE_TYPE_TIFF, FILE_TYPE_JPEG, FILE_TYPE_PSD}) {
        ExifInfo info;
        const std::int32_t result = getExifData(path, fileType, &info);
        ASSERT_TRUE(result == 1 || result == -1 || result == -2 || result == -3 || result == -10);
        digest.addRecord(result);
        digest.addRecord(info);
        ASSERT_EQ(info.model[63] | info.dateTimeOriginal[19] | info.gpsDateStamp[10] | info.lens[63], 0);
    }
    unsigned char iptc[64] = {};
    ASSERT_LE(read_iptc(path, 6, 20, iptc), 6);
    digest.addRecord(iptc);
    const Stream stream(std::fopen(path, "rb"));
    std::int32_t count = 0;
    const std::int32_t found = get_tif_tag(stream.get(), 34853, &count, &count);
    ASSERT_GE(found, -3);
    ExifInfo info = {};
    std::fseek(stream.get(), 8, SEEK_SET);
    digest.addRecord(parse_exif_data(stream.get(), 0, 0x4949, 0, &info));
    std::fseek(stream.get(), 8, SEEK_SET);
    digest.addRecord(parse_gps_data(stream.get(), 0, 0x4949, 0, &info));
    digest.addRecord(found);
    digest.addRecord(info);
}

void readPacket(const MemoryFile&, const Bytes& bytes, Digest& digest) {
    const Exact text(bytes + '\0');
    for (const std::int32_t method : {-1, 1, 2, 3, 10, 11, 15}) {
        SettingsValues settings = {};
        const std::int32_t result = get_settings_from_xmp(method, text.size(), text.text(), nullptr, settings);
        digest.addRecord(result);
        digest.addRecord(settings);
        ASSERT_TRUE(result == 0 || result == -5 || result > 46 || (method == -1 && result > 0));
    }
    char lens[64] = {};
    ASSERT_GE(get_settings_from_xmp(MODE_LENS, text.size(), text.text(), lens, nullptr), 0);
    ASSERT_EQ(lens[63], 0);
    ASSERT_LE(tvsettings_occurences_in_xmp(text.size(), text.text()), 2);
    const SettingsValues settings = {};
    const std::int32_t shift = insert_xmp(0, 11, settings, 0, 0, nullptr);
    Exact room(bytes + zeros(static_cast<std::size_t>(shift)));
    ASSERT_LE(insert_xmp(1, 11, settings, room.size() - shift, shift, const_cast<char*>(room.text())), shift);
    digest.addRecord(lens);
    digest.add({room.text(), static_cast<std::size_t>(room.size())});
}

void readBlocks(const MemoryFile&, const Bytes& bytes, Digest& digest) {
    const Exact block(bytes);
    char name[64] = {};
    const std::int32_t named = get_profile_name(block.size(), block.bytes(), name);
    ASSERT_TRUE(named == -1 || named == 4 || named == 9 || named == 12 || named == 32);
    Exact out(bytes + zeros(8 + (bytes.empty() ? 7 : 0)));
    ASSERT_LE(add_iptc_keyword(block.size(), block.bytes(), 3, "key", const_cast<unsigned char*>(out.bytes())),
              std::max(block.size(), 7));
    Bytes copy = bytes + ' ';
    const Stream stream = streamOf(copy);
    ExifInfo info = {};
    ASSERT_GE(parse_image_description(stream.get(), block.size(), &info), -100'000'000);
    std::rewind(stream.get());
    digest.addRecord(parse_photoshop_data(stream.get(), block.size(), &info));
    digest.addRecord(info);
    digest.addRecord(name);
    digest.add({out.text(), static_cast<std::size_t>(out.size())});
}

TEST(Hostile, EveryPrefixAndEveryChangedByte) {
    const Bytes attributes =
        packet(attribute("Version", "5.0") + attribute("Method", "Details Enhancer") + attribute("Gamma", "1.00") +
                   attribute("SmoothingMode", "Slider") + attribute("Smoothing", "35.5") +
                   " xmlns:aux=\"http://ns.adobe.com/exif/1.0/aux/\" "
                   "aux:Lens=\"TV\"",
               '"');
    SettingsValues settings = {};
    Bytes written(2000, '\0');
    written.resize(static_cast<std::size_t>(embed_xmp(1, 1, settings, 1, "TV lens", written.data())));
    const struct {
        const char* what;
        Bytes seed;
        void (*read)(const MemoryFile&, const Bytes&, Digest&);
    } seeds[] = {
        {"JPEG", fullJpeg(), readPhoto},
        {"TIFF, little-endian", fullTiff(true), readPhoto},
        {"TIFF, big-endian", fullTiff(false), readPhoto},
        {"PSD", psd(resource(1028, "x") + resource(1058, Tiff().finish(8))), readPhoto},
        {"packet of elements", written, readPacket},
        {"packet of attributes", attributes, readPacket},
        {"ICC profile", zeros(40) + "desc" + zeros(7) + "\x10" + "Adobe RGB (1998)" + zeros(8), readBlocks},
        {"IPTC block", dataset(2, 0, Bytes("\2\0", 2)) + dataset(2, 25, "first") + dataset(2, 90, "x"), readBlocks},
        {"description", "a, b, c, d, e, f, g, 1/250s, R30, G30, B30", readBlocks},
        {"resources", resource(0x040C, zeros(28)) + resource(0x0404, "IPTC"), readBlocks},
    };
    Results results;
    const MemoryFile file;
    testing::internal::CaptureStderr(); // the library reports broken markers thousands of times
    for (const auto& [what, seed, read] : seeds) {
        SCOPED_TRACE(what);
        Digest digest;
        for (std::size_t size = 0; size <= seed.size(); ++size) {
            ASSERT_NO_FATAL_FAILURE(read(file, seed.substr(0, size), digest));
        }
        for (std::size_t i = 0; i < seed.size(); ++i) {
            std::vector<int> changes = {0x00, 0x7F, 0x80, 0xFF, ~seed[i]};
            for (int bit = 0; bit < 8; ++bit) {
                changes.push_back(seed[i] ^ (1 << bit));
            }
            for (const int change : changes) {
                Bytes changed = seed;
                changed[i] = static_cast<char>(change);
                ASSERT_NO_FATAL_FAILURE(read(file, changed, digest)) << i;
            }
        }
        results.add(what, digest.value());
    }
    testing::internal::GetCapturedStderr();
    results.compare("hostile");
}

// The results of a call with each of its pointers null in turn.
template <typename Result, typename... Parameters>
std::vector<std::int32_t> withNulls(Result (*function)(Parameters...), std::type_identity_t<Parameters>... arguments) {
    std::vector<std::int32_t> results;
    const auto call = [&]<std::size_t At>(std::integral_constant<std::size_t, At>) {
        if constexpr (std::is_pointer_v<std::tuple_element_t<At, std::tuple<Parameters...>>>) {
            std::tuple<Parameters...> changed(arguments...);
            std::get<At>(changed) = nullptr;
            results.push_back(static_cast<std::int32_t>(std::apply(function, changed)));
        }
    };
    [&]<std::size_t... At>(std::index_sequence<At...>) {
        (call(std::integral_constant<std::size_t, At>()), ...);
    }
    (std::index_sequence_for<Parameters...>());
    return results;
}

// Every pointer of every function. Each call succeeds with all of them, so that only the null pointer can fail.
TEST(Hostile, EveryPointerNull) {
    const TempDir dir;
    const std::string photo = dir.write("a.jpg", fullJpeg());
    const std::string settingsFile = dir.write("a.xmp", elementPacket("Fusion/Intensive", ""));
    const std::string iptcFile = dir.write("iptc", "\x1C\x02\x19");
    const std::string tiffFile = dir.write("a.tif", Tiff().finish(8) + le16(1) + le16(34675) + le16(7) + zeros(8));
    const std::string out = dir.path("out");
    Bytes tiff = fullTiff(true), description = "1, 2",
          packetText = lensPacket("<aux:Lens>TV</aux:Lens>") + elementPacket("Fusion/Intensive", "") + '\0';
    Bytes wrapped(1000, '\0');
    const Stream onTiff = streamOf(tiff), onText = streamOf(description);
    FILE* const stream = onTiff.get();
    ExifInfo info = {};
    MetadataBuf camera = {};
    std::strcpy(camera.model, "X");
    GpsBuf gps = {};
    SettingsValues settings = {};
    tvmeta_Parameter parameter;
    const TifImageInfo image = {1, 1, 3, 8, 300, 4, 0, 1};
    Bytes block(2000, ' ');
    unsigned char* const bytes = raw(block);
    char* const text = block.data();
    char name[64];
    float floats[3] = {};
    std::int32_t n = 0;
    const std::int32_t added = insert_xmp(0, 11, settings, 0, 0, nullptr);
    ASSERT_EQ(embed_xmp(1, 0, nullptr, 0, nullptr, wrapped.data()), 128);
    const struct {
        const char* function;
        std::vector<std::int32_t> results, documented;
    } cases[] = {
        {"tvmeta_file_type", withNulls(tvmeta_file_type, photo.c_str()), {-1}},
        {"getExifData", withNulls(getExifData, photo.c_str(), FILE_TYPE_JPEG, &info), {-1, -1}},
        {"get_exif_data", withNulls(get_exif_data, photo.c_str(), FILE_TYPE_JPEG, &camera, &gps), {0, 0, 0}},
        {"read_iptc", withNulls(read_iptc, iptcFile.c_str(), 2, 0, bytes), {-1, -1}},
        {"extract_xmp", withNulls(extract_xmp, settingsFile.c_str(), 150, 0, text), {-1, -3}},
        {"get_profile_name", withNulls(get_profile_name, 200, bytes, name), {-1, -1}},
        {"time_from_datetime", withNulls(time_from_datetime, "2013:05:01 12:00:00", 0, floats), {-1, -1}},
        {"metadataBufFromExifInfo", withNulls(metadataBufFromExifInfo, &info, &camera, &gps), {0, 0, 0}},
        {"buf2tif",
         withNulls(buf2tif, bytes, &image, 3, bytes, &camera, &gps, 4, bytes, 11, settings, 4, text, out.c_str()),
         {-6, -6, -6, -6, -6, -6, -6, -6, -6}},
        {"get_exif_count", withNulls(get_exif_count, &camera, &n, &n, &gps, &n, &n, &n, &n, &n, &n, &n, text),
         std::vector<std::int32_t>(12, 0)},
        {"write_exif_buf",
         withNulls(write_exif_buf, 0, 0, 0, 0, 2, 2, 0, 0, 1, &camera, &gps, text, bytes),
         {-1, -1, -1, -1}},
        {"tvmeta_setting_text", withNulls(tvmeta_setting_text, 11, 0, settings, text), {0, 0}},
        {"tvmeta_setting_value", withNulls(tvmeta_setting_value, 11, 0, "1", settings), {1, -1}},
        {"tvmeta_parameter", withNulls(tvmeta_parameter, 11, 0, &parameter), {3}},
        {"a slot",
         withNulls(get_settings_from_xmp, 11, size32(packetText), packetText.data(), text, settings),
         {-3, size32(packetText.substr(0, packetText.find("tvtm:Method"))), -3}},
        {"a lens",
         withNulls(get_settings_from_xmp, MODE_LENS, size32(packetText), packetText.data(), name, settings),
         {-3, -3, size32(packetText.substr(0, packetText.find("</aux:Lens")))}},
        {"tvsettings_occurences_in_xmp",
         withNulls(tvsettings_occurences_in_xmp, size32(packetText), packetText.data()),
         {-3}},
        {"read_xmp", withNulls(read_xmp, settingsFile.c_str(), 11, settings), {-1, -3}},
        {"write_xmp", withNulls(write_xmp, out.c_str(), 11, settings), {-1, -2}},
        {"embed_xmp", withNulls(embed_xmp, 1, 11, settings, 1, "L", text), {0, 0, 0}},
        {"insert_xmp", withNulls(insert_xmp, 1, 11, settings, 128, added, wrapped.data()), {-1, -1}},
        {"update_tif_profile", withNulls(update_tif_profile, 5, bytes, tiffFile.c_str()), {-2, -1}},
        {"add_iptc_keyword", withNulls(add_iptc_keyword, 7, raw(tiff), 1, "k", bytes), {-1, -1, -1}},
        {"hdrMinMax", withNulls(hdrMinMax, 1, 1, bytes, floats), {-4, -4}},
        {"fgetmi2", withNulls(fgetmi2, stream, 0x4949), {0xFFFF}},
        {"fgetmi4", withNulls(fgetmi4, stream, 0x4949), {static_cast<std::int32_t>(0xFEFEFEFF)}},
        {"fgetm2", withNulls(fgetm2, stream), {0xFFFF}},
        {"fgetm4", withNulls(fgetm4, stream), {static_cast<std::int32_t>(0xFEFEFEFF)}},
        {"parse_exif_data", withNulls(parse_exif_data, stream, 0, 0x4949, 0, &info), {1, 1}},
        {"parse_gps_data", withNulls(parse_gps_data, stream, 0, 0x4949, 0, &info), {1, 1}},
        {"parse_image_description", withNulls(parse_image_description, onText.get(), 4, &info), {-1, -1}},
        {"parse_photoshop_data", withNulls(parse_photoshop_data, onText.get(), 4, &info), {-4, -4}},
        {"get_tif_tag", withNulls(get_tif_tag, stream, 272, &n, &n), {-3, -3, -3}},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(test.results, test.documented) << test.function;
    }
    init_exifInfo(nullptr);
    EXPECT_FALSE(std::filesystem::exists(out));
    EXPECT_EQ(block, Bytes(2000, ' '));
}

// Invalid lengths and arguments give the documented result and change nothing.
TEST(Hostile, Arguments) {
    ExifInfo info = {};
    MetadataBuf metadata = {};
    GpsBuf gps = {};
    SettingsValues settings = {};
    char text[64] = "x";
    unsigned char bytes[64] = "x";
    const TifImageInfo image = {1, 1, 3, 8, 300, 0, 0, 1}, empty = {1, 0, 3, 8, 300, 0, 0, 1};
    const TifImageInfo badProfile = {1, 1, 3, 8, 300, -5, 0, 1};
    const TempDir dir;
    const std::string outPath = dir.path("out.tif");
    const char* const out = outPath.c_str();
    Bytes tiffBytes = fullTiff(true);
    const Stream stream = streamOf(tiffBytes);
    const auto save = [&](const TifImageInfo* what, const void* icc, std::int32_t iptcLength, const void* iptc,
                          std::int32_t method, std::int32_t xmpLength, const char* xmp) {
        return buf2tif(bytes, what, 3, static_cast<const unsigned char*>(icc), &metadata, &gps, iptcLength,
                       static_cast<const unsigned char*>(iptc), method, nullptr, xmpLength, xmp, out);
    };
    const struct {
        const char* call;
        std::int32_t result, documented;
    } cases[] = {
#define CASE(call, documented) {#call, call, documented}
        // clang-format off
        CASE(parse_image_description(stream.get(), INT32_MAX, &info), -1),
        CASE(get_profile_name(INT32_MIN, bytes, text), -1),
        CASE(add_iptc_keyword(0, nullptr, 0, nullptr, bytes), 7),
        CASE(read_iptc("/proc/self/exe", INT32_MAX, INT32_MAX, bytes), 0),
        CASE(get_settings_from_xmp(-1, INT32_MIN, text, nullptr, nullptr), -3),
        CASE(get_settings_from_xmp(-1, 9, nullptr, nullptr, nullptr), -3), CASE(hdrMinMax(0, 0, nullptr, nullptr), -4),
        CASE(insert_xmp(1, 11, settings, -64, 9, text), -1), CASE(insert_xmp(1, 11, settings, 64, -9, text), -1),
        CASE(save(&badProfile, bytes, 0, nullptr, 0, 0, nullptr), -6),
        CASE(save(&image, nullptr, -9, bytes, 0, 0, nullptr), -6),
        CASE(save(&image, nullptr, INT32_MAX, bytes, 0, 0, nullptr), -6),
        CASE(save(&image, nullptr, 0, nullptr, 211, 0, nullptr), -6),
        CASE(save(&image, nullptr, 0, nullptr, 0, -9, text), -6),
        CASE(write_exif_buf(0, 0, 0, 0, INT32_MAX, INT32_MAX, 0, 0, 1, &metadata, &gps, text, bytes), -1),
    // clang-format on
#undef CASE
    };
    for (const auto& test : cases) {
        EXPECT_EQ(test.result, test.documented) << test.call;
    }
    EXPECT_FALSE(std::filesystem::exists(outPath));
    // Without rows, null pixels are valid.
    EXPECT_EQ(buf2tif(nullptr, &empty, 0, nullptr, &metadata, &gps, 0, nullptr, 0, nullptr, 0, nullptr, out), 0);
}

} // namespace
