#include <fstream>

#include <gmock/gmock.h>

#include "Common/IO/ChecksumedSink.h"
#include "Common/IO/ChecksumedStream.h"
#include "Common/IO/FileSink.h"
#include "Common/IO/FileStream.h"
#include "FileFaults.h"
#include "MemoryStreams.h"
#include "support/AllocationMeter.h"
#include "support/FakeKovan.h"
#include "support/TemporaryRoot.h"
#include "support/Thrown.h"

namespace DAX::Tests {
namespace {

using namespace Common::IO;
using namespace IOExceptions;
using Common::Utils::errinfo_rethrows;
using Common::Utils::errinfo_subject;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

const std::string EMPTY("CHECKSUMED\0\0\0\0", 14);
const std::string DIGITS = "123456789CHECKSUMED\x26\x39\xf4\xcb";

class Checksumed : public testing::Test {
protected:
    std::shared_ptr<FileSink> fileSink() const { return std::make_shared<FileSink>(path, true); }
    std::shared_ptr<FileStream> fileStream() const { return std::make_shared<FileStream>(path); }
    std::string content() const { return root.read("file"); }
    void store(const std::string& bytes) const { root.write("file", bytes); }

    bool isOpenable() const { return ChecksumedStream(fileStream()).openCheck(); }

    static bool verifies(const std::string& bytes) {
        return ChecksumedStream::verifyChecksum(std::make_shared<MemorySeekableStream>(bytes));
    }

    const TemporaryRoot root;
    const std::string path = (root / "file").string();
};

class ChecksumedSinkTest : public Checksumed {
protected:
    static void write(ISink& target, const std::string& text) { target.writeChunk(bytesOf(text), text.size()); }

    const std::shared_ptr<FileSink> file = fileSink();
    ChecksumedSink sink{file, true};
};

TEST_F(ChecksumedSinkTest, WritesAnEmptyFileAsItsTrailer) {
    sink.open();
    sink.close();
    EXPECT_EQ(content(), EMPTY);
}

TEST_F(ChecksumedSinkTest, WritesTheTrailerAfterTheData) {
    write(sink, "1234");
    write(sink, "56789");
    EXPECT_EQ(sink.position(), 9U);
    sink.markEndOfData();
    EXPECT_TRUE(sink.endOfDataMarked());
    EXPECT_TRUE(file->endOfDataMarked());
    EXPECT_EQ(content(), DIGITS);
}

TEST_F(ChecksumedSinkTest, WritesTheTrailerWhenItIsClosedWithoutAMark) {
    write(sink, "123456789");
    sink.close();
    EXPECT_EQ(content(), DIGITS);
    EXPECT_TRUE(file->alreadyClosed());
    EXPECT_TRUE(sink.alreadyClosed());
    EXPECT_FALSE(sink.isOpened());
}

TEST_F(ChecksumedSinkTest, LeavesTheTrailerOutWhenToldTo) {
    ChecksumedSink plain(fileSink(), false);
    write(plain, "123456789");
    plain.close();
    EXPECT_EQ(content(), "123456789");
}

TEST_F(ChecksumedSinkTest, RefusesASinkThatDoesNotStandAtItsBeginning) {
    store("12345");
    ChecksumedSink late(std::make_shared<FileSink>(path, false), true);
    EXPECT_THAT((thrownText<errinfo_subject, ChecksumedSinkUnderlyingSinkNotRewound>([&] { late.open(); })),
                "ChecksumedSink(FileSink(" + path + "))");
    EXPECT_FALSE(late.isOpened());
    EXPECT_THROW(write(late, "a"), ChecksumedSinkUnderlyingSinkNotRewound);
}

TEST_F(ChecksumedSinkTest, SeeksNowhereElse) {
    write(sink, "123");
    EXPECT_NO_THROW(sink.seek(3));
    EXPECT_THAT((thrownText<errinfo_subject, NotSupportedException>([&] { sink.seek(2); })),
                StartsWith("ChecksumedSink("));
    EXPECT_THROW(sink.seek(4), NotSupportedException);
    sink.markEndOfData();
    EXPECT_THROW(sink.seek(3), EndOfDataMarkedException);
}

TEST_F(ChecksumedSinkTest, TakesNoMoreAfterTheEndOfData) {
    sink.open();
    sink.markEndOfData();
    EXPECT_THROW(write(sink, "a"), EndOfDataMarkedException);
    EXPECT_THROW(sink.markEndOfData(), EndOfDataMarkedException);
    EXPECT_NO_THROW(sink.flush());
}

TEST_F(ChecksumedSinkTest, OpensAndClosesOnce) {
    EXPECT_THROW(sink.close(), NotOpenedException);
    sink.open();
    EXPECT_THROW(sink.open(), AlreadyOpenedException);
    sink.close();
    EXPECT_THROW(sink.close(), AlreadyClosedException);
    EXPECT_THROW(sink.open(), AlreadyClosedException);
    EXPECT_THROW(sink.position(), AlreadyClosedException);
}

TEST_F(ChecksumedSinkTest, OpensByItselfWhenItIsFlushed) {
    sink.flush();
    EXPECT_TRUE(sink.isOpened());
    EXPECT_TRUE(file->isOpened());
}

TEST_F(ChecksumedSinkTest, LeavesUnfinishedDataWithoutATrailer) {
    {
        ChecksumedSink unfinished(file, true);
        write(unfinished, "123456789");
    }
    EXPECT_EQ(content(), "123456789");
    EXPECT_TRUE(file->endOfDataMarked());
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log WRN Destroying ChecksumedSink without markEndOfData(). CRC will not be appended."));
}

TEST_F(ChecksumedSinkTest, LogsNothingWhenItIsDestroyedUnopenedOrMarked) {
    { ChecksumedSink unused(fileSink(), true); }
    {
        ChecksumedSink marked(fileSink(), true);
        marked.open();
        marked.markEndOfData();
    }
    EXPECT_TRUE(FakeKovan::messages().empty());
}

TEST_F(ChecksumedSinkTest, LogsWhatFailsWhenItIsDestroyed) {
    {
        ChecksumedSink unfinished(file, true);
        write(unfinished, "1");
        failNext("fsync", EIO);
    }
    EXPECT_THAT(
        FakeKovan::messages("ERR"),
        ElementsAre(AllOf(StartsWith("Exception caught in ~ChecksumedSink. Ignoring: "), HasSubstr("sync() failed."))));
}

TEST_F(ChecksumedSinkTest, AllocatesNothingForAChunk) {
    const std::string chunk(64 * 1024, 'x');
    write(sink, chunk);
    const AllocationMeter meter;
    for (int i = 0; i < 10; ++i) {
        sink.writeChunk(bytesOf(chunk), chunk.size());
    }
    EXPECT_EQ(meter.bytes(), 0U);
}

class VerifyChecksum : public Checksumed {};

TEST_F(VerifyChecksum, AcceptsAnIntactFile) {
    EXPECT_TRUE(verifies(EMPTY));
    EXPECT_TRUE(verifies(DIGITS));
}

TEST_F(VerifyChecksum, AcceptsDataThatLooksLikeATrailer) {
    ChecksumedSink sink(fileSink(), true);
    sink.writeChunk(bytesOf("CHECKSUMED"), 10);
    sink.close();
    EXPECT_TRUE(verifies(content()));
}

TEST_F(VerifyChecksum, ReadsNothingOfAFileThatIsTooShort) {
    for (std::size_t length = 0; length < 14; ++length) {
        const auto stream = std::make_shared<MemorySeekableStream>(EMPTY.substr(0, length));
        EXPECT_FALSE(ChecksumedStream::verifyChecksum(stream));
        EXPECT_EQ(stream->reads, 0) << length;
    }
}

TEST_F(VerifyChecksum, SeesEveryFlippedBit) {
    for (std::size_t bit = 0; bit < DIGITS.size() * 8; ++bit) {
        std::string bad = DIGITS;
        bad[bit / 8] = static_cast<char>(bad[bit / 8] ^ (1 << bit % 8));
        EXPECT_FALSE(verifies(bad)) << bit;
    }
}

TEST_F(VerifyChecksum, BeginsAtTheBeginning) {
    const auto stream = std::make_shared<MemorySeekableStream>(DIGITS);
    stream->offset = 5;
    EXPECT_TRUE(ChecksumedStream::verifyChecksum(stream));
}

TEST_F(VerifyChecksum, TreatsAFileThatCannotBeOpenedAsCorrupted) {
    EXPECT_FALSE(ChecksumedStream::verifyChecksum(fileStream()));
}

TEST_F(VerifyChecksum, PassesOtherFailuresOnWithItsContext) {
    store(DIGITS);
    const auto stream = fileStream();
    stream->open();
    failNext("fread", EIO);
    try {
        ChecksumedStream::verifyChecksum(stream);
        FAIL() << "nothing was thrown";
    } catch (const FileStreamIOException& exception) {
        EXPECT_THAT(textOf<errinfo_rethrows>(exception), HasSubstr("FileStream(" + path + ")"));
    }
}

TEST_F(VerifyChecksum, AllocatesNothingMoreForALongerFile) {
    const auto allocated = [](std::size_t length) {
        const auto stream = std::make_shared<MemorySeekableStream>(std::string(length, 'x'));
        const AllocationMeter meter;
        ChecksumedStream::verifyChecksum(stream);
        return meter.bytes();
    };
    EXPECT_EQ(allocated(1000000), allocated(3000));
}

class ChecksumedStreamTest : public Checksumed {
protected:
    ChecksumedStreamTest() { store(DIGITS); }

    ChecksumedStream stream{fileStream()};
};

TEST_F(ChecksumedStreamTest, GivesTheDataAlone) {
    EXPECT_EQ(stream.size(), 9U);
    EXPECT_EQ(stream.readAllText(4), "123456789");
    EXPECT_TRUE(stream.atEnd());
    EXPECT_EQ(stream.position(), 9U);
    std::uint8_t byte = 0;
    EXPECT_EQ(stream.readChunk(&byte, 1), 0U);
}

TEST_F(ChecksumedStreamTest, SeeksInTheData) {
    stream.seek(6);
    EXPECT_EQ(stream.readAllText(4), "789");
    EXPECT_THROW(stream.seek(10), OutOfRangeException);
}

TEST_F(ChecksumedStreamTest, OpensByItselfAndOnlyOnce) {
    EXPECT_FALSE(stream.isOpened());
    EXPECT_FALSE(stream.atEnd());
    EXPECT_TRUE(stream.isOpened());
    EXPECT_THROW(stream.open(), AlreadyOpenedException);
    EXPECT_THROW(stream.openCheck(), AlreadyOpenedException);
}

TEST_F(ChecksumedStreamTest, RefusesWhatIsCorrupted) {
    store("x" + DIGITS);
    EXPECT_EQ((thrownText<errinfo_subject, ChecksumedStreamDataCorrupted>([&] { stream.open(); })),
              "ChecksumedStream(FileStream(" + path + "))");
    EXPECT_FALSE(stream.isOpened());
    EXPECT_FALSE(isOpenable());
}

TEST_F(ChecksumedStreamTest, LooksWithoutOpening) {
    EXPECT_TRUE(stream.openCheck());
    EXPECT_FALSE(stream.isOpened());
    EXPECT_TRUE(stream.openCheck());
}

TEST_F(ChecksumedStreamTest, ClosesOnce) {
    EXPECT_THROW(stream.close(), NotOpenedException);
    stream.open();
    stream.close();
    EXPECT_TRUE(stream.alreadyClosed());
    EXPECT_THROW(stream.close(), AlreadyClosedException);
    EXPECT_THROW(stream.open(), AlreadyClosedException);
    EXPECT_THROW(stream.size(), AlreadyClosedException);
}

TEST_F(ChecksumedStreamTest, IsClosedThoughItsStreamDoesNotClose) {
    stream.open();
    failNext("fclose", EIO);
    EXPECT_EQ(thrownDescription<FileStreamIOException>([&] { stream.close(); }), "Closing file failed.");
    EXPECT_TRUE(stream.alreadyClosed());
    EXPECT_FALSE(stream.isOpened());
}

TEST_F(ChecksumedStreamTest, LogsWhatFailsWhenItIsDestroyed) {
    {
        ChecksumedStream dying(fileStream());
        dying.open();
        failNext("fclose", EIO);
    }
    EXPECT_THAT(FakeKovan::messages("ERR"),
                ElementsAre(AllOf(StartsWith("Exception caught in ~ChecksumedStream. Ignoring: "),
                                  HasSubstr("Closing file failed."))));
}

// Files from an earlier time, whose format may never change, and the data in them.
class ChecksumedGolden : public Checksumed, public testing::WithParamInterface<std::pair<const char*, const char*>> {
protected:
    const std::filesystem::path golden =
        std::filesystem::path(__FILE__).parent_path() / "../../../golden/io" / GetParam().first;
    const std::string data = GetParam().second;
};

TEST_P(ChecksumedGolden, IsRead) {
    ChecksumedStream stream(std::make_shared<FileStream>(golden.string()));
    EXPECT_EQ(stream.readAllText(5), data);
}

TEST_P(ChecksumedGolden, IsWritten) {
    ChecksumedSink sink(fileSink(), true);
    sink.writeChunk(bytesOf(data), data.size());
    sink.close();
    EXPECT_EQ(content(), FileStream(golden.string()).readAllText(100));
}

INSTANTIATE_TEST_SUITE_P(Files, ChecksumedGolden,
                         testing::Values(std::make_pair("empty.checksumed", ""),
                                         std::make_pair("digits.checksumed", "123456789")));

} // namespace
} // namespace DAX::Tests
