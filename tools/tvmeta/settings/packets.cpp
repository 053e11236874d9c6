#include "settings/packets.h"

#include "system/files.h"

#include <limits>

namespace {

// Marks slots that were not read: no packet contains this value.
constexpr float Unset = std::numeric_limits<float>::lowest();

// The slots that the library reads from a packet; the others stay unset.
struct PacketSlots {
    SlotValues values;
    int32_t methodTag; // its offset
};

// Passes the smoothing mode, which decides how the smoothing is read.
PacketSlots readSlots(int32_t method, const std::string& packet, float smoothingMode) {
    PacketSlots slots = {};
    slots.values.fill(Unset);
    slots.values[DETAILS_ENHANCER_SMOOTHING_MODE] = smoothingMode;
    slots.methodTag = get_settings_from_xmp(method, textSize(packet), packet.c_str(), nullptr, slots.values.data());
    return slots;
}

bool isContained(const tvmeta_Parameter& parameter, const PacketSlots& slots, const std::string& packet) {
    if (parameter.kind == TVMETA_GAMMA) { // if it is missing, the library sets the slot to the neutral gamma
        return slots.methodTag > 0 &&
               packet.find("tvtm:Gamma", static_cast<size_t>(slots.methodTag)) != std::string::npos;
    }
    const bool bySlider = parameter.kind == TVMETA_SMOOTHING && usesSlider(slots.values);
    const int32_t slot = bySlider ? DETAILS_ENHANCER_SMOOTHING_SLIDER : parameter.slot;
    return slots.values[static_cast<size_t>(slot)] != Unset;
}

} // namespace

int32_t insertDescription(std::string& packet, const Settings& settings) {
    const size_t size = packet.size();
    const int32_t length = librarySize(packet);
    const float* values = settings.values.data();
    const int32_t shift = insert_xmp(0, settings.method, values, length, 0, nullptr);
    packet.resize(size + static_cast<size_t>(shift));
    textSize(packet); // refuses texts of 2 GiB and more
    const int32_t result = insert_xmp(1, settings.method, values, length, shift, packet.data());
    if (result < 0) {
        packet.resize(size);
    }
    return result;
}

std::vector<Setting> settingsInPacket(int32_t method, const std::string& packet) {
    PacketSlots slots = readSlots(method, packet, Unset);
    const bool hasMode = slots.values[DETAILS_ENHANCER_SMOOTHING_MODE] != Unset;
    if (!hasMode) {
        slots = readSlots(method, packet, 0);
    }
    std::vector<Setting> settings = {{"Method", tvmeta_method_name(method)}};
    int32_t index = 0;
    for (const tvmeta_Parameter& parameter : parametersOf(method)) {
        const bool isAssumed = parameter.kind == TVMETA_SMOOTHING_MODE && !hasMode;
        if (!isAssumed && isContained(parameter, slots, packet)) {
            settings.push_back({parameter.name, valueText(method, index, slots.values)});
        }
        ++index;
    }
    return settings;
}
