#include "Common/DBUSWrapper/Implementation/CheckTimeout.h"

#include <gtest/gtest.h>

#include "support/FakeKovan.h"

namespace DAX::Tests {
namespace {

using Common::DBUSWrapper::checkTimeout;

class FakeClock : public Common::Utils::ISimpleClock {
public:
    explicit FakeClock(float time) : m_time(time) {}
    float getCurrentTime() override { return m_time; }

private:
    float m_time;
};

class CheckTimeoutTest : public testing::Test {
protected:
    bool check(float now, int interval, Common::Utils::SoftWatchdog* guard = nullptr) {
        FakeClock clock(now);
        return checkTimeout(m_last, interval, m_function, clock, guard);
    }

    float m_last = 100;
    int m_calls = 0;
    boost::optional<std::function<void()>> m_function = std::function<void()>([this] { ++m_calls; });
};

TEST_F(CheckTimeoutTest, DoesNothingBeforeTheIntervalHasPassed) {
    EXPECT_FALSE(check(109.5F, 10));
    EXPECT_EQ(m_calls, 0);
    EXPECT_EQ(m_last, 100);
}

TEST_F(CheckTimeoutTest, CallsTheFunctionWhenTheIntervalHasJustPassed) {
    EXPECT_TRUE(check(110, 10));
    EXPECT_EQ(m_calls, 1);
    EXPECT_EQ(m_last, 110);
}

TEST_F(CheckTimeoutTest, CountsTheNextIntervalFromTheCallAndNotFromItsDueTime) {
    check(125, 10);
    EXPECT_FALSE(check(134, 10));
    EXPECT_TRUE(check(135, 10));
    EXPECT_EQ(m_calls, 2);
}

TEST_F(CheckTimeoutTest, CallsEveryTimeWithAnIntervalOfZero) {
    EXPECT_TRUE(check(100, 0));
    EXPECT_TRUE(check(100, 0));
    EXPECT_EQ(m_calls, 2);
}

TEST_F(CheckTimeoutTest, NeedsNoFunction) {
    m_function = boost::none;
    EXPECT_TRUE(check(110, 10));
    EXPECT_EQ(m_last, 110);
}

TEST_F(CheckTimeoutTest, CallsTheFunctionUnderTheGuard) {
    Common::Utils::SoftWatchdog guard("Guard", 0, 0);
    m_function = std::function<void()>(
        [this] { m_calls += FakeKovan::waitForMessage("FTL", "SoftWatchdog 'Guard' could kill") ? 1 : 0; });
    EXPECT_TRUE(check(110, 10, &guard));
    EXPECT_EQ(m_calls, 1);
    guard.arm(); // an armed guard would refuse
    guard.disarm();
}

TEST_F(CheckTimeoutTest, LeavesTheGuardAloneBeforeTheTime) {
    Common::Utils::SoftWatchdog guard("Guard", 0, 0);
    EXPECT_FALSE(check(105, 10, &guard));
    EXPECT_EQ(FakeKovan::countContaining("FTL", "SoftWatchdog 'Guard' could kill"), 0);
}

} // namespace
} // namespace DAX::Tests
