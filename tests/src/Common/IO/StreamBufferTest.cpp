#include "Common/IO/StreamBuffer.h"

#include <gmock/gmock.h>

#include "Common/IO/FileStream.h"
#include "Common/IO/TransactionalSeekable.h"
#include "FakeTransaction.h"
#include "FileFaults.h"
#include "MemoryStreams.h"
#include "support/AllocationMeter.h"
#include "support/ProcessDeath.h"
#include "support/TemporaryRoot.h"
#include "support/Thrown.h"

namespace DAX::Tests {
namespace {

using namespace Common::IO;
using testing::ElementsAre;

// The next chunk as a text; "<end>" when there is none.
std::string next(StreamBuffer& buffer) {
    const std::uint8_t* data = bytesOf("x");
    std::size_t size = 99;
    if (buffer.nextChunk(&data, &size)) {
        return std::string(data, data + size);
    }
    return data == nullptr && size == 0 ? "<end>" : "<end with data>";
}

class StreamBufferTest : public testing::Test {
protected:
    static StreamBuffer bufferOver(const std::string& text, std::size_t size) {
        return StreamBuffer(std::make_shared<MemoryStream>(text), size);
    }
};

TEST_F(StreamBufferTest, EndsAtOnceOverAnEmptyStream) {
    auto buffer = bufferOver("", 4);
    EXPECT_EQ(next(buffer), "<end>");
}

TEST_F(StreamBufferTest, GivesTheStreamInChunksOfItsSize) {
    auto buffer = bufferOver("abcdef", 4);
    EXPECT_EQ(next(buffer), "abcd");
    EXPECT_EQ(next(buffer), "ef");
    EXPECT_EQ(next(buffer), "<end>");
}

TEST_F(StreamBufferTest, ReadsNothingAfterTheEnd) {
    const auto stream = std::make_shared<MemoryStream>("ab");
    StreamBuffer buffer(stream, 4);
    next(buffer);
    next(buffer);
    const int reads = stream->reads;
    EXPECT_EQ(next(buffer), "<end>");
    EXPECT_EQ(stream->reads, reads);
}

TEST_F(StreamBufferTest, GivesAgainWhatWasGivenBack) {
    auto buffer = bufferOver("abcdef", 4);
    next(buffer);
    buffer.giveBack(1);
    EXPECT_EQ(next(buffer), "d");
    buffer.giveBack(4);
    EXPECT_EQ(next(buffer), "abcd");
    EXPECT_EQ(next(buffer), "ef");
}

TEST_F(StreamBufferTest, KnowsHowMuchCanBeGivenBack) {
    auto buffer = bufferOver("abcdef", 4);
    EXPECT_EQ(buffer.maxGiveBackSize(), 0U);
    next(buffer);
    EXPECT_EQ(buffer.maxGiveBackSize(), 4U);
    buffer.giveBack(3);
    EXPECT_EQ(buffer.maxGiveBackSize(), 1U);
    next(buffer);
    next(buffer);
    EXPECT_EQ(buffer.maxGiveBackSize(), 2U); // of the new fill alone
    next(buffer);
    EXPECT_EQ(buffer.maxGiveBackSize(), 0U);
}

TEST_F(StreamBufferTest, RefusesWhatItDidNotGiveAndStaysAsItIs) {
    auto buffer = bufferOver("abcdef", 4);
    EXPECT_THROW(buffer.giveBack(1), IOExceptions::OutOfRangeException);
    next(buffer);
    EXPECT_THAT(
        (thrownText<Common::Utils::errinfo_subject, IOExceptions::OutOfRangeException>([&] { buffer.giveBack(5); })),
        testing::StartsWith("StreamBuffer("));
    EXPECT_EQ(buffer.maxGiveBackSize(), 4U);
    EXPECT_THROW(buffer.giveBack(SIZE_MAX), IOExceptions::OutOfRangeException);
    EXPECT_EQ(next(buffer), "ef");
}

// Fails once, half way through; at all other times it gives a text.
class FailsOnce : public MemoryStream {
public:
    using MemoryStream::MemoryStream;
    std::size_t readChunk(std::uint8_t* data, std::size_t size) override {
        if (std::exchange(fails, false)) {
            std::fill_n(data, size / 2, '?');
            throw std::runtime_error("once");
        }
        return MemoryStream::readChunk(data, size);
    }

    bool fails = false;
};

TEST_F(StreamBufferTest, TakesNothingBackThatAFailingReadMayHaveOverwritten) {
    const auto stream = std::make_shared<FailsOnce>("abcdef");
    StreamBuffer buffer(stream, 4);
    next(buffer);
    stream->fails = true;
    EXPECT_THROW(next(buffer), std::runtime_error);
    EXPECT_EQ(buffer.maxGiveBackSize(), 0U);
    EXPECT_THROW(buffer.giveBack(1), IOExceptions::OutOfRangeException);
    EXPECT_EQ(next(buffer), "ef");
    EXPECT_EQ(buffer.maxGiveBackSize(), 2U);
}

// Takes part in transactions like a seekable stream, but is none.
class NoSeekable : public MemoryStream, public TransactionalSeekable<ISeekableStream> {
public:
    using MemoryStream::MemoryStream;
};

TEST_F(StreamBufferTest, AssertsThatAStreamWhosePositionIsSavedHasOne) {
    StreamBuffer buffer(std::make_shared<NoSeekable>("ab"), 4);
    FakeTransaction saving;
    EXPECT_ASSERTION(buffer.transactionSerialize(&saving), "seekableStream");
}

TEST_F(StreamBufferTest, NeverReadsWithoutASize) {
    const auto stream = std::make_shared<MemoryStream>("ab");
    StreamBuffer buffer(stream, 0);
    EXPECT_EQ(next(buffer), "<end>");
    EXPECT_EQ(stream->reads, 0);
}

TEST_F(StreamBufferTest, ReadsAsAStream) {
    auto buffer = bufferOver("abcdef", 4);
    EXPECT_EQ(buffer.readAllText(5), "abcdef");
}

TEST_F(StreamBufferTest, AllocatesNothingAfterItsConstruction) {
    auto buffer = bufferOver(std::string(1000, 'x'), 16);
    const std::uint8_t* data = nullptr;
    std::size_t size = 0;
    const AllocationMeter meter;
    while (buffer.nextChunk(&data, &size)) {
    }
    EXPECT_EQ(meter.bytes(), 0U);
}

TEST_F(StreamBufferTest, HandsOutItsOwnMemory) {
    auto buffer = bufferOver("abcdefgh", 4);
    const std::uint8_t* first = nullptr;
    const std::uint8_t* second = nullptr;
    std::size_t size = 0;
    buffer.nextChunk(&first, &size);
    buffer.nextChunk(&second, &size);
    EXPECT_EQ(first, second); // the refill overwrites it
}

TEST_F(StreamBufferTest, ReportsAStreamThatTakesPart) {
    const TemporaryRoot root;
    root.write("file", "abc");
    const auto file = std::make_shared<FileStream>((root / "file").string());
    FakeTransaction transaction;
    transaction.processes = false;
    StreamBuffer(file, 4).transactionSaved(&transaction);
    EXPECT_THAT(transaction.dependencies,
                ElementsAre(static_cast<TransactionalSeekable<ISeekableStream>*>(file.get())));
    bufferOver("abc", 4).transactionSaved(&transaction);
    EXPECT_EQ(transaction.dependencies.size(), 1U);
}

class StreamBufferOverAFile : public testing::Test {
protected:
    StreamBufferOverAFile() { root.write("file", "abcdefghij"); }

    std::shared_ptr<FileStream> file() const { return std::make_shared<FileStream>((root / "file").string()); }

    const TemporaryRoot root;
};

TEST_F(StreamBufferOverAFile, SavesThePositionOfTheFirstUnreadByte) {
    StreamBuffer buffer(file(), 4);
    next(buffer);
    next(buffer);
    buffer.giveBack(3);
    FakeTransaction transaction;
    buffer.transactionSerialize(&transaction);
    EXPECT_THAT(transaction.bytes, ElementsAre(3, 0, 0, 0, 0, 0, 0, 0, 5, 0, 0, 0, 0, 0, 0, 0));
    EXPECT_EQ(buffer.maxGiveBackSize(), 0U);
    EXPECT_EQ(next(buffer), "fgh");
}

TEST_F(StreamBufferOverAFile, GoesOnWhereItWasSaved) {
    FakeTransaction saving;
    {
        StreamBuffer buffer(file(), 4);
        next(buffer);
        buffer.giveBack(3);
        buffer.transactionSerialize(&saving);
    }
    StreamBuffer buffer(file(), 4);
    FakeTransaction loading(saving.bytes);
    buffer.transactionSerialize(&loading);
    EXPECT_EQ(buffer.maxGiveBackSize(), 0U);
    EXPECT_EQ(next(buffer), "bcd");
    EXPECT_EQ(next(buffer), "efgh");
}

TEST_F(StreamBufferOverAFile, AssertsThatTheUnreadBytesFit) {
    FakeTransaction loading({5, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    StreamBuffer buffer(file(), 4);
    EXPECT_ASSERTION(buffer.transactionSerialize(&loading), "m_size >= unreadBytes");
}

TEST_F(StreamBufferOverAFile, RefusesAFileThatHasBecomeShorter) {
    root.write("file", "ab");
    FakeTransaction loading({4, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0});
    StreamBuffer buffer(file(), 4);
    EXPECT_EQ(thrownText<Common::Utils::errinfo_stream_text>([&] { buffer.transactionSerialize(&loading); }),
              "Error while reading from underlying stream during load. bytesRead=1, unreadBytes=4");
}

TEST_F(StreamBufferOverAFile, CountsNoMoreAsUnreadThanAShortLoadGave) {
    root.write("file", "abc");
    StreamBuffer buffer(file(), 4);
    FakeTransaction loading({4, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0});
    EXPECT_THROW(buffer.transactionSerialize(&loading), Common::Utils::GenericException);
    EXPECT_EQ(buffer.maxGiveBackSize(), 0U);
    FakeTransaction saving;
    buffer.transactionSerialize(&saving);
    EXPECT_THAT(saving.bytes, ElementsAre(2, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0));
    EXPECT_EQ(next(buffer), "bc");
    EXPECT_EQ(next(buffer), "<end>");
}

TEST_F(StreamBufferOverAFile, LoadsAfterALoadThatWasShort) {
    root.write("file", "abc");
    StreamBuffer buffer(file(), 4);
    FakeTransaction loadingShort({4, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0});
    EXPECT_THROW(buffer.transactionSerialize(&loadingShort), Common::Utils::GenericException);
    FakeTransaction loading({3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    buffer.transactionSerialize(&loading);
    EXPECT_EQ(next(buffer), "abc");
}

TEST_F(StreamBufferOverAFile, CountsNothingAsUnreadWhenTheLoadFails) {
    const auto stream = file();
    StreamBuffer buffer(stream, 4);
    next(buffer);
    buffer.giveBack(3);
    FakeTransaction loading({4, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0});
    failNext("fread", EIO, 1, 2);
    EXPECT_THROW(buffer.transactionSerialize(&loading), FileStreamIOException);
    EXPECT_EQ(buffer.maxGiveBackSize(), 0U);
    EXPECT_EQ(next(buffer), "bcde"); // from the restored position of the stream
}

TEST_F(StreamBufferTest, SavesTheUnreadDataOfAStreamThatTakesNoPart) {
    auto buffer = bufferOver("abcdef", 4);
    next(buffer);
    buffer.giveBack(2);
    FakeTransaction saving;
    buffer.transactionSerialize(&saving);
    EXPECT_THAT(saving.bytes, ElementsAre(2, 0, 0, 0, 0, 0, 0, 0, 2, 0, 0, 0, 'c', 'd'));
    EXPECT_EQ(buffer.maxGiveBackSize(), 0U);
    EXPECT_EQ(next(buffer), "cd");
}

TEST_F(StreamBufferTest, LoadsTheUnreadData) {
    FakeTransaction loading({1, 0, 0, 0, 0, 0, 0, 0, 2, 0, 0, 0, 'x', 'y'});
    auto buffer = bufferOver("ef", 4);
    buffer.transactionSerialize(&loading);
    EXPECT_EQ(buffer.maxGiveBackSize(), 0U);
    EXPECT_EQ(next(buffer), "xy");
    EXPECT_EQ(next(buffer), "ef");
}

TEST_F(StreamBufferTest, CountsNothingAsUnreadWhenTheUnreadDataCannotBeLoaded) {
    FakeTransaction loading({1, 0, 0, 0, 0, 0, 0, 0, 3, 0, 0, 0, 'x', 'y'}); // one byte too few
    auto buffer = bufferOver("abcdef", 4);
    next(buffer);
    buffer.giveBack(2);
    EXPECT_THROW(buffer.transactionSerialize(&loading), std::runtime_error);
    EXPECT_EQ(buffer.maxGiveBackSize(), 0U);
    EXPECT_EQ(next(buffer), "ef");
}

TEST_F(StreamBufferTest, AssertsThatTheUnreadDataFits) {
    FakeTransaction loading({3, 0, 0, 0, 0, 0, 0, 0, 2, 0, 0, 0, 'x', 'y'});
    auto buffer = bufferOver("", 4);
    EXPECT_ASSERTION(buffer.transactionSerialize(&loading), "m_dataBuffer.size() >= dataBufferSize");
}

TEST_F(StreamBufferTest, AssertsThatTheUnreadDataFitsAlthoughItsEndOverflows) {
    FakeTransaction loading({0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 2, 0, 0, 0, 'x', 'y'});
    auto buffer = bufferOver("", 4);
    EXPECT_ASSERTION(buffer.transactionSerialize(&loading), "m_dataBuffer.size() >= dataBufferSize");
}

} // namespace
} // namespace DAX::Tests
