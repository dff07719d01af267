// To which service a lock belongs.
#include <algorithm>
#include <csignal>
#include <future>
#include <iterator>

#include <dax/client.h>
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Steps.h"
#include "support/Flood.h"
#include "support/PlayedService.h"
#include "support/PrivateBus.h"
#include "support/WaitUntil.h"

namespace DAX::Tests {
namespace {

using namespace testing;
using Reason = dax::Unreachable::Reason;

// Asks for the lock on another thread, while the test plays the service.
std::future<dax::Lock> beginLock(dax::Client& client) {
    return std::async(std::launch::async, [&client] { return client.lock(dax::Priority(4)); });
}

// The lock that the service gives.
dax::Lock acquireLock(dax::Client& client, PlayedService& service, unsigned int id) {
    auto lock = beginLock(client);
    service.giveLock(id);
    return lock.get();
}

// What the release returns that the service grants.
bool releaseLock(dax::Lock& lock, PlayedService& service) {
    auto released = std::async(std::launch::async, [&lock] { return lock.release(); });
    service.answer(*service.next("releaseExternalLock"), "");
    return released.get();
}

class LockTest : public Test {
protected:
    // Why the lock is not given.
    static Reason reasonOf(std::future<dax::Lock> lock) {
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
    dax::Client impatient = inTime([&options] { return dax::Client("impatient", options); });
    EXPECT_EQ(reasonOf(beginLock(impatient)), Reason::TIMED_OUT);
}

TEST_F(LockTest, IsGivenUpInTimeOnABusThatStandsStill) {
    PlayedService daemon;
    dax::Options options;
    options.callTimeout = std::chrono::seconds(2); // the service is not slower
    dax::Client impatient("impatient", options);
    dax::Lock lock = acquireLock(impatient, daemon, 5);
    ASSERT_EQ(::kill(bus.pid(), SIGSTOP), 0);
    const auto before = std::chrono::steady_clock::now();
    EXPECT_THROW(lock.release(), dax::Unreachable);
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(20)); // libdbus would wait for 25
    ::kill(bus.pid(), SIGCONT);
}

TEST_F(LockTest, IsNotReleasedByAChildProcessThatEnds) {
    PlayedService daemon;
    dax::Lock lock = acquireLock(client, daemon, 5);
    const pid_t child = fork();
    if (child == 0) {
        ::alarm(10); // a release would wait for an answer
        { const dax::Lock itsOwn = std::move(lock); }
        ::_exit(0);
    }
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(releaseLock(lock, daemon));
}

TEST_F(LockTest, IsAskedForAndReleasedByTheUniqueNameOfTheService) {
    PlayedService daemon;
    auto future = beginLock(client);
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
    auto future = beginLock(client);
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
    dax::Lock lock = acquireLock(client, first, 1);
    PlayedService second;
    first.leave();
    EXPECT_FALSE(lock.release());
    dax::Lock next = acquireLock(client, second, 2); // makes the first call that the second service gets
    EXPECT_TRUE(releaseLock(next, second));
}

TEST_F(LockTest, IsOfTheNextServiceWhenOneRefusesItWithoutItsName) {
    PlayedService first;
    PlayedService second;
    auto future = beginLock(client);
    const RawMessage acquire = first.next("acquireExternalLock");
    first.giveNameBack();
    first.refuse(*acquire);
    second.giveLock(7);
    dax::Lock lock = future.get();
    EXPECT_EQ(lock.detach(), 7U);
}

TEST_F(LockTest, IsAskedForOnceOfAServiceThatRefusesItUnderItsName) {
    PlayedService daemon;
    auto future = beginLock(client);
    daemon.refuse(*daemon.next("acquireExternalLock"));
    EXPECT_EQ(reasonOf(std::move(future)), Reason::NOT_ALLOWED);
}

TEST_F(LockTest, IsAskedForOfSixServicesThatLeaveAndOfNoMore) {
    std::vector<PlayedService> daemons(6);
    auto future = beginLock(client);
    for (PlayedService& daemon : daemons) {
        daemon.next("acquireExternalLock");
        daemon.leave();
    }
    EXPECT_EQ(reasonOf(std::move(future)), Reason::NO_SERVICE);
}

TEST_F(LockTest, CannotBeAcquiredWithoutAService) {
    EXPECT_EQ(reasonOf(beginLock(client)), Reason::NO_SERVICE);
}

TEST_F(LockTest, IsGivenUpWhenItCannotBeReleased) {
    PlayedService daemon;
    dax::Lock lock = acquireLock(client, daemon, 1);
    auto released = std::async(std::launch::async, [&lock] { return lock.release(); });
    daemon.refuse(*daemon.next("releaseExternalLock"));
    EXPECT_THROW(released.get(), dax::Unreachable);
    EXPECT_FALSE(lock.release()) << "nobody has released it";
    EXPECT_FALSE(lock.isLost());
}

TEST_F(LockTest, IsNotReleasedWhenItIsDetached) {
    PlayedService daemon;
    dax::Lock lock = acquireLock(client, daemon, 8);
    EXPECT_EQ(lock.detach(), 8U);
    EXPECT_FALSE(lock.release()) << "the lock is in force";
    EXPECT_EQ(lock.detach(), 8U);
    EXPECT_FALSE(lock.isLost());
}

TEST_F(LockTest, StaysReleasedWhenItIsDetachedAfterwards) {
    PlayedService daemon;
    dax::Lock lock = acquireLock(client, daemon, 8);
    EXPECT_TRUE(releaseLock(lock, daemon));
    lock.detach();
    EXPECT_TRUE(lock.release());
}

TEST_F(LockTest, IsLostWithTheBus) {
    PlayedService daemon;
    dax::Lock lock = acquireLock(client, daemon, 1);
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

// Sees every message on the bus from now on.
class Monitor {
public:
    Monitor() {
        const RawMessage call(dbus_message_new_method_call(DBUS_SERVICE_DBUS, DBUS_PATH_DBUS,
                                                           "org.freedesktop.DBus.Monitoring", "BecomeMonitor"));
        const char* const* noRules = nullptr;
        const dbus_uint32_t flags = 0;
        dbus_message_append_args(call.get(), DBUS_TYPE_ARRAY, DBUS_TYPE_STRING, &noRules, 0, DBUS_TYPE_UINT32, &flags,
                                 DBUS_TYPE_INVALID);
        EXPECT_EQ(dbus_message_get_type(m_peer.call(*call).get()), DBUS_MESSAGE_TYPE_METHOD_RETURN);
    }

    // The method that is called first. Empty when none is called in time.
    std::string firstCall() {
        std::string method;
        waitUntil([&] {
            dbus_connection_read_write(m_peer.connection(), 10);
            const RawMessage message(dbus_connection_pop_message(m_peer.connection()));
            if (message != nullptr && dbus_message_get_type(message.get()) == DBUS_MESSAGE_TYPE_METHOD_CALL) {
                method = dbus_message_get_member(message.get());
            }
            return !method.empty();
        });
        return method;
    }

private:
    RawPeer m_peer;
};

// Who ends a program that does not answer gives it a moment, in which the release must be on its way.
TEST_F(LockTest, IsReleasedBeforeTheBusIsAskedAboutTheService) {
    PlayedService daemon;
    dax::Lock lock = acquireLock(client, daemon, 5);
    RawPeer other;
    for (const std::string& connection : othersThan({daemon.name(), other.name()}, other)) {
        other.send(*signalTo(connection)); // may displace the news of the service's end
    }
    othersThan({}, other); // the bus has taken the signals
    Monitor monitor;
    EXPECT_TRUE(releaseLock(lock, daemon));
    EXPECT_EQ(monitor.firstCall(), "releaseExternalLock");
}

TEST(LockOnASmallBus, IsSeenToBeLostThoughOthersFillItsConnections) {
    const PrivateBus bus(SystemBusRules::ofDevice({{"max_outgoing_bytes", 1000000}}));
    PlayedService daemon;
    dax::Client client("locker");
    dax::Lock lock = acquireLock(client, daemon, 5);
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
