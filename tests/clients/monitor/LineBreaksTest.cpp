#include "monitor/LineBreaks.h"

#include <gmock/gmock.h>

namespace DAX::Tests {
namespace {

using namespace testing;
using monitor::brokenLines;

TEST(LineBreaks, KeepALineThatFits) {
    EXPECT_THAT(brokenLines("one two", 7, 2), ElementsAre("one two"));
    EXPECT_THAT(brokenLines("", 7, 2), ElementsAre(""));
}

TEST(LineBreaks, BreakNothingWithoutAWidth) {
    const std::string text(1000, 'x');
    EXPECT_THAT(brokenLines(text, 0, 2), ElementsAre(text));
}

TEST(LineBreaks, ComeAtTheLastBlankThatFits) {
    EXPECT_THAT(brokenLines("one two three four five six seven eight", 30, 4),
                ElementsAre("one two three four five six", "    seven eight"));
    EXPECT_THAT(brokenLines("one two three four five sixths", 30, 4), ElementsAre("one two three four five sixths"));
}

TEST(LineBreaks, ComeInsideAWordThatIsLongerThanALine) {
    EXPECT_THAT(brokenLines(std::string(70, 'x'), 30, 10),
                ElementsAre(std::string(30, 'x'), std::string(10, ' ') + std::string(20, 'x'),
                            std::string(10, ' ') + std::string(20, 'x')));
}

TEST(LineBreaks, DoNotBreakABlankAtTheBeginning) {
    EXPECT_THAT(brokenLines("     0.000 service", 12, 0), ElementsAre("     0.000", "service"));
}

TEST(LineBreaks, KeepLettersOfSeveralBytesWhole) {
    std::string text;
    for (int i = 0; i < 6; ++i) {
        text += "\u00e9";
    }
    EXPECT_THAT(brokenLines(text, 4, 0), ElementsAre("\u00e9\u00e9\u00e9\u00e9", "\u00e9\u00e9"));
    EXPECT_EQ(monitor::letterCount(text), 6U);
}

TEST(LineBreaks, KeepRoomForTextInATerminalThatIsVeryNarrow) {
    for (std::size_t width = 1; width < 60; ++width) {
        std::string joined;
        for (const std::string& line : brokenLines("service #1 > getService priority=4", width, 22)) {
            EXPECT_LE(line.size(), width);
            for (const char letter : line) {
                joined += letter == ' ' ? "" : std::string(1, letter);
            }
        }
        EXPECT_EQ(joined, "service#1>getServicepriority=4") << width;
    }
}

} // namespace
} // namespace DAX::Tests
