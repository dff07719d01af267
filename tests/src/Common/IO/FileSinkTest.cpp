#include "Common/IO/FileSink.h"

#include <csignal>

#include <boost/thread/thread.hpp>
#include <gmock/gmock.h>
#include <sys/resource.h>

#include "FakeTransaction.h"
#include "FileFaults.h"
#include "Interruption.h"
#include "MemoryStreams.h"
#include "OpenDescriptor.h"
#include "support/FakeKovan.h"
#include "support/OrdinaryUser.h"
#include "support/ProcessDeath.h"
#include "support/TemporaryRoot.h"
#include "support/Thrown.h"

namespace DAX::Tests {
namespace {

using namespace Common::IO;
using Common::Utils::errinfo_description;
using Common::Utils::errinfo_path;
using Common::Utils::errinfo_stream_text;
using Common::Utils::errinfo_subject;
using IOExceptions::AlreadyClosedException;
using IOExceptions::AlreadyOpenedException;
using IOExceptions::EndOfDataMarkedException;
using IOExceptions::NotOpenedException;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

void write(ISink& sink, const std::string& text) {
    sink.writeChunk(bytesOf(text), text.size());
}

class FileSinkTest : public testing::Test {
protected:
    std::string content() const { return root.read("file"); }

    // "<description>|<errno text>" of the exception that the statement throws, which has to name the file.
    template <class E = FileSinkIOException, class Statement>
    std::string failureOf(const Statement& statement) {
        try {
            statement();
        } catch (const E& exception) {
            EXPECT_EQ(*boost::get_error_info<errinfo_path>(exception), path);
            return textOf<errinfo_description>(exception) + "|" + textOf<errinfo_stream_text>(exception);
        }
        return "<nothing thrown>";
    }

    const TemporaryRoot root;
    const std::string path = (root / "file").string();
};

TEST_F(FileSinkTest, WritesTheFile) {
    for (const bool truncate : {true, false}) {
        std::filesystem::remove(path);
        FileSink sink(path, truncate);
        EXPECT_FALSE(std::filesystem::exists(path));
        write(sink, "abc");
        write(sink, "def");
        EXPECT_EQ(sink.position(), 6U);
        sink.close();
        EXPECT_EQ(content(), "abcdef");
    }
}

TEST_F(FileSinkTest, EmptiesTheFileThatItTruncates) {
    root.write("file", "0123456789");
    FileSink sink(path, true);
    EXPECT_EQ(sink.position(), 0U);
    EXPECT_EQ(std::filesystem::file_size(path), 0U);
}

TEST_F(FileSinkTest, AppendsToWhatTheFileHolds) {
    root.write("file", "0123456789");
    FileSink sink(path, false);
    EXPECT_EQ(sink.position(), 10U);
    write(sink, "ab");
    sink.close();
    EXPECT_EQ(content(), "0123456789ab");
}

TEST_F(FileSinkTest, CutsNothing) {
    root.write("file", "0123456789");
    FileSink sink(path, false);
    sink.seek(3);
    write(sink, "ab");
    EXPECT_EQ(sink.position(), 5U);
    sink.markEndOfData();
    EXPECT_EQ(content(), "012ab56789");
}

TEST_F(FileSinkTest, DoesNothingWhenItSeeksToItsOwnPosition) {
    FileSink sink(path, true);
    sink.open();
    takeCalls("fseeko64");
    sink.seek(0);
    EXPECT_EQ(takeCalls("fseeko64"), 0);
    failNext("fseeko64", EINVAL);
    EXPECT_EQ(failureOf([&] { sink.seek(1); }), "Seeking file failed.| errno=22 (Invalid argument)");
    EXPECT_EQ(sink.position(), 0U);
}

TEST_F(FileSinkTest, TakesNoMoreAfterTheEndOfData) {
    FileSink sink(path, true);
    write(sink, "ab");
    sink.markEndOfData();
    EXPECT_TRUE(sink.isOpened());
    EXPECT_TRUE(sink.endOfDataMarked());
    EXPECT_THROW(write(sink, "c"), EndOfDataMarkedException);
    EXPECT_THROW(sink.markEndOfData(), EndOfDataMarkedException);
    EXPECT_THROW(sink.seek(0), EndOfDataMarkedException);
    EXPECT_NO_THROW(sink.flush());
    EXPECT_EQ(sink.position(), 2U);
    sink.close();
    EXPECT_EQ(content(), "ab");
}

TEST_F(FileSinkTest, TakesTheEndOfDataToTheMediumAndClosesTheFile) {
    FileSink sink(path, true);
    write(sink, "ab");
    takeCalls("fsync");
    takeCalls("fclose");
    sink.markEndOfData();
    EXPECT_EQ(takeCalls("fsync"), 1);
    EXPECT_EQ(takeCalls("fclose"), 1);
    sink.close();
    EXPECT_EQ(takeCalls("fsync"), 0);
    EXPECT_EQ(takeCalls("fclose"), 0);
}

TEST_F(FileSinkTest, FlushesToTheMedium) {
    FileSink sink(path, true);
    takeCalls("fsync");
    write(sink, "ab");
    EXPECT_EQ(takeCalls("fsync"), 0);
    sink.flush();
    EXPECT_EQ(takeCalls("fsync"), 1);
    EXPECT_EQ(content(), "ab");
}

TEST_F(FileSinkTest, FlushesAFileThatItOpensForThat) {
    FileSink sink(path, true);
    sink.flush();
    EXPECT_TRUE(std::filesystem::exists(path));
}

TEST_F(FileSinkTest, MarksTheEndBeforeItIsOpened) {
    FileSink sink(path, true);
    sink.markEndOfData();
    EXPECT_TRUE(sink.endOfDataMarked());
    EXPECT_FALSE(sink.isOpened());
    EXPECT_FALSE(std::filesystem::exists(path));
    takeCalls("fclose");
    sink.open();
    EXPECT_EQ(takeCalls("fclose"), 1);
    EXPECT_TRUE(sink.isOpened());
    EXPECT_TRUE(sink.endOfDataMarked());
    EXPECT_EQ(content(), "");
    EXPECT_THROW(write(sink, "c"), EndOfDataMarkedException);
}

TEST_F(FileSinkTest, MarksTheEndByClosing) {
    FileSink sink(path, true);
    sink.open();
    sink.close();
    EXPECT_TRUE(sink.endOfDataMarked());
    EXPECT_TRUE(sink.alreadyClosed());
    EXPECT_FALSE(sink.isOpened());
}

TEST_F(FileSinkTest, OpensAndClosesOnce) {
    FileSink sink(path, true);
    EXPECT_THROW(sink.close(), NotOpenedException);
    sink.open();
    EXPECT_THROW(sink.open(), AlreadyOpenedException);
    sink.close();
    EXPECT_THROW(sink.close(), AlreadyClosedException);
    EXPECT_THROW(sink.open(), AlreadyClosedException);
    EXPECT_THROW(sink.position(), AlreadyClosedException);
    EXPECT_THROW(write(sink, "a"), AlreadyClosedException);
    EXPECT_THROW(sink.flush(), AlreadyClosedException);
    EXPECT_THROW(sink.markEndOfData(), EndOfDataMarkedException);
}

TEST_F(FileSinkTest, ReportsWhatFailsWhenItOpens) {
    EXPECT_EQ(failureOf([&] {
                  std::filesystem::create_directory(path);
                  FileSink(path, true).open();
              }),
              "<no such text>| errno=21 (Is a directory)");
    std::filesystem::remove(path);
    failNext("fseeko64", EIO);
    EXPECT_EQ(failureOf([&] { FileSink(path, true).open(); }),
              "Seeking to end of file failed.| errno=5 (Input/output error)");
    failNext("ftello64", EIO);
    EXPECT_EQ(failureOf([&] { FileSink(path, true).open(); }),
              "Getting file size failed.| errno=5 (Input/output error)");
}

TEST_F(FileSinkTest, ReportsAFullDisk) {
    FileSink sink(path, true);
    write(sink, "ab");
    failNext("fwrite", ENOSPC);
    EXPECT_EQ(failureOf<FileSinkNotEnoughSpaceException>([&] { write(sink, "cd"); }),
              "No space left on device.| errno=28 (No space left on device)");
    EXPECT_EQ(sink.position(), 2U);
    failNext("fwrite", ENOSPC);
    EXPECT_THROW(write(sink, "cd"), FileSinkIOException);
}

TEST_F(FileSinkTest, MeetsARealFullDisk) {
    FileSink sink("/dev/full", true);
    EXPECT_THROW(write(sink, std::string(100000, 'x')), FileSinkNotEnoughSpaceException);
}

TEST_F(FileSinkTest, ReportsAFailingWrite) {
    FileSink sink(path, true);
    write(sink, "ab");
    failNext("fwrite", EIO);
    EXPECT_EQ(failureOf([&] { write(sink, "cd"); }), "Writing to file failed.| errno=5 (Input/output error)");
    EXPECT_EQ(sink.position(), 2U);
}

TEST_F(FileSinkTest, WritesAChunkAgainWhereItFailed) {
    FileSink sink(path, true);
    write(sink, "ab");
    failNext("fwrite", EIO, 1, 3);
    EXPECT_THROW(write(sink, "cdef"), FileSinkIOException);
    write(sink, "cdef");
    EXPECT_EQ(sink.position(), 6U);
    sink.close();
    EXPECT_EQ(content(), "abcdef");
}

TEST_F(FileSinkTest, SeeksToThePositionThatItRememberedWhenAWriteFailed) {
    FileSink sink(path, true);
    write(sink, "ab");
    failNext("fwrite", ENOSPC, 1, 3);
    EXPECT_THROW(write(sink, "cdef"), FileSinkNotEnoughSpaceException);
    takeCalls("fseeko64");
    sink.seek(sink.position());
    EXPECT_EQ(takeCalls("fseeko64"), 1);
    write(sink, "xy");
    EXPECT_EQ(takeCalls("fseeko64"), 0);
    sink.close();
    EXPECT_EQ(content(), "abxye"); // nothing is cut
}

TEST_F(FileSinkTest, ReportsThatItCannotReturnToWhereAWriteFailed) {
    FileSink sink(path, true);
    write(sink, "ab");
    failNext("fwrite", EIO, 1, 3);
    EXPECT_THROW(write(sink, "cdef"), FileSinkIOException);
    failNext("fseeko64", EIO);
    EXPECT_EQ(failureOf([&] { write(sink, "cdef"); }), "Seeking file failed.| errno=5 (Input/output error)");
    EXPECT_EQ(sink.position(), 2U);
    write(sink, "cdef");
    sink.close();
    EXPECT_EQ(content(), "abcdef");
}

TEST_F(FileSinkTest, SeeksAnewAfterASeekThatFailed) {
    FileSink sink(path, true);
    write(sink, "ab");
    failNext("fseeko64", EIO);
    EXPECT_THROW(sink.seek(0), FileSinkIOException);
    takeCalls("fseeko64");
    sink.seek(2);
    EXPECT_EQ(takeCalls("fseeko64"), 1);
}

// Limits the size of files, like a disk without room, until the object is destroyed.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &m_before); }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit m_before{};
};

TEST_F(FileSinkTest, WritesAChunkAgainAfterARealDiskTookAPartOfIt) {
    const std::string chunk(100000, 'x');
    const auto writeTwice = [&] {
        FileSink sink(path, true);
        write(sink, "ab");
        {
            const FileSizeLimit limit(50000);
            EXPECT_EQ(failureOf([&] { write(sink, chunk); }), "Writing to file failed.| errno=27 (File too large)");
        }
        EXPECT_EQ(sink.position(), 2U);
        write(sink, chunk);
        sink.close();
    };
    EXPECT_IN_CHILD(writeTwice());
    EXPECT_TRUE(content() == "ab" + chunk);
}

TEST_F(FileSinkTest, FailsAtTheEndOfDataWhileEarlierChunksAreLost) {
    const auto loseTheFirst = [&] {
        FileSink sink(path, true);
        write(sink, "abcd"); // the C library keeps it, and drops it when it cannot be written
        {
            const FileSizeLimit limit(1);
            EXPECT_EQ(failureOf([&] { sink.flush(); }), "Flushing file failed.| errno=27 (File too large)");
        }
        EXPECT_EQ(failureOf([&] { sink.flush(); }), "Flushing file failed.| errno=27 (File too large)");
        write(sink, "ef");
        EXPECT_EQ(failureOf([&] { sink.markEndOfData(); }), "Flushing file failed.| errno=27 (File too large)");
        EXPECT_TRUE(sink.endOfDataMarked());
    };
    EXPECT_IN_CHILD(loseTheFirst());
}

TEST_F(FileSinkTest, EndsTheDataOnceLostChunksAreWrittenAgain) {
    const auto rewrite = [&] {
        FileSink sink(path, true);
        write(sink, "abcd");
        {
            const FileSizeLimit limit(1);
            EXPECT_THROW(write(sink, std::string(100000, 'x')), FileSinkIOException);
            EXPECT_EQ(sink.position(), 4U);
        }
        sink.seek(2);
        EXPECT_THROW(sink.flush(), FileSinkIOException); // the second byte is missing
        sink.seek(1);
        write(sink, "bcdef");
        sink.close();
    };
    EXPECT_IN_CHILD(rewrite());
    EXPECT_EQ(content(), "abcdef");
}

TEST_F(FileSinkTest, ReportsWhatFailsWhenItFlushes) {
    FileSink sink(path, true);
    sink.open();
    failNext("fflush", EIO);
    EXPECT_EQ(failureOf([&] { sink.flush(); }), "Flushing file failed.| errno=5 (Input/output error)");
    failNext("fileno", EBADF);
    EXPECT_EQ(failureOf([&] { sink.flush(); }), "Getting file descriptor failed.| errno=9 (Bad file descriptor)");
    failNext("fsync", EIO);
    EXPECT_EQ(thrownText<errinfo_stream_text>([&] { sink.flush(); }), "sync() failed.");
}

TEST_F(FileSinkTest, IsMarkedThoughTheEndOfDataFails) {
    for (const char* const function : {"fflush", "fileno", "fsync", "fclose"}) {
        FileSink sink(path, true);
        sink.open();
        failNext(function, EIO);
        EXPECT_ANY_THROW(sink.markEndOfData()) << function;
        EXPECT_TRUE(sink.endOfDataMarked()) << function;
        EXPECT_THROW(write(sink, "a"), EndOfDataMarkedException) << function;
        EXPECT_NO_THROW(sink.close()) << function;
    }
}

TEST_F(FileSinkTest, LeavesNoFileOpenWhenTheEndOfDataFails) {
    takeCalls("fclose");
    {
        FileSink sink(path, true);
        sink.open();
        failNext("fflush", EIO);
        EXPECT_ANY_THROW(sink.markEndOfData());
    }
    EXPECT_EQ(takeCalls("fclose"), 1);
}

TEST_F(FileSinkTest, ReportsAFailingClose) {
    FileSink sink(path, true);
    sink.open();
    failNext("fclose", EIO);
    EXPECT_EQ(failureOf([&] { sink.close(); }), "Closing file failed.| errno=5 (Input/output error)");
    EXPECT_TRUE(sink.isOpened());
}

TEST_F(FileSinkTest, EndsTheDataWhenItIsDestroyed) {
    {
        FileSink sink(path, true);
        write(sink, "ab");
    }
    EXPECT_EQ(content(), "ab");
    EXPECT_TRUE(FakeKovan::messages().empty());
}

TEST_F(FileSinkTest, LogsAFailureWhenItIsDestroyed) {
    {
        FileSink sink(path, true);
        write(sink, "ab");
        failNext("fsync", EIO);
    }
    EXPECT_THAT(FakeKovan::messages("ERR"), ElementsAre(AllOf(StartsWith("Exception caught in ~FileSink. Ignoring: "),
                                                              HasSubstr("sync() failed."))));
}

TEST_F(FileSinkTest, CanBeInterruptedBetweenChunks) {
    FileSink sink("/dev/null", true);
    bool interrupted = false;
    boost::thread writer([&] {
        try {
            for (;;) {
                write(sink, "a");
            }
        } catch (const boost::thread_interrupted&) {
            interrupted = true;
        }
    });
    writer.interrupt();
    writer.join();
    EXPECT_TRUE(interrupted);
}

TEST_F(FileSinkTest, IsInterruptedBeforeItWrites) {
    FileSink sink(path, true);
    write(sink, "ab");
    EXPECT_EQ(callsUntilInterruption("fwrite", [&] { write(sink, "cd"); }), 0);
    EXPECT_EQ(sink.position(), 2U);
    sink.close();
    EXPECT_EQ(content(), "ab");
}

TEST_F(FileSinkTest, RefusesDataAfterTheEndBeforeItIsInterrupted) {
    FileSink sink(path, true);
    sink.open();
    sink.markEndOfData();
    EXPECT_FALSE(interrupts([&] { EXPECT_THROW(write(sink, "a"), EndOfDataMarkedException); }));
}

TEST_F(FileSinkTest, MakesAFileOfAnEmptyCopy) {
    FileSink sink(path, true);
    MemoryStream stream("");
    EXPECT_EQ(sink.appendAllStream(&stream, 3), 0U);
    EXPECT_TRUE(sink.isOpened());
    EXPECT_EQ(std::filesystem::file_size(path), 0U);
}

TEST_F(FileSinkTest, LeavesItsFileToNoOtherProgram) {
    for (const bool truncate : {true, false, false}) { // the last one finds the file there
        FileSink sink(path, truncate);
        sink.open();
        EXPECT_FALSE(isInherited(path)) << truncate;
        sink.close();
        if (truncate) {
            std::filesystem::remove(path);
        }
    }
}

TEST_F(FileSinkTest, WritesBehindWhatAnOpenFileHolds) {
    root.write("file", "one");
    FileSink sink("another name", Common::Utils::FileDescriptor(::open(path.c_str(), O_WRONLY | O_CLOEXEC)));
    sink.open();
    EXPECT_EQ(sink.position(), 3U);
    write(sink, "two");
    sink.close();
    EXPECT_EQ(content(), "onetwo");
    EXPECT_EQ(sink.debugName(), "FileSink(another name)");
}

TEST_F(FileSinkTest, ClosesAnOpenFileThatItNeverUsed) {
    root.write("file", "one");
    { const FileSink sink(path, Common::Utils::FileDescriptor(::open(path.c_str(), O_WRONLY | O_CLOEXEC))); }
    EXPECT_THROW(isInherited(path), std::runtime_error);
}

TEST_F(FileSinkTest, ReachesTheMediumBeforeItClosesTheFile) {
    FileSink sink(path, true);
    EXPECT_THAT(callsOf([&] { sink.open(); }), ElementsAre("fopen64", "fseeko64", "ftello64"));
    EXPECT_THAT(callsOf([&] { sink.flush(); }), ElementsAre("fflush", "fileno", "fsync"));
    EXPECT_THAT(callsOf([&] { sink.markEndOfData(); }), ElementsAre("fflush", "fileno", "fsync", "fclose"));
    EXPECT_THAT(callsOf([&] { sink.flush(); }), ElementsAre());
    EXPECT_THAT(callsOf([&] { sink.close(); }), ElementsAre());
}

TEST_F(FileSinkTest, StopsAtTheFirstFailureOfAFlush) {
    FileSink sink(path, true);
    sink.open();
    const auto callsWhenItFails = [&sink](const char* function) {
        failNext(function, EIO);
        return callsOf([&] { EXPECT_ANY_THROW(sink.flush()); });
    };
    EXPECT_THAT(callsWhenItFails("fflush"), ElementsAre("fflush", "ftello64")); // ftello64 tells how far the file got
    EXPECT_THAT(callsWhenItFails("fileno"), ElementsAre("fflush", "fileno"));
    EXPECT_THAT(callsWhenItFails("fsync"), ElementsAre("fflush", "fileno", "fsync"));
}

TEST_F(FileSinkTest, ThrowsAGenericExceptionWhenItCannotSynchronize) {
    FileSink sink(path, true);
    sink.open();
    failNext("fsync", EIO);
    try {
        sink.flush();
        FAIL() << "nothing was thrown";
    } catch (const IOExceptions::IOStreamsException&) {
        FAIL() << "of the wrong family";
    } catch (const Common::Utils::GenericException& exception) {
        EXPECT_EQ(textOf<errinfo_stream_text>(exception), "sync() failed.");
    }
}

TEST_F(FileSinkTest, IsMarkedOnARealFullDiskThatTakesNothingOfTheBuffer) {
    FileSink sink("/dev/full", true);
    write(sink, "ab"); // the C library keeps it
    EXPECT_EQ(thrownDescription<FileSinkIOException>([&] { sink.markEndOfData(); }), "Flushing file failed.");
    EXPECT_TRUE(sink.endOfDataMarked());
    EXPECT_TRUE(sink.isOpened());
    sink.close();
    EXPECT_TRUE(sink.alreadyClosed());
}

TEST_F(FileSinkTest, DoesNotTreatAnotherFailureAsAFullDisk) {
    FileSink sink(path, true);
    sink.open();
    failNext("fwrite", EFBIG);
    try {
        write(sink, "ab");
        FAIL() << "nothing was thrown";
    } catch (const FileSinkNotEnoughSpaceException&) {
        FAIL() << "the disk is not full";
    } catch (const FileSinkIOException& exception) {
        EXPECT_EQ(textOf<errinfo_description>(exception), "Writing to file failed.");
    }
}

TEST_F(FileSinkTest, DoesNotEmptyAFileThatItCannotLookAt) {
    root.write("locked/file", "0123456789");
    const std::string locked = (root / "locked/file").string();
    std::filesystem::permissions(root / "locked", std::filesystem::perms::none);
    {
        const OrdinaryUser user;
        EXPECT_EQ((thrownText<errinfo_stream_text, FileSinkIOException>([&] { FileSink(locked, false).open(); })),
                  " errno=13 (Permission denied)");
    }
    std::filesystem::permissions(root / "locked", std::filesystem::perms::all);
    EXPECT_EQ(root.read("locked/file"), "0123456789");
}

TEST_F(FileSinkTest, IsMarkedThoughTheEndOfDataFailsWhenItOpens) {
    FileSink sink(path, true);
    sink.markEndOfData();
    failNext("fclose", EIO);
    EXPECT_EQ(failureOf([&] { sink.open(); }), "Closing file failed.| errno=5 (Input/output error)");
    EXPECT_TRUE(sink.endOfDataMarked());
    EXPECT_TRUE(sink.isOpened());
}

TEST_F(FileSinkTest, StaysOpenedWhenTheEndOfDataFailsAsItCloses) {
    FileSink sink(path, true);
    sink.open();
    failNext("fsync", EIO);
    EXPECT_THROW(sink.close(), Common::Utils::GenericException);
    EXPECT_TRUE(sink.isOpened());
    EXPECT_FALSE(sink.alreadyClosed());
    EXPECT_NO_THROW(sink.close());
    EXPECT_TRUE(sink.alreadyClosed());
}

TEST_F(FileSinkTest, ReachesBeyondFourGibibytes) {
    const streamsize_t far = 5ULL << 30;
    FileSink sink(path, true);
    sink.seek(far);
    write(sink, "far");
    EXPECT_EQ(sink.position(), far + 3);
    sink.close();
    EXPECT_EQ(std::filesystem::file_size(path), far + 3);
}

TEST_F(FileSinkTest, NamesTheObjectThatRefuses) {
    FileSink sink(path, true);
    const std::string name = "FileSink(" + path + ")";
    EXPECT_EQ((thrownText<errinfo_subject, NotOpenedException>([&] { sink.close(); })), name);
    sink.open();
    EXPECT_EQ((thrownText<errinfo_subject, AlreadyOpenedException>([&] { sink.open(); })), name);
    sink.markEndOfData();
    EXPECT_EQ((thrownText<errinfo_subject, EndOfDataMarkedException>([&] { write(sink, "a"); })), name);
    sink.close();
    EXPECT_EQ((thrownText<errinfo_subject, AlreadyClosedException>([&] { sink.seek(0); })), name);
}

TEST_F(FileSinkTest, SavesItsPositionAndFlushes) {
    FileSink sink(path, true);
    write(sink, "abc");
    takeCalls("fsync");
    FakeTransaction saving;
    sink.transactionSerialize(&saving);
    EXPECT_THAT(saving.bytes, ElementsAre(3, 0, 0, 0, 0, 0, 0, 0));
    EXPECT_EQ(takeCalls("fsync"), 1);
    EXPECT_EQ(content(), "abc");
}

TEST_F(FileSinkTest, KeepsTheDataThatWasSaved) {
    root.write("file", "0123456789");
    FakeTransaction loading({4, 0, 0, 0, 0, 0, 0, 0});
    FileSink sink(path, true);
    sink.transactionSerialize(&loading);
    EXPECT_EQ(sink.position(), 4U);
    write(sink, "x");
    sink.close();
    EXPECT_EQ(content(), "0123x56789");
}

TEST_F(FileSinkTest, AssertsThatItIsNotOpenedWhenItIsRestored) {
    FakeTransaction loading({4, 0, 0, 0, 0, 0, 0, 0});
    FileSink sink(path, true);
    sink.open();
    EXPECT_ASSERTION(sink.transactionLoad(&loading), "!isOpened()");
}

TEST_F(FileSinkTest, IsNamedAfterItsPath) {
    EXPECT_EQ(FileSink(path, true).debugName(), "FileSink(" + path + ")");
}

} // namespace
} // namespace DAX::Tests
