#include "support/FakeKovan.h"

#include <MetricLogger.h>
#include <bootclock.h>
#include <dlog.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <hangguard.h>
#include <vconf.h>

using testing::ElementsAre;

namespace {

TEST(FakeKovanTest, TakesALogLineApart) {
    __dlog_print(2, 5, "tag", "[Name-1][12 main][7][ERR] %s:%d>a > b: c", "File.cpp", 34);

    const FakeKovan::LogLine line = FakeKovan::logLines().at(0);
    EXPECT_EQ(line.process, "Name-1");
    EXPECT_EQ(line.thread, "12 main");
    EXPECT_EQ(line.number, 7u);
    EXPECT_EQ(line.level, "ERR");
    EXPECT_EQ(line.file, "File.cpp");
    EXPECT_EQ(line.line, 34);
    EXPECT_EQ(line.message, "a > b: c");
}

TEST(FakeKovanTest, KeepsALineWithoutASourceWhole) {
    __dlog_print(0, 4, "tag", "[n][t][0][INF] time: 12>x");

    EXPECT_THAT(FakeKovan::messages("INF"), ElementsAre("time: 12>x"));
}

TEST(FakeKovanTest, KeepsTheOrderOfSideEffectsAcrossTheirKinds) {
    vconf_set_bool("a", 1);
    __dlog_print(0, 4, "tag", "[n][t][0][INF] f:1>text");
    FakeKovan::failWrites("b", -9);
    vconf_set_str("b", "x");
    MetricLogFramework::CLogger::GetInstance()->AddEventLogSync("app", "NAME", "CODE", "{}");
    FakeKovan::note("mine");
    hangguard_watchdog_notify();

    EXPECT_THAT(FakeKovan::journal(), ElementsAre("write a=true", "log INF text", "write b=x -> -9", "event NAME CODE",
                                                  "mine", "hangguard notify"));
    EXPECT_THAT(FakeKovan::journal("write"), ElementsAre("write a=true", "write b=x -> -9"));
}

TEST(FakeKovanTest, LeavesTheStoreAloneWhenAWriteFails) {
    FakeKovan::setSetting("a", 1);
    FakeKovan::failWrites("a", -9);

    EXPECT_EQ(vconf_set_int("a", 2), -9);
    EXPECT_EQ(FakeKovan::setting("a"), FakeKovan::Value(1));
    EXPECT_TRUE(FakeKovan::writes().empty());
}

TEST(FakeKovanTest, MendsAFailure) {
    FakeKovan::setSetting("a", 1);
    FakeKovan::failReads("a", -9);
    int value = 0;
    EXPECT_EQ(vconf_get_int("a", &value), -9);

    FakeKovan::failReads("a", 0);
    EXPECT_EQ(vconf_get_int("a", &value), 0);
    EXPECT_EQ(value, 1);
}

TEST(FakeKovanTest, TurnsLocalTimeIntoUTC) {
    FakeKovan::setLocalTime(10000);
    FakeKovan::setSecondsAheadOfUTC(3600);

    EXPECT_EQ(BC_ConvertToUTCTime(BC_GetCurrentTime()), 6400u);
}

TEST(FakeKovanTest, GivesUpWaitingForALineAtTheBound) {
    __dlog_print(0, 4, "tag", "[n][t][0][INF] f:1>text");

    EXPECT_TRUE(FakeKovan::waitForMessage("INF", "tex", std::chrono::milliseconds(0)));
    EXPECT_FALSE(FakeKovan::waitForMessage("ERR", "tex", std::chrono::milliseconds(0)));
}

TEST(FakeKovanTest, ForgetsEverythingWhenItIsReset) {
    FakeKovan::setSetting("a", 1);
    FakeKovan::setEventResult(0);
    FakeKovan::note("mine");
    FakeKovan::reset();

    EXPECT_EQ(FakeKovan::setting("a"), std::nullopt);
    EXPECT_EQ(MetricLogFramework::CLogger::GetInstance()->AddEventLogSync("app", "NAME", "CODE", "{}"), 1);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("event NAME CODE"));
}

} // namespace
