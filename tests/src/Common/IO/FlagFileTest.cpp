#include "Common/IO/FlagFile.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include "Common/IO/FileExceptions.h"
#include "FileFaults.h"
#include "Utility/Utils/FileDescriptor.h"
#include "Utility/Utils/GenericException.h"
#include "support/TemporaryRoot.h"
#include "support/Thrown.h"

namespace DAX::Tests {
namespace {

using Common::IO::removeFlagFile;
using Common::IO::writeFlagFile;

class FlagFileTest : public testing::Test {
protected:
    const TemporaryRoot root;
    const std::string path = (root / "flag").string();
};

TEST_F(FlagFileTest, HoldsItsLines) {
    writeFlagFile(path, {"One.", "", "Two."});
    EXPECT_EQ(root.read("flag"), "One.\n\nTwo.\n");
}

TEST_F(FlagFileTest, IsEmptyWithoutLines) {
    writeFlagFile(path);
    EXPECT_TRUE(std::filesystem::exists(path));
    EXPECT_EQ(root.read("flag"), "");
}

TEST_F(FlagFileTest, TakesThePlaceOfWhatStoodThere) {
    root.write("flag", "something longer than the new line");
    writeFlagFile(path, {"New."});
    EXPECT_EQ(root.read("flag"), "New.\n");
}

TEST_F(FlagFileTest, WritesALineAtATime) {
    const std::vector<std::string> calls = callsOf([this] { writeFlagFile(path, {"One.", "Two."}); });
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "fwrite"), 2);
}

TEST_F(FlagFileTest, SynchronizesTheFileAndItsFolder) {
    takeCalls("fsync");
    writeFlagFile(path);
    EXPECT_EQ(takeCalls("fsync"), 2);
    failNext("fsync", EIO, 2);
    EXPECT_THROW(writeFlagFile(path), Common::Utils::GenericException);
}

TEST_F(FlagFileTest, IsRemovedForGood) {
    writeFlagFile(path);
    takeCalls("fsync");
    EXPECT_TRUE(removeFlagFile(path));
    EXPECT_EQ(takeCalls("fsync"), 1);
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_FALSE(removeFlagFile(path));
    EXPECT_EQ(takeCalls("fsync"), 0);
}

TEST_F(FlagFileTest, ThrowsWhenItsRemovalMayNotLast) {
    writeFlagFile(path);
    failNext("fsync", EIO);
    EXPECT_THROW(removeFlagFile(path), Common::Utils::GenericException);
}

TEST_F(FlagFileTest, IsNotMadeThroughALinkAndDoesNotWaitOnAPipe) {
    std::filesystem::create_symlink(root / "elsewhere", path);
    EXPECT_THROW(writeFlagFile(path), Common::IO::FileSinkIOException);
    EXPECT_FALSE(std::filesystem::exists(root / "elsewhere"));
    std::filesystem::remove(path);
    ASSERT_EQ(mkfifo(path.c_str(), 0666), 0);
    EXPECT_THROW(writeFlagFile(path), Common::IO::FileSinkIOException);
}

// Why it is not made: the description and the system's reason.
std::string refusalOf(const std::string& path) {
    try {
        writeFlagFile(path);
    } catch (const Common::IO::FileSinkIOException& exception) {
        return textOf<Common::Utils::errinfo_description>(exception) +
               textOf<Common::Utils::errinfo_stream_text>(exception);
    }
    return "<none>";
}

TEST_F(FlagFileTest, IsNoFolder) {
    std::filesystem::create_directory(path);
    EXPECT_EQ(refusalOf(path), "<no such text> errno=21 (Is a directory)");
}

TEST_F(FlagFileTest, IsMadeThroughNoLinkThatTakesItsPlaceMeanwhile) {
    afterNextLook([this] { std::filesystem::create_symlink(root / "elsewhere", path); });
    EXPECT_EQ(refusalOf(path), "<no such text> errno=40 (Too many levels of symbolic links)");
    EXPECT_FALSE(std::filesystem::exists(root / "elsewhere"));
}

TEST_F(FlagFileTest, IsWrittenToNoPipeThatTakesItsPlaceMeanwhile) {
    Common::Utils::FileDescriptor reader;
    afterNextLook([&] {
        ASSERT_EQ(mkfifo(path.c_str(), 0666), 0);
        reader = Common::Utils::FileDescriptor(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    });
    EXPECT_EQ(refusalOf(path), "Not a regular file. errno=17 (File exists)");
    EXPECT_TRUE(reader.isOpen());
}

TEST_F(FlagFileTest, WaitsForNoReaderOfAPipeThatTakesItsPlaceMeanwhile) {
    afterNextLook([this] { ASSERT_EQ(mkfifo(path.c_str(), 0666), 0); });
    EXPECT_EQ(refusalOf(path), "<no such text> errno=6 (No such device or address)");
}

TEST_F(FlagFileTest, ThrowsWhenItCannotBeMade) {
    EXPECT_THROW(writeFlagFile((root / "absent/flag").string()), Common::IO::FileSinkIOException);
}

TEST_F(FlagFileTest, ThrowsWhenItCannotBeWritten) {
    failNext("fwrite", EIO, 2);
    EXPECT_THROW(writeFlagFile(path, {"One.", "Two."}), Common::IO::FileSinkIOException);
}

} // namespace
} // namespace DAX::Tests
