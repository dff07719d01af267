#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "HeapProbe.h"
#include "RecordingSink.h"

using DAX::Common::Logging::LoggingClass;
using DAX::Tests::RecordingSink;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class PrintTest : public testing::Test {
protected:
    PrintTest() { RecordingSink::calls.clear(); }

    static void print(const std::string& text, LoggingClass::Level level = LoggingClass::INF) {
        LoggingClass::print(RecordingSink::sink, "tag", level, nullptr, 0, "%s", text.c_str());
    }

    static void dump(const std::string& text, const std::string& data, int length) {
        LoggingClass::print(RecordingSink::sink, "tag", LoggingClass::ERR, data.data(), length, "%s", text.c_str());
    }
};

TEST_F(PrintTest, HandsTheFormattedTextToTheSinkWithItsTagAndLevel) {
    LoggingClass::print(RecordingSink::sink, "a tag", LoggingClass::WRN, nullptr, 0, "%s %d", "text", 5);

    ASSERT_EQ(RecordingSink::calls.size(), 1u);
    EXPECT_EQ(RecordingSink::calls[0].tag, "a tag");
    EXPECT_EQ(RecordingSink::calls[0].level, LoggingClass::WRN);
    EXPECT_EQ(RecordingSink::calls[0].text, "text 5");
}

TEST_F(PrintTest, DropsTheLevelsZeroAndVerbose) {
    print("text", LoggingClass::NONE);
    print("text", LoggingClass::VERBOSE);

    EXPECT_THAT(RecordingSink::texts(), IsEmpty());
}

TEST_F(PrintTest, PassesALevelThatItDoesNotKnow) {
    print("text", static_cast<LoggingClass::Level>(7));

    EXPECT_THAT(RecordingSink::texts(), ElementsAre("text"));
}

TEST_F(PrintTest, PassesATextThatJustFillsTheStackBuffer) {
    const std::string text(1023, 'x');
    print(text);

    EXPECT_THAT(RecordingSink::texts(), ElementsAre(text));
}

TEST_F(PrintTest, PassesTheWholeTextThatNeedsTheHeapBuffer) {
    print(std::string(1024, 'x'));
    print(std::string(16383, 'y'));

    EXPECT_THAT(RecordingSink::texts(), ElementsAre(std::string(1024, 'x'), std::string(16383, 'y')));
}

TEST_F(PrintTest, CutsATextThatOverflowsTheHeapBuffer) {
    print(std::string(16384, 'x'));

    EXPECT_THAT(RecordingSink::texts(), ElementsAre(std::string(16383, 'x')));
}

TEST_F(PrintTest, TakesNoHeapForAnOrdinaryMessage) {
    static int calls;
    calls = 0;
    const std::string text(1023, 'x');
    const unsigned int before = HeapProbe::allocations();
    LoggingClass::print([](const char*, LoggingClass::Level, char*) { ++calls; }, "tag", LoggingClass::INF, nullptr, 0,
                        "%s", text.c_str());

    EXPECT_EQ(HeapProbe::allocations(), before);
    EXPECT_EQ(calls, 1);
}

TEST_F(PrintTest, DumpsDataInRowsOf16BytesCountedByOne) {
    std::string data;
    for (int i = 0; i < 33; ++i) {
        data += static_cast<char>(i);
    }
    dump("data:", data, 33);

    EXPECT_THAT(RecordingSink::texts(), ElementsAre("data: 0000=000102030405060708090a0b0c0d0e0f",
                                                    "data: 0001=101112131415161718191a1b1c1d1e1f", "data: 0002=20"));
    EXPECT_EQ(RecordingSink::calls[2].level, LoggingClass::ERR);
}

TEST_F(PrintTest, DumpsBytesAboveTheAsciiRange) {
    dump("", "\xff\x80", 2);

    EXPECT_THAT(RecordingSink::texts(), ElementsAre(" 0000=ff80"));
}

TEST_F(PrintTest, DumpsOneRowForExactly16Bytes) {
    dump("", std::string(16, '\x11'), 16);

    EXPECT_THAT(RecordingSink::texts(), ElementsAre(" 0000=11111111111111111111111111111111"));
}

TEST_F(PrintTest, TakesADumpLengthOfZeroOrLessAsFour) {
    dump("", "\x01\x02\x03\x04\x05", 0);
    dump("", "\x01\x02\x03\x04\x05", -7);

    EXPECT_THAT(RecordingSink::texts(), ElementsAre(" 0000=01020304", " 0000=01020304"));
}

TEST_F(PrintTest, DumpsAfterAMessageThatLeavesJustEnoughRoom) {
    const std::string text(1023 - 38, 'x');
    dump(text, std::string(16, '\0'), 16);

    EXPECT_THAT(RecordingSink::texts(), ElementsAre(text + " 0000=00000000000000000000000000000000"));
}

TEST_F(PrintTest, WarnsAndPrintsTheMessageAloneWhenNoRowFitsAfterIt) {
    const std::string text(1023 - 37, 'x');
    dump(text, std::string(32, '\0'), 32);

    EXPECT_THAT(RecordingSink::texts(), ElementsAre("BELOW DATA MESSAGE IS TOO LONG TO BE DISPLAYED!", text));
    EXPECT_EQ(RecordingSink::calls[0].level, LoggingClass::WRN);
    EXPECT_EQ(RecordingSink::calls[1].level, LoggingClass::ERR);
}

TEST_F(PrintTest, DumpsAfterALongMessageInTheHeapBuffer) {
    const std::string text(2000, 'x');
    dump(text, "\x01\x02", 2);

    EXPECT_THAT(RecordingSink::texts(), ElementsAre(text + " 0000=0102"));
}

} // namespace
