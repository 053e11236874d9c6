// Settings in files: stand-alone settings files, and packets in regions of image files.
#include "settings/methods.h"
#include "settings/packet_parser.h"
#include "settings/packet_writer.h"
#include "settings/xmp_names.h"
#include "support/file.h"
#include "support/zeroed_buffer.h"
#include "tvmeta.h"

#include <cstdint>
#include <limits>

using namespace tvmeta;

std::int32_t read_xmp(const char* path, std::int32_t method, float* settings) noexcept {
    constexpr std::int32_t Unreadable = -1;
    constexpr std::int32_t ShortRead = -2;
    constexpr std::int32_t NoMemory = -4;
    // A terminator is counted with the text, in 32 bits.
    constexpr std::int64_t LargestFile = std::numeric_limits<std::int32_t>::max() - 1;
    if (method == MODE_LENS) { // there is nowhere to put a lens name
        return parse_result::OtherMethod;
    }
    File file = openUnbuffered(path, "rb");
    if (!file) {
        return Unreadable;
    }
    const std::int64_t size = fileSize(file.get());
    if (size < 0 || size > LargestFile || isDirectory(file.get()) || !seekTo(file.get(), 0)) {
        return Unreadable;
    }
    ZeroedBuffer buffer(static_cast<std::size_t>(size) + 1);
    if (!buffer) {
        return NoMemory;
    }
    if (std::fread(buffer.data(), 1, static_cast<std::size_t>(size), file.get()) < static_cast<std::size_t>(size)) {
        return ShortRead;
    }
    file.reset();
    return get_settings_from_xmp(method, static_cast<std::int32_t>(size + 1), buffer.text(), nullptr, settings);
}

std::int32_t extract_xmp(const char* path, std::int32_t count, std::int32_t offset, char* buffer) noexcept {
    constexpr std::int32_t Outside = 0;
    constexpr std::int32_t Unreadable = -1;
    if (count < 0 || buffer == nullptr) {
        return parse_result::NotTerminated;
    }
    const File file = openUnbuffered(path, "rb");
    const std::int64_t size = file ? fileSize(file.get()) : -1;
    if (size <= 0 || isDirectory(file.get())) {
        return Unreadable;
    }
    // The region must end before the file's last byte.
    if (std::int64_t{offset} + count >= size || !seekTo(file.get(), offset)) {
        return Outside;
    }
    const auto length = static_cast<std::size_t>(count);
    // What cannot be read stays as the caller cleared it.
    [[maybe_unused]] const std::size_t got = std::fread(buffer, 1, length, file.get());
    if (buffer[length] != '\0') {
        return parse_result::NotTerminated;
    }
    return detectMethod(std::string_view(buffer, length));
}

std::int32_t tvsettings_occurences_in_xmp(std::int32_t length, const char* buffer) noexcept {
    const std::optional<std::string_view> text = terminatedText(buffer, length);
    if (!text) {
        return parse_result::NotTerminated;
    }
    std::int32_t count = 0;
    for (std::size_t at = findQuoted(*text, SettingsDeclaration); at != std::string_view::npos;
         at = findQuoted(*text, SettingsDeclaration, at + SettingsDeclaration.size())) {
        ++count;
    }
    return count;
}

std::int32_t write_xmp(const char* path, std::int32_t method, const float* settings) noexcept {
    constexpr std::int32_t Written = 1;
    constexpr std::int32_t CannotOpen = -1;
    constexpr std::int32_t NoMethod = -2;
    constexpr std::int32_t WriteFailed = -3;
    constexpr std::int32_t NoMemory = -4;
    if (!isMethodCode(method) || settings == nullptr) {
        return NoMethod;
    }
    const PacketRequest request{method, settings};
    ZeroedBuffer packet(measurePacket(request));
    if (!packet) {
        return NoMemory;
    }
    writePacket(request, packet.text());
    File file = openUnbuffered(path, "wb");
    if (!file) {
        return CannotOpen;
    }
    const bool written = std::fwrite(packet.data(), packet.size(), 1, file.get()) == 1;
    return closeWritten(file) && written ? Written : WriteFailed;
}
