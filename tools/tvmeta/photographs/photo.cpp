#include "photographs/photo.h"

#include "output/failure.h"
#include "output/text.h"
#include "photographs/tags.h"

#include <algorithm>
#include <limits>

namespace {

constexpr int32_t ChainBreaksAfterExif = -10;

// Copies the text of a region, up to its terminator, to a field of a record.
template <size_t N>
void copyText(const std::string& path, Region region, char (&field)[N]) {
    region.length = std::min<int64_t>(region.length, N - 1);
    const Bytes bytes = readRegion(path, region);
    std::copy(bytes.begin(), std::ranges::find(bytes, 0), field);
}

// Reads what the library reads from directories. The library finds them only in their usual place: in the first APP1
// segment of a JPEG file, and in PSD files with RGB pictures.
void readDirectories(const TiffStructure& tiff, Photo& photo) {
    if (tiff.base > std::numeric_limits<int32_t>::max()) {
        return;
    }
    const auto base = static_cast<int32_t>(tiff.base);
    if (const TiffEntry* model = photo.parts.image.find(tag::Model)) {
        copyText(photo.path, tiff.region(*model), photo.info.model);
    }
    photo.info.orientation = static_cast<int32_t>(photo.parts.image.value(tag::Orientation).value_or(0));
    if (const auto camera = photo.parts.image.value(tag::ExifDirectory)) {
        tiff.seek(*camera);
        parse_exif_data(tiff.file, 0, tiff.order, base, &photo.info);
    }
    if (const auto gps = photo.parts.image.value(tag::GpsDirectory)) {
        tiff.seek(*gps);
        parse_gps_data(tiff.file, 0, tiff.order, base, &photo.info);
    }
}

[[noreturn]] void failAsTiff(const std::string& path) {
    const Bytes start = readStart(path, 4);
    const std::string_view text = asText(start);
    if (text == std::string_view("II\x2B\0", 4) || text == std::string_view("MM\0\x2B", 4)) {
        throw Failure(path, "BigTIFF is not supported");
    }
    throw Failure(path, "not a TIFF file: expected 42 after the byte-order mark");
}

// The library read no record, or only a part. A photograph without EXIF is still a photograph.
void readDespite(int32_t result, std::FILE* file, Photo& photo) {
    if (photo.fileType == FILE_TYPE_TIFF) {
        failAsTiff(photo.path);
    }
    const auto tiff = photo.parts.exif.length > 0 ? TiffStructure::find(file, photo.parts.exif.offset) : std::nullopt;
    if (result == ChainBreaksAfterExif) {
        photo.damage = "the JPEG segments break off after the EXIF data";
    } else if (tiff) {
        readDirectories(*tiff, photo);
    } else if (photo.parts.exif.length > 0) {
        photo.damage = "the EXIF data is not a TIFF structure";
    } else if (photo.parts.width <= 0) {
        throw Failure(photo.path, "the file ends before its image data");
    }
}

// The library reads the lens only from XMP packets of JPEG files. Newer cameras store it in EXIF.
void findLens(std::FILE* file, Photo& photo) {
    char(&lens)[sizeof photo.info.lens] = photo.info.lens;
    try {
        if (lens[0] == 0) {
            const std::string packet = readPacket(photo);
            get_settings_from_xmp(MODE_LENS, textSize(packet), packet.c_str(), lens, nullptr);
        }
        const TiffEntry* model = photo.parts.camera.find(tag::LensModel);
        const auto tiff = TiffStructure::find(file, photo.parts.exif.offset);
        if (lens[0] == 0 && model != nullptr && tiff) {
            copyText(photo.path, tiff->region(*model), lens);
        }
    } catch (const Failure&) {
        // A command that needs the packet itself reports what is wrong with it.
    }
}

} // namespace

std::optional<int32_t> findFileType(const std::string& path) {
    requireRegularFile(path);
    const int32_t fileType = tvmeta_file_type(path.c_str());
    if (fileType == TVMETA_FILE_UNREADABLE) {
        openFile(path); // throws with the reason
    }
    return fileType < 0 ? std::nullopt : std::optional(fileType);
}

const char* containerName(int32_t fileType) {
    return fileType == FILE_TYPE_JPEG ? "JPEG" : fileType == FILE_TYPE_PSD ? "PSD" : "TIFF";
}

Photo readRecord(const std::string& path) {
    const std::optional<int32_t> fileType = findFileType(path);
    if (!fileType) {
        throw Failure(path, "not a JPEG, TIFF or PSD file: " + beginning(readStart(path, 4)));
    }
    Photo photo = {.path = path, .fileType = *fileType};
    const File file = openFile(path);
    photo.parts = findParts(file.get(), *fileType);
    const int32_t result = getExifData(path.c_str(), *fileType, &photo.info);
    if (result < 0) {
        readDespite(result, file.get(), photo);
    }
    findLens(file.get(), photo);
    photo.taken = parseCaptureTime(fieldText(photo.info.dateTimeOriginal));
    return photo;
}

Photo readPhoto(const std::string& path) {
    Photo photo = readRecord(path);
    if (!photo.damage.empty()) {
        complain("warning: " + path + ": " + photo.damage);
    }
    return photo;
}

std::string readPacket(const Photo& photo) {
    return std::string(asText(readRegion(photo.path, photo.parts.xmp)));
}

Bytes readIptcBlock(const Photo& photo) {
    constexpr unsigned char DatasetMarker = 0x1C;
    Bytes block = readRegion(photo.path, photo.parts.iptc);
    if (!block.empty() && block.front() != DatasetMarker) {
        throw Failure(photo.path, "expected a dataset at the start of the IPTC block: " + beginning(block));
    }
    return block;
}
