#include "Common/DBUSWrapper/PeerWatch.h"

#include <condition_variable>
#include <mutex>

#include <boost/exception/get_error_info.hpp>
#include <gmock/gmock.h>
#include <sys/eventfd.h>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "Common/DBUSWrapper/Implementation/IdleReader.h"
#include "LibraryFaults.h"
#include "Utility/Utils/FileDescriptor.h"
#include "support/Flood.h"
#include "support/PrivateBus.h"
#include "support/RawPeer.h"
#include "support/WaitUntil.h"

namespace DAX::Tests {
namespace {

using namespace Common::DBUSWrapper;
using namespace Common::DBUSWrapper::DBUSWrapperExceptions;
using testing::Contains;
using testing::Not;

const char PEER[] = "org.kovan.test.peer";
const char OBJECT[] = "org.kovan.test.object"; // which the policy of these tests knows

// Keeps the thread that reads between the calls from reading, while it lives.
class StuckReader : private IdleReader::Source {
public:
    StuckReader() : m_event(::eventfd(1, EFD_CLOEXEC)), m_registration(m_event.get(), *this) {
        m_registration.arm();
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait(lock, [this] { return m_isStuck; });
    }
    StuckReader(const StuckReader&) = delete;
    StuckReader& operator=(const StuckReader&) = delete;
    ~StuckReader() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_mayGoOn = true;
        m_changed.notify_all();
    }

private:
    void readIdle() override {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_isStuck = true;
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return m_mayGoOn; });
    }

    std::mutex m_mutex; // guards the two below
    std::condition_variable m_changed;
    bool m_isStuck = false;
    bool m_mayGoOn = false;
    const Common::Utils::FileDescriptor m_event;
    IdleReader::Registration m_registration; // first to go: it waits for readIdle()
};

// The connection that is opened right after the peer's.
std::string connectionAfter(const RawPeer& peer) {
    return ":1." + std::to_string(std::stoi(peer.name().substr(3)) + 1);
}

class PeerWatchTest : public testing::Test {
protected:
    static std::unique_ptr<PeerWatch> watch(unsigned int timeoutMs = 20000) {
        return std::make_unique<PeerWatch>(ClientConnection{"", timeoutMs}, PEER);
    }

    PrivateBus bus;
};

TEST_F(PeerWatchTest, FollowsThePeerThatHasTheName) {
    RawPeer peer;
    peer.requestName(PEER);
    const auto watched = watch();
    EXPECT_EQ(watched->follow(), peer.name());
    EXPECT_FALSE(watched->hasGone());
    EXPECT_FALSE(watched->askWhetherItHasGone());
    EXPECT_TRUE(watched->askWhetherItHasTheName());
    EXPECT_TRUE(watched->askWhetherAnybodyHasTheName());
    EXPECT_FALSE(watched->isKnownToHaveGone());
    peer.disconnect();
    EXPECT_TRUE(waitUntil([&] { return watched->isKnownToHaveGone(); }));
    EXPECT_TRUE(watched->hasGone());
    EXPECT_TRUE(watched->askWhetherItHasGone());
    EXPECT_FALSE(watched->askWhetherItHasTheName());
    EXPECT_FALSE(watched->askWhetherAnybodyHasTheName());
}

TEST_F(PeerWatchTest, FollowsTheNextPeerWhenItIsToldTo) {
    RawPeer first;
    first.requestName(PEER);
    const auto watched = watch();
    watched->follow();
    RawPeer second;
    second.requestName(PEER, 0);
    first.disconnect();
    ASSERT_TRUE(waitUntil([&] { return watched->hasGone(); }));
    EXPECT_TRUE(watched->askWhetherAnybodyHasTheName());
    EXPECT_EQ(watched->follow(), second.name());
    EXPECT_FALSE(watched->hasGone());
}

TEST_F(PeerWatchTest, APeerThatGivesItsNameBackHasNotGone) {
    RawPeer peer;
    peer.requestName(PEER);
    const auto watched = watch();
    watched->follow();
    ASSERT_EQ(dbus_bus_release_name(peer.connection(), PEER, nullptr), DBUS_RELEASE_NAME_REPLY_RELEASED);
    EXPECT_FALSE(watched->askWhetherItHasTheName());
    EXPECT_FALSE(watched->askWhetherItHasGone());
    EXPECT_FALSE(watched->hasGone());
}

TEST_F(PeerWatchTest, StartsNobodyForAQuestion) {
    bus.addService(PEER, "/bin/false");
    EXPECT_FALSE(watch()->askWhetherAnybodyHasTheName());
    EXPECT_THROW(watch()->follow(), RemoteObjectNotAccessible); // the bus tells that it has ended
}

TEST_F(PeerWatchTest, NobodyButTheBusCanTellOfTheEnd) {
    RawPeer peer;
    peer.requestName(PEER);
    const auto watched = watch();
    watched->follow();
    const std::string name = peer.name();
    const char* const arguments[] = {name.c_str(), name.c_str(), ""};
    const RawMessage forged(dbus_message_new_signal(DBUS_PATH_DBUS, DBUS_INTERFACE_DBUS, "NameOwnerChanged"));
    dbus_message_append_args(forged.get(), DBUS_TYPE_STRING, &arguments[0], DBUS_TYPE_STRING, &arguments[1],
                             DBUS_TYPE_STRING, &arguments[2], DBUS_TYPE_INVALID);
    dbus_message_set_destination(forged.get(), connectionAfter(peer).c_str());
    RawPeer forger;
    forger.send(*forged);
    ASSERT_TRUE(forger.waitForNameOwner(PEER, true)); // the bus has passed it on by now
    EXPECT_FALSE(watched->hasGone());
    EXPECT_FALSE(watched->hasGone());
}

TEST_F(PeerWatchTest, SeesTheEndDuringAFlood) {
    RawPeer peer;
    peer.requestName(PEER);
    const auto watched = watch();
    watched->follow();
    const Flood flood(connectionAfter(peer));
    ASSERT_TRUE(flood.waitFor(50000));
    EXPECT_FALSE(watched->hasGone());
    peer.disconnect();
    EXPECT_TRUE(waitUntil([&] { return watched->hasGone(); }));
}

TEST_F(PeerWatchTest, AsksTheBusOnlyAfterOthersHaveSentToIt) {
    RawPeer peer;
    peer.requestName(PEER);
    const auto watched = watch();
    watched->follow();
    takeBusCalls();
    EXPECT_FALSE(watched->hasGone());
    EXPECT_THAT(takeBusCalls(), Not(Contains("GetNameOwner " + peer.name())));
    RawPeer other;
    other.send(*signalTo(connectionAfter(peer)));
    EXPECT_TRUE(waitUntil([&] {
        EXPECT_FALSE(watched->hasGone());
        return !takeBusCalls().empty();
    }));
    EXPECT_FALSE(watched->hasGone());
    EXPECT_THAT(takeBusCalls(), Not(Contains("GetNameOwner " + peer.name()))) << "it asks for ever";
}

// The bus has no room for the news, as nobody reads what others send.
TEST(PeerWatchOnASmallBus, SeesTheEndThatTheBusCouldNotTell) {
    SystemBusRules rules;
    rules.policies = {OBJECT_POLICY};
    rules.limits = {{"max_outgoing_bytes", 1000000}};
    const PrivateBus bus(rules);
    RawPeer peer;
    peer.requestName(OBJECT);
    PeerWatch watch({"", 20000}, OBJECT);
    watch.follow();
    RawPeer other;
    {
        const StuckReader nobodyReads;
        for (int i = 0; i < 100; ++i) {
            other.send(*signalTo(connectionAfter(peer), 100000));
        }
        ASSERT_TRUE(other.waitForNameOwner(OBJECT, true)); // the bus has taken all of them by now
        peer.disconnect();
        ASSERT_TRUE(other.waitForNameOwner(OBJECT, false));
    }
    EXPECT_TRUE(waitUntil([&] { return watch.hasGone(); }));
}

} // namespace
} // namespace DAX::Tests
