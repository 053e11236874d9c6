// What the report shows, as texts and pictures.
#pragma once

#include "photographs/photo_sets.h"
#include "system/files.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

// Texts are as printed by other commands, without markup; empty if unknown.
struct PagePhoto {
    std::string path;
    std::string name; // without folder
    std::string url;  // relative to the page
    std::string date; // 2024-06-21
    std::string time; // 20:41:07
    std::string exposureTime;
    std::string fNumber;
    std::string isoSpeed;
    std::string focalLength;
    std::string ev;
    int32_t orientation = 1;
    bool isShownByBrowsers = false;      // the file itself
    std::function<Bytes()> thumbnail;    // a JPEG file; empty if there is none
    std::function<Bytes()> preview = {}; // the same, larger; null if the photograph has none of its own
};

struct PageSet {
    const PhotoSet* found;
    std::vector<PagePhoto> photos; // in order of capture
    std::string folder;
    std::string exposureMode; // if it is the same in all photographs
};

struct PageContent {
    std::string folder; // that contains all photographs
    std::string dates;  // the first and the last, or the only one
    std::vector<PageSet> sets;
    std::vector<PagePhoto> singles;
    std::vector<PagePhoto> unknown; // without a known time or exposure
    std::vector<std::string> problems;
};

// The content of a page in `pageFolder`. The photographs and sets must live as long as it.
PageContent pageContent(const PhotoSets& found, const std::filesystem::path& pageFolder);
