#include "support/file.h"

#include <cerrno>

#ifdef _WIN32
#include "support/zeroed_buffer.h"

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <io.h>
#include <windows.h>
#endif

namespace tvmeta {

namespace {

// The modes of fopen by Access, with the letter that closes a file in programs that the process starts where the C
// library has one.
#if defined(_WIN32)
constexpr const wchar_t* Modes[] = {L"rbN", L"wbN", L"rb+N"};
#elif defined(__linux__) || defined(__FreeBSD__) || defined(__NetBSD__) || defined(__OpenBSD__)
constexpr const char* Modes[] = {"rbe", "wbe", "rb+e"};
#else
constexpr const char* Modes[] = {"rb", "wb", "rb+"};
#endif

#ifdef _WIN32
// A path as the system's functions require it; empty if it is not UTF-8.
ZeroedBuffer wideText(const char* path) {
    const int length = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, path, -1, nullptr, 0);
    ZeroedBuffer block(static_cast<std::size_t>(std::max(length, 0)) * sizeof(wchar_t));
    if (block) {
        MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, path, -1, reinterpret_cast<wchar_t*>(block.data()), length);
    }
    return block;
}

std::FILE* open(const char* path, Access access) {
    const ZeroedBuffer wide = wideText(path);
    return wide.size() > 0 ? _wfopen(reinterpret_cast<const wchar_t*>(wide.data()), Modes[static_cast<int>(access)])
                           : nullptr;
}

bool move(std::FILE* stream, std::int64_t offset, int origin) {
    return _fseeki64(stream, offset, origin) == 0;
}
#else
static_assert(sizeof(off_t) == sizeof(std::int64_t), "positions in files have 64 bits");

std::FILE* open(const char* path, Access access) {
    return std::fopen(path, Modes[static_cast<int>(access)]);
}

bool move(std::FILE* stream, std::int64_t offset, int origin) {
    return fseeko(stream, offset, origin) == 0;
}
#endif

} // namespace

#ifdef _WIN32
// Writes past the stream: only its translation mode, which belongs to the whole process, could keep the line feed.
void printMessage(const char* text, const char* path) {
    std::fflush(stderr);
    const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stderr)));
    for (const char* const part : {text, path, "\n"}) {
        DWORD written = 0;
        WriteFile(handle, part, static_cast<DWORD>(std::strlen(part)), &written, nullptr);
    }
}

void* openHandle(const char* path) {
    const ZeroedBuffer wide = wideText(path);
    return wide.size() == 0 ? INVALID_HANDLE_VALUE
                            : CreateFileW(reinterpret_cast<const wchar_t*>(wide.data()), GENERIC_READ,
                                          FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                          OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
}
#else
void printMessage(const char* text, const char* path) {
    std::fprintf(stderr, "%s%s\n", text, path);
}
#endif

File openUnbuffered(const char* path, Access access) {
    File file(path != nullptr ? open(path, access) : nullptr);
    if (file) {
        std::setvbuf(file.get(), nullptr, _IONBF, 0);
    }
    return file;
}

bool closeWritten(File& file) {
    return std::fclose(file.release()) == 0;
}

bool seekTo(std::FILE* stream, std::int64_t position) {
    return move(stream, position, SEEK_SET);
}

std::int64_t positionOf(std::FILE* stream) {
#ifdef _WIN32
    return _ftelli64(stream);
#else
    return ftello(stream);
#endif
}

std::int64_t fileSize(std::FILE* stream) {
    return move(stream, 0, SEEK_END) ? positionOf(stream) : -1;
}

bool isDirectory(std::FILE* stream) {
    return seekTo(stream, 0) && std::getc(stream) == EOF && std::ferror(stream) != 0 && errno == EISDIR;
}

} // namespace tvmeta
