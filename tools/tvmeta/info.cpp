// tvmeta info: the records of photographs, as a table or as JSON.

#include "commands.h"
#include "failure.h"
#include "photo.h"

#include <nlohmann/json.hpp>

#include <array>
#include <charconv>
#include <cmath>
#include <ctime>
#include <iomanip>
#include <iostream>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace {

using nlohmann::ordered_json;

// One line of the table and member of the JSON object.
struct Field {
    const char* key;
    const char* label;
    ordered_json value;
    std::string unit = {};
};
using Record = std::vector<Field>;

// As in the library's record, 0 and the empty text stand for nothing.
bool isAbsent(const Field& field) {
    return field.value.is_null() || field.value == 0 || field.value == "";
}

// The shortest decimal number that is the same float: 0.008, not 0.00800000037997961.
double decimal(float value) {
    std::array<char, 32> text;
    const char* end = std::to_chars(text.begin(), text.end(), value).ptr;
    double number = 0;
    std::from_chars(text.begin(), end, number);
    return number;
}

// A short exposure as cameras show it.
std::string exposureUnit(float seconds) {
    constexpr float LongestFraction = 0.26F;
    const bool isShort = seconds > 0 && seconds < LongestFraction;
    return isShort ? " s (1/" + std::to_string(std::lround(1 / seconds)) + ")" : " s";
}

double quotient(const uint32_t* rational) {
    return rational[1] == 0 ? 0 : static_cast<double>(rational[0]) / rational[1];
}

// Decimal degrees of a coordinate, negative in the south and west.
ordered_json degrees(const uint32_t (&angle)[6], char reference) {
    if (reference == 0) {
        return nullptr;
    }
    const double value = quotient(angle) + quotient(angle + 2) / 60 + quotient(angle + 4) / 3600;
    return reference == 'S' || reference == 'W' ? -value : value;
}

ordered_json gpsTime(const uint32_t (&time)[6]) {
    if (time[1] == 0) {
        return nullptr;
    }
    std::ostringstream text;
    text << std::setfill('0') << std::setw(2) << quotient(time) << ":" << std::setw(2) << quotient(time + 2) << ":"
         << std::setw(2) << quotient(time + 4);
    return text.str();
}

Record recordOf(const Photo& photo) {
    const ExifInfo& info = photo.info;
    const double altitude = quotient(info.gpsAltitude);
    Record record = {
        {"container", "Container", containerName(photo.fileType)},
        {"model", "Camera model", fieldText(info.model)},
        {"lens", "Lens", fieldText(info.lens)},
        {"dateTimeOriginal", "Taken", fieldText(info.dateTimeOriginal)},
        {"exposureTime", "Exposure time", decimal(info.exposureTime), exposureUnit(info.exposureTime)},
        {"fNumber", "F-number", decimal(info.fNumber)},
        {"isoSpeed", "ISO speed", info.isoSpeed},
        {"exposureSource", "Exposure source", info.exposureSource, " (image description)"},
        {"focalLength", "Focal length", decimal(info.focalLength), " mm"},
        {"focalLength35mm", "Focal length in 35 mm", info.focalLength35mm, " mm"},
        {"focalPlaneXResolution", "Focal plane resolution", decimal(info.focalPlaneXResolution), " pixels per unit"},
        {"focalPlaneResolutionUnit", "Focal plane unit", info.focalPlaneResolutionUnit, " (2 inch, 3 cm)"},
        {"orientation", "Orientation", info.orientation},
        {"gpsLatitude", "Latitude", degrees(info.gpsLatitude, info.gpsLatitudeRef), " degrees"},
        {"gpsLongitude", "Longitude", degrees(info.gpsLongitude, info.gpsLongitudeRef), " degrees"},
        {"gpsAltitude", "Altitude", info.gpsAltitudeRef == 1 ? -altitude : altitude, " m"},
        {"gpsDate", "GPS date", fieldText(info.gpsDateStamp)},
        {"gpsTime", "GPS time", gpsTime(info.gpsTimeStamp), " UTC"},
        {"thumbnailWidth", "Thumbnail width", info.thumbnailWidth, " pixels"},
        {"thumbnailHeight", "Thumbnail height", info.thumbnailHeight, " pixels"},
        {"thumbnailRowBytes", "Thumbnail row", info.thumbnailRowBytes, " bytes"},
        {"thumbnailLength", "Thumbnail length", info.thumbnailLength, " bytes"},
        {"thumbnailOffset", "Thumbnail offset", info.thumbnailOffset},
        {"iptcLength", "IPTC length", info.iptcLength, " bytes"},
        {"iptcOffset", "IPTC offset", info.iptcOffset},
        {"xmpLength", "XMP length", info.xmpLength, " bytes"},
        {"xmpOffset", "XMP offset", info.xmpOffset},
    };
    std::erase_if(record, isAbsent);
    return record;
}

// The calendar time of a photograph. The library counts in single precision, which near the times of today is good
// to a minute only; a second question, from close by, is answered exactly.
std::optional<std::time_t> captureTime(const ExifInfo& info) {
    std::time_t time = 0;
    for (int question = 0; question < 2; ++question) {
        float seconds = 0;
        if (time_from_datetime(info.dateTimeOriginal, time, &seconds) != 1) {
            return std::nullopt;
        }
        time -= static_cast<std::time_t>(seconds);
    }
    return time;
}

void addTimeSince(std::time_t first, const ExifInfo& info, Record& record) {
    float untilFirst = 0;
    if (time_from_datetime(info.dateTimeOriginal, first, &untilFirst) == 1) {
        record.push_back({"secondsSinceFirst", "Since the first", 0.0 - untilFirst, " s"});
    }
}

void printTable(const std::string& path, const Record& record) {
    std::cout << printable(path) << "\n";
    for (const Field& field : record) {
        std::cout << "  " << std::left << std::setw(24) << field.label;
        if (field.value.is_string()) {
            std::cout << printable(field.value.get<std::string>());
        } else {
            std::cout << std::setprecision(9) << field.value.get<double>();
        }
        std::cout << field.unit << "\n";
    }
}

ordered_json jsonObject(const std::string& path, const Record& record) {
    ordered_json object = {{"file", path}};
    for (const Field& field : record) {
        object[field.key] = field.value;
    }
    return object;
}

struct InfoOptions {
    std::vector<std::string> files;
    bool json = false;
};

void showInfo(const InfoOptions& options) {
    size_t failures = 0;
    std::optional<std::time_t> first;
    ordered_json objects = ordered_json::array();
    for (const std::string& path : options.files) {
        try {
            const Photo photo = readPhoto(path);
            failures += photo.damaged ? 1 : 0;
            Record record = recordOf(photo);
            if (!first) {
                first = captureTime(photo.info);
            }
            if (first && options.files.size() > 1) {
                addTimeSince(*first, photo.info, record);
            }
            if (options.json) {
                objects.push_back(jsonObject(path, record));
            } else {
                printTable(path, record);
            }
        } catch (const Failure& failure) {
            std::cerr << "tvmeta: " << failure.what() << "\n";
            ++failures;
        }
    }
    // Texts of photographs come in any encoding; JSON is UTF-8.
    if (options.json) {
        std::cout << objects.dump(2, ' ', false, ordered_json::error_handler_t::replace) << "\n";
    }
    if (failures > 0) {
        throw Failure(std::to_string(failures) + " of " + std::to_string(options.files.size()) +
                      " files could not be read whole");
    }
}

} // namespace

void addInfoCommand(CLI::App& app) {
    CLI::App* command = app.add_subcommand("info", "Show the metadata of photographs (JPEG, TIFF, PSD)");
    const auto options = std::make_shared<InfoOptions>();
    command->add_option("FILE", options->files, "Photographs")->required();
    command->add_flag("--json", options->json, "Write a JSON array with one object per photograph");
    command->callback([options] { showInfo(*options); });
}
