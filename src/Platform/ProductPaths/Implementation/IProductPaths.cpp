#include "Platform/ProductPaths/IProductPaths.h"

#include <utility>

#include "Platform/ProductPaths/Implementation/defaultProductPaths.h"
#include "Utility/Utils/SingletonInstanceHandler.h"

namespace DAX::Platform {
namespace {

using boost::filesystem::path;

Common::Utils::SingletonInstanceHandler<IProductPathsImpl> singletonHandler(defaultProductPaths);

} // namespace

path IProductPaths::getFlashDeviceRootPath() {
    return singletonHandler->m_getFlashDeviceRootPath();
}

path IProductPaths::getDAXPartitionPath() {
    return singletonHandler->m_getDAXPartitionPath();
}

path IProductPaths::getDAXBigTempPath() {
    return singletonHandler->m_getDAXBigTempPath();
}

path IProductPaths::getPostponeUpdateRWStoragePath() {
    return singletonHandler->m_getPostponeUpdateRWStoragePath();
}

path IProductPaths::getFileSystemRootPath() {
    return singletonHandler->m_getFileSystemRootPath();
}

path IProductPaths::getSystemUsrAppsROPath() {
    return singletonHandler->m_getSystemUsrAppsROPath();
}

path IProductPaths::getSystemUsrBinPath() {
    return singletonHandler->m_getSystemUsrBinPath();
}

path IProductPaths::getUSBMountPath() {
    return singletonHandler->m_getUSBMountPath();
}

path IProductPaths::getLastSearchingDateFilePath() {
    return singletonHandler->m_getLastSearchingDateFilePath();
}

path IProductPaths::getLastPluginFailureFlagFilePath() {
    return singletonHandler->m_getLastPluginFailureFlagFilePath();
}

path IProductPaths::getDAXFactoryResetFlagPath() {
    return singletonHandler->m_getDAXFactoryResetFlagPath();
}

path IProductPaths::getDAXFinalizingUpgradeFlagPath() {
    return singletonHandler->m_getDAXFinalizingUpgradeFlagPath();
}

path IProductPaths::getRofsScriptsDirectory() {
    return singletonHandler->m_getRofsScriptsDirectory();
}

path IProductPaths::getBackupPath() {
    return singletonHandler->m_getBackupPath();
}

path IProductPaths::getUpdateInfoFilePath() {
    return singletonHandler->m_getUpdateInfoFilePath();
}

path IProductPaths::getOOBEAckUpdateInfoFilePath() {
    return singletonHandler->m_getOOBEAckUpdateInfoFilePath();
}

path IProductPaths::getInstallationLockPath() {
    return singletonHandler->m_getInstallationLockPath();
}

path IProductPaths::getKPIDescriptionFilePath() {
    return singletonHandler->m_getKPIDescriptionFilePath();
}

path IProductPaths::getResourcePath() {
    return singletonHandler->m_getResourcePath();
}

path IProductPaths::getLanguageResourcePath() {
    return singletonHandler->m_getLanguageResourcePath();
}

path IProductPaths::getCertificateFilePath() {
    return singletonHandler->m_getCertificateFilePath();
}

path IProductPaths::getSourcePartitionNotGenuineFlagPath() {
    return singletonHandler->m_getSourcePartitionNotGenuineFlagPath();
}

path IProductPaths::getDAXAutoUpgradeActivationFilePath() {
    return singletonHandler->m_getDAXAutoUpgradeActivationFilePath();
}

path IProductPaths::getDAXUsingDebugKeyPath() {
    return singletonHandler->m_getDAXUsingDebugKeyPath();
}

path IProductPaths::getDAXDownloadedFilesPath() {
    return singletonHandler->m_getDAXDownloadedFilesPath();
}

path IProductPaths::getUpdateDetailsDataPath() {
    return singletonHandler->m_getUpdateDetailsDataPath();
}

path IProductPaths::getUpdateDetailsFilePath() {
    return singletonHandler->m_getUpdateDetailsFilePath();
}

path IProductPaths::getUpdateDetailsSchemaPath() {
    return singletonHandler->m_getUpdateDetailsSchemaPath();
}

path IProductPaths::getNotificationCounterDirPath() {
    return singletonHandler->m_getNotificationCounterDirPath();
}

path IProductPaths::getOSUpgradeDirPath() {
    return singletonHandler->m_getOSUpgradeDirPath();
}

std::vector<path> IProductPaths::getOSUpgradeLogFiles() {
    return singletonHandler->m_getOSUpgradeLogFiles();
}

path IProductPaths::getIraNdfDirPath() {
    return singletonHandler->m_getIraNdfDirPath();
}

path IProductPaths::getUpdateMainContentsInfoDataPath() {
    return singletonHandler->m_getUpdateMainContentsInfoDataPath();
}

path IProductPaths::getWOCDaxInfoCandidatePath() {
    return singletonHandler->m_getWOCDaxInfoCandidatePath();
}

path IProductPaths::getWOCDaxInfoApprovedPath() {
    return singletonHandler->m_getWOCDaxInfoApprovedPath();
}

void ProductPaths::Details::setImplementationSingleton(std::unique_ptr<IProductPathsImpl> implementation) {
    singletonHandler.setImplementationSingleton(std::move(implementation));
}

} // namespace DAX::Platform
