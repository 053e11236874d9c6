// JPEG pictures, through libjpeg-turbo.

#include "base/failure.h"
#include "pictures/decoders.h"
#include "pictures/load_picture.h"

#include <cstdio> // jpeglib.h requires it

#include <jpeglib.h>

#include <jerror.h>

#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstring>
#include <string_view>

namespace {

constexpr int Exif = JPEG_APP0 + 1;
constexpr int IccProfile = JPEG_APP0 + 2;
constexpr int Photoshop = JPEG_APP0 + 13;

// The error manager and its data. libjpeg passes it to the functions below.
struct ErrorManager : jpeg_error_mgr {
    std::jmp_buf environment;
    std::array<char, JMSG_LENGTH_MAX> reason;
    bool refusedProfile = false;
    bool isInPixels = false;
    bool allowDamage = false;
    bool isDamaged = false;
};

[[noreturn]] void onError(j_common_ptr jpeg) {
    auto* const errors = static_cast<ErrorManager*>(jpeg->err);
    errors->format_message(jpeg, errors->reason.data());
    std::longjmp(errors->environment, 1);
}

// For a damaged file, libjpeg invents the missing pixels and only warns. A result must not contain them unless the
// caller wants what is left.
void onMessage(j_common_ptr jpeg, int level) {
    constexpr std::array Harmless = {JWRN_ADOBE_XFORM, JWRN_BOGUS_ICC, JWRN_JFIF_MAJOR, JWRN_NOT_SEQUENTIAL};
    auto* const errors = static_cast<ErrorManager*>(jpeg->err);
    const int code = errors->msg_code;
    errors->refusedProfile = errors->refusedProfile || (level < 0 && code == JWRN_BOGUS_ICC);
    // Superfluous bytes between the segments of the header do not change a pixel.
    const bool isInHeader = code == JWRN_EXTRANEOUS_DATA && !errors->isInPixels;
    if (level >= 0 || isInHeader || std::ranges::find(Harmless, code) != Harmless.end()) {
        return;
    }
    if (!errors->allowDamage) {
        onError(jpeg);
    }
    if (!errors->isDamaged) {
        errors->isDamaged = true;
        errors->format_message(jpeg, errors->reason.data());
    }
}

// A small file can require thousands of passes over a large picture.
void onProgress(j_common_ptr jpeg) {
    constexpr int MaxScans = 500;
    if (reinterpret_cast<j_decompress_ptr>(jpeg)->input_scan_number > MaxScans) {
        ERREXITS(jpeg, JERR_BAD_PROGRESSION, "");
    }
}

// An encoder and the memory that it writes.
struct JpegEncoder {
    JpegEncoder() {
        jpeg.err = jpeg_std_error(&errors);
        errors.error_exit = onError;
    }
    ~JpegEncoder() { jpeg_destroy_compress(&jpeg); }
    JpegEncoder(const JpegEncoder&) = delete;
    JpegEncoder& operator=(const JpegEncoder&) = delete;

    ErrorManager errors = {};
    jpeg_compress_struct jpeg = {};
    unsigned char* bytes = nullptr; // valid after success
    unsigned long size = 0;
};

void compress(JpegEncoder& encoder, const Picture& picture) {
    constexpr int Quality = 75;
    jpeg_compress_struct& jpeg = encoder.jpeg;
    jpeg_create_compress(&jpeg);
    jpeg_mem_dest(&jpeg, &encoder.bytes, &encoder.size);
    jpeg.image_width = static_cast<JDIMENSION>(picture.width);
    jpeg.image_height = static_cast<JDIMENSION>(picture.height);
    jpeg.input_components = picture.channels;
    jpeg.in_color_space = picture.channels == 1 ? JCS_GRAYSCALE : JCS_RGB;
    jpeg_set_defaults(&jpeg);
    jpeg_set_quality(&jpeg, Quality, TRUE);
    jpeg_start_compress(&jpeg, TRUE);
    while (jpeg.next_scanline < jpeg.image_height) {
        JSAMPROW row = const_cast<unsigned char*>(picture.samples.data()) + jpeg.next_scanline * rowBytes(picture);
        jpeg_write_scanlines(&jpeg, &row, 1);
    }
    jpeg_finish_compress(&jpeg);
}

Bytes encoded(const Picture& picture) {
    JpegEncoder encoder;
    if (setjmp(encoder.errors.environment) != 0) {
        throw Failure(std::string("cannot encode a JPEG: ") + encoder.errors.reason.data());
    }
    compress(encoder, picture);
    const std::unique_ptr<unsigned char, decltype(&std::free)> owner(encoder.bytes, std::free);
    return {encoder.bytes, encoder.bytes + encoder.size};
}

// The mean of each square of `factor` pixels; what does not fill a square is cut off.
void shrink(Picture& picture, int32_t factor) {
    const auto channels = static_cast<size_t>(picture.channels);
    const int32_t stepX = std::min(factor, picture.width), stepY = std::min(factor, picture.height);
    const auto columns = static_cast<size_t>(stepX), rows = static_cast<size_t>(stepY);
    const size_t rowSize = rowBytes(picture);
    picture.width /= stepX;
    picture.height /= stepY;
    unsigned char* out = picture.samples.data(); // never ahead of the samples that are read
    for (size_t y = 0; y < static_cast<size_t>(picture.height); ++y) {
        for (size_t x = 0; x < rowBytes(picture); ++x) {
            const size_t first = y * rows * rowSize + x / channels * columns * channels + x % channels;
            size_t sum = 0;
            for (size_t i = 0; i < rows * columns; ++i) {
                sum += picture.samples.data()[first + i / columns * rowSize + i % columns * channels];
            }
            *out++ = static_cast<unsigned char>(sum / (rows * columns));
        }
    }
}

class JpegReader {
  public:
    JpegReader(std::FILE* opened, const std::string& name, bool allowDamage) : path(name), file(opened) {
        jpeg.err = jpeg_std_error(&errors);
        errors.error_exit = onError;
        errors.emit_message = onMessage;
        errors.allowDamage = allowDamage;
        run([this] { jpeg_create_decompress(&jpeg); });
        progress.progress_monitor = onProgress;
        jpeg.progress = &progress;
    }
    ~JpegReader() { jpeg_destroy_decompress(&jpeg); }
    JpegReader(const JpegReader&) = delete;
    JpegReader& operator=(const JpegReader&) = delete;

    Picture read(Request request) {
        readHeader();
        Picture picture = withoutSamples();
        takeProfile(picture);
        noteRest(picture);
        if (request.pixels) {
            readPixels(picture);
        }
        return picture;
    }

    // At the smallest scale by eighths whose longer side has at least `side` pixels, if the picture has.
    Picture readSmall(int32_t side) {
        readHeader();
        Picture picture = withoutSamples();
        scaleTo(side, picture);
        readPixels(picture);
        return picture;
    }

  private:
    // Runs calls of libjpeg. On an error, libjpeg jumps out of `calls`, so `calls` must not own resources.
    template <typename Calls>
    void run(const Calls& calls) {
        if (setjmp(errors.environment) != 0) {
            throw Failure(path, std::string("cannot be decoded as JPEG: ") + errors.reason.data());
        }
        calls();
    }

    void readHeader() {
        run([this] {
            constexpr unsigned MaxSegment = 0xFFFF;
            jpeg_stdio_src(&jpeg, file);
            jpeg_save_markers(&jpeg, Exif, MaxSegment);
            jpeg_save_markers(&jpeg, IccProfile, MaxSegment);
            jpeg_save_markers(&jpeg, Photoshop, MaxSegment);
            jpeg_read_header(&jpeg, TRUE);
            jpeg.out_color_space = jpeg.jpeg_color_space == JCS_GRAYSCALE ? JCS_GRAYSCALE : JCS_RGB;
        });
    }

    Picture withoutSamples() const {
        if (jpeg.jpeg_color_space == JCS_CMYK || jpeg.jpeg_color_space == JCS_YCCK) {
            throw Failure(path, "expected a grey or RGB picture, found CMYK; convert it first");
        }
        Picture picture = pictureWithoutSamples(path, jpeg.image_width, jpeg.image_height,
                                                jpeg.jpeg_color_space == JCS_GRAYSCALE ? 1 : 3, Depth::Integer8);
        constexpr uint64_t MaxCompression = 8 * 64; // one bit for a block of 8 x 8 pixels
        requireFileBytes(path, picture,
                         static_cast<uint64_t>(picture.width) * static_cast<uint64_t>(picture.height) / MaxCompression);
        constexpr size_t MaxProgressiveBytes = size_t{1} << 29; // the coefficients need twice as much memory
        if (jpeg.progressive_mode != FALSE && sampleBytes(picture) > MaxProgressiveBytes) {
            throw Failure(path, "expected a progressive picture of 512 MiB at most, found " +
                                    std::to_string(picture.width) + " x " + std::to_string(picture.height) + " pixels");
        }
        return picture;
    }

    void readPixels(Picture& picture) {
        picture.samples.resize(sampleBytes(picture));
        unsigned char* const samples = picture.samples.data();
        const size_t rowSize = rowBytes(picture);
        errors.isInPixels = true;
        run([this, samples, rowSize] {
            jpeg_start_decompress(&jpeg);
            while (jpeg.output_scanline < jpeg.output_height) {
                JSAMPROW row = samples + jpeg.output_scanline * rowSize;
                jpeg_read_scanlines(&jpeg, &row, 1);
            }
            jpeg_finish_decompress(&jpeg);
        });
        picture.damage = errors.isDamaged ? errors.reason.data() : "";
    }

    // libjpeg scales by eighths.
    void scaleTo(int32_t side, Picture& picture) {
        constexpr int64_t Unscaled = 8;
        const int64_t longer = std::max(picture.width, picture.height);
        jpeg.scale_num =
            static_cast<unsigned>(std::clamp<int64_t>((Unscaled * side + longer - 1) / longer, 1, Unscaled));
        jpeg.scale_denom = Unscaled;
        run([this] { jpeg_calc_output_dimensions(&jpeg); });
        picture.width = static_cast<int32_t>(jpeg.output_width);
        picture.height = static_cast<int32_t>(jpeg.output_height);
    }

    void takeProfile(Picture& picture) {
        JOCTET* bytes = nullptr;
        unsigned length = 0;
        bool isWhole = false;
        run([&] { isWhole = jpeg_read_icc_profile(&jpeg, &bytes, &length) != FALSE; });
        const std::unique_ptr<JOCTET, decltype(&std::free)> owner(bytes, std::free);
        if (isWhole) {
            picture.profile.assign(bytes, bytes + length);
        } else if (errors.refusedProfile) {
            picture.dropped.emplace_back("ICC profile (damaged)");
        }
    }

    void noteRest(Picture& picture) const {
        struct Block {
            std::string_view identifier;
            const char* name;
            int marker;
        };
        constexpr Block Blocks[] = {{{"Exif\0\0", 6}, "EXIF", Exif},
                                    {"http://ns.adobe.com/xap/1.0/", "XMP", Exif},
                                    {"Photoshop 3.0", "IPTC or other Photoshop data", Photoshop}};
        for (const Block& block : Blocks) {
            for (jpeg_saved_marker_ptr marker = jpeg.marker_list; marker != nullptr; marker = marker->next) {
                const std::span<const unsigned char> data(marker->data, marker->data_length);
                if (marker->marker == block.marker && asText(data).starts_with(block.identifier)) {
                    picture.metadata.emplace_back(block.name);
                    if (block.name == Blocks[0].name) {
                        picture.orientation = exifOrientation(data.subspan(block.identifier.size()));
                    }
                    break;
                }
            }
        }
    }

    const std::string& path;
    std::FILE* file;
    ErrorManager errors = {};
    jpeg_progress_mgr progress = {};
    jpeg_decompress_struct jpeg = {};
};

} // namespace

Bytes smallJpeg(std::FILE* file, const std::string& name, int32_t side) {
    Picture picture = JpegReader(file, name, true).readSmall(side);
    if (const int32_t factor = std::max(picture.width, picture.height) / side; factor > 1) {
        shrink(picture, factor);
    }
    return encoded(picture);
}

Picture readJpeg(const std::string& path, Request request) {
    const File file = openPicture(path);
    Picture picture = JpegReader(file.get(), path, request.allowDamage).read(request);
    picture.gainMap = request.gain ? findGainMap(path) : std::nullopt;
    if (picture.gainMap) {
        std::fseek(file.get(), picture.gainMap->place, SEEK_SET);
        picture.gain = std::make_shared<Picture>(JpegReader(file.get(), path, request.allowDamage).read({}));
    }
    return picture;
}
