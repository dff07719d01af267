// The files that daxctl monitor writes.
#include <csignal>
#include <filesystem>

#include <gmock/gmock.h>

#include "support/TemporaryRoot.h"
#include "system/Monitor/MonitorTool.h"
#include "system/support/Desk.h"

namespace DAX::Tests {
namespace {

using namespace testing;

const char* const NO_BUS = "unix:path=/no/such/bus";

class MonitorFiles : public Test {
protected:
    MonitorFiles() { root.write("seen.pcap", "a capture"); }

    // In the folder of the files, and without a bus.
    FinishedRun monitor(const std::string& arguments) {
        Command command;
        command.line = {"sh", "-c", "cd " + root.path().string() + " && exec " DAXCTL " monitor " + arguments};
        command.environment = {{"DBUS_SYSTEM_BUS_ADDRESS", NO_BUS}};
        return run(command);
    }

    TemporaryRoot root;
};

TEST_F(MonitorFiles, StayAsTheyWereWithoutABus) {
    const auto run = monitor("--write seen.pcap");
    EXPECT_EQ(run.end, ProcessEnd::exited(1));
    EXPECT_THAT(run.errors, StartsWith("daxctl: There is no system bus: "));
    EXPECT_EQ(root.read("seen.pcap"), "a capture");
    monitor("--write new.pcap");
    EXPECT_FALSE(std::filesystem::exists(root / "new.pcap"));
}

TEST_F(MonitorFiles, AreNotOneForTheCaptureAndThePicture) {
    std::filesystem::create_symlink("new", root / "link");
    std::filesystem::create_symlink(root / "link", root / "link to link");
    std::filesystem::create_hard_link(root / "seen.pcap", root / "hard");
    for (const char* const files :
         {"--write new --diagram ./new", "--write new --diagram link", "--write 'link to link' --diagram new",
          "--write $PWD/new --diagram no/../new", "--write seen.pcap --diagram hard", "--read seen.pcap --diagram hard",
          "--read - --diagram seen.pcap < seen.pcap"}) {
        const auto run = monitor(files);
        EXPECT_EQ(run.end, ProcessEnd::exited(2)) << files;
        EXPECT_EQ(run.errors, "daxctl: The picture would overwrite the capture. Name another file.\n") << files;
    }
    EXPECT_EQ(root.read("seen.pcap"), "a capture");
    EXPECT_FALSE(std::filesystem::exists(root / "new"));
}

TEST_F(MonitorFiles, AreNotWhereTheOutputGoes) {
    for (const char* const files :
         {"--write out > out", "--write /dev/stdout", "--read seen.pcap --diagram /dev/stderr",
          "--read seen.pcap --diagram out >> out"}) {
        const auto run = monitor(files);
        EXPECT_EQ(run.end, ProcessEnd::exited(2)) << files;
        EXPECT_EQ(run.errors, "daxctl: The standard output has what is shown. Name a file.\n") << files;
    }
}

TEST_F(MonitorFiles, AreNotReadAndWrittenAtOnce) {
    std::filesystem::create_hard_link(root / "seen.pcap", root / "hard");
    for (const char* const files : {"--read seen.pcap --write seen.pcap", "--read seen.pcap --write hard"}) {
        EXPECT_EQ(monitor(files).end, ProcessEnd::exited(2)) << files;
    }
    EXPECT_EQ(root.read("seen.pcap"), "a capture");
}

TEST_F(MonitorFiles, HaveNoTextInThemWhenTheOutputIsClosed) {
    const Desk desk;
    const std::string capture = (desk.root / "seen.pcap").string();
    for (const char* const closed : {" >&-", " <&- >&-"}) {
        Command command;
        command.line = {"sh", "-c", "exec " DAXCTL " monitor --write " + capture + closed};
        Process watching(command);
        ASSERT_TRUE(watching.waitForErrors("Watching the bus. Ctrl-C ends.\n")) << watching.errors();
        ASSERT_EQ(desk.run("daxctl", {"status"}).end, ProcessEnd::exited(0));
        watching.send(SIGINT);
        EXPECT_EQ(watching.waitForEnd(), ProcessEnd::exited(0)) << watching.errors();
        const auto read = daxctl({"monitor", "--read", capture});
        EXPECT_EQ(read.end, ProcessEnd::exited(0)) << read.errors;
        EXPECT_THAT(read.output, HasSubstr("< getServiceOwner"));
        EXPECT_THAT(desk.root.read("seen.pcap"), Not(HasSubstr("worst ms")));
    }
}

} // namespace
} // namespace DAX::Tests
