// Completion of command lines for shells.
#pragma once

#include "commands/command_line.h"

#include <span>
#include <string>
#include <vector>

// Prints what the last of the words can become, one per line. ":files" means names of files; ":nospace" that the user
// goes on in the same word.
void printCompletions(const Command& tool, std::span<const std::string> words);

// For the values of options.
std::vector<std::string> suggestNothing(const std::string& value, std::span<const std::string> words);
std::vector<std::string> suggestFields(const std::string& value, std::span<const std::string> words); // a,b,c
std::vector<std::string> suggestOrder(const std::string& value, std::span<const std::string> words);  // -a
std::vector<std::string> suggestMethods(const std::string& value, std::span<const std::string> words);
std::vector<std::string> suggestSettings(const std::string& value, std::span<const std::string> words); // a=
