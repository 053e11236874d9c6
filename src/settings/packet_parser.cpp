// Finds the settings packet in an XMP text and tells its method.
#include "settings/packet_parser.h"

#include "settings/methods.h"
#include "settings/xmp_names.h"
#include "support/text_numbers.h"
#include "tvmeta.h"

namespace tvmeta {

namespace {

constexpr SearchText VersionTag{"tvtm:Version", 0};
constexpr SearchText MethodTag{"tvtm:Method", 0};

constexpr std::size_t ElementSkip = 1;   // ">"
constexpr std::size_t AttributeSkip = 2; // "=" and the opening quote

// Scans "%d.%d".
bool scanVersion(std::string_view text, Packet& packet) noexcept {
    const std::optional<std::int64_t> major = scanInteger(text);
    if (!major || !text.starts_with('.')) {
        return false;
    }
    text.remove_prefix(1);
    const std::optional<std::int64_t> minor = scanInteger(text);
    if (!minor) {
        return false;
    }
    packet.major = *major;
    packet.minor = *minor;
    return true;
}

// Reads the first version that can be read, and returns the offset behind its tag.
std::optional<std::size_t> readVersion(std::size_t start, Packet& packet) noexcept {
    for (std::size_t at = findText(packet.text, VersionTag, start); at != std::string_view::npos;
         at = findText(packet.text, VersionTag, at + 1)) {
        const std::size_t end = at + VersionTag.text.size();
        if (scanVersion(textFrom(packet.text, end + ElementSkip), packet) ||
            scanVersion(textFrom(packet.text, end + AttributeSkip), packet)) {
            return end;
        }
    }
    return std::nullopt;
}

// The method that the text begins with the name of.
const Method* methodNamed(std::string_view text) noexcept {
    for (const Method& method : methods()) {
        const bool former = !method.formerName.empty() && text.starts_with(method.formerName);
        if (former || text.starts_with(method.name)) {
            return &method;
        }
    }
    return nullptr;
}

// Finds the method tag behind a readable version; false when there is none.
bool findPacket(std::string_view text, std::size_t start, Packet& packet) noexcept {
    packet.text = text;
    const std::optional<std::size_t> versionEnd = readVersion(start, packet);
    if (!versionEnd) {
        return false;
    }
    packet.methodTag = findText(text, MethodTag, *versionEnd);
    if (packet.methodTag == std::string_view::npos) {
        return false;
    }
    const std::string_view behindTag = textFrom(text, packet.methodTag + MethodTag.text.size());
    packet.valueSkip = behindTag.starts_with('=') ? AttributeSkip : ElementSkip;
    packet.method = methodNamed(textFrom(behindTag, packet.valueSkip));
    return true;
}

// Finds the packet behind the settings declaration. Gives the result to end with when there is none.
std::optional<std::int32_t> locatePacket(std::string_view text, Packet& packet) noexcept {
    const std::size_t declaration = findQuoted(text, SettingsDeclaration);
    if (declaration == std::string_view::npos) {
        return parse_result::NoDeclaration;
    }
    if (!findPacket(text, declaration + SettingsDeclaration.size(), packet)) {
        return parse_result::OtherMethod;
    }
    return std::nullopt;
}

} // namespace

std::optional<std::string_view> terminatedText(const char* buffer, std::int32_t length) noexcept {
    if (buffer == nullptr || length < 1 || buffer[length - 1] != '\0') {
        return std::nullopt;
    }
    return std::string_view(buffer, static_cast<std::size_t>(length - 1));
}

std::int32_t detectMethod(std::string_view text) noexcept {
    Packet packet{};
    if (const std::optional<std::int32_t> failure = locatePacket(text, packet)) {
        return *failure;
    }
    return packet.method != nullptr ? packet.method->code : METHOD_NONE;
}

std::int32_t readSettings(std::string_view text, std::int32_t method, std::span<float> settings) noexcept {
    Packet packet{};
    if (const std::optional<std::int32_t> failure = locatePacket(text, packet)) {
        return *failure;
    }
    if (packet.method == nullptr || packet.method->code != method) {
        return parse_result::OtherMethod;
    }
    readParameters(packet, settings);
    return static_cast<std::int32_t>(packet.methodTag);
}

} // namespace tvmeta

std::int32_t get_settings_from_xmp(std::int32_t method, std::int32_t length, const char* buffer, char* lens,
                                   float* settings) noexcept {
    using namespace tvmeta;
    const std::optional<std::string_view> text = terminatedText(buffer, length);
    const bool lensMissing = method == MODE_LENS && lens == nullptr;
    if (!text || lensMissing || (isMethodCode(method) && settings == nullptr)) {
        return parse_result::NotTerminated;
    }
    if (method == MODE_LENS) {
        return copyLens(*text, std::span(lens, LensRoom));
    }
    if (method == METHOD_DETECT) {
        return detectMethod(*text);
    }
    const std::span<float> slots = settings != nullptr ? std::span(settings, SETTINGS_SLOTS) : std::span<float>();
    return readSettings(*text, method, slots);
}
