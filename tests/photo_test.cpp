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
    std::array<char, 600> buffer{};
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
            if (p.blocks[i].position != -1) {
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

// The values of EXIF at the edges of what they mean. An empty value: the record has none.
TEST(Photo, ValuesAtTheirEdges) {
    const Tiff t;
    const auto part = [&](unsigned numerator, unsigned denominator) { return t.rational(numerator, denominator); };
    const auto rationals = [](unsigned tag, const Bytes& values) {
        return Tiff::Entry{tag, 5, static_cast<std::uint32_t>(values.size() / 8), values};
    };
    const auto time = [&](const Bytes& text) { return Entries{t.textEntry(36867, text)}; };
    const auto withTime = [&](unsigned tag, const Bytes& text) {
        return Entries{t.textEntry(36867, "2024:02:29 23:59:59"), t.textEntry(tag, text)};
    };
    const auto latitude = [&](const Bytes& values) { return Entries{{1, 2, 2, "S"}, rationals(2, values)}; };
    const auto clock = [&](const Bytes& values) {
        return Entries{rationals(7, values), t.textEntry(29, "2024-02-28")};
    };
    const Bytes zero = part(0, 1), euro = "\xE2\x82\xAC", clef = "\xF0\x9D\x84\x9E";
    const auto lens = [&](const Bytes& character, int count, const char* start) {
        return Entries{t.textEntry(42036, repeated(character, count, start))};
    };
    const auto text = [](const Bytes& character, int count, const char* start) {
        return inQuotes(repeated(character, count, start));
    };
    struct Row {
        const char* what;
        Entries exif, gps;
        const char* key;
        std::string value;
        int damaged = -1;
    };
    std::vector<Row> rows = {
        {"no text", {{36867, 99, 1, "x"}}, {}, "dateTimeOriginal", "", TVMETA_CAPTURE_TIME},
        {"other separators", time("2024/06-21T00:00:00"), {}, "dateTimeOriginal", "\"2024:06:21 00:00:00\""},
        {"points", time("1970.01.01 23:59:60"), {}, "dateTimeOriginal", "\"1970:01:02 00:00:00\""},
        {"universal time", withTime(36881, "Z"), {}, "utcOffset", "\"+00:00\""},
        {"half an hour", withTime(36881, "+00:30"), {}, "utcOffset", "\"+00:30\""},
        {"far west", withTime(36881, "-15:59"), {}, "utcOffset", "\"-15:59\""},
        {"unknown offset", withTime(36881, "   :  "), {}, "utcOffset", ""},
        {"nanoseconds", withTime(37521, "000000019"), {}, "subSecond", "\"000000019\""},
        {"letters in a fraction", withTime(37521, "1o"), {}, "subSecond", "", TVMETA_SUB_SECOND},
        {"unknown fraction", withTime(37521, "  "), {}, "subSecond", ""},
        {"south pole", {}, latitude(part(90, 1) + zero + zero), "gpsLatitude", "-90"},
        {"beyond the pole", {}, latitude(part(90, 1) + zero + part(1, 1)), "gpsLatitude", "", TVMETA_LATITUDE},
        {"degrees alone", {}, latitude(part(95, 2)), "gpsLatitude", "-47.5"},
        {"no degrees", {}, latitude(""), "gpsLatitude", "", TVMETA_LATITUDE},
        {"unknown degrees", {}, latitude(part(0, 0) + zero + zero), "gpsLatitude", "", TVMETA_LATITUDE},
        {"unknown seconds", {}, latitude(part(47, 1) + part(30, 1) + part(0, 0)), "gpsLatitude", "-47.5"},
        {"a fourth number", {}, latitude(part(47, 1) + zero + zero + part(60, 1)), "gpsLatitude", "-47"},
        {"impossible minutes", {}, latitude(part(47, 1) + part(1, 0) + zero), "gpsLatitude", "", TVMETA_LATITUDE},
        {"date line", {}, {{3, 2, 2, "W"}, rationals(4, part(180, 1))}, "gpsLongitude", "-180"},
        {"beyond it", {}, {rationals(4, part(181, 1))}, "gpsLongitude", "", TVMETA_LONGITUDE},
        {"below sea level", {}, {{5, 1, 1, "\1"}, rationals(6, part(13, 2))}, "gpsAltitude", "-6.5"},
        {"other reference", {}, {{5, 1, 1, "\2"}, rationals(6, part(13, 2))}, "gpsAltitude", "6.5"},
        {"unknown altitude", {}, {rationals(6, part(0, 0))}, "gpsAltitude", ""},
        {"impossible altitude", {}, {rationals(6, part(1, 0))}, "gpsAltitude", "", TVMETA_ALTITUDE},
        {"last hour", {}, clock(part(24, 1) + part(59, 1) + part(59, 1)), "gpsTime", "\"00:59:59\""},
        {"its date", {}, clock(part(24, 1) + part(59, 1) + part(59, 1)), "gpsDate", "\"2024:02:29\""},
        {"midnight", {}, clock(zero + zero + zero), "gpsTime", "\"00:00:00\""},
        {"hour 25", {}, clock(part(25, 1) + zero + zero), "gpsTime", "", TVMETA_GPS_TIME},
        {"time without date", {}, {rationals(7, part(1, 1))}, "gpsTime", ""},
        // Of a text that is read in part, a character that is cut must not make all of it Latin-1.
        {"three bytes, cut after 1", lens(euro, 400, ""), {}, "lens", text(euro, 42, ""), TVMETA_LENS},
        {"three bytes, cut after 2", lens(euro, 400, "xx"), {}, "lens", text(euro, 41, "xx"), TVMETA_LENS},
        {"four bytes, cut after 1", lens(clef, 300, "xxx"), {}, "lens", text(clef, 31, "xxx"), TVMETA_LENS},
        {"four bytes, cut after 2", lens(clef, 300, "xx"), {}, "lens", text(clef, 31, "xx"), TVMETA_LENS},
        {"four bytes, cut after 3", lens(clef, 300, "x"), {}, "lens", text(clef, 31, "x"), TVMETA_LENS},
        {"orientation 1", {t.shortEntry(274, 1)}, {}, "orientation", "1"},
        {"orientation 8", {t.shortEntry(274, 8)}, {}, "orientation", "8"},
        {"automatic exposure", {t.shortEntry(41986, 0)}, {}, "exposureMode", "0"},
        {"unknown program", {t.shortEntry(34850, 0)}, {}, "exposureProgram", "0"},
        {"unknown metering", {t.shortEntry(37383, 0)}, {}, "meteringMode", "0"},
        {"no flash", {t.shortEntry(37385, 0)}, {}, "flash", "0"},
        {"largest number", {t.longEntry(41987, 65535)}, {}, "whiteBalance", "65535"},
        {"number beyond", {t.longEntry(41987, 65536)}, {}, "whiteBalance", "", TVMETA_WHITE_BALANCE},
        {"byte", {{274, 1, 1, "\3"}}, {}, "orientation", "3"},
        {"signed byte", {{41987, 6, 1, "\1"}}, {}, "whiteBalance", "1"},
        {"signed short below 0", {{41987, 8, 1, t.n16(0xFFFF)}}, {}, "whiteBalance", "", TVMETA_WHITE_BALANCE},
        {"signed long", {{41987, 9, 1, t.n32(3)}}, {}, "whiteBalance", "3"},
        {"signed long below 0", {{41987, 9, 1, t.n32(0xFFFFFFFF)}}, {}, "whiteBalance", "", TVMETA_WHITE_BALANCE},
        {"long of BigTIFF", {{41987, 16, 1, t.n32(5) + t.n32(0)}}, {}, "whiteBalance", "5"},
        {"the largest", {{41987, 16, 1, Bytes(8, '\xFF')}}, {}, "whiteBalance", "", TVMETA_WHITE_BALANCE},
        {"digits", {{41987, 2, 2, Bytes("1\0", 2)}}, {}, "whiteBalance", "", TVMETA_WHITE_BALANCE},
        {"number as fraction", {t.shortEntry(33434, 4)}, {}, "exposureTime", "4"},
        {"digits as fraction", {t.textEntry(33434, "4")}, {}, "exposureTime", "", TVMETA_EXPOSURE_TIME},
        {"fraction of many bits", {rationals(33434, part(3000000000, 1000000000))}, {}, "exposureTime", "3"},
        {"short lens", {t.shortEntry(41989, 1)}, {}, "focalLength35mm", "1"},
        {"no bias", {fractionEntry(t, 37380, 0, 3)}, {}, "exposureBias", "0"},
        {"unknown bias", {fractionEntry(t, 37380, 0, 0)}, {}, "exposureBias", ""},
        {"time beyond APEX", {fractionEntry(t, 37377, -40, 1)}, {}, "exposureTime", ""},
        {"two signs", {fractionEntry(t, 33434, -1, -4)}, {}, "exposureTime", "0.25"},
        {"below 0", {fractionEntry(t, 33434, 1, -4)}, {}, "exposureTime", "", TVMETA_EXPOSURE_TIME},
        {"ISO beyond the tag", {t.shortEntry(34855, 65535)}, {}, "isoSpeed", "65535"},
        {"ISO of another tag", {t.longEntry(34867, 50)}, {}, "isoSpeed", "50"},
        {"largest ISO", {t.longEntry(34867, 0x7FFFFFFF)}, {}, "isoSpeed", "2147483647"},
        {"larger ISO", {t.longEntry(34867, 0x80000000)}, {}, "isoSpeed", "", TVMETA_ISO_SPEED},
        {"exposure index 1", {rationals(41493, part(1, 1))}, {}, "isoSpeed", "1"},
        {"exposure index below", {rationals(41493, part(99, 100))}, {}, "isoSpeed", ""},
    };
    for (const char* const wrong :
         {"2024:06:21 24:00:00", "2024:06:21 20:60:00", "2024:06:21 20:41:61", "2024:06:21 20:41",
          "2024:06:21 2o:41:07", "0000:06:21 20:41:07", "2024:00:21 20:41:07", "2024:13:21 20:41:07",
          "2024:06:00 20:41:07", "2024_06:21 20:41:07", "2024:06_21 20:41:07", "2024:06:21_20:41:07",
          "2024:06:21 20.41:07", "2024:06:21 20:41.07"}) {
        rows.push_back({wrong, time(wrong), {}, "dateTimeOriginal", "", TVMETA_CAPTURE_TIME});
    }
    for (const char* const wrong : {"+16:00", "+02:60", "02:00", "+0200"}) {
        rows.push_back({wrong, withTime(36881, wrong), {}, "utcOffset", "", TVMETA_UTC_OFFSET});
    }
    for (const auto& row : rows) {
        Tiff tiff;
        const std::uint32_t exif = tiff.add(row.exif), gps = tiff.add(row.gps);
        const Bytes bytes = tiff.finish(tiff.add({tiff.longEntry(34665, exif), tiff.longEntry(34853, gps)}));
        const tvmeta_Source source = memorySource(bytes);
        tvmeta_Photo record = emptyRecord();
        EXPECT_EQ(tvmeta_read_photo(&source, &record), TVMETA_OK) << row.what;
        Fields fields = fieldsOf(source, record);
        EXPECT_EQ(fields[row.key], row.value) << row.what;
        EXPECT_EQ(record.damaged, row.damaged < 0 ? 0 : std::uint64_t{1} << row.damaged) << row.what;
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
