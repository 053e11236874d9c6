// Text and bytes inside HTML and SVG.
#pragma once

#include <span>
#include <string>
#include <string_view>

// A comment in the first lines of pages and plots, by which the tool recognises its own files.
constexpr std::string_view MadeByTvmeta = "<!-- Made by tvmeta -->\n";

// Escapes &, <, >, " and ' as character references, for elements and quoted attributes. Bytes that are not printable
// become \xNN.
std::string markup(std::string_view text);

// The name and value of an attribute after a blank, and an element. Value and content are markup already.
std::string attribute(std::string_view name, std::string_view value);
std::string element(std::string_view name, std::string_view content, std::string_view attributes = "");

// A path as part of a URL (RFC 3986): bytes other than unreserved characters and slashes become %NN.
std::string urlPath(std::string_view path);

std::string base64(std::span<const unsigned char> bytes);
