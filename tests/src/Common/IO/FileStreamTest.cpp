#include "Common/IO/FileStream.h"

#include <fstream>

#include <boost/thread/thread.hpp>
#include <gmock/gmock.h>

#include "FakeTransaction.h"
#include "FileFaults.h"
#include "Interruption.h"
#include "OpenDescriptor.h"
#include "support/FakeKovan.h"
#include "support/TemporaryRoot.h"
#include "support/Thrown.h"

namespace DAX::Tests {
namespace {

using namespace Common::IO;
using Common::Utils::errinfo_description;
using Common::Utils::errinfo_path;
using Common::Utils::errinfo_stream_text;
using Common::Utils::errinfo_subject;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class FileStreamTest : public testing::Test {
protected:
    FileStreamTest() { root.write("file", "0123456789"); }

    // "<description>|<errno text>" of the exception that the statement throws, which has to name the file.
    template <class Statement>
    std::string failureOf(const Statement& statement) {
        try {
            statement();
        } catch (const FileStreamIOException& exception) {
            EXPECT_EQ(*boost::get_error_info<errinfo_path>(exception), path);
            return textOf<errinfo_description>(exception) + "|" + textOf<errinfo_stream_text>(exception);
        }
        return "<nothing thrown>";
    }

    std::string read(std::size_t size) {
        std::string text(size, '-');
        text.resize(stream.readChunk(reinterpret_cast<std::uint8_t*>(&text[0]), size));
        return text;
    }

    const TemporaryRoot root;
    const std::string path = (root / "file").string();
    FileStream stream{path};
};

TEST_F(FileStreamTest, LeavesItsFileToNoOtherProgram) {
    stream.open();
    EXPECT_FALSE(isInherited(path));
}

TEST_F(FileStreamTest, OpensByItselfAtEachFirstUse) {
    EXPECT_FALSE(stream.isOpened());
    EXPECT_EQ(stream.size(), 10U);
    EXPECT_TRUE(stream.isOpened());
    EXPECT_EQ(FileStream(path).position(), 0U);
    EXPECT_FALSE(FileStream(path).atEnd());
    FileStream sought(path);
    sought.seek(4);
    EXPECT_EQ(sought.position(), 4U);
}

TEST_F(FileStreamTest, ReadsToItsEnd) {
    EXPECT_EQ(read(4), "0123");
    EXPECT_EQ(stream.position(), 4U);
    EXPECT_FALSE(stream.atEnd());
    EXPECT_EQ(read(100), "456789");
    EXPECT_TRUE(stream.atEnd());
    EXPECT_EQ(read(1), "");
}

TEST_F(FileStreamTest, SeeksWithinTheFile) {
    stream.seek(7);
    EXPECT_EQ(read(2), "78");
    stream.seek(0);
    EXPECT_EQ(read(2), "01");
}

TEST_F(FileStreamTest, SeeksToItsVeryEnd) {
    stream.seek(10);
    EXPECT_TRUE(stream.atEnd());
    EXPECT_EQ(read(1), "");
}

TEST_F(FileStreamTest, DoesNothingWhenItSeeksToItsOwnPosition) {
    stream.seek(3);
    takeCalls("fseeko64");
    stream.seek(3);
    EXPECT_EQ(takeCalls("fseeko64"), 0);
}

TEST_F(FileStreamTest, RefusesAPositionBeyondItsEnd) {
    EXPECT_EQ((thrownText<errinfo_stream_text, IOExceptions::OutOfRangeException>([&] { stream.seek(11); })),
              "Position 11 is past end of file. File size: 10");
    EXPECT_EQ(stream.position(), 0U);
}

TEST_F(FileStreamTest, NoticesAFileThatGrewUnderIt) {
    stream.open();
    std::ofstream(path, std::ios::app) << "more";
    EXPECT_EQ(read(10), "0123456789");
    EXPECT_EQ(failureOf([&] { read(1); }), "File is manipulated by someone after file open.| errno=0 (Success)");
    EXPECT_EQ(stream.position(), 10U);
    stream.seek(0);
    EXPECT_EQ(read(10), "0123456789");
}

TEST_F(FileStreamTest, RefusesEveryReadBeyondTheOldEndOfAFileThatGrew) {
    stream.open();
    std::ofstream(path, std::ios::app) << "more";
    for (int attempt = 0; attempt < 3; ++attempt) {
        EXPECT_EQ(failureOf([&] { read(14); }), "File is manipulated by someone after file open.| errno=0 (Success)");
        EXPECT_EQ(stream.position(), 0U);
    }
}

TEST_F(FileStreamTest, NoticesAFileThatGrewAtTheReadThatPassesTheOldEnd) {
    stream.open();
    std::ofstream(path, std::ios::app) << "more";
    EXPECT_EQ(failureOf([&] { read(11); }), "File is manipulated by someone after file open.| errno=0 (Success)");
}

TEST_F(FileStreamTest, ReportsAMissingFile) {
    std::filesystem::remove(path);
    EXPECT_EQ(failureOf([&] { stream.open(); }), "<no such text>| errno=2 (No such file or directory)");
    EXPECT_FALSE(stream.isOpened());
}

TEST_F(FileStreamTest, ReportsWhatFailsWhenItOpens) {
    failNext("fopen64", EMFILE);
    EXPECT_EQ(failureOf([&] { FileStream(path).open(); }), "<no such text>| errno=24 (Too many open files)");
    failNext("fseeko64", EIO);
    EXPECT_EQ(failureOf([&] { FileStream(path).open(); }),
              "Seeking to end of file failed.| errno=5 (Input/output error)");
    failNext("ftello64", EIO);
    EXPECT_EQ(failureOf([&] { FileStream(path).open(); }), "Getting file size failed.| errno=5 (Input/output error)");
}

TEST_F(FileStreamTest, ReportsAFailureToReturnToTheBeginning) {
    failNext("fseeko64", EIO, 2);
    EXPECT_EQ(failureOf([&] { stream.open(); }), "Seeking to beginning of file failed.| errno=5 (Input/output error)");
}

TEST_F(FileStreamTest, ReportsAFailingRead) {
    stream.open();
    failNext("fread", EIO);
    EXPECT_EQ(failureOf([&] { read(3); }), "Reading from file failed.| errno=5 (Input/output error)");
    EXPECT_EQ(stream.position(), 0U);
}

TEST_F(FileStreamTest, ReadsAgainWhereAReadFailed) {
    EXPECT_EQ(read(2), "01");
    failNext("fread", EIO, 1, 3);
    EXPECT_THROW(read(5), FileStreamIOException);
    EXPECT_EQ(stream.position(), 2U);
    EXPECT_EQ(read(5), "23456");
    EXPECT_EQ(stream.position(), 7U);
}

TEST_F(FileStreamTest, SeeksToThePositionThatItRememberedWhenAReadFailed) {
    EXPECT_EQ(read(2), "01");
    failNext("fread", EIO, 1, 3);
    EXPECT_THROW(read(5), FileStreamIOException);
    takeCalls("fseeko64");
    stream.seek(stream.position());
    EXPECT_EQ(takeCalls("fseeko64"), 1);
    EXPECT_EQ(read(2), "23");
    EXPECT_EQ(takeCalls("fseeko64"), 0);
}

TEST_F(FileStreamTest, ReadsToItsEndAfterAReadThatFailed) {
    stream.open();
    failNext("fread", EIO, 1, 3);
    EXPECT_THROW(read(5), FileStreamIOException);
    EXPECT_EQ(read(100), "0123456789"); // fewer than asked, and no failure
    EXPECT_TRUE(stream.atEnd());
}

TEST_F(FileStreamTest, ReportsThatItCannotReturnToWhereAReadFailed) {
    EXPECT_EQ(read(2), "01");
    failNext("fread", EIO, 1, 3);
    EXPECT_THROW(read(5), FileStreamIOException);
    failNext("fseeko64", EIO);
    EXPECT_EQ(failureOf([&] { read(5); }), "Seeking file failed.| errno=5 (Input/output error)");
    EXPECT_EQ(stream.position(), 2U);
    EXPECT_EQ(read(5), "23456");
}

TEST_F(FileStreamTest, ReportsAFailingSeek) {
    stream.open();
    failNext("fseeko64", EINVAL);
    EXPECT_EQ(failureOf([&] { stream.seek(3); }), "Seeking file failed.| errno=22 (Invalid argument)");
    EXPECT_EQ(stream.position(), 0U);
}

TEST_F(FileStreamTest, ReportsAFailingClose) {
    stream.open();
    failNext("fclose", EIO);
    EXPECT_EQ(failureOf([&] { stream.close(); }), "Closing file failed.| errno=5 (Input/output error)");
    EXPECT_TRUE(stream.alreadyClosed());
    EXPECT_FALSE(stream.isOpened());
}

TEST_F(FileStreamTest, OpensAndClosesOnce) {
    EXPECT_THROW(stream.close(), IOExceptions::NotOpenedException);
    stream.open();
    EXPECT_THROW(stream.open(), IOExceptions::AlreadyOpenedException);
    stream.close();
    EXPECT_THROW(stream.close(), IOExceptions::AlreadyClosedException);
    EXPECT_THROW(stream.open(), IOExceptions::AlreadyClosedException);
    EXPECT_THROW(stream.size(), IOExceptions::AlreadyClosedException);
    EXPECT_THROW(read(1), IOExceptions::AlreadyClosedException);
}

TEST_F(FileStreamTest, NamesTheObjectThatRefuses) {
    EXPECT_EQ((thrownText<errinfo_subject, IOExceptions::OutOfRangeException>([&] { FileStream(path).seek(11); })),
              "FileStream(" + path + ")");
    EXPECT_EQ((thrownText<errinfo_subject, IOExceptions::NotOpenedException>([&] { stream.close(); })),
              "FileStream(" + path + ")");
}

TEST_F(FileStreamTest, TakesAnotherNameBeforeItOpens) {
    root.write("other", "abc");
    stream.setFileName((root / "other").string());
    EXPECT_EQ(read(9), "abc");
    EXPECT_THROW(stream.setFileName(path), IOExceptions::AlreadyOpenedException);
}

TEST_F(FileStreamTest, ClosesWhenItIsDestroyed) {
    takeCalls("fclose");
    { FileStream(path).open(); }
    EXPECT_EQ(takeCalls("fclose"), 1);
    { FileStream unused(path); }
    EXPECT_EQ(takeCalls("fclose"), 0);
}

TEST_F(FileStreamTest, LogsAFailureToCloseWhenItIsDestroyed) {
    {
        FileStream dying(path);
        dying.open();
        failNext("fclose", EIO);
    }
    EXPECT_THAT(FakeKovan::messages("ERR"), ElementsAre(AllOf(StartsWith("Exception caught in ~FileStream. Ignoring: "),
                                                              HasSubstr("Closing file failed."))));
}

TEST_F(FileStreamTest, CanBeInterruptedBetweenChunks) {
    bool interrupted = false;
    boost::thread reader([&] {
        try {
            for (;;) {
                stream.seek(0);
                read(1);
            }
        } catch (const boost::thread_interrupted&) {
            interrupted = true;
        }
    });
    reader.interrupt();
    reader.join();
    EXPECT_TRUE(interrupted);
}

TEST_F(FileStreamTest, IsInterruptedBeforeItReads) {
    stream.open();
    EXPECT_EQ(callsUntilInterruption("fread", [this] { read(1); }), 0);
    EXPECT_EQ(stream.position(), 0U);
    EXPECT_EQ(read(3), "012");
}

TEST_F(FileStreamTest, ClosesAFileThatItCouldNotMeasureWhenItIsDestroyed) {
    takeCalls("fclose");
    {
        FileStream immeasurable(path);
        failNext("ftello64", EIO);
        EXPECT_THROW(immeasurable.open(), FileStreamIOException);
        EXPECT_TRUE(immeasurable.isOpened());
        EXPECT_THROW(immeasurable.open(), IOExceptions::AlreadyOpenedException);
    }
    EXPECT_EQ(takeCalls("fclose"), 1);
}

TEST_F(FileStreamTest, ReturnsWhatAShortReadGaveWithoutAnError) {
    std::filesystem::resize_file(path, 100000); // more than the C library reads ahead
    stream.open();
    std::filesystem::resize_file(path, 50000);
    EXPECT_EQ(read(100000).size(), 50000U);
    EXPECT_EQ(read(1), "");
    EXPECT_FALSE(stream.atEnd());
}

TEST_F(FileStreamTest, ReachesBeyondFourGibibytes) {
    const streamsize_t far = 5ULL << 30;
    std::filesystem::resize_file(path, far);
    std::ofstream(path, std::ios::app) << "far";
    EXPECT_EQ(stream.size(), far + 3);
    stream.seek(far);
    EXPECT_EQ(read(9), "far");
    EXPECT_EQ(stream.position(), far + 3);
}

TEST_F(FileStreamTest, RefusesEverythingOnceItIsClosed) {
    stream.open();
    stream.close();
    const auto refusal = [](const std::function<void()>& use) {
        return thrownText<errinfo_subject, IOExceptions::AlreadyClosedException>(use);
    };
    EXPECT_EQ(refusal([&] { read(1); }), "FileStream(" + path + ")");
    EXPECT_EQ(refusal([&] { stream.atEnd(); }), "FileStream(" + path + ")");
    EXPECT_EQ(refusal([&] { stream.position(); }), "FileStream(" + path + ")");
    EXPECT_EQ(refusal([&] { stream.seek(0); }), "FileStream(" + path + ")");
    EXPECT_EQ(refusal([&] { stream.size(); }), "FileStream(" + path + ")");
}

TEST_F(FileStreamTest, SavesAndRestoresItsPosition) {
    stream.seek(7);
    FakeTransaction saving;
    stream.transactionSerialize(&saving);
    EXPECT_THAT(saving.bytes, ElementsAre(7, 0, 0, 0, 0, 0, 0, 0));
    FakeTransaction loading(saving.bytes);
    FileStream other(path);
    other.transactionSerialize(&loading);
    EXPECT_EQ(other.position(), 7U);
}

TEST_F(FileStreamTest, SavesAPositionThatIsRewound) {
    stream.seek(7);
    FakeTransaction saving;
    stream.saveRewound(&saving, 3)();
    EXPECT_THAT(saving.bytes, ElementsAre(4, 0, 0, 0, 0, 0, 0, 0));
    EXPECT_EQ(stream.position(), 7U);
}

TEST_F(FileStreamTest, DependsOnNoOtherObject) {
    FakeTransaction transaction;
    stream.transactionSaved(&transaction);
    EXPECT_TRUE(transaction.dependencies.empty());
}

TEST_F(FileStreamTest, HasTheRootOfItsExceptions) {
    std::filesystem::remove(path);
    EXPECT_THROW(stream.open(), IOExceptions::IOStreamsException);
}

} // namespace
} // namespace DAX::Tests
