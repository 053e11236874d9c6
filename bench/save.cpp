// Saves images of 24 megapixels with metadata to /dev/shm, so that no disk affects the times.
#include "support/jobs.h"
#include "support/packets.h"
#include "support/photographs.h"
#include "support/tiff_pixels.h"
#include "testing/files.h"

#ifdef HAVE_LIBTIFF
#include <tiffio.h>
#endif

#include <algorithm>
#include <fcntl.h>
#include <memory>
#include <unistd.h>

namespace bench {

namespace {

constexpr std::size_t Width = 6000;
constexpr std::size_t Height = 4000;
constexpr std::size_t BlockSize = 1 << 20;
constexpr std::size_t WrittenSamples = 3;
constexpr int Resolution = 300;

// Sample layout of an image in memory and in the file.
struct Format {
    const char* job;
    std::size_t channels;
    std::size_t sourceBytes;  // of a sample
    std::size_t writtenBytes; // of a sample
    bool isFloat;
    void (*convert)(const unsigned char* from, unsigned char* to, std::size_t pixels); // null: no conversion

    std::size_t sourceRow() const { return Width * channels * sourceBytes; }
    std::size_t writtenRow() const { return Width * WrittenSamples * writtenBytes; }
};

// The first three samples of each pixel, or their high bytes.
template <typename From, typename To, std::size_t Channels>
void convertPixels(const unsigned char* from, unsigned char* to, std::size_t pixels) {
    const auto* const source = reinterpret_cast<const From*>(from);
    auto* const target = reinterpret_cast<To*>(to);
    constexpr int Shift = sizeof(From) > sizeof(To) ? 8 : 0;
    for (std::size_t i = 0; i < pixels; ++i) {
        for (std::size_t sample = 0; sample < WrittenSamples; ++sample) {
            target[i * WrittenSamples + sample] = static_cast<To>(source[i * Channels + sample] >> Shift);
        }
    }
}

constexpr Format Formats[] = {
    {"save 24 MP RGB8", 3, 1, 1, false, nullptr},
    {"save 24 MP RGB16", 3, 2, 2, false, nullptr},
    {"save 24 MP RGB float", 3, 4, 4, true, nullptr},
    {"save 24 MP RGBA8 as RGB8", 4, 1, 1, false, convertPixels<std::uint8_t, std::uint8_t, 4>},
    {"save 24 MP RGBA16 as RGB16", 4, 2, 2, false, convertPixels<std::uint16_t, std::uint16_t, 4>},
    {"save 24 MP RGB16 as RGB8", 3, 2, 1, false, convertPixels<std::uint16_t, std::uint8_t, 3>},
};

// Input and output of a job. All contenders overwrite the same file, so that truncating it costs each the same.
struct Task {
    explicit Task(const Format& imageFormat)
        : format(imageFormat), directory("/dev/shm"), path(directory.path("result.tif")), icc(iccProfile()),
          settings(packetSettings()) {
        Random random;
        pixels = randomBuffer(format.sourceRow() * Height, random);
        const ExifInfo record = jpegPhotograph().record;
        metadataBufFromExifInfo(&record, &metadata, &gps);
    }

    Format format;
    TempDir directory;
    std::string path;
    Bytes icc;
    Settings settings;
    std::vector<unsigned char> pixels;
    MetadataBuf metadata = {};
    GpsBuf gps = {};
};
using SharedTask = std::shared_ptr<const Task>;

std::int32_t bitsCode(const Format& format) {
    return static_cast<std::int32_t>(format.writtenBytes * 8);
}

bool saveByTvmeta(const Task& task) {
    const Format& format = task.format;
    const bool takesHighBytes = format.writtenBytes < format.sourceBytes;
    const auto pitch = static_cast<std::int32_t>(format.sourceRow() / (takesHighBytes ? 2 : 1));
    const TifImageInfo info = {static_cast<std::int32_t>(Width),
                               static_cast<std::int32_t>(Height),
                               static_cast<std::int32_t>(format.channels),
                               bitsCode(format),
                               Resolution,
                               static_cast<std::int32_t>(task.icc.size()),
                               takesHighBytes ? 1 : 0,
                               1};
    return buf2tif(task.pixels.data(), &info, pitch, reinterpret_cast<const unsigned char*>(task.icc.data()),
                   &task.metadata, &task.gps, 0, nullptr, SettingsMethodCode, task.settings.data(), 0, nullptr,
                   task.path.c_str()) >= 0;
}

#ifdef HAVE_LIBTIFF
struct CloseTiff {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using Tiff = std::unique_ptr<TIFF, CloseTiff>;

void setFields(TIFF* tiff, const Task& task, std::size_t stripRows) {
    const Format& format = task.format;
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(Width));
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(Height));
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, bitsCode(format));
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, static_cast<int>(WrittenSamples));
    TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, format.isFloat ? SAMPLEFORMAT_IEEEFP : SAMPLEFORMAT_UINT);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, static_cast<std::uint32_t>(stripRows));
    TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    TIFFSetField(tiff, TIFFTAG_XRESOLUTION, static_cast<double>(Resolution));
    TIFFSetField(tiff, TIFFTAG_YRESOLUTION, static_cast<double>(Resolution));
    TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
    TIFFSetField(tiff, TIFFTAG_MODEL, task.metadata.model);
    TIFFSetField(tiff, TIFFTAG_ICCPROFILE, static_cast<std::uint32_t>(task.icc.size()), task.icc.data());
}

bool writeStrip(TIFF* tiff, std::size_t strip, const unsigned char* bytes, std::size_t size) {
    // LibTIFF does not change the buffer: no compression, machine byte order.
    auto* const data = const_cast<unsigned char*>(bytes);
    return TIFFWriteEncodedStrip(tiff, static_cast<std::uint32_t>(strip), data, static_cast<tmsize_t>(size)) >= 0;
}

// One strip with all rows, directly from the caller's buffer.
bool saveByLibtiff(const Task& task) {
    const Tiff tiff(TIFFOpen(task.path.c_str(), "w"));
    setFields(tiff.get(), task, Height);
    return writeStrip(tiff.get(), 0, task.pixels.data(), task.pixels.size());
}

// Strips of 1 MiB, each converted before it is written.
bool convertByLibtiff(const Task& task) {
    const Format& format = task.format;
    const std::size_t stripRows = BlockSize / format.writtenRow();
    std::vector<unsigned char> block(stripRows * format.writtenRow());
    const Tiff tiff(TIFFOpen(task.path.c_str(), "w"));
    setFields(tiff.get(), task, stripRows);
    for (std::size_t row = 0; row < Height; row += stripRows) {
        const std::size_t rows = std::min(stripRows, Height - row);
        format.convert(&task.pixels[row * format.sourceRow()], block.data(), rows * Width);
        if (!writeStrip(tiff.get(), row / stripRows, block.data(), rows * format.writtenRow())) {
            return false;
        }
    }
    return true;
}
#endif

// The floor: writes the same bytes, already converted.
bool writeBlocks(const std::string& path, const Bytes& bytes) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    bool written = file >= 0;
    for (std::size_t done = 0; written && done < bytes.size(); done += BlockSize) {
        const std::size_t size = std::min(BlockSize, bytes.size() - done);
        written = write(file, bytes.data() + done, size) == static_cast<ssize_t>(size);
    }
    return close(file) == 0 && written;
}

std::vector<unsigned char> writtenPixels(const Task& task) {
    if (task.format.convert == nullptr) {
        return task.pixels;
    }
    std::vector<unsigned char> pixels(task.format.writtenRow() * Height);
    task.format.convert(task.pixels.data(), pixels.data(), Width * Height);
    return pixels;
}

void addContenders(Contenders& contenders, const Format& format) {
    const SharedTask task = std::make_shared<const Task>(format);
    const std::vector<unsigned char> pixels = writtenPixels(*task);
    const auto isRight = [&](bool saved) { return saved && TiffPixels(readFile(task->path)).are(pixels); };
    contenders.add(
        "tvmeta", [task] { return saveByTvmeta(*task); }, isRight);
    const auto file = std::make_shared<const Bytes>(readFile(task->path));
    contenders.add(
        "floor", [task, file] { return writeBlocks(task->path, *file); }, isRight);
#ifdef HAVE_LIBTIFF
    const auto save = format.convert == nullptr ? saveByLibtiff : convertByLibtiff;
    contenders.add(
        "libtiff", [task, save] { return save(*task); }, isRight);
#endif
}

} // namespace

void addSaveJobs(Jobs& jobs) {
    for (const Format& format : Formats) {
        jobs.push_back({format.job, [format](Contenders& contenders) { addContenders(contenders, format); }});
    }
}

} // namespace bench
