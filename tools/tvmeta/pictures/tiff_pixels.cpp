#include "pictures/tiff_pixels.h"

#include "base/failure.h"

#include <algorithm>
#include <cstring>

namespace {

// White as zero becomes black as zero.
void invert(Picture& picture) {
    unsigned char* const bytes = picture.samples.data();
    for (size_t i = 0; i < picture.samples.size(); ++i) {
        bytes[i] = static_cast<unsigned char>(~bytes[i]); // of 16 bits both
    }
}

class PixelReader {
  public:
    PixelReader(const std::string& name, TIFF* opened, const TiffLayout& storage, Picture& target)
        : path(name), tiff(opened), layout(storage), picture(target) {}

    bool read() const {
        const uint64_t rowSize = storedSize() * layout.width;
        if (!layout.isTiled && TIFFScanlineSize64(tiff) != rowSize) {
            throw Failure(path, "expected rows of " + std::to_string(rowSize) + " bytes, found " +
                                    std::to_string(TIFFScanlineSize64(tiff)));
        }
        const int32_t planes = layout.isPlanar ? picture.channels : 1;
        for (int32_t i = 0; i < planes; ++i) {
            const auto plane = static_cast<uint16_t>(i);
            const bool isRead = layout.isTiled                 ? readTiles(plane)
                                : rowSize == rowBytes(picture) ? readStrips()
                                                               : readRows(plane);
            if (!isRead) {
                return false;
            }
        }
        if (layout.photometric == PHOTOMETRIC_MINISWHITE) {
            invert(picture);
        }
        return true;
    }

  private:
    // Copies `count` pixels into a row, from a buffer with all samples of a pixel or those of one plane.
    void copyPixels(const unsigned char* from, size_t x, size_t y, size_t count, uint16_t plane) const {
        const auto sampleSize = static_cast<size_t>(bytesPerSample(picture.depth));
        const size_t pixelSize = sampleSize * static_cast<size_t>(picture.channels);
        const size_t copied = layout.isPlanar ? sampleSize : pixelSize;
        unsigned char* to = picture.samples.data() + y * rowBytes(picture) + x * pixelSize + plane * sampleSize;
        for (size_t i = 0; i < count; ++i) {
            std::memcpy(to, from, copied);
            from += storedSize();
            to += pixelSize;
        }
    }

    // Strips with rows of the picture's layout are decoded in place.
    bool readStrips() const {
        const size_t rowSize = rowBytes(picture);
        const uint32_t stripRows =
            std::clamp<uint32_t>(tiffField<uint32_t>(tiff, TIFFTAG_ROWSPERSTRIP, layout.height), 1, layout.height);
        for (uint32_t row = 0; row < layout.height; row += std::min(stripRows, layout.height - row)) {
            const auto size = static_cast<tmsize_t>(std::min(stripRows, layout.height - row) * rowSize);
            const uint32_t strip = TIFFComputeStrip(tiff, row, 0);
            if (TIFFReadEncodedStrip(tiff, strip, picture.samples.data() + row * rowSize, size) != size) {
                return false;
            }
        }
        return true;
    }

    bool readRows(uint16_t plane) const {
        Bytes row(static_cast<size_t>(TIFFScanlineSize64(tiff)));
        for (uint32_t y = 0; y < layout.height; ++y) {
            if (TIFFReadScanline(tiff, row.data(), y, plane) != 1) {
                return false;
            }
            copyPixels(row.data(), 0, y, layout.width, plane);
        }
        return true;
    }

    bool readTiles(uint16_t plane) const {
        constexpr uint64_t MaxTileBytes = uint64_t{1} << 28;
        const auto width = tiffField<uint32_t>(tiff, TIFFTAG_TILEWIDTH, 0);
        const auto height = tiffField<uint32_t>(tiff, TIFFTAG_TILELENGTH, 0);
        const uint64_t rowSize = TIFFTileRowSize64(tiff);
        const uint64_t size = TIFFTileSize64(tiff);
        if (width == 0 || height == 0 || size > MaxTileBytes || rowSize / storedSize() < width ||
            size / rowSize < height) {
            throw Failure(path, "expected tiles of 256 MiB at most, found " + std::to_string(width) + " x " +
                                    std::to_string(height) + " pixels");
        }
        Samples tile;
        tile.resize(size);
        for (uint32_t y = 0; y < layout.height; y += std::min(height, layout.height - y)) {
            for (uint32_t x = 0; x < layout.width; x += std::min(width, layout.width - x)) {
                if (TIFFReadTile(tiff, tile.data(), x, y, 0, plane) < 0) {
                    return false;
                }
                for (uint32_t row = 0; row < std::min(height, layout.height - y); ++row) {
                    copyPixels(tile.data() + row * rowSize, x, y + row, std::min(width, layout.width - x), plane);
                }
            }
        }
        return true;
    }

    // The bytes of a pixel in a row or tile of the file.
    uint64_t storedSize() const {
        return static_cast<uint64_t>(bytesPerSample(picture.depth)) * (layout.isPlanar ? 1 : layout.samples);
    }

    const std::string& path;
    TIFF* tiff;
    const TiffLayout& layout;
    Picture& picture;
};

} // namespace

bool readTiffPixels(const std::string& path, TIFF* tiff, const TiffLayout& layout, Picture& picture) {
    return PixelReader(path, tiff, layout, picture).read();
}
