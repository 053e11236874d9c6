// tvmeta stats: the luminance of HDR pictures.

#include "base/failure.h"
#include "base/text.h"
#include "commands/commands.h"
#include "output/json.h"
#include "output/output_file.h"
#include "output/table.h"
#include "pictures/load_picture.h"
#include "pictures/luminance_histogram.h"
#include "pictures/stop_histogram.h"
#include "system/files.h"
#include "system/paths.h"
#include "system/terminal.h"

#include <tvmeta.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <iomanip>
#include <iostream>
#include <iterator>
#include <memory>
#include <set>
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
    StopHistogram histogram = {}; // for a terminal
    StopHistogram plot = {};      // with narrower bins

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
    statistics.histogram = stopHistogram(histogram.bins(), 1, 40);
    statistics.plot = stopHistogram(histogram.bins(), 0.25, 160);
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
    std::vector<NamedValue> members = {
        {"file", s.path},       {"width", s.width},     {"height", s.height},
        {"minimum", s.minimum}, {"maximum", s.maximum}, {"mean", s.mean},
    };
    for (size_t i = 0; i < Percentiles.size(); ++i) {
        members.push_back({"percentile" + std::to_string(Percentiles[i]), s.percentiles[i]});
    }
    const NamedValue others[] = {
        {"average", s.average},
        {"clippedShare", s.clippedShare},
        {"blackShare", s.blackShare},
        {"minimumStops", s.stopsFromMaximum(s.minimum)},
        {"meanStops", s.stopsFromMaximum(s.mean)},
        {"averageStops", s.stopsFromMaximum(s.average)},
        {"rangeStops", s.range()},
    };
    members.insert(members.end(), std::begin(others), std::end(others));
    std::cout << jsonObject(members) << "\n";
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

struct Options {
    std::vector<std::string> paths;
    bool json = false;
    bool histogram = false;
    std::string plot;
    bool force = false;
};

void printHistogram(const Statistics& s) {
    constexpr int UsualWidth = 80;
    std::cout << "\n"
              << printable(s.path) << ": pixels above zero, by stops from the maximum\n"
              << histogramBars(s.histogram, outputWidth().value_or(UsualWidth));
}

// The name of a plot, with that of the picture in place of %s.
std::string plotName(const Options& options, const std::string& picture) {
    const size_t place = options.plot.find("%s");
    const std::string stem = nameOf(pathOf(picture).stem());
    return place == std::string::npos ? options.plot : std::string(options.plot).replace(place, 2, stem);
}

// Asked before the work: the plot of one picture must not replace that of another.
void requirePlotNames(const Options& options) {
    if (options.plot.empty()) {
        return;
    }
    std::set<std::string> names;
    for (const std::string& path : options.paths) {
        if (const auto [name, isNew] = names.insert(plotName(options, path)); !isNew) {
            throw WrongCommandLine("more than one picture has the plot " + *name +
                                   "; %s in the name means the name of the picture");
        }
    }
}

void writePlot(const Options& options, const Statistics& s) {
    constexpr int MaxTitle = 80;
    std::vector<PlotMark> marks;
    for (size_t i = 0; i < Percentiles.size(); ++i) {
        marks.push_back({std::to_string(Percentiles[i]) + " %", s.stopsFromMaximum(s.percentiles[i])});
    }
    const std::string title = withoutStart(printable(s.path), MaxTitle);
    const std::string name = plotName(options, s.path);
    writeOutput({name, options.force}, options.paths,
                [&](OutputFile& file) { file.write(histogramPlot(s.plot, title, marks)); });
    (options.json ? std::cerr : messagesFor(name)) << "wrote " << printable(name) << "\n";
}

void showAll(const Options& options, const std::vector<Statistics>& all) {
    if (!options.json && !all.empty()) {
        options.paths.size() == 1 ? printList(all.front()) : printRows(all);
    }
    if (options.histogram) {
        std::ranges::for_each(all, printHistogram);
    }
}

// Measures one picture after the other. A file that cannot be read or written does not stop the others.
void showStatistics(const Options& options) {
    requirePlotNames(options);
    std::vector<Statistics> all;
    bool isFailed = false;
    for (const std::string& path : options.paths) {
        try {
            all.push_back(measure(path));
            if (options.json) {
                printJson(all.back());
            }
            if (!options.plot.empty()) {
                writePlot(options, all.back());
            }
        } catch (const Failure& failure) {
            complain(failure.what());
            isFailed = true;
        }
    }
    showAll(options, all);
    if (isFailed) {
        throw Reported();
    }
}

} // namespace

Command statsCommand() {
    const auto options = std::make_shared<Options>();
    return {
        .name = "stats",
        .purpose = "Measure the luminance of HDR pictures",
        .options =
            {
                {.names = {"IMAGE"},
                 .target = &options->paths,
                 .help = "Radiance HDR, OpenEXR, TIFF, PFM, PNG, JPEG, PGM\nor PPM picture; several as a table",
                 .isRequired = true,
                 .isFileList = true},
                {.names = {"--json"},
                 .target = &options->json,
                 .help = "Write one JSON object per picture, on one line"},
                {.names = {"--histogram"},
                 .target = &options->histogram,
                 .help = "Show the pixels by stops, as bars",
                 .excludes = {"--json"}},
                {.names = {"--plot"},
                 .target = &options->plot,
                 .help = "SVG file to write with the histogram; %s in its\nname means the name of the picture",
                 .value = "FILE"},
                forceOption(options->force),
            },
        .footer = "Integer samples are measured as linear light, in which 1 is white.\n\n"
                  "Examples:\n"
                  "  tvmeta stats scene.hdr\n"
                  "  tvmeta stats scene.exr result.tif\n"
                  "  tvmeta stats *.exr --plot %s.svg\n"
                  "  tvmeta stats scene.exr --json | jq .rangeStops",
        .run = [options] { showStatistics(*options); },
    };
}
