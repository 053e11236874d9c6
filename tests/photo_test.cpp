// The reader of any photograph, on the table of photographs.
#include "testing/photo_sources.h"
#include "testing/photographs_table.h"

#include <gtest/gtest.h>

#include <array>
#include <ctime>

using namespace test;

namespace {

std::string print(const char* format, auto... values) {
    char text[400];
    std::snprintf(text, sizeof text, format, values...);
    return text;
}

std::string inQuotes(const Bytes& text) {
    return '"' + text + '"';
}

std::string clock(std::int64_t seconds, const char* format) {
    const std::time_t time = static_cast<std::time_t>(seconds);
    char text[40];
    std::strftime(text, sizeof text, format, std::gmtime(&time));
    return inQuotes(text);
}

std::string textOf(const tvmeta_Source& source, const tvmeta_Photo& photo, int text, int index = 0) {
    std::array<char, 600> buffer;
    const std::int64_t size = tvmeta_read_text(&source, &photo, text, index, buffer.data(), std::ssize(buffer));
    EXPECT_LE(size, std::ssize(buffer));
    return Bytes(buffer.data(), static_cast<std::size_t>(std::max<std::int64_t>(size, 0)));
}

void addTexts(const tvmeta_Source& source, const tvmeta_Photo& photo, Fields& fields) {
    const std::pair<int, const char*> texts[] = {
        {TVMETA_TEXT_TITLE, "title"},         {TVMETA_TEXT_DESCRIPTION, "description"}, {TVMETA_TEXT_ARTIST, "artist"},
        {TVMETA_TEXT_COPYRIGHT, "copyright"}, {TVMETA_TEXT_SOFTWARE, "software"},
    };
    for (const auto& [text, key] : texts) {
        if (const std::string value = textOf(source, photo, text); !value.empty()) {
            fields[key] = inQuotes(value);
        }
    }
    if (const std::string rating = textOf(source, photo, TVMETA_TEXT_RATING); !rating.empty()) {
        fields["rating"] = rating;
    }
    std::string keywords;
    for (int i = 0; !textOf(source, photo, TVMETA_TEXT_KEYWORD, i).empty(); ++i) {
        keywords += (i > 0 ? "," : "") + inQuotes(textOf(source, photo, TVMETA_TEXT_KEYWORD, i));
    }
    if (!keywords.empty()) {
        fields["keywords"] = '[' + keywords + ']';
    }
}

// The record in the form of the table.
Fields fieldsOf(const tvmeta_Source& source, const tvmeta_Photo& p) {
    Fields fields = {{"container", inQuotes(tvmeta_format_name(p.format))}};
    const auto add = [&](int field, const char* key, const std::string& value) {
        if (TVMETA_HAS(&p, field)) {
            fields[key] = value;
        }
    };
    const auto quotient = [](const tvmeta_Rational& r) {
        return print("%.9g", static_cast<double>(r.numerator) / static_cast<double>(r.denominator));
    };
    add(TVMETA_SIZE, "width", std::to_string(p.width));
    add(TVMETA_SIZE, "height", std::to_string(p.height));
    add(TVMETA_ORIENTATION, "orientation", std::to_string(p.orientation));
    add(TVMETA_MAKE, "make", inQuotes(p.make));
    add(TVMETA_MODEL, "model", inQuotes(p.model));
    add(TVMETA_LENS, "lens", inQuotes(p.lens));
    add(TVMETA_SERIAL_NUMBER, "serialNumber", inQuotes(p.serialNumber));
    add(TVMETA_EXPOSURE_TIME, "exposureTime", quotient(p.exposureTime));
    add(TVMETA_F_NUMBER, "fNumber", quotient(p.fNumber));
    add(TVMETA_FOCAL_LENGTH, "focalLength", quotient(p.focalLength));
    add(TVMETA_EXPOSURE_BIAS, "exposureBias", quotient(p.exposureBias));
    add(TVMETA_ISO_SPEED, "isoSpeed", std::to_string(p.isoSpeed));
    add(TVMETA_EXPOSURE_MODE, "exposureMode", std::to_string(p.exposureMode));
    add(TVMETA_EXPOSURE_PROGRAM, "exposureProgram", std::to_string(p.exposureProgram));
    add(TVMETA_METERING_MODE, "meteringMode", std::to_string(p.meteringMode));
    add(TVMETA_FLASH, "flash", std::to_string(p.flash));
    add(TVMETA_WHITE_BALANCE, "whiteBalance", std::to_string(p.whiteBalance));
    add(TVMETA_FOCAL_LENGTH_35MM, "focalLength35mm", std::to_string(p.focalLength35mm));
    add(TVMETA_CAPTURE_TIME, "dateTimeOriginal", clock(p.captureTime, "%Y:%m:%d %H:%M:%S"));
    add(TVMETA_SUB_SECOND, "subSecond",
        inQuotes(print("%09d", p.captureNanoseconds).substr(0, static_cast<std::size_t>(p.subSecondDigits))));
    add(TVMETA_UTC_OFFSET, "utcOffset",
        inQuotes(
            print("%c%02d:%02d", p.utcOffset < 0 ? '-' : '+', std::abs(p.utcOffset) / 60, std::abs(p.utcOffset) % 60)));
    add(TVMETA_LATITUDE, "gpsLatitude", print("%.9g", p.latitude));
    add(TVMETA_LONGITUDE, "gpsLongitude", print("%.9g", p.longitude));
    add(TVMETA_ALTITUDE, "gpsAltitude", print("%.9g", p.altitude));
    add(TVMETA_GPS_TIME, "gpsDate", clock(p.gpsTime, "%Y:%m:%d"));
    add(TVMETA_GPS_TIME, "gpsTime", clock(p.gpsTime, "%H:%M:%S"));
    std::string derived;
    for (const auto& [field, name] : {std::pair{TVMETA_EXPOSURE_TIME, "exposureTime"},
                                      {TVMETA_F_NUMBER, "fNumber"},
                                      {TVMETA_ISO_SPEED, "isoSpeed"}}) {
        derived += (p.derived >> field & 1) != 0 ? (derived.empty() ? "" : " ") + std::string(name) : "";
    }
    if (!derived.empty()) {
        fields["derived"] = inQuotes(derived);
    }
    for (int i = 0; i < TVMETA_BLOCKS; ++i) {
        if (BlockKeys[i] != nullptr && p.blocks[i].size > 0) {
            fields[std::string(BlockKeys[i]) + "Length"] = std::to_string(p.blocks[i].size);
            if (p.blocks[i].position >= 0) {
                fields[std::string(BlockKeys[i]) + "Offset"] = std::to_string(p.blocks[i].position);
            }
        }
    }
    addTexts(source, p, fields);
    return fields;
}

// What differs, in a form that can be read.
std::string differences(const Fields& found, const Fields& expected) {
    Fields all = found;
    all.insert(expected.begin(), expected.end());
    std::string lines;
    for (const auto& [key, value] : all) {
        const auto shown = [&name = key](const Fields& fields) {
            return fields.contains(name) ? fields.at(name) : "nothing";
        };
        if (shown(found) != shown(expected)) {
            lines += key + ": " + shown(found) + " instead of " + shown(expected) + '\n';
        }
    }
    return lines;
}

TEST(Photo, EveryContainer) {
    for (const Photograph& photo : photographs()) {
        SCOPED_TRACE(photo.name);
        const tvmeta_Source source = memorySource(photo.bytes);
        tvmeta_Photo record = emptyRecord();
        EXPECT_EQ(tvmeta_read_photo(&source, &record), photo.status);
        EXPECT_EQ(differences(fieldsOf(source, record), expectedFields(photo)), "");
        EXPECT_EQ(record.damaged, photo.damaged);
        EXPECT_EQ(record.brokenAt >= 0, photo.status == TVMETA_BROKEN);
        for (const auto& [block, content] : photo.blocks) {
            for (const tvmeta_Photo* const known : {&record, static_cast<tvmeta_Photo*>(nullptr)}) {
                Bytes found(content.size(), '\0');
                EXPECT_EQ(tvmeta_read_block(&source, known, block, nullptr, 0), std::ssize(content)) << block;
                EXPECT_EQ(tvmeta_read_block(&source, known, block, found.data(), std::ssize(found) - 1),
                          TVMETA_TOO_SMALL);
                EXPECT_EQ(tvmeta_read_block(&source, known, block, found.data(), std::ssize(found)),
                          std::ssize(content));
                EXPECT_EQ(found, content) << block;
            }
        }
    }
}

TEST(Photo, RefusedKinds) {
    for (const Photograph& file : refusedFiles()) {
        const tvmeta_Source source = memorySource(file.bytes);
        tvmeta_Photo record = emptyRecord();
        EXPECT_EQ(tvmeta_read_photo(&source, &record), TVMETA_REFUSED_KIND) << file.name;
        EXPECT_EQ(inQuotes(tvmeta_format_name(record.format)), file.expected.at("container"));
        EXPECT_EQ(tvmeta_list_tags(&source, &record, nullptr, 0), TVMETA_REFUSED_KIND);
    }
}

} // namespace
