#include "output/set_folders.h"

#include "base/failure.h"
#include "output/output_file.h"
#include "system/file_copy.h"
#include "system/files.h"
#include "system/paths.h"

#include <algorithm>
#include <filesystem>
#include <initializer_list>
#include <system_error>

namespace {

namespace fs = std::filesystem;

// A new folder. The destructor removes it with its files unless it is kept.
class NewFolder {
  public:
    explicit NewFolder(const std::string& name) : path(pathOf(name)) {
        std::error_code error;
        if (!fs::create_directory(path, error)) {
            throw Failure(nameOf(path), error ? error.message() : "already exists");
        }
    }
    ~NewFolder() {
        std::error_code error;
        std::ranges::for_each(files, [&](const fs::path& file) { fs::remove(file, error); });
        if (!isKept) {
            fs::remove(path, error);
        }
    }
    NewFolder(const NewFolder&) = delete;
    NewFolder& operator=(const NewFolder&) = delete;

    void add(const std::string& file, Placement placement) {
        const fs::path target = path / pathOf(file).filename();
        placement == Placement::Link ? link(file, target) : copy(file, target);
        files.push_back(target);
    }

    void keep() {
        isKept = true;
        files.clear();
    }

  private:
    static bool isOneOf(std::error_code error, std::initializer_list<std::errc> reasons) {
        return std::ranges::any_of(reasons, [&](std::errc reason) { return error == reason; });
    }

    // Symbolic links are followed: a relative link would break in the new folder.
    static void link(const std::string& file, const fs::path& target) {
        std::error_code error;
        const fs::path original = fs::canonical(pathOf(file), error);
        if (!error) {
            fs::create_hard_link(original, target, error);
        }
        if (isOneOf(error, {std::errc::cross_device_link})) {
            throw Failure(file, "on another file system than " + nameOf(target.parent_path()) +
                                    ", so hard links are not possible; use --copy");
        }
        if (isOneOf(error, {std::errc::operation_not_permitted, std::errc::operation_not_supported,
                            std::errc::function_not_supported, std::errc::too_many_links})) {
            throw Failure(file, "cannot make a hard link (" + error.message() + "); use --copy");
        }
        if (error) {
            throw Failure(nameOf(target), error.message());
        }
    }

    // The copy keeps the time of the file, on Windows to the second.
    static void copy(const std::string& file, const fs::path& target) {
        writeOutput(nameOf(target), {file}, [&](OutputFile& output) {
            readPieces(openFile(file).get(), file, [&](std::string_view piece) { output.write(piece); });
        });
        std::error_code error;
        const fs::file_time_type time = fs::last_write_time(pathOf(file), error);
        if (!error) {
            fs::last_write_time(target, time, error);
        }
    }

    fs::path path;
    std::vector<fs::path> files;
    bool isKept = false;
};

} // namespace

std::string setFolder(const std::string& folder, size_t number) {
    constexpr size_t Digits = 3;
    const std::string digits = std::to_string(number);
    const std::string zeros(Digits - std::min(Digits, digits.size()), '0');
    return nameOf(pathOf(folder) / ("set-" + zeros + digits));
}

void requireNewFolders(const std::string& folder, size_t sets) {
    std::error_code error;
    for (size_t i = 1; i <= sets; ++i) {
        if (fs::exists(fs::symlink_status(pathOf(setFolder(folder, i)), error))) {
            throw Failure(setFolder(folder, i), "already exists; use another folder");
        }
    }
}

void fillSetFolders(const std::string& folder, const std::vector<std::vector<std::string>>& sets, Placement placement,
                    const std::function<void(size_t set)>& report) {
    std::error_code error;
    const bool isNew = fs::create_directories(pathOf(folder), error);
    if (error) {
        throw Failure(folder, error.message());
    }
    size_t done = 0;
    try {
        for (const std::vector<std::string>& files : sets) {
            NewFolder set(setFolder(folder, done + 1));
            std::ranges::for_each(files, [&](const std::string& file) { set.add(file, placement); });
            set.keep();
            report(done++);
        }
    } catch (const Failure& failure) {
        if (isNew) {
            fs::remove(pathOf(folder), error); // if it is empty
        }
        const std::string fate = done == 0 ? "no folder was made" : std::to_string(done) + " sets are complete";
        throw Failure(std::string(failure.what()) + "; " + fate);
    }
}
