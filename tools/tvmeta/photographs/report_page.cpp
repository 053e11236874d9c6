#include "photographs/report_page.h"

#include "base/failure.h"
#include "base/markup.h"
#include "photographs/exposure_diagram.h"
#include "photographs/fields.h"
#include "photographs/natural_order.h"
#include "photographs/report_style.h"
#include "system/files.h"
#include "system/paths.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <numeric>
#include <utility>

namespace {

constexpr std::string_view DocumentType = "<!doctype html>\n";
constexpr std::string_view Start = R"(<html lang="en">
<head>
<meta charset="utf-8">
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; style-src 'unsafe-inline'; img-src data:; )"
                                   R"(base-uri 'none'; form-action 'none'">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="referrer" content="no-referrer">
<link rel="icon" href="data:,">
<title>Bracketed sets</title>
<style>)";

std::string counted(size_t count, const std::string& thing) {
    return std::to_string(count) + " " + thing + (count == 1 ? "" : "s");
}

std::string fileName(const Photo& photo) {
    return nameOf(pathOf(photo.path).filename());
}

std::string attribute(const std::string& name, const std::string& value) {
    return " " + name + "=\"" + value + "\"";
}

std::string element(const std::string& name, const std::string& content, const std::string& attributes = "") {
    return "<" + name + attributes + ">" + content + "</" + name + ">";
}

// A field as printed by the other commands; empty without a value.
std::string fieldWords(const Photo& photo, const char* key) {
    const Field& field = *fieldNamed(key);
    const Value value = field.value({photo});
    return isMissing(value) ? "" : markup(readable(field, value));
}

// The thumbnail as an image. Omitted unless it is a JPEG of a usual size.
std::string thumbnail(const Photo& photo) {
    constexpr const char* None = "no thumbnail";
    constexpr size_t MaxBytes = 1 << 18;
    constexpr int32_t MaxSide = 2048;
    const int32_t orientation = photo.record.orientation;
    const Bytes& file = photo.blocks[TVMETA_THUMBNAIL];
    tvmeta_Source source;
    tvmeta_Photo size;
    size.recordSize = sizeof size;
    tvmeta_memory(file.data(), std::ssize(file), &source);
    const auto isUsual = [](int32_t side) { return side > 0 && side <= MaxSide; };
    if (file.empty() || file.size() > MaxBytes || tvmeta_read_photo(&source, &size) != TVMETA_OK ||
        size.format != TVMETA_FORMAT_JPEG || !isUsual(size.width) || !isUsual(size.height)) {
        return None;
    }
    const bool isTurned = orientation >= 2 && orientation <= 8;
    return "<img" + attribute("alt", "Thumbnail of " + markup(fileName(photo))) +
           (isTurned ? attribute("class", "o" + std::to_string(orientation)) : "") +
           attribute("src", "data:image/jpeg;base64," + base64(file)) + ">";
}

struct TableColumn {
    const char* heading;
    const char* key; // of the field; null for the offset in a set
    bool isNumeric = true;
};
constexpr std::array TableColumns = {
    TableColumn{"Offset", nullptr},
    TableColumn{"EV", "ev100"},
    TableColumn{"Time", "exposureTime"},
    TableColumn{"Stop", "fNumber"},
    TableColumn{"ISO", "isoSpeed"},
    TableColumn{"Focal", "focalLength"},
    TableColumn{"Taken", "dateTimeOriginal", false},
};

std::string tableHead(const std::string& caption, bool hasOffsets) {
    std::string row = element("th", "File", attribute("scope", "col"));
    for (const TableColumn& column : TableColumns) {
        if (column.key != nullptr || hasOffsets) {
            row += element("th", column.heading, attribute("scope", "col") + (column.isNumeric ? " class=\"n\"" : ""));
        }
    }
    return "<div class=\"scroll\"><table>\n" + element("caption", caption) + element("thead", element("tr", row)) +
           "<tbody>\n";
}

// Only the file name: the facts of the set contain the folder.
std::string tableRow(const Photo& photo, const double* offset) {
    std::string row =
        element("th", markup(offset == nullptr ? photo.path : fileName(photo)), attribute("scope", "row"));
    for (const TableColumn& column : TableColumns) {
        if (column.key != nullptr || offset != nullptr) {
            row += element("td", column.key != nullptr ? fieldWords(photo, column.key) : offsetText(*offset),
                           column.isNumeric ? " class=\"n\"" : "");
        }
    }
    return element("tr", row) + "\n";
}

constexpr const char* TableEnd = "</tbody></table></div>\n";

// Checkboxes that hide the sets without a property. CSS implements them, because the page has no scripts.
class Filter {
  public:
    Filter(std::string words, std::string prefix, std::vector<std::string> properties)
        : legend(std::move(words)), id(std::move(prefix)), ofSets(std::move(properties)), choices(ofSets) {
        std::ranges::sort(choices, naturalLess);
        choices.erase(std::unique(choices.begin(), choices.end()), choices.end());
    }

    // The class of a set.
    std::string classOf(size_t set) const {
        return id + std::to_string(std::ranges::find(choices, ofSets[set]) - choices.begin());
    }

    std::string rules() const {
        std::string text;
        for (size_t i = 0; i < choices.size(); ++i) {
            const std::string name = id + std::to_string(i);
            text += "body:has(#" + name + ":not(:checked)) ." + name + " { display: none; }\n";
        }
        return text;
    }

    std::string controls() const {
        std::string text;
        for (size_t i = 0; i < choices.size(); ++i) {
            text += element("label", "<input type=\"checkbox\" checked" + attribute("id", id + std::to_string(i)) +
                                         "> " + markup(choices[i]));
        }
        return choices.size() < 2 ? "" : element("fieldset", element("legend", legend) + text) + "\n";
    }

  private:
    std::string legend;
    std::string id;
    std::vector<std::string> ofSets;
    std::vector<std::string> choices;
};

template <typename Property>
std::vector<std::string> ofSets(const PhotoSets& found, Property property) {
    std::vector<std::string> properties;
    std::ranges::transform(found.sets, std::back_inserter(properties), property);
    return properties;
}

std::string cameraOf(const PhotoSet& set) {
    const std::string camera = set.photos.front()->record.model;
    return camera.empty() ? "unknown camera" : camera;
}

std::string sizeOf(const PhotoSet& set) {
    return counted(set.photos.size(), "photograph");
}

class ReportPage {
  public:
    ReportPage(const PhotoSets& photographs, const std::function<void(std::string_view)>& output)
        : found(photographs), write(output), cameras("Cameras", "camera", ofSets(found, cameraOf)),
          sizes("Photographs of a set", "size", ofSets(found, sizeOf)) {}

    void writeAll() {
        writeHead();
        write("<main>\n<section id=\"sets\" aria-labelledby=\"sets-title\">\n<h2 id=\"sets-title\">Sets</h2>\n");
        writeChoices();
        write("<div class=\"sets\">\n");
        for (size_t i = 0; i < found.sets.size(); ++i) {
            writeSet(i);
        }
        write("</div>\n</section>\n");
        writePhotos("singles", "Single photographs", found.singles);
        writePhotos("unknown", "Photographs without a known time or exposure", found.unknown);
        writeProblems();
        write("</main>\n</body>\n</html>\n");
    }

  private:
    void writeHead() {
        write(DocumentType);
        write(MadeByTvmeta);
        write(Start);
        write(ReportStyle);
        write(cameras.rules() + sizes.rules());
        write("</style>\n</head>\n<body>\n<a class=\"skip\" href=\"#sets\">Skip to the sets</a>\n<header>\n"
              "<h1>Bracketed sets</h1>\n");
        const std::array<std::tuple<const char*, const char*, size_t>, 4> parts = {{
            {"sets", "set", found.sets.size()},
            {"singles", "single photograph", found.singles.size()},
            {"unknown", "photograph without a known time or exposure", found.unknown.size()},
            {"problems", "problem", found.reading.problems.size()},
        }};
        std::string items;
        for (const auto& [id, words, count] : parts) {
            const std::string text = std::string(words).starts_with("photograph ") && count != 1
                                         ? std::to_string(count) + " photographs without a known time or exposure"
                                         : counted(count, words);
            items += count == 0 ? "" : element("li", element("a", text, attribute("href", "#" + std::string(id))));
        }
        write(element("nav", element("ul", items), attribute("aria-label", "Contents")) + "\n</header>\n");
    }

    // CSS implements sorting too; browsers without support show neither.
    void writeChoices() {
        if (found.sets.size() < 2) {
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
        const PhotoSet& set = found.sets[index];
        const std::string id = "set-" + std::to_string(index + 1);
        const std::string order = "--range: -" + std::to_string(static_cast<int64_t>(set.range() * 100)) +
                                  "; --size: -" + std::to_string(set.photos.size());
        write("<article" + attribute("class", "set " + cameras.classOf(index) + " " + sizes.classOf(index)) +
              attribute("id", id) + attribute("style", order) + attribute("aria-labelledby", id + "-title") + ">\n");
        const std::string missing =
            set.photos.size() < set.expectedPhotos ? " of " + std::to_string(set.expectedPhotos) : "";
        const Photo& first = *set.photos.front();
        write(element("h3",
                      element("a", "Set " + std::to_string(index + 1), attribute("href", "#" + id)) + ": " +
                          std::to_string(set.photos.size()) + missing + " photographs, " + offsetsText(set) + " stops",
                      attribute("id", id + "-title")) +
              "\n");
        const std::string folder = nameOf(pathOf(first.path).parent_path());
        write(element("p",
                      fieldWords(first, "dateTimeOriginal") + ", " + markup(cameraOf(set)) +
                          (first.has(TVMETA_FOCAL_LENGTH) ? ", " + fieldWords(first, "focalLength") : "") + ", range " +
                          stopsText(set.range()) + " EV" +
                          (folder.empty() || folder == "." ? "" : ", in " + markup(folder)),
                      attribute("class", "facts")) +
              "\n");
        write("<div class=\"view\">\n");
        writeStrip(set);
        write(exposureDiagram(set) + "</div>\n");
        write(tableHead("Exposures in order of capture", true));
        for (size_t i = 0; i < set.photos.size(); ++i) {
            write(tableRow(*set.photos[i], &set.offsets[i]));
        }
        write(TableEnd);
        write("</article>\n");
    }

    void writeStrip(const PhotoSet& set) {
        std::vector<size_t> order(set.photos.size());
        std::iota(order.begin(), order.end(), size_t{0});
        std::ranges::stable_sort(order, {}, [&](size_t i) { return set.offsets[i]; });
        write("<ol class=\"strip\" aria-label=\"Photographs from dark to bright\">\n");
        for (const size_t i : order) {
            const Photo& photo = *set.photos[i];
            const std::string caption = element("b", offsetText(set.offsets[i])) + " " +
                                        fieldWords(photo, "exposureTime") + "<br>" + markup(fileName(photo));
            write("<li><figure><div class=\"frame\">");
            write(thumbnail(photo));
            write("</div>" + element("figcaption", caption) + "</figure></li>\n");
        }
        write("</ol>\n");
    }

    void writePhotos(const std::string& id, const std::string& title, const std::vector<const Photo*>& photos) {
        if (photos.empty()) {
            return;
        }
        startSection(id, title);
        write(tableHead(counted(photos.size(), "photograph"), false));
        std::ranges::for_each(photos, [&](const Photo* photo) { write(tableRow(*photo, nullptr)); });
        write(TableEnd);
        write("</section>\n");
    }

    void writeProblems() {
        if (found.reading.problems.empty()) {
            return;
        }
        startSection("problems", "Files that could not be read whole");
        write("<ul>\n");
        for (const std::string& problem : found.reading.problems) {
            write(element("li", markup(problem)) + "\n");
        }
        write("</ul>\n</section>\n");
    }

    void startSection(const std::string& id, const std::string& title) {
        write("<section" + attribute("id", id) + attribute("aria-labelledby", id + "-title") + ">\n" +
              element("h2", title, attribute("id", id + "-title")) + "\n");
    }

    const PhotoSets& found;
    const std::function<void(std::string_view)>& write;
    Filter cameras;
    Filter sizes;
};

} // namespace

void writeReport(const PhotoSets& found, const std::function<void(std::string_view)>& write) {
    ReportPage(found, write).writeAll();
}
