#include "Common/IO/ISink.h"

#include <gmock/gmock.h>

#include "Common/IO/StreamBuffer.h"
#include "MemoryStreams.h"
#include "support/Thrown.h"

namespace DAX::Tests {
namespace {

using namespace Common::IO;
using testing::ElementsAre;
using testing::HasSubstr;

// Hands out memory for two bytes at a time.
class Pairs : public IZeroCopySink {
public:
    void nextChunk(std::uint8_t** data, std::size_t* size) override {
        text.append(2, '-');
        *data = reinterpret_cast<std::uint8_t*>(&text[text.size() - 2]);
        *size = 2;
    }
    void giveBack(std::size_t size) override { text.resize(text.size() - size); }
    void markEndOfData() override {}
    bool endOfDataMarked() override { return false; }

    std::string text;
};

TEST(ISink, CopiesAStreamInChunksOfTheBuffer) {
    MemorySink sink;
    MemoryStream stream("abcdefg");
    EXPECT_EQ(sink.appendAllStream(&stream, 3), 7U);
    EXPECT_THAT(sink.calls, ElementsAre("write abc", "write def", "write g"));
}

TEST(ISink, CopiesAZeroCopyStream) {
    MemorySink sink;
    StreamBuffer buffer(std::make_shared<MemoryStream>("abcd"), 3);
    EXPECT_EQ(sink.appendAllStream(&buffer), 4U);
    EXPECT_THAT(sink.calls, ElementsAre("write abc", "write d"));
}

TEST(ISink, WritesOnceForAnEmptyStream) {
    MemorySink sink;
    MemoryStream stream("");
    EXPECT_EQ(sink.appendAllStream(&stream, 3), 0U);
    EXPECT_THAT(sink.calls, ElementsAre("write null"));
}

TEST(ISink, RefusesToCopyAfterTheEndOfData) {
    MemorySink sink;
    sink.markEndOfData();
    MemoryStream stream("");
    EXPECT_THROW(sink.appendAllStream(&stream, 3), IOExceptions::EndOfDataMarkedException);
}

TEST(ISink, NamesTheMarkedSink) {
    MemorySink sink;
    EXPECT_NO_THROW(sink.throwIfEndOfDataMarked());
    sink.markEndOfData();
    EXPECT_THAT((thrownText<Common::Utils::errinfo_subject, IOExceptions::EndOfDataMarkedException>(
                    [&] { sink.throwIfEndOfDataMarked(); })),
                HasSubstr("ISinkE=0x"));
}

TEST(IZeroCopySink, WritesOverItsChunksAndGivesTheRestBack) {
    Pairs sink;
    sink.writeChunk(bytesOf("abcde"), 5);
    EXPECT_EQ(sink.text, "abcde");
    sink.writeChunk(nullptr, 0);
    EXPECT_EQ(sink.text, "abcde");
}

TEST(IZeroCopySink, TakesAStreamIntoItsOwnMemory) {
    Pairs sink;
    MemoryStream stream("abcde");
    EXPECT_EQ(detail::appendAllStream(&sink, &stream), 5U);
    EXPECT_EQ(sink.text, "abcde");
}

TEST(IZeroCopySink, TakesAZeroCopyStream) {
    Pairs sink;
    StreamBuffer buffer(std::make_shared<MemoryStream>("abcde"), 3);
    EXPECT_EQ(detail::appendAllStream(&sink, &buffer), 5U);
    EXPECT_EQ(sink.text, "abcde");
}

TEST(IZeroCopySink, TakesNothingFromAnEmptyStream) {
    Pairs sink;
    MemoryStream stream("");
    EXPECT_EQ(detail::appendAllStream(&sink, &stream), 0U);
    EXPECT_EQ(sink.text, "");
}

} // namespace
} // namespace DAX::Tests
