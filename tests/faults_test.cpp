// Fault injection: every allocation, open, read, seek, tell, write, close and request for the status of a file fails in
// turn, reads also by returning less; and the disk is full at every byte.
#include "testing/files.h"
#include "testing/photographs.h"
#include "testing/results.h"
#include "testing/shoots.h"
#include "testing/system.h"
#include "tests/support/io_monitor.h"
#include "tvmeta.h"
#include "tvmeta_photo.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>

using namespace test;

namespace {

constexpr std::int32_t Success = INT32_MIN; // in the list of an operation's results

bool always() {
    return true;
}

// One call to test: prepared before the monitor is armed, checked afterwards.
struct Operation {
    const char* name;
    std::function<void()> prepare;
    std::function<std::int32_t()> call;
    std::function<bool(std::int32_t result)> whole; // is this success complete?
    // Per kind of call: the result when the first, second, ... call fails. The last result also applies to all later
    // calls. Empty: the function makes no such call.
    std::vector<std::int32_t> results[Kinds];
    std::function<bool()> intact = always;     // did a failure leave the file as documented?
    std::vector<std::int32_t> shortReads = {}; // results when a read returns less than the file has

    // Is this the documented result? With persistent faults, a later call may fail in place of a success.
    bool expects(std::int32_t result, Kind kind, long number, bool onward) const {
        if (monitor.fault == Fault::Short) {
            const auto is = [&](std::int32_t known) { return known == Success ? whole(result) : known == result; };
            return std::ranges::any_of(shortReads, is);
        }
        const std::vector<std::int32_t>& known = results[kind];
        if (known.empty()) {
            return false;
        }
        const std::int32_t expected = known[std::min(static_cast<std::size_t>(number), known.size()) - 1];
        if (expected == result || (onward && std::ranges::count(known, result) > 0)) {
            return intact();
        }
        return expected == Success && whole(result);
    }
};

std::int32_t run(const Operation& operation, Kind kind, Fault fault, long failAt, bool onward) {
    operation.prepare();
    monitor = {};
    monitor.failing = kind;
    monitor.fault = fault;
    monitor.failAt = failAt;
    monitor.onward = onward;
    testing::internal::CaptureStderr();
    monitor.armed = true;
    const std::int32_t result = operation.call();
    monitor.armed = false;
    testing::internal::GetCapturedStderr();
    return result;
}

// The calls under test and their files.
struct Bench {
    TempDir dir;
    std::string out = dir.path("out");
    std::string photo = dir.write("photo.jpg", fullJpeg());
    std::string keyworded = dir.write(
        "keyword.jpg",
        jpeg(exifSegment(fullTiff(true)) +
             segment(0xED, Bytes("Photoshop 3.0\0", 14) + resource(0x0404, Bytes("\x1C\x02\x19\x00\x01k", 6)))));
    std::string tiff = dir.write("photo.tif", fullTiff(true));
    std::string psdFile = dir.write("photo.psd", psd(resource(1058, fullTiff(false))));
    std::string settingsFile = dir.write("settings.xmp", elementPacket("Fusion/Intensive", element("Radius", "4")));
    std::string iptcFile = dir.write("iptc", Bytes("a\x1C\x02\x19\x00\x00"
                                                   "bc",
                                                   8));
    std::int32_t number = 0;
    SettingsValues settings = {5, 3, 70};
    SettingsValues readSettings = {};
    ExifInfo info;
    Bytes buffer;
    Bytes block = fullTiff(true);
    std::size_t gpsDirectory = block.find(le16(8) + le16(1) + le16(2) + le32(2) + "N");
    Bytes digits = "1234";
    Stream stream;
    tvmeta_BracketMember members[3] = {};
    MetadataBuf camera;
    GpsBuf place;

    std::int32_t save(std::int32_t channels, std::int32_t height) {
        TifImageInfo image = {10, height, channels, 8, 300, 4, 0, 1};
        MetadataBuf metadata = {};
        GpsBuf gps = {};
        const Bytes pixels = zeros(static_cast<std::size_t>(10 * channels * height));
        return buf2tif(pixels.data(), &image, 10 * channels, reinterpret_cast<const unsigned char*>("icc!"), &metadata,
                       &gps, 0, nullptr, METHOD_FUSION_INTENSIVE, settings, 0, nullptr, out.c_str());
    }
    std::int32_t findBrackets() {
        const Shoot shoot = Photographer().take("bracket bias fine 0 -2 2");
        tvmeta_BracketSet sets[3] = {};
        sets[0].recordSize = sizeof sets[0];
        return static_cast<std::int32_t>(tvmeta_find_brackets(shoot.shots.data(), 3, nullptr, members, sets));
    }
    // With keywords and settings, which change the photograph's packet and make an IPTC block.
    std::int32_t saveResult() {
        static const Bytes original = [] {
            PhotoParts parts;
            const Bytes xmp = "<rdf:RDF></rdf:RDF>";
            parts.image = {{700, 1, static_cast<std::uint32_t>(xmp.size()), xmp}};
            parts.exif = {{50000, 7, 5, "value"}};
            return photoOf(parts);
        }();
        const char* const keywords[] = {"lake"};
        tvmeta_Source source;
        tvmeta_memory(original.data(), static_cast<std::int64_t>(original.size()), &source);
        tvmeta_Result result = smallResult(out.c_str(), &source);
        result.keywords = keywords;
        result.keywordCount = 1;
        result.method = METHOD_FUSION_INTENSIVE;
        result.settings = settings;
        return tvmeta_save_tiff(&result, nullptr, 0);
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

    std::vector<Operation> writers() {
        save(3, 8);
        const Bytes saved = readFile(out);
        save(4, 8);
        const Bytes replaced = profileReplaced(saved);
        saveResult();
        const Bytes whole = readFile(out);
        const auto reset = [this] { dir.write("out", "old"); };
        const auto isOldWithoutMemory = [this] { return monitor.failing != Allocation || readFile(out) == "old"; };
        const auto isSaved = [this, saved](std::int32_t result) { return result == 8 && readFile(out) == saved; };
        const auto isPacket = [this](std::int32_t result) { return result == 1 && readFile(out).size() == 420; };
        const auto restore = [this, saved] { dir.write("out", saved); };
        const auto isReplaced = [this, replaced](std::int32_t result) {
            return result == 7 && readFile(out) == replaced;
        };
        // Either the old profile is still used or the new one is complete.
        const auto hasProfile = [this, saved, replaced] {
            const Bytes file = readFile(out);
            return file.starts_with(saved) || file == replaced;
        };
        return {
            {"buf2tif",
             reset,
             [this] { return save(3, 8); },
             isSaved,
             {{-1, -4, -1}, {-1}, {}, {}, {}, {-2, -3, -12}, {-12}},
             isOldWithoutMemory},
            {"buf2tif, converting",
             reset,
             [this] { return save(4, 8); },
             isSaved,
             {{-1, -4, -1}, {-1}, {}, {}, {}, {-2, -3, -12}, {-12}},
             isOldWithoutMemory},
            {"tvmeta_save_tiff",
             reset,
             [this] { return saveResult(); },
             [this, whole](std::int32_t result) { return result == 0 && readFile(out) == whole; },
             {{TVMETA_NO_MEMORY}, {TVMETA_WRITE_FAILED}, {}, {}, {}, {TVMETA_WRITE_FAILED}, {TVMETA_WRITE_FAILED}},
             isOldWithoutMemory},
            {"write_xmp",
             reset,
             [this] { return write_xmp(out.c_str(), 11, settings); },
             isPacket,
             {{-4}, {-1}, {}, {}, {}, {-3}, {-3}},
             isOldWithoutMemory},
            {"update_tif_profile",
             restore,
             [this] { return replaceProfile(); },
             isReplaced,
             {{}, {-1, -1}, {0, -1}, {Success, -2}, {0, -2, -2}, {-2, -2}, {Success, -2}},
             hasProfile,
             {Success, 0, -1}},
        };
    }

    std::vector<Operation> readers() {
        const auto nothing = [] {};
        const auto isFull = [this](std::int32_t result) {
            return result == 1 && Bytes(info.model) == "TV-100" && info.isoSpeed == 400 && info.gpsAltitude[0] == 35;
        };
        const auto read = [this](const std::string& path, std::int32_t fileType) {
            return [this, path, fileType] { return getExifData(path.c_str(), fileType, &info); };
        };
        const auto onStream = [this](std::int32_t (*parse)(FILE*, std::int32_t, ExifInfo*)) {
            return [this, parse] { return parse(stream.get(), size32(block), &info); };
        };
        const auto open = [this] { stream = streamOf(block); };
        const auto clear = [this] { buffer = zeros(5000); };
        const auto is = [](std::int32_t expected) {
            return [expected](std::int32_t result) { return result == expected; };
        };
        const auto readFile = [this] { return read_xmp(settingsFile.c_str(), 11, readSettings); };
        const auto isRead = [this](std::int32_t result) { return result > 46 && readSettings[2] == 4.0F; };
        const auto extract = [this] { return extract_xmp(settingsFile.c_str(), 150, 0, buffer.data()); };
        const auto readIptc = [this] { return read_iptc(iptcFile.c_str(), 5, 1, raw(buffer)); };
        const auto findTag = [this] { return get_tif_tag(stream.get(), 272, &number, &number); };
        const auto wrap = [this] {
            buffer = zeros(5000);
            embed_xmp(1, 0, nullptr, 0, nullptr, buffer.data());
        };
        const auto insert = [this] { return insert_xmp(1, 11, settings, 128, 292, buffer.data()); };
        const auto convert = [this] { return get_exif_data(photo.c_str(), FILE_TYPE_JPEG, &camera, &place); };
        const auto clearRecords = [this] {
            camera = {};
            place = {};
        };
        const auto isConverted = [this](std::int32_t result) {
            return result == 100 && camera.exposureTime[1] == 5999 && camera.isoSpeed == 400 && place.altitude[0] == 35;
        };
        const auto openAt = [this](std::size_t position) {
            return [this, position] {
                stream = streamOf(block);
                std::fseek(stream.get(), static_cast<long>(position), SEEK_SET);
                init_exifInfo(&info);
            };
        };
        const auto openExif = openAt(8), openGps = openAt(gpsDirectory);
        const auto parseDirectory = [this](decltype(&parse_exif_data) parse) {
            return [this, parse] { return parse(stream.get(), 0, 0x4949, 0, &info); };
        };
        const auto hasExif = [this](std::int32_t result) { return result == 1 && info.isoSpeed == 400; };
        const auto hasGps = [this](std::int32_t result) { return result == 1 && info.gpsAltitude[0] == 35; };
        const auto fileType = [this] { return tvmeta_file_type(photo.c_str()); };
        return {
            // A read error counts as the end of the file: the walk completes with the values read so far.
            {"JPEG",
             nothing,
             read(photo, FILE_TYPE_JPEG),
             isFull,
             {{Success}, {-1}, {-1}, {}, {}, {}, {Success}},
             always,
             {-10, Success}},
            {"TIFF", nothing, read(tiff, FILE_TYPE_TIFF), isFull, {{}, {-1}, {-2}, {}, {}, {}, {Success}}, always, {1}},
            {"PSD",
             nothing,
             read(psdFile, FILE_TYPE_PSD),
             isFull,
             {{}, {-1}, {-1}, {}, {}, {}, {Success}},
             always,
             {1}},
            {"read_xmp",
             nothing,
             readFile,
             isRead,
             {{-4}, {-1}, {Success, -2}, {-1, Success, -1}, {-1}, {}, {Success}},
             always,
             {Success, -2}},
            {"extract_xmp",
             clear,
             extract,
             is(11),
             {{}, {-1}, {Success, 0}, {-1, Success, 0}, {-1}, {}, {Success}},
             always,
             {Success, -5}},
            {"read_iptc",
             clear,
             readIptc,
             is(5),
             {{}, {-1}, {Success, -1}, {-1, Success, 0}, {-1}, {}, {Success}},
             always,
             {Success, -1}},
            {"parse_image_description",
             open,
             onStream(parse_image_description),
             is(0),
             {{-1}, {}, {-1}, {}, {-1}, {}, {}},
             always,
             {-1}},
            {"parse_photoshop_data",
             open,
             onStream(parse_photoshop_data),
             is(1),
             {{-4}, {}, {Success}, {}, {Success}, {}, {}},
             always,
             {Success}},
            {"get_tif_tag",
             open,
             findTag,
             is(static_cast<std::int32_t>(block.find(le16(272) + le16(2) + le32(7)))),
             {{}, {}, {-2}, {Success}, {-2}, {}, {}},
             always,
             {-3}},
            {"insert_xmp", wrap, insert, is(292), {{-4}, {}, {}, {}, {}, {}, {}}},
            {"tvmeta_find_brackets",
             [this] { members[1].set = 77; },
             [this] { return findBrackets(); },
             [this](std::int32_t result) { return result == 1 && members[1].set == 0; },
             {{TVMETA_NO_MEMORY}, {}, {}, {}, {}, {}, {}},
             [this] { return members[1].set == 77; }},
            {"get_exif_data",
             clearRecords,
             convert,
             isConverted,
             {{Success}, {0}, {0}, {}, {}, {}, {Success}},
             always,
             {0, Success}},
            {"parse_exif_data",
             openExif,
             parseDirectory(parse_exif_data),
             hasExif,
             {{}, {}, {1}, {Success, 1}, {1}, {}, {}},
             always,
             {1}},
            {"parse_gps_data",
             openGps,
             parseDirectory(parse_gps_data),
             hasGps,
             {{}, {}, {1}, {Success, 1}, {1}, {}, {}},
             always,
             {1}},
            {"tvmeta_file_type",
             nothing,
             fileType,
             is(FILE_TYPE_JPEG),
             {{}, {-1}, {-1}, {}, {}, {}, {Success}},
             always,
             {Success}},
        };
    }

    // A missing byte is 0xFF in 16 bits; in 32 bits it counts as -1 times its weight.
    std::vector<Operation> numberReaders() {
        const auto open = [this] { stream = streamOf(digits); };
        const auto is = [](std::int32_t expected) {
            return [expected](std::int32_t result) { return result == expected; };
        };
        const auto row = [&](const char* name, std::function<std::int32_t()> call, std::int32_t value,
                             const std::vector<std::int32_t>& missing) {
            return Operation{
                name,   open, std::move(call), is(value), {{}, {}, missing, {}, {}, {}, {}}, [] { return true; },
                missing};
        };
        return {
            row("fgetmi2", [this] { return fgetmi2(stream.get(), 0x4949); }, 0x3231, {0x31FF, 0xFF31, 0xFFFF}),
            row("fgetm2", [this] { return fgetm2(stream.get()); }, 0x3132, {0xFF31, 0x31FF, 0xFFFF}),
            row("fgetmi4", [this] { return fgetmi4(stream.get(), 0x4949); }, 0x34333231,
                {0x333230FF, 0x3331FF31, 0x32FF3231, -0xCCCDCF, -0x1010101, -0x10100CF, -0x100CDCF}),
            row("fgetm4", [this] { return fgetm4(stream.get()); }, 0x31323334,
                {-0xCECDCD, 0x30FF3233, 0x3131FF33, 0x313232FF, -0x1010101, 0x30FEFEFF, 0x3131FEFF}),
        };
    }

    // A read that returns less than it was asked for goes on, because only nothing means the end.
    std::vector<Operation> photoReaders() {
        const auto nothing = [] {};
        const auto is = [](std::int32_t expected) {
            return [expected](std::int32_t result) { return result == expected; };
        };
        const auto opened = [](const std::string& path, std::function<std::int64_t(const tvmeta_Source&)> read) {
            return [path, read] {
                tvmeta_Source source;
                const std::int32_t status = tvmeta_open(path.c_str(), &source);
                const std::int64_t result = status == TVMETA_OK ? read(source) : status;
                tvmeta_close(&source);
                return static_cast<std::int32_t>(result);
            };
        };
        const auto record = opened(photo, [](const tvmeta_Source& source) {
            tvmeta_Photo found = {};
            found.recordSize = sizeof found;
            const std::int32_t status = tvmeta_read_photo(&source, &found);
            return status == TVMETA_OK ? found.isoSpeed : status;
        });
        const auto xmp = opened(photo, [this](const tvmeta_Source& source) {
            buffer = zeros(5000);
            return tvmeta_read_block(&source, nullptr, TVMETA_XMP, buffer.data(), size32(buffer));
        });
        const auto text = opened(keyworded, [](const tvmeta_Source& source) {
            return tvmeta_read_text(&source, nullptr, TVMETA_TEXT_KEYWORD, 0, nullptr, 0);
        });
        const auto tags =
            opened(photo, [](const tvmeta_Source& source) { return tvmeta_list_tags(&source, nullptr, nullptr, 0); });
        const std::int32_t packetSize =
            size32(lensPacket("<aux:Lens>TV 35mm f/1.8</aux:Lens>") + elementPacket("Fusion/Intensive", ""));
        const std::int32_t failed = TVMETA_READ_FAILED;
        const std::vector<std::int32_t> none, success = {Success};
        const auto row = [&](const char* name, const std::function<std::int32_t()>& call, std::int32_t value,
                             const std::vector<std::int32_t>& withoutMemory) {
            return Operation{name,
                             nothing,
                             call,
                             is(value),
                             {withoutMemory, {failed}, {failed}, none, none, none, success, {failed}},
                             [] { return true; },
                             success};
        };
        return {row("tvmeta_read_photo", record, 400, {TVMETA_NO_MEMORY}),
                row("tvmeta_read_block", xmp, packetSize, none), row("tvmeta_read_text", text, 1, {TVMETA_NO_MEMORY}),
                row("tvmeta_list_tags", tags, 27, none)};
    }
};

// Fails each call of a kind. Returns how many there are.
long failEachCall(const Operation& operation, Kind kind, Fault fault, bool onward) {
    for (long call = 1;; ++call) {
        const std::int32_t result = run(operation, kind, fault, call, onward);
        EXPECT_TRUE(monitor.hit ? operation.expects(result, kind, call, onward) : operation.whole(result))
            << operation.name << " kind " << kind << " fault " << static_cast<int>(fault) << " call " << call << ": "
            << result;
        EXPECT_EQ(monitor.blocks, 0) << operation.name << " kind " << kind << " call " << call;
        EXPECT_EQ(monitor.streams, 0) << operation.name << " kind " << kind << " call " << call;
        if (!monitor.hit) {
            return call - 1;
        }
    }
}

TEST(Faults, EveryCallFailsInTurn) {
    Bench bench;
    std::vector<Operation> operations = bench.writers();
    std::ranges::move(bench.readers(), std::back_inserter(operations));
    std::ranges::move(bench.numberReaders(), std::back_inserter(operations));
    std::ranges::move(bench.photoReaders(), std::back_inserter(operations));
    for (const Operation& operation : operations) {
        for (int kind = 0; kind < Kinds; ++kind) {
            for (const bool onward : {false, true}) {
                const long calls = failEachCall(operation, static_cast<Kind>(kind), Fault::Error, onward);
                EXPECT_EQ(calls > 0, !operation.results[kind].empty()) << operation.name << " kind " << kind;
            }
        }
        for (const bool onward : {false, true}) {
            failEachCall(operation, Read, Fault::Short, onward);
        }
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
    const Operation replace = bench.writers().back();
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
    for (const Operation& operation : bench.writers()) {
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
