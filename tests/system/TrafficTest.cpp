// What a peer can do to the daemon by sending to the connections on which the daemon calls the core.
#include <chrono>
#include <fstream>

#include <gmock/gmock.h>

#include "support/Flood.h"
#include "system/support/Desk.h"
#include "system/support/Scenarios.h"

namespace DAX {
namespace Tests {
namespace {

using Clock = std::chrono::steady_clock;
using testing::SizeIs;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
const long LARGEST_GROWTH = 1024 * 1024; // a sanitizer keeps what the daemon gives back
#else
const long LARGEST_GROWTH = 16 * 1024; // kilobytes
#endif
class Traffic : public testing::Test {
protected:
    Traffic() { desk.play(QUICK); }

    // The daemon's connections for calls to the core, of which a call has been made already.
    std::vector<std::string> coreConnections() {
        EXPECT_EQ(manager->getCurrentVersion(), "1000");
        return desk.namelessConnectionsOf(desk.daemon());
    }

    // How long a call of a client takes that the daemon hands on to the core.
    Clock::duration timeOfCall() const {
        const auto begin = Clock::now();
        EXPECT_EQ(manager->getCurrentVersion(), "1000");
        return Clock::now() - begin;
    }

    // In kilobytes: "VmRSS", what the daemon has in memory now; "VmHWM", the most that it ever had.
    long memoryOfTheDaemon(const std::string& what) {
        std::ifstream status("/proc/" + std::to_string(desk.daemon()) + "/status");
        std::string word;
        long kilobytes = 0;
        while (status >> word && word != what + ":") {
        }
        status >> kilobytes;
        return kilobytes;
    }

    Desk desk;
    const std::unique_ptr<Service::IServiceManager> manager = desk.connect();
};

TEST_F(Traffic, OfGreatSignalsHoldsNoCallToTheCoreUp) {
    const auto connections = coreConnections();
    ASSERT_THAT(connections, SizeIs(1));
    const long before = memoryOfTheDaemon("VmRSS");
    RawPeer peer;
    sendGreatSignals(peer, connections[0]);
    EXPECT_LT(timeOfCall(), PROMPT_BEHIND_GREAT_SIGNALS);
    for (int i = 0; i < 3; ++i) {
        EXPECT_LT(timeOfCall(), PROMPT);
    }
    EXPECT_LT(memoryOfTheDaemon("VmHWM"), before + LARGEST_GROWTH);
}

TEST_F(Traffic, OfSmallSignalsWithoutEndHoldsNoCallToTheCoreUp) {
    const auto connections = coreConnections();
    ASSERT_THAT(connections, SizeIs(1));
    const long before = memoryOfTheDaemon("VmRSS");
    const Flood flood(connections[0]);
    ASSERT_TRUE(flood.waitFor(50000));
    for (int i = 0; i < 20; ++i) {
        EXPECT_LT(timeOfCall(), PROMPT);
    }
    EXPECT_LT(memoryOfTheDaemon("VmHWM"), before + LARGEST_GROWTH);
}

TEST_F(Traffic, ToAClientHoldsNoneOfItsCallsUp) {
    coreConnections();
    const auto connections = desk.namelessConnectionsOf(getpid());
    const Flood flood(connections.back());
    ASSERT_TRUE(flood.waitFor(50000));
    for (int i = 0; i < 20; ++i) {
        EXPECT_LT(timeOfCall(), PROMPT);
    }
}

TEST_F(Traffic, LetsAnUpgradeThrough) {
    const auto connections = coreConnections();
    ASSERT_THAT(connections, SizeIs(1));
    const Flood flood(connections[0]);
    ASSERT_TRUE(flood.waitFor(1000));
    EXPECT_EQ(desk.run("daxctl", {"upgrade"}).end, ProcessEnd::exited(0));
}

} // namespace
} // namespace Tests
} // namespace DAX
