#include <gmock/gmock.h>

#include "Common/IO/ChecksumedSink.h"
#include "Common/IO/ChecksumedStream.h"
#include "Interruption.h"
#include "MemoryStreams.h"
#include "support/FakeKovan.h"
#include "support/Thrown.h"

// The order in which a checksummed sink calls the sink below it, and what becomes of that sink's failures.
namespace DAX::Tests {
namespace {

using namespace Common::IO;
using namespace IOExceptions;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

// Notes every call that changes something, and fails at the chosen one.
class NotedSink : public IStorageSink {
public:
    void writeChunk(const std::uint8_t* data, std::size_t size) override {
        note("write " + std::string(data, data + size));
        m_position += size;
    }
    void markEndOfData() override {
        note("mark");
        m_marked = true;
    }
    bool endOfDataMarked() override { return m_marked; }
    streamsize_t position() override { return m_position; }
    void seek(streamsize_t) override { note("seek"); }
    void open() override { note("open"); }
    void close() override { note("close"); }
    bool isOpened() override { return true; }
    void flush() override { note("flush"); }
    bool alreadyClosed() override { return false; }

    std::string failing;

private:
    void note(const std::string& call) {
        FakeKovan::note(call);
        if (call == failing) {
            throw std::runtime_error("failed to " + call);
        }
    }

    streamsize_t m_position = 0;
    bool m_marked = false;
};

class ChecksumedOrder : public testing::Test {
protected:
    void write(const std::string& text) { sink->writeChunk(bytesOf(text), text.size()); }

    const std::shared_ptr<NotedSink> below = std::make_shared<NotedSink>();
    std::unique_ptr<ChecksumedSink> sink = std::make_unique<ChecksumedSink>(below, true);
};

TEST_F(ChecksumedOrder, WritesMagicAndSumAndThenMarksAndCloses) {
    write("123456789");
    sink->close();
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("write 123456789", "write CHECKSUMED", "write \x26\x39\xf4\xcb", "mark", "close"));
}

TEST_F(ChecksumedOrder, MarksTheDataAloneWithoutATrailer) {
    sink = std::make_unique<ChecksumedSink>(below, false);
    write("12");
    sink->markEndOfData();
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("write 12", "mark"));
}

TEST_F(ChecksumedOrder, WritesItsTrailerThoughItWasNeverOpened) {
    sink->markEndOfData();
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("write CHECKSUMED", "write " + std::string(4, '\0'), "mark"));
    EXPECT_FALSE(sink->isOpened());
    EXPECT_THROW(sink->close(), NotOpenedException);
}

TEST_F(ChecksumedOrder, IsMarkedThoughItsTrailerFailsAndWritesNoSecondOne) {
    write("12");
    below->failing = "write CHECKSUMED";
    EXPECT_THROW(sink->markEndOfData(), std::runtime_error);
    EXPECT_TRUE(sink->endOfDataMarked());
    EXPECT_THROW(sink->markEndOfData(), EndOfDataMarkedException);
    sink->close();
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("write 12", "write CHECKSUMED", "close"));
}

TEST_F(ChecksumedOrder, StaysOpenedWhenTheSinkBelowDoesNotClose) {
    sink->open();
    below->failing = "close";
    EXPECT_THROW(sink->close(), std::runtime_error);
    EXPECT_TRUE(sink->isOpened());
    EXPECT_FALSE(sink->alreadyClosed());
}

TEST_F(ChecksumedOrder, AsksForNoSeekAtAll) {
    write("12");
    sink->seek(2);
    EXPECT_THROW(sink->seek(0), NotSupportedException);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("write 12"));
}

TEST_F(ChecksumedOrder, WarnsBeforeItMarksUnfinishedData) {
    write("12");
    sink.reset();
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("write 12",
                            "log WRN Destroying ChecksumedSink without markEndOfData(). CRC will not be appended.",
                            "mark"));
}

TEST_F(ChecksumedOrder, LogsAFailureToMarkUnfinishedData) {
    sink->open();
    below->failing = "mark";
    sink.reset();
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log WRN Destroying ChecksumedSink without markEndOfData(). CRC will not be appended.",
                            "mark",
                            AllOf(StartsWith("log ERR Exception caught in ~ChecksumedSink. Ignoring: "),
                                  HasSubstr("failed to mark"))));
}

TEST_F(ChecksumedOrder, AddsNoDataToTheSumThatTheSinkBelowRefused) {
    below->failing = "write 34";
    write("12");
    EXPECT_THROW(write("34"), std::runtime_error);
    below->failing.clear();
    write("3456789");
    sink->markEndOfData();
    EXPECT_THAT(FakeKovan::journal(), testing::Contains("write \x26\x39\xf4\xcb"));
}

// --- what verification passes on

// A file whose trailer is read in pieces.
class Piecemeal : public MemorySeekableStream {
public:
    using MemorySeekableStream::MemorySeekableStream;
    std::size_t readChunk(std::uint8_t* data, std::size_t size) override {
        return MemorySeekableStream::readChunk(data, std::min<std::size_t>(size, 3));
    }
};

TEST(VerifyChecksumOrder, TakesPayloadAndMagicInPiecesButTheSumAtOnce) {
    const auto stream = std::make_shared<Piecemeal>("123456789CHECKSUMED\x26\x39\xf4\xcb");
    try {
        ChecksumedStream::verifyChecksum(stream);
        FAIL() << "nothing was thrown";
    } catch (const StreamDepletedException& exception) {
        EXPECT_EQ(textOf<Common::Utils::errinfo_stream_text>(exception),
                  "Stream does not contain full entry. bytesRead=3, sizeof(pod)=4");
        EXPECT_THAT(textOf<Common::Utils::errinfo_rethrows>(exception), HasSubstr("Verifying the checksum of "));
    }
}

// Claims to be longer than it is.
class TooShort : public MemorySeekableStream {
public:
    using MemorySeekableStream::MemorySeekableStream;
    streamsize_t size() override { return text.size() + 4; }
};

TEST(VerifyChecksumOrder, ThrowsWhereTheSumIsMissing) {
    const auto stream = std::make_shared<TooShort>("123456789CHECKSUMED");
    EXPECT_EQ((thrownText<Common::Utils::errinfo_stream_text, StreamDepletedException>(
                  [&] { ChecksumedStream::verifyChecksum(stream); })),
              "Stream is empty.");
}

// Cannot be read, and has no debug name.
class Nameless : public MemorySeekableStream, public Common::Utils::IDebugName {
public:
    using MemorySeekableStream::MemorySeekableStream;
    std::size_t readChunk(std::uint8_t*, std::size_t) override { DAX_THROW(NotSupportedException(), "unreadable"); }
    std::string debugName() const override { throw std::logic_error("no name"); }
};

TEST(VerifyChecksumOrder, PassesTheFailureOnThoughTheStreamHasNoName) {
    const auto stream = std::make_shared<Nameless>("123456789CHECKSUMED\x26\x39\xf4\xcb");
    try {
        ChecksumedStream::verifyChecksum(stream);
        FAIL() << "nothing was thrown";
    } catch (const NotSupportedException& exception) {
        EXPECT_EQ(textOf<Common::Utils::errinfo_stream_text>(exception), "unreadable");
        EXPECT_EQ(textOf<Common::Utils::errinfo_rethrows>(exception), "Verifying the checksum of ");
    }
}

class FailsToSeek : public MemorySeekableStream {
public:
    using MemorySeekableStream::MemorySeekableStream;
    void seek(streamsize_t) override { throw std::runtime_error("no"); }
};

TEST(VerifyChecksumOrder, TreatsAStreamThatDoesNotRewindAsCorrupted) {
    const auto stream = std::make_shared<FailsToSeek>("CHECKSUMED" + std::string(4, '\0'));
    EXPECT_FALSE(ChecksumedStream::verifyChecksum(stream));
    EXPECT_EQ(stream->reads, 0);
}

class Interruptible : public MemorySeekableStream {
public:
    using MemorySeekableStream::MemorySeekableStream;
    std::size_t readChunk(std::uint8_t* data, std::size_t size) override {
        boost::this_thread::interruption_point();
        return MemorySeekableStream::readChunk(data, size);
    }
};

TEST(VerifyChecksumOrder, CanBeInterrupted) {
    const auto stream = std::make_shared<Interruptible>(std::string(5000, 'x'));
    EXPECT_TRUE(interrupts([&] { ChecksumedStream::verifyChecksum(stream); }));
}

} // namespace
} // namespace DAX::Tests
