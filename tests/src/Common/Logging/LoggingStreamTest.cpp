#include "Common/Logging/LoggingStream.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "HeapProbe.h"
#include "support/ProcessDeath.h"

using DAX::Common::Logging::LoggingClass;
using DAX::Common::Logging::LoggingStream;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

TEST(LoggingStreamTest, PrintsItsTextWithFileAndLineWhenItIsDestroyed) {
    {
        LoggingStream line("a tag", LoggingClass::ERR, "File.cpp", 12);
        line.getStream() << "text " << 5;
        EXPECT_TRUE(FakeKovan::logLines().empty());
    }
    const FakeKovan::LogLine line = FakeKovan::logLines().at(0);
    EXPECT_EQ(line.tag, "a tag");
    EXPECT_THAT(line.text, testing::EndsWith("][ERR] File.cpp:12>text 5"));
}

TEST(LoggingStreamTest, PrintsNothingAtLevelZero) {
    LoggingStream("tag", LoggingClass::NONE, "File.cpp", 12).getStream() << "text";

    EXPECT_TRUE(FakeKovan::logLines().empty());
}

TEST(LoggingStreamTest, PrintsNothingAtLevelVerbose) {
    LoggingStream("tag", LoggingClass::VERBOSE, "File.cpp", 12).getStream() << "text";

    EXPECT_TRUE(FakeKovan::logLines().empty());
}

TEST(LoggingStreamTest, PrintsAnEmptyMessage) {
    DAX_LOG(INF) << "";

    EXPECT_THAT(FakeKovan::messages("INF"), ElementsAre(""));
}

TEST(LoggingStreamTest, KeepsPercentSignsOfTheText) {
    DAX_LOG(INF) << "100%s %n";

    EXPECT_THAT(FakeKovan::messages("INF"), ElementsAre("100%s %n"));
}

TEST(LoggingStreamTest, EndsTheProcessWhenItCannotPrint) {
    EXPECT_EXIT(
        {
            LoggingStream line("tag", LoggingClass::INF, "File.cpp", 12);
            line.getStream() << std::string(2000, 'x');
            HeapProbe::exhaust();
        },
        testing::KilledBySignal(SIGABRT), "");
}

TEST(LogMacroTest, NamesTheSourceAndTheTag) {
    DAX_LOG(WRN) << "text";
    const int expectedLine = __LINE__ - 1;

    const FakeKovan::LogLine line = FakeKovan::logLines().at(0);
    EXPECT_EQ(line.tag, "org.kovan.tv.dax.DAX");
    EXPECT_EQ(line.file, "LoggingStreamTest.cpp");
    EXPECT_EQ(line.line, expectedLine);
    EXPECT_EQ(line.level, "WRN");
    EXPECT_EQ(line.message, "text");
}

TEST(LogMacroTest, DoesNotLookAtTheValuesOfALineThatNeverComesOut) {
    int looked = 0;
    DAX_LOG(VERBOSE) << ++looked;
    DAX_LOG(NONE) << ++looked;

    EXPECT_EQ(looked, 0);
}

TEST(LogMacroTest, PrintsANullPointerAsSuch) {
    const char* const text = nullptr;
    DAX_LOG(INF) << "revision " << text;

    EXPECT_THAT(FakeKovan::messages("INF"), ElementsAre("revision [nullptr]"));
}

} // namespace
