#include <stdexcept>

#include "AdapterFixture.h"
#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "LibraryFaults.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "support/Event.h"
#include "support/WaitUntil.h"

namespace DAX::Tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

// Holds whoever passes it, from the first who comes until it is opened.
class Gate {
public:
    void pass() {
        if (!m_reached.happened()) {
            m_reached.happen();
            m_opened.wait();
        }
    }
    bool waitUntilReached() const { return m_reached.wait(); }
    void open() { m_opened.happen(); }

private:
    Event m_reached;
    Event m_opened;
};

class CDBUSAdapterClientsTest : public AdapterFixture {
protected:
    CDBUSAdapterClientsTest() = default;
    explicit CDBUSAdapterClientsTest(const std::map<std::string, unsigned int>& limits) : AdapterFixture(limits) {}

    // What the adapter says of clients, and the handler's notes, from the first client on.
    static std::vector<std::string> journalOfClients() {
        std::vector<std::string> result;
        for (const std::string& entry : FakeKovan::journal()) {
            if (!result.empty() || entry.find("Registering new connection") != std::string::npos) {
                result.push_back(entry);
            }
        }
        return result;
    }

    static std::string received(const std::string& from) {
        return "log INF DBUSAdapter - NameOwnerChanged signal received from connection:{" + from +
               "}. Adapter object path:{/org/kovan/test/object}";
    }

    static std::string args(const std::string& name, const std::string& oldOwner, const std::string& newOwner) {
        return "log INF NameOwnerChanged args: objectName='" + name + "', oldOwner='" + oldOwner + "', newOwner='" +
               newOwner + "'";
    }

    static RawMessage makeNameOwnerChanged(const char* name, const char* oldOwner, const char* newOwner) {
        RawMessage signal = makeSignal("NameOwnerChanged");
        dbus_message_append_args(signal.get(), DBUS_TYPE_STRING, &name, DBUS_TYPE_STRING, &oldOwner, DBUS_TYPE_STRING,
                                 &newOwner, DBUS_TYPE_INVALID);
        return signal;
    }

    // Each request subscribes its sender.
    void subscribeEverySender() {
        handler->onRequest = [this](const FakeHandler::Request& request, std::stringstream&, std::string&) {
            handler->subscriber->subscribeForConnectionCloseEvent(request.sender);
            return true;
        };
    }

    // Calls from a client that leaves the bus. Returns its name.
    static std::string callAndLeave() {
        RawPeer client;
        client.call(*makeCall("any"));
        return client.name();
    }

    // Each request but "hold" subscribes its sender; "hold" keeps the adapter until the gate is open.
    void subscribeEverySenderBehind(Gate& gate) {
        handler->onRequest = [this, &gate](const FakeHandler::Request& request, std::stringstream&, std::string&) {
            if (request.method == "hold") {
                gate.pass();
            } else {
                handler->subscriber->subscribeForConnectionCloseEvent(request.sender);
            }
            return true;
        };
    }

    // Sends calls and leaves; returns when the bus knows of that.
    static std::string sendAndLeave(const std::vector<std::string>& members) {
        RawPeer client;
        const std::string name = client.name();
        for (const std::string& member : members) {
            client.send(*makeCall(member));
        }
        client.disconnect();
        EXPECT_TRUE(RawPeer().waitForNameOwner(name, false));
        return name;
    }

    static std::string subscribed(const std::string& client) {
        return "log INF Subscribed for connection " + client + " close event.";
    }
    static std::string registering(const std::string& client) {
        return "log INF Registering new connection named " + client;
    }
    static std::string disconnecting(const std::string& client) {
        return "log INF Disconnecting dead client: '" + client + "'";
    }
    static std::string unregistering(const std::string& client) {
        return "log INF Unregistering connection named " + client;
    }

    static bool waitForEnd(const std::string& client) {
        return FakeKovan::waitForMessage("INF", "Unregistering connection named " + client);
    }
};

TEST_F(CDBUSAdapterClientsTest, RegistersAClientAtItsFirstCallOnly) {
    start();
    RawPeer client;
    client.call(*makeCall("one"));
    client.call(*makeCall("two"));
    EXPECT_THAT(journalOfClients(),
                ElementsAre("log INF Registering new connection named " + client.name(), "request one", "request two"));
}

TEST_F(CDBUSAdapterClientsTest, ForgetsAClientThatLeavesTheBusWithoutTellingTheHandler) {
    start();
    const std::string client = callAndLeave();
    ASSERT_TRUE(FakeKovan::waitForMessage("INF", "We are now entering idle state."));
    EXPECT_THAT(journalOfClients(), ElementsAre("log INF Registering new connection named " + client, "request any",
                                                received("org.freedesktop.DBus"), args(client, client, ""),
                                                "log INF Disconnecting dead client: '" + client + "'",
                                                "log INF Unregistering connection named " + client,
                                                "log INF We are now entering idle state."));
}

TEST_F(CDBUSAdapterClientsTest, TellsTheHandlerOfTheEndOfTheSubscribedClient) {
    subscribeEverySender();
    start();
    const std::string client = callAndLeave();
    ASSERT_TRUE(FakeKovan::waitForMessage("INF", "We are now entering idle state."));
    EXPECT_THAT(journalOfClients(),
                ElementsAre("log INF Registering new connection named " + client, "request any",
                            "log INF Subscribed for connection " + client + " close event.",
                            received("org.freedesktop.DBus"), args(client, client, ""),
                            "log INF Disconnecting dead client: '" + client + "'", "disconnected " + client,
                            "log INF Unregistering connection named " + client,
                            "log INF We are now entering idle state."));
}

TEST_F(CDBUSAdapterClientsTest, WatchesTheNameOfAClientFromItsFirstCallToItsEnd) {
    takeBusCalls();
    start();
    const std::string rule = "sender=org.freedesktop.DBus,path=/org/freedesktop/DBus,interface=org.freedesktop.DBus,"
                             "member=NameOwnerChanged,type=signal,";
    EXPECT_THAT(takeBusCalls(), ElementsAre("AddMatch " + rule + "arg2=''"));
    const std::string client = callAndLeave();
    ASSERT_TRUE(FakeKovan::waitForMessage("INF", "We are now entering idle state."));
    EXPECT_THAT(takeBusCalls(), ElementsAre("AddMatch " + rule + "arg0=" + client, "NameHasOwner " + client,
                                            "RemoveMatch " + rule + "arg0=" + client));
}

TEST_F(CDBUSAdapterClientsTest, AsksTheBusNothingForACallOfAKnownClient) {
    start();
    RawPeer client;
    client.call(*makeCall("one"));
    takeBusCalls();
    client.call(*makeCall("two"));
    EXPECT_THAT(takeBusCalls(), IsEmpty());
}

TEST_F(CDBUSAdapterClientsTest, NoticesAClientThatLeavesBeforeItsCallIsHandled) {
    Gate gate;
    subscribeEverySenderBehind(gate);
    start();
    RawPeer other;
    other.send(*makeCall("hold"));
    ASSERT_TRUE(gate.waitUntilReached());
    const std::string client = sendAndLeave({"one", "two"});
    gate.open();
    ASSERT_TRUE(waitForEnd(client));
    other.call(*makeIntrospection()); // behind the bus's answer
    EXPECT_THAT(journalOfClients(),
                ElementsAre(registering(other.name()), "request hold", registering(client), "request one",
                            subscribed(client), "request two", subscribed(client), received("org.freedesktop.DBus"),
                            args(client, client, ""), disconnecting(client), "disconnected " + client,
                            unregistering(client)));
}

TEST_F(CDBUSAdapterClientsTest, TellsTheHandlerOfADeathOnceAlthoughItFails) {
    Gate gate;
    subscribeEverySenderBehind(gate);
    handler->onDisconnected = [](const std::string&) { throw std::runtime_error("broken"); };
    start();
    RawPeer other;
    other.send(*makeCall("hold"));
    ASSERT_TRUE(gate.waitUntilReached());
    const std::string client = sendAndLeave({"any"});
    gate.open();
    ASSERT_TRUE(FakeKovan::waitForMessage("FTL", "broken"));
    other.call(*makeIntrospection()); // behind the bus's answer
    EXPECT_THAT(FakeKovan::journal("disconnected"), ElementsAre("disconnected " + client));
}

TEST_F(CDBUSAdapterClientsTest, SaysNothingOfOtherNamesThatVanish) {
    start();
    RawPeer client;
    client.call(*makeCall("any"));
    const std::size_t before = FakeKovan::logLines().size();
    {
        RawPeer stranger;
        stranger.requestName("org.kovan.test.stranger");
    }
    client.call(*makeCall("any"));
    EXPECT_EQ(FakeKovan::logLines().size(), before);
}

TEST_F(CDBUSAdapterClientsTest, IsNotIdleWhileAnotherClientIsLeft) {
    start();
    RawPeer other;
    other.call(*makeCall("any"));
    ASSERT_TRUE(waitForEnd(callAndLeave()));
    other.call(*makeCall("any"));
    EXPECT_EQ(FakeKovan::count("INF", "We are now entering idle state."), 0);
}

TEST_F(CDBUSAdapterClientsTest, RegistersAgainWhoComesBack) {
    start();
    ASSERT_TRUE(waitForEnd(callAndLeave()));
    const std::string second = callAndLeave();
    EXPECT_EQ(FakeKovan::count("INF", "Registering new connection named " + second), 1);
    ASSERT_TRUE(waitForEnd(second));
}

TEST_F(CDBUSAdapterClientsTest, HearsNothingOfConnectionsThatNeverCalled) {
    start();
    RawPeer client;
    client.call(*makeCall("any"));
    RawPeer().send(*makeIntrospection());
    client.call(*makeCall("any"));
    EXPECT_EQ(FakeKovan::countContaining("INF", "NameOwnerChanged"), 0);
}

// --- Subscriptions ------------------------------------------------------------------------------------------------

TEST_F(CDBUSAdapterClientsTest, ReplacesTheSubscription) {
    subscribeEverySender();
    start();
    const std::string first = callAndLeave();
    ASSERT_TRUE(waitForEnd(first));
    const std::string second = callAndLeave();
    ASSERT_TRUE(waitForEnd(second));
    EXPECT_THAT(FakeKovan::journal("disconnected"), ElementsAre("disconnected " + first, "disconnected " + second));
}

TEST_F(CDBUSAdapterClientsTest, ReportsTheLastSubscribedClientOnly) {
    subscribeEverySender();
    start();
    auto first = std::make_unique<RawPeer>();
    const std::string firstName = first->name();
    first->call(*makeCall("any"));
    RawPeer second;
    second.call(*makeCall("any"));
    first.reset();
    ASSERT_TRUE(waitForEnd(firstName));
    EXPECT_THAT(FakeKovan::journal("disconnected"), IsEmpty());
}

TEST_F(CDBUSAdapterClientsTest, RefusesToSubscribeForAStranger) {
    handler->subscriber->subscribeForConnectionCloseEvent(":1.99");
    EXPECT_THAT(messages(), ElementsAre("INF Name :1.99 does not exist in clients list."));
}

TEST_F(CDBUSAdapterClientsTest, WarnsOfUnsubscribingWithoutASubscription) {
    handler->subscriber->unsubscribeFromConnectionCloseEvent();
    EXPECT_THAT(messages(), ElementsAre("WRN There is no peer connection name registered."));
}

TEST_F(CDBUSAdapterClientsTest, TakesAnEmptyNameForUnsubscribing) {
    handler->subscriber->subscribeForConnectionCloseEvent("");
    EXPECT_THAT(messages(), ElementsAre("WRN There is no peer connection name registered."));
}

TEST_F(CDBUSAdapterClientsTest, DoesNotReportAnUnsubscribedClient) {
    handler->onRequest = [this](const FakeHandler::Request& request, std::stringstream&, std::string&) {
        handler->subscriber->subscribeForConnectionCloseEvent(request.sender);
        handler->subscriber->unsubscribeFromConnectionCloseEvent();
        return true;
    };
    start();
    const std::string client = callAndLeave();
    ASSERT_TRUE(waitForEnd(client));
    EXPECT_EQ(FakeKovan::count("INF", "Unsubscribed for connection " + client + " close event."), 1);
    EXPECT_THAT(FakeKovan::journal("disconnected"), IsEmpty());
}

// --- Failures of the handler --------------------------------------------------------------------------------------

TEST_F(CDBUSAdapterClientsTest, KeepsTheClientWhenTheHandlerFailsWithAnErrorOfTheWrapper) {
    subscribeEverySender();
    handler->onDisconnected = [](const std::string&) {
        DAX_THROW(Common::DBUSWrapper::DBUSWrapperExceptions::UnknownMethodException(), "broken");
    };
    start();
    const std::string client = callAndLeave();
    ASSERT_TRUE(FakeKovan::waitForMessage("ERR", "broken"));
    stop();
    EXPECT_THAT(FakeKovan::messages("ERR"),
                ElementsAre(StartsWith("DBUSWrapperException while calling clientDisconnected() in adapter object: "
                                       "/org/kovan/test/object - ignoring. Exception: ")));
    EXPECT_EQ(FakeKovan::count("INF", "Unregistering connection named " + client), 0);
}

TEST_F(CDBUSAdapterClientsTest, KeepsTheClientWhenTheHandlerFailsOtherwise) {
    subscribeEverySender();
    handler->onDisconnected = [](const std::string&) { throw std::runtime_error("broken"); };
    start();
    const std::string client = callAndLeave();
    ASSERT_TRUE(FakeKovan::waitForMessage("FTL", "broken"));
    stop();
    EXPECT_THAT(FakeKovan::messages("FTL"),
                ElementsAre(StartsWith("Unknown error while calling clientDisconnected() in adapter object: "
                                       "/org/kovan/test/object - ignoring. Exception: ")));
    EXPECT_EQ(FakeKovan::count("INF", "Unregistering connection named " + client), 0);
}

TEST_F(CDBUSAdapterClientsTest, IsNeverIdleAgainWhenTheHandlerFailed) {
    subscribeEverySender();
    handler->onDisconnected = [](const std::string&) { throw std::runtime_error("broken"); };
    start();
    callAndLeave();
    ASSERT_TRUE(FakeKovan::waitForMessage("FTL", "broken"));
    handler->onRequest = nullptr;
    ASSERT_TRUE(waitForEnd(callAndLeave()));
    stop();
    EXPECT_EQ(FakeKovan::count("INF", "We are now entering idle state."), 0);
}

// --- Signals of other kinds ---------------------------------------------------------------------------------------

TEST_F(CDBUSAdapterClientsTest, PassesOnANameOwnerChangeWhileThereAreNoClients) {
    start();
    RawPeer peer;
    peer.send(*makeNameOwnerChanged(":1.99", ":1.99", ""));
    peer.call(*makeIntrospection());
    EXPECT_EQ(FakeKovan::countContaining("INF", "NameOwnerChanged"), 0);
    // It reaches the object like any other signal.
    EXPECT_EQ(FakeKovan::count("INF", "Registering new connection named " + peer.name()), 1);
}

TEST_F(CDBUSAdapterClientsTest, IgnoresANameOwnerChangeOfAStranger) {
    start();
    RawPeer client;
    client.call(*makeCall("any"));
    client.send(*makeNameOwnerChanged(":1.99", ":1.99", ""));
    client.call(*makeIntrospection());
    EXPECT_THAT(journalOfClients(), ElementsAre("log INF Registering new connection named " + client.name(),
                                                "request any", received(client.name()), args(":1.99", ":1.99", ""),
                                                "log INF   -- Ignoring NameOwnerChanged signal."));
}

TEST_F(CDBUSAdapterClientsTest, IgnoresADeathThatAnotherThanTheBusTells) {
    subscribeEverySender();
    start();
    RawPeer client;
    const std::string name = client.name();
    client.call(*makeCall("any"));
    RawPeer forger;
    forger.send(*makeNameOwnerChanged(name.c_str(), name.c_str(), ""));
    forger.call(*makeIntrospection());
    // The signal goes on to the object like any other one, which refuses its arguments.
    EXPECT_THAT(journalOfClients(),
                ElementsAre(registering(name), "request any", subscribed(name), received(forger.name()),
                            args(name, name, ""), "log INF   -- Ignoring NameOwnerChanged signal.",
                            registering(forger.name())));
    EXPECT_THAT(byteArrays(*client.call(*makeCall("next"))), ElementsAre("REPLY", "next", ""));
}

TEST_F(CDBUSAdapterClientsTest, LosesNothingByForgedSignalsOfTheBus) {
    subscribeEverySender();
    start();
    RawPeer client;
    client.call(*makeCall("any"));
    RawPeer forger;
    const char* const name = CONNECTION_NAME;
    for (const char* member : {"NameAcquired", "NameLost", "Disconnected"}) {
        RawMessage signal(dbus_message_new_signal(DBUS_PATH_DBUS, DBUS_INTERFACE_DBUS, member));
        dbus_message_set_destination(signal.get(), CONNECTION_NAME);
        dbus_message_append_args(signal.get(), DBUS_TYPE_STRING, &name, DBUS_TYPE_INVALID);
        forger.send(*signal);
    }
    forger.call(*makeIntrospection());
    EXPECT_THAT(byteArrays(*client.call(*makeCall("next"))), ElementsAre("REPLY", "next", ""));
    EXPECT_THAT(FakeKovan::journal("disconnected"), IsEmpty());
    EXPECT_EQ(FakeKovan::countContaining("INF", "Unregistering connection named"), 0);
}

TEST_F(CDBUSAdapterClientsTest, LogsANameOwnerChangeThatCannotBeRead) {
    start();
    RawPeer client;
    client.call(*makeCall("any"));
    client.send(*makeSignal("NameOwnerChanged"));
    client.call(*makeIntrospection());
    EXPECT_EQ(FakeKovan::countContaining("INF", "NameOwnerChanged error: "), 1);
    EXPECT_THAT(FakeKovan::messages("ERR"),
                ElementsAre(StartsWith("DBUS error while handling message in adapter object: /org/kovan/test/object. "
                                       "Exception: ")));
    EXPECT_EQ(handler->requests().size(), 1U); // the signal counts as handled
}

TEST_F(CDBUSAdapterClientsTest, LogsTheNamesThatItAcquires) {
    start();
    ASSERT_TRUE(FakeKovan::waitForMessage("INF", "NameAcquired args: name='org.kovan.test.object'"));
    EXPECT_EQ(FakeKovan::count("INF", "DBUSAdapter - NameAcquired signal received from connection:"
                                      "{org.freedesktop.DBus}. Adapter object path:{/org/kovan/test/object}"),
              2);
}

TEST_F(CDBUSAdapterClientsTest, LogsANameAcquisitionThatCannotBeRead) {
    start();
    RawPeer peer;
    peer.send(*makeSignal("NameAcquired"));
    peer.call(*makeIntrospection());
    EXPECT_EQ(FakeKovan::countContaining("INF", "NameOwnerChanged error: "), 1);
    EXPECT_THAT(FakeKovan::messages("ERR"),
                ElementsAre(StartsWith("DBUS error while handling message in adapter object: /org/kovan/test/object. "
                                       "Exception: ")));
    EXPECT_THAT(handler->requests(), IsEmpty());
}

// --- A bus that refuses match rules -------------------------------------------------------------------------------

const char REFUSAL[] = "Connection \":1.0\" is not allowed to add more match rules (increase limits in configuration "
                       "file if required; max_match_rules_per_connection=";

class OneRuleTest : public CDBUSAdapterClientsTest {
protected:
    OneRuleTest() : CDBUSAdapterClientsTest({{"max_match_rules_per_connection", 1}}) {}
};

TEST_F(OneRuleTest, NoticesEveryDeathByTheRuleForAll) {
    start();
    const std::string first = callAndLeave();
    ASSERT_TRUE(waitForEnd(first));
    const std::string second = callAndLeave();
    ASSERT_TRUE(waitForEnd(second));
    EXPECT_TRUE(waitUntil([] { return FakeKovan::count("INF", "We are now entering idle state.") == 2; }));
    EXPECT_THAT(FakeKovan::messages("WRN"), ElementsAre("The bus refuses the match rule for client " + first + ": " +
                                                        REFUSAL + "1). Further refusals are not logged."));
}

class NoRuleTest : public CDBUSAdapterClientsTest {
protected:
    NoRuleTest() : CDBUSAdapterClientsTest({{"max_match_rules_per_connection", 0}}) {}
};

TEST_F(NoRuleTest, TakesAClientForDeadThatIsGoneWhenTheBusIsAsked) {
    Gate gate;
    subscribeEverySenderBehind(gate);
    start();
    RawPeer other;
    other.send(*makeCall("hold"));
    ASSERT_TRUE(gate.waitUntilReached());
    const std::string client = sendAndLeave({"one", "two"});
    gate.open();
    ASSERT_TRUE(waitForEnd(client));
    EXPECT_THAT(FakeKovan::messages("WRN"),
                ElementsAre("The bus refuses the match rule for vanishing names: " +
                            (REFUSAL + std::string("0). Further refusals are not logged."))));
    std::vector<std::string> journal = journalOfClients();
    EXPECT_THAT(journal, ElementsAre(registering(other.name()), "request hold", registering(client), "request one",
                                     subscribed(client), "request two", subscribed(client), disconnecting(client),
                                     "disconnected " + client, unregistering(client)));
}

TEST_F(CDBUSAdapterClientsTest, HoldsAThousandClients) {
    start();
    std::vector<RawPeer> clients(1000);
    for (RawPeer& client : clients) {
        client.send(*makeCall("any"));
    }
    for (RawPeer& client : clients) {
        client.call(*makeCall("any"));
    }
    EXPECT_EQ(FakeKovan::countContaining("INF", "Registering new connection named"), 1000);
    clients.clear();
    ASSERT_TRUE(FakeKovan::waitForMessage("INF", "We are now entering idle state."));
    EXPECT_EQ(FakeKovan::countContaining("INF", "Unregistering connection named"), 1000);
}

} // namespace
} // namespace DAX::Tests
