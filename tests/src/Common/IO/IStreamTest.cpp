#include "Common/IO/IStream.h"

#include <array>

#include <gmock/gmock.h>

#include "Common/IO/StreamBuffer.h"
#include "MemoryStreams.h"
#include "support/Thrown.h"

namespace DAX::Tests {
namespace {

using namespace Common::IO;
using Common::Utils::errinfo_stream_text;
using Common::Utils::errinfo_subject;
using IOExceptions::StreamDepletedException;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

template <class Info>
std::string failureOfRead(const std::string& text) {
    MemoryStream stream(text);
    std::uint32_t value = 0;
    return thrownText<Info, StreamDepletedException>([&] { stream.read(value); });
}

TEST(IStream, ReadsAValueAsItLiesInMemory) {
    MemoryStream stream(std::string("\x01\x00\x00\x02zz", 6));
    std::uint32_t value = 0;
    stream.read(value);
    EXPECT_EQ(value, 0x02000001U);
}

TEST(IStream, RefusesToReadFromAnEmptyOne) {
    EXPECT_EQ(failureOfRead<errinfo_stream_text>(""), "Stream is empty.");
}

TEST(IStream, RefusesToReadAPartOfAValue) {
    EXPECT_EQ(failureOfRead<errinfo_stream_text>("abc"),
              "Stream does not contain full entry. bytesRead=3, sizeof(pod)=4");
}

TEST(IStream, NamesTheDepletedStream) {
    for (const char* const text : {"", "abc"}) {
        EXPECT_THAT(failureOfRead<errinfo_subject>(text), AllOf(HasSubstr("IStream"), HasSubstr("=0x")));
    }
}

TEST(IStream, UsesTheDebugNameOfAStreamThatHasOne) {
    StreamBuffer buffer(std::make_shared<MemoryStream>(""), 4);
    std::uint8_t value = 0;
    EXPECT_THAT((thrownText<errinfo_subject, StreamDepletedException>([&] { buffer.read(value); })),
                StartsWith("StreamBuffer("));
}

TEST(IStream, TriesToReadAndLeavesTheValueAtTheEnd) {
    MemoryStream stream("");
    std::uint32_t value = 7;
    EXPECT_FALSE(stream.tryRead(value));
    EXPECT_EQ(value, 7U);
}

TEST(IStream, TriesToReadAndGetsTheValue) {
    MemoryStream stream("ab");
    char value = 0;
    EXPECT_TRUE(stream.tryRead(value));
    EXPECT_EQ(value, 'a');
}

TEST(IStream, TriesToReadIntoTheValueWithOneCall) {
    MemoryStream stream("abcd", 2);
    std::array<char, 4> value{'1', '2', '3', '4'};
    EXPECT_THROW(stream.tryRead(value), StreamDepletedException);
    EXPECT_EQ(stream.reads, 1);
    EXPECT_THAT(value, testing::ElementsAre('a', 'b', '3', '4'));
}

TEST(IStream, ReadsAllTextInChunks) {
    const std::string text("line\nnull\0end", 13);
    for (const std::size_t chunk : {1U, 5U, 13U, 100U}) {
        MemoryStream stream(text);
        EXPECT_EQ(stream.readAllText(chunk), text) << chunk;
    }
}

TEST(IStream, ReadsAllTextWhenItComesInPieces) {
    MemoryStream stream("abcdefg", 2);
    EXPECT_EQ(stream.readAllText(5), "abcdefg");
    EXPECT_EQ(stream.reads, 5);
}

TEST(IStream, ReadsNoTextFromAnEmptyOne) {
    EXPECT_EQ(MemoryStream("").readAllText(10), "");
}

// Claims to have read as many bytes as a number can hold.
class Endless : public IStream {
public:
    std::size_t readChunk(std::uint8_t*, std::size_t) override { return SIZE_MAX; }
};

TEST(IStream, RefusesATextWhoseSizeDoesNotFitInANumber) {
    EXPECT_EQ(thrownText<errinfo_stream_text>([] { Endless().readAllText(5); }),
              "numeric overflow:18446744073709551615+5");
}

// Hands out a text in chunks of three.
class Chunks : public IZeroCopyStream {
public:
    explicit Chunks(std::string text) : m_text(std::move(text)) {}

    bool nextChunk(const std::uint8_t** data, std::size_t* size) override {
        *data = bytesOf(m_text) + m_position;
        *size = std::min<std::size_t>(3, m_text.size() - m_position);
        m_position += *size;
        return *size != 0;
    }
    void giveBack(std::size_t size) override {
        m_position -= size;
        givenBack += size;
    }

    std::size_t givenBack = 0;

private:
    const std::string m_text;
    std::size_t m_position = 0;
};

TEST(IZeroCopyStream, ReadsOverItsChunksAndGivesTheRestBack) {
    Chunks stream("abcdefgh");
    std::uint8_t data[5];
    EXPECT_EQ(stream.readChunk(data, 5), 5U);
    EXPECT_EQ(std::string(data, data + 5), "abcde");
    EXPECT_EQ(stream.givenBack, 1U);
    EXPECT_EQ(stream.readChunk(data, 5), 3U);
    EXPECT_EQ(std::string(data, data + 3), "fgh");
    EXPECT_EQ(stream.readChunk(data, 5), 0U);
}

} // namespace
} // namespace DAX::Tests
