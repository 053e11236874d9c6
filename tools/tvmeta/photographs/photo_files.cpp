#include "photographs/photo_files.h"

#include "output/failure.h"
#include "photographs/natural_order.h"
#include "system/paths.h"
#include "system/system.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <iterator>
#include <string_view>
#include <system_error>

namespace {

namespace fs = std::filesystem;

struct Entry {
    std::string name;
    fs::directory_entry file;
};

class Search {
  public:
    Search(const std::string& excludedFolder, Progress& shown) : excluded(excludedFolder), progress(shown) {}

    void takeName(const std::string& name, bool recursive) {
        std::error_code error;
        if (!fs::is_directory(pathOf(name), error)) {
            found.files.push_back({name, true}); // reading it reports errors
        } else if (recursive) {
            descend(pathOf(name));
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

    std::vector<Entry> entriesOf(const fs::path& folder) {
        std::vector<Entry> entries;
        std::error_code error;
        for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
            try {
                entries.push_back({nameOf(entry->path()), *entry});
            } catch (const std::system_error&) { // unpaired surrogates, which NTFS allows
                fail(nameOf(folder) + ": contains a file whose name is not Unicode");
            }
        }
        if (error) {
            fail(nameOf(folder) + ": " + error.message());
        }
        std::ranges::sort(entries, naturalLess, &Entry::name);
        return entries;
    }

    bool isSearched(const std::string& folder) const {
        if (nameOf(pathOf(folder).filename()).starts_with(".tvmeta-")) {
            complain(folder + ": left by an interrupted run; not read");
            return false;
        }
        return excluded.empty() || !isSameFile(folder, excluded);
    }

    // Not recursive, because deeply nested folders would overflow the stack.
    void descend(const fs::path& top) {
        std::vector<fs::path> folders = {top};
        while (!folders.empty()) {
            const fs::path folder = folders.back();
            folders.pop_back();
            const auto subfolders = static_cast<std::ptrdiff_t>(folders.size());
            for (const auto& [name, entry] : entriesOf(folder)) {
                std::error_code error;
                if (entry.is_regular_file(error)) {
                    found.files.push_back({name, false});
                    progress.found(found.files.size());
                } else if (entry.is_directory(error) && !isLink(name) && isSearched(name)) {
                    folders.push_back(entry.path());
                }
            }
            std::reverse(folders.begin() + subfolders, folders.end()); // the last is searched next
        }
    }

    PhotoFiles found;
    const std::string& excluded;
    Progress& progress;
};

} // namespace

bool hasPhotoName(const std::string& path) {
    static constexpr std::string_view Extensions[] = {
        ".jpg",  ".jpeg", ".tif",  ".tiff", ".btf",  ".dng", ".cr2", ".cr3", ".crw", ".nef",
        ".nrw",  ".arw",  ".pef",  ".srw",  ".orf",  ".rw2", ".raf", ".psd", ".psb", ".heic",
        ".heif", ".hif",  ".avif", ".jxl",  ".webp", ".x3f", ".mrw", ".iiq", ".3fr"};
    std::string extension = nameOf(pathOf(path).extension());
    std::ranges::transform(extension, extension.begin(), [](unsigned char c) { return std::tolower(c); });
    return std::ranges::find(Extensions, extension) != std::end(Extensions);
}

PhotoFiles findPhotoFiles(const std::vector<std::string>& names, bool recursive, const std::string& excludedFolder,
                          Progress& progress) {
    Search search(excludedFolder, progress);
    for (const std::string& name : names) {
        search.takeName(name, recursive);
    }
    return search.take();
}
