// Settings: the methods and their parameters. One table per method describes each parameter once; parser, writer and
// interface use it.
#pragma once

#include "tvmeta.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace tvmeta {

// The form of a value in the packet.
enum class ValueKind {
    Number,          // one decimal
    VersionedNumber, // the same, but an integer in packets up to version 2
    Fraction,        // six decimals
    Gamma,           // two decimals: a gamma; the slot is a slider position
    Clip,            // three decimals: a clip value; the slot is on a power curve
    Microcontrast,   // a versioned number, or a word in packets up to version 2.4
    SmoothingMode,   // "Light" or "Slider"
    Smoothing,       // a word or a number, depending on the smoothing mode
    Panorama,        // "Yes" or "No"
};

struct Parameter {
    std::string_view name; // local name: the tag is "tvtm:" followed by it
    int slot;
    ValueKind kind;
    std::string_view formerName = {}; // also read; of the same length
};

struct Method {
    SettingsMethod code;
    std::string_view name;
    std::string_view formerName; // also read; empty: none
    std::span<const Parameter> parameters;
};

std::span<const Method> methods();

// The method of a code; null if the code names none.
const Method* findMethod(std::int32_t code);

// A parameter by its place in the method's table; null if there is none.
const Parameter* findParameter(std::int32_t method, std::int32_t index);

inline bool isMethodCode(std::int32_t code) {
    return findMethod(code) != nullptr;
}

// A word in a packet, and its slot value.
struct Word {
    std::string_view text;
    float value;
};

// Smoothing levels 0 to 4. The writer pads the words, the parser compares their letters.
inline constexpr Word SmoothingLevels[] = {
    {"Very High", 0.0F}, {"High", 1.0F}, {"Medium", 2.0F}, {"Low", 3.0F}, {"Very Low", 4.0F}};
inline constexpr std::size_t SmoothingLevelWidth = 8;

// Words of older packets. A word precedes its own prefixes.
inline constexpr Word MicrocontrastWords[] = {{"High", 0.0F},    {"Medium High", -2.0F}, {"Medium Low", -6.0F},
                                              {"Medium", -2.0F}, {"Low", -9.0F},         {"Very Low", -10.0F}};

inline constexpr Word SmoothingModes[] = {{"Light", 0.0F}, {"Slider", 1.0F}};

inline constexpr Word YesNo[] = {{"No", 0.0F}, {"Yes", 1.0F}};
inline constexpr std::size_t YesNoWidth = 3; // of padded words

inline constexpr float LightSmoothing = 0.0F;
inline constexpr float SliderSmoothing = 1.0F;
inline constexpr float NeutralGamma = 50.0F; // slider position of gamma 1

// Slots of method 1 whose values depend on each other.
inline constexpr int SmoothingModeSlot = DETAILS_ENHANCER_SMOOTHING_MODE;
inline constexpr int SmoothingSliderSlot = DETAILS_ENHANCER_SMOOTHING_SLIDER;

// The mode is the integer part. Compared as floats, since a slot may exceed any integer.
inline bool smoothsBySlider(const float* settings) {
    return settings[SmoothingModeSlot] >= SliderSmoothing && settings[SmoothingModeSlot] < SliderSmoothing + 1.0F;
}

} // namespace tvmeta
