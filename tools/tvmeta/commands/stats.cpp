// tvmeta stats: the luminance of HDR pictures.

#include "base/failure.h"
#include "base/numbers.h"
#include "base/text.h"
#include "base/words.h"
#include "commands/command_line.h"
#include "output/output_file.h"
#include "output/records.h"
#include "output/table.h"
#include "pages/histogram_plot.h"
#include "pictures/light_statistics.h"
#include "pictures/load_picture.h"
#include "system/files.h"
#include "system/paths.h"
#include "system/terminal.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <memory>
#include <new>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace {

struct Options {
    std::vector<std::string> paths;
    bool force = false;
    bool json = false;
    bool histogram = false;
    bool isLinear = false;
    bool isLogarithmic = false;
    bool allowDamage = false;
    std::string plot;
};

struct Statistics {
    std::string path;
    int32_t width = 0;
    int32_t height = 0;
    std::string light; // how samples became light
    Weights weights = {};
    LightStatistics luminance = {};
    StopHistogram histogram = {};

    double share(uint64_t pixels) const { return static_cast<double>(pixels) / static_cast<double>(luminance.pixels); }
    // Positions are relative to the last percentile, which a few damaged or reflecting pixels do not change.
    double stops(double value) const { return std::log2(value / luminance.percentiles.back()); }
    double range() const { return std::log2(luminance.percentiles.back() / luminance.percentiles.front()); }
    uint64_t unmeasured() const { return luminance.pixels - luminance.lit - luminance.black; }
};

// "0.1 %"
std::string percentileName(size_t index) {
    return shortNumber(LightStatistics::Percentiles[index] / 10.0) + " %";
}

Statistics measure(const Options& options, const std::string& path) {
    constexpr size_t MaxBins = 160;
    const Picture picture = loadPicture(path, {.allowDamage = options.allowDamage, .gain = true});
    if (!picture.damage.empty()) {
        complain("warning: " + path + ": damaged, some pixels may be wrong: " + picture.damage);
    }
    const LightRule rule(picture, options.isLinear);
    Statistics statistics = {path,        picture.width,  picture.height,
                             rule.name(), rule.weights(), measureLight(picture, rule)};
    LightStatistics& luminance = statistics.luminance;
    if (luminance.lit == 0) {
        throw Failure(path, luminance.black == luminance.pixels ? "all pixels are black"
                                                                : "no pixel has a luminance above zero");
    }
    if (options.histogram || !options.plot.empty()) {
        statistics.histogram = stopHistogram(luminance.luminances, luminance.percentiles.back(), MaxBins);
    }
    luminance.luminances = {}; // their memory is not needed any more
    return statistics;
}

Scale scaleOf(const Options& options) {
    return options.isLogarithmic ? Scale::Logarithmic : Scale::Linear;
}

void printLine(const std::string& name, const std::string& value, const std::string& measure, const char* unit) {
    std::cout << fmt::format("  {:<9}{:<14}{:>7} {}\n", name, value, measure, unit);
}

void printList(const Statistics& s) {
    const LightStatistics& light = s.luminance;
    const auto printLuminance = [&s](const std::string& name, double value) {
        printLine(name, shortNumber(value), hundredths(s.stops(value)), "stops");
    };
    const auto printShare = [&s](const char* name, uint64_t pixels) {
        printLine(name, "", hundredths(100 * s.share(pixels)), "% of all pixels");
    };
    const auto printSamples = [](const char* name, uint64_t samples) {
        printLine(name, "", std::to_string(samples), samples == 1 ? "sample" : "samples");
    };
    std::cout << "Luminance of pixels above zero, and stops from the 99.9 % percentile\n";
    printLuminance("minimum", light.minimum);
    for (size_t i = 0; i < light.percentiles.size(); ++i) {
        printLuminance(percentileName(i), light.percentiles[i]);
    }
    printLuminance("maximum", light.maximum);
    printLine("range", "", hundredths(s.range()), "stops from 0.1 % to 99.9 %");
    printLuminance("mean", light.mean);
    printLuminance("average", light.average);
    printShare("clipped", light.clipped);
    printShare("black", light.black);
    printSamples("NaN", light.nanSamples);
    printSamples("infinite", light.infiniteSamples);
    printSamples("negative", light.negativeSamples);
    printShare("excluded", s.unmeasured());
    std::cout << "  samples  " << s.light << "\n  weights  " << shortNumber(s.weights[0]) << " R + "
              << shortNumber(s.weights[1]) << " G + " << shortNumber(s.weights[2]) << " B\n";
}

void printJson(const Statistics& s) {
    const LightStatistics& light = s.luminance;
    const auto luminance = [](double value) { return decimal(static_cast<float>(value)); };
    const auto count = [](uint64_t number) { return static_cast<int64_t>(number); };
    const Record record = {
        {"file", s.path},
        {"width", int64_t{s.width}},
        {"height", int64_t{s.height}},
        {"samples", s.light},
        {"weightRed", s.weights[0]},
        {"weightGreen", s.weights[1]},
        {"weightBlue", s.weights[2]},
        {"minimum", luminance(light.minimum)},
        {"maximum", luminance(light.maximum)},
        {"mean", light.mean},
        {"average", light.average},
        {"percentile0_1", luminance(light.percentiles[0])},
        {"percentile1", luminance(light.percentiles[1])},
        {"percentile50", luminance(light.percentiles[2])},
        {"percentile99", luminance(light.percentiles[3])},
        {"percentile99_9", luminance(light.percentiles[4])},
        {"rangeStops", s.range()},
        {"minimumStops", s.stops(light.minimum)},
        {"maximumStops", s.stops(light.maximum)},
        {"meanStops", s.stops(light.mean)},
        {"averageStops", s.stops(light.average)},
        {"clippedShare", s.share(light.clipped)},
        {"blackShare", s.share(light.black)},
        {"excludedShare", s.share(s.unmeasured())},
        {"nanSamples", count(light.nanSamples)},
        {"infiniteSamples", count(light.infiniteSamples)},
        {"negativeSamples", count(light.negativeSamples)},
    };
    std::cout << jsonObject(record) << "\n";
}

// One row for each picture; positions in its range are in stops from the 99.9 % percentile.
void printRows(const std::vector<Statistics>& all) {
    std::vector<Column> columns = {{"File", Column::Cut::Start}};
    for (const char* heading : {"99.9 %", "Range", "0.1 %", "50 %", "Maximum", "Mean", "Average", "Clipped", "Black"}) {
        columns.push_back({heading, Column::Cut::Nowhere, true});
    }
    for (const Statistics& s : all) {
        const LightStatistics& light = s.luminance;
        std::vector<std::string> cells = {printable(s.path), shortNumber(light.percentiles.back()),
                                          hundredths(s.range())};
        for (const double value :
             {light.percentiles[0], light.percentiles[2], light.maximum, light.mean, light.average}) {
            cells.push_back(hundredths(s.stops(value)));
        }
        cells.push_back(hundredths(100 * s.share(light.clipped)) + " %");
        cells.push_back(hundredths(100 * s.share(light.black)) + " %");
        addRow(columns, std::move(cells));
    }
    printTable(columns, "--json");
    for (const Statistics& s : all) {
        if (s.unmeasured() > 0) {
            complain(s.path + ": " + counted(s.unmeasured(), "pixel") +
                     " without a luminance (NaN, infinite or negative)");
        }
    }
}

void printHistogram(const Statistics& s, Scale scale) {
    constexpr int UsualWidth = 80;
    std::cout << "\n"
              << printable(s.path) << ": pixels above zero, by stops from the 99.9 % percentile\n"
              << histogramBars(s.histogram, scale, outputWidth().value_or(UsualWidth));
}

// The name of a plot, with that of the picture in place of %s.
std::string plotName(const Options& options, const std::string& picture) {
    const size_t place = options.plot.find("%s");
    const std::string stem = nameOf(pathOf(picture).stem());
    return place == std::string::npos ? options.plot : std::string(options.plot).replace(place, 2, stem);
}

// Checked before any picture is read: the plot of one picture must not replace that of another.
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
    for (const unsigned i : {0U, 2U, 4U}) {
        marks.push_back({percentileName(i), s.stops(s.luminance.percentiles[i])});
    }
    const std::string title = withoutStart(printable(s.path), MaxTitle);
    const std::string name = plotName(options, s.path);
    writeOutput({name, options.force}, options.paths,
                [&](OutputFile& file) { file.write(histogramPlot(s.histogram, scaleOf(options), title, marks)); });
    (options.json ? std::cerr : messagesFor(name)) << "wrote " << printable(name) << "\n";
}

void showAll(const Options& options, const std::vector<Statistics>& all) {
    if (!options.json && !all.empty()) {
        options.paths.size() == 1 ? printList(all.front()) : printRows(all);
    }
    if (options.histogram) {
        std::ranges::for_each(all, [&](const Statistics& s) { printHistogram(s, scaleOf(options)); });
    }
}

// Measures one picture after the other. A file that cannot be read or written does not stop the others.
void showStatistics(const Options& options) {
    requirePlotNames(options);
    if (options.paths.empty()) { // an empty list of names
        complain("no picture found");
    }
    std::vector<Statistics> all;
    bool isFailed = false;
    for (const std::string& path : options.paths) {
        try {
            all.push_back(measure(options, path));
            if (options.json) {
                printJson(all.back());
            }
            if (!options.plot.empty()) {
                writePlot(options, all.back());
            }
        } catch (const Failure& failure) {
            complain(failure.what());
            isFailed = true;
        } catch (const std::bad_alloc&) {
            complain(path + ": not enough memory");
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
                Option({"IMAGE"}, &options->paths, "", "Pictures; several are shown as a table",
                       {.isRequired = true, .isFileList = true}),
                Option({"--json"}, &options->json, "", "Write one JSON object per picture, on one line"),
                Option({"--histogram"}, &options->histogram, "", "Show the pixels by stops, as bars",
                       {.excludes = {"--json"}}),
                Option({"--plot"}, &options->plot, "FILE",
                       "SVG file to write with the histogram; %s in its\nname means the name of the picture"),
                Option({"--log"}, &options->isLogarithmic, "", "Logarithmic shares in --histogram and --plot"),
                Option({"--linear"}, &options->isLinear, "",
                       "The samples are linear light, whatever the\npicture states or its ICC profile says"),
                Option({"--allow-damaged"}, &options->allowDamage, "", "Measure what is left of a damaged JPEG"),
                forceOption(options->force),
            },
        .footer = helpList("Pictures", pictureFormats()) + "Examples:\n"
                                                           "  tvmeta stats scene.hdr\n"
                                                           "  tvmeta stats scene.exr result.tif\n"
                                                           "  tvmeta stats *.exr --plot %s.svg\n"
                                                           "  tvmeta stats scene.exr --json | jq .rangeStops",
        .run = [options] { showStatistics(*options); },
    };
}
