// The options that define a bracketed set.
#pragma once

#include "commands/command_line.h"
#include "photographs/photo_sets.h"

#include <string>
#include <vector>

struct BracketOptions {
    std::vector<std::string> names;
    bool recursive = false;
    BracketRules rules;
};

// One line if a longer gap would put many more photographs into sets.
void printAdvice(const PhotoSets& found, const BracketRules& rules);

std::vector<Option> bracketOptions(BracketOptions& options);
