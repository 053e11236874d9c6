// Copies and writes files. Every function throws Failure with the system's reason.
#pragma once

#include <cstdio>
#include <functional>
#include <string>
#include <string_view>

// Calls `take` with the rest of an open file, piece by piece.
void readPieces(std::FILE* file, const std::string& path, const std::function<void(std::string_view piece)>& take);

// Overwrites `copy` with the contents of a regular file.
void copyFile(const std::string& path, const std::string& copy);

// Throws Failure if the file does not take all bytes.
void writeBytes(std::FILE* file, std::string_view bytes, const std::string& path);
