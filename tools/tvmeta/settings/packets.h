// Settings in XMP packets.
#pragma once

#include "settings/methods.h"

#include <cstdint>
#include <string>
#include <vector>

// Inserts the description of the settings into an XMP packet. Returns the result of insert_xmp(); if it is negative,
// the packet is unchanged.
int32_t insertDescription(std::string& packet, const Settings& settings);

// The method and the settings that a packet of that method contains, in the order of the library's table.
std::vector<Setting> settingsInPacket(int32_t method, const std::string& packet);
