// File names in strings are UTF-8 with slashes on Windows, and any bytes elsewhere.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

std::filesystem::path pathOf(std::string_view name);
std::string nameOf(const std::filesystem::path& path);

// The extension in lower case: ".jpg".
std::string extensionOf(const std::filesystem::path& path);

// The same for all names that this kind of system treats as equal: Windows ignores the case of names.
std::string nameKey(const std::string& name);

// A new unpredictable name in the folder of a file.
std::string temporaryName(const std::string& path);

// True for files, folders and links, also for links to nothing.
bool isThere(const std::string& name);
