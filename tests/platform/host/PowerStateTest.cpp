#include <cerrno>
#include <csignal>
#include <filesystem>
#include <memory>
#include <vector>

#include <device_power.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/PowerFile.h"
#include "support/CountThreads.h"
#include "support/ForkedProcess.h"
#include "support/OrdinaryUser.h"
#include "support/TemporaryRoot.h"

using DAX::Tests::countThreads;
using DAX::Tests::ForkedProcess;
using DAX::Tests::OrdinaryUser;
using DAX::Tests::TemporaryRoot;
using testing::ElementsAre;

namespace {

const char* const FILE_NAME = "run/kovan/power.ini";
const std::string EMPTY = "[announcements]\n\n[requests]\n\n";

std::string fileWith(int state, int reason) {
    return EMPTY + "[power]\nstate=" + std::to_string(state) + "\nwakeup_reason=" + std::to_string(reason) + "\n";
}

std::vector<std::string> textsOf(const std::vector<KovanHost::PowerRecord>& records) {
    std::vector<std::string> texts;
    for (const KovanHost::PowerRecord& record : records) {
        texts.push_back(record.name + " " + std::to_string(record.number));
    }
    return texts;
}

class PowerStateTest : public testing::Test {
protected:
    void write(const std::string& text) const { m_root.write(FILE_NAME, text); }
    std::string path() const { return (m_root / FILE_NAME).string(); }

    // Asks for the state twice, which must be `state` both times, and returns what is reported on standard error.
    std::string errorsOfTwoQuestions(int state) const {
        testing::internal::CaptureStderr();
        EXPECT_EQ(state, device_power_get_state());
        EXPECT_EQ(state, device_power_get_state());
        return testing::internal::GetCapturedStderr();
    }

    const TemporaryRoot m_root;
};

} // namespace

TEST_F(PowerStateTest, WithoutAFileStateAndReasonAreZero) {
    EXPECT_EQ(device_power_get_state(), 0);
    EXPECT_EQ(device_power_get_wakeup_reason(), 0);
    EXPECT_EQ(errorsOfTwoQuestions(0), "");
    EXPECT_TRUE(std::filesystem::is_empty(m_root.path()));
}

TEST_F(PowerStateTest, TakesEveryStateBelowPowerOff) {
    for (const int state : {1, 2, 0}) {
        EXPECT_EQ(device_power_set_state(state, state % 2), 0);
        EXPECT_EQ(state, device_power_get_state());
    }
}

TEST_F(PowerStateTest, RefusesEveryOtherState) {
    ASSERT_EQ(device_power_set_state(2, 0), 0);

    for (const int state : {-1, 3, 4, 5}) {
        EXPECT_EQ(device_power_set_state(state, 1), -EINVAL);
    }
    EXPECT_EQ(device_power_get_state(), 2);
}

TEST_F(PowerStateTest, KeepsTheWakeUpReason) {
    EXPECT_EQ(device_power_set_wakeup_reason(41), 0);
    EXPECT_EQ(device_power_get_wakeup_reason(), 41);
    EXPECT_EQ(device_power_get_state(), 0);
    EXPECT_EQ(fileWith(0, 41), m_root.read(FILE_NAME));
}

TEST_F(PowerStateTest, RefusesANegativeReason) {
    EXPECT_EQ(device_power_set_wakeup_reason(-1), -EINVAL);
    EXPECT_EQ(device_power_get_wakeup_reason(), 0);
}

TEST_F(PowerStateTest, RecordsRequestsInTheirOrderAndDoesNothingElse) {
    EXPECT_EQ(device_power_request_reboot(0x2000000c), 0);
    EXPECT_EQ(device_power_request_poweroff(12), 0);
    EXPECT_EQ(device_power_request_poweroff(12), 0);

    EXPECT_THAT(textsOf(KovanHost::loadPower().requests),
                ElementsAre("reboot 536870924", "poweroff 12", "poweroff 12"));
    EXPECT_THAT(textsOf(KovanHost::loadPower().announcements), ElementsAre());
    EXPECT_EQ(device_power_get_state(), 0);
}

TEST_F(PowerStateTest, RecordsAnAnnouncementOnlyForAnotherState) {
    device_power_set_state(0, 0);
    device_power_set_state(1, 0);
    device_power_set_state(1, 0);

    EXPECT_THAT(textsOf(KovanHost::loadPower().announcements), ElementsAre("state_changed 1"));
}

TEST_F(PowerStateTest, ReadsWhatAPersonWrote) {
    write("[power]\nstate=7\nwakeup_reason=5\n");

    EXPECT_EQ(device_power_get_state(), 7);
    EXPECT_EQ(device_power_get_wakeup_reason(), 5);
}

TEST_F(PowerStateTest, FileThatIsGoneIsZeroAgain) {
    device_power_set_state(2, 0);
    std::filesystem::remove(path());

    EXPECT_EQ(device_power_get_state(), 0);
}

TEST_F(PowerStateTest, EmptyFileLeavesTheLastKnownStateAndIsReportedOnce) {
    device_power_set_state(2, 0);
    write("");

    EXPECT_EQ(errorsOfTwoQuestions(2), path() + ": the file is empty; keeping what was known\n");
}

TEST_F(PowerStateTest, TornFileLeavesTheLastKnownStateAndIsReportedOnce) {
    device_power_set_state(2, 0);
    write("[power]\nstate=1\nwakeup_rea");

    EXPECT_EQ(errorsOfTwoQuestions(2), path() + ": the last line has no end; keeping what was known\n");
}

TEST_F(PowerStateTest, GarbageLeavesTheLastKnownStateAndIsReportedOnce) {
    device_power_set_state(2, 0);
    write("no key file\n");

    EXPECT_THAT(errorsOfTwoQuestions(2),
                testing::MatchesRegex(path() +
                                      ": line 1: Key file contains line .+no key file.+ which is not a key-value "
                                      "pair, group, or comment; keeping what was known\n"));
}

TEST_F(PowerStateTest, FolderInItsPlaceLeavesTheLastKnownStateAndIsReportedOnce) {
    device_power_set_state(2, 0);
    std::filesystem::remove(path());
    std::filesystem::create_directory(path());

    EXPECT_EQ(errorsOfTwoQuestions(2), path() + ": Is a directory; keeping what was known\n");
}

TEST_F(PowerStateTest, FileThatMayNotBeReadLeavesTheLastKnownStateAndIsReportedOnce) {
    std::filesystem::permissions(m_root.path(), std::filesystem::perms::all);
    device_power_set_state(2, 0);
    std::filesystem::permissions(path(), std::filesystem::perms::none);
    const OrdinaryUser user;

    EXPECT_EQ(errorsOfTwoQuestions(2), path() + ": Permission denied; keeping what was known\n");
}

TEST_F(PowerStateTest, BadFileMeansZeroToAProcessThatKnowsNothing) {
    write("");

    EXPECT_EQ(errorsOfTwoQuestions(0), path() + ": the file is empty; keeping what was known\n");
}

TEST_F(PowerStateTest, AnotherBadFileIsReportedAsWell) {
    write("");
    errorsOfTwoQuestions(0);
    write("x");

    EXPECT_EQ(errorsOfTwoQuestions(0), path() + ": the last line has no end; keeping what was known\n");
}

TEST_F(PowerStateTest, FileThatIsBadAgainIsReportedAgain) {
    write("");
    errorsOfTwoQuestions(0);
    write(fileWith(1, 0));
    EXPECT_EQ(errorsOfTwoQuestions(1), "");
    write("");

    EXPECT_EQ(errorsOfTwoQuestions(1), path() + ": the file is empty; keeping what was known\n");
}

TEST_F(PowerStateTest, ChangeRepairsABadFileFromWhatWasKnown) {
    device_power_set_wakeup_reason(5);
    write("[power]\nstate");
    testing::internal::CaptureStderr();
    EXPECT_EQ(device_power_set_wakeup_reason(41), 0);

    EXPECT_EQ(testing::internal::GetCapturedStderr(), path() + ": the last line has no end; keeping what was known\n");
    EXPECT_EQ(fileWith(0, 41), m_root.read(FILE_NAME));
}

TEST_F(PowerStateTest, FolderThatCannotBeMadeFailsEveryChange) {
    m_root.write("run", "a file where a folder has to be");

    EXPECT_EQ(device_power_set_state(1, 0), -1);
    EXPECT_EQ(device_power_set_wakeup_reason(1), -1);
    EXPECT_EQ(device_power_request_reboot(1), -1);
    EXPECT_EQ(device_power_request_poweroff(1), -1);
    EXPECT_EQ(device_power_get_state(), 0);
}

TEST_F(PowerStateTest, FileThatCannotBeReplacedFailsTheChangeAndStays) {
    std::filesystem::create_directories(m_root / FILE_NAME / "in the way");
    testing::internal::CaptureStderr();

    EXPECT_EQ(device_power_set_state(1, 0), -1);
    EXPECT_EQ(device_power_get_state(), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), path() + ": Is a directory; keeping what was known\n");
}

TEST_F(PowerStateTest, LeftoversOfADeadWriterDoNoHarm) {
    m_root.write(std::string(FILE_NAME) + ".new", std::string(5000, 'x'));

    EXPECT_EQ(device_power_set_wakeup_reason(3), 0);
    EXPECT_EQ(fileWith(0, 3), m_root.read(FILE_NAME));
    EXPECT_FALSE(std::filesystem::exists(path() + ".new"));
}

TEST_F(PowerStateTest, WriterThatDiesInTheMiddleLeavesTheFileAndNoLock) {
    ASSERT_EQ(device_power_set_state(1, 0), 0);
    const std::string before = m_root.read(FILE_NAME);
    ForkedProcess writer([] {
        KovanHost::changePower([](KovanHost::Power&) { raise(SIGKILL); });
        return 0;
    });
    EXPECT_EQ(writer.wait(), -1);

    EXPECT_EQ(before, m_root.read(FILE_NAME));
    EXPECT_EQ(device_power_set_state(2, 0), 0);
}

TEST_F(PowerStateTest, WritersInSeveralProcessesLoseNothing) {
    constexpr int WRITERS = 4;
    constexpr int WRITES = 25;
    std::vector<std::unique_ptr<ForkedProcess>> writers;
    for (int writer = 0; writer < WRITERS; ++writer) {
        writers.push_back(std::make_unique<ForkedProcess>([writer] {
            int failures = 0;
            for (int number = 0; number < WRITES; ++number) {
                failures += device_power_request_reboot(writer * WRITES + number) != 0;
            }
            return failures;
        }));
    }
    for (const auto& writer : writers) {
        EXPECT_EQ(writer->wait(), 0);
    }

    std::vector<int> reasons(WRITERS * WRITES);
    for (const KovanHost::PowerRecord& request : KovanHost::loadPower().requests) {
        ++reasons.at(static_cast<std::size_t>(request.number));
    }
    EXPECT_THAT(reasons, testing::Each(1));
}

TEST_F(PowerStateTest, ReadersSeeWholeFilesWhileOthersWrite) {
    ASSERT_EQ(device_power_set_state(1, 0), 0);
    ForkedProcess writer([] {
        for (int number = 0; number < 200; ++number) {
            device_power_set_state(1 + number % 2, 0);
        }
        return 0;
    });

    for (int i = 0; i < 1000; ++i) {
        ASSERT_THAT(KovanHost::loadPower().state, testing::AnyOf(1, 2));
    }
    EXPECT_EQ(writer.wait(), 0);
}

TEST_F(PowerStateTest, NothingStartsAThread) {
    ForkedProcess process([] {
        const auto before = countThreads();
        const auto ignore = [](int, void*) { return 0; };
        device_power_get_state();
        device_power_set_state(1, 0);
        device_power_subscribe_state_changed(ignore, nullptr);
        return static_cast<int>(countThreads() - before);
    });

    EXPECT_EQ(process.wait(), 0);
}
