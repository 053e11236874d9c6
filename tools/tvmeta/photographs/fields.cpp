#include "photographs/fields.h"

#include "output/failure.h"
#include "output/text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iomanip>
#include <sstream>
#include <string_view>

namespace {

using nlohmann::ordered_json;

double quotient(const uint32_t* rational) {
    return rational[1] == 0 ? 0 : static_cast<double>(rational[0]) / rational[1];
}

// As in the library's record, 0 and the empty text stand for nothing.
ordered_json unlessEmpty(const ordered_json& value) {
    return value == 0 || value == "" ? ordered_json() : value;
}

// Decimal degrees of a coordinate, negative in the south and west.
ordered_json degrees(const uint32_t (&angle)[6], char reference) {
    if (reference == 0) {
        return nullptr;
    }
    const double value = quotient(angle) + quotient(angle + 2) / 60 + quotient(angle + 4) / 3600;
    return reference == 'S' || reference == 'W' ? -value : value;
}

ordered_json altitude(const ExifInfo& info) {
    const double metres = quotient(info.gpsAltitude);
    return unlessEmpty(info.gpsAltitudeRef == 1 ? -metres : metres);
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

ordered_json secondsSinceFirst(const Shot& shot) {
    if (!shot.first || !shot.taken) {
        return nullptr;
    }
    return static_cast<double>(*shot.taken - *shot.first);
}

template <auto Member>
ordered_json number(const Shot& shot) {
    return unlessEmpty(shot.photo.info.*Member);
}

template <auto Member>
ordered_json decimalNumber(const Shot& shot) {
    return unlessEmpty(decimal(shot.photo.info.*Member));
}

template <auto Member>
ordered_json text(const Shot& shot) {
    return unlessEmpty(fieldText(shot.photo.info.*Member));
}

using I = ExifInfo;
constexpr auto Fields = std::to_array<Field>({
    {"file", "File", "File", [](const Shot& shot) -> ordered_json { return shot.photo.path; }, "", Form::Path},
    {"container", "Container", "Type",
     [](const Shot& shot) -> ordered_json { return containerName(shot.photo.fileType); }},
    {"model", "Camera model", "Camera", text<&I::model>, "", Form::Text},
    {"lens", "Lens", "Lens", text<&I::lens>, "", Form::Text},
    {"dateTimeOriginal", "Taken", "Taken", text<&I::dateTimeOriginal>},
    {"exposureTime", "Exposure time", "Exposure", decimalNumber<&I::exposureTime>, " s", Form::Exposure},
    {"fNumber", "F-number", "Stop", decimalNumber<&I::fNumber>, "", Form::Aperture},
    {"isoSpeed", "ISO speed", "ISO", number<&I::isoSpeed>},
    {"exposureSource", "Exposure source", "Exposure source", number<&I::exposureSource>, " (image description)"},
    {"focalLength", "Focal length", "Focal", decimalNumber<&I::focalLength>, " mm"},
    {"focalLength35mm", "Focal length in 35 mm", "In 35 mm", number<&I::focalLength35mm>, " mm"},
    {"focalPlaneXResolution", "Focal plane resolution", "Focal plane", decimalNumber<&I::focalPlaneXResolution>,
     " pixels per unit"},
    {"focalPlaneResolutionUnit", "Focal plane unit", "Focal plane unit", number<&I::focalPlaneResolutionUnit>,
     " (2 inch, 3 cm)"},
    {"orientation", "Orientation", "Orientation", number<&I::orientation>},
    {"gpsLatitude", "Latitude", "Latitude",
     [](const Shot& shot) { return degrees(shot.photo.info.gpsLatitude, shot.photo.info.gpsLatitudeRef); }, " degrees"},
    {"gpsLongitude", "Longitude", "Longitude",
     [](const Shot& shot) { return degrees(shot.photo.info.gpsLongitude, shot.photo.info.gpsLongitudeRef); },
     " degrees"},
    {"gpsAltitude", "Altitude", "Altitude", [](const Shot& shot) { return altitude(shot.photo.info); }, " m"},
    {"gpsDate", "GPS date", "GPS date", text<&I::gpsDateStamp>},
    {"gpsTime", "GPS time", "GPS time", [](const Shot& shot) { return gpsTime(shot.photo.info.gpsTimeStamp); }, " UTC"},
    {"thumbnailWidth", "Thumbnail width", "Thumbnail width", number<&I::thumbnailWidth>, " pixels"},
    {"thumbnailHeight", "Thumbnail height", "Thumbnail height", number<&I::thumbnailHeight>, " pixels"},
    {"thumbnailRowBytes", "Thumbnail row", "Thumbnail row", number<&I::thumbnailRowBytes>, " bytes"},
    {"thumbnailLength", "Thumbnail length", "Thumbnail length", number<&I::thumbnailLength>, " bytes"},
    {"thumbnailOffset", "Thumbnail offset", "Thumbnail offset", number<&I::thumbnailOffset>},
    {"iptcLength", "IPTC length", "IPTC length", number<&I::iptcLength>, " bytes"},
    {"iptcOffset", "IPTC offset", "IPTC offset", number<&I::iptcOffset>},
    {"xmpLength", "XMP length", "XMP length", number<&I::xmpLength>, " bytes"},
    {"xmpOffset", "XMP offset", "XMP offset", number<&I::xmpOffset>},
    {"secondsSinceFirst", "Since the first", "Since first", secondsSinceFirst, " s"},
});

std::string plainText(const ordered_json& value) {
    if (value.is_string()) {
        return printable(value.get<std::string>());
    }
    std::ostringstream shown;
    shown << std::setprecision(9) << value.get<double>();
    return shown.str();
}

// A short exposure as cameras show it, such as 1/125; nothing for a long one.
std::string fraction(double seconds) {
    constexpr double LongestFraction = 0.26;
    const bool isShort = seconds > 0 && seconds < LongestFraction;
    return isShort ? "1/" + std::to_string(std::lround(1 / seconds)) : "";
}

} // namespace

std::span<const Field> allFields() {
    return Fields;
}

FieldList fieldsNamed(const std::vector<std::string>& keys) {
    FieldList fields;
    for (const std::string& key : keys) {
        const auto found = std::ranges::find(Fields, std::string_view(key), &Field::key);
        if (found == Fields.end()) {
            std::string known;
            for (const Field& field : Fields) {
                known += (known.empty() ? "" : ", ") + std::string(field.key);
            }
            throw WrongCommandLine("there is no field '" + key + "'; there are: " + known);
        }
        fields.push_back(&*found);
    }
    return fields;
}

std::string listText(const Field& field, const ordered_json& value) {
    std::string shown = plainText(value) + field.unit;
    if (field.form == Form::Exposure && !fraction(value.get<double>()).empty()) {
        shown += " (" + fraction(value.get<double>()) + ")";
    }
    return shown;
}

std::string cellText(const Field& field, const ordered_json& value) {
    if (field.form == Form::Exposure && !fraction(value.get<double>()).empty()) {
        return fraction(value.get<double>()) + field.unit;
    }
    return (field.form == Form::Aperture ? "f/" : "") + plainText(value) + field.unit;
}

// The library counts in single precision, which near the times of today is good to a minute only; a second question,
// from close by, is answered exactly. A camera whose clock was never set writes the year 0.
std::optional<std::time_t> captureTime(const ExifInfo& info) {
    std::time_t time = 0;
    for (int question = 0; question < 2; ++question) {
        float seconds = 0;
        if (fieldText(info.dateTimeOriginal).starts_with("0000") ||
            time_from_datetime(info.dateTimeOriginal, time, &seconds) != 1) {
            return std::nullopt;
        }
        time -= static_cast<std::time_t>(seconds);
    }
    return time;
}
