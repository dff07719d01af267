// daxctl monitor on a bus.
#include <chrono>
#include <csignal>
#include <fstream>
#include <iostream>
#include <set>

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/CpuTime.h"
#include "support/Flood.h"
#include "support/Sanitizer.h"
#include "support/ServiceContract.h"
#include "support/TemporaryRoot.h"
#include "support/WireGoldens.h"
#include "system/Monitor/MonitorTool.h"
#include "system/support/Desk.h"
#include "system/support/ProcessMemory.h"
#include "system/support/Scenarios.h"

namespace DAX::Tests {
namespace {

using namespace testing;

const char* const SERVICE = "org.kovan.tv.dax.service.servicemanager";

class MonitorTest : public Test {
protected:
    MonitorTest() { desk.play(QUICK); }

    void watch(std::vector<std::string> arguments = {}) {
        arguments.insert(arguments.begin(), "monitor");
        monitor = desk.start("daxctl", arguments);
        ASSERT_TRUE(monitor->waitForErrors("Watching the bus. Ctrl-C ends.\n")) << monitor->errors();
    }

    // Ends it as Ctrl-C does, and returns what it has shown.
    std::string finish() {
        monitor->send(SIGINT);
        EXPECT_EQ(monitor->waitForEnd(), ProcessEnd::exited(0)) << monitor->errors();
        return monitor->output();
    }

    // With 5,000 calls a second, when it has a processor to itself.
    static void expectToKeepUp(std::chrono::nanoseconds workPerCall) {
        const auto callsPerSecond = std::chrono::seconds(1) / workPerCall;
        RecordProperty("calls_per_second", std::to_string(callsPerSecond));
        std::cout << "The monitor follows " << callsPerSecond << " calls a second.\n";
        if (!HAS_SANITIZER) {
            EXPECT_GE(callsPerSecond, 5000);
        }
    }

    static RawMessage callOf(const std::string& method, const std::string& archive) {
        RawMessage call(dbus_message_new_method_call(SERVICE, "/org/kovan/tv/dax/service/cservicemanager",
                                                     "org.kovan.tv.dax.service.iservicemanager", method.c_str()));
        appendBytes(*call, archive);
        return call;
    }

    Desk desk;
    std::unique_ptr<Process> monitor;
};

TEST_F(MonitorTest, ShowsEveryMethodOfTheServiceWithItsAnswer) {
    watch({"--json", "--service"});
    RawPeer peer;
    for (const ServiceMethod& method : serviceMethods()) {
        ASSERT_TRUE(peer.call(*callOf(method.name, golden("service/" + method.name + ".request")))) << method.name;
    }
    std::map<std::string, std::set<std::string>> seen;
    for (const auto& line : jsonLines(finish())) {
        if (line["event"] == "call" || line["event"] == "answer") {
            EXPECT_EQ(line["caller"]["connection"], peer.name());
            EXPECT_EQ(line["caller"]["pid"], getpid());
            EXPECT_FALSE(line.contains("breakage")) << line;
            seen[line["method"]].insert(line["event"].get<std::string>());
        }
    }
    EXPECT_THAT(seen, SizeIs(23));
    for (const ServiceMethod& method : serviceMethods()) {
        EXPECT_THAT(seen[method.name], ElementsAre("answer", "call")) << method.name;
    }
}

TEST_F(MonitorTest, TellsOfBytesThatNobodyReads) {
    watch({"--json", "--service"});
    RawPeer peer;
    ASSERT_TRUE(peer.call(*callOf("getServiceOwner", "more")));
    ASSERT_TRUE(peer.call(*callOf("getSupportedUpgradeTypes", golden("service/getSupportedUpgradeTypes.request"))));
    const std::string shown = finish();
    EXPECT_EQ(faultsBySchema(shown), "");
    std::map<std::string, nlohmann::json> unread;
    for (const auto& line : jsonLines(shown)) {
        if (line["event"] == "call") {
            unread[line["method"]] = line.value("unreadBytes", nlohmann::json());
        }
    }
    EXPECT_EQ(unread["getServiceOwner"], 4);
    EXPECT_EQ(unread["getSupportedUpgradeTypes"], nlohmann::json());
}

TEST_F(MonitorTest, FollowsAWholeUpgradeOnBothSides) {
    watch({"--json"});
    ASSERT_EQ(desk.run("daxctl", {"upgrade", "--name", "updater", "--item", "main"}).end, ProcessEnd::exited(0));
    const std::string shown = finish();
    EXPECT_EQ(faultsBySchema(shown), "");
    std::vector<std::string> started;
    nlohmann::json installation;
    for (const auto& line : jsonLines(shown)) {
        if (line["event"] == "owner") {
            started.push_back(line["side"]);
        }
        if (line["event"] == "call" && line["method"] == "startInstallation" && line["side"] == "service") {
            installation = line;
        }
        if (line["event"] == "answer") {
            EXPECT_EQ(line["outcome"], "done") << line;
        }
    }
    EXPECT_THAT(started, ElementsAre("service", "core"));
    EXPECT_EQ(installation["arguments"]["items"], nlohmann::json::parse(R"(["main"])"));
    EXPECT_EQ(installation["caller"]["client"], "updater");
    EXPECT_EQ(installation["caller"]["process"], "daxctl");
    EXPECT_TRUE(installation["session"].is_string());
    EXPECT_TRUE(installation["transaction"].is_string());
    EXPECT_EQ(jsonLines(shown).back()["event"], "summary");
}

TEST_F(MonitorTest, ShowsFailuresAloneWithTheirCalls) {
    desk.play(withFault("startInstallation", "exception=CUSBReadError\nsupport_code=U-7\ntext=The stick is gone."));
    watch({"--failures", "--service"});
    ASSERT_EQ(desk.run("daxctl", {"upgrade", "--item", "main"}).end, ProcessEnd::exited(1));
    const std::string shown = finish();
    EXPECT_THAT(shown, HasSubstr("> startInstallation  items=[\"main\"]  by "));
    EXPECT_THAT(shown,
                HasSubstr("< startInstallation  FAILED  CUSBReadError (support code U-7): The stick is gone.  after "));
    EXPECT_THAT(shown, Not(HasSubstr("> startSearching")));
    EXPECT_THAT(shown, ContainsRegex("service startSearching +1 +0 +0 "));
    EXPECT_THAT(shown, ContainsRegex("service startInstallation +1 +0 +1 "));
}

TEST_F(MonitorTest, ShowsOnlyTheMethodsThatAreAskedFor) {
    watch({"--method", "getServiceOwner", "--method", "getCurrentVersion", "--core"});
    ASSERT_EQ(desk.run("daxctl", {"status"}).end, ProcessEnd::exited(0));
    const std::string shown = finish();
    EXPECT_THAT(shown, HasSubstr("core    #"));
    EXPECT_THAT(shown, HasSubstr("> getCurrentVersion"));
    EXPECT_THAT(shown, Not(HasSubstr("getServiceOwner")));
    EXPECT_THAT(shown, Not(HasSubstr("getSupportedUpgradeTypes")));
}

TEST_F(MonitorTest, WritesNoColoursIntoAPipe) {
    watch();
    desk.run("daxctl", {"status"});
    EXPECT_THAT(finish(), Not(HasSubstr("\x1b")));
}

TEST_F(MonitorTest, TellsWhoEnds) {
    ASSERT_EQ(desk.run("daxctl", {"status"}).end, ProcessEnd::exited(0));
    watch();
    desk.killCore();
    desk.killDaemon();
    ASSERT_TRUE(monitor->waitForOutput("the service  has ended, "));
    EXPECT_THAT(finish(), HasSubstr("the core  has ended, "));
}

TEST_F(MonitorTest, LosesNoCallOfAFlood) {
    const int calls = 20000;
    const int atOnce = 50;
    ASSERT_EQ(desk.run("daxctl", {"status"}).end, ProcessEnd::exited(0));
    watch({"--json"});
    RawPeer peer;
    const auto before = cpuTimeOf(monitor->pid());
    for (int sent = 0; sent < calls; sent += atOnce) {
        std::vector<std::uint32_t> serials;
        for (int i = 0; i < atOnce; ++i) {
            serials.push_back(peer.send(*callOf("getServiceOwner", "")));
        }
        for (const std::uint32_t serial : serials) {
            ASSERT_TRUE(peer.waitForReply(serial));
        }
    }
    ASSERT_TRUE(monitor->waitForOutput("\"event\":\"answer\",\"side\":\"service\",\"number\":" + std::to_string(calls),
                                       std::chrono::minutes(2)));
    expectToKeepUp((cpuTimeOf(monitor->pid()) - before) / calls);
    const std::string shown = finish();
    const auto summary = nlohmann::json::parse(shown.substr(shown.rfind('\n', shown.size() - 2) + 1));
    EXPECT_EQ(summary["methods"][0]["method"], "getServiceOwner");
    EXPECT_EQ(summary["methods"][0]["calls"], calls);
    EXPECT_EQ(summary["methods"][0]["answers"], calls);
    EXPECT_EQ(summary["unanswered"], 0);
}

// It has a connection of its own beside the one that watches, and others can send to that.
TEST_F(MonitorTest, DropsWhatIsSentToItself) {
    if (HAS_SANITIZER) {
        GTEST_SKIP() << "a sanitizer keeps what has been freed, and makes the monitor slower than the flood";
    }
    ASSERT_EQ(desk.run("daxctl", {"status"}).end, ProcessEnd::exited(0));
    watch({"--json", "--service"});
    const auto connections = desk.namelessConnectionsOf(monitor->pid());
    ASSERT_THAT(connections, SizeIs(1));
    const long before = peakKilobytes(monitor->pid());
    RawPeer stranger;
    sendGreatSignals(stranger, connections[0]);
    const Flood flood(connections[0]);
    const std::string found = "\",\"pid\":" + std::to_string(getpid());
    for (int attempt = 0; attempt < 20 && monitor->output().find(found) == std::string::npos; ++attempt) {
        RawPeer peer; // asked for anew
        ASSERT_TRUE(peer.call(*callOf("getServiceOwner", "")));
        ASSERT_TRUE(monitor->waitForOutput(peer.name()));
    }
    EXPECT_THAT(monitor->output(), HasSubstr(found));
    EXPECT_LT(peakKilobytes(monitor->pid()), before + 32 * 1024);
    finish();
}

TEST_F(MonitorTest, ShowsCallersThatAreGoneBeforeAnybodyCanAskWhoTheyAre) {
    const int callers = 50;
    ASSERT_EQ(desk.run("daxctl", {"status"}).end, ProcessEnd::exited(0));
    watch({"--json", "--service"});
    std::set<std::string> called;
    for (int i = 0; i < callers; ++i) {
        RawPeer peer;
        called.insert(peer.name());
        const RawMessage call = callOf("getServiceOwner", "");
        dbus_message_set_no_reply(call.get(), TRUE);
        peer.send(*call);
        peer.disconnect();
    }
    ASSERT_TRUE(monitor->waitForOutput("\"number\":" + std::to_string(callers)));
    std::set<std::string> seen;
    for (const auto& line : jsonLines(finish())) {
        if (line["event"] == "call") {
            seen.insert(line["caller"]["connection"].get<std::string>());
            EXPECT_TRUE(line["caller"]["pid"].is_null() || line["caller"]["pid"] == getpid()) << line;
        }
    }
    EXPECT_EQ(seen, called);
}

TEST_F(MonitorTest, WritesACaptureThatReadsAsItWasSeen) {
    const std::string capture = (desk.root / "seen.pcap").string();
    watch({"--json", "--write", capture});
    ASSERT_EQ(desk.run("daxctl", {"search"}).end, ProcessEnd::exited(0));
    std::string seen = finish();
    std::string read = daxctl({"monitor", "--json", "--read", capture}).output;
    const auto comparable = [](const std::string& lines) {
        std::vector<nlohmann::json> all = jsonLines(lines);
        for (auto& line : all) {
            if (line.contains("caller")) {
                line["caller"].erase("process"); // a capture has no names of programs
            }
        }
        return all;
    };
    EXPECT_THAT(jsonLines(seen), SizeIs(Gt(20U)));
    EXPECT_EQ(comparable(read), comparable(seen));
}

TEST_F(MonitorTest, ReadsWhatOtherToolsHaveCaptured) {
    const std::string capture = (desk.root / "other.pcap").string();
    Command recorder;
    recorder.line = {"sh", "-c", "exec dbus-monitor --system --pcap > " + capture};
    Process other(recorder);
    // It says nothing when it is ready, so that the client comes until it has been seen.
    std::string shown;
    for (int attempt = 0; attempt < 100 && shown.find("< getServiceOwner") == std::string::npos; ++attempt) {
        desk.run("daxctl", {"status"});
        shown = daxctl({"monitor", "--read", capture}).output;
    }
    other.send(SIGTERM);
    other.waitForEnd();
    EXPECT_THAT(shown, HasSubstr("> getServiceOwner"));
    EXPECT_THAT(shown, HasSubstr("isOwned=false"));
}

TEST_F(MonitorTest, SaysWhereACaptureIsCut) {
    const std::string capture = (desk.root / "seen.pcap").string();
    watch({"--write", capture});
    desk.run("daxctl", {"status"});
    finish();
    std::filesystem::resize_file(capture, std::filesystem::file_size(capture) - 3);
    const auto run = daxctl({"monitor", "--read", capture});
    EXPECT_EQ(run.end, ProcessEnd::exited(1));
    EXPECT_THAT(run.output, HasSubstr("> getServiceOwner"));
    EXPECT_THAT(run.errors, ContainsRegex("seen.pcap is cut off behind message [0-9]+: truncated dump file"));
}

TEST_F(MonitorTest, DrawsTheSequence) {
    const std::string picture = (desk.root / "upgrade.svg").string();
    watch({"--diagram", picture});
    desk.run("daxctl", {"search", "--name", "updater"});
    finish();
    const std::string svg = desk.root.read("upgrade.svg");
    EXPECT_THAT(svg, StartsWith("<svg "));
    EXPECT_THAT(svg, HasSubstr(">updater</text>"));
    EXPECT_THAT(svg, HasSubstr(">startSearching</text>"));
    EXPECT_THAT(svg, EndsWith("</svg>\n"));
}

TEST_F(MonitorTest, SaysWhenTheBusEnds) {
    watch();
    desk.stopBus();
    EXPECT_EQ(monitor->waitForEnd(), ProcessEnd::exited(1));
    EXPECT_THAT(monitor->errors(), HasSubstr("daxctl: The bus has ended the connection.\n"));
    EXPECT_THAT(daxctl({"monitor"}).errors, StartsWith("daxctl: There is no system bus: "));
}

// The command line of a shell that tells at its end how the monitor has ended.
std::vector<std::string> inShell(const std::string& arguments, const std::string& rest) {
    return {"sh", "-c", "(" DAXCTL " monitor " + arguments + "; echo ended with $? >&2) " + rest};
}

TEST_F(MonitorTest, EndsWhenNobodyReadsAnyMore) {
    const std::string picture = (desk.root / "head.svg").string();
    Command command;
    command.line = inShell("--diagram " + picture, "| head -n 1");
    Process shell(command);
    ASSERT_TRUE(shell.waitForErrors("Watching the bus."));
    ASSERT_EQ(desk.run("daxctl", {"status"}).end, ProcessEnd::exited(0));
    EXPECT_EQ(shell.waitForEnd(), ProcessEnd::exited(0));
    EXPECT_THAT(shell.output(), HasSubstr("service"));
    EXPECT_THAT(shell.errors(), EndsWith("ended with 0\n"));
    EXPECT_THAT(desk.root.read("head.svg"), EndsWith("</svg>\n"));
}

// What a monitor with these arguments says when all that it prints is lost, and how it ends.
std::string errorsOnAFullDisk(const Desk& desk, const std::string& arguments) {
    Command command;
    command.line = inShell(arguments, "> /dev/full");
    Process shell(command);
    EXPECT_TRUE(shell.waitForErrors("Watching the bus."));
    EXPECT_EQ(desk.run("daxctl", {"status"}).end, ProcessEnd::exited(0));
    EXPECT_EQ(shell.waitForEnd(), ProcessEnd::exited(0));
    return shell.errors();
}

TEST_F(MonitorTest, SaysWhenItsOutputCannotBeWritten) {
    EXPECT_THAT(errorsOnAFullDisk(desk, ""),
                EndsWith("daxctl: The standard output cannot be written: No space left on device\n"
                         "ended with 1\n"));
}

TEST_F(MonitorTest, SaysOneThingWhenItsDocumentsCannotBeWritten) {
    EXPECT_EQ(errorsOnAFullDisk(desk, "--json"),
              "Watching the bus. Ctrl-C ends.\n"
              "daxctl: The standard output cannot be written: No space left on device\n"
              "ended with 1\n");
    Command command;
    command.line = inShell("--json", "> /dev/full");
    command.environment["DBUS_SYSTEM_BUS_ADDRESS"] = "unix:path=/nowhere/bus";
    EXPECT_THAT(run(command).errors, MatchesRegex("daxctl: There is no system bus: [^\n]*\nended with 1\n"));
}

TEST_F(MonitorTest, TellsWhatItHasSeenWhenTheDiskOfItsCaptureIsFull) {
    watch({"--write", "/dev/full"});
    ASSERT_EQ(desk.run("daxctl", {"status"}).end, ProcessEnd::exited(0));
    EXPECT_EQ(monitor->waitForEnd(), ProcessEnd::exited(1));
    EXPECT_THAT(monitor->errors(), EndsWith("daxctl: /dev/full: No space left on device\n"));
    EXPECT_THAT(monitor->output(), HasSubstr("worst ms\n"));
}

TEST_F(MonitorTest, SaysAtOnceThatAPictureCannotBeDrawn) {
    const auto run = desk.run("daxctl", {"monitor", "--diagram", (desk.root / "no/folder.svg").string()});
    EXPECT_EQ(run.end, ProcessEnd::exited(1));
    EXPECT_THAT(run.errors, AllOf(EndsWith("no/folder.svg: No such file or directory\n"), Not(HasSubstr("Watching"))));
}

TEST_F(MonitorTest, WritesItsFailureAsALineOfJson) {
    watch({"--json"});
    desk.stopBus();
    EXPECT_EQ(monitor->waitForEnd(), ProcessEnd::exited(1));
    EXPECT_EQ(faultsBySchema(monitor->output()), "");
    EXPECT_EQ(jsonLines(monitor->output()).back(),
              nlohmann::json::parse(R"({"event": "error", "error": "The bus has ended the connection."})"));
}

// As of `ssh tv dbus-monitor --system --pcap | daxctl monitor --read -`.
TEST_F(MonitorTest, ShowsAStreamAsItComesUntilCtrlC) {
    const std::string capture = (desk.root / "seen.pcap").string();
    watch({"--write", capture});
    desk.run("daxctl", {"status"});
    finish();
    const std::string stream = (desk.root / "stream").string();
    ASSERT_EQ(::mkfifo(stream.c_str(), 0600), 0);
    const auto reader = desk.start("daxctl", {"monitor", "--read", stream});
    std::ofstream writer(stream, std::ios::binary);
    writer << desk.root.read("seen.pcap") << std::flush; // and it stays open
    ASSERT_TRUE(reader->waitForOutput("< getServiceOwner"));
    reader->send(SIGINT);
    EXPECT_EQ(reader->waitForEnd(), ProcessEnd::exited(0)) << reader->errors();
    EXPECT_THAT(reader->output(), HasSubstr("worst ms\n"));
    EXPECT_EQ(reader->errors(), "");
}

TEST_F(MonitorTest, SaysWhatToDoOnABusWhoseRulesLetNobodyWatch) {
    desk.root.write("rules.conf", "<busconfig><policy context=\"mandatory\">"
                                  "<deny send_interface=\"org.freedesktop.DBus.Monitoring\"/></policy></busconfig>");
    desk.stopBus();
    SystemBusRules rules;
    rules.policies = {(desk.root / "rules.conf").string()};
    const PrivateBus bus(rules);
    const auto run = daxctl({"monitor"});
    EXPECT_EQ(run.end, ProcessEnd::exited(1));
    EXPECT_EQ(run.errors, ::geteuid() == 0
                              ? "daxctl: The rules of this bus let nobody see what others send. Allow the interface "
                                "org.freedesktop.DBus.Monitoring in them, or read a capture that somebody else has "
                                "made with --read.\n"
                              : "daxctl: This bus does not let you see what others send. Be root, or the user that "
                                "the bus runs as: sudo daxctl monitor. A capture that somebody else has made can be "
                                "read with --read.\n");
}

TEST(MonitorAsAnOrdinaryUser, SaysWhatToDo) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only the superuser can run a program as another user";
    }
    const Desk desk("", SystemBusRules::ofDevice());
    if (!(desk.runAsNobody("daxctl", {"--help"}).end == ProcessEnd::exited(0))) {
        GTEST_SKIP() << "the user nobody may not run what is built here";
    }
    const auto run = desk.runAsNobody("daxctl", {"monitor"});
    EXPECT_EQ(run.end, ProcessEnd::exited(1));
    EXPECT_EQ(run.errors, "daxctl: This bus does not let you see what others send. Be root, or the user that the bus "
                          "runs as: sudo daxctl monitor. A capture that somebody else has made can be read with "
                          "--read.\n");
}

TEST(MonitorUsage, KnowsWhichOptionsGoTogether) {
    EXPECT_EQ(daxctl({"monitor", "--read", "a.pcap", "--write", "b.pcap"}).end, ProcessEnd::exited(2));
    EXPECT_EQ(daxctl({"monitor", "--read", "a.pcap", "--time-scale"}).end, ProcessEnd::exited(2));
    EXPECT_EQ(daxctl({"monitor", "--write", "-"}).end, ProcessEnd::exited(2));
    const auto unknown = daxctl({"monitor", "--method", "getServise"});
    EXPECT_EQ(unknown.end, ProcessEnd::exited(2));
    EXPECT_EQ(unknown.errors, "daxctl: The service has no method getServise. Did you mean getService?\n");
}

TEST(MonitorUsage, DrawsNoPictureOverTheCapture) {
    const TemporaryRoot root;
    root.write("seen.pcap", "a capture");
    const std::string capture = (root / "seen.pcap").string();
    const std::string same = (root / "./seen.pcap").string();
    const auto run = daxctl({"monitor", "--read", capture, "--diagram", same});
    EXPECT_EQ(run.end, ProcessEnd::exited(2));
    EXPECT_EQ(run.errors, "daxctl: The picture would overwrite the capture. Name another file.\n");
    EXPECT_EQ(root.read("seen.pcap"), "a capture");
    EXPECT_EQ(daxctl({"monitor", "--write", same, "--diagram", capture}).end, ProcessEnd::exited(2));
}

} // namespace
} // namespace DAX::Tests
