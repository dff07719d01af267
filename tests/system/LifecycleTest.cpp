// How the daemon starts and ends.
#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/DBUSDefines.h"
#include "support/RawPeer.h"
#include "support/WaitUntil.h"
#include "system/support/Desk.h"

namespace DAX::Tests {
namespace {

namespace ManagerNames = DAXIPC::DBUSLowLevel::DBUSNames::DBUSService::DBUSIServiceManager;
using namespace testing;

// The main loop also needs it, and so gives it back once more.
const std::vector<std::string> IN_REVERSE_ORDER = {"Unmarking needed: singleton id: SINGLETON_BOOTCLOCK_INITIALIZER",
                                                   "Unmarking needed: singleton id: G_MAIN_LOOP",
                                                   "Unmarking needed: singleton id: USER_DATA_REGISTER",
                                                   "Unmarking needed: singleton id: G_MAIN_LOOP",
                                                   "GLoopService closing.",
                                                   "GLoopService closed.",
                                                   "Unmarking needed: singleton id: USER_DATA_REGISTER",
                                                   "Unmarking needed: singleton id: USER_DATA_REGISTER"};

// The position at which each of these messages begins.
const std::vector<std::string> IN_START_ORDER = {"Registering main thread id ",
                                                 "Registering signal (signum: 15)",
                                                 "Registering signal (signum: 2)",
                                                 "Registering VIP process.",
                                                 "Needed: singleton id: USER_DATA_REGISTER",
                                                 "Needed: singleton id: G_MAIN_LOOP",
                                                 "GLoopService::GLoopService(): Starting.",
                                                 "GLoopService::LoopThreadFunction(): Starting.",
                                                 "GLoopService::GLoopService(): Started thead id: ",
                                                 "Needed: singleton id: SINGLETON_BOOTCLOCK_INITIALIZER",
                                                 "Product was build for ",
                                                 "Starting DAXService",
                                                 "Loading DebugAndTestParameters.",
                                                 "Opening config from ",
                                                 "Failed to open DebugAndTestParameters from ",
                                                 "Initialization of Watchdog status",
                                                 "Idle timeout set to 30",
                                                 "Service Manager is started.",
                                                 "Core connected to Service",
                                                 "Registering new unique name on DBUS: ",
                                                 "DBUSAdapter adapter thread started."};

class Lifecycle : public Test {
protected:
    // Keeps the daemon in a call to a core that does not answer, so that it cannot stop before the core ends.
    std::unique_ptr<Process> holdDaemon() {
        desk.play("[fault getCurrentVersion]\nstall_seconds=1000\n");
        auto client = desk.start("daxctl", {"status"});
        EXPECT_TRUE(desk.waitForCoreCall("getCurrentVersion"));
        return client;
    }

    // Sends SIGTERM and waits until the handler has run, so that the next one is not merged with it.
    void terminate(Process& daemon, int times) {
        for (int time = 1; time <= times; ++time) {
            daemon.send(SIGTERM);
            EXPECT_TRUE(waitUntil([&] { return desk.countMessages("Setting s_sigTermFlag true.") == time; }));
        }
    }

    // Makes the daemon look whether it is idle, again and again for longer than `time`. Whoever introspects it is no
    // client, and the look that follows an answer comes before the next answer.
    void expectLooksWithoutEnd(const Process& daemon, std::chrono::milliseconds time) {
        const auto begin = std::chrono::steady_clock::now();
        RawPeer observer;
        int lastLooks = 2;
        EXPECT_TRUE(waitUntil([&] {
            lastLooks -= std::chrono::steady_clock::now() - begin > time ? 1 : 0;
            const RawMessage call(dbus_message_new_method_call(ManagerNames::CONNECTION_NAME, ManagerNames::OBJECT_PATH,
                                                               DBUS_INTERFACE_INTROSPECTABLE, "Introspect"));
            EXPECT_NE(observer.call(*call), nullptr);
            return lastLooks == 0;
        }));
        EXPECT_EQ(desk.daemon(), daemon.pid()); // and not one that the bus has started meanwhile
        EXPECT_EQ(desk.countMessages("due to it being idle"), 0);
    }

    // The threads of the process that watch another thread, found by the beginnings of their names.
    static std::vector<std::string> guardsOf(pid_t process) {
        std::vector<std::string> guards;
        for (const auto& task : std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/task")) {
            std::string name;
            std::getline(std::ifstream(task.path() / "comm") >> std::ws, name);
            if (name.find("Gua") != std::string::npos) {
                guards.push_back(name);
            }
        }
        return guards;
    }

    // A regular expression for a line of the daemon's main file, with this level and this beginning of the message.
    static std::string line(const std::string& level, const std::string& message) {
        return "\\[" + level + "\\] DAXService\\.cpp:[0-9]+>" + message;
    }

    std::vector<std::string> singletonsGivenBack() {
        std::vector<std::string> lines;
        for (const std::string& message : desk.daemonMessages()) {
            if (message.rfind("Unmarking needed: ", 0) == 0 || message.rfind("GLoopService clos", 0) == 0) {
                lines.push_back(message);
            }
        }
        return lines;
    }

    Desk desk;
};

TEST_F(Lifecycle, IsStartedByTheBusAtTheFirstCall) {
    EXPECT_EQ(desk.daemon(), 0);
    auto priority = DAXCommon::ServiceClientPriority(0);
    std::string name;
    auto type = DAXCommon::ServiceTransactionType(0);
    EXPECT_FALSE(desk.connect()->getServiceOwner(priority, name, type));
    EXPECT_NE(desk.daemon(), 0);
}

TEST_F(Lifecycle, TellsItsStartInOrder) {
    const auto daemon = desk.startDaemon({"--idle-timeout=30"});
    ASSERT_TRUE(desk.waitForDaemon());
    ASSERT_TRUE(desk.waitForMessage(IN_START_ORDER.back()));
    std::vector<std::string> started;
    for (const std::string& message : desk.daemonMessages()) {
        std::copy_if(IN_START_ORDER.begin(), IN_START_ORDER.end(), std::back_inserter(started),
                     [&message](const std::string& beginning) { return message.rfind(beginning, 0) == 0; });
    }
    EXPECT_THAT(started, ElementsAreArray(IN_START_ORDER));
}

TEST_F(Lifecycle, InProductionStartsInTheSameOrderWithoutDebugParameters) {
    desk.root.write("etc/kovan/device.ini", "[software]\nproduction=true\n");
    const auto daemon = desk.startDaemon();
    ASSERT_TRUE(desk.waitForDaemon());
    const std::vector<std::string> messages = desk.daemonMessages();
    const auto named = std::find_if(messages.begin(), messages.end(), [](const std::string& message) {
        return message.rfind("Starting DAXService", 0) == 0;
    });
    ASSERT_NE(named, messages.end());
    EXPECT_EQ(*std::next(named), "We are in production mode. Will not load DebugAndTestParameters.");
    EXPECT_EQ(desk.countMessages("Opening config from "), 0);
}

TEST_F(Lifecycle, WatchesItsLoop) {
    const auto daemon = desk.startDaemon();
    ASSERT_TRUE(desk.waitForDaemon());
    EXPECT_TRUE(waitUntil([&] { return guardsOf(daemon->pid()).size() == 3; }));
}

TEST_F(Lifecycle, InProductionWatchesNothing) {
    desk.root.write("etc/kovan/device.ini", "[software]\nproduction=true\n");
    const auto daemon = desk.startDaemon();
    ASSERT_TRUE(desk.waitForDaemon());
    EXPECT_EQ(desk.connect()->getCurrentVersion(), "1000"); // the loop runs, so the guards would have been made by now
    EXPECT_THAT(guardsOf(daemon->pid()), IsEmpty());
}

TEST_F(Lifecycle, StartsItsMainLoopWithoutAPause) {
    const auto daemon = desk.startDaemon();
    ASSERT_TRUE(desk.waitForDaemon());
    EXPECT_EQ(desk.countMessages("GLoopService: Waiting for g_main_loop to start running..."), 0);
}

TEST_F(Lifecycle, GivesItsSingletonsBackInReverseOrderAtAGoodEnd) {
    desk.startDaemon({"--idle-timeout=1"})->waitForEnd();
    EXPECT_THAT(singletonsGivenBack(), ElementsAreArray(IN_REVERSE_ORDER));
}

TEST_F(Lifecycle, GivesItsSingletonsBackInReverseOrderWhenItsStartFails) {
    desk.startDaemon({"--no-such-option"})->waitForEnd();
    EXPECT_THAT(singletonsGivenBack(), ElementsAreArray(IN_REVERSE_ORDER));
}

TEST_F(Lifecycle, SaysThatSigtermEndsItBeforeItGivesItsSingletonsBack) {
    const auto daemon = desk.startDaemon();
    ASSERT_TRUE(desk.waitForDaemon());
    daemon->send(SIGTERM);
    EXPECT_EQ(daemon->waitForEnd(), ProcessEnd::exited(1));
    EXPECT_THAT(singletonsGivenBack(), ElementsAreArray(IN_REVERSE_ORDER));
    const std::vector<std::string> messages = desk.daemonMessages();
    const auto said = std::find(messages.begin(), messages.end(), "Exit From DAXService after receiving SIGTERM.");
    EXPECT_LT(said, std::find(messages.begin(), messages.end(), IN_REVERSE_ORDER.front()));
    EXPECT_THAT(messages, Not(Contains("Exit From DAXService")));
    EXPECT_THAT(desk.daemonLog(), ContainsRegex(line("INF", "Exit From DAXService after receiving SIGTERM\\.\n")));
}

TEST_F(Lifecycle, SaysWhichRevisionStarts) {
    const auto daemon = desk.startDaemon();
    EXPECT_TRUE(desk.waitForMessage("Starting DAXServiceChangelist: 0, EmulatedProductVersion: ., UI_TYPE=EFL_UI, "
                                    "CMakeTime: 1764727676"));
}

TEST_F(Lifecycle, SigintStopsItWithStatus0) {
    const auto daemon = desk.startDaemon();
    ASSERT_TRUE(desk.waitForDaemon());
    daemon->send(SIGINT);
    EXPECT_EQ(daemon->waitForEnd(), ProcessEnd::exited(0));
    EXPECT_THAT(daemon->output(), HasSubstr("Signal received, quitting... (signum: 2)\n"));
    EXPECT_EQ(desk.countMessages("Setting s_sigTermFlag true."), 0);
    EXPECT_EQ(desk.daemonMessages().back(), "Exit From DAXService");
}

TEST_F(Lifecycle, SigtermStopsItInGoodOrderWithStatus1) {
    const auto daemon = desk.startDaemon();
    ASSERT_TRUE(desk.waitForDaemon());
    terminate(*daemon, 1);
    EXPECT_EQ(daemon->waitForEnd(), ProcessEnd::exited(1));
    EXPECT_THAT(daemon->output(), HasSubstr("Signal received, quitting... (signum: 15)\n"));
    EXPECT_EQ(desk.countMessages("Exit From DAXService after receiving SIGTERM."), 1);
    EXPECT_EQ(desk.countMessages("DBUSAdapter thread method exit."), 1);
}

TEST_F(Lifecycle, ASecondSigtermChangesNothing) {
    const auto daemon = desk.startDaemon();
    ASSERT_TRUE(desk.waitForDaemon());
    const auto client = holdDaemon();
    terminate(*daemon, 2);
    desk.killCore();
    EXPECT_EQ(daemon->waitForEnd(), ProcessEnd::exited(1));
    EXPECT_EQ(desk.countMessages("Exit From DAXService after receiving SIGTERM."), 1);
    EXPECT_THAT(singletonsGivenBack(), ElementsAreArray(IN_REVERSE_ORDER));
}

TEST_F(Lifecycle, TheThirdSigtermEndsItAtOnceWithStatus143) {
    const auto daemon = desk.startDaemon();
    ASSERT_TRUE(desk.waitForDaemon());
    const auto client = holdDaemon();
    terminate(*daemon, 2);
    daemon->send(SIGTERM);
    EXPECT_EQ(daemon->waitForEnd(), ProcessEnd::exited(143));
    EXPECT_EQ(desk.daemonMessages().back(), "Received subsequent SIGTERM, forcing exit.");
    EXPECT_EQ(desk.countMessages("DBUSAdapter thread method exit."), 0);
    desk.killCore(); // it stalls and would not notice the end of the bus
}

TEST_F(Lifecycle, KeepsIgnoringASigtermThatItsParentIgnored) {
    const auto daemon = desk.startDaemon({}, {SIGTERM});
    ASSERT_TRUE(desk.waitForDaemon());
    EXPECT_EQ(desk.countMessages("Ignoring signal 15"), 1);
    daemon->send(SIGTERM);
    daemon->send(SIGINT);
    EXPECT_EQ(daemon->waitForEnd(), ProcessEnd::exited(0));
}

TEST_F(Lifecycle, StopsWhenItHasBeenIdleForLongerThanItsTimeOut) {
    const auto daemon = desk.startDaemon({"--idle-timeout=1"});
    EXPECT_EQ(daemon->waitForEnd(), ProcessEnd::exited(0));
    EXPECT_EQ(desk.countMessages("Stopping adapter object /org/kovan/tv/dax/service/cservicemanager due to it being "
                                 "idle for 1 seconds."),
              1);
}

TEST_F(Lifecycle, ASilentClientKeepsItAliveUntilItLeaves) {
    const auto daemon = desk.startDaemon({"--idle-timeout=1"});
    ASSERT_TRUE(desk.waitForDaemon());
    auto client = desk.connect();
    const auto lock = client->acquireExternalLock("silent", DAXCommon::ServiceClientPriority(1));
    EXPECT_EQ(lock, 1u);
    expectLooksWithoutEnd(*daemon, std::chrono::seconds(2));
    client.reset();
    EXPECT_TRUE(desk.waitForMessage("We are now entering idle state."));
    EXPECT_EQ(daemon->waitForEnd(), ProcessEnd::exited(0));
}

TEST_F(Lifecycle, ASecondDaemonDoesNotGetTheName) {
    const auto first = desk.startDaemon();
    ASSERT_TRUE(desk.waitForDaemon());
    const auto second = desk.startDaemon();
    EXPECT_EQ(second->waitForEnd(), ProcessEnd::exited(1));
    EXPECT_EQ(
        desk.countMessages("Error Registering new unique name on DBUS: {org.kovan.tv.dax.service.servicemanager}. "
                           "Name is already registered"),
        1);
    EXPECT_EQ(desk.countMessages("Exception caught in DAXService: "), 1);
    EXPECT_EQ(desk.daemon(), first->pid());
}

TEST_F(Lifecycle, MakesFilesThatNobodyElseMayWriteWhateverItsUmask) {
    const mode_t before = umask(0);
    const auto daemon = desk.startDaemon();
    umask(before);
    ASSERT_TRUE(desk.waitForDaemon());
    EXPECT_TRUE(desk.run("daxctl", {"upgrade", "--item", "main"}).end == ProcessEnd::exited(0));
    int files = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(desk.root / "mnt")) {
        struct stat status {};
        ASSERT_EQ(lstat(entry.path().c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & (S_ISREG(status.st_mode) ? S_IWGRP | S_IWOTH : 0U), 0U) << entry.path();
        files += S_ISREG(status.st_mode) ? 1 : 0;
    }
    EXPECT_GE(files, 2); // the lock file and the date
}

TEST_F(Lifecycle, SaysToItsStarterThatItStopsWhenItHasGivenItsNameBack) {
    const std::string name = desk.root / "notify";
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    name.copy(address.sun_path, sizeof(address.sun_path) - 1);
    const int starter = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    ASSERT_EQ(bind(starter, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    setenv("NOTIFY_SOCKET", name.c_str(), 1);
    const auto daemon = desk.startDaemon({"--idle-timeout", "1"});
    unsetenv("NOTIFY_SOCKET");
    ASSERT_TRUE(desk.waitForDaemon());
    const timeval bound{20, 0};
    setsockopt(starter, SOL_SOCKET, SO_RCVTIMEO, &bound, sizeof(bound));
    std::string message;
    for (char text[256] = ""; message != "STOPPING=1";) {
        const ssize_t length = recv(starter, text, sizeof(text), 0);
        ASSERT_GT(length, 0) << "it does not say so";
        message.assign(text, static_cast<std::size_t>(length)); // the last one, since the watchdog's come before
    }
    EXPECT_EQ(desk.daemon(), 0);
    close(starter);
    EXPECT_EQ(daemon->waitForEnd(), ProcessEnd::exited(0));
}

TEST_F(Lifecycle, AnUnknownOptionEndsItWithStatus1) {
    const auto daemon = desk.startDaemon({"--no-such-option"});
    EXPECT_EQ(daemon->waitForEnd(), ProcessEnd::exited(1));
    EXPECT_EQ(desk.countMessages("Exception caught in DAXService: "), 1);
    EXPECT_EQ(desk.countMessages("Initialization of Watchdog status successfully sent with result: 0"), 1);
}

TEST_F(Lifecycle, LogsTheReasonOfAFailedStartLast) {
    desk.startDaemon({"--no-such-option"})->waitForEnd();
    const std::vector<std::string> messages = desk.daemonMessages();
    const auto said = std::find_if(messages.begin(), messages.end(), [](const std::string& message) {
        return message.rfind("Exception caught in DAXService: ", 0) == 0;
    });
    EXPECT_GT(said, std::find(messages.begin(), messages.end(), IN_REVERSE_ORDER.back()));
    const std::string diagnostic = desk.daemonLog().substr(desk.daemonLog().find("Exception caught in DAXService: "));
    EXPECT_THAT(diagnostic, AllOf(HasSubstr("Dynamic exception type: "), HasSubstr("unknown_option"),
                                  HasSubstr("unrecognised option '--no-such-option'"), Not(HasSubstr(".cpp:"))));
}

TEST_F(Lifecycle, SaysItsStartAndItsEndAtTheirLevels) {
    desk.startDaemon({"--idle-timeout=1"})->waitForEnd();
    EXPECT_THAT(desk.daemonLog(), AllOf(ContainsRegex(line("INF", "Starting DAXServiceChangelist: ")),
                                        ContainsRegex(line("INF", "Exit From DAXService\n"))));
    desk.startDaemon({"--no-such-option"})->waitForEnd();
    EXPECT_THAT(desk.daemonLog(), ContainsRegex(line("FTL", "Exception caught in DAXService: ")));
}

TEST_F(Lifecycle, AValueThatIsNoNumberEndsItWithStatus1) {
    const auto daemon = desk.startDaemon({"--idle-timeout=soon"});
    EXPECT_EQ(daemon->waitForEnd(), ProcessEnd::exited(1));
}

} // namespace
} // namespace DAX::Tests
