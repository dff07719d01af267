#include "Common/IO/TransactionalSeekable.h"

#include <gmock/gmock.h>

#include "FakeTransaction.h"
#include "MemoryStreams.h"
#include "support/ProcessDeath.h"

namespace DAX::Tests {
namespace {

using namespace Common::IO;
using testing::ElementsAre;

class Seekable : public MemorySeekableStream, public TransactionalSeekable<ISeekableStream> {
public:
    using MemorySeekableStream::MemorySeekableStream;
};

// A sink whose file may be at any position. It keeps what the transaction holds at the time of the flush.
class Sink : public IStorageSink, public TransactionalSeekable<ISeekableSink> {
public:
    explicit Sink(const FakeTransaction& transaction) : m_transaction(transaction) {}

    void writeChunk(const std::uint8_t*, std::size_t) override {}
    void markEndOfData() override {}
    bool endOfDataMarked() override { return false; }
    streamsize_t position() override { return 0x0102; }
    void seek(streamsize_t) override {}
    void open() override {}
    void close() override {}
    bool isOpened() override { return true; }
    void flush() override { savedWhenFlushed.push_back(m_transaction.bytes.size()); }
    bool alreadyClosed() override { return false; }

    std::vector<std::size_t> savedWhenFlushed;

private:
    const FakeTransaction& m_transaction;
};

class NoSeekable : public TransactionalSeekable<ISeekableStream> {};

TEST(TransactionalSeekable, SavesAndRestoresThePosition) {
    Seekable stream("0123456789");
    stream.seek(3);
    FakeTransaction saving;
    stream.transactionSerialize(&saving);
    EXPECT_THAT(saving.bytes, ElementsAre(3, 0, 0, 0, 0, 0, 0, 0));
    stream.seek(8);
    FakeTransaction loading(saving.bytes);
    stream.transactionSerialize(&loading);
    EXPECT_EQ(stream.position(), 3U);
}

TEST(TransactionalSeekable, FlushesAStorageSinkAfterItSavedThePosition) {
    FakeTransaction saving;
    Sink sink(saving);
    sink.transactionSave(&saving);
    EXPECT_THAT(saving.bytes, ElementsAre(2, 1, 0, 0, 0, 0, 0, 0));
    EXPECT_THAT(sink.savedWhenFlushed, ElementsAre(8));
}

TEST(TransactionalSeekable, FlushesAStorageSinkForAGivenPositionToo) {
    FakeTransaction saving;
    Sink sink(saving);
    sink.saveAtPosition(&saving, 7);
    EXPECT_THAT(saving.bytes, ElementsAre(7, 0, 0, 0, 0, 0, 0, 0));
    EXPECT_THAT(sink.savedWhenFlushed, ElementsAre(8));
}

TEST(TransactionalSeekable, RewindsFromThePositionAtTheTimeOfTheSave) {
    Seekable stream("0123456789");
    FakeTransaction saving;
    const auto save = stream.saveRewound(&saving, 2);
    stream.seek(6);
    save();
    EXPECT_THAT(saving.bytes, ElementsAre(4, 0, 0, 0, 0, 0, 0, 0));
    EXPECT_EQ(stream.position(), 6U);
}

TEST(TransactionalSeekable, AssertsThatItIsMixedIntoASeekable) {
    NoSeekable object;
    FakeTransaction saving;
    EXPECT_ASSERTION(object.transactionSave(&saving), "thisSeekable");
    FakeTransaction loading({1, 0, 0, 0, 0, 0, 0, 0});
    EXPECT_ASSERTION(object.transactionLoad(&loading), "thisSeekable");
}

// Remembers what it was given.
class Transaction : public ITransaction {
public:
    using ITransaction::processDependency;
    void processDependency(ITransactionalEntity* entity, boost::optional<std::function<void()>> serialize) override {
        given = entity;
        withFunction = serialize.has_value();
    }

    ITransactionalEntity* given = nullptr;
    bool withFunction = true;
};

TEST(ITransaction, TakesADependencyWithoutAFunction) {
    Transaction transaction;
    Seekable stream("");
    transaction.processDependency(&stream);
    EXPECT_EQ(transaction.given, &stream);
    EXPECT_FALSE(transaction.withFunction);
}

} // namespace
} // namespace DAX::Tests
