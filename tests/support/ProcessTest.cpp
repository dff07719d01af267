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

    EXPECT_EQ(ProcessEnd::exited(3), result.end);
    EXPECT_EQ("out\n", result.output);
    EXPECT_EQ("err\n", result.errors);
}

TEST(ProcessTest, TellsASignalFromTheCodeThatShellsGiveIt) {
    EXPECT_EQ(ProcessEnd::killedBy(SIGTERM), run(shell("kill -TERM $$")).end);
    EXPECT_EQ(ProcessEnd::exited(143), run(shell("exit 143")).end);
}

TEST(ProcessTest, GivesTheProgramItsInput) {
    Command command{{"cat"}, {}, "some\ntext", {}};

    EXPECT_EQ("some\ntext", run(command).output);
}

TEST(ProcessTest, EnvironmentStandsOverTheCallersOwn) {
    setenv("PROCESS_TEST_CHANGED", "old", 1);
    setenv("PROCESS_TEST_GONE", "old", 1);
    Command command = shell("echo $PROCESS_TEST_CHANGED ${PROCESS_TEST_GONE-none}");
    command.environment = {{"PROCESS_TEST_CHANGED", "new"}, {"PROCESS_TEST_GONE", std::nullopt}};

    EXPECT_EQ("new none\n", run(command).output);
}

TEST(ProcessTest, StartsWithTheSignalsIgnoredThatTheCommandNames) {
    Command command = shell("kill -TERM $$; echo lives");
    command.ignoredSignals = {SIGTERM};

    EXPECT_EQ("lives\n", run(command).output);
}

TEST(ProcessTest, CollectsMoreThanAPipeHolds) {
    const FinishedRun result = run(shell("head -c 1000000 /dev/zero"));

    EXPECT_EQ(1000000u, result.output.size());
}

TEST(ProcessTest, WaitsForTextAndSignalsTheRunningProgram) {
    Process process(shell("trap 'echo bye; exit 4' TERM; echo ready; while :; do sleep 0.01; done"));

    ASSERT_TRUE(process.waitForOutput("ready\n"));
    process.send(SIGTERM);

    EXPECT_EQ(ProcessEnd::exited(4), process.waitForEnd());
    EXPECT_EQ("ready\nbye\n", process.output());
}

TEST(ProcessTest, WaitingForTextEndsWithTheProcess) {
    Process process(shell("echo other"));

    EXPECT_FALSE(process.waitForOutput("never", 1h));
}

TEST(ProcessTest, WaitForEndGivesUpAtItsBound) {
    Process process(shell("exec sleep 1000"));

    EXPECT_EQ(std::nullopt, process.waitForEnd(1ms));
}

TEST(ProcessTest, DestructorKillsAndReaps) {
    pid_t pid;
    {
        Process process(shell("exec sleep 1000"));
        pid = process.pid();
    }

    EXPECT_EQ(-1, kill(pid, 0));
}

TEST(ProcessTest, DoesNotWaitForGrandchildrenThatHoldThePipes) {
    const FinishedRun result = run(shell("sleep 1000 & echo $!"));

    EXPECT_EQ(ProcessEnd::exited(0), result.end);
    EXPECT_EQ(0, kill(std::stoi(result.output), SIGKILL));
}

TEST(ProcessTest, ProgramThatDoesNotExistEndsWithTheReason) {
    const FinishedRun result = run({{"/nowhere/program"}, {}, {}, {}});

    EXPECT_EQ(ProcessEnd::exited(127), result.end);
    EXPECT_EQ("No such file or directory", result.errors);
}
