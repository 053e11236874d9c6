// The photographs of a command line, grouped into bracketed sets.
#pragma once

#include "photographs/bracket_sets.h"
#include "photographs/read_photos.h"

#include <string>
#include <vector>

struct PhotoSet {
    std::vector<const Photo*> photos; // in order of capture
    std::vector<double> values;       // EV at ISO 100 of each
    std::vector<double> offsets;      // stops from the middle exposure
    size_t expectedPhotos = 0;        // greater than photos.size(): the set is incomplete

    double range() const; // EV
};

struct PhotoSets {
    std::vector<Photo> photos; // the other members point at these
    std::vector<PhotoSet> sets;
    std::vector<const Photo*> singles;
    std::vector<const Photo*> unknown; // without a known time or exposure
    Reading reading;
};

// Reads and groups photographs. A file given twice counts once.
PhotoSets readPhotoSets(const std::vector<std::string>& names, bool recursive, const BracketRules& rules,
                        const Wanted& wanted = {});

// The properties of a photograph that the rules use.
BracketShot bracketShot(const Photo& photo);

// A difference of exposures as cameras name it, in thirds or halves of a stop: +2, -0.7.
std::string stopsText(double stops);
std::string offsetText(double stops);

// The offsets of a set in order of capture, such as "0 -2 +2".
std::string offsetsText(const PhotoSet& set);
