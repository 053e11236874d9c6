// What to say about a name that does not exist.
#pragma once

#include <span>
#include <string>
#include <string_view>

bool equalsIgnoringCase(std::string_view first, std::string_view second);

// The words with commas between them, and with the conjunction before the last: "8, 16 or 32".
std::string wordList(std::span<const std::string> words, std::string_view conjunction);

// "; did you mean 'info'?" for the name that is most like the word; nothing if none is like it.
std::string nearestName(std::string_view word, std::span<const std::string> names);

// The same; if no name is like the word, all of them.
std::string nearestOrAll(std::string_view word, std::span<const std::string> names);
