// Bracketed sets: photographs of one scene at several exposures, found by their times and exposures.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

// The properties by which photographs are grouped. 0 and a missing time mean unknown.
struct BracketShot {
    std::string folder;
    std::string camera;
    int32_t fileType = 0;         // a raw file and the JPEG next to it are one photograph, not two of a set
    std::optional<int64_t> start; // seconds of the camera's clock
    double exposureTime = 0;      // seconds
    double fNumber = 0;
    double isoSpeed = 0;
    double focalLength = 0; // millimetres
};

struct BracketRules {
    double gap = 2;              // seconds from the end of an exposure to the start of the next one
    std::optional<size_t> count; // shots of every set
};

struct BracketSet {
    std::vector<size_t> shots; // indices of the input, in order of capture
    size_t expectedShots = 0;  // greater than shots.size(): the last set of its run is incomplete
};

struct Brackets {
    std::vector<BracketSet> sets; // in order of capture, like the others
    std::vector<size_t> singles;
    std::vector<size_t> unknown; // without a time or an exposure
};

// EV at ISO 100. Empty unless all three numbers are positive.
std::optional<double> exposureValue(const BracketShot& shot);

// Groups photographs. Pass them in the order of their names, which is kept within one second.
Brackets findBrackets(std::span<const BracketShot> shots, const BracketRules& rules);

// Stops from the middle exposure of a set, positive for brighter ones. Of two middle exposures, the one captured first
// counts. The EVs are in order of capture.
std::vector<double> exposureOffsets(std::span<const double> values);
