#include "host/AppendFile.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "support/ForkedProcess.h"
#include "support/TemporaryRoot.h"

using DAX::Tests::ForkedProcess;
using DAX::Tests::TemporaryRoot;
using KovanHost::appendToLog;
using KovanHost::MOST_LOG_BYTES;

namespace {

class AppendFileTest : public testing::Test {
protected:
    // Makes a log of this size that takes no room on the disk.
    void makeLog(long bytes) const {
        m_root.write("log", "");
        std::filesystem::resize_file(m_path, static_cast<std::uintmax_t>(bytes));
    }

    static long lines(const std::string& text) { return std::count(text.begin(), text.end(), '\n'); }

    const TemporaryRoot m_root;
    const std::string m_path = (m_root / "log").string();
};

} // namespace

TEST_F(AppendFileTest, LineIsAddedAsLongAsTheLogIsNotFull) {
    makeLog(MOST_LOG_BYTES - 1);
    EXPECT_TRUE(appendToLog(m_path, "line"));

    EXPECT_EQ(static_cast<std::uintmax_t>(MOST_LOG_BYTES) + 4, std::filesystem::file_size(m_path));
    EXPECT_FALSE(std::filesystem::exists(m_path + ".1"));
}

TEST_F(AppendFileTest, FullLogIsSetAsideInPlaceOfAnOlderOne) {
    makeLog(MOST_LOG_BYTES);
    m_root.write("log.1", "an older one");
    EXPECT_TRUE(appendToLog(m_path, "line"));
    EXPECT_TRUE(appendToLog(m_path, "another"));

    EXPECT_EQ(m_root.read("log"), "line\nanother\n");
    EXPECT_EQ(std::filesystem::file_size(m_path + ".1"), static_cast<std::uintmax_t>(MOST_LOG_BYTES));
    EXPECT_FALSE(std::filesystem::exists(m_path + ".2"));
}

TEST_F(AppendFileTest, FullLogThatCannotBeSetAsideLosesNoLine) {
    makeLog(MOST_LOG_BYTES);
    std::filesystem::create_directories(m_path + ".1/something");
    EXPECT_TRUE(appendToLog(m_path, "line"));

    EXPECT_EQ(static_cast<std::uintmax_t>(MOST_LOG_BYTES) + 5, std::filesystem::file_size(m_path));
}

TEST_F(AppendFileTest, ProcessesThatFindItFullSetItAsideOnceAndLoseNoLine) {
    constexpr int WRITERS = 6;
    constexpr int LINES = 50;
    for (int round = 0; round < 5; ++round) {
        makeLog(MOST_LOG_BYTES - 1000); // it gets full in the middle of the writing
        std::vector<std::unique_ptr<ForkedProcess>> writers;
        for (int writer = 0; writer < WRITERS; ++writer) {
            writers.push_back(std::make_unique<ForkedProcess>([this] {
                int written = 0;
                for (int line = 0; line < LINES; ++line) {
                    written += appendToLog(m_path, std::string(99, 'x')) ? 1 : 0;
                }
                return written;
            }));
        }
        for (const auto& writer : writers) {
            EXPECT_EQ(writer->wait(), LINES);
        }
        EXPECT_EQ(lines(m_root.read("log")) + lines(m_root.read("log.1")), WRITERS * LINES);
        EXPECT_GE(lines(m_root.read("log.1")), 10);
        EXPECT_LE(lines(m_root.read("log.1")), 10 + WRITERS);
    }
}

TEST_F(AppendFileTest, LogThatCannotBeOpenedIsAFailure) {
    std::filesystem::create_directory(m_path);
    EXPECT_FALSE(appendToLog(m_path, "line"));
    EXPECT_FALSE(appendToLog((m_root / "absent/log").string(), "line"));
}
