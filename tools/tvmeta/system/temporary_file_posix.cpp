#include "base/failure.h"
#include "base/numbers.h"
#include "system/paths.h"
#include "system/temporary_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#ifdef __linux__
#include <sys/xattr.h>
#endif

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <limits>
#include <string_view>
#include <system_error>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr mode_t Private = S_IRUSR | S_IWUSR;
constexpr mode_t Permissions = S_IRWXU | S_IRWXG | S_IRWXO;

// The temporary file that a signal handler must remove.
std::atomic<const char*> registeredPath = nullptr;
static_assert(std::atomic<const char*>::is_always_lock_free, "a signal handler reads it");

// The handler was reset before it was called, so the signal ends the process.
extern "C" void removeRegistered(int number) {
    if (const char* path = registeredPath.load()) {
        unlink(path);
    }
    raise(number);
}

bool isWritable(const std::string& path) {
    return faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0;
}

std::optional<int> parseDescriptor(const std::string& text) {
    const std::optional<int64_t> number = parseWholeNumber(text);
    const bool isDescriptor = number && *number >= 0 && *number <= std::numeric_limits<int>::max();
    return isDescriptor ? std::optional(static_cast<int>(*number)) : std::nullopt;
}

fs::path folderOf(const fs::path& path) {
    return path.has_parent_path() ? path.parent_path() : fs::path(".");
}

// The target if the path names a descriptor: /dev/fd/1 or /proc/self/fd/1, and /dev/stdout, which is a link to it.
std::optional<OutputTarget> descriptorTarget(const std::string& name, const fs::path& path) {
    std::error_code error;
    const fs::path folder = fs::canonical(folderOf(path), error);
    const bool isDescriptor =
        folder == "/dev/fd" || (folder.string().starts_with("/proc/") && folder.filename() == "fd");
    if (error || !isDescriptor) {
        return std::nullopt;
    }
    const bool isOwn = folder == "/dev/fd" || folder == fs::canonical("/proc/self/fd", error) ||
                       folder == fs::canonical("/proc/thread-self/fd", error);
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0) {
        failWithErrno(name);
    }
    OutputTarget target = {.name = name, .path = path.string(), .isDirect = true};
    target.descriptor = isOwn ? parseDescriptor(path.filename().string()) : std::nullopt;
    return target;
}

// The attributes include the access control list.
void copyExtendedAttributes([[maybe_unused]] const std::string& from, [[maybe_unused]] int to) {
#ifdef __linux__
    const ssize_t size = listxattr(from.c_str(), nullptr, 0);
    std::vector<char> names(size > 0 ? static_cast<size_t>(size) : 0);
    const ssize_t length = listxattr(from.c_str(), names.data(), names.size());
    for (ssize_t at = 0; at < length; ++at) {
        const char* name = names.data() + at;
        std::array<char, 65536> value; // the kernel allows no more
        const ssize_t bytes = getxattr(from.c_str(), name, value.data(), value.size());
        if (bytes >= 0) {
            fsetxattr(to, name, value.data(), static_cast<size_t>(bytes), 0);
        }
        at += static_cast<ssize_t>(std::string_view(name).size());
    }
#endif
}

// If the group cannot be kept, the new file has another group, which must not get the rights of the old one.
void copyAttributes(const std::string& from, int to) {
    struct stat former = {};
    if (stat(from.c_str(), &former) != 0) {
        return;
    }
    const bool isGroupKept =
        fchown(to, former.st_uid, former.st_gid) == 0 || fchown(to, static_cast<uid_t>(-1), former.st_gid) == 0;
    copyExtendedAttributes(from, to);
    fchmod(to, former.st_mode & (isGroupKept ? Permissions : Permissions & ~mode_t{S_IRWXG}));
}

// Makes a renaming survive a power cut. Some file systems cannot do this, and the new file is in place in any case.
void synchroniseFolder(const fs::path& folder) {
    const int descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0) {
        fsync(descriptor);
        close(descriptor);
    }
}

} // namespace

OutputTarget resolveTarget(const std::string& name) {
    constexpr int MaxLinks = 40;
    fs::path path = name == StandardStream ? "/dev/fd/1" : name;
    for (int links = 0; links < MaxLinks; ++links) {
        if (const std::optional<OutputTarget> target = descriptorTarget(name, path)) {
            return *target;
        }
        struct stat status = {};
        OutputTarget target = {.name = name, .path = path.string()};
        if (lstat(path.c_str(), &status) != 0) {
            if (errno != ENOENT || !path.has_filename()) {
                failWithErrno(name);
            }
            return target;
        }
        if (S_ISDIR(status.st_mode)) {
            throw Failure(name, "is a folder");
        }
        if (!S_ISLNK(status.st_mode)) {
            if (!isWritable(target.path)) {
                failWithErrno(name);
            }
            target.exists = S_ISREG(status.st_mode);
            target.isDirect = !target.exists;
            return target;
        }
        path = path.parent_path() / fs::read_symlink(path);
    }
    errno = ELOOP;
    failWithErrno(name);
}

File openDirect(const OutputTarget& target) {
    const int descriptor = target.descriptor ? fcntl(*target.descriptor, F_DUPFD_CLOEXEC, 0)
                                             : open(target.path.c_str(), O_WRONLY | O_APPEND | O_NOCTTY | O_CLOEXEC);
    if (descriptor < 0) {
        failWithErrno(target.name);
    }
    File file(fdopen(descriptor, "wb"));
    if (!file) {
        close(descriptor);
        failWithErrno(target.name);
    }
    return file;
}

// The file has no name, so that no signal can leave it.
SpoolFile::SpoolFile() : file(std::tmpfile()) {
    if (!file) {
        failWithErrno("temporary file");
    }
    openingPath = "/dev/fd/" + std::to_string(fileno(file.get()));
}

SpoolFile::~SpoolFile() = default;

// A signal that is ignored from the start, as nohup does, stays ignored.
void removeTemporaryFileOnSignals() {
    struct sigaction action = {};
    action.sa_handler = removeRegistered;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    for (const int number : {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGTERM, SIGXCPU}) {
        struct sigaction former = {};
        if (sigaction(number, nullptr, &former) == 0 && former.sa_handler == SIG_DFL) {
            sigaction(number, &action, nullptr);
        }
    }
}

TemporaryFile::TemporaryFile(const OutputTarget& target) : temporaryPath(temporaryName(target.path)) {
    // A file that is to replace a private one is private from the start. Otherwise the umask or the folder's default
    // access control list decides.
    constexpr mode_t Usual = Private | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;
    registeredPath = temporaryPath.c_str();
    const int descriptor =
        open(temporaryPath.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, target.exists ? Private : Usual);
    if (descriptor >= 0) {
        file.reset(fdopen(descriptor, "w+b"));
    }
    if (!file) {
        const int reason = errno;
        if (descriptor >= 0) {
            close(descriptor);
            unlink(temporaryPath.c_str());
        }
        registeredPath = nullptr;
        errno = reason;
        failWithErrno(target.name);
    }
    // Even where the umask forbids it, the file must be opened by its path until it is complete.
    struct stat status = {};
    fstat(descriptor, &status);
    newFileMode = status.st_mode & Permissions;
    if ((newFileMode & Private) != Private) {
        fchmod(descriptor, newFileMode | Private);
    }
}

TemporaryFile::~TemporaryFile() {
    if (registeredPath == temporaryPath.c_str()) {
        unlink(temporaryPath.c_str());
        registeredPath = nullptr;
    }
}

void TemporaryFile::replace(const OutputTarget& target) {
    // The library has written through a descriptor of its own; fsync() covers it and reports its late errors.
    if (std::fflush(file.get()) != 0 || fsync(fileno(file.get())) != 0) {
        failWithErrno(target.name);
    }
    if (target.exists) {
        copyAttributes(target.path, fileno(file.get()));
    } else if ((newFileMode & Private) != Private) {
        fchmod(fileno(file.get()), newFileMode);
    }
    if (std::fclose(file.release()) != 0 || std::rename(temporaryPath.c_str(), target.path.c_str()) != 0) {
        failWithErrno(target.name);
    }
    registeredPath = nullptr;
    synchroniseFolder(folderOf(target.path));
}
