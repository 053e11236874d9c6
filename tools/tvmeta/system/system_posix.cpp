#include "system/system.h"

#include "base/failure.h"
#include "base/text.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdlib>
#include <cwchar>
#include <filesystem>
#include <string_view>

static_assert(sizeof(wchar_t) == sizeof(char32_t), "wcwidth() takes every character");

namespace {

// A program can be started with standard streams that are closed. The next file that it opens would become such a
// stream, and messages would be written into it.
void occupyStandardStreams() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(descriptor, F_GETFD) < 0) {
            open("/dev/null", O_RDONLY); // the lowest free descriptor; writing to it fails, as it did before
        }
    }
}

FileIdentity identityOf(const struct stat& status) {
    return {static_cast<uint64_t>(status.st_dev), static_cast<uint64_t>(status.st_ino)};
}

} // namespace

void prepareProcess() {
    occupyStandardStreams();
    signal(SIGXFSZ, SIG_IGN);            // beyond the limit on file sizes, a write then fails with EFBIG
    std::setlocale(LC_CTYPE, "C.UTF-8"); // for characterWidth()
}

std::optional<int> terminalWidth() {
    constexpr int UsualWidth = 80;
    if (isatty(STDOUT_FILENO) != 1) {
        return std::nullopt;
    }
    winsize size = {};
    const bool isKnown = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return isKnown ? size.ws_col : UsualWidth;
}

bool canEraseLines() {
    const char* terminal = std::getenv("TERM");
    return isatty(STDERR_FILENO) == 1 && terminal != nullptr && std::string_view(terminal) != "dumb";
}

std::optional<FileIdentity> fileIdentity(const std::string& path) {
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 ? std::optional(identityOf(status)) : std::nullopt;
}

std::optional<FileIdentity> fileIdentity(std::FILE* file) {
    struct stat status = {};
    return fstat(fileno(file), &status) == 0 ? std::optional(identityOf(status)) : std::nullopt;
}

bool isRegularFile(std::FILE* file) {
    struct stat status = {};
    return fstat(fileno(file), &status) == 0 && S_ISREG(status.st_mode);
}

std::error_code moveTo(const std::string& path, const std::string& newPath) {
#if defined(__GLIBC__)
    const int result = renameat2(AT_FDCWD, path.c_str(), AT_FDCWD, newPath.c_str(), RENAME_NOREPLACE);
#elif defined(__APPLE__)
    const int result = renamex_np(path.c_str(), newPath.c_str(), RENAME_EXCL);
#else
    const int result = (errno = EINVAL, -1);
#endif
    if (result == 0) {
        return {};
    }
    if (errno != EINVAL && errno != ENOSYS && errno != ENOTSUP) {
        return {errno, std::generic_category()};
    }
    // Some network file systems cannot refuse to replace a file.
    struct stat status = {};
    if (lstat(newPath.c_str(), &status) == 0) {
        return std::make_error_code(std::errc::file_exists);
    }
    return rename(path.c_str(), newPath.c_str()) == 0 ? std::error_code()
                                                      : std::error_code(errno, std::generic_category());
}

std::shared_ptr<const void> lockFolder(const std::string& folder, const std::function<void()>& waiting) {
    const int descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) {
        return nullptr;
    }
    if (flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
        waiting();
        while (flock(descriptor, LOCK_EX) != 0 && errno == EINTR) {
        }
    }
    return std::shared_ptr<const int>(new int(descriptor), [](const int* locked) {
        close(*locked);
        delete locked;
    });
}

FileKind fileKind(const std::string& path) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0 || S_ISREG(status.st_mode)) {
        return FileKind::Other;
    }
    return S_ISDIR(status.st_mode) ? FileKind::Folder : FileKind::Device;
}

std::string systemPath(const std::string& name) {
    return name;
}

std::vector<FolderEntry> listFolder(const std::string& folder) {
    namespace fs = std::filesystem;
    std::vector<FolderEntry> entries;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        std::error_code problem;
        const fs::file_type type = entry->status(problem).type();
        FolderEntry found = {.name = entry->path().string()};
        found.kind = type == fs::file_type::regular                                    ? FolderEntry::Kind::RegularFile
                     : type == fs::file_type::directory && !entry->is_symlink(problem) ? FolderEntry::Kind::Subfolder
                     : problem && problem != std::errc::no_such_file_or_directory      ? FolderEntry::Kind::Unknown
                                                                                       : FolderEntry::Kind::Other;
        found.problem = problem.message();
        entries.push_back(std::move(found));
    }
    if (error) {
        throw Failure(folder, error.message());
    }
    return entries;
}

bool isLink(const std::string& path) {
    std::error_code error;
    return std::filesystem::is_symlink(path, error);
}

int characterWidth(char32_t character) {
    return character == 0 ? -1 : wcwidth(static_cast<wchar_t>(character));
}
