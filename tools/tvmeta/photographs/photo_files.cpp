#include "photographs/photo_files.h"

#include "base/text.h"
#include "system/files.h"
#include "system/paths.h"
#include "system/system.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace {

class Search {
  public:
    Search(const std::string& excludedFolder, Progress& shown, FileMessages& reported)
        : excluded(excludedFolder), progress(shown), messages(reported) {}

    void takeName(const std::string& name, bool recursive) {
        if (name == StandardStream || fileKind(name) != FileKind::Folder) {
            found.push_back({name, true}); // reading it reports errors
        } else if (recursive) {
            descend(name);
        } else {
            fail(name, "is a folder; use -r to read its photographs");
        }
    }

    std::vector<PhotoFile> take() { return std::move(found); }

  private:
    void fail(const std::string& path, const std::string& reason) { messages.add(path, path + ": " + reason); }

    std::vector<FolderEntry> entriesOf(const std::string& folder) {
        try {
            std::vector<FolderEntry> entries = listFolder(folder);
            std::ranges::sort(entries, naturalLess, &FolderEntry::name);
            return entries;
        } catch (const Failure& failure) {
            messages.add(folder, failure.what());
            return {};
        }
    }

    bool isSearched(const std::string& folder) const {
        if (nameOf(pathOf(folder).filename()).starts_with(".tvmeta-")) {
            complain(folder + ": left by an interrupted run; not read");
            return false;
        }
        return excluded.empty() || !isSameFile(folder, excluded);
    }

    // Not recursive, because deeply nested folders would overflow the stack.
    void descend(const std::string& top) {
        std::vector<std::string> folders = {top};
        while (!folders.empty()) {
            const std::string folder = folders.back();
            folders.pop_back();
            const auto subfolders = static_cast<std::ptrdiff_t>(folders.size());
            for (const FolderEntry& entry : entriesOf(folder)) {
                if (entry.kind == FolderEntry::Kind::RegularFile) {
                    found.push_back({entry.name, false});
                    progress.found(found.size());
                } else if (entry.kind == FolderEntry::Kind::Subfolder && isSearched(entry.name)) {
                    folders.push_back(entry.name);
                } else if (entry.kind == FolderEntry::Kind::Unknown) {
                    fail(entry.name.empty() ? folder : entry.name, entry.problem);
                }
            }
            std::reverse(folders.begin() + subfolders, folders.end()); // the last is searched next
        }
    }

    std::vector<PhotoFile> found;
    const std::string& excluded;
    Progress& progress;
    FileMessages& messages;
};

} // namespace

bool hasPhotoName(const std::string& path) {
    static constexpr std::string_view Extensions[] = {
        ".jpg",  ".jpeg", ".tif",  ".tiff", ".btf",  ".dng", ".cr2", ".cr3", ".crw", ".nef",
        ".nrw",  ".arw",  ".pef",  ".srw",  ".orf",  ".rw2", ".raf", ".psd", ".psb", ".heic",
        ".heif", ".hif",  ".avif", ".jxl",  ".webp", ".x3f", ".mrw", ".iiq", ".3fr"};
    return std::ranges::find(Extensions, extensionOf(pathOf(path))) != std::end(Extensions);
}

std::vector<PhotoFile> findPhotoFiles(const std::vector<std::string>& names, bool recursive,
                                      const std::string& excludedFolder, Progress& progress, FileMessages& messages) {
    Search search(excludedFolder, progress, messages);
    for (const std::string& name : names) {
        search.takeName(name, recursive);
    }
    return search.take();
}
