// Recognises files that tvmeta has made and can make again.
#pragma once

#include <string>

// True for a page, a plot, and a settings file that contains nothing but settings.
bool isOwnFile(const std::string& path);

// What another file is, for messages: "is a photograph".
std::string kindOfFile(const std::string& path);
