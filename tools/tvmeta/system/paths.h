// File names in strings are UTF-8 with slashes on Windows, and any bytes elsewhere.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

std::filesystem::path pathOf(std::string_view name);
std::string nameOf(const std::filesystem::path& path);

// True for files, folders and links, also for links to nothing.
bool isThere(const std::string& name);
