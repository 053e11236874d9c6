#include "base/failure.h"
#include "base/text.h"
#include "system/paths.h"
#include "system/system.h"
#include "system/windows_handle.h"

#include <fcntl.h>
#include <io.h>

#include <cstdlib>
#include <filesystem>
#include <string_view>

#ifdef __MINGW32__
extern "C" {
int _dowildcard = -1; // names such as *.jpg are expanded, as shells do elsewhere
}
#endif

namespace {

UINT formerCodePage = 0;

// The code page belongs to the console, which outlives the process.
void restoreCodePage() {
    SetConsoleOutputCP(formerCodePage);
}

BOOL WINAPI restoreCodePageOnEvent(DWORD /*event*/) {
    restoreCodePage();
    return FALSE; // the next handler ends the process
}

std::optional<FileIdentity> identityOf(HANDLE file) {
    BY_HANDLE_FILE_INFORMATION found = {};
    if (GetFileInformationByHandle(file, &found) == 0) {
        return std::nullopt;
    }
    return FileIdentity{found.dwVolumeSerialNumber, uint64_t{found.nFileIndexHigh} << 32 | found.nFileIndexLow};
}

HANDLE handleOf(std::FILE* stream) {
    const int descriptor = _fileno(stream);
    return descriptor < 0 ? INVALID_HANDLE_VALUE : reinterpret_cast<HANDLE>(_get_osfhandle(descriptor));
}

struct SearchCloser {
    using pointer = HANDLE;
    void operator()(HANDLE search) const {
        if (search != INVALID_HANDLE_VALUE) {
            FindClose(search);
        }
    }
};
using Search = std::unique_ptr<HANDLE, SearchCloser>;

// Reparse points with other tags, such as files in cloud folders, are no links.
bool isLink(const WIN32_FIND_DATAW& found) {
    return (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
           (found.dwReserved0 == IO_REPARSE_TAG_SYMLINK || found.dwReserved0 == IO_REPARSE_TAG_MOUNT_POINT);
}

FolderEntry entryOf(const std::string& folder, const WIN32_FIND_DATAW& found) {
    FolderEntry entry;
    try {
        entry.name = nameOf(pathOf(folder) / found.cFileName);
    } catch (const std::system_error&) { // unpaired surrogates, which NTFS allows
        entry.problem = "contains a file whose name is not Unicode";
        return entry;
    }
    const bool isFolder = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    entry.kind = !isFolder       ? FolderEntry::Kind::RegularFile // reading a link to nothing reports it
                 : isLink(found) ? FolderEntry::Kind::Other
                                 : FolderEntry::Kind::Subfolder;
    return entry;
}

} // namespace

Handle openHandle(const std::string& path, DWORD access) {
    constexpr DWORD ShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const HANDLE handle = CreateFileW(pathOf(systemPath(path)).c_str(), access, ShareAll, nullptr, OPEN_EXISTING,
                                      FILE_FLAG_BACKUP_SEMANTICS, nullptr); // folders require the flag
    return Handle(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}

void prepareProcess() {
    for (std::FILE* const stream : {stdin, stdout, stderr}) {
        if (const int descriptor = _fileno(stream); descriptor >= 0) {
            _setmode(descriptor, _O_BINARY); // lines end as on other systems
        }
    }
    formerCodePage = GetConsoleOutputCP();
    if (formerCodePage != 0 && formerCodePage != CP_UTF8 && SetConsoleOutputCP(CP_UTF8) != 0) {
        std::atexit(restoreCodePage);
        SetConsoleCtrlHandler(restoreCodePageOnEvent, TRUE);
    }
}

std::optional<int> terminalWidth() {
    CONSOLE_SCREEN_BUFFER_INFO screen = {};
    const bool isConsole = GetConsoleScreenBufferInfo(handleOf(stdout), &screen) != 0;
    return isConsole ? std::optional(screen.srWindow.Right - screen.srWindow.Left + 1) : std::nullopt;
}

bool canEraseLines() {
    const HANDLE console = handleOf(stderr);
    DWORD mode = 0;
    return GetConsoleMode(console, &mode) != 0 &&
           SetConsoleMode(console, mode | ENABLE_PROCESSED_OUTPUT | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

// The standard library treats one file as two if it is reached through two drive letters.
std::optional<FileIdentity> fileIdentity(const std::string& path) {
    const Handle file = openHandle(path, 0);
    return file ? identityOf(file.get()) : std::nullopt;
}

std::optional<FileIdentity> fileIdentity(std::FILE* file) {
    return identityOf(handleOf(file));
}

bool isRegularFile(std::FILE* file) {
    return GetFileType(handleOf(file)) == FILE_TYPE_DISK;
}

std::error_code moveTo(const std::string& path, const std::string& newPath) {
    const BOOL isMoved = MoveFileExW(pathOf(path).c_str(), pathOf(newPath).c_str(), MOVEFILE_WRITE_THROUGH);
    return isMoved != 0 ? std::error_code() : std::error_code(static_cast<int>(GetLastError()), std::system_category());
}

// Names such as COM1 and CON open a device in every folder, and have no file status.
// A folder cannot be locked itself: a file of the temporary folder, which the system deletes, is locked for it.
std::shared_ptr<const void> lockFolder(const std::string& folder, const std::function<void()>& waiting) {
    std::error_code error;
    const std::filesystem::path path = std::filesystem::weakly_canonical(pathOf(folder), error);
    const std::filesystem::path file = std::filesystem::temp_directory_path(error) /
                                       ("tvmeta-" + std::to_string(std::filesystem::hash_value(path)) + ".lock");
    for (bool isFirst = true;; isFirst = false) {
        const HANDLE handle = CreateFileW(file.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                                          FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
        if (handle != INVALID_HANDLE_VALUE) {
            return std::shared_ptr<const void>(handle,
                                               [](const void* locked) { CloseHandle(const_cast<void*>(locked)); });
        }
        if (GetLastError() != ERROR_SHARING_VIOLATION) {
            return nullptr;
        }
        if (isFirst) {
            waiting();
        }
        Sleep(100);
    }
}

FileKind fileKind(const std::string& path) {
    const Handle file = openHandle(path, GENERIC_READ); // CON requires the access
    if (file && GetFileType(file.get()) != FILE_TYPE_DISK) {
        return FileKind::Device;
    }
    const DWORD attributes = GetFileAttributesW(pathOf(systemPath(path)).c_str());
    const bool isKnown = attributes != INVALID_FILE_ATTRIBUTES;
    return isKnown && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? FileKind::Folder : FileKind::Other;
}

bool isLink(const std::string& path) {
    WIN32_FIND_DATAW found = {};
    const Search search(FindFirstFileW(pathOf(systemPath(path)).c_str(), &found));
    return search.get() != INVALID_HANDLE_VALUE && isLink(found);
}

// With the prefix a path can have more than 260 characters, but no slashes and no relative parts.
std::string systemPath(const std::string& name) {
    constexpr size_t MaxPlain = 247; // of the path of a folder, to which 8.3 names are added
    const std::wstring path = pathOf(name).wstring();
    std::wstring full(GetFullPathNameW(path.c_str(), 0, nullptr, nullptr), L'\0');
    full.resize(GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
    if (full.size() <= MaxPlain || full.starts_with(L"\\\\?\\")) {
        return name;
    }
    const bool isNetwork = full.starts_with(L"\\\\");
    const std::u8string text =
        std::filesystem::path(isNetwork ? L"\\\\?\\UNC" + full.substr(1) : L"\\\\?\\" + full).u8string();
    return {text.begin(), text.end()};
}

// The directory iterator of the C++ library lists another folder if the path is long.
std::vector<FolderEntry> listFolder(const std::string& folder) {
    std::vector<FolderEntry> entries;
    WIN32_FIND_DATAW found = {};
    const std::wstring pattern = pathOf(systemPath(nameOf(pathOf(folder) / "*"))).wstring();
    const Search search(FindFirstFileW(pattern.c_str(), &found));
    if (search.get() == INVALID_HANDLE_VALUE) {
        throw Failure(folder, std::system_category().message(static_cast<int>(GetLastError())));
    }
    do {
        const std::wstring_view name = found.cFileName;
        if (name != L"." && name != L"..") {
            entries.push_back(entryOf(folder, found));
        }
    } while (FindNextFileW(search.get(), &found) != 0);
    if (const DWORD error = GetLastError(); error != ERROR_NO_MORE_FILES) {
        throw Failure(folder, std::system_category().message(static_cast<int>(error)));
    }
    return entries;
}

// Windows classifies UTF-16 units. Of the characters that have two, most are ideographs and pictures.
int characterWidth(char32_t character) {
    constexpr WORD Wide = C3_FULLWIDTH | C3_IDEOGRAPH | C3_HIRAGANA | C3_KATAKANA;
    if (character > 0xFFFF) {
        return 2;
    }
    if (character == 0x2028 || character == 0x2029) { // line and paragraph separator
        return -1;
    }
    if ((character >= 0x1100 && character <= 0x115F) || (character >= 0xAC00 && character <= 0xD7A3)) { // Hangul
        return 2;
    }
    const auto unit = static_cast<wchar_t>(character);
    WORD type = 0;
    WORD form = 0;
    if (GetStringTypeW(CT_CTYPE1, &unit, 1, &type) == 0 || GetStringTypeW(CT_CTYPE3, &unit, 1, &form) == 0 ||
        (type & C1_CNTRL) != 0 || (type & C1_DEFINED) == 0) {
        return -1;
    }
    const bool isMark = (form & C3_NONSPACING) != 0 && (form & C3_ALPHA) == 0; // letters with accents have both
    return isMark ? 0 : (form & Wide) != 0 && (form & C3_HALFWIDTH) == 0 ? 2 : 1;
}
