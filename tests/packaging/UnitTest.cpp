// The systemd units as systemd reads them, and what has to agree with them.
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/Process.h"
#include "support/TemporaryRoot.h"

namespace DAX::Tests {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

const std::string DATA_FOLDER = "mnt/systemrw/org.kovan.tv.dax";

std::string contentOf(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

std::string unit() {
    return contentOf(std::string(BUILD_FOLDER) + "/packaging/DAXService.service");
}

std::string dropIn() {
    return contentOf(std::string(PACKAGING) + "/10-desk.conf");
}

// Needs systemd 250, which judges a unit that is not installed.
FinishedRun judge(const std::string& unitText, const std::string& threshold) {
    const TemporaryRoot root;
    root.write("DAXService.service", unitText);
    return run({{"systemd-analyze", "security", "--offline=true", "--no-pager", "--threshold=" + threshold,
                 (root.path() / "DAXService.service").string()},
                {{"LC_ALL", "C"}},
                {},
                {}});
}

class Exposure : public testing::Test {
protected:
    void SetUp() override {
        const FinishedRun probe = judge("[Service]\nExecStart=/bin/true\n", "100");
        if (!(probe.end == ProcessEnd::exited(0))) {
            GTEST_SKIP() << "this machine has no systemd-analyze that judges files";
        }
    }
};

// A threshold is ten times the number that is shown.
TEST_F(Exposure, OfTheUnitIsAtMostSevenTenths) {
    const FinishedRun judged = judge(unit(), "7");
    EXPECT_EQ(judged.end, ProcessEnd::exited(0)) << judged.output << judged.errors;
}

TEST_F(Exposure, IsTheSameWithTheDesksFolders) {
    const FinishedRun judged = judge(unit() + dropIn(), "7");
    EXPECT_EQ(judged.end, ProcessEnd::exited(0)) << judged.output << judged.errors;
}

TEST_F(Exposure, GrowsWithoutADirective) {
    std::string looser = unit();
    const std::string directive = "\nPrivateNetwork=yes\n";
    ASSERT_NE(looser.find(directive), std::string::npos);
    looser.replace(looser.find(directive), directive.size(), "\n");
    EXPECT_EQ(judge(looser, "7").end, ProcessEnd::exited(1));
}

// Where there is swap, the daemon would otherwise go on there instead of being killed.
TEST(UnitTest, LimitsMemoryAndSwapTogether) {
    EXPECT_THAT(unit(), ContainsRegex("\nMemoryMax=[0-9]+M\nMemorySwapMax=0\n"));
}

// It would serve a daemon that was taken over, since that has the user id 0.
TEST(UnitTest, ClosesTheSocketOnWhichSystemdServesRoot) {
    EXPECT_THAT(unit(), HasSubstr("\nInaccessiblePaths=-/run/systemd/private\n"));
}

TEST(UnitTest, HasNoDirectiveThatSystemdDoesNotKnow) {
    const TemporaryRoot root;
    for (const std::string name : {"DAXService", "DAXCoreSimulator"}) {
        root.write("etc/systemd/system/" + name + ".service",
                   contentOf(std::string(BUILD_FOLDER) + "/packaging/" + name + ".service"));
    }
    root.write("etc/systemd/system/DAXService.service.d/10-desk.conf", dropIn());
    const std::string units = (root.path() / "etc/systemd/system").string();
    const FinishedRun verified = run({{"sh", "-c",
                                       "command -v systemd-analyze >/dev/null || exit 9; exec "
                                       "systemd-analyze verify --man=no \"$0\"/*.service",
                                       units},
                                      {{"LC_ALL", "C"}, {"SYSTEMD_UNIT_PATH", units + ":"}},
                                      {},
                                      {}});
    if (verified.end == ProcessEnd::exited(9)) {
        GTEST_SKIP() << "this machine has no systemd-analyze";
    }
    // The programs are not installed where the units name them; that is all that may be said of these files.
    EXPECT_THAT(verified.errors,
                Not(ContainsRegex("(DAXService.service|DAXCoreSimulator.service|10-desk.conf):[0-9]+")))
        << verified.errors;
}

TEST(UnitTest, MayWriteTheFolderThatTheTmpfilesMake) {
    const TemporaryRoot root;
    if (geteuid() != 0) {
        GTEST_SKIP() << "needs root, to make folders for root";
    }
    const FinishedRun made = run({{"sh", "-c",
                                   "command -v systemd-tmpfiles >/dev/null || exit 9; exec "
                                   "systemd-tmpfiles --create --root=\"$0\" \"$1\"",
                                   root.path().string(), std::string(PACKAGING) + "/dax.tmpfiles"},
                                  {},
                                  {},
                                  {}});
    if (made.end == ProcessEnd::exited(9)) {
        GTEST_SKIP() << "this machine has no systemd-tmpfiles";
    }
    EXPECT_EQ(made.end, ProcessEnd::exited(0)) << made.errors;
    EXPECT_TRUE(std::filesystem::is_directory(root.path() / DATA_FOLDER / "data/tv"));
    EXPECT_THAT(unit(), HasSubstr("\nReadWritePaths=/" + DATA_FOLDER + "\n"));
    EXPECT_THAT(unit(), HasSubstr("\nRequiresMountsFor=/" + DATA_FOLDER + "\n"));
}

TEST(TmpfilesTest, LeaveTheOwnerAndTheModeOfAFolderThatIsThere) {
    const TemporaryRoot root;
    if (geteuid() != 0 || run({{"sh", "-c", "command -v systemd-tmpfiles"}, {}, {}, {}}).output.empty()) {
        GTEST_SKIP() << "needs root and systemd-tmpfiles";
    }
    for (const std::string folder : {"", "/data", "/data/tv"}) {
        const std::string path = (root.path() / (DATA_FOLDER + folder)).string();
        std::filesystem::create_directories(path);
        ASSERT_EQ(chown(path.c_str(), 12, 34), 0);
        ASSERT_EQ(chmod(path.c_str(), 02770), 0);
    }
    const FinishedRun made = run(
        {{"systemd-tmpfiles", "--create", "--root=" + root.path().string(), std::string(PACKAGING) + "/dax.tmpfiles"},
         {},
         {},
         {}});
    EXPECT_EQ(made.end, ProcessEnd::exited(0)) << made.errors;
    for (const std::string folder : {"", "/data", "/data/tv"}) {
        const std::string path = (root.path() / (DATA_FOLDER + folder)).string();
        EXPECT_EQ(run({{"stat", "-c", "%u:%g %a", path}, {}, {}, {}}).output, "12:34 2770\n") << path;
    }
}

// Whether the first entry of a changelog is of this version of the project, of a candidate for it, or of another build
// of it. CMake knows neither of these. dpkg counts 037 and 37 as one version, so only the text tells which it is.
bool isOfVersion(const std::string& changelog, const std::string& version) {
    const std::string start = "daxservice (" + version;
    std::smatch found;
    const std::string rest = changelog.compare(0, start.size(), start) == 0 ? changelog.substr(start.size()) : "";
    return std::regex_search(rest, found, std::regex("^(~rc[0-9]+)?(\\+b[0-9]+)?\\) "));
}

TEST(DebianPackage, HasTheVersionOfTheProject) {
    const std::string changelog = contentOf(std::string(PACKAGING) + "/../debian/changelog");
    EXPECT_TRUE(isOfVersion(changelog, PROJECT_VERSION)) << changelog.substr(0, changelog.find('\n'));
}

TEST(DebianPackage, MayBeACandidateOrABuildOfTheVersion) {
    for (const std::string version : {"17.038.0", "17.038.0~rc1", "17.038.0~rc12", "17.038.0+b1", "17.038.0~rc1+b2"}) {
        EXPECT_TRUE(isOfVersion("daxservice (" + version + ") bookworm; urgency=medium\n", "17.038.0")) << version;
    }
    for (const std::string version : {"17.38.0", "17.037.0", "17.038.01", "17.038.0~", "17.038.0~rc", "17.038.0-1",
                                      "17.038.0+b1~rc1", "117.038.0"}) {
        EXPECT_FALSE(isOfVersion("daxservice (" + version + ") bookworm; urgency=medium\n", "17.038.0")) << version;
    }
}

} // namespace
} // namespace DAX::Tests
