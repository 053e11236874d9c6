#include "pages/report_page.h"

#include "base/mapped.h"
#include "base/markup.h"
#include "base/words.h"
#include "pages/report_parts.h"
#include "pages/report_style.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <numeric>
#include <string>
#include <tuple>

namespace {

constexpr std::string_view DocumentType = "<!doctype html>\n";
constexpr std::string_view PageStart = R"(<html lang="en">
<head>
<meta charset="utf-8">
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; style-src 'unsafe-inline'; img-src data: 'self' file:; )"
                                       R"(base-uri 'none'; form-action 'none'">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="referrer" content="no-referrer">
<link rel="icon" href="data:,">
<title>)";

// The texts that are not empty.
std::string joinedBy(const std::string& separator, std::initializer_list<std::string> texts) {
    std::string line;
    for (const std::string& text : texts) {
        line += text.empty() ? "" : (line.empty() ? "" : separator) + text;
    }
    return line;
}

std::string ifKnown(const std::string& label, const std::string& text) {
    return text.empty() ? "" : label + text;
}

std::string titleOf(const PageContent& content) {
    return markup(joinedBy(", ", {"Bracketed sets" + ifKnown(" in ", content.folder), content.dates}));
}

struct TableColumn {
    const char* heading;
    std::string PagePhoto::*text; // null for the offset in the set
    const char* label = "";       // class of a cell to which the style sheet adds the heading on small screens
    const char* fact = nullptr;   // precedes a text that all photographs of the set share; null: always a column
};
constexpr std::array TableColumns = {
    TableColumn{"Offset", nullptr, "offset"},
    TableColumn{"EV", &PagePhoto::ev, "ev"},
    TableColumn{"Time", &PagePhoto::exposureTime, "", ""},
    TableColumn{"Stop", &PagePhoto::fNumber, "", ""},
    TableColumn{"ISO", &PagePhoto::isoSpeed, "iso", "ISO "},
    TableColumn{"Focal", &PagePhoto::focalLength, "", ""},
    TableColumn{"Taken", &PagePhoto::time},
};

// A fact of the set is no column.
bool isFact(const TableColumn& column, const PageSet& set) {
    return column.fact != nullptr && std::ranges::all_of(set.photos, [&](const PagePhoto& photo) {
               return photo.*column.text == set.photos.front().*column.text;
           });
}

std::string exposureTable(const PageSet& set) {
    std::vector<TableColumn> columns;
    std::ranges::copy_if(TableColumns, std::back_inserter(columns),
                         [&](const TableColumn& column) { return !isFact(column, set); });
    std::string table = element("th", "File", attribute("scope", "col"));
    for (const TableColumn& column : columns) {
        table += element("th", column.heading, attribute("scope", "col"));
    }
    table = element("caption", "Exposures in order of capture") + element("thead", element("tr", table)) + "<tbody>\n";
    for (size_t i = 0; i < set.photos.size(); ++i) {
        std::string row = element("th", markup(set.photos[i].name), attribute("scope", "row"));
        for (const TableColumn& column : columns) {
            const bool isOffset = column.text == nullptr;
            row += element("td", isOffset ? offsetText(set.found->offsets[i]) : markup(set.photos[i].*column.text),
                           *column.label != 0 ? attribute("class", column.label) : "");
        }
        table += element("tr", row);
    }
    return "<table>" + table + "</tbody></table>\n";
}

std::string cameraOf(const PageSet& set) {
    const std::string camera = set.found->photos.front()->record.model;
    return camera.empty() ? "unknown camera" : camera;
}

std::string sizeOf(const PageSet& set) {
    return counted(set.photos.size(), "photograph");
}

// The date as people write it, to the minute.
std::string setFacts(const PageSet& set) {
    const PagePhoto& first = set.photos.front();
    std::string facts = joinedBy(", ", {joinedBy(" ", {first.date, first.time.substr(0, 5)}), cameraOf(set)});
    for (const TableColumn& column : TableColumns) {
        facts += isFact(column, set) ? ifKnown(std::string(", ") + column.fact, first.*column.text) : "";
    }
    return joinedBy(", ",
                    {facts, "range " + stopsText(set.found->range()) + " EV",
                     ifKnown("exposure mode ", set.exposureMode), set.folder == "." ? "" : ifKnown("in ", set.folder)});
}

std::string photoFacts(const PagePhoto& photo) {
    return joinedBy(" ", {photo.date, photo.time, photo.exposureTime, photo.fNumber, ifKnown("ISO ", photo.isoSpeed),
                          photo.focalLength});
}

class ReportPage {
  public:
    ReportPage(const PageContent& shown, const std::function<void(std::string_view)>& output)
        : content(shown), write(output), cameras("Cameras", "camera", mapped<std::string>(content.sets, cameraOf)),
          sizes("Photographs of a set", "size", mapped<std::string>(content.sets, sizeOf)) {}

    void writeAll() {
        writeHead();
        write("<main>\n<section id=\"sets\" aria-labelledby=\"sets-title\">\n<h2 id=\"sets-title\">Sets</h2>\n");
        writeChoices();
        write(content.sets.empty() ? "<p>No set was found.</p>\n" : "");
        write("<div class=\"sets\">\n");
        for (size_t i = 0; i < content.sets.size(); ++i) {
            writeSet(i);
        }
        write("</div>\n</section>\n");
        writePhotos("singles", "Single photographs", content.singles);
        writePhotos("unknown", "Photographs without a known time or exposure time", content.unknown);
        writeProblems();
        write("</main>\n</body>\n</html>\n");
    }

  private:
    void writeHead() {
        write(DocumentType);
        write(MadeByTvmeta);
        write(PageStart);
        write(titleOf(content));
        write("</title>\n<style>");
        write(ReportStyle);
        write(cameras.rules() + sizes.rules());
        write("</style>\n</head>\n<body>\n<a class=\"skip\" href=\"#sets\">Skip to the sets</a>\n<header>\n"
              "<h1>" +
              titleOf(content) + "</h1>\n");
        const std::array<std::tuple<const char*, std::string, size_t>, 4> parts = {{
            {"#sets", counted(content.sets.size(), "set"), content.sets.size()},
            {"#singles", counted(content.singles.size(), "single photograph"), content.singles.size()},
            {"#unknown", counted(content.unknown.size(), "photograph") + " without a known time or exposure time",
             content.unknown.size()},
            {"#problems", counted(content.problems.size(), "problem"), content.problems.size()},
        }};
        std::string items;
        for (const auto& [url, text, count] : parts) {
            items += count == 0 ? "" : element("li", element("a", text, attribute("href", url)));
        }
        write(element("nav", element("ul", items), attribute("aria-label", "Contents")) + "\n</header>\n");
    }

    // CSS implements sorting too; browsers without support show neither.
    void writeChoices() {
        if (content.sets.size() < 2) {
            return;
        }
        const auto order = [](const std::string& id, const std::string& words) {
            return element("label", "<input type=\"radio\" name=\"order\"" + attribute("id", "by-" + id) +
                                        (id == "time" ? " checked" : "") + "> " + words);
        };
        write("<div class=\"choices\">\n" +
              element("fieldset", element("legend", "Order") + order("time", "Capture time") +
                                      order("range", "Widest range first") + order("size", "Most photographs first")) +
              "\n" + cameras.controls() + sizes.controls() + "</div>\n");
    }

    void writeSet(size_t index) {
        const PageSet& set = content.sets[index];
        const std::string id = "set-" + std::to_string(index + 1);
        const std::string order = "--range: -" + std::to_string(static_cast<int64_t>(set.found->range() * 100)) +
                                  "; --size: -" + std::to_string(set.photos.size());
        write("<article" + attribute("class", "set " + cameras.classOf(index) + " " + sizes.classOf(index)) +
              attribute("id", id) + attribute("style", order) + attribute("aria-labelledby", id + "-title") + ">\n");
        const std::string missing =
            set.photos.size() < set.found->expectedPhotos ? " of " + std::to_string(set.found->expectedPhotos) : "";
        const std::string name = "Set " + std::to_string(index + 1) + (set.found->isGuess() ? "?" : "");
        write(element("h3",
                      element("a", name, attribute("href", "#" + id)) + ": " + std::to_string(set.photos.size()) +
                          missing + " photographs, " + offsetsText(set.found->offsets) + " stops",
                      attribute("id", id + "-title")) +
              "\n");
        write(element("p", markup(setFacts(set)), attribute("class", "facts")) + "\n");
        if (const std::string evidence = tvmeta_evidence_text(set.found->evidence); !evidence.empty()) {
            write(element("p", markup("Evidence: " + evidence), attribute("class", "facts")) + "\n");
        }
        write("<div class=\"view\">\n");
        writeStrip(set, id);
        write(exposureDiagram(set.found->offsets) + "</div>\n");
        write(exposureTable(set) + "</article>\n");
    }

    void writeStrip(const PageSet& set, const std::string& id) {
        std::vector<size_t> order(set.photos.size());
        std::iota(order.begin(), order.end(), size_t{0});
        std::ranges::stable_sort(order, {}, [&](size_t i) { return set.found->offsets[i]; });
        write("<ol class=\"strip\" aria-label=\"Photographs from dark to bright\">\n");
        for (const size_t i : order) {
            const PagePhoto& photo = set.photos[i];
            const std::string facts =
                element("b", offsetText(set.found->offsets[i])) + " " + markup(photo.exposureTime);
            write(photoItem(photo, facts, id + "-" + std::to_string(i + 1)));
        }
        write("</ol>\n");
    }

    void writePhotos(const std::string& id, const std::string& title, const std::vector<PagePhoto>& photos) {
        if (photos.empty()) {
            return;
        }
        startSection(id, title);
        write("<ol class=\"strip\">\n");
        for (size_t i = 0; i < photos.size(); ++i) {
            write(photoItem(photos[i], markup(photoFacts(photos[i])), id + "-" + std::to_string(i + 1)));
        }
        write("</ol>\n</section>\n");
    }

    void writeProblems() {
        if (content.problems.empty()) {
            return;
        }
        startSection("problems", "Files that could not be read whole");
        write("<ul>\n");
        for (const std::string& problem : content.problems) {
            write(element("li", markup(problem)) + "\n");
        }
        write("</ul>\n</section>\n");
    }

    void startSection(const std::string& id, const std::string& title) {
        write("<section" + attribute("id", id) + attribute("aria-labelledby", id + "-title") + ">\n" +
              element("h2", title, attribute("id", id + "-title")) + "\n");
    }

    const PageContent& content;
    const std::function<void(std::string_view)>& write;
    SetFilter cameras;
    SetFilter sizes;
};

} // namespace

void writeReport(const PageContent& content, const std::function<void(std::string_view)>& write) {
    ReportPage(content, write).writeAll();
}
