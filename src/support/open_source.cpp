// The sources that the library makes: files and memory. A source of a file keeps its descriptor or handle in `context`,
// so that no memory is allocated for it.
#include "support/packed_numbers.h"
#include "tvmeta_photo.h"

#include <algorithm>
#include <cstdint>

#ifdef _WIN32
#include "support/file.h"

#include <windows.h>
#else
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

using namespace tvmeta;

namespace {

std::int64_t readMemory(void* context, std::int64_t position, void* buffer, std::int64_t count) {
    copyBytes(buffer, static_cast<const unsigned char*>(context) + position, static_cast<std::size_t>(count));
    return count;
}

// One read of more would fail on some systems.
constexpr std::int64_t MaxRead = std::int64_t{1} << 30;

#ifdef _WIN32

std::int64_t readSome(void* handle, std::int64_t position, void* buffer, std::int64_t count) {
    OVERLAPPED place{};
    place.Offset = static_cast<DWORD>(position);
    place.OffsetHigh = static_cast<DWORD>(position >> 32);
    DWORD read = 0;
    if (ReadFile(handle, buffer, static_cast<DWORD>(count), &read, &place) == 0) {
        return GetLastError() == ERROR_HANDLE_EOF ? 0 : -1;
    }
    return read;
}

void closeFile(void* handle) {
    CloseHandle(handle);
}

bool openFile(const char* path, tvmeta_Source& source) {
    const HANDLE handle = openHandle(path);
    if (handle == INVALID_HANDLE_VALUE) {
        return false;
    }
    LARGE_INTEGER size{};
    if (GetFileType(handle) != FILE_TYPE_DISK || GetFileSizeEx(handle, &size) == 0) {
        CloseHandle(handle);
        return false;
    }
    source.context = handle;
    source.size = size.QuadPart;
    return true;
}

#else

int descriptorOf(void* context) {
    return static_cast<int>(reinterpret_cast<std::intptr_t>(context));
}

std::int64_t readSome(void* context, std::int64_t position, void* buffer, std::int64_t count) {
    ssize_t read = -1;
    do {
        read = pread(descriptorOf(context), buffer, static_cast<std::size_t>(count), position);
    } while (read < 0 && errno == EINTR);
    return read;
}

void closeFile(void* context) {
    close(descriptorOf(context));
}

// Without O_NONBLOCK, opening a FIFO would wait for a writer.
bool openFile(const char* path, tvmeta_Source& source) {
    const int descriptor = open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0) {
        return false;
    }
    struct stat status {};
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        close(descriptor);
        return false;
    }
    source.context = reinterpret_cast<void*>(static_cast<std::intptr_t>(descriptor));
    source.size = status.st_size;
    return true;
}

#endif

// The system may return fewer bytes than it was asked for before the end, too.
std::int64_t readFile(void* context, std::int64_t position, void* buffer, std::int64_t count) {
    std::int64_t done = 0;
    std::int64_t read = 1;
    for (; done < count && read > 0; done += read) {
        read = readSome(context, position + done, static_cast<unsigned char*>(buffer) + done,
                        std::min(count - done, MaxRead));
    }
    return read < 0 ? read : done;
}

} // namespace

std::int32_t tvmeta_open(const char* path, tvmeta_Source* source) noexcept {
    if (source == nullptr) {
        return TVMETA_BAD_ARGUMENT;
    }
    *source = {};
    if (path == nullptr) {
        return TVMETA_BAD_ARGUMENT;
    }
    if (!openFile(path, *source)) {
        return TVMETA_READ_FAILED;
    }
    source->read = readFile;
    source->close = closeFile;
    return TVMETA_OK;
}

std::int32_t tvmeta_memory(const void* bytes, std::int64_t size, tvmeta_Source* source) noexcept {
    if (source == nullptr) {
        return TVMETA_BAD_ARGUMENT;
    }
    *source = {};
    if (size < 0 || (bytes == nullptr && size > 0)) {
        return TVMETA_BAD_ARGUMENT;
    }
    *source = {const_cast<void*>(bytes), size, readMemory, nullptr};
    return TVMETA_OK;
}

void tvmeta_close(tvmeta_Source* source) noexcept {
    if (source == nullptr) {
        return;
    }
    if (source->close != nullptr) {
        source->close(source->context);
    }
    *source = {};
}
