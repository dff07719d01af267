#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <unistd.h>

#include "scripts/ScriptTree.h"
#include "support/Terminal.h"
#include "support/WaitUntil.h"

namespace DAX::Tests {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

const char STATUS[] = "daemon            was not running; this has started it\n"
                      "owner             nobody\n"
                      "version           1000\n"
                      "supported types   OTA, OTN, USB\n"
                      "last search       none known\n"
                      "installation lock no\n"
                      "external lock     none that blocks\n";

const char TRY_HELP[] = "\nTry scripts/desk --help.\n";

bool canRun(const std::string& program) {
    return !printedBy("command -v " + program).empty();
}

// Has the file of a process this text?
bool fileOfProcessHas(const fs::path& file, const std::string& text) {
    std::ostringstream content;
    content << std::ifstream(file, std::ios::binary).rdbuf();
    return content.str().find(text) != std::string::npos;
}

// The script as a person has it, with the programs of this build. All temporary files of its desks are in one folder,
// and all their processes have its name in their environment.
class Desk : public ScriptTree {
protected:
    Desk() : ScriptTree({"desk", "desk.py", "desk_keeper.py"}), m_temporary(m_tree / "tmp") {
        for (const int number : {SIGINT, SIGTERM, SIGHUP}) { // whoever runs the tests may have them ignored
            std::signal(number, SIG_DFL);
        }
        fs::create_directory(m_temporary);
        fs::create_directory(m_tree / "home");
    }

    // Whatever a test did: nothing of a desk is left when its script has ended.
    ~Desk() override { expectNothingLeft(); }

    void expectNothingLeft() const {
        EXPECT_TRUE(waitUntil([this] { return processes().empty() && fs::is_empty(m_temporary); }))
            << processes().size() << " processes are left";
    }

    Environment environment() const {
        return {{"TMPDIR", m_temporary.string()}, {"HOME", (m_tree / "home").string()},
                {"TMUX", std::nullopt},           {"TERM", "xterm"},
                {"SHELL", "/bin/bash"},           {"PS1", "$ "}};
    }

    Command command(const Arguments& arguments, const Arguments& options = {}) const {
        Command result = commandOf(m_tree / "scripts/desk", environment(), {"--programs", DAX_PROGRAMS});
        result.line.insert(result.line.end(), options.begin(), options.end());
        if (!arguments.empty()) {
            result.line.emplace_back("--");
        }
        result.line.insert(result.line.end(), arguments.begin(), arguments.end());
        return result;
    }

    // Runs a line of shell at a desk with these options.
    FinishedRun at(const Arguments& options, const std::string& line) const {
        return run(command({"bash", "-c", line}, options), LONGEST_SCRIPT);
    }
    FinishedRun at(const std::string& line) const { return at({}, line); }

    // Runs the script with options alone.
    FinishedRun desk(const Arguments& words) const { return runScript("desk", environment(), words); }

    void expectRefused(const Arguments& words, const std::string& why) const {
        const FinishedRun finished = desk(words);
        EXPECT_EQ(finished.errors, "scripts/desk: " + why);
        EXPECT_EQ(finished.output, "");
        EXPECT_EQ(finished.end, ProcessEnd::exited(2));
        expectNothingLeft();
    }

    // The processes of the tests' desks, the script itself and its keeper among them.
    std::vector<pid_t> processes() const {
        const std::string mark = "TMPDIR=" + m_temporary.string() + '\0';
        std::vector<pid_t> found;
        for (const auto& entry : fs::directory_iterator("/proc")) {
            const std::string name = entry.path().filename().string();
            if (name.find_first_not_of("0123456789") == std::string::npos &&
                fileOfProcessHas(entry.path() / "environ", mark)) {
                found.push_back(std::stoi(name));
            }
        }
        return found;
    }

    // The parent of the bus.
    pid_t keeper() const {
        for (const pid_t pid : processes()) {
            if (fileOfProcessHas("/proc/" + std::to_string(pid) + "/cmdline", "dbus-daemon")) {
                return std::stoi(printedBy("sed -n 's/^PPid://p' /proc/" + std::to_string(pid) + "/status"));
            }
        }
        return 0;
    }

    // A desk whose command has called the daemon and the core, and goes on.
    std::unique_ptr<Process> busyDesk(const std::string& goesOn = "exec sleep 1000") const {
        auto process = std::make_unique<Process>(
            command({"bash", "-c", "daxctl status && sleep 1000 & daxctl status && echo ready && " + goesOn}));
        EXPECT_TRUE(process->waitForOutput("ready")) << process->errors();
        return process;
    }

    // A folder for PATH with what the script needs.
    std::string pathOf(const std::vector<std::string>& programs) const {
        folderWithInterpreter(m_tree / "bin");
        for (const std::string& program : programs) {
            fs::create_symlink(printedBy("command -v " + program), m_tree / ("bin/" + program));
        }
        return (m_tree / "bin").string();
    }

    const fs::path m_temporary;
};

TEST_F(Desk, RunsACommandThatReachesTheDaemonTheCoreAndTheDevice) {
    const FinishedRun finished = at("daxctl status && kovanctl power");
    EXPECT_EQ(finished.output, std::string(STATUS) + "state           0 (normal)\n"
                                                     "wake-up reason  0\n"
                                                     "requests        none\n");
    EXPECT_EQ(finished.errors, "");
    EXPECT_EQ(finished.end, ProcessEnd::exited(0));
}

TEST_F(Desk, EndsAsItsCommandDoes) {
    EXPECT_EQ(at("exit 7").end, ProcessEnd::exited(7));
    EXPECT_EQ(at("kill -TERM $$").end, ProcessEnd::killedBy(SIGTERM));
    EXPECT_EQ(at("kill -INT $$").end, ProcessEnd::killedBy(SIGINT));
    EXPECT_EQ(at("kill -KILL $$").end, ProcessEnd::exited(128 + SIGKILL));
}

TEST_F(Desk, SaysThatThereIsNoSuchCommand) {
    const FinishedRun missing = run(command({"no-such-command"}), LONGEST_SCRIPT);
    EXPECT_EQ(missing.errors, "scripts/desk: no-such-command: command not found\n");
    EXPECT_EQ(missing.end, ProcessEnd::exited(127));
    const FinishedRun folder = run(command({"/etc"}), LONGEST_SCRIPT);
    EXPECT_EQ(folder.errors, "scripts/desk: /etc: Permission denied\n");
    EXPECT_EQ(folder.end, ProcessEnd::exited(126));
}

TEST_F(Desk, TakesAwayWhatItsCommandLeavesRunning) {
    EXPECT_EQ(at("daxctl status >/dev/null; sleep 1000 & (trap '' TERM HUP; setsid sleep 1000) & DAXService &").end,
              ProcessEnd::exited(0));
    EXPECT_THAT(processes(), ElementsAre());
    EXPECT_TRUE(fs::is_empty(m_temporary));
}

TEST_F(Desk, TakesAwayAProcessThatIsStopped) {
    EXPECT_EQ(at("sleep 1000 & kill -STOP $!").end, ProcessEnd::exited(0));
    EXPECT_THAT(processes(), ElementsAre());
}

// Its own parent has ended as well.
TEST_F(Desk, TakesAwayAProgramThatHasClearedItsEnvironment) {
    const fs::path number = m_tree / "number";
    const std::string start = "setsid -f env -i sh -c 'echo $$ >" + number.string() + "; exec sleep 1000'";
    EXPECT_EQ(at(start + "; until test -s " + number.string() + "; do sleep 0.02; done").end, ProcessEnd::exited(0));
    EXPECT_NE(m_tree.read("number"), "");
    EXPECT_FALSE(fs::exists("/proc/" + m_tree.read("number").substr(0, m_tree.read("number").find('\n'))));
}

TEST_F(Desk, LeavesNoDeadProcessWhileItIsOpen) {
    const std::string number = (m_tree / "number").string();
    const std::string start = "setsid -f env -i sh -c 'echo $$ >" + number + "'; until test -s " + number;
    EXPECT_EQ(at(start + "; do sleep 0.02; done; while test -e /proc/$(cat " + number + "); do sleep 0.02; done").end,
              ProcessEnd::exited(0));
}

TEST_F(Desk, PutsTheLogsAtHand) {
    const FinishedRun finished = at("daxctl status >/dev/null; desk log | grep -o 'Service Manager is started.'; "
                                    "desk core | grep -o -m 1 '\\[DAXCoreSimulator-'; "
                                    "desk calls | sed 's/.*\"method\":\"//; s/\".*//'; "
                                    "desk errors | grep -c 'Successfully activated service'");
    EXPECT_EQ(finished.output, "Service Manager is started.\n"
                               "[DAXCoreSimulator-\n"
                               "getCurrentVersion\n"
                               "getSupportedUpgradeTypes\n"
                               "2\n");
    EXPECT_EQ(finished.errors, "");
}

TEST_F(Desk, SaysThatThereIsNoLogYet) {
    const FinishedRun finished = at("desk log");
    EXPECT_THAT(finished.errors, StartsWith("scripts/desk: nothing has been written yet to "));
    EXPECT_EQ(finished.end, ProcessEnd::exited(1));
}

TEST_F(Desk, FollowsALogThatIsNotThereYet) {
    const FinishedRun finished = at(
        "exec 3< <(desk log -f 2>/dev/null); daxctl status >/dev/null; grep -o -m 1 'Service Manager is started.' <&3");
    EXPECT_EQ(finished.output, "Service Manager is started.\n");
}

TEST_F(Desk, KeepsWhatProgramsSayOnTheirStandardError) {
    const FinishedRun finished = at("echo nonsense >$KOVAN_ROOT/etc/kovan/device.ini; daxctl status >/dev/null 2>&1; "
                                    "desk errors | grep -o -m 1 'device.ini: line 1: .*“nonsense”'");
    EXPECT_EQ(finished.output, "device.ini: line 1: Key file contains line “nonsense”\n");
}

TEST_F(Desk, StopsTheDaemonAndTheCoreUntilTheyAreCalled) {
    const FinishedRun finished = at("daxctl status >/dev/null; desk stop daemon; desk stop core; desk stop core; "
                                    "daxctl status >/dev/null; desk log | grep -c 'Service Manager is started.'");
    EXPECT_EQ(finished.output, "2\n");
    EXPECT_EQ(finished.errors, "scripts/desk: the core is not running\n");
}

TEST_F(Desk, StopsAsAWhole) {
    const FinishedRun finished = at("desk stop; sleep 1000");
    EXPECT_EQ(finished.end, ProcessEnd::exited(0));
    EXPECT_THAT(processes(), ElementsAre());
}

TEST_F(Desk, TellsAnotherTerminalWhatItNeeds) {
    const FinishedRun finished =
        at("desk environment >$DESK/it; env -i PATH=$PATH HOME=/ bash -c '. '$DESK'/it; daxctl status; echo $DESK'");
    EXPECT_THAT(finished.output, StartsWith(STATUS));
    EXPECT_THAT(finished.output, HasSubstr("\n" + m_temporary.string() + "/desk-"));
}

TEST_F(Desk, RefusesItsWordsWhereThereIsNoDesk) {
    for (const char* const word : {"log", "core", "calls", "errors", "stop", "environment"}) {
        expectRefused({word}, std::string("this is not the shell of a desk") + TRY_HELP);
    }
}

TEST_F(Desk, RefusesWordsThatItDoesNotKnow) {
    const FinishedRun finished = at("desk log --all; desk stop bus; desk environment x");
    EXPECT_EQ(finished.errors, std::string("scripts/desk: 'desk log' takes -f and nothing else") + TRY_HELP +
                                   "scripts/desk: 'desk stop' takes 'daemon', 'core' or nothing" + TRY_HELP +
                                   "scripts/desk: 'desk environment' takes nothing" + TRY_HELP);
    EXPECT_EQ(finished.end, ProcessEnd::exited(2));
}

TEST_F(Desk, RefusesWrongUsageAndStartsNothing) {
    const std::string programs = DAX_PROGRAMS;
    expectRefused({"--programs", programs, "--colour"}, std::string("there is no option --colour") + TRY_HELP);
    expectRefused({"--programs", programs, "daxctl", "status"},
                  std::string("a command stands behind --: scripts/desk -- daxctl status") + TRY_HELP);
    expectRefused({"--programs", programs, "--"}, std::string("no command stands behind --") + TRY_HELP);
    expectRefused({"--programs", programs, "--keep"}, std::string("argument --keep: expected one argument") + TRY_HELP);
    expectRefused({"--programs", "/etc"}, std::string("there is no program DAXService in /etc") + TRY_HELP);
    expectRefused({"--programs", programs, "--scenario", "/missing.ini"},
                  std::string("the scenario /missing.ini: No such file or directory") + TRY_HELP);
    expectRefused({"--programs", programs, "--scenario", "/etc"},
                  std::string("the scenario /etc is no regular file") + TRY_HELP);
}

TEST_F(Desk, PrintsItsHelp) {
    const FinishedRun finished = desk({"--help"});
    EXPECT_THAT(finished.output, StartsWith("usage: scripts/desk [OPTION...] [-- COMMAND [ARGUMENT...]]\n"));
    EXPECT_EQ(finished.end, ProcessEnd::exited(0));
}

TEST_F(Desk, PlaysACopyOfTheScenario) {
    write("mine.ini", "[core]\nversion=4711\n");
    const FinishedRun finished = at({"--scenario", (m_tree / "mine.ini").string()},
                                    "daxctl status | grep version; rm $KOVAN_ROOT/etc/kovan/core-scenario.ini");
    EXPECT_EQ(finished.output, "version           4711\n");
    EXPECT_EQ(m_tree.read("mine.ini"), "[core]\nversion=4711\n");
}

TEST_F(Desk, RefusesAScenarioThatTheCoreDoesNotUnderstand) {
    write("mine.ini", "[core]\nversoin=4711\n");
    const FinishedRun finished = at({"--scenario", (m_tree / "mine.ini").string()}, "true");
    EXPECT_THAT(finished.errors, StartsWith("scripts/desk: " + (m_tree / "mine.ini").string() + ": "));
    EXPECT_THAT(finished.errors, HasSubstr("versoin"));
    EXPECT_EQ(finished.end, ProcessEnd::exited(2));
}

TEST_F(Desk, MakesTheDeviceOneWithProductionSoftware) {
    EXPECT_EQ(at({"--production"}, "kovanctl info get software/production").output, "true\n");
    EXPECT_EQ(at("kovanctl info get software/production").output, "false\n");
}

TEST_F(Desk, KeepsItsFilesAndBeginsWithThem) {
    const Arguments keep = {"--keep", (m_tree / "kept 'desk' äöü").string()};
    const FinishedRun first = at(keep, "daxctl search >/dev/null 2>&1; kovanctl setting set db/one int 1; echo $DESK");
    EXPECT_EQ(first.output, keep.back() + "\n") << first.errors;
    EXPECT_TRUE(fs::exists(fs::path(keep.back()) / "daemon.log"));
    EXPECT_TRUE(fs::exists(fs::path(keep.back()) / "core.log"));

    const FinishedRun second = at(keep, "kovanctl setting get db/one; daxctl status | grep -c 'search .*none known'");
    EXPECT_EQ(second.output, "1\n0\n") << second.errors;
}

TEST_F(Desk, KeepsNothingInAFolderWithOtherFiles) {
    write("mine/file", "");
    const FinishedRun finished = at({"--keep", (m_tree / "mine").string()}, "true");
    EXPECT_EQ(finished.errors, "scripts/desk: " + (m_tree / "mine").string() +
                                   " has files, but no desk was kept there; name an empty folder or a new one\n");
    EXPECT_EQ(finished.end, ProcessEnd::exited(2));
    EXPECT_THAT(fs::directory_iterator(m_tree / "mine")->path().filename(), "file");
}

TEST_F(Desk, DoesNotShareAFolder) {
    const std::string folder = (m_tree / "kept").string();
    const FinishedRun finished = at({"--keep", folder}, "'" + (m_tree / "scripts/desk").string() + "' --programs '" +
                                                            DAX_PROGRAMS + "' --keep '" + folder + "' -- true");
    EXPECT_EQ(finished.errors, "scripts/desk: " + folder + " is in use by another desk\n");
    EXPECT_EQ(finished.end, ProcessEnd::exited(2));
}

TEST_F(Desk, KeepsNothingWhereItCannotMakeTheFolder) {
    const std::string folder = (m_tree / "no/such").string();
    const FinishedRun finished = at({"--keep", folder}, "true");
    EXPECT_EQ(finished.errors, "scripts/desk: " + folder + ": No such file or directory\n");
    EXPECT_EQ(finished.end, ProcessEnd::exited(2));
}

TEST_F(Desk, LeavesNothingWhenItsBusDoesNotStart) {
    const std::string path = pathOf({"setpriv", "env"});
    writeProgram("bin/dbus-daemon", "#!/bin/sh\necho 'no bus today' >&2\n");
    Command start = command({"/bin/true"}, {"--keep", (m_tree / "kept").string()});
    start.environment["PATH"] = path;
    const FinishedRun finished = run(start, LONGEST_SCRIPT);
    EXPECT_EQ(finished.errors, "scripts/desk: the bus did not start: no bus today\n");
    EXPECT_EQ(finished.end, ProcessEnd::exited(1));
    EXPECT_FALSE(fs::exists(m_tree / "kept"));
}

TEST_F(Desk, LeavesNothingWhenItIsEndedWhileItsBusStarts) {
    const std::string path = pathOf({"setpriv", "env", "sleep", "touch"});
    writeProgram("bin/dbus-daemon", "#!/bin/sh\ntouch '" + (m_tree / "starting").string() + "'\nsleep 1000\n");
    Command start = command({"/bin/true"});
    start.environment["PATH"] = path;
    Process process(start);
    ASSERT_TRUE(waitUntil([this] { return fs::exists(m_tree / "starting"); })) << process.errors();
    process.send(SIGTERM);
    EXPECT_EQ(process.waitForEnd(), ProcessEnd::killedBy(SIGTERM));
    EXPECT_THAT(processes(), ElementsAre());
}

class EndedDesk : public Desk, public testing::WithParamInterface<int> {};

TEST_P(EndedDesk, LeavesNothing) {
    const auto process = busyDesk();
    process->send(GetParam());
    EXPECT_EQ(process->waitForEnd(), ProcessEnd::killedBy(GetParam()));
}

// Once by each signal, and once by the one that nobody can handle.
INSTANTIATE_TEST_SUITE_P(BySignal, EndedDesk, testing::Values(SIGTERM, SIGHUP, SIGINT, SIGKILL));

TEST_F(Desk, LeavesNothingWhenItsCommandTakesNoNoticeOfSigterm) {
    const auto process = busyDesk("trap '' TERM HUP && exec sleep 1000");
    process->send(SIGTERM);
    EXPECT_EQ(process->waitForEnd(), ProcessEnd::killedBy(SIGTERM));
    EXPECT_THAT(processes(), ElementsAre());
}

TEST_F(Desk, LeavesNothingWhenItsKeeperIsKilled) {
    const auto process = busyDesk();
    ::kill(keeper(), SIGKILL);
    process->send(SIGTERM);
    EXPECT_TRUE(process->waitForEnd());
    EXPECT_THAT(processes(), ElementsAre());
    EXPECT_TRUE(fs::is_empty(m_temporary));
}

TEST_F(Desk, WorksInsideADesk) {
    const std::string inner = "'" + (m_tree / "scripts/desk").string() + "' --programs '" + DAX_PROGRAMS + "' -- ";
    const FinishedRun finished =
        at("kovanctl setting set db/one int 1; " + inner +
           "kovanctl setting get db/one; kovanctl setting get db/one; " + inner + inner + "daxctl status");
    EXPECT_EQ(finished.output, std::string("1\n") + STATUS) << finished.errors;
}

TEST_F(Desk, TakesAwayTheDesksInsideIt) {
    const auto process = busyDesk("'" + (m_tree / "scripts/desk").string() + "' --programs '" + DAX_PROGRAMS +
                                  "' -- sh -c 'daxctl status && echo inside && exec sleep 1000'");
    ASSERT_TRUE(process->waitForOutput("inside"));
    process->send(SIGKILL);
    EXPECT_EQ(process->waitForEnd(), ProcessEnd::killedBy(SIGKILL));
}

TEST_F(Desk, WorksInFoldersWithUnusualNames) {
    const fs::path odd = m_tree / "tmp/a 'b' \"c\" \\ $d;%20<e>&äöü";
    fs::create_directory(odd);
    fs::create_directory_symlink(DAX_PROGRAMS, m_tree / "pro grams' \\$x");
    Command start = commandOf(m_tree / "scripts/desk", environment(),
                              {"--programs", (m_tree / "pro grams' \\$x").string(), "--", "daxctl", "status"});
    start.environment["TMPDIR"] = odd.string();
    const FinishedRun finished = run(start, LONGEST_SCRIPT);
    EXPECT_EQ(finished.output, STATUS) << finished.errors;
    EXPECT_TRUE(fs::is_empty(odd));
    fs::remove(odd);
}

TEST_F(Desk, RefusesAFolderWithALineEndInItsName) {
    const std::string keep = (m_tree / "ke\nep").string();
    expectRefused({"--programs", DAX_PROGRAMS, "--keep", keep, "--", "true"},
                  "--keep: there is a line end in the name '" + m_tree.path().string() + "/ke\\nep'\n");
    EXPECT_FALSE(fs::exists(keep));
    fs::create_directory(m_tree / "pro\rgrams");
    for (const char* const name : {"DAXService", "DAXCoreSimulator", "daxctl", "kovanctl"}) {
        fs::create_symlink(fs::path(DAX_PROGRAMS) / name, m_tree / "pro\rgrams" / name);
    }
    expectRefused({"--programs", (m_tree / "pro\rgrams").string(), "--", "true"},
                  "the folder of the programs: there is a line end in the name '" + m_tree.path().string() +
                      "/pro\\rgrams'\n");
    fs::create_directory(m_tree / "t\nmp");
    Command there = command({"true"});
    there.environment["TMPDIR"] = (m_tree / "t\nmp").string();
    const FinishedRun finished = run(there);
    EXPECT_EQ(finished.errors, "scripts/desk: the folder for temporary files: there is a line end in the name '" +
                                   m_tree.path().string() + "/t\\nmp'\n");
    EXPECT_EQ(finished.end, ProcessEnd::exited(2));
    EXPECT_TRUE(fs::is_empty(m_tree / "t\nmp"));
}

TEST_F(Desk, WorksWhereTheFolderForTemporaryFilesHasALongName) {
    const fs::path longName = m_tree / ("tmp/" + std::string(100, 'x'));
    fs::create_directory(longName);
    Command start = command({"daxctl", "status"});
    start.environment["TMPDIR"] = longName.string();
    EXPECT_EQ(run(start, LONGEST_SCRIPT).output, STATUS);
    fs::remove(longName);
}

TEST_F(Desk, TakesItsCommandsFromItsInputWhereThereIsNoTerminal) {
    Command start = command({});
    start.input = "daxctl status\nexit 4\n";
    const FinishedRun finished = run(start, LONGEST_SCRIPT);
    EXPECT_EQ(finished.output, STATUS);
    EXPECT_EQ(finished.errors, "");
    EXPECT_EQ(finished.end, ProcessEnd::exited(4));
}

TEST_F(Desk, WorksForAnOrdinaryUserWithoutAHome) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only the superuser can become another user";
    }
    fs::permissions(m_tree.path(), fs::perms(0755));
    fs::permissions(m_temporary, fs::perms(01777));
    for (const char* const script : {"scripts/desk", "scripts/desk.py", "scripts/desk_keeper.py"}) {
        fs::permissions(m_tree / script, fs::perms(0755));
    }
    const std::string python = printedBy("python3 -c 'import sys; print(sys.executable)'");
    const std::string interpreter = fs::exists("/usr/bin/python3") ? "/usr/bin/python3" : python;
    Command start = command({"sh", "-c", "daxctl status; id -u"});
    start.line.front() = (m_tree / "scripts/desk.py").string();
    start.line.insert(start.line.begin(), interpreter);
    const std::vector<std::string> asNobody = {"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"};
    start.line.insert(start.line.begin(), asNobody.begin(), asNobody.end());
    start.environment["HOME"] = "/nonexistent";
    const FinishedRun finished = run(start, LONGEST_SCRIPT);
    EXPECT_EQ(finished.output, std::string(STATUS) + "65534\n") << finished.errors;
}

// The interactive shell.

class DeskAtATerminal : public Desk {
protected:
    // Runs the script under a shell, as a person does, so that its end shows.
    std::unique_ptr<Terminal> open(const Arguments& options = {}, const Arguments& words = {}) const {
        Command start = command(words, options);
        start.line.insert(start.line.begin(), {"bash", "-c", "\"$@\"; echo \"ended with $?.\"", "bash"});
        return std::make_unique<Terminal>(start);
    }

    static void expectEnd(Terminal& terminal, int status) {
        EXPECT_TRUE(terminal.waitFor("ended with " + std::to_string(status) + ".")) << terminal.text();
        EXPECT_EQ(terminal.waitForEnd(), ProcessEnd::exited(0));
    }
};

// Types a line, and waits until `cat` at the terminal has written it again. From then on the program does nothing but
// wait, so a signal cannot come in between two of its steps and be lost there, as in a shell.
bool isCat(Terminal& terminal) {
    if (!terminal.waitFor("begun\r\n")) {
        return false;
    }
    terminal.type("hello\r");
    return terminal.waitFor("hello\r\nhello\r\n");
}

const char PROMPT_OF_DESK[] = "\x1b[1;36m[desk]\x1b[0m ";

TEST_F(DeskAtATerminal, OpensAShellWhosePromptSaysSo) {
    const auto terminal = open();
    EXPECT_TRUE(terminal->waitFor("A desk of its own: ")) << terminal->text();
    EXPECT_TRUE(terminal->waitFor(PROMPT_OF_DESK)) << terminal->text();
    terminal->type("daxctl status\r");
    EXPECT_TRUE(terminal->waitFor("supported types   OTA, OTN, USB")) << terminal->text();
    terminal->type("exit 3\r");
    expectEnd(*terminal, 3);
}

TEST_F(DeskAtATerminal, PutsItsLabelBeforeAPromptThatIsMadeAnewForEachCommand) {
    write("home/.bashrc", "PROMPT_COMMAND='PS1=\"mine: \"'; PATH=/usr/bin:/bin\n");
    const auto terminal = open();
    EXPECT_TRUE(terminal->waitFor(std::string(PROMPT_OF_DESK) + "mine: ")) << terminal->text();
    terminal->type("daxctl --help >/dev/null && echo it is \"there\"\r");
    EXPECT_TRUE(terminal->waitFor("it is there\r\n")) << terminal->text();
    EXPECT_TRUE(terminal->waitFor(std::string(PROMPT_OF_DESK) + "mine: ")) << terminal->text();
    terminal->type("\x04");
    expectEnd(*terminal, 0);
}

TEST_F(DeskAtATerminal, CountsDesksInDesks) {
    const auto terminal = open();
    EXPECT_TRUE(terminal->waitFor(PROMPT_OF_DESK)) << terminal->text();
    terminal->type("desk --programs '" + std::string(DAX_PROGRAMS) + "'\r");
    EXPECT_TRUE(terminal->waitFor("\x1b[1;36m[desk 2]\x1b[0m ")) << terminal->text();
    terminal->type("exit\r");
    EXPECT_TRUE(terminal->waitFor(PROMPT_OF_DESK)) << terminal->text();
    terminal->type("exit\r");
    expectEnd(*terminal, 0);
}

TEST_F(DeskAtATerminal, LeavesCtrlCToTheShell) {
    const auto terminal = open();
    EXPECT_TRUE(terminal->waitFor(PROMPT_OF_DESK)) << terminal->text();
    terminal->type("bash -c 'echo be\"gun\"; exec cat'\r");
    EXPECT_TRUE(isCat(*terminal)) << terminal->text();
    terminal->type("\x03");
    EXPECT_TRUE(terminal->waitFor(PROMPT_OF_DESK)) << terminal->text();
    terminal->type("daxctl status; exit\r");
    EXPECT_TRUE(terminal->waitFor("installation lock no")) << terminal->text();
    expectEnd(*terminal, 0);
}

TEST_F(DeskAtATerminal, LeavesCtrlCToTheCommand) {
    const auto terminal = open({}, {"bash", "-c", "trap 'echo caught; exit 5' INT; echo begun; cat"});
    EXPECT_TRUE(isCat(*terminal)) << terminal->text();
    terminal->type("\x03");
    EXPECT_TRUE(terminal->waitFor("caught")) << terminal->text();
    expectEnd(*terminal, 5);
}

TEST_F(DeskAtATerminal, LeavesNothingAfterCtrlC) {
    const auto terminal = open({}, {"bash", "-c", "daxctl status; echo begun; exec cat"});
    EXPECT_TRUE(isCat(*terminal)) << terminal->text();
    terminal->type("\x03");
    EXPECT_TRUE(terminal->waitForEnd()) << terminal->text();
    expectNothingLeft();
}

TEST_F(DeskAtATerminal, LeavesNothingWhenItsTerminalIsClosed) {
    const auto terminal = open();
    EXPECT_TRUE(terminal->waitFor(PROMPT_OF_DESK)) << terminal->text();
    terminal->type("daxctl status\r");
    EXPECT_TRUE(terminal->waitFor("installation lock no")) << terminal->text();
    terminal->hangUp();
    expectNothingLeft();
}

TEST_F(DeskAtATerminal, LeavesNothingWhenItsShellIsKilled) {
    const auto terminal = open();
    EXPECT_TRUE(terminal->waitFor(PROMPT_OF_DESK)) << terminal->text();
    terminal->type("daxctl status; kill -KILL $$\r");
    expectEnd(*terminal, 128 + SIGKILL);
    expectNothingLeft();
}

TEST_F(DeskAtATerminal, EndsItsShellAtSigterm) {
    Terminal terminal(command({}));
    EXPECT_TRUE(terminal.waitFor(PROMPT_OF_DESK)) << terminal.text();
    ::kill(terminal.pid(), SIGTERM);
    EXPECT_EQ(terminal.waitForEnd(), ProcessEnd::killedBy(SIGTERM));
    expectNothingLeft();
}

// The monitor.

class DeskWithAMonitor : public DeskAtATerminal {
protected:
    // The programs of the build, with a monitor that only says that it is there.
    DeskWithAMonitor() {
        for (const char* const program : {"DAXService", "DAXCoreSimulator", "kovanctl"}) {
            fs::create_directories(m_tree / "programs");
            fs::create_symlink(fs::path(DAX_PROGRAMS) / program, m_tree / "programs" / program);
        }
        writeProgram("programs/daxctl", "#!/bin/sh\n[ \"$1\" = monitor ] || exit 9\necho monitor of "
                                        "$DBUS_SYSTEM_BUS_ADDRESS\ntouch \"$DESK/monitored\"\nexec sleep 1000\n");
    }

    Command withMonitor(const Arguments& words) const {
        Command start = command(words, {"--monitor"});
        start.line[2] = (m_tree / "programs").string();
        return start;
    }
};

TEST_F(DeskWithAMonitor, SaysWhatToDoWithoutTmux) {
    const std::string path = pathOf({"setpriv", "env", "dbus-daemon"});
    Command start = withMonitor({"/bin/sh", "-c", "exit 5"});
    start.environment["PATH"] = path;
    const FinishedRun finished = run(start, LONGEST_SCRIPT);
    EXPECT_THAT(finished.errors,
                StartsWith("scripts/desk: tmux is missing, so there is no second pane. Install it (apt-get install "
                           "tmux), or type this in another terminal:\n  . " +
                           m_temporary.string() + "/desk-"));
    EXPECT_THAT(finished.errors, EndsWith("/environment; daxctl monitor\n"));
    EXPECT_EQ(finished.end, ProcessEnd::exited(5));
}

TEST_F(DeskWithAMonitor, SaysWhatToDoWithoutATerminal) {
    if (!canRun("tmux")) {
        GTEST_SKIP() << "this machine has no tmux";
    }
    const FinishedRun finished = run(withMonitor({"sh", "-c", "exit 5"}), LONGEST_SCRIPT);
    EXPECT_THAT(finished.errors,
                StartsWith("scripts/desk: there is no terminal for a second pane. Type this in one:\n"));
    EXPECT_EQ(finished.end, ProcessEnd::exited(5));
}

TEST_F(DeskWithAMonitor, ShowsItInASecondPane) {
    if (!canRun("tmux")) {
        GTEST_SKIP() << "this machine has no tmux";
    }
    Terminal terminal(
        withMonitor({"bash", "-c",
                     "until [[ -e $DESK/monitored ]]; do sleep 0.05; done; tmux -S $DAX_DESK/tmux list-panes -F 'pane "
                     "#P' >\"$HOME/panes\"; exit 7;"}));
    EXPECT_TRUE(terminal.waitFor("monitor of unix:path=" + m_temporary.string())) << terminal.text();
    EXPECT_EQ(terminal.waitForEnd(), ProcessEnd::exited(7));
    EXPECT_EQ(m_tree.read("home/panes"), "pane 0\npane 1\n");
}

// The build.

TEST_F(Desk, BuildsWhatIsMissingAndSaysNothingWhenAllIsBuilt) {
    writeProgram("scripts/build", "#!/bin/bash\necho \"$*\" >\"${0%/*}/../built\"\n"
                                  "[[ ! -e ${0%/*}/../long ]] || echo 'build/release: [1/2] after 10 s'\n"
                                  "echo 'build/release: built in 0 s'\n");
    fs::create_directories(m_tree / "build/release");
    fs::create_directory_symlink(DAX_PROGRAMS, m_tree / "build/release/bin");
    const FinishedRun quiet = desk({"--", "daxctl", "status"});
    EXPECT_EQ(m_tree.read("built"), "release DAXService DAXCoreSimulator daxctl kovanctl\n");
    EXPECT_EQ(quiet.output, STATUS);
    EXPECT_EQ(quiet.errors, "");

    write("long", "");
    const FinishedRun told = desk({"--", "daxctl", "status"});
    EXPECT_EQ(told.output, STATUS);
    EXPECT_EQ(told.errors, "build/release: [1/2] after 10 s\nbuild/release: built in 0 s\n");
}

TEST_F(Desk, WorksForACallerWhoHasClosedTheStandardStreams) {
    const std::string desk = "'" + (m_tree / "scripts/desk").string() + "' --programs '" + DAX_PROGRAMS + "' -- ";
    const FinishedRun finished =
        run(commandOf("/bin/bash", environment(),
                      {"-c", desk + "kovanctl power-mode 1 <&- >&- && " + desk + "kovanctl power <&- | head -n 1"}),
            LONGEST_SCRIPT);
    EXPECT_EQ(finished.output, "state           0 (normal)\n") << finished.errors;
    EXPECT_EQ(finished.end, ProcessEnd::exited(0));
}

TEST_F(Desk, StartsNothingWhenTheBuildFails) {
    writeProgram("scripts/build", "#!/bin/bash\necho 'it does not compile' >&2\nexit 1\n");
    const FinishedRun finished = desk({"--", "true"});
    EXPECT_EQ(finished.errors, "it does not compile\nscripts/desk: the programs could not be built\n");
    EXPECT_EQ(finished.end, ProcessEnd::exited(1));
}

TEST_F(Desk, InstallsTheInterpreterOfItsOwnScriptsFirst) {
    writeProgram("scripts/install-dependencies", "#!/bin/bash\necho 'Installing: python3'\nln -s '" +
                                                     printedBy("python3 -c 'import sys; print(sys.executable)'") +
                                                     "' '" + (m_tree / "bin/python3").string() + "'\n");
    fs::create_directory(m_tree / "bin");
    fs::create_symlink("/bin/ln", m_tree / "bin/ln");
    Environment fresh = environment();
    fresh["PATH"] = (m_tree / "bin").string();
    const FinishedRun finished = runScript("desk", fresh, {"--help"});
    EXPECT_THAT(finished.output, StartsWith("usage: scripts/desk "));
    EXPECT_EQ(finished.errors, "Installing: python3\n");
}

// The demo.

TEST_F(Desk, IsWhereTheDemoRunsAWholeUpgrade) {
    const FinishedRun finished =
        run(command({(SOURCE_TREE / "scripts/demo").string(), "--at-the-desk"}), LONGEST_SCRIPT);
    EXPECT_THAT(finished.output, StartsWith(std::string("\n== Before the upgrade\n$ daxctl status\n") + STATUS));
    EXPECT_THAT(finished.output, HasSubstr("\n== The installation lock file\n0000000 20 00 00 00 54 79 70 65 3a "));
    EXPECT_THAT(finished.output, HasSubstr("\n== The daemon's log\nINF  Registering main thread id "));
    EXPECT_THAT(finished.output,
                HasSubstr("\n== From now on the service refuses everyone\n"
                          "$ daxctl upgrade --name impatient --priority 9\n"
                          "Refused: an installation lock is in force. Restart the device, which ends the "
                          "installation, or see daxctl installation-lock.\n"));
    EXPECT_EQ(finished.errors, "");
    EXPECT_EQ(finished.end, ProcessEnd::exited(0));
}

} // namespace
} // namespace DAX::Tests
