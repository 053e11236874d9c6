// Entries that a result keeps of any file are in its EXIF block as they are in the file.
#include "support.h"
#include "tvmeta_photo.h"

#include <map>
#include <utility>

using namespace fuzz;

namespace {

using Key = std::pair<std::int32_t, std::int32_t>;
using Entries = std::multimap<Key, std::pair<tvmeta_Tag, Bytes>>;

// Bytes of a number within an item of a type (TIFF 6.0); 0 for types that are not kept.
std::size_t numberSize(std::uint16_t type) {
    constexpr std::array<std::size_t, 13> Sizes = {0, 1, 1, 2, 4, 4, 1, 1, 2, 4, 4, 4, 8};
    return type == 129 ? 1 : type < Sizes.size() ? Sizes[type] : 0;
}

Entries entriesOf(const tvmeta_Source& source) {
    std::vector<tvmeta_Tag> tags(
        static_cast<std::size_t>(std::max<std::int64_t>(tvmeta_list_tags(&source, nullptr, nullptr, 0), 0)));
    tvmeta_list_tags(&source, nullptr, tags.data(), static_cast<std::int64_t>(tags.size()));
    Entries entries;
    for (const tvmeta_Tag& tag : tags) {
        const std::size_t size = numberSize(tag.type);
        if (tag.position < 0 || size == 0 || tag.count == 0) {
            continue;
        }
        Bytes value(static_cast<std::size_t>(tag.count) * size * (tag.type == 5 || tag.type == 10 ? 2 : 1));
        const auto count = static_cast<std::int64_t>(value.size());
        require(source.read(source.context, tag.position, value.data(), count) == count, "values are in the source");
        for (std::size_t i = 0; tag.isBigEndian != 0 && i + size <= value.size(); i += size) {
            std::reverse(value.begin() + static_cast<std::ptrdiff_t>(i),
                         value.begin() + static_cast<std::ptrdiff_t>(i + size));
        }
        entries.insert({{tag.directory, tag.tag}, {tag, std::move(value)}});
    }
    return entries;
}

bool isOwn(std::int32_t tag) {
    constexpr std::int32_t Own[] = {0, 274, 282, 283, 296, 305, 34665, 34853, 36864, 40960, 40961, 40962, 40963, 40965};
    return std::find(std::begin(Own), std::end(Own), tag) != std::end(Own);
}

void requireKept(const Entries& photo, const Entries& block) {
    for (const auto& [key, written] : block) {
        require(block.count(key) == 1, "no entry is there twice");
        const auto [first, last] = photo.equal_range(key);
        const auto isSame = [&written = written](const Entries::value_type& entry) {
            const auto& [tag, value] = entry.second;
            return tag.type == written.first.type && tag.count == written.first.count && value == written.second;
        };
        require(isOwn(key.second) || std::any_of(first, last, isSame), "a kept entry is the photograph's");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    tvmeta_Result result{};
    result.recordSize = sizeof result;
    result.width = input.ConsumeIntegralInRange<std::int32_t>(0, 3);
    result.height = input.ConsumeIntegralInRange<std::int32_t>(0, 3);
    result.channels = input.ConsumeIntegralInRange<std::int32_t>(1, 4);
    result.bitsCode = input.PickValueInArray({8, 16, 32, 3216});
    result.resolution = input.ConsumeIntegralInRange<std::int32_t>(0, 1);
    result.orientation = input.ConsumeIntegralInRange<std::int32_t>(-1, 9);
    const Settings settings = takeSliders(input);
    result.method = input.ConsumeBool() ? METHOD_FUSION_INTENSIVE : METHOD_NONE;
    result.settings = settings.data();
    const char* const keywords[] = {"lake", "s\xC3\xA9"};
    result.keywords = keywords;
    result.keywordCount = input.ConsumeIntegralInRange<std::int32_t>(0, 2);
    const auto photo = input.ConsumeRemainingBytes<std::uint8_t>();
    tvmeta_Source source;
    tvmeta_memory(photo.data(), static_cast<std::int64_t>(photo.size()), &source);
    result.photo = &source;

    std::int32_t count = 0;
    const std::int64_t needed = tvmeta_build_exif(&result, nullptr, 0, nullptr, 0, &count);
    if (needed < 0) {
        return 0;
    }
    Bytes block(static_cast<std::size_t>(needed));
    std::vector<tvmeta_Loss> losses(static_cast<std::size_t>(count));
    std::int32_t again = 0;
    require(tvmeta_build_exif(&result, block.data(), needed, losses.data(), count, &again) == needed && again == count,
            "measuring and writing agree");
    tvmeta_Source written;
    tvmeta_memory(block.data(), needed, &written);
    requireKept(entriesOf(source), entriesOf(written));

    const Bytes pixels(std::size_t{3} * 3 * 4 * 4);
    result.pixels = pixels.data();
    result.rowPitch = 48;
    result.path = memoryFile().path();
    if (result.width > 0) {
        const std::int32_t saved = tvmeta_save_tiff(&result, nullptr, 0);
        require(saved >= count, "a file has at least the losses of its directories");
    }
    return 0;
}
