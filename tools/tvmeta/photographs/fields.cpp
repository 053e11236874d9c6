#include "photographs/fields.h"

#include "base/failure.h"
#include "base/mapped.h"
#include "base/markup.h"
#include "base/text.h"
#include "base/words.h"
#include "pictures/gain_map.h"
#include "system/files.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <string_view>
#include <type_traits>
#include <utility>

namespace {

// A member of the record if the photograph has the field.
template <int32_t FieldNumber, auto Member>
Value member(const Shot& shot) {
    const auto& value = shot.photo.record.*Member;
    if (!shot.photo.has(FieldNumber)) {
        return {};
    }
    if constexpr (std::is_same_v<decltype(value), const tvmeta_Rational&>) {
        return quotient(value);
    } else {
        return value;
    }
}

template <int32_t Text>
Value longText(const Shot& shot) {
    const std::string& value = shot.photo.texts[Text];
    return value.empty() ? Value() : value;
}

template <int32_t Block>
Value lengthOf(const Shot& shot) {
    const tvmeta_Block& block = shot.photo.record.blocks[Block];
    return block.size == 0 ? Value() : block.size;
}

// Missing if the block is in several pieces.
template <int32_t Block>
Value offsetOf(const Shot& shot) {
    const tvmeta_Block& block = shot.photo.record.blocks[Block];
    return block.size == 0 || block.position < 0 ? Value() : block.position;
}

Value keywords(const Shot& shot) {
    return shot.photo.keywords.empty() ? Value() : shot.photo.keywords;
}

Value rating(const Shot& shot) {
    const std::string& text = shot.photo.texts[TVMETA_TEXT_RATING];
    int64_t stars = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), stars);
    return error == std::errc() ? Value(stars) : Value();
}

Value taken(const Shot& shot) {
    const std::string value = takenText(shot.photo);
    return value.empty() ? Value() : value;
}

Value subSecond(const Shot& shot) {
    const tvmeta_Photo& record = shot.photo.record;
    if (!shot.photo.has(TVMETA_SUB_SECOND)) {
        return {};
    }
    const std::string digits = std::to_string(1'000'000'000 + int64_t{record.captureNanoseconds});
    return digits.substr(1, static_cast<size_t>(record.subSecondDigits));
}

Value utcOffset(const Shot& shot) {
    if (!shot.photo.has(TVMETA_UTC_OFFSET)) {
        return {};
    }
    const int32_t minutes = std::abs(shot.photo.record.utcOffset);
    const char sign = shot.photo.record.utcOffset < 0 ? '-' : '+';
    return fmt::format("{}{:02}:{:02}", sign, minutes / 60, minutes % 60);
}

constexpr auto latitude = member<TVMETA_LATITUDE, &tvmeta_Photo::latitude>;
constexpr auto longitude = member<TVMETA_LONGITUDE, &tvmeta_Photo::longitude>;

// Seven decimals of a degree are about a centimetre.
std::string coordinate(const Value& degrees) {
    const std::string digits = fmt::format("{:.7f}", numberOf(degrees));
    return digits.substr(0, std::max(digits.find_last_not_of('0') + 1, digits.find('.') + 2));
}

// The form that maps accept.
Value position(const Shot& shot) {
    if (isMissing(latitude(shot)) || isMissing(longitude(shot))) {
        return {};
    }
    return coordinate(latitude(shot)) + ", " + coordinate(longitude(shot));
}

// The GPS time in UTC, as a part of a date and time.
std::string gpsClock(const Shot& shot) {
    Photo clock;
    clock.taken = CivilTime(std::chrono::seconds(shot.photo.record.gpsTime));
    return takenText(clock);
}

Value gpsDate(const Shot& shot) {
    return shot.photo.has(TVMETA_GPS_TIME) ? Value(gpsClock(shot).substr(0, 10)) : Value();
}

Value gpsTime(const Shot& shot) {
    return shot.photo.has(TVMETA_GPS_TIME) ? Value(gpsClock(shot).substr(11)) : Value();
}

// Which values the file has in another form only: APEX, an exposure index, a description.
Value derivedFields(const Shot& shot) {
    std::string names;
    for (const auto& [number, name] : {std::pair{TVMETA_EXPOSURE_TIME, "exposureTime"},
                                       {TVMETA_F_NUMBER, "fNumber"},
                                       {TVMETA_ISO_SPEED, "isoSpeed"}}) {
        if ((shot.photo.record.derived >> number & 1) != 0) {
            names += (names.empty() ? "" : " ") + std::string(name);
        }
    }
    return names.empty() ? Value() : names;
}

Value exposureValueAt100(const Shot& shot) {
    const std::optional<double> value = exposureValue(shot.photo);
    return value ? Value(*value) : Value();
}

// For names that JSON and CSV cannot represent.
Value fileBytes(const Shot& shot) {
    const std::string& path = shot.photo.path;
    return printable(path) == path ? Value() : base64(asBytes(path));
}

Value secondsSinceFirst(const Shot& shot) {
    if (!shot.first || !shot.photo.taken) {
        return {};
    }
    return (*shot.photo.taken - *shot.first).count();
}

Value gainMap(const Shot& shot) {
    const bool isJpeg = shot.photo.record.format == TVMETA_FORMAT_JPEG;
    const std::optional<GainMap> map = isJpeg ? findGainMap(shot.photo.path) : std::nullopt;
    return map ? Value(map->stops()) : Value();
}

// The word for a code, or the number if the standard does not define it.
template <const auto& Words>
std::string codeWords(const Value& value) {
    const double code = numberOf(value);
    const bool isKnown = code >= 0 && code < Words.size() && !Words[static_cast<size_t>(code)].empty();
    return isKnown ? std::string(Words[static_cast<size_t>(code)]) : plainWords(value);
}

// Cameras show exposures of a quarter of a second and less as fractions.
std::string exposureWords(const Value& value) {
    constexpr double MaxFraction = 0.26;
    constexpr double MaxDenominator = 1e6;
    const double seconds = numberOf(value);
    const bool isFraction = seconds <= MaxFraction && seconds * MaxDenominator >= 1;
    return isFraction ? "1/" + std::to_string(std::lround(1 / seconds)) : plainWords(value);
}

std::string apertureWords(const Value& value) {
    return "f/" + plainWords(value);
}

std::string evWords(const Value& value) {
    return fmt::format("{:.1f}", numberOf(value));
}

// TIFF 6.0, Orientation: how to turn the picture upright.
constexpr std::array<std::string_view, 9> Orientations = {
    "",
    "upright",
    "mirror horizontally",
    "rotate 180 degrees",
    "mirror vertically",
    "mirror horizontally, rotate 270 degrees clockwise",
    "rotate 90 degrees clockwise",
    "mirror horizontally, rotate 90 degrees clockwise",
    "rotate 270 degrees clockwise",
};

std::string biasWords(const Value& value) {
    std::string words = numberOf(value) > 0 ? "+" : "";
    words += plainWords(value);
    return words;
}

// EXIF 2.32, section 4.6.5, as are the codes below.
constexpr std::array<std::string_view, 3> ExposureModes = {"automatic", "manual", "automatic bracket"};

constexpr std::array<std::string_view, 9> ExposurePrograms = {
    "not defined", "manual",          "program AE",    "aperture priority", "shutter priority",
    "creative",    "action (sports)", "portrait mode", "landscape mode"};

constexpr std::array<std::string_view, 7> MeteringModes = {"unknown",    "average",       "centre-weighted", "spot",
                                                           "multi-spot", "multi-segment", "partial"};

// Bit 0 says whether the flash fired; the mode is in bits 3 and 4.
std::string flashWords(const Value& value) {
    const auto code = static_cast<int64_t>(numberOf(value));
    const bool fired = (code & 1) != 0;
    const bool isAutomatic = (code >> 3 & 3) == 3;
    return std::string(fired ? "fired" : "did not fire") + (isAutomatic ? ", automatic" : "");
}

constexpr std::array<std::string_view, 2> WhiteBalances = {"automatic", "manual"};

using P = tvmeta_Photo;
using Kind = Field::Kind;
constexpr auto Fields = std::to_array<Field>({
    {"file", "File", "File", [](const Shot& shot) -> Value { return shot.photo.path; }, "", plainWords, Kind::Path},
    {"fileBytes", "File name in base64", "File bytes", fileBytes, "", plainWords, Kind::Word},
    {"container", "Container", "Type",
     [](const Shot& shot) -> Value { return std::string(tvmeta_format_name(shot.photo.record.format)); }, "",
     plainWords, Kind::Word},
    {"width", "Width", "Width", member<TVMETA_SIZE, &P::width>, " pixels"},
    {"height", "Height", "Height", member<TVMETA_SIZE, &P::height>, " pixels"},
    {"orientation", "Orientation", "Orientation", member<TVMETA_ORIENTATION, &P::orientation>, "",
     codeWords<Orientations>},
    {"make", "Camera maker", "Maker", member<TVMETA_MAKE, &P::make>, "", plainWords, Kind::Text},
    {"model", "Camera model", "Camera", member<TVMETA_MODEL, &P::model>, "", plainWords, Kind::Text},
    {"serialNumber", "Serial number", "Serial number", member<TVMETA_SERIAL_NUMBER, &P::serialNumber>, "", plainWords,
     Kind::Text},
    {"lens", "Lens", "Lens", member<TVMETA_LENS, &P::lens>, "", plainWords, Kind::Text},
    {"dateTimeOriginal", "Taken", "Taken", taken, "", plainWords, Kind::Date},
    {"subSecond", "Sub-second", "Sub-second", subSecond, "", plainWords, Kind::Word},
    {"utcOffset", "Offset from UTC", "Offset", utcOffset, "", plainWords, Kind::Word},
    {"exposureTime", "Exposure time", "Exposure", member<TVMETA_EXPOSURE_TIME, &P::exposureTime>, " s", exposureWords},
    {"fNumber", "F-number", "Stop", member<TVMETA_F_NUMBER, &P::fNumber>, "", apertureWords},
    {"isoSpeed", "ISO speed", "ISO", member<TVMETA_ISO_SPEED, &P::isoSpeed>},
    {"derived", "Derived values", "Derived", derivedFields, "", plainWords, Kind::Word},
    {"ev100", "EV at ISO 100", "EV", exposureValueAt100, "", evWords},
    {"exposureBias", "Exposure bias", "Bias", member<TVMETA_EXPOSURE_BIAS, &P::exposureBias>, " EV", biasWords},
    {"exposureMode", "Exposure mode", "Mode", member<TVMETA_EXPOSURE_MODE, &P::exposureMode>, "",
     codeWords<ExposureModes>},
    {"exposureProgram", "Exposure program", "Program", member<TVMETA_EXPOSURE_PROGRAM, &P::exposureProgram>, "",
     codeWords<ExposurePrograms>},
    {"meteringMode", "Metering mode", "Metering", member<TVMETA_METERING_MODE, &P::meteringMode>, "",
     codeWords<MeteringModes>},
    {"flash", "Flash", "Flash", member<TVMETA_FLASH, &P::flash>, "", flashWords},
    {"whiteBalance", "White balance", "White balance", member<TVMETA_WHITE_BALANCE, &P::whiteBalance>, "",
     codeWords<WhiteBalances>},
    {"focalLength", "Focal length", "Focal", member<TVMETA_FOCAL_LENGTH, &P::focalLength>, " mm"},
    {"focalLength35mm", "Focal length in 35 mm", "In 35 mm", member<TVMETA_FOCAL_LENGTH_35MM, &P::focalLength35mm>,
     " mm"},
    {"gpsPosition", "Position", "Position", position, "", plainWords, Kind::Word},
    {"gpsLatitude", "Latitude", "Latitude", latitude, " degrees"},
    {"gpsLongitude", "Longitude", "Longitude", longitude, " degrees"},
    {"gpsAltitude", "Altitude", "Altitude", member<TVMETA_ALTITUDE, &P::altitude>, " m"},
    {"gpsDate", "GPS date", "GPS date", gpsDate, "", plainWords, Kind::Date},
    {"gpsTime", "GPS time", "GPS time", gpsTime, " UTC", plainWords, Kind::Word},
    {"title", "Title", "Title", longText<TVMETA_TEXT_TITLE>, "", plainWords, Kind::Text},
    {"description", "Description", "Description", longText<TVMETA_TEXT_DESCRIPTION>, "", plainWords, Kind::Text},
    {"artist", "Artist", "Artist", longText<TVMETA_TEXT_ARTIST>, "", plainWords, Kind::Text},
    {"copyright", "Copyright", "Copyright", longText<TVMETA_TEXT_COPYRIGHT>, "", plainWords, Kind::Text},
    {"keywords", "Keywords", "Keywords", keywords, "", plainWords, Kind::Text},
    {"rating", "Rating", "Rating", rating},
    {"software", "Software", "Software", longText<TVMETA_TEXT_SOFTWARE>, "", plainWords, Kind::Text},
    {"thumbnailLength", "Thumbnail length", "Thumbnail length", lengthOf<TVMETA_THUMBNAIL>, " bytes"},
    {"thumbnailOffset", "Thumbnail offset", "Thumbnail offset", offsetOf<TVMETA_THUMBNAIL>},
    {"previewLength", "Preview length", "Preview length", lengthOf<TVMETA_PREVIEW>, " bytes"},
    {"previewOffset", "Preview offset", "Preview offset", offsetOf<TVMETA_PREVIEW>},
    {"iccLength", "ICC length", "ICC length", lengthOf<TVMETA_ICC>, " bytes"},
    {"iccOffset", "ICC offset", "ICC offset", offsetOf<TVMETA_ICC>},
    {"iptcLength", "IPTC length", "IPTC length", lengthOf<TVMETA_IPTC>, " bytes"},
    {"iptcOffset", "IPTC offset", "IPTC offset", offsetOf<TVMETA_IPTC>},
    {"xmpLength", "XMP length", "XMP length", lengthOf<TVMETA_XMP>, " bytes"},
    {"xmpOffset", "XMP offset", "XMP offset", offsetOf<TVMETA_XMP>},
    {"gainMap", "Gain map", "Gain map", gainMap, " stops", biasWords},
    {"secondsSinceFirst", "Since the first", "Since first", secondsSinceFirst, " s"},
});

} // namespace

std::string plainWords(const Value& value) {
    if (!isNumber(value)) {
        return printable(textOf(value));
    }
    return fmt::format("{:.9g}", numberOf(value));
}

std::span<const Field> allFields() {
    return Fields;
}

std::vector<std::string> fieldKeys() {
    return mapped<std::string>(Fields, &Field::key);
}

const Field* fieldNamed(const std::string& key) {
    const auto found = std::ranges::find(Fields, std::string_view(key), &Field::key);
    if (found == Fields.end()) {
        throw WrongCommandLine("unknown field '" + key + "'" + nearestOrAll(key, fieldKeys()));
    }
    return &*found;
}
