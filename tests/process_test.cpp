// The library inside a process: many threads at once, and a locale that writes numbers with commas.
#include "testing/files.h"
#include "testing/photographs.h"
#include "tvmeta.h"

#include <clocale>
#include <cstring>
#include <gtest/gtest.h>
#include <thread>

using namespace test;

namespace {

template <typename Value>
Bytes bytesOf(const Value& value) {
    return {reinterpret_cast<const char*>(&value), sizeof value};
}

// Calls every function once on separate files and returns all results.
Bytes roundTrip(const TempDir& dir, const std::string& name) {
    const std::string photo = dir.write(name + ".jpg", fullJpeg());
    const std::string tiff = dir.path(name + ".tif");
    const std::string settingsFile = dir.path(name + ".xmp");
    ExifInfo info;
    Bytes out = std::to_string(getExifData(photo.c_str(), FILE_TYPE_JPEG, &info));
    MetadataBuf metadata = {};
    GpsBuf gps = {};
    get_exif_data(photo.c_str(), FILE_TYPE_JPEG, &metadata, &gps);
    out += bytesOf(metadata) + bytesOf(gps);
    SettingsValues settings = {1.5F, 2.25F, 3, 0.125F};
    write_xmp(settingsFile.c_str(), METHOD_DETAILS_ENHANCER, settings);
    const Bytes packet = readFile(settingsFile);
    SettingsValues read = {};
    read_xmp(settingsFile.c_str(), METHOD_DETAILS_ENHANCER, read);
    out += packet + bytesOf(read);
    out += std::to_string(tvsettings_occurences_in_xmp(size32(packet) + 1, packet.c_str()));
    const TifImageInfo image = {8, 8, 4, 16, 300, 5, 0, 1};
    const Bytes pixels(8 * 8 * 8, 'p');
    buf2tif(pixels.data(), &image, 64, reinterpret_cast<const unsigned char*>("icc.."), &metadata, &gps, 0, nullptr,
            METHOD_DETAILS_ENHANCER, settings, 0, nullptr, tiff.c_str());
    update_tif_profile(7, reinterpret_cast<const unsigned char*>("profile"), tiff.c_str());
    out += readFile(tiff);
    Bytes region = zeros(packet.size() + 1);
    out += std::to_string(extract_xmp(settingsFile.c_str(), 600, 0, region.data()));
    unsigned char iptc[6] = {};
    out += std::to_string(read_iptc(photo.c_str(), info.iptcLength, info.iptcOffset, iptc));
    unsigned char keywords[14] = {};
    out += std::to_string(add_iptc_keyword(6, iptc, 3, "key", keywords));
    float results[3] = {};
    const Bytes hdr(4 * 300, '\x78');
    hdrMinMax(300, 1, raw(hdr), results);
    float seconds = 0;
    time_from_datetime(info.dateTimeOriginal, 1'400'000'000, &seconds);
    return out + bytesOf(results) + bytesOf(seconds) + info.lens;
}

TEST(Process, ThreadsAreIndependent) {
    const TempDir dir;
    const Bytes expected = roundTrip(dir, "first");
    std::vector<std::thread> threads;
    std::vector<int> different(8);
    for (std::size_t i = 0; i < different.size(); ++i) {
        threads.emplace_back([&, i] {
            for (int round = 0; round < 20; ++round) {
                different[i] += roundTrip(dir, std::to_string(i)) != expected ? 1 : 0;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(different, std::vector<int>(8));
}

TEST(Process, IgnoresTheLocale) {
    const TempDir dir;
    const Bytes expected = roundTrip(dir, "c");
    const char* const comma = std::setlocale(LC_ALL, "de_DE.UTF-8");
    if (comma == nullptr) {
        GTEST_SKIP() << "no locale with commas is installed";
    }
    const Bytes result = roundTrip(dir, "c");
    std::setlocale(LC_ALL, "C");
    EXPECT_EQ(result, expected);
}

} // namespace
