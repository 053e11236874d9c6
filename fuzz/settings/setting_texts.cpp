// The value of one parameter: set from a text, written as a text, and in a packet.
#include "support.h"

#include <cmath>

using namespace fuzz;

namespace {

struct Place {
    std::int32_t method;
    std::int32_t index;
};

std::string textOfSlots(const Place& place, const Settings& settings) {
    std::vector<char> text(TVMETA_SETTING_TEXT_SIZE, '#');
    const std::int32_t length = tvmeta_setting_text(place.method, place.index, settings.data(), text.data());
    require(length > 0 && std::strlen(text.data()) == static_cast<std::size_t>(length), "the result is the length");
    return text.data();
}

Settings readBack(std::int32_t method, const Settings& settings) {
    std::vector<char> packet(static_cast<std::size_t>(embed_xmp(0, method, settings.data(), 0, nullptr, nullptr)) + 1);
    embed_xmp(1, method, settings.data(), 0, nullptr, packet.data());
    Settings found = settings;
    get_settings_from_xmp(method, lengthOf(packet.size()), packet.data(), nullptr, found.data());
    return found;
}

void checkValue(const Place& place, const std::string& text, const Settings& before) {
    Settings settings = before;
    const std::int32_t result = tvmeta_setting_value(place.method, place.index, text.c_str(), settings.data());
    require(result != 0 && result >= -3 && result <= 1, "the result is documented");
    std::size_t changed = settings.size();
    for (std::size_t slot = 0; slot < settings.size(); ++slot) {
        if (std::memcmp(&settings[slot], &before[slot], sizeof(float)) != 0) {
            require(result == TVMETA_SETTING_OK && changed == settings.size(), "one slot is set, on success");
            changed = slot;
        }
    }
    if (result != TVMETA_SETTING_OK) {
        return;
    }
    require(changed == settings.size() || readBack(place.method, settings)[changed] == settings[changed],
            "the slot is what is read back");
    const std::string shown = textOfSlots(place, settings);
    require(tvmeta_setting_value(place.method, place.index, shown.c_str(), settings.data()) == TVMETA_SETTING_OK &&
                textOfSlots(place, settings) == shown,
            "a text gives the same text again");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    Place place = {input.PickValueInArray(MethodCodes), 0};
    place.index = input.ConsumeIntegralInRange<std::int32_t>(0, tvmeta_parameter(place.method, 0, nullptr) - 1);
    Settings settings = input.ConsumeBool() ? takeFloats(input) : Settings(SETTINGS_SLOTS);
    textOfSlots(place, settings);
    settings[DETAILS_ENHANCER_SMOOTHING_MODE] = input.ConsumeBool() ? 1.0F : 0.0F;
    checkValue(place, input.ConsumeRemainingBytesAsString(), settings);
    return 0;
}
