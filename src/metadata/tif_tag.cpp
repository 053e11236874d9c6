// Finds the entry of a tag in a little-endian TIFF file (TIFF 6.0, section 2).
#include "metadata/directory_reader.h"
#include "tvmeta.h"

#include <algorithm>

using namespace tvmeta;

namespace {

constexpr std::int32_t NotFound = -1;
constexpr std::int32_t NotTiff = -2;
constexpr std::int32_t SeekFailed = -3;

// Directories may overlap, so a small file can contain a long chain of them, and each may require a seek. A photograph
// has a few dozen entries; a stack of thousands of images has some hundred thousand.
constexpr std::int32_t MaxEntries = 1 << 22;
constexpr std::int32_t MaxDirectories = 1 << 16;

// An entry is passed over by reading its tag, as far as the file goes, and skipping the rest, whether it is there or
// not: that makes a difference to the place of tag 65535, which every entry behind the end of the file has.
constexpr std::int64_t TagSize = 2;
constexpr std::int64_t BehindTag = static_cast<std::int64_t>(DirectoryEntrySize) - TagSize;

// Notices a chain of offsets that comes back on itself, without a list of those met: each is compared with one of the
// chain's earlier offsets, which moves up whenever the way from it has doubled (Brent's cycle detection).
class LoopDetector {
  public:
    // True if the offset has been met before.
    bool meets(std::int32_t offset) noexcept {
        if (offset == landmark_) {
            return true;
        }
        if (++steps_ == limit_) {
            landmark_ = offset;
            limit_ *= 2;
            steps_ = 0;
        }
        return false;
    }

  private:
    std::int32_t landmark_ = 0; // no directory has this offset: it ends the chain
    std::int64_t steps_ = 0;
    std::int64_t limit_ = 1;
};

std::int32_t findTag(const TiffStructure& tiff, std::int32_t tag, DirectoryEntry& entry) noexcept {
    LoopDetector loop;
    std::int32_t entriesLeft = MaxEntries;
    std::int32_t directoriesLeft = MaxDirectories;
    for (std::int32_t offset = tiff.read32(); offset != 0 && !loop.meets(offset); offset = tiff.read32()) {
        if (directoriesLeft-- == 0) {
            return NotFound;
        }
        if (!tiff.reader.seek(offset)) {
            return SeekFailed;
        }
        const std::uint16_t count = tiff.read16();
        if (count == 0) {
            return NotTiff;
        }
        std::int64_t position = tiff.reader.position();
        for (DirectoryReader directory(tiff, count); directory.next(entry);) {
            if (entry.tag == tag) {
                return static_cast<std::int32_t>(position);
            }
            if (--entriesLeft == 0) {
                return NotFound;
            }
            position += std::clamp<std::int64_t>(entry.end - position, 0, TagSize) + BehindTag;
        }
    }
    return NotFound;
}

} // namespace

std::int32_t get_tif_tag(FILE* stream, std::int32_t tag, std::int32_t* count, std::int32_t* value) noexcept {
    if (stream == nullptr || count == nullptr || value == nullptr) {
        return SeekFailed;
    }
    LentStreamReader reader(stream);
    const TiffStructure tiff{reader, ByteOrder::Little, 0};
    if (tiff.read16() != LittleEndianMark || tiff.read16() != TiffMagic) {
        return NotTiff;
    }
    DirectoryEntry entry{};
    const std::int32_t offset = findTag(tiff, tag, entry);
    if (offset >= 0) {
        *count = entry.count;
        *value = entry.value;
    }
    return offset;
}
