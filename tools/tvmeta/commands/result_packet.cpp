#include "commands/result_packet.h"

#include "base/markup.h"
#include "system/files.h"

#include <algorithm>
#include <optional>
#include <string_view>

namespace {

// Includes forms that the library does not read: a second lens would make the packet invalid.
bool hasLens(const std::string& packet) {
    constexpr std::string_view Tags[] = {":Lens=", ":Lens>", ":Lens "};
    return std::ranges::any_of(Tags, [&](std::string_view tag) { return packet.find(tag) != std::string::npos; });
}

std::string lensDescription(const std::string& lens) {
    return "<rdf:Description rdf:about=''\nxmlns:aux='http://ns.adobe.com/exif/1.0/aux/'>\n<aux:Lens>" + markup(lens) +
           "</aux:Lens>\n</rdf:Description>\n\n";
}

// Inserts the settings, and the lens if the packet lacks one. Empty if the packet is not in the usual form.
std::optional<std::string> withDescriptions(std::string packet, const Settings& settings, const std::string& lens) {
    constexpr std::string_view SettingsOpening = "<rdf:Description rdf:about=''\nxmlns:tvtm=";
    const bool hasMethod = settings.method != METHOD_NONE;
    const std::string lensText = lens.empty() || hasLens(packet) ? "" : lensDescription(lens);
    if (!hasMethod && lensText.empty()) {
        return packet;
    }
    Settings inserted = settings;
    if (!hasMethod) { // the description of any method marks the place for the lens
        inserted.method = METHOD_DETAILS_ENHANCER;
    }
    const size_t size = packet.size();
    if (insertDescription(packet, inserted) < 0) {
        return std::nullopt;
    }
    packet.replace(packet.find(SettingsOpening), hasMethod ? 0 : packet.size() - size, lensText);
    return packet;
}

// TIFF properties of XMP (ISO 16684-1), as an attribute or an element. The first is the picture's own; later ones, if
// any, belong to its sources.
void setOrientation(std::string& packet, int32_t orientation) {
    constexpr std::string_view Name = "tiff:Orientation";
    for (size_t at = packet.find(Name); at != std::string::npos; at = packet.find(Name, at + 1)) {
        const size_t after = at + Name.size();
        const std::string_view value = std::string_view(packet).substr(after, 4);
        const bool isElement = value.starts_with('>');
        const size_t digit = isElement ? 1 : 2;
        const bool isProperty = isElement || value.starts_with("=\"") || value.starts_with("='");
        if (isProperty && value.size() > digit + 1 && value[digit] >= '1' && value[digit] <= '8' &&
            value[digit + 1] == (isElement ? '<' : value[1])) {
            packet[after + digit] = static_cast<char>('0' + orientation);
            return;
        }
    }
}

} // namespace

ResultPacket resultPacket(const std::string& packet, const Settings& settings, const std::string& lens,
                          int32_t orientation) {
    const bool hasMethod = settings.method != METHOD_NONE;
    if (packet.empty()) {
        return {};
    }
    // With two sets of settings in a packet, readers may differ in which they use.
    const bool hasSettings = hasMethod && tvsettings_occurences_in_xmp(textSize(packet), packet.c_str()) > 0;
    const auto merged = hasSettings ? std::nullopt : withDescriptions(packet, settings, lens);
    if (!merged && hasMethod) {
        return {"", {"the XMP packet of the photograph"}};
    }
    ResultPacket result = {merged.value_or(packet), {}};
    if (!merged) {
        result.unkept.emplace_back("lens");
    }
    setOrientation(result.text, orientation);
    return result;
}
