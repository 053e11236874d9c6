#include "photo/xmp_text.h"

#include "support/text_search.h"

#include <algorithm>
#include <charconv>
#include <cstddef>

namespace tvmeta {

namespace {

constexpr std::string_view XmlSpace = " \t\r\n";

constexpr bool endsName(char c) {
    return XmlSpace.find(c) != NotFound || c == '>' || c == '/' || c == '=';
}

std::string_view before(std::string_view text, std::size_t end) {
    return {text.data(), end < text.size() ? end : text.size()};
}

// The character of a reference such as "amp" or "#x20"; 0 if it is none of XML's own.
char32_t referenced(std::string_view name) {
    struct Entity {
        std::string_view name;
        char32_t character;
    };
    static constexpr Entity Entities[] = {{"amp", U'&'}, {"lt", U'<'}, {"gt", U'>'}, {"quot", U'"'}, {"apos", U'\''}};
    if (const auto* const entity = std::ranges::find(Entities, name, &Entity::name); entity != std::end(Entities)) {
        return entity->character;
    }
    if (!name.starts_with('#')) {
        return 0;
    }
    name.remove_prefix(1);
    const bool isHex = name.starts_with('x');
    name.remove_prefix(isHex ? 1 : 0);
    std::uint32_t code = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), code, isHex ? 16 : 10);
    const bool isValid =
        error == std::errc() && end == name.data() + name.size() && code < 0x110000 && (code < 0xD800 || code > 0xDFFF);
    return isValid ? code : 0;
}

void putUnescaped(std::string_view text, TextWriter& writer) {
    constexpr std::size_t MaxReference = 10;
    while (!text.empty()) {
        const std::size_t ampersand = text.find('&');
        putText(writer, before(text, ampersand)); // damaged packets have other encodings
        if (ampersand == NotFound) {
            return;
        }
        text = textFrom(text, ampersand);
        const std::size_t end = before(text, MaxReference).find(';');
        const char32_t character = end == NotFound ? 0 : referenced(textFrom(before(text, end), 1));
        if (character != 0) {
            writer.put(character);
            text = textFrom(text, end + 1);
        } else {
            writer.put("&");
            text.remove_prefix(1);
        }
    }
}

// The content of the element whose name starts the text; empty if it has none or does not end.
std::string_view elementContent(std::string_view text, std::string_view name) {
    const std::size_t open = text.find('>');
    if (open == NotFound || open == 0 || text[open - 1] == '/') {
        return {};
    }
    const std::string_view content = textFrom(text, open + 1);
    for (std::size_t end = content.find("</"); end != NotFound; end = content.find("</", end + 2)) {
        const std::string_view closing = textFrom(content, end + 2);
        if (closing.starts_with(name) && closing.size() > name.size() && endsName(closing[name.size()])) {
            return before(content, end);
        }
    }
    return {};
}

// The text of the item at an index of the array in the content; empty items do not count. Of content without an array:
// the whole, as item 0.
bool putItem(std::string_view content, int index, TextWriter& writer) {
    constexpr std::string_view Item = "<rdf:li";
    std::size_t at = content.find(Item);
    if (at == NotFound) {
        const std::string_view text = trimmed(content);
        if (index != 0 || text.empty() || text.starts_with('<')) {
            return false;
        }
        putUnescaped(text, writer);
        return true;
    }
    while (at != NotFound) {
        const std::size_t open = content.find('>', at);
        const std::size_t value = content.find_first_not_of(XmlSpace, open == NotFound ? open : open + 1);
        if (value == NotFound) {
            return false;
        }
        const bool isEmpty = content[open - 1] == '/' || textFrom(content, value).starts_with("</");
        if (!isEmpty && index-- == 0) {
            putUnescaped(trimmed(elementContent(textFrom(content, at + 1), textFrom(Item, 1))), writer);
            return true;
        }
        at = content.find(Item, open);
    }
    return false;
}

// The attribute whose name is before the text.
bool putAttribute(std::string_view text, TextWriter& writer) {
    const auto withoutSpace = [](std::string_view t) { return textFrom(t, t.find_first_not_of(XmlSpace)); };
    text = withoutSpace(text);
    if (!text.starts_with('=')) {
        return false;
    }
    text = withoutSpace(textFrom(text, 1));
    if (!text.starts_with('"') && !text.starts_with('\'')) {
        return false;
    }
    const std::size_t end = text.find(text.front(), 1);
    if (end == NotFound) {
        return false;
    }
    const std::string_view value = trimmed(textFrom(before(text, end), 1));
    putUnescaped(value, writer);
    return !value.empty();
}

} // namespace

bool findProperty(std::string_view packet, std::string_view property, TextWriter& writer, int index) {
    for (std::size_t at = packet.find(property); at != NotFound; at = packet.find(property, at + property.size())) {
        const char previous = at > 0 ? packet[at - 1] : '\0';
        const std::string_view rest = textFrom(packet, at + property.size());
        if (rest.empty() || !endsName(rest.front())) {
            continue;
        }
        if (previous == '<') {
            return putItem(elementContent(textFrom(packet, at), property), index, writer);
        }
        if (endsName(previous) && index == 0 && putAttribute(rest, writer)) {
            return true;
        }
    }
    return false;
}

} // namespace tvmeta
