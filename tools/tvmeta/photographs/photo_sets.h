// The photographs of a command line, grouped into bracketed sets.
#pragma once

#include "photographs/read_photos.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

// What the user gives wins over what the library finds.
struct BracketRules {
    double gap = -1;             // seconds from the end of an exposure to the start of the next; negative: learnt
    std::optional<size_t> count; // photographs of every set
};

struct PhotoSet {
    std::vector<const Photo*> photos;             // in order of capture; of a raw file with a JPEG file, the raw file
    std::vector<std::vector<const Photo*>> files; // of each photograph, the one above first
    std::vector<double> offsets;                  // stops from the middle exposure
    size_t expectedPhotos = 0;                    // 0: unknown; greater than photos.size(): the set is incomplete
    int32_t confidence = 0, evidence = 0;

    double range() const; // EV
    bool isGuess() const { return confidence == TVMETA_BY_GUESS; }
    const char* confidenceWord() const; // camera, pattern, guess or count
};

struct PhotoSets {
    std::vector<Photo> photos; // the other members point at these
    std::vector<PhotoSet> sets;
    std::vector<const Photo*> singles;
    std::vector<const Photo*> unknown; // without a known time or exposure time
    Reading reading;
};

// Reads and groups photographs. A file with several names, such as hard links, counts once, under the first. A folder
// to exclude is not searched unless it is one of `names`.
PhotoSets readPhotoSets(const std::vector<std::string>& names, bool recursive, const BracketRules& rules,
                        const std::string& excludedFolder = "");

// The gap in seconds with which many photographs would be in sets that repeat or that a camera marked, besides those
// found. Empty if there is none.
struct LongerGap {
    double seconds;
    size_t photographs; // that would join a set, or a larger one
};
std::optional<LongerGap> longerGap(const PhotoSets& found, const BracketRules& rules);

// A difference of exposures as cameras name it, in thirds or halves of a stop: +2, -0.7.
std::string stopsText(double stops);
std::string offsetText(double stops);

// The offsets of a set in order of capture, such as "0 -2 +2".
std::string offsetsText(std::span<const double> offsets);
