#include <functional>

#include "SystemControlTest.h"

namespace DAX::Tests {
namespace {

using DAXAutoUpdateKey::AUTOUPDATE_SPECIAL_MODE;
using DAXAutoUpdateKey::AUTOUPDATE_STATUS;
using Platform::ISystemControl;
using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

const std::string OPTION_KEY = UPDATE_SETTINGS + "autoupdate";
const std::string STATUS_KEY = VOLATILE_UPDATE_SETTINGS + "autoupdate_status";
const std::string MODE_KEY = VOLATILE_UPDATE_SETTINGS + "autoupdate_special_mode";
const char BACKGROUND_KEY[] = "db/ep-common/otn_onetime_update";

class AutoUpdateOptionTest : public SystemControlTest {
protected:
    AutoUpdateOptionTest() { makeTelevision(); }
};

TEST_F(AutoUpdateOptionTest, IsActiveForTheValueOneAlone) {
    for (const int value : {-1, 0, 1, 2}) {
        FakeKovan::setSetting(OPTION_KEY, value);
        EXPECT_EQ(ISystemControl::isAutoUpdateOptionActive(), value == 1) << value;
    }
}

TEST_F(AutoUpdateOptionTest, SaysWhatItRead) {
    for (const int value : {1, 0}) {
        FakeKovan::setSetting(OPTION_KEY, value);
        FakeKovan::forgetRecords();
        ISystemControl::isAutoUpdateOptionActive();
        EXPECT_THAT(FakeKovan::journal(),
                    ElementsAre("log DBG Calling isAutoUpdateOptionActive()", "log INF B2B support option is inactive.",
                                "log INF Product Type: 0",
                                "log DBG Success getting info about AutoUpdate from vconf. Returned value:" +
                                    std::to_string(value),
                                std::string("log INF AutoUpdate option is ") + (value == 1 ? "active." : "inactive.")));
    }
}

TEST_F(AutoUpdateOptionTest, IsNotAskedForOnADeviceThatUpdatesByItself) {
    FakeKovan::setSystemInfo(B2B_FEATURE, true);
    EXPECT_TRUE(ISystemControl::isAutoUpdateOptionActive());
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log DBG Calling isAutoUpdateOptionActive()", "log INF B2B support option is active.",
                            "log FTL Auto update option is active. (B2B, Enterprise or AutoUpdateAlywaysOn option "
                            "enable)"));
    EXPECT_THAT(FakeKovan::reads(), IsEmpty());
}

TEST_F(AutoUpdateOptionTest, IsInactiveWhenItCannotBeRead) {
    EXPECT_FALSE(ISystemControl::isAutoUpdateOptionActive());
    EXPECT_EQ(FakeKovan::journal()[3], failedRead(OPTION_KEY));
    EXPECT_THAT(told("ERR"), AllOf(StartsWith("Exception caught while getting Auto Update option from VConf: "),
                                   HasSubstr("VConfException")));
}

class AutoUpdateTest : public SystemControlTest {};

// What a setter writes, and how it reports a failure.
struct Setter {
    std::string name;
    std::string key;
    FakeKovan::Value value;
    std::string valueText;
    std::function<void()> set;
    std::string failure; // empty for a setter that does not report it
};

const Setter SETTERS[] = {
    {"m_setAutoUpdateStatus", STATUS_KEY, 7, "7",
     [] { ISystemControl::setAutoUpdateStatus(static_cast<AUTOUPDATE_STATUS>(7)); },
     "Cannot set AutoUpdate status value in VConf."},
    {"m_setAutoUpdateSpecialMode", MODE_KEY, 1, "1",
     [] { ISystemControl::setAutoUpdateSpecialMode(static_cast<AUTOUPDATE_SPECIAL_MODE>(1)); },
     "Cannot set AutoUpdate mode value in VConf."},
    {"m_setOOBEAcceptedUpdateInfoDataId", VOLATILE_UPDATE_SETTINGS + "oobe_accepted_update_info_data_id",
     std::string("id 1"), "id 1", [] { ISystemControl::setOOBEAcceptedUpdateInfoDataId("id 1"); },
     "Cannot set OOBE Accepted Upgrade Version in VConf."},
    {"m_setUSBUIUpdateStatus", VOLATILE_UPDATE_SETTINGS + "usbui_status", std::string("copying"), "copying",
     [] { ISystemControl::setUSBUIUpdateStatus("copying"); }, "Cannot set USB UI update status value in VConf."},
    {"m_setUSBUIUpdateProgress", VOLATILE_UPDATE_SETTINGS + "usbui_progress", 42, "42",
     [] { ISystemControl::setUSBUIUpdateProgress(42); }, "Cannot set USB UI update progress status value in VConf."},
    {"m_setIsBgOTNImportantUpdateEnabled", BACKGROUND_KEY, true, "1",
     [] { ISystemControl::setIsBgOTNImportantUpdateEnabled(true); }, ""},
};

class AutoUpdateSetterTest : public SystemControlTest, public testing::WithParamInterface<Setter> {};

INSTANTIATE_TEST_SUITE_P(Setters, AutoUpdateSetterTest, testing::ValuesIn(SETTERS),
                         [](const auto& instance) { return instance.param.name; });

TEST_P(AutoUpdateSetterTest, SaysWhatItWrites) {
    GetParam().set();
    EXPECT_EQ(FakeKovan::journal().front(),
              "log INF CSystemControl::" + GetParam().name + "(" + GetParam().valueText + ")");
    EXPECT_EQ(FakeKovan::journal().size(), 2U);
    EXPECT_THAT(FakeKovan::writes(), ElementsAre(FakeKovan::Write{GetParam().key, GetParam().value}));
}

TEST_P(AutoUpdateSetterTest, TellsThatItCannotWrite) {
    FakeKovan::failWrites(GetParam().key, -3);
    if (GetParam().failure.empty()) {
        EXPECT_NO_THROW(GetParam().set());
    } else {
        EXPECT_EQ(thrownDescription(GetParam().set), GetParam().failure);
    }
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log INF CSystemControl::" + GetParam().name + "(" + GetParam().valueText + ")",
                            AllOf(StartsWith("write " + GetParam().key + "="), EndsWith(" -> -3")),
                            failedWrite(GetParam().key), "log ERR Cannot set value for VConf key: " + GetParam().key));
}

TEST_F(AutoUpdateTest, GivesEachStatusThatThereIs) {
    for (int value = 0; value <= 7; ++value) {
        FakeKovan::setSetting(STATUS_KEY, value);
        EXPECT_EQ(ISystemControl::getAutoUpdateStatus(), static_cast<AUTOUPDATE_STATUS>(value));
    }
    EXPECT_EQ(FakeKovan::count("INF", "CSystemControl::m_getAutoUpdateStatus()"), 8);
}

TEST_F(AutoUpdateTest, RefusesAStatusThatThereIsNot) {
    for (const int value : {8, -1}) {
        FakeKovan::setSetting(STATUS_KEY, value);
        EXPECT_EQ(thrownText<Common::Utils::errinfo_stream_text>(ISystemControl::getAutoUpdateStatus),
                  "Incorrect value stored in VConf: " + std::to_string(value));
        EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF CSystemControl::m_getAutoUpdateStatus()",
                                                      "log ERR Incorrect VConf value of key: " + STATUS_KEY +
                                                          ", value = " + std::to_string(value)));
        FakeKovan::forgetRecords();
    }
}

TEST_F(AutoUpdateTest, TellsThatTheStatusCannotBeRead) {
    EXPECT_EQ(thrownDescription(ISystemControl::getAutoUpdateStatus), "Cannot get AutoUpdate status from VConf.");
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log INF CSystemControl::m_getAutoUpdateStatus()", failedRead(STATUS_KEY),
                            "log ERR Cannot get the value from VConf variable: " + STATUS_KEY));
}

TEST_F(AutoUpdateTest, GivesEachSpecialModeThatThereIs) {
    for (int value = 0; value <= 1; ++value) {
        FakeKovan::setSetting(MODE_KEY, value);
        EXPECT_EQ(ISystemControl::getAutoUpdateSpecialMode(), static_cast<AUTOUPDATE_SPECIAL_MODE>(value));
    }
    EXPECT_EQ(FakeKovan::count("INF", "CSystemControl::m_getAutoUpdateSpecialMode()"), 2);
}

TEST_F(AutoUpdateTest, RefusesASpecialModeThatThereIsNot) {
    for (const int value : {2, -1}) {
        FakeKovan::setSetting(MODE_KEY, value);
        EXPECT_EQ(thrownText<Common::Utils::errinfo_stream_text>(ISystemControl::getAutoUpdateSpecialMode),
                  "Incorrect value stored in VConf: " + std::to_string(value));
        EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF CSystemControl::m_getAutoUpdateSpecialMode()",
                                                      "log ERR Incorrect VConf value of key: " + MODE_KEY +
                                                          ", value = " + std::to_string(value)));
        FakeKovan::forgetRecords();
    }
}

TEST_F(AutoUpdateTest, HasNoSpecialModeWhenItCannotBeRead) {
    EXPECT_EQ(ISystemControl::getAutoUpdateSpecialMode(), static_cast<AUTOUPDATE_SPECIAL_MODE>(0));
    EXPECT_THAT(
        FakeKovan::journal(),
        ElementsAre("log INF CSystemControl::m_getAutoUpdateSpecialMode()", failedRead(MODE_KEY),
                    "log ERR Cannot get the value from VConf variable: " + MODE_KEY + ". Returning default value: 0"));
}

TEST_F(AutoUpdateTest, AllowsAnImportantUpdateInTheBackgroundWhenTheSettingSaysSo) {
    FakeKovan::setSetting(BACKGROUND_KEY, true);
    EXPECT_TRUE(ISystemControl::getIsBgOTNImportantUpdateEnabled());
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
    FakeKovan::removeSetting(BACKGROUND_KEY);
    EXPECT_FALSE(ISystemControl::getIsBgOTNImportantUpdateEnabled());
    EXPECT_THAT(FakeKovan::journal(), ElementsAre(failedRead(BACKGROUND_KEY),
                                                  std::string("log ERR Cannot get the value from VConf variable: ") +
                                                      BACKGROUND_KEY + ". Returning default value: 0"));
}

TEST_F(AutoUpdateTest, GivesTheUpdateThatWasAcceptedAtTheFirstStart) {
    const std::string key = VOLATILE_UPDATE_SETTINGS + "oobe_accepted_update_info_data_id";
    EXPECT_EQ(ISystemControl::getOOBEAcceptedUpdateInfoDataId(), "");
    FakeKovan::setSetting(key, "id 1");
    EXPECT_EQ(ISystemControl::getOOBEAcceptedUpdateInfoDataId(), "id 1");
    EXPECT_THAT(FakeKovan::journal(), ElementsAre(failedReadOr(key), "log INF OOBE Accepted updateInfoDataId is ",
                                                  "log INF OOBE Accepted updateInfoDataId is id 1"));
}

TEST_F(AutoUpdateTest, SaysThatTheUpdateApplicationHoldsTheDevice) {
    const std::string key = VOLATILE_UPDATE_SETTINGS + "is_dax_in_monopoly_mode";
    ISystemControl::setMonopolyFlag(true);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Setting flag indicating that DAXMainApp is running to: 1",
                                                  "write " + key + "=true"));
}

TEST_F(AutoUpdateTest, SaysThatItCannotTellWhoHoldsTheDevice) {
    const std::string key = VOLATILE_UPDATE_SETTINGS + "is_dax_in_monopoly_mode";
    FakeKovan::failWrites(key, -1);
    EXPECT_NO_THROW(ISystemControl::setMonopolyFlag(false));
    EXPECT_THAT(beginning(4),
                ElementsAre("log INF Setting flag indicating that DAXMainApp is running to: 0",
                            "write " + key + "=false -> -1", failedWrite(key),
                            StartsWith("log ERR Failed to set flag indicating that DAXMainApp is running: ")));
    EXPECT_THAT(told("ERR"), HasSubstr("VConfException"));
}

TEST_F(AutoUpdateTest, WakesTheAutomaticUpgradeByAnotherValueEachTime) {
    const std::string key = VOLATILE_UPDATE_SETTINGS + "autoupgrade_trigger";
    EXPECT_EQ(ISystemControl::getAutoUpgradeTriggerKey(), key);
    EXPECT_TRUE(ISystemControl::setAutoUpgradeTrigger());
    EXPECT_TRUE(ISystemControl::setAutoUpgradeTrigger());
    ASSERT_EQ(FakeKovan::writes().size(), 2U);
    EXPECT_THAT(std::get<std::string>(FakeKovan::writes()[0].value),
                testing::MatchesRegex("[0-9]+ nanoseconds since boot"));
    EXPECT_NE(FakeKovan::writes()[0].value, FakeKovan::writes()[1].value);
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log INF CSystemControl::m_setAutoUpgradeTrigger()", StartsWith("write " + key + "="),
                            "log INF CSystemControl::m_setAutoUpgradeTrigger()", StartsWith("write " + key + "=")));
}

TEST_F(AutoUpdateTest, SaysThatTheAutomaticUpgradeCannotBeWoken) {
    const std::string key = VOLATILE_UPDATE_SETTINGS + "autoupgrade_trigger";
    FakeKovan::failWrites(key, -1);
    EXPECT_FALSE(ISystemControl::setAutoUpgradeTrigger());
    EXPECT_EQ(FakeKovan::journal().front(), "log INF CSystemControl::m_setAutoUpgradeTrigger()");
    EXPECT_EQ(FakeKovan::journal()[2], failedWrite(key));
    EXPECT_THAT(told("ERR"),
                AllOf(StartsWith("Cannot set value for VConf key: " + key + ", error"), HasSubstr("VConfException")));
}

TEST_F(AutoUpdateOptionTest, FailsAtTheOperationThatIsAsked) {
    FakeKovan::setSetting(STATUS_KEY, -1);
    FakeKovan::setSetting(MODE_KEY, -1);
    EXPECT_THAT(siteThrownBy(ISystemControl::getAutoUpdateStatus).function,
                HasSubstr("CSystemControl::m_getAutoUpdateStatus()"));
    EXPECT_THAT(siteThrownBy(ISystemControl::getAutoUpdateSpecialMode).function,
                HasSubstr("CSystemControl::m_getAutoUpdateSpecialMode()"));
    FakeKovan::failWrites(STATUS_KEY, -1);
    FakeKovan::failWrites(MODE_KEY, -1);
    EXPECT_THAT(siteThrownBy([] { ISystemControl::setAutoUpdateStatus(AUTOUPDATE_STATUS()); }).function,
                HasSubstr("CSystemControl::m_setAutoUpdateStatus("));
    EXPECT_THAT(siteThrownBy([] { ISystemControl::setAutoUpdateSpecialMode(AUTOUPDATE_SPECIAL_MODE()); }).function,
                HasSubstr("CSystemControl::m_setAutoUpdateSpecialMode("));
}

} // namespace
} // namespace DAX::Tests
