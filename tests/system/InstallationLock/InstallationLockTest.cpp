// daxctl installation-lock, on a device with each kind of lock.
#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include <sys/stat.h>
#include <unistd.h>

#include "support/Corruption.h"
#include "system/support/Desk.h"
#include "system/support/Scenarios.h"

namespace DAX::Tests {
namespace {

using namespace testing;
namespace fs = std::filesystem;

const ProcessEnd DONE = ProcessEnd::exited(0);
const ProcessEnd REFUSED = ProcessEnd::exited(1);
const ProcessEnd WRONG_USAGE = ProcessEnd::exited(2);

const char FILE_OF_LOCK[] = "mnt/systemrw/org.kovan.tv.dax/data/tv/InstallationLock.dat";

const std::string GOOD = std::string("\x20\0\0\0", 4) + "Type: OTN(F) from: 1000 to: 1100CHECKSUMED\x81\xa9\xe2\x9f";

const char TORN_HINT[] =
    "The file was not written to its end, as on a full disk, or has changed since. The lock is in force all the same: "
    "its file exists. Make sure that nothing is being installed; then root releases it with 'daxctl installation-lock "
    "release --yes'.\n";

class InstallationLock : public Test {
protected:
    FinishedRun daxctl(std::vector<std::string> words) const {
        words.insert(words.begin(), "installation-lock");
        return desk.run("daxctl", words);
    }

    fs::path file() const { return desk.root / FILE_OF_LOCK; }

    // Since the first second of 2026.
    void lock(const std::string& bytes) const {
        desk.root.write(FILE_OF_LOCK, bytes);
        const timespec moment{1767225600, 0};
        const timespec times[] = {moment, moment};
        ASSERT_EQ(utimensat(AT_FDCWD, file().c_str(), times, 0), 0);
    }

    std::string shown(const std::string& installing) const {
        return "installation lock in force\n"
               "since             2026-01-01T00:00:00Z\n"
               "installing        " +
               installing + "\nfile              " + file().string() + "\n";
    }

    nlohmann::json json() const { return nlohmann::json::parse(daxctl({"--json"}).output); }

    Desk desk;
};

TEST_F(InstallationLock, IsNotThere) {
    const FinishedRun run = daxctl({});
    EXPECT_EQ(run.output, "installation lock no\n");
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.end, DONE);
    EXPECT_EQ(json(), nlohmann::json({{"installationLock", false}, {"file", file().string()}}));
}

TEST_F(InstallationLock, TellsWhatWasBeingInstalledAndSinceWhen) {
    lock(GOOD);
    const FinishedRun run = daxctl({});
    EXPECT_EQ(run.output, shown("Type: OTN(F) from: 1000 to: 1100"));
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.end, DONE);
    EXPECT_EQ(json(), nlohmann::json({{"installationLock", true},
                                      {"file", file().string()},
                                      {"since", "2026-01-01T00:00:00Z"},
                                      {"record", "verified"},
                                      {"installing", "Type: OTN(F) from: 1000 to: 1100"},
                                      {"size", GOOD.size()}}));
}

TEST_F(InstallationLock, TellsThatItsFileIsTornWhereverItWasCut) {
    for (const std::string& cut : cutsOf(GOOD)) {
        lock(cut);
        const FinishedRun run = daxctl({});
        EXPECT_EQ(run.output, shown("unknown: the file is torn (" + std::to_string(cut.size()) + " bytes)"));
        EXPECT_EQ(run.errors, TORN_HINT);
        EXPECT_EQ(run.end, DONE);
    }
}

TEST_F(InstallationLock, TellsInJsonThatItsFileIsTorn) {
    lock("");
    EXPECT_EQ(json(), nlohmann::json({{"installationLock", true},
                                      {"file", file().string()},
                                      {"since", "2026-01-01T00:00:00Z"},
                                      {"record", "torn"},
                                      {"installing", nullptr},
                                      {"size", 0}}));
}

TEST_F(InstallationLock, SendsNoByteOfTheRecordToTheTerminalThatATerminalWouldObey) {
    lock(std::string("\x06\0\0\0a\x1b[7mb", 10) + "CHECKSUMED\x75\x0c\xcb\x74");
    EXPECT_EQ(daxctl({}).output, shown("a\\x1b[7mb"));
    EXPECT_EQ(json()["installing"], "a\x1b[7mb");
}

TEST_F(InstallationLock, TellsWhatItsFileIsInsteadOfOne) {
    fs::create_directory(file());
    const auto folder = json();
    EXPECT_EQ(folder["installationLock"], true);
    EXPECT_EQ(folder["record"], "unreadable");
    EXPECT_THAT(daxctl({}).output, HasSubstr("installing        unknown: it is no regular file\n"));
    fs::remove(file());

    ASSERT_EQ(mkfifo(file().c_str(), 0600), 0);
    EXPECT_THAT(daxctl({}).output, HasSubstr("installing        unknown: it is no regular file\n"));
}

TEST_F(InstallationLock, TellsWhatThisUserMayNotRead) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only the superuser can become another user";
    }
    lock(GOOD);
    fs::permissions(file(), fs::perms(0640));
    const FinishedRun unread = desk.runAsNobody("daxctl", {"installation-lock"});
    EXPECT_EQ(unread.output, shown("unknown: it may not be read by this user"));
    EXPECT_EQ(unread.errors, "");
    EXPECT_EQ(unread.end, DONE);

    fs::permissions(file().parent_path(), fs::perms(0700));
    const FinishedRun unseen = desk.runAsNobody("daxctl", {"installation-lock"});
    EXPECT_EQ(unseen.output, "installation lock unknown, may not be read by this user\n");
    EXPECT_EQ(unseen.end, REFUSED);
    const FinishedRun document = desk.runAsNobody("daxctl", {"installation-lock", "--json"});
    EXPECT_EQ(nlohmann::json::parse(document.output),
              nlohmann::json({{"installationLock", nullptr}, {"file", file().string()}}));
}

TEST_F(InstallationLock, IsReleasedByRoot) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "this is for root only";
    }
    lock(GOOD);
    const FinishedRun run = daxctl({"release", "--yes"});
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.errors, "The installation lock has been released. It stood for: Type: OTN(F) from: 1000 to: 1100\n");
    EXPECT_EQ(run.end, DONE);
    EXPECT_FALSE(fs::exists(file()));
}

TEST_F(InstallationLock, IsReleasedWhenItsFileIsTorn) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "this is for root only";
    }
    lock("");
    EXPECT_EQ(daxctl({"release", "--yes"}).errors,
              "The installation lock has been released. It stood for: unknown: the file is torn (0 bytes)\n");
    EXPECT_FALSE(fs::exists(file()));

    lock("");
    const auto document = nlohmann::json::parse(daxctl({"release", "--yes", "--json"}).output);
    EXPECT_EQ(document["outcome"], "released");
    EXPECT_EQ(document["was"]["record"], "torn");
    EXPECT_FALSE(fs::exists(file()));
}

TEST_F(InstallationLock, StaysWithoutYes) {
    lock(GOOD);
    const FinishedRun run = daxctl({"release"});
    EXPECT_EQ(run.errors, "daxctl: release lets upgrades begin although one may be unfinished; --yes says that you are "
                          "sure\n");
    EXPECT_EQ(run.end, WRONG_USAGE);
    EXPECT_TRUE(fs::exists(file()));
}

TEST_F(InstallationLock, StaysForAnyoneButRoot) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only the superuser can become another user";
    }
    lock(GOOD);
    fs::permissions(file().parent_path(), fs::perms(0777));
    const FinishedRun run = desk.runAsNobody("daxctl", {"installation-lock", "release", "--yes"});
    EXPECT_EQ(run.errors, "daxctl: only root may release the installation lock\n");
    EXPECT_EQ(run.end, REFUSED);
    EXPECT_TRUE(fs::exists(file()));
}

TEST_F(InstallationLock, CannotBeReleasedWhereThereIsNone) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "this is for root only";
    }
    const FinishedRun run = daxctl({"release", "--yes"});
    EXPECT_EQ(run.errors, "daxctl: no installation lock is in force\n");
    EXPECT_EQ(run.end, REFUSED);
}

TEST_F(InstallationLock, StaysWhenItCannotBeRemoved) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "this is for root only";
    }
    fs::create_directories(file() / "not empty");
    const FinishedRun run = daxctl({"release", "--yes"});
    EXPECT_EQ(run.errors, "daxctl: the installation lock stays: " + file().string() + ": Directory not empty\n");
    EXPECT_EQ(run.end, REFUSED);
}

TEST_F(InstallationLock, IsTheOneThatAFinalizedUpgradeLeaves) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "this is for root only";
    }
    desk.play(QUICK);
    EXPECT_EQ(desk.run("daxctl", {"upgrade"}).end, DONE);
    EXPECT_EQ(json()["installing"], "Type: OTN(F) from: 1000 to: 1100");
    EXPECT_EQ(desk.run("daxctl", {"search"}).errors,
              "Refused: an installation lock is in force. Restart the device, which ends the installation, or see "
              "daxctl installation-lock.\n");
    EXPECT_EQ(daxctl({"release", "--yes"}).end, DONE);
    EXPECT_EQ(desk.run("daxctl", {"search"}).end, DONE);
}

// The service refuses everyone as well.
TEST_F(InstallationLock, ThatLeadsToItselfIsUnknownAndCanBeReleased) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only the superuser may release the lock";
    }
    fs::create_directories(file().parent_path());
    fs::create_symlink(file(), file());
    const auto run = daxctl({});
    EXPECT_EQ(run.end, REFUSED);
    EXPECT_EQ(run.output, "installation lock unknown: Too many levels of symbolic links\n");
    EXPECT_TRUE(json()["installationLock"].is_null());
    const auto released = daxctl({"release", "--yes"});
    EXPECT_EQ(released.end, DONE);
    EXPECT_EQ(released.errors, "The installation lock has been released. It stood for: unknown: Too many levels of "
                               "symbolic links\n");
    EXPECT_FALSE(fs::is_symlink(fs::symlink_status(file())));
}

} // namespace
} // namespace DAX::Tests
