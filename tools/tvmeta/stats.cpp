// tvmeta stats: the luminance of a Radiance HDR picture.

#include "commands.h"
#include "failure.h"
#include "image.h"

#include <tvmeta.h>

#include <iostream>
#include <memory>
#include <string>

namespace {

void showStatistics(const std::string& path) {
    const HdrPlanes planes = decodeRadiance(path, readFile(path));
    float results[3] = {};
    const int32_t result = hdrMinMax(planes.width, planes.height, planes.bytes.data(), results);
    if (result < 0) {
        throw Failure(path, explain(result, {{-4, "there is not enough memory"}}));
    }
    const auto [minimum, maximum, mean] = results;
    if (maximum <= 0) {
        throw Failure(path, "all of its pixels are black");
    }
    std::cout << "Luminance of pixels with light\n"
              << "  minimum  " << minimum << "\n"
              << "  maximum  " << maximum << "\n"
              << "  mean     " << mean << "\n";
}

} // namespace

void addStatsCommand(CLI::App& app) {
    CLI::App* command = app.add_subcommand("stats", "Measure the luminance of a Radiance HDR picture");
    const auto path = std::make_shared<std::string>();
    command->add_option("IMAGE", *path, "Radiance HDR picture")->required();
    command->callback([path] { showStatistics(*path); });
}
