// Clients that come and go, on a bus with the rules and limits of a system bus.
#include <atomic>
#include <random>
#include <thread>

#include <gmock/gmock.h>
#include <sys/resource.h>

#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/DBUSDefines.h"
#include "support/RawPeer.h"
#include "support/WaitUntil.h"
#include "support/WireGoldens.h"
#include "system/support/Desk.h"

namespace DAX::Tests {
namespace {

using namespace testing;

namespace ManagerNames = DAXIPC::DBUSLowLevel::DBUSNames::DBUSService::DBUSIServiceManager;

const char* const IDLE_END = "Stopping adapter object /org/kovan/tv/dax/service/cservicemanager due to it being idle";

RawMessage makeCall(const std::string& member) {
    return RawMessage(dbus_message_new_method_call(ManagerNames::CONNECTION_NAME, ManagerNames::OBJECT_PATH,
                                                   ManagerNames::INTERFACE_NAME, member.c_str()));
}

RawMessage makeGetService(int priority) {
    RawMessage message = makeCall("getService");
    appendBytes(*message, encode(priority, "client " + std::to_string(priority), 2, std::string("my-session"),
                                 std::string("my-connection")));
    return message;
}

RawMessage makeIntrospection() {
    return RawMessage(dbus_message_new_method_call(ManagerNames::CONNECTION_NAME, ManagerNames::OBJECT_PATH,
                                                   DBUS_INTERFACE_INTROSPECTABLE, "Introspect"));
}

class Clients : public Test {
protected:
    Clients(const std::string& daemonOptions = "", const std::map<std::string, unsigned int>& limits = {})
        : desk(daemonOptions, SystemBusRules::ofDevice(limits)) {}

    bool isServiceFree() {
        const std::vector<std::string> answer = byteArrays(*m_observer.call(*makeCall("getServiceOwner")));
        return answer.at(2) == encode(false, 0, std::string(), 0);
    }
    bool becomesFree() {
        return waitUntil([this] { return isServiceFree(); }, std::chrono::seconds(5));
    }

    Desk desk;

private:
    RawPeer m_observer;
};

TEST_F(Clients, DoNotOwnTheServiceWhenTheyAskForItAndLeaveAtOnce) {
    ASSERT_TRUE(isServiceFree()); // the daemon runs
    for (int client = 0; client < 20; ++client) {
        RawPeer peer;
        peer.send(*makeGetService(4));
        peer.disconnect();
        ASSERT_TRUE(becomesFree()) << "client " << client;
    }
    EXPECT_EQ(desk.countMessages("New Service for my-session created."), 20);
    EXPECT_EQ(desk.countMessages("Disconnecting dead client: '"), 20);
}

TEST_F(Clients, DoNotOwnTheServiceWhenTheyLeaveWhileTheDaemonWaitsForTheCore) {
    desk.play("[fault getCurrentVersion]\nstall_seconds=2\n");
    RawPeer waiting;
    const std::uint32_t serial = waiting.send(*[] {
        RawMessage message = makeCall("getCurrentVersion");
        appendBytes(*message, encode());
        return message;
    }());
    ASSERT_TRUE(desk.waitForCoreCall("getCurrentVersion"));
    RawPeer peer;
    peer.send(*makeGetService(4));
    peer.disconnect();
    ASSERT_NE(waiting.waitForReply(serial), nullptr);
    EXPECT_TRUE(desk.waitForMessage("New Service for my-session created."));
    EXPECT_TRUE(becomesFree());
}

// --- More clients than the bus allows match rules -------------------------------------------------------------------

const int MANY = 2000;

class ManyMoreClients : public Clients {
protected:
    ManyMoreClients()
        : Clients("", {{"max_completed_connections", MANY + 100}, {"max_connections_per_user", MANY + 100}}) {
        rlimit files{};
        getrlimit(RLIMIT_NOFILE, &files);
        files.rlim_cur = files.rlim_max;
        setrlimit(RLIMIT_NOFILE, &files);
        m_fits = files.rlim_max > 2 * MANY;
    }

    bool m_fits = false;
};

TEST_F(ManyMoreClients, ThanTheBusAllowsMatchRulesAreAllForgottenWhenTheyDie) {
    if (!m_fits) {
        GTEST_SKIP() << "this user may not have " << MANY << " connections";
    }
    std::vector<RawPeer> peers(MANY);
    int priority = 0;
    for (RawPeer& peer : peers) {
        const RawMessage reply = peer.call(*makeGetService(++priority));
        ASSERT_NE(reply, nullptr);
        ASSERT_EQ(byteArrays(*reply).at(2), encode(std::string(ManagerNames::CONNECTION_NAME)));
    }
    EXPECT_EQ(desk.countMessages("The bus refuses the match rule for client "), 1);
    peers.clear();
    EXPECT_TRUE(desk.waitForMessage("We are now entering idle state."));
    EXPECT_EQ(desk.countMessages("Unregistering connection named "), MANY);
    EXPECT_TRUE(isServiceFree());
}

// --- The end by idleness, and the next start by the bus -------------------------------------------------------------

class IdleEnds : public Clients {
protected:
    IdleEnds() : Clients("--idle-timeout=1") {}

    // Watches all the time, without being a client.
    void look(const std::atomic<bool>& stop) {
        RawPeer peer;
        while (!stop) {
            serve(peer, *makeIntrospection());
        }
    }

    // Asks for the service, uses it, and leaves for about the time after which the daemon ends.
    void use(const std::atomic<bool>& stop) {
        std::minstd_rand random(1);
        while (!stop) {
            RawPeer peer;
            serve(peer, *makeGetService(4));
            RawMessage hello = makeCall("helloMessage");
            appendBytes(*hello, encode(std::string("my-session")));
            serve(peer, *hello);
            RawMessage use = makeCall("getClientPriority");
            appendBytes(*use, encode());
            (serve(peer, *use) == "REPLY" ? servedSessions : droppedSessions) += 1;
            peer.disconnect();
            std::this_thread::sleep_for(std::chrono::milliseconds(950 + random() % 200));
        }
    }

    std::atomic<int> lostCalls{0};
    std::atomic<int> servedSessions{0};
    std::atomic<int> droppedSessions{0};

private:
    // The kind of answer that the call gets.
    std::string serve(RawPeer& peer, DBusMessage& call) {
        const RawMessage reply = peer.call(call);
        if (!reply || dbus_message_get_error_name(reply.get()) != nullptr) {
            ++lostCalls;
            return "";
        }
        const std::vector<std::string> arrays = byteArrays(*reply);
        return arrays.empty() ? "" : arrays[0];
    }
};

TEST_F(IdleEnds, LoseNoCallAndNoSession) {
    const int ends = 6;
    std::atomic<bool> stop{false};
    std::vector<std::thread> traffic;
    traffic.emplace_back([&] { look(stop); });
    traffic.emplace_back([&] { look(stop); });
    traffic.emplace_back([&] { use(stop); });
    EXPECT_TRUE(waitUntil([&] { return desk.countMessages(IDLE_END) >= ends; }, std::chrono::seconds(60)));
    stop = true;
    for (std::thread& thread : traffic) {
        thread.join();
    }
    EXPECT_EQ(lostCalls, 0);
    EXPECT_EQ(droppedSessions, 0);
    EXPECT_GT(servedSessions, 1) << "so some came after an end";
}

} // namespace
} // namespace DAX::Tests
