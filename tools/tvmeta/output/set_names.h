// Names for the folders of bracketed sets, by a pattern such as "{date}_{first}".
#pragma once

#include <span>
#include <string>
#include <unordered_set>
#include <vector>

// What a name can contain. An empty value is unknown.
struct SetWords {
    std::string date = {};   // 2024-06-21
    std::string time = {};   // 20-41-07
    std::string first = {};  // the first photograph, without folder and extension
    std::string last = {};   // the last one
    std::string shots = {};  // the number of photographs
    std::string camera = {}; // its model
    std::string folder = {}; // of the first photograph
};

inline constexpr const char* DefaultNamePattern = "{date}_{first}";

// Throws WrongCommandLine if a pattern is empty, contains a slash or a word in braces that is unknown.
void requireNamePattern(const std::string& pattern);

// The placeholders as a list for the help.
std::string namePlaceholders();

// One name per set, which every file system accepts; {number} counts them. Equal names get _2, _3 and so on.
std::vector<std::string> setNames(const std::string& pattern, std::span<const SetWords> sets);

// Gives each name once, also where the file system ignores the case of ASCII letters.
class UniqueNames {
  public:
    // `name`, or with _2, _3 and so on before its extension if it was given before.
    std::string take(const std::string& name, const std::string& extension = "");

  private:
    std::unordered_set<std::string> taken;
};
