#include "daxctl/ProgressDisplay.h"

#include <gmock/gmock.h>

#include "clients/daxctl/StandardError.h"

namespace DAX::Tests {
namespace {

using namespace testing;
using daxctl::ProgressDisplay;
using daxctl::ProgressStyle;

dax::Progress percent(int number) {
    return {dax::State::IN_PROGRESS, number, std::nullopt};
}

const std::string BAR_OF_0 = "\rSearch        [........................................]   0 %";
const std::string BAR_OF_50 = "\rSearch        [####################....................]  50 %";
const std::string BAR_OF_100 = "\rSearch        [########################################] 100 %";

TEST(ProgressDisplayOnATerminal, RedrawsOneBar) {
    StandardError terminal(StandardError::Kind::TERMINAL);
    ProgressDisplay display("Search", {});
    display.show(percent(0));
    display.show(percent(50));
    display.show(percent(100));
    display.finish("done");
    EXPECT_EQ(terminal.text(), BAR_OF_0 + BAR_OF_50 + BAR_OF_100 + BAR_OF_100 + " done\n");
}

TEST(ProgressDisplayOnATerminal, KeepsTheBarAsItWasAtAFailure) {
    StandardError terminal(StandardError::Kind::TERMINAL);
    ProgressDisplay display("Search", {});
    display.show(percent(50));
    display.finish("failed");
    EXPECT_EQ(terminal.text(), BAR_OF_50 + BAR_OF_50 + " failed\n");
}

TEST(ProgressDisplayOnATerminal, DrawsAnEmptyBarForAStepThatWasNeverShown) {
    StandardError terminal(StandardError::Kind::TERMINAL);
    ProgressDisplay("Search", {}).finish("failed");
    EXPECT_EQ(terminal.text(), BAR_OF_0 + " failed\n");
}

TEST(ProgressDisplayOnATerminal, DrawsPercentsOutsideOfTheRangeAsItsLimits) {
    StandardError terminal(StandardError::Kind::TERMINAL);
    ProgressDisplay display("Search", {});
    display.show(percent(-7));
    display.show(percent(101));
    display.finish("done");
    EXPECT_EQ(terminal.text(), BAR_OF_0 + BAR_OF_100 + BAR_OF_100 + " done\n");
}

TEST(ProgressDisplayOnATerminal, EndsTheLineOfABarThatNobodyFinished) {
    StandardError terminal(StandardError::Kind::TERMINAL);
    ProgressDisplay("Search", {}).show(percent(50));
    EXPECT_EQ(terminal.text(), BAR_OF_50 + "\n");
}

TEST(ProgressDisplayOnATerminal, WritesNothingWhenItIsSilent) {
    StandardError terminal(StandardError::Kind::TERMINAL);
    ProgressDisplay display("Search", {ProgressStyle::NONE});
    display.show(percent(50));
    display.finish("done");
    EXPECT_EQ(terminal.text(), "");
}

TEST(ProgressDisplayOnAPipe, WritesALineAtTheBeginningAndOneAtTheEnd) {
    StandardError pipe(StandardError::Kind::PIPE);
    ProgressDisplay display("Search", {});
    for (const int number : {0, 50, 100}) {
        display.show(percent(number));
    }
    display.finish("done");
    EXPECT_EQ(pipe.text(), "Search: started\nSearch: done\n");
}

TEST(ProgressDisplayOnAPipe, WritesNoFurtherLineForAStepThatNobodyFinished) {
    StandardError pipe(StandardError::Kind::PIPE);
    ProgressDisplay("Search", {}).show(percent(50));
    EXPECT_EQ(pipe.text(), "Search: started\n");
}

TEST(ProgressDisplayOnAPipe, WritesNothingWhenItIsSilent) {
    StandardError pipe(StandardError::Kind::PIPE);
    ProgressDisplay display("Search", {ProgressStyle::NONE});
    display.show(percent(50));
    display.finish("done");
    EXPECT_EQ(pipe.text(), "");
}

TEST(ProgressDisplayOnAPipe, RedrawsABarWhenItIsToldTo) {
    StandardError pipe(StandardError::Kind::PIPE);
    ProgressDisplay display("Search", {ProgressStyle::BAR});
    display.show(percent(50));
    display.finish("done");
    EXPECT_EQ(pipe.text(), BAR_OF_50 + BAR_OF_50 + " done\n");
}

TEST(ProgressDisplayOnATerminal, WritesPlainLinesWhenItIsToldTo) {
    StandardError terminal(StandardError::Kind::TERMINAL);
    ProgressDisplay display("Search", {ProgressStyle::PLAIN});
    display.show(percent(50));
    display.finish("done");
    EXPECT_EQ(terminal.text(), "Search: started\nSearch: done\n");
}

TEST(ProgressDisplayInJson, WritesALineForEachChange) {
    StandardError pipe(StandardError::Kind::PIPE);
    ProgressDisplay display("Search", {ProgressStyle::JSON});
    for (const int number : {0, 50, 50, 50}) {
        display.show(percent(number));
    }
    display.show({dax::State::IN_PROGRESS, 50, 1.5F});
    display.show({dax::State::SUCCEEDED, 100, std::nullopt});
    display.finish("done");
    EXPECT_EQ(pipe.text(), R"({"step":"search","state":"running","percent":0,"detail":null})"
                           "\n"
                           R"({"step":"search","state":"running","percent":50,"detail":null})"
                           "\n"
                           R"({"step":"search","state":"running","percent":50,"detail":1.5})"
                           "\n"
                           R"({"step":"search","state":"done","percent":100,"detail":null})"
                           "\n");
}

TEST(ProgressDisplayInJson, GoesWhereItIsTold) {
    StandardError pipe(StandardError::Kind::PIPE);
    internal::CaptureStdout();
    ProgressDisplay("Search", {ProgressStyle::JSON, stdout}).finish("failed");
    EXPECT_EQ(internal::GetCapturedStdout(), R"({"step":"search","state":"failed","percent":0,"detail":null})"
                                             "\n");
    EXPECT_EQ(pipe.text(), "");
}

} // namespace
} // namespace DAX::Tests
