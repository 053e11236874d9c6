// tvmeta info: the records of photographs, as a list, a table or JSON.

#include "commands/commands.h"
#include "output/failure.h"
#include "output/table.h"
#include "output/terminal.h"
#include "output/text.h"
#include "photographs/fields.h"
#include "photographs/photo_files.h"

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

using nlohmann::ordered_json;

const std::vector<std::string> TableKeys = {"file",     "dateTimeOriginal", "exposureTime", "fNumber",
                                            "isoSpeed", "focalLength",      "model"};

struct Options {
    std::vector<std::string> names;
    std::vector<std::string> fields;
    bool recursive = false;
    bool json = false;
    bool list = false;
};

struct Reading {
    std::vector<Shot> shots;
    size_t failures = 0;
    size_t files = 0;
};

Reading readShots(const Options& options) {
    Progress progress;
    const PhotoFiles found = findPhotoFiles(options.names, options.recursive, progress);
    Reading reading = {{}, found.failures, found.paths.size() + found.failures};
    size_t done = 0;
    for (const std::string& path : found.paths) {
        progress.done(done++, found.paths.size());
        try {
            const Photo photo = readRecord(path);
            if (!photo.damage.empty()) {
                complain(path + ": " + photo.damage);
                ++reading.failures;
            }
            reading.shots.push_back({photo, captureTime(photo.info), std::nullopt});
        } catch (const Failure& failure) {
            complain(failure.what());
            ++reading.failures;
        }
    }
    return reading;
}

// By capture time, photographs without one last, and then by name.
void sortShots(std::vector<Shot>& shots) {
    const auto key = [](const Shot& shot) {
        return std::make_tuple(!shot.taken, shot.taken.value_or(0), std::string_view(shot.photo.path));
    };
    std::ranges::stable_sort(shots, std::less<>(), key);
    if (shots.size() > 1) {
        const std::optional<std::time_t> first = shots.front().taken;
        std::ranges::for_each(shots, [&](Shot& shot) { shot.first = first; });
    }
}

void printList(const Shot& shot, const FieldList& fields) {
    std::cout << printable(shot.photo.path) << "\n";
    for (const Field* field : fields) {
        const ordered_json value = field->value(shot);
        if (!value.is_null() && field->form != Form::Path) { // the path stands above
            std::cout << "  " << std::left << std::setw(24) << field->label << listText(*field, value) << "\n";
        }
    }
}

Column columnOf(const Field& field, const std::vector<Shot>& shots) {
    Column column = {.heading = field.heading};
    column.cut = field.form == Form::Path   ? Column::Cut::Start
                 : field.form == Form::Text ? Column::Cut::End
                                            : Column::Cut::Nowhere;
    for (const Shot& shot : shots) {
        const ordered_json value = field.value(shot);
        column.isNumeric = column.isNumeric || value.is_number();
        column.cells.push_back(value.is_null() ? "" : cellText(field, value));
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

// One line. Texts of photographs and file names come in any encoding, JSON is UTF-8: other bytes become U+FFFD. In
// ASCII no reader and no terminal can take it for anything else.
void printJson(const Shot& shot, const FieldList& fields) {
    ordered_json object = ordered_json::object();
    for (const Field* field : fields) {
        const ordered_json value = field->value(shot);
        if (!value.is_null()) {
            object[field->key] = value;
        }
    }
    std::cout << object.dump(-1, ' ', true, ordered_json::error_handler_t::replace) << "\n";
}

FieldList chosenFields(const Options& options, bool isTable) {
    if (!options.fields.empty()) {
        return fieldsNamed(options.fields);
    }
    if (isTable) {
        return fieldsNamed(TableKeys);
    }
    FieldList fields;
    std::ranges::transform(allFields(), std::back_inserter(fields), [](const Field& field) { return &field; });
    return fields;
}

void showInfo(const Options& options) {
    const bool isTable = !options.json && !options.list && (options.names.size() > 1 || options.recursive);
    const FieldList fields = chosenFields(options, isTable);
    Reading reading = readShots(options);
    sortShots(reading.shots);
    if (isTable && !reading.shots.empty()) {
        printShotTable(reading.shots, fields);
    } else {
        std::ranges::for_each(reading.shots,
                              [&](const Shot& shot) { (options.json ? printJson : printList)(shot, fields); });
    }
    if (reading.files == 0) {
        complain("there is no JPEG, TIFF or PSD file");
    }
    if (reading.failures > 0 && reading.files > 1) {
        throw Failure(std::to_string(reading.failures) + " of " + std::to_string(reading.files) +
                      " files could not be read whole");
    }
    if (reading.failures > 0) {
        throw Reported();
    }
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
