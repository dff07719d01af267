// The effect of signals on daxctl and on the commands that it runs. A test that raises a signal does so in a child
// process.
#include <cerrno>
#include <csignal>
#include <utility>

#include <gmock/gmock.h>
#include <poll.h>

#include "clients/daxctl/StandardError.h"
#include "daxctl/ChildProcess.h"
#include "daxctl/EndRequest.h"
#include "support/ProcessDeath.h"
#include "support/WaitUntil.h"

namespace DAX::Tests {
namespace {

using namespace testing;
using daxctl::ChildOutput;
using daxctl::EndRequest;
using daxctl::Interruption;
using std::chrono::milliseconds;

class EachSignal : public TestWithParam<int> {};

TEST_P(EachSignal, IsHeldBackUntilItIsLookedFor) {
    EXPECT_IN_CHILD({
        Interruption interruption;
        EXPECT_FALSE(interruption.requested());
        raise(GetParam());
        EXPECT_TRUE(interruption.requested());
        EXPECT_TRUE(interruption.wait(milliseconds(0)));
    });
}

TEST_P(EachSignal, IsLeftAloneWhenTheProcessIgnoresIt) {
    EXPECT_IN_CHILD({
        std::signal(GetParam(), SIG_IGN);
        Interruption interruption;
        raise(GetParam());
        EXPECT_FALSE(interruption.requested());
    });
}

TEST_P(EachSignal, EndsTheProcessAgainAfterwards) {
    EXPECT_EXIT(
        {
            { Interruption interruption; }
            raise(GetParam());
        },
        KilledBySignal(GetParam()), "");
}

INSTANTIATE_TEST_SUITE_P(OfAnInterruption, EachSignal, Values(SIGINT, SIGTERM, SIGHUP));

class EachRequest : public TestWithParam<int> {};

TEST_P(EachRequest, IsToldInsteadOfEndingTheProcess) {
    EXPECT_IN_CHILD({
        EndRequest request;
        EXPECT_FALSE(EndRequest::isMade());
        EXPECT_EQ(EndRequest::age(), milliseconds(0));
        raise(GetParam());
        raise(GetParam());
        EXPECT_TRUE(EndRequest::isMade());
    });
}

TEST_P(EachRequest, EndsTheProcessWhenItIsMadeAgain) {
    EXPECT_EXIT(
        {
            EndRequest request;
            raise(SIGHUP);
            waitUntil([] { return EndRequest::age() > milliseconds(100); });
            raise(GetParam());
        },
        KilledBySignal(GetParam()), "");
}

TEST_P(EachRequest, IsLeftAloneWhenTheProcessIgnoresIt) {
    EXPECT_IN_CHILD({
        std::signal(GetParam(), SIG_IGN);
        EndRequest request;
        raise(GetParam());
        EXPECT_FALSE(EndRequest::isMade());
    });
}

// Also the second wait, which begins when the signal has come and gone.
TEST_P(EachRequest, EndsEveryWait) {
    EXPECT_IN_CHILD({
        EndRequest request;
        raise(GetParam());
        for (int i = 0; i < 2; ++i) {
            EXPECT_EQ(poll(nullptr, 0, -1), -1);
            EXPECT_EQ(errno, EINTR);
        }
    });
}

INSTANTIATE_TEST_SUITE_P(OfTheEnd, EachRequest, Values(SIGINT, SIGTERM, SIGHUP));

// A shell lets what it starts in the background ignore Ctrl-C, and the commands leave that as it is. The tests of this
// program would wait for ever.
const bool TAKES_SIGNALS = [] {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        std::signal(signal, SIG_DFL);
    }
    return true;
}();

class ChildProcess : public Test {
protected:
    int run(const std::vector<std::string>& line) {
        return daxctl::runChild(line, ChildOutput::TO_OUTPUT, m_signals).status;
    }

    Interruption m_signals;
};

TEST_F(ChildProcess, GivesTheStatusOfTheCommand) {
    EXPECT_EQ(run({"true"}), 0);
    EXPECT_EQ(run({"sh", "-c", "exit 7"}), 7);
}

TEST_F(ChildProcess, GivesTheSignalThatEndedTheCommand) {
    EXPECT_EQ(run({"sh", "-c", "kill -KILL $$"}), 128 + SIGKILL);
}

TEST_F(ChildProcess, TellsWhyACommandCannotBeStarted) {
    StandardError pipe(StandardError::Kind::PIPE);
    EXPECT_EQ(run({"/no/such/program"}), 127);
    EXPECT_EQ(pipe.text(), "/no/such/program: No such file or directory\n");
}

TEST_F(ChildProcess, LetsSignalsEndTheCommandThatAreHeldBackOrIgnoredHere) {
    const auto ignored = std::signal(SIGPIPE, SIG_IGN);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
        EXPECT_EQ(run({"sh", "-c", "kill -" + std::to_string(signal) + " $$; exit 1"}), 128 + signal);
    }
    std::signal(SIGPIPE, ignored);
}

TEST_F(ChildProcess, HandsAnInterruptionOnAsSigterm) {
    raise(SIGINT);
    EXPECT_EQ(run({"sleep", "1000"}), 128 + SIGTERM);
}

TEST_F(ChildProcess, WaitsForACommandThatTidiesUpAfterAnInterruption) {
    EXPECT_EQ(run({"sh", "-c", "trap 'exit 5' TERM; kill -INT $PPID; while true; do sleep 0.05; done"}), 5);
}

TEST_F(ChildProcess, KillsTheCommandAtTheSameSignalOnceMore) {
    EXPECT_EQ(run({"sh", "-c", "trap '' TERM; while true; do kill -INT $PPID; sleep 0.05; done"}), 128 + SIGKILL);
}

TEST_F(ChildProcess, KillsNoCommandForTwoDifferentSignals) {
    EXPECT_EQ(run({"sh", "-c", "trap '' TERM; kill -INT $PPID; sleep 0.1; kill -HUP $PPID; sleep 0.1; exit 5"}), 5);
}

TEST_F(ChildProcess, TakesTheSameSignalTwiceAtOnceForOne) {
    bool isRepeated = false;
    const auto repeat = [&] {
        if (m_signals.first() == SIGINT && !std::exchange(isRepeated, true)) {
            raise(SIGINT);
        }
    };
    const std::vector<std::string> line = {
        "sh", "-c", "trap 'sleep 0.3; exit 5' TERM; kill -INT $PPID; while true; do sleep 0.02; done"};
    EXPECT_EQ(daxctl::runChild(line, ChildOutput::TO_OUTPUT, m_signals, repeat).status, 5);
    EXPECT_TRUE(isRepeated);
}

TEST_F(ChildProcess, TellsWhetherTheCommandWasStarted) {
    StandardError pipe(StandardError::Kind::PIPE);
    EXPECT_TRUE(daxctl::runChild({"sh", "-c", "exit 127"}, ChildOutput::TO_OUTPUT, m_signals).wasStarted);
    EXPECT_FALSE(daxctl::runChild({"/no/such/program"}, ChildOutput::TO_OUTPUT, m_signals).wasStarted);
}

TEST_F(ChildProcess, CallsBackMeanwhile) {
    int calls = 0;
    EXPECT_EQ(daxctl::runChild({"sleep", "1000"}, ChildOutput::TO_OUTPUT, m_signals,
                               [&calls] {
                                   if (++calls == 3) {
                                       raise(SIGTERM);
                                   }
                               })
                  .status,
              128 + SIGTERM);
    EXPECT_GE(calls, 3);
}

TEST_F(ChildProcess, WritesToStandardErrorWhenItIsToldTo) {
    StandardError pipe(StandardError::Kind::PIPE);
    EXPECT_EQ(daxctl::runChild({"echo", "inside"}, ChildOutput::TO_ERRORS, m_signals).status, 0);
    EXPECT_EQ(pipe.text(), "inside\n");
}

TEST_F(ChildProcess, WritesToStandardOutputOtherwise) {
    StandardError pipe(StandardError::Kind::PIPE);
    internal::CaptureStdout();
    EXPECT_EQ(run({"echo", "inside"}), 0);
    EXPECT_EQ(internal::GetCapturedStdout(), "inside\n");
    EXPECT_EQ(pipe.text(), "");
}

} // namespace
} // namespace DAX::Tests
