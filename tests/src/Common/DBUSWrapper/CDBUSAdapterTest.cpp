#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <future>
#include <limits>

#include <boost/thread/thread.hpp>
#include <unistd.h>

#include "AdapterFixture.h"
#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "LibraryFaults.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/KeptInterruption.h"
#include "support/Event.h"
#include "support/ProcessDeath.h"
#include "support/Thrown.h"
#include "support/WaitUntil.h"

namespace DAX::Tests {
namespace {

using namespace Common::DBUSWrapper::DBUSWrapperExceptions;
using Common::DBUSWrapper::IDBUSAdapter;
using Common::DBUSWrapper::IDBUSWrapper;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

const char REGISTERING[] = "INF Registering new unique name on DBUS: {org.kovan.test.object} for connection:{:1.0}. "
                           "Object path:/org/kovan/test/object";
const char STARTED[] = "INF DBUSAdapter adapter thread started. Adapter object:{/org/kovan/test/object}";
const char ACQUIRED[] = "INF DBUSAdapter - NameAcquired signal received from connection:{org.freedesktop.DBus}. "
                        "Adapter object path:{/org/kovan/test/object}";
const char EXIT[] = "INF DBUSAdapter thread method exit. Adapter object:{/org/kovan/test/object}";

class CDBUSAdapterTest : public AdapterFixture {
protected:
    void activate() { adapter->activate(1, CONNECTION_NAME); }
    void listenForGood() { listen(Run()); }
};

TEST_F(CDBUSAdapterTest, GivesItselfToTheHandlerAtConstruction) {
    EXPECT_NE(handler->subscriber, nullptr);
}

// --- listenDBUS ---------------------------------------------------------------------------------------------------

TEST_F(CDBUSAdapterTest, TellsItsRunFromTheNameToTheExit) {
    start();
    ASSERT_TRUE(FakeKovan::waitForMessage("INF", "NameAcquired args: name='org.kovan.test.object'"));
    stop();
    EXPECT_THAT(messages(), ElementsAre(REGISTERING, STARTED, ACQUIRED, "INF NameAcquired args: name=':1.0'", ACQUIRED,
                                        "INF NameAcquired args: name='org.kovan.test.object'", EXIT));
}

TEST_F(CDBUSAdapterTest, GivesItsNameBackWithItsEnd) {
    start();
    stop();
    EXPECT_EQ(RawPeer().requestName(CONNECTION_NAME), DBUS_REQUEST_NAME_REPLY_PRIMARY_OWNER);
}

TEST_F(CDBUSAdapterTest, CannotListenTwice) {
    start();
    stop();
    EXPECT_ASSERTION_MSG(listenForGood(), "m_activated == false", "Cannot reuse the same DBUS adapter.");
}

TEST_F(CDBUSAdapterTest, CannotBeActivatedAfterListening) {
    start();
    stop();
    EXPECT_ASSERTION_MSG(activate(), "m_activated == false", "Cannot reuse the same DBUS adapter.");
}

TEST_F(CDBUSAdapterTest, RefusesAStopIntervalOfZero) {
    Run run;
    run.stopInterval = 0;
    EXPECT_ASSERTION_MSG(listen(run), "stopConditionIntervalInSeconds > 0",
                         "stopConditionIntervalInSeconds must be greater than 0.");
}

TEST_F(CDBUSAdapterTest, RefusesToPingMoreOftenThanItWakes) {
    Run run{3, 0, 2, [] {}};
    EXPECT_ASSERTION_MSG(listen(run), "pingIntervalInSeconds >= stopConditionIntervalInSeconds",
                         "It is impossible to call pingFunction more often than every stopConditionIntervalInSeconds.");
}

TEST_F(CDBUSAdapterTest, TakesAnyPingIntervalWithoutAPingFunction) {
    start({3, 0, 2, nullptr});
}

TEST_F(CDBUSAdapterTest, ThrowsWithoutABusAndSaysWhereItPassed) {
    bus.stop();
    try {
        listenForGood();
        FAIL() << "no exception";
    } catch (const ErrorConnectingToDBUS& exception) {
        EXPECT_THAT(*boost::get_error_info<Common::Utils::errinfo_stream_text>(exception),
                    HasSubstr("Failed to connect to socket"));
        EXPECT_THAT(*boost::get_error_info<Common::Utils::errinfo_rethrows>(exception),
                    testing::AllOf(HasSubstr("CDBUSAdapter::threadMethod("), HasSubstr("CDBUSAdapter.cpp:")));
    }
}

TEST_F(CDBUSAdapterTest, ThrowsWhenAnotherHoldsTheName) {
    RawPeer other;
    other.requestName(CONNECTION_NAME);
    EXPECT_EQ(thrownStreamText<ERRORRegisteringObject>([this] { listenForGood(); }), "Name is already registered");
    EXPECT_THAT(messages(),
                ElementsAre(StartsWith("INF Registering new unique name on DBUS: {org.kovan.test.object}"),
                            "ERR Error Registering new unique name on DBUS: {org.kovan.test.object}. Name is already "
                            "registered"));
}

TEST_F(CDBUSAdapterTest, TakesTheNameFromAHolderThatAllowsIt) {
    RawPeer other;
    other.requestName(CONNECTION_NAME, DBUS_NAME_FLAG_ALLOW_REPLACEMENT | DBUS_NAME_FLAG_DO_NOT_QUEUE);
    start();
    EXPECT_THAT(byteArrays(*other.call(*makeCall("any"))), ElementsAre("REPLY", "any", ""));
}

TEST_F(CDBUSAdapterTest, ThrowsTheErrorOfTheBusForANameThatNobodyCanHave) {
    const std::string text = thrownStreamText<ERRORRegisteringObject>(
        [this] { adapter->listenDBUS(1, 0, 0, boost::none, boost::none, ":1.77"); });
    EXPECT_THAT(text, HasSubstr(":1.77"));
    EXPECT_EQ(FakeKovan::count("FTL", "Error Registering new unique name on DBUS: {:1.77}"), 1);
}

TEST_F(CDBUSAdapterTest, ServesTheSessionBusForTheTypeZero) {
    PrivateBus session(PrivateBus::Kind::SESSION);
    adapter = IDBUSAdapter::createDefaultAdapterFactory()->create(IDBUSWrapper::SESSION, OBJECT_PATH, handler, false);
    start();
    RawPeer client(DBUS_BUS_SESSION);
    EXPECT_THAT(byteArrays(*client.call(*makeCall("any"))), ElementsAre("REPLY", "any", ""));
    EXPECT_EQ(RawPeer(DBUS_BUS_SYSTEM).requestName(CONNECTION_NAME), DBUS_REQUEST_NAME_REPLY_PRIMARY_OWNER);
    session.stop();
}

// --- activate and deactivate --------------------------------------------------------------------------------------

TEST_F(CDBUSAdapterTest, ServesOnAThreadOfItsOwnAfterActivation) {
    activate();
    EXPECT_THAT(byteArrays(*RawPeer().call(*makeCall("any"))), ElementsAre("REPLY", "any", ""));
}

TEST_F(CDBUSAdapterTest, TellsOfActivationAndDeactivation) {
    activate();
    ASSERT_TRUE(FakeKovan::waitForMessage("INF", "NameAcquired args: name='org.kovan.test.object'"));
    adapter->deactivate();
    EXPECT_THAT(messages(),
                ElementsAre("INF Activating DBUS adapter for object: {/org/kovan/test/object}", REGISTERING, STARTED,
                            ACQUIRED, "INF NameAcquired args: name=':1.0'", ACQUIRED,
                            "INF NameAcquired args: name='org.kovan.test.object'",
                            "DBG CDBUSAdapter::deactivate() called.",
                            "INF DBUSAdapter thread interrupted. Adapter object: {/org/kovan/test/object}", EXIT));
}

TEST_F(CDBUSAdapterTest, DoesNothingWhenDeactivatedWithoutAThread) {
    adapter->deactivate();
    EXPECT_THAT(messages(), ElementsAre("DBG CDBUSAdapter::deactivate() called."));
}

TEST_F(CDBUSAdapterTest, CannotBeActivatedTwice) {
    activate();
    adapter->deactivate();
    EXPECT_ASSERTION_MSG(activate(), "m_activated == false", "Cannot reuse the same DBUS adapter.");
}

TEST_F(CDBUSAdapterTest, ThrowsOutOfActivationWhatStoodInTheWayOfTheName) {
    RawPeer other;
    other.requestName(CONNECTION_NAME);
    EXPECT_EQ(thrownStreamText<ERRORRegisteringObject>([this] { activate(); }), "Name is already registered");
    EXPECT_EQ(FakeKovan::countContaining("INF", "Thread cannot be started."), 0);
}

TEST_F(CDBUSAdapterTest, ThrowsOutOfActivationThatThereIsNoBus) {
    bus.stop();
    EXPECT_THAT(thrownStreamText<ErrorConnectingToDBUS>([this] { activate(); }),
                HasSubstr("Failed to connect to socket"));
}

TEST_F(CDBUSAdapterTest, CanBeActivatedAfterAFailedActivation) {
    auto other = std::make_unique<RawPeer>();
    other->requestName(CONNECTION_NAME);
    EXPECT_THROW(activate(), ERRORRegisteringObject);
    other.reset();
    ASSERT_TRUE(RawPeer().waitForNameOwner(CONNECTION_NAME, false));
    activate();
    EXPECT_THAT(byteArrays(*RawPeer().call(*makeCall("any"))), ElementsAre("REPLY", "any", ""));
}

TEST_F(CDBUSAdapterTest, SaysWhenNoThreadCanBeStarted) {
    failNext("pthread_create");
    EXPECT_THROW(activate(), DBUSWrapperException);
    EXPECT_THAT(messages(), ElementsAre("INF Activating DBUS adapter for object: {/org/kovan/test/object}",
                                        "INF Error activating DBUS adapter for object: {/org/kovan/test/object}. "
                                        "Thread cannot be started."));
}

TEST_F(CDBUSAdapterTest, RefusesANegativeIntervalAsItRefusesZero) {
    EXPECT_ASSERTION_MSG(adapter->activate(-1, CONNECTION_NAME), "stopConditionIntervalInSeconds > 0",
                         "stopConditionIntervalInSeconds must be greater than 0.");
}

TEST_F(CDBUSAdapterTest, TakesTheLongestInterval) {
    adapter->activate(std::numeric_limits<int>::max(), CONNECTION_NAME);
    EXPECT_THAT(byteArrays(*RawPeer().call(*makeCall("any"))), ElementsAre("REPLY", "any", ""));
    const auto end = std::async(std::launch::async, [this] { adapter->deactivate(); });
    while (end.wait_for(std::chrono::milliseconds(10)) != std::future_status::ready) {
        RawPeer().send(*makeCall("any")); // wakes the loop, which looks for its end only then
    }
}

TEST_F(CDBUSAdapterTest, SaysWhenThereIsNoMemoryForTheThread) {
    activate();
    const std::size_t threadSize = lastAllocationSize(); // it is what an activation needs last
    adapter = createAdapter(handler);
    FakeKovan::forgetRecords();
    failAllocationOf(threadSize);
    EXPECT_EQ(thrownStreamText<DBUSWrapperException>([this] { activate(); }), "std::bad_alloc");
    EXPECT_THAT(messages(), ElementsAre("INF Activating DBUS adapter for object: {/org/kovan/test/object}",
                                        "INF Error activating DBUS adapter for object: {/org/kovan/test/object}. "
                                        "Thread cannot be started."));
}

TEST_F(CDBUSAdapterTest, ThrowsOutOfActivationThatTheGuardsCannotBeMade) {
    FakeKovan::setProduction(false);
    beforeBusCall("AddMatch", [] { failNext("pthread_create"); }); // on the adapter's thread
    EXPECT_THROW(activate(), boost::thread_resource_error);
    EXPECT_EQ(RawPeer().requestName(CONNECTION_NAME), DBUS_REQUEST_NAME_REPLY_PRIMARY_OWNER);
}

TEST_F(CDBUSAdapterTest, LogsAnInterruptedActivation) {
    kill(bus.pid(), SIGSTOP); // the loop's thread waits for the bus, and the activation for it
    boost::thread thread([this] { activate(); });
    thread.interrupt();
    thread.join();
    EXPECT_EQ(
        FakeKovan::count("INF", "DBUSAdapter activate method interrupted. Adapter object:{/org/kovan/test/object}"), 1);
    kill(bus.pid(), SIGCONT);
}

TEST_F(CDBUSAdapterTest, DoesNotComeBackToAnAdapterWhoseActivationWasInterruptedBeforeItWasConnected) {
    RawPeer observer;
    kill(bus.pid(), SIGSTOP);
    boost::thread thread([this] { activate(); });
    thread.interrupt();
    thread.join();
    adapter.reset();
    kill(bus.pid(), SIGCONT);
    // Its thread gets a connection some time, and lets go of it: one number is missing among those of the peers here.
    std::string missing;
    int peers = 0;
    ASSERT_TRUE(waitUntil([&] {
        missing = ":1." + std::to_string(++peers);
        return RawPeer().name() != missing;
    }));
    ASSERT_TRUE(observer.waitForNameOwner(missing, false));
    EXPECT_EQ(FakeKovan::countContaining("INF", "Registering new unique name on DBUS"), 0);
}

TEST_F(CDBUSAdapterTest, EndsTheThreadOfAnActivationThatIsInterruptedWhileItAsksForTheName) {
    Event asking;
    beforeBusCall("AddMatch", [this, &asking] {
        kill(bus.pid(), SIGSTOP);
        asking.happen();
    });
    boost::thread thread([this] { activate(); });
    ASSERT_TRUE(asking.wait());
    thread.interrupt();
    ASSERT_TRUE(FakeKovan::waitForMessage("INF", "DBUSAdapter activate method interrupted."));
    kill(bus.pid(), SIGCONT);
    thread.join();
    EXPECT_EQ(messages().back(), EXIT);
    activate();
    EXPECT_THAT(byteArrays(*RawPeer().call(*makeCall("any"))), ElementsAre("REPLY", "any", ""));
}

TEST_F(CDBUSAdapterTest, WaitsForItsThreadAlthoughTheCallerIsInterrupted) {
    Event entered;
    Event leave;
    handler->onRequest = [&](const FakeHandler::Request&, std::stringstream&, std::string&) {
        entered.happen();
        leave.wait();
        return true;
    };
    activate();
    RawPeer client;
    client.send(*makeCall("any"));
    ASSERT_TRUE(entered.wait());
    boost::thread thread([this] {
        adapter.reset();
        EXPECT_TRUE(boost::this_thread::interruption_requested()); // it waits until the adapter is gone
    });
    thread.interrupt();
    ASSERT_TRUE(FakeKovan::waitForMessage("DBG", "CDBUSAdapter::deactivate() called."));
    leave.happen();
    thread.join();
    EXPECT_EQ(messages().back(), EXIT);
}

// --- An interruption that is met by the handler -------------------------------------------------------------------

class InterruptedHandlerTest : public CDBUSAdapterTest {
protected:
    // Waits where it can be interrupted, and lets nothing out, as a handler has to.
    void waitForInterruption() {
        entered.happen();
        try {
            boost::this_thread::sleep_for(boost::chrono::hours(1));
        } catch (...) {
            Common::Utils::KeptInterruption::keep();
        }
    }

    // False when the thread has not ended within the usual bound.
    bool deactivateInTime() {
        EXPECT_TRUE(entered.wait());
        m_deactivation = boost::thread([this] { adapter->deactivate(); });
        return m_deactivation.try_join_for(boost::chrono::seconds(20));
    }

    Event entered;

private:
    boost::thread m_deactivation;
};

TEST_F(InterruptedHandlerTest, AnswersTheCallAndEnds) {
    handler->onRequest = [this](const FakeHandler::Request&, std::stringstream&, std::string& exceptionName) {
        waitForInterruption();
        exceptionName = "interrupted";
        return false;
    };
    activate();
    RawPeer client;
    const std::uint32_t serial = client.send(*makeCall("any"));
    ASSERT_TRUE(deactivateInTime());
    const RawMessage reply = client.waitForReply(serial);
    ASSERT_NE(reply, nullptr);
    EXPECT_THAT(byteArrays(*reply), ElementsAre("EXCEPTION", "interrupted", ""));
    EXPECT_EQ(FakeKovan::count("INF", "DBUSAdapter thread interrupted. Adapter object: {/org/kovan/test/object}"), 1);
}

TEST_F(InterruptedHandlerTest, EndsWhenItIsInterruptedAtTheDeathOfAClient) {
    handler->onRequest = [this](const FakeHandler::Request& request, std::stringstream&, std::string&) {
        handler->subscriber->subscribeForConnectionCloseEvent(request.sender);
        return true;
    };
    handler->onDisconnected = [this](const std::string&) {
        entered.happen();
        boost::this_thread::sleep_for(boost::chrono::hours(1));
    };
    activate();
    RawPeer().call(*makeCall("any"));
    ASSERT_TRUE(deactivateInTime());
    EXPECT_EQ(FakeKovan::countContaining("FTL", "Unknown error while calling clientDisconnected()"), 1);
    EXPECT_EQ(FakeKovan::count("INF", "DBUSAdapter thread interrupted. Adapter object: {/org/kovan/test/object}"), 1);
}

// The interruption stays with the thread as one does that nobody has met: whoever waits for the thread waits for no
// more than the next loop.
TEST_F(InterruptedHandlerTest, EndsTheNextLoopOfItsThreadWhenTheFirstEndsForAnotherReason) {
    handler->onRequest = [this](const FakeHandler::Request&, std::stringstream&, std::string&) {
        waitForInterruption();
        stopWanted = true;
        return true;
    };
    boost::thread thread([this] {
        listenForGood();
        stopWanted = false;
        adapter = createAdapter(handler);
        listenForGood();
    });
    ASSERT_TRUE(FakeKovan::waitForMessage("INF", "DBUSAdapter adapter thread started."));
    RawPeer client;
    client.send(*makeCall("any"));
    EXPECT_TRUE(entered.wait());
    thread.interrupt();
    EXPECT_TRUE(thread.try_join_for(boost::chrono::seconds(20)));
    EXPECT_EQ(FakeKovan::count("INF", "DBUSAdapter thread interrupted. Adapter object: {/org/kovan/test/object}"), 1);
    EXPECT_EQ(FakeKovan::count("INF", EXIT + std::strlen("INF ")), 2);
    stopWanted = true; // for a loop that goes on after all
    thread.join();
}

TEST_F(CDBUSAdapterTest, CannotBeDeactivatedByItsOwnThread) {
    handler->onRequest = [this](const FakeHandler::Request&, std::stringstream& out, std::string&) {
        try {
            adapter->deactivate();
        } catch (const boost::thread_exception& exception) {
            out << exception.what();
        }
        return true;
    };
    activate();
    EXPECT_THAT(byteArrays(*RawPeer().call(*makeCall("any"))).at(2), HasSubstr("boost thread: trying joining itself"));
}

// --- The destructor -----------------------------------------------------------------------------------------------

TEST_F(CDBUSAdapterTest, DeactivatesInTheDestructorAndLetsTheHandlerGo) {
    activate();
    ASSERT_TRUE(FakeKovan::waitForMessage("INF", "NameAcquired args: name='org.kovan.test.object'"));
    const std::weak_ptr<FakeHandler> weakHandler = handler;
    handler.reset();
    adapter.reset();
    EXPECT_TRUE(weakHandler.expired());
    std::vector<std::string> last = messages();
    last.erase(last.begin(), last.end() - 4);
    EXPECT_THAT(last,
                ElementsAre("DBG Calling deactivate() in CDBUSAdapter destructor.",
                            "DBG CDBUSAdapter::deactivate() called.",
                            "INF DBUSAdapter thread interrupted. Adapter object: {/org/kovan/test/object}", EXIT));
}

TEST_F(CDBUSAdapterTest, DropsAnExceptionInTheDestructor) {
    handler->onRequest = [this](const FakeHandler::Request&, std::stringstream&, std::string&) -> bool {
        adapter.reset(); // on the adapter's own thread, which cannot be joined
        _exit(FakeKovan::count("DBG", "Exception handled in CDBUSAdapter destructor.") == 1 ? 0 : 1);
    };
    EXPECT_EXIT(
        {
            activate();
            RawPeer().call(*makeCall("any"));
            pause(); // until the adapter's thread ends the process
        },
        testing::ExitedWithCode(0), "");
}

} // namespace
} // namespace DAX::Tests
