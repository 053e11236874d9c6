#include "testing/fault_operations.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace test {

std::int32_t Operation::runWithout(Kind kind, Fault fault, long failAt, bool onward) const {
    prepare();
    monitor = {};
    monitor.failing = kind;
    monitor.fault = fault;
    monitor.failAt = failAt;
    monitor.onward = onward;
    testing::internal::CaptureStderr();
    monitor.armed = true;
    const std::int32_t result = call();
    monitor.armed = false;
    testing::internal::GetCapturedStderr();
    return result;
}

// Is this the documented result? With persistent faults, a later call may fail in place of a success.
bool Operation::expects(std::int32_t result, Kind kind, long number, bool onward) const {
    if (monitor.fault == Fault::Short) {
        const auto isKnown = [&](std::int32_t known) { return known == Success ? whole(result) : known == result; };
        return std::ranges::any_of(shortReads, isKnown);
    }
    if (monitor.fault == Fault::Interrupted) {
        return whole(result);
    }
    const auto found = results.find(kind);
    if (found == results.end()) {
        return false;
    }
    const Results& known = found->second;
    const std::int32_t expected = known[std::min(static_cast<std::size_t>(number), known.size()) - 1];
    if (expected == result || (onward && std::ranges::count(known, result) > 0)) {
        return intact();
    }
    return expected == Success && whole(result);
}

void Operation::failEachCall(Kind kind, Fault fault, bool onward) const {
    for (long number = 1;; ++number) {
        const std::int32_t result = runWithout(kind, fault, number, onward);
        EXPECT_TRUE(monitor.hit ? expects(result, kind, number, onward) : whole(result))
            << name << " kind " << kind << " fault " << static_cast<int>(fault) << " call " << number << ": " << result;
        EXPECT_EQ(monitor.blocks, 0) << name << " kind " << kind << " call " << number;
        EXPECT_EQ(monitor.streams, 0) << name << " kind " << kind << " call " << number;
        if (!monitor.hit) {
            EXPECT_TRUE(fault != Fault::Error || (number > 1) == results.contains(kind)) << name << " kind " << kind;
            return;
        }
    }
}

void Operation::failEverything() const {
    for (const bool onward : {false, true}) {
        for (int kind = 0; kind < Kinds; ++kind) {
            failEachCall(static_cast<Kind>(kind), Fault::Error, onward);
        }
        failEachCall(Read, Fault::Short, onward);
    }
}

} // namespace test
