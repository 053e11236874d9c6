#include "commands/settings_options.h"

#include "base/text.h"
#include "commands/completion.h"

void addSettingsOptions(std::vector<Option>& options, SettingsOptions& settings, bool isRequired) {
    options.push_back({.names = {"--method"},
                       .target = &settings.method,
                       .help = "Processing method, listed below",
                       .value = "NAME",
                       .isRequired = isRequired,
                       .suggest = suggestMethods});
    options.push_back({.names = {"--set"},
                       .target = &settings.assignments,
                       .help = "A setting of the method, as settings show prints\nit; can be repeated",
                       .value = "NAME=VALUE",
                       .suggest = suggestSettings,
                       .needs = {"--method"}});
}

std::string methodHelp() {
    return helpList("Methods", methodNames());
}
