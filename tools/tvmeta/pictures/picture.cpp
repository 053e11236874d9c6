#include "pictures/picture.h"

#include "base/failure.h"
#include "system/paths.h"

#include <tvmeta_photo.h>

#include <cmath>
#include <filesystem>
#include <iterator>
#include <limits>
#include <new>
#include <system_error>

#if __has_include(<sys/mman.h>)
#include <sys/mman.h>
#endif

namespace {

// Large pages avoid most page faults, which cost as much time as copying the samples.
void useLargePages([[maybe_unused]] unsigned char* memory, [[maybe_unused]] size_t size) {
#ifdef MADV_HUGEPAGE
    constexpr size_t PageSize = size_t{1} << 21;
    const auto skipped = (PageSize - reinterpret_cast<uintptr_t>(memory) % PageSize) % PageSize;
    if (size > PageSize + skipped) {
        madvise(memory + skipped, size - skipped, MADV_HUGEPAGE);
    }
#endif
}

} // namespace

void Samples::resize(size_t size) {
    auto* const resized = static_cast<unsigned char*>(std::realloc(bytes.get(), size == 0 ? 1 : size));
    if (resized == nullptr) {
        throw std::bad_alloc();
    }
    static_cast<void>(bytes.release());
    bytes.reset(resized);
    useLargePages(resized, size);
    count = size;
}

size_t rowBytes(const Picture& picture) {
    return static_cast<size_t>(picture.width) * static_cast<size_t>(picture.channels) *
           static_cast<size_t>(bytesPerSample(picture.depth));
}

size_t sampleBytes(const Picture& picture) {
    return rowBytes(picture) * static_cast<size_t>(picture.height);
}

Picture pictureWithoutSamples(const std::string& path, int64_t width, int64_t height, int32_t channels, Depth depth) {
    constexpr int64_t MaxSide = std::numeric_limits<int32_t>::max();
    constexpr int64_t MaxBytes = std::numeric_limits<int32_t>::max() - 8; // after the header of a TIFF file
    const int64_t pixelBytes = int64_t{channels} * bytesPerSample(depth);
    if (width < 1 || height < 1 || width > MaxSide || height > MaxSide || width > MaxBytes / pixelBytes / height) {
        throw Failure(path, "expected a picture of 1 pixel to 2 GiB, found " + std::to_string(width) + " x " +
                                std::to_string(height) + " pixels of " + std::to_string(pixelBytes) + " bytes");
    }
    return {static_cast<int32_t>(width), static_cast<int32_t>(height), channels, depth};
}

void requireFileBytes(const std::string& path, const Picture& picture, uint64_t leastBytes) {
    std::error_code error;
    const std::uintmax_t fileSize = std::filesystem::file_size(pathOf(readablePath(path)), error);
    if (!error && leastBytes > fileSize) {
        throw Failure(path, "too short for " + std::to_string(picture.width) + " x " + std::to_string(picture.height) +
                                " pixels: expected " + std::to_string(leastBytes) + " bytes or more, found " +
                                std::to_string(fileSize));
    }
}

void takeResolution(Picture& picture, double across, double down, double inches) {
    constexpr double Max = 2147483; // of TIFF results, in thousandths
    constexpr double Tolerance = 0.01;
    const double perInch = std::round(across / inches);
    if (perInch >= 1 && perInch <= Max && std::fabs(down / across - 1) < Tolerance) {
        picture.resolution = static_cast<int32_t>(perInch);
    } else if (across > 0 || down > 0) {
        picture.dropped.emplace_back("resolution");
    }
}

File openPicture(const std::string& path) {
    constexpr size_t BufferSize = size_t{1} << 18;
    File file = openFile(path);
    std::setvbuf(file.get(), nullptr, _IOFBF, BufferSize);
    return file;
}

std::optional<int32_t> exifOrientation(std::span<const unsigned char> structure) {
    tvmeta_Source source;
    tvmeta_Photo photo = {};
    photo.recordSize = sizeof photo;
    tvmeta_memory(structure.data(), std::ssize(structure), &source);
    tvmeta_read_photo(&source, &photo); // what a damaged structure still contains counts
    return TVMETA_HAS(&photo, TVMETA_ORIENTATION) ? std::optional(photo.orientation) : std::nullopt;
}
