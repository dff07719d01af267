#include "host/OwnFiles.h"

#include <cerrno>
#include <filesystem>
#include <string>

#include <MetricLogger.h>
#include <gmock/gmock.h>
#include <plantcfg.h>
#include <sys/stat.h>
#include <vconf.h>

#include "host/DeviceFile.h"
#include "host/DlogSink.h"
#include "host/PowerFile.h"
#include "host/UsbFile.h"
#include "support/TemporaryRoot.h"

namespace {

using DAX::Tests::TemporaryRoot;
using KovanHost::makeFolders;

// Sets the umask of the process while the object lives.
class Umask {
public:
    explicit Umask(mode_t mask) : m_before(umask(mask)) {}
    ~Umask() { umask(m_before); }
    Umask(const Umask&) = delete;
    Umask& operator=(const Umask&) = delete;

private:
    const mode_t m_before;
};

class OwnFilesTest : public testing::Test {
protected:
    static unsigned int modeOf(const std::filesystem::path& path) {
        struct stat status {};
        EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
        return status.st_mode & 07777;
    }

    const TemporaryRoot m_root;
};

class OwnFilesUnderAnyUmask : public OwnFilesTest, public testing::WithParamInterface<mode_t> {};

} // namespace

TEST_P(OwnFilesUnderAnyUmask, AreTheirOwnersAndTheirGroupsToRead) {
    {
        const Umask mask(GetParam());
        ASSERT_EQ(vconf_set_int("db/key", 1), 0);
        ASSERT_EQ(vconf_set_int("memory/key", 1), 0);
        ASSERT_EQ(MetricLogFramework::CLogger::GetInstance()->AddEventLogSync("a", "b", "c", "d"), 1);
        ASSERT_EQ(plantcfg_reset(0), 1);
        KovanHost::changePower([](auto&) {});
        KovanHost::changeUsbSticks([](auto&) {});
        KovanHost::writeDefaultDevice(false);
        KovanHost::DlogSink::choose((m_root / "a.log").c_str(), "");
    }
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(m_root.path())) {
        EXPECT_EQ(entry.is_directory() ? 0750U : 0640U, modeOf(entry.path())) << entry.path();
        if (!entry.is_directory()) {
            files.push_back(entry.path().lexically_relative(m_root.path()));
        }
    }
    EXPECT_THAT(files, testing::UnorderedElementsAre("a.log", "etc/kovan/device.ini", "etc/kovan/device.ini.lock",
                                                     "run/kovan/plantcfg-resets.jsonl", "run/kovan/power.ini",
                                                     "run/kovan/power.ini.lock", "run/kovan/settings/data.mdb",
                                                     "run/kovan/settings/lock.mdb", "run/kovan/usb.ini",
                                                     "run/kovan/usb.ini.lock", "var/lib/kovan/settings/data.mdb",
                                                     "var/lib/kovan/settings/lock.mdb", "var/log/kovan/events.jsonl"));
}

INSTANTIATE_TEST_SUITE_P(FromNoneToAll, OwnFilesUnderAnyUmask, testing::Values(0, 022, 027, 077, 0777));

TEST_F(OwnFilesTest, WhatWasThereKeepsItsMode) {
    m_root.write("log", "");
    chmod((m_root / "log").c_str(), 0600);
    std::filesystem::create_directory(m_root / "folder");
    chmod((m_root / "folder").c_str(), 0700);

    KovanHost::DlogSink::choose((m_root / "log").c_str(), "");
    EXPECT_EQ(makeFolders(m_root / "folder/below"), 0);

    EXPECT_EQ(modeOf(m_root / "log"), 0600U);
    EXPECT_EQ(modeOf(m_root / "folder"), 0700U);
    EXPECT_EQ(modeOf(m_root / "folder/below"), 0750U);
}

TEST_F(OwnFilesTest, FoldersAreMadeOnceAndNotThroughAFile) {
    EXPECT_EQ(makeFolders(m_root / "a/b//c/"), 0);
    EXPECT_EQ(makeFolders(m_root / "a/b/c"), 0);
    EXPECT_TRUE(std::filesystem::is_directory(m_root / "a/b/c"));
    EXPECT_EQ(makeFolders(""), 0);
    m_root.write("file", "");
    EXPECT_EQ(makeFolders(m_root / "file"), ENOTDIR);
    EXPECT_EQ(makeFolders(m_root / "file/below"), ENOTDIR);
}
