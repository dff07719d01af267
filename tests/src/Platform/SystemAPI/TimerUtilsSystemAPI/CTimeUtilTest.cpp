#include <boost/date_time/posix_time/time_formatters.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Platform/SystemAPI/TimerUtilsSystemAPI/ITimeUtil.h"
#include "Platform/SystemAPI/TimerUtilsSystemAPI/TimeConversions.h"
#include "support/FakeKovan.h"

namespace DAX::Tests {
namespace {

using Platform::ITimeUtil;
using Platform::TimeConversions::uint64_t_to_ptime;
using testing::ElementsAre;

TEST(TimeUtil, GivesAndLogsTheDevicesLocalTime) {
    FakeKovan::setLocalTime(5000000000);
    FakeKovan::setSecondsAheadOfUTC(3600);
    EXPECT_EQ(ITimeUtil::getCurrentLocalTime(), 5000000000U);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Current local time and date: 5000000000"));
}

TEST(TimeUtil, WritesTheLocalTimeWithoutAZone) {
    FakeKovan::setLocalTime(1763708950);
    EXPECT_EQ(ITimeUtil::getCurrentLocalTimeToString(), "2025-11-21T07:09:10");
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Current local time and date: 1763708950"));
}

TEST(TimeUtil, WritesATimeAfterTheYear2038) {
    FakeKovan::setLocalTime(5000000000);
    EXPECT_EQ(ITimeUtil::getCurrentLocalTimeToString(), "2128-06-11T08:53:20");
}

TEST(TimeUtil, GivesUTCAndLogsBothTimes) {
    FakeKovan::setLocalTime(1763708950);
    FakeKovan::setSecondsAheadOfUTC(-5400);
    EXPECT_EQ(ITimeUtil::getCurrentTime(), 1763714350U);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Current local time and date [uint64_t]: 1763708950",
                                                  "log INF Current local date and time: 2025-11-21 07:09:10",
                                                  "log INF Current UTC time and date [uint64_t]: 1763714350",
                                                  "log INF Current UTC date and time: 2025-11-21 08:39:10"));
}

TEST(TimeUtil, RefusesAYearAfter9999) {
    FakeKovan::setLocalTime(UINT64_MAX);
    EXPECT_THROW(ITimeUtil::getCurrentLocalTimeToString(), std::out_of_range);
    EXPECT_EQ(ITimeUtil::getCurrentLocalTime(), UINT64_MAX);
}

TEST(TimeConversions, KnowTheFirstAndTheLastSecond) {
    EXPECT_EQ(to_iso_string(uint64_t_to_ptime(0)), "19700101T000000");
    EXPECT_EQ(to_iso_string(uint64_t_to_ptime(253402300799)), "99991231T235959");
    EXPECT_THROW(uint64_t_to_ptime(253402300800), std::out_of_range);
}

} // namespace
} // namespace DAX::Tests
