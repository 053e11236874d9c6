// A few thousand results of the functions of tvmeta.h: numbers, packets, records, files. In the groups
// named "libm" the library uses logarithms and powers of the C library, whose last bit differs between platforms; the
// results are rounded to float or to two decimals.
#include "testing/files.h"
#include "testing/generated.h"
#include "testing/golden.h"
#include "testing/photographs.h"
#include "tvmeta.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <gtest/gtest.h>

using namespace test;

namespace {

float settingOf(std::int32_t method, const char* name, const Bytes& line, int slot) {
    const Bytes text = elementPacket(name, line) + '\0';
    SettingsValues settings = {};
    get_settings_from_xmp(method, size32(text), text.data(), nullptr, settings);
    return settings[slot];
}

void addNumbers(Results& results) {
    Random random;
    for (int i = 0; i < 1500; ++i) {
        const Bytes line = element("Radius", randomNumber(random));
        results.addBits("scanned",
                        settingOf(METHOD_FUSION_INTENSIVE, "Fusion/Intensive", line, FUSION_INTENSIVE_RADIUS));
    }
    for (int i = 0; i < 500; ++i) {
        Bytes gamma = std::to_string(random.below(5)) + '.';
        gamma += std::to_string(random.below(100'000));
        const Bytes line = element("Gamma", gamma);
        results.addBits("libm gamma",
                        settingOf(METHOD_DETAILS_ENHANCER, "Details Enhancer", line, DETAILS_ENHANCER_GAMMA));
    }
}

void addPackets(Results& results) {
    Random random;
    for (int i = 0; i < 1000; ++i) {
        static constexpr std::int32_t Methods[] = {1, 2, 3, 10, 11, 15};
        SettingsValues settings;
        for (float& slot : settings) {
            slot = i % 2 == 0 ? static_cast<float>(random.below(2'000'000)) / 10'000 - 50
                              : std::bit_cast<float>(random.next());
        }
        Bytes packet(8192, '\0');
        const std::int32_t size = embed_xmp(1, Methods[i % 6], settings, 4, "lens", packet.data());
        packet.resize(static_cast<std::size_t>(size));
        results.add("libm packet", hashOf(packet));
    }
}

// Random photographs, and the EXIF blocks of their records.
void addPhotographs(Results& results, const TempDir& dir) {
    addRounds(results, "generated", 4000, 100, [&](int i, Random& random, Digest& digest) {
        const Bytes photo = randomPhoto(random);
        const bool isJpeg = i % 4 == 0;
        const std::string path = dir.write("photo", isJpeg ? jpeg(exifSegment(photo)) : photo);
        ExifInfo info;
        digest.addRecord(getExifData(path.c_str(), isJpeg ? FILE_TYPE_JPEG : FILE_TYPE_TIFF, &info));
        MetadataBuf metadata = {};
        GpsBuf gps = {};
        metadataBufFromExifInfo(&info, &metadata, &gps);
        std::int32_t n[9];
        char make[64] = {};
        get_exif_count(&metadata, &n[0], &n[1], &gps, &n[2], &n[3], &n[4], &n[5], &n[6], &n[7], &n[8], make);
        Bytes block(4000, '\0');
        digest.addRecord(
            write_exif_buf(n[0], n[1], n[2], n[3], n[4], n[5], n[6], n[7], i % 10, &metadata, &gps, make, raw(block)));
        digest.addRecord(info);
        digest.add(block);
    });
}

void addFiles(Results& results, const TempDir& dir) {
    Random random;
    ExifInfo info;
    getExifData(dir.write("photo.jpg", fullJpeg()).c_str(), FILE_TYPE_JPEG, &info);
    MetadataBuf metadata = {};
    GpsBuf gps = {};
    metadataBufFromExifInfo(&info, &metadata, &gps);
    const Bytes profile(500, 'p');
    Bytes pixels(20 * 20 * 4 * 4, '\0');
    std::ranges::generate(pixels, [&] { return static_cast<char>(random.next()); });
    for (int i = 0; i < 300; ++i) {
        static constexpr std::int32_t BitsAndModes[][2] = {{8, 0}, {16, 0}, {16, 1}, {32, 0}, {3216, 0}};
        const auto [bits, mode] = BitsAndModes[i / 4 % 5];
        const auto side = static_cast<std::int32_t>(random.below(20) + 1);
        const TifImageInfo image = {side, 20, 1 + i % 4, bits, 300, i % 3 == 0 ? 500 : 0, mode, 1 + i % 8};
        const SettingsValues settings = {5, 3, 70};
        const std::string path = dir.path("result.tif");
        const std::int32_t result =
            buf2tif(pixels.data(), &image, side * 16, raw(profile), &metadata, &gps, 0, nullptr,
                    i % 2 == 0 ? METHOD_FUSION_INTENSIVE : METHOD_NONE, settings, 0, nullptr, path.c_str());
        results.addCode("tiff result", result);
        results.add("tiff", result > 0 ? hashOf(readFile(path)) : 0);
    }
}

TEST(Golden, ResultsAreTheSameOnEveryPlatform) {
    const TempDir dir;
    Results results;
    addNumbers(results);
    addPackets(results);
    addPhotographs(results, dir);
    addFiles(results, dir);
    results.compare("functions");
}

} // namespace
