#include <chrono>
#include <csignal>
#include <mutex>
#include <random>
#include <stdexcept>

#include <boost/thread/thread.hpp>

#include "AdapterClock.h"
#include "AdapterFixture.h"
#include "LibraryFaults.h"
#include "support/Event.h"
#include "support/WaitUntil.h"

namespace DAX::Tests {
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

TEST_F(CDBUSAdapterLoopTest, EndsAlthoughNamesVanishAllTheTime) {
    std::atomic<bool> hasEnded{false};
    std::thread traffic([&hasEnded] {
        while (!hasEnded) {
            RawPeer();
        }
    });
    listen({60, 1, 0, nullptr});
    hasEnded = true;
    traffic.join();
    EXPECT_EQ(FakeKovan::count("INF", IDLE), 1);
    EXPECT_EQ(FakeKovan::countContaining("INF", "NameOwnerChanged"), 0);
}

// --- The end by idleness, with a call that comes in at that very moment ---------------------------------------------

class IdleEndTest : public CDBUSAdapterLoopTest {
protected:
    const std::string AGAIN = "A call has come in while the name {org.kovan.test.object} was given back. "
                              "Requesting it again.";

    // Sends the message right before the adapter gives its name back, and starts the adapter.
    void startAndSendAtTheEnd(RawMessage message) {
        beforeBusCall("ReleaseName", [this, call = std::shared_ptr<DBusMessage>(std::move(message))] {
            m_serial = client.send(*call);
            client.waitForNameOwner(CONNECTION_NAME, true); // the bus has sent it on
            m_sent.happen();
        });
        start({1, 1, 0, nullptr});
    }

    RawMessage waitForReply() { return m_sent.wait() ? client.waitForReply(m_serial) : nullptr; }

    std::vector<std::string> journalOfTheCall() {
        std::vector<std::string> result;
        for (const std::string& entry : FakeKovan::journal()) {
            if (entry == "log INF " + AGAIN || entry.rfind("request ", 0) == 0) {
                result.push_back(entry);
            }
        }
        return result;
    }

    RawPeer client;

private:
    Event m_sent;
    std::uint32_t m_serial = 0;
};

TEST_F(IdleEndTest, ServesTheCallUnderItsNameAndGoesOn) {
    startAndSendAtTheEnd(makeCall("late"));
    const RawMessage reply = waitForReply();
    ASSERT_NE(reply, nullptr);
    EXPECT_THAT(byteArrays(*reply), ElementsAre("REPLY", "late", ""));
    EXPECT_THAT(byteArrays(*client.call(*makeCall("next"))), ElementsAre("REPLY", "next", ""));
    EXPECT_THAT(journalOfTheCall(), ElementsAre("log INF " + AGAIN, "request late", "request next"));
    EXPECT_EQ(FakeKovan::count("INF", IDLE), 0);
    client.disconnect();
    waitForEnd();
    EXPECT_EQ(FakeKovan::count("INF", IDLE), 1);
}

TEST_F(IdleEndTest, TakesACallOfItsUniqueNameForACall) {
    ASSERT_EQ(client.name(), ":1.0"); // the adapter comes next
    RawMessage call = makeCall("late");
    dbus_message_set_destination(call.get(), ":1.1");
    startAndSendAtTheEnd(std::move(call));
    const RawMessage reply = waitForReply();
    ASSERT_NE(reply, nullptr);
    EXPECT_THAT(byteArrays(*reply), ElementsAre("REPLY", "late", ""));
    EXPECT_THAT(byteArrays(*client.call(*makeCall("next"))), ElementsAre("REPLY", "next", ""));
}

TEST_F(IdleEndTest, ServesTheCallAndEndsWhenAnotherHasTheNameByThen) {
    RawPeer other;
    beforeBusCall("RequestName", [&other] {
        EXPECT_TRUE(other.waitForNameOwner(CONNECTION_NAME, false));
        EXPECT_EQ(other.requestName(CONNECTION_NAME), DBUS_REQUEST_NAME_REPLY_PRIMARY_OWNER);
    });
    startAndSendAtTheEnd(makeCall("late"));
    const RawMessage reply = waitForReply();
    ASSERT_NE(reply, nullptr);
    EXPECT_THAT(byteArrays(*reply), ElementsAre("REPLY", "late", ""));
    waitForEnd();
    std::vector<std::string> last = messages();
    last.erase(last.begin(), last.end() - 3);
    EXPECT_THAT(last, ElementsAre("INF Another connection has the name {org.kovan.test.object} by now.",
                                  std::string("INF ") + IDLE, std::string("INF ") + EXIT));
    EXPECT_TRUE(other.waitForNameOwner(CONNECTION_NAME, true));
}

TEST_F(IdleEndTest, AnswersAnIntrospectionAndEnds) {
    startAndSendAtTheEnd(makeIntrospection());
    const RawMessage reply = waitForReply();
    ASSERT_NE(reply, nullptr);
    EXPECT_STREQ(dbus_message_get_signature(reply.get()), "s");
    waitForEnd();
    EXPECT_EQ(FakeKovan::count("INF", IDLE), 1);
    EXPECT_EQ(FakeKovan::count("INF", AGAIN), 0);
}

TEST_F(IdleEndTest, WritesAnAnswerOfAMegabyteOutBeforeItEnds) {
    class BigHandler : public FakeHandler {
        void introspect(std::stringstream& out) override { out << std::string(1 << 20, 'x'); }
    };
    handler = std::make_shared<BigHandler>();
    adapter = createAdapter(handler);
    startAndSendAtTheEnd(makeIntrospection());
    const RawMessage reply = waitForReply();
    ASSERT_NE(reply, nullptr);
    EXPECT_STREQ(dbus_message_get_signature(reply.get()), "s");
}

// Clients of an adapter that is started again whenever it has ended, as the bus does it.
class IdleEndTraffic {
public:
    // Looks without being a client, all the time: so the adapter keeps waking up, and most ends meet a call.
    void look(const std::atomic<bool>& stop) {
        RawPeer client;
        while (!stop) {
            call(client, makeIntrospection());
        }
    }

    // Comes, calls, calls again and leaves, until `stop`.
    void run(unsigned int seed, const std::atomic<bool>& stop) {
        std::minstd_rand random(seed);
        while (!stop) {
            RawPeer client;
            const std::string first = call(client, makeCall("any"));
            if (!first.empty() && call(client, makeCall("any")) != first) {
                ++droppedSessions;
            }
            client.disconnect();
            std::this_thread::sleep_for(std::chrono::milliseconds(random() % 60));
        }
    }

    std::atomic<int> servedCalls{0};
    std::atomic<int> lostCalls{0};
    std::atomic<int> droppedSessions{0};

private:
    // Who has served the call; empty when nobody has the name.
    std::string call(RawPeer& client, RawMessage message) {
        const RawMessage reply = client.call(*message);
        const char* const error = reply ? dbus_message_get_error_name(reply.get()) : DBUS_ERROR_NO_REPLY;
        if (error == nullptr) {
            ++servedCalls;
            return dbus_message_get_sender(reply.get());
        }
        if (error != std::string(DBUS_ERROR_SERVICE_UNKNOWN)) {
            ++lostCalls;
        }
        return "";
    }
};

TEST_F(CDBUSAdapterLoopTest, LosesNoCallAndNoSessionIn200IdleEndsUnderTraffic) {
    setClockSpeed(100); // idle for 10 ms
    IdleEndTraffic traffic;
    std::atomic<bool> stopTraffic{false};
    std::vector<std::thread> clients;
    clients.emplace_back([&traffic, &stopTraffic] { traffic.look(stopTraffic); });
    for (unsigned int client = 1; client <= 3; ++client) {
        clients.emplace_back([&traffic, &stopTraffic, client] { traffic.run(client, stopTraffic); });
    }
    for (int end = 0; end < 200; ++end) {
        adapter = createAdapter(handler);
        listen({1, 1, 0, nullptr});
    }
    stopTraffic = true;
    for (std::thread& client : clients) {
        client.join();
    }
    setClockSpeed(1);
    EXPECT_EQ(FakeKovan::count("INF", IDLE), 200);
    EXPECT_GT(traffic.servedCalls, 200);
    EXPECT_EQ(traffic.lostCalls, 0);
    EXPECT_EQ(traffic.droppedSessions, 0);
    EXPECT_GT(FakeKovan::countContaining("INF", "A call has come in while the name"), 0);
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
    ASSERT_TRUE(waitUntil([this] { return !pings().empty(); }));
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
    RawPeer client;
    client.call(*makeCall("any"));
    const Clock::time_point lastButOne = Clock::now();
    client.call(*makeCall("any")); // the pass of the call before has ended when this one is answered
    client.call(*makeCall("any"));
    adapter->deactivate();
    const std::chrono::duration<double> since = Clock::now() - lastButOne;
    const std::string text = watchdogMessages().back();
    const std::string armedFor = text.substr(text.find("destroyed after ") + 16);
    EXPECT_LT(std::stod(armedFor), since.count()) << text;
}

} // namespace
} // namespace DAX::Tests
