// Text and bytes inside HTML and SVG.
#pragma once

#include <span>
#include <string>
#include <string_view>

// Escapes &, <, >, " and ' as character references, for elements and quoted attributes. Bytes that are not printable
// become \xNN.
std::string markup(std::string_view text);

std::string base64(std::span<const unsigned char> bytes);
