#include "Platform/SystemAPI/TimerUtilsSystemAPI/ITimeUtil.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/FakeKovan.h"

namespace DAX {
namespace Tests {
namespace {

TEST(TimeUtil, GivesAndLogsTheDevicesLocalTime) {
    FakeKovan::setLocalTime(5000000000);
    FakeKovan::setSecondsAheadOfUTC(3600);
    EXPECT_EQ(Platform::ITimeUtil::getCurrentLocalTime(), 5000000000U);
    EXPECT_THAT(FakeKovan::journal(), ::testing::ElementsAre("log INF Current local time and date: 5000000000"));
}

} // namespace
} // namespace Tests
} // namespace DAX
