// Obstacles in the place of the daemon's files.
#include <filesystem>

#include <boost/date_time/posix_time/posix_time_io.hpp>
#include <boost/exception/diagnostic_information.hpp>
#include <boost/optional/optional_io.hpp>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include "DAXCommon/UserInterestExceptions.h"
#include "support/SmallDisk.h"
#include "support/TemporaryRoot.h"
#include "support/WaitUntil.h"
#include "system/support/Desk.h"
#include "system/support/Scenarios.h"

namespace DAX::Tests {
namespace {

using namespace testing;
using namespace DAXCommon;
using namespace Service;
using UserInterestExceptions::DAXUnknownException;

const std::string FOLDER = "mnt/systemrw/org.kovan.tv.dax/data/tv";
const std::string LOCK_FILE = FOLDER + "/InstallationLock.dat";
const char PRIORITY_KEY[] = "memory/menu/support/softwareupdate/currentServiceClientPriority";
const std::string DATE_FILE = FOLDER + "/LastSearchingDate";

class BadLockFile : public Test {
protected:
    BadLockFile() {
        desk.play(QUICK);
        std::filesystem::create_directories(desk.root / FOLDER);
        manager = desk.connect();
        session = manager->getService(ServiceClientPriority(1), "client", ServiceTransactionType(0));
        transaction = session->startNewTransaction(OTN);
        daemon = desk.daemon();
    }

    // Checks that the finalization fails with this text before the core is called, and that the daemon goes on.
    void expectRefusal(const std::string& text) {
        try {
            transaction->startFinalization({}, false);
            FAIL() << "nothing was thrown";
        } catch (const DAXUnknownException& exception) {
            EXPECT_THAT(boost::diagnostic_information(exception), HasSubstr(text));
        }
        EXPECT_THAT(desk.coreMethods(), Not(Contains("startFinalization")));
        EXPECT_EQ(manager->getCurrentVersion(), "1000");
        EXPECT_EQ(desk.daemon(), daemon);
    }

    Desk desk;
    std::unique_ptr<IServiceManager> manager;
    std::shared_ptr<IService> session;
    std::shared_ptr<IServiceTransaction> transaction;
    pid_t daemon = 0;
};

TEST_F(BadLockFile, IsAFolder) {
    desk.root.write(LOCK_FILE + "/inside", "text");
    expectRefusal(" errno=21 (Is a directory)");
    EXPECT_EQ(desk.root.read(LOCK_FILE + "/inside"), "text");
}

TEST_F(BadLockFile, HasNoFolder) {
    std::filesystem::remove_all(desk.root / FOLDER);
    expectRefusal(" errno=2 (No such file or directory)");
    EXPECT_FALSE(std::filesystem::exists(desk.root / FOLDER));
}

TEST_F(BadLockFile, HasAFileAboveIt) {
    std::filesystem::remove_all(desk.root / FOLDER);
    desk.root.write(FOLDER, "a file");
    expectRefusal(" errno=20 (Not a directory)");
    EXPECT_EQ(desk.root.read(FOLDER), "a file");
}

TEST_F(BadLockFile, LeadsToAFullMedium) {
    std::filesystem::create_symlink("/dev/full", desk.root / LOCK_FILE);
    expectRefusal(" errno=28 (No space left on device)");
}

class BadDateFile : public Test {
protected:
    // Checks that there is no date but this log line, and that the daemon goes on.
    void expectNoDate(const std::string& line) {
        const auto manager = desk.connect();
        EXPECT_EQ(manager->getLastSearchingForUpgradeDate(), boost::none);
        EXPECT_EQ(desk.countMessages(line), 1);
        EXPECT_EQ(manager->getCurrentVersion(), "1000");
    }

    std::string path() const { return (desk.root / DATE_FILE).string(); }

    Desk desk;
};

TEST_F(BadDateFile, IsTorn) {
    desk.root.write(DATE_FILE, "20260102T0");
    const auto date = desk.connect()->getLastSearchingForUpgradeDate();
    EXPECT_TRUE(!date || date->date() == boost::gregorian::date(2026, 1, 2));
}

TEST_F(BadDateFile, HoldsNoDate) {
    desk.root.write(DATE_FILE, "yesterday");
    expectNoDate("SearchingDateRegister::getDate File with date data is probably corrupted. Exception occurred: ");
}

TEST_F(BadDateFile, IsALink) {
    desk.root.write(FOLDER + "/elsewhere", "20260102T030405");
    std::filesystem::create_symlink("elsewhere", path());
    expectNoDate("Reading from symbolic link file is security violation : " + path());
    EXPECT_EQ(desk.root.read(FOLDER + "/elsewhere"), "20260102T030405");
}

TEST_F(BadDateFile, IsAPipeThatNobodyWritesTo) {
    std::filesystem::create_directories(desk.root / FOLDER);
    ASSERT_EQ(mkfifo(path().c_str(), 0666), 0);
    desk.play(QUICK);
    expectNoDate("SearchingDateRegister::getDate cannot open the file: " + path());
    EXPECT_EQ(desk.run("daxctl", {"search"}).end, ProcessEnd::exited(0)); // writes the date
    EXPECT_TRUE(std::filesystem::is_regular_file(path()));
}

TEST_F(BadDateFile, IsNoPointInTime) {
    for (const char* const text : {"not-a-date-time", "+infinity", "99991231T999999"}) {
        desk.root.write(DATE_FILE, text);
        EXPECT_EQ(desk.connect()->getLastSearchingForUpgradeDate(), boost::none) << text;
    }
    EXPECT_EQ(desk.countMessages("File with date data is probably corrupted. Exception occurred: "), 3);
}

TEST_F(BadDateFile, IsAFolder) {
    std::filesystem::create_directories(path());
    expectNoDate("SearchingDateRegister::getDate cannot open the file: " + path());
}

// The settings store cannot be made. The daemon goes on, and the store works again when there is room.
TEST(FullMedium, EndsNoProcessAndDoesNoHarmOnceThereIsRoom) {
    SKIP_WITHOUT_SMALL_DISK();
    const TemporaryRoot place;
    const std::string folder = place.path().string();
    EXPECT_TRUE(onSmallDisk(folder, 4 * 1024 * 1024, [&] {
        setenv("TMPDIR", folder.c_str(), 1);
        Desk desk;
        const auto manager = desk.connect();
        EXPECT_EQ(manager->getCurrentVersion(), "1000");
        const pid_t daemon = desk.daemon();
        fillDisk(folder);
        const auto session = manager->getService(ServiceClientPriority(1), "client", ServiceTransactionType(0));
        EXPECT_NE(session, nullptr);
        EXPECT_EQ(desk.daemon(), daemon);
        EXPECT_EQ(desk.setting(PRIORITY_KEY), "absent");
        std::filesystem::remove(folder + "/filler");
        manager->acquireExternalLock("client", ServiceClientPriority(4));
        EXPECT_EQ(desk.setting("memory/menu/support/softwareupdate/isExternalLockAcquired"), "1");
        EXPECT_EQ(desk.daemon(), daemon);
    }));
}

} // namespace
} // namespace DAX::Tests
