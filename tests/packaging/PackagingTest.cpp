#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <unistd.h>

#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/DBUSDefines.h"
#include "support/Process.h"
#include "support/TemporaryRoot.h"

using DAX::DAXIPC::DBUSLowLevel::DBUSNames::DBUSService::DBUSIServiceManager::CONNECTION_NAME;
using DAX::Tests::FinishedRun;
using DAX::Tests::Process;
using DAX::Tests::ProcessEnd;
using DAX::Tests::TemporaryRoot;
using testing::ContainsRegex;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

const std::string NAME = CONNECTION_NAME;
const std::string CORE_NAME = DAX::DAXIPC::DBUSLowLevel::DBUSNames::DBUSCore::DBUSICore::CONNECTION_NAME();
const std::string PATH = DAX::DAXIPC::DBUSLowLevel::DBUSNames::DBUSService::DBUSIServiceManager::OBJECT_PATH;
const std::string CORE_PATH = DAX::DAXIPC::DBUSLowLevel::DBUSNames::DBUSCore::DBUSICore::OBJECT_PATH();
const std::string CORE_INTERFACE = DAX::DAXIPC::DBUSLowLevel::DBUSNames::DBUSCore::DBUSICore::INTERFACE_NAME();
const std::string POLICY = std::string(PACKAGING) + "/" + NAME + ".conf";
const std::string CORE_POLICY = std::string(PACKAGING) + "/" + CORE_NAME + ".conf";

std::string textOf(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

std::string packaged(const std::string& file) {
    return textOf(std::string(BUILD_FOLDER) + "/packaging/" + file);
}

// The value of "KEY=value".
std::string valueOf(const std::string& key, const std::string& text) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (line.compare(0, key.size() + 1, key + "=") == 0) {
            return line.substr(key.size() + 1);
        }
    }
    return "(no " + key + ")";
}

// A bus that denies names like the system bus, with the packaged policy added.
class PolicedBus {
public:
    explicit PolicedBus(const std::string& policy = POLICY)
        : m_daemon({{"dbus-daemon", "--nofork", "--print-address=1", "--config-file", config(policy)}, {}, {}, {}}) {}

    bool isReady() { return m_daemon.waitForOutput("\n"); }
    std::string complaints() const { return m_daemon.errors(); }

    FinishedRun request(const std::string& name) const {
        return call("org.freedesktop.DBus", "/org/freedesktop/DBus",
                    {"org.freedesktop.DBus.RequestName", "string:" + name, "uint32:4"});
    }

    // The bus has an object at every path, and answers its calls itself.
    FinishedRun callBus(const std::string& path) const {
        return call("org.freedesktop.DBus", path, {"org.freedesktop.DBus.GetId"});
    }

    FinishedRun call(const std::string& name, const std::string& path, const std::vector<std::string>& method) const {
        const std::string output = m_daemon.output();
        std::vector<std::string> line = {"dbus-send", "--bus=" + output.substr(0, output.find('\n')), "--print-reply",
                                         "--dest=" + name, path};
        line.insert(line.end(), method.begin(), method.end());
        return DAX::Tests::run({line, {}, {}, {}});
    }

private:
    std::string config(const std::string& policy) const {
        m_root.write(
            "bus.conf",
            "<busconfig><type>system</type>"
            "<listen>unix:path=" +
                (m_root / "bus").string() +
                "</listen>"
                "<policy context='default'><allow user='*'/><deny own='*'/>"
                "<allow send_destination='org.freedesktop.DBus'/><allow receive_sender='org.freedesktop.DBus'/>"
                "<allow send_type='method_return'/><allow send_type='error'/></policy>"
                "<include>" +
                policy + "</include></busconfig>");
        return m_root / "bus.conf";
    }

    TemporaryRoot m_root;
    Process m_daemon;
};

} // namespace

TEST(PackagingTest, BusStartsTheDaemonByItsName) {
    const std::string service = packaged(NAME + ".service");

    EXPECT_EQ(valueOf("Name", service), NAME);
    EXPECT_EQ(valueOf("User", service), "root");
    EXPECT_EQ(valueOf("SystemdService", service), "DAXService.service");
    EXPECT_THAT(valueOf("Exec", service), EndsWith("/bin/DAXService --idle-timeout=60"));
}

TEST(PackagingTest, UnitRunsTheSameCommandUnderTheSameName) {
    const std::string unit = packaged("DAXService.service");

    EXPECT_EQ(valueOf("Type", unit), "exec"); // with "dbus" it would be stopped when it gives its name back
    EXPECT_EQ(valueOf("BusName", unit), NAME);
    EXPECT_EQ(valueOf("Exec", packaged(NAME + ".service")), valueOf("ExecStart", unit));
    EXPECT_EQ(valueOf("NotifyAccess", unit), "main");
    EXPECT_EQ(valueOf("KillSignal", unit), "SIGINT");
    EXPECT_EQ(valueOf("Restart", unit), "no"); // the bus starts it again
}

TEST(PackagingTest, BusAndSystemdStartTheSimulatedCoreByItsName) {
    const std::string service = packaged(CORE_NAME + ".service");
    const std::string unit = packaged("DAXCoreSimulator.service");

    EXPECT_EQ(valueOf("Name", service), CORE_NAME);
    EXPECT_EQ(valueOf("User", service), "root");
    EXPECT_EQ(valueOf("SystemdService", service), "DAXCoreSimulator.service");
    EXPECT_EQ(valueOf("BusName", unit), CORE_NAME);
    EXPECT_THAT(valueOf("Exec", service), EndsWith("/bin/DAXCoreSimulator --idle-timeout=60"));
    EXPECT_EQ(valueOf("Exec", service), valueOf("ExecStart", unit));
}

TEST(PackagingTest, NothingIsLeftToFillIn) {
    for (const std::string& file : {NAME + ".service", CORE_NAME + ".service", std::string("DAXService.service"),
                                    std::string("DAXCoreSimulator.service")}) {
        EXPECT_THAT(packaged(file), Not(ContainsRegex("@[A-Z_]+@"))) << file;
    }
}

TEST(PackagingTest, MakesTheGroupOfThePolicy) {
    const TemporaryRoot root;
    root.write("etc/group", "");
    const FinishedRun run = DAX::Tests::run(
        {{"sh", "-c", "command -v systemd-sysusers || exit 9; exec systemd-sysusers --root=\"$0\" \"$1\"",
          root.path().string(), std::string(PACKAGING) + "/dax.conf"},
         {},
         {},
         {}});
    if (run.end == ProcessEnd::exited(9)) {
        GTEST_SKIP() << "this machine has no systemd-sysusers";
    }
    if (geteuid() != 0) {
        GTEST_SKIP() << "needs root, to make a group under a root folder";
    }
    EXPECT_EQ(run.end, ProcessEnd::exited(0)) << run.errors;
    EXPECT_THAT(root.read("etc/group"), StartsWith("dax:"));
    EXPECT_THAT(textOf(POLICY), HasSubstr("<policy group=\"dax\">"));
}

TEST(PackagingTest, PolicyLetsRootAloneOwnTheName) {
    PolicedBus bus;
    ASSERT_TRUE(bus.isReady()) << bus.complaints();

    const FinishedRun run = bus.request(NAME);

    if (geteuid() == 0) {
        EXPECT_EQ(run.end, ProcessEnd::exited(0));
        EXPECT_THAT(run.output, HasSubstr("uint32 1\n"));
    } else {
        EXPECT_THAT(run.errors, HasSubstr("AccessDenied"));
    }
}

TEST(PackagingTest, PolicyGrantsNoOtherName) {
    PolicedBus bus;
    ASSERT_TRUE(bus.isReady()) << bus.complaints();

    EXPECT_THAT(bus.request("org.kovan.tv.dax.core.TV").errors, HasSubstr("AccessDenied"));
}

TEST(PackagingTest, CorePolicyLetsRootAloneOwnAndCallTheCore) {
    PolicedBus bus(CORE_POLICY);
    ASSERT_TRUE(bus.isReady()) << bus.complaints();

    const FinishedRun owned = bus.request(CORE_NAME);
    const FinishedRun called = bus.call(CORE_NAME, CORE_PATH, {CORE_INTERFACE + ".getCurrentVersion"});

    if (geteuid() == 0) {
        EXPECT_THAT(owned.output, HasSubstr("uint32 1\n"));
        EXPECT_THAT(called.errors, HasSubstr("ServiceUnknown")); // it got past the policy
    } else {
        EXPECT_THAT(owned.errors, HasSubstr("AccessDenied"));
        EXPECT_THAT(called.errors, HasSubstr("AccessDenied"));
    }
}

// A program that starts has no name yet, so a rule about its name does not protect it; its unique name can be guessed.
TEST(PackagingTest, PoliciesDenyThePathsOfDaemonAndCoreWhateverTheDestination) {
    const std::vector<std::pair<std::string, std::string>> policies = {{POLICY, PATH}, {CORE_POLICY, CORE_PATH}};
    for (const auto& [policy, path] : policies) {
        PolicedBus bus(policy);
        ASSERT_TRUE(bus.isReady()) << bus.complaints();

        EXPECT_THAT(bus.callBus(path).errors, HasSubstr("AccessDenied")) << path;
        EXPECT_EQ(bus.callBus(path + "2").end, ProcessEnd::exited(0)) << "only that path";
    }
}
