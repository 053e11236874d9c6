// Settings in files: stand-alone settings files, and packets in regions of image files.
#include "settings/methods.h"
#include "settings/packet_parser.h"
#include "settings/packet_writer.h"
#include "settings/xmp_names.h"
#include "support/file.h"
#include "support/zeroed_buffer.h"
#include "tvmeta.h"

#include <cstdint>

using namespace tvmeta;

std::int32_t read_xmp(const char* path, std::int32_t method, float* settings) noexcept {
    // The 32-bit length of the text includes a terminator.
    constexpr std::int64_t MaxSize = INT32_MAX - 1;
    const File file = openUnbuffered(path, Access::Read);
    const std::int64_t size = file ? fileSize(file.get()) : -1;
    if (size < 0 || size > MaxSize || isDirectory(file.get()) || !seekTo(file.get(), 0)) {
        return READ_XMP_UNREADABLE;
    }
    ZeroedBuffer buffer(static_cast<std::size_t>(size) + 1);
    if (!buffer) {
        return READ_XMP_NO_MEMORY;
    }
    if (std::fread(buffer.data(), 1, static_cast<std::size_t>(size), file.get()) < static_cast<std::size_t>(size)) {
        return READ_XMP_SHORT_READ;
    }
    if (method == MODE_LENS) { // no argument receives a lens name
        return XMP_OTHER_METHOD;
    }
    return get_settings_from_xmp(method, static_cast<std::int32_t>(size + 1), buffer.text(), nullptr, settings);
}

std::int32_t extract_xmp(const char* path, std::int32_t count, std::int32_t offset, char* buffer) noexcept {
    if (buffer == nullptr) {
        return XMP_NOT_TERMINATED;
    }
    const File file = openUnbuffered(path, Access::Read);
    const std::int64_t size = file ? fileSize(file.get()) : -1;
    if (size <= 0 || isDirectory(file.get())) {
        return EXTRACT_XMP_UNREADABLE;
    }
    // The region must end before the file's last byte.
    if (std::int64_t{offset} + count >= size || !seekTo(file.get(), offset)) {
        return EXTRACT_XMP_OUTSIDE;
    }
    if (count < 0) {
        return XMP_NOT_TERMINATED;
    }
    const auto length = static_cast<std::size_t>(count);
    // Bytes that cannot be read stay as the caller cleared them.
    [[maybe_unused]] const std::size_t got = std::fread(buffer, 1, length, file.get());
    if (buffer[length] != '\0') {
        return XMP_NOT_TERMINATED;
    }
    return detectMethod(std::string_view(buffer, length));
}

std::int32_t tvsettings_occurences_in_xmp(std::int32_t length, const char* buffer) noexcept {
    const std::optional<std::string_view> text = terminatedText(buffer, length);
    if (!text) {
        return XMP_NOT_TERMINATED;
    }
    std::int32_t count = 0;
    for (std::size_t at = findQuoted(*text, SettingsDeclaration); at != NotFound;
         at = findQuoted(*text, SettingsDeclaration, at + SettingsDeclaration.size())) {
        ++count;
    }
    return count;
}

std::int32_t write_xmp(const char* path, std::int32_t method, const float* settings) noexcept {
    if (!isMethodCode(method) || settings == nullptr) {
        return WRITE_XMP_NO_METHOD;
    }
    const PacketRequest request = packetRequest(method, settings);
    ZeroedBuffer packet(writePacket(request, nullptr));
    if (!packet) {
        return WRITE_XMP_NO_MEMORY;
    }
    writePacket(request, packet.text());
    File file = openUnbuffered(path, Access::Write);
    if (!file) {
        return WRITE_XMP_CANNOT_OPEN;
    }
    const bool written = std::fwrite(packet.data(), packet.size(), 1, file.get()) == 1;
    return closeWritten(file) && written ? WRITE_XMP_OK : WRITE_XMP_FAILED;
}
