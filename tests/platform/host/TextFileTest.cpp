#include "host/TextFile.h"

#include <cerrno>
#include <filesystem>
#include <stdexcept>
#include <string>

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "DiskCalls.h"
#include "support/SmallDisk.h"
#include "support/TemporaryRoot.h"

using DAX::Tests::diskCallsOf;
using DAX::Tests::failNextDiskCall;
using DAX::Tests::fillDisk;
using DAX::Tests::onSmallDisk;
using KovanHost::FileLock;
using KovanHost::MOST_BYTES;
using KovanHost::readText;
using KovanHost::replaceText;

namespace {

class TextFileTest : public testing::Test {
protected:
    template <class Action>
    static std::string reasonAgainst(Action action) {
        try {
            action();
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "<none>";
    }

    const DAX::Tests::TemporaryRoot m_root;
    const std::string m_path = (m_root / "file").string();
};

} // namespace

TEST_F(TextFileTest, AbsentFileHasNoText) {
    EXPECT_EQ(readText(m_path), std::nullopt);
    m_root.write("file", "");
    EXPECT_EQ(readText(m_path + "/below"), std::nullopt);
    EXPECT_EQ(readText(m_path), "");
}

TEST_F(TextFileTest, ReadsWhatWasWritten) {
    const std::string text(MOST_BYTES, 'x');
    replaceText(m_path, "before");
    replaceText(m_path, text);

    EXPECT_EQ(text, readText(m_path));
    EXPECT_FALSE(std::filesystem::exists(m_path + ".new"));
}

TEST_F(TextFileTest, TooLargeFileIsRefusedAndNeverWritten) {
    m_root.write("file", std::string(MOST_BYTES + 1, 'x'));
    EXPECT_EQ(reasonAgainst([&] { readText(m_path); }), m_path + ": larger than 65536 bytes");

    m_root.write("file", "before");
    EXPECT_EQ(reasonAgainst([&] { replaceText(m_path, std::string(MOST_BYTES + 1, 'x')); }),
              m_path + ": larger than 65536 bytes");
    EXPECT_EQ(readText(m_path), "before");
}

TEST_F(TextFileTest, HugeFileIsRefusedWithoutBeingRead) {
    m_root.write("file", "");
    std::filesystem::resize_file(m_path, std::uintmax_t{1} << 40U);

    EXPECT_EQ(reasonAgainst([&] { readText(m_path); }), m_path + ": larger than 65536 bytes");
}

TEST_F(TextFileTest, PipesAndDevicesAreRefusedAndHoldNobodyUp) {
    ASSERT_EQ(mkfifo(m_path.c_str(), 0600), 0);

    EXPECT_EQ(reasonAgainst([&] { readText(m_path); }), m_path + ": not a regular file");
    EXPECT_EQ(reasonAgainst([&] { readText("/dev/zero"); }), "/dev/zero: not a regular file");
}

TEST_F(TextFileTest, FolderIsRefused) {
    EXPECT_EQ(reasonAgainst([&] { readText(m_root.path()); }), m_root.path().string() + ": Is a directory");
}

TEST_F(TextFileTest, NewTextIsOnItsMediumBeforeItHasTheNameAndTheFolderAfterwards) {
    EXPECT_THAT(diskCallsOf([&] { replaceText(m_path, "text"); }),
                testing::ElementsAre("fsync file", "rename", "fsync folder"));
}

TEST_F(TextFileTest, WriteThatFailsLeavesTheOldTextAlone) {
    replaceText(m_path, "before");
    for (const char* const call : {"fsync file", "rename"}) {
        failNextDiskCall(call, EIO);
        EXPECT_NE(reasonAgainst([&] { replaceText(m_path, "after"); }), "<none>") << call;
        EXPECT_EQ(readText(m_path), "before") << call;
        EXPECT_FALSE(std::filesystem::exists(m_path + ".new")) << call;
    }
    failNextDiskCall("fsync folder", EIO);
    EXPECT_EQ(reasonAgainst([&] { replaceText(m_path, "after"); }), m_root.path().string() + ": Input/output error");
}

TEST_F(TextFileTest, FullDiskLeavesTheOldTextAlone) {
    SKIP_WITHOUT_SMALL_DISK();
    EXPECT_TRUE(onSmallDisk(m_root.path(), 64 * 1024, [this] {
        replaceText(m_path, "before");
        fillDisk(m_root.path());
        EXPECT_EQ(reasonAgainst([&] { replaceText(m_path, "after"); }), m_path + ".new: No space left on device");
        EXPECT_EQ(readText(m_path), "before");
        EXPECT_FALSE(std::filesystem::exists(m_path + ".new"));
    }));
}

TEST_F(TextFileTest, LeftoverOfAPowerCutGoes) {
    m_root.write("file.new", std::string(100, 'x'));

    replaceText(m_path, "text");

    EXPECT_EQ(readText(m_path), "text");
    EXPECT_FALSE(std::filesystem::exists(m_path + ".new"));
}

TEST_F(TextFileTest, NothingIsWrittenThroughALinkInTheNewTextsPlace) {
    m_root.write("precious", "kept");
    std::filesystem::create_symlink(m_root / "precious", m_path + ".new");

    replaceText(m_path, "text");

    EXPECT_EQ(m_root.read("precious"), "kept");
    EXPECT_EQ(readText(m_path), "text");
    EXPECT_FALSE(std::filesystem::is_symlink(m_path));
}

TEST_F(TextFileTest, LockIsTakenOnNoLinkAndWaitsForNoPipe) {
    std::filesystem::create_symlink(m_root / "elsewhere", m_path);
    EXPECT_EQ(reasonAgainst([&] { FileLock lock(m_path); }), m_path + ": Too many levels of symbolic links");
    EXPECT_FALSE(std::filesystem::exists(m_root / "elsewhere"));

    std::filesystem::remove(m_path);
    ASSERT_EQ(mkfifo(m_path.c_str(), 0600), 0);
    FileLock lock(m_path);
}
