// Replaces the ICC profile of a TIFF file in place: appends the new one, then repoints its directory entry.
#include "metadata/tiff_reader.h"
#include "support/file.h"
#include "support/packed_numbers.h"
#include "tvmeta.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <span>

using namespace tvmeta;

namespace {

File open(const char* path, Access access, const char* message) {
    File file = openUnbuffered(path, access);
    if (!file) {
        printMessage(message);
    }
    return file;
}

bool writeAt(std::FILE* stream, std::int64_t position, std::span<const unsigned char> bytes) {
    return seekTo(stream, position) &&
           (bytes.empty() || std::fwrite(bytes.data(), 1, bytes.size(), stream) == bytes.size());
}

// The end of the file, or of an entry that the file cuts short.
std::int64_t profileStart(const TagEntry& entry, std::int64_t oldSize) {
    return std::max(oldSize, entry.position + static_cast<std::int64_t>(DirectoryEntrySize));
}

// The old profile remains in force until the entry is patched, which is one write of eight bytes. The offset in the
// entry is the old size of the file, even where the profile starts after it.
bool replaceProfile(std::FILE* stream, const TagEntry& entry, std::int64_t oldSize,
                    std::span<const unsigned char> profile) {
    constexpr std::int64_t CountOffset = 4;
    std::array<unsigned char, 8> countAndOffset{};
    ByteWriter writer(countAndOffset);
    writer.put32(static_cast<std::uint32_t>(profile.size()));
    writer.put32(static_cast<std::uint32_t>(oldSize));
    return writeAt(stream, profileStart(entry, oldSize), profile) &&
           writeAt(stream, entry.position + CountOffset, countAndOffset);
}

} // namespace

std::int32_t update_tif_profile(std::int32_t length, const unsigned char* profile, const char* path) noexcept {
    if (length < 0 || (profile == nullptr && length > 0)) {
        return UPDATE_PROFILE_FAILED;
    }
    File file = open(path, Access::Read, "Can not open input file for reading");
    if (!file) {
        return UPDATE_PROFILE_CANNOT_OPEN;
    }
    const Result<TagEntry> entry = findTag(file.get(), tiff_tag::IccProfile);
    if (!entry) {
        return UPDATE_PROFILE_NO_ENTRY;
    }
    const std::int64_t oldSize = fileSize(file.get());
    if (oldSize < 0 || profileStart(*entry, oldSize) > INT32_MAX - std::int64_t{length}) {
        return UPDATE_PROFILE_FAILED;
    }
    file = open(path, Access::Update, "Can not open input file for update");
    if (!file) {
        return UPDATE_PROFILE_CANNOT_OPEN;
    }
    // The path may lead to another file by now, or the file may have changed.
    const std::int64_t size = fileSize(file.get());
    if (size < 0 || !seekTo(file.get(), entry->position)) {
        return UPDATE_PROFILE_FAILED;
    }
    if (size != oldSize || fgetmi2(file.get(), LittleEndianMark) != tiff_tag::IccProfile) {
        return UPDATE_PROFILE_CANNOT_OPEN;
    }
    const std::span bytes(profile, static_cast<std::size_t>(length));
    const bool replaced = replaceProfile(file.get(), *entry, oldSize, bytes);
    return closeWritten(file) && replaced ? length : UPDATE_PROFILE_FAILED;
}
