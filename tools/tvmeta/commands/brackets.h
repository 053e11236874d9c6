// The options that define a bracketed set.
#pragma once

#include "photographs/bracket_sets.h"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

struct BracketOptions {
    std::vector<std::string> names;
    bool recursive = false;
    BracketRules rules;
};

void addBracketOptions(CLI::App& command, BracketOptions& options);
