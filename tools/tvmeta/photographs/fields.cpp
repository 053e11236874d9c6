#include "photographs/fields.h"

#include "output/failure.h"
#include "output/suggestion.h"
#include "output/text.h"
#include "photographs/bracket_sets.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <iomanip>
#include <sstream>
#include <string_view>

namespace {

double quotient(const uint32_t* rational) {
    return rational[1] == 0 ? 0 : static_cast<double>(rational[0]) / rational[1];
}

// Converts degrees, minutes and seconds to degrees, or a time to hours.
double sexagesimal(const uint32_t (&group)[6]) {
    return quotient(group) + quotient(group + 2) / 60 + quotient(group + 4) / 3600;
}

// Decimal degrees of a coordinate, negative in the south and west.
Value degrees(const uint32_t (&angle)[6], char reference) {
    if (reference == 0 || angle[1] == 0) {
        return {};
    }
    return reference == 'S' || reference == 'W' ? -sexagesimal(angle) : sexagesimal(angle);
}

Value latitude(const Shot& shot) {
    return degrees(shot.photo.info.gpsLatitude, shot.photo.info.gpsLatitudeRef);
}

Value longitude(const Shot& shot) {
    return degrees(shot.photo.info.gpsLongitude, shot.photo.info.gpsLongitudeRef);
}

// Seven decimals of a degree are about a centimetre.
std::string coordinate(const Value& degrees) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(7) << numberOf(degrees);
    const std::string digits = text.str();
    return digits.substr(0, std::max(digits.find_last_not_of('0') + 1, digits.find('.') + 2));
}

// The form that maps accept.
Value position(const Shot& shot) {
    if (isMissing(latitude(shot)) || isMissing(longitude(shot))) {
        return {};
    }
    return coordinate(latitude(shot)) + ", " + coordinate(longitude(shot));
}

Value altitude(const Shot& shot) {
    const ExifInfo& info = shot.photo.info;
    if (info.gpsAltitude[1] == 0) {
        return {};
    }
    return info.gpsAltitudeRef == 1 ? -quotient(info.gpsAltitude) : quotient(info.gpsAltitude);
}

Value gpsTime(const Shot& shot) {
    const uint32_t(&time)[6] = shot.photo.info.gpsTimeStamp;
    if (time[1] == 0) {
        return {};
    }
    const int64_t milliseconds = std::llround(sexagesimal(time) * 3600'000);
    std::ostringstream text;
    text << std::setfill('0') << std::setw(2) << milliseconds / 3600'000 << ":" << std::setw(2)
         << milliseconds / 60'000 % 60 << ":" << std::setw(2) << milliseconds / 1000 % 60;
    if (milliseconds % 1000 != 0) {
        text << "." << std::setw(3) << milliseconds % 1000;
    }
    return text.str();
}

Value exposureValueAt100(const Shot& shot) {
    const ExifInfo& info = shot.photo.info;
    BracketShot exposure;
    exposure.exposureTime = decimal(info.exposureTime);
    exposure.fNumber = decimal(info.fNumber);
    exposure.isoSpeed = info.isoSpeed;
    const std::optional<double> value = exposureValue(exposure);
    return value ? Value(*value) : Value();
}

// For names that JSON and CSV cannot represent.
Value fileBytes(const Shot& shot) {
    const std::string& path = shot.photo.path;
    return printable(path) == path ? Value() : base64(path);
}

Value secondsSinceFirst(const Shot& shot) {
    if (!shot.first || !shot.photo.taken) {
        return {};
    }
    return (*shot.photo.taken - *shot.first).count();
}

// As in the library's record, 0 and the empty text mean that the photograph lacks the field.
template <auto Member>
Value integer(const Shot& shot) {
    const int64_t value = shot.photo.info.*Member;
    return value == 0 ? Value() : value;
}

template <auto Member>
Value number(const Shot& shot) {
    const double value = decimal(shot.photo.info.*Member);
    return value == 0 ? Value() : value;
}

template <auto Member>
Value text(const Shot& shot) {
    std::string value = fieldText(shot.photo.info.*Member);
    return value.empty() ? Value() : value;
}

template <auto Member>
Value pixels(const Shot& shot) {
    const int64_t value = shot.photo.parts.*Member;
    return value <= 0 ? Value() : value;
}

template <auto Member>
Value lengthOf(const Shot& shot) {
    const Region& region = shot.photo.parts.*Member;
    return region.length <= 0 ? Value() : region.length;
}

template <auto Member>
Value offsetOf(const Shot& shot) {
    const Region& region = shot.photo.parts.*Member;
    return region.length <= 0 ? Value() : region.offset;
}

using I = ExifInfo;
using Kind = Field::Kind;
constexpr auto Fields = std::to_array<Field>({
    {"file", "File", "File", [](const Shot& shot) -> Value { return shot.photo.path; }, "", plainWords, Kind::Path},
    {"fileBytes", "File name in base64", "File bytes", fileBytes, "", plainWords, Kind::Word},
    {"container", "Container", "Type", [](const Shot& shot) -> Value { return containerName(shot.photo.fileType); }, "",
     plainWords, Kind::Word},
    {"width", "Width", "Width", pixels<&PhotoParts::width>, " pixels"},
    {"height", "Height", "Height", pixels<&PhotoParts::height>, " pixels"},
    {"model", "Camera model", "Camera", text<&I::model>, "", plainWords, Kind::Text},
    {"lens", "Lens", "Lens", text<&I::lens>, "", plainWords, Kind::Text},
    {"dateTimeOriginal", "Taken", "Taken", text<&I::dateTimeOriginal>, "", plainWords, Kind::Date},
    {"exposureTime", "Exposure time", "Exposure", number<&I::exposureTime>, " s", exposureWords},
    {"fNumber", "F-number", "Stop", number<&I::fNumber>, "", apertureWords},
    {"isoSpeed", "ISO speed", "ISO", integer<&I::isoSpeed>},
    {"ev100", "EV at ISO 100", "EV", exposureValueAt100, "", evWords},
    {"exposureSource", "Exposure source", "Exposure source", integer<&I::exposureSource>, "", sourceWords},
    {"focalLength", "Focal length", "Focal", number<&I::focalLength>, " mm"},
    {"focalLength35mm", "Focal length in 35 mm", "In 35 mm", integer<&I::focalLength35mm>, " mm"},
    {"focalPlaneXResolution", "Focal plane resolution", "Focal plane", number<&I::focalPlaneXResolution>,
     " pixels per unit"},
    {"focalPlaneResolutionUnit", "Focal plane unit", "Focal plane unit", integer<&I::focalPlaneResolutionUnit>, "",
     unitWords},
    {"orientation", "Orientation", "Orientation", integer<&I::orientation>, "", orientationWords},
    {"gpsPosition", "Position", "Position", position, "", plainWords, Kind::Word},
    {"gpsLatitude", "Latitude", "Latitude", latitude, " degrees"},
    {"gpsLongitude", "Longitude", "Longitude", longitude, " degrees"},
    {"gpsAltitude", "Altitude", "Altitude", altitude, " m"},
    {"gpsDate", "GPS date", "GPS date", text<&I::gpsDateStamp>, "", plainWords, Kind::Date},
    {"gpsTime", "GPS time", "GPS time", gpsTime, " UTC", plainWords, Kind::Word},
    {"thumbnailWidth", "Thumbnail width", "Thumbnail width", integer<&I::thumbnailWidth>, " pixels"},
    {"thumbnailHeight", "Thumbnail height", "Thumbnail height", integer<&I::thumbnailHeight>, " pixels"},
    {"thumbnailRowBytes", "Thumbnail row", "Thumbnail row", integer<&I::thumbnailRowBytes>, " bytes"},
    {"thumbnailLength", "Thumbnail length", "Thumbnail length", lengthOf<&PhotoParts::thumbnail>, " bytes"},
    {"thumbnailOffset", "Thumbnail offset", "Thumbnail offset", offsetOf<&PhotoParts::thumbnail>},
    {"iptcLength", "IPTC length", "IPTC length", lengthOf<&PhotoParts::iptc>, " bytes"},
    {"iptcOffset", "IPTC offset", "IPTC offset", offsetOf<&PhotoParts::iptc>},
    {"xmpLength", "XMP length", "XMP length", lengthOf<&PhotoParts::xmp>, " bytes"},
    {"xmpOffset", "XMP offset", "XMP offset", offsetOf<&PhotoParts::xmp>},
    {"secondsSinceFirst", "Since the first", "Since first", secondsSinceFirst, " s"},
});

} // namespace

std::span<const Field> allFields() {
    return Fields;
}

const Field* fieldNamed(const std::string& key) {
    const auto found = std::ranges::find(Fields, std::string_view(key), &Field::key);
    if (found == Fields.end()) {
        std::vector<std::string> names;
        for (const Field& field : Fields) {
            names.emplace_back(field.key);
        }
        throw WrongCommandLine("unknown field '" + key + "'" + nearestOrAll(key, names));
    }
    return &*found;
}
