#include "Common/IO/ScopedStream.h"

#include <gmock/gmock.h>

#include "Common/IO/FileStream.h"
#include "Common/IO/ScopedSeekableStream.h"
#include "Common/IO/ScopedStorageStream.h"
#include "FakeTransaction.h"
#include "MemoryStreams.h"
#include "support/TemporaryRoot.h"
#include "support/Thrown.h"

namespace DAX::Tests {
namespace {

using namespace Common::IO;
using Common::Utils::errinfo_rethrows;
using Common::Utils::errinfo_stream_text;
using Common::Utils::errinfo_subject;
using IOExceptions::OutOfRangeException;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

std::string read(IStream& stream, std::size_t size) {
    std::string text(size, '-');
    text.resize(stream.readChunk(reinterpret_cast<std::uint8_t*>(&text[0]), size));
    return text;
}

// The text of the exception that the statement throws, which has to name the view.
template <class Statement>
std::string outOfRange(const Statement& statement) {
    try {
        statement();
    } catch (const OutOfRangeException& exception) {
        EXPECT_THAT(textOf<errinfo_subject>(exception), StartsWith("Scoped"));
        return textOf<errinfo_stream_text>(exception);
    }
    return "<nothing thrown>";
}

TEST(ScopedStream, EndsAfterItsBytes) {
    const auto whole = std::make_shared<MemoryStream>("abcdefgh");
    ScopedStream stream(whole, 5);
    EXPECT_EQ(read(stream, 3), "abc");
    EXPECT_EQ(read(stream, 3), "de");
    const int reads = whole->reads;
    EXPECT_EQ(read(stream, 3), "");
    EXPECT_EQ(whole->reads, reads);
    EXPECT_EQ(read(*whole, 9), "fgh");
}

TEST(ScopedStream, EndsWithTheStreamWhenThatIsShorter) {
    ScopedStream stream(std::make_shared<MemoryStream>("ab"), 5);
    EXPECT_EQ(read(stream, 9), "ab");
    EXPECT_EQ(read(stream, 9), "");
}

TEST(ScopedStream, TellsWhatRemainsInItsName) {
    ScopedStream stream(std::make_shared<MemoryStream>("ab"), 5);
    read(stream, 1);
    EXPECT_THAT(stream.debugName(), AllOf(StartsWith("ScopedStream("), EndsWith(", bytesRemaining=4)")));
}

TEST(ScopedStream, SavesWhatRemains) {
    FakeTransaction saving;
    ScopedStream(std::make_shared<MemoryStream>("ab"), 5).transactionSerialize(&saving);
    EXPECT_THAT(saving.bytes, testing::ElementsAre(5, 0, 0, 0, 0, 0, 0, 0));
    FakeTransaction loading({1, 0, 0, 0, 0, 0, 0, 0});
    ScopedStream stream(std::make_shared<MemoryStream>("ab"), 5);
    stream.transactionSerialize(&loading);
    EXPECT_EQ(read(stream, 9), "a");
}

class ScopedSeekableStreamTest : public testing::Test {
protected:
    const std::shared_ptr<MemorySeekableStream> whole = std::make_shared<MemorySeekableStream>("0123456789");
    ScopedSeekableStream stream{whole, 3, 4};
};

TEST_F(ScopedSeekableStreamTest, ReadsItsPart) {
    whole->offset = 9;
    EXPECT_EQ(stream.size(), 4U);
    EXPECT_EQ(stream.position(), 0U);
    EXPECT_EQ(read(stream, 3), "345");
    EXPECT_EQ(stream.position(), 3U);
    EXPECT_FALSE(stream.atEnd());
    EXPECT_EQ(read(stream, 9), "6");
    EXPECT_TRUE(stream.atEnd());
    EXPECT_EQ(read(stream, 9), "");
}

TEST_F(ScopedSeekableStreamTest, SeeksInItsPart) {
    stream.seek(2);
    EXPECT_EQ(whole->offset, 5U);
    EXPECT_EQ(read(stream, 1), "5");
    stream.seek(4);
    EXPECT_TRUE(stream.atEnd());
    EXPECT_EQ(outOfRange([&] { stream.seek(5); }), "Position 5 is bigger than stream size 4");
    EXPECT_TRUE(stream.atEnd());
}

TEST_F(ScopedSeekableStreamTest, NoticesThatTheStreamWasMovedOutOfItsPart) {
    stream.seek(0);
    whole->offset = 2;
    EXPECT_EQ(outOfRange([&] { stream.position(); }), "Underlying offset is less than start offset: start=3 offset=2");
    whole->offset = 8;
    EXPECT_EQ(outOfRange([&] { read(stream, 1); }), "Position is bigger than stream size: stream size=4 position=5");
}

TEST_F(ScopedSeekableStreamTest, LooksAtItsBoundsWhenItIsFirstUsed) {
    ScopedSeekableStream late(whole, 11, 0);
    EXPECT_EQ(outOfRange([&] { late.size(); }),
              "ScopedSeekableStream should start on 11, which is after end of underlying stream 10");
    ScopedSeekableStream longer(whole, 8, 3);
    EXPECT_EQ(outOfRange([&] { longer.atEnd(); }),
              "ScopedSeekableStream should end on 11, which is after end of underlying stream 10");
    EXPECT_EQ(ScopedSeekableStream(whole, 10, 0).size(), 0U);
}

TEST_F(ScopedSeekableStreamTest, RefusesAnEndThatDoesNotFitInANumber) {
    try {
        ScopedSeekableStream(whole, 2, UINT64_MAX - 1);
        FAIL() << "nothing was thrown";
    } catch (const Common::Utils::GenericException& exception) {
        EXPECT_EQ(textOf<errinfo_stream_text>(exception), "numeric overflow:2+18446744073709551614");
        EXPECT_THAT(textOf<errinfo_rethrows>(exception), HasSubstr("ScopedSeekableStream"));
    }
}

TEST_F(ScopedSeekableStreamTest, IsNamedAfterItsStream) {
    EXPECT_THAT(stream.debugName(), StartsWith("ScopedSeekableStream("));
}

class ScopedStorageStreamTest : public testing::Test {
protected:
    ScopedStorageStreamTest() { root.write("file", "0123456789"); }

    std::shared_ptr<FileStream> file() const { return std::make_shared<FileStream>((root / "file").string()); }

    const TemporaryRoot root;
};

TEST_F(ScopedStorageStreamTest, OpensItsStreamAndStandsAtItsBeginning) {
    const auto whole = file();
    ScopedStorageStream stream(whole, 3, 4);
    EXPECT_FALSE(stream.isOpened());
    stream.open();
    EXPECT_TRUE(whole->isOpened());
    EXPECT_EQ(whole->position(), 3U);
    EXPECT_EQ(stream.readAllText(10), "3456");
}

TEST_F(ScopedStorageStreamTest, OpensByItself) {
    ScopedStorageStream stream(file(), 3, 4);
    EXPECT_EQ(read(stream, 2), "34");
    EXPECT_TRUE(stream.isOpened());
}

TEST_F(ScopedStorageStreamTest, ClosesItsStream) {
    const auto whole = file();
    ScopedStorageStream stream(whole, 3, 4);
    EXPECT_THROW(stream.close(), IOExceptions::NotOpenedException);
    stream.open();
    EXPECT_FALSE(stream.alreadyClosed());
    stream.close();
    EXPECT_TRUE(stream.alreadyClosed());
    EXPECT_TRUE(whole->alreadyClosed());
    EXPECT_THROW(stream.open(), IOExceptions::AlreadyClosedException);
}

TEST_F(ScopedStorageStreamTest, LooksAtItsBoundsWhenItIsFirstUsed) {
    ScopedStorageStream late(file(), 11, 0);
    EXPECT_EQ(outOfRange([&] { late.position(); }),
              "ScopedStorageStream should start on 11, which is after end of underlying stream 10");
    ScopedStorageStream longer(file(), 10, 1);
    EXPECT_EQ(outOfRange([&] { longer.open(); }),
              "ScopedStorageStream should end on 11, which is after end of underlying stream 10");
}

TEST_F(ScopedStorageStreamTest, StaysWhereItsStreamWasRestored) {
    const auto whole = file();
    ScopedStorageStream stream(whole, 3, 4);
    stream.seek(2);
    FakeTransaction saving;
    stream.transactionSerialize(&saving);
    whole->transactionSerialize(&saving);
    EXPECT_THAT(saving.bytes, testing::ElementsAre(1, 5, 0, 0, 0, 0, 0, 0, 0));
    const auto again = file();
    ScopedStorageStream restored(again, 3, 4);
    FakeTransaction loading(saving.bytes);
    restored.transactionSerialize(&loading);
    again->transactionSerialize(&loading);
    EXPECT_EQ(restored.position(), 2U);
}

TEST_F(ScopedStorageStreamTest, BeginsAtItsPartWhenItIsRestoredUnused) {
    const auto whole = file();
    FakeTransaction saving;
    ScopedStorageStream(whole, 3, 4).transactionSerialize(&saving);
    EXPECT_THAT(saving.bytes, testing::ElementsAre(0));
    ScopedStorageStream restored(whole, 3, 4);
    FakeTransaction loading(saving.bytes);
    restored.transactionSerialize(&loading);
    EXPECT_EQ(read(restored, 1), "3");
}

TEST_F(ScopedStorageStreamTest, LooksAtItsBoundsOnlyOnce) {
    ScopedStorageStream late(file(), 11, 0);
    EXPECT_THROW(late.size(), OutOfRangeException);
    EXPECT_EQ(late.size(), 0U);
}

TEST_F(ScopedStorageStreamTest, NamesTheStreamThatTakesPart) {
    const auto whole = file();
    FakeTransaction transaction;
    transaction.processes = false;
    ScopedStorageStream(whole, 0, 1).transactionSaved(&transaction);
    ScopedStream(whole, 1).transactionSaved(&transaction);
    ITransactionalEntity* const entity = whole.get();
    EXPECT_THAT(transaction.dependencies, testing::ElementsAre(entity, entity));
}

} // namespace
} // namespace DAX::Tests
