// The EXIF auxiliary property aux:Lens (XMP additional properties), as an element or an attribute.
#include "settings/packet_parser.h"
#include "settings/xmp_names.h"

#include <algorithm>

namespace tvmeta {

namespace {

constexpr SearchText LensTag{"aux:Lens", 1};
constexpr std::string_view LensEnd = "</aux:Lens";

// Where a search for a text of `size` bytes from `start` on ends without success: at the first place from which the
// text would reach beyond the zero at the end. That is `start` if already the first place is too late.
std::size_t searchEnd(std::string_view text, std::size_t size, std::size_t start) {
    return std::max(text.size() + 1 - std::min(size, text.size() + 1), start);
}

// The tag with "=" or ">" after it, so longer names that start with it are skipped.
std::size_t findLensTag(std::string_view text, std::size_t start) {
    for (std::size_t at = findText(text, LensTag, start); at != NotFound; at = findText(text, LensTag, at + 1)) {
        const std::string_view after = textFrom(text, at + LensTag.text.size());
        if (after.starts_with('=') || after.starts_with('>')) {
            return at;
        }
    }
    return NotFound;
}

} // namespace

std::size_t copyLens(std::string_view text, std::span<char> lens) {
    const std::size_t declaration = findQuoted(text, AuxDeclaration);
    if (declaration == NotFound) {
        return searchEnd(text, AuxDeclaration.size(), 0);
    }
    const std::size_t start = declaration + AuxDeclaration.size();
    const std::size_t tag = findLensTag(text, start);
    if (tag == NotFound) {
        return searchEnd(text, LensTag.text.size(), start);
    }
    const bool attribute = text[tag + LensTag.text.size()] == '=';
    const std::size_t value = tag + LensTag.text.size() + (attribute ? 2 : 1);
    const std::string_view end = attribute ? "\"" : LensEnd;
    const std::string_view rest = textFrom(text, value);
    const std::size_t length = rest.substr(0, LensBufferSize - 1 + end.size()).find(end);
    if (length == NotFound) {
        // A quote is looked for up to the zero at the end, a closing tag only as long as it fits before it.
        return std::min(value + LensBufferSize, searchEnd(text, attribute ? 0 : LensEnd.size(), value));
    }
    rest.copy(lens.data(), std::min(length, lens.size()));
    return value + length;
}

} // namespace tvmeta
