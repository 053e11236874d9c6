// Text and bytes inside HTML and SVG.
#pragma once

#include <span>
#include <string>
#include <string_view>

// The text with &, <, >, " and ' as character references, so it is text in elements and in quoted attributes. Bytes
// that are no printable characters are shown as \xNN.
std::string markup(std::string_view text);

std::string base64(std::span<const unsigned char> bytes);
