#include "Platform/OperatingSystem/SignalThread.h"

#include <atomic>
#include <csignal>

#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "Platform/OperatingSystem/OSSignals.h"
#include "support/FakeKovan.h"
#include "support/ProcessDeath.h"
#include "support/WaitUntil.h"

namespace DAX {
namespace Tests {
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

} // namespace
} // namespace Tests
} // namespace DAX
