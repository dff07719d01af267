#include "monitor/JsonView.h"

#include <sstream>

#include <gtest/gtest.h>

namespace DAX::Tests {
namespace {

TEST(JsonView, WritesTimesInUtcWithMicroseconds) {
    EXPECT_EQ(monitor::isoTime(1700000000000001), "2023-11-14T22:13:20.000001Z");
    EXPECT_EQ(monitor::isoTime(0), "1970-01-01T00:00:00.000000Z");
}

// A capture can have any time.
TEST(JsonView, WritesTimesBefore1970InTheSameForm) {
    EXPECT_EQ(monitor::isoTime(-1), "1969-12-31T23:59:59.999999Z");
    EXPECT_EQ(monitor::isoTime(-1000000), "1969-12-31T23:59:59.000000Z");
}

TEST(JsonView, ShowsNoLetterThatATerminalObeys) {
    std::ostringstream out;
    monitor::JsonView(out).onNote({0, "\u202e\xc2\x9b"});
    EXPECT_EQ(out.str(), R"({"time":"1970-01-01T00:00:00.000000Z","event":"note","text":"\u202e\u009b"})"
                         "\n");
}

} // namespace
} // namespace DAX::Tests
