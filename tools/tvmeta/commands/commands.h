// The commands of the tool.
#pragma once

#include "commands/command_line.h"

Command infoCommand();
Command tiffCommand();
Command settingsCommand();
Command exifCommand();
Command iptcCommand();
Command iccCommand();
Command statsCommand();
Command bracketsCommand();
Command reportCommand();
Command thumbnailCommand();
