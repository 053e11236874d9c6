// A picture in memory: what every decoder returns, and what the commands write and measure.
#pragma once

#include "pictures/colour_space.h"
#include "pictures/gain_map.h"
#include "system/files.h"

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

// Sample formats; the values are the bitsCode of TifImageInfo.
enum class Depth : int32_t { Integer8 = 8, Integer16 = 16, Float32 = 32, Float16 = 3216 };

constexpr int32_t bytesPerSample(Depth depth) {
    return depth == Depth::Float16 ? 2 : static_cast<int32_t>(depth) / 8;
}

constexpr bool isFloat(Depth depth) {
    return depth == Depth::Float16 || depth == Depth::Float32;
}

// Sample bytes, not cleared: memory that no decoder has written costs nothing.
class Samples {
  public:
    // Keeps the bytes up to the smaller size. Throws std::bad_alloc.
    void resize(size_t size);

    unsigned char* data() { return bytes.get(); }
    const unsigned char* data() const { return bytes.get(); }
    size_t size() const { return count; }

  private:
    struct Free {
        void operator()(unsigned char* memory) const { std::free(memory); }
    };

    std::unique_ptr<unsigned char, Free> bytes;
    size_t count = 0;
};

// Interleaved samples in machine byte order, rows from the top without padding. Of two or four channels the last is
// alpha, which the library does not write.
struct Picture {
    int32_t width = 0;
    int32_t height = 0;
    int32_t channels = 0;
    Depth depth = Depth::Integer8;
    Samples samples = {};
    Bytes profile = {};                      // its own ICC profile, empty if it has none
    std::optional<ColourSpace> colours = {}; // what the format states without a profile
    std::optional<int32_t> orientation = {}; // its own TIFF orientation code
    std::optional<int32_t> resolution = {};  // its own dots per inch
    std::vector<std::string> dropped = {};   // contents of the file that are not kept
    std::vector<std::string> metadata = {};  // metadata blocks that are not read: EXIF, IPTC, XMP
    std::optional<GainMap> gainMap = {};
    std::shared_ptr<Picture> gain = {}; // the pixels of the gain map
    std::string damage = {};            // why some pixels may be wrong, which the caller has allowed
};

// How much of a file to read.
struct Request {
    bool pixels = true;       // else the samples stay empty
    bool allowDamage = false; // accepts pixels that a decoder has invented
    bool gain = false;        // reads the gain map, too
};

constexpr int32_t colourChannels(const Picture& picture) {
    return picture.channels >= 3 ? 3 : 1;
}

size_t rowBytes(const Picture& picture);
size_t sampleBytes(const Picture& picture);

// A picture with the size from a header, without samples. Throws Failure for a size that a result cannot have.
Picture pictureWithoutSamples(const std::string& path, int64_t width, int64_t height, int32_t channels, Depth depth);

// Throws Failure if `leastBytes`, the minimum for the pixels, exceeds the size of the file.
void requireFileBytes(const std::string& path, const Picture& picture, uint64_t leastBytes);

// Sets the resolution from dots per `inches` in both directions, to whole dots per inch. One that differs between the
// directions is dropped.
void takeResolution(Picture& picture, double across, double down, double inches);

// Opens a picture for sequential reading.
File openPicture(const std::string& path);

// The orientation code, 1 to 8, in the first directory of a TIFF structure in memory (EXIF 2.3, tag 274).
std::optional<int32_t> exifOrientation(std::span<const unsigned char> structure);
