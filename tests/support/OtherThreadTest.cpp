#include "support/OtherThread.h"

#include <mutex>
#include <stdexcept>

#include <gtest/gtest.h>

#include "support/Event.h"

using namespace DAX::Tests;

namespace {

TEST(OtherThreadTest, SeesThatACallWaitsForALock) {
    std::mutex mutex;
    std::unique_lock<std::mutex> held(mutex);
    OtherThread other([&mutex] { const std::lock_guard<std::mutex> lock(mutex); });

    EXPECT_TRUE(other.waitUntilItWaits());

    held.unlock();
    other.finish();
}

TEST(OtherThreadTest, SeesThatACallWaitsForAnEvent) {
    Event event;
    OtherThread other([&event] { EXPECT_TRUE(event.wait()); });

    EXPECT_TRUE(other.waitUntilItWaits());

    event.happen();
}

TEST(OtherThreadTest, SeesThatACallDoesNotWaitAnyMore) {
    const OtherThread other([] {});

    EXPECT_FALSE(other.waitUntilItWaits());
}

TEST(OtherThreadTest, ThrowsWhatTheCallThrew) {
    OtherThread other([] { throw std::runtime_error("broken"); });

    EXPECT_THROW(other.finish(), std::runtime_error);
}

} // namespace
