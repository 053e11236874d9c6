#include "system/system.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <filesystem>
#include <string_view>
#include <system_error>

static_assert(sizeof(off_t) == sizeof(int64_t), "positions in files have 64 bits");
static_assert(sizeof(wchar_t) == sizeof(char32_t), "wcwidth() takes every character");

namespace {

// Otherwise the next file that is opened becomes a closed standard stream, and gets the messages.
void occupyStandardStreams() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(descriptor, F_GETFD) < 0) {
            open("/dev/null", O_RDONLY); // the lowest free descriptor; writing to it fails, as it did before
        }
    }
}

} // namespace

void prepareProcess() {
    occupyStandardStreams();
    signal(SIGXFSZ, SIG_IGN);            // beyond the limit on file sizes, a write then fails with EFBIG
    std::setlocale(LC_CTYPE, "C.UTF-8"); // for characterWidth()
}

bool seekTo(std::FILE* file, int64_t position) {
    return fseeko(file, position, SEEK_SET) == 0;
}

bool seekBy(std::FILE* file, int64_t distance) {
    return fseeko(file, distance, SEEK_CUR) == 0;
}

int64_t positionOf(std::FILE* file) {
    return ftello(file);
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

bool isSameFile(const std::string& path, const std::string& other) {
    std::error_code error;
    return std::filesystem::equivalent(path, other, error);
}

std::optional<FileId> fileId(const std::string& path) {
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 ? std::optional(FileId{status.st_dev, status.st_ino}) : std::nullopt;
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

FileKind fileKind(const std::string& path) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0 || S_ISREG(status.st_mode)) {
        return FileKind::Other;
    }
    return S_ISDIR(status.st_mode) ? FileKind::Folder : FileKind::Device;
}

bool isStandardOutput(const std::string& path) {
    struct stat file = {};
    struct stat output = {};
    return stat(path.c_str(), &file) == 0 && fstat(STDOUT_FILENO, &output) == 0 && file.st_dev == output.st_dev &&
           file.st_ino == output.st_ino;
}

bool isLink(const std::string& path) {
    std::error_code error;
    return std::filesystem::is_symlink(path, error);
}

int characterWidth(char32_t character) {
    return character == 0 ? -1 : wcwidth(static_cast<wchar_t>(character));
}
