#include "output/own_files.h"

#include "base/markup.h"
#include "photographs/photo.h"
#include "pictures/load_picture.h"
#include "system/files.h"

#include <algorithm>

namespace {

// Pages and plots begin with their element or document type, and the comment.
bool isPageOrPlot(std::string_view text) {
    constexpr size_t MaxStart = 512;
    const bool isMarkup = text.starts_with("<!doctype html>\n") || text.starts_with("<svg ");
    return isMarkup && text.substr(0, MaxStart).find(MadeByTvmeta) != std::string_view::npos;
}

// <tvtm:NAME>VALUE</tvtm:NAME>
bool isSetting(std::string_view line) {
    constexpr std::string_view Start = "<tvtm:";
    const std::string_view name = line.substr(0, line.find('>'));
    if (!name.starts_with(Start)) {
        return false;
    }
    const std::string end = "</" + std::string(name.substr(1)) + ">";
    return line.ends_with(end) && line.find('<', 1) == line.size() - end.size();
}

// What write_xmp() writes.
bool isSettingsFile(std::string_view text) {
    constexpr std::string_view Head = "<x:xmpmeta xmlns:x='adobe:ns:meta/'>\n"
                                      "<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>\n\n"
                                      "<rdf:Description rdf:about=''\n"
                                      "xmlns:tvtm='http://tonalvista.test/tonalvista_settings01'>\n";
    constexpr std::string_view Tail = "</rdf:Description>\n\n</rdf:RDF>\n</x:xmpmeta>\n";
    if (!text.starts_with(Head) || !text.ends_with(Tail) || text.size() < Head.size() + Tail.size()) {
        return false;
    }
    text = text.substr(Head.size(), text.size() - Head.size() - Tail.size());
    while (!text.empty() && isSetting(text.substr(0, text.find('\n')))) {
        text.remove_prefix(std::min(text.find('\n'), text.size() - 1) + 1);
    }
    return text.empty();
}

} // namespace

bool isOwnFile(const std::string& path) {
    constexpr size_t MaxSettings = 65536;
    const Bytes start = readStart(path, MaxSettings + 1);
    return isPageOrPlot(asText(start)) || (start.size() <= MaxSettings && isSettingsFile(asText(start)));
}

std::string kindOfFile(const std::string& path) {
    return isPhotograph(path) ? "is a photograph"
           : isPicture(path)  ? "is a picture"
                              : "is not known to be made by tvmeta";
}
