#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Platform/SystemAPI/SystemdSystemAPI/HangGuard.h"
#include "support/FakeKovan.h"
#include "support/Thrown.h"

namespace DAX::Tests {
namespace {

using Common::Utils::errinfo_stream_text;
using ::testing::ElementsAre;
namespace HangGuard = Platform::HangGuard;

TEST(HangGuard, RegistersTheProcessWithItsLimit) {
    FakeKovan::setHangguardRegisterResult(5);
    HangGuard::initWatchdogTimer(300);
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("hangguard register 300",
                            "log DBG Initialization of Watchdog status successfully sent with result: 5"));
}

TEST(HangGuard, TakesEveryResultFromZeroOnForASuccess) {
    HangGuard::initWatchdogTimer(300);
    HangGuard::updateWatchdogTimer();
    EXPECT_THAT(FakeKovan::messages(), ElementsAre("Initialization of Watchdog status successfully sent with result: 0",
                                                   "Update of Watchdog status successfully sent with result: 0"));
}

TEST(HangGuard, TakesEveryResultBelowZeroForAFailure) {
    FakeKovan::setHangguardRegisterResult(-1);
    EXPECT_EQ(thrownText<errinfo_stream_text>([] { HangGuard::initWatchdogTimer(300); }),
              "Initializing Watchdog status failed with error code:-1");
}

TEST(HangGuard, LogsAndThrowsAFailedRegistration) {
    FakeKovan::setHangguardRegisterResult(-3);
    EXPECT_EQ(thrownText<errinfo_stream_text>([] { HangGuard::initWatchdogTimer(300); }),
              "Initializing Watchdog status failed with error code:-3");
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("hangguard register 300",
                                                  "log ERR Initializing Watchdog status failed with error code: -3"));
}

TEST(HangGuard, SendsAHeartbeat) {
    FakeKovan::setHangguardNotifyResult(1);
    HangGuard::updateWatchdogTimer();
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("hangguard notify", "log DBG Update of Watchdog status successfully sent with result: 1"));
}

TEST(HangGuard, LogsAndThrowsAFailedHeartbeat) {
    FakeKovan::setHangguardNotifyResult(-1);
    EXPECT_EQ(thrownText<errinfo_stream_text>([] { HangGuard::updateWatchdogTimer(); }),
              "Updating Watchdog failed with error code:-1");
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("hangguard notify", "log ERR Updating Watchdog status failed with error code: -1"));
}

} // namespace
} // namespace DAX::Tests
