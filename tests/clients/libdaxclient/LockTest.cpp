// To which service a lock belongs.
#include <algorithm>
#include <csignal>
#include <future>
#include <iterator>

#include <dax/client.h>
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/Flood.h"
#include "support/PlayedService.h"
#include "support/PrivateBus.h"
#include "support/WaitUntil.h"

namespace DAX::Tests {
namespace {

using namespace testing;
using Reason = dax::Unreachable::Reason;

class LockTest : public Test {
protected:
    // Asks for the lock on another thread, while the test plays the service.
    std::future<dax::Lock> begin() {
        return std::async(std::launch::async, [this] { return client.lock(dax::Priority(4)); });
    }

    // Why the lock is not given.
    Reason reasonOf(std::future<dax::Lock> lock) {
        try {
            lock.get();
        } catch (const dax::Unreachable& failure) {
            return failure.reason();
        }
        throw std::runtime_error("the lock is given");
    }

    PrivateBus bus;
    dax::Client client{"locker"};
};

TEST_F(LockTest, TimesOutWhileTheServiceStarts) {
    bus.addService("org.kovan.tv.dax.service.servicemanager", "/bin/sleep 3");
    dax::Options options;
    options.callTimeout = std::chrono::milliseconds(300);
    dax::Client impatient("impatient", options);
    EXPECT_EQ(reasonOf(std::async(std::launch::async, [&] { return impatient.lock(dax::Priority(4)); })),
              Reason::TIMED_OUT);
}

TEST_F(LockTest, IsGivenUpInTimeOnABusThatStandsStill) {
    PlayedService daemon;
    dax::Options options;
    options.callTimeout = std::chrono::milliseconds(300);
    dax::Client impatient("impatient", options);
    auto future = std::async(std::launch::async, [&] { return impatient.lock(dax::Priority(4)); });
    daemon.giveLock(5);
    dax::Lock lock = future.get();
    ASSERT_EQ(::kill(bus.pid(), SIGSTOP), 0);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_THROW(lock.release(), dax::Unreachable);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10)); // libdbus would wait for 25
    ::kill(bus.pid(), SIGCONT);
}

TEST_F(LockTest, IsNotReleasedByAChildProcessThatEnds) {
    PlayedService daemon;
    auto future = begin();
    daemon.giveLock(5);
    dax::Lock lock = future.get();
    const pid_t child = fork();
    if (child == 0) {
        ::alarm(10); // a release would wait for an answer
        { const dax::Lock itsOwn = std::move(lock); }
        ::_exit(0);
    }
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    auto released = std::async(std::launch::async, [&lock] { return lock.release(); });
    daemon.answer(*daemon.next("releaseExternalLock"), "");
    EXPECT_TRUE(released.get());
}

TEST_F(LockTest, IsAskedForAndReleasedByTheUniqueNameOfTheService) {
    PlayedService daemon;
    auto future = begin();
    const RawMessage acquire = daemon.next("acquireExternalLock");
    EXPECT_EQ(dbus_message_get_destination(acquire.get()), daemon.name());
    daemon.answer(*acquire, encode(5U));
    dax::Lock lock = future.get();
    EXPECT_EQ(lock.id(), 5U);
    EXPECT_FALSE(lock.isLost());
    auto released = std::async(std::launch::async, [&lock] { return lock.release(); });
    const RawMessage release = daemon.next("releaseExternalLock");
    EXPECT_EQ(dbus_message_get_destination(release.get()), daemon.name());
    daemon.answer(*release, "");
    EXPECT_TRUE(released.get());
    EXPECT_TRUE(lock.release()) << "a second call asks again";
    daemon.leave();
    EXPECT_FALSE(lock.isLost());
}

TEST_F(LockTest, BelongsToTheNextServiceWhenOneLeavesBeforeItAnswers) {
    PlayedService first;
    PlayedService second;
    auto future = begin();
    first.next("acquireExternalLock");
    first.leave();
    second.giveLock(6);
    dax::Lock lock = future.get();
    EXPECT_EQ(lock.id(), 6U);
    EXPECT_FALSE(lock.isLost());
    second.leave();
    EXPECT_TRUE(waitUntil([&lock] { return lock.isLost(); }));
    EXPECT_FALSE(lock.release());
}

TEST_F(LockTest, IsNotReleasedAtAServiceThatTookTheNameOver) {
    PlayedService first;
    auto future = begin();
    first.giveLock(1);
    dax::Lock lock = future.get();
    PlayedService second;
    first.leave();
    EXPECT_FALSE(lock.release());
    auto next = begin(); // makes the first call that the second service gets
    second.giveLock(2);
    auto released = std::async(std::launch::async, [&next] { next.get(); });
    second.answer(*second.next("releaseExternalLock"), "");
    released.get();
}

TEST_F(LockTest, IsOfTheNextServiceWhenOneRefusesItWithoutItsName) {
    PlayedService first;
    PlayedService second;
    auto future = begin();
    const RawMessage acquire = first.next("acquireExternalLock");
    first.giveNameBack();
    first.refuse(*acquire);
    second.giveLock(7);
    dax::Lock lock = future.get();
    EXPECT_EQ(lock.detach(), 7U);
}

TEST_F(LockTest, IsAskedForOnceOfAServiceThatRefusesItUnderItsName) {
    PlayedService daemon;
    auto future = begin();
    daemon.refuse(*daemon.next("acquireExternalLock"));
    EXPECT_EQ(reasonOf(std::move(future)), Reason::NOT_ALLOWED);
}

TEST_F(LockTest, IsAskedForOfSixServicesThatLeaveAndOfNoMore) {
    std::vector<PlayedService> daemons(6);
    auto future = begin();
    for (PlayedService& daemon : daemons) {
        daemon.next("acquireExternalLock");
        daemon.leave();
    }
    EXPECT_EQ(reasonOf(std::move(future)), Reason::NO_SERVICE);
}

TEST_F(LockTest, CannotBeAcquiredWithoutAService) {
    EXPECT_EQ(reasonOf(begin()), Reason::NO_SERVICE);
}

TEST_F(LockTest, IsGivenUpWhenItCannotBeReleased) {
    PlayedService daemon;
    auto future = begin();
    daemon.giveLock(1);
    dax::Lock lock = future.get();
    auto released = std::async(std::launch::async, [&lock] { return lock.release(); });
    daemon.refuse(*daemon.next("releaseExternalLock"));
    EXPECT_THROW(released.get(), dax::Unreachable);
    EXPECT_FALSE(lock.release()) << "nobody has released it";
    EXPECT_FALSE(lock.isLost());
}

TEST_F(LockTest, IsNotReleasedWhenItIsDetached) {
    PlayedService daemon;
    auto future = begin();
    daemon.giveLock(8);
    dax::Lock lock = future.get();
    EXPECT_EQ(lock.detach(), 8U);
    EXPECT_FALSE(lock.release()) << "the lock is in force";
    EXPECT_EQ(lock.detach(), 8U);
    EXPECT_FALSE(lock.isLost());
}

TEST_F(LockTest, StaysReleasedWhenItIsDetachedAfterwards) {
    PlayedService daemon;
    auto future = begin();
    daemon.giveLock(8);
    dax::Lock lock = future.get();
    auto released = std::async(std::launch::async, [&lock] { return lock.release(); });
    daemon.answer(*daemon.next("releaseExternalLock"), "");
    EXPECT_TRUE(released.get());
    lock.detach();
    EXPECT_TRUE(lock.release());
}

TEST_F(LockTest, IsLostWithTheBus) {
    PlayedService daemon;
    auto future = begin();
    daemon.giveLock(1);
    dax::Lock lock = future.get();
    bus.stop();
    EXPECT_TRUE(waitUntil([&lock] { return lock.isLost(); }));
}

// All connections of the bus but these.
std::vector<std::string> othersThan(const std::vector<std::string>& own, RawPeer& asker) {
    const RawMessage call(
        dbus_message_new_method_call(DBUS_SERVICE_DBUS, DBUS_PATH_DBUS, DBUS_INTERFACE_DBUS, "ListNames"));
    const RawMessage answer = asker.call(*call);
    char** names = nullptr;
    int count = 0;
    dbus_message_get_args(answer.get(), nullptr, DBUS_TYPE_ARRAY, DBUS_TYPE_STRING, &names, &count, DBUS_TYPE_INVALID);
    std::vector<std::string> others;
    std::copy_if(names, names + count, std::back_inserter(others), [&own](const std::string& name) {
        return name.front() == ':' && std::find(own.begin(), own.end(), name) == own.end();
    });
    dbus_free_string_array(names);
    return others;
}

TEST(LockOnASmallBus, IsSeenToBeLostThoughOthersFillItsConnections) {
    const PrivateBus bus(SystemBusRules::ofDevice({{"max_outgoing_bytes", 1000000}}));
    PlayedService daemon;
    dax::Client client("locker");
    auto future = std::async(std::launch::async, [&client] { return client.lock(dax::Priority(4)); });
    daemon.giveLock(5);
    dax::Lock lock = future.get();
    RawPeer other;
    for (const std::string& connection : othersThan({daemon.name(), other.name()}, other)) {
        for (int i = 0; i < 100; ++i) {
            other.send(*signalTo(connection, 100000));
        }
    }
    EXPECT_FALSE(lock.isLost());
    daemon.leave();
    EXPECT_TRUE(waitUntil([&lock] { return lock.isLost(); }));
    EXPECT_FALSE(lock.release());
}

} // namespace
} // namespace DAX::Tests
