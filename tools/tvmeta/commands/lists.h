// Lists of names, one per line, for the completion of command lines.
#pragma once

#include "commands/command_line.h"

#include <span>

// Prints a list: "commands" or "options", each with the words of a command, "fields", "methods", or "settings" with a
// method. Throws WrongCommandLine for any other.
void printNames(const Command& tool, std::span<const char* const> words);
