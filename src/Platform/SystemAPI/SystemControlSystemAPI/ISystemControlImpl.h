#pragma once

#include <string>

#include <boost/core/noncopyable.hpp>
#include <boost/filesystem/path.hpp>
#include <boost/optional.hpp>

#include "DAXCommon/PowerMode.h"
#include "Platform/SystemAPI/SystemControlSystemAPI/AutoUpdate.h"
#include "Platform/SystemAPI/SystemControlSystemAPI/ExternalAppVerificationResult.h"
#include "Platform/SystemAPI/SystemControlSystemAPI/ProcessPriority.h"

namespace DAX::Platform {

// The implementation behind ISystemControl. Each slot m_NAME does what ISystemControl::NAME is documented to do. Any
// thread may call.
class ISystemControlImpl : private boost::noncopyable {
public:
    virtual ~ISystemControlImpl() = default;

    virtual const char* m_DAXRevisionDescription() = 0;
    virtual void m_shutdown() = 0;
    virtual void m_forceShutdown() = 0;
    virtual void m_reboot() = 0;
    virtual void m_rebootWithFactoryResetReason() = 0;
    virtual void m_setColdShutdown() = 0;
    virtual void m_setColdShutdown(const std::string& name) = 0;
    virtual int m_setWakeUpReason(int reason) = 0;
    virtual int m_getWakeUpReason() = 0;
    virtual bool m_isWakeUpReasonDAX() = 0;
    virtual bool m_isWakeUpReasonStandbyScan() = 0;
    virtual bool m_isWakeUpReasonMobileBT() = 0;
    virtual bool m_isInStandaloneMode() = 0;
    virtual void m_requestStandaloneMode() = 0;
    virtual bool m_wasStandaloneModeRequested() = 0;
    virtual void m_quitStandaloneMode() = 0;
    virtual bool m_isFactoryUpgradeEnabled() = 0;
    virtual bool m_isSequentialUpgradeEnabled() = 0;
    virtual boost::filesystem::path m_getSequentialUpgradeDeviceMntPath() = 0;
    virtual void m_setUpgradeStatusFlag(bool success) = 0;
    virtual void m_setUpgradeVersion(const std::string& version) = 0;
    virtual void m_removeUpgradeStatusFlag() = 0;
    virtual boost::optional<bool> m_getUpgradeStatusFlag() = 0;
    virtual DAXCommon::PowerMode m_getCurrentPowerMode() = 0;
    virtual void m_setCurrentPowerMode(DAXCommon::PowerMode mode, bool flag) = 0;
    virtual bool m_isAutoUpdateOptionActive() = 0;
    virtual void m_setAutoUpdateStatus(DAXAutoUpdateKey::AUTOUPDATE_STATUS status) = 0;
    virtual void m_setOOBEAcceptedUpdateInfoDataId(const std::string& id) = 0;
    virtual void m_setUSBUIUpdateStatus(const std::string& status) = 0;
    virtual void m_setUSBUIUpdateProgress(int progress) = 0;
    virtual void m_setAutoUpdateSpecialMode(DAXAutoUpdateKey::AUTOUPDATE_SPECIAL_MODE mode) = 0;
    virtual void m_setIsBgOTNImportantUpdateEnabled(bool enabled) = 0;
    virtual DAXAutoUpdateKey::AUTOUPDATE_STATUS m_getAutoUpdateStatus() = 0;
    virtual DAXAutoUpdateKey::AUTOUPDATE_SPECIAL_MODE m_getAutoUpdateSpecialMode() = 0;
    virtual std::string m_getOOBEAcceptedUpdateInfoDataId() = 0;
    virtual bool m_getIsBgOTNImportantUpdateEnabled() = 0;
    virtual bool m_isB2BTv() = 0;
    virtual bool m_isChineseMainlandModel() = 0;
    virtual bool m_isCellularConnectionAllowed() = 0;
    virtual bool m_wasAnySuccessfulUpgrade() = 0;
    virtual void m_registerSuccessfulUpgrade() = 0;
    virtual ExternalAppVerificationResult m_getExternalAppVerificationResult() = 0;
    virtual void m_setExternalAppVerificationResult(ExternalAppVerificationResult result) = 0;
    virtual boost::optional<std::string> m_getPendingExternalAppClientID() = 0;
    virtual void m_setPendingExternalAppClientID(boost::optional<std::string> id) = 0;
    virtual void m_setDAXFinalizingUpgradeFlag(bool set) = 0;
    virtual void m_setDAXResetFlag(bool set) = 0;
    virtual bool m_getDAXResetFlag() = 0;
    virtual void m_setMonopolyFlag(bool on) = 0;
    virtual bool m_isOTNEnabled() = 0;
    virtual bool m_isOTAEnabled() = 0;
    virtual void m_setModifiedPartitionsMarker(const std::string& unused) = 0;
    virtual bool m_isModifiedPartitionsMarkerSet() = 0;
    virtual void m_removeModifiedPartitionsMarker() = 0;
    virtual bool m_isStandaloneOTNEnabled() = 0;
    virtual bool m_setProcessPriority(ProcessPriority priority) = 0;
    virtual bool m_isPremiumModel() = 0;
    virtual bool m_isAccountSiginMandatory() = 0;
    virtual int m_getDetailsNotificationType() = 0;
    virtual bool m_isAutoUpdateAlwaysOn() = 0;
    virtual bool m_isPreUpdateConsentSet() = 0;
    virtual bool m_isPreUpdateConsentRequired() = 0;
    virtual void m_setPreUpdateConsentRequired(bool required) = 0;
    virtual bool m_isMaintenanceMode() = 0;
    virtual bool m_isRetailMode() = 0;
    virtual std::string m_getAutoUpgradeTriggerKey() = 0;
    virtual bool m_setAutoUpgradeTrigger() = 0;
    virtual std::string m_getWocOTNModelPrefix() = 0;
};

} // namespace DAX::Platform
