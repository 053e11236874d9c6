// The commands of the tool.
#pragma once

#include "commands/command_line.h"

#define COMMAND(command) Command command();
#include "commands/commands.inc"
#undef COMMAND
