#include <chrono>

#include <gtest/gtest.h>

#include "Common/Logging/Logging.h"
#include "support/FakeConsole.h"
#include "support/ProcessDeath.h"
#include "support/TemporaryRoot.h"

using DAX::Common::Logging::LoggingClass;
using DAX::Tests::TemporaryRoot;

namespace {

// printDirect redirects the standard output of the process, so it runs in a child.
[[noreturn]] void printDirectAndExit() {
    char text[] = "the end";
    LoggingClass::printDirect("tag", LoggingClass::FTL, text);
    std::exit(0);
}

std::string ownThreadName() {
    char threadId[64];
    LoggingClass::getThreadId(threadId, sizeof(threadId));
    return std::string(threadId).substr(std::string(threadId).find(' ') + 1);
}

TEST(PrintDirectTest, WritesTagLevelThreadAndTextToTheConsole) {
    const TemporaryRoot root;
    FakeConsole::redirectTo((root / "console").string());
    EXPECT_EXIT(printDirectAndExit(), testing::ExitedWithCode(0), "^$");

    EXPECT_THAT(root.read("console"),
                testing::MatchesRegex("tag: Direct \\[FTL\\]\\[[0-9]+ " + ownThreadName() + "\\] the end\n"));
}

TEST(PrintDirectTest, GivesTheConsole100Milliseconds) {
    const TemporaryRoot root;
    FakeConsole::redirectTo((root / "console").string());
    EXPECT_IN_CHILD({
        char text[] = "the end";
        const auto start = std::chrono::steady_clock::now();
        LoggingClass::printDirect("tag", LoggingClass::FTL, text);
        EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(100));
    });
}

TEST(PrintDirectTest, LeavesTheMessageOnStandardErrorWhenThereIsNoConsole) {
    EXPECT_EXIT(
        {
            FakeConsole::refuse();
            printDirectAndExit();
        },
        testing::ExitedWithCode(0),
        testing::ContainsRegex("Cannot open /dev/console\ntag: Direct \\[FTL\\]\\[[0-9]+ " + ownThreadName() +
                               "\\] the end\n"));
}

TEST(PrintDirectTest, WritesNothingToTheSystemLog) {
    EXPECT_IN_CHILD({
        char text[] = "the end";
        FakeConsole::refuse();
        LoggingClass::printDirect("tag", LoggingClass::FTL, text);
        EXPECT_TRUE(FakeKovan::logLines().empty());
    });
}

} // namespace
