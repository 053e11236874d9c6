// The replacement of the ICC profile in any file.
#include "support.h"

using namespace fuzz;

namespace {

constexpr std::int32_t IccProfile = 34675;
constexpr std::size_t HeaderSize = 8;
constexpr std::size_t CountOffset = 4;
constexpr std::size_t EntrySize = 12;

struct Entry {
    std::int32_t place;
    std::int32_t count;
    std::int32_t value;
};

Entry profileEntry() {
    const Stream stream = memoryFile().open();
    Entry entry = {};
    entry.place = get_tif_tag(stream.get(), IccProfile, &entry.count, &entry.value);
    return entry;
}

// The expected file: the same bytes, an entry cut short by the end of the file completed, followed by the profile, with
// the new count and the old size of the file in the entry.
Bytes replaced(Bytes file, const Entry& entry, const Bytes& profile) {
    const std::array<std::size_t, 2> numbers = {profile.size(), file.size()};
    file.resize(std::max(file.size(), static_cast<std::size_t>(entry.place) + EntrySize));
    file.insert(file.end(), profile.begin(), profile.end());
    for (std::size_t i = 0; i < 8; ++i) {
        file[static_cast<std::size_t>(entry.place) + CountOffset + i] =
            static_cast<std::uint8_t>(numbers[i / 4] >> 8 * (i % 4));
    }
    return file;
}

// Is the entry in the first directory and outside the header? Then patching it cannot make the search miss it. (An
// entry of an overlapping directory can overlap entries of the first.)
bool isEntryInOrder(const Bytes& file, const Entry& entry) {
    const std::size_t directory = loadLe(file, 4, 4);
    const auto place = static_cast<std::size_t>(entry.place);
    return place + EntrySize <= file.size() && directory >= HeaderSize && place >= directory + 2 &&
           (place - directory - 2) % EntrySize == 0 && place < directory + 2 + EntrySize * loadLe(file, directory, 2) &&
           loadLe(file, place + 2, 2) != 3;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const Bytes profile(input.ConsumeIntegralInRange<std::size_t>(1, 300), 0xC7);
    const Bytes file = input.ConsumeRemainingBytes<std::uint8_t>();

    const MemoryFile& target = memoryFile().write(file);
    const Entry entry = profileEntry();
    const std::int32_t result = update_tif_profile(lengthOf(profile.size()), profile.data(), target.path());
    if (result <= 0) {
        require(entry.place <= 0, "only a file without a profile is unchanged");
        require(contentOf(target) == file, "nothing is changed");
        return 0;
    }
    require(result == lengthOf(profile.size()) && entry.place > 0, "the result is the profile's length");
    require(contentOf(target) == replaced(file, entry, profile), "the entry points to the appended profile");
    if (isEntryInOrder(file, entry)) {
        const Entry now = profileEntry();
        require(now.place == entry.place && now.count == result && now.value == lengthOf(file.size()),
                "the new profile is found");
    }
    return 0;
}
