#include "Common/IO/FileReplacement.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "Common/IO/FileExceptions.h"
#include "FileFaults.h"
#include "support/OrdinaryUser.h"
#include "support/SmallDisk.h"
#include "support/TemporaryRoot.h"
#include "support/Thrown.h"

namespace DAX::Tests {
namespace {

using Common::IO::FileReplacement;
using Common::IO::FileSinkIOException;
using Common::IO::FileSinkNotEnoughSpaceException;
using Common::Utils::errinfo_description;
using Common::Utils::errinfo_stream_text;
using Common::Utils::GenericException;

class FileReplacementTest : public testing::Test {
protected:
    static void replace(const std::string& file, const std::string& text) {
        FileReplacement replacement(file);
        replacement.write(text);
        replacement.commit();
    }

    void replace(const std::string& text) const { replace(path, text); }

    bool isNewFileThere() const { return std::filesystem::symlink_status(path + ".new").type() != NOT_FOUND; }

    unsigned int modeOf(const std::string& file) const {
        struct stat status {};
        EXPECT_EQ(::stat(file.c_str(), &status), 0);
        return status.st_mode & 07777;
    }

    static constexpr auto NOT_FOUND = std::filesystem::file_type::not_found;

    const TemporaryRoot root;
    const std::string path = (root / "file").string();
};

TEST_F(FileReplacementTest, MakesAFile) {
    replace("text");
    EXPECT_EQ(root.read("file"), "text");
    EXPECT_FALSE(isNewFileThere());
}

TEST_F(FileReplacementTest, MakesAFileThatOnlyItsOwnerWritesWhateverTheMask) {
    const mode_t mask = ::umask(0);
    replace("text");
    ::umask(mask);
    EXPECT_EQ(modeOf(path), 0644U);
}

TEST_F(FileReplacementTest, TakesThePlaceOfALongerFileWithItsMode) {
    root.write("file", std::string(1000, 'x'));
    ::chmod(path.c_str(), 0664);
    replace("text");
    EXPECT_EQ(root.read("file"), "text");
    EXPECT_EQ(modeOf(path), 0664U);
}

TEST_F(FileReplacementTest, LeavesTheOldFileUntilItIsCommitted) {
    root.write("file", "old");
    {
        FileReplacement replacement(path);
        replacement.write("new");
        EXPECT_EQ(root.read("file"), "old");
    }
    EXPECT_EQ(root.read("file"), "old");
    EXPECT_FALSE(isNewFileThere());
}

TEST_F(FileReplacementTest, SyncsTheFileBeforeTheRenameAndTheFolderAfterIt) {
    root.write("file", "old");
    EXPECT_THAT(callsOf([this] { replace("new"); }),
                testing::IsSupersetOf({"write", "fsync", "rename"})); // and what closes the descriptors
    std::vector<std::string> calls = callsOf([this] { replace("newer"); });
    calls.erase(std::remove(calls.begin(), calls.end(), "close"), calls.end());
    EXPECT_THAT(calls, testing::ElementsAre("write", "fsync", "rename", "fsync"));
}

TEST_F(FileReplacementTest, GoesOnAfterASignal) {
    failNext("write", EINTR);
    replace("text");
    EXPECT_EQ(root.read("file"), "text");
}

struct Step {
    const char* function;
    int call;
};

class FailingReplacement : public FileReplacementTest, public testing::WithParamInterface<Step> {};

TEST_P(FailingReplacement, LeavesTheOldFile) {
    root.write("file", "old");
    {
        FileReplacement replacement(path);
        failNext(GetParam().function, EIO, GetParam().call);
        EXPECT_ANY_THROW({
            replacement.write("new");
            replacement.commit();
        });
    }
    EXPECT_EQ(root.read("file"), "old");
    EXPECT_FALSE(isNewFileThere());
}

INSTANTIATE_TEST_SUITE_P(AtEachStep, FailingReplacement,
                         testing::Values(Step{"write", 1}, Step{"fsync", 1}, Step{"close", 1}, Step{"rename", 1}));

TEST_F(FileReplacementTest, ReportsThatTheFolderCannotBeSynced) {
    root.write("file", "old");
    {
        FileReplacement replacement(path);
        replacement.write("new");
        failNext("fsync", EIO, 2);
        EXPECT_EQ(thrownText<errinfo_stream_text>([&] { replacement.commit(); }), " errno=5 (Input/output error)");
    }
    EXPECT_EQ(root.read("file"), "new");
    EXPECT_FALSE(isNewFileThere());
}

TEST_F(FileReplacementTest, TakesAFolderThatItsFileSystemCannotSync) {
    FileReplacement replacement(path);
    replacement.write("text");
    failNext("fsync", EINVAL, 2);
    replacement.commit();
    EXPECT_EQ(root.read("file"), "text");
}

TEST_F(FileReplacementTest, ReportsAFullDisk) {
    root.write("file", "old");
    failNext("write", ENOSPC);
    EXPECT_EQ((thrownText<errinfo_description, FileSinkNotEnoughSpaceException>([this] { replace("new"); })),
              "No space left on device.");
    EXPECT_EQ(root.read("file"), "old");
}

TEST_F(FileReplacementTest, LeavesTheOldFileOnARealFullDisk) {
    SKIP_WITHOUT_SMALL_DISK();
    EXPECT_TRUE(onSmallDisk(root.path().string(), 64 * 1024, [this] {
        replace("old");
        fillDisk(root.path().string());
        EXPECT_THROW(replace(std::string(100000, 'x')), FileSinkNotEnoughSpaceException);
        EXPECT_EQ(root.read("file"), "old");
        EXPECT_FALSE(isNewFileThere());
        std::filesystem::remove(root / "filler");
        replace("new");
        EXPECT_EQ(root.read("file"), "new");
    }));
}

TEST_F(FileReplacementTest, RemovesWhatAPowerCutLeft) {
    root.write("file.new", "half of a new conten");
    replace("text");
    EXPECT_EQ(root.read("file"), "text");
    EXPECT_FALSE(isNewFileThere());
}

TEST_F(FileReplacementTest, DoesNotWriteThroughALinkInTheNewFilesPlace) {
    root.write("precious", "kept");
    std::filesystem::create_symlink(root / "precious", path + ".new");
    replace("text");
    EXPECT_EQ(root.read("precious"), "kept");
    EXPECT_EQ(root.read("file"), "text");
    EXPECT_FALSE(std::filesystem::is_symlink(path));
}

TEST_F(FileReplacementTest, RefusesAFolderInTheNewFilesPlace) {
    std::filesystem::create_directory(path + ".new");
    root.write("file", "old");
    EXPECT_EQ((thrownText<errinfo_stream_text, FileSinkIOException>([this] { replace("new"); })),
              " errno=21 (Is a directory)");
    EXPECT_EQ(root.read("file"), "old");
}

TEST_F(FileReplacementTest, DoesNotWriteThroughALinkInTheFilesPlace) {
    root.write("precious", "kept");
    std::filesystem::create_symlink(root / "precious", path);
    replace("text");
    EXPECT_EQ(root.read("precious"), "kept");
    EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(path)));
}

TEST_F(FileReplacementTest, TakesThePlaceOfAPipeAndWaitsForNobody) {
    ASSERT_EQ(mkfifo(path.c_str(), 0666), 0);
    replace("text");
    EXPECT_TRUE(std::filesystem::is_regular_file(path));
    EXPECT_EQ(root.read("file"), "text");
}

TEST_F(FileReplacementTest, RefusesAFolder) {
    std::filesystem::create_directory(path);
    EXPECT_EQ((thrownText<errinfo_stream_text, FileSinkIOException>([this] { replace("text"); })),
              " errno=21 (Is a directory)");
    EXPECT_FALSE(isNewFileThere());
}

TEST_F(FileReplacementTest, RefusesAFileThatMayNotBeWritten) {
    root.write("file", "old");
    ::chmod(path.c_str(), 0444);
    ::chmod(root.path().c_str(), 0777);
    const OrdinaryUser user;
    EXPECT_EQ((thrownText<errinfo_stream_text, FileSinkIOException>([this] { replace("new"); })),
              " errno=13 (Permission denied)");
    EXPECT_EQ(root.read("file"), "old");
    EXPECT_FALSE(isNewFileThere());
}

TEST_F(FileReplacementTest, RefusesAFolderThatIsNotThere) {
    EXPECT_EQ((thrownText<errinfo_stream_text, FileSinkIOException>([this] { replace(path + "/below", "text"); })),
              " errno=2 (No such file or directory)");
}

} // namespace
} // namespace DAX::Tests
