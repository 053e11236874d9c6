// Photo: the parts of file names that cameras give.
#pragma once

#include <cstdint>
#include <string_view>

namespace tvmeta {

// IMG_0001 of IMG_0001.CR2.
std::string_view stemOf(std::string_view name);

// CR2 of IMG_0001.CR2; empty without a full stop.
std::string_view extensionOf(std::string_view name);

// The number at the end of a stem, at most its last four digits as in DCF (IMG_0001); -1 without one.
std::int32_t fileNumber(std::string_view stem);

// /card/DCIM of /card/DCIM/100CANON: the folder of which several folders of a card are parts (DCF: three digits and
// five characters). Any other folder is a card of its own.
std::string_view cardOf(std::string_view folder);

// 100 of /card/DCIM/100CANON; -1 for other folders.
std::int32_t cardFolderNumber(std::string_view folder);

// The order in which people expect names: IMG_9 before IMG_10. Negative, 0 or positive.
int compareNames(std::string_view a, std::string_view b);

// Numbers for sorting that need no access to the texts: the order of the first bytes, and that of compareNames().
// Different texts may have the same number.
std::uint64_t orderOfBytes(std::string_view text);
std::uint64_t orderOfName(std::string_view name);

} // namespace tvmeta
