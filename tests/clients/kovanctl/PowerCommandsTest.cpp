#include <string>
#include <vector>

#include <device_power.h>
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "clients/kovanctl/KovanctlTest.h"
#include "support/PowerListener.h"

using namespace DAX::Tests;
using testing::ElementsAre;
using testing::HasSubstr;
using Json = nlohmann::json;

namespace {

class PowerCommandsTest : public KovanctlTest {
protected:
    static void expectSilence(const FinishedRun& run) {
        EXPECT_EQ(run.end, DONE);
        EXPECT_EQ(run.output, "");
        EXPECT_EQ(run.errors, "");
    }

    std::string path() const { return (m_root / "run/kovan/power.ini").string(); }
};

struct Mode {
    int number;
    const char* name;
};

class PowerModeTest : public PowerCommandsTest, public testing::WithParamInterface<Mode> {};

struct Mistake {
    std::vector<std::string> arguments;
    const char* message;
};

class PowerMistakeTest : public PowerCommandsTest, public testing::WithParamInterface<Mistake> {};

} // namespace

TEST_P(PowerModeTest, IsTakenAndShownByItsName) {
    const std::string number = std::to_string(GetParam().number);

    expectSilence(kovanctl({"power-mode", number}));
    EXPECT_EQ(GetParam().number, device_power_get_state());
    EXPECT_EQ(kovanctl({"power"}).output,
              "state           " + number + " (" + GetParam().name + ")\nwake-up reason  0\nrequests        none\n");
}

INSTANTIATE_TEST_SUITE_P(Modes, PowerModeTest,
                         testing::Values(Mode{0, "normal"}, Mode{1, "standby"}, Mode{2, "suspend"},
                                         Mode{3, "power off"}, Mode{4, "restart"}));

TEST_F(PowerCommandsTest, ModeIsHeardByAnotherProcess) {
    PowerListener listener;
    kovanctl({"power-mode", "3"});
    kovanctl({"power-mode", "4"});
    kovanctl({"power-mode", "4"});
    kovanctl({"power-mode", "0"});

    EXPECT_THAT(listener.hearUntil("state_changed 0"),
                ElementsAre("state_changed 3", "state_changed 4", "state_changed 0"));
}

TEST_F(PowerCommandsTest, PowerOffSignalIsHeardByAnotherProcessAndLeavesTheState) {
    PowerListener listener;
    expectSilence(kovanctl({"power-off-signal", "3"}));
    expectSilence(kovanctl({"power-off-signal", "3"}));
    expectSilence(kovanctl({"power-off-signal", "-7"}));

    EXPECT_THAT(listener.hearUntil("poweroff -7"), ElementsAre("poweroff 3", "poweroff 3", "poweroff -7"));
    EXPECT_EQ(device_power_get_state(), 0);
}

TEST_F(PowerCommandsTest, WakeUpIsHeardByAnotherProcessWithTheReasonThatIsStored) {
    PowerListener listener;
    ASSERT_EQ(device_power_set_wakeup_reason(5), 0);
    expectSilence(kovanctl({"wake-up"}));
    expectSilence(kovanctl({"wake-up", "--reason", "41"}));

    EXPECT_THAT(listener.hearUntil("post_wakeup 41"), ElementsAre("post_wakeup 5", "post_wakeup 41"));
    EXPECT_EQ(device_power_get_wakeup_reason(), 41);
}

TEST_F(PowerCommandsTest, ReasonIsStoredBeforeTheWakeUpIsAnnounced) {
    int reason = 0;
    const auto ask = [](int, void* answer) {
        *static_cast<int*>(answer) = device_power_get_wakeup_reason();
        return 0;
    };
    ASSERT_EQ(device_power_subscribe_post_wakeup(ask, &reason), 0);
    kovanctl({"wake-up", "--reason", "41"});

    EXPECT_TRUE(iterateUntil([&] { return reason == 41; }));
    device_power_unsubscribe_post_wakeup(ask);
}

TEST_F(PowerCommandsTest, PowerShowsTheRequestsInTheirOrder) {
    device_power_request_reboot(0x2000000c);
    device_power_request_poweroff(12);

    const FinishedRun run = kovanctl({"power"});
    EXPECT_EQ(run.end, DONE);
    EXPECT_EQ(run.output, "state           0 (normal)\n"
                          "wake-up reason  0\n"
                          "requests        reboot 536870924\n"
                          "                poweroff 12\n");
    EXPECT_EQ(run.errors, "");
}

TEST_F(PowerCommandsTest, PowerWithJsonIsOneDocument) {
    kovanctl({"power-mode", "1"});
    kovanctl({"wake-up", "--reason", "41"});
    device_power_request_reboot(14);

    EXPECT_EQ(Json::parse(kovanctl({"power", "--json"}).output),
              Json({{"state", 1},
                    {"wakeUpReason", 41},
                    {"requests", Json::array({{{"request", "reboot"}, {"reason", 14}}})}}));
}

TEST_F(PowerCommandsTest, PowerOfADeviceWithoutAFileMakesNothing) {
    EXPECT_EQ(Json::parse(kovanctl({"power", "--json"}).output),
              Json({{"state", 0}, {"wakeUpReason", 0}, {"requests", Json::array()}}));
    EXPECT_TRUE(std::filesystem::is_empty(m_root.path()));
}

TEST_F(PowerCommandsTest, StateThatHasNoNameIsUnknown) {
    m_root.write("run/kovan/power.ini", "[power]\nstate=7\nwakeup_reason=0\n");

    EXPECT_THAT(kovanctl({"power"}).output, HasSubstr("state           7 (unknown)\n"));
}

TEST_F(PowerCommandsTest, ChangesWithJsonPrintTheNewValues) {
    EXPECT_EQ(Json::parse(kovanctl({"power-mode", "2", "--json"}).output), Json({{"state", 2}}));
    EXPECT_EQ(Json::parse(kovanctl({"--json", "power-off-signal", "3"}).output), Json({{"number", 3}}));
    EXPECT_EQ(Json::parse(kovanctl({"wake-up", "--reason", "41", "--json"}).output), Json({{"wakeUpReason", 41}}));
    EXPECT_EQ(Json::parse(kovanctl({"wake-up", "--json"}).output), Json({{"wakeUpReason", 41}}));
}

TEST_F(PowerCommandsTest, BadFileIsRefusedWithPathAndReason) {
    m_root.write("run/kovan/power.ini", "");

    expectFailure(kovanctl({"power"}), REFUSED, "kovanctl: " + path() + ": the file is empty\n");
    EXPECT_EQ(Json::parse(kovanctl({"power", "--json"}).output),
              Json({{"error", path() + ": the file is empty"}, {"kind", "failed"}}));
}

TEST_F(PowerCommandsTest, ChangeRepairsABadFile) {
    m_root.write("run/kovan/power.ini", "[pow");
    const FinishedRun run = kovanctl({"power-mode", "2"});

    EXPECT_EQ(run.end, DONE);
    EXPECT_EQ(run.errors, path() + ": the last line has no end; keeping what was known\n");
    EXPECT_EQ(device_power_get_state(), 2);
}

TEST_F(PowerCommandsTest, FileThatCannotBeWrittenIsRefused) {
    m_root.write("run", "a file where a folder has to be");
    const std::string message = "kovanctl: " + (m_root / "run/kovan").string() + ": Not a directory\n";

    expectFailure(kovanctl({"power-mode", "1"}), REFUSED, message);
    expectFailure(kovanctl({"power-off-signal", "1"}), REFUSED, message);
    expectFailure(kovanctl({"wake-up"}), REFUSED, message);
}

TEST_P(PowerMistakeTest, IsWrongUsageAndChangesNothing) {
    expectFailure(kovanctl(GetParam().arguments), WRONG_USAGE,
                  std::string(GetParam().message) + "\nRun with --help for more information.\n");
    EXPECT_TRUE(std::filesystem::is_empty(m_root.path()));
}

INSTANTIATE_TEST_SUITE_P(
    Mistakes, PowerMistakeTest,
    testing::Values(Mistake{{"power-mode", "5"}, "N: Value 5 not in range 0 to 4"},
                    Mistake{{"power-mode", "-1"}, "N: Value -1 not in range 0 to 4"},
                    Mistake{{"power-mode", "x"}, "N: Value x not in range 0 to 4"},
                    Mistake{{"power-mode", "1x"}, "N: Value 1x not in range 0 to 4"},
                    Mistake{{"power-mode", "1.5"}, "N: Value 1.5 not in range 0 to 4"},
                    Mistake{{"power-mode", "99999999999999"}, "N: Value 99999999999999 not in range 0 to 4"},
                    Mistake{{"power-mode"}, "N is required"},
                    Mistake{{"power-mode", "1", "2"}, "The following argument was not expected: 2"},
                    Mistake{{"power-off-signal"}, "N is required"},
                    Mistake{{"power-off-signal", "x"}, "Could not convert: N = x"},
                    Mistake{{"power-off-signal", "9999999999"}, "Could not convert: N = 9999999999"},
                    Mistake{{"wake-up", "--reason", "-1"}, "--reason: Value -1 not in range 0 to 2147483647"},
                    Mistake{{"wake-up", "--reason", "x"}, "--reason: Value x not in range 0 to 2147483647"},
                    Mistake{{"wake-up", "41"}, "The following argument was not expected: 41"},
                    Mistake{{"power", "1"}, "The following argument was not expected: 1"}));

TEST_F(PowerCommandsTest, HelpIsThereForEachCommand) {
    for (const char* command : {"power", "power-mode", "power-off-signal", "wake-up"}) {
        const FinishedRun run = kovanctl({command, "--help"});
        EXPECT_EQ(run.end, DONE);
        EXPECT_THAT(run.output, HasSubstr(std::string("Usage: kovanctl ") + command));
        EXPECT_THAT(run.output, HasSubstr("--json"));
        EXPECT_EQ(run.errors, "");
    }
}
