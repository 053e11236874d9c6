// Processing settings by name. The names and their texts are the library's: settings are made by letting it parse a
// description with the given names, and shown by reading the description that it writes.
#pragma once

#include <tvmeta.h>

#include <CLI/CLI.hpp>

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

struct Settings {
    int32_t method = METHOD_NONE;
    std::array<float, SETTINGS_SLOTS> values = {};
};

struct Setting {
    std::string name;
    std::string value;
};

// The options --method NAME and --set NAME=VALUE.
struct SettingsOptions {
    std::string method;
    std::vector<std::string> assignments;
};

void addSettingsOptions(CLI::App& command, SettingsOptions& options, bool required);

// The methods, for the end of a command's help.
std::string methodHelp();

// The settings that the options ask for; without a method none. Throws Failure for what the library does not know.
Settings settingsFrom(const SettingsOptions& options);

// How the library reads settings from one source: get_settings_from_xmp or read_xmp with the rest of its arguments.
using SettingsReader = std::function<int32_t(int32_t method, float* values)>;

// The method and the settings that a packet of that method holds; those that it lacks are left out.
std::vector<Setting> heldSettings(int32_t method, const SettingsReader& read);
