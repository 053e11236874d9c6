// tvmeta stats: the luminance of HDR pictures.

#include "commands/commands.h"
#include "output/failure.h"
#include "output/table.h"
#include "output/terminal.h"
#include "output/text.h"
#include "pictures/load_picture.h"
#include "pictures/luminance_histogram.h"

#include <tvmeta.h>

#include <nlohmann/json.hpp>

#include <array>
#include <cmath>
#include <iomanip>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr std::array Percentiles = {1, 50, 99};

struct Statistics {
    std::string path;
    int32_t width = 0;
    int32_t height = 0;
    double minimum = 0;
    double maximum = 0;
    double mean = 0;
    std::array<double, Percentiles.size()> percentiles = {};
    double average = 0;      // in stops
    double clippedShare = 0; // of all pixels
    double blackShare = 0;

    double stopsFromMaximum(double luminance) const { return std::log2(luminance / maximum); }
    double range() const { return std::log2(maximum / minimum); }
};

void measureRange(const HdrPlanes& planes, Statistics& statistics) {
    float results[3] = {};
    const int32_t result = hdrMinMax(planes.width, planes.height, planes.bytes.data(), results);
    if (result < 0) {
        throw std::bad_alloc();
    }
    if (results[1] <= 0) {
        throw Failure(statistics.path, "all pixels are black");
    }
    statistics.minimum = decimal(results[0]);
    statistics.maximum = decimal(results[1]);
    statistics.mean = decimal(results[2]);
}

void measureDistribution(const HdrPlanes& planes, double pixels, Statistics& statistics) {
    const LuminanceHistogram histogram(planes);
    for (size_t i = 0; i < Percentiles.size(); ++i) {
        statistics.percentiles[i] = decimal(static_cast<float>(histogram.percentile(Percentiles[i])));
    }
    statistics.average = decimal(static_cast<float>(histogram.average()));
    statistics.blackShare = (pixels - static_cast<double>(histogram.litPixels())) / pixels;
}

Statistics measure(const std::string& path) {
    Picture picture = loadPicture(path);
    Statistics statistics = {.path = path, .width = picture.width, .height = picture.height};
    const double pixels = static_cast<double>(picture.width) * picture.height;
    statistics.clippedShare = static_cast<double>(clippedPixels(picture)) / pixels;
    const HdrPlanes planes = loadPlanes(path, picture);
    picture = {}; // its memory is not needed any more
    measureRange(planes, statistics);
    measureDistribution(planes, pixels, statistics);
    return statistics;
}

std::string number(double value) {
    std::ostringstream text;
    text << value;
    return text.str();
}

std::string fixed(double value) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(2) << value + 0.0; // no negative zero
    return text.str();
}

void printLine(const std::string& name, const std::string& value, const std::string& measure, const char* unit) {
    std::cout << "  " << std::left << std::setw(9) << name << std::setw(14) << value << std::right << std::setw(7)
              << measure << " " << unit << "\n";
}

void printList(const Statistics& s) {
    const auto printLuminance = [&s](const std::string& name, double luminance) {
        printLine(name, number(luminance), fixed(s.stopsFromMaximum(luminance)), "stops");
    };
    std::cout << "Luminance of pixels above zero, and stops from the maximum\n";
    printLuminance("minimum", s.minimum);
    printLuminance("maximum", s.maximum);
    printLuminance("mean", s.mean);
    printLine("range", "", fixed(s.range()), "stops");
    for (size_t i = 0; i < Percentiles.size(); ++i) {
        printLuminance(std::to_string(Percentiles[i]) + " %", s.percentiles[i]);
    }
    printLuminance("average", s.average);
    printLine("clipped", "", fixed(100 * s.clippedShare), "% of all pixels");
    printLine("black", "", fixed(100 * s.blackShare), "% of all pixels");
}

void printJson(const Statistics& s) {
    nlohmann::ordered_json object = {
        {"file", s.path},       {"width", s.width},     {"height", s.height},
        {"minimum", s.minimum}, {"maximum", s.maximum}, {"mean", s.mean},
    };
    for (size_t i = 0; i < Percentiles.size(); ++i) {
        object["percentile" + std::to_string(Percentiles[i])] = s.percentiles[i];
    }
    object["average"] = s.average;
    object["clippedShare"] = s.clippedShare;
    object["blackShare"] = s.blackShare;
    object["minimumStops"] = s.stopsFromMaximum(s.minimum);
    object["meanStops"] = s.stopsFromMaximum(s.mean);
    object["averageStops"] = s.stopsFromMaximum(s.average);
    object["rangeStops"] = s.range();
    std::cout << object.dump(-1, ' ', true, nlohmann::ordered_json::error_handler_t::replace) << "\n";
}

// One row for each picture; positions in its range are in stops from the maximum.
void printRows(const std::vector<Statistics>& all) {
    std::vector<Column> columns = {{"File", Column::Cut::Start}};
    for (const char* heading : {"Maximum", "Range", "1 %", "50 %", "99 %", "Mean", "Average", "Clipped", "Black"}) {
        columns.push_back({heading, Column::Cut::Nowhere, true});
    }
    for (const Statistics& s : all) {
        std::vector<std::string> cells = {printable(s.path), number(s.maximum), fixed(s.range())};
        for (const double luminance : s.percentiles) {
            cells.push_back(fixed(s.stopsFromMaximum(luminance)));
        }
        cells.push_back(fixed(s.stopsFromMaximum(s.mean)));
        cells.push_back(fixed(s.stopsFromMaximum(s.average)));
        cells.push_back(fixed(100 * s.clippedShare) + " %");
        cells.push_back(fixed(100 * s.blackShare) + " %");
        for (size_t i = 0; i < cells.size(); ++i) {
            columns[i].cells.push_back(std::move(cells[i]));
        }
    }
    printTable(std::move(columns), outputWidth());
}

// Measures one picture after the other. A file that cannot be read does not stop the others.
void showStatistics(const std::vector<std::string>& paths, bool json) {
    std::vector<Statistics> all;
    for (const std::string& path : paths) {
        try {
            all.push_back(measure(path));
        } catch (const Failure& failure) {
            complain(failure.what());
            continue;
        }
        if (json) {
            printJson(all.back());
        }
    }
    if (!json && paths.size() == 1 && !all.empty()) {
        printList(all.front());
    } else if (!json && !all.empty()) {
        printRows(all);
    }
    if (all.size() < paths.size()) {
        throw Reported();
    }
}

} // namespace

void addStatsCommand(CLI::App& app) {
    CLI::App* command = app.add_subcommand("stats", "Measure the luminance of HDR pictures");
    const auto paths = std::make_shared<std::vector<std::string>>();
    const auto json = std::make_shared<bool>(false);
    command
        ->add_option("IMAGE", *paths,
                     "Radiance HDR, OpenEXR, TIFF, PFM, PNG, JPEG, PGM or\nPPM picture; several as a table")
        ->required();
    command->add_flag("--json", *json, "Write one JSON object per picture, on one line");
    command->footer("Integer samples are measured as linear light, in which 1 is white.\n\n"
                    "Examples:\n"
                    "  tvmeta stats scene.hdr\n"
                    "  tvmeta stats scene.exr result.tif\n"
                    "  tvmeta stats scene.exr --json | jq .rangeStops");
    command->callback([paths, json] { showStatistics(*paths, *json); });
}
