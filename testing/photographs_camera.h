// The metadata that the photographs of the table have: one camera, one place, one moment. Containers pack them.
#pragma once

#include "testing/bytes.h"

#include <map>
#include <stdexcept>
#include <string>

namespace test {

// JSON values by the keys of `tvmeta info --json`.
using Fields = std::map<std::string, std::string>;

// A placeholder for a number that is known when the file is complete.
inline const Bytes Later = "\xDE\xAD\xBE\xEF";

// The file with the number in place of the first `Later`.
inline Bytes resolved(Bytes file, const Bytes& number) {
    const std::size_t at = file.find(Later);
    if (at == Bytes::npos || number.size() != Later.size()) {
        throw std::logic_error("no place for a number");
    }
    return file.replace(at, number.size(), number);
}

inline std::uint32_t placeOf(const Bytes& part, const Bytes& file) {
    const std::size_t at = file.find(part);
    if (at == Bytes::npos || file.find(part, at + 1) != Bytes::npos) {
        throw std::logic_error("a part is not in the file once");
    }
    return static_cast<std::uint32_t>(at);
}

inline Tiff::Entry fractionEntry(const Tiff& tiff, unsigned tag, std::int32_t numerator, std::int32_t denominator) {
    return {tag, 10, 1, tiff.rational(static_cast<std::uint32_t>(numerator), static_cast<std::uint32_t>(denominator))};
}

inline std::vector<Tiff::Entry> imageEntries(const Tiff& tiff) {
    return {tiff.textEntry(271, "Tonalvista"), tiff.textEntry(272, "TV-100"),      tiff.shortEntry(274, 6),
            tiff.textEntry(305, "TV 1.0"),     tiff.textEntry(315, "EXIF artist"), tiff.textEntry(33432, "(c) EXIF")};
}

inline std::vector<Tiff::Entry> exifEntries(const Tiff& tiff) {
    return {
        tiff.rationalEntry(33434, 1, 125),
        tiff.rationalEntry(33437, 28, 10),
        tiff.shortEntry(34850, 3),
        tiff.shortEntry(34855, 200),
        tiff.textEntry(36867, "2024:06:21 20:41:07"),
        tiff.textEntry(36880, "+09:00"), // of the last change, which is another time
        tiff.textEntry(36881, "+02:00"),
        fractionEntry(tiff, 37380, -2, 4),
        tiff.shortEntry(37383, 5),
        tiff.shortEntry(37385, 16),
        tiff.rationalEntry(37386, 35, 1),
        tiff.textEntry(37521, "047"),
        tiff.shortEntry(41986, 1),
        tiff.shortEntry(41987, 0),
        tiff.shortEntry(41989, 52),
        tiff.textEntry(42033, "0042"),
        tiff.textEntry(42036, "TV 35mm f/1.8"),
    };
}

// 47 degrees 16' 9.12" N, 11 degrees 24' 14.76" E, 574 m, 18:41:07 UTC.
inline std::vector<Tiff::Entry> gpsEntries(const Tiff& tiff) {
    return {{1, 2, 2, "N"},
            {2, 5, 3, tiff.rational(47, 1) + tiff.rational(16, 1) + tiff.rational(912, 100)},
            {3, 2, 2, "E"},
            {4, 5, 3, tiff.rational(11, 1) + tiff.rational(24, 1) + tiff.rational(1476, 100)},
            {5, 1, 1, Bytes(1, '\0')},
            tiff.rationalEntry(6, 574, 1),
            {7, 5, 3, tiff.rational(18, 1) + tiff.rational(41, 1) + tiff.rational(7, 1)},
            tiff.textEntry(29, "2024:06:21")};
}

inline const Fields Camera = {
    {"make", "\"Tonalvista\""},    {"model", "\"TV-100\""},
    {"orientation", "6"},          {"serialNumber", "\"0042\""},
    {"lens", "\"TV 35mm f/1.8\""}, {"dateTimeOriginal", "\"2024:06:21 20:41:07\""},
    {"subSecond", "\"047\""},      {"utcOffset", "\"+02:00\""},
    {"exposureTime", "0.008"},     {"fNumber", "2.8"},
    {"isoSpeed", "200"},           {"exposureBias", "-0.5"},
    {"exposureMode", "1"},         {"exposureProgram", "3"},
    {"meteringMode", "5"},         {"flash", "16"},
    {"whiteBalance", "0"},         {"focalLength", "35"},
    {"focalLength35mm", "52"},     {"gpsLatitude", "47.2692"},
    {"gpsLongitude", "11.4041"},   {"gpsAltitude", "574"},
    {"gpsDate", "\"2024:06:21\""}, {"gpsTime", "\"18:41:07\""},
    {"artist", "\"EXIF artist\""}, {"copyright", "\"(c) EXIF\""},
    {"software", "\"TV 1.0\""},
};

// A JPEG of a size, without metadata. The number makes it another one.
inline Bytes plainJpeg(unsigned width, unsigned height, unsigned number) {
    return jpeg(segment(0xFE, "number " + std::to_string(number)) +
                segment(0xC0, "\x08" + be16(height) + be16(width) + "\x01\x01\x11" + zeros(1)));
}

inline const Bytes Thumbnail = plainJpeg(16, 12, 1);
inline const Bytes Preview = plainJpeg(32, 24, 2);
inline const Bytes Profile =
    zeros(36) + "acsp" + zeros(88) + "desc" + zeros(8) + "a profile of 160 bytes, " + zeros(24);

inline Bytes xmp(const Bytes& properties, const Bytes& attributes = "") {
    return "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>"
           "<rdf:Description rdf:about='' " +
           attributes + ">" + properties + "</rdf:Description></rdf:RDF></x:xmpmeta>";
}

inline const Bytes Packet =
    xmp("<dc:title><rdf:Alt><rdf:li xml:lang='x-default'>Sea &amp; sky</rdf:li></rdf:Alt></dc:title>"
        "<dc:subject><rdf:Bag><rdf:li>sea</rdf:li><rdf:li>sky</rdf:li></rdf:Bag></dc:subject>",
        "xmp:Rating='4'");
inline const Fields PacketFields = {{"title", "\"Sea & sky\""}, {"keywords", "[\"sea\",\"sky\"]"}, {"rating", "4"}};

inline Bytes dataset(unsigned number, const Bytes& value) {
    return Bytes("\x1C\x02") + static_cast<char>(number) + be16(static_cast<unsigned>(value.size())) + value;
}
inline const Bytes IptcBlock = dataset(5, "IPTC title") + dataset(25, "iptc") + dataset(80, "IPTC artist") +
                               dataset(25, "k\xFChl") + dataset(120, "IPTC caption");
// Where there is no packet.
inline const Fields IptcFields = {{"title", "\"IPTC title\""},
                                  {"keywords", "[\"iptc\",\"k\xC3\xBChl\"]"},
                                  {"artist", "\"IPTC artist\""},
                                  {"description", "\"IPTC caption\""}};

using Entries = std::vector<Tiff::Entry>;

// All directories in one structure. `images` are entries that a container adds to the first directory; `next` is the
// offset of a thumbnail directory.
inline Bytes cameraTiff(Tiff tiff, const Entries& images = {}, std::uint32_t next = 0) {
    const std::uint32_t exif = tiff.add(exifEntries(tiff));
    const std::uint32_t gps = tiff.add(gpsEntries(tiff));
    Entries entries = imageEntries(tiff);
    entries.insert(entries.end(), images.begin(), images.end());
    entries.push_back(tiff.longEntry(34665, exif));
    entries.push_back(tiff.longEntry(34853, gps));
    return tiff.finish(tiff.add(entries, next));
}

// The same, followed by a thumbnail whose directory has an orientation of its own.
inline Bytes cameraTiffWithThumbnail(bool little = true) {
    Tiff tiff(little);
    const std::uint32_t next = tiff.add({tiff.shortEntry(259, 6),
                                         tiff.shortEntry(274, 1),
                                         {513, 4, 1, Later},
                                         tiff.longEntry(514, static_cast<std::uint32_t>(Thumbnail.size()))});
    const Bytes structure = cameraTiff(tiff, {}, next);
    return resolved(structure, tiff.n32(static_cast<std::uint32_t>(structure.size()))) + Thumbnail;
}

} // namespace test
