// Folders with the files of sets.
#pragma once

#include <functional>
#include <string>
#include <vector>

enum class Placement { Link, Copy };

// The folder of each set: FOLDER/set-001 and so on.
std::string setFolder(const std::string& folder, size_t number);

// Makes a folder for each set, with hard links to its files or copies of them, and reports each one. Nothing is
// overwritten. Throws Failure on errors: the sets before are complete, the others have no folder.
void fillSetFolders(const std::string& folder, const std::vector<std::vector<std::string>>& sets, Placement placement,
                    const std::function<void(size_t set)>& report);

// Throws Failure if a folder of a set exists.
void requireNewFolders(const std::string& folder, size_t sets);
