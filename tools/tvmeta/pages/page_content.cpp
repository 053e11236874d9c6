#include "pages/page_content.h"

#include "base/mapped.h"
#include "base/markup.h"
#include "pages/thumbnails.h"
#include "photographs/fields.h"
#include "system/paths.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <set>

namespace {

namespace fs = std::filesystem;

std::string fieldWords(const Photo& photo, const char* key) {
    const Field& field = *fieldNamed(key);
    const Value value = field.value({photo});
    return isMissing(value) ? "" : readable(field, value);
}

// The formats that every browser has a decoder for.
bool isShownByBrowsers(const Photo& photo) {
    constexpr int32_t Formats[] = {TVMETA_FORMAT_JPEG, TVMETA_FORMAT_PNG, TVMETA_FORMAT_WEBP, TVMETA_FORMAT_AVIF};
    return std::ranges::find(Formats, photo.record.format) != std::end(Formats);
}

// Links in folders are followed, so that the steps up from one folder to another are right.
fs::path folderOf(const Photo& photo) {
    return fs::weakly_canonical(fs::absolute(pathOf(photo.path)).parent_path());
}

// Another drive of Windows has no relative path.
std::string urlOf(const Photo& photo, const fs::path& pageFolder) {
    const fs::path path = folderOf(photo) / pathOf(photo.path).filename();
    const fs::path relative = path.lexically_relative(pageFolder);
    return relative.empty() ? "file:///" + urlPath(nameOf(path)) : urlPath(nameOf(relative));
}

PagePhoto pagePhoto(const Photo& photo, const fs::path& pageFolder) {
    PagePhoto shown = {.path = photo.path,
                       .name = nameOf(pathOf(photo.path).filename()),
                       .url = urlOf(photo, pageFolder),
                       .date = takenText(photo).substr(0, 10), // of YYYY:MM:DD HH:MM:SS
                       .time = {},
                       .exposureTime = fieldWords(photo, "exposureTime"),
                       .fNumber = fieldWords(photo, "fNumber"),
                       .isoSpeed = fieldWords(photo, "isoSpeed"),
                       .focalLength = fieldWords(photo, "focalLength"),
                       .ev = fieldWords(photo, "ev100"),
                       .orientation = photo.record.orientation,
                       .isShownByBrowsers = isShownByBrowsers(photo),
                       .thumbnail = [&photo] { return thumbnailOf(photo); }};
    std::ranges::replace(shown.date, ':', '-');
    if (photo.taken) {
        shown.time = takenText(photo).substr(11);
    }
    if (!shown.isShownByBrowsers) {
        shown.preview = [&photo] { return previewOf(photo); };
    }
    return shown;
}

PageSet pageSet(const PhotoSet& set, const fs::path& pageFolder) {
    PageSet shown = {&set, {}, nameOf(pathOf(set.photos.front()->path).parent_path()), {}};
    std::set<std::string> modes;
    for (const Photo* photo : set.photos) {
        shown.photos.push_back(pagePhoto(*photo, pageFolder));
        modes.insert(fieldWords(*photo, "exposureMode"));
    }
    shown.exposureMode = modes.size() == 1 ? *modes.begin() : "";
    return shown;
}

std::string commonFolder(const std::vector<Photo>& photos) {
    std::optional<fs::path> common;
    for (const Photo& photo : photos) {
        const fs::path folder = folderOf(photo);
        const fs::path former = common.value_or(folder);
        common.emplace();
        const auto [end, other] = std::mismatch(former.begin(), former.end(), folder.begin(), folder.end());
        std::for_each(former.begin(), end, [&](const fs::path& part) { *common /= part; });
    }
    return common ? nameOf(common->filename()) : "";
}

std::string dateSpan(const std::vector<Photo>& photos) {
    std::set<std::string> dates;
    for (const Photo& photo : photos) {
        if (photo.taken) {
            std::string date = takenText(photo).substr(0, 10);
            std::ranges::replace(date, ':', '-');
            dates.insert(std::move(date));
        }
    }
    return dates.empty() ? "" : dates.size() == 1 ? *dates.begin() : *dates.begin() + " to " + *dates.rbegin();
}

// Each has some 200 KB.
void limitPreviews(PageContent& content) {
    constexpr size_t MaxPreviews = 300;
    size_t count = 0;
    const auto limit = [&](PagePhoto& photo) {
        if (photo.preview && ++count > MaxPreviews) {
            photo.preview = nullptr;
        }
    };
    std::ranges::for_each(content.sets, [&](PageSet& set) { std::ranges::for_each(set.photos, limit); });
    std::ranges::for_each(content.singles, limit);
    std::ranges::for_each(content.unknown, limit);
}

} // namespace

PageContent pageContent(const PhotoSets& found, const fs::path& pageFolder) {
    const auto set = [&](const PhotoSet& each) { return pageSet(each, pageFolder); };
    const auto photo = [&](const Photo* each) { return pagePhoto(*each, pageFolder); };
    PageContent content = {.folder = commonFolder(found.photos),
                           .dates = dateSpan(found.photos),
                           .sets = mapped<PageSet>(found.sets, set),
                           .singles = mapped<PagePhoto>(found.singles, photo),
                           .unknown = mapped<PagePhoto>(found.unknown, photo),
                           .problems = found.reading.problems};
    limitPreviews(content);
    return content;
}
