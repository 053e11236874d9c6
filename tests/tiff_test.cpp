// Writing: TIFF files byte for byte.
#include "testing/camera_records.h"
#include "testing/files.h"
#include "testing/system.h"
#include "tvmeta.h"

#include <array>
#include <cstring>
#include <gtest/gtest.h>

using namespace test;

namespace {

// All arguments of buf2tif, with empty profile, IPTC block and packet.
struct Job {
    TifImageInfo info = {1, 1, 3, 8, 300, 0, 0, 1};
    Bytes pixels = zeros(64);
    std::int32_t pitch = 3;
    std::int32_t firstRow = 0;
    MetadataBuf metadata = {};
    GpsBuf gps = {};
    Bytes icc, iptc, xmp;
    std::int32_t method = 0;
    SettingsValues settings = {};

    std::int32_t save(const std::string& path) {
        info.iccLength = size32(icc);
        return buf2tif(pixels.data() + firstRow, &info, pitch, raw(icc), &metadata, &gps, size32(iptc), raw(iptc),
                       method, settings, size32(xmp), xmp.data(), path.c_str());
    }
    Bytes file() {
        const TempDir dir;
        EXPECT_GE(save(dir.path("out.tif")), 0);
        return readFile(dir.path("out.tif"));
    }
};

// The value of a tag in the first directory, in the entry or at its offset.
Bytes valueOf(const Bytes& file, unsigned tag, std::size_t size) {
    const std::size_t directory = loadLe32(file, 4);
    for (std::size_t i = 0; i < loadLe16(file, directory); ++i) {
        const std::size_t at = directory + 2 + 12 * i;
        if (loadLe16(file, at) == tag) {
            return file.substr(size <= 4 ? at + 8 : loadLe32(file, at + 8), size);
        }
    }
    return "absent";
}

TEST(Tiff, MinimalFile) {
    Job job;
    job.pixels = "RGB";
    const Bytes resolution = le32(300000) + le32(1000);
    const std::uint32_t values = 11 + 2 + 14 * 12 + 4;
    EXPECT_EQ(job.file(), "II" + le16(42) + le32(11) + "RGB" + le16(14) + entry(256, 3, 1, le16(1)) +
                              entry(257, 3, 1, le16(1)) + entry(258, 3, 3, le32(values)) + entry(259, 3, 1, le16(1)) +
                              entry(262, 3, 1, le16(2)) + entry(273, 4, 1, le32(8)) + entry(274, 3, 1, le16(1)) +
                              entry(277, 3, 1, le16(3)) + entry(278, 3, 1, le16(1)) + entry(279, 4, 1, le32(3)) +
                              entry(282, 5, 1, le32(values + 6)) + entry(283, 5, 1, le32(values + 14)) +
                              entry(284, 3, 1, le16(1)) + entry(296, 3, 1, le16(2)) + le32(0) + le16(8) + le16(8) +
                              le16(8) + resolution + resolution);
}

TEST(Tiff, FileWithAllMetadata) {
    Job job;
    job.info = {70000, 1, 1, 3216, 5'000'000, 0, 0, 9};
    job.pixels = zeros(140000);
    job.metadata = camera();
    std::strcpy(job.metadata.lens, "TV lens");
    job.gps = position();
    job.iptc = "IPTC5";
    job.method = METHOD_FUSION_INTENSIVE;
    const Bytes file = job.file();
    EXPECT_EQ(valueOf(file, 256, 4), le32(70000));
    EXPECT_EQ(valueOf(file, 271, 9), Bytes("FUJIFILM\0", 9));
    EXPECT_EQ(valueOf(file, 282, 8), le32(705'032'704) + le32(1000)) << "5 * 10^9 modulo 2^32";
    EXPECT_EQ(valueOf(file, 272, 7), Bytes("X10 TV\0", 7));
    EXPECT_NE(file.find(le16(339) + le16(3) + le32(3)), Bytes::npos) << "three shorts, also for one sample";
    EXPECT_EQ(valueOf(file, 33723, 8), "IPTC5" + zeros(3));
    const auto exif = static_cast<std::uint32_t>(file.size() - exifDirectory(0).size() - gpsDirectory(0).size());
    const auto gps = static_cast<std::uint32_t>(file.size() - gpsDirectory(0).size());
    EXPECT_EQ(valueOf(file, 34665, 4), le32(exif));
    EXPECT_EQ(file.substr(exif), exifDirectory(exif) + gpsDirectory(gps));
    const std::size_t packetSize = 419 + 119 + 7 + 1; // settings, lens description and name, a blank
    const Bytes packet = valueOf(file, 700, packetSize);
    EXPECT_NE(packet.find("<aux:Lens>TV lens</aux:Lens>\n"), Bytes::npos);
    EXPECT_EQ(packet.substr(packet.size() - 14), "</x:xmpmeta>\n ");
}

TEST(Tiff, LargestShortAndWholeLongs) {
    Job job;
    job.info.width = 65535;
    job.info.channels = 1;
    job.pixels = zeros(65535);
    job.iptc = "IPTC";
    const Bytes file = job.file();
    EXPECT_NE(file.find(entry(256, 3, 1, le16(65535))), Bytes::npos);
    EXPECT_NE(file.find(entry(33723, 4, 1, "IPTC")), Bytes::npos);
}

const Bytes LensL = "<rdf:Description rdf:about=''\nxmlns:aux='http://ns.adobe.com/exif/1.0/aux/'>\n"
                    "<aux:Lens>L</aux:Lens>\n</rdf:Description>\n\n";
const Bytes IntensiveZero = "<rdf:Description rdf:about=''\nxmlns:tvtm='http://" + Bytes(Host) +
                            "/tonalvista_settings01'>\n<tvtm:Version>5.0</tvtm:Version>\n"
                            "<tvtm:Method>Fusion/Intensive</tvtm:Method>\n<tvtm:Strength>0.0</tvtm:Strength>\n"
                            "<tvtm:Saturation>0.0</tvtm:Saturation>\n<tvtm:Radius>0.0</tvtm:Radius>\n"
                            "</rdf:Description>\n\n";

// A packet that the library makes, with the blank that it adds in a file.
Bytes madePacket(const Bytes& descriptions) {
    return "<x:xmpmeta xmlns:x='adobe:ns:meta/'>\n<rdf:RDF "
           "xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>\n\n" +
           descriptions + "</rdf:RDF>\n</x:xmpmeta>\n ";
}

TEST(Tiff, XmpDecision) {
    const Bytes settings = elementPacket("Fusion/Adjust", "");
    const Bytes plain = "<x:xmpmeta>" + Bytes(80, 'x');
    const Bytes end = zeros(1);
    const struct {
        const char* what;
        Bytes xmp;
        std::int32_t method;
        const char* lens;
        Bytes stored; // "made": a packet with settings; "lens": a packet with only the lens
    } cases[] = {
        {"none", "", 0, "", "absent"},
        {"a lens", "", 0, "L", "lens"},
        {"settings", "", 11, "L", "made"},
        {"a plain packet", plain + end, 0, "L", plain},
        {"is replaced by settings", plain + end, 11, "", "made"},
        {"is stored for a negative method", plain, -5, "", plain.substr(0, plain.size() - 1)},
        {"already contains settings", settings + end, 11, "L", settings},
        {"unterminated settings are not recognised", settings, 11, "", "made"},
        {"unterminated, no method", settings, 0, "", settings},
        {"one byte", "x", 0, "L", "x"},
        {"one byte, a terminator", end, 0, "L", "absent"},
        {"one byte for a negative method", "x", -5, "L", "absent"},
        {"one byte is replaced by settings", "x", 11, "L", "made"},
        {"two bytes", "ab", 0, "", "ab"},
        {"two bytes, the last a terminator", "a" + end, 0, "", "a"},
        {"three bytes fit in the entry", "abc" + end, 0, "", "abc"},
    };
    for (const auto& test : cases) {
        Job job;
        job.xmp = test.xmp;
        job.method = test.method;
        std::strcpy(job.metadata.lens, test.lens);
        const Bytes file = job.file();
        const bool isMade = test.stored == "made", hasLens = isMade && test.lens[0] != '\0';
        const Bytes expected = isMade || test.stored == "lens"
                                   ? madePacket((hasLens || !isMade ? LensL : "") + (isMade ? IntensiveZero : ""))
                                   : test.stored;
        EXPECT_EQ(valueOf(file, 700, expected.size()), expected) << test.what;
        EXPECT_EQ(file.find("Fusion/Intensive") != Bytes::npos, test.stored == "made") << test.what;
    }
}

TEST(Tiff, LongestLens) {
    Job job;
    std::memset(job.metadata.lens, 'l', sizeof job.metadata.lens);
    EXPECT_NE(job.file().find("<aux:Lens>" + Bytes(63, 'l') + "</aux:Lens>"), Bytes::npos);
}

TEST(Tiff, OmitsProfilesOfOtherColourSpaces) {
    for (const auto& [icc, kept] : {std::pair{Bytes(16, 'i') + "GRAY" + Bytes(8, 'i'), false},
                                    {Bytes(16, 'i') + "RGXi" + "i", false},
                                    {Bytes(16, 'i') + "GRAY", true},
                                    {Bytes(16, 'i') + "RGBx" + "i", true},
                                    {"ab", true}}) {
        Job job;
        job.icc = icc;
        EXPECT_EQ(valueOf(job.file(), 34675, icc.size()), kept ? icc : "absent");
    }
}

// The pitch counts samples.
TEST(TiffPixels, HighBytesBottomUp) {
    Job job;
    job.info = {1, 2, 3, 8, 300, 0, 1, 1};
    job.pixels = "aAbBcC..dDeEfF";
    job.firstRow = 8;
    job.pitch = -4;
    EXPECT_EQ(job.file().substr(8, 6), "DEFABC");
}

TEST(TiffPixels, BlocksAndTheirRows) {
    for (const auto& [width, height, channels, rows] : {std::array{4000, 3000, 3, 42},
                                                        {400000, 4, 3, 1},
                                                        {7, 0, 3, 0},
                                                        {1000, 300, 4, 300 - 262},
                                                        {1024, 1025, 1, 1},
                                                        {5, 9, 1, 9}}) {
        const TempDir dir;
        Job job;
        job.info = {width, height, channels, 8, 300, 0, 0, 1};
        job.pitch = width * channels;
        job.pixels = zeros(static_cast<std::size_t>(width * height * channels) + 1);
        job.pixels[job.pixels.size() / 2 / 4 * 4] = 'x';
        EXPECT_EQ(job.save(dir.path("a.tif")), rows);
        const Bytes file = readFile(dir.path("a.tif"));
        const std::size_t x = job.pixels.size() / 2 / 4 * 4;
        EXPECT_TRUE(height == 0 || file[8 + (channels == 4 ? x / 4 * 3 : x)] == 'x');
    }
}

TEST(Tiff, Failures) {
    const TempDir dir;
    const std::string path = dir.write("kept.tif", "kept");
    const TifImageInfo rejected[] = {{1, 1, 0, 8, 1, 0, 0, 1},
                                     {1, 1, 5, 8, 1, 0, 0, 1},
                                     {1, 1, 3, 12, 1, 0, 0, 1},
                                     {0, 1, 3, 8, 1, 0, 0, 1},
                                     {1, -1, 3, 8, 1, 0, 0, 1},
                                     {1, 1, 3, 8, 1, 0, 2, 1},
                                     {1, 1, 3, 16, 1, 0, 1, 1},
                                     {20000, 40000, 3, 8, 1, 0, 0, 1},
                                     {INT32_MAX, INT32_MAX, 4, 32, 1, 0, 0, 1},
                                     // Sizes that are 8 and 0 modulo 2^64, and one byte too many next to the directory.
                                     {1073793636, 1431586686, 3, 32, 1, 0, 0, 1},
                                     {1 << 30, 1 << 30, 4, 32, 1, 0, 0, 1},
                                     {INT32_MAX - 8 - 189, 1, 1, 8, 1, 0, 0, 1}};
    for (const TifImageInfo& info : rejected) {
        Job job;
        job.info = info;
        EXPECT_EQ(job.save(path), -6);
        EXPECT_EQ(readFile(path), "kept");
    }
    Job job;
    testing::internal::CaptureStderr();
    EXPECT_EQ(job.save(dir.path("none/a.tif")), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Could not open for writing file:  " + dir.path("none/a.tif") + "\n");
    if (hasFullDevice()) {
        EXPECT_EQ(job.save(FullDevice), -2);
    }
    job.info = {INT32_MAX - 8 - 190, 1, 1, 8, 1, 0, 0, 1}; // the largest file
    job.pitch = job.info.width;                            // needs no block
    EXPECT_EQ(job.save(dir.path("none/a.tif")), -1);
}

} // namespace
