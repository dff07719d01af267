// How a signal ends daxctl monitor, wherever it waits.
#include <csignal>
#include <filesystem>
#include <fstream>
#include <optional>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Utility/Utils/FileDescriptor.h"
#include "monitor/CaptureFile.h"
#include "support/PrivateBus.h"
#include "support/TemporaryRoot.h"
#include "support/WaitUntil.h"
#include "system/Monitor/MonitorTool.h"

namespace DAX::Tests {
namespace {

using namespace testing;
using std::chrono::seconds;

const seconds SOON(5); // without a cure it would never end

std::string firstLineOf(const std::string& path) {
    std::ifstream file(path);
    std::string line;
    std::getline(file, line);
    return line;
}

// Whether the program, no longer the shell that starts it, sleeps.
bool sleeps(pid_t pid) {
    const std::string folder = "/proc/" + std::to_string(pid);
    return firstLineOf(folder + "/comm") == "daxctl" && firstLineOf(folder + "/stat").find(") S ") != std::string::npos;
}

// Waits until it does nothing any more.
bool waitUntilItWaits(const Process& process) {
    int looks = 0;
    return waitUntil([&] {
        looks = sleeps(process.pid()) ? looks + 1 : 0;
        return looks > 50;
    });
}

bool hasOpen(pid_t pid, const std::string& path) {
    const std::string folder = "/proc/" + std::to_string(pid) + "/fd";
    std::error_code gone;
    for (std::filesystem::directory_iterator entry(folder, gone), end; entry != end; entry.increment(gone)) {
        if (std::filesystem::read_symlink(*entry, gone) == path) {
            return true;
        }
    }
    return false;
}

std::string goldenCapture() {
    const std::string header = __FILE__;
    return header.substr(0, header.rfind("system/")) + "golden/monitor/upgrade.pcap";
}

Command shell(const std::string& line) {
    Command command;
    command.line = {"sh", "-c", line};
    return command;
}

class MonitorSignals : public Test {
protected:
    std::string makePipe(const char* name) {
        const std::string path = (root / name).string();
        EXPECT_EQ(::mkfifo(path.c_str(), 0600), 0);
        return path;
    }

    // One with many messages, which take a while to be read.
    std::string makeLongCapture() {
        const std::string path = (root / "long.pcap").string();
        const std::string message = std::string("l\x04\x01\x01\0\0\0\0\x05\0\0\0\x2e\0\0\0", 16) +
                                    std::string("\x01\x01o\0\x02\0\0\0/p\0\0\0\0\0\0", 16) +
                                    std::string("\x02\x01s\0\x03\0\0\0a.b\0\0\0\0\0", 16) +
                                    std::string("\x03\x01s\0\x05\0\0\0Hello\0\0\0", 16);
        monitor::CaptureWriter(path).write(0, message);
        const std::size_t head = 24;
        const std::string record = root.read("long.pcap").substr(head);
        std::ofstream file(path, std::ios::binary | std::ios::app);
        for (int i = 0; i < 400000; ++i) {
            file << record;
        }
        return path;
    }

    TemporaryRoot root;
};

TEST_F(MonitorSignals, EndItWhileTheBusStandsStill) {
    for (const int signal : {SIGINT, SIGTERM}) {
        const PrivateBus bus;
        ASSERT_EQ(::kill(bus.pid(), SIGSTOP), 0);
        Process monitor(shell("exec " DAXCTL " monitor"));
        EXPECT_TRUE(waitUntilItWaits(monitor));
        monitor.send(signal);
        EXPECT_EQ(monitor.waitForEnd(SOON), ProcessEnd::killedBy(signal));
        ::kill(bus.pid(), SIGCONT);
    }
}

TEST_F(MonitorSignals, EndItWhileNobodyReadsThePipeOfItsCapture) {
    const PrivateBus bus;
    Process monitor(shell("exec " DAXCTL " monitor --write " + makePipe("capture")));
    ASSERT_TRUE(waitUntilItWaits(monitor));
    monitor.send(SIGINT);
    EXPECT_EQ(monitor.waitForEnd(SOON), ProcessEnd::killedBy(SIGINT));
}

TEST_F(MonitorSignals, EndItWhileNobodyWritesThePipeThatItReads) {
    Process monitor(shell("exec " DAXCTL " monitor --read " + makePipe("stream")));
    ASSERT_TRUE(waitUntilItWaits(monitor));
    monitor.send(SIGINT);
    EXPECT_EQ(monitor.waitForEnd(SOON), ProcessEnd::exited(0));
    EXPECT_EQ(monitor.errors(), "");
}

TEST_F(MonitorSignals, EndItWhileItsReaderStandsStill) {
    const std::string output = makePipe("output");
    const DAX::Common::Utils::FileDescriptor reader(::open(output.c_str(), O_RDWR | O_CLOEXEC));
    ASSERT_GE(::fcntl(reader.get(), F_SETPIPE_SZ, 4096), 4096);
    for (const char* const view : {"", " --json"}) {
        Process monitor(shell("exec " DAXCTL " monitor --read " + goldenCapture() + view + " > " + output));
        ASSERT_TRUE(waitUntilItWaits(monitor));
        monitor.send(SIGINT);
        EXPECT_EQ(monitor.waitForEnd(SOON), ProcessEnd::exited(0)) << monitor.errors();
        EXPECT_EQ(monitor.errors(), "");
    }
}

TEST_F(MonitorSignals, EndItInTheFirstPassOverALongCapture) {
    const std::string capture = makeLongCapture();
    std::optional<ProcessEnd> end;
    // The pass may be over when the signal comes.
    for (int attempt = 0; attempt < 5 && !(end == ProcessEnd::killedBy(SIGINT)); ++attempt) {
        Process monitor(shell("exec " DAXCTL " monitor --read " + capture));
        ASSERT_TRUE(waitUntil([&] { return hasOpen(monitor.pid(), capture); }));
        monitor.send(SIGINT);
        end = monitor.waitForEnd(SOON);
    }
    EXPECT_EQ(end, ProcessEnd::killedBy(SIGINT));
}

TEST_F(MonitorSignals, WhichComeTwiceAtOnceAreOne) {
    const PrivateBus bus;
    Process monitor(shell("exec " DAXCTL " monitor"));
    ASSERT_TRUE(monitor.waitForErrors("Watching the bus. Ctrl-C ends.\n"));
    monitor.send(SIGTERM);
    monitor.send(SIGTERM);
    EXPECT_EQ(monitor.waitForEnd(SOON), ProcessEnd::exited(0));
    EXPECT_THAT(monitor.output(), EndsWith("0 calls\n"));
}

} // namespace
} // namespace DAX::Tests
