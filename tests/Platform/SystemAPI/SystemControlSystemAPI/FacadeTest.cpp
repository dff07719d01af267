#include <sstream>

#include "Platform/SystemAPI/SystemControlSystemAPI/ISystemControlImpl.h"
#include "SystemControlTest.h"
#include "support/Slots.h"

namespace DAX {
namespace Tests {
namespace {

using boost::filesystem::path;
using Platform::ExternalAppVerificationResult;
using Platform::ISystemControl;
using Platform::ISystemControlImpl;
using Platform::ProcessPriority;
using testing::ElementsAre;

std::vector<std::string> calls;

void append(std::ostream& text, const std::string& argument) {
    text << argument;
}

void append(std::ostream& text, const boost::optional<std::string>& argument) {
    text << argument.value_or("none");
}

template <class Argument>
void append(std::ostream& text, Argument argument) {
    text << static_cast<int>(argument);
}

// Records the call with its arguments.
template <class... Arguments>
void record(const std::string& name, const Arguments&... arguments) {
    std::ostringstream text;
    text << name;
    ((text << ' ', append(text, arguments)), ...);
    calls.push_back(text.str());
}

// Every operation records itself and answers with something of its own.
class RecordingControl : public ISystemControlImpl {
public:
    const char* m_DAXRevisionDescription() override {
        record("DAXRevisionDescription");
        return "a revision";
    }
    void m_shutdown() override { record("shutdown"); }
    void m_forceShutdown() override { record("forceShutdown"); }
    void m_reboot() override { record("reboot"); }
    void m_rebootWithFactoryResetReason() override { record("rebootWithFactoryResetReason"); }
    void m_setColdShutdown() override { record("setColdShutdown"); }
    void m_setColdShutdown(const std::string& name) override { record("setColdShutdown", name); }
    int m_setWakeUpReason(int reason) override {
        record("setWakeUpReason", reason);
        return 107;
    }
    int m_getWakeUpReason() override {
        record("getWakeUpReason");
        return 108;
    }
    bool m_isWakeUpReasonDAX() override {
        record("isWakeUpReasonDAX");
        return true;
    }
    bool m_isWakeUpReasonStandbyScan() override {
        record("isWakeUpReasonStandbyScan");
        return true;
    }
    bool m_isWakeUpReasonMobileBT() override {
        record("isWakeUpReasonMobileBT");
        return true;
    }
    bool m_isInStandaloneMode() override {
        record("isInStandaloneMode");
        return true;
    }
    void m_requestStandaloneMode() override { record("requestStandaloneMode"); }
    bool m_wasStandaloneModeRequested() override {
        record("wasStandaloneModeRequested");
        return true;
    }
    void m_quitStandaloneMode() override { record("quitStandaloneMode"); }
    bool m_isFactoryUpgradeEnabled() override {
        record("isFactoryUpgradeEnabled");
        return true;
    }
    bool m_isSequentialUpgradeEnabled() override {
        record("isSequentialUpgradeEnabled");
        return true;
    }
    boost::filesystem::path m_getSequentialUpgradeDeviceMntPath() override {
        record("getSequentialUpgradeDeviceMntPath");
        return path("/mnt");
    }
    void m_setUpgradeStatusFlag(bool success) override { record("setUpgradeStatusFlag", success); }
    void m_setUpgradeVersion(const std::string& version) override { record("setUpgradeVersion", version); }
    void m_removeUpgradeStatusFlag() override { record("removeUpgradeStatusFlag"); }
    boost::optional<bool> m_getUpgradeStatusFlag() override {
        record("getUpgradeStatusFlag");
        return boost::optional<bool>(true);
    }
    DAXCommon::PowerMode m_getCurrentPowerMode() override {
        record("getCurrentPowerMode");
        return DAXCommon::POWER_MODE_SUSPEND;
    }
    void m_setCurrentPowerMode(DAXCommon::PowerMode mode, bool flag) override {
        record("setCurrentPowerMode", mode, flag);
    }
    bool m_isAutoUpdateOptionActive() override {
        record("isAutoUpdateOptionActive");
        return true;
    }
    void m_setAutoUpdateStatus(DAXAutoUpdateKey::AUTOUPDATE_STATUS status) override {
        record("setAutoUpdateStatus", status);
    }
    void m_setOOBEAcceptedUpdateInfoDataId(const std::string& id) override {
        record("setOOBEAcceptedUpdateInfoDataId", id);
    }
    void m_setUSBUIUpdateStatus(const std::string& status) override { record("setUSBUIUpdateStatus", status); }
    void m_setUSBUIUpdateProgress(int progress) override { record("setUSBUIUpdateProgress", progress); }
    void m_setAutoUpdateSpecialMode(DAXAutoUpdateKey::AUTOUPDATE_SPECIAL_MODE mode) override {
        record("setAutoUpdateSpecialMode", mode);
    }
    void m_setIsBgOTNImportantUpdateEnabled(bool enabled) override {
        record("setIsBgOTNImportantUpdateEnabled", enabled);
    }
    DAXAutoUpdateKey::AUTOUPDATE_STATUS m_getAutoUpdateStatus() override {
        record("getAutoUpdateStatus");
        return static_cast<DAXAutoUpdateKey::AUTOUPDATE_STATUS>(3);
    }
    DAXAutoUpdateKey::AUTOUPDATE_SPECIAL_MODE m_getAutoUpdateSpecialMode() override {
        record("getAutoUpdateSpecialMode");
        return static_cast<DAXAutoUpdateKey::AUTOUPDATE_SPECIAL_MODE>(1);
    }
    std::string m_getOOBEAcceptedUpdateInfoDataId() override {
        record("getOOBEAcceptedUpdateInfoDataId");
        return std::string("text");
    }
    bool m_getIsBgOTNImportantUpdateEnabled() override {
        record("getIsBgOTNImportantUpdateEnabled");
        return true;
    }
    bool m_isB2BTv() override {
        record("isB2BTv");
        return true;
    }
    bool m_isChineseMainlandModel() override {
        record("isChineseMainlandModel");
        return true;
    }
    bool m_isCellularConnectionAllowed() override {
        record("isCellularConnectionAllowed");
        return true;
    }
    bool m_wasAnySuccessfulUpgrade() override {
        record("wasAnySuccessfulUpgrade");
        return true;
    }
    void m_registerSuccessfulUpgrade() override { record("registerSuccessfulUpgrade"); }
    ExternalAppVerificationResult m_getExternalAppVerificationResult() override {
        record("getExternalAppVerificationResult");
        return static_cast<ExternalAppVerificationResult>(2);
    }
    void m_setExternalAppVerificationResult(ExternalAppVerificationResult result) override {
        record("setExternalAppVerificationResult", result);
    }
    boost::optional<std::string> m_getPendingExternalAppClientID() override {
        record("getPendingExternalAppClientID");
        return boost::optional<std::string>("text");
    }
    void m_setPendingExternalAppClientID(boost::optional<std::string> id) override {
        record("setPendingExternalAppClientID", id);
    }
    void m_setDAXFinalizingUpgradeFlag(bool set) override { record("setDAXFinalizingUpgradeFlag", set); }
    void m_setDAXResetFlag(bool set) override { record("setDAXResetFlag", set); }
    bool m_getDAXResetFlag() override {
        record("getDAXResetFlag");
        return true;
    }
    void m_setMonopolyFlag(bool on) override { record("setMonopolyFlag", on); }
    bool m_isOTNEnabled() override {
        record("isOTNEnabled");
        return true;
    }
    bool m_isOTAEnabled() override {
        record("isOTAEnabled");
        return true;
    }
    void m_setModifiedPartitionsMarker(const std::string& unused) override {
        record("setModifiedPartitionsMarker", unused);
    }
    bool m_isModifiedPartitionsMarkerSet() override {
        record("isModifiedPartitionsMarkerSet");
        return true;
    }
    void m_removeModifiedPartitionsMarker() override { record("removeModifiedPartitionsMarker"); }
    bool m_isStandaloneOTNEnabled() override {
        record("isStandaloneOTNEnabled");
        return true;
    }
    bool m_setProcessPriority(ProcessPriority priority) override {
        record("setProcessPriority", priority);
        return true;
    }
    bool m_isPremiumModel() override {
        record("isPremiumModel");
        return true;
    }
    bool m_isAccountSiginMandatory() override {
        record("isAccountSiginMandatory");
        return true;
    }
    int m_getDetailsNotificationType() override {
        record("getDetailsNotificationType");
        return 158;
    }
    bool m_isAutoUpdateAlwaysOn() override {
        record("isAutoUpdateAlwaysOn");
        return true;
    }
    bool m_isPreUpdateConsentSet() override {
        record("isPreUpdateConsentSet");
        return true;
    }
    bool m_isPreUpdateConsentRequired() override {
        record("isPreUpdateConsentRequired");
        return true;
    }
    void m_setPreUpdateConsentRequired(bool required) override { record("setPreUpdateConsentRequired", required); }
    bool m_isMaintenanceMode() override {
        record("isMaintenanceMode");
        return true;
    }
    bool m_isRetailMode() override {
        record("isRetailMode");
        return true;
    }
    std::string m_getAutoUpgradeTriggerKey() override {
        record("getAutoUpgradeTriggerKey");
        return std::string("text");
    }
    bool m_setAutoUpgradeTrigger() override {
        record("setAutoUpgradeTrigger");
        return true;
    }
    std::string m_getWocOTNModelPrefix() override {
        record("getWocOTNModelPrefix");
        return std::string("text");
    }
};

class SystemControlFacadeTest : public testing::Test {
protected:
    SystemControlFacadeTest() {
        calls.clear();
        Platform::SystemControl::Details::setImplementationSingleton(std::make_unique<RecordingControl>());
    }
    ~SystemControlFacadeTest() override { Platform::SystemControl::Details::setImplementationSingleton(nullptr); }
};

TEST_F(SystemControlFacadeTest, GivesTheAnswersOfItsImplementation) {
    EXPECT_STREQ(ISystemControl::DAXRevisionDescription(), "a revision");
    EXPECT_EQ(ISystemControl::setWakeUpReason(7), 107);
    EXPECT_EQ(ISystemControl::getWakeUpReason(), 108);
    EXPECT_TRUE(ISystemControl::isWakeUpReasonDAX());
    EXPECT_TRUE(ISystemControl::isWakeUpReasonStandbyScan());
    EXPECT_TRUE(ISystemControl::isWakeUpReasonMobileBT());
    EXPECT_TRUE(ISystemControl::isInStandaloneMode());
    EXPECT_TRUE(ISystemControl::wasStandaloneModeRequested());
    EXPECT_TRUE(ISystemControl::isFactoryUpgradeEnabled());
    EXPECT_TRUE(ISystemControl::isSequentialUpgradeEnabled());
    EXPECT_EQ(ISystemControl::getSequentialUpgradeDeviceMntPath(), path("/mnt"));
    EXPECT_EQ(ISystemControl::getUpgradeStatusFlag(), boost::optional<bool>(true));
    EXPECT_EQ(ISystemControl::getCurrentPowerMode(), DAXCommon::POWER_MODE_SUSPEND);
    EXPECT_TRUE(ISystemControl::isAutoUpdateOptionActive());
    EXPECT_EQ(ISystemControl::getAutoUpdateStatus(), static_cast<DAXAutoUpdateKey::AUTOUPDATE_STATUS>(3));
    EXPECT_EQ(ISystemControl::getAutoUpdateSpecialMode(), static_cast<DAXAutoUpdateKey::AUTOUPDATE_SPECIAL_MODE>(1));
    EXPECT_EQ(ISystemControl::getOOBEAcceptedUpdateInfoDataId(), std::string("text"));
    EXPECT_TRUE(ISystemControl::getIsBgOTNImportantUpdateEnabled());
    EXPECT_TRUE(ISystemControl::isB2BTv());
    EXPECT_TRUE(ISystemControl::isChineseMainlandModel());
    EXPECT_TRUE(ISystemControl::isCellularConnectionAllowed());
    EXPECT_TRUE(ISystemControl::wasAnySuccessfulUpgrade());
    EXPECT_EQ(ISystemControl::getExternalAppVerificationResult(), static_cast<ExternalAppVerificationResult>(2));
    EXPECT_EQ(ISystemControl::getPendingExternalAppClientID(), boost::optional<std::string>("text"));
    EXPECT_TRUE(ISystemControl::getDAXResetFlag());
    EXPECT_TRUE(ISystemControl::isOTNEnabled());
    EXPECT_TRUE(ISystemControl::isOTAEnabled());
    EXPECT_TRUE(ISystemControl::isModifiedPartitionsMarkerSet());
    EXPECT_TRUE(ISystemControl::isStandaloneOTNEnabled());
    EXPECT_TRUE(ISystemControl::setProcessPriority(ProcessPriority::FOREGROUND));
    EXPECT_TRUE(ISystemControl::isPremiumModel());
    EXPECT_TRUE(ISystemControl::isAccountSiginMandatory());
    EXPECT_EQ(ISystemControl::getDetailsNotificationType(), 158);
    EXPECT_TRUE(ISystemControl::isAutoUpdateAlwaysOn());
    EXPECT_TRUE(ISystemControl::isPreUpdateConsentSet());
    EXPECT_TRUE(ISystemControl::isPreUpdateConsentRequired());
    EXPECT_TRUE(ISystemControl::isMaintenanceMode());
    EXPECT_TRUE(ISystemControl::isRetailMode());
    EXPECT_EQ(ISystemControl::getAutoUpgradeTriggerKey(), std::string("text"));
    EXPECT_TRUE(ISystemControl::setAutoUpgradeTrigger());
    EXPECT_EQ(ISystemControl::getWocOTNModelPrefix(), std::string("text"));
}

TEST_F(SystemControlFacadeTest, HandsEachCallToTheOperationOfItsName) {
    ISystemControl::DAXRevisionDescription();
    ISystemControl::shutdown();
    ISystemControl::forceShutdown();
    ISystemControl::reboot();
    ISystemControl::rebootWithFactoryResetReason();
    ISystemControl::setColdShutdown();
    ISystemControl::setColdShutdown("given");
    ISystemControl::setWakeUpReason(7);
    ISystemControl::getWakeUpReason();
    ISystemControl::isWakeUpReasonDAX();
    ISystemControl::isWakeUpReasonStandbyScan();
    ISystemControl::isWakeUpReasonMobileBT();
    ISystemControl::isInStandaloneMode();
    ISystemControl::requestStandaloneMode();
    ISystemControl::wasStandaloneModeRequested();
    ISystemControl::quitStandaloneMode();
    ISystemControl::isFactoryUpgradeEnabled();
    ISystemControl::isSequentialUpgradeEnabled();
    ISystemControl::getSequentialUpgradeDeviceMntPath();
    ISystemControl::setUpgradeStatusFlag(true);
    ISystemControl::setUpgradeVersion("given");
    ISystemControl::removeUpgradeStatusFlag();
    ISystemControl::getUpgradeStatusFlag();
    ISystemControl::getCurrentPowerMode();
    ISystemControl::setCurrentPowerMode(DAXCommon::POWER_MODE_STANDBY, true);
    ISystemControl::isAutoUpdateOptionActive();
    ISystemControl::setAutoUpdateStatus(static_cast<DAXAutoUpdateKey::AUTOUPDATE_STATUS>(4));
    ISystemControl::setOOBEAcceptedUpdateInfoDataId("given");
    ISystemControl::setUSBUIUpdateStatus("given");
    ISystemControl::setUSBUIUpdateProgress(7);
    ISystemControl::setAutoUpdateSpecialMode(static_cast<DAXAutoUpdateKey::AUTOUPDATE_SPECIAL_MODE>(1));
    ISystemControl::setIsBgOTNImportantUpdateEnabled(true);
    ISystemControl::getAutoUpdateStatus();
    ISystemControl::getAutoUpdateSpecialMode();
    ISystemControl::getOOBEAcceptedUpdateInfoDataId();
    ISystemControl::getIsBgOTNImportantUpdateEnabled();
    ISystemControl::isB2BTv();
    ISystemControl::isChineseMainlandModel();
    ISystemControl::isCellularConnectionAllowed();
    ISystemControl::wasAnySuccessfulUpgrade();
    ISystemControl::registerSuccessfulUpgrade();
    ISystemControl::getExternalAppVerificationResult();
    ISystemControl::setExternalAppVerificationResult(static_cast<ExternalAppVerificationResult>(3));
    ISystemControl::getPendingExternalAppClientID();
    ISystemControl::setPendingExternalAppClientID(boost::optional<std::string>("given"));
    ISystemControl::setDAXFinalizingUpgradeFlag(true);
    ISystemControl::setDAXResetFlag(true);
    ISystemControl::getDAXResetFlag();
    ISystemControl::setMonopolyFlag(true);
    ISystemControl::isOTNEnabled();
    ISystemControl::isOTAEnabled();
    ISystemControl::setModifiedPartitionsMarker("given");
    ISystemControl::isModifiedPartitionsMarkerSet();
    ISystemControl::removeModifiedPartitionsMarker();
    ISystemControl::isStandaloneOTNEnabled();
    ISystemControl::setProcessPriority(ProcessPriority::FOREGROUND);
    ISystemControl::isPremiumModel();
    ISystemControl::isAccountSiginMandatory();
    ISystemControl::getDetailsNotificationType();
    ISystemControl::isAutoUpdateAlwaysOn();
    ISystemControl::isPreUpdateConsentSet();
    ISystemControl::isPreUpdateConsentRequired();
    ISystemControl::setPreUpdateConsentRequired(true);
    ISystemControl::isMaintenanceMode();
    ISystemControl::isRetailMode();
    ISystemControl::getAutoUpgradeTriggerKey();
    ISystemControl::setAutoUpgradeTrigger();
    ISystemControl::getWocOTNModelPrefix();
    EXPECT_EQ(calls, (std::vector<std::string>{"DAXRevisionDescription",
                                               "shutdown",
                                               "forceShutdown",
                                               "reboot",
                                               "rebootWithFactoryResetReason",
                                               "setColdShutdown",
                                               "setColdShutdown given",
                                               "setWakeUpReason 7",
                                               "getWakeUpReason",
                                               "isWakeUpReasonDAX",
                                               "isWakeUpReasonStandbyScan",
                                               "isWakeUpReasonMobileBT",
                                               "isInStandaloneMode",
                                               "requestStandaloneMode",
                                               "wasStandaloneModeRequested",
                                               "quitStandaloneMode",
                                               "isFactoryUpgradeEnabled",
                                               "isSequentialUpgradeEnabled",
                                               "getSequentialUpgradeDeviceMntPath",
                                               "setUpgradeStatusFlag 1",
                                               "setUpgradeVersion given",
                                               "removeUpgradeStatusFlag",
                                               "getUpgradeStatusFlag",
                                               "getCurrentPowerMode",
                                               "setCurrentPowerMode 1 1",
                                               "isAutoUpdateOptionActive",
                                               "setAutoUpdateStatus 4",
                                               "setOOBEAcceptedUpdateInfoDataId given",
                                               "setUSBUIUpdateStatus given",
                                               "setUSBUIUpdateProgress 7",
                                               "setAutoUpdateSpecialMode 1",
                                               "setIsBgOTNImportantUpdateEnabled 1",
                                               "getAutoUpdateStatus",
                                               "getAutoUpdateSpecialMode",
                                               "getOOBEAcceptedUpdateInfoDataId",
                                               "getIsBgOTNImportantUpdateEnabled",
                                               "isB2BTv",
                                               "isChineseMainlandModel",
                                               "isCellularConnectionAllowed",
                                               "wasAnySuccessfulUpgrade",
                                               "registerSuccessfulUpgrade",
                                               "getExternalAppVerificationResult",
                                               "setExternalAppVerificationResult 3",
                                               "getPendingExternalAppClientID",
                                               "setPendingExternalAppClientID given",
                                               "setDAXFinalizingUpgradeFlag 1",
                                               "setDAXResetFlag 1",
                                               "getDAXResetFlag",
                                               "setMonopolyFlag 1",
                                               "isOTNEnabled",
                                               "isOTAEnabled",
                                               "setModifiedPartitionsMarker given",
                                               "isModifiedPartitionsMarkerSet",
                                               "removeModifiedPartitionsMarker",
                                               "isStandaloneOTNEnabled",
                                               "setProcessPriority 1",
                                               "isPremiumModel",
                                               "isAccountSiginMandatory",
                                               "getDetailsNotificationType",
                                               "isAutoUpdateAlwaysOn",
                                               "isPreUpdateConsentSet",
                                               "isPreUpdateConsentRequired",
                                               "setPreUpdateConsentRequired 1",
                                               "isMaintenanceMode",
                                               "isRetailMode",
                                               "getAutoUpgradeTriggerKey",
                                               "setAutoUpgradeTrigger",
                                               "getWocOTNModelPrefix"}));
}

TEST(SystemControlSlots, StandInTheirOrder) {
    EXPECT_EQ(
        slotsOf(
            &ISystemControlImpl::m_DAXRevisionDescription, &ISystemControlImpl::m_shutdown,
            &ISystemControlImpl::m_forceShutdown, &ISystemControlImpl::m_reboot,
            &ISystemControlImpl::m_rebootWithFactoryResetReason,
            static_cast<void (ISystemControlImpl::*)()>(&ISystemControlImpl::m_setColdShutdown),
            static_cast<void (ISystemControlImpl::*)(const std::string& name)>(&ISystemControlImpl::m_setColdShutdown),
            &ISystemControlImpl::m_setWakeUpReason, &ISystemControlImpl::m_getWakeUpReason,
            &ISystemControlImpl::m_isWakeUpReasonDAX, &ISystemControlImpl::m_isWakeUpReasonStandbyScan,
            &ISystemControlImpl::m_isWakeUpReasonMobileBT, &ISystemControlImpl::m_isInStandaloneMode,
            &ISystemControlImpl::m_requestStandaloneMode, &ISystemControlImpl::m_wasStandaloneModeRequested,
            &ISystemControlImpl::m_quitStandaloneMode, &ISystemControlImpl::m_isFactoryUpgradeEnabled,
            &ISystemControlImpl::m_isSequentialUpgradeEnabled, &ISystemControlImpl::m_getSequentialUpgradeDeviceMntPath,
            &ISystemControlImpl::m_setUpgradeStatusFlag, &ISystemControlImpl::m_setUpgradeVersion,
            &ISystemControlImpl::m_removeUpgradeStatusFlag, &ISystemControlImpl::m_getUpgradeStatusFlag,
            &ISystemControlImpl::m_getCurrentPowerMode, &ISystemControlImpl::m_setCurrentPowerMode,
            &ISystemControlImpl::m_isAutoUpdateOptionActive, &ISystemControlImpl::m_setAutoUpdateStatus,
            &ISystemControlImpl::m_setOOBEAcceptedUpdateInfoDataId, &ISystemControlImpl::m_setUSBUIUpdateStatus,
            &ISystemControlImpl::m_setUSBUIUpdateProgress, &ISystemControlImpl::m_setAutoUpdateSpecialMode,
            &ISystemControlImpl::m_setIsBgOTNImportantUpdateEnabled, &ISystemControlImpl::m_getAutoUpdateStatus,
            &ISystemControlImpl::m_getAutoUpdateSpecialMode, &ISystemControlImpl::m_getOOBEAcceptedUpdateInfoDataId,
            &ISystemControlImpl::m_getIsBgOTNImportantUpdateEnabled, &ISystemControlImpl::m_isB2BTv,
            &ISystemControlImpl::m_isChineseMainlandModel, &ISystemControlImpl::m_isCellularConnectionAllowed,
            &ISystemControlImpl::m_wasAnySuccessfulUpgrade, &ISystemControlImpl::m_registerSuccessfulUpgrade,
            &ISystemControlImpl::m_getExternalAppVerificationResult,
            &ISystemControlImpl::m_setExternalAppVerificationResult,
            &ISystemControlImpl::m_getPendingExternalAppClientID, &ISystemControlImpl::m_setPendingExternalAppClientID,
            &ISystemControlImpl::m_setDAXFinalizingUpgradeFlag, &ISystemControlImpl::m_setDAXResetFlag,
            &ISystemControlImpl::m_getDAXResetFlag, &ISystemControlImpl::m_setMonopolyFlag,
            &ISystemControlImpl::m_isOTNEnabled, &ISystemControlImpl::m_isOTAEnabled,
            &ISystemControlImpl::m_setModifiedPartitionsMarker, &ISystemControlImpl::m_isModifiedPartitionsMarkerSet,
            &ISystemControlImpl::m_removeModifiedPartitionsMarker, &ISystemControlImpl::m_isStandaloneOTNEnabled,
            &ISystemControlImpl::m_setProcessPriority, &ISystemControlImpl::m_isPremiumModel,
            &ISystemControlImpl::m_isAccountSiginMandatory, &ISystemControlImpl::m_getDetailsNotificationType,
            &ISystemControlImpl::m_isAutoUpdateAlwaysOn, &ISystemControlImpl::m_isPreUpdateConsentSet,
            &ISystemControlImpl::m_isPreUpdateConsentRequired, &ISystemControlImpl::m_setPreUpdateConsentRequired,
            &ISystemControlImpl::m_isMaintenanceMode, &ISystemControlImpl::m_isRetailMode,
            &ISystemControlImpl::m_getAutoUpgradeTriggerKey, &ISystemControlImpl::m_setAutoUpgradeTrigger,
            &ISystemControlImpl::m_getWocOTNModelPrefix),
        slotsBehindTheDestructor(68));
}

TEST(SystemControlSingleton, IsTheDevicesOwnAtFirstAndAgainWithoutAnother) {
    EXPECT_TRUE(ISystemControl::isPremiumModel());
    Platform::SystemControl::Details::setImplementationSingleton(std::make_unique<RecordingControl>());
    calls.clear();
    ISystemControl::isPremiumModel();
    EXPECT_THAT(calls, ElementsAre("isPremiumModel"));
    Platform::SystemControl::Details::setImplementationSingleton(nullptr);
    EXPECT_FALSE(ISystemControl::isAccountSiginMandatory());
    EXPECT_THAT(calls, ElementsAre("isPremiumModel"));
}

} // namespace
} // namespace Tests
} // namespace DAX
