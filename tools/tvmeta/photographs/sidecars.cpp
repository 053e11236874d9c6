#include "photographs/sidecars.h"

#include "base/text.h"
#include "system/paths.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <string_view>
#include <system_error>

namespace {

namespace fs = std::filesystem;

bool isSidecar(const fs::path& file) {
    static constexpr std::string_view Extensions[] = {".xmp", ".pp3", ".dop"};
    return std::ranges::find(Extensions, extensionOf(file)) != std::end(Extensions);
}

// A folder that cannot be read has none: its photographs were named.
std::multimap<std::string, std::string> sidecarsIn(const fs::path& folder) {
    std::multimap<std::string, std::string> names;
    std::error_code error;
    for (fs::directory_iterator entry(folder.empty() ? "." : folder, error), end; !error && entry != end;
         entry.increment(error)) {
        const fs::path name = entry->path().filename();
        std::error_code noFile;
        try {
            if (isSidecar(name) && entry->is_regular_file(noFile)) {
                names.emplace(nameOf(name.stem()), nameOf(folder / name));
            }
        } catch (const std::system_error&) { // not Unicode, so not of a photograph that was read
        }
    }
    return names;
}

} // namespace

std::vector<std::string> Sidecars::take(const std::string& photo) {
    const fs::path path = pathOf(photo), folder = path.parent_path();
    const std::string key = nameOf(folder);
    auto known = folders.find(key);
    if (known == folders.end()) {
        known = folders.emplace(key, sidecarsIn(folder)).first;
    }
    std::vector<std::string> taken;
    for (const fs::path& name : {path.stem(), path.filename()}) {
        const auto [first, last] = known->second.equal_range(nameOf(name));
        std::transform(first, last, std::back_inserter(taken), [](const auto& entry) { return entry.second; });
        known->second.erase(first, last);
    }
    std::ranges::sort(taken, naturalLess);
    return taken;
}
