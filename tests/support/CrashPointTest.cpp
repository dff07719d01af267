#include "support/CrashPoint.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace DAX::Tests {
namespace {

// Touches no object, since a sanitizer that checks one makes system calls of its own.
void takeThreeSteps(int* steps) {
    for (int step = 0; step < 3; ++step) {
        syscall(SYS_getppid);
        ++*steps;
    }
}

// How far a child got.
class CrashPointTest : public testing::Test {
protected:
    ~CrashPointTest() override { munmap(steps, sizeof(int)); }

    int* const steps =
        static_cast<int*>(mmap(nullptr, sizeof(int), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));

    bool killInThreeSteps(int call) const {
        return killAtSystemCall([counter = steps] { takeThreeSteps(counter); }, call);
    }
};

TEST_F(CrashPointTest, KillsBeforeTheCall) {
    for (int call = 0; call < 3; ++call) {
        *steps = 0;
        EXPECT_TRUE(killInThreeSteps(call));
        EXPECT_EQ(*steps, call);
    }
}

TEST_F(CrashPointTest, KillsAtTheEndOfTheProcessLast) {
    EXPECT_TRUE(killInThreeSteps(3)); // the exit
    EXPECT_EQ(*steps, 3);
}

TEST_F(CrashPointTest, SaysThatTheOperationCameToItsEnd) {
    EXPECT_FALSE(killInThreeSteps(4));
    EXPECT_EQ(*steps, 3);
}

} // namespace
} // namespace DAX::Tests
