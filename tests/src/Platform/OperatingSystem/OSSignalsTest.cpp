#include "Platform/OperatingSystem/OSSignals.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <thread>

#include <boost/chrono/system_clocks.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "SystemRecords.h"
#include "Utility/Utils/GenericException.h"
#include "support/FakeKovan.h"
#include "support/OtherThread.h"
#include "support/ProcessDeath.h"
#include "support/TemporaryRoot.h"

namespace DAX::Tests {
namespace {

using Platform::NiceQuitHelper;
using Platform::RegisterSignalHandler;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

volatile std::sig_atomic_t lastSignal = 0;
void rememberSignal(int signum) {
    lastSignal = signum;
}
void doNothing(int) {}

// The current disposition of the signal.
void (*dispositionOf(int signum))(int) {
    struct sigaction action {};
    ::sigaction(signum, nullptr, &action);
    return action.sa_handler;
}

// Captures what is written to standard output while the object lives.
class StandardOutput {
public:
    StandardOutput() : m_before(std::cout.rdbuf(m_text.rdbuf())) {}
    ~StandardOutput() { std::cout.rdbuf(m_before); }
    std::string text() const { return m_text.str(); }

private:
    std::ostringstream m_text;
    std::streambuf* m_before;
};

TEST(RegisterSignalHandler, HandlesTheSignalWhileItLives) {
    const RegisterSignalHandler handler(SIGUSR1, &rememberSignal);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Registering signal (signum: 10)"));
    std::raise(SIGUSR1);
    EXPECT_EQ(lastSignal, SIGUSR1);
}

TEST(RegisterSignalHandler, PutsTheEarlierHandlerBack) {
    const RegisterSignalHandler earlier(SIGUSR1, &doNothing);
    { const RegisterSignalHandler handler(SIGUSR1, &rememberSignal); }
    EXPECT_EQ(dispositionOf(SIGUSR1), &doNothing);
}

TEST(RegisterSignalHandler, LeavesAnIgnoredSignalIgnored) {
    std::signal(SIGUSR2, SIG_IGN);
    {
        const RegisterSignalHandler handler(SIGUSR2, &rememberSignal);
        EXPECT_THAT(FakeKovan::journal(),
                    ElementsAre("log INF Registering signal (signum: 12)", "log WRN Ignoring signal 12"));
        EXPECT_EQ(dispositionOf(SIGUSR2), SIG_IGN);
    }
    EXPECT_EQ(dispositionOf(SIGUSR2), SIG_IGN);
    std::signal(SIGUSR2, SIG_DFL);
}

TEST(NiceQuitHelper, HandlesSigTermAndThenSigInt) {
    const NiceQuitHelper helper;
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log INF Registering signal (signum: 15)", "log INF Registering signal (signum: 2)"));
    EXPECT_EQ(dispositionOf(SIGTERM), &NiceQuitHelper::niceQuitSignalHandler);
    EXPECT_EQ(dispositionOf(SIGINT), &NiceQuitHelper::niceQuitSignalHandler);
}

TEST(NiceQuitHelper, PutsTheEarlierHandlersBack) {
    { const NiceQuitHelper helper; }
    EXPECT_EQ(dispositionOf(SIGTERM), SIG_DFL);
    EXPECT_EQ(dispositionOf(SIGINT), SIG_DFL);
}

TEST(NiceQuitHelper, AProcessStartedWithSigTermIgnoredKeepsIgnoringIt) {
    EXPECT_IN_CHILD({
        std::signal(SIGTERM, SIG_IGN);
        const NiceQuitHelper helper;
        std::raise(SIGTERM);
        EXPECT_FALSE(NiceQuitHelper::s_quitFlag);
        EXPECT_THAT(FakeKovan::messages("WRN"), ElementsAre("Ignoring signal 15"));
    });
}

TEST(NiceQuitHelper, SigIntOnlyAsksForTheStop) {
    EXPECT_IN_CHILD({
        const NiceQuitHelper helper;
        const StandardOutput output;
        std::raise(SIGINT);
        EXPECT_EQ(output.text(), "Signal received, quitting... (signum: 2)\n");
        EXPECT_EQ(FakeKovan::messages().back(), "Signal received, quitting... (signum: 2)");
        EXPECT_TRUE(NiceQuitHelper::s_quitFlag);
        EXPECT_FALSE(NiceQuitHelper::s_sigTermFlag);
    });
}

TEST(NiceQuitHelper, SigTermAsksForTheStopAndIsRemembered) {
    EXPECT_IN_CHILD({
        const NiceQuitHelper helper;
        const StandardOutput output;
        std::raise(SIGTERM);
        EXPECT_EQ(output.text(), "Signal received, quitting... (signum: 15)\n");
        EXPECT_THAT(FakeKovan::messages("INF"),
                    ElementsAre("Registering signal (signum: 15)", "Registering signal (signum: 2)",
                                "Signal received, quitting... (signum: 15)", "Setting s_sigTermFlag true."));
        EXPECT_TRUE(NiceQuitHelper::s_quitFlag);
        EXPECT_TRUE(NiceQuitHelper::s_sigTermFlag);
    });
}

TEST(NiceQuitHelper, TheSecondSigTermIsAsOrderlyAsTheFirst) {
    EXPECT_IN_CHILD({
        const NiceQuitHelper helper;
        std::raise(SIGTERM);
        std::raise(SIGTERM);
        EXPECT_EQ(FakeKovan::count("INF", "Setting s_sigTermFlag true."), 2);
        EXPECT_THAT(FakeKovan::messages("FTL"), IsEmpty());
    });
}

TEST(NiceQuitHelper, TheThirdSigTermEndsTheProcessAtOnce) {
    EXPECT_EXIT(
        {
            FakeKovan::echoLogToStderr(true);
            const NiceQuitHelper helper;
            std::raise(SIGTERM);
            std::raise(SIGTERM);
            std::raise(SIGTERM);
        },
        ::testing::ExitedWithCode(143), HasSubstr("Received subsequent SIGTERM, forcing exit."));
}

TEST(NiceQuitHelper, SigIntNeverCountsAsASigTerm) {
    EXPECT_IN_CHILD({
        const NiceQuitHelper helper;
        for (const int signum : {SIGINT, SIGINT, SIGINT, SIGTERM, SIGINT, SIGTERM, SIGINT}) {
            std::raise(signum);
        }
        EXPECT_EQ(FakeKovan::count("INF", "Setting s_sigTermFlag true."), 2);
    });
}

// A thread that waits for the quit flag, for so long that only a notification can wake it in time.
class Waiter {
public:
    Waiter() { EXPECT_TRUE(m_thread.waitUntilItWaits()); }

    // Whether it was woken before its time was over.
    bool isWoken() {
        m_thread.finish();
        return m_woken;
    }

private:
    void wait() {
        const auto deadline = boost::chrono::steady_clock::now() + boost::chrono::seconds(20);
        std::unique_lock<std::mutex> lock(NiceQuitHelper::s_mutex);
        m_woken = NiceQuitHelper::s_condition.wait_until(lock, deadline) == boost::cv_status::no_timeout;
    }

    bool m_woken = false;
    OtherThread m_thread{[this] { wait(); }};
};

TEST(NiceQuitHelper, SettingTheQuitFlagWakesAllWaitingThreads) {
    EXPECT_IN_CHILD({
        Waiter first;
        Waiter second;
        NiceQuitHelper::setQuitFlag();
        EXPECT_TRUE(first.isWoken());
        EXPECT_TRUE(second.isWoken());
        EXPECT_TRUE(NiceQuitHelper::s_quitFlag);
        EXPECT_FALSE(NiceQuitHelper::s_sigTermFlag);
    });
}

TEST(NiceQuitHelper, ASignalWakesAllWaitingThreads) {
    EXPECT_IN_CHILD({
        const NiceQuitHelper helper;
        Waiter first;
        Waiter second;
        std::raise(SIGTERM);
        EXPECT_TRUE(first.isWoken());
        EXPECT_TRUE(second.isWoken());
    });
}

TEST(NiceQuitHelper, PutsSigIntBackBeforeSigTerm) {
    EXPECT_IN_CHILD({
        auto helper = std::make_unique<NiceQuitHelper>();
        recordHandlerChanges();
        helper.reset();
        EXPECT_THAT(handlerChanges(), ElementsAre(SIGINT, SIGTERM));
    });
}

// Standard output is a file here, so its text shows only after a flush.
TEST(NiceQuitHelper, TheThirdSigTermLosesNoOutput) {
    const TemporaryRoot root;
    const std::string file = (root / "output").string();
    EXPECT_EXIT(
        {
            if (std::freopen(file.c_str(), "w", stdout) == nullptr) {
                std::_Exit(1);
            }
            const NiceQuitHelper helper;
            for (int i = 0; i < 3; ++i) {
                std::raise(SIGTERM);
            }
        },
        ::testing::ExitedWithCode(143), "");
    const std::string line = "Signal received, quitting... (signum: 15)\n";
    EXPECT_EQ(root.read("output"), line + line + line);
}

TEST(StandardQuitLoop, PingsTheWatchdogUntilASignalComes) {
    EXPECT_IN_CHILD({
        const StandardOutput output;
        std::thread signaling([] {
            FakeKovan::waitForMessage("DBG", "Update of Watchdog status successfully sent with result: 0");
            std::raise(SIGINT);
        });
        NiceQuitHelper::standardQuitLoopWithDaemonWatchdogSupport();
        signaling.join();
        EXPECT_THAT(FakeKovan::journal(),
                    ElementsAre("log INF Registering signal (signum: 15)", "log INF Registering signal (signum: 2)",
                                "log INF Send SIGINT or SIGTERM to quit.", "hangguard register 300",
                                "log DBG Initialization of Watchdog status successfully sent with result: 0",
                                "hangguard notify",
                                "log DBG Update of Watchdog status successfully sent with result: 0",
                                "log INF Signal received, quitting... (signum: 2)", "log INF standardQuitLoop done."));
        EXPECT_EQ(output.text(), "Send SIGINT or SIGTERM to quit.\nSignal received, quitting... (signum: 2)\n"
                                 "standardQuitLoop done.\n");
        EXPECT_EQ(dispositionOf(SIGINT), SIG_DFL);
    });
}

TEST(StandardQuitLoop, PingsTheWatchdogEveryTenSeconds) {
    EXPECT_IN_CHILD({
        letTimeRunOut(3, [] { FakeKovan::setHangguardNotifyResult(-1); }); // the failing ping ends the loop
        NiceQuitHelper::standardQuitLoopWithDaemonWatchdogSupport();
        EXPECT_EQ(FakeKovan::hangguardNotifications(), 4);
        EXPECT_EQ(timeOuts().size(), 3U);
        for (const TimeOut& timeOut : timeOuts()) {
            EXPECT_LE(timeOut.fromTheBegin, std::chrono::seconds(10));
            EXPECT_GE(timeOut.fromTheWaitBefore, std::chrono::seconds(10));
        }
    });
}

TEST(StandardQuitLoop, ReturnsAtOnceWhenTheStopWasAskedForBefore) {
    EXPECT_IN_CHILD({
        NiceQuitHelper::setQuitFlag();
        const StandardOutput output;
        NiceQuitHelper::standardQuitLoopWithDaemonWatchdogSupport();
        EXPECT_THAT(FakeKovan::journal("hangguard"), ElementsAre("hangguard register 300"));
        EXPECT_EQ(output.text(), "standardQuitLoop done.\n");
        EXPECT_EQ(FakeKovan::messages().back(), "standardQuitLoop done.");
    });
}

TEST(StandardQuitLoop, EndsWithAFailedPing) {
    EXPECT_IN_CHILD({
        FakeKovan::setHangguardNotifyResult(-4);
        NiceQuitHelper::standardQuitLoopWithDaemonWatchdogSupport();
        EXPECT_TRUE(NiceQuitHelper::s_quitFlag);
        EXPECT_EQ(FakeKovan::hangguardNotifications(), 1);
        EXPECT_EQ(
            FakeKovan::countContaining("ERR", "Exception caught in standardQuitLoopWithDaemonWatchdogSupport(): "), 1);
        EXPECT_EQ(FakeKovan::countContaining("ERR", "Updating Watchdog failed with error code:-4"), 1);
        EXPECT_EQ(FakeKovan::messages().back(), "standardQuitLoop done.");
    });
}

TEST(StandardQuitLoop, ThrowsAFailedRegistrationAndPutsTheHandlersBack) {
    FakeKovan::setHangguardRegisterResult(-4);
    EXPECT_THROW(NiceQuitHelper::standardQuitLoopWithDaemonWatchdogSupport(), Common::Utils::GenericException);
    EXPECT_EQ(dispositionOf(SIGTERM), SIG_DFL);
    EXPECT_EQ(FakeKovan::hangguardNotifications(), 0);
}

} // namespace
} // namespace DAX::Tests
