// Messages that others send to a proxy's connection never delay its calls.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <future>
#include <thread>

#include <gmock/gmock.h>
#include <poll.h>
#include <pthread.h>
#include <unistd.h>

#include "LibraryFaults.h"
#include "ProxyFixture.h"
#include "support/CountThreads.h"
#include "support/Flood.h"
#include "support/Prompt.h"
#include "support/WaitUntil.h"

namespace DAX::Tests {
namespace {

using namespace Common::DBUSWrapper::DBUSWrapperExceptions;
using Common::DBUSWrapper::IDBUSProxy;
using testing::HasSubstr;
using testing::StartsWith;
using Clock = std::chrono::steady_clock;

RawMessage callOf(const std::string& destination, const char* interface, const char* member) {
    return RawMessage(dbus_message_new_method_call(destination.c_str(), PATH, interface, member));
}

// A pipe whose writing end is sent around. The reading end tells when nobody holds the writing end any more.
class TravellingPipe {
public:
    TravellingPipe() {
        if (pipe(m_ends) != 0) {
            throw std::runtime_error("no pipe");
        }
    }
    ~TravellingPipe() {
        close(m_ends[0]);
        letGo();
    }
    TravellingPipe(const TravellingPipe&) = delete;
    TravellingPipe& operator=(const TravellingPipe&) = delete;

    int end() const { return m_ends[1]; }
    void letGo() {
        if (m_ends[1] >= 0) {
            close(m_ends[1]);
            m_ends[1] = -1;
        }
    }
    bool isHeldByNobody() const {
        pollfd reading{m_ends[0], POLLIN, 0};
        return poll(&reading, 1, 0) == 1 && (reading.revents & POLLHUP) != 0;
    }

private:
    int m_ends[2];
};

RawMessage signalWithDescriptors(const std::string& destination, int fd, int count) {
    RawMessage signal = signalTo(destination);
    for (int i = 0; i < count; ++i) {
        dbus_message_append_args(signal.get(), DBUS_TYPE_UNIX_FD, &fd, DBUS_TYPE_INVALID);
    }
    return signal;
}

// Interrupts the system calls of a thread by signals while the object lives.
class Interruptions {
public:
    Interruptions() : m_victim(pthread_self()), m_previous(std::signal(SIGUSR1, [](int) {})) {
        m_thread = std::thread([this] {
            while (!m_stop) {
                pthread_kill(m_victim, SIGUSR1);
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
            }
        });
    }
    ~Interruptions() {
        m_stop = true;
        m_thread.join();
        std::signal(SIGUSR1, m_previous);
    }
    Interruptions(const Interruptions&) = delete;
    Interruptions& operator=(const Interruptions&) = delete;

private:
    const pthread_t m_victim;
    void (*const m_previous)(int);
    std::atomic<bool> m_stop{false};
    std::thread m_thread;
};

class CDBUSProxyTrafficTest : public ProxyFixture {
protected:
    // A proxy with a short time-out, so that a fault does not last a minute.
    static std::unique_ptr<IDBUSProxy> createImpatientProxy(unsigned int callTimeoutMs = 20000) {
        auto proxy = createProxy(callTimeoutMs);
        proxy->init(NAME);
        return proxy;
    }

    // How long a successful call takes.
    static Clock::duration timeOfCall(IDBUSProxy& proxy) {
        const auto begin = Clock::now();
        EXPECT_EQ(callWith(proxy).output.str(), "before result");
        return Clock::now() - begin;
    }

    // The next method call that reaches the peer.
    static RawMessage nextCall(RawPeer& peer) {
        RawMessage call;
        EXPECT_TRUE(waitUntil([&] {
            dbus_connection_read_write(peer.connection(), 10);
            call.reset(dbus_connection_pop_message(peer.connection()));
            return call != nullptr && dbus_message_get_type(call.get()) == DBUS_MESSAGE_TYPE_METHOD_CALL;
        }));
        return call;
    }

    // Begins a call on a thread of its own.
    static std::future<Result> beginCall(IDBUSProxy& proxy) {
        return std::async(std::launch::async, [&proxy] { return callWith(proxy); });
    }

    static void answer(RawPeer& server, DBusMessage& call, const std::string& result) {
        server.send(*arrays({"REPLY", "method", result})(call));
    }
};

TEST_F(CDBUSProxyTrafficTest, ACallIsNotHeldUpByABacklogOfGreatSignals) {
    RawServer server(NAME, arrays({"REPLY", "method", "result"}));
    const auto proxy = createImpatientProxy();
    RawPeer other;
    sendGreatSignals(other, proxy->getDBUSDebugConnectionId());
    // A machine that is busy with other tests copies 134 MB four times before it answers this one.
    EXPECT_LT(timeOfCall(*proxy), 5 * PROMPT);
    EXPECT_LT(timeOfCall(*proxy), PROMPT);
}

TEST_F(CDBUSProxyTrafficTest, ACallIsNotHeldUpBySmallSignalsWithoutEnd) {
    RawServer server(NAME, arrays({"REPLY", "method", "result"}));
    const auto proxy = createImpatientProxy();
    const Flood flood(proxy->getDBUSDebugConnectionId());
    ASSERT_TRUE(flood.waitFor(50000));
    for (int i = 0; i < 20; ++i) {
        EXPECT_LT(timeOfCall(*proxy), PROMPT);
    }
}

TEST_F(CDBUSProxyTrafficTest, ACallGivesUpInTimeWhileSignalsComeWithoutEnd) {
    RawServer server(NAME, [](DBusMessage&) { return RawMessage(); });
    const auto proxy = createImpatientProxy(300);
    const Flood flood(proxy->getDBUSDebugConnectionId());
    ASSERT_TRUE(flood.waitFor(10000));
    const auto begin = Clock::now();
    EXPECT_THAT(thrownStreamText<RemoteObjectNotAccessible>([&proxy] { callWith(*proxy); }),
                StartsWith("Did not receive a reply. Possible causes include: the remote application did not send a "
                           "reply, the message bus security policy blocked the reply, the reply timeout expired, or "
                           "the network connection was broken."));
    EXPECT_GE(Clock::now() - begin, std::chrono::milliseconds(300));
    EXPECT_LT(Clock::now() - begin, std::chrono::milliseconds(300) + PROMPT);
}

TEST_F(CDBUSProxyTrafficTest, ACallGivesUpInTimeWhileSignalHandlersRun) {
    RawServer server(NAME, [](DBusMessage&) { return RawMessage(); });
    const auto proxy = createImpatientProxy(300);
    const Interruptions interruptions;
    const auto begin = Clock::now();
    EXPECT_THROW(callWith(*proxy), RemoteObjectNotAccessible);
    EXPECT_GE(Clock::now() - begin, std::chrono::milliseconds(300));
    EXPECT_LT(Clock::now() - begin, std::chrono::milliseconds(300) + PROMPT);
}

TEST_F(CDBUSProxyTrafficTest, WhatArrivesBetweenCallsIsDroppedAtOnce) {
    const auto proxy = createImpatientProxy();
    TravellingPipe pipe;
    RawPeer other;
    other.send(*signalWithDescriptors(proxy->getDBUSDebugConnectionId(), pipe.end(), 1));
    pipe.letGo();
    EXPECT_TRUE(waitUntil([&pipe] { return pipe.isHeldByNobody(); }));
}

TEST_F(CDBUSProxyTrafficTest, WhatArrivesDuringACallIsDroppedAtOnce) {
    RawPeer server;
    server.requestName(NAME);
    const auto proxy = createImpatientProxy(20000);
    auto result = beginCall(*proxy);
    const RawMessage call = nextCall(server);
    TravellingPipe pipe;
    server.send(*signalWithDescriptors(proxy->getDBUSDebugConnectionId(), pipe.end(), 1));
    pipe.letGo();
    EXPECT_TRUE(waitUntil([&pipe] { return pipe.isHeldByNobody(); }, std::chrono::seconds(10)));
    answer(server, *call, "result");
    EXPECT_EQ(result.get().output.str(), "before result");
}

TEST_F(CDBUSProxyTrafficTest, WhatArrivesRightAfterAReplyIsDroppedAtOnce) {
    RawPeer server;
    server.requestName(NAME);
    const auto proxy = createImpatientProxy();
    for (int i = 0; i < 300; ++i) {
        auto result = beginCall(*proxy);
        const RawMessage call = nextCall(server);
        TravellingPipe pipe;
        answer(server, *call, "result");
        server.send(*signalWithDescriptors(proxy->getDBUSDebugConnectionId(), pipe.end(), 1));
        pipe.letGo();
        EXPECT_EQ(result.get().output.str(), "before result");
        ASSERT_TRUE(waitUntil([&pipe] { return pipe.isHeldByNobody(); }, std::chrono::seconds(5)));
    }
}

TEST_F(CDBUSProxyTrafficTest, ManyDescriptorsAreClosedAndHoldNoCallUp) {
    RawServer server(NAME, arrays({"REPLY", "method", "result"}));
    const auto proxy = createImpatientProxy();
    TravellingPipe pipe;
    RawPeer other;
    for (int i = 0; i < 1000; ++i) {
        other.send(*signalWithDescriptors(proxy->getDBUSDebugConnectionId(), pipe.end(), 16));
    }
    EXPECT_LT(timeOfCall(*proxy), PROMPT);
    other.disconnect();
    pipe.letGo();
    EXPECT_TRUE(waitUntil([&pipe] { return pipe.isHeldByNobody(); }));
}

TEST_F(CDBUSProxyTrafficTest, OnlyAReplyOrAnErrorCountsAsTheReply) {
    RawPeer server;
    server.requestName(NAME);
    const auto proxy = createImpatientProxy(300);
    for (const auto type : {DBUS_MESSAGE_TYPE_SIGNAL, DBUS_MESSAGE_TYPE_METHOD_CALL}) {
        auto result = beginCall(*proxy);
        const RawMessage call = nextCall(server);
        const RawMessage odd(dbus_message_new(type));
        dbus_message_set_destination(odd.get(), proxy->getDBUSDebugConnectionId().c_str());
        dbus_message_set_path(odd.get(), PATH);
        dbus_message_set_interface(odd.get(), INTERFACE);
        dbus_message_set_member(odd.get(), "method");
        dbus_message_set_reply_serial(odd.get(), dbus_message_get_serial(call.get()));
        appendBytes(*odd, "REPLY");
        appendBytes(*odd, "method");
        server.send(*odd);
        EXPECT_THAT(thrownStreamText<RemoteObjectNotAccessible>([&result] { result.get(); }),
                    StartsWith("Did not receive a reply."));
    }
}

// The serials of calls count from 2. Whoever guesses one may put it into a message of another kind.
TEST_F(CDBUSProxyTrafficTest, NobodyElseCanAnswerACall) {
    RawPeer server;
    server.requestName(NAME);
    const auto proxy = createImpatientProxy();
    auto result = beginCall(*proxy);
    const RawMessage call = nextCall(server);
    RawPeer forger;
    for (const auto type : {DBUS_MESSAGE_TYPE_SIGNAL, DBUS_MESSAGE_TYPE_METHOD_CALL, DBUS_MESSAGE_TYPE_METHOD_RETURN,
                            DBUS_MESSAGE_TYPE_ERROR}) {
        const RawMessage forged(dbus_message_new(type));
        dbus_message_set_destination(forged.get(), proxy->getDBUSDebugConnectionId().c_str());
        dbus_message_set_path(forged.get(), PATH);
        dbus_message_set_interface(forged.get(), INTERFACE);
        dbus_message_set_member(forged.get(), "method");
        dbus_message_set_error_name(forged.get(), "org.example.Error");
        dbus_message_set_reply_serial(forged.get(), dbus_message_get_serial(call.get()));
        appendBytes(*forged, "EXCEPTION");
        appendBytes(*forged, "forged");
        forger.send(*forged);
    }
    ASSERT_TRUE(forger.waitForNameOwner(NAME, true)); // the bus has passed them on by now
    answer(server, *call, "result");
    EXPECT_EQ(result.get().output.str(), "before result");
}

TEST_F(CDBUSProxyTrafficTest, ALateReplyAnswersNoLaterCall) {
    RawPeer server;
    server.requestName(NAME);
    const auto proxy = createImpatientProxy(300);
    std::vector<RawMessage> lateCalls;
    for (int i = 0; i < 2; ++i) {
        auto unanswered = beginCall(*proxy);
        lateCalls.push_back(nextCall(server));
        EXPECT_THROW(unanswered.get(), RemoteObjectNotAccessible);
    }
    const auto patient = createImpatientProxy(20000); // its replies have the same serials
    answer(server, *lateCalls[0], "late, before the next call");
    for (IDBUSProxy* caller : {proxy.get(), patient.get()}) {
        auto result = beginCall(*caller);
        const RawMessage call = nextCall(server);
        answer(server, *lateCalls[1], "late, during the next call");
        answer(server, *call, "result");
        EXPECT_EQ(result.get().output.str(), "before result");
    }
}

TEST_F(CDBUSProxyTrafficTest, CallsToAProxyAreServedByNobody) {
    RawServer server(NAME, arrays({"REPLY", "method", "result"}));
    auto proxy = createImpatientProxy();
    RawPeer other;
    std::vector<std::uint32_t> serials;
    for (const char* interface : {INTERFACE, "org.freedesktop.DBus.Peer", "org.freedesktop.DBus.Introspectable"}) {
        for (const char* member : {"method", "Ping", "GetMachineId", "Introspect"}) {
            serials.push_back(other.send(*callOf(proxy->getDBUSDebugConnectionId(), interface, member)));
        }
    }
    EXPECT_LT(timeOfCall(*proxy), PROMPT);
    proxy.reset(); // now the bus answers for it
    EXPECT_TRUE(waitUntil([&] {
        other.waitForReply(0, std::chrono::milliseconds(10));
        return std::all_of(serials.begin(), serials.end(), [&](auto serial) { return other.countReplies(serial) > 0; });
    }));
    for (const RawMessage& message : other.takeOthers()) {
        if (dbus_message_get_type(message.get()) != DBUS_MESSAGE_TYPE_SIGNAL) {
            EXPECT_STREQ(dbus_message_get_error_name(message.get()), "org.freedesktop.DBus.Error.NoReply");
            EXPECT_STREQ(dbus_message_get_sender(message.get()), "org.freedesktop.DBus");
        }
    }
}

TEST_F(CDBUSProxyTrafficTest, ReportsAConnectionThatBreaksDuringTheCall) {
    RawPeer server;
    server.requestName(NAME);
    const auto proxy = createImpatientProxy();
    auto result = beginCall(*proxy);
    nextCall(server);
    bus.stop();
    EXPECT_EQ(thrownStreamText<RemoteObjectNotAccessible>([&result] { result.get(); }),
              "Connection was disconnected before a reply was received");
    EXPECT_EQ(thrownStreamText<RemoteObjectNotAccessible>([&proxy] { callWith(*proxy); }), "Connection is closed");
}

TEST_F(CDBUSProxyTrafficTest, AProxyWhoseConnectionBrokeLeavesTheOthersAlone) {
    auto broken = createImpatientProxy();
    bus.stop();
    EXPECT_THROW(callWith(*broken), RemoteObjectNotAccessible);
    const PrivateBus next;
    RawServer server(NAME, arrays({"REPLY", "method", "result"}));
    const auto proxy = createImpatientProxy(); // it may get the descriptor number of the broken one
    EXPECT_THROW(callWith(*broken), RemoteObjectNotAccessible);
    broken.reset();
    TravellingPipe pipe;
    RawPeer other;
    other.send(*signalWithDescriptors(proxy->getDBUSDebugConnectionId(), pipe.end(), 1));
    pipe.letGo();
    EXPECT_TRUE(waitUntil([&pipe] { return pipe.isHeldByNobody(); }));
    EXPECT_LT(timeOfCall(*proxy), PROMPT);
}

TEST_F(CDBUSProxyTrafficTest, ProxiesComeAndGoUnderAFlood) {
    RawServer server(NAME, arrays({"REPLY", "method", "result"}));
    for (int i = 0; i < 20; ++i) {
        const auto proxy = createImpatientProxy();
        const Flood flood(proxy->getDBUSDebugConnectionId());
        ASSERT_TRUE(flood.waitFor(1000));
        EXPECT_LT(timeOfCall(*proxy), PROMPT);
    }
}

TEST_F(CDBUSProxyTrafficTest, CannotBeMadeWithoutAThreadThatReadsBetweenCalls) {
    failNext("pthread_create");
    EXPECT_THAT(thrownStreamText<ErrorConnectingToDBUS>([] { createProxy(); }),
                HasSubstr("Connections cannot be read: "));
    EXPECT_EQ(createProxy()->getDBUSDebugConnectionId(), ":1.1");
}

TEST_F(CDBUSProxyTrafficTest, TheThreadThatReadsBetweenCallsGoesWithTheLastProxy) {
    std::thread([] {}).join(); // the thread sanitizer begins one of its own with the first
    const auto before = countThreads();
    auto first = createProxy();
    auto second = createProxy();
    EXPECT_EQ(countThreads(), before + 1);
    first.reset();
    EXPECT_EQ(countThreads(), before + 1);
    second.reset();
    EXPECT_TRUE(waitUntil([&] { return countThreads() == before; }));
}

} // namespace
} // namespace DAX::Tests
