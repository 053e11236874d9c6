// Reads settings from XMP packets.
#include "support/jobs.h"
#include "support/packets.h"

#ifdef HAVE_EXPAT
#include <expat.h>
#endif
#ifdef HAVE_PUGIXML
#include <pugixml.hpp>
#endif

#include <algorithm>
#include <cstring>
#include <memory>

namespace bench {

namespace {

constexpr std::size_t SmallPacket = 3 * 1024;
constexpr std::size_t LargePacket = 60 * 1024;

using Packet = std::shared_ptr<const Bytes>;

// Values of a packet other than its slots.
struct Summary {
    int method = METHOD_NONE;
    std::array<char, 64> lens = {};

    bool operator==(const Summary&) const = default;
};

Summary packetSummary() {
    Summary summary{SettingsMethodCode, {}};
    LensName.copy(summary.lens.data(), summary.lens.size());
    return summary;
}

// The library counts the terminating zero.
std::int32_t lengthOf(const Bytes& packet) {
    return static_cast<std::int32_t>(packet.size() + 1);
}

Settings slotsByTvmeta(const Bytes& packet) {
    Settings settings = {};
    get_settings_from_xmp(SettingsMethodCode, lengthOf(packet), packet.c_str(), nullptr, settings.data());
    return settings;
}

Summary summaryByTvmeta(const Bytes& packet) {
    Summary summary;
    summary.method = get_settings_from_xmp(METHOD_DETECT, lengthOf(packet), packet.c_str(), nullptr, nullptr);
    get_settings_from_xmp(MODE_LENS, lengthOf(packet), packet.c_str(), summary.lens.data(), nullptr);
    return summary;
}

#if defined(HAVE_PUGIXML) || defined(HAVE_EXPAT)
constexpr std::string_view Prefix = "tvtm:";

// The property with a qualified name; null if there is none.
const Property* findProperty(std::string_view name) {
    if (!name.starts_with(Prefix)) {
        return nullptr;
    }
    const auto found = std::ranges::find(properties(), name.substr(Prefix.size()), &Property::name);
    return found != properties().end() ? &*found : nullptr;
}
#endif

#ifdef HAVE_PUGIXML
pugi::xml_node packetRoot(const pugi::xml_document& document) {
    return document.child("x:xmpmeta").child("rdf:RDF");
}

Settings slotsByPugixml(const Bytes& packet) {
    Settings settings = {};
    pugi::xml_document document;
    document.load_buffer(packet.data(), packet.size());
    for (const pugi::xml_node description : packetRoot(document).children("rdf:Description")) {
        if (!description.attribute("xmlns:tvtm")) {
            continue;
        }
        for (const pugi::xml_node child : description.children()) {
            if (const Property* const property = findProperty(child.name())) {
                readValue(*property, child.child_value(), settings);
            }
        }
    }
    return settings;
}

Summary summaryByPugixml(const Bytes& packet) {
    Summary summary;
    pugi::xml_document document;
    document.load_buffer(packet.data(), packet.size());
    for (const pugi::xml_node description : packetRoot(document).children("rdf:Description")) {
        if (description.attribute("xmlns:tvtm") && description.child_value("tvtm:Method") == SettingsMethodName) {
            summary.method = SettingsMethodCode;
        }
        if (description.attribute("xmlns:aux")) {
            std::string_view(description.child_value("aux:Lens")).copy(summary.lens.data(), summary.lens.size());
        }
    }
    return summary;
}
#endif

#ifdef HAVE_EXPAT
// The state of the parser.
struct ExpatState {
    Settings settings = {};
    const Property* property = nullptr;
    std::array<char, 64> text = {};
    std::size_t size = 0;
};

void startElement(void* data, const char* name, const char** /*attributes*/) {
    auto& state = *static_cast<ExpatState*>(data);
    state.property = findProperty(name);
    state.size = 0;
}

void addText(void* data, const char* text, int size) {
    auto& state = *static_cast<ExpatState*>(data);
    if (state.property != nullptr) {
        const std::size_t count = std::min(static_cast<std::size_t>(size), state.text.size() - state.size);
        std::memcpy(state.text.data() + state.size, text, count);
        state.size += count;
    }
}

void endElement(void* data, const char* /*name*/) {
    auto& state = *static_cast<ExpatState*>(data);
    if (state.property != nullptr) {
        readValue(*state.property, {state.text.data(), state.size}, state.settings);
        state.property = nullptr;
    }
}

Settings slotsByExpat(const Bytes& packet) {
    ExpatState state;
    const XML_Parser parser = XML_ParserCreate(nullptr);
    XML_SetUserData(parser, &state);
    XML_SetElementHandler(parser, startElement, endElement);
    XML_SetCharacterDataHandler(parser, addText);
    XML_Parse(parser, packet.data(), static_cast<int>(packet.size()), XML_TRUE);
    XML_ParserFree(parser);
    return state.settings;
}
#endif

// The floor: searches for a byte that does not occur.
const void* passByMemchr(const Bytes& packet) {
    return std::memchr(packet.data(), '\x01', packet.size());
}

void addFloor(Contenders& contenders, const Packet& packet) {
    contenders.add(
        "floor", [packet] { return passByMemchr(*packet); }, [](const void* found) { return found == nullptr; });
}

void addSlotReaders(Contenders& contenders, const Packet& packet) {
    const auto isRight = [](const Settings& settings) { return settings == packetSettings(); };
    contenders.add(
        "tvmeta", [packet] { return slotsByTvmeta(*packet); }, isRight);
#ifdef HAVE_PUGIXML
    contenders.add(
        "pugixml", [packet] { return slotsByPugixml(*packet); }, isRight);
#endif
#ifdef HAVE_EXPAT
    contenders.add(
        "expat", [packet] { return slotsByExpat(*packet); }, isRight);
#endif
}

void addSummaryReaders(Contenders& contenders, const Packet& packet) {
    const auto isRight = [](const Summary& summary) { return summary == packetSummary(); };
    contenders.add(
        "tvmeta", [packet] { return summaryByTvmeta(*packet); }, isRight);
#ifdef HAVE_PUGIXML
    contenders.add(
        "pugixml", [packet] { return summaryByPugixml(*packet); }, isRight);
#endif
}

Packet packetOf(std::size_t size) {
    return std::make_shared<const Bytes>(settingsPacket(size));
}

} // namespace

void addSettingsJobs(Jobs& jobs) {
    jobs.push_back({"parse a 60 KB packet, all slots", [](Contenders& contenders) {
                        const Packet packet = packetOf(LargePacket);
                        addSlotReaders(contenders, packet);
                        addFloor(contenders, packet);
                    }});
    jobs.push_back({"parse a 60 KB packet, method and lens", [](Contenders& contenders) {
                        const Packet packet = packetOf(LargePacket);
                        addSummaryReaders(contenders, packet);
                        addFloor(contenders, packet);
                    }});
    jobs.push_back({"parse a 3 KB packet, all slots",
                    [](Contenders& contenders) { addSlotReaders(contenders, packetOf(SmallPacket)); }});
}

} // namespace bench
