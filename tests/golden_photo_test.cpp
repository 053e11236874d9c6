// Results of generated inputs of the functions of tvmeta_photo.h: kept tags, results of damaged photographs, keywords,
// brackets. The reader's are in photo_hostile_test.
#include "testing/golden.h"
#include "testing/photographs_table.h"
#include "testing/results.h"
#include "testing/shoots.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>

using namespace test;

namespace {

constexpr float Settings[SETTINGS_SLOTS] = {5, 3, 70};

void addSaved(Digest& digest, const Saved& saved) {
    digest.addRecord(saved.status);
    std::ranges::for_each(saved.losses, [&](const tvmeta_Loss& loss) { digest.addRecord(loss); });
    digest.add(saved.file);
}

// Every tag of every directory, 512 in a photograph, with types and counts of all kinds.
TEST(Golden, KeptTags) {
    constexpr std::array Directories = {&PhotoParts::image, &PhotoParts::exif, &PhotoParts::gps,
                                        &PhotoParts::interoperability};
    Results results;
    Random random;
    for (std::size_t directory = 0; directory < Directories.size(); ++directory) {
        Digest digest;
        PhotoParts parts;
        for (unsigned tag = 0; tag <= 0xFFFF; ++tag) {
            constexpr unsigned Parents[] = {256, 257, 330, 700, 33723, 34377, 34665, 34853, 40965};
            const std::uint32_t type = random.below(16), count = random.below(type == 2 ? 7 : 3);
            if (std::ranges::find(Parents, tag) == std::end(Parents)) {
                (parts.*Directories[directory]).push_back({tag, type, count, Bytes("1\1\2\0\4\3\2\1", 8)});
            }
            if (tag % 512 == 511) {
                addSaved(digest, save(photoOf(std::exchange(parts, {}), tag % 1024 == 511)));
            }
            if (tag % 4096 == 4095) {
                results.add("directory " + std::to_string(directory), digest.value());
            }
        }
    }
    results.compare("kept");
}

TEST(Golden, ResultsOfDamagedPhotographs) {
    const std::array<const char*, 2> keywords = {"lake", "s\xC3\xA9"};
    Results results;
    Random random;
    for (const Photograph& photo : photographs()) {
        Digest digest;
        for (int round = 0; round < 60; ++round) {
            Bytes changed = photo.bytes;
            const std::uint32_t at = random.below(static_cast<std::uint32_t>(changed.size()));
            changed.replace(at, static_cast<std::size_t>(round % 2), 1,
                            static_cast<char>(random.below(3) == 0 ? random.next() : at % 3 - 1));
            addSaved(digest, save(changed, [&](tvmeta_Result& result) {
                         result.keywords = keywords.data();
                         result.keywordCount = round % 3;
                         result.method = round % 5 == 0 ? METHOD_FUSION_INTENSIVE : METHOD_NONE;
                         result.settings = Settings;
                         result.bitsCode = round % 7 == 0 ? 3216 : 8;
                         result.width = result.bitsCode == 8 ? 2 : 1;
                     }));
        }
        results.add(photo.name, digest.value());
    }
    results.compare("damaged");
}

// A text of some of these words, in random order.
template <std::size_t Size>
Bytes textOf(Random& random, const Bytes (&words)[Size], std::uint32_t most) {
    Bytes text;
    for (std::uint32_t count = random.below(most); count > 0; --count) {
        text += words[random.below(Size)];
    }
    return text;
}

TEST(Golden, Keywords) {
    const Bytes xmp[] = {"<dc:subject>",
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
    const Bytes iptc[] = {dataset(1, 90, "\x1B%G"),
                          dataset(1, 0, Bytes("\0\4", 2)),
                          dataset(2, 0, Bytes("\0\2", 2)),
                          dataset(2, 25, "lake"),
                          dataset(2, 25, "s\xE9"),
                          dataset(2, 90, "Ulm"),
                          dataset(3, 0, "x"),
                          Bytes("\x1C\2\x19\x80\2\0\2ab", 9),
                          Bytes("\x1C\2"),
                          Bytes(1, '\0')};
    const std::array<const char*, 3> keywords = {"lake", "fog", "s\xC3\xA9"};
    Results results;
    Random random;
    Digest digest;
    for (int round = 1; round <= 3000; ++round) {
        const Bytes block = textOf(random, iptc, 8);
        const Bytes packet =
            round % 3 == 0 ? textOf(random, xmp, 30) : "<rdf:RDF>" + textOf(random, xmp, 8) + "</rdf:RDF>";
        addSaved(digest, save("", [&](tvmeta_Result& result) {
                     result.keywords = keywords.data();
                     result.keywordCount = round % 4;
                     result.iptc = block.data();
                     result.iptcSize = std::ssize(block);
                     result.xmp = packet.data();
                     result.xmpSize = std::ssize(packet);
                     result.method = round % 9 == 0 ? METHOD_FUSION_INTENSIVE : METHOD_NONE;
                     result.settings = Settings;
                 }));
        if (round % 100 == 0) {
            results.add("keywords", digest.value());
        }
    }
    results.compare("keywords");
}

// Shoots of some patterns, with photographs missing, pauses at and around the limits, and names with gaps.
TEST(Golden, Brackets) {
    const Bytes patterns[] = {"0 -2 2 ", "-2 0 2 ", "0 -1 1 ", "-4 -2 0 2 4 ",  "0 -2 ",   "0 -0.7 0.7 ",
                              "0 ",      "-1 ",     "? ",      "0/0 -2/0 2/0 ", "2 0 -2 ", "0 -1 1 -2 2 -3 3 "};
    const Bytes pauses[] = {"0s ", "0.5s ", "1s ", "2s ", "4s ", "5s ", "6s ", "15s ", "16s ", "60s ", "61s ", "-1s "};
    const Bytes modes[] = {"bracket ", "auto ",  "manual ", "unmarked ", "bias ",  "level ",
                           "fine ",    "whole ", "nikon ",  "f0 ",       "noiso ", "iso "};
    Results results;
    Random random;
    Digest digest;
    for (int round = 1; round <= 20000; ++round) {
        Bytes words = textOf(random, modes, 4);
        for (std::uint32_t parts = random.below(4) + 1; parts > 0; --parts) {
            const Bytes& pattern = patterns[random.below(12)];
            const Bytes pause = textOf(random, pauses, 3);
            for (std::uint32_t times = random.below(4) + 1; times > 0; --times) {
                words += pattern + pause;
            }
            words += textOf(random, modes, 2);
        }
        Shoot shoot = Photographer().take(words);
        for (tvmeta_Shot& shot : shoot.shots) {
            if (random.below(30) == 0) {
                const std::uint32_t what = random.below(5);
                shot.focalLength += what == 0 ? 1.0F : 0;
                shot.orientation = what == 1 ? 6 : 1;
                shot.name = what == 2 ? "IMG_9.jpg" : shot.name;
                shot.format = what == 3 ? TVMETA_FORMAT_RAF : shot.format;
                shot.serialNumber = what == 4 ? 2 : 1;
            }
        }
        shoot.shots.erase(shoot.shots.begin() + random.below(static_cast<std::uint32_t>(shoot.shots.size())));
        digest.add(lettersOf(find(shoot.shots, {round % 10 == 0 ? 3 : 0, round % 11 == 0 ? 4.0 : -1})));
        if (round % 200 == 0) {
            results.add("brackets", digest.value());
        }
    }
    results.compare("brackets");
}

} // namespace
