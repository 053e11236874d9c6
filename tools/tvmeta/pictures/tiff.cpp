// TIFF pictures, through libtiff: the first one of a file that is not a reduced copy of another.

#include "base/failure.h"
#include "base/words.h"
#include "pictures/decoders.h"
#include "pictures/tiff_pixels.h"
#include "system/paths.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <utility>
#include <vector>

namespace {

struct TiffCloser {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};

struct OptionsFreer {
    void operator()(TIFFOpenOptions* options) const { TIFFOpenOptionsFree(options); }
};

// The first error of libtiff (later ones are consequences), and whether it skipped a damaged tag.
struct TiffReport {
    std::array<char, 200> reason = {};
    bool ignoredTag = false;

    void add(const char* format, std::va_list arguments) {
        if (reason.front() == 0) {
            std::vsnprintf(reason.data(), reason.size(), format, arguments);
        }
    }
};

int onError(TIFF*, void* data, const char*, const char* format, std::va_list arguments) {
    static_cast<TiffReport*>(data)->add(format, arguments);
    return 1; // handled
}

// The JPEG library warns of pixels that it has invented.
int onWarning(TIFF*, void* data, const char* module, const char* format, std::va_list arguments) {
    auto* const report = static_cast<TiffReport*>(data);
    if (module != nullptr && std::strcmp(module, "JPEGLib") == 0) {
        report->add(format, arguments);
    }
    report->ignoredTag = report->ignoredTag || std::strstr(format, "tag ignored") != nullptr;
    return 1;
}

std::string nameOf(uint16_t photometric) {
    constexpr std::pair<uint16_t, const char*> Kinds[] = {
        {PHOTOMETRIC_PALETTE, "a palette"}, {PHOTOMETRIC_MASK, "a mask"},       {PHOTOMETRIC_SEPARATED, "CMYK"},
        {PHOTOMETRIC_YCBCR, "YCbCr"},       {PHOTOMETRIC_CIELAB, "CIE L*a*b*"}, {PHOTOMETRIC_CFA, "raw sensor data"},
        {PHOTOMETRIC_LOGL, "LogL"},         {PHOTOMETRIC_LOGLUV, "LogLuv"},
    };
    const auto* const name = std::ranges::find(Kinds, photometric, [](const auto& entry) { return entry.first; });
    return name == std::end(Kinds) ? "photometric interpretation " + std::to_string(photometric) : name->second;
}

class TiffReader {
  public:
    explicit TiffReader(const std::string& name) : path(name) {
        openFile(path); // reports why the file cannot be read
        const std::unique_ptr<TIFFOpenOptions, OptionsFreer> options(TIFFOpenOptionsAlloc());
        TIFFOpenOptionsSetErrorHandlerExtR(options.get(), onError, &report);
        TIFFOpenOptionsSetWarningHandlerExtR(options.get(), onWarning, &report);
        // m: no memory mapping, whose pages would count as memory
        tiff.reset(TIFFOpenExt(readablePath(path).c_str(), "rm", options.get()));
        require(tiff != nullptr);
        findPage();
        readLayout();
        // A tag with an invalid value, such as an orientation of 9, does not damage the pixels.
        report.ignoredTag = report.ignoredTag || report.reason.front() != 0;
        report.reason = {};
    }

    Picture read(Request request) {
        Picture picture = withoutSamples();
        uint16_t code = 0;
        if (TIFFGetField(tiff.get(), TIFFTAG_ORIENTATION, &code) == 1 && code >= 1 && code <= 8) {
            picture.orientation = code;
        }
        takeProfile(picture);
        takeResolution(picture);
        noteRest(picture);
        if (request.pixels) {
            picture.samples.resize(sampleBytes(picture));
            require(readTiffPixels(path, tiff.get(), layout, picture) && report.reason.front() == 0);
        }
        return picture;
    }

  private:
    template <typename Value>
    Value field(uint32_t tag, Value otherwise) const {
        return tiffField(tiff.get(), tag, otherwise);
    }

    void require(bool isRead) const {
        if (!isRead) {
            throw Failure(path, std::string("cannot be decoded as TIFF: ") +
                                    (report.reason.front() == 0 ? "the pixels are incomplete" : report.reason.data()));
        }
    }

    bool isCopy() const {
        return (field<uint32_t>(TIFFTAG_SUBFILETYPE, 0) & (FILETYPE_REDUCEDIMAGE | FILETYPE_MASK)) != 0;
    }

    // Goes to the first page that is not a reduced copy or a mask; the picture of a reduced first page can be below it.
    // A file of such pages alone has its picture in the first.
    void findPage() {
        constexpr tdir_t MaxPages = 1000;
        constexpr uint16_t MaxChildren = 16;
        uint16_t children = 0;
        const uint64_t* offsets = nullptr;
        const bool hasChildren =
            TIFFGetField(tiff.get(), TIFFTAG_SUBIFD, &children, &offsets) == 1 && offsets != nullptr;
        const std::vector<uint64_t> below(offsets, offsets + (hasChildren ? std::min(children, MaxChildren) : 0));
        tdir_t page = 0, count = isCopy() ? 0 : 1;
        for (tdir_t next = 1; next < MaxPages && count < 2 && TIFFReadDirectory(tiff.get()) != 0; ++next) {
            if (!isCopy() && count++ == 0) {
                page = next;
            }
        }
        hasMorePages = count > 1;
        const auto isFull = [this](uint64_t offset) {
            return TIFFSetSubDirectory(tiff.get(), offset) != 0 && !isCopy();
        };
        const bool isBelow = count == 0 && std::ranges::any_of(below, isFull);
        report = {};
        require(isBelow || TIFFSetDirectory(tiff.get(), page) != 0);
    }

    void readLayout() {
        layout.width = field<uint32_t>(TIFFTAG_IMAGEWIDTH, 0);
        layout.height = field<uint32_t>(TIFFTAG_IMAGELENGTH, 0);
        layout.samples = field<uint16_t>(TIFFTAG_SAMPLESPERPIXEL, 1);
        layout.bits = field<uint16_t>(TIFFTAG_BITSPERSAMPLE, 1);
        layout.format = field<uint16_t>(TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
        layout.photometric = field<uint16_t>(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
        layout.compression = field<uint16_t>(TIFFTAG_COMPRESSION, COMPRESSION_NONE);
        layout.isPlanar = field<uint16_t>(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) == PLANARCONFIG_SEPARATE;
        layout.isTiled = TIFFIsTiled(tiff.get()) != 0;
    }

    // The number of colour samples per pixel. The JPEG codec converts YCbCr itself.
    int32_t colours() {
        switch (layout.photometric) {
        case PHOTOMETRIC_MINISWHITE:
        case PHOTOMETRIC_MINISBLACK:
            return 1;
        case PHOTOMETRIC_YCBCR:
            if (layout.compression == COMPRESSION_JPEG && !layout.isPlanar) {
                TIFFSetField(tiff.get(), TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
                return 3;
            }
            break;
        case PHOTOMETRIC_RGB:
            return 3;
        default:
            break;
        }
        throw Failure(path,
                      "expected a grey or RGB picture, found " + nameOf(layout.photometric) + "; convert it first");
    }

    Depth depth() const {
        const bool isInteger = layout.format == SAMPLEFORMAT_UINT || layout.format == SAMPLEFORMAT_VOID;
        const bool isReal = layout.format == SAMPLEFORMAT_IEEEFP;
        if (isInteger && layout.bits == 8) {
            return Depth::Integer8;
        }
        if (isInteger && layout.bits == 16) {
            return Depth::Integer16;
        }
        if (isReal && layout.bits == 16) {
            return Depth::Float16;
        }
        if (isReal && layout.bits == 32) {
            return Depth::Float32;
        }
        const char* const kind = isReal ? "floats" : isInteger ? "unsigned integers" : "signed or complex numbers";
        throw Failure(path, "expected unsigned integers of 8 or 16 bits or floats of 16 or 32 bits, found " +
                                std::string(kind) + " of " + std::to_string(layout.bits) + " bits");
    }

    // Keeps a single alpha sample, which the library omits: rows can be read in place.
    Picture withoutSamples() {
        const int32_t kept = colours();
        const Depth samples = depth();
        if (layout.samples < kept) {
            throw Failure(path, "expected 3 samples for each RGB pixel, found " + std::to_string(layout.samples));
        }
        if (layout.photometric == PHOTOMETRIC_MINISWHITE && isFloat(samples)) {
            throw Failure(path, "expected floats with black as zero, found white as zero");
        }
        if (TIFFIsCODECConfigured(layout.compression) == 0) {
            throw Failure(path, "compression code " + std::to_string(layout.compression) +
                                    ", is not supported by the TIFF library of this system");
        }
        const bool hasOneMore = layout.samples == kept + 1 && !layout.isPlanar;
        Picture picture =
            pictureWithoutSamples(path, layout.width, layout.height, hasOneMore ? kept + 1 : kept, samples);
        if (layout.compression == COMPRESSION_NONE) {
            requireFileBytes(path, picture, sampleBytes(picture));
        }
        return picture;
    }

    void takeProfile(Picture& picture) const {
        uint32_t length = 0;
        const unsigned char* bytes = nullptr;
        if (TIFFGetField(tiff.get(), TIFFTAG_ICCPROFILE, &length, &bytes) == 1 && bytes != nullptr) {
            picture.profile.assign(bytes, bytes + length);
        }
        const void* values = nullptr;
        if (picture.profile.empty() && TIFFGetField(tiff.get(), TIFFTAG_PRIMARYCHROMATICITIES, &values) == 1) {
            picture.dropped.emplace_back("chromaticities");
        }
    }

    void takeResolution(Picture& picture) const {
        const auto unit = field<uint16_t>(TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
        if (unit == RESUNIT_INCH || unit == RESUNIT_CENTIMETER) {
            ::takeResolution(picture, field<float>(TIFFTAG_XRESOLUTION, 0), field<float>(TIFFTAG_YRESOLUTION, 0),
                             unit == RESUNIT_INCH ? 1 : 1 / 2.54);
        }
    }

    void noteRest(Picture& picture) const {
        const int extra = layout.samples - colourChannels(picture);
        uint16_t count = 0;
        const uint16_t* kinds = nullptr;
        const bool isKnown = TIFFGetField(tiff.get(), TIFFTAG_EXTRASAMPLES, &count, &kinds) == 1 && count > 0;
        if (extra == 1 && isKnown && kinds[0] != EXTRASAMPLE_UNSPECIFIED) {
            picture.dropped.emplace_back(kinds[0] == EXTRASAMPLE_ASSOCALPHA ? "alpha (colours stay multiplied by it)"
                                                                            : "alpha");
        } else if (extra > 0) {
            picture.dropped.push_back(counted(static_cast<size_t>(extra), "more channel"));
        }
        if (hasMorePages) {
            picture.dropped.emplace_back("further pages");
        }
        if (report.ignoredTag) {
            picture.dropped.emplace_back("damaged tags");
        }
        constexpr uint32_t Texts[] = {TIFFTAG_IMAGEDESCRIPTION, TIFFTAG_MAKE, TIFFTAG_MODEL, TIFFTAG_ARTIST,
                                      TIFFTAG_COPYRIGHT};
        const auto isThere = [this](uint32_t tag) { return field<const char*>(tag, nullptr) != nullptr; };
        if (std::ranges::any_of(Texts, isThere)) {
            picture.metadata.emplace_back("texts");
        }
        constexpr std::pair<uint32_t, const char*> Blocks[] = {{TIFFTAG_EXIFIFD, "EXIF"},
                                                               {TIFFTAG_GPSIFD, "GPS"},
                                                               {TIFFTAG_RICHTIFFIPTC, "IPTC"},
                                                               {TIFFTAG_XMLPACKET, "XMP"}};
        for (const auto& [tag, name] : Blocks) {
            uint64_t lengthOrOffset = 0;
            const void* block = nullptr; // not set for a directory
            if (TIFFGetField(tiff.get(), tag, &lengthOrOffset, &block) == 1) {
                picture.metadata.emplace_back(name);
            }
        }
    }

    const std::string& path;
    TiffReport report;
    bool hasMorePages = false;
    std::unique_ptr<TIFF, TiffCloser> tiff;
    TiffLayout layout;
};

} // namespace

Picture readTiff(const std::string& path, Request request) {
    return TiffReader(path).read(request);
}
