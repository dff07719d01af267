#include "monitor/Latencies.h"

#include <gtest/gtest.h>

namespace DAX::Tests {
namespace {

using monitor::Latencies;

TEST(Latencies, HaveNoMedianAtFirst) {
    EXPECT_EQ(Latencies().median(), 0);
    EXPECT_EQ(Latencies().worst(), 0);
    EXPECT_EQ(Latencies().count(), 0U);
}

TEST(Latencies, TellTheMedianOfShortTimesExactly) {
    Latencies latencies;
    for (int time = 1; time <= 63; ++time) {
        latencies.add(time);
    }
    EXPECT_EQ(latencies.median(), 32);
    EXPECT_EQ(latencies.worst(), 63);
}

TEST(Latencies, TellTheMedianOfAnyTimeToOnePartIn32) {
    for (std::int64_t time = 1; time < std::int64_t(1) << 40; time = time * 5 / 4 + 1) {
        Latencies latencies;
        latencies.add(0);
        latencies.add(time);
        latencies.add(time * 1000);
        EXPECT_NEAR(static_cast<double>(latencies.median()), static_cast<double>(time),
                    static_cast<double>(time) / 32 + 1);
        EXPECT_EQ(latencies.worst(), time * 1000);
    }
}

TEST(Latencies, TakeTimesBeforeTheCallForNone) {
    Latencies latencies;
    latencies.add(-5);
    EXPECT_EQ(latencies.median(), 0);
    EXPECT_EQ(latencies.count(), 1U);
}

TEST(Latencies, TakeTheLongestTime) {
    Latencies latencies;
    latencies.add(INT64_MAX);
    EXPECT_EQ(latencies.worst(), INT64_MAX);
    EXPECT_GT(latencies.median(), INT64_MAX / 64 * 63);
}

} // namespace
} // namespace DAX::Tests
