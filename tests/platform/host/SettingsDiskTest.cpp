#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>
#include <unistd.h>
#include <vconf.h>

#include "host/SettingsTransaction.h"
#include "support/ForkedProcess.h"
#include "support/SmallDisk.h"
#include "support/TemporaryRoot.h"

using DAX::Tests::fillDisk;
using DAX::Tests::ForkedProcess;
using DAX::Tests::onSmallDisk;
using DAX::Tests::TemporaryRoot;

namespace {

constexpr int PAGE = 4096;
const char* const STORES[] = {"var/lib/kovan/settings", "run/kovan/settings"};

// One for each store, in the order of STORES.
const char* const KEYS[] = {"db/key", "memory/key"};

class SettingsDiskTest : public testing::Test {
protected:
    // Sets another store up in this folder under the root, since a store that this process has opened stays open.
    void useRoot(const std::string& folder) const {
        std::filesystem::create_directories(m_root / folder);
        setenv("KOVAN_ROOT", (m_root / folder).c_str(), 1);
    }

    void useStore(const std::string& folder, const char* store) const {
        useRoot(folder);
        std::filesystem::create_directories(m_root / (folder + "/" + store));
    }

    // Fills the disk up to this many pages.
    void leavePages(int pages) const {
        fillDisk(m_root.path());
        const auto filler = m_root / "filler";
        std::filesystem::resize_file(filler, std::filesystem::file_size(filler) - std::uintmax_t(pages) * PAGE);
    }

    int m_value = -1;
    const TemporaryRoot m_root;
};

class DamagedStore : public testing::TestWithParam<int> {
protected:
    // A store of several pages, closed, and its data file.
    DamagedStore() {
        ForkedProcess writer([] {
            int failures = 0;
            for (int number = 0; number < 300; ++number) {
                failures += vconf_set_str((KEYS[GetParam()] + std::to_string(number)).c_str(), "a text") != 0;
            }
            return failures;
        });
        EXPECT_EQ(writer.wait(), 0);
        m_good = data();
        EXPECT_GT(m_good.size(), 8u * PAGE);
    }

    std::string data() const {
        std::ifstream file(dataFile(), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), {});
    }

    // The data of a store that holds nothing yet.
    std::string freshStore() const {
        std::filesystem::remove(dataFile());
        std::filesystem::remove(lockFile());
        int value = 0;
        ForkedProcess reader([&value] { return vconf_get_int(KEYS[GetParam()], &value) != 0 ? 0 : 1; });
        EXPECT_EQ(reader.wait(), 0);
        return data();
    }

    std::filesystem::path dataFile() const { return m_root / (std::string(STORES[GetParam()]) + "/data.mdb"); }
    std::filesystem::path lockFile() const { return m_root / (std::string(STORES[GetParam()]) + "/lock.mdb"); }

    static void write(const std::filesystem::path& file, const std::string& bytes) {
        std::ofstream(file, std::ios::binary | std::ios::trunc) << bytes;
    }

    // Checks that a process that reads and writes the whole store comes to its end, with or without failures.
    enum Outcome { FAILED, WORKED };
    static int tryAll() {
        bool good = true;
        for (int number = 0; number < 300; number += 7) {
            const std::string key = KEYS[GetParam()] + std::to_string(number);
            char* const text = vconf_get_str(key.c_str());
            good = good && text != nullptr && std::string(text) == "a text";
            free(text);
        }
        return good && vconf_set_str(KEYS[GetParam()], "text") == 0 ? WORKED : FAILED;
    }
    static int outcome() { return ForkedProcess(tryAll).wait(); }

    const TemporaryRoot m_root;
    std::string m_good;
};

} // namespace

TEST_F(SettingsDiskTest, FullDiskIsAFailureHoweverLittleRoomItHas) {
    SKIP_WITHOUT_SMALL_DISK();
    EXPECT_TRUE(onSmallDisk(m_root.path(), 1024 * 1024, [this] {
        for (int store = 0; store < 2; ++store) {
            int failures = 0;
            for (int pages = 0; pages < 12; ++pages) {
                useStore("s" + std::to_string(store) + "p" + std::to_string(pages), STORES[store]);
                leavePages(pages);
                const bool failed = vconf_set_int(KEYS[store], 1) != 0;
                failures += failed ? 1 : 0;
                EXPECT_EQ(failed, vconf_get_int(KEYS[store], &m_value) != 0) << pages;

                std::filesystem::remove(m_root / "filler");
                EXPECT_EQ(vconf_set_int(KEYS[store], pages), 0) << pages;
                EXPECT_EQ(vconf_get_int(KEYS[store], &m_value), 0) << pages;
                EXPECT_EQ(pages, m_value);
            }
            EXPECT_GE(failures, 4); // two pages for locks, two for data
            EXPECT_LT(failures, 12);
        }
    }));
}

TEST_F(SettingsDiskTest, FullDiskWithoutAFolderIsAFailureToo) {
    SKIP_WITHOUT_SMALL_DISK();
    EXPECT_TRUE(onSmallDisk(m_root.path(), 64 * 1024, [this] {
        fillDisk(m_root.path());
        EXPECT_NE(vconf_set_int("db/key", 1), 0);
        EXPECT_NE(vconf_set_int("memory/key", 1), 0);
        std::filesystem::remove(m_root / "filler");
        EXPECT_EQ(vconf_set_int("db/key", 1), 0);
        EXPECT_EQ(vconf_set_int("memory/key", 1), 0);
    }));
}

TEST_F(SettingsDiskTest, LockFileWithoutRoomOnTheDiskDoesNotEndTheProcess) {
    SKIP_WITHOUT_SMALL_DISK();
    EXPECT_TRUE(onSmallDisk(m_root.path(), 64 * 1024, [this] {
        const std::string lock = std::string(STORES[0]) + "/lock.mdb"; // of a process that died of the full disk
        m_root.write(lock, "");
        std::filesystem::resize_file(m_root / lock, 2 * PAGE);
        fillDisk(m_root.path());
        EXPECT_NE(vconf_set_int("db/key", 1), 0);
        std::filesystem::remove(m_root / "filler");
        EXPECT_EQ(vconf_set_int("db/key", 1), 0);
    }));
}

TEST_F(SettingsDiskTest, DiskThatFillsUpKeepsWhatIsStored) {
    SKIP_WITHOUT_SMALL_DISK();
    EXPECT_TRUE(onSmallDisk(m_root.path(), 256 * 1024, [this] {
        ASSERT_EQ(vconf_set_int("db/first", 1), 0);
        int number = 0;
        while (number < 1000 &&
               vconf_set_str(("db/" + std::to_string(number)).c_str(), std::string(1000, 'x').c_str()) == 0) {
            ++number;
        }
        EXPECT_LT(number, 1000);
        EXPECT_EQ(vconf_get_int("db/first", &m_value), 0);
        EXPECT_EQ(m_value, 1);
    }));
}

TEST_F(SettingsDiskTest, LinkInTheLockFilesPlaceIsRefused) {
    m_root.write("precious", "kept");
    std::filesystem::create_directories(m_root / STORES[0]);
    std::filesystem::create_symlink(m_root / "precious", m_root / (std::string(STORES[0]) + "/lock.mdb"));

    EXPECT_EQ(vconf_set_int("db/key", 1), ELOOP);
    EXPECT_EQ(m_root.read("precious"), "kept");
}

TEST_P(DamagedStore, ThatWasCutIsAFailureAtMost) {
    int failures = 0;
    for (std::size_t size = 0; size < m_good.size(); size += PAGE / 4) {
        write(dataFile(), m_good.substr(0, size));
        const int end = outcome();
        EXPECT_TRUE(end == FAILED || end == WORKED) << size << ": " << end;
        failures += end == FAILED ? 1 : 0;
    }
    EXPECT_GT(failures, 0);
    write(dataFile(), m_good);
    EXPECT_EQ(outcome(), WORKED);
}

// The number of the last page is in both of the first two pages, after the page's own header and the databases'
// records.
TEST_P(DamagedStore, ThatClaimsMorePagesThanAnyHasTakesNoRoom) {
    const std::size_t lastPage = 136;
    std::string bytes = m_good;
    for (const std::size_t page : {std::size_t(0), std::size_t(PAGE)}) {
        ASSERT_LT(static_cast<unsigned char>(bytes[page + lastPage]), m_good.size() / PAGE) << "not where it stands";
        bytes[page + lastPage + 2] = '\x03';
    }
    write(dataFile(), bytes);
    EXPECT_EQ(outcome(), FAILED);
    EXPECT_EQ(std::filesystem::file_size(dataFile()), m_good.size());
}

// What is left by a process that dies, or runs out of room, while it makes the store.
TEST_P(DamagedStore, ThatWasNeverCompletedIsMadeAgain) {
    const std::string fresh = freshStore();
    ASSERT_EQ(fresh.size(), 2u * PAGE);
    for (const std::string& bytes :
         {std::string(), fresh.substr(0, 1), fresh.substr(0, PAGE), fresh.substr(0, PAGE + 100),
          fresh.substr(0, PAGE + 200), fresh.substr(0, 2 * PAGE - 1), std::string(2 * PAGE, '\0')}) {
        write(dataFile(), bytes);
        ForkedProcess process([] {
            int value = 0;
            return vconf_set_int(KEYS[GetParam()], 7) == 0 && vconf_get_int(KEYS[GetParam()], &value) == 0 ? value : 0;
        });
        EXPECT_EQ(process.wait(), 7) << bytes.size();
    }
}

TEST_P(DamagedStore, ThatIsGarbageIsAFailureAndStays) {
    for (const std::string& bytes :
         {std::string(100000, 'x'), std::string(2 * PAGE, '\xff'), std::string(3 * PAGE, '\0')}) {
        write(dataFile(), bytes);
        EXPECT_EQ(outcome(), FAILED) << bytes.size();
        EXPECT_EQ(std::filesystem::file_size(dataFile()), bytes.size());
    }
}

TEST_P(DamagedStore, WhoseLocksAreGarbageWorks) {
    for (const std::string& bytes :
         {std::string(), std::string("x"), std::string(PAGE, 'x'), std::string(2 * PAGE, 'x')}) {
        write(lockFile(), bytes);
        EXPECT_EQ(outcome(), WORKED) << bytes.size();
    }
}

INSTANTIATE_TEST_SUITE_P(PersistentAndVolatile, DamagedStore, testing::Values(0, 1));
