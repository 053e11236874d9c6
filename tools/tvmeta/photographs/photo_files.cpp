#include "photographs/photo_files.h"

#include "output/failure.h"
#include "photographs/natural_order.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace {

namespace fs = std::filesystem;

class Search {
  public:
    explicit Search(Progress& shown) : progress(shown) {}

    void takeName(const std::string& name, bool recursive) {
        std::error_code error;
        if (!fs::is_directory(name, error)) {
            found.files.push_back({name, true}); // reading it reports errors
        } else if (recursive) {
            descend(name);
        } else {
            fail(name + ": is a folder; use -r to read its photographs");
        }
    }

    PhotoFiles take() { return std::move(found); }

  private:
    void fail(const std::string& message) {
        complain(message);
        ++found.failures;
    }

    std::vector<fs::directory_entry> entriesOf(const fs::path& folder) {
        std::vector<fs::directory_entry> entries;
        std::error_code error;
        for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
            entries.push_back(*entry);
        }
        if (error) {
            fail(folder.string() + ": " + error.message());
        }
        std::ranges::sort(entries, naturalLess,
                          [](const auto& entry) -> const std::string& { return entry.path().native(); });
        return entries;
    }

    // Not recursive, because deeply nested folders would overflow the stack.
    void descend(const fs::path& top) {
        std::vector<fs::path> folders = {top};
        while (!folders.empty()) {
            const fs::path folder = folders.back();
            folders.pop_back();
            const auto subfolders = static_cast<std::ptrdiff_t>(folders.size());
            for (const fs::directory_entry& entry : entriesOf(folder)) {
                std::error_code error;
                if (entry.is_regular_file(error)) {
                    found.files.push_back({entry.path().string(), false});
                    progress.found(found.files.size());
                } else if (entry.is_directory(error) && !entry.is_symlink(error)) {
                    folders.push_back(entry.path());
                }
            }
            std::reverse(folders.begin() + subfolders, folders.end()); // the last is searched next
        }
    }

    PhotoFiles found;
    Progress& progress;
};

} // namespace

PhotoFiles findPhotoFiles(const std::vector<std::string>& names, bool recursive, Progress& progress) {
    Search search(progress);
    for (const std::string& name : names) {
        search.takeName(name, recursive);
    }
    return search.take();
}
