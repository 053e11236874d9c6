#include "support/photographs.h"

#include "support/packets.h"

#include <string_view>

namespace bench {

namespace {

constexpr std::size_t MakerNoteSize = 12'000;
constexpr std::size_t ThumbnailSize = 8'000;
constexpr std::size_t XmpPacketSize = 3 * 1024;
constexpr std::size_t ScanSize = 6'000'000;

const Bytes Make = "Exemplar";
const Bytes Model = "Exemplar E-20 Mark II";
const Bytes DateTime = "2024:05:17 18:42:07";

namespace resource {
constexpr std::uint32_t Iptc = 0x0404;
constexpr std::uint32_t Thumbnail = 0x040C;
} // namespace resource

namespace tag {
constexpr std::uint32_t Thumbnail = 513;
constexpr std::uint32_t Xmp = 700;
constexpr std::uint32_t Iptc = 33723;
constexpr std::uint32_t ExifIfd = 34665;
constexpr std::uint32_t GpsIfd = 34853;
constexpr std::uint32_t InteroperabilityIfd = 0xA005;
} // namespace tag

// Bytes without JPEG markers or directories.
Bytes noise(std::size_t size) {
    Random random;
    Bytes bytes(size, '\0');
    for (char& byte : bytes) {
        byte = static_cast<char>(random() % 0xFF);
    }
    return bytes;
}

Bytes smallJpeg(std::size_t size) {
    return "\xFF\xD8" + noise(size - 4) + "\xFF\xD9";
}

Bytes iptcDataset(unsigned char number, const Bytes& value) {
    return Bytes("\x1C\x02") + static_cast<char>(number) + be16(sizeOf(value)) + value;
}

Bytes iptcBlock() {
    constexpr std::string_view Keywords[] = {"evening", "harbour", "bracketed exposure", "tripod", "long shadows"};
    Bytes block = iptcDataset(0, be16(2)) + iptcDataset(5, "Harbour at dusk");
    for (const std::string_view keyword : Keywords) {
        block += iptcDataset(25, Bytes(keyword));
    }
    return block + iptcDataset(55, "20240517") + iptcDataset(120, "The harbour in the last light, seen from the pier.");
}

// ---- Directories ----

std::vector<Field> exifFields(const Bytes& makerNote) {
    std::vector<Field> fields = {
        rationalField(0x829A, 1, 250, Need::Always), // exposure time
        rationalField(0x829D, 56, 10, Need::Always), // f-number
        shortField(0x8822, 2),
        shortField(0x8827, 400), // ISO speed
        shortField(0x8830, 2),
        longField(0x8832, 400),
        {0x9000, 7, 4, "0230"},
        textField(0x9003, DateTime, Need::Always),
        textField(0x9004, DateTime),
        {0x9101, 7, 4, Bytes("\1\2\3\0", 4)},
        signedRationalField(0x9201, 7'965'784, 1'000'000),
        rationalField(0x9202, 4'970'854, 1'000'000),
        signedRationalField(0x9204, 0, 1),
        shortField(0x9207, 5),
        shortField(0x9209, 16),
        rationalField(0x920A, 35, 1, Need::Always), // focal length
    };
    if (!makerNote.empty()) {
        fields.push_back(bytesField(0x927C, makerNote));
    }
    const std::vector<Field> rest = {
        bytesField(0x9286, Bytes("ASCII\0\0\0", 8) + Bytes(256, ' ')),
        textField(0x9290, "42"),
        textField(0x9291, "42"),
        textField(0x9292, "42"),
        {0xA000, 7, 4, "0100"},
        shortField(0xA001, 1),
        longField(0xA002, 6000),
        longField(0xA003, 4000),
        linkField(tag::InteroperabilityIfd),
        rationalField(0xA20E, 6'000'000, 910, Need::Always), // focal plane resolution
        rationalField(0xA20F, 4'000'000, 607),
        shortField(0xA210, 2),
        shortField(0xA401, 0),
        shortField(0xA402, 0),
        shortField(0xA403, 0),
        shortField(0xA405, 52), // focal length in 35 mm film
        shortField(0xA406, 0),
        textField(0xA431, "052021001234"),
        textField(0xA434, Bytes(LensName)),
    };
    fields.insert(fields.end(), rest.begin(), rest.end());
    return fields;
}

std::vector<Field> gpsFields() {
    return {
        {0, 1, 4, Bytes("\2\3\0\0", 4)},
        textField(1, "N"),
        {2, 5, 3, le32(54) + le32(1) + le32(19) + le32(1) + le32(2964) + le32(100), Need::Always},
        textField(3, "E"),
        {4, 5, 3, le32(10) + le32(1) + le32(8) + le32(1) + le32(712) + le32(100), Need::Always},
        {5, 1, 1, Bytes(1, '\0')},
        rationalField(6, 43, 10, Need::Always),
        {7, 5, 3, le32(16) + le32(1) + le32(42) + le32(1) + le32(7) + le32(1), Need::Always},
        textField(29, "2024:05:17", Need::Always),
    };
}

void addSubdirectories(TiffBuilder& tiff, std::uint32_t main, const Bytes& makerNote) {
    const std::uint32_t exif = tiff.addDirectory(exifFields(makerNote));
    tiff.link(main, tag::ExifIfd, exif);
    // A directory that readers of metadata do not need.
    tiff.link(exif, tag::InteroperabilityIfd,
              tiff.append(le16(1) + le16(1) + le16(2) + le32(4) + "R98" + Bytes(5, '\0')));
    tiff.link(main, tag::GpsIfd, tiff.addDirectory(gpsFields()));
}

// The metadata of both photographs.
ExifInfo commonRecord() {
    ExifInfo record;
    init_exifInfo(&record);
    record.exposureTime = 1.0F / 250.0F;
    record.fNumber = 5.6F;
    record.isoSpeed = 400;
    record.focalLength = 35.0F;
    record.focalLength35mm = 52;
    record.focalPlaneXResolution = 6'000'000.0F / 910.0F;
    record.focalPlaneResolutionUnit = 2;
    Model.copy(record.model, sizeof record.model);
    DateTime.copy(record.dateTimeOriginal, sizeof record.dateTimeOriginal);
    record.orientation = 6;
    record.gpsLatitudeRef = 'N';
    record.gpsLongitudeRef = 'E';
    constexpr std::uint32_t Latitude[] = {54, 1, 19, 1, 2964, 100};
    constexpr std::uint32_t Longitude[] = {10, 1, 8, 1, 712, 100};
    constexpr std::uint32_t Time[] = {16, 1, 42, 1, 7, 1};
    std::copy(std::begin(Latitude), std::end(Latitude), record.gpsLatitude);
    std::copy(std::begin(Longitude), std::end(Longitude), record.gpsLongitude);
    std::copy(std::begin(Time), std::end(Time), record.gpsTimeStamp);
    record.gpsAltitude[0] = 43;
    record.gpsAltitude[1] = 10;
    DateTime.copy(record.gpsDateStamp, sizeof record.gpsDateStamp - 1);
    return record;
}

// ---- JPEG ----

TiffBuilder cameraExif() {
    TiffBuilder tiff;
    const std::uint32_t main = tiff.addDirectory({
        textField(271, Make),
        textField(272, Model, Need::Always),
        shortField(274, 6), // orientation
        rationalField(282, 300, 1),
        rationalField(283, 300, 1),
        shortField(296, 2),
        textField(305, "Firmware 1.4.0"),
        textField(306, DateTime),
        shortField(531, 2),
        linkField(tag::ExifIfd),
        linkField(tag::GpsIfd),
    });
    tiff.linkFirst(main);
    addSubdirectories(tiff, main, noise(MakerNoteSize));
    const std::uint32_t second = tiff.addDirectory({
        shortField(259, 6),
        rationalField(282, 72, 1),
        rationalField(283, 72, 1),
        shortField(296, 2),
        linkField(tag::Thumbnail),
        longField(514, ThumbnailSize),
    });
    tiff.linkNext(main, second);
    tiff.link(second, tag::Thumbnail, tiff.append(smallJpeg(ThumbnailSize)));
    return tiff;
}

// A file built from pieces, some of which a reader needs.
struct Growing {
    Bytes file;
    std::vector<Region> needed;

    // Appends a piece and returns its offset.
    std::size_t append(const Bytes& piece, Need need) {
        const std::size_t offset = file.size();
        file += piece;
        if (need == Need::Always) {
            needed.push_back({offset, piece.size()});
        }
        return offset;
    }
};

Bytes segmentHead(unsigned char marker, std::size_t payload) {
    return Bytes(1, '\xFF') + static_cast<char>(marker) + be16(static_cast<std::uint32_t>(payload + 2));
}

void addExifSegment(Growing& jpeg) {
    const TiffBuilder tiff = cameraExif();
    const Bytes signature("Exif\0\0", 6);
    jpeg.append(segmentHead(0xE1, signature.size() + tiff.bytes().size()) + signature, Need::Always);
    const std::size_t base = jpeg.append(tiff.bytes(), Need::Never);
    for (const Region& region : tiff.needed()) {
        jpeg.needed.push_back({base + region.offset, region.size});
    }
}

struct Resource {
    std::uint32_t id;
    Bytes data;
};

Bytes thumbnailHead() {
    return be32(1) + be32(160) + be32(107) + be32(480) + be32(51'360) + be32(ThumbnailSize) + be16(24) + be16(1);
}

// In the order that an image editor writes.
std::vector<Resource> photoshopResources() {
    return {
        {resource::Iptc, iptcBlock()},
        {0x0425, noise(16)},
        {0x03ED, be32(300 << 16) + be16(1) + be16(1) + be32(300 << 16) + be16(1) + be16(1)},
        {0x0426, noise(14)},
        {0x040D, be32(30)},
        {0x0419, be32(30)},
        {0x03F3, noise(8)},
        {0x2710, noise(10)},
        {0x03F5, noise(72)},
        {0x03F8, noise(112)},
        {0x0408, noise(16)},
        {0x041E, be32(0)},
        {0x041A, noise(842)},
        {0x0414, be32(7)},
        {resource::Thumbnail, thumbnailHead() + smallJpeg(ThumbnailSize)},
        {0x0421, noise(86)},
        {0x0406, noise(7)},
    };
}

// A reader needs the head of every resource and of a thumbnail, but not their data.
void addResource(Growing& segment, const Resource& added, ExifInfo& record) {
    const auto& [id, data] = added;
    segment.append("8BIM" + be16(id) + be16(0) + be32(sizeOf(data)), Need::Always);
    const std::size_t offset = segment.append(data + Bytes(data.size() % 2, '\0'), Need::Never);
    if (id == resource::Iptc) {
        record.iptcLength = static_cast<std::int32_t>(data.size());
        record.iptcOffset = static_cast<std::int32_t>(offset);
    } else if (id == resource::Thumbnail) {
        const std::size_t headSize = thumbnailHead().size();
        segment.needed.push_back({offset, headSize});
        record.thumbnailWidth = 160;
        record.thumbnailHeight = 107;
        record.thumbnailRowBytes = 480;
        record.thumbnailLength = ThumbnailSize;
        record.thumbnailOffset = static_cast<std::int32_t>(offset + headSize);
    }
}

void addPhotoshopSegment(Growing& jpeg, ExifInfo& record) {
    const std::size_t start = jpeg.append(segmentHead(0xED, 0) + Bytes("Photoshop 3.0\0", 14), Need::Always);
    for (const Resource& added : photoshopResources()) {
        addResource(jpeg, added, record);
    }
    jpeg.file.replace(start + 2, 2, be16(static_cast<std::uint32_t>(jpeg.file.size() - start - 2)));
}

void addXmpSegment(Growing& jpeg, ExifInfo& record) {
    const Bytes signature("http://ns.adobe.com/xap/1.0/\0", 29);
    const Bytes packet = settingsPacket(XmpPacketSize);
    jpeg.append(segmentHead(0xE1, signature.size() + packet.size()) + signature, Need::Always);
    record.xmpOffset = static_cast<std::int32_t>(jpeg.append(packet, Need::Always));
    record.xmpLength = static_cast<std::int32_t>(2 + signature.size() + packet.size());
    LensName.copy(record.lens, sizeof record.lens);
}

Bytes imageSegments() {
    const Bytes icc = Bytes("ICC_PROFILE\0\1\1", 14) + iccProfile();
    const Bytes frame = Bytes("\x08", 1) + be16(4000) + be16(6000) + Bytes("\3\1\x22\0\2\x11\1\3\x11\1", 10);
    const Bytes scan("\3\1\0\2\x11\3\x11\0\x3F\0", 10);
    return segmentHead(0xE2, icc.size()) + icc + segmentHead(0xDB, 130) + noise(130) + segmentHead(0xC0, frame.size()) +
           frame + segmentHead(0xC4, 416) + noise(416) + segmentHead(0xDA, scan.size()) + scan + noise(ScanSize) +
           "\xFF\xD9";
}

} // namespace

Photograph jpegPhotograph() {
    ExifInfo record = commonRecord();
    Growing jpeg;
    jpeg.append("\xFF\xD8", Need::Always);
    addExifSegment(jpeg);
    addPhotoshopSegment(jpeg, record);
    addXmpSegment(jpeg, record);
    jpeg.append(imageSegments(), Need::Never);
    return {jpeg.file, jpeg.needed, record};
}

Photograph tiffPhotograph() {
    constexpr std::uint32_t Width = 1500;
    constexpr std::uint32_t Height = 1000;
    constexpr std::uint32_t StripSize = Width * Height * 3;
    const Bytes packet = settingsPacket(XmpPacketSize);
    const Bytes iptc = iptcBlock();
    TiffBuilder tiff;
    const std::uint32_t strip = tiff.append(noise(StripSize));
    const std::uint32_t main = tiff.addDirectory({
        shortField(256, Width),
        shortField(257, Height),
        {258, 3, 3, le16(8) + le16(8) + le16(8)},
        shortField(259, 1),
        shortField(262, 2),
        textField(271, Make),
        textField(272, Model, Need::Always),
        longField(273, strip),
        shortField(274, 6), // orientation
        shortField(277, 3),
        shortField(278, Height),
        longField(279, StripSize),
        rationalField(282, 300, 1),
        rationalField(283, 300, 1),
        shortField(284, 1),
        shortField(296, 2),
        textField(305, "Editor 12.1"),
        textField(306, DateTime),
        {tag::Xmp, 1, sizeOf(packet), packet},
        bytesField(tag::Iptc, iptc),
        linkField(tag::ExifIfd),
        bytesField(34675, iccProfile()),
        linkField(tag::GpsIfd),
    });
    tiff.linkFirst(main);
    addSubdirectories(tiff, main, {});
    ExifInfo record = commonRecord();
    record.iptcLength = static_cast<std::int32_t>(iptc.size());
    record.iptcOffset = static_cast<std::int32_t>(tiff.valueOffset(main, tag::Iptc));
    record.xmpLength = static_cast<std::int32_t>(packet.size());
    record.xmpOffset = static_cast<std::int32_t>(tiff.valueOffset(main, tag::Xmp));
    return {tiff.bytes(), tiff.needed(), record};
}

Bytes iccProfile() {
    constexpr std::size_t Size = 3144;
    constexpr std::size_t HeaderSize = 128;
    Bytes profile = be32(Size) + Bytes(4, '\0') + be32(0x02100000) + "mntrRGB XYZ ";
    profile.resize(HeaderSize, '\0');
    return profile + noise(Size - HeaderSize);
}

} // namespace bench
