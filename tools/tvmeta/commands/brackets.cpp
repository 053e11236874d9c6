// tvmeta brackets: the bracketed sets among photographs.

#include "commands/brackets.h"
#include "base/failure.h"
#include "base/numbers.h"
#include "base/text.h"
#include "base/words.h"
#include "commands/set_placement.h"
#include "output/records.h"
#include "output/table.h"
#include "photographs/fields.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <iterator>
#include <memory>

namespace {

using nlohmann::ordered_json;

struct Options {
    BracketOptions input;
    bool json = false;
    bool csv = false;
    bool files0 = false;
    PlacementOptions placement;
};

std::string shotsText(const PhotoSet& set) {
    const std::string shots = std::to_string(set.photos.size());
    return set.photos.size() < set.expectedPhotos ? shots + " of " + std::to_string(set.expectedPhotos) : shots;
}

std::string focalLengthText(const Photo& photo) {
    return photo.has(TVMETA_FOCAL_LENGTH) ? plainWords(quotient(photo.record.focalLength)) + " mm" : "";
}

void printSets(const std::vector<PhotoSet>& sets) {
    std::vector<Column> columns = {{.heading = "Set", .isNumeric = true},
                                   {.heading = "First file", .cut = Column::Cut::Start},
                                   {.heading = "Shots"},
                                   {.heading = "By"},
                                   {.heading = "Offsets", .cut = Column::Cut::End},
                                   {.heading = "Range", .isNumeric = true},
                                   {.heading = "Taken"},
                                   {.heading = "Camera", .cut = Column::Cut::End},
                                   {.heading = "Focal", .isNumeric = true}};
    const bool haveGuess = std::ranges::any_of(sets, &PhotoSet::isGuess);
    for (const PhotoSet& set : sets) {
        const Photo& first = *set.photos.front();
        const std::string mark = set.isGuess() ? "?" : haveGuess ? " " : ""; // numbers stay below each other
        addRow(columns, {std::to_string(columns.front().cells.size() + 1) + mark, printable(first.path), shotsText(set),
                         set.confidenceWord(), offsetsText(set.offsets), stopsText(set.range()) + " EV",
                         printable(takenText(first)), printable(first.record.model), focalLengthText(first)});
    }
    if (!sets.empty()) {
        printTable(columns, "--json or --csv");
    }
}

void printSummary(const PhotoSets& found) {
    size_t inSets = 0;
    for (const PhotoSet& set : found.sets) {
        inSets += set.photos.size();
    }
    std::cout << (found.sets.empty() ? "" : "\n") << counted(found.sets.size(), "set") << " of "
              << counted(inSets, "photograph") << ", " << counted(found.singles.size(), "single photograph") << "\n";
    if (!found.unknown.empty()) {
        std::cout << counted(found.unknown.size(), "photograph") << " without a known time or exposure time:\n";
    }
    for (const Photo* photo : found.unknown) {
        std::cout << "  " << printable(photo->path) << "\n";
    }
}

// Rounded to hundredths, without negative zero.
double rounded(double value) {
    return std::round(value * 100) / 100 + 0.0;
}

// Most focal lengths are integers and are printed without decimals.
ordered_json number(double exact) {
    const bool isWhole = exact == std::floor(exact) && exact < 1e9;
    return isWhole ? ordered_json(static_cast<int64_t>(exact)) : ordered_json(exact);
}

void printJson(const PhotoSets& found) {
    size_t count = 0;
    for (const PhotoSet& set : found.sets) {
        const Photo& first = *set.photos.front();
        ordered_json object = {{"set", ++count}, {"files", ordered_json::array()}};
        std::ranges::for_each(set.photos, [&](const Photo* photo) { object["files"].push_back(photo->path); });
        for (const std::vector<const Photo*>& files : set.files) {
            ordered_json& shot = object["shots"].emplace_back(ordered_json::array());
            std::ranges::for_each(files, [&](const Photo* file) { shot.push_back(file->path); });
        }
        for (const Photo* photo : set.photos) {
            const std::optional<double> value = exposureValue(*photo);
            object["ev"].push_back(value ? ordered_json(rounded(*value)) : ordered_json());
        }
        std::ranges::for_each(set.offsets, [&](double stops) { object["offsets"].push_back(rounded(stops)); });
        object["range"] = rounded(set.range());
        object["confidence"] = set.confidenceWord();
        object["evidence"] = tvmeta_evidence_text(set.evidence);
        if (set.expectedPhotos > 0) {
            object["complete"] = set.photos.size() >= set.expectedPhotos;
        }
        object["taken"] = takenText(first);
        if (first.has(TVMETA_MODEL)) {
            object["camera"] = first.record.model;
        }
        if (first.has(TVMETA_FOCAL_LENGTH)) {
            object["focalLength"] = number(quotient(first.record.focalLength));
        }
        std::cout << object.dump(-1, ' ', true, ordered_json::error_handler_t::replace) << "\n";
    }
}

// Each name ends in NUL; an empty name is between two sets.
void printFiles0(const PhotoSets& found) {
    for (const PhotoSet& set : found.sets) {
        if (&set != &found.sets.front()) {
            std::cout << '\0';
        }
        for (const std::vector<const Photo*>& files : set.files) {
            std::ranges::for_each(files, [](const Photo* file) { std::cout << file->path << '\0'; });
        }
    }
}

std::string textUnlessZero(double value) {
    return value > 0 ? plainWords(value) : "";
}

// A photograph in a set; the set is 0 and the words empty for others.
Record recordOf(const Photo& photo, size_t set, const std::string& offset, const std::string& confidence) {
    const std::optional<double> ev = exposureValue(photo);
    const tvmeta_Photo& record = photo.record;
    return {{"set", set > 0 ? Value(static_cast<int64_t>(set)) : Value()},
            {"file", photo.path},
            {"ev", ev ? hundredths(rounded(*ev)) : ""},
            {"offset", offset},
            {"taken", takenText(photo)},
            {"exposureTime", textUnlessZero(quotient(record.exposureTime))},
            {"fNumber", textUnlessZero(quotient(record.fNumber))},
            {"isoSpeed", record.isoSpeed > 0 ? std::to_string(record.isoSpeed) : ""},
            {"camera", record.model},
            {"focalLength", textUnlessZero(quotient(record.focalLength))},
            {"confidence", confidence}};
}

// One record per photograph, those of sets first.
void printCsv(const PhotoSets& found) {
    std::cout << csvHeader(recordOf({}, 0, "", ""));
    size_t count = 0;
    for (const PhotoSet& set : found.sets) {
        ++count;
        for (size_t i = 0; i < set.photos.size(); ++i) {
            std::cout << csvRecord(
                recordOf(*set.photos[i], count, hundredths(rounded(set.offsets[i])), set.confidenceWord()));
        }
    }
    for (const std::vector<const Photo*>* photos : {&found.singles, &found.unknown}) {
        std::ranges::for_each(*photos, [](const Photo* photo) { std::cout << csvRecord(recordOf(*photo, 0, "", "")); });
    }
}

void showBrackets(const Options& options) {
    if (!options.placement.undo.empty()) {
        return undoPlacement(options.placement);
    }
    if (options.input.names.empty()) {
        throw WrongCommandLine("expected PATH");
    }
    if (!options.placement.folder.empty()) {
        return placeSets(options.input, options.placement);
    }
    const PhotoSets found = readPhotoSets(options.input.names, options.input.recursive, options.input.rules);
    if (options.json) {
        printJson(found);
    } else if (options.csv) {
        printCsv(found);
    } else if (options.files0) {
        printFiles0(found);
    } else {
        printSets(found.sets);
        printSummary(found);
        printAdvice(found, options.input.rules);
    }
    requireAllRead(found.reading);
}

} // namespace

void printAdvice(const PhotoSets& found, const BracketRules& rules) {
    if (const std::optional<LongerGap> gap = longerGap(found, rules)) {
        std::cout << gap->photographs << " photographs look like parts of series with longer pauses; --gap "
                  << gap->seconds << " joins them\n";
    }
}

std::vector<Option> bracketOptions(BracketOptions& options) {
    constexpr double MaxGap = 86400;
    constexpr double MaxCount = 100;
    return {
        Option({"PATH"}, &options.names, "", "Photographs; with -r also folders",
               {.isRequired = true, .isFileList = true}),
        Option({"-r", "--recursive"}, &options.recursive, "", "Read the photographs in folders and subfolders"),
        Option({"--gap"}, &options.rules.gap, "SECONDS", "Maximum pause within a set (default: learnt)",
               {.range = {0, MaxGap}}),
        Option({"--count"}, &options.rules.count, "N", "Photographs per set (default: found)",
               {.range = {2, MaxCount}}),
    };
}

Command bracketsCommand() {
    const auto options = std::make_shared<Options>();
    Command command = {
        .name = "brackets",
        .purpose = "Find the bracketed sets among photographs",
        .options = bracketOptions(options->input),
        .footer = "Sets are found by what cameras record: exposure mode, bias, exposure, time.\n\n"
                  "The pattern of --name can contain\n  " +
                  namePlaceholders() +
                  "\n\n"
                  "Examples:\n"
                  "  tvmeta brackets -r photos\n"
                  "  tvmeta brackets -r photos --into sets\n"
                  "  tvmeta brackets -r photos --into sets --move --name '{date} {number}'\n"
                  "  tvmeta brackets -r photos --json | jq -r 'select(.range > 4).files[]'",
        .run = [options] { showBrackets(*options); },
    };
    const Option forms[] = {
        Option({"--json"}, &options->json, "", "Write JSON Lines, one object per set"),
        Option({"--csv"}, &options->csv, "", "Write CSV, one line per photograph", {.excludes = {"--json"}}),
        Option({"--files0"}, &options->files0, "", "Write file names with a NUL after each, and one\nmore between sets",
               {.excludes = {"--json", "--csv"}}),
    };
    command.options.front().rules.isRequired = false; // not with --undo
    command.options.insert(command.options.end(), std::begin(forms), std::end(forms));
    const std::vector<Option> placement = placementOptions(options->placement, {"--json", "--csv", "--files0"});
    command.options.insert(command.options.end(), placement.begin(), placement.end());
    return command;
}
