#include "Common/DBUSWrapper/Implementation/ClientBus.h"

#include <chrono>
#include <thread>

#include <boost/exception/get_error_info.hpp>
#include <dbus/dbus.h>
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "Utility/Utils/ErrorTags.h"
#include "support/CountThreads.h"
#include "support/PrivateBus.h"
#include "support/RawPeer.h"
#include "support/SilentBus.h"
#include "support/WaitUntil.h"

namespace DAX::Tests {
namespace {

using namespace Common::DBUSWrapper;
using Common::DBUSWrapper::DBUSWrapperExceptions::ErrorConnectingToDBUS;
using Clock = std::chrono::steady_clock;

struct Failure {
    std::string busError;
    std::string text;
    Clock::duration after{};
};

// How connecting fails.
Failure failureOf(const ClientConnection& how) {
    const auto begin = Clock::now();
    try {
        openClientConnection(how);
    } catch (const ErrorConnectingToDBUS& exception) {
        const auto after = Clock::now() - begin;
        const std::string* const busError = boost::get_error_info<errinfo_bus_error>(exception);
        const std::string* const text = boost::get_error_info<Common::Utils::errinfo_stream_text>(exception);
        return {busError != nullptr ? *busError : "", text != nullptr ? *text : "", after};
    }
    ADD_FAILURE() << "there is a connection";
    return {};
}

TEST(ClientBus, GivesAConnectionWithAUniqueName) {
    const PrivateBus bus(PrivateBus::Kind::SESSION);
    const DBUSConnectionHandle connection = openClientConnection({bus.address(), 20000});
    EXPECT_STREQ(dbus_bus_get_unique_name(connection.get()), ":1.0");
}

TEST(ClientBus, FindsTheSystemBusWithoutAnAddress) {
    const PrivateBus bus;
    const DBUSConnectionHandle connection = openClientConnection({"", 20000});
    EXPECT_TRUE(RawPeer().waitForNameOwner(dbus_bus_get_unique_name(connection.get()), true));
}

void expectTimeOut(SilentBus::Kind kind, const std::string& text) {
    const SilentBus bus(kind);
    const Failure failure = failureOf({bus.address(), 300});
    EXPECT_EQ(failure.busError, DBUS_ERROR_TIMEOUT);
    EXPECT_EQ(failure.text, text);
    EXPECT_GE(failure.after, std::chrono::milliseconds(300));
    EXPECT_LT(failure.after, std::chrono::seconds(10));
}

TEST(ClientBus, GivesUpInTimeWhenNobodyAnswers) {
    expectTimeOut(SilentBus::Kind::HAS_ROOM, "The bus does not answer.");
}

TEST(ClientBus, GivesUpInTimeWhenTheBusHasNoRoom) {
    expectTimeOut(SilentBus::Kind::IS_FULL, "The bus does not accept a connection.");
}

// Eight attempts that stay behind, until the bus has gone.
void fill(const SilentBus& bus) {
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(failureOf({bus.address(), 10}).text, "The bus does not accept a connection.");
    }
}

// A program that tries again and again must not fill with threads.
TEST(ClientBus, LeavesEightThreadsAtTheMostBehindAndNoneWhenTheBusHasGone) {
    std::thread([] {}).join(); // the thread sanitizer begins one of its own with the first
    const auto before = countThreads();
    SilentBus bus(SilentBus::Kind::IS_FULL);
    fill(bus);
    EXPECT_EQ(countThreads(), before + 8);
    EXPECT_EQ(failureOf({bus.address(), 10}).text, "The bus has not accepted the connections before this one.");
    EXPECT_EQ(countThreads(), before + 8);
    bus.end();
    EXPECT_TRUE(waitUntil([&] { return countThreads() == before; }));
    const PrivateBus next(PrivateBus::Kind::SESSION);
    EXPECT_NE(openClientConnection({next.address(), 20000}), nullptr);
}

TEST(ClientBus, ConnectsToOneBusWhileAnotherStandsStill) {
    std::thread([] {}).join(); // the thread sanitizer begins one of its own with the first
    const auto before = countThreads();
    SilentBus silent(SilentBus::Kind::IS_FULL);
    fill(silent);
    const PrivateBus bus(PrivateBus::Kind::SESSION);
    EXPECT_STREQ(dbus_bus_get_unique_name(openClientConnection({bus.address(), 20000}).get()), ":1.0");
    silent.end();
    EXPECT_TRUE(waitUntil([&] { return countThreads() == before; }));
}

// It has none of the threads that its parent has left behind.
TEST(ClientBus, LetsAChildProcessTryAnew) {
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "the thread sanitizer lets the child of a process with threads begin none";
#endif
    const auto before = countThreads();
    SilentBus bus(SilentBus::Kind::IS_FULL);
    fill(bus);
    const pid_t child = fork();
    if (child == 0) {
        ::alarm(60);
        ::_exit(failureOf({bus.address(), 10}).text == "The bus does not accept a connection." ? 0 : 1);
    }
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    bus.end();
    EXPECT_TRUE(waitUntil([&] { return countThreads() == before; }));
}

TEST(ClientBus, SaysWhatTheLibrarySaysOfAnAddressThatIsNone) {
    const Failure failure = failureOf({"somewhere", 20000});
    EXPECT_EQ(failure.busError, DBUS_ERROR_BAD_ADDRESS);
}

} // namespace
} // namespace DAX::Tests
