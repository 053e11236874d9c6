// XMP packets with processing settings, and the settings in them.
#pragma once

#include "support/bytes.h"

#include <tvmeta.h>

#include <array>
#include <charconv>
#include <cmath>
#include <span>
#include <string_view>

namespace bench {

using Settings = std::array<float, SETTINGS_SLOTS>;

// The form of a value in a packet.
enum class Form { Number, Fraction, Gamma, Mode, YesNo };

// A property of a packet of METHOD_DETAILS_ENHANCER.
struct Property {
    std::string_view name;
    int slot;
    Form form;
    std::string_view text;
};

// The properties of the packets below, in file order.
std::span<const Property> properties();

// The same properties as lines of a packet.
Bytes propertyLines();

inline constexpr std::string_view Namespace = "http://tonalvista.test/tonalvista_settings";
inline constexpr std::string_view LensName = "EX 24-70mm f/2.8 VR";
inline constexpr int SettingsMethodCode = METHOD_DETAILS_ENHANCER;
inline constexpr std::string_view SettingsMethodName = "Details Enhancer";

inline constexpr double Ln2 = 0.6931471805599453;

// Reads one value, as a program with an XML parser does.
inline void readValue(const Property& property, std::string_view text, Settings& settings) {
    float& slot = settings[static_cast<std::size_t>(property.slot)];
    switch (property.form) {
    case Form::Number:
    case Form::Fraction:
        std::from_chars(text.data(), text.data() + text.size(), slot);
        break;
    case Form::Gamma:
        std::from_chars(text.data(), text.data() + text.size(), slot);
        slot = static_cast<float>((std::log(static_cast<double>(slot)) / -Ln2 + 1.0) * 50.0);
        break;
    case Form::Mode:
        slot = text == "Slider" ? 1.0F : 0.0F;
        break;
    case Form::YesNo:
        slot = text == "Yes" ? 1.0F : 0.0F;
        break;
    }
}

// The slots for the properties.
Settings packetSettings();

// A packet of `size` bytes (3072 or more): properties and history of an image, then the lens, then the settings, so
// that a reader must search the whole packet.
Bytes settingsPacket(std::size_t size);

} // namespace bench
