#pragma once

#include <string>

#include "Platform/ProductPaths/IProductPathsImpl.h"

namespace DAX::Platform {

// The device's own paths, composed from the directories that the platform tells.
class CProductPaths : public IProductPathsImpl {
public:
    // Throws std::logic_error when the platform does not tell a directory.
    CProductPaths();

    boost::filesystem::path m_getFlashDeviceRootPath() override;
    boost::filesystem::path m_getDAXPartitionPath() override;
    boost::filesystem::path m_getDAXBigTempPath() override;
    boost::filesystem::path m_getPostponeUpdateRWStoragePath() override;
    boost::filesystem::path m_getFileSystemRootPath() override;
    boost::filesystem::path m_getSystemUsrAppsROPath() override;
    boost::filesystem::path m_getSystemUsrBinPath() override;
    boost::filesystem::path m_getUSBMountPath() override;
    boost::filesystem::path m_getLastSearchingDateFilePath() override;
    boost::filesystem::path m_getLastPluginFailureFlagFilePath() override;
    boost::filesystem::path m_getDAXFactoryResetFlagPath() override;
    boost::filesystem::path m_getDAXFinalizingUpgradeFlagPath() override;
    boost::filesystem::path m_getRofsScriptsDirectory() override;
    boost::filesystem::path m_getBackupPath() override;
    boost::filesystem::path m_getUpdateInfoFilePath() override;
    boost::filesystem::path m_getOOBEAckUpdateInfoFilePath() override;
    boost::filesystem::path m_getInstallationLockPath() override;
    boost::filesystem::path m_getKPIDescriptionFilePath() override;
    boost::filesystem::path m_getResourcePath() override;
    boost::filesystem::path m_getLanguageResourcePath() override;
    boost::filesystem::path m_getCertificateFilePath() override;
    boost::filesystem::path m_getSourcePartitionNotGenuineFlagPath() override;
    boost::filesystem::path m_getDAXAutoUpgradeActivationFilePath() override;
    boost::filesystem::path m_getDAXUsingDebugKeyPath() override;
    boost::filesystem::path m_getDAXDownloadedFilesPath() override;
    boost::filesystem::path m_getUpdateDetailsDataPath() override;
    boost::filesystem::path m_getUpdateDetailsFilePath() override;
    boost::filesystem::path m_getUpdateDetailsSchemaPath() override;
    boost::filesystem::path m_getNotificationCounterDirPath() override;
    boost::filesystem::path m_getOSUpgradeDirPath() override;
    std::vector<boost::filesystem::path> m_getOSUpgradeLogFiles() override;
    boost::filesystem::path m_getIraNdfDirPath() override;
    boost::filesystem::path m_getUpdateMainContentsInfoDataPath() override;
    boost::filesystem::path m_getWOCDaxInfoCandidatePath() override;
    boost::filesystem::path m_getWOCDaxInfoApprovedPath() override;

protected:
    // For a subclass: puts the whole tree under another root than the device's empty one.
    explicit CProductPaths(std::string root);

private:
    boost::filesystem::path partition() const;

    const std::string m_root;
    const std::string m_appsDirectory;
    const std::string m_bigTemporaryStorage;
    const std::string m_binariesDirectory;
    const std::string m_sharedDataDirectory;
    const std::string m_systemPartition;
    const std::string m_usbMountDirectory;
    const std::string m_backupPartition;
    const std::string m_reservedDirectory; // no path uses it
    const std::string m_dataSuffix;
};

} // namespace DAX::Platform
