// The values of settings, between the slots of the library and the texts of packets.
#pragma once

#include <tvmeta.h>

#include <array>
#include <string>

using SlotValues = std::array<float, SETTINGS_SLOTS>;

// The value that a parameter has in a packet which does not contain it.
float defaultValue(const tvmeta_Parameter& parameter);

// Gives a parameter the value of a text. The smoothing mode must have its value before the smoothing. Throws
// WrongCommandLine for a text that is no value of the parameter.
void setValue(SlotValues& values, const tvmeta_Parameter& parameter, const std::string& text);

// The value of a parameter as a packet contains it.
std::string valueText(const SlotValues& values, const tvmeta_Parameter& parameter);

// The slot in which the parameter has its value. For the smoothing that depends on the smoothing mode.
int32_t slotOf(const SlotValues& values, const tvmeta_Parameter& parameter);
