#include "testing/io_monitor.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <sys/stat.h>

using test::monitor;

test::Monitor test::monitor;

namespace {

bool fails(test::Kind kind) {
    if (!monitor.fails(kind)) {
        return false;
    }
    errno = monitor.fault == test::Fault::Interrupted ? EINTR : EIO;
    return true;
}

} // namespace

extern "C" {
void* __real_calloc(std::size_t, std::size_t);
void __real_free(void*);
std::FILE* __real_fopen(const char*, const char*);
std::size_t __real_fread(void*, std::size_t, std::size_t, std::FILE*);
int __real_getc(std::FILE*);
int __real_ferror(std::FILE*);
int __real_fseeko(std::FILE*, off_t, int);
off_t __real_ftello(std::FILE*);
std::size_t __real_fwrite(const void*, std::size_t, std::size_t, std::FILE*);
int __real_fclose(std::FILE*);
int __real_open(const char*, int, ...);
int __real_fstat(int, struct stat*);
ssize_t __real_pread(int, void*, std::size_t, off_t);
int __real_close(int);

void* __wrap_calloc(std::size_t count, std::size_t size) {
    if (fails(test::Allocation)) {
        return nullptr;
    }
    monitor.blocks += monitor.armed ? 1 : 0;
    monitor.liveBytes += monitor.armed ? static_cast<std::int64_t>(count * size) : 0;
    monitor.peakBytes = std::max(monitor.peakBytes, monitor.liveBytes);
    return __real_calloc(count, size);
}
void __wrap_free(void* block) {
    monitor.blocks -= monitor.armed && block != nullptr ? 1 : 0;
    monitor.liveBytes = monitor.blocks == 0 ? 0 : monitor.liveBytes;
    __real_free(block);
}
std::FILE* __wrap_fopen(const char* path, const char* mode) {
    const bool refused = fails(test::Open);
    if (monitor.armed) {
        EXPECT_NE(std::string_view(mode).find('e'), std::string_view::npos) << "programs would inherit the file";
        monitor.armed = false; // a stream of the C++ library may be opened by the same function
        monitor.beforeOpen(monitor.calls[test::Open]);
        monitor.armed = true;
    }
    std::FILE* stream = refused ? nullptr : __real_fopen(path, mode);
    monitor.streams += monitor.armed && stream != nullptr ? 1 : 0;
    return stream;
}
std::size_t __wrap_fread(void* block, std::size_t size, std::size_t count, std::FILE* stream) {
    const bool refused = fails(test::Read);
    if (refused && monitor.fault != test::Fault::Short) {
        monitor.failed = stream;
        return 0;
    }
    const std::string before(static_cast<const char*>(block), refused ? size * count : 0);
    const off_t start = __real_ftello(stream);
    std::size_t read = __real_fread(block, size, count, stream);
    if (refused) {
        read /= 2;
        before.copy(static_cast<char*>(block) + read * size, before.size(), read * size);
        __real_fseeko(stream, start + static_cast<off_t>(read * size), SEEK_SET);
    }
    monitor.bytesRead += static_cast<std::int64_t>(read * size);
    return read;
}
int __wrap_getc(std::FILE* stream) {
    return fails(test::Read) ? EOF : __real_getc(stream);
}
int __wrap_ferror(std::FILE* stream) {
    return stream == monitor.failed ? 1 : __real_ferror(stream);
}
int __wrap_fseeko(std::FILE* stream, off_t offset, int whence) {
    return fails(test::Seek) ? -1 : __real_fseeko(stream, offset, whence);
}
off_t __wrap_ftello(std::FILE* stream) {
    return fails(test::Tell) ? -1 : __real_ftello(stream);
}
std::size_t __wrap_fwrite(const void* block, std::size_t size, std::size_t count, std::FILE* stream) {
    if (monitor.armed && monitor.sink != nullptr) {
        constexpr std::size_t Small = 1 << 17;
        if (size * count < Small) {
            monitor.sink->append(static_cast<const char*>(block), size * count);
        } else {
            monitor.dropped += size * count;
        }
        return count;
    }
    return fails(test::Write) ? 0 : __real_fwrite(block, size, count, stream);
}
int __wrap_fclose(std::FILE* stream) {
    monitor.streams -= monitor.armed ? 1 : 0;
    const bool refused = fails(test::Close);
    return __real_fclose(stream) == 0 && !refused ? 0 : EOF;
}
int __wrap_open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const int mode = (flags & O_CREAT) != 0 ? va_arg(arguments, int) : 0;
    va_end(arguments);
    const int descriptor = fails(test::Open) ? -1 : __real_open(path, flags, mode);
    monitor.streams += monitor.armed && descriptor >= 0 ? 1 : 0;
    return descriptor;
}
int __wrap_fstat(int descriptor, struct stat* status) {
    return fails(test::Status) ? -1 : __real_fstat(descriptor, status);
}
ssize_t __wrap_pread(int descriptor, void* block, std::size_t count, off_t position) {
    const bool refused = fails(test::Read);
    if (refused && monitor.fault != test::Fault::Short) {
        return -1;
    }
    return __real_pread(descriptor, block, refused ? (count + 1) / 2 : count, position);
}
int __wrap_close(int descriptor) {
    monitor.streams -= monitor.armed ? 1 : 0;
    const bool refused = fails(test::Close);
    return __real_close(descriptor) == 0 && !refused ? 0 : -1;
}
}
