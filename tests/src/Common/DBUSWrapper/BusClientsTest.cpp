#include "Common/DBUSWrapper/Implementation/BusClients.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "LibraryFaults.h"
#include "support/FakeKovan.h"
#include "support/PrivateBus.h"
#include "support/RawPeer.h"

namespace DAX::Tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ManualClock : public Common::Utils::ISimpleClock {
public:
    float getCurrentTime() override { return seconds; }

    float seconds = 0;
};

class BusClientsTest : public testing::Test {
protected:
    PrivateBus bus;
    RawPeer peer;
    Common::DBUSWrapper::BusCalls calls;
    ManualClock clock;
    Common::DBUSWrapper::BusClients clients{calls, clock, [](const std::string&) {}};
};

TEST_F(BusClientsTest, AreEmptySinceTheClockWasMadeUntilTheFirstCame) {
    clock.seconds = 3;
    clients.begin(peer.connection());
    EXPECT_TRUE(clients.isEmpty());
    EXPECT_EQ(clients.emptyFor(), 3);
}

TEST_F(BusClientsTest, AreEmptySinceTheLastHasGone) {
    clients.begin(peer.connection());
    clients.add(":1.7");
    clients.add(":1.8");
    clients.unregisterConnection(":1.7");
    EXPECT_FALSE(clients.isEmpty());
    clock.seconds = 3;
    clients.unregisterConnection(":1.8");
    clock.seconds = 5;
    EXPECT_TRUE(clients.isEmpty());
    EXPECT_EQ(clients.emptyFor(), 2);
}

TEST_F(BusClientsTest, AreEmptySinceANewConnectionWhichTheOldOnesAreNotOf) {
    clients.begin(peer.connection());
    clients.add(":1.7");
    clock.seconds = 3;
    RawPeer next;
    clients.begin(next.connection());
    clock.seconds = 5;
    EXPECT_TRUE(clients.isEmpty());
    EXPECT_EQ(clients.emptyFor(), 2);
}

TEST_F(BusClientsTest, AreEachAddedOnce) {
    clients.begin(peer.connection());
    EXPECT_TRUE(clients.add(":1.7"));
    EXPECT_FALSE(clients.add(":1.7"));
    EXPECT_THAT(FakeKovan::messages("INF"), ElementsAre("Registering new connection named :1.7"));
}

TEST_F(BusClientsTest, SayWhenNobodyOfTheNameIsAmongThem) {
    clients.begin(peer.connection());
    clients.unregisterConnection(":1.7");
    EXPECT_THAT(FakeKovan::messages("INF"), ElementsAre("Name :1.7 does not exist in clients list."));
}

TEST_F(BusClientsTest, AreNotWatchedWithoutAName) {
    clients.begin(peer.connection());
    takeBusCalls();
    clients.add("");
    clients.subscribeForNameOwnerChangedSignal("");
    clients.unregisterConnection("");
    EXPECT_THAT(takeBusCalls(), IsEmpty());
}

} // namespace
} // namespace DAX::Tests
