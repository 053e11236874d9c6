// Processing methods and their settings, by the names of the library's table.
#pragma once

#include <tvmeta.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

using SlotValues = std::array<float, SETTINGS_SLOTS>;

struct Settings {
    int32_t method = METHOD_NONE;
    SlotValues values = {};
};

struct Setting {
    std::string name;
    std::string value;
};

std::vector<std::string> methodNames();

// The settings of a method. Throws WrongCommandLine for an unknown method.
std::vector<std::string> settingNames(const std::string& method);

// The settings that NAME=VALUE assignments give; empty without a method. Throws WrongCommandLine for invalid names and
// values.
Settings settingsFrom(const std::string& method, const std::vector<std::string>& assignments);

// Inserts the description of the settings into an XMP packet. Returns the result of insert_xmp(); if it is negative,
// the packet is unchanged.
int32_t insertDescription(std::string& packet, const Settings& settings);

// The method and the settings that a packet of that method contains, in the order of the library's table.
std::vector<Setting> settingsInPacket(int32_t method, const std::string& packet);
