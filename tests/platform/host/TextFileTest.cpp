#include "host/TextFile.h"

#include "support/TemporaryRoot.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <sys/stat.h>

using KovanHost::MOST_BYTES;
using KovanHost::readText;
using KovanHost::replaceText;

namespace {

class TextFileTest : public testing::Test {
protected:
    template <typename Action>
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
    EXPECT_EQ(std::nullopt, readText(m_path));
    m_root.write("file", "");
    EXPECT_EQ(std::nullopt, readText(m_path + "/below"));
    EXPECT_EQ("", readText(m_path));
}

TEST_F(TextFileTest, ReadsWhatWasWritten) {
    const std::string text(MOST_BYTES, 'x');
    replaceText(m_path, "before");
    replaceText(m_path, text);

    EXPECT_EQ(text, readText(m_path));
    EXPECT_FALSE(std::filesystem::exists(m_path + ".new"));
}

TEST_F(TextFileTest, TooLargeAFileIsRefusedAndNeverWritten) {
    m_root.write("file", std::string(MOST_BYTES + 1, 'x'));
    EXPECT_EQ(m_path + ": larger than 65536 bytes", reasonAgainst([&] { readText(m_path); }));

    m_root.write("file", "before");
    EXPECT_EQ(m_path + ": larger than 65536 bytes",
              reasonAgainst([&] { replaceText(m_path, std::string(MOST_BYTES + 1, 'x')); }));
    EXPECT_EQ("before", readText(m_path));
}

TEST_F(TextFileTest, HugeFileIsRefusedWithoutBeingRead) {
    m_root.write("file", "");
    std::filesystem::resize_file(m_path, std::uintmax_t{1} << 40U);

    EXPECT_EQ(m_path + ": larger than 65536 bytes", reasonAgainst([&] { readText(m_path); }));
}

TEST_F(TextFileTest, PipesAndDevicesAreRefusedAndHoldNobodyUp) {
    ASSERT_EQ(0, mkfifo(m_path.c_str(), 0600));

    EXPECT_EQ(m_path + ": not a regular file", reasonAgainst([&] { readText(m_path); }));
    EXPECT_EQ("/dev/zero: not a regular file", reasonAgainst([&] { readText("/dev/zero"); }));
}

TEST_F(TextFileTest, FolderIsRefused) {
    EXPECT_EQ(m_root.path().string() + ": Is a directory", reasonAgainst([&] { readText(m_root.path()); }));
}
