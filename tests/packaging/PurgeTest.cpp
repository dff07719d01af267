// What the packages' scripts remove when they are purged.
#include <filesystem>
#include <string>

#include <gmock/gmock.h>

#include "support/Process.h"
#include "support/TemporaryRoot.h"

namespace DAX::Tests {
namespace {

using testing::EndsWith;
using testing::HasSubstr;

const std::string DATA = "mnt/systemrw/org.kovan.tv.dax/data/tv";
const std::string LOCK = DATA + "/InstallationLock.dat";

std::string scriptOf(const std::string& package) {
    return std::string(PACKAGING) + "/../debian/" + package + ".postrm";
}

// dpkg sets the variable when it works on another root with the host's programs.
FinishedRun purge(const std::string& package, const TemporaryRoot& root) {
    return run({{"sh", scriptOf(package), "purge"}, {{"DPKG_ROOT", root.path().string()}}, {}, {}});
}

class Purge : public testing::Test {
protected:
    Purge() {
        for (const std::string& file :
             {DATA + "/LastSearchingDate", DATA + "/LastSearchingDate.new", DATA + "/DebugAndTestParameters.xml",
              std::string("var/lib/kovan/vconf/data.mdb"), std::string("var/log/kovan/core-calls.jsonl"),
              std::string("var/log/kovan/core-calls.jsonl.1"), std::string("run/kovan/vconf/.hidden"),
              std::string("etc/kovan/device.ini"), std::string("etc/kovan/core-scenario.ini")}) {
            m_root.write(file, "text");
        }
    }

    bool exists(const std::string& path) const { return std::filesystem::exists(m_root / path); }

    TemporaryRoot m_root;
};

TEST_F(Purge, RemovesAllUnderTheRootThatDpkgNames) {
    const FinishedRun ofDesk = purge("kovan-desk", m_root);
    EXPECT_EQ(ofDesk.end, ProcessEnd::exited(0)) << ofDesk.errors;
    EXPECT_FALSE(exists("etc/kovan"));
    EXPECT_TRUE(std::filesystem::is_empty(m_root / "var/log/kovan"));

    const FinishedRun ofService = purge("dax-service", m_root);
    EXPECT_EQ(ofService.end, ProcessEnd::exited(0)) << ofService.errors;
    EXPECT_EQ(ofService.output, "");
    for (const std::string folder : {"mnt/systemrw", "var/lib/kovan", "var/log/kovan", "run/kovan"}) {
        EXPECT_FALSE(exists(folder)) << folder;
    }
    EXPECT_TRUE(exists("var/lib"));
}

TEST_F(Purge, LeavesALockAndSaysSo) {
    m_root.write(LOCK, "lock");
    const FinishedRun done = purge("dax-service", m_root);
    EXPECT_EQ(done.end, ProcessEnd::exited(0)) << done.errors;
    EXPECT_EQ(done.output,
              "dax-service: " + (m_root / LOCK).string() + " stays, since an upgrade is being finalized.\n");
    EXPECT_EQ(m_root.read(LOCK), "lock");
    EXPECT_FALSE(exists(DATA + "/LastSearchingDate"));
}

TEST_F(Purge, LeavesWhatIsNotThePackages) {
    m_root.write("etc/kovan/notes", "mine");
    m_root.write(DATA + "/notes", "mine");
    EXPECT_EQ(purge("kovan-desk", m_root).end, ProcessEnd::exited(0));
    EXPECT_EQ(purge("dax-service", m_root).end, ProcessEnd::exited(0));
    EXPECT_EQ(m_root.read("etc/kovan/notes"), "mine");
    EXPECT_EQ(m_root.read(DATA + "/notes"), "mine");
}

TEST_F(Purge, EndsWellWhereThereIsNothing) {
    const FinishedRun first = purge("dax-service", m_root);
    const FinishedRun again = purge("dax-service", m_root);
    EXPECT_EQ(first.end, ProcessEnd::exited(0)) << first.errors;
    EXPECT_EQ(again.end, ProcessEnd::exited(0)) << again.errors;
    EXPECT_EQ(again.errors, "");
}

// The state on a partition of its own, and another one mounted inside of it.
TEST_F(Purge, EmptiesAMountedFolderAndGoesOn) {
    m_root.write(LOCK, "lock");
    m_root.write("var/lib/kovan/other/file", "text");
    m_root.write("mount", "set -e\n"
                          "mount -t tmpfs none \"$DPKG_ROOT/var/lib/kovan\" || exit 9\n"
                          "cd \"$DPKG_ROOT/var/lib/kovan\"\n"
                          "mkdir other own\n"
                          "mount -t tmpfs none other\n"
                          "touch own/.hidden other/kept\n"
                          "sh \"$1\" purge\n"
                          "find . | sort\n");
    const FinishedRun done = run({{"sh", "-c",
                                   "unshare --mount true || exit 9; exec unshare --mount --propagation private sh "
                                   "\"$DPKG_ROOT/mount\" \"$0\"",
                                   scriptOf("dax-service")},
                                  {{"DPKG_ROOT", m_root.path().string()}},
                                  {},
                                  {}});
    if (done.end == ProcessEnd::exited(9)) {
        GTEST_SKIP() << "needs leave to mount, which an ordinary user has not";
    }
    EXPECT_EQ(done.end, ProcessEnd::exited(0)) << done.errors;
    EXPECT_THAT(done.output, HasSubstr("InstallationLock.dat stays"));
    EXPECT_THAT(done.output, EndsWith("\n.\n./other\n./other/kept\n"));
    EXPECT_FALSE(exists("var/log/kovan"));
    EXPECT_FALSE(exists("run/kovan"));
}

} // namespace
} // namespace DAX::Tests
