#include <chrono>

#include <gtest/gtest.h>

#include "Common/Utils/ISimpleClock.h"
#include "support/Slots.h"
#include "support/WaitUntil.h"

using DAX::Common::Utils::ISimpleClock;
using DAX::Tests::slotOf;
using DAX::Tests::waitUntil;

namespace {

TEST(SimpleClockTest, CountsTheSecondsSinceItWasMade) {
    const auto before = std::chrono::steady_clock::now();
    const std::unique_ptr<ISimpleClock> clock = ISimpleClock::createClock();
    const auto after = std::chrono::steady_clock::now();
    ASSERT_TRUE(
        waitUntil([after] { return std::chrono::steady_clock::now() - after > std::chrono::milliseconds(20); }));

    const std::chrono::duration<float> atLeast = std::chrono::steady_clock::now() - after;
    const float elapsed = clock->getCurrentTime();
    const std::chrono::duration<float> atMost = std::chrono::steady_clock::now() - before;
    EXPECT_GE(elapsed, atLeast.count());
    EXPECT_LE(elapsed, atMost.count());
}

TEST(SimpleClockTest, EachClockHasItsOwnStart) {
    const std::unique_ptr<ISimpleClock> older = ISimpleClock::createClock();
    ASSERT_TRUE(waitUntil([&older] { return older->getCurrentTime() > 0.02f; }));
    const std::unique_ptr<ISimpleClock> newer = ISimpleClock::createClock();
    const float newerTime = newer->getCurrentTime();

    EXPECT_LT(newerTime, older->getCurrentTime());
}

// The destructor comes after it.
TEST(SimpleClockSlots, TheTimeComesFirst) {
    EXPECT_EQ(slotOf(&ISimpleClock::getCurrentTime), 0U);
}

} // namespace
