// The name of an ICC profile's colour space, from its 'desc' element (ICC.1:2001-04, textDescriptionType).
#include "support/text_search.h"
#include "tvmeta.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

using namespace tvmeta;

namespace {

constexpr std::size_t NameSize = 32;
constexpr std::size_t MinProfileSize = 49;
constexpr std::size_t SearchStart = 32;
constexpr std::size_t SearchTail = 16; // an element that starts later has no text

// "desc", four reserved bytes, and a character count below 256.
constexpr std::string_view Element("desc\0\0\0\0\0\0\0", 11);

constexpr std::string_view KnownNames[] = {"sRGB", "Adobe RGB", "ProPhoto RGB"};

// The first known name in the text that starts at one of the first `places` characters; empty if there is none.
std::string_view findKnownName(std::string_view text, std::size_t places) {
    for (std::size_t i = 0; i < std::min(places, text.size()); ++i) {
        for (const std::string_view name : KnownNames) {
            if (textFrom(text, i).starts_with(name)) {
                return name;
            }
        }
    }
    return {};
}

} // namespace

std::int32_t get_profile_name(std::int32_t size, const unsigned char* profile, char name[NameSize]) noexcept {
    if (name == nullptr) {
        return PROFILE_NAME_NOT_FOUND;
    }
    std::fill_n(name, NameSize, '\0');
    if (profile == nullptr || size < static_cast<std::int32_t>(MinProfileSize)) {
        return PROFILE_NAME_NOT_FOUND;
    }
    const std::string_view bytes(reinterpret_cast<const char*>(profile), static_cast<std::size_t>(size));
    const std::size_t element = bytes.find(Element, SearchStart);
    if (element >= bytes.size() - SearchTail) {
        return PROFILE_NAME_NOT_FOUND;
    }
    const auto count = static_cast<unsigned char>(bytes[element + Element.size()]);
    const std::string_view text = textFrom(bytes, element + Element.size() + 1);
    if (const std::string_view known = findKnownName(text, count); !known.empty()) {
        known.copy(name, known.size());
        return static_cast<std::int32_t>(known.size());
    }
    text.copy(name, NameSize);
    return static_cast<std::int32_t>(NameSize);
}
