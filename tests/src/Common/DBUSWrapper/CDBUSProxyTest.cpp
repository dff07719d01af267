#include <algorithm>
#include <future>
#include <limits>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "Common/DBUSWrapper/IDBUSProxy.h"
#include "LibraryFaults.h"
#include "ProxyFixture.h"
#include "support/FakeKovan.h"

namespace DAX::Tests {
namespace {

using namespace Common::DBUSWrapper::DBUSWrapperExceptions;
using Common::DBUSWrapper::IDBUSProxy;
using Common::DBUSWrapper::IDBUSWrapper;
using testing::AllOf;
using testing::ElementsAre;
using testing::Gt;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Le;

class CDBUSProxyTest : public ProxyFixture {};

// --- Construction -------------------------------------------------------------------------------------------------

TEST_F(CDBUSProxyTest, LogsTheConnectionThatItOpens) {
    createProxy();
    EXPECT_THAT(FakeKovan::messages(),
                ElementsAre("New DBUSProxy for object: /org/kovan/test/remote, interface: org.kovan.test.iremote. "
                            "Created connection: :1.0"));
}

TEST_F(CDBUSProxyTest, HasAConnectionOfItsOwn) {
    const auto first = createProxy();
    const auto second = createProxy();
    EXPECT_EQ(first->getDBUSDebugConnectionId(), ":1.0");
    EXPECT_EQ(second->getDBUSDebugConnectionId(), ":1.1");
}

TEST_F(CDBUSProxyTest, DrawsItsIdFromASequenceThatIsTheSameInEveryProcess) {
    std::mt19937 generator;
    std::vector<std::string> sequence;
    for (int i = 0; i < 1000; ++i) {
        sequence.push_back("Proxy-" + std::to_string(std::uniform_int_distribution<int>(0, 100000)(generator)));
    }
    const std::vector<std::string> ids = {createProxy()->getProxyUniqueId(), createProxy()->getProxyUniqueId(),
                                          createProxy()->getProxyUniqueId()};
    EXPECT_NE(std::search(sequence.begin(), sequence.end(), ids.begin(), ids.end()), sequence.end());
}

TEST_F(CDBUSProxyTest, ThreadsThatMakeProxiesAtOnceShareTheSequenceOfIds) {
    std::vector<std::future<std::vector<std::string>>> threads;
    for (int i = 0; i < 8; ++i) {
        threads.push_back(std::async(std::launch::async, [] {
            std::vector<std::string> ids;
            for (int j = 0; j < 25; ++j) {
                ids.push_back(createProxy()->getProxyUniqueId());
            }
            return ids;
        }));
    }
    std::vector<std::string> ids;
    for (auto& thread : threads) {
        const auto some = thread.get();
        ids.insert(ids.end(), some.begin(), some.end());
    }
    std::mt19937 generator;
    std::vector<std::string> sequence;
    for (int i = 0; i < 2000; ++i) {
        sequence.push_back("Proxy-" + std::to_string(std::uniform_int_distribution<int>(0, 100000)(generator)));
    }
    std::sort(ids.begin(), ids.end());
    const auto isPieceFrom = [&](std::size_t begin) {
        std::vector<std::string> piece(sequence.begin() + static_cast<long>(begin),
                                       sequence.begin() + static_cast<long>(begin + ids.size()));
        std::sort(piece.begin(), piece.end());
        return piece == ids;
    };
    bool found = false;
    for (std::size_t begin = 0; !found && begin + ids.size() <= sequence.size(); ++begin) {
        found = isPieceFrom(begin);
    }
    EXPECT_TRUE(found);
}

TEST_F(CDBUSProxyTest, ThrowsWithoutABus) {
    bus.stop();
    EXPECT_THAT(thrownStreamText<ErrorConnectingToDBUS>([] { createProxy(); }),
                HasSubstr("Failed to connect to socket"));
}

TEST_F(CDBUSProxyTest, UsesTheSessionBusForTheTypeZero) {
    EXPECT_THAT(thrownStreamText<ErrorConnectingToDBUS>([] { createProxy(boost::none, IDBUSWrapper::SESSION); }),
                HasSubstr("/session"));
}

TEST_F(CDBUSProxyTest, UsesTheSystemBusForEveryOtherType) {
    EXPECT_EQ(createProxy(boost::none, static_cast<IDBUSWrapper::DBUSType>(7))->getDBUSDebugConnectionId(), ":1.0");
}

TEST_F(CDBUSProxyTest, DoesNotTalkToTheRemoteSideBeforeTheFirstCall) {
    bus.addService(NAME, "/bin/false");
    createProxy()->init(NAME);
    EXPECT_EQ(FakeKovan::messages().back(), "skip waiting dbus in case of dbus-activation.");
}

TEST_F(CDBUSProxyTest, ClosesItsConnection) {
    RawPeer observer;
    auto proxy = createProxy();
    const std::string name = proxy->getDBUSDebugConnectionId();
    ASSERT_TRUE(observer.waitForNameOwner(name, true));
    proxy.reset();
    EXPECT_TRUE(observer.waitForNameOwner(name, false));
}

// --- The call -----------------------------------------------------------------------------------------------------

TEST_F(CDBUSProxyTest, SendsTheParametersAsOneByteArray) {
    RawServer server(NAME, arrays({"REPLY", "method", ""}));
    const std::string parameters("a\0b", 3);
    call(parameters);
    const std::list<RawMessage> calls = server.takeCalls();
    ASSERT_EQ(calls.size(), 1U);
    DBusMessage& sent = *calls.front();
    EXPECT_STREQ(dbus_message_get_destination(&sent), NAME);
    EXPECT_STREQ(dbus_message_get_path(&sent), PATH);
    EXPECT_STREQ(dbus_message_get_interface(&sent), INTERFACE);
    EXPECT_STREQ(dbus_message_get_member(&sent), "method");
    EXPECT_STREQ(dbus_message_get_signature(&sent), "ay");
    EXPECT_THAT(byteArrays(sent), ElementsAre(parameters));
}

TEST_F(CDBUSProxyTest, LeavesOutTheArgumentWhenThereAreNoParameters) {
    RawServer server(NAME, arrays({"REPLY", "method", ""}));
    call();
    EXPECT_STREQ(dbus_message_get_signature(server.takeCalls().front().get()), "");
}

TEST_F(CDBUSProxyTest, SendsFromTheConnectionThatItNames) {
    RawServer server(NAME, arrays({"REPLY", "method", ""}));
    const auto proxy = createProxy();
    proxy->init(NAME);
    callWith(*proxy);
    EXPECT_EQ(dbus_message_get_sender(server.takeCalls().front().get()), proxy->getDBUSDebugConnectionId());
}

TEST_F(CDBUSProxyTest, WaitsAMinuteForTheReplyUnlessToldOtherwise) {
    RawServer server(NAME, arrays({"REPLY", "method", ""}));
    takeLongestWaitMs();
    call();
    EXPECT_THAT(takeLongestWaitMs(), AllOf(Gt(50000), Le(60000)));
    call("", 30000U);
    EXPECT_THAT(takeLongestWaitMs(), AllOf(Gt(20000), Le(30000)));
}

TEST_F(CDBUSProxyTest, UsesTheLongestTimeoutForOneThatIsTooLong) {
    RawServer server(NAME, arrays({"REPLY", "method", ""}));
    takeLongestWaitMs();
    EXPECT_TRUE(call("", std::numeric_limits<unsigned int>::max()).normal);
    EXPECT_EQ(takeLongestWaitMs(), std::numeric_limits<int>::max());
}

// --- The reply ----------------------------------------------------------------------------------------------------

TEST_F(CDBUSProxyTest, ReplacesTheFunctionAndAppendsTheResult) {
    RawServer server(NAME, arrays({"REPLY", "method", "result"}));
    const Result result = call();
    EXPECT_TRUE(result.normal);
    EXPECT_EQ(result.function, "method");
    EXPECT_EQ(result.output.str(), "before result");
}

TEST_F(CDBUSProxyTest, RecognizesAnExceptionByTheFirstArray) {
    RawServer server(NAME, arrays({"EXCEPTION", "CWrongKeys", "archive"}));
    const Result result = call();
    EXPECT_FALSE(result.normal);
    EXPECT_EQ(result.function, "CWrongKeys");
    EXPECT_EQ(result.output.str(), "before archive");
}

TEST_F(CDBUSProxyTest, TakesAnExceptionWithoutAName) {
    RawServer server(NAME, arrays({"EXCEPTION", "", ""}));
    const Result result = call();
    EXPECT_FALSE(result.normal);
    EXPECT_EQ(result.function, "");
}

TEST_F(CDBUSProxyTest, TreatsEveryOtherFirstArrayAsANormalReply) {
    for (const char* type : {"", "exception", "EXCEPTION ", "EXCEPTIO", "REPLY"}) {
        RawServer server(NAME, arrays({type, "method", ""}));
        EXPECT_TRUE(call().normal) << type;
    }
}

TEST_F(CDBUSProxyTest, LeavesTheOutputAloneWhenThereIsNoThirdArray) {
    RawServer server(NAME, arrays({"EXCEPTION", "name"}));
    const Result result = call();
    EXPECT_FALSE(result.normal);
    EXPECT_EQ(result.function, "name");
    EXPECT_EQ(result.output.str(), "before ");
}

TEST_F(CDBUSProxyTest, TreatsAReplyWithoutArgumentsAsANormalOne) {
    RawServer server(NAME, arrays({}));
    const Result result = call();
    EXPECT_TRUE(result.normal);
    EXPECT_EQ(result.function, "before");
    EXPECT_EQ(result.output.str(), "before ");
}

TEST_F(CDBUSProxyTest, IgnoresWhatFollowsTheThirdArray) {
    RawServer server(NAME, arrays({"REPLY", "method", "result", "more"}));
    EXPECT_EQ(call().output.str(), "before result");
}

TEST_F(CDBUSProxyTest, CarriesBytesAsTheyAre) {
    const std::string bytes("\0\xff\n", 3);
    RawServer server(NAME, arrays({"REPLY", "method", bytes}));
    EXPECT_EQ(call().output.str(), "before " + bytes);
}

// A reply whose first `leading` arguments are byte arrays and whose next one is something else.
struct OddReply {
    const char* name;
    int leading;
    std::function<void(DBusMessage&)> append;
};

void PrintTo(const OddReply& reply, std::ostream* out) {
    *out << reply.name;
}

class OddReplyTest : public CDBUSProxyTest, public testing::WithParamInterface<OddReply> {};

TEST_P(OddReplyTest, IsRefusedAndChangesNothing) {
    RawServer server(NAME, [](DBusMessage& message) {
        RawMessage reply = replyTo(message);
        for (int i = 0; i < GetParam().leading; ++i) {
            appendBytes(*reply, "EXCEPTION");
        }
        GetParam().append(*reply);
        return reply;
    });
    const auto proxy = createProxy();
    proxy->init(NAME);
    std::stringstream output;
    std::string function = "before";
    EXPECT_EQ(thrownStreamText<RemoteObjectNotAccessible>(
                  [&] { proxy->call("method", std::stringstream(), output, function); }),
              "The reply is not made of byte arrays.");
    EXPECT_EQ(function, "before");
    EXPECT_EQ(output.str(), "");
}

void appendNothing(DBusMessage& /*message*/) {}

void appendString(DBusMessage& message) {
    const char* text = "text";
    dbus_message_append_args(&message, DBUS_TYPE_STRING, &text, DBUS_TYPE_INVALID);
}

void appendNumber(DBusMessage& message) {
    const dbus_int32_t number = 1;
    dbus_message_append_args(&message, DBUS_TYPE_INT32, &number, DBUS_TYPE_INVALID);
}

void appendStrings(DBusMessage& message) {
    const char* texts[] = {"a", "b"};
    const char* const* data = texts;
    dbus_message_append_args(&message, DBUS_TYPE_ARRAY, DBUS_TYPE_STRING, &data, 2, DBUS_TYPE_INVALID);
}

void appendNumbers(DBusMessage& message) {
    const dbus_int32_t numbers[] = {1, 2};
    const dbus_int32_t* data = numbers;
    dbus_message_append_args(&message, DBUS_TYPE_ARRAY, DBUS_TYPE_INT32, &data, 2, DBUS_TYPE_INVALID);
}

INSTANTIATE_TEST_SUITE_P(OfEveryKind, OddReplyTest,
                         testing::Values(OddReply{"OneArray", 1, appendNothing}, OddReply{"String", 0, appendString},
                                         OddReply{"Number", 0, appendNumber}, OddReply{"Strings", 0, appendStrings},
                                         OddReply{"Numbers", 0, appendNumbers},
                                         OddReply{"StringInSecondPlace", 1, appendString},
                                         OddReply{"StringsInSecondPlace", 1, appendStrings},
                                         OddReply{"NumberInThirdPlace", 2, appendNumber},
                                         OddReply{"NumbersInThirdPlace", 2, appendNumbers}),
                         [](const auto& reply) { return reply.param.name; });

// --- Failures -----------------------------------------------------------------------------------------------------

TEST_F(CDBUSProxyTest, ThrowsWhenNobodyHasTheName) {
    EXPECT_EQ(thrownStreamText<RemoteObjectNotAccessible>([this] { call(); }),
              "The name org.kovan.test.remote was not provided by any .service files");
}

TEST_F(CDBUSProxyTest, ThrowsATypeOfItsOwnWhenTheRemoteSideDoesNotStartInTime) {
    bus.stop();
    PrivateBus impatient(PrivateBus::Kind::SYSTEM, 100);
    impatient.addService(NAME, "/bin/true"); // it exits with 0, but never takes the name
    EXPECT_THAT(thrownStreamText<RemoteObjectActivationTimedOut>([this] { call(); }), HasSubstr("timed out"));
}

TEST_F(CDBUSProxyTest, ThrowsWhenTheRemoteSideFailsToStart) {
    bus.addService(NAME, "/bin/false");
    EXPECT_THAT(thrownStreamText<RemoteObjectNotAccessible>([this] { call(); }), HasSubstr("exited with status 1"));
}

TEST_F(CDBUSProxyTest, RecognizesAnActivationTimeOutByTheNameOfTheError) {
    RawServer server(NAME, error("org.freedesktop.DBus.Error.TimedOut", "too slow"));
    EXPECT_EQ(thrownStreamText<RemoteObjectActivationTimedOut>([this] { call(); }), "too slow");
}

TEST_F(CDBUSProxyTest, ThrowsTheTextOfAnyOtherError) {
    for (const char* name : {"org.freedesktop.DBus.Error.Timeout", "org.freedesktop.DBus.Error.NoReply",
                             "org.freedesktop.DBus.Error.UnknownMethod", "org.example.Error"}) {
        RawServer server(NAME, error(name, "some text"));
        EXPECT_EQ(thrownStreamText<RemoteObjectNotAccessible>([this] { call(); }), "some text") << name;
    }
}

TEST_F(CDBUSProxyTest, ThrowsWhenThereIsNoReplyInTime) {
    RawServer server(NAME, [](DBusMessage&) { return RawMessage(); });
    EXPECT_EQ(
        thrownStreamText<RemoteObjectNotAccessible>([this] { call("", 50U); }),
        "Did not receive a reply. Possible causes include: the remote application did not send a reply, the message "
        "bus security policy blocked the reply, the reply timeout expired, or the network connection was broken.");
}

TEST_F(CDBUSProxyTest, StaysUsableAfterAFailure) {
    const auto proxy = createProxy();
    proxy->init(NAME);
    EXPECT_THROW(callWith(*proxy), RemoteObjectNotAccessible);
    RawServer server(NAME, arrays({"REPLY", "method", "result"}));
    EXPECT_EQ(callWith(*proxy).output.str(), "before result");
}

TEST_F(CDBUSProxyTest, FailsAtEveryCallWhenTheBusHasGone) {
    const auto proxy = createProxy();
    proxy->init(NAME);
    bus.stop();
    EXPECT_THROW(callWith(*proxy), RemoteObjectNotAccessible);
    EXPECT_EQ(thrownStreamText<RemoteObjectNotAccessible>([&proxy] { callWith(*proxy); }), "Connection is closed");
}

TEST_F(CDBUSProxyTest, RefusesANameThatIsNoBusName) {
    for (const char* name : {"", "name", "org..kovan", "org.kovan test", "\xff"}) {
        const auto proxy = createProxy();
        proxy->init(name);
        EXPECT_THAT(thrownStreamText<RemoteObjectNotAccessible>([&proxy] { callWith(*proxy); }),
                    HasSubstr("A name of the call is not valid: "))
            << name;
    }
}

TEST_F(CDBUSProxyTest, RefusesACallBeforeItKnowsTheName) {
    EXPECT_THAT(thrownStreamText<RemoteObjectNotAccessible>([] { callWith(*createProxy()); }),
                HasSubstr("A name of the call is not valid: "));
}

TEST_F(CDBUSProxyTest, RefusesAMethodThatIsNoMemberName) {
    RawServer server(NAME, arrays({"REPLY", "method", ""}));
    const auto proxy = createProxy();
    proxy->init(NAME);
    for (const char* method : {"", "1method", "me.thod", "me thod", "\xff"}) {
        std::stringstream output;
        std::string function;
        EXPECT_THAT(thrownStreamText<RemoteObjectNotAccessible>(
                        [&] { proxy->call(method, std::stringstream(), output, function); }),
                    HasSubstr("A name of the call is not valid: "))
            << method;
    }
    EXPECT_THAT(server.takeCalls(), IsEmpty());
}

TEST_F(CDBUSProxyTest, RefusesParametersThatAreTooLongForAnArray) {
    EXPECT_EQ(thrownStreamText<DBUSMemoryError>([this] { call(std::string(DBUS_MAXIMUM_ARRAY_LENGTH + 1, 'x')); }),
              "A byte array of 67108865 bytes cannot be appended.");
}

class ProxyLibraryFailureTest : public CDBUSProxyTest, public testing::WithParamInterface<const char*> {};

TEST_P(ProxyLibraryFailureTest, IsAMemoryErrorAfterWhichTheProxyStaysUsable) {
    RawServer server(NAME, arrays({"REPLY", "method", "result"}));
    const auto proxy = createProxy();
    proxy->init(NAME);
    failNext(GetParam());
    EXPECT_THROW(callWith(*proxy, "parameters"), DBUSMemoryError);
    EXPECT_EQ(callWith(*proxy, "parameters").output.str(), "before result");
}

INSTANTIATE_TEST_SUITE_P(OfAFunction, ProxyLibraryFailureTest,
                         testing::Values("dbus_message_new_method_call", "dbus_message_iter_open_container",
                                         "dbus_message_iter_append_fixed_array", "dbus_message_iter_close_container",
                                         "dbus_connection_send"),
                         [](const auto& function) { return std::string(function.param); });

} // namespace
} // namespace DAX::Tests
