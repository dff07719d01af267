#include "Common/Utils/SoftWatchdog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/ProcessDeath.h"
#include "support/TestClock.h"
#include "support/WaitUntil.h"

using DAX::Common::Utils::SoftWatchdog;
using DAX::Tests::begunUntimedWaits;
using DAX::Tests::TestClock;
using DAX::Tests::waitUntil;
using testing::ElementsAre;
using testing::IsEmpty;

using namespace std::chrono_literals;

namespace {

const int AN_HOUR = 3600;
const char* const EXPIRED = "could kill the process";

TEST(SoftWatchdogTest, LogsItsTimesWhenItIsMade) {
    const SoftWatchdog watchdog("bus", 3, 10);

    EXPECT_EQ(FakeKovan::count("INF", "SoftWatchdog 'bus' created. Warn after: 3, Kill after: 10."), 1);
}

TEST(SoftWatchdogTest, TakesAWarnTimeAsLongAsTheKillTime) {
    const SoftWatchdog watchdog("bus", 10, 10);

    EXPECT_EQ(FakeKovan::countContaining("INF", "created. Warn after: 10, Kill after: 10."), 1);
}

TEST(SoftWatchdogTest, FailsAnAssertionForAWarnTimeBeyondTheKillTime) {
    EXPECT_ASSERTION(SoftWatchdog("bus", 11, 10), "m_warnAfterSeconds <= m_killAfterSeconds");
}

TEST(SoftWatchdogTest, LogsNothingForWorkThatEndsInTime) {
    {
        SoftWatchdog watchdog("bus", 0, AN_HOUR);
        ASSERT_TRUE(FakeKovan::waitForMessage("INF", "Changed name"));
        FakeKovan::reset();
        watchdog.arm();
        watchdog.disarm();
    }
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
}

TEST(SoftWatchdogTest, LogsNothingWhenItIsDisarmedAMomentBeforeItsDeadline) {
    TestClock clock;
    SoftWatchdog watchdog("bus", 0, 1);
    watchdog.arm();
    clock.pass(999ms);
    ASSERT_TRUE(clock.isAwaited());
    const int rests = begunUntimedWaits();
    watchdog.disarm();
    clock.pass(1s);

    ASSERT_TRUE(waitUntil([rests] { return begunUntimedWaits() > rests; })) << "its thread still has something to do";
    EXPECT_THAT(FakeKovan::messages("FTL"), IsEmpty());
}

TEST(SoftWatchdogTest, LogsExactlyOneLineForWorkThatOutlivesTheLimitAndNoWarningAtAnyTime) {
    {
        TestClock clock;
        SoftWatchdog watchdog("bus", 0, 1);
        ASSERT_TRUE(FakeKovan::waitForMessage("INF", "Changed name"));
        FakeKovan::reset();
        watchdog.arm();
        clock.pass(1500ms);
        ASSERT_TRUE(FakeKovan::waitForMessage("FTL", EXPIRED));
        watchdog.disarm();
    }
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log FTL SoftWatchdog 'bus' could kill the process after 1 seconds. "
                                                  "Exactly after 1.500000 seconds, but do not do this"));
}

TEST(SoftWatchdogTest, StaysArmedWhenItExpires) {
    SoftWatchdog watchdog("bus", 0, 0);
    watchdog.arm();
    ASSERT_TRUE(FakeKovan::waitForMessage("FTL", EXPIRED));
    FakeKovan::reset();

    EXPECT_NO_THROW(watchdog.disarm());
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
}

TEST(SoftWatchdogTest, FiresOncePerArming) {
    {
        SoftWatchdog watchdog("bus", 0, 0);
        for (int armings = 0; armings < 3; ++armings) {
            FakeKovan::reset();
            watchdog.arm();
            ASSERT_TRUE(FakeKovan::waitForMessage("FTL", EXPIRED));
            watchdog.disarm();
            EXPECT_EQ(FakeKovan::countContaining("FTL", EXPIRED), 1);
        }
    }
    EXPECT_EQ(FakeKovan::countContaining("FTL", EXPIRED), 1);
}

TEST(SoftWatchdogTest, MayBeDisarmedBeforeALimitOfZeroSecondsFires) {
    const int armings = 100;
    {
        SoftWatchdog watchdog("bus", 0, 0);
        ASSERT_TRUE(FakeKovan::waitForMessage("INF", "Changed name"));
        for (int i = 0; i < armings; ++i) {
            watchdog.arm();
            watchdog.disarm();
        }
        FakeKovan::note("all disarmed");
    }
    EXPECT_LE(FakeKovan::countContaining("FTL", EXPIRED), armings);
    EXPECT_EQ(FakeKovan::journal().back(), "all disarmed") << "nothing fires later";
}

TEST(SoftWatchdogTest, FailsAnAssertionWhenItIsArmedTwice) {
    EXPECT_ASSERTION(
        {
            SoftWatchdog watchdog("bus", 0, AN_HOUR);
            watchdog.arm();
            watchdog.arm();
        },
        "!m_armed");
}

TEST(SoftWatchdogTest, FailsAnAssertionWhenItIsArmedAgainAfterItExpired) {
    EXPECT_ASSERTION(
        {
            SoftWatchdog watchdog("bus", 0, 0);
            watchdog.arm();
            FakeKovan::waitForMessage("FTL", EXPIRED);
            watchdog.arm();
        },
        "!m_armed");
}

TEST(SoftWatchdogTest, FailsAnAssertionWhenItIsDisarmedWithoutArming) {
    EXPECT_ASSERTION(SoftWatchdog("bus", 0, AN_HOUR).disarm(), "m_armed");
}

TEST(SoftWatchdogTest, FailsAnAssertionWhenItIsDisarmedTwice) {
    EXPECT_ASSERTION(
        {
            SoftWatchdog watchdog("bus", 0, AN_HOUR);
            watchdog.arm();
            watchdog.disarm();
            watchdog.disarm();
        },
        "m_armed");
}

TEST(SoftWatchdogTest, LogsThatItIsStillArmedWhenDestroyedAndDoesNotFire) {
    {
        TestClock clock;
        SoftWatchdog watchdog("bus", 3, AN_HOUR);
        ASSERT_TRUE(FakeKovan::waitForMessage("INF", "Changed name"));
        FakeKovan::reset();
        watchdog.arm();
        clock.pass(250ms);
    }
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF SoftWatchdog 'bus' destroyed after 0.250000 seconds. It's "
                                                  "armed. Warn after: 3, Kill after: 3600."));
}

} // namespace
