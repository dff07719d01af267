// daxctl, as a person sees it.
#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include <sys/stat.h>
#include <unistd.h>

#include "Utility/Utils/FileDescriptor.h"
#include "support/WaitUntil.h"
#include "system/support/Desk.h"
#include "system/support/Scenarios.h"

namespace DAX::Tests {
namespace {

using namespace testing;

class Daxctl : public Test {
protected:
    Daxctl() { desk.play(QUICK); }

    FinishedRun daxctl(const std::vector<std::string>& arguments) { return desk.run("daxctl", arguments); }

    nlohmann::json jsonOf(std::vector<std::string> arguments) {
        arguments.push_back("--json");
        return nlohmann::json::parse(daxctl(arguments).output);
    }

    // A client that has the service and searches for ever.
    std::unique_ptr<Process> holder(const std::string& name, const std::string& priority) {
        desk.play("[search]\nseconds=1000\n");
        auto process = desk.start("daxctl", {"upgrade", "--name", name, "--priority", priority});
        EXPECT_TRUE(desk.waitForCoreCall("getSearchProgress"));
        return process;
    }

    Desk desk;
};

// A command promises to end within a second; the machine may be busy.
const std::chrono::seconds SOON(5);

// A process that does nothing, until the end of the object at the latest.
class Stopped {
public:
    explicit Stopped(pid_t pid) : m_pid(pid) { kill(m_pid, SIGSTOP); }
    ~Stopped() { end(); }
    Stopped(const Stopped&) = delete;
    Stopped& operator=(const Stopped&) = delete;

    void end() const { kill(m_pid, SIGCONT); }

private:
    const pid_t m_pid;
};

TEST_F(Daxctl, StatusTellsWhatIsKnown) {
    EXPECT_EQ(jsonOf({"status"}), nlohmann::json::parse(R"({"daemonWasRunning": false, "owner": null,
        "lastSearch": null, "installationLock": false, "blockingExternalLock": false, "staleExternalLockSetting": false,
        "version": "1000", "supportedTypes": ["OTA", "OTN", "USB"]})"));
}

TEST_F(Daxctl, StatusIsALineForEachFact) {
    const auto run = daxctl({"status"});
    EXPECT_EQ(run.end, ProcessEnd::exited(0));
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.output, "daemon            was not running; this has started it\n"
                          "owner             nobody\n"
                          "version           1000\n"
                          "supported types   OTA, OTN, USB\n"
                          "last search       none known\n"
                          "installation lock no\n"
                          "external lock     none that blocks\n");
}

TEST_F(Daxctl, StatusTellsOfADaemonThatRuns) {
    const auto other = holder("updater", "6");
    EXPECT_THAT(daxctl({"status"}).output, StartsWith("daemon            running\nowner             updater"));
    EXPECT_EQ(jsonOf({"status"})["daemonWasRunning"], true);
}

TEST_F(Daxctl, StatusTellsThatTheSettingOfALockIsLeftFromADaemonThatHasEnded) {
    ASSERT_EQ(daxctl({"lock", "acquire"}).end, ProcessEnd::exited(0));
    desk.killDaemon();
    EXPECT_THAT(
        daxctl({"status"}).output,
        HasSubstr("external lock     none; the setting that tells of one is left from a daemon that has ended\n"));
    desk.killDaemon();
    const auto status = jsonOf({"status"});
    EXPECT_EQ(status["staleExternalLockSetting"], true);
    EXPECT_EQ(status["blockingExternalLock"], false);
}

TEST_F(Daxctl, StatusSaysOfASettingBesideADaemonThatItMayBeThatOfAnEarlierOne) {
    ASSERT_EQ(daxctl({"lock", "acquire"}).end, ProcessEnd::exited(0));
    const std::string uncertain =
        "external lock     held, blocks the main application, unless its setting is left from a "
        "daemon that has ended\n";
    EXPECT_THAT(daxctl({"status"}).output, HasSubstr(uncertain));
    desk.killDaemon();
    ASSERT_EQ(daxctl({"status"}).end, ProcessEnd::exited(0)); // starts another one, which has no lock
    EXPECT_THAT(daxctl({"status"}).output, HasSubstr(uncertain));
    const auto status = jsonOf({"status"});
    EXPECT_EQ(status["staleExternalLockSetting"], nullptr);
    EXPECT_EQ(status["blockingExternalLock"], true);
}

TEST_F(Daxctl, StatusTellsTheRestWhenTheFileOfTheInstallationLockLeadsToItself) {
    const auto file = desk.root / "mnt/systemrw/org.kovan.tv.dax/data/tv/InstallationLock.dat";
    std::filesystem::create_directories(file.parent_path());
    std::filesystem::create_symlink(file, file);
    const auto run = daxctl({"status"});
    EXPECT_EQ(run.end, ProcessEnd::exited(0));
    EXPECT_THAT(run.output, HasSubstr("version           1000\n"));
    EXPECT_THAT(run.output, HasSubstr("installation lock unknown: Too many levels of symbolic links\n"));
    EXPECT_EQ(run.errors, "");
    EXPECT_TRUE(jsonOf({"status"})["installationLock"].is_null());
}

TEST_F(Daxctl, StatusTellsTheRestWhenTheCoreFails) {
    desk.play(withFault("getSupportedUpgradeTypes", "exception=CWrongKeys\ntext=It is broken."));
    const auto run = daxctl({"status"});
    EXPECT_EQ(run.end, ProcessEnd::exited(1));
    EXPECT_EQ(run.errors, "The update core does not answer: CWrongKeys: It is broken.\n");
    EXPECT_THAT(run.output, HasSubstr("version           1000\nsupported types   unknown\n"));
    const auto status = jsonOf({"status"});
    EXPECT_EQ(status["version"], "1000");
    EXPECT_FALSE(status.contains("supportedTypes"));
    EXPECT_EQ(status["error"]["name"], "CWrongKeys");
}

TEST_F(Daxctl, StatusSaysWhatAnOrdinaryUserMayNotRead) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only the superuser can run a program as another user";
    }
    if (!(desk.runAsNobody("daxctl", {"--help"}).end == ProcessEnd::exited(0))) {
        GTEST_SKIP() << "the user nobody may not run what is built here";
    }
    ASSERT_EQ(daxctl({"lock", "acquire"}).end, ProcessEnd::exited(0));
    std::filesystem::permissions(desk.root / "mnt", std::filesystem::perms(0750));
    const auto run = desk.runAsNobody("daxctl", {"status"});
    EXPECT_EQ(run.end, ProcessEnd::exited(0)) << run.errors;
    EXPECT_EQ(run.errors, "");
    EXPECT_THAT(run.output, HasSubstr("version           1000\n"));
    EXPECT_THAT(run.output, HasSubstr("installation lock unknown, may not be read by this user\n"
                                      "external lock     unknown, may not be read by this user\n"));
    const auto status = nlohmann::json::parse(desk.runAsNobody("daxctl", {"status", "--json"}).output);
    EXPECT_EQ(status["version"], "1000");
    EXPECT_TRUE(status["installationLock"].is_null());
    EXPECT_TRUE(status["blockingExternalLock"].is_null());
    EXPECT_EQ(jsonOf({"status"})["blockingExternalLock"], true);
}

TEST_F(Daxctl, StatusNamesTheOwner) {
    const auto other = holder("updater", "6");
    EXPECT_EQ(jsonOf({"status"})["owner"],
              nlohmann::json::parse(R"({"clientName": "updater", "priority": 6, "transactionType": 2})"));
}

TEST_F(Daxctl, AHoldersNameDoesNotReachTheTerminalAsItIs) {
    const auto other = holder("\x1b]0;X\x07\x1b[31m", "6");
    EXPECT_THAT(daxctl({"status"}).output, HasSubstr("owner             \\x1b]0;X\\x07\\x1b[31m with priority 6"));
    EXPECT_EQ(jsonOf({"status"})["owner"]["clientName"], "\x1b]0;X\x07\x1b[31m");
    EXPECT_EQ(daxctl({"lock", "acquire"}).errors,
              "Denied: the service is held by \\x1b]0;X\\x07\\x1b[31m with priority 6.\n");
}

TEST_F(Daxctl, ARefusalNamesTheHolderAndItsPriority) {
    const auto other = holder("updater", "6");
    const auto refused = daxctl({"upgrade", "--priority", "6"});
    EXPECT_EQ(refused.end, ProcessEnd::exited(1));
    EXPECT_EQ(refused.errors, "Refused: the service is held by updater with priority 6. Ask again later, which --wait "
                              "does, or with a --priority above 6, which takes the service over.\n");
    EXPECT_EQ(jsonOf({"search"})["refusedBecause"], "the service is held by updater with priority 6");
}

TEST_F(Daxctl, AnUpgradeThatWaitsRunsWhenTheLockIsReleased) {
    ASSERT_EQ(daxctl({"lock", "acquire"}).output, "1\n");
    const auto waiting = desk.start("daxctl", {"upgrade", "--wait"});
    EXPECT_TRUE(waiting->waitForErrors("Waiting: an external lock of this priority or a higher one is held.\n"));
    ASSERT_EQ(daxctl({"lock", "release", "1"}).end, ProcessEnd::exited(0));
    EXPECT_EQ(waiting->waitForEnd(), ProcessEnd::exited(0));
}

TEST_F(Daxctl, AHigherPriorityTakesTheServiceOver) {
    const auto other = holder("updater", "3");
    desk.play(QUICK);
    EXPECT_EQ(daxctl({"upgrade", "--priority", "4"}).end, ProcessEnd::exited(0));
    EXPECT_EQ(other->waitForEnd(), ProcessEnd::exited(1));
    EXPECT_THAT(other->errors(), HasSubstr("TransactionInvalidatedException"));
    EXPECT_EQ(desk.countMessages("Currently requesting client daxctl has lower priority than current owner updater. "
                                 "Current service will be invalidated."),
              1);
}

TEST_F(Daxctl, CtrlCCancelsTheUpgradeAtTheCoreAndSaysSo) {
    const auto client = holder("updater", "3");
    client->send(SIGINT);
    EXPECT_EQ(client->waitForEnd(), ProcessEnd::exited(1));
    EXPECT_THAT(client->errors(), HasSubstr("Search was interrupted; the transaction has been cancelled at the core."));
    const auto calls = desk.coreCalls();
    const auto cancel = std::find_if(calls.begin(), calls.end(),
                                     [](const auto& call) { return call["method"] == "cancelCoreTransaction"; });
    ASSERT_NE(cancel, calls.end());
    EXPECT_EQ((*cancel)["arguments"]["reason"],
              "cancelServiceTransaction() is canceling CoreTransaction. Reason: Interrupted by the user of daxctl.");
}

TEST_F(Daxctl, ProgressInAPipeIsPlainLines) {
    const auto run = daxctl({"upgrade"});
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.errors, "Search: started\nSearch: done\nFound version 1100 (scope 2, id 0da5)\n"
                          "Installation: started\nInstallation: done\nFinalization: started\nFinalization: done\n"
                          "Finalized. The installation lock is in force until the device has started anew.\n");
}

TEST_F(Daxctl, AnUpgradeInJson) {
    EXPECT_EQ(jsonOf({"upgrade"}), nlohmann::json::parse(R"({"outcome": "finalized", "search": {"upgradeType": 2,
        "upgradeId": "0da5", "version": "1100", "updateInfo": "<update><version>1100</version></update>", "kind": 0,
        "scope": 2}})"));
}

TEST_F(Daxctl, ProgressInJsonIsALineAChangeBesideAPureDocument) {
    const auto run = daxctl({"upgrade", "--json", "--progress=json"});
    EXPECT_EQ(nlohmann::json::parse(run.output)["outcome"], "finalized");
    std::istringstream lines(run.errors);
    std::vector<std::string> ended;
    for (std::string line; std::getline(lines, line);) {
        const auto change = nlohmann::json::parse(line);
        if (change["state"] == "done") {
            ended.push_back(change["step"]);
        }
    }
    EXPECT_THAT(ended, ElementsAre("search", "installation", "finalization"));
}

TEST_F(Daxctl, ProgressGoesToStandardOutputUnlessTheDocumentDoes) {
    const auto run = daxctl({"upgrade", "--progress=plain", "--progress-to=stdout"});
    EXPECT_EQ(run.output, "Search: started\nSearch: done\nInstallation: started\nInstallation: done\n"
                          "Finalization: started\nFinalization: done\n");
    EXPECT_EQ(daxctl({"upgrade", "--json", "--progress-to=stdout"}).end, ProcessEnd::exited(2));
}

TEST_F(Daxctl, NoFinalizeStopsAfterTheInstallation) {
    const auto run = daxctl({"upgrade", "--no-finalize"});
    EXPECT_EQ(run.end, ProcessEnd::exited(0));
    EXPECT_THAT(run.errors, HasSubstr("Installed; not finalized."));
    EXPECT_THAT(desk.coreMethods(), Not(Contains("startFinalization")));
    EXPECT_EQ(jsonOf({"status"})["installationLock"], false);
}

TEST_F(Daxctl, SearchTellsWhatWasFound) {
    const auto run = daxctl({"search"});
    EXPECT_EQ(run.end, ProcessEnd::exited(0));
    EXPECT_EQ(run.output, "version 1100\nscope   2\nkind    0\nid      0da5\n");
    EXPECT_THAT(desk.coreMethods(), Not(Contains("startInstallation")));
}

TEST_F(Daxctl, ASearchThatIsNotPossibleIsARefusal) {
    desk.play("[search]\npossible=false\n");
    EXPECT_EQ(jsonOf({"search"})["outcome"], "searchNotPossible");
}

TEST_F(Daxctl, LocksAreAcquiredAndReleased) {
    EXPECT_EQ(daxctl({"lock", "acquire", "--name", "installer"}).output, "1\n");
    EXPECT_EQ(jsonOf({"status"})["blockingExternalLock"], true);
    EXPECT_THAT(daxctl({"upgrade"}).errors, HasSubstr("an external lock of this priority or a higher one is held"));
    const auto foreign = daxctl({"lock", "release", "--name", "other", "1"});
    EXPECT_EQ(foreign.end, ProcessEnd::exited(1));
    EXPECT_THAT(foreign.errors, HasSubstr("External lock owned by other client."));
    EXPECT_EQ(daxctl({"lock", "release", "--name", "installer", "1"}).end, ProcessEnd::exited(0));
    EXPECT_EQ(jsonOf({"status"})["blockingExternalLock"], false);
}

TEST_F(Daxctl, ALockThatIsDeniedNamesTheHolder) {
    const auto other = holder("updater", "6");
    const auto denied = daxctl({"lock", "acquire", "--priority", "6"});
    EXPECT_EQ(denied.end, ProcessEnd::exited(1));
    EXPECT_EQ(denied.errors, "Denied: the service is held by updater with priority 6.\n");
}

TEST_F(Daxctl, LockHoldGivesTheCommandsStatusAndReleasesTheLock) {
    const auto held = daxctl({"lock", "hold", "--name", "builder", "--", "sh", "-c", "echo inside; exit 7"});
    EXPECT_EQ(held.end, ProcessEnd::exited(7));
    EXPECT_EQ(held.output, "inside\n");
    EXPECT_EQ(desk.countMessages("External lock 1 is being released by builder"), 1);
}

TEST_F(Daxctl, LockHoldInJsonLeavesStandardOutputToTheDocument) {
    const auto held = daxctl({"lock", "hold", "--json", "--", "sh", "-c", "echo inside; exit 7"});
    EXPECT_EQ(held.end, ProcessEnd::exited(7));
    EXPECT_EQ(nlohmann::json::parse(held.output),
              nlohmann::json::parse(R"({"outcome": "held", "id": 1, "status": 7})"));
    EXPECT_EQ(held.errors, "inside\n");
}

TEST_F(Daxctl, LockHoldInJsonTellsOfACommandThatCannotBeStarted) {
    const auto held = daxctl({"lock", "hold", "--json", "--", "/no/such/program"});
    EXPECT_EQ(held.end, ProcessEnd::exited(127));
    EXPECT_EQ(
        nlohmann::json::parse(held.output),
        nlohmann::json::parse(R"({"outcome": "held", "id": 1, "status": 127, "started": false, "kind": "failed"})"));
}

TEST_F(Daxctl, LockHoldLetsABrokenPipeEndItsCommand) {
    const auto held = daxctl({"lock", "hold", "--", "sh", "-c", "kill -PIPE $$; exit 7"});
    EXPECT_EQ(held.end, ProcessEnd::exited(128 + SIGPIPE));
}

TEST_F(Daxctl, LockHoldReleasesTheLockOfACommandThatCannotBeStarted) {
    EXPECT_EQ(daxctl({"lock", "hold", "--", "/no/such/program"}).end, ProcessEnd::exited(127));
    EXPECT_EQ(desk.countMessages("External lock 1 is being released by daxctl"), 1);
}

TEST_F(Daxctl, LockHoldEndsItsCommandAndReleasesTheLockWhenItIsInterrupted) {
    int lock = 0;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        const std::string number = std::to_string(++lock);
        const auto held = desk.start("daxctl", {"lock", "hold", "--", "sleep", "1000"});
        ASSERT_TRUE(desk.waitForMessage("External lock " + number + " is acquired by daxctl"));
        held->send(signal);
        // The second when it comes before the command.
        EXPECT_THAT(held->waitForEnd(),
                    testing::AnyOf(ProcessEnd::exited(128 + SIGTERM), ProcessEnd::exited(128 + signal)));
        EXPECT_EQ(desk.countMessages("External lock " + number + " is being released by daxctl"), 1);
    }
}

// A lock that is held while its command waits for the test to go on.
class DaxctlLockHold : public Daxctl {
protected:
    // `before` is run first by the command's shell.
    std::unique_ptr<Process> hold(const std::string& before = "", const std::vector<std::string>& options = {}) {
        std::vector<std::string> arguments = {"lock", "hold", "--name", "builder"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const std::string root = desk.root.path().string(); // so that the command ends when a test fails and removes it
        const std::string wait =
            "until test -e " + goOn.string() + " -o ! -d " + root + "; do sleep 0.02; done; exit 7";
        arguments.insert(arguments.end(), {"--", "sh", "-c", before + "echo started >&2; " + wait});
        auto process = desk.start("daxctl", arguments);
        EXPECT_TRUE(process->waitForErrors("started\n"));
        return process;
    }

    void letTheCommandEnd() { desk.root.write("go-on", ""); }

    // Sends the signal and waits until the process has received it.
    static void sendAndWait(Process& process, int signal) {
        process.send(signal);
        EXPECT_TRUE(waitUntil([&] { return !isPending(process.pid(), signal); }));
    }

    static bool isPending(pid_t pid, int signal) {
        std::ifstream status("/proc/" + std::to_string(pid) + "/status");
        for (std::string word; status >> word;) {
            if (word == "ShdPnd:" && status >> word) {
                return (std::stoull(word, nullptr, 16) >> (signal - 1) & 1) != 0;
            }
        }
        return false;
    }

    const std::filesystem::path goOn = desk.root / "go-on";
    const std::string lost = "The lock 1 is lost: the daemon that gave it has left the bus.\n";
};

TEST_F(DaxctlLockHold, SaysThatTheLockIsLostWhileTheCommandRunsAndEndsWithOne) {
    const auto held = hold();
    desk.killDaemon();
    EXPECT_TRUE(held->waitForErrors(lost));
    letTheCommandEnd();
    EXPECT_EQ(held->waitForEnd(), ProcessEnd::exited(1));
    EXPECT_EQ(held->errors(), "started\n" + lost);
    EXPECT_EQ(desk.daemon(), 0) << "it has started a daemon to release the lock there";
}

TEST_F(DaxctlLockHold, LeavesTheSameLockOfALaterDaemonAlone) {
    const auto held = hold();
    desk.killDaemon();
    EXPECT_EQ(daxctl({"lock", "acquire", "--name", "builder"}).output, "1\n");
    letTheCommandEnd();
    EXPECT_EQ(held->waitForEnd(), ProcessEnd::exited(1));
    EXPECT_EQ(held->errors(), "started\n" + lost);
    EXPECT_EQ(desk.countMessages("External lock 1 is being released"), 0);
    EXPECT_EQ(daxctl({"lock", "release", "--name", "builder", "1"}).end, ProcessEnd::exited(0));
}

TEST_F(DaxctlLockHold, FindsOutWhatHappenedWhileItWasStopped) {
    const auto held = hold();
    held->send(SIGSTOP);
    desk.killDaemon();
    EXPECT_EQ(daxctl({"lock", "acquire", "--name", "builder"}).output, "1\n");
    letTheCommandEnd();
    held->send(SIGCONT);
    EXPECT_EQ(held->waitForEnd(), ProcessEnd::exited(1));
    EXPECT_EQ(held->errors(), "started\n" + lost);
    EXPECT_EQ(desk.countMessages("External lock 1 is being released"), 0);
}

TEST_F(DaxctlLockHold, TellsOfALostLockInJson) {
    const auto held = hold("", {"--json"});
    desk.killDaemon();
    letTheCommandEnd();
    EXPECT_EQ(held->waitForEnd(), ProcessEnd::exited(1));
    EXPECT_EQ(nlohmann::json::parse(held->output()),
              nlohmann::json::parse(R"({"outcome": "lost", "id": 1, "status": 7, "kind": "failed"})"));
}

TEST_F(DaxctlLockHold, TakesALockForLostWhenTheBusGoes) {
    const auto held = hold();
    desk.stopBus();
    EXPECT_TRUE(held->waitForErrors(lost));
    letTheCommandEnd();
    EXPECT_EQ(held->waitForEnd(), ProcessEnd::exited(1));
}

TEST_F(DaxctlLockHold, TakesALockForLostThatAnotherReleased) {
    const auto held = hold();
    EXPECT_EQ(daxctl({"lock", "release", "--name", "builder", "1"}).end, ProcessEnd::exited(0));
    letTheCommandEnd();
    EXPECT_EQ(held->waitForEnd(), ProcessEnd::exited(1));
    EXPECT_THAT(held->errors(), StartsWith("started\nThe lock 1 could not be released: DAXUnknownException: "));
}

TEST_F(DaxctlLockHold, BelievesNobodyButTheBus) {
    const auto held = hold();
    RawPeer forger;
    const std::string daemon = desk.uniqueNameOfDaemon();
    const char* texts[] = {daemon.c_str(), daemon.c_str(), ""};
    for (const std::string& connection : desk.namelessConnectionsOf(held->pid())) {
        const RawMessage forged(
            dbus_message_new_signal("/org/freedesktop/DBus", "org.freedesktop.DBus", "NameOwnerChanged"));
        dbus_message_set_destination(forged.get(), connection.c_str());
        dbus_message_append_args(forged.get(), DBUS_TYPE_STRING, &texts[0], DBUS_TYPE_STRING, &texts[1],
                                 DBUS_TYPE_STRING, &texts[2], DBUS_TYPE_INVALID);
        forger.send(*forged);
    }
    ASSERT_TRUE(forger.waitForNameOwner(daemon, true)); // so that the bus has passed them on
    letTheCommandEnd();
    EXPECT_EQ(held->waitForEnd(), ProcessEnd::exited(7));
    EXPECT_EQ(held->errors(), "started\n");
    EXPECT_EQ(desk.countMessages("External lock 1 is being released by builder"), 1);
}

TEST_F(DaxctlLockHold, EndsACommandThatIgnoresItsEndAtTheSecondCtrlC) {
    const auto held = hold("trap '' TERM INT; ");
    sendAndWait(*held, SIGINT);
    EXPECT_TRUE(waitUntil([&] { // two within 100 ms are one
        held->send(SIGINT);
        return held->waitForEnd(std::chrono::milliseconds(150)).has_value();
    }));
    EXPECT_EQ(held->waitForEnd(), ProcessEnd::exited(128 + SIGKILL));
    EXPECT_EQ(desk.countMessages("External lock 1 is being released by builder"), 1);
}

// The end of a login session sends both at once.
TEST_F(DaxctlLockHold, LetsACommandTidyUpAfterTwoDifferentSignals) {
    const auto held = hold("trap '' TERM; ");
    sendAndWait(*held, SIGTERM);
    sendAndWait(*held, SIGHUP);
    letTheCommandEnd();
    EXPECT_EQ(held->waitForEnd(), ProcessEnd::exited(7));
}

TEST_F(DaxctlLockHold, EndsSoonAfterCtrlCWhenTheDaemonIsSilentWhichReleasesTheLockLater) {
    const auto held = hold();
    const Stopped silence(desk.daemon());
    held->send(SIGINT);
    EXPECT_EQ(held->waitForEnd(SOON), ProcessEnd::exited(1));
    EXPECT_EQ(held->errors(),
              "started\nInterrupted. The update service does not answer. It has been asked to release the "
              "lock 1, and does so when it goes on.\n");
    silence.end();
    EXPECT_TRUE(desk.waitForMessage("External lock 1 is being released by builder"));
}

// Commands that are in their first call when somebody wants their end.
class DaxctlInSilence : public Daxctl, public WithParamInterface<std::tuple<std::vector<std::string>, int>> {};

TEST_P(DaxctlInSilence, EndsSoonAfterASignal) {
    ASSERT_EQ(daxctl({"status"}).end, ProcessEnd::exited(0));
    const Stopped silence(desk.daemon());
    const auto [arguments, signal] = GetParam();
    const auto process = desk.start("daxctl", arguments);
    ASSERT_TRUE(waitUntil([&] { return !desk.namelessConnectionsOf(process->pid()).empty(); }));
    process->send(signal);
    EXPECT_EQ(process->waitForEnd(SOON), ProcessEnd::exited(1));
    EXPECT_THAT(process->errors(), StartsWith("Interrupted. The update service does not answer. "));
    silence.end();
    if (arguments[0] != "lock") {
        EXPECT_EQ(daxctl({"upgrade", "--name", "other", "--wait=20"}).end, ProcessEnd::exited(0));
    }
}

INSTANTIATE_TEST_SUITE_P(
    WithEachCommand, DaxctlInSilence,
    Combine(Values(std::vector<std::string>{"upgrade"}, std::vector<std::string>{"upgrade", "--wait"},
                   std::vector<std::string>{"lock", "acquire"}, std::vector<std::string>{"lock", "hold", "--", "true"}),
            Values(SIGINT, SIGTERM)));

TEST_F(Daxctl, AnUpgradeInterruptedBeforeItsGrantSaysThatTheDaemonWillEndTheSession) {
    ASSERT_EQ(daxctl({"status"}).end, ProcessEnd::exited(0));
    const Stopped silence(desk.daemon());
    const auto process = desk.start("daxctl", {"upgrade"});
    ASSERT_TRUE(waitUntil([&] { return !desk.namelessConnectionsOf(process->pid()).empty(); }));
    process->send(SIGINT);
    EXPECT_EQ(process->waitForEnd(SOON), ProcessEnd::exited(1));
    EXPECT_EQ(process->errors(), "Interrupted. The update service does not answer. Should it grant the session later, "
                                 "it ends that session itself, since this client leaves the bus.\n");
}

// A command that is interrupted in its call, to which the daemon answers in time.
class DaxctlInterruptedCall : public Daxctl, public WithParamInterface<int> {
protected:
    FinishedRun interrupted(const std::vector<std::string>& arguments) {
        EXPECT_EQ(daxctl({"status"}).end, ProcessEnd::exited(0));
        FinishedRun result;
        // The machine may be too busy for an answer in time.
        for (int attempt = 0; attempt < 5 && (attempt == 0 || isSilence(result)); ++attempt) {
            const Stopped silence(desk.daemon());
            const auto process = desk.start("daxctl", arguments);
            EXPECT_TRUE(waitUntil([&] { return !desk.namelessConnectionsOf(process->pid()).empty(); }));
            process->send(GetParam());
            silence.end();
            result.end = process->waitForEnd(SOON).value_or(ProcessEnd());
            result.output = process->output();
            result.errors = process->errors();
        }
        return result;
    }

private:
    static bool isSilence(const FinishedRun& run) {
        return run.errors.rfind("Interrupted. The update service does not answer. ", 0) == 0;
    }
};

TEST_P(DaxctlInterruptedCall, GivesTheLockBackThatItAcquired) {
    const auto run = interrupted({"lock", "acquire"});
    EXPECT_EQ(run.end, ProcessEnd::exited(1));
    EXPECT_EQ(run.output, "");
    EXPECT_THAT(run.errors, MatchesRegex("Interrupted\\. The lock [0-9]+ has been released\\.\n"));
}

TEST_P(DaxctlInterruptedCall, DoesNotStartTheCommandOfALock) {
    const auto run = interrupted({"lock", "hold", "--json", "--", "touch", (desk.root / "started").string()});
    EXPECT_EQ(run.end, ProcessEnd::exited(128 + GetParam()));
    EXPECT_EQ(run.errors, "Interrupted; touch was not started.\n");
    const auto document = nlohmann::json::parse(run.output);
    EXPECT_EQ(document["status"], 128 + GetParam());
    EXPECT_EQ(document["started"], false);
    EXPECT_EQ(document["kind"], "failed");
    EXPECT_FALSE(std::filesystem::exists(desk.root / "started"));
}

INSTANTIATE_TEST_SUITE_P(ByEachSignal, DaxctlInterruptedCall, Values(SIGINT, SIGTERM));

TEST_F(Daxctl, ALockWhoseNumberGoesToAClosedOutputIsReleased) {
    int lock = 0;
    for (const char* const arguments : {"lock acquire >&-", "lock acquire --json <&- >&-"}) {
        const std::string number = std::to_string(++lock);
        const auto process = desk.startByShell("daxctl", arguments);
        EXPECT_EQ(process->waitForEnd(), ProcessEnd::exited(1));
        EXPECT_EQ(process->errors(), "daxctl: The standard output cannot be written: Bad file descriptor\n");
        EXPECT_EQ(desk.countMessages("External lock " + number + " is being released by daxctl"), 1);
    }
}

TEST_F(Daxctl, AnOutputThatIsClosedIsAFailure) {
    for (const std::string arguments : {"status", "status --json", "search"}) {
        const auto process = desk.startByShell("daxctl", arguments + " >&-");
        EXPECT_EQ(process->waitForEnd(), ProcessEnd::exited(1)) << arguments;
        EXPECT_THAT(process->errors(), EndsWith("The standard output cannot be written: Bad file descriptor\n"));
    }
}

// Commands whose reader stands still, with a pipe that is full.
class DaxctlStuckOutput : public Daxctl {
protected:
    DaxctlStuckOutput() {
        EXPECT_EQ(::mkfifo(m_path.c_str(), 0600), 0);
        m_pipe = DAX::Common::Utils::FileDescriptor(::open(m_path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC));
        while (::write(m_pipe.get(), "x", 1) == 1) {
        }
    }

    // Until the message has been logged, when the signal comes.
    std::unique_ptr<Process> interruptAfter(const std::string& message, const std::string& arguments) {
        auto process = desk.startByShell("daxctl", arguments + " > " + m_path);
        EXPECT_TRUE(desk.waitForMessage(message));
        process->send(SIGINT);
        return process;
    }

private:
    const std::string m_path = (desk.root / "pipe").string();
    DAX::Common::Utils::FileDescriptor m_pipe;
};

TEST_F(DaxctlStuckOutput, GivesTheLockBackAtCtrlC) {
    int lock = 0;
    for (const char* const arguments : {"lock acquire", "lock acquire --json"}) {
        const std::string number = std::to_string(++lock);
        const auto process = interruptAfter("External lock " + number + " is acquired by daxctl", arguments);
        EXPECT_EQ(process->waitForEnd(SOON), ProcessEnd::exited(1));
        EXPECT_EQ(desk.countMessages("External lock " + number + " is being released by daxctl"), 1);
    }
}

TEST_F(DaxctlStuckOutput, DoesNotHoldUpTheEndOfALockHold) {
    const auto process = interruptAfter("External lock 1 is being released by daxctl", "lock hold --json -- true");
    EXPECT_EQ(process->waitForEnd(SOON), ProcessEnd::exited(1));
    EXPECT_EQ(process->errors(), "daxctl: The standard output cannot be written: nobody reads it\n");
}

TEST_F(Daxctl, AnInterruptionInSilenceIsTheSameInJson) {
    ASSERT_EQ(daxctl({"status"}).end, ProcessEnd::exited(0));
    const Stopped silence(desk.daemon());
    const auto process = desk.start("daxctl", {"search", "--json"});
    ASSERT_TRUE(waitUntil([&] { return !desk.namelessConnectionsOf(process->pid()).empty(); }));
    process->send(SIGINT);
    EXPECT_EQ(process->waitForEnd(SOON), ProcessEnd::exited(1));
    EXPECT_EQ(nlohmann::json::parse(process->output()),
              nlohmann::json::parse(R"({"outcome": "interrupted", "kind": "failed"})"));
}

TEST_F(Daxctl, CtrlCInSilenceEndsARunningUpgradeWhichTheDaemonCancelsLater) {
    const auto client = holder("updater", "3");
    const Stopped silence(desk.daemon());
    client->send(SIGINT);
    EXPECT_EQ(client->waitForEnd(SOON), ProcessEnd::exited(1));
    EXPECT_EQ(client->errors(), "Search: started\nInterrupted. The update service does not answer. It ends the session "
                                "itself, since this client leaves the bus.\n");
    silence.end();
    EXPECT_TRUE(desk.waitForCoreCall("cancelCoreTransaction"));
}

TEST_F(Daxctl, FactoryResetReachesTheCore) {
    EXPECT_EQ(daxctl({"factory-reset"}).end, ProcessEnd::exited(0));
    EXPECT_THAT(desk.coreMethods(), ElementsAre("scheduleFactoryReset"));
    EXPECT_EQ(desk.countMessages("Calling factoryReset for core."), 1);
}

TEST_F(Daxctl, WrongUsageIsStatus2) {
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{},
                                                      {"nonsense"},
                                                      {"upgrade", "--priority", "high"},
                                                      {"upgrade", "--type", "MAIL"},
                                                      {"lock"},
                                                      {"lock", "release"},
                                                      {"lock", "hold"}}) {
        EXPECT_EQ(daxctl(arguments).end, ProcessEnd::exited(2));
    }
    EXPECT_EQ(desk.daemon(), 0);
}

TEST_F(Daxctl, HelpIsEverywhere) {
    for (const std::vector<std::string>& command : {std::vector<std::string>{},
                                                    {"status"},
                                                    {"upgrade"},
                                                    {"search"},
                                                    {"lock"},
                                                    {"lock", "acquire"},
                                                    {"lock", "release"},
                                                    {"lock", "hold"},
                                                    {"factory-reset"}}) {
        auto arguments = command;
        arguments.push_back("--help");
        const auto help = daxctl(arguments);
        EXPECT_EQ(help.end, ProcessEnd::exited(0));
        EXPECT_THAT(help.output, HasSubstr("--json"));
    }
}

TEST_F(Daxctl, TheHelpOfATypeShowsItsWords) {
    for (const char* const command : {"upgrade", "search"}) {
        EXPECT_THAT(daxctl({command, "--help"}).output, HasSubstr("--type UNDEFINED|OTA|OTN|USB|POSTPONE"));
    }
}

TEST_F(Daxctl, TheHelpOfLocksSaysWhatTheServiceDoesNotTell) {
    EXPECT_THAT(daxctl({"lock", "--help"}).output,
                AllOf(HasSubstr("The service answers no question for the locks in force, their holders, priorities or "
                                "ages, so nothing here lists them."),
                      HasSubstr("Exit status: ")));
}

// Each exception of the core reaches the client with its name, support code and text.
class CoreException : public Daxctl, public WithParamInterface<const char*> {};

TEST_P(CoreException, IsShownByNameSupportCodeAndText) {
    desk.play(withFault("startInstallation",
                        std::string("exception=") + GetParam() + "\nsupport_code=E-42\ntext=It is broken."));
    const auto run = daxctl({"upgrade"});
    EXPECT_EQ(run.end, ProcessEnd::exited(1));
    EXPECT_THAT(run.errors, HasSubstr(std::string("daxctl: ") + GetParam() + " (support code E-42): It is broken.\n"));
    const auto error = jsonOf({"upgrade"})["error"];
    EXPECT_EQ(error["name"], GetParam());
    EXPECT_TRUE(error["kind"].is_string());
    EXPECT_EQ(error["supportCode"], "E-42");
    EXPECT_EQ(error["text"], "It is broken.");
    EXPECT_THAT(
        error["diagnostic"].get<std::string>(),
        AllOf(StartsWith(std::string("Remote method 'startInstallation' raised '") + GetParam() + "' with {\n"),
              HasSubstr(std::string("Remote method 'startInstallation' raised '") + GetParam() + "' with {\n")));
}

INSTANTIATE_TEST_SUITE_P(OfEveryName, CoreException,
                         Values("TransactionInvalidatedException", "CUpdateFailed", "CUSBReadError",
                                "CNetworkTransferError", "CUSBImageCorrupted", "CUSBDecryptionError", "CImageCorrupted",
                                "CWrongKeys", "CImageLacksIntegrity", "ExternalLockDenied",
                                "CWildcardImageNotAllowedException", "InsufficientRWStorageSpace",
                                "DAXUnknownException"),
                         [](const auto& name) { return std::string(name.param); });

TEST_F(Daxctl, ACoreThatRefusesATransactionIsAFailure) {
    desk.play("[core]\nrefuse_transactions=true\n");
    const auto run = daxctl({"upgrade"});
    EXPECT_EQ(run.end, ProcessEnd::exited(1));
    EXPECT_THAT(run.errors, HasSubstr("DAXUnknownException: Core refused to create a transaction."));
}

TEST_F(Daxctl, ACoreThatStallsOnlyDelaysTheCall) {
    desk.play(withFault("startInstallation", "stall_seconds=0.5\ncall=1"));
    EXPECT_EQ(daxctl({"upgrade"}).end, ProcessEnd::exited(0));
}

} // namespace
} // namespace DAX::Tests
