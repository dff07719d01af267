#pragma once

#include "Platform/SystemAPI/SystemControlSystemAPI/ISystemControlImpl.h"

namespace DAX::Platform {

// The device's own system control. It keeps nothing in memory.
class CSystemControl : public ISystemControlImpl {
public:
    const char* m_DAXRevisionDescription() override;
    void m_shutdown() override;
    void m_forceShutdown() override;
    void m_reboot() override;
    void m_rebootWithFactoryResetReason() override;
    void m_setColdShutdown() override;
    void m_setColdShutdown(const std::string& name) override;
    int m_setWakeUpReason(int reason) override;
    int m_getWakeUpReason() override;
    bool m_isWakeUpReasonDAX() override;
    bool m_isWakeUpReasonStandbyScan() override;
    bool m_isWakeUpReasonMobileBT() override;
    bool m_isInStandaloneMode() override;
    void m_requestStandaloneMode() override;
    bool m_wasStandaloneModeRequested() override;
    void m_quitStandaloneMode() override;
    bool m_isFactoryUpgradeEnabled() override;
    bool m_isSequentialUpgradeEnabled() override;
    boost::filesystem::path m_getSequentialUpgradeDeviceMntPath() override;
    void m_setUpgradeStatusFlag(bool success) override;
    void m_setUpgradeVersion(const std::string& version) override;
    void m_removeUpgradeStatusFlag() override;
    boost::optional<bool> m_getUpgradeStatusFlag() override;
    DAXCommon::PowerMode m_getCurrentPowerMode() override;
    void m_setCurrentPowerMode(DAXCommon::PowerMode mode, bool flag) override;
    bool m_isAutoUpdateOptionActive() override;
    void m_setAutoUpdateStatus(DAXAutoUpdateKey::AUTOUPDATE_STATUS status) override;
    void m_setOOBEAcceptedUpdateInfoDataId(const std::string& id) override;
    void m_setUSBUIUpdateStatus(const std::string& status) override;
    void m_setUSBUIUpdateProgress(int progress) override;
    void m_setAutoUpdateSpecialMode(DAXAutoUpdateKey::AUTOUPDATE_SPECIAL_MODE mode) override;
    void m_setIsBgOTNImportantUpdateEnabled(bool enabled) override;
    DAXAutoUpdateKey::AUTOUPDATE_STATUS m_getAutoUpdateStatus() override;
    DAXAutoUpdateKey::AUTOUPDATE_SPECIAL_MODE m_getAutoUpdateSpecialMode() override;
    std::string m_getOOBEAcceptedUpdateInfoDataId() override;
    bool m_getIsBgOTNImportantUpdateEnabled() override;
    bool m_isB2BTv() override;
    bool m_isChineseMainlandModel() override;
    bool m_isCellularConnectionAllowed() override;
    bool m_wasAnySuccessfulUpgrade() override;
    void m_registerSuccessfulUpgrade() override;
    ExternalAppVerificationResult m_getExternalAppVerificationResult() override;
    void m_setExternalAppVerificationResult(ExternalAppVerificationResult result) override;
    boost::optional<std::string> m_getPendingExternalAppClientID() override;
    void m_setPendingExternalAppClientID(boost::optional<std::string> id) override;
    void m_setDAXFinalizingUpgradeFlag(bool set) override;
    void m_setDAXResetFlag(bool set) override;
    bool m_getDAXResetFlag() override;
    void m_setMonopolyFlag(bool on) override;
    bool m_isOTNEnabled() override;
    bool m_isOTAEnabled() override;
    void m_setModifiedPartitionsMarker(const std::string& unused) override;
    bool m_isModifiedPartitionsMarkerSet() override;
    void m_removeModifiedPartitionsMarker() override;
    bool m_isStandaloneOTNEnabled() override;
    bool m_setProcessPriority(ProcessPriority priority) override;
    bool m_isPremiumModel() override;
    bool m_isAccountSiginMandatory() override;
    int m_getDetailsNotificationType() override;
    bool m_isAutoUpdateAlwaysOn() override;
    bool m_isPreUpdateConsentSet() override;
    bool m_isPreUpdateConsentRequired() override;
    void m_setPreUpdateConsentRequired(bool required) override;
    bool m_isMaintenanceMode() override;
    bool m_isRetailMode() override;
    std::string m_getAutoUpgradeTriggerKey() override;
    bool m_setAutoUpgradeTrigger() override;
    std::string m_getWocOTNModelPrefix() override;

private:
    // With the device's number for the reason.
    void m_shutdown(int reason);
    void m_reboot(int reason);
};

} // namespace DAX::Platform
