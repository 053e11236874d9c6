// Random numbers as text, packets, IPTC blocks, photographs and shoots.
#pragma once

#include "testing/golden.h"
#include "testing/results.h"
#include "testing/shoots.h"

namespace test {

// A text of some of these words, in random order.
template <std::size_t Size>
Bytes textOf(Random& random, const Bytes (&words)[Size], std::uint32_t most) {
    Bytes text;
    for (std::uint32_t count = random.below(most); count > 0; --count) {
        text += random.oneOf(words);
    }
    return text;
}

// Digits with what may follow them in a number, and space.
inline Bytes randomNumber(Random& random) {
    static constexpr std::string_view Characters = "0123456789012345678901234567890123456789..eE+-\t\r ";
    Bytes text = random.below(4) == 0 ? "-" : "";
    for (std::uint32_t length = random.below(40) + 1; length > 0; --length) {
        text += Characters[random.below(length > 30 ? 10 : std::uint32_t{Characters.size()})];
    }
    return text;
}

// Parts of XMP; `isWhole`: inside of rdf:RDF.
inline Bytes randomPacket(Random& random, bool isWhole) {
    static const Bytes xmp[] = {"<dc:subject>",
                                "</dc:subject>",
                                "<rdf:Bag>",
                                "</rdf:Bag>",
                                "<rdf:li>lake</rdf:li>",
                                "<rdf:li/>",
                                "<rdf:RDF>",
                                "</rdf:RDF>",
                                "<rdf:Description rdf:about='' dc:subject='x' tiff:Orientation='3'>",
                                "<tiff:ImageWidth>77</tiff:ImageWidth>",
                                "<x\rtiff:ImageWidth='7'\ttiff:ImageLength='9'\nexif:PixelXDimension='7'>",
                                "</rdf:Description>",
                                "<!-- ",
                                " -->",
                                "\n"};
    return isWhole ? "<rdf:RDF>" + textOf(random, xmp, 8) + "</rdf:RDF>" : textOf(random, xmp, 30);
}

// A packet of settings: of each parameter most, in the forms and words of all versions.
inline Bytes randomSettings(Random& random, std::int32_t method) {
    static const Bytes versions[] = {"5.0", "5.0", "2.4", "2.5", "2.0", "3.0", "1.5", "12.4", "x"};
    static const Bytes words[] = {"Light", "Slider", "Very High", "High", "Medium", "Medium Low", "Yes", "No", "Low"};
    Bytes lines;
    tvmeta_Parameter parameter;
    for (std::int32_t i = 0; tvmeta_parameter(method, i, &parameter) > 0; ++i) {
        const Bytes value = random.below(2) == 0 ? random.oneOf(words) : randomNumber(random);
        if (random.below(4) != 0 && parameter.kind != TVMETA_GAMMA) { // of which the last bit depends on the platform
            const Bytes prefix = random.below(16) == 0 ? "Noise" : "";
            lines += random.below(4) == 0 ? attribute(prefix + parameter.name, value)
                                          : element(prefix + parameter.name, value);
        }
    }
    const Bytes text = elementPacket(tvmeta_method_name(method), lines, random.oneOf(versions));
    return random.below(2) == 0 ? text : lensPacket("<aux:Lens>TV 35mm</aux:Lens>") + text;
}

inline Bytes randomBlock(Random& random) {
    static const Bytes iptc[] = {dataset(1, 90, "\x1B%G"),
                                 dataset(1, 0, Bytes("\0\4", 2)),
                                 dataset(2, 0, Bytes("\0\2", 2)),
                                 dataset(2, 25, "lake"),
                                 dataset(2, 25, "s\xE9"),
                                 dataset(2, 90, "Ulm"),
                                 dataset(3, 0, "x"),
                                 Bytes("\x1C\2\x19\x80\2\0\2ab", 9),
                                 Bytes("\x1C\2"),
                                 Bytes(1, '\0')};
    return textOf(random, iptc, 8);
}

// XMP with a title, texts of all kinds in it, and what surrounds it.
inline Bytes randomTitle(Random& random) {
    static const Bytes words[] = {"<dc:title>",
                                  "</dc:title>",
                                  "<dc:title/>",
                                  "</dc:title",
                                  "dc:title=",
                                  "<rdf:Alt>",
                                  "<rdf:li>",
                                  "<rdf:li/>",
                                  "</rdf:li>",
                                  "</rdf:Alt>",
                                  "<rdf:li x='y'>",
                                  "lake",
                                  " ",
                                  "\n",
                                  "\"",
                                  "'",
                                  ">",
                                  "<",
                                  "s\xC3\xA9",
                                  "s\xE9",
                                  "&amp;",
                                  "&#x41;",
                                  "&#65;",
                                  "&#x1F600;",
                                  "&lt",
                                  "&;",
                                  "dc:titles",
                                  "<a dc:title='b' c=\"d\">"};
    const Bytes start = random.below(2) == 0 ? "<dc:title>" : "";
    return start + textOf(random, words, 14);
}

// A tag that readers look at, its type and number of items; of texts 0.
struct UsualTag {
    unsigned tag, type, count = 1;
};
inline constexpr UsualTag ImageTags[] = {
    {254, 4},      {256, 4},   {257, 4},   {259, 3},    {262, 3},      {270, 2, 0},   {271, 2, 0},   {272, 2, 0},
    {273, 4},      {274, 3},   {279, 4},   {305, 2, 0}, {315, 2, 0},   {513, 4},      {514, 4},      {18246, 3},
    {33432, 2, 0}, {33434, 5}, {33437, 5}, {34855, 3},  {40091, 1, 8}, {40093, 1, 8}, {40094, 1, 8}, {50735, 2, 0}};
inline constexpr UsualTag ExifTags[] = {
    {33434, 5},    {33437, 5},    {34850, 3},    {34855, 3},    {34865, 4},    {34866, 4},    {34867, 4},
    {36867, 2, 0}, {36868, 2, 0}, {36881, 2, 0}, {36882, 2, 0}, {37377, 10},   {37378, 5},    {37380, 10},
    {37381, 5},    {37383, 3},    {37385, 3},    {37386, 5},    {37521, 2, 0}, {37522, 2, 0}, {41486, 5},
    {41488, 3},    {41493, 5},    {41986, 3},    {41987, 3},    {41989, 3},    {42033, 2, 0}, {42036, 2, 0}};
inline constexpr UsualTag GpsTags[] = {{1, 2, 0}, {2, 5, 3}, {3, 2, 0}, {4, 5, 3},
                                       {5, 1},    {6, 5},    {7, 5, 3}, {29, 2, 0}};

// Half of the tags, most of the usual type, with values at the edges of what they mean.
template <std::size_t Size>
std::vector<Tiff::Entry> randomEntries(Random& random, const Tiff& tiff, const UsualTag (&tags)[Size]) {
    static constexpr std::uint32_t Numbers[] = {0,   1,   2,     3,     4,          5,          6,         7,
                                                8,   9,   10,    59,    60,         90,         100,       180,
                                                255, 256, 65535, 65536, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
    static const Bytes words[] = {"2024:06:21 ", "20:41:07", "12:00:00", "1969:12:31", "24",          ":60",
                                  "+02:00",      "-13:45",   "Z",        "0000",       "25",          "NIKON",
                                  "TV ",         "N",        "S",        "W",          "s\xC3\xA9",   "s\xE9",
                                  " ",           "1, 2",     "R98",      ";",          "\xE2\x82\xAC"};
    std::vector<Tiff::Entry> entries;
    for (const UsualTag& usual : tags) {
        if (random.below(2) == 0) {
            continue;
        }
        const unsigned type = random.below(8) == 0 ? random.below(14) : usual.type;
        std::uint32_t count = random.below(8) == 0 ? random.below(4) : usual.count;
        Bytes value;
        if (type == 2) {
            value = textOf(random, words, 5) + zeros(1);
            count = static_cast<std::uint32_t>(value.size());
        }
        for (std::uint32_t i = 0; type != 2 && i < count * (type == 5 || type == 10 ? 2 : 1); ++i) {
            const std::uint32_t number = random.below(6) == 0 ? random.next() : random.oneOf(Numbers);
            value += type == 1 || type == 6 || type == 7 ? Bytes(1, static_cast<char>(number))
                     : type == 3 || type == 8            ? tiff.n16(number & 0xFFFF)
                                                         : tiff.n32(number);
        }
        entries.push_back({usual.tag, type, count, value});
    }
    return entries;
}

// XMP with values that photographs lack.
inline Bytes randomProperties(Random& random) {
    static const Bytes properties[] = {"<aux:Lens>TV 35mm</aux:Lens>",
                                       " aux:Lens='TV 50mm f/1.8'",
                                       "<exifEX:LensModel>TV 85mm</exifEX:LensModel>",
                                       "<xmp:Rating>4</xmp:Rating>",
                                       "<tiff:Orientation>6</tiff:Orientation>",
                                       "<aux:Lens></aux:Lens>",
                                       "xmlns:aux='http://ns.adobe.com/exif/1.0/aux/'",
                                       "\n"};
    return "<rdf:RDF>" + textOf(random, properties, 4) + "</rdf:RDF>";
}

// A TIFF photograph with another page, a child, EXIF data and XMP.
inline Bytes randomPhoto(Random& random) {
    Tiff tiff(random.below(2) == 0);
    const std::uint32_t exif = tiff.add(randomEntries(random, tiff, ExifTags));
    const std::uint32_t gps = tiff.add(randomEntries(random, tiff, GpsTags));
    const std::uint32_t child = tiff.add(randomEntries(random, tiff, ImageTags));
    const std::uint32_t next = tiff.add(randomEntries(random, tiff, ImageTags));
    std::vector<Tiff::Entry> image = randomEntries(random, tiff, ImageTags);
    image.push_back(tiff.longEntry(330, child));
    image.push_back(tiff.longEntry(34665, exif));
    image.push_back(tiff.longEntry(34853, gps));
    if (const Bytes xmp = randomProperties(random); random.below(2) == 0) {
        image.push_back({700, 1, static_cast<std::uint32_t>(xmp.size()), xmp});
    }
    return tiff.finish(tiff.add(image, next));
}

// Some patterns, with photographs missing, pauses at and around the limits, and a few that differ.
inline Shoot randomShoot(Random& random) {
    static const Bytes patterns[] = {"0 -2 2 ",  "-2 0 2 ",          "0 -1 1 ",      "-4 -2 0 2 4 ",
                                     "0 -2 ",    "0 -0.7 0.7 ",      "0 ",           "-1 ",
                                     "? ",       "0/0 -2/0 2/0 ",    "2 0 -2 ",      "0 -1 1 -2 2 -3 3 ",
                                     "10 8 12 ", "12/0 10/-2 12/2 ", "0.3 0.6 0.9 ", "-2/-4 -2/-2 0/0 2/2 2/4 ",
                                     "20 18 22 "};
    static const Bytes pauses[] = {"0s ", "0.1s ", "0.3s ", "0.5s ", "1.5s ", "3s ",  "8s ",  "20s ", "1s ",  "2s ",
                                   "4s ", "5s ",   "6s ",   "9.5s ", "15s ",  "16s ", "31s ", "60s ", "61s ", "-1s "};
    static const Bytes modes[] = {"bracket ", "auto ",  "manual ", "unmarked ", "bias ",  "level ",
                                  "fine ",    "whole ", "nikon ",  "f0 ",       "noiso ", "iso "};
    static const Bytes cameras[] = {"bracket bias fine ",     "bracket level fine ", "bracket bias whole ",
                                    "auto bias fine ",        "auto level fine ",    "nikon auto bias fine ",
                                    "nikon auto bias whole ", "manual level fine ",  ""};
    Bytes words = random.oneOf(cameras);
    words += textOf(random, modes, 3);
    for (std::uint32_t parts = random.below(4) + 1; parts > 0; --parts) {
        Bytes pattern = random.oneOf(patterns);
        if (random.below(3) == 0) { // pressed slowly
            const Bytes& pause = random.oneOf(pauses);
            pattern.insert(pattern.find(' ') + 1, random.below(2) == 0 ? pause : "1s ");
            pattern.insert(pattern.rfind(' ') + 1, pause);
        }
        const Bytes pause = textOf(random, pauses, 3);
        for (std::uint32_t times = random.below(4) + 1; times > 0; --times) {
            words += pattern + pause;
        }
        words += textOf(random, modes, 2);
    }
    Shoot shoot = Photographer().take(words);
    for (tvmeta_Shot& shot : shoot.shots) {
        if (random.below(30) == 0) {
            const std::uint32_t what = random.below(6);
            shot.focalLength += what == 0 ? 1.0F : 0;
            shot.orientation = what == 1 ? 6 : 1;
            shot.name = what == 2 ? "IMG_9.jpg" : shot.name;
            shot.present ^= what == 5 ? bit(TVMETA_EXPOSURE_BIAS) : 0;
            shot.format = what == 3 ? TVMETA_FORMAT_RAF : shot.format;
            shot.serialNumber = what == 4 ? 2 : 1;
        }
    }
    if (random.below(5) == 0) { // a card whose first folder is full
        const std::uint32_t full = random.below(static_cast<std::uint32_t>(shoot.shots.size()));
        for (std::size_t i = 0; i < shoot.shots.size(); ++i) {
            shoot.shots[i].folder = i < full ? "100TVCAM" : "101TVCAM";
        }
    }
    shoot.shots.erase(shoot.shots.begin() + random.below(static_cast<std::uint32_t>(shoot.shots.size())));
    return shoot;
}

// Files with names that continue each other, of few cameras, with pauses that are exact: some are exactly a limit.
inline Shoot randomFiles(Random& random) {
    static const Bytes stems[] = {"IMG_1", "IMG_2", "IMG_10", "IMG_9999", "IMG_0001", "A", "a", ""};
    static const Bytes ends[] = {"-1", "_2", " b", "0", "+", "_hdr"};
    static const Bytes extensions[] = {".jpg", ".JPG", ".raf", ".tif", ".TIFF", ".psd", ""};
    static constexpr const char* Folders[] = {"day", "day", "DAY", nullptr};
    static constexpr std::int32_t Formats[] = {TVMETA_FORMAT_JPEG, TVMETA_FORMAT_TIFF, TVMETA_FORMAT_RAF,
                                               TVMETA_FORMAT_HEIF, TVMETA_FORMAT_PSD,  TVMETA_FORMAT_CR3};
    static constexpr std::uint32_t Quarters[] = {0, 0, 0, 1, 2, 3, 4, 5, 8, 9, 20, 40, 60, 120, 124};
    static constexpr float Times[] = {0.25F, 0.25F, 0.5F, 1, 2, 4, 8}; // seconds
    Shoot shoot;
    const bool areVersions = random.below(2) == 0;
    std::uint32_t clock = 0; // a quarter of a second
    Bytes name = random.oneOf(stems);
    for (std::uint32_t files = random.below(16) + 1; files > 0; --files) {
        tvmeta_Shot shot = {};
        shot.recordSize = sizeof shot;
        shot.present = bit(TVMETA_CAPTURE_TIME) | bit(TVMETA_SUB_SECOND) | bit(TVMETA_EXPOSURE_TIME) |
                       bit(TVMETA_EXPOSURE_BIAS) | bit(TVMETA_EXPOSURE_MODE) | bit(TVMETA_F_NUMBER);
        shot.present ^= random.below(8) == 0 ? std::uint64_t{random.next()} << 8 : 0;
        name = areVersions && random.below(6) != 0 ? name : random.oneOf(stems);
        name += random.oneOf(ends);
        shoot.names.push_back(name + random.oneOf(extensions));
        shot.name = shoot.names.back().c_str();
        shot.folder = random.below(6) == 0 ? random.oneOf(Folders) : "day";
        shot.format = random.oneOf(Formats);
        shot.camera = random.below(8) == 0 ? 8 : 7;
        shot.serialNumber = random.below(8) == 0 ? random.below(3) : 1;
        shot.exposureTime = areVersions && random.below(4) != 0 ? 1 : random.oneOf(Times);
        shot.fNumber = random.below(10) == 0 ? 8.08F : 8;
        shot.exposureMode = static_cast<std::int32_t>(random.below(3));
        shot.exposureBias = static_cast<float>(random.below(9)) / 2 - 2;
        clock += areVersions && random.below(4) != 0 ? 0 : random.oneOf(Quarters);
        shot.captureTime = 1000000000 + clock / 4;
        shot.captureNanoseconds = static_cast<std::int32_t>(clock % 4) * 250000000;
        clock += random.below(8) == 0 ? 0 : static_cast<std::uint32_t>(4 * shot.exposureTime);
        shoot.shots.push_back(shot);
    }
    return shoot;
}

} // namespace test
