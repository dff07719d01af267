#include <algorithm>
#include <cstdio>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "Common/Logging/Logging.h"
#include "support/ProcessDeath.h"

using DAX::Common::Logging::LOG_TAG;
using DAX::Common::Logging::LoggingClass;
using testing::ElementsAre;

namespace {

const std::string FULL(768, 'x');

void printLines(std::string text, LoggingClass::Level level = LoggingClass::INF) {
    LoggingClass::printLines(LOG_TAG, level, text.data());
}

TEST(PrintLinesTest, PrintsAShortTextAsOneLineWithItsLineEnds) {
    printLines("one\ntwo");

    EXPECT_THAT(FakeKovan::messages(), ElementsAre("one\ntwo"));
}

TEST(PrintLinesTest, PrintsAnEmptyTextAsAnEmptyMessage) {
    printLines("");

    EXPECT_THAT(FakeKovan::messages(), ElementsAre(""));
}

TEST(PrintLinesTest, Prints768BytesAsOneLine) {
    printLines(FULL);

    EXPECT_THAT(FakeKovan::messages(), ElementsAre(FULL));
}

TEST(PrintLinesTest, Prints769BytesAsLinesOf768And1) {
    printLines(FULL + "y");

    EXPECT_THAT(FakeKovan::messages(), ElementsAre(FULL, "y"));
}

TEST(PrintLinesTest, CutsTwiceTheLimitIntoTwoPiecesAndNoEmptyOne) {
    printLines(FULL + FULL);

    EXPECT_THAT(FakeKovan::messages(), ElementsAre(FULL, FULL));
}

TEST(PrintLinesTest, PrintsEachLineOfALongTextAndEmptyLinesAsEmptyMessages) {
    printLines("first\n\n" + FULL + "y\nlast");

    EXPECT_THAT(FakeKovan::messages(), ElementsAre("first", "", FULL, "y", "last"));
}

TEST(PrintLinesTest, PrintsAnEmptyMessageAfterTheLastLineEndOfALongText) {
    printLines(FULL + "\n");

    EXPECT_THAT(FakeKovan::messages(), ElementsAre(FULL, ""));
}

TEST(PrintLinesTest, LeavesTheTextAsItWas) {
    std::string text = "first\n" + FULL + "y\n";
    const std::string before = text;
    LoggingClass::printLines(LOG_TAG, LoggingClass::INF, text.data());

    EXPECT_EQ(text, before);
}

TEST(PrintLinesTest, PutsProcessThreadNumberAndLevelBeforeTheText) {
    LoggingClass::init("DAXService");
    printLines("text");

    const FakeKovan::LogLine line = FakeKovan::logLines().at(0);
    char threadId[64];
    LoggingClass::getThreadId(threadId, sizeof(threadId));
    EXPECT_EQ(line.text,
              "[DAXService-17.037.0][" + std::string(threadId) + "][" + std::to_string(line.number) + "][INF] text");
    EXPECT_EQ(line.tag, "org.kovan.tv.dax.DAX");
}

TEST(PrintLinesTest, WritesTheKernelsThreadIdABlankAndTheThreadName) {
    std::thread([] {
        prctl(PR_SET_NAME, "a worker");
        char threadId[64];
        LoggingClass::getThreadId(threadId, sizeof(threadId));
        EXPECT_EQ(threadId, std::to_string(syscall(SYS_gettid)) + " a worker");
    }).join();
}

TEST(PrintLinesTest, CutsTheThreadIdToItsBuffer) {
    char threadId[4];
    LoggingClass::getThreadId(threadId, sizeof(threadId));

    EXPECT_EQ(threadId, std::to_string(syscall(SYS_gettid)).append(" ").substr(0, 3));
}

TEST(PrintLinesTest, NumbersTheFirstLineOfAProcessZero) {
    GTEST_FLAG_SET(death_test_style, "threadsafe"); // a process of its own
    EXPECT_EXIT(
        {
            FakeKovan::echoLogToStderr(true);
            printLines("first");
            printLines("second");
            std::exit(0);
        },
        testing::ExitedWithCode(0), testing::ContainsRegex("\\[0\\]\\[INF\\] first\n.*\\[1\\]\\[INF\\] second"));
}

TEST(PrintLinesTest, NumbersLinesByOneAcrossAllThreads) {
    const auto printMany = [] {
        for (int i = 0; i < 100; ++i) {
            printLines("text");
        }
    };
    std::thread other(printMany);
    printMany();
    other.join();

    std::vector<unsigned int> numbers;
    for (const FakeKovan::LogLine& line : FakeKovan::logLines()) {
        numbers.push_back(line.number);
    }
    std::sort(numbers.begin(), numbers.end());
    ASSERT_EQ(numbers.size(), 200u);
    EXPECT_EQ(std::adjacent_find(numbers.begin(), numbers.end()), numbers.end());
    EXPECT_EQ(numbers.back() - numbers.front(), 199u);
}

struct Route {
    LoggingClass::Level level;
    const char* levelText;
    const char* levelInLine;
    int logId;
    int priority;
};

void PrintTo(const Route& route, std::ostream* out) {
    *out << route.levelText;
}

class LevelTest : public testing::TestWithParam<Route> {};

TEST_P(LevelTest, GoesToItsLogWithItsPriorityAndFormat) {
    printLines("text", GetParam().level);

    const FakeKovan::LogLine line = FakeKovan::logLines().at(0);
    EXPECT_EQ(line.logId, GetParam().logId);
    EXPECT_EQ(line.priority, GetParam().priority);
    EXPECT_EQ(line.level, GetParam().levelInLine);
    EXPECT_EQ(line.message, "text");
}

TEST_P(LevelTest, HasItsText) {
    EXPECT_STREQ(LoggingClass::logLevelToString(GetParam().level), GetParam().levelText);
}

std::string nameOf(const testing::TestParamInfo<Route>& route) {
    std::string name = route.param.levelText;
    std::replace(name.begin(), name.end(), ' ', '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Levels, LevelTest,
                         testing::Values(Route{LoggingClass::VERBOSE, "VERBOSE", "VERBOSE", 0, 2},
                                         Route{LoggingClass::DBG, "DBG", "DBG", 0, 3},
                                         Route{LoggingClass::INF, "INF", "INF", 0, 4},
                                         Route{LoggingClass::WRN, "WRN", "WRN", 0, 5},
                                         Route{LoggingClass::ERR, "ERR", "ERR", 2, 5},
                                         Route{LoggingClass::FTL, "FTL", "FTL", 2, 7},
                                         Route{static_cast<LoggingClass::Level>(7), "UNKNOWN LEVEL", "INF", 2, 6}),
                         nameOf);

TEST(LevelNoneTest, PrintsNothing) {
    printLines("text", LoggingClass::NONE);

    EXPECT_TRUE(FakeKovan::logLines().empty());
}

TEST(ShortenPathTest, IsThePartAfterTheLastSlash) {
    EXPECT_STREQ(LoggingClass::shortenPath("/src/Common/Logging.cpp"), "Logging.cpp");
    EXPECT_STREQ(LoggingClass::shortenPath("src/"), "");
}

TEST(ShortenPathTest, IsTheWholeTextWithoutASlash) {
    EXPECT_STREQ(LoggingClass::shortenPath("Logging.cpp"), "Logging.cpp");
    EXPECT_STREQ(LoggingClass::shortenPath(""), "");
}

} // namespace
