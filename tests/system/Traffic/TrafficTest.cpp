// The effect of messages that a peer sends to the connections on which the daemon calls the core.
#include <chrono>

#include <gmock/gmock.h>

#include "support/Flood.h"
#include "support/Prompt.h"
#include "support/Sanitizer.h"
#include "system/support/Desk.h"
#include "system/support/ProcessMemory.h"
#include "system/support/Scenarios.h"

namespace DAX::Tests {
namespace {

using Clock = std::chrono::steady_clock;
using testing::SizeIs;

// In kilobytes.
const long LARGEST_GROWTH = (HAS_SANITIZER ? 1024 : 16) * 1024;

class Traffic : public testing::Test {
protected:
    Traffic() { desk.play(QUICK); }

    // The daemon's connections for calls to the core. A call to the core must have been made before.
    std::vector<std::string> coreConnections() {
        EXPECT_EQ(manager->getCurrentVersion(), "1000");
        return desk.namelessConnectionsOf(desk.daemon());
    }

    // How long a client's call takes that the daemon passes to the core.
    Clock::duration timeOfCall() const {
        const auto begin = Clock::now();
        EXPECT_EQ(manager->getCurrentVersion(), "1000");
        return Clock::now() - begin;
    }

    // Whoever may connect to the bus, without a right to call the daemon where the suite can be somebody else.
    static RawPeer anybody() { return geteuid() == 0 ? RawPeer::ofNobody() : RawPeer(); }

    Desk desk{"", SystemBusRules::ofDevice()};
    const std::unique_ptr<Service::IServiceManager> manager = desk.connect();
};

TEST_F(Traffic, OfLargeSignalsDelaysNoCallToTheCore) {
    const auto connections = coreConnections();
    ASSERT_THAT(connections, SizeIs(1));
    const long before = residentKilobytes(desk.daemon());
    RawPeer peer = anybody();
    sendGreatSignals(peer, connections[0]);
    for (int i = 0; i < 4; ++i) {
        EXPECT_LT(timeOfCall(), PROMPT);
    }
    EXPECT_LT(peakKilobytes(desk.daemon()), before + LARGEST_GROWTH);
}

TEST_F(Traffic, OfEndlessSmallSignalsDelaysNoCallToTheCore) {
    const auto connections = coreConnections();
    ASSERT_THAT(connections, SizeIs(1));
    const long before = residentKilobytes(desk.daemon());
    const Flood flood(connections[0], anybody());
    ASSERT_TRUE(flood.waitFor(50000));
    for (int i = 0; i < 20; ++i) {
        EXPECT_LT(timeOfCall(), PROMPT);
    }
    EXPECT_LT(peakKilobytes(desk.daemon()), before + LARGEST_GROWTH);
}

TEST_F(Traffic, ToAClientDelaysNoneOfItsCalls) {
    coreConnections();
    const auto connections = desk.namelessConnectionsOf(getpid());
    const Flood flood(connections.back(), anybody());
    ASSERT_TRUE(flood.waitFor(50000));
    for (int i = 0; i < 20; ++i) {
        EXPECT_LT(timeOfCall(), PROMPT);
    }
}

TEST_F(Traffic, LetsAnUpgradeThrough) {
    const auto connections = coreConnections();
    ASSERT_THAT(connections, SizeIs(1));
    const Flood flood(connections[0], anybody());
    ASSERT_TRUE(flood.waitFor(1000));
    EXPECT_EQ(desk.run("daxctl", {"upgrade"}).end, ProcessEnd::exited(0));
}

} // namespace
} // namespace DAX::Tests
