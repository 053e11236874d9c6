// Photo: which files are one photograph: raw file and JPEG, edited copies.
#include "photo/brackets.h"
#include "photo/file_names.h"
#include "support/text_numbers.h"
#include "support/text_search.h"

#include <algorithm>

namespace tvmeta::brackets {

namespace {

constexpr std::size_t MaxDepth = 8; // names that continue each other; bounds the work

bool isTifFile(std::string_view name) {
    const std::string_view extension = extensionOf(name);
    return extension.size() <= 4 && beginsWithWord(extension, "tif");
}

// Which file of a photograph speaks for it: the lowest. Raw formats that are TIFF have names of their own.
int rankOf(const tvmeta_Shot& shot) {
    switch (shot.format) {
    case TVMETA_FORMAT_TIFF:
        return isTifFile(textOrEmpty(shot.name)) ? 3 : 0;
    case TVMETA_FORMAT_ORF:
    case TVMETA_FORMAT_RW2:
    case TVMETA_FORMAT_RAF:
    case TVMETA_FORMAT_CR3:
        return 0;
    case TVMETA_FORMAT_HEIF:
        return 1;
    case TVMETA_FORMAT_JPEG:
        return 2;
    default:
        return 3;
    }
}

bool isSameOrAbsent(float a, float b) {
    constexpr float Rounding = 0.01F;
    return a == 0 || b == 0 || std::abs(a - b) <= Rounding * std::max(a, b);
}

bool hasSameExposure(const tvmeta_Shot& a, const tvmeta_Shot& b) {
    const auto isSame = [&](int field, float tvmeta_Shot::*number) {
        return isSameOrAbsent(positive(a, field, a.*number), positive(b, field, b.*number));
    };
    const bool hasSameBias = !has(a, TVMETA_EXPOSURE_BIAS) || !has(b, TVMETA_EXPOSURE_BIAS) ||
                             !(std::abs(a.exposureBias - b.exposureBias) > Tolerance);
    return isSame(TVMETA_EXPOSURE_TIME, &tvmeta_Shot::exposureTime) && isSame(TVMETA_F_NUMBER, &tvmeta_Shot::fNumber) &&
           isSame(TVMETA_ISO_SPEED, &tvmeta_Shot::isoSpeed) && hasSameBias;
}

bool hasSameFraction(const tvmeta_Shot& a, const tvmeta_Shot& b) {
    return !has(a, TVMETA_SUB_SECOND) || !has(b, TVMETA_SUB_SECOND) || a.captureNanoseconds == b.captureNanoseconds;
}

// Whether a file is of the photograph for which `leader` speaks. Its name starts with that of the leader.
bool belongsTo(const tvmeta_Shot& shot, const tvmeta_Shot& leader) {
    const std::string_view stem = stemOf(textOrEmpty(shot.name)), leaderStem = stemOf(textOrEmpty(leader.name));
    const bool sameBody =
        shot.serialNumber == leader.serialNumber || shot.serialNumber == 0 || leader.serialNumber == 0;
    if (leaderStem.empty() || !sameBody || shot.camera != leader.camera ||
        textOrEmpty(shot.folder) != textOrEmpty(leader.folder)) {
        return false;
    }
    return stem.size() == leaderStem.size() ||
           (!isDigit(stem[leaderStem.size()]) && hasSameExposure(shot, leader) && hasSameFraction(shot, leader));
}

// Orders files so that those of one photograph are neighbours: names that continue a name follow it.
bool isBefore(const Shots& shots, const SortKey& a, const SortKey& b) {
    if (a.group != b.group || a.time != b.time || a.order != b.order) {
        return a.group != b.group ? a.group < b.group : a.time != b.time ? a.time < b.time : a.order < b.order;
    }
    const std::size_t first = static_cast<std::size_t>(a.file), second = static_cast<std::size_t>(b.file);
    if (const int order = stemOf(shots.name(first)).compare(stemOf(shots.name(second))); order != 0) {
        return order < 0;
    }
    const int ranks = rankOf(shots[first]) - rankOf(shots[second]);
    return ranks != 0 ? ranks < 0 : a.file < b.file;
}

} // namespace

std::size_t Shots::commonStart() const {
    const std::string_view first = name(0);
    std::size_t length = first.size();
    for (std::size_t i = 1; i < count && length > 0; ++i) {
        const std::string_view start(first.data(), length);
        length = static_cast<std::size_t>(std::ranges::mismatch(start, name(i)).in1 - start.begin());
    }
    while (length > 0 && isDigit(first[length - 1])) {
        --length;
    }
    return length;
}

void findLeaders(const Shots& shots, Workspace& work) {
    constexpr std::int64_t NoTime = INT64_MIN;
    const std::size_t start = shots.commonStart();
    for (std::size_t i = 0; i < shots.count; ++i) {
        const tvmeta_Shot shot = shots[i];
        const std::int64_t time = has(shot, TVMETA_CAPTURE_TIME) ? shot.captureTime : NoTime;
        const std::uint64_t group = hashText(shot.camera, textOrEmpty(shot.folder));
        const std::uint64_t order = orderOfBytes(textFrom(stemOf(textOrEmpty(shot.name)), start));
        work.keys[i] = {group, time, 0, order, static_cast<std::int64_t>(i), 0};
    }
    std::ranges::sort(work.keys, [&](const SortKey& a, const SortKey& b) { return isBefore(shots, a, b); });

    // A stack of leaders, each of whose names starts with the one below it.
    const std::span<Place> stack = work.places;
    std::size_t depth = 0;
    for (std::size_t i = 0; i < shots.count; ++i) {
        const SortKey& key = work.keys[i];
        const tvmeta_Shot shot = shots[static_cast<std::size_t>(key.file)];
        const bool isNewTime = i > 0 && (key.group != work.keys[i - 1].group || key.time != work.keys[i - 1].time);
        depth = isNewTime ? 0 : depth;
        const std::string_view stem = stemOf(textOrEmpty(shot.name));
        while (depth > 0 && !stem.starts_with(stemOf(shots.name(stack[depth - 1].place)))) {
            --depth;
        }
        std::int64_t leader = key.file;
        for (std::size_t level = depth; level > 0 && depth - level < MaxDepth && leader == key.file; --level) {
            const std::size_t candidate = stack[level - 1].place;
            leader = belongsTo(shot, shots[candidate]) ? static_cast<std::int64_t>(candidate) : leader;
        }
        if (leader == key.file && !stem.empty()) {
            stack[depth++].place = static_cast<std::size_t>(key.file);
        }
        work.leaders[static_cast<std::size_t>(key.file)] = leader;
    }
}

} // namespace tvmeta::brackets
