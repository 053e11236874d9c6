// The XMP packet of a result: the photograph's, fitted to the result.
#pragma once

#include "commands/settings_options.h"

#include <cstdint>
#include <string>
#include <vector>

struct ResultPacket {
    std::string text;                // empty: the library makes a packet of settings and lens
    std::vector<std::string> unkept; // what of the photograph is in neither packet
};

// The photograph's packet with the settings, the lens if it lacks one, and the orientation of the result (1 to 8). A
// packet with other settings is not kept, nor is one in an unusual form if there are settings to insert.
ResultPacket resultPacket(const std::string& packet, const Settings& settings, const std::string& lens,
                          int32_t orientation);
