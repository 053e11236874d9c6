#include "photographs/photo_sets.h"

#include "base/text.h"
#include "photographs/natural_order.h"
#include "system/paths.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <iterator>
#include <sstream>
#include <unordered_set>
#include <utility>

namespace {

std::filesystem::path normalPath(const Photo& photo) {
    return pathOf(photo.path).lexically_normal();
}

// Sorted by name, which decides the order of equal times; each file once.
std::vector<Photo> readByName(const std::vector<std::string>& names, bool recursive, const Wanted& wanted,
                              Reading& reading) {
    std::vector<Photo> photos;
    std::unordered_set<std::string> paths;
    reading = readPhotos(names, recursive, wanted, [&](Photo&& photo) {
        if (paths.insert(nameOf(normalPath(photo))).second) {
            photos.push_back(std::move(photo));
        }
    });
    std::ranges::sort(photos, naturalLess, &Photo::path);
    return photos;
}

PhotoSet photoSet(const BracketSet& set, const std::vector<Photo>& photos, const std::vector<BracketShot>& shots) {
    PhotoSet result;
    result.expectedPhotos = set.expectedShots;
    for (const size_t i : set.shots) {
        result.photos.push_back(&photos[i]);
        result.values.push_back(exposureValue(shots[i]).value());
    }
    result.offsets = exposureOffsets(result.values);
    return result;
}

// The nearest third or half.
double nominalStops(double stops) {
    const double thirds = std::round(stops * 3) / 3;
    const double halves = std::round(stops * 2) / 2;
    return std::abs(stops - thirds) <= std::abs(stops - halves) ? thirds : halves;
}

} // namespace

double PhotoSet::range() const {
    const auto [low, high] = std::ranges::minmax(values);
    return high - low;
}

BracketShot bracketShot(const Photo& photo) {
    BracketShot shot;
    shot.folder = nameOf(normalPath(photo).parent_path());
    shot.camera = photo.record.model;
    shot.fileType = photo.record.format;
    if (photo.taken) {
        shot.start = photo.taken->time_since_epoch().count();
    }
    shot.exposureTime = quotient(photo.record.exposureTime);
    shot.fNumber = quotient(photo.record.fNumber);
    shot.isoSpeed = photo.record.isoSpeed;
    shot.focalLength = quotient(photo.record.focalLength);
    return shot;
}

PhotoSets readPhotoSets(const std::vector<std::string>& names, bool recursive, const BracketRules& rules,
                        const Wanted& wanted) {
    PhotoSets result;
    result.photos = readByName(names, recursive, wanted, result.reading);
    std::vector<BracketShot> shots;
    std::ranges::transform(result.photos, std::back_inserter(shots), bracketShot);
    const Brackets found = findBrackets(shots, rules);
    const auto photoAt = [&](size_t i) { return &result.photos[i]; };
    std::ranges::transform(found.sets, std::back_inserter(result.sets),
                           [&](const BracketSet& set) { return photoSet(set, result.photos, shots); });
    std::ranges::transform(found.singles, std::back_inserter(result.singles), photoAt);
    std::ranges::transform(found.unknown, std::back_inserter(result.unknown), photoAt);
    return result;
}

std::string stopsText(double stops) {
    std::ostringstream text;
    text << std::round(nominalStops(stops) * 10) / 10;
    return text.str();
}

std::string offsetText(double stops) {
    const std::string sign = nominalStops(stops) > 0 ? "+" : "";
    return sign + stopsText(stops);
}

std::string offsetsText(const PhotoSet& set) {
    std::string text;
    for (const double offset : set.offsets) {
        text += text.empty() ? "" : " ";
        text += offsetText(offset);
    }
    return text;
}
