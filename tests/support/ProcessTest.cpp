#include "support/Process.h"

#include <csignal>

#include <gtest/gtest.h>

using namespace DAX::Tests;
using namespace std::chrono_literals;

namespace {

Command shell(const std::string& script) {
    return {{"sh", "-c", script}, {}, {}, {}};
}

} // namespace

TEST(ProcessTest, RunReturnsCodeAndBothOutputs) {
    const FinishedRun result = run(shell("echo out; echo err >&2; exit 3"));

    EXPECT_EQ(result.end, ProcessEnd::exited(3));
    EXPECT_EQ(result.output, "out\n");
    EXPECT_EQ(result.errors, "err\n");
}

TEST(ProcessTest, TellsASignalFromTheCodeThatShellsGiveIt) {
    EXPECT_EQ(run(shell("kill -TERM $$")).end, ProcessEnd::killedBy(SIGTERM));
    EXPECT_EQ(run(shell("exit 143")).end, ProcessEnd::exited(143));
}

TEST(ProcessTest, GivesTheProgramItsInput) {
    Command command{{"cat"}, {}, "some\ntext", {}};

    EXPECT_EQ(run(command).output, "some\ntext");
}

TEST(ProcessTest, EnvironmentIsAddedToTheCallersOwn) {
    setenv("PROCESS_TEST_CHANGED", "old", 1);
    setenv("PROCESS_TEST_GONE", "old", 1);
    Command command = shell("echo $PROCESS_TEST_CHANGED ${PROCESS_TEST_GONE-none}");
    command.environment = {{"PROCESS_TEST_CHANGED", "new"}, {"PROCESS_TEST_GONE", std::nullopt}};

    EXPECT_EQ(run(command).output, "new none\n");
}

TEST(ProcessTest, StartsWithTheSignalsIgnoredThatTheCommandNames) {
    Command command = shell("kill -TERM $$; echo lives");
    command.ignoredSignals = {SIGTERM};

    EXPECT_EQ(run(command).output, "lives\n");
}

TEST(ProcessTest, CollectsMoreThanAPipeHolds) {
    const FinishedRun result = run(shell("head -c 1000000 /dev/zero"));

    EXPECT_EQ(result.output.size(), 1000000u);
}

TEST(ProcessTest, WaitsForTextAndSignalsTheRunningProgram) {
    Process process(shell("trap 'echo bye; exit 4' TERM; echo ready; while :; do sleep 0.01; done"));

    ASSERT_TRUE(process.waitForOutput("ready\n"));
    process.send(SIGTERM);

    EXPECT_EQ(process.waitForEnd(), ProcessEnd::exited(4));
    EXPECT_EQ(process.output(), "ready\nbye\n");
}

TEST(ProcessTest, WaitingForTextEndsWithTheProcess) {
    Process process(shell("echo other"));

    EXPECT_FALSE(process.waitForOutput("never", 1h));
}

TEST(ProcessTest, WaitForEndGivesUpAtItsBound) {
    Process process(shell("exec sleep 1000"));

    EXPECT_EQ(process.waitForEnd(1ms), std::nullopt);
}

TEST(ProcessTest, DestructorKillsAndReaps) {
    pid_t pid;
    {
        Process process(shell("exec sleep 1000"));
        pid = process.pid();
    }

    EXPECT_EQ(kill(pid, 0), -1);
}

TEST(ProcessTest, DoesNotWaitForGrandchildrenThatHoldThePipes) {
    const FinishedRun result = run(shell("sleep 1000 & echo $!"));

    EXPECT_EQ(result.end, ProcessEnd::exited(0));
    EXPECT_EQ(kill(std::stoi(result.output), SIGKILL), 0);
}

TEST(ProcessTest, ProgramThatDoesNotExistEndsWithTheReason) {
    const FinishedRun result = run({{"/nowhere/program"}, {}, {}, {}});

    EXPECT_EQ(result.end, ProcessEnd::exited(127));
    EXPECT_EQ(result.errors, "No such file or directory");
}
