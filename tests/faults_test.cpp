// Fault injection: every allocation, open, read, seek, tell, write and close fails in turn, and the disk is full at
// every byte. Also counts the work that hostile files cause. The linker wraps the library's calls; they are counted,
// and can fail, only while a test has armed the monitor.
#include "testing/files.h"
#include "testing/photographs.h"
#include "testing/shoots.h"
#include "testing/system.h"
#include "tvmeta.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>

using namespace test;

namespace {

enum Kind { Allocation, Open, Read, Seek, Tell, Write, Close, Kinds };

// Counts the library's calls while it is armed, and selects the call that fails.
struct Monitor {
    bool armed = false;
    Kind failing = Kinds;
    long failAt = 0;     // 1: the first call of that kind
    bool onward = false; // all later ones too
    long calls[Kinds] = {};
    bool hit = false;
    std::int64_t bytesRead = 0;
    std::int64_t liveBytes = 0, peakBytes = 0;
    long blocks = 0, streams = 0; // allocated, open
    std::function<void(long call)> beforeOpen = [](long) {};

    bool fails(Kind kind) {
        if (!armed) {
            return false;
        }
        const long call = ++calls[kind];
        const bool failing_ = kind == failing && (call == failAt || (onward && call > failAt));
        hit = hit || failing_;
        return failing_;
    }
};
Monitor monitor;

} // namespace

extern "C" {
void* __real_calloc(std::size_t, std::size_t);
void __real_free(void*);
std::FILE* __real_fopen(const char*, const char*);
std::size_t __real_fread(void*, std::size_t, std::size_t, std::FILE*);
int __real_fseeko(std::FILE*, off_t, int);
off_t __real_ftello(std::FILE*);
std::size_t __real_fwrite(const void*, std::size_t, std::size_t, std::FILE*);
int __real_fclose(std::FILE*);

void* __wrap_calloc(std::size_t count, std::size_t size) {
    if (monitor.fails(Allocation)) {
        return nullptr;
    }
    monitor.blocks += monitor.armed ? 1 : 0;
    monitor.liveBytes += monitor.armed ? static_cast<std::int64_t>(count * size) : 0;
    monitor.peakBytes = std::max(monitor.peakBytes, monitor.liveBytes);
    return __real_calloc(count, size);
}
void __wrap_free(void* block) {
    monitor.blocks -= monitor.armed && block != nullptr ? 1 : 0;
    monitor.liveBytes = monitor.blocks == 0 ? 0 : monitor.liveBytes;
    __real_free(block);
}
std::FILE* __wrap_fopen(const char* path, const char* mode) {
    const bool fails = monitor.fails(Open);
    if (monitor.armed) {
        EXPECT_NE(std::string_view(mode).find('e'), std::string_view::npos) << "programs would inherit the file";
        monitor.armed = false; // a stream of the C++ library may be opened by the same function
        monitor.beforeOpen(monitor.calls[Open]);
        monitor.armed = true;
    }
    std::FILE* stream = fails ? nullptr : __real_fopen(path, mode);
    monitor.streams += monitor.armed && stream != nullptr ? 1 : 0;
    return stream;
}
std::size_t __wrap_fread(void* block, std::size_t size, std::size_t count, std::FILE* stream) {
    const std::size_t read = monitor.fails(Read) ? 0 : __real_fread(block, size, count, stream);
    monitor.bytesRead += static_cast<std::int64_t>(read * size);
    return read;
}
int __wrap_fseeko(std::FILE* stream, off_t offset, int whence) {
    return monitor.fails(Seek) ? -1 : __real_fseeko(stream, offset, whence);
}
off_t __wrap_ftello(std::FILE* stream) {
    return monitor.fails(Tell) ? -1 : __real_ftello(stream);
}
std::size_t __wrap_fwrite(const void* block, std::size_t size, std::size_t count, std::FILE* stream) {
    return monitor.fails(Write) ? 0 : __real_fwrite(block, size, count, stream);
}
int __wrap_fclose(std::FILE* stream) {
    monitor.streams -= monitor.armed ? 1 : 0;
    const bool fails = monitor.fails(Close);
    return __real_fclose(stream) == 0 && !fails ? 0 : EOF;
}
}

namespace {

constexpr std::int32_t Success = INT32_MIN; // in the list of an operation's results

// One call to test: prepared before the monitor is armed, checked afterwards.
struct Operation {
    const char* name;
    std::function<void()> prepare;
    std::function<std::int32_t()> call;
    std::function<bool(std::int32_t result)> whole; // is this success complete?
    // Per kind of call: the result when the first, second, ... call fails. The last result also applies to all later
    // calls. Empty: the function makes no such call.
    std::vector<std::int32_t> results[Kinds];
    std::function<bool()> intact = [] { return true; }; // did a failure leave the file as documented?

    // Is this the documented result? With persistent faults, a later call may fail in place of a success.
    bool expects(std::int32_t result, Kind kind, long number, bool onward) const {
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

std::int32_t run(const Operation& operation, Kind kind, long failAt, bool onward) {
    operation.prepare();
    monitor = {};
    monitor.failing = kind;
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
    Stream stream;
    tvmeta_BracketMember members[3] = {};

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
             {{}, {-1, -1}, {0}, {Success, -2}, {0, -2, -2}, {-2, -2}, {Success, -2}},
             hasProfile},
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
        return {
            // A read error counts as the end of the file: the walk completes with the values read so far.
            {"JPEG", nothing, read(photo, FILE_TYPE_JPEG), isFull, {{Success}, {-1}, {-1}, {}, {}, {}, {Success}}},
            {"TIFF", nothing, read(tiff, FILE_TYPE_TIFF), isFull, {{}, {-1}, {-2}, {}, {}, {}, {Success}}},
            {"PSD", nothing, read(psdFile, FILE_TYPE_PSD), isFull, {{}, {-1}, {-1}, {}, {}, {}, {Success}}},
            {"read_xmp", nothing, readFile, isRead, {{-4}, {-1}, {-2}, {-1, Success, -1}, {-1}, {}, {Success}}},
            {"extract_xmp", clear, extract, is(11), {{}, {-1}, {0}, {-1, Success, 0}, {-1}, {}, {Success}}},
            {"read_iptc", clear, readIptc, is(5), {{}, {-1}, {-1}, {-1, Success, 0}, {-1}, {}, {Success}}},
            {"parse_image_description",
             open,
             onStream(parse_image_description),
             is(0),
             {{-1}, {}, {-1}, {}, {-1}, {}, {}}},
            {"parse_photoshop_data",
             open,
             onStream(parse_photoshop_data),
             is(1),
             {{-4}, {}, {Success}, {}, {Success}, {}, {}}},
            {"get_tif_tag",
             open,
             findTag,
             [](std::int32_t result) { return result > 8; },
             {{}, {}, {-2}, {Success}, {-2}, {}, {}}},
            {"insert_xmp", wrap, insert, is(292), {{-4}, {}, {}, {}, {}, {}, {}}},
            {"tvmeta_find_brackets",
             [this] { members[1].set = 77; },
             [this] { return findBrackets(); },
             [this](std::int32_t result) { return result == 1 && members[1].set == 0; },
             {{TVMETA_NO_MEMORY}, {}, {}, {}, {}, {}, {}},
             [this] { return members[1].set == 77; }},
        };
    }
};

TEST(Faults, EveryCallFailsInTurn) {
    Bench bench;
    std::vector<Operation> operations = bench.writers();
    std::ranges::move(bench.readers(), std::back_inserter(operations));
    long injected = 0;
    for (const Operation& operation : operations) {
        for (int kind = 0; kind < Kinds; ++kind) {
            for (const bool onward : {false, true}) {
                for (long call = 1;; ++call) {
                    const std::int32_t result = run(operation, static_cast<Kind>(kind), call, onward);
                    ASSERT_TRUE(monitor.hit ? operation.expects(result, static_cast<Kind>(kind), call, onward)
                                            : operation.whole(result))
                        << operation.name << " kind " << kind << " call " << call << ": " << result;
                    ASSERT_EQ(monitor.blocks, 0) << operation.name << " kind " << kind << " call " << call;
                    ASSERT_EQ(monitor.streams, 0) << operation.name << " kind " << kind << " call " << call;
                    if (!monitor.hit) {
                        break;
                    }
                    ++injected;
                }
            }
        }
    }
    EXPECT_GT(injected, 100);
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

// Bytes read, calls and memory stay within the documented bounds.
TEST(Bounds, HostileFiles) {
    const TempDir dir;
    const auto header = [](std::uint32_t first) { return "II" + le16(42) + le32(first); };
    // With a distance, the values are at more places than the reader has windows.
    const auto entries = [](unsigned count, unsigned tag, unsigned type, std::uint32_t items, std::uint32_t value,
                            std::uint32_t distance = 0) {
        Bytes bytes = le16(count);
        for (unsigned i = 0; i < count; ++i) {
            bytes += le16(tag) + le16(type) + le32(items) + le32(value + i % 11 * distance);
        }
        return bytes;
    };
    Bytes chain = header(8);
    for (std::uint32_t i = 0; i < 20'000; ++i) {
        chain += le16(1) + le16(1) + zeros(10) + le32(8 + 18 * ((i * 7919 + 1) % 20'000));
    }
    Bytes versions = packet("");
    while (versions.size() < 60'000) {
        versions += "<tvtm:Version> <tvtm:Versio";
    }
    const struct {
        const char* what;
        std::int32_t fileType;
        Bytes file;
        std::int64_t kibibytes; // upper limit: 1 per entry, plus the payloads
    } cases[] = {
        {"a directory that is its own EXIF directory", 0, header(8) + entries(65535, 34665, 4, 1, 8) + le32(8), 16'000},
        {"EXIF directories past the end", 0, header(8) + entries(65535, 34665, 4, 1, 1 << 30), 2'000},
        {"GPS values at both ends", 0, header(8) + entries(1, 34853, 4, 1, 26) + le32(0) + entries(60000, 2, 5, 3, 0),
         1'000},
        {"values in eleven places", 0, header(8) + entries(60000, 272, 2, 9, 0, 65000) + le32(0), 65'000},
        {"scattered EXIF directories", 0,
         header(8) + entries(174, 34665, 4, 1, 2102) + le32(0) + entries(6000, 33434, 5, 1, 0, 6700), 1'080'000},
        {"huge description", 0, header(8) + entries(500, 270, 2, INT32_MAX, 8), 40},
        {"huge resources", 0, header(8) + entries(500, 34377, 7, INT32_MAX, 8), 40},
        {"repeated descriptions", 0, header(8) + entries(65535, 270, 2, 600'000, 8), 67'000},
        {"repeated resources", 0, header(8) + entries(65535, 34377, 7, 600'000, 8), 67'000},
        {"repeated version tags", 1, jpeg(exifSegment(header(0)) + xmpSegment(versions)), 200},
        {"overlapping chain", 77, chain, 2'100},
    };
    for (const auto& test : cases) {
        const std::string path = dir.write("hostile", test.file);
        const auto size = static_cast<std::int64_t>(test.file.size());
        ExifInfo info;
        monitor = {};
        monitor.armed = true;
        getExifData(path.c_str(), test.fileType, &info);
        std::FILE* const stream = __real_fopen(path.c_str(), "rb");
        std::int32_t count = 0;
        get_tif_tag(stream, 34675, &count, &count);
        monitor.armed = false;
        __real_fclose(stream);
        EXPECT_LE(monitor.bytesRead, test.kibibytes * 1024) << test.what;
        EXPECT_LE(monitor.calls[Read] + monitor.calls[Seek], 1000 + 2 * test.kibibytes) << test.what;
        EXPECT_LE(monitor.peakBytes, size + (1 << 20)) << test.what;
    }
}

} // namespace
