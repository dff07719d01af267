#include <cerrno>
#include <cstdlib>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <dlog.h>
#include <gmock/gmock.h>
#include <syslog.h>
#include <unistd.h>

#include "host/DlogSink.h"
#include "support/ForkedProcess.h"
#include "support/TemporaryRoot.h"

using DAX::Tests::ForkedProcess;
using DAX::Tests::TemporaryRoot;
using KovanHost::DlogSink;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::MatchesRegex;

namespace {

const char* const TIME = "[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{3}Z ";

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

// The log is chosen once in a process, so each test logs from a process of its own.
class DlogTest : public testing::Test {
protected:
    int logTo(const std::string& choice, const std::function<int()>& logging) const {
        ForkedProcess process([&] {
            setenv("KOVAN_DLOG", choice.c_str(), 1);
            return logging();
        });
        return process.wait();
    }

    std::vector<std::string> fileAfter(const std::function<int()>& logging) const {
        logTo((m_root / "log").string(), logging);
        return linesOf(m_root.read("log"));
    }

    std::string errorsAfter(const std::string& choice, const std::function<int()>& logging) const {
        testing::internal::CaptureStderr();
        logTo(choice, logging);
        return testing::internal::GetCapturedStderr();
    }

    const TemporaryRoot m_root;
};

int logOne() {
    return __dlog_print(0, 4, "tag", "number %d", 5);
}

} // namespace

TEST_F(DlogTest, FileGetsTimePriorityTagAndText) {
    EXPECT_THAT(fileAfter(logOne), ElementsAre(MatchesRegex(std::string(TIME) + "I tag: number 5")));
}

TEST_F(DlogTest, ResultIsTheLengthOfTheText) {
    EXPECT_EQ(logTo((m_root / "log").string(), logOne), 8);
}

TEST_F(DlogTest, EveryPriorityHasItsLetter) {
    EXPECT_EQ(KovanHost::dlogLine(2, "t", "x"), "V t: x");
    EXPECT_EQ(KovanHost::dlogLine(3, "t", "x"), "D t: x");
    EXPECT_EQ(KovanHost::dlogLine(4, "t", "x"), "I t: x");
    EXPECT_EQ(KovanHost::dlogLine(5, "t", "x"), "W t: x");
    EXPECT_EQ(KovanHost::dlogLine(6, "t", "x"), "E t: x");
    EXPECT_EQ(KovanHost::dlogLine(7, "t", "x"), "F t: x");
    EXPECT_EQ(KovanHost::dlogLine(8, "t", "x"), "? t: x");
    EXPECT_EQ(KovanHost::dlogLine(-1, "t", "x"), "? t: x");
}

TEST_F(DlogTest, JournalGetsSyslogsLevels) {
    EXPECT_EQ(KovanHost::journalPriority(2), LOG_DEBUG);
    EXPECT_EQ(KovanHost::journalPriority(3), LOG_DEBUG);
    EXPECT_EQ(KovanHost::journalPriority(4), LOG_INFO);
    EXPECT_EQ(KovanHost::journalPriority(5), LOG_WARNING);
    EXPECT_EQ(KovanHost::journalPriority(6), LOG_ERR);
    EXPECT_EQ(KovanHost::journalPriority(7), LOG_CRIT);
}

TEST_F(DlogTest, LineEndsInTheTextDoNotEndTheLine) {
    const auto lines = fileAfter([] { return __dlog_print(0, 4, "tag", "one\ntwo\r\n"); });

    EXPECT_THAT(lines, ElementsAre(HasSubstr("I tag: one\\ntwo\\r\\n")));
}

TEST_F(DlogTest, TextOfAnyLengthIsOneWholeLine) {
    const std::string text(100000, 'x');

    const auto lines = fileAfter([&] { return __dlog_print(0, 4, "tag", "<%s>", text.c_str()); });

    EXPECT_THAT(lines, ElementsAre(HasSubstr("I tag: <" + text + ">")));
}

TEST_F(DlogTest, TextThatJustFillsTheBufferIsWhole) {
    for (const std::size_t length : {1022u, 1023u, 1024u, 1025u}) {
        const std::string text(length, 'x');
        EXPECT_THAT(fileAfter([&] { return __dlog_print(0, 4, "tag", "%s", text.c_str()); }).back(),
                    testing::EndsWith("tag: " + text));
    }
}

TEST_F(DlogTest, FileIsAppendedTo) {
    fileAfter(logOne);

    EXPECT_THAT(fileAfter([] { return __dlog_print(0, 5, "tag", "next"); }),
                ElementsAre(HasSubstr("number 5"), HasSubstr("W tag: next")));
}

TEST_F(DlogTest, LinesOfConcurrentWritersStayWhole) {
    constexpr int WRITERS = 4;
    constexpr int MESSAGES = 250;
    const std::string filler(700, 'x');
    std::vector<std::unique_ptr<ForkedProcess>> writers;
    setenv("KOVAN_DLOG", (m_root / "log").c_str(), 1);
    for (int writer = 0; writer < WRITERS; ++writer) {
        writers.push_back(std::make_unique<ForkedProcess>([&] {
            for (int i = 0; i < MESSAGES; ++i) {
                __dlog_print(0, 4, "tag", "<%s>", filler.c_str());
            }
            return 0;
        }));
    }
    for (const auto& writer : writers) {
        ASSERT_EQ(writer->wait(), 0);
    }

    const auto lines = linesOf(m_root.read("log"));
    EXPECT_EQ(lines.size(), static_cast<std::size_t>(WRITERS * MESSAGES));
    EXPECT_THAT(lines, testing::Each(MatchesRegex(std::string(TIME) + "I tag: <x{700}>")));
}

TEST_F(DlogTest, StderrGetsTheSameLine) {
    EXPECT_THAT(errorsAfter("stderr", logOne), MatchesRegex(std::string(TIME) + "I tag: number 5\n"));
}

TEST_F(DlogTest, NoneWritesNothingAndDoesNotLookAtTheValues) {
    const char* const unreadable = reinterpret_cast<const char*>(1);

    EXPECT_EQ(errorsAfter("none", [&] { return __dlog_print(0, 4, "tag", "%s", unreadable); }), "");
    EXPECT_EQ(logTo("none", [&] { return __dlog_print(0, 4, "tag", "%s", unreadable); }), 0);
}

TEST_F(DlogTest, FileThatCannotBeOpenedIsReportedOnceAndStandardErrorTakesItsPlace) {
    const std::string place = (m_root / "absent/log").string();

    const auto lines = linesOf(errorsAfter(place, [] { return logOne() + logOne(); }));

    EXPECT_THAT(lines, ElementsAre("KOVAN_DLOG: cannot write to " + place +
                                       ": No such file or directory; writing to standard error",
                                   HasSubstr("I tag: number 5"), HasSubstr("I tag: number 5")));
}

TEST_F(DlogTest, WithoutAChoiceTheJournalIsTakenWhenItsSocketIsThere) {
    m_root.write("socket", "");

    EXPECT_EQ(DlogSink::choose(nullptr, (m_root / "socket").c_str()).kind(), DlogSink::Kind::JOURNAL);
    EXPECT_EQ(DlogSink::choose("", (m_root / "socket").c_str()).kind(), DlogSink::Kind::JOURNAL);
    EXPECT_EQ(DlogSink::choose("journal", (m_root / "socket").c_str()).kind(), DlogSink::Kind::JOURNAL);
}

TEST_F(DlogTest, WithoutAChoiceAndAJournalStandardErrorIsTakenSilently) {
    testing::internal::CaptureStderr();
    const DlogSink sink = DlogSink::choose(nullptr, (m_root / "socket").c_str());

    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(sink.kind(), DlogSink::Kind::DESCRIPTOR);
    EXPECT_EQ(sink.descriptor(), STDERR_FILENO);
}

TEST_F(DlogTest, JournalThatIsAskedForAndAbsentIsReported) {
    testing::internal::CaptureStderr();
    const DlogSink sink = DlogSink::choose("journal", (m_root / "socket").c_str());

    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "KOVAN_DLOG: cannot write to the journal: No such file or directory; writing to standard error\n");
    EXPECT_EQ(sink.descriptor(), STDERR_FILENO);
}

TEST_F(DlogTest, CallersErrorNumberIsKept) {
    const auto logging = [] {
        errno = ENOENT;
        logOne();
        return errno;
    };

    EXPECT_EQ(logTo((m_root / "absent/log").string(), logging), ENOENT);
}
