// Settings: what a packet of each method holds. One table per method describes each of its parameters once; the parser
// and the writer are both driven by it.
#pragma once

#include "tvmeta.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace tvmeta {

// How a parameter's value stands in the packet.
enum class ValueKind {
    Number,          // one decimal
    VersionedNumber, // the same, but an integer in packets up to version 2
    Fraction,        // six decimals
    Gamma,           // two decimals: the gamma that the slot's slider position stands for
    Clip,            // three decimals: the clip value on its way through a power curve
    Microcontrast,   // a versioned number, or a word in packets up to version 2.4
    SmoothingMode,   // "Light" or "Slider"
    Smoothing,       // a word or a number, as the smoothing mode says
    Panorama,        // "Yes" or "No"
};

struct Parameter {
    std::string_view name; // local name: the tag is "tvtm:" and the name
    int slot;
    ValueKind kind;
    std::string_view formerName = {}; // of the same length; read as well
};

struct Method {
    SettingsMethod code;
    std::string_view name;
    std::string_view formerName; // read as well; empty when there is none
    std::span<const Parameter> parameters;
};

std::span<const Method> methods() noexcept;

// The method of a code; null when the code names none.
const Method* findMethod(std::int32_t code) noexcept;

inline bool isMethodCode(std::int32_t code) noexcept {
    return findMethod(code) != nullptr;
}

// A word and the slot value that it stands for.
struct Word {
    std::string_view text;
    float value;
};

// Smoothing levels 0 to 4. The writer pads the words, the parser compares their letters.
inline constexpr Word SmoothingLevels[] = {
    {"Very High", 0.0F}, {"High", 1.0F}, {"Medium", 2.0F}, {"Low", 3.0F}, {"Very Low", 4.0F}};
inline constexpr std::size_t SmoothingLevelWidth = 8;

// Words of older packets. A word stands before those that it begins with.
inline constexpr Word MicrocontrastWords[] = {{"High", 0.0F},    {"Medium High", -2.0F}, {"Medium Low", -6.0F},
                                              {"Medium", -2.0F}, {"Low", -9.0F},         {"Very Low", -10.0F}};

inline constexpr Word SmoothingModes[] = {{"Light", 0.0F}, {"Slider", 1.0F}};

inline constexpr float LightSmoothing = 0.0F;
inline constexpr float SliderSmoothing = 1.0F;
inline constexpr float NeutralGamma = 50.0F; // slider position of gamma 1

// Slots of method 1 whose values depend on each other.
inline constexpr int SmoothingModeSlot = DETAILS_ENHANCER_SMOOTHING_MODE;
inline constexpr int SmoothingLevelSlot = DETAILS_ENHANCER_SMOOTHING_LEVEL;
inline constexpr int SmoothingSliderSlot = DETAILS_ENHANCER_SMOOTHING_SLIDER;

} // namespace tvmeta
