// How long a silent daemon holds up a command that somebody wants to end. Each test runs in a child process.
#include "daxctl/SilenceGuard.h"

#include <csignal>
#include <cstdio>
#include <thread>
#include <tuple>

#include <gmock/gmock.h>
#include <unistd.h>

#include "support/ProcessDeath.h"
#include "support/WaitUntil.h"

namespace DAX::Tests {
namespace {

using namespace testing;
using daxctl::Interruption;
using daxctl::SilenceGuard;
using std::chrono::milliseconds;

const milliseconds FOR_EVER = std::chrono::hours(1);

void pressCtrlC() {
    kill(getpid(), SIGINT);
}

void saySilence() {
    std::fprintf(stderr, "It is silent.\n");
}

// A call without an answer.
void waitInVain() {
    std::this_thread::sleep_for(FOR_EVER);
}

TEST(SilenceGuard, EndsTheProcessWithOneAfterAnInterruption) {
    EXPECT_EXIT(
        {
            Interruption interruption;
            const SilenceGuard guard(interruption, saySilence, milliseconds(50));
            pressCtrlC();
            waitInVain();
        },
        ExitedWithCode(1), "^It is silent.\n$");
}

TEST(SilenceGuard, MindsAnInterruptionFromBefore) {
    EXPECT_EXIT(
        {
            Interruption interruption;
            pressCtrlC();
            std::ignore = interruption.requested();
            const SilenceGuard guard(interruption, saySilence, milliseconds(50));
            waitInVain();
        },
        ExitedWithCode(1), "^It is silent.\n$");
}

TEST(SilenceGuard, LetsASecondSignalEndTheProcessAtOnce) {
    EXPECT_EXIT(
        {
            Interruption interruption;
            const SilenceGuard guard(interruption, saySilence, FOR_EVER);
            waitUntil([] {
                pressCtrlC();
                return false;
            });
        },
        KilledBySignal(SIGINT), "^$");
}

TEST(SilenceGuard, WaitsForADaemonThatAnswers) {
    EXPECT_IN_CHILD({
        Interruption interruption;
        {
            SilenceGuard guard(interruption, saySilence, std::chrono::seconds(1));
            pressCtrlC();
            const auto begin = std::chrono::steady_clock::now();
            waitUntil([&] {
                guard.heard();
                return std::chrono::steady_clock::now() - begin > milliseconds(1500);
            });
        }
        EXPECT_TRUE(interruption.requested());
    });
}

TEST(SilenceGuard, LetsTheCommandLookForASignalAsEver) {
    EXPECT_IN_CHILD({
        Interruption interruption;
        const SilenceGuard guard(interruption, saySilence, FOR_EVER);
        EXPECT_FALSE(interruption.requested());
        pressCtrlC();
        EXPECT_TRUE(waitUntil([&] { return interruption.requested(); }));
    });
}

} // namespace
} // namespace DAX::Tests
