// Support: messages to the user of a program, on the standard error stream.
#pragma once

namespace tvmeta {

// Prints the text, the path if there is one, and a line feed: also on Windows, where the stream makes two bytes of it.
void printMessage(const char* text, const char* path = "");

} // namespace tvmeta
