#include "Utility/Utils/BlockedSignals.h"

#include <initializer_list>
#include <thread>

#include <gtest/gtest.h>

namespace DAX::Tests {
namespace {

using Common::Utils::BlockedSignals;

sigset_t setOf(std::initializer_list<int> signals) {
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : signals) {
        sigaddset(&set, signal);
    }
    return set;
}

bool isBlocked(int signal) {
    sigset_t mask;
    pthread_sigmask(SIG_SETMASK, nullptr, &mask);
    return sigismember(&mask, signal) == 1;
}

TEST(BlockedSignalsTest, AreBlockedWhileItLivesAndNoOthers) {
    {
        const BlockedSignals blocked(setOf({SIGUSR1, SIGUSR2}));
        EXPECT_TRUE(isBlocked(SIGUSR1));
        EXPECT_TRUE(isBlocked(SIGUSR2));
        EXPECT_FALSE(isBlocked(SIGTERM));
    }
    EXPECT_FALSE(isBlocked(SIGUSR1));
    EXPECT_FALSE(isBlocked(SIGUSR2));
}

TEST(BlockedSignalsTest, StayBlockedWhenTheyWereBefore) {
    const BlockedSignals outer(setOf({SIGUSR1}));
    { const BlockedSignals inner(setOf({SIGUSR1, SIGUSR2})); }
    EXPECT_TRUE(isBlocked(SIGUSR1));
    EXPECT_FALSE(isBlocked(SIGUSR2));
}

TEST(BlockedSignalsTest, AreBlockedInAThreadThatIsMadeMeanwhile) {
    bool blocked = false;
    {
        const BlockedSignals signals(setOf({SIGUSR1}));
        std::thread([&blocked] { blocked = isBlocked(SIGUSR1); }).join();
    }
    EXPECT_TRUE(blocked);
}

} // namespace
} // namespace DAX::Tests
