// Replaces the ICC profile of a TIFF file in place: the new one is appended, and its entry made to point there.
#include "metadata/byte_order.h"
#include "support/bytes.h"
#include "support/file.h"
#include "support/message.h"
#include "support/tiff_vocabulary.h"
#include "tvmeta.h"

#include <cstdint>
#include <cstdio>

using namespace tvmeta;

namespace {

constexpr std::int32_t NoProfile = 0;
constexpr std::int32_t CannotOpen = -1;
constexpr std::int32_t Failed = -2;

struct ProfileEntry {
    std::int32_t position;   // of the directory entry; 0 or less: the file has none
    std::int64_t appendedAt; // the size of the file; -1 when it cannot be found
};

File open(const char* path, const char* mode, const char* message) noexcept {
    File file = openUnbuffered(path, mode);
    if (!file) {
        printMessage(message);
    }
    return file;
}

std::int32_t patchEntry(const char* path, const ProfileEntry& entry, std::int32_t length) noexcept {
    constexpr std::int64_t CountOffset = 4;
    File file = open(path, "rb+", "Can not open input file for update");
    if (!file) {
        return CannotOpen;
    }
    if (!seekTo(file.get(), entry.position)) {
        return Failed;
    }
    if (fgetmi2(file.get(), LittleEndianMark) != tiff_tag::IccProfile) {
        return CannotOpen; // somebody else has changed the file
    }
    unsigned char countAndOffset[8] = {};
    storeLe32(countAndOffset, static_cast<std::uint32_t>(length));
    storeLe32(countAndOffset + 4, static_cast<std::uint32_t>(entry.appendedAt));
    if (!seekTo(file.get(), entry.position + CountOffset) ||
        std::fwrite(countAndOffset, sizeof countAndOffset, 1, file.get()) != 1 || !closeWritten(file)) {
        return Failed;
    }
    return length;
}

std::int32_t appendProfile(const char* path, const unsigned char* profile, std::int32_t length) noexcept {
    File file = open(path, "ab+", "Can not open input file for appending");
    if (!file) {
        return CannotOpen;
    }
    const auto size = static_cast<std::size_t>(length);
    if (std::fwrite(profile, 1, size, file.get()) != size || !closeWritten(file)) {
        return Failed;
    }
    return length;
}

} // namespace

std::int32_t update_tif_profile(std::int32_t length, const unsigned char* profile, const char* path) noexcept {
    if (length < 0 || profile == nullptr) {
        return Failed;
    }
    ProfileEntry entry{};
    {
        const File file = open(path, "rb", "Can not open input file for reading");
        if (!file) {
            return CannotOpen;
        }
        std::int32_t count = 0;
        std::int32_t value = 0;
        entry.position = get_tif_tag(file.get(), tiff_tag::IccProfile, &count, &value);
        if (entry.position <= 0) {
            return NoProfile;
        }
        entry.appendedAt = fileSize(file.get());
    }
    if (entry.appendedAt < 0 || entry.appendedAt > INT32_MAX - std::int64_t{length}) {
        return Failed;
    }
    const std::int32_t patched = patchEntry(path, entry, length);
    return patched < 0 ? patched : appendProfile(path, profile, length);
}
