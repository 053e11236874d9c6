// XMP packets with processing settings, and the settings that they hold.
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

// How a value stands in a packet.
enum class Form { Number, Fraction, Gamma, Mode, YesNo };

// A property of a packet of METHOD_DETAILS_ENHANCER.
struct Property {
    std::string_view name;
    int slot;
    Form form;
    std::string_view text;
};

// Those of the packets below, in the order in which they are written.
std::span<const Property> properties();

// The same as the lines of a packet.
Bytes propertyLines();

inline constexpr std::string_view Namespace = "http://tonalvista.test/tonalvista_settings";
inline constexpr std::string_view LensName = "EX 24-70mm f/2.8 VR";
inline constexpr int SettingsMethodCode = METHOD_DETAILS_ENHANCER;
inline constexpr std::string_view SettingsMethodName = "Details Enhancer";

inline constexpr double Ln2 = 0.6931471805599453;

// Reads one value as a program does that has found it with an XML parser.
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

// The slots that the properties stand for.
Settings packetSettings();

// A packet of so many bytes (3072 or more): an image's properties and history, then its lens, then the settings, so
// that whoever looks for these has to look through everything.
Bytes settingsPacket(std::size_t size);

} // namespace bench
