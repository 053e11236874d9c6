// Fault injection in the functions that write: every allocation, open, read, seek, tell, write, close and request for
// the status of a file fails in turn, reads also by returning less; and the disk is full at every byte.
#include "testing/fault_operations.h"
#include "testing/photographs.h"
#include "testing/results.h"
#include "testing/system.h"
#include "tvmeta.h"
#include "tvmeta_photo.h"

#include <gtest/gtest.h>

using namespace test;

namespace {

// With a value and a packet for the result to keep.
Bytes photoWithXmp() {
    PhotoParts parts;
    const Bytes xmp = "<rdf:RDF></rdf:RDF>";
    parts.image = {{700, 1, static_cast<std::uint32_t>(xmp.size()), xmp}};
    parts.exif = {{50000, 7, 5, "value"}};
    return photoOf(parts);
}

// The calls under test and their files.
struct Bench {
    TempDir dir;
    std::string out = dir.path("out");
    std::string photo = dir.write("photo.tif", photoWithXmp());
    SettingsValues settings = {5, 3, 70};
    Bytes block;

    std::int32_t save(std::int32_t channels, std::int32_t height) {
        TifImageInfo image = {10, height, channels, 8, 300, 4, 0, 1};
        MetadataBuf metadata = {};
        GpsBuf gps = {};
        const Bytes pixels = zeros(static_cast<std::size_t>(10 * channels * height));
        return buf2tif(pixels.data(), &image, 10 * channels, reinterpret_cast<const unsigned char*>("icc!"), &metadata,
                       &gps, 0, nullptr, METHOD_FUSION_INTENSIVE, settings, 0, nullptr, out.c_str());
    }
    // With keywords and settings, which change the photograph's packet and make an IPTC block.
    std::int32_t withResult(const std::function<std::int32_t(const tvmeta_Result&)>& use) {
        const char* const keywords[] = {"lake"};
        tvmeta_Source source;
        std::int32_t status = tvmeta_open(photo.c_str(), &source);
        if (status == TVMETA_OK) {
            tvmeta_Result result = smallResult(out.c_str(), &source);
            result.keywords = keywords;
            result.keywordCount = 1;
            result.method = METHOD_FUSION_INTENSIVE;
            result.settings = settings;
            status = use(result);
        }
        tvmeta_close(&source);
        return status;
    }
    std::int32_t saveResult() {
        return withResult([](const tvmeta_Result& result) { return tvmeta_save_tiff(&result, nullptr, 0); });
    }
    std::int32_t buildExif() {
        block = Bytes(5000, '!');
        return withResult([this](const tvmeta_Result& result) {
            return static_cast<std::int32_t>(tvmeta_build_exif(&result, block.data(), 5000, nullptr, 0, nullptr));
        });
    }
    std::int32_t replaceProfile() {
        return update_tif_profile(7, reinterpret_cast<const unsigned char*>("profile"), out.c_str());
    }

    // The expected file: the four-byte profile in the entry is replaced by the offset of a longer one at the end.
    static Bytes profileReplaced(Bytes file) {
        const std::size_t entry = file.find(le16(34675) + le16(7) + le32(4) + "icc!");
        file.replace(entry + 4, 8, le32(7) + le32(static_cast<std::uint32_t>(file.size())));
        return file + "profile";
    }

    // The last one replaces a profile.
    std::vector<Operation> operations() {
        save(3, 8);
        const Bytes saved = readFile(out);
        const Bytes replaced = profileReplaced(saved);
        saveResult();
        const Bytes result = readFile(out);
        const std::int32_t blockSize = buildExif();
        const Bytes exif = block;
        const auto reset = [this] { dir.write("out", "old"); };
        const auto restore = [this, saved] { dir.write("out", saved); };
        const auto hasOutput = [this](std::int32_t expected, const Bytes& file) {
            return [=, this](std::int32_t status) { return status == expected && readFile(out) == file; };
        };
        const auto isPacket = [this](std::int32_t status) { return status == 1 && readFile(out).size() == 420; };
        const auto isBlock = [=, this](std::int32_t size) { return size == blockSize && block == exif; };
        const auto isOldWithoutMemory = [this] { return monitor.failing != Allocation || readFile(out) == "old"; };
        const auto isOldIfUnread = [this] { return monitor.failing >= Write || readFile(out) == "old"; };
        // Either the old profile is still used or the new one is complete.
        const auto hasProfile = [this, saved, replaced] {
            const Bytes file = readFile(out);
            return file.starts_with(saved) || file == replaced;
        };
        const std::map<Kind, Results> bufferResults = {
            {Allocation, {-1, -4, -1}}, {Open, {-1}}, {Write, {-2, -3, -12}}, {Close, {-12}}};
        const auto buffer = [this](std::int32_t channels) { return [=, this] { return save(channels, 8); }; };
        const auto saveWhole = [this] { return saveResult(); };
        const auto build = [this] { return buildExif(); };
        const auto write = [this] { return write_xmp(out.c_str(), 11, settings); };
        const auto patch = [this] { return replaceProfile(); };
        const std::int32_t unread = TVMETA_READ_FAILED, unwritten = TVMETA_WRITE_FAILED;
        const Results failed = {unread}, noMemory = {TVMETA_NO_MEMORY}, closed = {Success};
        std::map<Kind, Results> exifResults = {
            {Allocation, noMemory}, {Open, failed}, {Status, failed}, {Read, failed}, {Close, closed}};
        std::map<Kind, Results> saveResults = exifResults;
        saveResults[Open] = {unread, unwritten};
        saveResults[Write] = {unwritten};
        saveResults[Close] = {unwritten, Success};
        const std::map<Kind, Results> packetResults = {{Allocation, {-4}}, {Open, {-1}}, {Write, {-3}}, {Close, {-3}}};
        const std::map<Kind, Results> patchResults = {{Open, {-1, -1}},    {Read, {0, -1}},   {Seek, {Success, -2}},
                                                      {Tell, {0, -2, -2}}, {Write, {-2, -2}}, {Close, {Success, -2}}};
        return {
            {"buf2tif", reset, buffer(3), hasOutput(8, saved), bufferResults, {}, isOldWithoutMemory},
            {"buf2tif, converting", reset, buffer(4), hasOutput(8, saved), bufferResults, {}, isOldWithoutMemory},
            {"tvmeta_save_tiff", reset, saveWhole, hasOutput(0, result), saveResults, {Success}, isOldIfUnread},
            {"tvmeta_build_exif", reset, build, isBlock, exifResults, {Success}},
            {"write_xmp", reset, write, isPacket, packetResults, {}, isOldWithoutMemory},
            {"update_tif_profile", restore, patch, hasOutput(7, replaced), patchResults, {Success, 0, -1}, hasProfile},
        };
    }
};

TEST(Faults, EveryCallOfAWriterFailsInTurn) {
    Bench bench;
    for (const Operation& operation : bench.operations()) {
        operation.failEverything();
    }
}

// One row again and again, so that no memory is needed; the file is not written.
TEST(Results, AreBigTiffAbove4GiB) {
    const TempDir dir;
    const std::string path = dir.path("result.tif");
    const Bytes row(65'536, 'p');
    for (const bool isBig : {false, true}) {
        // Header 8, pixels 65535 * 65536, 15 entries 186, two fractions 16, software 65324: 2^32 - 2 bytes.
        const Bytes software(isBig ? 65'324 : 65'323, 's');
        tvmeta_Result result = smallResult(path.c_str(), nullptr);
        result.width = 65'536;
        result.height = 65'535;
        result.pixels = row.data();
        result.rowPitch = 0;
        result.software = software.c_str();
        Bytes written;
        monitor = {};
        monitor.sink = &written;
        monitor.armed = true;
        const std::int32_t status = tvmeta_save_tiff(&result, nullptr, 0);
        monitor.armed = false;
        ASSERT_EQ(status, 0);
        ASSERT_EQ(monitor.dropped, 65'535ULL * 65'536);
        const std::size_t header = isBig ? 16 : 8;
        const std::uint64_t first =
            isBig ? loadLe32(written, 8) | std::uint64_t{loadLe32(written, 12)} << 32 : loadLe32(written, 4);
        EXPECT_EQ(first, header + monitor.dropped);
        EXPECT_EQ(written.size() + monitor.dropped,
                  isBig ? 16 + 0xFFFF'0000ULL + 8 + 15 * 20 + 8 + 65'326 : 0xFFFF'FFFEULL);
        // Without the pixels, the offsets of the directory and its values are smaller.
        EXPECT_EQ(loadLe16(written, header), 15U);
        EXPECT_EQ(written.substr(0, 4), isBig ? "II+" + zeros(1) : "II*" + zeros(1));
        if (isBig) {
            EXPECT_EQ(written.substr(4, 4), le16(8) + le16(0));
            const Bytes offsets = le16(273) + le16(16) + le32(1) + le32(0) + le32(16) + le32(0);
            const Bytes sizes = le16(279) + le16(16) + le32(1) + le32(0) + le32(0xFFFF'0000) + le32(0);
            EXPECT_NE(written.find(offsets), Bytes::npos);
            EXPECT_NE(written.find(sizes), Bytes::npos);
        }
    }
}

// The path is replaced by another file between the search and the writes.
TEST(Faults, RefusesToPatchAReplacedFile) {
    Bench bench;
    const Operation replace = bench.operations().back();
    Tiff tiff;
    const Bytes profiled = tiff.finish(tiff.add({{34675, 7, 6, "before"}}));
    for (const Bytes& other : {zeros(profiled.size()), profiled + "longer", Bytes("short")}) {
        replace.prepare();
        bench.dir.write("out", profiled);
        monitor = {};
        monitor.beforeOpen = [&](long call) {
            if (call == 2) {
                bench.dir.write("out", other);
            }
        };
        monitor.armed = true;
        const std::int32_t result = replace.call();
        monitor.armed = false;
        EXPECT_EQ(result, -1);
        EXPECT_EQ(readFile(bench.out), other);
    }
}

std::int32_t callWithLimit(const Operation& operation, std::uint64_t bytes) {
    const FileSizeLimit limit(bytes);
    return operation.call();
}

TEST(Faults, DiskIsFullAtEveryByte) {
    Bench bench;
    if (!FileSizeLimit::IsSupported) {
        GTEST_SKIP() << "the system has no limit of file sizes";
    }
    for (const Operation& operation : bench.operations()) {
        bool succeeded = false;
        for (std::uint64_t limit = 0; !succeeded; ++limit) {
            ASSERT_LT(limit, 10'000U) << operation.name;
            operation.prepare();
            const std::int32_t result = callWithLimit(operation, limit);
            succeeded = operation.whole(result);
            ASSERT_TRUE(succeeded || (result < 0 && operation.intact()))
                << operation.name << " with " << limit << " bytes: " << result;
            if (!succeeded && std::string_view(operation.name).starts_with("buf2tif")) {
                ASSERT_EQ(result, limit < 8 ? -2 : limit < 8 + 8 * 30 ? -3 : -12) << limit; // header, rows, directory
            }
        }
    }
}

} // namespace
