#include "Platform/SystemAPI/SystemControlSystemAPI/ISystemControl.h"

#include <utility>

#include "Platform/SystemAPI/SystemControlSystemAPI/Implementation/CSystemControl.h"
#include "Utility/Utils/SingletonInstanceHandler.h"

namespace DAX::Platform {
namespace {

Common::Utils::SingletonInstanceHandler<ISystemControlImpl> singletonHandler([] {
    return std::make_unique<CSystemControl>();
});

} // namespace

const char* ISystemControl::DAXRevisionDescription() {
    return singletonHandler->m_DAXRevisionDescription();
}

void ISystemControl::shutdown() {
    singletonHandler->m_shutdown();
}

void ISystemControl::forceShutdown() {
    singletonHandler->m_forceShutdown();
}

void ISystemControl::reboot() {
    singletonHandler->m_reboot();
}

void ISystemControl::rebootWithFactoryResetReason() {
    singletonHandler->m_rebootWithFactoryResetReason();
}

void ISystemControl::setColdShutdown() {
    singletonHandler->m_setColdShutdown();
}

void ISystemControl::setColdShutdown(const std::string& name) {
    singletonHandler->m_setColdShutdown(name);
}

int ISystemControl::setWakeUpReason(int reason) {
    return singletonHandler->m_setWakeUpReason(reason);
}

int ISystemControl::getWakeUpReason() {
    return singletonHandler->m_getWakeUpReason();
}

bool ISystemControl::isWakeUpReasonDAX() {
    return singletonHandler->m_isWakeUpReasonDAX();
}

bool ISystemControl::isWakeUpReasonStandbyScan() {
    return singletonHandler->m_isWakeUpReasonStandbyScan();
}

bool ISystemControl::isWakeUpReasonMobileBT() {
    return singletonHandler->m_isWakeUpReasonMobileBT();
}

bool ISystemControl::isInStandaloneMode() {
    return singletonHandler->m_isInStandaloneMode();
}

void ISystemControl::requestStandaloneMode() {
    singletonHandler->m_requestStandaloneMode();
}

bool ISystemControl::wasStandaloneModeRequested() {
    return singletonHandler->m_wasStandaloneModeRequested();
}

void ISystemControl::quitStandaloneMode() {
    singletonHandler->m_quitStandaloneMode();
}

bool ISystemControl::isFactoryUpgradeEnabled() {
    return singletonHandler->m_isFactoryUpgradeEnabled();
}

bool ISystemControl::isSequentialUpgradeEnabled() {
    return singletonHandler->m_isSequentialUpgradeEnabled();
}

boost::filesystem::path ISystemControl::getSequentialUpgradeDeviceMntPath() {
    return singletonHandler->m_getSequentialUpgradeDeviceMntPath();
}

void ISystemControl::setUpgradeStatusFlag(bool success) {
    singletonHandler->m_setUpgradeStatusFlag(success);
}

void ISystemControl::setUpgradeVersion(const std::string& version) {
    singletonHandler->m_setUpgradeVersion(version);
}

void ISystemControl::removeUpgradeStatusFlag() {
    singletonHandler->m_removeUpgradeStatusFlag();
}

boost::optional<bool> ISystemControl::getUpgradeStatusFlag() {
    return singletonHandler->m_getUpgradeStatusFlag();
}

DAXCommon::PowerMode ISystemControl::getCurrentPowerMode() {
    return singletonHandler->m_getCurrentPowerMode();
}

void ISystemControl::setCurrentPowerMode(DAXCommon::PowerMode mode, bool flag) {
    singletonHandler->m_setCurrentPowerMode(mode, flag);
}

bool ISystemControl::isAutoUpdateOptionActive() {
    return singletonHandler->m_isAutoUpdateOptionActive();
}

void ISystemControl::setAutoUpdateStatus(DAXAutoUpdateKey::AUTOUPDATE_STATUS status) {
    singletonHandler->m_setAutoUpdateStatus(status);
}

void ISystemControl::setOOBEAcceptedUpdateInfoDataId(const std::string& id) {
    singletonHandler->m_setOOBEAcceptedUpdateInfoDataId(id);
}

void ISystemControl::setUSBUIUpdateStatus(const std::string& status) {
    singletonHandler->m_setUSBUIUpdateStatus(status);
}

void ISystemControl::setUSBUIUpdateProgress(int progress) {
    singletonHandler->m_setUSBUIUpdateProgress(progress);
}

void ISystemControl::setAutoUpdateSpecialMode(DAXAutoUpdateKey::AUTOUPDATE_SPECIAL_MODE mode) {
    singletonHandler->m_setAutoUpdateSpecialMode(mode);
}

void ISystemControl::setIsBgOTNImportantUpdateEnabled(bool enabled) {
    singletonHandler->m_setIsBgOTNImportantUpdateEnabled(enabled);
}

DAXAutoUpdateKey::AUTOUPDATE_STATUS ISystemControl::getAutoUpdateStatus() {
    return singletonHandler->m_getAutoUpdateStatus();
}

DAXAutoUpdateKey::AUTOUPDATE_SPECIAL_MODE ISystemControl::getAutoUpdateSpecialMode() {
    return singletonHandler->m_getAutoUpdateSpecialMode();
}

std::string ISystemControl::getOOBEAcceptedUpdateInfoDataId() {
    return singletonHandler->m_getOOBEAcceptedUpdateInfoDataId();
}

bool ISystemControl::getIsBgOTNImportantUpdateEnabled() {
    return singletonHandler->m_getIsBgOTNImportantUpdateEnabled();
}

bool ISystemControl::isB2BTv() {
    return singletonHandler->m_isB2BTv();
}

bool ISystemControl::isChineseMainlandModel() {
    return singletonHandler->m_isChineseMainlandModel();
}

bool ISystemControl::isCellularConnectionAllowed() {
    return singletonHandler->m_isCellularConnectionAllowed();
}

bool ISystemControl::wasAnySuccessfulUpgrade() {
    return singletonHandler->m_wasAnySuccessfulUpgrade();
}

void ISystemControl::registerSuccessfulUpgrade() {
    singletonHandler->m_registerSuccessfulUpgrade();
}

ExternalAppVerificationResult ISystemControl::getExternalAppVerificationResult() {
    return singletonHandler->m_getExternalAppVerificationResult();
}

void ISystemControl::setExternalAppVerificationResult(ExternalAppVerificationResult result) {
    singletonHandler->m_setExternalAppVerificationResult(result);
}

boost::optional<std::string> ISystemControl::getPendingExternalAppClientID() {
    return singletonHandler->m_getPendingExternalAppClientID();
}

void ISystemControl::setPendingExternalAppClientID(boost::optional<std::string> id) {
    singletonHandler->m_setPendingExternalAppClientID(std::move(id));
}

void ISystemControl::setDAXFinalizingUpgradeFlag(bool set) {
    singletonHandler->m_setDAXFinalizingUpgradeFlag(set);
}

void ISystemControl::setDAXResetFlag(bool set) {
    singletonHandler->m_setDAXResetFlag(set);
}

bool ISystemControl::getDAXResetFlag() {
    return singletonHandler->m_getDAXResetFlag();
}

void ISystemControl::setMonopolyFlag(bool on) {
    singletonHandler->m_setMonopolyFlag(on);
}

bool ISystemControl::isOTNEnabled() {
    return singletonHandler->m_isOTNEnabled();
}

bool ISystemControl::isOTAEnabled() {
    return singletonHandler->m_isOTAEnabled();
}

void ISystemControl::setModifiedPartitionsMarker(const std::string& unused) {
    singletonHandler->m_setModifiedPartitionsMarker(unused);
}

bool ISystemControl::isModifiedPartitionsMarkerSet() {
    return singletonHandler->m_isModifiedPartitionsMarkerSet();
}

void ISystemControl::removeModifiedPartitionsMarker() {
    singletonHandler->m_removeModifiedPartitionsMarker();
}

bool ISystemControl::isStandaloneOTNEnabled() {
    return singletonHandler->m_isStandaloneOTNEnabled();
}

bool ISystemControl::setProcessPriority(ProcessPriority priority) {
    return singletonHandler->m_setProcessPriority(priority);
}

bool ISystemControl::isPremiumModel() {
    return singletonHandler->m_isPremiumModel();
}

bool ISystemControl::isAccountSiginMandatory() {
    return singletonHandler->m_isAccountSiginMandatory();
}

int ISystemControl::getDetailsNotificationType() {
    return singletonHandler->m_getDetailsNotificationType();
}

bool ISystemControl::isAutoUpdateAlwaysOn() {
    return singletonHandler->m_isAutoUpdateAlwaysOn();
}

bool ISystemControl::isPreUpdateConsentSet() {
    return singletonHandler->m_isPreUpdateConsentSet();
}

bool ISystemControl::isPreUpdateConsentRequired() {
    return singletonHandler->m_isPreUpdateConsentRequired();
}

void ISystemControl::setPreUpdateConsentRequired(bool required) {
    singletonHandler->m_setPreUpdateConsentRequired(required);
}

bool ISystemControl::isMaintenanceMode() {
    return singletonHandler->m_isMaintenanceMode();
}

bool ISystemControl::isRetailMode() {
    return singletonHandler->m_isRetailMode();
}

std::string ISystemControl::getAutoUpgradeTriggerKey() {
    return singletonHandler->m_getAutoUpgradeTriggerKey();
}

bool ISystemControl::setAutoUpgradeTrigger() {
    return singletonHandler->m_setAutoUpgradeTrigger();
}

std::string ISystemControl::getWocOTNModelPrefix() {
    return singletonHandler->m_getWocOTNModelPrefix();
}

void SystemControl::Details::setImplementationSingleton(std::unique_ptr<ISystemControlImpl> implementation) {
    singletonHandler.setImplementationSingleton(std::move(implementation));
}

} // namespace DAX::Platform
