// Photo: values of XMP packets, by a search for their text (ISO 16684-1).
#pragma once

#include "photo/utf8.h"

#include <string_view>

namespace tvmeta {

// Writes the value of a property with its usual prefix, as in "dc:title": an attribute, a simple element, or an item of
// an array by its index. Of alternative languages the first counts, and empty values do not. Returns false if there is
// no such value.
bool findProperty(std::string_view packet, std::string_view property, TextWriter& writer, int index = 0);

} // namespace tvmeta
