#include "Platform/OperatingSystem/OSSignals.h"

#include <chrono>
#include <csignal>
#include <iostream>
#include <sstream>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Utility/Utils/GenericException.h"
#include "support/FakeKovan.h"
#include "support/ProcessDeath.h"

namespace DAX {
namespace Tests {
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

// What the process does with the signal now.
void (*dispositionOf(int signum))(int) {
    struct sigaction action {};
    ::sigaction(signum, nullptr, &action);
    return action.sa_handler;
}

// What is written to standard output while the object lives.
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

TEST(NiceQuitHelper, SigIntAsksForTheStopAlone) {
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

TEST(NiceQuitHelper, SettingTheQuitFlagWakesAWaitingThread) {
    EXPECT_IN_CHILD({
        std::thread waiting([] {
            std::unique_lock<std::mutex> lock(NiceQuitHelper::s_mutex);
            NiceQuitHelper::s_condition.wait(lock, [] { return NiceQuitHelper::s_quitFlag; });
        });
        NiceQuitHelper::setQuitFlag();
        waiting.join();
        EXPECT_TRUE(NiceQuitHelper::s_quitFlag);
        EXPECT_FALSE(NiceQuitHelper::s_sigTermFlag);
    });
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
} // namespace Tests
} // namespace DAX
