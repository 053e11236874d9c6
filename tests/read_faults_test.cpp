// Fault injection in the functions that read: every allocation, open, read, seek, tell, close and request for the
// status of a file fails in turn, reads also by returning less.
#include "testing/fault_operations.h"
#include "testing/files.h"
#include "testing/photographs.h"
#include "testing/shoots.h"
#include "tvmeta.h"
#include "tvmeta_photo.h"

#include <gtest/gtest.h>

using namespace test;

namespace {

const auto nothing = [] {};

// The calls under test and their files.
struct Bench {
    TempDir dir;
    std::string photo = dir.write("photo.jpg", fullJpeg());
    std::string keyworded = dir.write(
        "keyword.jpg",
        jpeg(exifSegment(fullTiff(true)) +
             segment(0xED, Bytes("Photoshop 3.0\0", 14) + resource(0x0404, Bytes("\x1C\x02\x19\x00\x01k", 6)))));
    std::string tiff = dir.write("photo.tif", fullTiff(true));
    std::string psdFile = dir.write("photo.psd", psd(resource(1058, fullTiff(false))));
    std::string settingsFile = dir.write("settings.xmp", elementPacket("Fusion/Intensive", element("Radius", "4")));
    std::string iptcFile = dir.write("iptc", "a" + Bytes("\x1C\x02\x19\x00\x00", 5) + "bc");
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

    std::int32_t findBrackets() {
        const Shoot shoot = Photographer().take("bracket bias fine 0 -2 2");
        tvmeta_BracketSet sets[3] = {};
        sets[0].recordSize = sizeof sets[0];
        return static_cast<std::int32_t>(tvmeta_find_brackets(shoot.shots.data(), 3, nullptr, members, sets));
    }
    std::vector<Operation> readers() {
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
        const Results missing = {-1}, whole = {Success};
        const auto ofFile = [&](const Results& unread) {
            return std::map<Kind, Results>{{Open, missing}, {Read, unread}, {Close, whole}};
        };
        const auto ofRegion = [&](const Results& unread, std::int32_t pastEnd) {
            return std::map<Kind, Results>{
                {Open, missing}, {Read, unread}, {Seek, {-1, Success, pastEnd}}, {Tell, missing}, {Close, whole}};
        };
        std::map<Kind, Results> jpegResults = ofFile({-1}), settingsResults = ofRegion({Success, -2}, -1),
                                cameraResults = {{Allocation, whole}, {Open, {0}}, {Read, {0}}, {Close, whole}};
        jpegResults[Allocation] = whole;
        settingsResults[Allocation] = {-4};
        const std::map<Kind, Results> onDirectory = {{Read, {1}}, {Seek, {Success, 1}}, {Tell, {1}}};
        const std::map<Kind, Results> inDescription = {{Allocation, {-1}}, {Read, {-1}}, {Tell, {-1}}};
        const std::map<Kind, Results> inResources = {{Allocation, {-4}}, {Read, whole}, {Tell, whole}};
        const std::int32_t entryAt = size32(block.substr(0, block.find(le16(272) + le16(2) + le32(7))));
        const auto mark = [this] { members[1].set = 77; };
        const auto find = [this] { return findBrackets(); };
        const auto isFound = [this](std::int32_t result) { return result == 1 && members[1].set == 0; };
        const auto isMarked = [this] { return members[1].set == 77; };
        return {
            // A read error counts as the end of the file: the walk completes with the values read so far.
            {"JPEG", nothing, read(photo, FILE_TYPE_JPEG), isFull, jpegResults, {-10, Success}},
            {"TIFF", nothing, read(tiff, FILE_TYPE_TIFF), isFull, ofFile({-2}), {1}},
            {"PSD", nothing, read(psdFile, FILE_TYPE_PSD), isFull, ofFile({-1}), {1}},
            {"read_xmp", nothing, readFile, isRead, settingsResults, {Success, -2}},
            {"extract_xmp", clear, extract, is(11), ofRegion({Success, 0}, 0), {Success, -5}},
            {"read_iptc", clear, readIptc, is(5), ofRegion({Success, -1}, 0), {Success, -1}},
            {"parse_image_description", open, onStream(parse_image_description), is(0), inDescription, {-1}},
            {"parse_photoshop_data", open, onStream(parse_photoshop_data), is(1), inResources, whole},
            {"get_tif_tag", open, findTag, is(entryAt), {{Read, {-2}}, {Seek, whole}, {Tell, {-2}}}, {-3}},
            {"insert_xmp", wrap, insert, is(292), {{Allocation, {-4}}}},
            {"tvmeta_find_brackets", mark, find, isFound, {{Allocation, {TVMETA_NO_MEMORY}}}, {}, isMarked},
            {"get_exif_data", clearRecords, convert, isConverted, cameraResults, {0, Success}},
            {"parse_exif_data", openExif, parseDirectory(parse_exif_data), hasExif, onDirectory, {1}},
            {"parse_gps_data", openGps, parseDirectory(parse_gps_data), hasGps, onDirectory, {1}},
            {"tvmeta_file_type", nothing, fileType, is(FILE_TYPE_JPEG), ofFile({-1}), whole},
        };
    }

    // A missing byte is 0xFF in 16 bits; in 32 bits it counts as -1 times its weight.
    std::vector<Operation> numberReaders() {
        const auto open = [this] { stream = streamOf(digits); };
        const auto row = [&](const char* name, std::function<std::int32_t()> call, std::int32_t value,
                             const Results& missing) {
            return Operation{name, open, std::move(call), is(value), {{Read, missing}}, missing};
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
        const auto row = [&](const char* name, const std::function<std::int32_t()>& call, std::int32_t value,
                             bool allocates) {
            const Results failed = {TVMETA_READ_FAILED}, success = {Success};
            std::map<Kind, Results> results = {{Open, failed}, {Status, failed}, {Read, failed}, {Close, success}};
            if (allocates) {
                results[Allocation] = {TVMETA_NO_MEMORY};
            }
            return Operation{name, nothing, call, is(value), results, success};
        };
        return {row("tvmeta_read_photo", record, 400, true), row("tvmeta_read_block", xmp, packetSize, false),
                row("tvmeta_read_text", text, 1, true), row("tvmeta_list_tags", tags, 27, false)};
    }
};

TEST(Faults, EveryCallOfAReaderFailsInTurn) {
    Bench bench;
    for (const std::vector<Operation>& operations : {bench.readers(), bench.numberReaders(), bench.photoReaders()}) {
        for (const Operation& operation : operations) {
            operation.failEverything();
        }
    }
}

// A signal may interrupt each read of a source.
TEST(Faults, InterruptedReadsAreRepeated) {
    Bench bench;
    for (const Operation& operation : bench.photoReaders()) {
        operation.failEachCall(Read, Fault::Interrupted, false);
    }
}

} // namespace
