#include "Utility/Utils/DAXAssert.h"

#include <cstddef>
#include <exception>
#include <functional>
#include <stdexcept>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "DlogHook.h"
#include "support/FakeConsole.h"
#include "support/FakeEvents.h"
#include "support/NoMemory.h"
#include "support/ProcessDeath.h"
#include "support/TemporaryRoot.h"

using namespace DAX::Common::Utils;
using DAX::Tests::NoMemory;
using DAX::Tests::TemporaryRoot;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::KilledBySignal;
using testing::Not;

namespace {

void failWithMessage() {
    DAXAssertionFailedMsg("a == b", "they differ", "void f(int)", "/src/folder/File.cpp", 12);
}

void failWithoutMessage() {
    DAXAssertionFailed("a == b", "void f(int)", "/src/folder/File.cpp", 12);
}

const char* const TEXT = "ASSERTION FAILED: a == b, void f\\(int\\), File\\.cpp:12";

class DAXAssertTest : public testing::Test {
protected:
    DAXAssertTest() { FakeConsole::redirectTo((m_root / "console").string()); }

    std::string console() const { return m_root.read("console"); }

    TemporaryRoot m_root;
};

// Runs in the dying process: writes to standard error what the platform was given.
template <class Failure>
void dieEchoing(Failure failure) {
    FakeKovan::echoLogToStderr(true);
    failure();
}

TEST_F(DAXAssertTest, LogsTheAssertionAndItsMessageUnderItsOwnSource) {
    EXPECT_EXIT(dieEchoing(failWithMessage), KilledBySignal(SIGABRT),
                ContainsRegex(std::string("\\[FTL\\] DAXAssert\\.cpp:[0-9]+>") + TEXT + "\nMESSAGE: they differ\n"));
}

TEST_F(DAXAssertTest, LogsNoMessageLineWithoutAMessage) {
    EXPECT_EXIT(dieEchoing(failWithoutMessage), KilledBySignal(SIGABRT),
                testing::AllOf(ContainsRegex(std::string("\\[FTL\\] DAXAssert\\.cpp:[0-9]+>") + TEXT + "\n"),
                               Not(HasSubstr("MESSAGE: "))));
}

TEST_F(DAXAssertTest, WritesTheTextToTheConsole) {
    EXPECT_EXIT(failWithMessage(), KilledBySignal(SIGABRT), "");

    EXPECT_THAT(console(),
                testing::MatchesRegex(std::string("org\\.kovan\\.tv\\.dax\\.DAX: Direct \\[FTL\\]\\[.*\\] ") + TEXT +
                                      "\nMESSAGE: they differ\n"));
}

TEST_F(DAXAssertTest, SendsAnErrorEventWithItsFiveFields) {
    EXPECT_EXIT(dieEchoing(failWithMessage), KilledBySignal(SIGABRT),
                HasSubstr("AddEventLog : 23_daxinfo,ERROR,EV008,"
                          "{file=File.cpp;func=void f(int);line=12;expr=a == b;msg=they differ}"));
}

TEST_F(DAXAssertTest, SendsAnEmptyMessageFieldWithoutAMessage) {
    EXPECT_EXIT(dieEchoing(failWithoutMessage), KilledBySignal(SIGABRT), HasSubstr("expr=a == b;msg=}"));
}

TEST_F(DAXAssertTest, SendsTheEventThenWritesToTheConsoleThenLogs) {
    EXPECT_EXIT(
        {
            FakeConsole::refuse(); // so that all three can be seen in one stream
            dieEchoing(failWithoutMessage);
        },
        KilledBySignal(SIGABRT),
        ContainsRegex("AddEventLog : .*\nCannot open /dev/console\n.*Direct .*\n.*DAXAssert\\.cpp:"));
}

TEST_F(DAXAssertTest, EndsTheProcessAlthoughTheEventIsNotTaken) {
    FakeKovan::setEventResult(0);
    EXPECT_EXIT(dieEchoing(failWithMessage), KilledBySignal(SIGABRT),
                ContainsRegex("\\[FTL\\] CKPIEventSender.cpp:[0-9]+>KPI event send fail : \\(ERROR\\) Code\\(0\\)"));
}

// What the platform's logger does before it takes the event.
void atTheEvent(const std::function<void()>& action) {
    FakeKovan::onEvent(action);
    dieEchoing(failWithMessage);
}

TEST_F(DAXAssertTest, IsReportedAlthoughTheEventLoggerThrows) {
    EXPECT_EXIT(atTheEvent([] { throw std::runtime_error("closed"); }), KilledBySignal(SIGABRT),
                ContainsRegex(std::string("\\[FTL\\] DAXAssert\\.cpp:[0-9]+>The error event cannot be sent: closed\n"
                                          "(.*\n)*.*\\[FTL\\] DAXAssert\\.cpp:[0-9]+>") +
                              TEXT + "\nMESSAGE: they differ\n"));
    EXPECT_THAT(console(), HasSubstr("MESSAGE: they differ"));
}

TEST_F(DAXAssertTest, IsReportedAlthoughTheEventLoggerThrowsSomethingElseThanAnException) {
    EXPECT_EXIT(atTheEvent([] { throw 5; }), KilledBySignal(SIGABRT),
                testing::AllOf(HasSubstr(">The error event cannot be sent: unknown exception\n"),
                               ContainsRegex(std::string("DAXAssert\\.cpp:[0-9]+>") + TEXT)));
}

TEST_F(DAXAssertTest, IsReportedAlthoughTheEventLoggerEndsTheProcess) {
    EXPECT_EXIT(atTheEvent([] { std::terminate(); }), KilledBySignal(SIGABRT),
                ContainsRegex(std::string("\\[FTL\\] DAXAssert\\.cpp:[0-9]+>") + TEXT));
    EXPECT_THAT(console(), HasSubstr("MESSAGE: they differ"));
}

TEST_F(DAXAssertTest, IsReportedAfterAnAssertionThatFailsInTheEventLogger) {
    EXPECT_EXIT(
        atTheEvent([] { DAXAssertionFailed("open", "void log()", "Logger.cpp", 3); }), KilledBySignal(SIGABRT),
        ContainsRegex(std::string(">ASSERTION FAILED: open, void log\\(\\), Logger\\.cpp:3\n(.*\n)*.*>") + TEXT));
}

// Lets memory run out after so many allocations, with a text that does not fit into a string without one.
[[noreturn]] void failWithMemoryFor(std::size_t allocations, const char* message) {
    logToStandardError();
    const NoMemory noMemory(allocations);
    DAXAssertionFailedMsg("a == b && c == d && e == f", message, "void f(int)", "/src/folder/File.cpp", 12);
}

TEST_F(DAXAssertTest, IsReportedWhereverMemoryRunsOut) {
    for (std::size_t allocations = 0; allocations < 30; ++allocations) {
        EXPECT_EXIT(failWithMemoryFor(allocations, "they differ, which is a longer story"), KilledBySignal(SIGABRT),
                    ContainsRegex("\\[FTL\\] DAXAssert\\.cpp:[0-9]+>ASSERTION FAILED: a == b && c == d && e == f, void "
                                  "f\\(int\\), File\\.cpp:12\nMESSAGE: they differ, which is a longer story\n"))
            << allocations << " allocations";
    }
}

TEST_F(DAXAssertTest, IsReportedWithACutTextWhenMemoryRunsOut) {
    const std::string message(5000, 'x');
    EXPECT_EXIT(failWithMemoryFor(0, message.c_str()), KilledBySignal(SIGABRT),
                ContainsRegex("\\[FTL\\] DAXAssert\\.cpp:[0-9]+>ASSERTION FAILED: a == b"));
}

TEST_F(DAXAssertTest, ReportsTheAssertionsOfLibraryHeaders) {
    const int a = 1;
    EXPECT_ASSERTION(BOOST_ASSERT(a == 2), "a == 2");
    EXPECT_ASSERTION_MSG(BOOST_ASSERT_MSG(a == 2, "not two"), "a == 2", "not two");
}

TEST_F(DAXAssertTest, LetsATrueAssertionPass) {
    BOOST_ASSERT(console().empty());
    BOOST_ASSERT_MSG(console().empty(), "text");

    EXPECT_TRUE(FakeKovan::journal().empty());
}

} // namespace
