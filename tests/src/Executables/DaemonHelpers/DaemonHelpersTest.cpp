#include "Executables/DaemonHelpers/DaemonHelpers.h"

#include <string>
#include <vector>

#include <boost/program_options/errors.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Platform/OperatingSystem/OSSignals.h"
#include "Utility/Utils/GenericException.h"
#include "support/FakeKovan.h"
#include "support/ProcessDeath.h"

namespace DAX::Tests {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
namespace options = boost::program_options;

int parse(std::vector<std::string> arguments, unsigned int defaultTimeout = 0) {
    arguments.insert(arguments.begin(), "DAXService");
    std::vector<char*> argv;
    for (std::string& argument : arguments) {
        argv.push_back(argument.data());
    }
    return DaemonHelpers::parseIdleTimeout(static_cast<int>(argv.size()), argv.data(), defaultTimeout);
}

TEST(IdleTimeout, IsTheDefaultWithoutTheOption) {
    EXPECT_EQ(parse({}, 0), 0);
    EXPECT_EQ(parse({}, 77), 77);
    EXPECT_THAT(FakeKovan::messages(), IsEmpty());
}

TEST(IdleTimeout, IsTheValueOfTheOptionWhichIsLogged) {
    EXPECT_EQ(parse({"--idle-timeout=30"}, 77), 30);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Idle timeout set to 30"));
}

TEST(IdleTimeout, MayStandAsAWordOfItsOwn) {
    EXPECT_EQ(parse({"--idle-timeout", "30"}), 30);
}

TEST(IdleTimeout, MayBeZero) {
    EXPECT_EQ(parse({"--idle-timeout=0"}, 77), 0);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Idle timeout set to 0"));
}

TEST(IdleTimeout, MustBeAnInteger) {
    EXPECT_THROW(parse({"--idle-timeout=soon"}), options::invalid_option_value);
    EXPECT_THROW(parse({"--idle-timeout=1.5"}), options::invalid_option_value);
    EXPECT_THROW(parse({"--idle-timeout="}), options::invalid_command_line_syntax);
    EXPECT_THROW(parse({"--idle-timeout"}), options::invalid_command_line_syntax);
    EXPECT_THAT(FakeKovan::messages(), IsEmpty());
}

TEST(IdleTimeout, IsTheOnlyOption) {
    EXPECT_THROW(parse({"--verbose"}), options::unknown_option);
    EXPECT_THROW(parse({"--idle-timeout=30", "--verbose"}), options::unknown_option);
    EXPECT_THAT(FakeKovan::messages(), IsEmpty());
}

TEST(ExitChecking, IsFalseUntilTheStopIsAskedFor) {
    EXPECT_IN_CHILD({
        const auto exitChecking = DaemonHelpers::getExitCheckingFunction();
        EXPECT_FALSE(exitChecking());
        Platform::NiceQuitHelper::setQuitFlag();
        EXPECT_TRUE(exitChecking());
        EXPECT_TRUE(exitChecking());
    });
}

TEST(WatchdogPinging, SendsOneHeartbeatEachTime) {
    const auto ping = DaemonHelpers::getWatchdogPingingFunction();
    ping();
    ping();
    EXPECT_THAT(FakeKovan::journal("hangguard"), ElementsAre("hangguard notify", "hangguard notify"));
}

TEST(WatchdogPinging, ThrowsWhenTheWatchdogRefuses) {
    FakeKovan::setHangguardNotifyResult(-1);
    EXPECT_THROW(DaemonHelpers::getWatchdogPingingFunction()(), Common::Utils::GenericException);
}

TEST(WatchdogPinging, IsDoneEveryTenSeconds) {
    EXPECT_EQ(DaemonHelpers::getWatchdogPingInterval(), 10);
}

} // namespace
} // namespace DAX::Tests
