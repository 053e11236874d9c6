// System functions for tests, portable. A test that the platform does not support is skipped with a reason.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <filesystem>

#ifndef _WIN32
#include <csignal>
#include <sys/resource.h>
#endif

namespace test {

inline void setEnvironment(const char* name, const char* value) {
#ifdef _WIN32
    _putenv_s(name, value);
    _tzset(); // once changed, the time zone is asked for
#else
    setenv(name, value, 1);
#endif
}

// Differences of Windows.
#ifdef _WIN32
inline constexpr bool OpensDirectories = false;
inline constexpr bool HasTimeZoneRules = false; // TZ names an offset alone
#else
inline constexpr bool OpensDirectories = true;
inline constexpr bool HasTimeZoneRules = true;
#endif

// A device that is always full (Linux only).
inline constexpr const char* FullDevice = "/dev/full";
inline bool hasFullDevice() {
    return std::filesystem::exists(FullDevice);
}

// While it exists, writes past a file position fail as on a full disk.
class FileSizeLimit {
  public:
#ifdef _WIN32
    static constexpr bool IsSupported = false;
    explicit FileSizeLimit(std::uint64_t /*bytes*/) {}
#else
    static constexpr bool IsSupported = true;
    explicit FileSizeLimit(std::uint64_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit = {static_cast<rlim_t>(bytes), before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

  private:
    void (*handler_)(int);
    rlimit before_ = {};
#endif
};

} // namespace test
