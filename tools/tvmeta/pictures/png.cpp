// PNG pictures, through libpng.

#include "base/failure.h"
#include "pictures/decoders.h"
#include "pictures/picture.h"

#include <png.h>

#include <algorithm>
#include <array>
#include <bit>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace {

// The error of libpng, and whether it refused the ICC profile.
struct PngReport {
    std::array<char, 128> reason = {};
    bool refusedProfile = false;
};

[[noreturn]] void onError(png_structp png, png_const_charp message) {
    auto* const report = static_cast<PngReport*>(png_get_error_ptr(png));
    std::snprintf(report->reason.data(), report->reason.size(), "%s", message);
    png_longjmp(png, 1);
}

void onWarning(png_structp png, png_const_charp message) {
    if (std::strncmp(message, "iCCP", 4) == 0) {
        static_cast<PngReport*>(png_get_error_ptr(png))->refusedProfile = true;
    }
}

constexpr png_byte CodePointsChunk[] = "cICP";

// The colour space that a cICP chunk states by the code points of ITU-T H.273.
std::optional<ColourSpace> codedColours(const std::array<uint8_t, 4>& code) {
    struct Primaries {
        int code;
        const char* name;
        Chromaticities points;
    };
    struct Curve {
        int code;
        const char* name;
        Transfer transfer;
        double gamma = 1;
    };
    constexpr Primaries KnownPrimaries[] = {
        {1, "BT.709", Bt709Primaries},
        {9, "BT.2020", {{0.708, 0.292}, {0.17, 0.797}, {0.131, 0.046}, {0.3127, 0.329}}},
        {12, "P3", {{0.68, 0.32}, {0.265, 0.69}, {0.15, 0.06}, {0.3127, 0.329}}},
    };
    constexpr Curve KnownCurves[] = {
        {1, "BT.709", Transfer::Bt709},  {4, "gamma 2.2", Transfer::Gamma, 2.2}, {5, "gamma 2.8", Transfer::Gamma, 2.8},
        {6, "BT.709", Transfer::Bt709},  {8, "linear", Transfer::Linear},        {13, "sRGB", Transfer::Srgb},
        {14, "BT.709", Transfer::Bt709}, {15, "BT.709", Transfer::Bt709},        {16, "PQ", Transfer::Pq},
        {18, "HLG", Transfer::Hlg},
    };
    const auto* const primaries = std::ranges::find(KnownPrimaries, code[0], &Primaries::code);
    const auto* const curve = std::ranges::find(KnownCurves, code[1], &Curve::code);
    const bool isFullRgb = code[2] == 0 && code[3] == 1;
    if (!isFullRgb || primaries == std::end(KnownPrimaries) || curve == std::end(KnownCurves)) {
        return std::nullopt;
    }
    return ColourSpace{.name = std::string(primaries->name) + " " + curve->name + " (cICP)",
                       .transfer = curve->transfer,
                       .primaries = primaries->points,
                       .gamma = curve->gamma,
                       .cicp = code};
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

    Picture read(Request request) {
        readHeader();
        Picture picture = withoutSamples();
        if (request.pixels) {
            readPixels(picture);
        }
        takeProfile(picture);
        takeResolution(picture);
        noteRest(picture); // last: EXIF data and texts may follow the pixels
        return picture;
    }

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

    void readHeader() {
        run([this] {
            png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX); // the size is checked by pictureWithoutSamples
            png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_ALWAYS, CodePointsChunk, 1); // libpng below 1.6.45
            png_init_io(png, file.get());
            png_read_info(png, info);
        });
    }

    Picture withoutSamples() const {
        constexpr uint64_t MaxCompression = 1032; // of deflate: two bits for 258 bytes
        const png_byte colourType = png_get_color_type(png, info);
        Picture picture =
            pictureWithoutSamples(path, png_get_image_width(png, info), png_get_image_height(png, info),
                                  (colourType & PNG_COLOR_MASK_COLOR) != 0 ? 3 : 1,
                                  png_get_bit_depth(png, info) == 16 ? Depth::Integer16 : Depth::Integer8);
        if ((colourType & PNG_COLOR_MASK_ALPHA) != 0) {
            picture.dropped.emplace_back("alpha");
        } else if (has(PNG_INFO_tRNS)) {
            picture.dropped.emplace_back("transparency");
        }
        requireFileBytes(path, picture,
                         uint64_t{png_get_rowbytes(png, info)} * static_cast<uint64_t>(picture.height) /
                             MaxCompression);
        return picture;
    }

    void readPixels(Picture& picture) {
        picture.samples.resize(sampleBytes(picture));
        unsigned char* const samples = picture.samples.data();
        const size_t rowSize = rowBytes(picture);
        const auto rows = static_cast<size_t>(picture.height);
        run([this, samples, rowSize, rows] {
            png_set_expand(png); // to 8 bits or more, and palettes to colours; makes an alpha channel of transparency
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

    void takeProfile(Picture& picture) const {
        png_charp name = nullptr;
        png_bytep bytes = nullptr;
        png_uint_32 length = 0;
        int unused = 0;
        double gamma = 0;
        Chromaticities points = Bt709Primaries;
        picture.colours = statedColours(picture);
        if (picture.colours) {
            return;
        }
        if (png_get_iCCP(png, info, &name, &unused, &bytes, &length) != 0) {
            picture.profile.assign(bytes, bytes + length);
            return;
        }
        if (report.refusedProfile) {
            picture.dropped.emplace_back("ICC profile (damaged or for other colours)");
        }
        if (has(PNG_INFO_sRGB)) {
            picture.colours = {.name = "sRGB tag", .transfer = Transfer::Srgb};
        } else if (png_get_gAMA(png, info, &gamma) != 0 && gamma > 0) {
            picture.colours = {.name = "gamma (gAMA)", .transfer = Transfer::Gamma, .gamma = 1 / gamma};
        }
        if (!has(PNG_INFO_sRGB) &&
            png_get_cHRM(png, info, &points.white.x, &points.white.y, &points.red.x, &points.red.y, &points.green.x,
                         &points.green.y, &points.blue.x, &points.blue.y) != 0) {
            picture.colours = picture.colours.value_or(ColourSpace{.name = "", .transfer = Transfer::Srgb});
            picture.colours->name += std::string(picture.colours->name.empty() ? "" : ", ") + "chromaticities (cHRM)";
            picture.colours->primaries = points;
        }
    }

    // The first of the chunks that state colours without a profile (PNG, section 4.3), besides cICP, which overrides
    // those.
    std::optional<ColourSpace> statedColours(Picture& picture) const {
        png_unknown_chunkp chunks = nullptr;
        const auto count = static_cast<size_t>(png_get_unknown_chunks(png, info, &chunks));
        for (const png_unknown_chunk& chunk : std::span(chunks, count)) {
            std::array<uint8_t, 4> code = {};
            std::copy_n(chunk.data, std::min(chunk.size, code.size()), code.begin());
            if (const auto colours = codedColours(code)) {
                return colours;
            }
            picture.dropped.push_back("colours " + std::to_string(code[0]) + "/" + std::to_string(code[1]) + "/" +
                                      std::to_string(code[2]) + "/" + std::to_string(code[3]) + " (cICP)");
        }
        return std::nullopt;
    }

    void takeResolution(Picture& picture) const {
        constexpr double InchesOfMetre = 1 / 0.0254;
        png_uint_32 across = 0, down = 0;
        int unit = 0;
        if (png_get_pHYs(png, info, &across, &down, &unit) != 0 && unit == PNG_RESOLUTION_METER) {
            ::takeResolution(picture, across, down, InchesOfMetre);
        }
    }

    void noteRest(Picture& picture) const {
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

    const std::string& path;
    File file;
    PngReport report;
    png_structp png = nullptr;
    png_infop info = nullptr;
};

} // namespace

Picture readPng(const std::string& path, Request request) {
    return PngReader(path).read(request);
}
