// Random packets, IPTC blocks and shoots.
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
        text += words[random.below(Size)];
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
                                "</rdf:Description>",
                                "<!-- ",
                                " -->",
                                "\n"};
    return isWhole ? "<rdf:RDF>" + textOf(random, xmp, 8) + "</rdf:RDF>" : textOf(random, xmp, 30);
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

// Some patterns, with photographs missing, pauses at and around the limits, and a few that differ.
inline Shoot randomShoot(Random& random) {
    static const Bytes patterns[] = {"0 -2 2 ",  "-2 0 2 ",          "0 -1 1 ",     "-4 -2 0 2 4 ",
                                     "0 -2 ",    "0 -0.7 0.7 ",      "0 ",          "-1 ",
                                     "? ",       "0/0 -2/0 2/0 ",    "2 0 -2 ",     "0 -1 1 -2 2 -3 3 ",
                                     "10 8 12 ", "12/0 10/-2 12/2 ", "0.3 0.6 0.9 "};
    static const Bytes pauses[] = {"0s ", "0.1s ", "0.3s ", "0.5s ", "1.5s ", "3s ",  "8s ",  "20s ", "1s ",  "2s ",
                                   "4s ", "5s ",   "6s ",   "9.5s ", "15s ",  "16s ", "31s ", "60s ", "61s ", "-1s "};
    static const Bytes modes[] = {"bracket ", "auto ",  "manual ", "unmarked ", "bias ",  "level ",
                                  "fine ",    "whole ", "nikon ",  "f0 ",       "noiso ", "iso "};
    Bytes words = textOf(random, modes, 4);
    for (std::uint32_t parts = random.below(4) + 1; parts > 0; --parts) {
        Bytes pattern = patterns[random.below(static_cast<std::uint32_t>(std::size(patterns)))];
        if (random.below(3) == 0) { // pressed slowly
            const Bytes& pause = pauses[random.below(static_cast<std::uint32_t>(std::size(pauses)))];
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

} // namespace test
