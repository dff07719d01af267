// To which daemon a lock belongs.
#include "daxctl/HeldLock.h"

#include <future>

#include <boost/archive/text_oarchive.hpp>
#include <gmock/gmock.h>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "clients/daxctl/StandardError.h"
#include "support/PrivateBus.h"
#include "support/RawPeer.h"
#include "support/Thrown.h"
#include "support/WaitUntil.h"

namespace DAX::Tests {
namespace {

using namespace testing;
using Common::DBUSWrapper::DBUSWrapperExceptions::RemoteObjectNotAccessible;
using daxctl::HeldLock;
using daxctl::Request;

const char NAME[] = "org.kovan.tv.dax.service.servicemanager";

// A daemon played by the test. It gets the name now, or as soon as the daemon before has left.
class Daemon {
public:
    Daemon() { m_peer.requestName(NAME, 0); }

    std::string name() const { return m_peer.name(); }
    void leave() { m_peer.disconnect(); }

    // Stays on the bus.
    void giveNameBack() {
        ASSERT_EQ(dbus_bus_release_name(m_peer.connection(), NAME, nullptr), DBUS_RELEASE_NAME_REPLY_RELEASED);
    }

    // The next call, which must be a call of the method.
    RawMessage next(const std::string& method) {
        RawMessage call;
        waitUntil([&] {
            dbus_connection_read_write(m_peer.connection(), 10);
            call.reset(dbus_connection_pop_message(m_peer.connection()));
            return call != nullptr && dbus_message_get_type(call.get()) == DBUS_MESSAGE_TYPE_METHOD_CALL;
        });
        if (call == nullptr || dbus_message_get_member(call.get()) != method) {
            throw std::runtime_error("no call of " + method);
        }
        return call;
    }

    void answer(DBusMessage& call, const std::string& archive) {
        const RawMessage reply(dbus_message_new_method_return(&call));
        appendBytes(*reply, "REPLY");
        appendBytes(*reply, dbus_message_get_member(&call));
        appendBytes(*reply, archive);
        m_peer.send(*reply);
    }

    void refuse(DBusMessage& call) {
        const RawMessage error(dbus_message_new_error(&call, DBUS_ERROR_ACCESS_DENIED, "Not for you."));
        m_peer.send(*error);
    }

    void giveLock(DBusMessage& call, unsigned int id) {
        std::ostringstream text;
        boost::archive::text_oarchive(text) << id;
        answer(call, text.str());
    }
    void giveLock(unsigned int id) { giveLock(*next("acquireExternalLock"), id); }

private:
    RawPeer m_peer;
};

class HeldLockTest : public Test {
protected:
    // Asks for the lock on another thread, while the test plays the daemon.
    static std::future<std::unique_ptr<HeldLock>> begin() {
        return std::async(std::launch::async, [] { return std::make_unique<HeldLock>(Request()); });
    }

    PrivateBus bus;
};

TEST_F(HeldLockTest, IsAskedForAndReleasedByTheUniqueNameOfTheDaemon) {
    Daemon daemon;
    auto future = begin();
    const RawMessage acquire = daemon.next("acquireExternalLock");
    EXPECT_EQ(dbus_message_get_destination(acquire.get()), daemon.name());
    daemon.giveLock(*acquire, 5);
    const auto lock = future.get();
    EXPECT_EQ(lock->id(), 5U);
    auto released = std::async(std::launch::async, [&lock] { return lock->release(); });
    const RawMessage release = daemon.next("releaseExternalLock");
    EXPECT_EQ(dbus_message_get_destination(release.get()), daemon.name());
    daemon.answer(*release, "");
    EXPECT_TRUE(released.get());
    EXPECT_TRUE(lock->release());
}

TEST_F(HeldLockTest, BelongsToTheNextDaemonWhenOneLeavesBeforeItAnswers) {
    StandardError errors(StandardError::Kind::PIPE);
    Daemon first;
    Daemon second;
    auto future = begin();
    first.next("acquireExternalLock");
    first.leave();
    second.giveLock(6);
    const auto lock = future.get();
    EXPECT_EQ(lock->id(), 6U);
    lock->noticeLoss();
    EXPECT_FALSE(lock->isLost());
    second.leave();
    EXPECT_TRUE(waitUntil([&lock] {
        lock->noticeLoss();
        return lock->isLost();
    }));
    EXPECT_FALSE(lock->release());
    EXPECT_EQ(errors.text(), "The lock 6 is lost: the daemon that gave it has left the bus.\n");
}

TEST_F(HeldLockTest, IsNotReleasedAtADaemonThatTookTheNameOver) {
    StandardError errors(StandardError::Kind::PIPE);
    Daemon first;
    auto future = begin();
    first.giveLock(1);
    const auto lock = future.get();
    Daemon second;
    first.leave();
    EXPECT_FALSE(lock->release());
    EXPECT_EQ(errors.text(), "The lock 1 is lost: the daemon that gave it has left the bus.\n");
    auto next = begin(); // makes the first call that the second daemon gets
    second.giveLock(2);
    auto released = std::async(std::launch::async, [&next] { next.get().reset(); });
    second.answer(*second.next("releaseExternalLock"), "");
    released.get();
}

TEST_F(HeldLockTest, IsOfTheNextDaemonWhenOneRefusesItWithoutItsName) {
    Daemon first;
    Daemon second;
    auto future = begin();
    const RawMessage acquire = first.next("acquireExternalLock");
    first.giveNameBack();
    first.refuse(*acquire);
    second.giveLock(7);
    const auto lock = future.get();
    EXPECT_EQ(lock->id(), 7U);
    auto released = std::async(std::launch::async, [&lock] { return lock->release(); });
    second.answer(*second.next("releaseExternalLock"), "");
    EXPECT_TRUE(released.get());
}

TEST_F(HeldLockTest, IsAskedForOnceOfADaemonThatRefusesItUnderItsName) {
    Daemon daemon;
    auto future = begin();
    daemon.refuse(*daemon.next("acquireExternalLock"));
    EXPECT_EQ(thrownStreamText<RemoteObjectNotAccessible>([&future] { future.get(); }), "Not for you.");
}

TEST_F(HeldLockTest, IsAskedForOfSixDaemonsThatLeaveAndOfNoMore) {
    std::vector<Daemon> daemons(6);
    auto future = begin();
    for (Daemon& daemon : daemons) {
        daemon.next("acquireExternalLock");
        daemon.leave();
    }
    EXPECT_THROW(future.get(), RemoteObjectNotAccessible);
}

TEST_F(HeldLockTest, CannotBeAcquiredWithoutADaemon) {
    EXPECT_THROW(HeldLock lock((Request())), RemoteObjectNotAccessible);
}

} // namespace
} // namespace DAX::Tests
