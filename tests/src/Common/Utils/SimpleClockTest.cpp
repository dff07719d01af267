#include <gtest/gtest.h>

#include "Common/Utils/ISimpleClock.h"
#include "support/Slots.h"
#include "support/TestClock.h"

using DAX::Common::Utils::ISimpleClock;
using DAX::Tests::slotOf;
using DAX::Tests::TestClock;

using namespace std::chrono_literals;

namespace {

TEST(SimpleClockTest, CountsTheSecondsSinceItWasMade) {
    TestClock time;
    const std::unique_ptr<ISimpleClock> clock = ISimpleClock::createClock();
    EXPECT_EQ(clock->getCurrentTime(), 0.0f);
    time.pass(1500ms);

    EXPECT_EQ(clock->getCurrentTime(), 1.5f);
}

TEST(SimpleClockTest, EachClockHasItsOwnStart) {
    TestClock time;
    const std::unique_ptr<ISimpleClock> older = ISimpleClock::createClock();
    time.pass(2s);
    const std::unique_ptr<ISimpleClock> newer = ISimpleClock::createClock();
    time.pass(3s);

    EXPECT_EQ(older->getCurrentTime(), 5.0f);
    EXPECT_EQ(newer->getCurrentTime(), 3.0f);
}

// The destructor comes after it.
TEST(SimpleClockSlots, TheTimeComesFirst) {
    EXPECT_EQ(slotOf(&ISimpleClock::getCurrentTime), 0U);
}

} // namespace
