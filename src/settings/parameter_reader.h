// Settings: the parameter values of a packet.
#pragma once

#include "settings/packet.h"

#include <span>

namespace tvmeta {

// Reads the parameters of the packet's method into their slots. Slots whose tags are missing are unchanged.
void readParameters(const Packet& packet, std::span<float> settings);

} // namespace tvmeta
