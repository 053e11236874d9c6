// tvmeta brackets --into: folders for the sets, and --undo.
#pragma once

#include "commands/brackets.h"
#include "output/set_names.h"

#include <string>
#include <vector>

struct PlacementOptions {
    std::string folder;
    std::string name = DefaultNamePattern;
    bool copy = false;
    bool move = false;
    bool dryRun = false;
    bool guesses = false;
    std::string undo; // a journal of moves
};

// The options for a command whose other forms of output are excluded.
std::vector<Option> placementOptions(PlacementOptions& options, const std::vector<std::string>& otherForms);

// Reads the photographs and makes a folder for each set.
void placeSets(const BracketOptions& input, const PlacementOptions& options);

void undoPlacement(const PlacementOptions& options);
