// tvmeta info: the records of photographs, as a list, a table, JSON or CSV.

#include "base/failure.h"
#include "base/mapped.h"
#include "base/text.h"
#include "commands/command_line.h"
#include "commands/completion.h"
#include "output/records.h"
#include "output/table.h"
#include "photographs/field_filter.h"
#include "photographs/fields.h"
#include "photographs/read_photos.h"

#include <algorithm>
#include <iomanip>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace {

const std::vector<std::string> TableKeys = {"file",     "dateTimeOriginal", "exposureTime", "fNumber",
                                            "isoSpeed", "focalLength",      "model"};

struct Options {
    std::vector<std::string> names;
    std::vector<std::string> fields;
    std::vector<std::string> conditions;
    std::string sort;
    bool recursive = false;
    bool json = false;
    bool csv = false;
    bool list = false;
};

enum class Format { List, Table, Json, Csv };

Format formatOf(const Options& options) {
    return options.json                                    ? Format::Json
           : options.csv                                   ? Format::Csv
           : options.list                                  ? Format::List
           : options.names.size() > 1 || options.recursive ? Format::Table
                                                           : Format::List;
}

// The photographs by capture time.
std::vector<Shot> shotsOf(std::vector<Photo> photos) {
    sortByCaptureTime(photos);
    const std::optional<CivilTime> first = photos.size() > 1 ? photos.front().taken : std::nullopt;
    std::vector<Shot> shots;
    for (Photo& photo : photos) {
        shots.push_back({std::move(photo), first});
    }
    return shots;
}

void printList(const Shot& shot, const FieldList& fields) {
    std::cout << printable(shot.photo.path) << "\n";
    for (const Field* field : fields) {
        const Value value = field->value(shot);
        if (!isMissing(value) && field->kind != Field::Kind::Path) { // the path is the title
            std::cout << "  " << std::left << std::setw(24) << field->label << readable(*field, value) << "\n";
        }
    }
}

// A damaged text must not widen the table: a date has 19 characters, a name rarely more than 40.
std::string cellText(const Field& field, const Value& value) {
    constexpr int DateWidth = 19;
    constexpr int TextWidth = 40;
    std::string cell = isMissing(value) ? "" : readable(field, value);
    return field.kind == Field::Kind::Date   ? withoutEnd(cell, DateWidth)
           : field.kind == Field::Kind::Text ? withoutEnd(cell, TextWidth)
                                             : cell;
}

Column columnOf(const Field& field, const std::vector<Shot>& shots) {
    Column column = {.heading = field.heading};
    column.cut = field.kind == Field::Kind::Path   ? Column::Cut::Start
                 : field.kind == Field::Kind::Text ? Column::Cut::End
                                                   : Column::Cut::Nowhere;
    for (const Shot& shot : shots) {
        const Value value = field.value(shot);
        column.isNumeric = column.isNumeric || isNumber(value);
        column.cells.push_back(cellText(field, value));
    }
    return column;
}

void printShotTable(const std::vector<Shot>& shots, const FieldList& fields) {
    const auto column = [&](const Field* field) { return columnOf(*field, shots); };
    printTable(mapped<Column>(fields, column), "--list or --json");
}

Record recordOf(const Shot& shot, const FieldList& fields) {
    return mapped<NamedValue>(fields, [&](const Field* field) { return NamedValue{field->key, field->value(shot)}; });
}

void printShot(Format format, const Shot& shot, const FieldList& fields) {
    switch (format) {
    case Format::Json:
        std::cout << jsonObject(recordOf(shot, fields)) << std::endl; // flushed, so that a reader gets it immediately
        return;
    case Format::Csv:
        std::cout << csvRecord(recordOf(shot, fields)) << std::flush;
        return;
    default:
        return printList(shot, fields);
    }
}

constexpr std::string_view SinceFirst = "secondsSinceFirst";
constexpr std::string_view GainMap = "gainMap";

// JSON and CSV are written while files are being read, unless a field or the order depends on all files.
bool isStreamed(const Options& options, Format format) {
    const auto isSinceFirst = [](const std::string& text) { return text.starts_with(SinceFirst); };
    return (format == Format::Json || format == Format::Csv) && options.sort.empty() &&
           std::ranges::none_of(options.fields, isSinceFirst) && std::ranges::none_of(options.conditions, isSinceFirst);
}

FieldList chosenFields(const Options& options, Format format) {
    FieldList fields;
    const bool areAllNamed = options.fields == std::vector<std::string>{"all"};
    if (areAllNamed || (options.fields.empty() && format != Format::Table)) {
        for (const Field& field : allFields()) {
            const bool isLate = field.key == SinceFirst && isStreamed(options, format);
            const bool isSlow =
                field.key == GainMap && format != Format::List && !areAllNamed; // reads 256 KiB of a JPEG
            if (!isLate && !isSlow) {
                fields.push_back(&field);
            }
        }
        return fields;
    }
    for (const std::string& key : options.fields.empty() ? TableKeys : options.fields) {
        fields.push_back(fieldNamed(key));
        if (format == Format::Json && key == "file") {
            fields.push_back(fieldNamed("fileBytes"));
        }
    }
    return fields;
}

// Sorts by a field, stably; "-" before its key: descending. Photographs without a value come last.
void sortShots(std::vector<Shot>& shots, const std::string& sort) {
    const bool isDescending = sort.starts_with('-');
    const Field* field = fieldNamed(sort.substr(isDescending ? 1 : 0));
    std::ranges::stable_sort(shots, [&](const Shot& a, const Shot& b) {
        const Value first = field->value(a), second = field->value(b);
        if (isMissing(first) || isMissing(second)) {
            return !isMissing(first);
        }
        return isDescending ? compareValues(first, second) > 0 : compareValues(first, second) < 0;
    });
}

bool meetsAll(const std::vector<FieldFilter>& filters, const Shot& shot) {
    return std::ranges::all_of(filters, [&](const FieldFilter& filter) { return filter.accepts(shot); });
}

Reading showStreamed(const Options& options, Format format, const FieldList& fields,
                     const std::vector<FieldFilter>& filters) {
    return readPhotos(options.names, options.recursive, {.texts = true}, [&](Photo&& photo) {
        const Shot shot = {std::move(photo)};
        if (meetsAll(filters, shot)) {
            printShot(format, shot, fields);
        }
    });
}

Reading showTogether(const Options& options, Format format, const FieldList& fields,
                     const std::vector<FieldFilter>& filters) {
    std::vector<Photo> photos;
    const Reading reading = readPhotos(options.names, options.recursive, {.texts = true},
                                       [&](Photo&& photo) { photos.push_back(std::move(photo)); });
    std::vector<Shot> shots = shotsOf(std::move(photos));
    std::erase_if(shots, [&](const Shot& shot) { return !meetsAll(filters, shot); });
    if (!options.sort.empty()) {
        sortShots(shots, options.sort);
    }
    if (format == Format::Table && !shots.empty()) {
        printShotTable(shots, fields);
    } else {
        std::ranges::for_each(shots, [&](const Shot& shot) { printShot(format, shot, fields); });
    }
    return reading;
}

void showInfo(const Options& options) {
    const Format format = formatOf(options);
    const FieldList fields = chosenFields(options, format);
    const std::vector<FieldFilter> filters(options.conditions.begin(), options.conditions.end());
    if (!options.sort.empty()) {
        fieldNamed(options.sort.substr(options.sort.starts_with('-') ? 1 : 0)); // before any file is read
    }
    if (format == Format::Csv) {
        std::cout << csvHeader(mapped<NamedValue>(fields, [](const Field* field) {
            return NamedValue{field->key, {}};
        }));
    }
    requireAllRead((isStreamed(options, format) ? showStreamed : showTogether)(options, format, fields, filters));
}

} // namespace

Command infoCommand() {
    const auto options = std::make_shared<Options>();
    return {
        .name = "info",
        .purpose = "Show the metadata of photographs",
        .options =
            {
                Option({"FILE"}, &options->names, "", "Photographs; with -r also folders",
                       {.isRequired = true, .isFileList = true}),
                Option({"-r", "--recursive"}, &options->recursive, "",
                       "Read the photographs in folders and subfolders"),
                Option({"--json"}, &options->json, "", "Write JSON Lines, one object per photograph"),
                Option({"--csv"}, &options->csv, "", "Write CSV for spreadsheets (RFC 4180)", {.excludes = {"--json"}}),
                Option({"--list"}, &options->list, "", "Write lists instead of a table",
                       {.excludes = {"--json", "--csv"}}),
                Option({"--fields"}, &options->fields, "NAME,...", "Fields to show, from the list below, or 'all'",
                       {.separator = ',', .suggest = suggestFields}),
                Option({"--sort"}, &options->sort, "NAME",
                       "Sort by a field (-NAME: descending)\ninstead of capture time", {.suggest = suggestOrder}),
                Option({"--filter"}, &options->conditions, "CONDITION",
                       "Show photographs that meet all conditions with\n=, !=, <, <=, > or >=, such as "
                       "'isoSpeed>800'",
                       {.suggest = suggestFields}),
            },
        .footer = "One photograph is shown as a list, several as a table by capture time\n"
                  "that fits the terminal. Fields without a value are omitted.\n\n" +
                  helpList("Fields", fieldKeys()) +
                  "Examples:\n"
                  "  tvmeta info scene.jpg\n"
                  "  tvmeta info -r photos --fields file,lens,exposureTime\n"
                  "  tvmeta info -r photos --filter 'isoSpeed>800' --filter 'exposureTime<1/60'\n"
                  "  tvmeta info -r photos --csv --sort -ev100 >photos.csv\n"
                  "  tvmeta info -r photos --json | jq -r .file",
        .run = [options] { showInfo(*options); },
    };
}
