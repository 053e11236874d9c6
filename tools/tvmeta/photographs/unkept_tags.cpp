#include "photographs/unkept_tags.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>
#include <vector>

namespace {

struct NamedTag {
    int32_t tag;
    std::string_view name;
};

// Tags of EXIF 2.3 that are reported by name. Others are counted.
constexpr auto ImageNames = std::to_array<NamedTag>({
    {270, "description"},
    {315, "artist"},
    {33432, "copyright"},
});
constexpr auto CameraNames = std::to_array<NamedTag>({
    {34850, "exposure program"},
    {37380, "exposure compensation"},
    {37383, "metering mode"},
    {37385, "flash"},
    {37500, "maker notes"},
    {37510, "user comment"},
    {37521, "fraction of a second"},
    {41486, "focal plane resolution"},
    {41987, "white balance"},
    {41989, "focal length in 35 mm"},
    {42033, "serial number"},
    {36881, "time zone"},
});
constexpr std::span<const NamedTag> GpsNames = {};

// Tags that the writers write, and tags that describe the source picture, its file or its thumbnail.
constexpr auto ImageKept =
    std::to_array<int32_t>({254, 256, 257, 258, 259, 262, 266, 271, 272, 273,   274,   277,   278,   279,   282,
                            283, 284, 296, 301, 305, 306, 317, 318, 319, 320,   322,   323,   324,   325,   330,
                            338, 339, 513, 514, 529, 530, 531, 532, 700, 33723, 34377, 34665, 34675, 34853, 50341});
constexpr auto CameraKept =
    std::to_array<int32_t>({33434, 33437, 34855, 36864, 36867, 36868, 37121, 37122, 37377, 37378,
                            37386, 40960, 40961, 40962, 40963, 40965, 41487, 41488, 42036, 59932});
constexpr auto GpsKept = std::to_array<int32_t>({0, 1, 2, 3, 4, 5, 6, 7, 29});

struct Unkept {
    std::vector<std::string> names;
    size_t others = 0;

    void add(std::span<const tvmeta_Tag> tags, int32_t directory, std::span<const int32_t> kept,
             std::span<const NamedTag> named) {
        for (const tvmeta_Tag& entry : tags) {
            if (entry.directory != directory) {
                continue;
            }
            const auto name = std::ranges::find(named, entry.tag, &NamedTag::tag);
            if (name != named.end()) {
                names.emplace_back(name->name);
            } else if (std::ranges::find(kept, entry.tag) == kept.end()) {
                ++others;
            }
        }
    }
};

} // namespace

std::vector<std::string> unkeptValues(const OpenPhoto& photo, int64_t clamped) {
    Unkept unkept;
    if ((clamped >> TVMETA_ISO_SPEED & 1) != 0) {
        unkept.names.emplace_back("ISO speed above 65535");
    }
    const std::vector<tvmeta_Tag> tags = photo.tags();
    unkept.add(tags, TVMETA_IMAGE, ImageKept, ImageNames);
    unkept.add(tags, TVMETA_EXIF_DIRECTORY, CameraKept, CameraNames);
    unkept.add(tags, TVMETA_GPS_DIRECTORY, GpsKept, GpsNames);
    if (unkept.others > 0) {
        unkept.names.push_back(std::to_string(unkept.others) +
                               (unkept.others == 1 ? " other EXIF tag" : " other EXIF tags"));
    }
    return unkept.names;
}
