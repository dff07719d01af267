#include "ClientUnderTest.h"

#include <filesystem>

#include "Platform/ProductPaths/IProductPaths.h"
#include "support/WaitUntil.h"
#include "support/WireGoldens.h"

namespace DAX::Tests {
namespace {

const std::string SESSION_PROXY = "Proxy-1";
const std::string TRANSACTION_PROXY = "Proxy-2";
const std::string CONNECTION = ":1.7";

void removeInstallationLock() {
    std::filesystem::remove(Platform::IProductPaths::getInstallationLockPath().string());
}

} // namespace

ClientUnderTest::ClientUnderTest() {
    desk.play("[search]\nseconds=0\n[installation]\nseconds=0\n[finalization]\nseconds=0\n");
    connect();
    open();
    remember();
}

std::string ClientUnderTest::goodRequest(const ServiceMethod& method) {
    return golden("service/" + method.name + ".request");
}

Answer ClientUnderTest::ask(const ServiceMethod& method, const std::string& parameters) {
    return answerIn(peer(method.caller).call(*makeCallWith(method.name, parameters)));
}

Answer ClientUnderTest::askAndRestore(const ServiceMethod& method, const std::string& parameters) {
    const Answer answer = ask(method, parameters);
    if (answer.isReply()) {
        EXPECT_EQ(answer.function, method.name);
    } else {
        EXPECT_EQ(answer.type, "EXCEPTION");
        EXPECT_EQ(wireExceptionNames().count(answer.function), 1U) << answer.function;
    }
    restore(method, parameters, answer);
    EXPECT_TRUE(isSessionOpen());
    return answer;
}

void ClientUnderTest::restore(const ServiceMethod& method, const std::string& parameters, const Answer& answer) {
    if (answer.isReply()) {
        if (method.name == "acquireExternalLock") {
            releaseLock(parameters, answer);
        }
        restore(method);
    }
}

void ClientUnderTest::restore(const ServiceMethod& method) {
    if (!method.changes) {
        return;
    }
    removeInstallationLock();
    if (!isSessionOpen()) {
        comeBack();
    } else if (!isTransactionOpen()) {
        openTransaction();
    }
}

void ClientUnderTest::releaseLock(const std::string& parameters, const Answer& answer) {
    const auto client = std::get<0>(decode<std::string>(parameters));
    const auto lock = std::get<0>(decode<unsigned int>(answer.archive));
    must(Caller::MANAGER, "releaseExternalLock", encode(client, lock));
}

bool ClientUnderTest::isSessionOpen() {
    return ask({"getServiceOwner", Caller::MANAGER}, "") == m_owner &&
           ask({"getClientPriority", Caller::SESSION}, encode()) == m_priority;
}

bool ClientUnderTest::isTransactionOpen() {
    return ask({"isSearchingPossible", Caller::TRANSACTION}, encode()).isReply();
}

bool ClientUnderTest::isFree() {
    const Answer owner = answerIn(peer(Caller::MANAGER).call(*makeCall("getServiceOwner")));
    return !std::get<0>(decode<bool>(owner.archive));
}

void ClientUnderTest::connect() {
    for (std::unique_ptr<RawPeer>& each : m_peers) {
        each.reset();
    }
    for (std::unique_ptr<RawPeer>& each : m_peers) {
        each = std::make_unique<RawPeer>();
    }
}

void ClientUnderTest::comeBack() {
    connect();
    ASSERT_TRUE(waitUntil([this] { return isFree(); }));
    removeInstallationLock(); // now, since all that the old connections have sent has been handled
    open();
}

Answer ClientUnderTest::must(Caller caller, const std::string& method, const std::string& parameters) {
    const Answer answer = ask({method, caller}, parameters);
    EXPECT_TRUE(answer.isReply()) << method << " " << testing::PrintToString(answer);
    return answer;
}

bool ClientUnderTest::isGranted() {
    const Answer answer =
        must(Caller::MANAGER, "getService", encode(4, std::string("update app"), 2, SESSION_PROXY, CONNECTION));
    return std::get<0>(decode<std::string>(answer.archive)) == ManagerNames::CONNECTION_NAME;
}

void ClientUnderTest::open() {
    // The lock of a client that has gone holds until the daemon has seen that.
    ASSERT_TRUE(waitUntil([this] { return isGranted(); }));
    must(Caller::SESSION, "helloMessage", encode(SESSION_PROXY));
    m_owner = must(Caller::MANAGER, "getServiceOwner", "");
    m_priority = must(Caller::SESSION, "getClientPriority", encode());
    openTransaction();
}

void ClientUnderTest::openTransaction() {
    must(Caller::SESSION, "startNewTransaction", encode(2, TRANSACTION_PROXY, CONNECTION));
    must(Caller::TRANSACTION, "helloMessage", encode(TRANSACTION_PROXY));
    must(Caller::TRANSACTION, "startSearching", encode(std::string()));
}

void ClientUnderTest::expectNoOtherReplies() {
    for (const std::unique_ptr<RawPeer>& each : m_peers) {
        for (const RawMessage& message : each->takeOthers()) {
            EXPECT_EQ(dbus_message_get_type(message.get()), DBUS_MESSAGE_TYPE_SIGNAL)
                << dbus_message_get_reply_serial(message.get());
        }
    }
}

// Every connection makes one more call, so that a second reply to an earlier call would arrive before its answer.
void ClientUnderTest::TearDown() {
    EXPECT_TRUE(isSessionOpen());
    EXPECT_TRUE(isTransactionOpen());
    expectNoOtherReplies();
    DaemonUnderTest::TearDown();
}

} // namespace DAX::Tests
