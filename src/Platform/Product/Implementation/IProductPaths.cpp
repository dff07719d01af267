#include "Platform/Product/IProductPaths.h"

#include <utility>

#include "Platform/Product/Implementation/defaultProductPaths.h"
#include "Utility/Utils/SingletonInstanceHandler.h"

namespace DAX {
namespace Platform {
namespace {

using boost::filesystem::path;

Common::Utils::SingletonInstanceHandler<IProductPathsImpl> singletonHandler(defaultProductPaths);

template <class Result>
Result call(Result (IProductPathsImpl::*operation)()) {
    return (*singletonHandler.getSingletonInstance().*operation)();
}

} // namespace

path IProductPaths::getFlashDeviceRootPath() {
    return call(&IProductPathsImpl::m_getFlashDeviceRootPath);
}

path IProductPaths::getDAXPartitionPath() {
    return call(&IProductPathsImpl::m_getDAXPartitionPath);
}

path IProductPaths::getDAXBigTempPath() {
    return call(&IProductPathsImpl::m_getDAXBigTempPath);
}

path IProductPaths::getPostponeUpdateRWStoragePath() {
    return call(&IProductPathsImpl::m_getPostponeUpdateRWStoragePath);
}

path IProductPaths::getFileSystemRootPath() {
    return call(&IProductPathsImpl::m_getFileSystemRootPath);
}

path IProductPaths::getSystemUsrAppsROPath() {
    return call(&IProductPathsImpl::m_getSystemUsrAppsROPath);
}

path IProductPaths::getSystemUsrBinPath() {
    return call(&IProductPathsImpl::m_getSystemUsrBinPath);
}

path IProductPaths::getUSBMountPath() {
    return call(&IProductPathsImpl::m_getUSBMountPath);
}

path IProductPaths::getLastSearchingDateFilePath() {
    return call(&IProductPathsImpl::m_getLastSearchingDateFilePath);
}

path IProductPaths::getLastPluginFailureFlagFilePath() {
    return call(&IProductPathsImpl::m_getLastPluginFailureFlagFilePath);
}

path IProductPaths::getDAXFactoryResetFlagPath() {
    return call(&IProductPathsImpl::m_getDAXFactoryResetFlagPath);
}

path IProductPaths::getDAXFinalizingUpgradeFlagPath() {
    return call(&IProductPathsImpl::m_getDAXFinalizingUpgradeFlagPath);
}

path IProductPaths::getRofsScriptsDirectory() {
    return call(&IProductPathsImpl::m_getRofsScriptsDirectory);
}

path IProductPaths::getBackupPath() {
    return call(&IProductPathsImpl::m_getBackupPath);
}

path IProductPaths::getUpdateInfoFilePath() {
    return call(&IProductPathsImpl::m_getUpdateInfoFilePath);
}

path IProductPaths::getOOBEAckUpdateInfoFilePath() {
    return call(&IProductPathsImpl::m_getOOBEAckUpdateInfoFilePath);
}

path IProductPaths::getInstallationLockPath() {
    return call(&IProductPathsImpl::m_getInstallationLockPath);
}

path IProductPaths::getKPIDescriptionFilePath() {
    return call(&IProductPathsImpl::m_getKPIDescriptionFilePath);
}

path IProductPaths::getResourcePath() {
    return call(&IProductPathsImpl::m_getResourcePath);
}

path IProductPaths::getLanguageResourcePath() {
    return call(&IProductPathsImpl::m_getLanguageResourcePath);
}

path IProductPaths::getCertificateFilePath() {
    return call(&IProductPathsImpl::m_getCertificateFilePath);
}

path IProductPaths::getSourcePartitionNotGenuineFlagPath() {
    return call(&IProductPathsImpl::m_getSourcePartitionNotGenuineFlagPath);
}

path IProductPaths::getDAXAutoUpgradeActivationFilePath() {
    return call(&IProductPathsImpl::m_getDAXAutoUpgradeActivationFilePath);
}

path IProductPaths::getDAXUsingDebugKeyPath() {
    return call(&IProductPathsImpl::m_getDAXUsingDebugKeyPath);
}

path IProductPaths::getDAXDownloadedFilesPath() {
    return call(&IProductPathsImpl::m_getDAXDownloadedFilesPath);
}

path IProductPaths::getUpdateDetailsDataPath() {
    return call(&IProductPathsImpl::m_getUpdateDetailsDataPath);
}

path IProductPaths::getUpdateDetailsFilePath() {
    return call(&IProductPathsImpl::m_getUpdateDetailsFilePath);
}

path IProductPaths::getUpdateDetailsSchemaPath() {
    return call(&IProductPathsImpl::m_getUpdateDetailsSchemaPath);
}

path IProductPaths::getNotificationCounterDirPath() {
    return call(&IProductPathsImpl::m_getNotificationCounterDirPath);
}

path IProductPaths::getOSUpgradeDirPath() {
    return call(&IProductPathsImpl::m_getOSUpgradeDirPath);
}

std::vector<path> IProductPaths::getOSUpgradeLogFiles() {
    return call(&IProductPathsImpl::m_getOSUpgradeLogFiles);
}

path IProductPaths::getIraNdfDirPath() {
    return call(&IProductPathsImpl::m_getIraNdfDirPath);
}

path IProductPaths::getUpdateMainContentsInfoDataPath() {
    return call(&IProductPathsImpl::m_getUpdateMainContentsInfoDataPath);
}

path IProductPaths::getWOCDaxInfoCandidatePath() {
    return call(&IProductPathsImpl::m_getWOCDaxInfoCandidatePath);
}

path IProductPaths::getWOCDaxInfoApprovedPath() {
    return call(&IProductPathsImpl::m_getWOCDaxInfoApprovedPath);
}

void ProductPaths::Details::setImplementationSingleton(std::unique_ptr<IProductPathsImpl> implementation) {
    singletonHandler.setImplementationSingleton(std::move(implementation));
}

} // namespace Platform
} // namespace DAX
