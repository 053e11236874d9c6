// Finds the entry of a tag in a little-endian TIFF file (TIFF 6.0, section 2).
#include "metadata/tiff_reader.h"
#include "tvmeta.h"

#include <algorithm>

namespace tvmeta {

namespace {

// Directories may overlap, so a small file can contain a long chain of them, and each may require a seek. A photograph
// has a few dozen entries; a stack of thousands of images has some hundred thousand.
constexpr std::int32_t MaxEntries = 1 << 22;
constexpr std::int32_t MaxDirectories = 1 << 16;

// The positions of entries are those of a stream from which each tag is read and the rest of the entry is skipped. A
// tag that the end of the file cuts short moves the stream by less.
constexpr std::int64_t TagSize = 2;
constexpr std::int64_t RestSize = static_cast<std::int64_t>(DirectoryEntrySize) - TagSize;

Result<TagEntry> searchDirectories(const TiffReader& tiff, std::int32_t tag) {
    std::int32_t entriesLeft = MaxEntries;
    // A chain that returns to an earlier offset is found by comparing each with a landmark, which moves on whenever the
    // distance from it has doubled (Brent's cycle detection).
    std::int32_t landmark = 0; // no directory has this offset: it ends the chain
    std::int32_t moveAt = 1;
    for (std::int32_t number = 1; number <= MaxDirectories; ++number) {
        const std::int32_t offset = tiff.read32();
        if (offset == 0 || offset == landmark) {
            break;
        }
        if (number == moveAt) {
            landmark = offset;
            moveAt = 2 * moveAt + 1;
        }
        if (!tiff.reader.seek(offset)) {
            return Failure{TIF_TAG_SEEK_FAILED};
        }
        const std::uint16_t count = tiff.read16();
        if (count == 0) {
            return Failure{TIF_TAG_NOT_TIFF};
        }
        std::int64_t position = tiff.reader.position();
        DirectoryReader directory(tiff, count);
        while (const std::optional<DirectoryEntry> entry = directory.next()) {
            if (entry->tag == tag) {
                return TagEntry{position, entry->count, entry->value};
            }
            if (--entriesLeft == 0) {
                return Failure{TIF_TAG_NOT_FOUND};
            }
            position += std::clamp<std::int64_t>(entry->end - position, 0, TagSize) + RestSize;
        }
    }
    return Failure{TIF_TAG_NOT_FOUND};
}

} // namespace

Result<TagEntry> findTag(std::FILE* stream, std::int32_t tag) {
    BorrowedStreamReader reader(stream);
    const TiffReader tiff{reader, ByteOrder::Little, 0};
    if (tiff.read16() != LittleEndianMark || tiff.read16() != TiffMagic) {
        return Failure{TIF_TAG_NOT_TIFF};
    }
    return searchDirectories(tiff, tag);
}

} // namespace tvmeta

using namespace tvmeta;

std::int32_t get_tif_tag(FILE* stream, std::int32_t tag, std::int32_t* count, std::int32_t* value) noexcept {
    if (stream == nullptr || count == nullptr || value == nullptr) {
        return TIF_TAG_SEEK_FAILED;
    }
    const Result<TagEntry> entry = findTag(stream, tag);
    if (!entry) {
        return entry.code();
    }
    if (entry->position > INT32_MAX) {
        return TIF_TAG_NOT_FOUND;
    }
    *count = entry->count;
    *value = entry->value;
    return static_cast<std::int32_t>(entry->position);
}
