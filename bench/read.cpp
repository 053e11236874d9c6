// Reads the metadata of one photograph from a file in the page cache.
#include "support/jobs.h"
#include "support/photo_reads.h"
#include "support/photographs.h"
#include "testing/files.h"
#include "testing/photographs_containers.h"

#ifdef HAVE_EXIV2
#include <exiv2/exiv2.hpp>
#endif
#ifdef HAVE_LIBEXIF
#include <libexif/exif-data.h>
#endif
#ifdef HAVE_LIBTIFF
#include <tiffio.h>
#endif

#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace bench {

namespace {

// The values that every peer must read.
struct Summary {
    std::string model;
    std::string date;
    int orientation = 0;
    int isoSpeed = 0;
    float exposureTime = 0;
    float fNumber = 0;
    float focalLength = 0;
    float latitudeDegrees = 0;

    bool operator==(const Summary&) const = default;
};

Summary summaryOf(const ExifInfo& record) {
    return {
        record.model,        record.dateTimeOriginal, record.orientation, record.isoSpeed,
        record.exposureTime, record.fNumber,          record.focalLength, static_cast<float>(record.gpsLatitude[0])};
}

// A photograph in a temporary file.
struct Source {
    explicit Source(Photograph photo)
        : photograph(std::move(photo)), directory(std::filesystem::temp_directory_path()),
          path(directory.path("photograph")) {
        writeFile(path, photograph.file);
    }

    Photograph photograph;
    TempDir directory;
    std::string path;
};
using SharedSource = std::shared_ptr<const Source>;

ExifInfo readByTvmeta(const std::string& path, std::int32_t fileType) {
    ExifInfo record;
    getExifData(path.c_str(), fileType, &record);
    return record;
}

#ifdef HAVE_LIBEXIF
struct FreeExif {
    void operator()(ExifData* data) const { exif_data_unref(data); }
};

// The entries of a directory.
struct ExifDirectory {
    ExifContent* content;
    ExifByteOrder order;

    const ExifEntry* find(unsigned tag) const { return exif_content_get_entry(content, static_cast<ExifTag>(tag)); }
    std::string text(unsigned tag) const {
        const ExifEntry* const entry = find(tag);
        return entry != nullptr ? reinterpret_cast<const char*>(entry->data) : "";
    }
    int number(unsigned tag) const {
        const ExifEntry* const entry = find(tag);
        return entry != nullptr ? exif_get_short(entry->data, order) : 0;
    }
    float rational(unsigned tag) const {
        const ExifEntry* const entry = find(tag);
        if (entry == nullptr) {
            return 0;
        }
        const ExifRational value = exif_get_rational(entry->data, order);
        return static_cast<float>(value.numerator) / static_cast<float>(value.denominator);
    }
};

Summary readByLibexif(const std::string& path) {
    const std::unique_ptr<ExifData, FreeExif> data(exif_data_new_from_file(path.c_str()));
    const auto directory = [&data](ExifIfd ifd) {
        return ExifDirectory{data->ifd[ifd], exif_data_get_byte_order(data.get())};
    };
    const ExifDirectory image = directory(EXIF_IFD_0);
    const ExifDirectory exif = directory(EXIF_IFD_EXIF);
    return {image.text(EXIF_TAG_MODEL),
            exif.text(EXIF_TAG_DATE_TIME_ORIGINAL),
            image.number(EXIF_TAG_ORIENTATION),
            exif.number(EXIF_TAG_ISO_SPEED_RATINGS),
            exif.rational(EXIF_TAG_EXPOSURE_TIME),
            exif.rational(EXIF_TAG_FNUMBER),
            exif.rational(EXIF_TAG_FOCAL_LENGTH),
            directory(EXIF_IFD_GPS).rational(EXIF_TAG_GPS_LATITUDE)};
}
#endif

#ifdef HAVE_EXIV2
Summary readByExiv2(const std::string& path) {
    const auto image = Exiv2::ImageFactory::open(path);
    image->readMetadata();
    Exiv2::ExifData& exif = image->exifData();
    const auto number = [&exif](const char* key) { return exif[key].toFloat(); };
    return {exif["Exif.Image.Model"].toString(),
            exif["Exif.Photo.DateTimeOriginal"].toString(),
            static_cast<int>(number("Exif.Image.Orientation")),
            static_cast<int>(number("Exif.Photo.ISOSpeedRatings")),
            number("Exif.Photo.ExposureTime"),
            number("Exif.Photo.FNumber"),
            number("Exif.Photo.FocalLength"),
            number("Exif.GPSInfo.GPSLatitude")};
}
#endif

#ifdef HAVE_LIBTIFF
struct CloseTiff {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};

void readExifDirectory(TIFF* tiff, Summary& summary) {
    const char* date = "";
    std::uint16_t count = 0;
    const std::uint16_t* isoSpeeds = nullptr;
    TIFFGetField(tiff, EXIFTAG_DATETIMEORIGINAL, &date);
    if (TIFFGetField(tiff, EXIFTAG_ISOSPEEDRATINGS, &count, &isoSpeeds) == 1 && count > 0) {
        summary.isoSpeed = isoSpeeds[0];
    }
    TIFFGetField(tiff, EXIFTAG_EXPOSURETIME, &summary.exposureTime);
    TIFFGetField(tiff, EXIFTAG_FNUMBER, &summary.fNumber);
    TIFFGetField(tiff, EXIFTAG_FOCALLENGTH, &summary.focalLength);
    summary.date = date;
}

Summary readByLibtiff(const std::string& path) {
    Summary summary;
    const std::unique_ptr<TIFF, CloseTiff> tiff(TIFFOpen(path.c_str(), "r"));
    const char* model = "";
    std::uint16_t orientation = 0;
    toff_t exif = 0;
    toff_t gps = 0;
    const double* latitude = nullptr;
    TIFFGetField(tiff.get(), TIFFTAG_MODEL, &model);
    TIFFGetField(tiff.get(), TIFFTAG_ORIENTATION, &orientation);
    TIFFGetField(tiff.get(), TIFFTAG_EXIFIFD, &exif);
    TIFFGetField(tiff.get(), TIFFTAG_GPSIFD, &gps);
    summary.model = model;
    summary.orientation = orientation;
    if (TIFFReadEXIFDirectory(tiff.get(), exif) == 1) {
        readExifDirectory(tiff.get(), summary);
    }
    if (TIFFReadGPSDirectory(tiff.get(), gps) == 1 && TIFFGetField(tiff.get(), GPSTAG_LATITUDE, &latitude) == 1) {
        summary.latitudeDegrees = static_cast<float>(latitude[0]);
    }
    return summary;
}
#endif

// The bytes that any reader needs, in as few reads as possible. Gaps of up to a page are read too: a page costs about
// as much as another system call.
std::vector<Region> fewestReads(const std::vector<Region>& needed) {
    constexpr std::size_t Page = 4096;
    std::vector<Region> reads;
    for (const Region& region : needed) {
        const std::size_t end = region.offset + region.size;
        if (reads.empty() || region.offset - (reads.back().offset + reads.back().size) > Page) {
            reads.push_back(region);
        } else {
            reads.back().size = end - reads.back().offset;
        }
    }
    return reads;
}

bool readRegions(const std::string& path, const std::vector<Region>& reads, Bytes& buffer, bool asksForSize = false) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    bool complete = file >= 0;
    struct stat status {};
    complete = complete && (!asksForSize || fstat(file, &status) == 0);
    for (const Region& region : reads) {
        complete = complete && pread(file, buffer.data(), region.size, static_cast<off_t>(region.offset)) ==
                                   static_cast<ssize_t>(region.size);
    }
    return close(file) == 0 && complete;
}

void addFloor(Contenders& contenders, const SharedSource& source) {
    const std::vector<Region> reads = fewestReads(source->photograph.needed);
    const auto buffer = std::make_shared<Bytes>(source->photograph.file.size(), '\0');
    contenders.add(
        "floor", [source, reads, buffer] { return readRegions(source->path, reads, *buffer); },
        [](bool complete) { return complete; });
}

// Printing a message would take longer than reading.
void silencePeers() {
#ifdef HAVE_LIBTIFF
    TIFFSetWarningHandler(nullptr);
#endif
#ifdef HAVE_EXIV2
    Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
    Exiv2::enableBMFF();
#endif
}

void addReaders(Contenders& contenders, const SharedSource& source, std::int32_t fileType) {
    const ExifInfo& expected = source->photograph.record;
    contenders.add(
        "tvmeta", [source, fileType] { return readByTvmeta(source->path, fileType); },
        [&](const ExifInfo& record) { return std::memcmp(&record, &expected, sizeof record) == 0; });
    [[maybe_unused]] const auto isRight = [&](const Summary& summary) { return summary == summaryOf(expected); };
#ifdef HAVE_LIBEXIF
    if (fileType == FILE_TYPE_JPEG) {
        contenders.add(
            "libexif", [source] { return readByLibexif(source->path); }, isRight);
    }
#endif
#ifdef HAVE_LIBTIFF
    if (fileType == FILE_TYPE_TIFF) {
        contenders.add(
            "libtiff", [source] { return readByLibtiff(source->path); }, isRight);
    }
#endif
#ifdef HAVE_EXIV2
    contenders.add(
        "Exiv2", [source] { return readByExiv2(source->path); }, isRight);
#endif
    addFloor(contenders, source);
}

// ---- Any photograph ----

// The library, and as the floor its own system calls.
void addPhotoReader(Contenders& contenders, const SharedSource& source, const std::string& model) {
    contenders.add(
        "tvmeta", [source] { return openAndReadPhoto(source->path); },
        [&](const tvmeta_Photo& photo) { return photo.model == model; });
    const std::vector<Region> reads = readsOfPhoto(source->path);
    const auto buffer = std::make_shared<Bytes>(MaxBytesRead, '\0');
    contenders.add(
        "floor", [source, reads, buffer] { return readRegions(source->path, reads, *buffer, true); },
        [](bool complete) { return complete; });
}

void addJpegReaders(Contenders& contenders) {
    const auto source = std::make_shared<const Source>(jpegPhotograph());
    addPhotoReader(contenders, source, source->photograph.record.model);
    contenders.add(
        "getExifData", [source] { return readByTvmeta(source->path, FILE_TYPE_JPEG); },
        [&](const ExifInfo& record) { return source->photograph.record.model == Bytes(record.model); });
}

// The size that cameras write.
constexpr std::uint32_t CameraFileSize = 20'000'000;

// What the builders do not write is a hole.
void addContainerReaders(Contenders& contenders, Bytes start, const std::string& model) {
    const auto source = std::make_shared<const Source>(Photograph{std::move(start), {}, {}});
    std::filesystem::resize_file(source->path, CameraFileSize);
    addPhotoReader(contenders, source, model);
#ifdef HAVE_EXIV2
    contenders.add(
        "Exiv2", [source] { return readByExiv2(source->path); },
        [&](const Summary& summary) { return summary.model == model; });
#endif
}

// The boxes, followed by one to the end of the file. The one whose contents Exiv2 refuses becomes free space.
Bytes withoutBox(Bytes boxes, std::string_view type) {
    boxes.replace(boxes.find(type), type.size(), "free");
    return boxes + be32(CameraFileSize - sizeOf(boxes)) + "mdat";
}

// The maker notes are between the EXIF and the GPS directory.
void addCr3Readers(Contenders& contenders) {
    addContainerReaders(contenders, withoutBox(cr3(40'000), "CMT3"), "TV-100");
}

// EXIF data and packet are in the middle of the file.
void addHeicReaders(Contenders& contenders) {
    const Bytes file = heif({.pictures = CameraFileSize / 2}, exifItem(cameraTiff(Tiff(false))), Packet);
    addContainerReaders(contenders, withoutBox(file, "colr"), "TV-100");
}

void addRafReaders(Contenders& contenders) {
    const Photograph preview = jpegPhotograph();
    addContainerReaders(contenders, raf(preview.file), preview.record.model);
}

} // namespace

void addReadJobs(Jobs& jobs) {
    silencePeers();
    jobs.push_back({"read a JPEG", [](Contenders& contenders) {
                        addReaders(contenders, std::make_shared<const Source>(jpegPhotograph()), FILE_TYPE_JPEG);
                    }});
    jobs.push_back({"read a TIFF", [](Contenders& contenders) {
                        addReaders(contenders, std::make_shared<const Source>(tiffPhotograph()), FILE_TYPE_TIFF);
                    }});
    jobs.push_back({"read any photograph: JPEG", addJpegReaders});
    jobs.push_back({"read any photograph: CR3", addCr3Readers});
    jobs.push_back({"read any photograph: HEIC", addHeicReaders});
    jobs.push_back({"read any photograph: RAF", addRafReaders});
}

} // namespace bench
