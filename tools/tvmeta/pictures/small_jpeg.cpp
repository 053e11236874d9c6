#include "pictures/small_jpeg.h"

#include "base/failure.h"
#include "pictures/decoders.h"

#include <algorithm>
#include <utility>

#ifdef TVMETA_HAS_JPEG

namespace {

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

} // namespace

Bytes smallJpeg(File file, const std::string& name, int32_t side) {
    Picture picture = readSmallJpeg(std::move(file), name, side);
    if (const int32_t factor = std::max(picture.width, picture.height) / side; factor > 1) {
        shrink(picture, factor);
    }
    return encodeJpeg(picture);
}

#else

Bytes smallJpeg(File /*file*/, const std::string& name, int32_t /*side*/) {
    throw Failure(name, "this build of tvmeta does not support JPEG pictures");
}

#endif
