// Processing settings on the command line.
#pragma once

#include "commands/command_line.h"
#include "settings/settings.h"

#include <string>
#include <vector>

// The options --method NAME and --set NAME=VALUE.
struct SettingsOptions {
    std::string method;
    std::vector<std::string> assignments;

    Settings settings() const { return settingsFrom(method, assignments); }
};

void addSettingsOptions(std::vector<Option>& options, SettingsOptions& settings, bool isRequired);

// The list of methods for the help of a command.
std::string methodHelp();
