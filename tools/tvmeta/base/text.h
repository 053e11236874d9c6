// Makes texts from files and file names safe for a terminal. Assumes a UTF-8 terminal.
#pragma once

#include <span>
#include <string>
#include <string_view>

// Replaces bytes that are not printable UTF-8, and characters that change the writing direction, by \xNN.
std::string printable(std::string_view text);

// With small letters in place of the capitals of ASCII.
std::string lowerCase(std::string text);

bool isUtf8(std::string_view text);

// The width of a printable text in columns.
int displayWidth(std::string_view text);

// A printable text in at most `width` columns, its end or its start cut away if it is longer.
std::string withoutEnd(std::string_view text, int width);
std::string withoutStart(std::string_view text, int width);

// A heading with a list of words below it, in lines for a terminal of the usual width.
std::string helpList(const std::string& heading, std::span<const std::string> words);

// The shortest decimal number that is the same float: 0.008, not 0.00800000037997961.
double decimal(float value);

// Describes the first bytes of a file, for messages about files of the wrong type.
std::string beginning(std::span<const unsigned char> file);

// The order in which people expect file names: IMG_9 before IMG_10.
bool naturalLess(std::string_view a, std::string_view b);

// The columns of a character in a terminal, which the system implements; -1 if it is not printable.
int characterWidth(char32_t character);
