#pragma once

#include <string>

#include <gtest/gtest.h>

#include "support/AllocationMeter.h"

namespace DAX::Tests {

// Runs `reading` of a message, which takes no larger piece of memory than the message explains: streams and strings
// double as they grow.
template <class Reading>
auto withBoundedMemory(const std::string& message, Reading reading) {
    const AllocationMeter meter;
    auto result = reading();
    EXPECT_LE(meter.largest(), 64 * 1024 + 4 * message.size());
    return result;
}

// A message as a failure report shows it: its first bytes, those that cannot be printed in octal.
inline std::string shown(const std::string& message) {
    return testing::PrintToString(message.substr(0, 200));
}

} // namespace DAX::Tests
