#pragma once

#include <string>

#include <gtest/gtest.h>

#include "support/AllocationMeter.h"

namespace DAX::Tests {

// Runs `reading` of a message and expects that no single allocation is larger than the message explains: streams and
// strings double as they grow.
template <class Reading>
auto withBoundedMemory(const std::string& message, Reading reading) {
    const AllocationMeter meter;
    auto result = reading();
    EXPECT_LE(meter.largest(), 64 * 1024 + 4 * message.size());
    return result;
}

// A message for a failure report: its first bytes, with unprintable ones in octal.
inline std::string shown(const std::string& message) {
    return testing::PrintToString(message.substr(0, 200));
}

} // namespace DAX::Tests
