// The values of settings, between the slots of the library and the texts of packets.
#pragma once

#include <tvmeta.h>

#include <array>
#include <string>

using SlotValues = std::array<float, SETTINGS_SLOTS>;

// The value of a parameter that a packet does not contain.
float defaultValue(const tvmeta_Parameter& parameter);

// Sets a parameter to the value of a text. Set the smoothing mode before the smoothing. Throws WrongCommandLine if the
// text is not a value of the parameter.
void setValue(SlotValues& values, const tvmeta_Parameter& parameter, const std::string& text);

// The value of a parameter as a packet contains it.
std::string valueText(const SlotValues& values, const tvmeta_Parameter& parameter);

// The slot of the parameter's value. The slot of the smoothing depends on the smoothing mode.
int32_t slotOf(const SlotValues& values, const tvmeta_Parameter& parameter);
