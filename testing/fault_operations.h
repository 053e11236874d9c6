// Fault injection: one call of the library, prepared before the monitor is armed and checked afterwards.
#pragma once

#include "testing/io_monitor.h"

#include <cstdint>
#include <functional>
#include <map>
#include <vector>

namespace test {

inline constexpr std::int32_t Success = INT32_MIN; // in the list of an operation's results

using Results = std::vector<std::int32_t>;

struct Operation {
    const char* name;
    std::function<void()> prepare;
    std::function<std::int32_t()> call;
    std::function<bool(std::int32_t result)> whole; // is this success complete?
    // Per kind of call: the result when the first, second, ... call fails. The last result also applies to all later
    // calls. The function makes no call of a kind that is missing.
    std::map<Kind, Results> results;
    Results shortReads = {};                            // when a read returns less than the file has
    std::function<bool()> intact = [] { return true; }; // did a failure leave the file as documented?

    std::int32_t runWithout(Kind kind, Fault fault, long failAt, bool onward) const;

    // Fails each call of a kind. Expects the documented results, and nothing allocated or open afterwards.
    void failEachCall(Kind kind, Fault fault, bool onward) const;

    // Fails each call of each kind, reads also by returning less.
    void failEverything() const;

  private:
    bool expects(std::int32_t result, Kind kind, long number, bool onward) const;
};

// Whether a result is `expected`.
inline std::function<bool(std::int32_t)> is(std::int32_t expected) {
    return [expected](std::int32_t result) { return result == expected; };
}

} // namespace test
