#include "Platform/OperatingSystem/SignalThread.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <iterator>
#include <string>

#include <boost/filesystem/operations.hpp>
#include <boost/thread/exceptions.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "FailingWaits.h"
#include "Platform/OperatingSystem/OSSignals.h"
#include "support/FakeKovan.h"
#include "support/NoThreads.h"
#include "support/ProcessDeath.h"
#include "support/Thrown.h"
#include "support/WaitUntil.h"

namespace DAX::Tests {
namespace {

using Platform::NiceQuitHelper;
using Platform::RegisterSignalHandler;
using Platform::SignalThread;

std::atomic<long> handlingThread{0};
void rememberThread(int) {
    handlingThread = syscall(SYS_gettid);
}

bool isHeldBack(int signum) {
    sigset_t mask;
    pthread_sigmask(SIG_SETMASK, nullptr, &mask);
    return sigismember(&mask, signum) == 1;
}

bool isQuitFlagSet() {
    const std::lock_guard<std::mutex> lock(NiceQuitHelper::s_mutex);
    return NiceQuitHelper::s_quitFlag;
}

class SignalThreadTest : public testing::TestWithParam<int> {};

TEST_P(SignalThreadTest, RunsTheHandlersOfBothSignals) {
    handlingThread = 0;
    const SignalThread thread;
    const RegisterSignalHandler handler(GetParam(), &rememberThread);
    kill(getpid(), GetParam());
    ASSERT_TRUE(waitUntil([] { return handlingThread != 0; }));
    EXPECT_NE(handlingThread, syscall(SYS_gettid));
}

TEST_P(SignalThreadTest, HoldsBothSignalsBackFromItsMakerWhileItLives) {
    {
        const SignalThread thread;
        EXPECT_TRUE(isHeldBack(GetParam()));
    }
    EXPECT_FALSE(isHeldBack(GetParam()));
}

TEST_P(SignalThreadTest, LeavesAnIgnoredSignalIgnored) {
    EXPECT_IN_CHILD({
        ::signal(GetParam(), SIG_IGN);
        const SignalThread thread;
        handlingThread = 0;
        kill(getpid(), GetParam());
        const RegisterSignalHandler handler(GetParam() == SIGTERM ? SIGINT : SIGTERM, &rememberThread);
        kill(getpid(), GetParam() == SIGTERM ? SIGINT : SIGTERM);
        EXPECT_TRUE(waitUntil([] { return handlingThread != 0; }));
    });
}

TEST_P(SignalThreadTest, EndsTheProcessByASignalThatNobodyHandles) {
    EXPECT_EXIT(
        {
            ::signal(GetParam(), SIG_DFL);
            const SignalThread thread;
            kill(getpid(), GetParam());
            waitUntil([] { return false; });
        },
        testing::KilledBySignal(GetParam()), "");
}

INSTANTIATE_TEST_SUITE_P(Signals, SignalThreadTest, testing::Values(SIGTERM, SIGINT));

TEST(SignalThread, KeepsAHandlerFromWaitingForTheThreadThatItInterrupts) {
    EXPECT_IN_CHILD({
        const SignalThread thread;
        const NiceQuitHelper handlers;
        {
            const std::lock_guard<std::mutex> lock(NiceQuitHelper::s_mutex);
            kill(getpid(), SIGTERM);
            EXPECT_TRUE(FakeKovan::waitForMessage("INF", "Setting s_sigTermFlag true."));
        }
        EXPECT_TRUE(waitUntil(isQuitFlagSet));
    });
}

// --- Failures of the system ----------------------------------------------------------------------------------------

int openDescriptors() {
    const boost::filesystem::directory_iterator descriptors("/proc/self/fd");
    return static_cast<int>(std::distance(descriptors, boost::filesystem::directory_iterator()));
}

TEST(SignalThread, HoldsNothingBackAndLeavesNothingOpenWithoutADescriptor) {
    EXPECT_IN_CHILD({
        failSignalfd(EMFILE);
        const int before = openDescriptors();
        const std::string text = thrownText<Common::Utils::errinfo_stream_text>([] { const SignalThread thread; });
        EXPECT_EQ(text, "Cannot wait for signals: errno=24 (Too many open files)");
        EXPECT_EQ(openDescriptors(), before);
        EXPECT_FALSE(isHeldBack(SIGTERM));
        EXPECT_FALSE(isHeldBack(SIGINT));
    });
}

TEST(SignalThread, HoldsNothingBackAndLeavesNothingOpenWithoutAThread) {
    const int before = openDescriptors();
    {
        const NoThreads noThreads;
        EXPECT_THROW(const SignalThread thread, boost::thread_resource_error);
    }
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_FALSE(isHeldBack(SIGTERM));
    EXPECT_FALSE(isHeldBack(SIGINT));
}

TEST(SignalThread, LeavesNothingOpenAtItsEnd) {
    const int before = openDescriptors();
    { const SignalThread thread; }
    EXPECT_EQ(openDescriptors(), before);
}

// The handlers run although the wait for signals fails, and the thread does not spin.
void expectHandlersWithoutWaiting(const std::string& problem) {
    const auto begun = std::chrono::steady_clock::now();
    {
        const SignalThread thread;
        for (const int signum : {SIGTERM, SIGINT, SIGTERM}) {
            handlingThread = 0;
            const RegisterSignalHandler handler(signum, &rememberThread);
            kill(getpid(), signum);
            EXPECT_TRUE(waitUntil([] { return handlingThread != 0; }));
        }
    }
    const auto passed = std::chrono::steady_clock::now() - begun;
    EXPECT_LE(polls(), passed / std::chrono::milliseconds(100) + 1);
    EXPECT_THAT(FakeKovan::messages("ERR"),
                testing::ElementsAre("Cannot wait for signals:" + problem + ". They are looked for every 100 ms."));
}

TEST(SignalThread, RunsTheHandlersWhilePollFails) {
    EXPECT_IN_CHILD({
        failPoll(ENOMEM);
        expectHandlersWithoutWaiting(" errno=12 (Cannot allocate memory)");
    });
}

TEST(SignalThread, RunsTheHandlersWhilePollFindsItsDescriptorsBroken) {
    EXPECT_IN_CHILD({
        findAllBroken();
        expectHandlersWithoutWaiting(" errno=9 (Bad file descriptor)");
    });
}

TEST(SignalThread, GoesOnWaitingSilentlyWhenPollIsInterrupted) {
    EXPECT_IN_CHILD({
        const SignalThread thread;
        handlingThread = 0;
        const RegisterSignalHandler handler(SIGTERM, &rememberThread);
        failPoll(EINTR);
        kill(getpid(), SIGTERM);
        EXPECT_TRUE(waitUntil([] { return handlingThread != 0; }));
        failPoll(0);
        EXPECT_THAT(FakeKovan::messages("ERR"), testing::IsEmpty());
    });
}

} // namespace
} // namespace DAX::Tests
