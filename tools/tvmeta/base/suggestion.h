// Suggestions for unknown names.
#pragma once

#include <span>
#include <string>
#include <string_view>

bool equalsIgnoringCase(std::string_view first, std::string_view second);

// A list with commas and a conjunction before the last word: "8, 16 or 32".
std::string wordList(std::span<const std::string> words, std::string_view conjunction);

// "; did you mean 'info'?" for the most similar name; empty if none is similar.
std::string nearestName(std::string_view word, std::span<const std::string> names);

// The same; if no name is similar, a list of all names.
std::string nearestOrAll(std::string_view word, std::span<const std::string> names);
