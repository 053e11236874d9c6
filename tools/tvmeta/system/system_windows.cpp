#include "system/paths.h"
#include "system/system.h"
#include "system/windows_handle.h"

#include <fcntl.h>
#include <io.h>

#include <array>
#include <cstdlib>

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

bool isSame(HANDLE file, HANDLE other) {
    BY_HANDLE_FILE_INFORMATION first = {};
    BY_HANDLE_FILE_INFORMATION second = {};
    return GetFileInformationByHandle(file, &first) != 0 && GetFileInformationByHandle(other, &second) != 0 &&
           first.dwVolumeSerialNumber == second.dwVolumeSerialNumber && first.nFileIndexHigh == second.nFileIndexHigh &&
           first.nFileIndexLow == second.nFileIndexLow;
}

HANDLE handleOf(std::FILE* stream) {
    const int descriptor = _fileno(stream);
    return descriptor < 0 ? INVALID_HANDLE_VALUE : reinterpret_cast<HANDLE>(_get_osfhandle(descriptor));
}

} // namespace

Handle openHandle(const std::string& path, DWORD access) {
    constexpr DWORD ShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const HANDLE handle = CreateFileW(pathOf(path).c_str(), access, ShareAll, nullptr, OPEN_EXISTING,
                                      FILE_FLAG_BACKUP_SEMANTICS, nullptr); // folders require the flag
    return Handle(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}

void prepareProcess() {
    for (std::FILE* const stream : {stdout, stderr}) {
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

bool seekTo(std::FILE* file, int64_t position) {
    return _fseeki64(file, position, SEEK_SET) == 0;
}

bool seekBy(std::FILE* file, int64_t distance) {
    return _fseeki64(file, distance, SEEK_CUR) == 0;
}

int64_t positionOf(std::FILE* file) {
    return _ftelli64(file);
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

// The standard library takes one file for two if it is reached through two drive letters.
bool isSameFile(const std::string& path, const std::string& other) {
    const Handle first = openHandle(path, 0);
    const Handle second = openHandle(other, 0);
    return first && second && isSame(first.get(), second.get());
}

std::optional<FileId> fileId(const std::string& path) {
    const Handle file = openHandle(path, 0);
    BY_HANDLE_FILE_INFORMATION information = {};
    if (!file || GetFileInformationByHandle(file.get(), &information) == 0) {
        return std::nullopt;
    }
    return FileId{information.dwVolumeSerialNumber,
                  uint64_t{information.nFileIndexHigh} << 32 | information.nFileIndexLow};
}

std::error_code moveTo(const std::string& path, const std::string& newPath) {
    const BOOL isMoved = MoveFileExW(pathOf(path).c_str(), pathOf(newPath).c_str(), MOVEFILE_WRITE_THROUGH);
    return isMoved != 0 ? std::error_code() : std::error_code(static_cast<int>(GetLastError()), std::system_category());
}

// Names such as COM1 and CON open a device in every folder, and have no file status.
FileKind fileKind(const std::string& path) {
    const Handle file = openHandle(path, GENERIC_READ); // CON requires the access
    if (file && GetFileType(file.get()) != FILE_TYPE_DISK) {
        return FileKind::Device;
    }
    const DWORD attributes = GetFileAttributesW(pathOf(path).c_str());
    const bool isKnown = attributes != INVALID_FILE_ATTRIBUTES;
    return isKnown && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? FileKind::Folder : FileKind::Other;
}

bool isStandardOutput(const std::string& path) {
    const Handle file = openHandle(path, 0);
    return file && isSame(file.get(), handleOf(stdout));
}

// Reparse points with other tags, such as files in cloud folders, are no links.
bool isLink(const std::string& path) {
    WIN32_FIND_DATAW found = {};
    const HANDLE search = FindFirstFileW(pathOf(path).c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) {
        return false;
    }
    FindClose(search);
    return (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
           (found.dwReserved0 == IO_REPARSE_TAG_SYMLINK || found.dwReserved0 == IO_REPARSE_TAG_MOUNT_POINT);
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
