#include "photographs/photo_sets.h"

#include "base/numbers.h"
#include "base/text.h"
#include "system/paths.h"
#include "system/system.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <filesystem>
#include <map>
#include <new>
#include <utility>

namespace {

std::filesystem::path normalPath(const Photo& photo) {
    return pathOf(photo.path).lexically_normal();
}

// Sorted by name, which decides the order of equal times; each file once, if possible not by the name of a link to it.
std::vector<Photo> readByName(const std::vector<std::string>& names, bool recursive, const std::string& excludedFolder,
                              Reading& reading) {
    std::vector<Photo> photos;
    std::map<FileIdentity, size_t> places;
    const auto take = [&](Photo&& photo) {
        const std::optional<FileIdentity> file = fileIdentity(photo.path);
        const auto [found, isNew] = places.emplace(file.value_or(FileIdentity()), photos.size());
        if (isNew || !file) {
            photos.push_back(std::move(photo));
        } else if (isLink(photos[found->second].path) && !isLink(photo.path)) {
            photos[found->second] = std::move(photo);
        }
    };
    reading = readPhotos(names, recursive, {}, take, excludedFolder);
    std::ranges::sort(photos, naturalLess, &Photo::path);
    return photos;
}

// The records of the library, and the texts that they point at.
struct Records {
    std::vector<tvmeta_Shot> shots;
    std::deque<std::string> texts;
};

Records recordsOf(const std::vector<Photo>& photos) {
    Records records;
    for (const Photo& photo : photos) {
        const std::filesystem::path path = normalPath(photo);
        const std::string& folder = records.texts.emplace_back(nameOf(path.parent_path()));
        const std::string& name = records.texts.emplace_back(nameOf(path.filename()));
        tvmeta_Shot& shot = records.shots.emplace_back();
        shot.recordSize = sizeof shot;
        tvmeta_shot(&photo.record, folder.c_str(), name.c_str(), &shot);
    }
    return records;
}

size_t indexOf(const PhotoSets& found, const Photo* photo) {
    return static_cast<size_t>(photo - found.photos.data());
}

struct Found {
    std::vector<tvmeta_BracketMember> members;
    std::vector<tvmeta_BracketSet> sets;
};

Found findBrackets(const std::vector<Photo>& photos, const BracketRules& rules) {
    const Records records = recordsOf(photos);
    Found found = {std::vector<tvmeta_BracketMember>(photos.size()), std::vector<tvmeta_BracketSet>(photos.size() + 1)};
    found.sets.front().recordSize = sizeof(tvmeta_BracketSet);
    const tvmeta_BracketOptions options = {sizeof options, static_cast<int32_t>(rules.count.value_or(0)), rules.gap};
    const int64_t count = tvmeta_find_brackets(records.shots.data(), static_cast<int64_t>(photos.size()), &options,
                                               found.members.data(), found.sets.data());
    if (count < 0) {
        throw std::bad_alloc();
    }
    found.sets.resize(static_cast<size_t>(count));
    return found;
}

void addSets(PhotoSets& result, const Found& found) {
    for (const tvmeta_BracketSet& set : found.sets) {
        PhotoSet& added = result.sets.emplace_back();
        added.photos.resize(static_cast<size_t>(set.shots));
        added.files.resize(added.photos.size());
        added.offsets.resize(added.photos.size());
        added.expectedPhotos = static_cast<size_t>(set.expectedShots);
        added.confidence = set.confidence;
        added.evidence = set.evidence;
    }
    for (size_t i = 0; i < found.members.size(); ++i) {
        const tvmeta_BracketMember& member = found.members[i];
        const Photo* const photo = &result.photos[i];
        const bool isLeader = member.leader == static_cast<int64_t>(i);
        if (member.set >= 0) {
            PhotoSet& set = result.sets[static_cast<size_t>(member.set)];
            const size_t place = static_cast<size_t>(member.place);
            std::vector<const Photo*>& files = set.files[place];
            files.insert(isLeader ? files.begin() : files.end(), photo);
            if (isLeader) {
                set.photos[place] = photo;
                set.offsets[place] = member.offset;
            }
        } else if (isLeader) {
            const bool isKnown = photo->has(TVMETA_CAPTURE_TIME) && photo->has(TVMETA_EXPOSURE_TIME);
            (isKnown ? result.singles : result.unknown).push_back(photo);
        }
    }
}

// By chance, a longer gap makes few sets of this kind.
bool isSound(size_t shots, int32_t confidence) {
    return shots >= 3 && (confidence == TVMETA_BY_CAMERA || confidence == TVMETA_BY_PATTERN);
}

// What another gap changes.
struct Change {
    bool isLoss = false; // a sound set is another one
    LongerGap gain = {};
};

Change changeWith(const PhotoSets& found, double gap) {
    const Found other = findBrackets(found.photos, {gap, std::nullopt});
    std::vector<const PhotoSet*> setOf(found.photos.size());
    for (const PhotoSet& set : found.sets) {
        std::ranges::for_each(set.photos, [&](const Photo* photo) { setOf[indexOf(found, photo)] = &set; });
    }
    Change change;
    for (size_t i = 0; i < other.members.size(); ++i) {
        const tvmeta_BracketMember& member = other.members[i];
        if (member.leader != static_cast<int64_t>(i)) {
            continue;
        }
        const tvmeta_BracketSet set =
            member.set < 0 ? tvmeta_BracketSet() : other.sets[static_cast<size_t>(member.set)];
        const size_t shots = static_cast<size_t>(set.shots), before = setOf[i] == nullptr ? 0 : setOf[i]->photos.size();
        const bool isKept = setOf[i] == nullptr || !isSound(before, setOf[i]->confidence) ||
                            (before < setOf[i]->expectedPhotos && shots > before);
        change.isLoss = change.isLoss || (!isKept && shots != before);
        if (isSound(shots, set.confidence) && shots > before) {
            ++change.gain.photographs;
            change.gain.seconds = std::max(change.gain.seconds, std::ceil(set.longestPause));
        }
    }
    return change;
}

// The nearest third or half.
double nominalStops(double stops) {
    const double thirds = std::round(stops * 3) / 3;
    const double halves = std::round(stops * 2) / 2;
    return std::abs(stops - thirds) <= std::abs(stops - halves) ? thirds : halves;
}

} // namespace

double PhotoSet::range() const {
    const auto [low, high] = std::ranges::minmax(offsets);
    return high - low;
}

const char* PhotoSet::confidenceWord() const {
    static constexpr const char* Words[] = {"", "camera", "pattern", "guess", "count"};
    return Words[confidence];
}

PhotoSets readPhotoSets(const std::vector<std::string>& names, bool recursive, const BracketRules& rules,
                        const std::string& excludedFolder) {
    PhotoSets result;
    result.photos = readByName(names, recursive, excludedFolder, result.reading);
    addSets(result, findBrackets(result.photos, rules));
    std::ranges::stable_sort(result.singles, {}, [](const Photo* photo) { return photo->taken; });
    return result;
}

std::optional<LongerGap> longerGap(const PhotoSets& found, const BracketRules& rules) {
    constexpr double Gaps[] = {2, 5, 15, 60, 300};
    constexpr size_t MinPhotographs = 6;
    const size_t many = std::max(MinPhotographs, found.singles.size() / 10);
    if (rules.count || found.photos.size() < MinPhotographs) {
        return {};
    }
    std::optional<LongerGap> best;
    for (const double gap : Gaps) {
        const Change change = gap > rules.gap ? changeWith(found, gap) : Change();
        const size_t before = best ? best->photographs : 0;
        if (!change.isLoss && change.gain.photographs >= std::max(many, before + before / 4)) {
            const Change shorter = changeWith(found, change.gain.seconds); // no longer than it has to be
            const bool isEnough = !shorter.isLoss && shorter.gain.photographs >= change.gain.photographs;
            best = {isEnough ? change.gain.seconds : gap, change.gain.photographs};
        }
    }
    return best;
}

std::string stopsText(double stops) {
    return shortNumber(std::round(nominalStops(stops) * 10) / 10);
}

std::string offsetText(double stops) {
    const std::string sign = nominalStops(stops) > 0 ? "+" : "";
    return sign + stopsText(stops);
}

std::string offsetsText(std::span<const double> offsets) {
    std::string text;
    for (const double offset : offsets) {
        text += text.empty() ? "" : " ";
        text += offsetText(offset);
    }
    return text;
}
