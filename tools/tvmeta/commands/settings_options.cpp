#include "commands/settings_options.h"

#include "base/text.h"
#include "commands/completion.h"

void addSettingsOptions(std::vector<Option>& options, SettingsOptions& settings, bool isRequired) {
    options.push_back(Option({"--method"}, &settings.method, "NAME", "Processing method, listed below",
                             {.isRequired = isRequired, .suggest = suggestMethods}));
    options.push_back(Option({"--set"}, &settings.assignments, "NAME=VALUE",
                             "A setting of the method, as settings show prints\nit; can be repeated",
                             {.suggest = suggestSettings, .needs = {"--method"}}));
}

std::string methodHelp() {
    return helpList("Methods", methodNames());
}
