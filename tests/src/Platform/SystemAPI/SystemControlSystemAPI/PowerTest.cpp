#include <boost/exception/errinfo_nested_exception.hpp>
#include <boost/exception_ptr.hpp>

#include "Platform/SystemAPI/SystemControlSystemAPI/Implementation/CSystemControl.h"
#include "Platform/SystemAPI/SystemControlSystemAPI/PowerAPIException.h"
#include "Platform/SystemAPI/VconfSystemAPI/VConfException.h"
#include "SystemControlTest.h"
#include "support/TestClock.h"

namespace DAX::Tests {
namespace {

using Platform::ISystemControl;
using Platform::PowerAPIException;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const char COLD_SHUTDOWN_KEY[] = "memory/boot/cold_poweroff_request_pkg";

// "<description> <code>" of the device's failure in the exception that the statement throws.
template <class Statement>
std::string powerFailureOf(const Statement& statement) {
    try {
        statement();
    } catch (const PowerAPIException& exception) {
        return textOf<Common::Utils::errinfo_description>(exception) + " " +
               std::to_string(*boost::get_error_info<Common::Utils::errinfo_errorcode>(exception));
    }
    return "<nothing thrown>";
}

// The function that throws it.
template <class Statement>
std::string placeOfFailure(const Statement& statement) {
    try {
        statement();
    } catch (const PowerAPIException& exception) {
        return textOf<boost::throw_function>(exception);
    }
    return "<nothing thrown>";
}

class PowerTest : public SystemControlTest {};

TEST_F(PowerTest, PowersOffForTheNormalReason) {
    ISystemControl::shutdown();
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log FTL shutdown: 12", "power request_poweroff 12", "log INF Request poweroff result: 0"));
}

TEST_F(PowerTest, IgnoresLocksWhenItIsForcedToPowerOff) {
    ISystemControl::forceShutdown();
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log INF Power state lock will be ignored.", "log FTL shutdown: 536870924",
                            "power request_poweroff 536870924", "log INF Request poweroff result: 0"));
}

TEST_F(PowerTest, TellsThatTheDeviceDoesNotPowerOff) {
    for (const int result : {-3, 1}) {
        FakeKovan::setPoweroffResult(result);
        EXPECT_EQ(powerFailureOf(ISystemControl::shutdown),
                  "device_power_request_poweroff failed " + std::to_string(result));
        EXPECT_EQ(FakeKovan::journal().back(), "log INF Request poweroff result: " + std::to_string(result));
    }
}

TEST_F(PowerTest, PowersOffDespiteTheNoRebootFlag) {
    parameters().setNoRebootFlag(true);
    ISystemControl::shutdown();
    EXPECT_THAT(FakeKovan::journal("power"), ElementsAre("power request_poweroff 12"));
}

TEST_F(PowerTest, AsksForNoColdStartWhenItPowersOff) {
    ISystemControl::shutdown();
    EXPECT_THAT(FakeKovan::writes(), IsEmpty());
}

std::vector<std::string> coldRestart(const std::string& reason, const std::string& request) {
    const std::string key = COLD_SHUTDOWN_KEY;
    return {"log FTL reboot: " + reason,
            "log INF Setting cold shutdown flag.",
            "write " + key + "=org.kovan.tv.dax",
            "log ERR power_suspend flag set: " + key +
                " = org.kovan.tv.dax. Cold shutdown will be performed as next shutdown.",
            "power request_reboot " + request,
            "log INF Request restart result: 0"};
}

TEST_F(PowerTest, RestartsColdForTheNormalReason) {
    ISystemControl::reboot();
    EXPECT_EQ(FakeKovan::journal(), coldRestart("12", std::to_string(0x2000000c)));
}

TEST_F(PowerTest, RestartsColdForAFactoryReset) {
    ISystemControl::rebootWithFactoryResetReason();
    EXPECT_EQ(FakeKovan::journal(), coldRestart("14", std::to_string(0x2000000e)));
}

TEST_F(PowerTest, TellsThatTheDeviceDoesNotRestart) {
    for (const int result : {-1, 1}) {
        FakeKovan::setRebootResult(result);
        EXPECT_EQ(powerFailureOf(ISystemControl::reboot),
                  "device_power_request_reboot failed " + std::to_string(result));
        EXPECT_EQ(FakeKovan::journal().back(), "log INF Request restart result: " + std::to_string(result));
    }
}

TEST_F(PowerTest, DoesNothingElseWithTheNoRebootFlag) {
    parameters().setNoRebootFlag(true);
    parameters().setCustomIntParam("CSystemControl::delayedShutdown", 1000);
    ISystemControl::reboot();
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log FTL reboot: 12",
                            "log INF CSystemControl::reboot(): no reboot performed because NoRebootFlag is set."));
}

// Nobody waits: the journal has the waits instead.
class DelayedPowerTest : public PowerTest {
private:
    TestClock m_clock{
        [](TestClock::Duration time) { FakeKovan::note("wait " + std::to_string(time.count()) + " ms"); }};
};

TEST_F(DelayedPowerTest, WaitsBeforeItRestartsAsLongAsItIsTold) {
    parameters().setCustomIntParam("CSystemControl::delayedShutdown", 3600);
    ISystemControl::reboot();
    EXPECT_THAT(beginning(4), ElementsAre("log FTL reboot: 12", "log INF Waiting 3600 seconds before reboot.",
                                          "wait 3600000 ms", "log INF Setting cold shutdown flag."));
}

TEST_F(DelayedPowerTest, WaitsBeforeItPowersOffAsLongAsItIsTold) {
    parameters().setCustomIntParam("CSystemControl::delayedShutdown", 3600);
    ISystemControl::shutdown();
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log FTL shutdown: 12", "log INF Waiting 3600 seconds before shutdown.", "wait 3600000 ms",
                            "power request_poweroff 12", "log INF Request poweroff result: 0"));
}

TEST_F(DelayedPowerTest, MayBeToldToWaitForNoTime) {
    parameters().setCustomIntParam("CSystemControl::delayedShutdown", 0);
    ISystemControl::shutdown();
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log FTL shutdown: 12", "log INF Waiting 0 seconds before shutdown.",
                                                  "power request_poweroff 12", "log INF Request poweroff result: 0"));
}

TEST_F(PowerTest, DoesNotRestartWithoutItsParameters) {
    EXPECT_IN_CHILD({
        root.write(PARTITION + "DebugAndTestParameters.xml", "");
        EXPECT_FALSE(DAXCommon::DebugAndTestParameters::reload()); // a failed read counts as not loaded
        EXPECT_EQ(thrownDescription(ISystemControl::reboot), "DebugAndTestParameters were not loaded.");
        EXPECT_THAT(FakeKovan::journal("power"), IsEmpty());
    });
}

TEST_F(PowerTest, RestartsAsAReplacementWantsIt) {
    class NoColdStart : public Platform::CSystemControl {
        void m_setColdShutdown() override { FakeKovan::note("asked"); }
        void m_setColdShutdown(const std::string&) override {}
    };
    NoColdStart control;
    static_cast<Platform::ISystemControlImpl&>(control).m_reboot();
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log FTL reboot: 12", "asked", "power request_reboot " + std::to_string(0x2000000c),
                            "log INF Request restart result: 0"));
}

TEST_F(PowerTest, AsksForAColdStartInAnothersName) {
    ISystemControl::setColdShutdown("org.kovan.other");
    const std::string key = COLD_SHUTDOWN_KEY;
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log INF Setting cold shutdown flag.", "write " + key + "=org.kovan.other",
                            "log ERR power_suspend flag set: " + key +
                                " = org.kovan.other. Cold shutdown will be performed as next shutdown."));
}

TEST_F(PowerTest, ThrowsItsOwnExceptionWhenNoColdStartCanBeRequested) {
    FakeKovan::failWrites(COLD_SHUTDOWN_KEY, -7);
    try {
        ISystemControl::reboot();
        FAIL() << "nothing thrown";
    } catch (const Common::Utils::GenericException& exception) {
        const auto* const nested = boost::get_error_info<boost::errinfo_nested_exception>(exception);
        ASSERT_NE(nested, nullptr);
        EXPECT_THROW(boost::rethrow_exception(*nested), Platform::VConfException);
    }
    const std::string key = COLD_SHUTDOWN_KEY;
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log FTL reboot: 12", "log INF Setting cold shutdown flag.",
                                                  "write " + key + "=org.kovan.tv.dax -> -7", failedWrite(key)));
}

TEST_F(PowerTest, SaysWhyTheDeviceWokeUp) {
    FakeKovan::setWakeUpReason(17);
    EXPECT_EQ(ISystemControl::getWakeUpReason(), 17);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Wake-up reason = 17."));
}

TEST_F(PowerTest, TellsThatTheReasonCannotBeRead) {
    FakeKovan::setWakeUpReason(-4);
    EXPECT_EQ(powerFailureOf(ISystemControl::getWakeUpReason), "device_power_get_wakeup_reason() failed -4");
    EXPECT_EQ(powerFailureOf(ISystemControl::isWakeUpReasonDAX), "device_power_get_wakeup_reason() failed -4");
    EXPECT_EQ(powerFailureOf(ISystemControl::isWakeUpReasonMobileBT), "device_power_get_wakeup_reason() failed -4");
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
}

TEST_F(PowerTest, SetsTheReasonAndGivesTheDevicesResult) {
    for (const int result : {0, 3}) {
        FakeKovan::forgetRecords();
        FakeKovan::setWakeUpReasonResult(result);
        EXPECT_EQ(ISystemControl::setWakeUpReason(5), result);
        EXPECT_THAT(FakeKovan::journal(),
                    ElementsAre("power set_wakeup_reason 5",
                                "log INF Wake-up has been set to 5, with result: " + std::to_string(result)));
    }
}

TEST_F(PowerTest, ReportsAReasonThatCannotBeSetUnderTheNameOfTheRead) {
    FakeKovan::setWakeUpReasonResult(-2);
    EXPECT_EQ(powerFailureOf([] { ISystemControl::setWakeUpReason(5); }), "device_power_get_wakeup_reason() failed -2");
    EXPECT_THAT(FakeKovan::messages(), IsEmpty());
}

TEST_F(PowerTest, KnowsItsOwnReasonAndThatOfAMobileDevice) {
    for (const int reason : {0, 4, 5, 6, 40, 41, 42}) {
        FakeKovan::setWakeUpReason(reason);
        EXPECT_EQ(ISystemControl::isWakeUpReasonDAX(), reason == 5) << reason;
        EXPECT_EQ(ISystemControl::isWakeUpReasonMobileBT(), reason == 41) << reason;
    }
}

TEST_F(PowerTest, NeverWokeUpForAScanInStandby) {
    for (int reason = -1; reason < 50; ++reason) {
        FakeKovan::setWakeUpReason(reason);
        EXPECT_FALSE(ISystemControl::isWakeUpReasonStandbyScan()) << reason;
    }
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
}

TEST_F(PowerTest, GivesEachPowerModeThatThereIs) {
    for (int state = 0; state < 5; ++state) {
        FakeKovan::setPowerState(state);
        EXPECT_EQ(ISystemControl::getCurrentPowerMode(), static_cast<DAXCommon::PowerMode>(state));
    }
}

TEST_F(PowerTest, RefusesAPowerModeThatThereIsNot) {
    for (const int state : {5, 6, -1}) {
        FakeKovan::setPowerState(state);
        EXPECT_EQ(powerFailureOf(ISystemControl::getCurrentPowerMode),
                  "device_power_get_state() failed " + std::to_string(state));
    }
}

TEST_F(PowerTest, AsksForAModeThatADeviceCanBeIn) {
    FakeKovan::setPowerSetStateResult(-1); // which is ignored
    ISystemControl::setCurrentPowerMode(DAXCommon::POWER_MODE_NORMAL, false);
    ISystemControl::setCurrentPowerMode(DAXCommon::POWER_MODE_STANDBY, true);
    ISystemControl::setCurrentPowerMode(DAXCommon::POWER_MODE_SUSPEND, false);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("power set_state 0 0", "power set_state 1 1", "power set_state 2 0"));
}

TEST_F(PowerTest, AsksForNoOtherMode) {
    for (const auto mode : {DAXCommon::POWER_MODE_POWER_OFF, DAXCommon::POWER_MODE_RESTART}) {
        EXPECT_EQ(powerFailureOf([mode] { ISystemControl::setCurrentPowerMode(mode, true); }),
                  "wrong power mode " + std::to_string(mode));
    }
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
}

TEST_F(PowerTest, TellsWhereTheDeviceFailed) {
    FakeKovan::setPoweroffResult(-1);
    FakeKovan::setRebootResult(-1);
    FakeKovan::setWakeUpReason(-1);
    FakeKovan::setWakeUpReasonResult(-1);
    FakeKovan::setPowerState(-1);
    const auto setReason = [] { ISystemControl::setWakeUpReason(5); };
    const auto setMode = [] { ISystemControl::setCurrentPowerMode(DAXCommon::POWER_MODE_POWER_OFF, true); };
    EXPECT_THAT(placeOfFailure(ISystemControl::shutdown), HasSubstr("CSystemControl::m_shutdown(int)"));
    EXPECT_THAT(placeOfFailure(ISystemControl::reboot), HasSubstr("CSystemControl::m_reboot(int)"));
    EXPECT_THAT(placeOfFailure(ISystemControl::getWakeUpReason), HasSubstr("CSystemControl::m_getWakeUpReason()"));
    EXPECT_THAT(placeOfFailure(setReason), HasSubstr("CSystemControl::m_setWakeUpReason(int)"));
    EXPECT_THAT(placeOfFailure(ISystemControl::getCurrentPowerMode), HasSubstr("::m_getCurrentPowerMode()"));
    EXPECT_THAT(placeOfFailure(setMode), HasSubstr("CSystemControl::m_setCurrentPowerMode("));
}

} // namespace
} // namespace DAX::Tests
