// The commands of the tool. Each function adds one command; parsing the command line runs the named one.
#pragma once

#include <CLI/CLI.hpp>

void addInfoCommand(CLI::App& app);
void addTiffCommand(CLI::App& app);
void addSettingsCommand(CLI::App& app);
void addExifCommand(CLI::App& app);
void addIptcCommand(CLI::App& app);
void addIccCommand(CLI::App& app);
void addStatsCommand(CLI::App& app);
void addBracketsCommand(CLI::App& app);
void addReportCommand(CLI::App& app);
void addThumbnailCommand(CLI::App& app);

// Throws WrongCommandLine if no command of `app` was named. Called after parsing, so that a mistyped name is reported
// as an unknown command.
inline void requireSubcommand(const CLI::App& app) {
    if (app.get_subcommands().empty()) {
        throw CLI::RequiredError::Subcommand(1);
    }
}
