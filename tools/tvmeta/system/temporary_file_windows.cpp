#include "base/failure.h"
#include "system/paths.h"
#include "system/system.h"
#include "system/temporary_file.h"
#include "system/windows_handle.h"

#include <fcntl.h>
#include <io.h>

#include <mutex>
#include <string_view>
#include <system_error>
#include <vector>

namespace {

[[noreturn]] void failWithSystem(const std::string& path) {
    throw Failure(path, std::system_category().message(static_cast<int>(GetLastError())));
}

// The temporary file that Ctrl+C must remove; empty if there is none.
std::mutex registration;
std::wstring registeredPath;

constexpr DWORD ScannerTime = 2000;  // milliseconds for which virus scanners and indexers open new files
constexpr DWORD LibraryTime = 30000; // for which the library writes a file

// Repeats an action on a file that is open elsewhere, for at most a time.
template <typename Action>
bool retry(DWORD milliseconds, Action action) {
    constexpr DWORD Pause = 50;
    for (DWORD waited = 0; !action(); waited += Pause) {
        const DWORD error = GetLastError();
        if (waited >= milliseconds || (error != ERROR_SHARING_VIOLATION && error != ERROR_ACCESS_DENIED)) {
            return false;
        }
        Sleep(Pause);
    }
    return true;
}

bool removeFile(const std::wstring& path, DWORD milliseconds) {
    return retry(milliseconds, [&] { return DeleteFileW(path.c_str()) != 0; });
}

// Runs on a thread of its own. Files that the library has open cannot be removed before its call has ended. The lock is
// kept, so that the file is no longer moved into place.
BOOL WINAPI removeRegistered(DWORD /*event*/) {
    registration.lock();
    if (!registeredPath.empty()) {
        removeFile(registeredPath, LibraryTime);
    }
    return FALSE; // the handler of the system ends the process
}

// The path of a file without links. The prefix \\?\ is removed, because not every function accepts it.
std::string finalPath(HANDLE file, const std::string& name) {
    constexpr std::wstring_view Prefix = L"\\\\?\\";
    constexpr std::wstring_view NetworkPrefix = L"\\\\?\\UNC\\";
    std::wstring path(GetFinalPathNameByHandleW(file, nullptr, 0, FILE_NAME_NORMALIZED), L'\0');
    const DWORD size = static_cast<DWORD>(path.size());
    const DWORD length = GetFinalPathNameByHandleW(file, path.data(), size, FILE_NAME_NORMALIZED);
    if (length == 0 || length >= size) {
        failWithSystem(name);
    }
    path.resize(length);
    if (path.starts_with(NetworkPrefix)) {
        path.replace(0, NetworkPrefix.size(), L"\\\\");
    } else if (path.starts_with(Prefix)) {
        path.erase(0, Prefix.size());
    }
    return nameOf(path);
}

// The access control list decides who may read a file that replaces a private one.
void copyAccessControl(const std::wstring& from, const std::wstring& to) {
    DWORD size = 0;
    GetFileSecurityW(from.c_str(), DACL_SECURITY_INFORMATION, nullptr, 0, &size);
    std::vector<unsigned char> list(size);
    if (GetFileSecurityW(from.c_str(), DACL_SECURITY_INFORMATION, list.data(), size, &size) != 0) {
        SetFileSecurityW(to.c_str(), DACL_SECURITY_INFORMATION, list.data());
    }
}

void copyAttributes(const std::wstring& from, const std::wstring& to) {
    constexpr DWORD Copied = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;
    const DWORD attributes = GetFileAttributesW(from.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & Copied) != 0) {
        SetFileAttributesW(to.c_str(), (attributes & Copied) | FILE_ATTRIBUTE_ARCHIVE); // backups copy the new file
    }
}

// Creates a file that can be removed while it is open.
File createFile(const std::wstring& path, DWORD attributes, const std::string& name) {
    constexpr DWORD ShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const HANDLE handle =
        CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, ShareAll, nullptr, CREATE_NEW, attributes, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        failWithSystem(name);
    }
    const int descriptor = _open_osfhandle(reinterpret_cast<intptr_t>(handle), _O_RDWR | _O_BINARY | _O_NOINHERIT);
    File file(descriptor < 0 ? nullptr : _fdopen(descriptor, "w+b"));
    if (!file) {
        const int reason = errno;
        descriptor < 0 ? static_cast<void>(CloseHandle(handle)) : static_cast<void>(_close(descriptor));
        DeleteFileW(path.c_str());
        errno = reason;
        failWithErrno(name);
    }
    return file;
}

} // namespace

// Devices such as NUL, and pipes, cannot be replaced.
OutputTarget resolveTarget(const std::string& name) {
    OutputTarget target = {.name = name, .path = name};
    if (name == StandardStream) {
        target.isDirect = true;
        target.descriptor = _fileno(stdout);
        return target;
    }
    const Handle file = openHandle(name, FILE_READ_ATTRIBUTES);
    if (!file) {
        if (GetLastError() != ERROR_FILE_NOT_FOUND || !pathOf(name).has_filename()) {
            failWithSystem(name);
        }
        if (isLink(name)) {
            throw Failure(name, "is a link to a file that does not exist");
        }
        return target;
    }
    if (GetFileType(file.get()) != FILE_TYPE_DISK) {
        target.isDirect = true;
        return target;
    }
    BY_HANDLE_FILE_INFORMATION information = {};
    if (GetFileInformationByHandle(file.get(), &information) == 0) {
        failWithSystem(name);
    }
    if ((information.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        throw Failure(name, "is a folder");
    }
    if ((information.dwFileAttributes & FILE_ATTRIBUTE_READONLY) != 0) {
        throw Failure(name, "is read-only");
    }
    if (!openHandle(name, GENERIC_WRITE | DELETE)) { // what writing and replacing it require
        failWithSystem(name);
    }
    target.exists = true;
    if (isLink(name)) {
        target.path = finalPath(file.get(), name);
    }
    return target;
}

File openDirect(const OutputTarget& target) {
    File file(target.descriptor ? _fdopen(_dup(*target.descriptor), "wb")
                                : _wfopen(pathOf(target.path).c_str(), L"wbN"));
    if (!file) {
        failWithErrno(target.name);
    }
    return file;
}

SpoolFile::SpoolFile() {
    const std::filesystem::path folder = std::filesystem::temp_directory_path();
    openingPath = temporaryName(nameOf(folder / "spool"));
    file = createFile(pathOf(openingPath).wstring(), FILE_ATTRIBUTE_TEMPORARY, "temporary file");
}

SpoolFile::~SpoolFile() {
    file.reset();
    removeFile(pathOf(openingPath).wstring(), ScannerTime);
}

void removeTemporaryFileOnSignals() {
    SetConsoleCtrlHandler(removeRegistered, TRUE);
}

TemporaryFile::TemporaryFile(const OutputTarget& target) : temporaryPath(temporaryName(target.path)) {
    const std::scoped_lock lock(registration);
    const std::wstring path = pathOf(temporaryPath).wstring();
    const std::wstring former = pathOf(target.path).wstring();
    const DWORD attributes = target.exists ? GetFileAttributesW(former.c_str()) : INVALID_FILE_ATTRIBUTES;
    const bool isEncrypted = attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_ENCRYPTED) != 0;
    file = createFile(path, isEncrypted ? FILE_ATTRIBUTE_ENCRYPTED : FILE_ATTRIBUTE_NORMAL, target.name);
    registeredPath = path;
    if (target.exists) {
        copyAccessControl(former, path);
    }
}

TemporaryFile::~TemporaryFile() {
    const std::scoped_lock lock(registration);
    if (registeredPath == pathOf(temporaryPath).wstring()) {
        file.reset();
        removeFile(registeredPath, ScannerTime);
        registeredPath.clear();
    }
}

void TemporaryFile::replace(const OutputTarget& target) {
    // The library has written through a stream of its own; _commit() covers it.
    if (std::fflush(file.get()) != 0 || _commit(_fileno(file.get())) != 0) {
        failWithErrno(target.name);
    }
    const std::wstring path = pathOf(target.path).wstring();
    const std::scoped_lock lock(registration);
    if (target.exists) {
        copyAttributes(path, registeredPath);
    }
    if (std::fclose(file.release()) != 0) {
        failWithErrno(target.name);
    }
    if (!retry(ScannerTime, [&] {
            return MoveFileExW(registeredPath.c_str(), path.c_str(),
                               MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
        })) {
        failWithSystem(target.name);
    }
    registeredPath.clear();
}
