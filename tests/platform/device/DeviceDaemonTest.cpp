// The daemon of a device, at work with the stubs of its libraries.
#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "Device.h"
#include "support/WaitUntil.h"

namespace DAX::Tests {
namespace {

using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;

const char* const ALL = "*";
const std::string PARTITION = "mnt/systemrw/org.kovan.tv.dax/data/tv/";

// A line of the daemon's log. A text that ends in a colon and a blank goes on.
struct Line {
    std::string level;
    std::string text;
};

bool isLine(const std::string& written, const Line& line) {
    const std::size_t level = written.find("][" + line.level + "] ");
    const std::size_t message = written.find('>', level) + 1; // behind the source file and its line
    const bool goesOn = line.text.size() > 2 && line.text.compare(line.text.size() - 2, 2, ": ") == 0;
    const std::size_t length = goesOn ? line.text.size() : std::string::npos;
    return level != std::string::npos && message != 0 && written.compare(message, length, line.text) == 0;
}

bool hasLine(const std::string& log, const Line& line) {
    std::istringstream stream(log);
    for (std::string written; std::getline(stream, written);) {
        if (isLine(written, line)) {
            return true;
        }
    }
    return false;
}

class DeviceDaemon : public testing::Test {
protected:
    static void SetUpTestSuite() { m_problem = Device::problem(); }

    void SetUp() override {
        if (!m_problem.empty()) {
            GTEST_SKIP() << m_problem;
        }
        m_device = std::make_unique<Device>();
    }

    // Starts the daemon with all functions working but this one, and waits until it can be called.
    void startWithout(const std::string& function) {
        m_daemon = m_device->startDaemon("* -" + function);
        ASSERT_TRUE(m_device->waitForDaemon()) << m_daemon->errors();
    }

    // Ends the daemon as systemd does.
    std::optional<ProcessEnd> stop() const {
        m_daemon->send(SIGINT);
        return m_daemon->waitForEnd();
    }

    std::string log() const { return m_daemon->errors(); }
    bool isLocked() const { return std::filesystem::exists(m_device->root / (PARTITION + "InstallationLock.dat")); }

    void expectInLog(const std::vector<Line>& lines) const {
        for (const Line& line : lines) {
            EXPECT_TRUE(hasLine(log(), line)) << line.level << " " << line.text << "\nis not in:\n" << log();
        }
    }

    bool wasCalled(const std::string& function) const {
        const std::vector<std::string> called = m_device->calledFunctions();
        return std::find(called.begin(), called.end(), function) != called.end();
    }

    std::unique_ptr<Device> m_device;
    std::unique_ptr<Process> m_daemon;

private:
    static std::string m_problem;
};

std::string DeviceDaemon::m_problem;

// The functions in the first column of a table of docs/platform.md, in alphabetical order.
std::vector<std::string> functionsOf(const std::string& heading) {
    std::ifstream document(std::string(SOURCE_FOLDER) + "/docs/platform.md");
    std::vector<std::string> functions;
    bool isThere = false;
    for (std::string line; std::getline(document, line);) {
        if (line.compare(0, 3, "## ") == 0) {
            isThere = line == "## " + heading;
        }
        std::smatch row;
        if (isThere && std::regex_search(line, row, std::regex("^\\| `(\\w+)` \\|"))) {
            functions.push_back(row[1]);
        }
    }
    std::sort(functions.begin(), functions.end());
    return functions;
}

// What comes of a function that is not supported.
struct Loss {
    std::string function;
    std::vector<Line> log;
};

void PrintTo(const Loss& loss, std::ostream* stream) {
    *stream << loss.function;
}

const std::string NO_READ = "vconf_get failed while trying to access key: ";
const std::string NO_WRITE = "vconf_set failed while trying to access key: ";
const std::string UPDATE = "menu/support/softwareupdate/";

// The upgrade succeeds all the same.
const Loss BEARABLE[] = {
    {"BC_GetCurrentTime", {{"INF", "Current local time and date: 0"}}},
    {"bootclock_fini", {{"INF", "Exit From DAXService"}}},
    {"bootclock_init", {{"ERR", "bootclock_init failed"}}},
    {"device_power_unsubscribe_state_changed", {{"INF", "Unsubscribing from Power Mode Change signal."}}},
    {"isProduction", {{"DBG", "Loading DebugAndTestParameters."}}},
    {"proc_stat_set_vip_process", {{"INF", "Registering VIP process."}}},
    {"vconf_get_int",
     {{"WRN", NO_READ + "db/" + UPDATE + "was_successfull_upgrade"},
      {"ERR", "Exception caught while getting wasAnySuccessfulUpgrade value from VConf: "},
      {"WRN", NO_READ + "db/" + UPDATE + "use_cellular_int, return default value"}}},
    {"vconf_set_int",
     {{"WRN", NO_WRITE + "memory/" + UPDATE + "currentServiceClientPriority"},
      {"ERR", "Error occurred while accessing to IVConf CurrentServiceClientPriorityKey: "},
      {"WRN", NO_WRITE + "memory/" + UPDATE + "isInstallationLockReleased"},
      {"ERR", "Error occurred while accessing to IVConf InstallationLockReleasedKey: "},
      {"FTL", "Exception caught while resetting VConf key in ~CService: "}}},
};

// The daemon does not come to serve anybody.
const Loss DEADLY[] = {
    {"device_power_subscribe_state_changed",
     {{"INF", "Service Manager is started."},
      {"ERR", "Cannot subscribe for Power Mode Change signal. Error code: -95."},
      {"FTL", "Exception caught in DAXService: "}}},
    {"hangguard_register_watchdog_service",
     {{"ERR", "Initializing Watchdog status failed with error code: -95"},
      {"FTL", "Exception caught in DAXService: "}}},
};

// Those that have a test by themselves.
const char* const OTHERS[] = {"__dlog_print", "hangguard_watchdog_notify", "kvplatform_getenv"};

TEST(DeviceLosses, AreTestedForEachFunctionThatAnUpgradeCalls) {
    std::vector<std::string> tested(std::begin(OTHERS), std::end(OTHERS));
    for (const Loss& loss : BEARABLE) {
        tested.push_back(loss.function);
    }
    for (const Loss& loss : DEADLY) {
        tested.push_back(loss.function);
    }
    EXPECT_THAT(tested, testing::UnorderedElementsAreArray(functionsOf("What an upgrade calls")));
}

std::string nameOf(const testing::TestParamInfo<Loss>& loss) {
    return std::regex_replace(loss.param.function, std::regex("_"), "");
}

class BearableLoss : public DeviceDaemon, public testing::WithParamInterface<Loss> {};

TEST_P(BearableLoss, LetsAnUpgradeSucceed) {
    startWithout(GetParam().function);
    const FinishedRun upgrade = m_device->upgrade();
    EXPECT_EQ(upgrade.end, ProcessEnd::exited(0)) << upgrade.errors << log();
    EXPECT_TRUE(isLocked());
    EXPECT_EQ(stop(), ProcessEnd::exited(0));
    EXPECT_TRUE(wasCalled(GetParam().function));
    expectInLog(GetParam().log);
}

INSTANTIATE_TEST_SUITE_P(Device, BearableLoss, testing::ValuesIn(BEARABLE), nameOf);

class DeadlyLoss : public DeviceDaemon, public testing::WithParamInterface<Loss> {};

TEST_P(DeadlyLoss, EndsTheDaemonAtItsStart) {
    m_daemon = m_device->startDaemon("* -" + GetParam().function);
    EXPECT_EQ(m_daemon->waitForEnd(), ProcessEnd::exited(1)) << log();
    EXPECT_TRUE(wasCalled(GetParam().function));
    expectInLog(GetParam().log);
}

INSTANTIATE_TEST_SUITE_P(Device, DeadlyLoss, testing::ValuesIn(DEADLY), nameOf);

TEST_F(DeviceDaemon, WorksWithoutALog) {
    startWithout("__dlog_print");
    EXPECT_EQ(m_device->upgrade().end, ProcessEnd::exited(0));
    EXPECT_EQ(stop(), ProcessEnd::exited(0));
    EXPECT_TRUE(wasCalled("__dlog_print"));
    EXPECT_EQ(log(), "");
}

TEST_F(DeviceDaemon, TakesTheClockForOneOf1970WithoutATime) {
    startWithout("BC_GetCurrentTime");
    EXPECT_EQ(m_device->upgrade().end, ProcessEnd::exited(0)) << log();
    EXPECT_EQ(m_device->root.read(PARTITION + "LastSearchingDate"), "19700101T000000");
}

TEST_F(DeviceDaemon, EndsWhenTheWatchdogTakesNoHeartbeat) {
    startWithout("hangguard_watchdog_notify");
    EXPECT_EQ(m_daemon->waitForEnd(std::chrono::seconds(40)), ProcessEnd::exited(0)) << log(); // after 10 seconds
    expectInLog({{"ERR", "Updating Watchdog status failed with error code: -95"}, {"INF", "Exit From DAXService"}});
}

TEST_F(DeviceDaemon, ServesNobodyInProductionWithoutTheDirectories) {
    startWithout("kvplatform_getenv");
    const FinishedRun upgrade = m_device->upgrade();
    EXPECT_EQ(upgrade.end, ProcessEnd::exited(1));
    EXPECT_THAT(upgrade.errors, HasSubstr("The platform has no directory 28"));
    EXPECT_EQ(stop(), ProcessEnd::exited(0)) << log();
}

TEST_F(DeviceDaemon, DoesNotStartInDevelopmentWithoutTheDirectories) {
    m_daemon = m_device->startDaemon("* -kvplatform_getenv -isProduction");
    EXPECT_EQ(m_daemon->waitForEnd(), ProcessEnd::exited(1)) << log();
    expectInLog({{"FTL", "Exception caught in DAXService: "}});
    EXPECT_THAT(log(), HasSubstr("The platform has no directory 28"));
}

TEST_F(DeviceDaemon, DoesNotStartWithoutAnyFunctionAndSaysNothing) {
    m_daemon = m_device->startDaemon("");
    EXPECT_EQ(m_daemon->waitForEnd(), ProcessEnd::exited(1));
    EXPECT_EQ(log(), "");
}

TEST_F(DeviceDaemon, CallsInAnUpgradeWhatTheDocumentLists) {
    m_daemon = m_device->startDaemon(ALL);
    ASSERT_TRUE(m_device->waitForDaemon()) << log();
    const FinishedRun upgrade = m_device->upgrade();
    EXPECT_EQ(upgrade.end, ProcessEnd::exited(0)) << upgrade.errors << log();
    ASSERT_TRUE(waitUntil([this] { return wasCalled("hangguard_watchdog_notify"); })); // after 10 seconds
    EXPECT_EQ(stop(), ProcessEnd::exited(0)) << log();
    EXPECT_THAT(m_device->calledFunctions(), ElementsAreArray(functionsOf("What an upgrade calls")));
}

TEST_F(DeviceDaemon, KeepsItsFilesBelowTheRootOfTheFileSystem) {
    m_daemon = m_device->startDaemon(ALL);
    ASSERT_TRUE(m_device->waitForDaemon()) << log();
    EXPECT_EQ(m_device->upgrade().end, ProcessEnd::exited(0)) << log();
    EXPECT_TRUE(isLocked());
    EXPECT_THAT(m_device->root.read(PARTITION + "LastSearchingDate"), testing::MatchesRegex("20.*T.*"));
    EXPECT_THAT(m_device->workingDirectory(), IsEmpty());
}

TEST_F(DeviceDaemon, LooksForTheDevicesFilesNowhereElse) {
    m_device->root.write("elsewhere/etc/kovan-release", "VERSION=1.2.3\n");
    m_device->root.write("elsewhere/run/.standalone", "");
    const std::vector<std::string> line = {"/build/bin/DeviceFacts"};
    const auto without = m_device->start(line, ALL);
    EXPECT_EQ(without->waitForEnd(), ProcessEnd::exited(1));
    EXPECT_THAT(without->errors(), HasSubstr("Could not get kovan version from /etc/kovan-release file"));
    m_device->root.write("etc/kovan-release", "VERSION=8.0.1\n");
    const auto normal = m_device->start(line, ALL);
    EXPECT_EQ(normal->waitForEnd(), ProcessEnd::exited(0)) << normal->errors();
    EXPECT_EQ(normal->output(), "version 8.0.1\nstandalone 0\npartition /mnt/systemrw/org.kovan.tv.dax/data/tv\n");
    m_device->root.write("run/.standalone", "");
    const auto standalone = m_device->start(line, ALL);
    EXPECT_EQ(standalone->waitForEnd(), ProcessEnd::exited(0)) << standalone->errors();
    EXPECT_THAT(standalone->output(), HasSubstr("standalone 1\n"));
}

} // namespace
} // namespace DAX::Tests
