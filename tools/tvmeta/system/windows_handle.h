// Windows file handles.
#pragma once

#include <windows.h>

#include <memory>
#include <string>

struct HandleCloser {
    using pointer = HANDLE;
    void operator()(HANDLE handle) const { CloseHandle(handle); }
};
using Handle = std::unique_ptr<HANDLE, HandleCloser>;

// Opens an existing file or folder, which other programs may go on using. Empty on failure: see GetLastError().
Handle openHandle(const std::string& path, DWORD access);
