#include "settings/packet_parser.h"

#include "settings/methods.h"
#include "settings/xmp_names.h"
#include "support/result.h"
#include "support/text_numbers.h"
#include "tvmeta.h"

namespace tvmeta {

namespace {

constexpr SearchText VersionTag{"tvtm:Version", 0};
constexpr SearchText MethodTag{"tvtm:Method", 0};

// Scans "%d.%d".
std::optional<Version> scanVersion(std::string_view text) {
    const std::optional<std::int64_t> major = scanInteger(text);
    if (!major || !takeOneOf(text, ".")) {
        return std::nullopt;
    }
    const std::optional<std::int64_t> minor = scanInteger(text);
    return minor ? std::optional(Version{*major, *minor}) : std::nullopt;
}

struct VersionProperty {
    Version version;
    std::size_t tagEnd;
};

// The first version that can be read.
std::optional<VersionProperty> findVersion(std::string_view text, std::size_t start) {
    for (std::size_t at = findText(text, VersionTag, start); at != NotFound; at = findText(text, VersionTag, at + 1)) {
        const std::size_t tagEnd = at + VersionTag.text.size();
        for (const PropertyForm form : {PropertyForm::Element, PropertyForm::Attribute}) {
            if (const std::optional<Version> version = scanVersion(textFrom(text, tagEnd + valueDistance(form)))) {
                return VersionProperty{*version, tagEnd};
            }
        }
    }
    return std::nullopt;
}

// The method whose name is at the start of the text.
const Method* methodNamed(std::string_view text) {
    for (const Method& method : methods()) {
        const bool former = !method.formerName.empty() && text.starts_with(method.formerName);
        if (former || text.starts_with(method.name)) {
            return &method;
        }
    }
    return nullptr;
}

// Finds the first settings declaration, and after it a readable version and the method tag.
Result<Packet> findPacket(std::string_view text) {
    const std::size_t declaration = findQuoted(text, SettingsDeclaration);
    if (declaration == NotFound) {
        return Failure{XMP_NO_SETTINGS};
    }
    const auto version = findVersion(text, declaration + SettingsDeclaration.size());
    if (!version) {
        return Failure{XMP_OTHER_METHOD};
    }
    const std::size_t methodTag = findText(text, MethodTag, version->tagEnd);
    if (methodTag == NotFound) {
        return Failure{XMP_OTHER_METHOD};
    }
    const std::string_view value = textFrom(text, methodTag + MethodTag.text.size());
    const PropertyForm form = value.starts_with('=') ? PropertyForm::Attribute : PropertyForm::Element;
    return Packet{text, version->version, methodTag, form, methodNamed(textFrom(value, valueDistance(form)))};
}

} // namespace

std::optional<std::string_view> terminatedText(const char* buffer, std::int32_t length) {
    if (buffer == nullptr || length < 1 || buffer[length - 1] != '\0') {
        return std::nullopt;
    }
    return std::string_view(buffer, static_cast<std::size_t>(length - 1));
}

std::int32_t detectMethod(std::string_view text) {
    const Result<Packet> packet = findPacket(text);
    if (!packet) {
        return packet.code();
    }
    return packet->method != nullptr ? packet->method->code : METHOD_NONE;
}

} // namespace tvmeta

using namespace tvmeta;

std::int32_t get_settings_from_xmp(std::int32_t method, std::int32_t length, const char* buffer, char* lens,
                                   float* settings) noexcept {
    const std::optional<std::string_view> text = terminatedText(buffer, length);
    const bool lensMissing = method == MODE_LENS && lens == nullptr;
    if (!text || lensMissing || (isMethodCode(method) && settings == nullptr)) {
        return XMP_NOT_TERMINATED;
    }
    if (method == MODE_LENS) {
        return static_cast<std::int32_t>(copyLens(*text, std::span(lens, LensBufferSize)));
    }
    if (method == METHOD_DETECT) {
        return detectMethod(*text);
    }
    const Result<Packet> packet = findPacket(*text);
    if (!packet) {
        return packet.code();
    }
    if (packet->method == nullptr || packet->method->code != method) {
        return XMP_OTHER_METHOD;
    }
    readParameters(*packet, std::span(settings, SETTINGS_SLOTS));
    return static_cast<std::int32_t>(packet->methodTag);
}
