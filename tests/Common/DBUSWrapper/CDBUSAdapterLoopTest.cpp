#include <chrono>
#include <csignal>
#include <mutex>
#include <stdexcept>

#include <boost/thread/thread.hpp>

#include "AdapterFixture.h"
#include "LibraryFaults.h"

namespace DAX {
namespace Tests {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using Clock = std::chrono::steady_clock;

const char EXIT[] = "DBUSAdapter thread method exit. Adapter object:{/org/kovan/test/object}";
const char IDLE[] = "Stopping adapter object /org/kovan/test/object due to it being idle for 1 seconds.";

class CDBUSAdapterLoopTest : public AdapterFixture {
protected:
    ~CDBUSAdapterLoopTest() override { stop(); } // before the fields below go

    // Waits until the loop has asked its stop condition so many times more: as many wake-ups, on a quiet bus.
    void waitForWakeUps(int wakeUps) {
        const int target = stopQuestions + wakeUps;
        const Clock::time_point bound = Clock::now() + std::chrono::seconds(20);
        while (stopQuestions < target && Clock::now() < bound) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        ASSERT_GE(stopQuestions, target);
    }

    // Remembers the times of its calls.
    std::function<void()> ping() {
        return [this] {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_pings.push_back(Clock::now());
        };
    }

    std::vector<Clock::time_point> pings() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_pings;
    }

    static std::string created(const std::string& name, int warn, int kill) {
        return "SoftWatchdog '" + name + " /org/kovan/test/object' created. Warn after: " + std::to_string(warn) +
               ", Kill after: " + std::to_string(kill) + ".";
    }

    static std::vector<std::string> watchdogMessages() {
        std::vector<std::string> result;
        for (const std::string& message : FakeKovan::messages()) {
            if (message.rfind("SoftWatchdog '", 0) == 0) {
                result.push_back(message);
            }
        }
        return result;
    }

private:
    std::mutex m_mutex; // guards m_pings
    std::vector<Clock::time_point> m_pings;
};

// --- Ends ---------------------------------------------------------------------------------------------------------

TEST_F(CDBUSAdapterLoopTest, EndsByTheStopConditionOnAQuietBus) {
    stopWanted = true;
    listen(Run());
    EXPECT_EQ(FakeKovan::messages().back(), EXIT);
}

TEST_F(CDBUSAdapterLoopTest, EndsByTheStopConditionAfterAMessage) {
    handler->onRequest = [this](const FakeHandler::Request&, std::stringstream&, std::string&) {
        stopWanted = true;
        return true;
    };
    start({60, 0, 0, nullptr});
    RawPeer().send(*makeCall("any"));
    waitForEnd();
    EXPECT_EQ(FakeKovan::messages().back(), EXIT);
}

TEST_F(CDBUSAdapterLoopTest, AsksTheStopConditionAfterEveryMessage) {
    start({60, 0, 0, nullptr});
    RawPeer client;
    client.call(*makeCall("any"));
    const int before = stopQuestions;
    for (int i = 0; i < 10; ++i) {
        client.call(*makeCall("any"));
    }
    EXPECT_GE(stopQuestions, before + 9); // the last answer may be here before the question
}

TEST_F(CDBUSAdapterLoopTest, AsksTheStopConditionOnceInAPassWithAMessage) {
    start({60, 0, 0, nullptr});
    RawPeer client;
    client.call(*makeCall("any"));
    const int before = stopQuestions;
    for (int i = 0; i < 20; ++i) {
        client.call(*makeCall("any"));
    }
    EXPECT_LE(stopQuestions, before + 30); // with another question in each pass they would be 40
}

TEST_F(CDBUSAdapterLoopTest, EndsWithoutAnExceptionWhenTheBusGoes) {
    start({60, 0, 0, nullptr});
    bus.stop();
    waitForEnd();
    EXPECT_EQ(failure, nullptr);
    EXPECT_EQ(FakeKovan::messages().back(), EXIT);
}

TEST_F(CDBUSAdapterLoopTest, EndsWhenItIsInterrupted) {
    boost::thread thread([this] { listen(Run()); });
    ASSERT_TRUE(FakeKovan::waitForMessage("INF", "DBUSAdapter adapter thread started."));
    thread.interrupt();
    wake();
    thread.join();
    std::vector<std::string> last = messages();
    last.erase(last.begin(), last.end() - 2);
    EXPECT_THAT(last, ElementsAre("INF DBUSAdapter thread interrupted. Adapter object: {/org/kovan/test/object}",
                                  std::string("INF ") + EXIT));
}

TEST_F(CDBUSAdapterLoopTest, EndsWithoutAnExceptionWhenThePingFails) {
    start({1, 0, 1, [] { throw std::runtime_error("broken"); }});
    waitForEnd();
    EXPECT_EQ(failure, nullptr);
    std::vector<std::string> last = messages();
    last.erase(last.begin(), last.end() - 2);
    EXPECT_THAT(last, ElementsAre("INF Unknown exception catched int DBUSAdapter thread. Adapter "
                                  "object:{/org/kovan/test/object}",
                                  std::string("INF ") + EXIT));
}

TEST_F(CDBUSAdapterLoopTest, AssertsThatNothingIsThrownThroughTheDispatch) {
    EXPECT_EXIT(
        {
            FakeKovan::echoLogToStderr(true);
            failNext("dbus_connection_dispatch");
            listen(Run());
        },
        testing::KilledBySignal(SIGABRT),
        testing::AllOf(HasSubstr("[FTL] "),
                       HasSubstr("Throwing exception through C-function dbus_connection_dispatch() is not allowed. "
                                 "Adapter object: /org/kovan/test/object. Exception: "),
                       HasSubstr("thrown through the library"), HasSubstr("ASSERTION FAILED: false, "),
                       HasSubstr("MESSAGE: Throwing exception through C-function dbus_connection_dispatch() is not "
                                 "allowed.\n")));
}

// --- Idleness -----------------------------------------------------------------------------------------------------

TEST_F(CDBUSAdapterLoopTest, EndsWhenNobodyEverCalled) {
    const Clock::time_point begin = Clock::now();
    listen({1, 1, 0, nullptr});
    EXPECT_GT(Clock::now() - begin, std::chrono::milliseconds(900)); // the clock has run since the construction
    std::vector<std::string> last = messages();
    last.erase(last.begin(), last.end() - 2);
    EXPECT_THAT(last, ElementsAre(std::string("INF ") + IDLE, std::string("INF ") + EXIT));
}

TEST_F(CDBUSAdapterLoopTest, StaysWhileASilentClientIsConnected) {
    start({1, 1, 0, nullptr});
    auto client = std::make_unique<RawPeer>();
    client->call(*makeCall("any"));
    waitForWakeUps(4);
    EXPECT_EQ(FakeKovan::count("INF", IDLE), 0);
    client.reset();
    waitForEnd();
    EXPECT_EQ(FakeKovan::count("INF", IDLE), 1);
}

TEST_F(CDBUSAdapterLoopTest, CountsIdlenessFromTheEndOfTheLastClient) {
    start({1, 1, 0, nullptr});
    auto client = std::make_unique<RawPeer>();
    client->call(*makeCall("any"));
    waitForWakeUps(2);
    const Clock::time_point begin = Clock::now();
    client.reset();
    waitForEnd();
    EXPECT_GT(Clock::now() - begin, std::chrono::seconds(1));
}

TEST_F(CDBUSAdapterLoopTest, StaysIdleDespiteIntrospections) {
    start({1, 1, 0, nullptr});
    RawPeer client;
    client.call(*makeIntrospection());
    waitForEnd();
    EXPECT_EQ(FakeKovan::count("INF", IDLE), 1);
}

TEST_F(CDBUSAdapterLoopTest, NeverEndsByIdlenessWithATimeoutOfZero) {
    start();
    waitForWakeUps(3);
    stop();
    EXPECT_EQ(FakeKovan::countContaining("INF", "due to it being idle"), 0);
}

// --- The first wait -----------------------------------------------------------------------------------------------

TEST_F(CDBUSAdapterLoopTest, AnswersTheCallThatWaitedForTheNameAtOnce) {
    bus.addService(CONNECTION_NAME, "/bin/true"); // it ends without the name, which the adapter then takes
    RawPeer client;
    const std::uint32_t serial = client.send(*makeCall("any"));
    ASSERT_FALSE(dbus_bus_name_has_owner(client.connection(), CONNECTION_NAME, nullptr)); // the bus has the call
    start({60, 0, 0, nullptr});
    const RawMessage reply = client.waitForReply(serial, std::chrono::seconds(20));
    ASSERT_NE(reply, nullptr);
    EXPECT_THAT(byteArrays(*reply), ElementsAre("REPLY", "any", ""));
}

// --- Pings --------------------------------------------------------------------------------------------------------

TEST_F(CDBUSAdapterLoopTest, PingsAtAWakeUpAfterTheInterval) {
    const Clock::time_point begin = Clock::now();
    start({1, 0, 1, ping()});
    waitForWakeUps(3);
    stop();
    ASSERT_FALSE(pings().empty());
    EXPECT_GE(pings()[0] - begin, std::chrono::seconds(1));
}

TEST_F(CDBUSAdapterLoopTest, PingsNoMoreOftenHoweverBusyTheBusIs) {
    start({1, 0, 1, ping()});
    RawPeer client;
    const Clock::time_point bound = Clock::now() + std::chrono::seconds(20);
    while (pings().size() < 3 && Clock::now() < bound) {
        client.call(*makeCall("any"));
    }
    ASSERT_EQ(pings().size(), 3U);
    EXPECT_GE(pings()[2] - pings()[0], std::chrono::milliseconds(1999)); // the adapter's clock is a float
}

// --- Guards -------------------------------------------------------------------------------------------------------

TEST_F(CDBUSAdapterLoopTest, HasNoGuardsInProduction) {
    start({1, 0, 1, ping()});
    stop();
    EXPECT_THAT(watchdogMessages(), IsEmpty());
}

TEST_F(CDBUSAdapterLoopTest, HasThreeGuardsOnOtherSoftware) {
    FakeKovan::setProduction(false);
    start({3, 0, 10, ping()});
    stop();
    EXPECT_THAT(watchdogMessages(), ElementsAre(created("WatchdogPingGuard", 64, 75),
                                                created("DispatchTimeGuard", 50, 60), created("NotifyGuard", 1, 2)));
}

TEST_F(CDBUSAdapterLoopTest, LeavesTheGuardsQuietlyAfterCallsAndPings) {
    FakeKovan::setProduction(false);
    start({1, 0, 1, ping()});
    RawPeer client;
    client.call(*makeCall("any"));
    client.call(*makeCall("any"));
    waitForWakeUps(2);
    stop();
    EXPECT_EQ(FakeKovan::countContaining("INF", "It's armed."), 0);
    EXPECT_THAT(FakeKovan::messages("FTL"), IsEmpty());
}

TEST_F(CDBUSAdapterLoopTest, ReportsAPingThatTakesTooLong) {
    FakeKovan::setProduction(false);
    std::atomic<bool> reported{false};
    start({1, 0, 1, [&reported] {
               reported =
                   reported || FakeKovan::waitForMessage("FTL", "SoftWatchdog 'NotifyGuard /org/kovan/test/"
                                                                "object' could kill the process after 2 seconds.");
           }});
    ASSERT_TRUE(FakeKovan::waitForMessage("FTL", "could kill"));
    stop();
    EXPECT_TRUE(reported);
}

TEST_F(CDBUSAdapterLoopTest, LeavesThePingGuardArmedWhenItIsInterrupted) {
    FakeKovan::setProduction(false);
    adapter->activate(1, CONNECTION_NAME);
    ASSERT_TRUE(FakeKovan::waitForMessage("INF", "NotifyGuard"));
    adapter->deactivate();
    ASSERT_EQ(watchdogMessages().size(), 4U);
    EXPECT_THAT(watchdogMessages()[3], HasSubstr("WatchdogPingGuard /org/kovan/test/object' destroyed after"));
    EXPECT_THAT(watchdogMessages()[3], HasSubstr("It's armed. Warn after: 52, Kill after: 63."));
}

TEST_F(CDBUSAdapterLoopTest, ArmsThePingGuardAnewInEveryPassWithoutAPingFunction) {
    FakeKovan::setProduction(false);
    adapter->activate(1, CONNECTION_NAME);
    const Clock::time_point activated = Clock::now();
    RawPeer client;
    while (Clock::now() - activated < std::chrono::seconds(2)) {
        client.call(*makeCall("any"));
    }
    adapter->deactivate();
    const std::string text = watchdogMessages().back();
    const std::string armedFor = text.substr(text.find("destroyed after ") + 16);
    EXPECT_LT(std::stod(armedFor), 1.9) << text;
}

} // namespace
} // namespace Tests
} // namespace DAX
