// Lists of names, one per line, for the completion of command lines.
#pragma once

#include <CLI/CLI.hpp>

#include <span>
#include <string>
#include <vector>

// The names of the commands and options of a command.
std::vector<std::string> commandNames(const CLI::App& command);
std::vector<std::string> optionNames(const CLI::App& command);

// Prints a list: "commands" or "options", each with the words of a command, "fields", "methods", or "settings" with a
// method. Throws WrongCommandLine for any other.
void printNames(const CLI::App& app, std::span<const char* const> words);
