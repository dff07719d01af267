// What a person is told of a lock. To which daemon it belongs is the library's, and tested there.
#include "daxctl/HeldLock.h"

#include <future>
#include <memory>

#include <gmock/gmock.h>

#include "clients/daxctl/StandardError.h"
#include "support/PlayedService.h"
#include "support/PrivateBus.h"

namespace DAX::Tests {
namespace {

using namespace testing;
using daxctl::HeldLock;

class HeldLockTest : public Test {
protected:
    // Asks for the lock on another thread, while the test plays the daemon.
    std::unique_ptr<HeldLock> acquire(unsigned int id) {
        auto lock = std::async(std::launch::async,
                               [this] { return std::make_unique<HeldLock>(client.lock(dax::Priority(4))); });
        daemon.giveLock(id);
        return lock.get();
    }

    PrivateBus bus;
    PlayedService daemon;
    dax::Client client{"daxctl"};
};

TEST_F(HeldLockTest, IsReleasedOnceAndSilently) {
    StandardError errors(StandardError::Kind::PIPE);
    const auto lock = acquire(5);
    EXPECT_EQ(lock->id(), 5U);
    auto released = std::async(std::launch::async, [&lock] { return lock->release(); });
    daemon.answer(*daemon.next("releaseExternalLock"), "");
    EXPECT_TRUE(released.get());
    EXPECT_TRUE(lock->release());
    daemon.leave();
    lock->noticeLoss();
    EXPECT_FALSE(lock->isLost());
    EXPECT_EQ(errors.text(), "");
}

TEST_F(HeldLockTest, SaysOnceThatItIsLost) {
    StandardError errors(StandardError::Kind::PIPE);
    const auto lock = acquire(6);
    lock->noticeLoss();
    EXPECT_FALSE(lock->isLost());
    daemon.leave();
    EXPECT_TRUE(waitUntil([&lock] {
        lock->noticeLoss();
        return lock->isLost();
    }));
    lock->noticeLoss();
    EXPECT_FALSE(lock->release());
    EXPECT_EQ(errors.text(), "The lock 6 is lost: the daemon that gave it has left the bus.\n");
}

TEST_F(HeldLockTest, SaysAtTheReleaseThatItWasLost) {
    StandardError errors(StandardError::Kind::PIPE);
    const auto lock = acquire(1);
    daemon.leave();
    EXPECT_FALSE(lock->release());
    EXPECT_TRUE(lock->isLost());
    EXPECT_EQ(errors.text(), "The lock 1 is lost: the daemon that gave it has left the bus.\n");
}

TEST_F(HeldLockTest, SaysWhyItCannotBeReleased) {
    StandardError errors(StandardError::Kind::PIPE);
    const auto lock = acquire(1);
    auto released = std::async(std::launch::async, [&lock] { return lock->release(); });
    daemon.refuse(*daemon.next("releaseExternalLock"));
    EXPECT_FALSE(released.get());
    EXPECT_FALSE(lock->release());
    EXPECT_EQ(errors.text(),
              "The lock 1 could not be released: You may not use the update service: be root or a member of dax\n");
}

} // namespace
} // namespace DAX::Tests
