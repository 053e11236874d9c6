// PNG pictures, through libpng.

#include "base/failure.h"
#include "pictures/decoders.h"
#include "pictures/exif_orientation.h"
#include "pictures/rgb_profile.h"

#include <png.h>

#include <array>
#include <bit>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace {

// The error of libpng, and whether it refused the ICC profile.
struct Report {
    std::array<char, 128> reason = {};
    bool refusedProfile = false;
};

[[noreturn]] void onError(png_structp png, png_const_charp message) {
    auto* const report = static_cast<Report*>(png_get_error_ptr(png));
    std::snprintf(report->reason.data(), report->reason.size(), "%s", message);
    png_longjmp(png, 1);
}

void onWarning(png_structp png, png_const_charp message) {
    if (std::strncmp(message, "iCCP", 4) == 0) {
        static_cast<Report*>(png_get_error_ptr(png))->refusedProfile = true;
    }
}

class PngReader {
  public:
    explicit PngReader(const std::string& name) : path(name), file(openPicture(name)) {
        png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &report, onError, onWarning);
        info = png == nullptr ? nullptr : png_create_info_struct(png);
        if (info == nullptr) {
            png_destroy_read_struct(&png, nullptr, nullptr);
            throw std::bad_alloc();
        }
    }
    ~PngReader() { png_destroy_read_struct(&png, &info, nullptr); }
    PngReader(const PngReader&) = delete;
    PngReader& operator=(const PngReader&) = delete;

    Picture read(Part part);

  private:
    // Runs calls of libpng. On an error, libpng jumps out of `calls`, so `calls` must not own resources.
    template <typename Calls>
    void run(const Calls& calls) {
        if (setjmp(png_jmpbuf(png)) != 0) {
            throw Failure(path, std::string("cannot be decoded as PNG: ") + report.reason.data());
        }
        calls();
    }

    bool has(png_uint_32 chunk) const { return png_get_valid(png, info, chunk) != 0; }

    void readHeader();
    Picture announced() const;
    void readPixels(Picture& picture);
    void takeProfile(Picture& picture) const;
    void noteRest(Picture& picture) const;

    const std::string& path;
    File file;
    Report report;
    png_structp png = nullptr;
    png_infop info = nullptr;
};

void PngReader::readHeader() {
    run([this] {
        png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX); // the size is checked by announcedPicture
        png_init_io(png, file.get());
        png_read_info(png, info);
    });
}

Picture PngReader::announced() const {
    constexpr uint64_t MaxCompression = 1032; // of deflate: two bits for 258 bytes
    const png_byte colourType = png_get_color_type(png, info);
    Picture picture = announcedPicture(path, png_get_image_width(png, info), png_get_image_height(png, info),
                                       (colourType & PNG_COLOR_MASK_COLOR) != 0 ? 3 : 1,
                                       png_get_bit_depth(png, info) == 16 ? Depth::Integer16 : Depth::Integer8);
    if ((colourType & PNG_COLOR_MASK_ALPHA) != 0) {
        picture.dropped.emplace_back("alpha");
    } else if (has(PNG_INFO_tRNS)) {
        picture.dropped.emplace_back("transparency");
    }
    requireFileBytes(path, picture,
                     uint64_t{png_get_rowbytes(png, info)} * static_cast<uint64_t>(picture.height) / MaxCompression);
    return picture;
}

void PngReader::readPixels(Picture& picture) {
    picture.samples.resize(sampleBytes(picture));
    unsigned char* const samples = picture.samples.data();
    const size_t rowSize = rowBytes(picture);
    const auto rows = static_cast<size_t>(picture.height);
    run([this, samples, rowSize, rows] {
        const bool isPalette = png_get_color_type(png, info) == PNG_COLOR_TYPE_PALETTE;
        isPalette ? png_set_palette_to_rgb(png) : png_set_expand_gray_1_2_4_to_8(png);
        png_set_strip_alpha(png);
        if constexpr (std::endian::native == std::endian::little) {
            png_set_swap(png);
        }
        const int passes = png_set_interlace_handling(png);
        png_read_update_info(png, info);
        if (png_get_rowbytes(png, info) != rowSize) {
            png_error(png, "unexpected row size");
        }
        for (int pass = 0; pass < passes; ++pass) {
            for (size_t row = 0; row < rows; ++row) {
                png_read_row(png, samples + row * rowSize, nullptr);
            }
        }
        png_read_end(png, info);
    });
}

// Converts an sRGB chunk to a profile for the TIFF file. It overrides only gAMA and cHRM chunks (PNG, section 11.3.3),
// so these are not reported as dropped.
void PngReader::takeProfile(Picture& picture) const {
    png_charp name = nullptr;
    png_bytep bytes = nullptr;
    png_uint_32 length = 0;
    int value = 0;
    if (png_get_iCCP(png, info, &name, &value, &bytes, &length) != 0) {
        picture.profile.assign(bytes, bytes + length);
        return;
    }
    if (report.refusedProfile) {
        picture.dropped.emplace_back("ICC profile (damaged or for other colours)");
    }
    if (has(PNG_INFO_sRGB)) {
        picture.profile = picture.channels == 3 ? srgbProfile() : Bytes();
        if (picture.profile.empty()) {
            picture.dropped.emplace_back("sRGB tag");
        }
        return;
    }
    if (has(PNG_INFO_gAMA)) {
        picture.dropped.emplace_back("gamma (gAMA)");
    }
    if (has(PNG_INFO_cHRM)) {
        picture.dropped.emplace_back("chromaticities (cHRM)");
    }
}

void PngReader::noteRest(Picture& picture) const {
    png_bytep block = nullptr;
    png_uint_32 length = 0;
    if (png_get_eXIf_1(png, info, &length, &block) != 0) {
        picture.metadata.emplace_back("EXIF");
        picture.orientation = exifOrientation({block, length});
    }
    png_textp texts = nullptr;
    int count = 0;
    png_get_text(png, info, &texts, &count);
    bool hasPacket = false;
    bool hasText = false;
    for (const png_text& text : std::span(texts, static_cast<size_t>(count))) {
        const bool isPacket = std::string_view(text.key) == "XML:com.adobe.xmp";
        hasPacket = hasPacket || isPacket;
        hasText = hasText || !isPacket;
    }
    if (hasPacket) {
        picture.metadata.emplace_back("XMP");
    }
    if (hasText) {
        picture.dropped.emplace_back("texts");
    }
}

Picture PngReader::read(Part part) {
    readHeader();
    Picture picture = announced();
    if (part == Part::Everything) {
        readPixels(picture);
    }
    takeProfile(picture);
    noteRest(picture); // last: EXIF data and texts may follow the pixels
    return picture;
}

} // namespace

Picture readPng(const std::string& path, Part part) {
    return PngReader(path).read(part);
}
