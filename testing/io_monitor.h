// Counts the calls that the library makes of the C library and the system, and lets one of them fail. The linker wraps
// the calls; they are counted, and can fail, only while a test has armed the monitor.
#pragma once

#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>

namespace test {

enum Kind { Allocation, Open, Read, Seek, Tell, Write, Close, Status, Kinds };

enum class Fault {
    Error,      // nothing is done, errno is EIO
    Short,      // reads: half of the bytes, without an error. Other calls: as Error
    Interrupted // nothing is done, errno is EINTR
};

struct Monitor {
    bool armed = false;
    Kind failing = Kinds;
    Fault fault = Fault::Error;
    long failAt = 0;     // 1: the first call of that kind
    bool onward = false; // all later ones too
    long calls[Kinds] = {};
    bool hit = false;
    std::int64_t bytesRead = 0;
    std::int64_t liveBytes = 0, peakBytes = 0;
    long blocks = 0, streams = 0; // allocated; open, descriptors too
    std::FILE* failed = nullptr;  // the stream of a failed read
    std::function<void(long call)> beforeOpen = [](long) {};
    std::string* sink = nullptr; // receives small writes instead of the file; large ones are counted alone
    std::uint64_t dropped = 0;

    bool fails(Kind kind) {
        if (!armed) {
            return false;
        }
        const long call = ++calls[kind];
        const bool fails_ = kind == failing && (call == failAt || (onward && call > failAt));
        hit = hit || fails_;
        return fails_;
    }
};

extern Monitor monitor;

} // namespace test
