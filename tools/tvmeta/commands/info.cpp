// tvmeta info: the records of photographs, as a list, a table or JSON.

#include "commands/commands.h"
#include "output/failure.h"
#include "output/json.h"
#include "output/table.h"
#include "output/terminal.h"
#include "output/text.h"
#include "photographs/fields.h"
#include "photographs/read_photos.h"

#include <algorithm>
#include <functional>
#include <iomanip>
#include <iostream>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

namespace {

const std::vector<std::string> TableKeys = {"file",     "dateTimeOriginal", "exposureTime", "fNumber",
                                            "isoSpeed", "focalLength",      "model"};

struct Options {
    std::vector<std::string> names;
    std::vector<std::string> fields;
    bool recursive = false;
    bool json = false;
    bool list = false;
};

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
    std::vector<Column> columns;
    for (const Field* field : fields) {
        columns.push_back(columnOf(*field, shots));
    }
    const std::optional<int> width = outputWidth();
    if (const size_t left = printTable(columns, width); left > 0) {
        complain(std::to_string(left) + " of " + std::to_string(columns.size()) + " fields found no room in " +
                 std::to_string(*width) + (*width == 1 ? " column" : " columns") + "; --list and --json show all");
    }
}

void printJson(const Shot& shot, const FieldList& fields) {
    std::vector<NamedValue> members;
    for (const Field* field : fields) {
        members.push_back({field->key, field->value(shot)});
    }
    std::cout << jsonObject(members) << "\n";
}

FieldList chosenFields(const Options& options, bool isTable) {
    FieldList fields;
    if (options.fields.empty() && !isTable) {
        std::ranges::transform(allFields(), std::back_inserter(fields), [](const Field& field) { return &field; });
    } else {
        std::ranges::transform(options.fields.empty() ? TableKeys : options.fields, std::back_inserter(fields),
                               fieldNamed);
    }
    return fields;
}

void showInfo(const Options& options) {
    const bool isTable = !options.json && !options.list && (options.names.size() > 1 || options.recursive);
    const FieldList fields = chosenFields(options, isTable);
    std::vector<Photo> photos;
    const Reading reading =
        readPhotos(options.names, options.recursive, [&](Photo&& photo) { photos.push_back(std::move(photo)); });
    const std::vector<Shot> shots = shotsOf(std::move(photos));
    if (isTable && !shots.empty()) {
        printShotTable(shots, fields);
    } else {
        std::ranges::for_each(shots, [&](const Shot& shot) { (options.json ? printJson : printList)(shot, fields); });
    }
    requireAllRead(reading);
}

std::string fieldHelp() {
    std::vector<std::string> keys;
    std::ranges::transform(allFields(), std::back_inserter(keys), &Field::key);
    return helpList("Fields", keys);
}

} // namespace

void addInfoCommand(CLI::App& app) {
    CLI::App* command = app.add_subcommand("info", "Show the metadata of photographs (JPEG, TIFF, PSD)");
    const auto options = std::make_shared<Options>();
    command->add_option("FILE", options->names, "Photographs, and with -r folders of them")->required();
    command->add_flag("-r,--recursive", options->recursive, "Read the photographs in folders and subfolders");
    command->add_flag("--json", options->json, "Write one JSON object per line and photograph")->option_text(" ");
    command->add_flag("--list", options->list, "Write lists for several photographs, not a table")
        ->option_text(" ") // its place would else be taken by what it excludes
        ->excludes("--json");
    command->add_option("--fields", options->fields, "What to show of each photograph, as named below")
        ->option_text("NAME,...")
        ->delimiter(',')
        ->allow_extra_args(false);
    command->footer("One photograph is shown as a list, several as a table by capture time\n"
                    "that fits the terminal. A field that a photograph lacks is left out.\n\n" +
                    fieldHelp() +
                    "Examples:\n"
                    "  tvmeta info scene.jpg\n"
                    "  tvmeta info -r photos --fields file,lens,exposureTime\n"
                    "  tvmeta info -r photos --json | jq -r 'select(.isoSpeed > 800).file'");
    command->callback([options] { showInfo(*options); });
}
