// tvmeta stats: the luminance of an HDR picture.

#include "commands/commands.h"
#include "output/failure.h"
#include "output/text.h"
#include "pictures/image.h"

#include <tvmeta.h>

#include <nlohmann/json.hpp>

#include <cmath>
#include <iomanip>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>

namespace {

struct Statistics {
    HdrPlanes planes;
    float minimum = 0;
    float maximum = 0;
    float mean = 0;
};

// The ratio of two luminances in stops (doublings).
double stops(float from, float to) {
    return std::log2(static_cast<double>(to) / from);
}

Statistics measure(const std::string& path) {
    Statistics statistics = {loadPlanes(path)};
    const HdrPlanes& planes = statistics.planes;
    float results[3] = {};
    const int32_t result = hdrMinMax(planes.width, planes.height, planes.bytes.data(), results);
    if (result < 0) {
        throw Failure(path, explain(result, {{-4, "there is not enough memory"}}));
    }
    if (results[1] <= 0) {
        throw Failure(path, "all pixels are black");
    }
    statistics.minimum = results[0];
    statistics.maximum = results[1];
    statistics.mean = results[2];
    return statistics;
}

void printLine(const char* name, const std::string& value, double relative) {
    std::cout << "  " << std::left << std::setw(9) << name << std::setw(14) << value << std::right << std::fixed
              << std::setprecision(2) << std::setw(7) << relative << " stops\n";
}

std::string number(float value) {
    std::ostringstream text;
    text << value;
    return text.str();
}

void printTable(const Statistics& s) {
    std::cout << "Luminance of pixels above zero, and stops from the maximum\n";
    printLine("minimum", number(s.minimum), stops(s.maximum, s.minimum));
    printLine("maximum", number(s.maximum), 0);
    printLine("mean", number(s.mean), stops(s.maximum, s.mean));
    printLine("range", "", stops(s.minimum, s.maximum));
}

void printJson(const std::string& path, const Statistics& s) {
    const nlohmann::ordered_json object = {
        {"file", path},
        {"width", s.planes.width},
        {"height", s.planes.height},
        {"minimum", decimal(s.minimum)},
        {"maximum", decimal(s.maximum)},
        {"mean", decimal(s.mean)},
        {"minimumStops", stops(s.maximum, s.minimum)},
        {"meanStops", stops(s.maximum, s.mean)},
        {"rangeStops", stops(s.minimum, s.maximum)},
    };
    std::cout << object.dump(-1, ' ', true, nlohmann::ordered_json::error_handler_t::replace) << "\n";
}

} // namespace

void addStatsCommand(CLI::App& app) {
    CLI::App* command = app.add_subcommand("stats", "Measure the luminance of an HDR picture");
    const auto path = std::make_shared<std::string>();
    const auto json = std::make_shared<bool>(false);
    command->add_option("IMAGE", *path, "Radiance HDR or OpenEXR picture")->required();
    command->add_flag("--json", *json, "Write one JSON object on one line");
    command->footer("Examples:\n"
                    "  tvmeta stats scene.hdr\n"
                    "  tvmeta stats scene.exr --json | jq .rangeStops");
    command->callback([path, json] {
        const Statistics statistics = measure(*path);
        *json ? printJson(*path, statistics) : printTable(statistics);
    });
}
