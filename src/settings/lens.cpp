// The EXIF auxiliary property aux:Lens (XMP additional properties), as an element or an attribute.
#include "settings/lens.h"

#include "settings/xmp_names.h"

#include <algorithm>
#include <cstdint>

namespace tvmeta {

namespace {

constexpr SearchText LensTag{"aux:Lens", 1};
constexpr std::string_view LensClosing = "</aux:Lens";

// The first offset at which a text of `size` bytes cannot be, since it would reach the terminator.
std::size_t searchLimit(std::string_view text, std::size_t size) {
    return text.size() + 1 > size ? text.size() + 1 - size : 0;
}

// Where a search for a text of `size` bytes stops if it finds none.
std::int32_t searchEnd(std::string_view text, std::size_t size, std::size_t start) {
    return static_cast<std::int32_t>(std::max(searchLimit(text, size), start));
}

// The tag with "=" or ">" after it, so longer names that start with it are skipped.
std::size_t findLensTag(std::string_view text, std::size_t start) {
    for (std::size_t at = findText(text, LensTag, start); at != std::string_view::npos;
         at = findText(text, LensTag, at + 1)) {
        const std::string_view after = textFrom(text, at + LensTag.text.size());
        if (after.starts_with('=') || after.starts_with('>')) {
            return at;
        }
    }
    return std::string_view::npos;
}

} // namespace

std::int32_t copyLens(std::string_view text, std::span<char> lens) {
    const std::size_t declaration = findQuoted(text, AuxDeclaration);
    if (declaration == std::string_view::npos) {
        return searchEnd(text, AuxDeclaration.size(), 0);
    }
    const std::size_t start = declaration + AuxDeclaration.size();
    const std::size_t tag = findLensTag(text, start);
    if (tag == std::string_view::npos) {
        return searchEnd(text, LensTag.text.size(), start);
    }
    const bool attribute = text[tag + LensTag.text.size()] == '=';
    const std::size_t value = tag + LensTag.text.size() + (attribute ? 2 : 1);
    const std::string_view end = attribute ? "\"" : LensClosing;
    const std::string_view rest = textFrom(text, value);
    const std::size_t length = rest.substr(0, LensRoom - 1 + end.size()).find(end);
    if (length == std::string_view::npos) {
        // A quote may be looked for up to the terminator, a closing tag while it ends before the terminator.
        const std::size_t limit = attribute ? text.size() + 1 : searchLimit(text, LensClosing.size());
        return static_cast<std::int32_t>(std::max(value, std::min(value + LensRoom, limit)));
    }
    rest.copy(lens.data(), std::min(length, lens.size()));
    return static_cast<std::int32_t>(value + length);
}

} // namespace tvmeta
