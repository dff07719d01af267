#include "Common/IO/RegularFile.h"

#include <fstream>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include "Common/IO/FileExceptions.h"
#include "support/AllocationMeter.h"
#include "support/OrdinaryUser.h"
#include "support/TemporaryRoot.h"
#include "support/Thrown.h"

namespace DAX::Tests {
namespace {

using Common::IO::FileStreamIOException;
using Common::IO::RegularFile;

const std::size_t LIMIT = 64 * 1024;

class RegularFileTest : public testing::Test {
protected:
    RegularFileTest() { std::filesystem::permissions(root.path(), std::filesystem::perms(0755)); }

    // The description of the refusal, and the reason of the system.
    template <class... Options>
    static std::string refusalOf(const std::string& file, Options... options) {
        try {
            RegularFile(file, options...).readText(LIMIT);
        } catch (const FileStreamIOException& exception) {
            EXPECT_EQ(*boost::get_error_info<Common::Utils::errinfo_path>(exception), file);
            return textOf<Common::Utils::errinfo_description>(exception) +
                   textOf<Common::Utils::errinfo_stream_text>(exception);
        }
        return "<none>";
    }

    const TemporaryRoot root;
    const std::string path = (root / "file").string();
};

TEST_F(RegularFileTest, IsReadWhole) {
    const std::string text = "one\n" + std::string(10000, 'x') + std::string("\0two", 4);
    root.write("file", text);
    EXPECT_EQ(RegularFile(path).readText(LIMIT), text);
}

TEST_F(RegularFileTest, MayBeEmpty) {
    root.write("file", "");
    EXPECT_EQ(RegularFile(path).readText(LIMIT), "");
}

TEST_F(RegularFileTest, IsRefusedAboveTheLimit) {
    for (const std::size_t size : {std::size_t(0), std::size_t(1), LIMIT - 1, LIMIT}) {
        root.write("file", std::string(size, 'x'));
        EXPECT_EQ(RegularFile(path).readText(LIMIT).size(), size);
    }
    root.write("file", std::string(LIMIT + 1, 'x'));
    EXPECT_EQ(refusalOf(path), "File is larger than 65536 bytes. errno=0 (Success)");
}

TEST_F(RegularFileTest, FillsNoMemoryHoweverLargeItIs) {
    root.write("file", "");
    std::filesystem::resize_file(path, std::uintmax_t(1) << 40U);
    const AllocationMeter meter;
    EXPECT_EQ(refusalOf(path), "File is larger than 65536 bytes. errno=0 (Success)");
    EXPECT_LT(meter.bytes(), 1024U * 1024U);
}

TEST_F(RegularFileTest, DoesNotGrowWhileItIsRead) {
    root.write("file", "one");
    RegularFile file(path);
    std::ofstream(path, std::ios::app) << "two";
    EXPECT_EQ(thrownDescription<FileStreamIOException>([&] { file.readText(LIMIT); }),
              "File is manipulated by someone after file open.");
}

TEST_F(RegularFileTest, RefusesAPipeAndWaitsForNoWriter) {
    ASSERT_EQ(mkfifo(path.c_str(), 0666), 0);
    EXPECT_EQ(refusalOf(path), "Not a regular file. errno=0 (Success)");
    EXPECT_EQ(refusalOf(path, RegularFile::FOR_READING_AND_WRITING), "Not a regular file. errno=0 (Success)");
    std::filesystem::create_symlink(path, root / "link");
    EXPECT_EQ(refusalOf((root / "link").string(), RegularFile::FOR_READING, RegularFile::FOLLOWED),
              "Not a regular file. errno=0 (Success)");
}

TEST_F(RegularFileTest, RefusesADeviceAndAFolder) {
    EXPECT_EQ(refusalOf("/dev/zero"), "Not a regular file. errno=0 (Success)");
    EXPECT_EQ(refusalOf(root.path().string()), "Not a regular file. errno=0 (Success)");
}

TEST_F(RegularFileTest, RefusesALinkUnlessItIsToBeFollowed) {
    root.write("file", "text");
    const std::string link = (root / "link").string();
    std::filesystem::create_symlink(path, link);
    EXPECT_EQ(refusalOf(link), "Not a regular file. errno=0 (Success)");
    EXPECT_EQ(RegularFile(link, RegularFile::FOR_READING, RegularFile::FOLLOWED).readText(LIMIT), "text");
}

TEST_F(RegularFileTest, RefusesAFileThatIsNotThere) {
    EXPECT_EQ(refusalOf(path), "Looking at file failed. errno=2 (No such file or directory)");
}

TEST_F(RegularFileTest, MayBeWriteProtectedWhenItIsOnlyRead) {
    root.write("file", "text");
    std::filesystem::permissions(path, std::filesystem::perms(0444));
    const OrdinaryUser user;
    EXPECT_EQ(RegularFile(path).readText(LIMIT), "text");
    EXPECT_EQ(refusalOf(path, RegularFile::FOR_READING_AND_WRITING),
              "Opening file failed. errno=13 (Permission denied)");
}

TEST_F(RegularFileTest, LeavesNoDescriptorBehind) {
    root.write("file", "text");
    const int before = ::open("/dev/null", O_RDONLY);
    ::close(before);
    RegularFile(path).readText(LIMIT);
    refusalOf("/dev/null");
    refusalOf(root.path().string());
    const int after = ::open("/dev/null", O_RDONLY);
    ::close(after);
    EXPECT_EQ(after, before);
}

} // namespace
} // namespace DAX::Tests
