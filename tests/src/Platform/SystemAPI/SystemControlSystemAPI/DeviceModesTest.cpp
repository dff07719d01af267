#include <sys/resource.h>
#include <unistd.h>

#include "BoardType.h"
#include "SystemControlTest.h"
#include "support/OrdinaryUser.h"

namespace DAX::Tests {
namespace {

using Platform::ISystemControl;
using Platform::ProcessPriority;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

const char IWB_FEATURE[] = "com.velmora/featureconf/iwb_support";
const int LFD = 4; // as the platform numbers it
const int RETAIL_OTN = 902;
const int HOTEL_OTN = 10130;
const int OTA_SUPPORT = 890;

class DeviceModesTest : public SystemControlTest {
protected:
    // Checks a setting that is on only for the value 1, and off when it cannot be read.
    void expectOnForOneAlone(const std::string& key, bool (*operation)()) {
        for (const int value : {-1, 0, 2}) {
            FakeKovan::setSetting(key, value);
            EXPECT_FALSE(operation()) << value;
        }
        FakeKovan::setSetting(key, 1);
        EXPECT_TRUE(operation());
        FakeKovan::removeSetting(key);
        FakeKovan::forgetRecords();
        EXPECT_FALSE(operation());
        EXPECT_EQ(FakeKovan::journal().front(), failedReadOr(key));
    }
};

TEST_F(DeviceModesTest, DescribeTheBuild) {
    EXPECT_STREQ(ISystemControl::DAXRevisionDescription(),
                 "Changelist: 0, EmulatedProductVersion: ., UI_TYPE=EFL_UI, CMakeTime: 1764727676");
}

TEST_F(DeviceModesTest, KnowADeviceForBusinesses) {
    FakeKovan::setSystemInfo(B2B_FEATURE, true);
    EXPECT_TRUE(ISystemControl::isB2BTv());
    FakeKovan::setSystemInfo(B2B_FEATURE, false);
    EXPECT_FALSE(ISystemControl::isB2BTv());
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log INF B2B support option is active.", "log INF B2B support option is inactive."));
}

TEST_F(DeviceModesTest, TakeADeviceThatCannotTellForOneAtHome) {
    FakeKovan::failSystemInfo(B2B_FEATURE, -5);
    EXPECT_FALSE(ISystemControl::isB2BTv());
    EXPECT_THAT(FakeKovan::messages(),
                ElementsAre(StartsWith("Exception caught while getting B2B support option from system-info: ")));
    EXPECT_EQ(FakeKovan::countContaining("FTL", "Error during getting system-info value: SYSTEM_INFO_ERROR_IO_ERROR"),
              1);
}

TEST_F(DeviceModesTest, KnowAModelOfMainlandChina) {
    for (const int region : {0, 23, 24, 25}) {
        FakeKovan::setSystemInfo(284, region);
        EXPECT_EQ(ISystemControl::isChineseMainlandModel(), region == 24) << region;
    }
}

TEST_F(DeviceModesTest, TellThatTheRegionCannotBeRead) {
    EXPECT_EQ(thrownDescription(ISystemControl::isChineseMainlandModel),
              "Error during getting system-info value: SYSTEM_INFO_ERROR_INVALID_PARAMETER");
}

TEST_F(DeviceModesTest, AllowTheCellularConnectionForTheValueOneAlone) {
    expectOnForOneAlone(UPDATE_SETTINGS + "use_cellular_int", ISystemControl::isCellularConnectionAllowed);
    EXPECT_EQ(FakeKovan::journal().size(), 1U);
}

TEST_F(DeviceModesTest, AskTheSwitchOfTheKindOfDeviceForTheNetwork) {
    FakeKovan::setSystemInfo(RETAIL_OTN, 1);
    FakeKovan::setSystemInfo(HOTEL_OTN, 0);
    FakeKovan::setSystemInfo(B2B_FEATURE, false);
    EXPECT_TRUE(ISystemControl::isOTNEnabled());
    FakeKovan::setSystemInfo(B2B_FEATURE, true);
    EXPECT_FALSE(ISystemControl::isOTNEnabled());
    EXPECT_EQ(FakeKovan::systemInfoReads().back(), "10130");
}

TEST_F(DeviceModesTest, AskTheFactoryMenuForTheAir) {
    FakeKovan::setSystemInfo(OTA_SUPPORT, 1);
    EXPECT_TRUE(ISystemControl::isOTAEnabled());
    FakeKovan::setSystemInfo(OTA_SUPPORT, 0);
    EXPECT_FALSE(ISystemControl::isOTAEnabled());
}

TEST_F(DeviceModesTest, AllowTheNetworkInStandaloneModeWhenASettingSaysSo) {
    const std::string key = UPDATE_SETTINGS + "enable_standaloneOTN";
    EXPECT_FALSE(ISystemControl::isStandaloneOTNEnabled());
    FakeKovan::setSetting(key, true);
    EXPECT_TRUE(ISystemControl::isStandaloneOTNEnabled());
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre(failedReadOr(key), "log INF CSystemControl::m_isStandaloneOTNEnabled returns value: 0",
                            "log INF CSystemControl::m_isStandaloneOTNEnabled returns value: 1"));
}

TEST_F(DeviceModesTest, KnowMaintenanceMode) {
    expectOnForOneAlone("db/menu/maintenance_mode", ISystemControl::isMaintenanceMode);
    EXPECT_EQ(FakeKovan::messages("INF").back(), "CSystemControl::m_isMaintenanceMode returns value: 0");
    FakeKovan::setSetting("db/menu/maintenance_mode", 1);
    ISystemControl::isMaintenanceMode();
    EXPECT_EQ(FakeKovan::messages("INF").back(), "CSystemControl::m_isMaintenanceMode returns value: 1");
}

TEST_F(DeviceModesTest, KnowRetailMode) {
    expectOnForOneAlone("db/menu/support/use_mode", ISystemControl::isRetailMode);
    EXPECT_EQ(FakeKovan::messages("INF").back(), "CSystemControl::m_isRetailMode returns value: 0");
    FakeKovan::setSetting("db/menu/support/use_mode", 1);
    ISystemControl::isRetailMode();
    EXPECT_EQ(FakeKovan::messages("INF").back(), "CSystemControl::m_isRetailMode returns value: 1");
}

TEST_F(DeviceModesTest, TakeTheEmulatorForAPremiumModel) {
    EXPECT_TRUE(ISystemControl::isPremiumModel());
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
}

TEST_F(DeviceModesTest, TakeOneBoardForNoPremiumModel) {
    for (const char* const board : {"Marlow9q", "Marlow9", "marlow9q", "Marlow9q2", ""}) {
        const BoardType type(board);
        EXPECT_EQ(ISystemControl::isPremiumModel(), board != std::string("Marlow9q")) << board;
    }
}

TEST_F(DeviceModesTest, NeverNeedAnAccount) {
    EXPECT_FALSE(ISystemControl::isAccountSiginMandatory());
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log DBG Calling m_isAccountSiginMandatory()"));
}

TEST_F(DeviceModesTest, TakeTheKindOfNotificationFromTheParameters) {
    EXPECT_EQ(ISystemControl::getDetailsNotificationType(), 0);
    parameters().setCustomIntParam("CSystemControl::notiDetailsType", 4);
    EXPECT_EQ(ISystemControl::getDetailsNotificationType(), 4);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Notification type for details popup is: 0",
                                                  "log INF Notification type for details popup is: 4"));
}

TEST_F(DeviceModesTest, UpdateADeviceForBusinessesByItself) {
    FakeKovan::setSystemInfo(B2B_FEATURE, true);
    EXPECT_TRUE(ISystemControl::isAutoUpdateAlwaysOn());
    EXPECT_THAT(FakeKovan::systemInfoReads(), ElementsAre(B2B_FEATURE));
}

TEST_F(DeviceModesTest, UpdateALargeDisplayWithoutABoardByItself) {
    FakeKovan::setSystemInfo(B2B_FEATURE, false);
    FakeKovan::setSystemInfo(PRODUCT_TYPE_FEATURE, LFD);
    FakeKovan::setSystemInfo(IWB_FEATURE, false);
    EXPECT_TRUE(ISystemControl::isAutoUpdateAlwaysOn());
    FakeKovan::setSystemInfo(IWB_FEATURE, true);
    EXPECT_FALSE(ISystemControl::isAutoUpdateAlwaysOn());
}

// In a process of its own, since only the superuser may raise its priority again.
TEST_F(DeviceModesTest, SetTheProcesssPriority) {
    EXPECT_IN_CHILD({
        EXPECT_TRUE(ISystemControl::setProcessPriority(ProcessPriority::FOREGROUND));
        EXPECT_EQ(::getpriority(PRIO_PROCESS, static_cast<id_t>(::getpid())), 0);
        EXPECT_TRUE(ISystemControl::setProcessPriority(ProcessPriority::BACKGROUND));
        EXPECT_EQ(::getpriority(PRIO_PROCESS, static_cast<id_t>(::getpid())), 19);
        EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Setting priority level to FOREGROUND, returnCode: 0",
                                                      "log INF Setting priority level to BACKGROUND, returnCode: 0"));
    });
}

TEST_F(DeviceModesTest, TakeEveryOtherPriorityForTheBackground) {
    EXPECT_IN_CHILD({
        EXPECT_TRUE(ISystemControl::setProcessPriority(static_cast<ProcessPriority>(7)));
        EXPECT_EQ(::getpriority(PRIO_PROCESS, static_cast<id_t>(::getpid())), 19);
    });
}

TEST_F(DeviceModesTest, SayThatThePriorityCannotBeRaised) {
    EXPECT_IN_CHILD({
        ASSERT_EQ(::setpriority(PRIO_PROCESS, 0, 19), 0);
        const OrdinaryUser ordinaryUser;
        EXPECT_FALSE(ISystemControl::setProcessPriority(ProcessPriority::FOREGROUND));
        EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Setting priority level to FOREGROUND, returnCode: -1"));
    });
}

} // namespace
} // namespace DAX::Tests
