#include "support/message.h"

#include <cstdio>

#ifdef _WIN32
#include <cstring>
#include <initializer_list>
#include <io.h>
#include <windows.h>
#endif

namespace tvmeta {

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
#else
void printMessage(const char* text, const char* path) {
    std::fprintf(stderr, "%s%s\n", text, path);
}
#endif

} // namespace tvmeta
