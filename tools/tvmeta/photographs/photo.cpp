#include "photographs/photo.h"

#include "output/failure.h"
#include "output/text.h"
#include "photographs/psd_resources.h"

namespace {

constexpr int32_t ChainBreaksBehindExif = -10;

// Length of a JPEG XMP segment beyond its packet: the length field and the identifier with its zero.
constexpr int32_t XmpSegmentOverhead = 2 + 29;

std::string readingProblem(int32_t fileType, int32_t result) {
    switch (fileType) {
    case FILE_TYPE_JPEG:
        return explain(result, {{-1, "its chain of JPEG segments is broken"},
                                {-2, "it has no EXIF data in front of the picture"},
                                {-3, "its EXIF data is not a TIFF structure"},
                                {ChainBreaksBehindExif, "its JPEG segments break off behind the EXIF data"}});
    case FILE_TYPE_PSD:
        return explain(result, {{-1, "it has no EXIF resource, or its image resources are broken"},
                                {-2, "its EXIF resource has no TIFF byte-order mark"},
                                {-3, "it is not an RGB picture, or its EXIF resource is not a TIFF structure"}});
    default:
        return explain(result, {{-1, "it cannot be opened"},
                                {-2, "it is not a TIFF file: expected the byte-order mark II or MM at its start"},
                                {-3, "it is not a TIFF file: expected 42 behind the byte-order mark"}});
    }
}

// The library finds the IPTC blocks of JPEG and TIFF files.
Region iptcPlace(const Photo& photo) {
    constexpr int32_t IptcResource = 1028;
    if (photo.fileType == FILE_TYPE_PSD && photo.info.iptcLength <= 0) {
        return findPsdResource(openFile(photo.path).get(), IptcResource);
    }
    return {photo.info.iptcOffset, photo.info.iptcLength};
}

// The library looks for the lens in JPEG files alone.
void takeLensOfPacket(Photo& photo) {
    if (photo.info.lens[0] != 0) {
        return;
    }
    try {
        const std::string packet = readPacket(photo);
        get_settings_from_xmp(MODE_LENS, textSize(packet), packet.c_str(), photo.info.lens, nullptr);
    } catch (const Failure&) {
        // Who needs the packet itself is told what is wrong with it.
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
        throw Failure(path, "it is not a JPEG, TIFF or PSD file: " + beginning(readStart(path, 4)));
    }
    Photo photo = {.path = path, .fileType = *fileType};
    const int32_t result = getExifData(path.c_str(), *fileType, &photo.info);
    if (result == ChainBreaksBehindExif) {
        photo.damage = readingProblem(*fileType, result);
    } else if (result < 0) {
        throw Failure(path, readingProblem(*fileType, result));
    }
    takeLensOfPacket(photo);
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

WriterRecords writerRecords(const Photo& photo) {
    WriterRecords records;
    metadataBufFromExifInfo(&photo.info, &records.metadata, &records.gps);
    return records;
}

std::string readPacket(const Photo& photo) {
    const int32_t overhead = photo.fileType == FILE_TYPE_JPEG ? XmpSegmentOverhead : 0;
    if (photo.info.xmpLength <= overhead) {
        return {};
    }
    return std::string(asText(readRegion(photo.path, photo.info.xmpOffset, photo.info.xmpLength - overhead)));
}

Bytes readIptcBlock(const Photo& photo) {
    const Region place = iptcPlace(photo);
    if (place.length <= 0) {
        return {};
    }
    requireRegion(photo.path, place.offset, place.length);
    Bytes block(static_cast<size_t>(place.length));
    const int32_t result = read_iptc(photo.path.c_str(), place.length, place.offset, block.data());
    if (result == -2) {
        throw Failure(photo.path, "expected a dataset at the start of its IPTC block: " + beginning(block));
    }
    if (result <= 0) {
        throw Failure(photo.path, explain(result, {{0, "its IPTC block reaches the end of the file"},
                                                   {-1, "its IPTC block cannot be read"}}));
    }
    return block;
}
